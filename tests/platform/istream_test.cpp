#include <qxsystem/platform/istream.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <random>
#include <string>
#include <thread>

#include <platform/temp_dir.h>
#include <qxsystem/platform/ostream.h>

using namespace QXPlatform;
using namespace std::string_literals;

namespace {

constexpr long buffer = QXStreamBufferSize;

// Lines of all lengths, with both line ends, lone "\r" and zero bytes.
std::string SomeText(std::size_t size) {
  std::mt19937 random(7);
  std::string text;
  while (text.size() < size) {
    const auto kind = random() % 100;
    text.append(kind == 0 ? random() % 100000 : random() % 60, static_cast<char>(random()));
    text += kind < 50 ? "\n" : kind < 80 ? "\r\n" : "\r\0"s;
  }
  return text;
}

// What a stream over `text` has to answer, said as plainly as can be.
struct Model {
  std::string text;
  std::size_t at = 0;

  std::size_t Left() const { return text.size() - at; }
  int Peek(std::size_t ahead) const {
    return ahead < Left() ? static_cast<unsigned char>(text[at + ahead]) : -1;
  }
  std::string Take(std::size_t n) {
    n = std::min(n, Left());
    return text.substr((at += n) - n, n);
  }
  std::string Line() {
    std::string line = Take(std::min(text.find('\n', at), text.size() - 1) + 1 - at);
    if (line.empty() || line.back() != '\n') return line;
    line.pop_back();
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
  }
};

void ExpectLikeModel(qxistream& in, const std::string& text) {
  Model model{text};
  const std::size_t size = text.size();
  std::mt19937 random(11);
  std::size_t n = 0;
  std::string got;
  const std::function<bool()> operations[] = {
      [&] { return in.peek(static_cast<unsigned>(n % buffer)) == model.Peek(n % buffer); },
      [&] { return in.get() == model.Peek(0) && (model.Take(1), true); },
      [&] { return got.resize(n), got.resize(in.read(got.data(), n)), got == model.Take(n); },
      [&] { return in.read(got, n) == got.size() && got == model.Take(n); },
      [&] { return in.getline(got) == (model.Left() > 0) && got == model.Line(); },
      [&] { return in.skipline(), model.Line(), true; },
      [&] { return in.skip(long(n)) == model.Take(n).size() && in.skip(-long(n)) == 0; },
      [&] { return in.seek(long(model.at = n % 8 == 0 ? size : random() % size)); },
      [&] { return !in.seek(n % 2 ? -1 : LONG_MIN); },
      [&] { return !in.seek(n % 2 ? long(size + 1) : LONG_MAX); },
      [&] {
        const auto* bytes = reinterpret_cast<const char*>(in.take(n % 50));
        return bytes == nullptr || std::string(bytes, n % 50) == model.Take(n % 50);
      },
      [&] { return in.eof() == (model.Left() == 0); }};

  for (int step = 0; step < 4000; ++step) {
    n = random() % 3 == 0 ? random() % (3 * buffer) : random() % 200;
    const auto which = random() % std::size(operations);
    ASSERT_TRUE(operations[which]() && in.tell() == long(model.at) && in.size() == long(size))
        << "step " << step << ", operation " << which;
  }
  EXPECT_TRUE(in);
}

}  // namespace

TEST(qxistream, EveryKindAnswersLikeAPlainString) {
  const TempDir dir;
  const std::string text = SomeText(5 * buffer + 123);
  const std::string name = dir.Write("text", text);
  qxisstream memory(text);
  qxifstream file(name);
  qxiwrapperstream wrapped(new qxiwrapperstream(new qxifstream(name), true), true);
  for (qxistream* in : std::initializer_list<qxistream*>{&memory, &file, &wrapped}) {
    SCOPED_TRACE(typeid(*in).name());
    ExpectLikeModel(*in, text);
  }
}

TEST(qxifstream, ReachesBeyondFourGigabytes) {
  const TempDir dir;
  const std::string name = dir.Write("sparse", "");
  const long size = 5l << 30;
  ASSERT_EQ(::truncate(name.c_str(), size - 3), 0);
  std::ofstream(name, std::ios::app) << "end";

  qxifstream in(name);
  EXPECT_EQ(in.size(), size);
  EXPECT_EQ(in.skip(size - 4), std::size_t(size - 4));
  std::string rest;
  EXPECT_TRUE(in.read(rest) == 4 && rest == "\0end"s);
}

TEST(qxifstream, ReadsAPipeThatComesInPieces) {
  const TempDir dir;
  const std::string name = dir.Fifo("pipe");
  const std::string text = SomeText(3 * buffer);
  std::thread writer([&] {
    std::ofstream out(name, std::ios::binary);
    for (std::size_t at = 0; at < text.size(); at += 10007)
      out << text.substr(at, 10007) << std::flush;
  });
  qxifstream in(name);
  EXPECT_EQ(in.size(), -1);
  EXPECT_EQ(in.peek(60000), static_cast<unsigned char>(text[60000]));
  EXPECT_TRUE(in.skip(100) == 100 && !in.seek(50)) << "not even inside the buffer";
  std::string rest;
  EXPECT_EQ(in.read(rest, std::size_t{1} << 40), text.size() - 100) << "asks memory for what comes";
  writer.join();
  EXPECT_TRUE(in && rest == text.substr(100));
}

TEST(qxifstream, TellsWhatCannotBeRead) {
  const TempDir dir;
  const std::string good = dir.Write("good", "text");
  for (const std::string& name : {dir.Path(""), dir.Path("missing"), ""s}) {
    qxifstream in(good);
    EXPECT_FALSE(in.open(name.c_str()) || in) << name;
    EXPECT_TRUE(in.eof() && in.open(good.c_str()) && in);
  }
  // Opens, but nothing is mapped at its beginning: reading is an error.
  qxifstream in("/proc/self/mem");
  EXPECT_TRUE(in && in.eof() && !in);
}

TEST(qxisstream, OwnsCopiesOrBorrows) {
  char borrowed[] = "b";
  qxisstream in;
  EXPECT_TRUE(in.set(static_cast<const char*>(borrowed), 1, /*copy=*/true));
  borrowed[0] = 'x';
  EXPECT_EQ(in.get(), 'b');
  EXPECT_TRUE(in.set(borrowed, 1, /*own=*/false));
  EXPECT_EQ(in.get(), 'x');
  EXPECT_TRUE(in.set(new char[3]{'o', 'w', 'n'}, 3, /*own=*/true));
  EXPECT_EQ(in.get(), 'o');
  EXPECT_FALSE(in.set(static_cast<const char*>(nullptr), 1, /*copy=*/true));

  qxisstream copy(in), assigned("other"s);
  assigned = in;
  in.close();
  for (qxisstream* each : {&copy, &assigned}) {
    std::string bytes;
    EXPECT_TRUE(each->read(bytes) && bytes == "own") << "a copy stands at the beginning";
  }
}

namespace {

// Notes what passes, as a progress display does.
class Watcher : public qxiwrapperstream {
public:
  using qxiwrapperstream::qxiwrapperstream;
  ~Watcher() override { ++destroyed; }
  std::string seen;
  static inline int destroyed = 0;

protected:
  bool _qxfill() override { return seen += 'f', qxiwrapperstream::_qxfill(); }
  bool _qxseek(long back) override {
    return seen += std::to_string(back) + " ", qxiwrapperstream::_qxseek(back);
  }
};

}  // namespace

TEST(qxiwrapperstream, LetsADerivedClassSeeEveryFillAndSeek) {
  const TempDir dir;
  qxifstream file(dir.Write("bytes", std::string(buffer + 10, 'x')));
  Watcher in(&file, false);
  EXPECT_EQ(in.skip(100), 100u);
  EXPECT_TRUE(in.seek(40) && in.seek(45) && !in.seek(buffer + 11));
  EXPECT_EQ(in.skip(buffer), std::size_t(buffer - 35));
  EXPECT_EQ(in.seen, "f60 -5 " + std::to_string(45 - (buffer + 11)) + " ff");
}

TEST(qxiwrapperstream, GivesBackWhatItDidNotRead) {
  qxisstream inner("abcdef"s);
  qxiwrapperstream in(&inner, false);
  EXPECT_TRUE(in.get() == 'a' && in.peek() == 'b');
  in.clear();
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(inner.get(), 'b');

  Watcher::destroyed = 0;
  in.set(new Watcher(&inner, false), true);
  EXPECT_EQ(in.get(), 'c');
  in.set(&inner, false);
  EXPECT_EQ(Watcher::destroyed, 1) << "an owned stream is deleted";
  EXPECT_TRUE(in.get() == 'd' && in.tell() == 4);
  const TempDir dir;
  qxiwrapperstream file(new qxifstream, true);
  EXPECT_TRUE(file.open(dir.Write("here", "z").c_str()) && file.get() == 'z');
}

namespace {

// A row is a text, and behind "=" what comes of it: the value or "failed", "|",
// and what is left of the text.
template <typename T>
void ExpectExtracts(std::initializer_list<const char*> rows) {
  for (const std::string row : rows) {
    qxisstream in(row.substr(0, row.find('=')));
    T value = T(77);
    in >> value;
    EXPECT_TRUE(in || value == T(77)) << "a failure keeps the value";
    qxosstream out;
    std::string rest;
    in ? out << value : out << "failed";
    in.read(rest);
    EXPECT_EQ(out.str() + "|" + rest, row.substr(row.find('=') + 1)) << row;
  }
}

}  // namespace

TEST(qxistream, ExtractsTheLongestTextOfAValue) {
  ExpectExtracts<int>({" \t\r\n\v\f-12,=-12|,", "+7e=7|e", "-2147483648=-2147483648|",
                       "2147483648 1=failed| 1", "- 1=failed|- 1", "0x1=0|x1", "=failed|"});
  ExpectExtracts<unsigned short>({"65535=65535|", "65536=failed|"});
  ExpectExtracts<unsigned int>({"-0=0|", "-1=failed|"});
  ExpectExtracts<long>({"-9223372036854775808=-9223372036854775808|", "9223372036854775808=failed|",
                        "-9223372036854775809=failed|"});
  ExpectExtracts<unsigned long>({"18446744073709551615=18446744073709551615|",
                                 "18446744073709551616=failed|", "184467440737095516150=failed|"});
  ExpectExtracts<bool>({"true1=1|1", "01 =1| ", "2=failed|", "fals=failed|fals"});
  ExpectExtracts<char>({"  xy=x|y"});
  ExpectExtracts<double>({"-1.5e3x=-1500|x", "+.5.5=0.5|.5", "5.=5|", "1e+=1|e+", "1,5=1|,5",
                          ".e1=failed|.e1", "-x=failed|-x", "-Infinity=-inf|", "infinit=inf|init",
                          "1e999 2=failed| 2", "1e-999=failed|"});
  ExpectExtracts<float>({"1e39=failed|", "16777217=1.67772e+07|"});

  int a = 0, b = 0, c = 0;
  qxisstream("1 x 3"s) >> a >> b >> c;
  EXPECT_TRUE(a == 1 && c == 0) << "a failure stops the chain";
}

TEST(qxistream, CopiesItsRestIntoAnOutputStream) {
  const std::string text = SomeText(2 * buffer);
  qxosstream out;
  qxofstream full("/dev/full");
  qxisstream(text) >> out;
  qxisstream(text) >> full;
  EXPECT_TRUE(out.str() == text && !full);
}

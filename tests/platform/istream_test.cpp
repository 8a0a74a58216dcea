#include <qxsystem/platform/istream.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
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
    const std::string taken = text.substr(at, n);
    at += taken.size();
    return taken;
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
  const long size = static_cast<long>(text.size());
  std::mt19937 random(11);
  const auto below = [&](long n) { return std::uniform_int_distribution<long>(0, n - 1)(random); };
  std::string got;
  for (int step = 0; step < 4000 && !testing::Test::HasFailure(); ++step) {
    const long far = below(3) == 0 ? below(3 * buffer) : below(200);
    const long operation = below(12);
    SCOPED_TRACE("step " + std::to_string(step) + ", operation " + std::to_string(operation));
    switch (operation) {
      case 0: {
        const int next = model.Peek(0);
        model.Take(1);
        EXPECT_EQ(in.get(), next);
        break;
      }
      case 1: {
        const long ahead = std::min(far, buffer - 1);
        EXPECT_EQ(in.peek(static_cast<unsigned>(ahead)), model.Peek(std::size_t(ahead)));
        break;
      }
      case 2:
        got.resize(std::size_t(far));
        got.resize(in.read(got.data(), got.size()));
        EXPECT_TRUE(got == model.Take(std::size_t(far)));
        break;
      case 3:
        in.read(got, std::size_t(far));
        EXPECT_TRUE(got == model.Take(std::size_t(far)));
        break;
      case 4: {
        const bool more = model.Left() > 0;
        EXPECT_EQ(in.getline(got), more);
        EXPECT_TRUE(got == model.Line());
        break;
      }
      case 5:
        in.skipline();
        model.Line();
        break;
      case 6:
        EXPECT_EQ(in.skip(far), model.Take(std::size_t(far)).size());
        break;
      case 7:
        EXPECT_EQ(in.skip(-far), 0u);
        break;
      case 8:
        model.at = std::size_t(below(8) == 0 ? size : below(size));
        EXPECT_TRUE(in.seek(static_cast<long>(model.at)));
        break;
      case 9:
        for (const long outside : {-1l, size + 1, size + far + 1, std::numeric_limits<long>::min(),
                                   std::numeric_limits<long>::max()})
          EXPECT_FALSE(in.seek(outside)) << outside;
        break;
      case 10: {
        const std::size_t n = std::size_t(below(50));
        if (const unsigned char* bytes = in.take(n)) {
          EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes), n), model.Take(n));
        }
        break;
      }
      case 11:
        EXPECT_EQ(in.eof(), model.Left() == 0);
        break;
    }
    EXPECT_EQ(in.tell(), static_cast<long>(model.at));
    EXPECT_EQ(in.size(), size);
  }
  ASSERT_TRUE(in.seek(size / 3));
  in.read(got);
  EXPECT_TRUE(got == text.substr(std::size_t(size / 3)));
  EXPECT_TRUE(in);
}

}  // namespace

TEST(qxistream, EveryKindAnswersLikeAPlainString) {
  const TempDir dir;
  const std::string text = SomeText(5 * buffer + 123);
  const std::string name = dir.Write("text", text);
  {
    SCOPED_TRACE("memory");
    qxisstream in(text);
    ExpectLikeModel(in, text);
  }
  {
    SCOPED_TRACE("file");
    qxifstream in(name);
    ExpectLikeModel(in, text);
  }
  {
    SCOPED_TRACE("wrapped twice");
    qxiwrapperstream in(new qxiwrapperstream(new qxifstream(name), true), true);
    ExpectLikeModel(in, text);
  }
}

TEST(qxistream, LinesEndAtLineFeedsOnly) {
  qxisstream in("one\r\n\ntwo\rthree\n\r\r\nlast\r"s);
  for (const char* expected : {"one", "", "two\rthree", "\r", "last\r"}) {
    std::string line = "old";
    EXPECT_TRUE(in.getline(line));
    EXPECT_EQ(line, expected);
  }
  std::string line = "old";
  EXPECT_FALSE(in.getline(line));
  EXPECT_EQ(line, "");
  EXPECT_TRUE(in) << "the end is no failure";
}

TEST(qxistream, MemoryGrowsWithTheBytesAndNotWithTheNumberAskedFor) {
  const TempDir dir;
  qxifstream in(dir.Write("short", "ten bytes."));
  std::string out;
  EXPECT_EQ(in.read(out, std::size_t{4} << 30), 10u);
  EXPECT_EQ(out, "ten bytes.");
  EXPECT_LT(out.capacity(), 1u << 20);
}

TEST(qxifstream, ReachesBeyondFourGigabytes) {
  const TempDir dir;
  const std::string name = dir.Write("sparse", "");
  const long size = 5l << 30;
  ASSERT_EQ(::truncate(name.c_str(), size - 3), 0);
  std::ofstream(name, std::ios::app) << "end";

  qxifstream in(name);
  EXPECT_EQ(in.size(), size);
  EXPECT_EQ(in.skip(size - 4), static_cast<std::size_t>(size - 4));
  EXPECT_EQ(in.tell(), size - 4);
  std::string rest;
  EXPECT_EQ(in.read(rest), 4u);
  EXPECT_EQ(rest, "\0end"s);
  EXPECT_TRUE(in.seek(size - 1));
  EXPECT_EQ(in.get(), 'd');
  EXPECT_TRUE(in.seek(0));
  EXPECT_EQ(in.skip(std::numeric_limits<long>::max()), static_cast<std::size_t>(size));
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
  EXPECT_EQ(in.skip(100), 100u);
  EXPECT_FALSE(in.seek(50)) << "not even inside the buffer";
  EXPECT_EQ(in.tell(), 100);
  std::string rest;
  in.read(rest);
  writer.join();
  EXPECT_TRUE(rest == text.substr(100));
  EXPECT_TRUE(in.eof());
  EXPECT_TRUE(in);
}

TEST(qxifstream, TellsWhatCannotBeRead) {
  const TempDir dir;
  const std::string good = dir.Write("good", "text");
  for (const std::string& name : {dir.Path(""), dir.Path("missing"), ""s}) {
    SCOPED_TRACE(name);
    qxifstream in(good);
    EXPECT_FALSE(in.open(name.c_str()));
    EXPECT_FALSE(in);
    EXPECT_TRUE(in.eof());
    EXPECT_TRUE(in.open(good.c_str()));
    EXPECT_TRUE(in);
    EXPECT_EQ(in.get(), 't');
    in.close();
    EXPECT_TRUE(in.eof());
  }
  // Opens, but nothing is mapped at its beginning: reading is an error.
  qxifstream in("/proc/self/mem");
  EXPECT_TRUE(in);
  EXPECT_TRUE(in.eof());
  EXPECT_FALSE(in);
}

TEST(qxisstream, OwnsCopiesOrBorrows) {
  char borrowed[] = "borrowed";
  qxisstream in;
  EXPECT_TRUE(in.set(static_cast<const char*>(borrowed), 8, /*copy=*/true));
  borrowed[0] = 'x';
  EXPECT_EQ(in.get(), 'b');
  EXPECT_TRUE(in.set(borrowed, 8, /*own=*/false));
  EXPECT_EQ(in.get(), 'x');
  EXPECT_TRUE(in.set(new char[3]{'o', 'w', 'n'}, 3, /*own=*/true));
  EXPECT_EQ(in.get(), 'o');
  EXPECT_FALSE(in.set(static_cast<const char*>(nullptr), 1, /*copy=*/true));

  qxisstream copy(in), assigned("other"s);
  assigned = in;
  in.close();
  EXPECT_TRUE(in.eof());
  for (qxisstream* each : {&copy, &assigned}) {
    std::string bytes;
    EXPECT_EQ(each->tell(), 0) << "a copy stands at the beginning";
    EXPECT_EQ(each->skip(2), 2u);
    each->getbuffer(bytes);
    EXPECT_EQ(bytes, "own");
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
  bool _qxfill() override {
    seen += 'f';
    return qxiwrapperstream::_qxfill();
  }
  bool _qxseek(long back) override {
    seen += std::to_string(back) + " ";
    return qxiwrapperstream::_qxseek(back);
  }
};

}  // namespace

TEST(qxiwrapperstream, LetsADerivedClassSeeEveryFillAndSeek) {
  const TempDir dir;
  qxifstream file(dir.Write("bytes", std::string(buffer + 10, 'x')));
  Watcher in(&file, false);
  EXPECT_EQ(in.skip(100), 100u);
  EXPECT_TRUE(in.seek(40));
  EXPECT_TRUE(in.seek(45));
  EXPECT_FALSE(in.seek(buffer + 11));
  EXPECT_EQ(in.skip(buffer), static_cast<std::size_t>(buffer - 35));
  EXPECT_EQ(in.seen, "f60 -5 " + std::to_string(45 - (buffer + 11)) + " ff");
}

TEST(qxiwrapperstream, GivesBackWhatItDidNotRead) {
  qxisstream inner("abcdef"s);
  qxiwrapperstream in(&inner, false);
  EXPECT_EQ(in.get(), 'a');
  EXPECT_EQ(in.peek(), 'b');
  in.clear();
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(inner.get(), 'b');

  Watcher::destroyed = 0;
  in.set(new Watcher(&inner, false), true);
  EXPECT_EQ(in.get(), 'c');
  in.set(&inner, false);
  EXPECT_EQ(Watcher::destroyed, 1) << "an owned stream is deleted";
  EXPECT_EQ(in.get(), 'd');
  EXPECT_EQ(in.tell(), 4);

  const TempDir dir;
  qxiwrapperstream file(new qxifstream, true);
  EXPECT_FALSE(file.open(dir.Path("missing").c_str()));
  EXPECT_FALSE(file);
  EXPECT_TRUE(file.open(dir.Write("here", "z").c_str()));
  EXPECT_TRUE(file);
  EXPECT_EQ(file.get(), 'z');
}

namespace {

// The value, or the failure, and what is left of `text`.
template <typename T>
std::string Extract(const std::string& text) {
  qxisstream in(text);
  T value = T(77);
  in >> value;
  EXPECT_TRUE(in || value == T(77)) << "a failure keeps the value";
  qxosstream out;
  if (in)
    out << value;
  else
    out << "failed";
  std::string rest;
  in.read(rest);
  return out.str() + "|" + rest;
}

}  // namespace

TEST(qxistream, ExtractsTheLongestTextOfAValue) {
  const struct {
    std::string (*extract)(const std::string&);
    const char* text;
    const char* expected;
  } cases[] = {
      {Extract<int>, " \t\r\n\v\f-12,", "-12|,"},
      {Extract<int>, "+7e", "7|e"},
      {Extract<int>, "-2147483648", "-2147483648|"},
      {Extract<int>, "2147483648 1", "failed| 1"},
      {Extract<int>, "- 1", "failed|- 1"},
      {Extract<int>, "0x1", "0|x1"},
      {Extract<int>, "", "failed|"},
      {Extract<short>, "-32769", "failed|"},
      {Extract<unsigned short>, "65535", "65535|"},
      {Extract<unsigned short>, "65536", "failed|"},
      {Extract<unsigned int>, "-0", "0|"},
      {Extract<unsigned int>, "-1", "failed|"},
      {Extract<long>, "-9223372036854775808", "-9223372036854775808|"},
      {Extract<long>, "9223372036854775808", "failed|"},
      {Extract<unsigned long>, "18446744073709551615", "18446744073709551615|"},
      {Extract<unsigned long>, "18446744073709551616", "failed|"},
      {Extract<unsigned long>, "184467440737095516150", "failed|"},
      {Extract<bool>, "true1", "1|1"},
      {Extract<bool>, "false", "0|"},
      {Extract<bool>, "01 ", "1| "},
      {Extract<bool>, "2", "failed|"},
      {Extract<bool>, "tru", "failed|tru"},
      {Extract<char>, "  xy", "x|y"},
      {Extract<double>, "-1.5e3x", "-1500|x"},
      {Extract<double>, "+.5.5", "0.5|.5"},
      {Extract<double>, "5.", "5|"},
      {Extract<double>, "1e+", "1|e+"},
      {Extract<double>, "1,5", "1|,5"},
      {Extract<double>, ".e1", "failed|.e1"},
      {Extract<double>, "-x", "failed|-x"},
      {Extract<double>, "-Infinity", "-inf|"},
      {Extract<double>, "infinit", "inf|init"},
      {Extract<double>, "1e999 2", "failed| 2"},
      {Extract<double>, "1e-999", "failed|"},
      {Extract<float>, "1e39", "failed|"},
      {Extract<float>, "16777217", "1.67772e+07|"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.extract(c.text), c.expected) << "of " << c.text;
}

TEST(qxistream, ExtractsAcrossTheEndOfTheBuffer) {
  const TempDir dir;
  for (long before = buffer - 8; before <= buffer; ++before) {
    qxifstream in(dir.Write("text", std::string(std::size_t(before), ' ') + "-1.25e-2 word 42"));
    double number = 0;
    std::string word;
    unsigned char byte = 0;
    in >> number >> word >> byte;
    EXPECT_TRUE(in);
    EXPECT_EQ(number, -1.25e-2);
    EXPECT_EQ(word, "word");
    EXPECT_EQ(byte, '4');
  }
}

TEST(qxistream, AFailedExtractionStopsTheChain) {
  qxisstream in("1 x 3"s);
  int a = 0, b = 0, c = 0;
  in >> a >> b >> c;
  EXPECT_FALSE(in);
  EXPECT_EQ(a, 1);
  EXPECT_EQ(c, 0);
}

TEST(qxistream, CopiesItsRestIntoAnOutputStream) {
  const TempDir dir;
  const std::string text = SomeText(2 * buffer);
  qxifstream in(dir.Write("text", text));
  in.skip(10);
  qxosstream out;
  in >> out;
  EXPECT_TRUE(out.str() == text.substr(10));
  EXPECT_TRUE(in.eof());

  qxofstream full("/dev/full");
  in.seek(0);
  in >> full;
  EXPECT_FALSE(full);
}

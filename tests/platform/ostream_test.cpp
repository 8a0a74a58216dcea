#include <qxsystem/platform/ostream.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include <platform/temp_dir.h>

using namespace QXPlatform;
using namespace std::string_literals;

namespace {

std::string Content(const std::string& name) {
  std::ifstream in(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

template <typename... T>
std::string Text(T... values) {
  qxosstream out;
  (out << ... << values);
  return out.str();
}

}  // namespace

TEST(qxostream, WritesNumbersAsPrintfDoes) {
  for (const double value :
       {-0.0, 0.1, 123456.0, 1234567.0, 1e-5, 999999.5, DBL_MAX, HUGE_VAL, std::nan("")}) {
    char expected[40];
    std::snprintf(expected, sizeof expected, "%g", value);
    EXPECT_EQ(Text(value), expected);
    std::snprintf(expected, sizeof expected, "%g", double(float(value)));
    EXPECT_EQ(Text(float(value)), expected);
  }
  EXPECT_EQ(Text(LONG_MIN, ULONG_MAX, 'c', true, "text", static_cast<const char*>(nullptr)),
            "-922337203685477580818446744073709551615c1text");
}

TEST(qxofstream, KeepsTheOrderOfPiecesOfAllSizes) {
  const TempDir dir;
  const std::string name = dir.Path("out");
  qxofstream out(name);
  std::string expected;
  for (const std::size_t size : {0u, 1u, 65534u, 1u, 65535u, 65536u, 3u, 65537u, 200000u, 5u}) {
    const std::string piece(size, static_cast<char>('a' + expected.size() % 23));
    EXPECT_EQ(out.write(piece), size);
    expected += piece;
  }
  EXPECT_TRUE(out.put('!') && out.flush() && Content(name) == expected + "!");

  EXPECT_TRUE(out.open(name)) << "empties it";
  out << 'x' << qxendl;
  EXPECT_EQ(Content(name), "x\n") << "qxendl flushes";
  EXPECT_TRUE(out.close() && out.write("more") == 0 && !out) << "closed";
}

TEST(qxofstream, TellsWhatCannotBeOpened) {
  const TempDir dir;
  for (const std::string& name : {dir.Path(""), dir.Path("missing/file"), ""s}) {
    qxofstream out(name);
    EXPECT_FALSE(out || out.put('x') || out.close()) << name;
    EXPECT_TRUE(out.open(dir.Path("good")) && out) << name;
  }
}

TEST(qxofstream, TellsWhenTheTargetRefuses) {
  const TempDir dir;
  std::signal(SIGPIPE, SIG_IGN);
  for (const bool pipe : {false, true}) {
    SCOPED_TRACE(pipe ? "a pipe without reader" : "a full device");
    const std::string name = pipe ? dir.Fifo("pipe") : "/dev/full"s;
    const int reader = pipe ? ::open(name.c_str(), O_RDONLY | O_NONBLOCK) : -1;
    qxofstream flushed(name), closed(name), large(name);
    if (pipe) ::close(reader);

    EXPECT_EQ(flushed.write("x"), 1u) << "is buffered";
    EXPECT_FALSE(flushed.flush());
    EXPECT_FALSE(flushed.put('x') || flushed.write("") || flushed.close()) << "accepts no more";
    EXPECT_TRUE(closed.write("x") == 1 && !closed.close());
    EXPECT_TRUE(large.write(std::string(100000, 'x')) == 0 && !large);
  }
  std::signal(SIGPIPE, SIG_DFL);

  const int descriptor = ::dup(STDERR_FILENO);  // the lowest free one, taken next
  ::close(descriptor);
  qxofstream lost(dir.Path("lost"));
  ::close(descriptor);
  EXPECT_FALSE(lost.close()) << "closing itself can fail";
}

TEST(qxosstream, GrowsAndKeepsItsBytes) {
  qxosstream out;
  const std::string start(100000, 's'), rest(900000, 'r');
  for (const char c : start) out << c;
  out.reserve(1000000);
  const char* const block = out.data();
  out << rest;
  EXPECT_EQ(out.data(), block) << "reserved bytes move nothing";
  EXPECT_THROW(out.reserve(~std::size_t{0}), std::bad_alloc);
  EXPECT_TRUE(out.str() == start + rest);
}

// A descriptor that somebody made non-blocking takes little at a time and
// refuses in between; nothing may be lost.
TEST(qxerr, WaitsForADescriptorThatIsNotReady) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_NONBLOCK), 0);
  const int stderrCopy = ::dup(STDERR_FILENO);
  ::dup2(ends[1], STDERR_FILENO);
  const std::size_t size = 1000000;
  std::string sent, got;
  std::thread reader([&] {
    char some[5000];
    while (got.size() < size) {
      const ssize_t n = ::read(ends[0], some, sizeof some);
      if (n > 0) got.append(some, static_cast<std::size_t>(n));
    }
  });
  for (std::size_t i = 0; i < size; ++i) sent += static_cast<char>(i * 7);
  EXPECT_EQ(qxerr.write(sent), size);
  reader.join();
  ::dup2(stderrCopy, STDERR_FILENO);
  for (const int descriptor : {stderrCopy, ends[0], ends[1]}) ::close(descriptor);
  EXPECT_TRUE(got == sent);
}

TEST(StandardStreamsDeathTest, LastToTheEndOfTheProcess) {
  const auto run = [] {
    ::dup2(STDERR_FILENO, STDOUT_FILENO);  // where the test can see it
    std::atexit([] { qxerr << "late error ", qxout << "late output "; });
    qxout << "buffered ", qxerr << "first ";
    std::exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "first late error buffered late output ");
}

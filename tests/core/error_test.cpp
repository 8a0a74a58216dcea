#include <qxsystem/core/error.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <qxsystem/core/errorimpl.h>
#include <qxsystem/platform/ostream.h>

extern "C" int __cxa_atexit(void (*)(void*), void*, void*);

namespace QXSystem {
namespace {

using QXPlatform::qxosstream;
using namespace std::string_literals;
using testing::ExitedWithCode;

// A handler of its own with what it printed.
struct Reports {
  qxosstream out;
  QXErrorHandler handler;

  explicit Reports(unsigned level = QXErrorLevel::Info, bool strict = true) {
    handler.SetOutputStream(out);
    handler.SetLevel(level);
    handler.SetStrict(strict);
  }
};

TEST(QXErrorHandler, ShowsAndCountsByLevelAndStrictFlag) {
  // The last column is the counter that grows by one, 9 for unknown levels; 0: none.
  const std::tuple<unsigned, bool, unsigned, const char*, unsigned> cases[] = {
      {3, true, 1, "", 0},
      {3, true, 3, "text\n", 3},
      {3, true, 4, "Warning: text\n", 4},
      {3, true, 8, "", 8},
      {3, true, 12, "Unknown Error Level(12): text\n", 9},
      {1, true, 1, "Debug: text\n", 1},
      {1, true, 2, "text\n", 2},
      {0, true, 0, "Unknown Error Level(0): text\n", 9},
      {3, false, 5, "Warning: text\n", 4},
      {5, false, 5, "Warning: text\n", 4},  // where a Warning would be dropped
      {5, false, 4, "", 0},
      {6, true, 5, "", 0},  // dropped before it could be fatal
      {8, true, 8, "", 8},
      {9, true, 8, "", 0}};
  for (const auto& [handlerLevel, strict, level, printed, counter] : cases)
    for (const bool formatted : {false, true}) {
      SCOPED_TRACE(testing::Message() << level << " at " << handlerLevel << ' ' << strict);
      Reports r(handlerLevel, strict);
      formatted ? r.handler.Msg(level, "%s", "text") : r.handler.Msg(level, "text"s);
      EXPECT_EQ(r.out.str(), printed);
      for (unsigned i = 1; i <= 9; ++i) EXPECT_EQ(r.handler.Count(i), i == counter) << i;
      EXPECT_EQ(r.handler.Count(0), counter >= 1 && counter <= 8);
      r.handler.Clear();
      EXPECT_EQ(r.handler.Count(0), 0u);
      EXPECT_EQ(r.handler.Count(77), counter == 9) << "kept by Clear";
    }
}

TEST(QXErrorHandlerDeathTest, EndsTheProcessWithTheStatedStatus) {
  const std::tuple<unsigned, unsigned, int, const char*> cases[] = {{3, 5, 1, "^Fatal: a%b\n$"},
                                                                    {3, 6, 1, "^Fatal: a%b\n$"},
                                                                    {8, 6, 1, "^$"},
                                                                    {3, 7, 0, "^Usage: a%b\n$"},
                                                                    {8, 7, 0, "^$"}};
  for (const auto& [handlerLevel, level, status, printed] : cases) {
    SCOPED_TRACE(testing::Message() << level << " at " << handlerLevel);
    EXPECT_EXIT((QXThrow.SetLevel(handlerLevel), QXThrow.Msg(level, "a%%%c", 'b')),
                ExitedWithCode(status), printed);
    EXPECT_EXIT((QXThrow.SetLevel(handlerLevel), QXThrow.Msg(level, "a%b"s)),
                ExitedWithCode(status), printed);
  }
}

TEST(QXErrorHandler, NamedEntriesReportAtTheirLevels) {
  Reports r(QXErrorLevel::Debug, /*strict=*/false);
  r.handler.Debug("%d", 1), r.handler.Debug("%d"s), r.handler.Verbose("%d", 2);
  r.handler.Verbose("%d"s), r.handler.Info("%d", 3), r.handler.Info("%d"s);
  r.handler.Warning("%d", 4), r.handler.Warning("%d"s), r.handler.Error("%d"s);
  EXPECT_EQ(r.out.str(),
            "Debug: 1\nDebug: %d\n2\n%d\n3\n%d\nWarning: 4\n" + "Warning: %d\nWarning: %d\n"s);
  EXPECT_EXIT(QXThrow.Fatal("%d", 6), ExitedWithCode(1), "^Fatal: 6\n$");
  EXPECT_EXIT(QXThrow.Usage(std::string("%d")), ExitedWithCode(0), "^Usage: %d\n$");
}

TEST(QXErrorHandler, CutsFormattedTextsOnly) {
  for (const std::size_t size : {0u, 511u, 512u, 8191u, 8192u, 10000u}) {
    const std::string text(size, 'x');
    Reports r;
    r.handler.Info("%s", text.c_str()), r.handler.Info(text);
    EXPECT_EQ(r.out.str(), text.substr(0, 8191) + '\n' + text + '\n');
  }
}

TEST(QXErrorHandler, KeepsALevelForEachThread) {
  Reports r;
  r.handler.SetLevel(QXErrorLevel::Debug);
  std::thread([&] {
    EXPECT_EQ(r.handler.GetLevel(), QXErrorLevel::Info);
    r.handler.SetLevel(QXErrorLevel::Quiet);
  }).join();
  EXPECT_EQ(r.handler.GetLevel(), QXErrorLevel::Debug);
  EXPECT_EQ(Reports().handler.GetLevel(), QXErrorLevel::Info) << "a level for each handler, too";
}

TEST(QXErrorHandler, CopiesWhatItOwnsAndSharesWhatItDoesNot) {
  Reports r(QXErrorLevel::Verbose, /*strict=*/false);
  r.handler.Warning("1");
  QXErrorHandler copy(r.handler);
  copy.Verbose("2");
  EXPECT_EQ(r.out.str(), "Warning: 1\n2\n");
  EXPECT_TRUE(copy.Count(0) == 2 && r.handler.Count(0) == 1 && !copy.GetStrict());
  std::thread([&] { EXPECT_EQ(copy.GetLevel(), QXErrorLevel::Info); }).join();

  QXErrorHandlerStreamImpl shared;
  QXErrorHandler first, second;
  first.SetHandlerImpl(&shared, /*owned=*/false);
  second = first;
  EXPECT_EQ(second.GetHandlerImpl(), &shared);
  first = r.handler;
  EXPECT_NE(first.GetHandlerImpl(), r.handler.GetHandlerImpl());
}

// Counts its deaths, and sees every message.
struct Collecting : QXErrorHandlerStreamImpl {
  explicit Collecting(int& counter) : deaths(counter) {}
  ~Collecting() override { ++deaths; }
  void Msg(unsigned, const std::string& text) override { texts += text; }
  int& deaths;
  std::string texts;
};

TEST(QXErrorHandler, HandsEveryMessageToAnotherImplementation) {
  int deaths = 0;
  Collecting borrowed(deaths);
  {
    QXErrorHandler handler;
    handler.SetHandlerImpl(&borrowed, /*owned=*/false);
    handler.Debug("a");
    EXPECT_EQ(borrowed.texts, "a");
    handler.SetHandlerImpl(new Collecting(deaths), /*owned=*/true);
    EXPECT_EQ(deaths, 0);
    handler.SetOutputStream(QXPlatform::qxerr);
    EXPECT_EQ(deaths, 1) << "the owned one";
    handler.SetHandlerImpl(new Collecting(deaths), /*owned=*/true);
  }
  EXPECT_EQ(deaths, 2);
}

// Notes each piece that it is given and each flush.
struct Pieces : QXPlatform::qxostream {
  std::string pieces;
  std::size_t _qxwrite(const unsigned char* data, std::size_t n) override {
    pieces.append(reinterpret_cast<const char*>(data), n) += '|';
    return n;
  }
  bool _qxflush() override { return pieces += "flush", true; }
};

TEST(QXErrorHandler, WritesALineInOnePieceAndFlushes) {
  Pieces out;
  QXErrorHandler handler;
  handler.SetOutputStream(out);
  handler.Warning("%s", "text");
  EXPECT_EQ(out.pieces, "Warning: text\n|flush");
}

TEST(QXErrorHandler, LinesOfSeveralThreadsDoNotMix) {
  Reports r;
  std::atomic<int> arrived{0};
  std::vector<std::thread> threads;
  for (const char name : {'a', 'b', 'c', 'd'})
    threads.emplace_back([&r, &arrived, line = std::string(300, name)] {
      r.handler.SetLevel(QXErrorLevel::Warning);
      for (++arrived; arrived < 4;) std::this_thread::yield();
      for (int i = 0; i < 250; ++i) r.handler.Warning("%s", line.c_str()), r.handler.Info("no");
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(r.handler.Count(0), 1000u);
  EXPECT_EQ(r.out.size(), 1000u * (10 + 300));
  std::istringstream in(r.out.str());
  std::string line;
  while (std::getline(in, line)) ASSERT_EQ(line, "Warning: " + std::string(300, line.back()));
}

// What runs at exit reports, and tries to end the process once more.
TEST(QXErrorHandlerDeathTest, TheFirstThreadToExitDecides) {
  const auto late = [] {
    std::thread([] { QXThrow.Usage("loser"); }).detach();
    usleep(100000);
  };
  EXPECT_EXIT((std::atexit(late), QXThrow.Fatal("winner")), ExitedWithCode(1),
              "^Fatal: winner\nUsage: loser\n$");
  const auto all = [] {
    for (int i = 0; i < 8; ++i) std::thread([] { QXThrow.Fatal("all"); }).detach();
    for (;;) pause();
  };
  EXPECT_EXIT(all(), ExitedWithCode(1), "Fatal: all");
  EXPECT_EXIT((std::atexit([] { QXThrow.Fatal("within"); }), QXThrow.Usage("first")),
              ExitedWithCode(1), "^Usage: first\nFatal: within\n$");
}

// Registered before any shared library is initialised, so it runs when all
// their destructors, and those of the exiting thread, have run.
bool reportAtTheEnd = false;
void Last(void*) {
  if (reportAtTheEnd) QXThrow.Warning("the %s", "last");
}
void RegisterLast() {
  __cxa_atexit(Last, nullptr, nullptr);
}
[[gnu::used, gnu::section(".preinit_array")]] void (*const registerLast)() = RegisterLast;

TEST(QXErrorHandlerDeathTest, ReportsAfterEverythingWasDestroyed) {
  // Quiet is the level of a thread whose levels are gone by then.
  EXPECT_EXIT(
      (reportAtTheEnd = true, QXThrow.SetLevel(QXErrorLevel::Quiet), QXThrow.Usage("unseen")),
      ExitedWithCode(0), "^Warning: the last\n$");
}

}  // namespace
}  // namespace QXSystem

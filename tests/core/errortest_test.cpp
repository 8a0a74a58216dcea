#include <qxsystem/core/errortest.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace QXSystem {
namespace {

std::string TextThrownBy(const std::function<void()>& f) {
  try {
    f();
  } catch (const std::runtime_error& e) {
    return e.what();
  }
  return "nothing";
}

TEST(QXErrorHandlerTestImpl, KeepsWhatTheLevelDrops) {
  QXPushSimpleQXThrowTester reports;
  QXThrow.SetLevel(QXErrorLevel::Quiet);
  QXThrow.Debug("%d", 1), QXThrow.Warning("w"), QXThrow.Msg(17, "m");
  QXThrow.SetStrict(false);
  QXThrow.Error("e");
  std::thread([] { QXThrow.SetLevel(QXErrorLevel::Quiet), QXThrow.Warning("w2"); }).join();
  EXPECT_EQ(reports.GetErrorLog(), "level = 1\n1\nlevel = 4\nw\nw2\nlevel = 5\ne\nlevel = 17\nm\n");
  EXPECT_EQ(reports.NumMessages(), 5u);
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), 2u);
  EXPECT_FALSE(reports.HasMessagesAtLevel(QXErrorLevel::Info));
}

TEST(QXErrorHandlerTestImpl, ThrowsWhereOthersEndTheProcess) {
  QXPushSimpleQXThrowTester reports;
  QXThrow.SetLevel(QXErrorLevel::Quiet);
  const std::string tail = "\nFatal message in error handler.";
  EXPECT_EQ(TextThrownBy([] { QXThrow.Fatal("f"); }), "f" + tail);
  EXPECT_EQ(TextThrownBy([] { QXThrow.Error("e"); }), "e" + tail);
  EXPECT_EQ(reports.GetErrorLog(), "level = 5\ne\nlevel = 6\nf\n");
  EXPECT_EXIT(QXThrow.Usage("u"), testing::ExitedWithCode(0), "^$");
}

TEST(QXPushTestHandler, NestsAndRestores) {
  const char* notInstalled = "QXThrow error test impl not installed";
  EXPECT_EQ(TextThrownBy([] { QXGetErrorHandlerTestImpl(); }), notInstalled);
  QXThrow.SetLevel(QXErrorLevel::Warning);
  QXThrow.SetStrict(false);
  {
    QXPushSimpleQXThrowTester outer;
    EXPECT_EQ(QXGetErrorHandlerTestImpl(), QXThrow.GetHandlerImpl());
    EXPECT_TRUE(QXThrow.GetStrict());
    EXPECT_EQ(QXThrow.GetLevel(), QXErrorLevel::Info);
    QXThrow.Debug("1");
    QXPushSimpleQXThrowTester(), QXThrow.Debug("2");  // a handler between the two
    QXThrow.Debug("3");
    EXPECT_EQ(outer.GetErrorLog(), "level = 1\n1\n3\n");
    QXThrow.SetOutputStream(QXPlatform::qxerr);
    EXPECT_EQ(TextThrownBy([] { QXGetErrorHandlerTestImpl(); }), notInstalled);
  }
  EXPECT_EQ(QXThrow.GetLevel(), QXErrorLevel::Warning);
  EXPECT_FALSE(QXThrow.GetStrict());
}

// What the destructor of a tester throws after some reports; "nothing" when
// its expectation holds.
template <class Tester, class... Args>
std::string Outcome(const std::vector<std::pair<unsigned, std::string>>& reports,
                    const QXErrorLog& moreStrings, Args... args) {
  return TextThrownBy([&] {
    Tester tester(args...);
    for (const auto& [level, texts] : moreStrings)
      for (const auto& text : texts) tester.AddSearchString(level, text);
    QXThrow.SetLevel(QXErrorLevel::Quiet);
    for (const auto& [level, text] : reports) QXThrow.Msg(level, text);
  });
}

TEST(Expectations, HoldOrRaiseTheirText) {
  using Reports = std::vector<std::pair<unsigned, std::string>>;
  const Reports some = {{4, "one two"}, {3, "three"}};
  const std::string log = "level = 3\nthree\nlevel = 4\none two\n";
  const std::string missing =
      "Could not find substring 'two'\n at error level Info"
      "\ninside the following messages:\n'''\n" +
      log + "\n'''";
  std::vector<unsigned> excluded = {3, 4};

  EXPECT_EQ(Outcome<QXPushQXThrowTest>(some, {{3, {"ee", "th"}}}, 4u, "two"), "nothing");
  EXPECT_EQ(Outcome<QXPushQXThrowTest>(some, {}, 3u, "two"), "Failure: " + log + '\n' + missing);

  const std::string notEmpty = "Failure: ErrorHandler not empty, found the following messages:\n";
  EXPECT_EQ(Outcome<QXPushQXThrowHasNoMessages>(Reports{{0, "x"}, {9, "y"}}, {}), "nothing");
  EXPECT_EQ(Outcome<QXPushQXThrowHasNoMessages>(some, {}), notEmpty + log);
  EXPECT_EQ(Outcome<QXPushQXThrowHasNoMessages>(some, {}, excluded), "nothing");

  EXPECT_EQ(Outcome<QXPushQXThrowHasNoMessagesAtLevel>(some, {}, 2u), "nothing");
  EXPECT_EQ(Outcome<QXPushQXThrowHasNoMessagesAtLevel>(some, {}, 4u),
            "Failure: Has Messages at Error Level Warning");

  using Specific = QXPushQXThrowHasSpecficMessages;
  EXPECT_EQ(Outcome<Specific>(some, {{3, {"three"}}}, 4u, "one"), "nothing");
  EXPECT_EQ(Outcome<Specific>(some, {}, 3u, "two"), missing);
  EXPECT_EQ(Outcome<Specific>(some, {}, 4u, "one"), "Failure: Has Extra Messages: " + log);
  EXPECT_EQ(Outcome<Specific>(Reports{{4, "one"}, {4, "two"}}, {}, 4u, "one"),
            "Failure: Has Extra Messages at Error Level Warning\nlevel = 4\none\ntwo\n");
}

TEST(Expectations, PrintTheirTextWhileAnExceptionIsOnItsWay) {
  const auto leave = [] {
    try {
      QXPushQXThrowTest tester(QXErrorLevel::Warning, "w");
      QXThrow.Fatal("f");
    } catch (const std::runtime_error& e) {
      std::exit(std::string(e.what()).front() == 'f' ? 42 : 1);
    }
  };
  EXPECT_EXIT(leave(), testing::ExitedWithCode(42), "^Failure: level = 6\nf\n");
}

}  // namespace
}  // namespace QXSystem

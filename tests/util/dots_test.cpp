#include <qxsystem/util/dots.h>

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <tests/support/capture.h>

using namespace QXSystem;
using namespace qxtest;

namespace {

TEST(QXDots, PrintADotForSoManyAndTheCountForEveryLine) {
  const auto run = [](unsigned line, unsigned every, const std::vector<unsigned>& steps) {
    return OnStderr([&] {
      QXDots dots(line, every, "items", "read");
      for (const unsigned step : steps) dots.Update(step);
      dots.Total();
    });
  };
  const struct {
    unsigned line, every;
    std::vector<unsigned> steps;
    const char* text;
  } cases[] = {{100, 10, {25}, "..\nTotal: 25 items read.\n"},
               {100, 10, {25, 4}, "..\nTotal: 29 items read.\n"},
               {100, 10, {25, 5}, "...\nTotal: 30 items read.\n"},
               {3, 1, {7}, "... 3 items read.\n... 6 items read.\n.\nTotal: 7 items read.\n"},
               {5, 2, {12}, "... 5 items read.\n... 10 items read.\n\nTotal: 12 items read.\n"},
               {0, 10, {25, 1}, "\nTotal: 26 items read.\n"},
               {10, 0, {25, 1}, "\nTotal: 26 items read.\n"},
               {4000000000,
                4000000000,
                {3999999999, 3999999999},
                ". 4000000000 items read.\n\nTotal: 7999999998 items read.\n"}};
  for (const auto& c : cases) EXPECT_EQ(run(c.line, c.every, c.steps), c.text);
  EXPECT_EQ(OnStderr([] { QXDots(100, 1, nullptr, nullptr).Update('*', 3); }), "***");
  EXPECT_EQ(OnStderr([] { QXDots(100, 42, "", "").Update('*'); }), ".");
}

TEST(QXThreadedDots, RefuseWhatDoesNotCount) {
  const Reports reports;
  const auto run = [] {
    QXThreadedDots dots(100, 10, "items");
    dots.Update(0), dots.Update(25), dots.Total(), dots.Update(1), dots.Total();
  };
  EXPECT_EQ(OnStderr(run), "..\nTotal: 25 items processed.\n");
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 5\nInvalid step size of 0 for QXThreadedDots::Update\n"
            "Attempting to Update a QXThreadedDots after Total already called.\n");
}

TEST(QXThreadedDots, CountEveryStepOfManyThreads) {
  constexpr unsigned threads = 8, updates = 100000;
  EXPECT_EQ(OnStderr([] {
              QXThreadedDots dots(0, 0, "items");
              std::vector<std::thread> callers;
              for (unsigned t = 0; t < threads; ++t)
                callers.emplace_back([&dots] {
                  for (unsigned i = 0; i < updates; ++i) dots.Update(1 + i % 2);
                });
              for (auto& caller : callers) caller.join();
              dots.Total();
            }),
            "\nTotal: " + std::to_string(threads * updates / 2 * 3) + " items processed.\n");
}

// Steps are either counted or refused with an Error, also when the end comes
// while callers wait.
TEST(QXThreadedDots, LoseNothingSilentlyAtTheEnd) {
  const Reports reports;
  std::atomic<unsigned> steps{0};
  const std::string text = OnStderr([&] {
    QXThreadedDots dots(0, 0, "items");
    std::vector<std::thread> callers;
    for (unsigned t = 0; t < 4; ++t)
      callers.emplace_back([&] {
        QXThrow.SetLevel(QXErrorLevel::Quiet);
        for (unsigned i = 0; i < 2000; ++i) dots.Update(1), ++steps;
      });
    while (steps < 1000) std::this_thread::yield();
    dots.Total();
    for (auto& caller : callers) caller.join();
  });
  const unsigned refused = reports.NumMessagesAtLevel(QXErrorLevel::Error);
  EXPECT_EQ(text, "\nTotal: " + std::to_string(8000 - refused) + " items processed.\n");
  EXPECT_EQ(OnStderr([] { QXThreadedDots(1, 1, "items").Update(3); }).substr(0, 1), ".");
}

}  // namespace

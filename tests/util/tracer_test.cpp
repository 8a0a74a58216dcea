// All tracers. The clocks of this program stand still unless a test moves them.

#include <sys/time.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include <platform/temp_dir.h>
#include <qxsystem/util/consoletracer.h>
#include <qxsystem/util/dottracer.h>
#include <qxsystem/util/progressstream.h>
#include <qxsystem/util/statusfiletracer.h>
#include <tests/support/capture.h>
#include <tests/support/commalocale.h>

using namespace QXSystem;
using namespace QXPlatform;
using qxtest::OnStderr;

namespace {
double processorTime = 0, wallTime = 1.5e9;  // seconds
}

// They take the place of the C library's, also for the library under test.
extern "C" [[gnu::visibility("default")]] std::clock_t clock() noexcept {
  return std::lround(processorTime * CLOCKS_PER_SEC);
}
extern "C" [[gnu::visibility("default")]] std::time_t time(std::time_t*) noexcept {
  return static_cast<std::time_t>(wallTime);
}
extern "C" [[gnu::visibility("default")]] int gettimeofday(timeval* now, void*) noexcept {
  now->tv_sec = static_cast<std::time_t>(std::floor(wallTime));
  now->tv_usec = std::lround((wallTime - std::floor(wallTime)) * 1e6);
  return 0;
}

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(QXDotTracer, BreaksLinesBehind80DotsAndForItsLastWord) {
  const auto run = [](std::size_t title, std::size_t dots) {
    qxosstream out;
    {
      QXDotTracer tracer(std::string(title, 't'), /*interval=*/0, out);
      EXPECT_EQ(out.size(), title);
      for (std::size_t i = 0; i < dots; ++i) static_cast<QXTracerBase&>(tracer).Push("");
    }
    return out.str();
  };
  const std::string dots(80, '.'), title(80, 't');
  EXPECT_EQ(run(0, 74), dots.substr(6) + "Done.\n");
  EXPECT_EQ(run(0, 75), dots.substr(5) + "\nDone.\n");
  EXPECT_EQ(run(0, 80), dots + "\nDone.\n");
  EXPECT_EQ(run(0, 81), dots + "\n.Done.\n");
  EXPECT_EQ(run(70, 5), title.substr(10) + ".....\nDone.\n");
  EXPECT_EQ(run(80, 1), title + "\n.Done.\n");
}

TEST(QXDotTracer, WaitsForProcessorTimeAndAtLastForWallTime) {
  qxosstream out;
  QXDotTracer dots(/*interval=*/1, out);
  QXTracerBase& tracer = dots;
  const auto after = [&](double processor, double wall) {
    processorTime += processor;
    wallTime += wall;
    const std::size_t before = out.size();
    tracer.SetProgress(50.0);
    return out.size() - before;
  };
  EXPECT_EQ(after(0.5, 100), 0u);
  EXPECT_EQ(after(0.5, 0), 1u);
  EXPECT_EQ(after(0.9, 2147), 0u) << "sleeping makes no dots";
  EXPECT_EQ(after(0, 1), 1u);
  EXPECT_EQ(after(0.9, 0), 0u);
  processorTime += 1;
  tracer.SetTask("");
  tracer.Refresh();
  EXPECT_EQ(out.size(), 2u);
  EXPECT_FALSE(tracer.Aborted());
  EXPECT_EQ(out.size(), 3u);
}

std::string Content(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(QXStatusFileTracer, ShowsTheStackOfTasks) {
  const TempDir dir;
  const std::string file = dir.Path("status"), reading = "Reading (3 of 7 done)\n";
  qxtest::CommaLocale comma;
  {
    const QXStatusFileTracer first(file, /*interval=*/0);
    QXStatusFileTracer copy = first;
    QXTracerBase& tracer = copy;
    const std::pair<std::string, std::function<void()>> steps[] = {
        {"Reading\n", [&] { tracer.SetTask("Reading"); }},
        {reading, [&] { tracer.SetProgress(3, 7); }},
        {reading + " Pass 1\n", [&] { tracer.Push("Pass 1"); }},
        {reading + " Pass 1 (% 42.00 done)\n", [&] { tracer.SetProgress(42.0); }},
        {"", [&] { tracer.SetProgress(nan); }},
        {reading + " Pass 1 (%  0.00 done)\n", [&] { tracer.SetProgress(-1e300); }},
        {reading + " Pass 1 (%  0.00 done)\n", [&] { tracer.SetProgress(-0.0); }},
        {reading + " Pass 1 (%100.00 done)\n", [&] { tracer.SetProgress(1e300); }},
        {reading + " Pass 1 (%100.00 done)\n  a b \n", [&] { tracer.Push("a\nb\r"); }},
        {reading, [&] { tracer.Pop(), tracer.Pop(); }},
        {reading, [&] { tracer.Pop(), tracer.Refresh(); }},
        {"New (3 of 7 done)\n", [&] { tracer.SetTask("New"); }}};
    for (const auto& [text, step] : steps) {
      std::filesystem::remove(file);
      step();
      EXPECT_EQ(Content(file), text);
    }
    { const QXStatusFileTracer dies = copy; }
    EXPECT_EQ(Content(file), "New (3 of 7 done)\n") << "the last copy ends it";
  }
  EXPECT_EQ(Content(file), "Finished\n");
}

TEST(QXStatusFileTracer, LeavesTheFileAloneWithinTheInterval) {
  const TempDir dir;
  const std::string file = dir.Path("status");
  QXStatusFileTracer status(file, /*interval=*/10), nowhere(dir.Path("missing/status"), 0);
  QXTracerBase& tracer = status;
  tracer.SetTask("a");
  EXPECT_FALSE(std::filesystem::exists(file));
  processorTime += 10;
  tracer.Push("b"), tracer.Push("c");
  EXPECT_EQ(Content(file), "a\n b\n");
}

TEST(QXConsoleProgressTracer, DrawsWhatIsNews) {
  QXConsoleProgressTracer tracer(/*barLength=*/10, /*percentStep=*/1, /*timeStep=*/2);
  const std::string reading = "\rReading                  [", second = "\r" + std::string(30, 't');
  const struct {
    double after;
    std::function<void()> step;
    std::string drawn;
  } steps[] = {
      {0, [&] { tracer.SetTask("Reading"); }, reading + "----------]   0.00%  00:00:00"},
      {0, [&] { tracer.SetProgress(0.99); }, ""},
      {2, [&] { tracer.SetProgress(0.99); }, reading + "----------]   0.99%  00:00:02"},
      {0, [&] { tracer.SetProgress(1.99); }, reading + "----------]   1.99%  00:00:02"},
      {0, [&] { tracer.SetProgress(5, 12); }, reading + "====------]  41.67%  00:00:02"},
      {9, [&] { tracer.SetProgress(41), tracer.SetProgress(nan), tracer.SetProgress(5, 0); }, ""},
      {0, [&] { tracer.Refresh(); }, reading + "====------]  41.67%  00:00:11"},
      {0, [&] { tracer.SetProgress(4000000000, 3); }, reading + "==========] 100.00%  00:00:11"},
      {0, [&] { tracer.Push(second.substr(1)); }, second + "[----------]   0.00%  00:00:00"},
      {2, [&] { tracer.SetProgress(0, 0); }, second + "[----------]   0.00%  00:00:02"},
      {1, [&] { tracer.Pop(); }, second + "[==========] 100.00%  00:00:03\n"}};
  for (const auto& s : steps) {
    wallTime += s.after;
    EXPECT_EQ(OnStderr(s.step), s.drawn) << "step " << &s - steps;
  }
}

TEST(QXConsoleProgressTracer, TellsTimeInHoursMinutesAndSeconds) {
  const struct {
    double elapsed;
    const char* text;
  } cases[] = {{-5, "00:00:00"},   {59.9, "00:00:59"}, {60, "00:00:60"},
               {61, "00:01:01"},   {3600, "00:60:00"}, {3601, "01:00:01"},
               {3660, "01:00:60"}, {3661, "01:01:01"}, {360061, "100:01:01"}};
  QXConsoleProgressTracer tracer(/*barLength=*/0);
  for (const auto& c : cases) {
    wallTime += c.elapsed;
    EXPECT_EQ(OnStderr([&] { tracer.Refresh(); }).substr(38), c.text);
    wallTime -= c.elapsed;
  }
}

TEST(QXConsoleProgressTracer, TakesProgressFromAnyThread) {
  QXConsoleProgressTracer tracer(/*barLength=*/4, /*percentStep=*/0);
  const auto run = [&] {
    for (unsigned i = 0; i <= 100; ++i) tracer.SetProgress(i, 100);
  };
  const std::string drawn = OnStderr([&] {
    std::thread other(run);
    run();
    other.join();
  });
  constexpr std::size_t line = 50;
  ASSERT_GE(drawn.size(), 101 * line);
  for (std::size_t at = 0; at < drawn.size(); at += line) {
    ASSERT_EQ(drawn[at], '\r') << "lines come whole";
    EXPECT_GE(drawn.substr(at + 33, 6), drawn.substr(at - std::min(at, line) + 33, 6));
  }
}

// Notes the progress that it is told.
class Notes : public QXNullTracer {
public:
  ~Notes() override { ++gone; }
  void SetProgress(unsigned done, unsigned total) override {
    text += std::to_string(done) + "/" + std::to_string(total) + " ";
  }
  std::string text;
  static inline int gone = 0;
};

TEST(qxprogressstream, TellsWhereEveryRefillFindsIt) {
  const TempDir dir;
  const std::string whole = dir.Write("whole", std::string(3 * 65536, 'x'));
  const std::string part = dir.Write("part", std::string(2 * 65536 + 512, 'x'));
  Notes notes;
  qxprogressstream in(new qxifstream(whole), true, &notes, false);
  const auto told = [&](std::size_t bytes) {
    std::string read;
    in.read(read, bytes);
    return std::exchange(notes.text, "");
  };
  EXPECT_EQ(told(65536), "");
  EXPECT_EQ(told(1 << 30), "256/768 512/768 768/768 ");
  in.set(new qxiwrapperstream(new qxifstream(part), true), true);
  EXPECT_EQ(told(1 << 30), "256/514 512/514 514/514 ");
  EXPECT_TRUE(in.open(whole.c_str()));
  EXPECT_EQ(told(65537), "256/768 ");
  in.set(new qxifstream(part), true);
  EXPECT_EQ(told(65537), "256/514 ");
  EXPECT_TRUE(in.seek(256) && !in.seek(1L << 40)) << "65281 back";
  EXPECT_EQ(told(1), "256/514 ");
  EXPECT_EQ(told(1 << 30), "512/514 768/514 1024/514 ") << "by full buffers, beyond the end too";
}

TEST(qxprogressstream, DeletesTheTracersItOwns) {
  Notes::gone = 0;
  auto* own = new Notes;
  Notes borrowed;
  {
    qxprogressstream in(nullptr, false, own, true);
    in.SetTracer(own, true);
    EXPECT_EQ(Notes::gone, 0);
    in.SetTracer(&borrowed, false);
    EXPECT_TRUE(Notes::gone == 1 && in.get() == -1);
    in.SetTracer(new Notes, true);
  }
  EXPECT_EQ(Notes::gone, 2);
  EXPECT_FALSE(NullTracer.Aborted() || QXNoTracer.Aborted());
}

}  // namespace

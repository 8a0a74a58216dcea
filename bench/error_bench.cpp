// Reports beside a logging library: a message that the level drops, and one
// that is printed to /dev/null. Both print the same line, without a time, and
// pass every line on at once.
#include <benchmark/benchmark.h>

#include <string>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/ostream.h>

#if __has_include(<spdlog/spdlog.h>)
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#define HAVE_SPDLOG 1
#endif

namespace {

using QXSystem::QXThrow;

void SendQXThrowToNull() {
  static auto* null = new QXPlatform::qxofstream("/dev/null");
  static const bool done = (QXThrow.SetOutputStream(*null), true);
  benchmark::DoNotOptimize(done);
}

void SuppressedQXThrow(benchmark::State& state) {
  SendQXThrowToNull();
  int atom = 17;
  const char* name = "benzene";
  for (auto _ : state) {
    benchmark::DoNotOptimize(atom);
    QXThrow.Debug("atom %d of %s is odd", atom, name);
  }
}
BENCHMARK(SuppressedQXThrow);

void PrintedQXThrow(benchmark::State& state) {
  SendQXThrowToNull();
  int atom = 17;
  const char* name = "benzene";
  for (auto _ : state) QXThrow.Warning("atom %d of %s is odd", atom, name);
}
BENCHMARK(PrintedQXThrow);

#if HAVE_SPDLOG

spdlog::logger* NullLogger() {
  static const auto logger = [] {
    auto made = spdlog::basic_logger_mt("null", "/dev/null");
    made->set_pattern("Warning: %v");
    made->flush_on(spdlog::level::warn);
    spdlog::set_default_logger(made);
    return made;
  }();
  return logger.get();
}

void SuppressedSpdlog(benchmark::State& state) {
  spdlog::logger* logger = NullLogger();
  int atom = 17;
  const char* name = "benzene";
  for (auto _ : state) {
    benchmark::DoNotOptimize(atom);
    logger->debug("atom {} of {} is odd", atom, name);
  }
}
BENCHMARK(SuppressedSpdlog);

// As QXThrow is called: without a logger at hand.
void SuppressedSpdlogDefault(benchmark::State& state) {
  NullLogger();
  int atom = 17;
  const char* name = "benzene";
  for (auto _ : state) {
    benchmark::DoNotOptimize(atom);
    spdlog::debug("atom {} of {} is odd", atom, name);
  }
}
BENCHMARK(SuppressedSpdlogDefault);

void PrintedSpdlog(benchmark::State& state) {
  spdlog::logger* logger = NullLogger();
  int atom = 17;
  const char* name = "benzene";
  for (auto _ : state) logger->warn("atom {} of {} is odd", atom, name);
}
BENCHMARK(PrintedSpdlog);

#endif

}  // namespace

// All state that threads share, under load at the same time. What it is for is
// the thread sanitizer; what it checks without one are counts and identities.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <qxsystem/core/base.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/tagmap.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/qxb/qxbrfxn.h>
#include <qxsystem/qxb/qxbwfxn.h>
#include <qxsystem/records/types.h>
#include <qxsystem/util/uuid.h>

#ifdef __SANITIZE_THREAD__
// The sanitizer would wait a second at the end of each of the many processes.
extern "C" [[gnu::visibility("default")]] const char* __tsan_default_options() {
  return "atexit_sleep_ms=0";
}
#endif

namespace QXSystem {
namespace {

// Runs `job` in `count` threads, which are told their numbers.
void InThreads(unsigned count, const std::function<void(unsigned)>& job) {
  std::vector<std::thread> threads;
  for (unsigned number = 0; number < count; ++number) threads.emplace_back(job, number);
  for (std::thread& thread : threads) thread.join();
}

// The threads come upon new names in different orders.
void InternNames(unsigned number) {
  constexpr unsigned numNames = 20'000, numRepeats = 1'000'000 / 8;
  std::vector<unsigned> ids(numNames);
  for (unsigned i = 0; i < numNames; ++i) {
    const unsigned name = (i + number * numNames / 8) % numNames;
    ids[name] = QXGetTag("stress " + std::to_string(name));
  }
  for (unsigned i = 0; i < numRepeats; ++i) {
    const unsigned name = i * 7919 % numNames;
    const std::string text = "stress " + std::to_string(name);
    ASSERT_EQ(QXGetTag(text), ids[name]);
    ASSERT_EQ(QXGetTag(ids[name]), text);
  }
}

// Handlers with a level for each thread come and go.
void SetLevels(unsigned number) {
  for (unsigned i = 0; i < 500; ++i) {
    QXErrorHandler handler;
    handler.SetLevel(i % 2 ? QXErrorLevel::Verbose : QXErrorLevel::Error);
    ASSERT_EQ(handler.GetLevel(), i % 2 ? QXErrorLevel::Verbose : QXErrorLevel::Error);
    QXThrow.SetLevel(number % 2 ? QXErrorLevel::Info : QXErrorLevel::Warning);
    QXThrow.Debug("suppressed %u", i);
  }
}

void MakeParameters(unsigned) {
  for (unsigned i = 0; i < 2'000; ++i) {
    const std::unique_ptr<QXParameter> parameter(
        QXInterface::Factory().Construct(QXIntParameter::StaticClassID()));
    ASSERT_TRUE(parameter && parameter->SetStringValue(std::to_string(i)));
  }
}

void LookUpFieldTypes(unsigned number) {
  using QXDataFlow::QXFieldTypeHandlerRegistry;
  for (unsigned i = 0; i < 2'000; ++i)
    ASSERT_EQ(QXFieldTypeHandlerRegistry::GetInstance().GetHandler(std::to_string(number)),
              nullptr);
}

// Any number of threads read and write through one handler once it is filled.
class Streams {
public:
  Streams() {
    handler_.SetReadFxn(QXBasePODReadFxn<QXContainer>(), /*asDefault=*/false);
    handler_.SetWriteFxn(QXBasePODWriteFxn(), /*asDefault=*/false);
  }

  void operator()(unsigned number) const {
    for (unsigned i = 0; i < 500; ++i) {
      const unsigned title = QXGetTag("title " + std::to_string(i));
      QXContainer written, read;
      written.SetData<std::string>(title, std::to_string(number));
      qxosstream out;
      ASSERT_TRUE(QXBinaryWrite<QXBase>(out, written, handler_));
      qxisstream in;
      in.set(out.data(), out.size(), /*copy=*/true);
      ASSERT_EQ(QXBinaryRead(in, read, handler_), QXBReturn::Success);
      ASSERT_EQ(read.GetData<std::string>(title), std::to_string(number));
    }
  }

private:
  QXBinaryIOHandler handler_;
};

TEST(SharedState, ServesAllThreadsAtOnce) {
  const Streams streams;
  InThreads(8, [&streams](unsigned number) {
    const std::function<void(unsigned)> jobs[] = {InternNames, SetLevels, MakeParameters,
                                                  LookUpFieldTypes, std::cref(streams)};
    for (unsigned i = 0; i < std::size(jobs); ++i) jobs[(i + number) % std::size(jobs)](number);
  });
}

TEST(SharedState, GivesEveryUUIDOnce) {
  constexpr std::size_t perThread = 100'000;
  std::vector<std::string> ids(16 * perThread);
  InThreads(16, [&ids](unsigned number) {
    for (std::size_t i = 0; i < perThread; ++i) ids[number * perThread + i] = QXGetUUID16();
  });
  std::sort(ids.begin(), ids.end());
  EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end()), ids.end());
}

// A process in which eight threads end it at once.
[[noreturn]] void EndInEightThreads() {
  dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
  for (unsigned i = 0; i < 8; ++i) std::thread([i] { QXThrow.Fatal("thread %u", i); }).detach();
  for (;;) pause();
}

TEST(SharedState, EndsTheProcessOnceWhoeverAsks) {
  for (int run = 0; run < 200; ++run) {
    const pid_t child = fork();
    if (child == 0) EndInEightThreads();
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status) << " in run " << run;
    ASSERT_EQ(WEXITSTATUS(status), 1) << run;
  }
}

}  // namespace
}  // namespace QXSystem

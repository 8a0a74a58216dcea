#include <qxsystem/core/errorimpl.h>

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <qxsystem/core/endprocess_private.h>

namespace QXSystem {
namespace {

struct LevelTexts {
  const char* name;
  const char* prefix;
};

// By level.
constexpr LevelTexts levels[] = {
    {"Undefined", ""},    {"Debug", "Debug: "},     {"Verbose", ""},
    {"Info", ""},         {"Warning", "Warning: "}, {"Error", ""},
    {"Fatal", "Fatal: "}, {"Usage", "Usage: "},     {"Quiet", ""},
};

bool IsLevel(unsigned level) {
  return level >= QXErrorLevel::Debug && level <= QXErrorLevel::Quiet;
}

// A message as it is printed, in one piece; allocates only for a long one.
class Line {
public:
  Line(unsigned level, std::string_view text) {
    std::string unknown;
    std::string_view prefix;
    if (IsLevel(level)) {
      prefix = levels[level].prefix;
    } else {
      unknown = "Unknown Error Level(" + std::to_string(level) + "): ";
      prefix = unknown;
    }
    size_ = prefix.size() + text.size() + 1;
    if (size_ > sizeof short_) long_.reset(new char[size_]);
    char* end = data();
    end = std::copy(prefix.begin(), prefix.end(), end);
    end = std::copy(text.begin(), text.end(), end);
    *end = '\n';
  }

  const char* data() const { return long_ ? long_.get() : short_; }
  std::size_t size() const { return size_; }

private:
  char* data() { return long_ ? long_.get() : short_; }

  std::size_t size_;
  std::unique_ptr<char[]> long_;
  char short_[512];
};

}  // namespace

// A destructor that runs during `exit` may end the process too: calling `exit`
// again goes on with what is left.
void EndProcess(int status) {
  static std::atomic<pthread_t> exiting{};
  pthread_t owner{};
  const pthread_t self = pthread_self();
  if (!exiting.compare_exchange_strong(owner, self) && !pthread_equal(owner, self))
    for (;;) pause();
  std::exit(status);
}

std::string QXErrorLevelToString(unsigned level) {
  return level <= QXErrorLevel::Quiet ? levels[level].name : "Unknown Error Level";
}

QXErrorHandlerImplBase::~QXErrorHandlerImplBase() = default;

QXErrorHandlerImplBase::QXErrorHandlerImplBase(const QXErrorHandlerImplBase& other) {
  *this = other;
}

QXErrorHandlerImplBase& QXErrorHandlerImplBase::operator=(const QXErrorHandlerImplBase& other) {
  level_.Get() = other.level_.Get();
  Copy(other.counts_, counts_, std::memory_order_relaxed);
  strict_ = other.strict_.load();
  return *this;
}

bool QXErrorHandlerImplBase::GetStrict() const {
  return strict_;
}

unsigned QXErrorHandlerImplBase::GetLevel() const {
  return ThreadLevel();
}

unsigned QXErrorHandlerImplBase::Count(unsigned level) const {
  if (level != QXErrorLevel::Undefined) return counts_[IsLevel(level) ? level : 0];
  unsigned sum = 0;
  for (std::size_t i = 1; i < counts_.size(); ++i) sum += counts_[i];
  return sum;
}

void QXErrorHandlerImplBase::SetStrict(bool strict) {
  strict_ = strict;
}

void QXErrorHandlerImplBase::SetLevel(unsigned level) {
  level_.Get().level = level;
}

void QXErrorHandlerImplBase::IncrementCount(unsigned level) {
  counts_[IsLevel(level) ? level : 0].fetch_add(1, std::memory_order_relaxed);
}

void QXErrorHandlerImplBase::Clear() {
  for (std::size_t i = 1; i < counts_.size(); ++i) counts_[i] = 0;
}

void QXErrorHandlerImplBase::Copy(const Counters& from, Counters& to, std::memory_order order) {
  for (std::size_t i = 0; i < from.size(); ++i) to[i].store(from[i].load(order), order);
}

QXErrorHandlerStreamImpl::QXErrorHandlerStreamImpl() : out_(&QXPlatform::qxerr) {}

QXErrorHandlerStreamImpl::QXErrorHandlerStreamImpl(const QXErrorHandlerImplBase& state,
                                                   QXPlatform::qxostream& out)
    : QXErrorHandlerImplBase(state), out_(&out) {}

QXErrorHandlerStreamImpl::QXErrorHandlerStreamImpl(const QXErrorHandlerStreamImpl& other)
    : QXErrorHandlerImplBase(other), out_(other.out_) {}

QXErrorHandlerStreamImpl& QXErrorHandlerStreamImpl::operator=(
    const QXErrorHandlerStreamImpl& other) {
  if (this == &other) return *this;
  QXErrorHandlerImplBase::operator=(other);
  out_ = other.out_;
  return *this;
}

void QXErrorHandlerStreamImpl::Msg(unsigned level, const std::string& text) {
  Report(level, text);
}

void QXErrorHandlerStreamImpl::Report(unsigned level, std::string_view text) {
  if (GetLevel() <= level) {
    if (level == QXErrorLevel::Error)
      level = GetStrict() ? QXErrorLevel::Fatal : QXErrorLevel::Warning;
    const Line line(level, text);
    const std::lock_guard<std::mutex> lock(mutex_);
    if (level != QXErrorLevel::Quiet) {
      out_->write(line.data(), line.size());
      out_->flush();
    }
    IncrementCount(level);
  }
  // Without the lock, since what runs at exit may report.
  if (level == QXErrorLevel::Fatal) EndProcess(EXIT_FAILURE);
  if (level == QXErrorLevel::Usage) EndProcess(EXIT_SUCCESS);
}

QXErrorHandlerImplBase* QXErrorHandlerStreamImpl::CreateCopy() const {
  return new QXErrorHandlerStreamImpl(*this);
}

}  // namespace QXSystem

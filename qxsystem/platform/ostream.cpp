#include <qxsystem/platform/ostream.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

#include <qxsystem/platform/istream.h>

namespace QXPlatform {

// ---------------------------------------------------------------- qxostream

qxostream::~qxostream() = default;

bool qxostream::open(const std::string&) {
  return false;
}

bool qxostream::close() {
  flush();
  if (!_qxclose()) Refuse();
  return static_cast<bool>(*this);
}

bool qxostream::flush() {
  if (*this && !_qxflush()) Refuse();
  return static_cast<bool>(*this);
}

bool qxostream::_qxflush() {
  return true;
}
bool qxostream::_qxclose() {
  return true;
}

std::size_t qxostream::WriteOut(const unsigned char* data, std::size_t n) {
  if (!*this) return 0;
  const std::size_t taken = _qxwrite(data, n);
  if (taken < n) Refuse();
  return taken;
}

// Without room every further write comes to WriteOut, which accepts nothing.
void qxostream::Refuse() {
  SetFailed(true);
  limit_ = pos_;
}

qxostream& qxostream::operator<<(const char* text) {
  if (text != nullptr) write(text, std::strlen(text));
  return *this;
}

qxostream& qxostream::operator<<(const std::string& text) {
  write(text);
  return *this;
}

qxostream& qxostream::operator<<(char value) {
  put(static_cast<unsigned char>(value));
  return *this;
}

qxostream& qxostream::operator<<(bool value) {
  return *this << (value ? '1' : '0');
}

namespace {

template <typename T, typename... Format>
qxostream& WriteNumber(qxostream& out, T value, Format... format) {
  char text[32];
  const auto [stop, error] = std::to_chars(text, text + sizeof text, value, format...);
  out.write(text, static_cast<std::size_t>(stop - text));
  return out;
}

}  // namespace

qxostream& qxostream::operator<<(short value) {
  return WriteNumber(*this, value);
}
qxostream& qxostream::operator<<(unsigned short value) {
  return WriteNumber(*this, value);
}
qxostream& qxostream::operator<<(int value) {
  return WriteNumber(*this, value);
}
qxostream& qxostream::operator<<(unsigned int value) {
  return WriteNumber(*this, value);
}
qxostream& qxostream::operator<<(long value) {
  return WriteNumber(*this, value);
}
qxostream& qxostream::operator<<(unsigned long value) {
  return WriteNumber(*this, value);
}
qxostream& qxostream::operator<<(long long value) {
  return WriteNumber(*this, value);
}
qxostream& qxostream::operator<<(unsigned long long value) {
  return WriteNumber(*this, value);
}

qxostream& qxostream::operator<<(float value) {
  return WriteNumber(*this, value, std::chars_format::general, 6);
}

qxostream& qxostream::operator<<(double value) {
  return WriteNumber(*this, value, std::chars_format::general, 6);
}

qxostream& qxostream::operator<<(qxmanipulator manipulator) {
  manipulator(*this);
  return *this;
}

qxostream& qxendl(qxostream& out) {
  out.put('\n');
  out.flush();
  return out;
}

// --------------------------------------------------------------- qxofstream

namespace {

// Writes all of `data` unless the descriptor refuses; returns how much went.
// A descriptor that somebody made non-blocking is waited for.
std::size_t WriteAll(int fd, const unsigned char* data, std::size_t n) {
  std::size_t done = 0;
  while (done < n) {
    const ssize_t went = ::write(fd, data + done, n - done);
    if (went > 0) {
      done += static_cast<std::size_t>(went);
    } else if (went < 0 && errno == EAGAIN) {
      pollfd ready = {fd, POLLOUT, 0};
      ::poll(&ready, 1, -1);
    } else if (went == 0 || errno != EINTR) {
      break;
    }
  }
  return done;
}

}  // namespace

qxofstream::qxofstream() = default;
qxofstream::qxofstream(const std::string& name) {
  qxofstream::open(name);
}
qxofstream::~qxofstream() {
  close();
}

bool qxofstream::open(const std::string& name) {
  close();
  SetFailed(true);
  if (!buffer_) buffer_ = std::make_unique<unsigned char[]>(QXStreamBufferSize);
  do {
    fd_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  } while (fd_ < 0 && errno == EINTR);
  if (fd_ < 0) return false;
  pos_ = buffer_.get();
  limit_ = pos_ + QXStreamBufferSize;
  SetFailed(false);
  return true;
}

std::size_t qxofstream::_qxwrite(const unsigned char* data, std::size_t n) {
  if (fd_ < 0 || !_qxflush()) return 0;
  if (n >= QXStreamBufferSize) return WriteAll(fd_, data, n);
  std::memcpy(pos_, data, n);
  pos_ += n;
  return n;
}

bool qxofstream::_qxflush() {
  if (fd_ < 0) return true;
  const auto filled = static_cast<std::size_t>(pos_ - buffer_.get());
  pos_ = buffer_.get();
  return WriteAll(fd_, buffer_.get(), filled) == filled;
}

bool qxofstream::_qxclose() {
  pos_ = limit_ = nullptr;
  if (fd_ < 0) return true;
  const int result = ::close(fd_);
  fd_ = -1;
  // After EINTR the descriptor is closed all the same.
  return result == 0 || errno == EINTR;
}

// --------------------------------------------------------------- qxosstream

qxosstream::qxosstream() = default;
qxosstream::~qxosstream() {
  std::free(block_);
}

void qxosstream::reserve(std::size_t n) {
  if (n > static_cast<std::size_t>(limit_ - block_)) Grow(n);
}

std::size_t qxosstream::_qxwrite(const unsigned char* data, std::size_t n) {
  std::size_t needed;
  if (__builtin_add_overflow(size(), n, &needed)) throw std::bad_alloc();
  constexpr std::size_t smallest = 256;
  Grow(std::max({needed, 2 * static_cast<std::size_t>(limit_ - block_), smallest}));
  std::memcpy(pos_, data, n);
  pos_ += n;
  return n;
}

void qxosstream::Grow(std::size_t capacity) {
  constexpr std::size_t most = std::numeric_limits<std::ptrdiff_t>::max();
  if (capacity > most) throw std::bad_alloc();
  const std::size_t used = size();
  void* grown = std::realloc(block_, capacity);
  if (grown == nullptr) throw std::bad_alloc();
  block_ = static_cast<unsigned char*>(grown);
  pos_ = block_ + used;
  limit_ = block_ + capacity;
}

// ---------------------------------------------------------- standard streams

namespace {

// Both streams are constant-initialised, so they stand before any initialiser
// runs, and sit in unions without destructor, so they stand until the process
// is gone.

class ErrorStream final : public qxostream {
public:
  constexpr ErrorStream() = default;

private:
  // What the descriptor refuses is lost, and the stream stays good: a disk
  // that was full once must not silence all later messages.
  std::size_t _qxwrite(const unsigned char* data, std::size_t n) override {
    WriteAll(STDERR_FILENO, data, n);
    return n;
  }
};

unsigned char outputBuffer[QXStreamBufferSize];

class OutputStream final : public qxostream {
public:
  constexpr OutputStream() {
    pos_ = outputBuffer;
    limit_ = outputBuffer + QXStreamBufferSize;
  }

  void StopBuffering() {
    flush();
    pos_ = limit_ = outputBuffer;
    buffered_ = false;
  }

private:
  std::size_t _qxwrite(const unsigned char* data, std::size_t n) override {
    if (!_qxflush()) return 0;
    if (n >= QXStreamBufferSize || !buffered_) return WriteAll(STDOUT_FILENO, data, n);
    std::memcpy(pos_, data, n);
    pos_ += n;
    return n;
  }

  bool _qxflush() override {
    const auto filled = static_cast<std::size_t>(pos_ - outputBuffer);
    pos_ = outputBuffer;
    return WriteAll(STDOUT_FILENO, outputBuffer, filled) == filled;
  }

  bool buffered_ = true;
};

template <typename Stream>
union Eternal {
  constexpr Eternal() : stream() {}
  ~Eternal() {}
  Stream stream;
};

// The compiler's word that nothing here waits for an initialiser.
#ifdef __clang__
#define QX_CONSTANT [[clang::require_constant_initialization]]
#else
#define QX_CONSTANT __constinit
#endif

QX_CONSTANT Eternal<ErrorStream> errorStream;
QX_CONSTANT Eternal<OutputStream> outputStream;

const struct StopBufferingAtExit {
  ~StopBufferingAtExit() { outputStream.stream.StopBuffering(); }
} stopBufferingAtExit;

}  // namespace

QX_CONSTANT qxostream& qxerr = errorStream.stream;
QX_CONSTANT qxostream& qxout = outputStream.stream;

}  // namespace QXPlatform

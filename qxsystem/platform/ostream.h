// Output streams: bytes and text into a file or into memory, and the process's
// two standard streams.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

#include <qxsystem/platform/stream.h>

namespace QXPlatform {

/// Abstract output stream of bytes.
///
/// A stream that has room in memory takes bytes inline, without a virtual
/// call. Once the target has refused bytes the stream tests false and accepts
/// no more.
class QXPLATFORM_API qxostream : public qxstream {
public:
  ~qxostream() override;
  qxostream(const qxostream&) = delete;
  qxostream& operator=(const qxostream&) = delete;

  /// Opens the target `name`, after closing the present one, and empties it.
  /// When that fails the stream tests false. Streams that know no names answer
  /// false and change nothing.
  virtual bool open(const std::string& name);

  /// Passes on what is buffered and closes the target. False when bytes were
  /// refused, now or before.
  bool close();

  /// Passes on what is buffered. False when bytes were refused.
  bool flush();

  /// Takes `n` bytes and returns how many were accepted. A buffered stream may
  /// find out later, in `flush` or `close`, that the target refuses them.
  std::size_t write(const char* data, std::size_t n) {
    return write(reinterpret_cast<const unsigned char*>(data), n);
  }
  std::size_t write(const unsigned char* data, std::size_t n) {
    if (n > Room()) return WriteOut(data, n);
    if (n != 0) std::memcpy(pos_, data, n);
    pos_ += n;
    return n;
  }
  std::size_t write(const std::string& bytes) { return write(bytes.data(), bytes.size()); }

  /// Takes one byte; false when it was refused.
  bool put(unsigned char byte) {
    if (pos_ == limit_) return WriteOut(&byte, 1) == 1;
    *pos_++ = byte;
    return true;
  }

  /// Text: integers in decimal; floating-point numbers with up to six
  /// significant digits, as printf's %g gives them in the C locale; `bool` as
  /// 0 or 1. A null `text` writes nothing.
  qxostream& operator<<(const char* text);
  qxostream& operator<<(const std::string& text);
  qxostream& operator<<(char value);
  qxostream& operator<<(bool value);
  qxostream& operator<<(short value);
  qxostream& operator<<(unsigned short value);
  qxostream& operator<<(int value);
  qxostream& operator<<(unsigned int value);
  qxostream& operator<<(long value);
  qxostream& operator<<(unsigned long value);
  qxostream& operator<<(long long value);
  qxostream& operator<<(unsigned long long value);
  qxostream& operator<<(float value);
  qxostream& operator<<(double value);

  // A byte is no text, and a pointer no number: neither prints by accident.
  qxostream& operator<<(signed char) = delete;
  qxostream& operator<<(unsigned char) = delete;
  qxostream& operator<<(const void*) = delete;

  qxostream& operator<<(qxmanipulator manipulator);
  qxostream& operator<<(qxostream& (*manipulator)(qxostream&)) { return manipulator(*this); }

protected:
  constexpr qxostream() = default;

  /// Accepts `n` bytes behind those of the room that are filled, which it
  /// takes first, and returns how many of the `n` it took.
  virtual std::size_t _qxwrite(const unsigned char* data, std::size_t n) = 0;

  /// Passes on what stands in the room. False when bytes were refused.
  virtual bool _qxflush();

  /// Closes the target, which was flushed. False when that failed.
  virtual bool _qxclose();

  std::size_t Room() const { return static_cast<std::size_t>(limit_ - pos_); }

  // Room for bytes that need no virtual call: [pos_, limit_). A derived class
  // sets both; a stream without buffer leaves them null.
  unsigned char* pos_ = nullptr;
  unsigned char* limit_ = nullptr;

private:
  std::size_t WriteOut(const unsigned char* data, std::size_t n);
  void Refuse();
};

/// Output into a named file; writes 64 KiB at a time.
class QXPLATFORM_API qxofstream : public qxostream {
public:
  qxofstream();
  explicit qxofstream(const std::string& name);

  /// Closes the file; a failure then goes unseen, so close first what matters.
  ~qxofstream() override;

  bool open(const std::string& name) override;

protected:
  std::size_t _qxwrite(const unsigned char* data, std::size_t n) override;
  bool _qxflush() override;
  bool _qxclose() override;

private:
  int fd_ = -1;
  std::unique_ptr<unsigned char[]> buffer_;  // QXStreamBufferSize bytes once opened
};

/// Output into memory.
class QXPLATFORM_API qxosstream : public qxostream {
public:
  qxosstream();
  ~qxosstream() override;

  /// The bytes written so far.
  std::string str() const { return std::string(data(), size()); }

  /// The same without a copy: valid until the next write.
  const char* data() const { return reinterpret_cast<const char*>(block_); }

  /// The number of bytes written so far.
  std::size_t size() const { return static_cast<std::size_t>(pos_ - block_); }

  /// Makes room for `n` bytes in all, so that writing them moves nothing.
  void reserve(std::size_t n);

  /// Forgets all bytes and keeps the memory.
  void clear() { pos_ = block_; }

protected:
  std::size_t _qxwrite(const unsigned char* data, std::size_t n) override;

private:
  void Grow(std::size_t capacity);

  unsigned char* block_ = nullptr;  // bytes [block_, pos_), room up to limit_
};

/// Ends the line and flushes.
QXPLATFORM_API qxostream& qxendl(qxostream& out);

/// The process's error stream: unbuffered, on file descriptor 2. It exists
/// before the first static initialiser runs and is never destroyed.
///
/// It accepts everything: what the descriptor refuses is lost, and the next
/// bytes are tried again, so that a full disk can't silence it for good.
QXPLATFORM_API extern qxostream& qxerr;

/// The process's standard output stream: buffered, on file descriptor 1,
/// flushed at process exit and unbuffered from then on. It is never destroyed.
QXPLATFORM_API extern qxostream& qxout;

}  // namespace QXPlatform

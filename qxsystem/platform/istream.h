// Input streams: bytes from a file, from memory or through another stream.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <qxsystem/platform/stream.h>

namespace QXPlatform {

class qxostream;

/// Size of a stream's buffer, and so of one refill from a file.
constexpr std::size_t QXStreamBufferSize = 0x10000;

/// Abstract input stream of bytes.
///
/// Every stream shows a window of bytes that are in memory; reading a byte at
/// a time from it is inline and costs no virtual call. Positions and sizes are
/// bytes from the start and may exceed 2^32.
class QXPLATFORM_API qxistream : public qxstream {
public:
  ~qxistream() override;
  qxistream(const qxistream&) = delete;
  qxistream& operator=(const qxistream&) = delete;

  /// Opens the source `name`, after closing the present one. Streams that know
  /// no names answer false and change nothing.
  virtual bool open(const char* name);

  /// Closes the source; the stream then is at its end.
  void close();

  /// Whether the stream is used up. It is known before a read comes back empty,
  /// for which a file stream may have to fill its buffer.
  bool eof() { return cur_ == end_ && !Fill(); }

  /// Moves up to `n` bytes into `buffer` and returns their number, less than
  /// `n` only at the end of the stream or after a failure of the source.
  std::size_t read(char* buffer, std::size_t n) {
    return read(reinterpret_cast<unsigned char*>(buffer), n);
  }
  std::size_t read(unsigned char* buffer, std::size_t n);

  /// Replaces `out` by the whole remainder of the stream.
  std::size_t read(std::string& out);

  /// Replaces `out` by up to `n` bytes. Memory grows with the bytes that come,
  /// not with `n`.
  std::size_t read(std::string& out, std::size_t n);

  /// The next byte, consumed; -1 at the end.
  int get() { return eof() ? -1 : *cur_++; }

  /// The byte `ahead` places further on, which stays in the stream; -1 when
  /// the stream ends before it. `ahead` is less than QXStreamBufferSize.
  int peek(unsigned ahead = 0) { return ahead < Buffered() ? cur_[ahead] : PeekAcrossFill(ahead); }

  /// The next `n` bytes, consumed, if they stand in memory already; else null,
  /// and nothing is consumed. A memory stream always has all its bytes. They
  /// stay valid until the next operation on this stream.
  const unsigned char* take(std::size_t n) {
    if (n > Buffered()) return nullptr;
    const unsigned char* at = cur_;
    cur_ += n;
    return at;
  }

  /// Replaces `line` by the next line, without its line end, which is "\n" or
  /// "\r\n"; a lone "\r" is text. The last line needs none. False,
  /// with an empty `line`, at the end of the stream.
  bool getline(std::string& line);

  /// Moves behind the next "\n", or to the end.
  void skipline();

  /// Moves forward `n` bytes, at most to the end, and returns how many were
  /// passed. Nothing happens for `n` below 1.
  std::size_t skip(long n);

  /// Moves to the position `pos` from the start. False, with the position as
  /// it was, when the source cannot seek or `pos` lies outside it.
  bool seek(long pos);

  /// The position of the next byte, -1 when unknown.
  long tell() {
    const long behind = _qxtell();
    return behind < 0 ? -1 : behind - static_cast<long>(Buffered());
  }

  /// The size of the whole source, -1 when unknown.
  long size() { return _qxsize(); }

  /// Text extraction: white space is skipped, then the longest text of a value
  /// is taken. Numbers are decimal, in the form of the C locale; floating-point
  /// ones may also be "inf", "infinity" and "nan". `bool` takes 0, 1, "true"
  /// and "false", these words in any case; the `char` kinds take one byte; a
  /// string takes up to the next white space.
  ///
  /// Where no value stands, or it is out of range, too small for a normal or
  /// subnormal number included, the argument keeps its value and the stream
  /// tests false. A stream that tests false extracts nothing more.
  qxistream& operator>>(bool& value);
  qxistream& operator>>(char& value);
  qxistream& operator>>(signed char& value);
  qxistream& operator>>(unsigned char& value);
  qxistream& operator>>(short& value);
  qxistream& operator>>(unsigned short& value);
  qxistream& operator>>(int& value);
  qxistream& operator>>(unsigned int& value);
  qxistream& operator>>(long& value);
  qxistream& operator>>(unsigned long& value);
  qxistream& operator>>(float& value);
  qxistream& operator>>(double& value);
  qxistream& operator>>(std::string& value);

  /// Moves what is left of the stream to `out`, as far as that takes it. What `out` refuses stays
  /// here.
  qxistream& operator>>(qxostream& out);

  /// Calls the manipulator.
  qxistream& operator>>(qxmanipulator manipulator);
  qxistream& operator>>(qxistream& (*manipulator)(qxistream&)) { return manipulator(*this); }

protected:
  qxistream() = default;

  /// Puts at least one more byte behind those of the window that are not
  /// consumed, which stay in front of it. False when no more can come.
  virtual bool _qxfill();

  /// Moves the source `back` bytes back (forward when negative), seen from the
  /// next byte to be read, and shows a window there. False, with nothing
  /// changed, when it cannot.
  virtual bool _qxseek(long back);

  /// Position in the source of the end of the window, -1 when unknown.
  virtual long _qxtell();

  /// See `size`.
  virtual long _qxsize();

  /// Forgets what has been read and any note of the end, as on a fresh source.
  virtual void _qxclear();

  /// Closes the source.
  virtual void _qxclose();

  std::size_t Buffered() const { return static_cast<std::size_t>(end_ - cur_); }

  // The window: bytes in memory that are not consumed are [cur_, end_). A
  // derived class sets both from _qxfill, _qxseek and _qxclear.
  const unsigned char* cur_ = nullptr;
  const unsigned char* end_ = nullptr;

private:
  friend class qxiwrapperstream;

  bool Fill();
  int PeekAcrossFill(unsigned ahead);
};

/// Input from a named file; reads 64 KiB at a time.
///
/// Anything that can be opened for reading will do, a pipe too, which has no
/// size and cannot seek. A directory is refused.
class QXPLATFORM_API qxifstream : public qxistream {
public:
  qxifstream();
  explicit qxifstream(const char* name);
  explicit qxifstream(const std::string& name);
  ~qxifstream() override;

  bool open(const char* name) override;

protected:
  bool _qxfill() override;
  bool _qxseek(long back) override;
  long _qxtell() override;
  long _qxsize() override;
  void _qxclear() override;
  void _qxclose() override;

private:
  int fd_ = -1;
  bool seekable_ = false;                    // a regular file or a block device
  bool ended_ = false;                       // the end was met, or a failure
  std::unique_ptr<unsigned char[]> buffer_;  // QXStreamBufferSize bytes once opened
  long read_ = 0;                            // file position behind the window
};

/// Input over a block of memory.
///
/// A copy has the same bytes, in memory of its own, and stands at their
/// beginning.
class QXPLATFORM_API qxisstream : public qxistream {
public:
  qxisstream();
  explicit qxisstream(const std::string& bytes);
  qxisstream(const qxisstream& other);
  qxisstream& operator=(const qxisstream& other);
  ~qxisstream() override;

  /// Reads from `data`. With `copy` the bytes are copied; without, the caller
  /// keeps them and they must outlive their use here. False, with nothing
  /// changed, when `data` is null and `n` is not 0.
  ///
  /// Beware of the next form, which a `char*` argument picks and whose flag
  /// means the opposite.
  bool set(const char* data, std::size_t n, bool copy);

  /// Reads from `data`. With `own` this stream takes the block over and frees
  /// it by `delete[]`; without, the caller keeps it.
  bool set(char* data, std::size_t n, bool own);

  /// Reads from a copy of `bytes`.
  bool set(const std::string& bytes);

  /// Replaces `bytes` by all bytes of the block, whatever has been read.
  void getbuffer(std::string& bytes) const;

protected:
  bool _qxseek(long back) override;
  long _qxtell() override;
  long _qxsize() override;
  void _qxclear() override;
  void _qxclose() override;

private:
  void Adopt(const unsigned char* data, std::size_t n, bool owned);

  const unsigned char* data_ = nullptr;
  std::size_t size_ = 0;
  bool owned_ = false;  // data_ is ours, made by new[] of char
};

/// Input that forwards to another stream; base of streams that watch what
/// passes.
///
/// While a stream is wrapped, only the wrapper may be used to read it.
class QXPLATFORM_API qxiwrapperstream : public qxistream {
public:
  qxiwrapperstream();
  qxiwrapperstream(qxistream* inner, bool own);
  ~qxiwrapperstream() override;

  /// Reads from `inner` from now on, null for nothing. With `own` this stream
  /// deletes it; a previous inner stream that was owned is deleted. The present
  /// one given again changes nothing but the ownership. A borrowed `inner` must
  /// live until another is set, `clear`, or the end of this stream.
  void set(qxistream* inner, bool own);

  /// Lets go of the inner stream and gives back to it what was not read.
  void clear() { _qxclear(); }

  /// Opens the inner stream by name.
  bool open(const char* name) override;

protected:
  bool _qxfill() override;
  bool _qxseek(long back) override;
  long _qxtell() override;
  long _qxsize() override;
  void _qxclear() override;
  void _qxclose() override;

  /// Shows `inner` from now on; the stream before it has been let go already.
  virtual void _qxset(qxistream* inner);

  /// The stream behind this one, null when there is none.
  qxistream* Inner() const { return inner_; }

  /// The stream behind this and any further wrappers.
  qxistream* Innermost() const;

private:
  void GiveBack();
  void ShowInner();

  qxistream* inner_ = nullptr;
  bool owned_ = false;
};

}  // namespace QXPlatform

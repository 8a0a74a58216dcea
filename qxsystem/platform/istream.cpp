#include <qxsystem/platform/istream.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <type_traits>

#include <qxsystem/platform/ostream.h>

namespace QXPlatform {

// ---------------------------------------------------------------- qxistream

qxistream::~qxistream() = default;

bool qxistream::open(const char*) {
  return false;
}

void qxistream::close() {
  _qxclose();
}

bool qxistream::_qxfill() {
  return false;
}
bool qxistream::_qxseek(long) {
  return false;
}
long qxistream::_qxtell() {
  return -1;
}
long qxistream::_qxsize() {
  return -1;
}
void qxistream::_qxclear() {
  cur_ = end_ = nullptr;
}
void qxistream::_qxclose() {
  _qxclear();
}

// A hook that claims success without bytes must not make a loop endless.
bool qxistream::Fill() {
  return _qxfill() && cur_ != end_;
}

int qxistream::PeekAcrossFill(unsigned ahead) {
  if (ahead >= QXStreamBufferSize) return -1;
  while (ahead >= Buffered()) {
    const std::size_t before = Buffered();
    if (!_qxfill() || Buffered() <= before) return -1;
  }
  return cur_[ahead];
}

std::size_t qxistream::read(unsigned char* buffer, std::size_t n) {
  std::size_t done = 0;
  while (done < n && !eof()) {
    const std::size_t part = std::min(n - done, Buffered());
    std::memcpy(buffer + done, cur_, part);
    cur_ += part;
    done += part;
  }
  return done;
}

std::size_t qxistream::read(std::string& out) {
  // The size is a hint only: it may be unknown, and files of /proc say zero, or
  // more than there is memory.
  constexpr long mostAtOnce = 1L << 26;
  const long left = size() - tell();
  out.clear();
  if (left > 0) out.reserve(static_cast<std::size_t>(std::min(left, mostAtOnce)));
  return read(out, std::numeric_limits<std::size_t>::max());
}

std::size_t qxistream::read(std::string& out, std::size_t n) {
  out.clear();
  while (out.size() < n && !eof()) {
    const std::size_t part = std::min(n - out.size(), Buffered());
    out.append(reinterpret_cast<const char*>(cur_), part);
    cur_ += part;
  }
  return out.size();
}

bool qxistream::getline(std::string& line) {
  line.clear();
  if (eof()) return false;
  do {
    const void* found = std::memchr(cur_, '\n', Buffered());
    const auto* stop = found ? static_cast<const unsigned char*>(found) : end_;
    line.append(reinterpret_cast<const char*>(cur_), static_cast<std::size_t>(stop - cur_));
    cur_ = stop;
    if (found) {
      ++cur_;
      if (!line.empty() && line.back() == '\r') line.pop_back();
      break;
    }
  } while (!eof());
  return true;
}

void qxistream::skipline() {
  while (!eof()) {
    if (const void* found = std::memchr(cur_, '\n', Buffered())) {
      cur_ = static_cast<const unsigned char*>(found) + 1;
      return;
    }
    cur_ = end_;
  }
}

std::size_t qxistream::skip(long n) {
  if (n < 1) return 0;
  const auto wanted = static_cast<std::size_t>(n);
  std::size_t passed = 0;
  // A long way inside the source is one seek where the source can; what
  // remains, behind the size that is told, is read through.
  if (wanted > Buffered() + QXStreamBufferSize) {
    const long at = tell();
    const long way = at < 0 ? 0 : std::min(n, size() - at);
    if (way > 0 && _qxseek(-way)) passed = static_cast<std::size_t>(way);
  }
  while (passed < wanted && !eof()) {
    const std::size_t part = std::min(wanted - passed, Buffered());
    cur_ += part;
    passed += part;
  }
  return passed;
}

bool qxistream::seek(long pos) {
  const long at = tell();
  return at >= 0 && pos >= 0 && _qxseek(at - pos);
}

// ---------------------------------------------------------- text extraction

namespace {

bool IsSpace(int byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}
bool IsDigit(int byte) {
  return byte >= '0' && byte <= '9';
}
bool IsSign(int byte) {
  return byte == '+' || byte == '-';
}

// False when the stream ends first.
bool SkipSpace(qxistream& in) {
  while (!in.eof()) {
    if (!IsSpace(in.peek())) return true;
    in.get();
  }
  return false;
}

// `word` is lower case and stands next, in any case of letters.
bool StandsNext(qxistream& in, unsigned ahead, std::string_view word) {
  for (const char letter : word) {
    const int byte = in.peek(ahead++);
    if ((byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte) != letter) return false;
  }
  return true;
}

// All digits are taken, also of a number that is out of range, so that what
// follows it is found; they need no memory.
template <typename T>
bool ParseInteger(qxistream& in, T& value) {
  if (!SkipSpace(in)) return false;
  const bool sign = IsSign(in.peek());
  if (!IsDigit(in.peek(sign))) return false;
  const bool negative = sign && in.get() == '-';

  unsigned long magnitude = 0;
  bool fits = true;
  while (IsDigit(in.peek())) {
    const auto digit = static_cast<unsigned long>(in.get() - '0');
    fits = fits && !__builtin_mul_overflow(magnitude, 10ul, &magnitude) &&
           !__builtin_add_overflow(magnitude, digit, &magnitude);
  }

  constexpr auto most = static_cast<unsigned long>(std::numeric_limits<T>::max());
  constexpr unsigned long least = std::is_signed_v<T> ? most + 1 : 0;  // as a magnitude
  if (!fits || magnitude > (negative ? least : most)) return false;
  value = static_cast<T>(negative ? 0 - magnitude : magnitude);
  return true;
}

void TakeDigits(qxistream& in, std::string& text) {
  while (IsDigit(in.peek())) text += static_cast<char>(in.get());
}

// What stands next as a floating-point number goes into `text`, without a plus
// sign; false, with nothing taken, when none does.
bool TakeNumber(qxistream& in, std::string& text) {
  const unsigned sign = IsSign(in.peek());
  if (in.peek(0) == '-') text = '-';

  for (const std::string_view word : {"infinity", "inf", "nan"}) {
    if (!StandsNext(in, sign, word)) continue;
    text += word;
    in.skip(static_cast<long>(sign + word.size()));
    return true;
  }

  const bool digits = IsDigit(in.peek(sign));
  if (!digits && !(in.peek(sign) == '.' && IsDigit(in.peek(sign + 1)))) return false;
  in.skip(sign);
  TakeDigits(in, text);
  if (in.peek() == '.') {
    text += static_cast<char>(in.get());
    TakeDigits(in, text);
  }
  // An "e" belongs to the number only when an exponent follows.
  if (in.peek() == 'e' || in.peek() == 'E') {
    const unsigned first = IsSign(in.peek(1)) ? 2 : 1;
    if (IsDigit(in.peek(first))) {
      for (unsigned i = 0; i < first; ++i) text += static_cast<char>(in.get());
      TakeDigits(in, text);
    }
  }
  return true;
}

template <typename T>
bool ParseFloat(qxistream& in, T& value) {
  std::string text;
  if (!SkipSpace(in) || !TakeNumber(in, text)) return false;
  T parsed = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
  if (error != std::errc() || stop != text.data() + text.size()) return false;
  value = parsed;
  return true;
}

bool ParseBool(qxistream& in, bool& value) {
  if (!SkipSpace(in)) return false;
  for (const std::string_view word : {"true", "false"}) {
    if (!StandsNext(in, 0, word)) continue;
    in.skip(static_cast<long>(word.size()));
    value = word == "true";
    return true;
  }
  unsigned int number = 0;
  if (!ParseInteger(in, number) || number > 1) return false;
  value = number == 1;
  return true;
}

template <typename T>
bool ParseByte(qxistream& in, T& value) {
  if (!SkipSpace(in)) return false;
  value = static_cast<T>(in.get());
  return true;
}

bool ParseWord(qxistream& in, std::string& value) {
  if (!SkipSpace(in)) return false;
  value.clear();
  for (int byte = in.peek(); byte >= 0 && !IsSpace(byte); byte = in.peek())
    value += static_cast<char>(in.get());
  return true;
}

}  // namespace

// A stream that has failed gives no more values: in a chain the faulty one
// must not hand its text to the next.
#define QX_EXTRACT(type, parse)                         \
  qxistream& qxistream::operator>>(type& value) {       \
    if (*this && !parse(*this, value)) SetFailed(true); \
    return *this;                                       \
  }
QX_EXTRACT(bool, ParseBool)
QX_EXTRACT(char, ParseByte)
QX_EXTRACT(signed char, ParseByte)
QX_EXTRACT(unsigned char, ParseByte)
QX_EXTRACT(short, ParseInteger)
QX_EXTRACT(unsigned short, ParseInteger)
QX_EXTRACT(int, ParseInteger)
QX_EXTRACT(unsigned int, ParseInteger)
QX_EXTRACT(long, ParseInteger)
QX_EXTRACT(unsigned long, ParseInteger)
QX_EXTRACT(float, ParseFloat)
QX_EXTRACT(double, ParseFloat)
QX_EXTRACT(std::string, ParseWord)
#undef QX_EXTRACT

qxistream& qxistream::operator>>(qxostream& out) {
  while (!eof()) {
    const std::size_t taken = out.write(cur_, Buffered());
    cur_ += taken;
    if (!out) break;
  }
  return *this;
}

qxistream& qxistream::operator>>(qxmanipulator manipulator) {
  manipulator(*this);
  return *this;
}

// --------------------------------------------------------------- qxifstream

qxifstream::qxifstream() = default;
qxifstream::qxifstream(const char* name) {
  qxifstream::open(name);
}
qxifstream::qxifstream(const std::string& name) {
  qxifstream::open(name.c_str());
}
qxifstream::~qxifstream() {
  qxifstream::_qxclose();
}

bool qxifstream::open(const char* name) {
  close();
  SetFailed(true);
  if (name == nullptr) return false;
  if (!buffer_) buffer_ = std::make_unique<unsigned char[]>(QXStreamBufferSize);
  do {
    fd_ = ::open(name, O_RDONLY | O_CLOEXEC);
  } while (fd_ < 0 && errno == EINTR);
  if (fd_ < 0) return false;

  struct stat status;
  if (::fstat(fd_, &status) != 0 || S_ISDIR(status.st_mode)) {
    close();
    return false;
  }
  // Some file systems have regular files that can only be read in order.
  seekable_ =
      (S_ISREG(status.st_mode) || S_ISBLK(status.st_mode)) && ::lseek(fd_, 0, SEEK_CUR) == 0;
  SetFailed(false);
  return true;
}

bool qxifstream::_qxfill() {
  const std::size_t kept = Buffered();
  if (fd_ < 0 || ended_ || kept == QXStreamBufferSize) return false;
  unsigned char* const front = buffer_.get();
  if (kept != 0) std::memmove(front, cur_, kept);
  cur_ = front;
  end_ = front + kept;

  // Positions are ours, so that the file's own never has to be moved.
  const std::size_t room = QXStreamBufferSize - kept;
  ssize_t got;
  do {
    got = seekable_ ? ::pread(fd_, front + kept, room, read_) : ::read(fd_, front + kept, room);
  } while (got < 0 && errno == EINTR);
  if (got <= 0) {
    if (got < 0) SetFailed(true);
    ended_ = true;
    return false;
  }
  end_ += got;
  read_ += got;
  return true;
}

bool qxifstream::_qxseek(long back) {
  long target;
  if (!seekable_ || __builtin_sub_overflow(read_ - static_cast<long>(Buffered()), back, &target) ||
      target < 0)
    return false;
  const long inMemory = cur_ ? end_ - buffer_.get() : 0;
  if (target < read_ - inMemory || target > read_) {
    if (target > _qxsize()) return false;
    cur_ = end_ = buffer_.get();
    read_ = target;
  } else if (cur_) {
    cur_ = end_ - (read_ - target);
  }
  ended_ = false;
  return true;
}

long qxifstream::_qxtell() {
  return read_;
}

long qxifstream::_qxsize() {
  struct stat status;
  if (!seekable_ || ::fstat(fd_, &status) != 0) return -1;
  return S_ISBLK(status.st_mode) ? ::lseek(fd_, 0, SEEK_END) : status.st_size;
}

void qxifstream::_qxclear() {
  cur_ = end_ = nullptr;
  read_ = 0;
  ended_ = false;
}

void qxifstream::_qxclose() {
  qxifstream::_qxclear();
  // After EINTR the descriptor is closed all the same.
  if (fd_ >= 0 && ::close(fd_) != 0 && errno != EINTR) SetFailed(true);
  fd_ = -1;
  seekable_ = false;
}

// --------------------------------------------------------------- qxisstream

namespace {

const unsigned char* CopyBytes(const void* data, std::size_t n) {
  if (n == 0) return nullptr;
  char* copy = new char[n];
  std::memcpy(copy, data, n);
  return reinterpret_cast<const unsigned char*>(copy);
}

bool IsBlock(const void* data, std::size_t n) {
  return n == 0 || (data != nullptr && n <= std::size_t{std::numeric_limits<long>::max()});
}

}  // namespace

qxisstream::qxisstream() = default;

qxisstream::qxisstream(const std::string& bytes) {
  set(bytes);
}

qxisstream::qxisstream(const qxisstream& other) {
  Adopt(CopyBytes(other.data_, other.size_), other.size_, /*owned=*/true);
}

qxisstream& qxisstream::operator=(const qxisstream& other) {
  if (this != &other) Adopt(CopyBytes(other.data_, other.size_), other.size_, /*owned=*/true);
  return *this;
}

qxisstream::~qxisstream() {
  qxisstream::_qxclose();
}

bool qxisstream::set(const char* data, std::size_t n, bool copy) {
  if (!IsBlock(data, n)) return false;
  Adopt(copy ? CopyBytes(data, n) : reinterpret_cast<const unsigned char*>(data), n, copy);
  return true;
}

bool qxisstream::set(char* data, std::size_t n, bool own) {
  if (!IsBlock(data, n)) return false;
  Adopt(reinterpret_cast<const unsigned char*>(data), n, own);
  return true;
}

bool qxisstream::set(const std::string& bytes) {
  return set(bytes.data(), bytes.size(), /*copy=*/true);
}

void qxisstream::getbuffer(std::string& bytes) const {
  if (size_ == 0)
    bytes.clear();
  else
    bytes.assign(reinterpret_cast<const char*>(data_), size_);
}

void qxisstream::Adopt(const unsigned char* data, std::size_t n, bool owned) {
  if (owned_ && data != data_) delete[] reinterpret_cast<const char*>(data_);
  data_ = data;
  size_ = n;
  owned_ = owned;
  qxisstream::_qxclear();
  SetFailed(false);
}

bool qxisstream::_qxseek(long back) {
  long target;
  if (__builtin_sub_overflow(static_cast<long>(cur_ - data_), back, &target) || target < 0 ||
      target > static_cast<long>(size_))
    return false;
  cur_ = data_ + target;
  return true;
}

long qxisstream::_qxtell() {
  return static_cast<long>(size_);
}
long qxisstream::_qxsize() {
  return static_cast<long>(size_);
}

void qxisstream::_qxclear() {
  cur_ = data_;
  end_ = data_ + size_;
}

void qxisstream::_qxclose() {
  Adopt(nullptr, 0, /*owned=*/false);
}

// --------------------------------------------------------- qxiwrapperstream

qxiwrapperstream::qxiwrapperstream() = default;

qxiwrapperstream::qxiwrapperstream(qxistream* inner, bool own) {
  set(inner, own);
}

qxiwrapperstream::~qxiwrapperstream() {
  qxiwrapperstream::_qxclear();
}

void qxiwrapperstream::set(qxistream* inner, bool own) {
  if (inner != inner_) {
    // First, since what we own may read from `inner` and gives back to it.
    if (inner_ != nullptr) GiveBack();
    if (owned_) delete inner_;
    inner_ = nullptr;
    _qxset(inner);
  }
  owned_ = own;
}

bool qxiwrapperstream::open(const char* name) {
  if (inner_ == nullptr) return false;
  GiveBack();
  const bool opened = inner_->open(name);
  SetFailed(false);
  ShowInner();
  return opened;
}

bool qxiwrapperstream::_qxfill() {
  if (inner_ == nullptr) return false;
  GiveBack();
  const bool filled = inner_->_qxfill();
  ShowInner();
  return filled;
}

bool qxiwrapperstream::_qxseek(long back) {
  if (inner_ == nullptr) return false;
  GiveBack();
  const bool moved = inner_->_qxseek(back);
  ShowInner();
  return moved;
}

long qxiwrapperstream::_qxtell() {
  qxistream* source = Innermost();
  return source ? source->_qxtell() : -1;
}

long qxiwrapperstream::_qxsize() {
  qxistream* source = Innermost();
  return source ? source->_qxsize() : -1;
}

void qxiwrapperstream::_qxclear() {
  set(nullptr, /*own=*/false);
}

void qxiwrapperstream::_qxclose() {
  if (inner_ == nullptr) return;
  inner_->close();
  ShowInner();
}

void qxiwrapperstream::_qxset(qxistream* inner) {
  inner_ = inner;
  SetFailed(false);
  ShowInner();
}

qxistream* qxiwrapperstream::Innermost() const {
  qxistream* source = inner_;
  while (auto* wrapper = dynamic_cast<qxiwrapperstream*>(source)) {
    if (wrapper->inner_ == nullptr) break;
    source = wrapper->inner_;
  }
  return source;
}

// A derived class may have shown a window of its own, which is no place in the
// inner stream's.
void qxiwrapperstream::GiveBack() {
  if (end_ == inner_->end_) inner_->cur_ = cur_;
}

void qxiwrapperstream::ShowInner() {
  cur_ = inner_ ? inner_->cur_ : nullptr;
  end_ = inner_ ? inner_->end_ : nullptr;
  if (inner_ && !*inner_) SetFailed(true);
}

}  // namespace QXPlatform

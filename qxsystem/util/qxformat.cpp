#include <qxsystem/util/qxformat.h>

#include <langinfo.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <new>
#include <stdexcept>

#include <qxsystem/core/error.h>
#include <qxsystem/util/digits_private.h>

namespace QXSystem {

namespace {

constexpr unsigned long firstSize = 8192;
constexpr unsigned long maxSize = 0x7FFFFFFF;

// A short text. What puts answers false when the room does not suffice or printf
// would do something else.
class PlainText {
public:
  bool Put(const char* bytes, std::size_t size) {
    if (size > sizeof text_ - size_) return false;
    std::memcpy(text_ + size_, bytes, size);
    size_ += size;
    return true;
  }

  bool PutText(const char* text) { return text != nullptr && Put(text, std::strlen(text)); }

  bool PutChar(int c) {
    const char byte = static_cast<char>(c);
    return Put(&byte, 1);
  }

  bool PutInteger(long value) {
    char digits[maxNumberLength];
    return PutTail(digits, WriteBefore(std::end(digits), value));
  }

  bool PutInteger(unsigned long value) {
    char digits[maxNumberLength];
    return PutTail(digits, WriteBefore(std::end(digits), value));
  }

  bool PutFixed(double value, unsigned precision) {
    if (std::strcmp(::nl_langinfo(RADIXCHAR), ".") != 0) return false;
    char digits[maxNumberLength];
    const char* const begin = WriteFixedBefore(std::end(digits), value, precision);
    return begin != nullptr && PutTail(digits, begin);
  }

  std::string Get() const { return std::string(text_, size_); }

private:
  bool PutTail(const char (&digits)[maxNumberLength], const char* begin) {
    return Put(begin, static_cast<std::size_t>(std::end(digits) - begin));
  }

  char text_[1024];
  std::size_t size_ = 0;
};

// Writes the plain conversions that most messages are made of, several times as
// fast as vsnprintf does: %s %c %d %i %u %%, d, i and u behind %l and %z, %f and
// %.3f. False when the format holds anything else: vsnprintf then starts anew.
bool FormatPlain(PlainText& out, const char* format, std::va_list args) {
  for (;;) {
    const char* const percent = ::strchrnul(format, '%');
    if (!out.Put(format, static_cast<std::size_t>(percent - format))) return false;
    if (*percent == '\0') return true;
    format = percent + 2;
    bool done = false;
    switch (percent[1]) {
      case '%':
        done = out.PutChar('%');
        break;
      case 'c':
        done = out.PutChar(va_arg(args, int));
        break;
      case 's':
        done = out.PutText(va_arg(args, const char*));
        break;
      case 'd':
      case 'i':
        done = out.PutInteger(long{va_arg(args, int)});
        break;
      case 'u':
        done = out.PutInteger(static_cast<unsigned long>(va_arg(args, unsigned)));
        break;
      case 'l':
      case 'z':
        switch (*format++) {
          case 'd':
          case 'i':
            done = out.PutInteger(va_arg(args, long));
            break;
          case 'u':
            done = out.PutInteger(va_arg(args, unsigned long));
            break;
        }
        break;
      case 'f':
        done = out.PutFixed(va_arg(args, double), 6);
        break;
      case '.':
        if (*format < '0' || *format > '9' || format[1] != 'f') break;
        done = out.PutFixed(va_arg(args, double), static_cast<unsigned>(*format - '0'));
        format += 2;
        break;
    }
    if (!done) return false;
  }
}

// vsnprintf, leaving `args` for another call.
[[gnu::format(printf, 3, 0)]] int Print(char* buffer, unsigned long size, const char* format,
                                        std::va_list args) {
  std::va_list copy;
  va_copy(copy, args);
  const int length = std::vsnprintf(buffer, size, format, copy);
  va_end(copy);
  return length;
}

// A text that does not fit into `firstSize`: the room is doubled until it does.
// A negative length is an error, which more room does not mend: what is told is what
// the last attempt would end with.
[[gnu::format(printf, 1, 0)]] std::string MakeLongText(const char* format, std::va_list args) {
  std::string text;
  unsigned long size = firstSize;
  try {
    int length;
    do {
      size = std::min(2 * size, maxSize);
      text.resize(size);
      length = Print(text.data(), size, format, args);
      if (length >= 0 && static_cast<unsigned long>(length) < size) {
        text.resize(static_cast<unsigned long>(length));
        return text;
      }
    } while (length >= 0 && size < maxSize);
    QXThrow.Warning("Unable to resize string memory: %lu (%lu)", maxSize, maxSize);
  } catch (const std::bad_alloc&) {
    QXThrow.Warning("Unable to allocate string memory (%lu)", size);
  } catch (const std::length_error&) {
    QXThrow.Warning("Unable to resize string memory error (%lu)", size);
  } catch (const std::exception&) {
    QXThrow.Warning("Unable to resize string memory error exception (%lu)", size);
  }
  return {};
}

[[gnu::format(printf, 1, 0)]] std::string MakeText(const char* format, std::va_list args) {
  PlainText plain;
  std::va_list copy;
  va_copy(copy, args);
  const bool done = FormatPlain(plain, format, copy);
  va_end(copy);
  if (done) return plain.Get();

  char buffer[firstSize];
  const int length = Print(buffer, sizeof buffer, format, args);
  if (length >= 0 && static_cast<unsigned long>(length) < sizeof buffer)
    return std::string(buffer, static_cast<unsigned long>(length));
  return MakeLongText(format, args);
}

}  // namespace

std::string QXMakeString(const char* format, ...) {
  if (format == nullptr) return {};
  std::va_list args;
  va_start(args, format);
  std::string text = MakeText(format, args);
  va_end(args);
  return text;
}

int QXSNPrintf(char* buffer, std::size_t size, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = std::vsnprintf(buffer, size, format, args);
  va_end(args);
  return length;
}

}  // namespace QXSystem

#include <qxsystem/util/utfconvert.h>

#include <cstdint>
#include <cstring>

#include <qxsystem/util/utfcheck_private.h>

namespace QXSystem {

namespace {

// Few enough bytes to be in the cache still when they are looked at again.
constexpr std::size_t ChunkSize = 4096;

// The code points of the bytes 0x80 to 0x9F in Windows-1252.
constexpr std::uint16_t Win1252[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

bool QXIsValidUTF8(const unsigned char* text) {
  const auto isUtf8 = __builtin_cpu_supports("avx2") ? IsUtf8Avx2 : IsUtf8Portable;
  for (;;) {
    std::size_t n = strnlen(reinterpret_cast<const char*>(text), ChunkSize);
    if (n < ChunkSize) return isUtf8(text, n);
    // The last character may go on in the next chunk: leave it there. A valid one
    // begins at most three bytes before the end.
    for (int back = 0; back < 3 && (text[n - 1] & 0xC0) == 0x80; ++back) --n;
    if (text[n - 1] >= 0xC0) --n;
    if (!isUtf8(text, n)) return false;
    text += n;
  }
}

std::string QXWin1252ToUTF8(const unsigned char* text) {
  std::string utf8;
  for (; *text != 0; ++text) {
    const unsigned point = *text - 0x80u < 0x20 ? Win1252[*text - 0x80] : *text;
    if (point >= 0x800) {
      utf8 += static_cast<char>(0xE0 | point >> 12);
      utf8 += static_cast<char>(0x80 | (point >> 6 & 0x3F));
    } else if (point >= 0x80) {
      utf8 += static_cast<char>(0xC0 | point >> 6);
    }
    utf8 += static_cast<char>(point < 0x80 ? point : 0x80 | (point & 0x3F));
  }
  return utf8;
}

std::string QXBytesToUTF8(const char* text) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
  return QXIsValidUTF8(bytes) ? std::string(text) : QXWin1252ToUTF8(bytes);
}

}  // namespace QXSystem

#include <qxsystem/platform/binaryio.h>

#include <cstdint>
#include <cstring>
#include <limits>

#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

namespace QXPlatform {

namespace {

// 0 for what no memory can hold.
std::size_t BlockSize(std::size_t size, unsigned count) {
  std::size_t bytes;
  return __builtin_mul_overflow(size, count, &bytes) ? 0 : bytes;
}

std::size_t Move(unsigned char* target, const unsigned char* source, std::size_t bytes) {
  if (bytes != 0) std::memcpy(target, source, bytes);
  return bytes;
}

}  // namespace

std::size_t QX_io_read_binary(qxistream& in, unsigned char* element, std::size_t size,
                              unsigned count) {
  return in.read(element, BlockSize(size, count));
}

std::size_t QX_io_write_binary(qxostream& out, const unsigned char* element, std::size_t size,
                               unsigned count) {
  return out.write(element, BlockSize(size, count));
}

std::size_t QX_io_read_binary(const unsigned char* source, unsigned char* element, std::size_t size,
                              unsigned count) {
  return Move(element, source, BlockSize(size, count));
}

std::size_t QX_io_write_binary(unsigned char* target, const unsigned char* element,
                               std::size_t size, unsigned count) {
  return Move(target, element, BlockSize(size, count));
}

std::size_t QX_io_read_binary(const unsigned char* source, std::string& text) {
  std::uint32_t length;
  std::memcpy(&length, source, sizeof length);
  text.assign(reinterpret_cast<const char*>(source + sizeof length), length);
  return sizeof length + length;
}

std::size_t QX_io_write_binary(unsigned char* target, const std::string& text) {
  if (text.size() > std::numeric_limits<std::uint32_t>::max()) return 0;
  const auto length = static_cast<std::uint32_t>(text.size());
  std::memcpy(target, &length, sizeof length);
  std::memcpy(target + sizeof length, text.data(), length);
  return sizeof length + length;
}

}  // namespace QXPlatform

#include <qxsystem/platform/compress.h>

#define ZLIB_CONST
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <string_view>

namespace QXPlatform {

namespace {

// Room for the worst case, whose memory is touched only as far as it is used.
std::unique_ptr<char[]> MakeRoom(std::size_t bytes) {
  return std::unique_ptr<char[]>(new char[bytes]);
}

bool Gzip(std::string& out, const char* data, std::size_t size) {
  constexpr int gzipHeader = 16;  // added to the window bits
  constexpr int memoryLevel = 8;  // zlib's own default
  z_stream stream = {};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + gzipHeader, memoryLevel,
                   Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::bad_alloc();
  const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, deflateEnd);

  const std::size_t bound = deflateBound(&stream, size);
  const auto room = MakeRoom(bound);
  stream.next_in = reinterpret_cast<const Bytef*>(data);
  stream.next_out = reinterpret_cast<Bytef*>(room.get());

  // zlib counts in 32 bits, so larger blocks go in pieces.
  const auto piece = [](std::size_t left) {
    return static_cast<uInt>(std::min<std::size_t>(left, std::numeric_limits<uInt>::max()));
  };
  int result = Z_OK;
  while (result == Z_OK) {
    stream.avail_in = piece(size - stream.total_in);
    stream.avail_out = piece(bound - stream.total_out);
    const bool last = stream.avail_in == size - stream.total_in;
    result = deflate(&stream, last ? Z_FINISH : Z_NO_FLUSH);
  }
  if (result != Z_STREAM_END) return false;
  out.assign(room.get(), stream.total_out);
  return true;
}

bool Zstd(std::string& out, const char* data, std::size_t size) {
  const std::size_t bound = ZSTD_compressBound(size);
  if (ZSTD_isError(bound)) return false;
  const auto room = MakeRoom(bound);
  const std::size_t used = ZSTD_compress(room.get(), bound, data, size, ZSTD_CLEVEL_DEFAULT);
  if (ZSTD_isError(used)) return false;
  out.assign(room.get(), used);
  return true;
}

}  // namespace

bool QXCompress(std::string& out, const char* data, std::size_t size, const char* method) {
  const std::string_view name = method ? method : "";
  if (name == "gz") return Gzip(out, data, size);
  if (name == "zstd") return Zstd(out, data, size);
  return false;
}

}  // namespace QXPlatform

#include <qxsystem/platform/compress.h>

#include <gtest/gtest.h>
#include <zlib.h>
#include <zstd.h>

#include <random>
#include <string>

using namespace QXPlatform;

namespace {

// Takes one whole gzip stream and nothing else.
std::string Gunzip(std::string packed, std::size_t size) {
  std::string out(size + 1, '?');
  z_stream stream = {};
  EXPECT_EQ(inflateInit2(&stream, MAX_WBITS + 16), Z_OK);
  stream.next_in = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  EXPECT_TRUE(inflate(&stream, Z_FINISH) == Z_STREAM_END && stream.avail_in == 0);
  out.resize(stream.total_out);
  inflateEnd(&stream);
  return out;
}

std::string Unzstd(const std::string& packed, std::size_t size) {
  EXPECT_EQ(ZSTD_getFrameContentSize(packed.data(), packed.size()), size);
  EXPECT_EQ(ZSTD_findFrameCompressedSize(packed.data(), packed.size()), packed.size());
  std::string out(size + 1, '?');
  out.resize(ZSTD_decompress(out.data(), out.size(), packed.data(), packed.size()));
  return out;
}

}  // namespace

TEST(QXCompress, IsUndoneByTheMethodsOwnLibraries) {
  std::mt19937 random(3);
  std::string noise(300000, '\0');
  for (char& byte : noise) byte = static_cast<char>(random());
  for (const std::string& data : {std::string(), noise, std::string(1 << 20, 'x')}) {
    std::string gz = "old", zstd = "old";
    ASSERT_TRUE(QXCompress(gz, data.data(), data.size(), "gz"));
    ASSERT_TRUE(QXCompress(zstd, data.data(), data.size(), "zstd"));
    EXPECT_TRUE(Gunzip(gz, data.size()) == data) << data.size();
    EXPECT_TRUE(Unzstd(zstd, data.size()) == data) << data.size();
    EXPECT_LT(gz.size() + zstd.size(), 2 * noise.size() + 1000);
  }
}

TEST(QXCompress, RefusesOtherMethods) {
  for (const char* method : {"", "GZ", "gzip", "zstd ", static_cast<const char*>(nullptr)}) {
    std::string out = "old";
    EXPECT_TRUE(!QXCompress(out, "data", 4, method) && out == "old");
  }
}

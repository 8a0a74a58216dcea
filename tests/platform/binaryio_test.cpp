#include <qxsystem/platform/binaryio.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

using namespace QXPlatform;
using namespace std::string_literals;

namespace {

unsigned char* Bytes(const void* data) {
  return static_cast<unsigned char*>(const_cast<void*>(data));
}

}  // namespace

TEST(BinaryNumbers, GoThroughStreamsAndMemoryAlike) {
  const double numbers[] = {1.5, -2.25, 1e300};
  unsigned char memory[1 + sizeof numbers];  // used from an odd address
  qxosstream out;
  EXPECT_EQ(QX_io_write_binary(out, Bytes(numbers), 8, 3), 24u);
  EXPECT_EQ(QX_io_write_binary(memory + 1, Bytes(numbers), 8, 3), 24u);
  EXPECT_EQ(out.str().substr(0, 8), "\0\0\0\0\0\0\xf8\x3f"s) << "the low byte first";

  double back[3] = {};
  EXPECT_EQ(QX_io_read_binary(memory + 1, Bytes(back), 8, 3), 24u);
  for (std::size_t cut = 0; cut <= 24; ++cut) {
    qxisstream in(out.str().substr(0, cut));
    EXPECT_EQ(QX_io_read_binary(in, Bytes(back), 8, 3), cut);
    EXPECT_EQ(std::memcmp(back, numbers, sizeof numbers), 0);
  }
  EXPECT_EQ(QX_io_read_binary(memory, Bytes(back), ~std::size_t{0} / 2 + 1, 2), 0u) << "overflow";
}

TEST(BinaryStrings, StandBehindTheirLength) {
  for (const std::string& text : {""s, "\0a\0"s, std::string(70000, 'x')}) {
    std::string memory(text.size() + 4, '?'), back = "old";
    EXPECT_EQ(QX_io_write_binary(Bytes(memory.data()), text), memory.size());
    EXPECT_EQ(memory[1], static_cast<char>(text.size() >> 8));
    EXPECT_EQ(QX_io_read_binary(Bytes(memory.data()), back), memory.size());
    EXPECT_EQ(back, text);
  }
}

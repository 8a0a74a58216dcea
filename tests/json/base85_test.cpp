#include <qxsystem/json/base85.h>

#include <gtest/gtest.h>

#include <random>

using QXDataFlow::QXBase85Decode;
using QXDataFlow::QXBase85Encode;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes BytesOf(const std::string& text) {
  return {text.begin(), text.end()};
}

TEST(Base85, HasTheDigitsOfRFC1924) {
  const struct {
    Bytes bytes;
    std::string text;
  } cases[] = {
      {{}, ""},
      {{0}, "00"},
      {{0, 0, 0, 0}, "00000"},
      // The test case of ZeroMQ's Z85, whose digits are the same values.
      {{0x86, 0x4F, 0xD2, 0x6F, 0xB5, 0x59, 0xF7, 0x5B}, "hELLOwORLD"},
      // As Python's base64.b85encode writes them.
      {BytesOf("a"), "VE"},
      {BytesOf("ab"), "VPX"},
      {BytesOf("abc"), "VPaz"},
      {BytesOf("HelloWorld"), "NM&qnZ&z<}Y-9"},
      {Bytes(5, 0xFF), "|NsC0{{"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(QXBase85Encode(c.bytes), c.text);
    EXPECT_EQ(QXBase85Decode(c.text), c.bytes);
  }
}

// Digit by digit in 32 bits, where no digit counts as -1.
TEST(Base85, DecodesAnyTextByWrappingArithmetic) {
  const std::string digits =
      "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz!#$%&()*+-;<=>?@^_`{|}~";
  std::mt19937 random(85);
  for (std::size_t size = 0; size < 200; ++size) {
    std::string text;
    while (text.size() < size)
      text += random() % 8 ? digits[random() % 85] : static_cast<char>(random());
    Bytes expected;
    const std::string filled = text + std::string((5 - size % 5) % 5, '~');
    for (std::size_t group = 0; group < filled.size(); group += 5) {
      std::uint32_t number = 0;
      for (std::size_t i = group; i < group + 5; ++i)
        number = number * 85 + static_cast<std::uint32_t>(digits.find(filled[i]));
      for (const int shift : {24, 16, 8, 0})
        expected.push_back(static_cast<unsigned char>(number >> shift));
    }
    expected.resize(size / 5 * 4 + (size % 5 ? size % 5 - 1 : 0));
    EXPECT_EQ(QXBase85Decode(text), expected) << text;
    EXPECT_EQ(QXBase85Decode(QXBase85Encode(expected)), expected);
  }
}

}  // namespace

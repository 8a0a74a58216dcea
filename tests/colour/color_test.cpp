#include <qxsystem/colour/color.h>

#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include <tests/support/capture.h>

using namespace QXSystem;
using namespace QXPlatform;
using qxtest::Reports;

static_assert(sizeof(QXColor) == 4);

namespace {

std::string Range(const std::string& operation, const std::string& limits) {
  return "level = 4\n" + operation + "() accepts color values between " + limits +
         ". Values have been limited to this range.\n";
}

std::string Texts(QXIterBase<QXColor>* cursor) {
  std::string texts;
  for (QXIter<QXColor> color = cursor; color; ++color)
    texts += color->GetText(/*withAlpha=*/color->GetA() != 255) + " ";
  return texts;
}

TEST(QXColor, LimitsChannelsWithOneWarning) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr unsigned huge = std::numeric_limits<unsigned>::max();
  const std::string whole = "0 and 255", real = "0.0 and 1.0";
  QXColor c;
  const struct {
    std::function<void()> change;
    const char* text;
    std::string warning;
  } cases[] = {
      {[&] { c = QXColor(); }, "#000000ff", ""},
      {[&] { c = QXColor(255, 0, 255, 255); }, "#ff00ffff", ""},
      {[&] { c = QXColor(300, 0, 256); }, "#ff00ffff", Range("QXColor", whole)},
      {[&] { c.Set(1, huge, 3, 4); }, "#01ff0304", Range("Set", whole)},
      {[&] { c.Set(huge, 2, 3); }, "#ff020304", Range("Set", whole)},
      {[&] { c.SetR(256); }, "#ff020304", Range("SetR", whole)},
      {[&] { c.SetG(257); }, "#ffff0304", Range("SetG", whole)},
      {[&] { c.SetB(258); }, "#ffffff04", Range("SetB", whole)},
      {[&] { c.SetA(259); }, "#ffffffff", Range("SetA", whole)},
      {[&] { c = QXColor(QXColorPacked(1, 2, 3, 256)); }, "#010203ff",
       Range("QXColorPacked", whole)},
      {[&] { c.SetPackedColor(0x80402010); }, "#10204080", ""},
      {[&] { c = QXColor(c.GetPackedColor()); }, "#10204080", ""},
      {[&] { c = QXColor(c.GetRGBA() + 0); }, "#10204080", ""},
      {[&] { c.SetRGBA(nullptr); }, "#10204080",
       "level = 4\nQXColor::SetRGBA() invalid pointer!\n"},
      {[&] { c = QXColor(static_cast<unsigned char*>(nullptr)); }, "#000000ff",
       "level = 4\nQXColor() invalid pointer!\n"},
      {[&] { c = QXColorCreate(1.5, -1, 0.5); }, "#ff007fff", Range("QXColorCreate", real)},
      {[&] { c = QXColorCreate(1, 2.0 / 3, 0, 0.999); }, "#ffaa00fe", ""},
      {[&] { QXColorSet(c, nan, 0.5, 0); }, "#007f00fe", Range("QXColorSet", real)},
      {[&] { QXColorSet(c, 0, 0, 1, 1e300); }, "#0000ffff", Range("QXColorSet", real)}};
  for (const auto& row : cases) {
    const Reports reports;
    row.change();
    EXPECT_EQ(c.GetText(true), row.text);
    EXPECT_EQ(reports.GetErrorLog(), row.warning) << row.text;
  }
}

TEST(QXColor, ReadsAndWritesText) {
  const std::string fault = "level = 5\nQXColor::SetText(const std::string &text) - ";
  const QXColor before(1, 2, 3, 4);
  const std::pair<std::string, const char*> valid[] = {
      {"#FF0080", "#ff008004"}, {"#ff0080Ab", "#ff0080ab"}, {"#0a0B0c00", "#0a0b0c00"}};
  for (const auto& [text, result] : valid) {
    QXColor color = before;
    color.SetText(text);
    EXPECT_EQ(color.GetText(true), result);
  }
  EXPECT_EQ(QXColor(std::string("#FF0080")).GetText(false), "#ff0080");
  EXPECT_EQ(QXColor(std::string("#FF0080")).GetA(), 255u);
  for (const char* text : {"", "red", "#", "#12345", "#1234567", "#12345678g", "#12345g", "# 1 2 3",
                           "#+1+2+3", "#0x0x0x", "#12-456", "1234567", "#1234567g"}) {
    const Reports reports;
    QXColor color = before;
    color.SetText(text);
    EXPECT_EQ(color, before) << text;
    EXPECT_EQ(
        reports.GetErrorLog(),
        fault + (*text ? "Invalid paramater '" + std::string(text) + "'\n" : "Empty paramater\n"));
  }
}

TEST(QXColor, GivesChannelsAsRealNumbers) {
  for (unsigned i = 0; i < 256; ++i) {
    float r, g, b, a;
    double x, y, z, w;
    QXColorGet(QXColor(i, 255 - i, 255, i), r, g, b, a);
    QXColorGet(QXColor(i, 255 - i, 255, i), x, y, z, w);
    EXPECT_TRUE(r == 0.003921569f * static_cast<float>(i) && a == r && z == 1 && w == x);
    EXPECT_NEAR(y, (255 - i) / 255.0, 2e-16) << "a unit in the last place";
  }
}

TEST(QXColor, HasNamesAndPalettes) {
  EXPECT_EQ(Texts(QXGetLightColors()),
            "#db9ca9 #e5c49b #f2ef9b #dae387 #b6d9ab #a1d2b6 #9ed6d3 #bc99b9 ");
  EXPECT_EQ(Texts(QXGetVividColors()),
            "#bb212f #cc713d #e8d664 #9bbc55 #6fb966 #5d8f83 #47659c #6b357b ");
  EXPECT_EQ(Texts(QXGetDeepColors()),
            "#651a1f #713d28 #7c733d #445d34 #2e502f #30534c #27325f #301a3f ");
  const std::string twenty =
      "#e3c85f #612f71 #c96339 #9fc7d6 #a72238 #b7b685 #767976 #5c9d53 #c77da0 #456e9c "
      "#ce7d65 #3c3479 #d4994b #802b74 #e2e573 #651c1f #89a44f #5c3121 #bd2e30 #263120 ";
  EXPECT_EQ(Texts(QXGetContrastColors(/*withBlackAndWhite=*/false)), twenty);
  EXPECT_EQ(Texts(QXGetContrastColors(true)), "#ffffff #000000 " + twenty);
  EXPECT_EQ(QXGetLightColor(7), QXColor(188, 153, 185));
  EXPECT_EQ(QXGetVividColor(0), QXColor(187, 33, 47));
  EXPECT_TRUE(QXGetLightColor(8) == QXBlack && QXGetDeepColor(~0u) == QXBlack);
  EXPECT_EQ(QXMagenta.GetText(true) + QXMediumPurple.GetText(true), "#c000c0ff#ff00ffff");
  EXPECT_EQ(QXTransparentColor.GetText(true), "#ffffff00");

  QXIter<QXColor> own = QXGetVividColors();
  own->SetR(0);
  EXPECT_EQ(QXGetVividColor(0).GetR(), 187u) << "cursors walk copies";
}

TEST(QXColor, StepsEvenlyFromOneToAnother) {
  const std::string steps[] = {"", "#000000 ", "#000000 #ffffff ", "#000000 #7f7f7f #ffffff ",
                               "#000000 #555555 #aaaaaa #ffffff "};
  for (unsigned n = 0; n < 5; ++n) EXPECT_EQ(Texts(QXGetColors(QXBlack, QXWhite, n)), steps[n]);
  EXPECT_EQ(Texts(QXGetColors(QXWhite, QXTransparentColor, 3)), "#ffffff #ffffff7f #ffffff00 ");
}

TEST(QXColor, HasAStoredFormOfItsOwn) {
  const QXColor color(1, 2, 3, 250);
  const std::string stored("\x04\0\0\0\x01\x02\x03\xFA", 8);
  qxosstream out;
  unsigned char bytes[8];
  EXPECT_EQ(QX_io_write_binary(out, color), QX_io_binary_size(color));
  EXPECT_EQ(QX_io_write_binary(bytes, color), 8u);
  EXPECT_EQ(out.str(), stored);
  QXColor read;
  EXPECT_EQ(QX_io_read_binary(bytes, read), 8u);
  EXPECT_EQ(read, color);

  const Reports reports;
  const std::string claim = "\xFF\xFF\xFF\xFF";
  const std::pair<std::string, std::size_t> damaged[] = {{stored.substr(0, 7), 7},
                                                         {stored.substr(0, 3), 3},
                                                         {"", 0},
                                                         {claim + "ab", 6},
                                                         {std::string("\x05\0\0\0abcdef", 10), 9},
                                                         {std::string("\0\0\0\0abcd", 8), 4}};
  for (const auto& [text, used] : damaged) {
    qxisstream in(text);
    EXPECT_EQ(QX_io_read_binary(in, read), used);
  }
  EXPECT_EQ(QX_io_read_binary(reinterpret_cast<const unsigned char*>(claim.data()), read),
            0x100000003u);
  EXPECT_EQ(read, color);
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), 7u);
  qxisstream in(stored + "x");
  EXPECT_TRUE(QX_io_read_binary(in, read) == 8 && read == color && in.get() == 'x');
}

}  // namespace

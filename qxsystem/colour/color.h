// Colours: four bytes of red, green, blue and alpha, with names, palettes and
// conversions.
//
// Alpha is opacity: 255 is opaque, 0 cannot be seen.
#pragma once

#include <cstddef>
#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

namespace QXSystem {

class QXColor;

namespace detail {

/// The smaller of `value` and 255.
constexpr unsigned char LimitChannel(unsigned value) {
  return static_cast<unsigned char>(value < 255 ? value : 255);
}

/// The warning for channels above 255, which `operation` has limited.
QXSYSTEM_API void WarnChannelRange(const char* operation);

}  // namespace detail

/// The packed form of a colour: red in bits 0 to 7, green in 8 to 15, blue in 16
/// to 23 and alpha in 24 to 31. Values above 255 are limited, with a warning.
QXSYSTEM_API unsigned QXColorPacked(unsigned r, unsigned g, unsigned b, unsigned a);

/// A colour, black and opaque unless told otherwise.
///
/// Channels go from 0 to 255. An operation that is given more takes 255, and
/// warns once, however many they are.
class QXSYSTEM_API QXColor {
public:
  constexpr QXColor() = default;
  constexpr QXColor(unsigned r, unsigned g, unsigned b) : QXColor(r, g, b, 255) {}
  constexpr QXColor(unsigned r, unsigned g, unsigned b, unsigned a)
      : rgba_{detail::LimitChannel(r), detail::LimitChannel(g), detail::LimitChannel(b),
              detail::LimitChannel(a)} {
    if (r > 255 || g > 255 || b > 255 || a > 255) detail::WarnChannelRange("QXColor");
  }

  /// From four bytes; a warning, and the default, for a null pointer.
  explicit QXColor(const unsigned char* rgba);

  /// From the packed form. Zero must be written `0u`, or it could be a pointer.
  explicit QXColor(unsigned packed) { SetPackedColor(packed); }

  /// From a text as SetText understands it; the default for any other.
  explicit QXColor(const std::string& text) { SetText(text); }

  unsigned GetR() const { return rgba_[0]; }
  unsigned GetG() const { return rgba_[1]; }
  unsigned GetB() const { return rgba_[2]; }
  unsigned GetA() const { return rgba_[3]; }

  /// The four bytes, valid as long as the colour.
  const unsigned char* GetRGBA() const { return rgba_; }

  unsigned GetPackedColor() const { return GetR() | GetG() << 8 | GetB() << 16 | GetA() << 24; }

  void SetR(unsigned r);
  void SetG(unsigned g);
  void SetB(unsigned b);
  void SetA(unsigned a);
  void SetPackedColor(unsigned packed);

  /// From four bytes; a warning, and nothing else, for a null pointer.
  void SetRGBA(const unsigned char* rgba);

  /// The first form leaves alpha as it is.
  void Set(unsigned r, unsigned g, unsigned b);
  void Set(unsigned r, unsigned g, unsigned b, unsigned a);

  /// From "#RRGGBB", which leaves alpha as it is, or "#RRGGBBAA", hexadecimal in
  /// either case. Any other text is reported as an Error and changes nothing.
  void SetText(const std::string& text);

  /// "#rrggbb", or with alpha "#rrggbbaa".
  std::string GetText(bool withAlpha) const;

  /// A copy, which the caller owns.
  QXColor* CreateCopy() const { return new QXColor(*this); }

  friend bool operator==(const QXColor& a, const QXColor& b) {
    return a.GetPackedColor() == b.GetPackedColor();
  }
  friend bool operator!=(const QXColor& a, const QXColor& b) { return !(a == b); }

private:
  unsigned char rgba_[4] = {0, 0, 0, 255};
};

// A colour from channels between 0.0 and 1.0, and back. Each becomes the whole
// part of 255 times its value, so 0.5 is 127. Values outside, NaN as 0, are
// limited, with one warning. Without alpha a new colour is opaque and an old one
// keeps its own.
QXSYSTEM_API QXColor QXColorCreate(double r, double g, double b);
QXSYSTEM_API QXColor QXColorCreate(double r, double g, double b, double a);
QXSYSTEM_API void QXColorSet(QXColor& color, double r, double g, double b);
QXSYSTEM_API void QXColorSet(QXColor& color, double r, double g, double b, double a);
QXSYSTEM_API void QXColorGet(const QXColor& color, float& r, float& g, float& b);
QXSYSTEM_API void QXColorGet(const QXColor& color, float& r, float& g, float& b, float& a);
QXSYSTEM_API void QXColorGet(const QXColor& color, double& r, double& g, double& b);
QXSYSTEM_API void QXColorGet(const QXColor& color, double& r, double& g, double& b, double& a);

// Palettes: three of eight colours that run through the hues, and one whose
// colours can be told apart at a glance. An index from 8 on gives QXBlack.
//
// The caller owns the cursors, which walk copies.
QXSYSTEM_API QXColor QXGetLightColor(unsigned i);
QXSYSTEM_API QXColor QXGetVividColor(unsigned i);
QXSYSTEM_API QXColor QXGetDeepColor(unsigned i);
QXSYSTEM_API QXIterBase<QXColor>* QXGetLightColors();
QXSYSTEM_API QXIterBase<QXColor>* QXGetVividColors();
QXSYSTEM_API QXIterBase<QXColor>* QXGetDeepColors();

/// Twenty colours of strong contrast, on request behind white and black.
QXSYSTEM_API QXIterBase<QXColor>* QXGetContrastColors(bool withBlackAndWhite);

/// `n` colours at even steps from `first` to `last`; a single one is `first`.
QXSYSTEM_API QXIterBase<QXColor>* QXGetColors(const QXColor& first, const QXColor& last,
                                              unsigned n);

// Named colours.
inline constexpr QXColor QXBlack(0, 0, 0);
inline constexpr QXColor QXWhite(255, 255, 255);
inline constexpr QXColor QXTransparentColor(255, 255, 255, 0);
inline constexpr QXColor QXRed(255, 0, 0);
inline constexpr QXColor QXGreen(0, 255, 0);
inline constexpr QXColor QXBlue(0, 0, 255);
inline constexpr QXColor QXYellow(255, 255, 0);
inline constexpr QXColor QXCyan(0, 255, 255);
inline constexpr QXColor QXMagenta(192, 0, 192);
inline constexpr QXColor QXOrange(255, 128, 0);
inline constexpr QXColor QXPink(255, 0, 128);
inline constexpr QXColor QXGrey(180, 180, 180);
inline constexpr QXColor QXPurple(170, 0, 255);
inline constexpr QXColor QXRoyalBlue(71, 71, 184);
inline constexpr QXColor QXOliveBrown(79, 70, 0);
inline constexpr QXColor QXOliveGreen(69, 94, 69);
inline constexpr QXColor QXOliveGrey(83, 76, 66);
inline constexpr QXColor QXLimeGreen(170, 255, 0);
inline constexpr QXColor QXDarkRed(170, 0, 0);
inline constexpr QXColor QXDarkGreen(0, 128, 0);
inline constexpr QXColor QXDarkBlue(0, 0, 128);
inline constexpr QXColor QXDarkYellow(128, 128, 0);
inline constexpr QXColor QXDarkCyan(0, 128, 128);
inline constexpr QXColor QXDarkMagenta(128, 0, 128);
inline constexpr QXColor QXDarkOrange(170, 85, 0);
inline constexpr QXColor QXDarkGrey(64, 64, 64);
inline constexpr QXColor QXDarkRose(160, 0, 66);
inline constexpr QXColor QXDarkBrown(102, 0, 0);
inline constexpr QXColor QXDarkSalmon(255, 76, 76);
inline constexpr QXColor QXDarkPurple(94, 0, 94);
inline constexpr QXColor QXMediumBrown(140, 112, 76);
inline constexpr QXColor QXMediumBlue(112, 112, 255);
inline constexpr QXColor QXMediumYellow(255, 255, 112);
inline constexpr QXColor QXMediumGreen(140, 255, 140);
inline constexpr QXColor QXMediumOrange(255, 112, 66);
inline constexpr QXColor QXMediumPurple(255, 0, 255);
inline constexpr QXColor QXMediumSalmon(255, 112, 112);
inline constexpr QXColor QXLightBlue(160, 160, 255);
inline constexpr QXColor QXLightGrey(191, 191, 191);
inline constexpr QXColor QXLightPurple(255, 140, 255);
inline constexpr QXColor QXLightSalmon(255, 124, 112);
inline constexpr QXColor QXLightBrown(184, 160, 66);
inline constexpr QXColor QXLightOrange(255, 140, 75);
inline constexpr QXColor QXLightGreen(160, 255, 160);
inline constexpr QXColor QXBlueTint(175, 214, 255);
inline constexpr QXColor QXBrown(175, 117, 89);
inline constexpr QXColor QXMandarin(255, 156, 0);
inline constexpr QXColor QXGreenBlue(46, 139, 87);
inline constexpr QXColor QXGreenTint(152, 255, 179);
inline constexpr QXColor QXHotPink(255, 0, 101);
inline constexpr QXColor QXPinkTint(255, 171, 187);
inline constexpr QXColor QXRedOrange(255, 69, 0);
inline constexpr QXColor QXSeaGreen(0, 250, 109);
inline constexpr QXColor QXSkyBlue(58, 144, 255);
inline constexpr QXColor QXViolet(238, 130, 238);
inline constexpr QXColor QXYellowTint(246, 246, 117);
inline constexpr QXColor QXCopper(245, 175, 145);
inline constexpr QXColor QXGold(255, 220, 70);
inline constexpr QXColor QXSilver(240, 240, 235);
inline constexpr QXColor QXPewter(140, 140, 135);
inline constexpr QXColor QXBrass(220, 175, 90);

}  // namespace QXSystem

namespace QXPlatform {

// The stored form of a colour, as QX_io_write_binary writes a vector of bytes:
// their number, 4, in 32 bits, then red, green, blue and alpha. All results are
// the bytes moved.

/// What the stored form takes, 8 bytes.
QXSYSTEM_API std::size_t QX_io_binary_size(const QXSystem::QXColor& color);

QXSYSTEM_API std::size_t QX_io_write_binary(qxostream& out, const QXSystem::QXColor& color);
QXSYSTEM_API std::size_t QX_io_write_binary(unsigned char* target, const QXSystem::QXColor& color);

/// Where something else than four bytes stands, or they are cut short, the bytes
/// announced are stepped over, with a warning, and the colour stays. Of memory
/// only what a colour takes is touched.
QXSYSTEM_API std::size_t QX_io_read_binary(qxistream& in, QXSystem::QXColor& color);
QXSYSTEM_API std::size_t QX_io_read_binary(const unsigned char* source, QXSystem::QXColor& color);

}  // namespace QXPlatform

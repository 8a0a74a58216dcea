#include <qxsystem/colour/color.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include <qxsystem/colour/colorgradient.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/platform/binaryio.h>

namespace QXSystem {
namespace {

constexpr QXColor light[] = {
    {219, 156, 169},  // pink
    {229, 196, 155},  // apricot
    {242, 239, 155},  // lemon
    {218, 227, 135},  // chartreuse
    {182, 217, 171},  // mint
    {161, 210, 182},  // aqua
    {158, 214, 211},  // azure
    {188, 153, 185},  // mauve
};
constexpr QXColor vivid[] = {
    {187, 33, 47},    // red
    {204, 113, 61},   // orange
    {232, 214, 100},  // yellow
    {155, 188, 85},   // lime
    {111, 185, 102},  // green
    {93, 143, 131},   // turquoise
    {71, 101, 156},   // blue
    {107, 53, 123},   // purple
};
constexpr QXColor deep[] = {
    {101, 26, 31},   // maroon
    {113, 61, 40},   // brown
    {124, 115, 61},  // khaki
    {68, 93, 52},    // olive
    {46, 80, 47},    // forest
    {48, 83, 76},    // teal
    {39, 50, 95},    // navy
    {48, 26, 63},    // aubergine
};
constexpr QXColor contrast[] = {
    {227, 200, 95},   // yellow
    {97, 47, 113},    // purple
    {201, 99, 57},    // orange
    {159, 199, 214},  // light blue
    {167, 34, 56},    // red
    {183, 182, 133},  // buff
    {118, 121, 118},  // grey
    {92, 157, 83},    // green
    {199, 125, 160},  // purplish pink
    {69, 110, 156},   // blue
    {206, 125, 101},  // yellowish pink
    {60, 52, 121},    // violet
    {212, 153, 75},   // orange yellow
    {128, 43, 116},   // purplish red
    {226, 229, 115},  // greenish yellow
    {101, 28, 31},    // reddish brown
    {137, 164, 79},   // yellow green
    {92, 49, 33},     // yellowish brown
    {189, 46, 48},    // reddish orange
    {38, 49, 32},     // olive green
};

constexpr std::size_t channels = 4;

template <std::size_t N>
QXColor Entry(const QXColor (&palette)[N], unsigned i) {
  return i < N ? palette[i] : QXBlack;
}

QXIterBase<QXColor>* OwnedIter(std::vector<QXColor> colors) {
  auto owned = std::make_unique<std::vector<QXColor>>(std::move(colors));
  return new QXVectorCacheIter<QXColor>(owned.release(), /*owned=*/true);
}

template <std::size_t N>
QXIterBase<QXColor>* All(const QXColor (&palette)[N]) {
  return OwnedIter({std::begin(palette), std::end(palette)});
}

// A value that had to be limited is noted in `limited`.
unsigned ToChannel(double value, bool& limited) {
  if (value >= 0 && value <= 1) return static_cast<unsigned>(255.0 * value);
  limited = true;
  return value > 1 ? 255 : 0;
}

// `color` with three channels, or four, set from `values`.
template <std::size_t N>
QXColor WithChannels(const QXColor& color, const double (&values)[N], const char* operation) {
  unsigned char rgba[channels] = {0, 0, 0, static_cast<unsigned char>(color.GetA())};
  bool limited = false;
  for (std::size_t i = 0; i < N; ++i)
    rgba[i] = static_cast<unsigned char>(ToChannel(values[i], limited));
  if (limited)
    QXThrow.Warning(
        "%s() accepts color values between 0.0 and 1.0. Values have been limited to this range.",
        operation);
  return QXColor(rgba);
}

}  // namespace

void detail::WarnChannelRange(const char* operation) {
  QXThrow.Warning(
      "%s() accepts color values between 0 and 255. Values have been limited to this range.",
      operation);
}

namespace {

// Warns when a channel that `operation` was given is too large.
template <class... Channel>
void CheckRange(const char* operation, Channel... values) {
  if (((values > 255) || ...)) detail::WarnChannelRange(operation);
}

}  // namespace

unsigned QXColorPacked(unsigned r, unsigned g, unsigned b, unsigned a) {
  CheckRange("QXColorPacked", r, g, b, a);
  for (unsigned* channel : {&r, &g, &b, &a}) *channel = detail::LimitChannel(*channel);
  return r | g << 8 | b << 16 | a << 24;
}

QXColor::QXColor(const unsigned char* rgba) {
  if (rgba)
    SetRGBA(rgba);
  else
    QXThrow.Warning("QXColor() invalid pointer!");
}

void QXColor::SetR(unsigned r) {
  CheckRange("SetR", r);
  rgba_[0] = detail::LimitChannel(r);
}
void QXColor::SetG(unsigned g) {
  CheckRange("SetG", g);
  rgba_[1] = detail::LimitChannel(g);
}
void QXColor::SetB(unsigned b) {
  CheckRange("SetB", b);
  rgba_[2] = detail::LimitChannel(b);
}
void QXColor::SetA(unsigned a) {
  CheckRange("SetA", a);
  rgba_[3] = detail::LimitChannel(a);
}

void QXColor::SetPackedColor(unsigned packed) {
  for (unsigned char& channel : rgba_) {
    channel = static_cast<unsigned char>(packed & 0xFF);
    packed >>= 8;
  }
}

void QXColor::SetRGBA(const unsigned char* rgba) {
  if (rgba)
    std::copy_n(rgba, channels, rgba_);
  else
    QXThrow.Warning("QXColor::SetRGBA() invalid pointer!");
}

void QXColor::Set(unsigned r, unsigned g, unsigned b) {
  Set(r, g, b, GetA());
}

void QXColor::Set(unsigned r, unsigned g, unsigned b, unsigned a) {
  CheckRange("Set", r, g, b, a);
  std::size_t i = 0;
  for (const unsigned value : {r, g, b, a}) rgba_[i++] = detail::LimitChannel(value);
}

void QXColor::SetText(const std::string& text) {
  // The misspelt texts are the ones that programs have always seen.
  if (text.empty()) {
    QXThrow.Error("QXColor::SetText(const std::string &text) - Empty paramater");
    return;
  }
  QXColor color = *this;
  bool valid = text[0] == '#' && (text.size() == 7 || text.size() == 9);
  for (std::size_t i = 0; valid && 2 * i + 1 < text.size(); ++i) {
    const char* pair = text.data() + 2 * i + 1;
    const auto read = std::from_chars(pair, pair + 2, color.rgba_[i], /*base=*/16);
    valid = read.ec == std::errc() && read.ptr == pair + 2;
  }
  if (valid)
    *this = color;
  else
    QXThrow.Error("QXColor::SetText(const std::string &text) - Invalid paramater '%s'",
                  text.c_str());
}

std::string QXColor::GetText(bool withAlpha) const {
  constexpr char digits[] = "0123456789abcdef";
  std::string text = "#";
  for (std::size_t i = 0; i < (withAlpha ? channels : channels - 1); ++i)
    text += {digits[rgba_[i] >> 4], digits[rgba_[i] & 15]};
  return text;
}

QXColor QXColorCreate(double r, double g, double b) {
  return WithChannels(QXColor(), {r, g, b}, "QXColorCreate");
}
QXColor QXColorCreate(double r, double g, double b, double a) {
  return WithChannels(QXColor(), {r, g, b, a}, "QXColorCreate");
}
void QXColorSet(QXColor& color, double r, double g, double b) {
  color = WithChannels(color, {r, g, b}, "QXColorSet");
}
void QXColorSet(QXColor& color, double r, double g, double b, double a) {
  color = WithChannels(color, {r, g, b, a}, "QXColorSet");
}

namespace {

template <class T>
T Unit(unsigned channel) {
  constexpr T step = std::is_same_v<T, float> ? T(0.003921569f) : T(1) / T(255);
  return step * static_cast<T>(channel);
}

}  // namespace

void QXColorGet(const QXColor& color, float& r, float& g, float& b) {
  r = Unit<float>(color.GetR());
  g = Unit<float>(color.GetG());
  b = Unit<float>(color.GetB());
}
void QXColorGet(const QXColor& color, float& r, float& g, float& b, float& a) {
  QXColorGet(color, r, g, b);
  a = Unit<float>(color.GetA());
}
void QXColorGet(const QXColor& color, double& r, double& g, double& b) {
  r = Unit<double>(color.GetR());
  g = Unit<double>(color.GetG());
  b = Unit<double>(color.GetB());
}
void QXColorGet(const QXColor& color, double& r, double& g, double& b, double& a) {
  QXColorGet(color, r, g, b);
  a = Unit<double>(color.GetA());
}

QXColor QXGetLightColor(unsigned i) {
  return Entry(light, i);
}
QXColor QXGetVividColor(unsigned i) {
  return Entry(vivid, i);
}
QXColor QXGetDeepColor(unsigned i) {
  return Entry(deep, i);
}
QXIterBase<QXColor>* QXGetLightColors() {
  return All(light);
}
QXIterBase<QXColor>* QXGetVividColors() {
  return All(vivid);
}
QXIterBase<QXColor>* QXGetDeepColors() {
  return All(deep);
}

QXIterBase<QXColor>* QXGetContrastColors(bool withBlackAndWhite) {
  std::vector<QXColor> colors;
  if (withBlackAndWhite) colors = {QXWhite, QXBlack};
  colors.insert(colors.end(), std::begin(contrast), std::end(contrast));
  return OwnedIter(std::move(colors));
}

QXIterBase<QXColor>* QXGetColors(const QXColor& first, const QXColor& last, unsigned n) {
  if (n == 0) return new QXEmptyIter<QXColor>;
  if (n == 1) return OwnedIter({first});
  const QXLinearColorGradient gradient(QXColorStop(1.0, first), QXColorStop(n, last));
  std::vector<QXColor> colors;
  colors.reserve(n);
  for (unsigned i = 0; i < n; ++i) colors.push_back(gradient.GetColorAt(i + 1.0));
  return OwnedIter(std::move(colors));
}

}  // namespace QXSystem

namespace QXPlatform {

using QXSystem::channels;
using QXSystem::QXColor;
using Count = std::uint32_t;

std::size_t QX_io_binary_size(const QXColor&) {
  return sizeof(Count) + channels;
}

std::size_t QX_io_write_binary(unsigned char* target, const QXColor& color) {
  const auto* rgba = reinterpret_cast<const char*>(color.GetRGBA());
  return QX_io_write_binary(target, std::string(rgba, channels));
}

std::size_t QX_io_write_binary(qxostream& out, const QXColor& color) {
  unsigned char bytes[sizeof(Count) + channels];
  return out.write(bytes, QX_io_write_binary(bytes, color));
}

std::size_t QX_io_read_binary(const unsigned char* source, QXColor& color) {
  Count count;
  std::memcpy(&count, source, sizeof count);
  if (count == channels)
    color.SetRGBA(source + sizeof count);
  else
    QXSystem::QXThrow.Warning("Bad QXColor in read.");
  return sizeof count + count;
}

std::size_t QX_io_read_binary(qxistream& in, QXColor& color) {
  unsigned char count[sizeof(Count)] = {}, rgba[channels];
  const std::size_t head = in.read(count, sizeof count);
  Count announced = 0;
  if (head == sizeof count) std::memcpy(&announced, count, sizeof count);
  const std::size_t body = announced == channels ? in.read(rgba, channels) : in.skip(announced);
  if (announced == channels && body == channels)
    color.SetRGBA(rgba);
  else
    QXSystem::QXThrow.Warning("Bad QXColor in read.");
  return head + body;
}

}  // namespace QXPlatform

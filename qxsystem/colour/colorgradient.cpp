#include <qxsystem/colour/colorgradient.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include <qxsystem/core/error.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/numerics/elementary_private.h>
#include <qxsystem/platform/number.h>

namespace QXSystem {

namespace {

// A channel that falls is counted from its lower end: which form is taken shows
// where a channel meets a whole number, white to black at 0.8 is 50 and not 51.
unsigned Mix(unsigned low, unsigned high, double t) {
  const double l = low, h = high;
  return static_cast<unsigned>(std::floor(h < l ? h + (1 - t) * (l - h) : (h - l) * t + l));
}

}  // namespace

QXColorGradientBase::QXColorGradientBase() = default;
QXColorGradientBase::QXColorGradientBase(const QXColorStop& stop) {
  AddStop(stop);
}
QXColorGradientBase::QXColorGradientBase(const QXColorStop& a, const QXColorStop& b) {
  AddStop(a);
  AddStop(b);
}
QXColorGradientBase::QXColorGradientBase(const QXColorGradientBase& other) = default;
QXColorGradientBase& QXColorGradientBase::operator=(const QXColorGradientBase& other) = default;
QXColorGradientBase::~QXColorGradientBase() = default;

double QXColorGradientBase::GetMinValue() const {
  return IsEmpty() ? std::numeric_limits<double>::lowest() : stops_.front().value;
}
double QXColorGradientBase::GetMaxValue() const {
  return IsEmpty() ? std::numeric_limits<double>::max() : stops_.back().value;
}
const QXColor& QXColorGradientBase::GetMinColor() const {
  return IsEmpty() ? QXBlack : stops_.front().color;
}
const QXColor& QXColorGradientBase::GetMaxColor() const {
  return IsEmpty() ? QXBlack : stops_.back().color;
}

QXIterBase<QXColorStop>* QXColorGradientBase::GetStops() const {
  if (IsEmpty()) return new QXEmptyIter<QXColorStop>;
  auto copies = std::make_unique<std::vector<QXColorStop>>(stops_);
  return new QXVectorCacheIter<QXColorStop>(copies.release(), /*owned=*/true);
}

bool QXColorGradientBase::AddStop(const QXColorStop& stop) {
  if (QXPlatform::QXIsNaN(stop.value)) return false;
  const auto place =
      std::lower_bound(stops_.begin(), stops_.end(), stop.value,
                       [](const QXColorStop& s, double value) { return s.value < value; });
  if (place != stops_.end() && place->value == stop.value) return false;
  stops_.insert(place, stop);
  return true;
}

bool QXColorGradientBase::DeleteStop(unsigned index) {
  constexpr const char* where = "QXColorGradientBase::DeleteStop()";
  if (IsEmpty())
    QXThrow.Warning("%s No color stop has been added!", where);
  else if (NumStops() == 1)
    QXThrow.Warning("%s Cannot delete last color stop", where);
  else if (index >= NumStops())
    QXThrow.Warning("%s %u index is out of range (0-%u)", where, index, NumStops() - 1);
  else
    return stops_.erase(stops_.begin() + index), true;
  return false;
}

QXColor QXColorGradientBase::GetColorAt(double value) const {
  if (IsEmpty()) return QXBlack;
  if (value <= GetMinValue()) return GetMinColor();
  if (value >= GetMaxValue()) return GetMaxColor();

  // The first pair of neighbours that holds x on the axis, which rises.
  const double x = TransformValue(value);
  const auto high =
      std::partition_point(stops_.begin(), stops_.end(),
                           [&](const QXColorStop& stop) { return TransformValue(stop.value) < x; });
  const auto upper = std::max(high, stops_.begin() + 1);
  if (upper == stops_.end()) return QXWhite;
  const QXColor &lo = (upper - 1)->color, &hi = upper->color;
  const double a = TransformValue((upper - 1)->value), b = TransformValue(upper->value);
  if (!(a <= x && x <= b)) return QXWhite;
  if (x == a) return lo;
  if (x == b) return hi;

  // Infinity by infinity is no place.
  double t = (x - a) / (b - a);
  if (QXPlatform::QXIsNaN(t)) t = 0;
  return QXColor(Mix(lo.GetR(), hi.GetR(), t), Mix(lo.GetG(), hi.GetG(), t),
                 Mix(lo.GetB(), hi.GetB(), t), Mix(lo.GetA(), hi.GetA(), t));
}

double QXLinearColorGradient::TransformValue(double value) const {
  return value;
}

void QXExponentColorGradient::SetExponent(double exponent) {
  exponent_ = QXPlatform::QXIsNaN(exponent) ? 1.0 : std::clamp(exponent, 0.1, 10.0);
}

// The library's own functions, so that a colour is the same on every processor.
double QXExponentColorGradient::TransformValue(double value) const {
  if (exponent_ == 1.0 || value == 0) return value;
  return value < 0 ? -QXMath::Pow(-value, exponent_) : QXMath::Pow(value, exponent_);
}

double QXExponentialColorGradient::TransformValue(double value) const {
  return value < 0 ? 1 - QXMath::Exp(-value) : QXMath::Exp(value) - 1;
}

double QXLogarithmicColorGradient::TransformValue(double value) const {
  return value < 0 ? -QXMath::Log(1 - value) : QXMath::Log(value + 1);
}

}  // namespace QXSystem

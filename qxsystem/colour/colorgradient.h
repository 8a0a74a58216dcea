// Gradients: colours along a real axis, interpolated between stops.
#pragma once

#include <vector>

#include <qxsystem/colour/color.h>
#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>

namespace QXSystem {

/// A colour at a place on the axis.
struct QXSYSTEM_API QXColorStop {
  QXColorStop() = default;
  QXColorStop(double at, const QXColor& its) : value(at), color(its) {}

  double value = 0;
  QXColor color;
};

/// Base of the gradients, which differ in how they map the axis before colours
/// are interpolated linearly on it.
///
/// The stops are in ascending order of their values, all of which differ.
class QXSYSTEM_API QXColorGradientBase {
public:
  virtual ~QXColorGradientBase();

  /// The axis: an odd, rising function.
  virtual double TransformValue(double value) const = 0;

  unsigned NumStops() const { return static_cast<unsigned>(stops_.size()); }
  bool IsEmpty() const { return stops_.empty(); }

  /// The values of the first and the last stop; without stops the lowest and
  /// the highest double.
  double GetMinValue() const;
  double GetMaxValue() const;

  /// The colours of the first and the last stop, QXBlack without stops; valid
  /// until the stops change.
  const QXColor& GetMinColor() const;
  const QXColor& GetMaxColor() const;

  /// The stops in order. The caller owns the cursor, which walks copies.
  QXIterBase<QXColorStop>* GetStops() const;

  /// Puts a stop in its place. False, with nothing changed, where there is one
  /// of the same value already, and for NaN.
  bool AddStop(const QXColorStop& stop);

  /// Removes a stop by its place in the order. False, with a warning, for the
  /// only one, and for an index that is too large.
  bool DeleteStop(unsigned index);

  /// The colour at `value`: interpolated, each channel rounded down, between the
  /// stops on both sides; beyond the first and the last stop theirs. QXBlack
  /// without stops, QXWhite for NaN.
  ///
  /// Between stops that the axis maps to infinity it is the lower one's.
  QXColor GetColorAt(double value) const;

protected:
  QXColorGradientBase();
  explicit QXColorGradientBase(const QXColorStop& stop);
  QXColorGradientBase(const QXColorStop& a, const QXColorStop& b);
  QXColorGradientBase(const QXColorGradientBase& other);
  QXColorGradientBase& operator=(const QXColorGradientBase& other);

private:
  std::vector<QXColorStop> stops_;
};

// Stops given to the constructors below are added by AddStop, so they may come
// in any order.

/// The axis as it is.
class QXSYSTEM_API QXLinearColorGradient : public QXColorGradientBase {
public:
  QXLinearColorGradient() = default;
  explicit QXLinearColorGradient(const QXColorStop& stop) : QXColorGradientBase(stop) {}
  QXLinearColorGradient(const QXColorStop& a, const QXColorStop& b) : QXColorGradientBase(a, b) {}

  double TransformValue(double value) const override;
};

/// A power of the value, which keeps its sign.
///
/// The exponent is limited to 0.1 to 10; NaN gives 1, the axis as it is.
class QXSYSTEM_API QXExponentColorGradient : public QXColorGradientBase {
public:
  explicit QXExponentColorGradient(double exponent) { SetExponent(exponent); }
  QXExponentColorGradient(double exponent, const QXColorStop& stop) : QXColorGradientBase(stop) {
    SetExponent(exponent);
  }
  QXExponentColorGradient(double exponent, const QXColorStop& a, const QXColorStop& b)
      : QXColorGradientBase(a, b) {
    SetExponent(exponent);
  }

  double GetExponent() const { return exponent_; }
  void SetExponent(double exponent);

  double TransformValue(double value) const override;

private:
  double exponent_;
};

/// exp(x) - 1, and its mirror image below 0.
class QXSYSTEM_API QXExponentialColorGradient : public QXColorGradientBase {
public:
  QXExponentialColorGradient() = default;
  explicit QXExponentialColorGradient(const QXColorStop& stop) : QXColorGradientBase(stop) {}
  QXExponentialColorGradient(const QXColorStop& a, const QXColorStop& b)
      : QXColorGradientBase(a, b) {}

  double TransformValue(double value) const override;
};

/// log(x + 1), and its mirror image below 0.
class QXSYSTEM_API QXLogarithmicColorGradient : public QXColorGradientBase {
public:
  QXLogarithmicColorGradient() = default;
  explicit QXLogarithmicColorGradient(const QXColorStop& stop) : QXColorGradientBase(stop) {}
  QXLogarithmicColorGradient(const QXColorStop& a, const QXColorStop& b)
      : QXColorGradientBase(a, b) {}

  double TransformValue(double value) const override;
};

}  // namespace QXSystem

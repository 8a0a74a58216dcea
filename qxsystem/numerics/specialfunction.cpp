#include <qxsystem/numerics/specialfunction.h>

#include <array>
#include <cmath>
#include <cstddef>

#include <qxsystem/numerics/elementary_private.h>

namespace QXMath {
namespace {

// Coefficients of a rational approximation, highest power first.
template <std::size_t N>
using Polynomial = std::array<double, N>;

// x < 0.5, in x^2
constexpr Polynomial<5> P1 = {1.85777706184603153e-1, 3.16112374387056560e0, 1.13864154151050156e2,
                              3.77485237685302021e2, 3.20937758913846947e3};
constexpr Polynomial<5> Q1 = {1, 2.36012909523441209e1, 2.44024637934444173e2,
                              1.28261652607737228e3, 2.84423683343917062e3};
// 0.5 <= x < 4, in x
constexpr Polynomial<9> P2 = {
    2.15311535474403846e-8, 5.64188496988670089e-1, 8.88314979438837594e0,
    6.61191906371416295e1,  2.98635138197400131e2,  8.81952221241769090e2,
    1.71204761263407058e3,  2.05107837782607147e3,  1.23033935479799725e3};
constexpr Polynomial<9> Q2 = {1.00000000000000000e0, 1.57449261107098347e1, 1.17693950891312499e2,
                              5.37181101862009858e2, 1.62138957456669019e3, 3.29079923573345963e3,
                              4.36261909014324716e3, 3.43936767414372164e3, 1.23033935480374942e3};
// x >= 4, in 1 / x^2; CALERF subtracts this one
constexpr Polynomial<6> P3 = {1.63153871373020978e-2, 3.05326634961232344e-1,
                              3.60344899949804439e-1, 1.25781726111229246e-1,
                              1.60837851487422766e-2, 6.58749161529837803e-4};
constexpr Polynomial<6> Q3 = {1.00000000000000000e0,  2.56852019228982242e0,
                              1.87295284992346725e0,  5.27905102951428412e-1,
                              6.05183413124413191e-2, 2.33520497626869185e-3};
constexpr double InverseRootPi = 0.5641895835477563;

// By Estrin's scheme: neighbours are joined into a polynomial in x^2, and so on.
// Against Horner's it has short chains of operations and fewer roundings.
template <std::size_t N>
double Evaluate(const Polynomial<N>& polynomial, double x) {
  if constexpr (N == 1) {
    return polynomial[0];
  } else {
    Polynomial<(N + 1) / 2> joined;
    constexpr std::size_t Odd = N % 2;
    if constexpr (Odd) joined[0] = polynomial[0];
    for (std::size_t i = Odd; i < joined.size(); ++i)
      joined[i] = polynomial[2 * i - Odd] * x + polynomial[2 * i - Odd + 1];
    return Evaluate(joined, x * x);
  }
}

// exp(-x^2) factor, for 0.5 <= x < 28
double TimesExpOfMinusSquare(double x, double factor) {
  const TwoParts square = Multiply(x, x);
  return TimesExp({-square.high, -square.low}, factor);
}

}  // namespace

double QXerfc(double x) {
  const double y = std::fabs(x);
  double value;
  if (y < 0.5) {
    value = 1 - y * Evaluate(P1, y * y) / Evaluate(Q1, y * y);
  } else if (y < 4) {
    value = TimesExpOfMinusSquare(y, Evaluate(P2, y) / Evaluate(Q2, y));
  } else if (y < 28) {
    const double t = 1 / (y * y);
    value = TimesExpOfMinusSquare(y, (InverseRootPi - t * Evaluate(P3, t) / Evaluate(Q3, t)) / y);
  } else {
    value = y >= 28 ? 0 : y;  // beyond the smallest number, or NaN
  }
  return x < 0 ? 2 - value : value;
}

double QXerf(double x) {
  return 1 - QXerfc(x);
}

}  // namespace QXMath

// Numbers to text and back. Include <qxsystem/util/qxstring.h>, which has all
// text functions.
//
// Numbers are those of the C locale, "0.5" and not "0,5", whatever locale the
// program has set. Blank means space and tab.
#pragma once

#include <string>
#include <type_traits>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// Reads an integer: leading blanks, a sign, digits of `base` from 2 to 36 with
/// letters in either case, trailing blanks, and nothing else.
///
/// The result tells whether all of `text` was such a number within the range of
/// the type; if not, `out` is 0. `long` and `unsigned long` are held to the 32-bit
/// range, -2147483648 to 2147483647 and 0 to 4294967295. The unsigned types
/// take no "-", not even for 0. There is no prefix such as "0x".
QXSYSTEM_API bool QXStringToNumber(const std::string& text, long& out, int base = 10);
QXSYSTEM_API bool QXStringToNumber(const std::string& text, unsigned long& out, int base = 10);
QXSYSTEM_API bool QXStringToNumber(const std::string& text, int& out, int base = 10);
QXSYSTEM_API bool QXStringToNumber(const std::string& text, unsigned int& out, int base = 10);
QXSYSTEM_API bool QXStringToNumber(const std::string& text, short& out, int base = 10);
QXSYSTEM_API bool QXStringToNumber(const std::string& text, unsigned short& out, int base = 10);

/// Reads a real number as `strtod` does, correctly rounded; hexadecimal numbers,
/// infinities and NaN are among them. White space may stand before it, and
/// spaces, tabs and line feeds after it.
///
/// The result tells whether that was all of `text`; if not, `out` is 0.
/// Overflow gives infinity and true. A text of spaces, tabs and line feeds is 0;
/// the empty text is no number.
QXSYSTEM_API bool QXStringToNumber(const std::string& text, double& out);

/// The same, rounded once more to a float.
QXSYSTEM_API bool QXStringToNumber(const std::string& text, float& out);

/// Reads "0", "1", or in any case one of "yes", "true", "on", "y", "t" and "no",
/// "false", "off", "n", "f". Any other text gives false and leaves `out` alone.
QXSYSTEM_API bool QXStringToNumber(const std::string& text, bool& out);

/// Writes an integer with the digits 0-9a-z of `base`, from 2 to 36; another
/// base gives "". Always true.
QXSYSTEM_API bool QXNumberToString(long value, std::string& out, int base = 10);

/// Writes a real number as printf does for the letter `format`, one of e, E, f,
/// F, g, G, with `precision` digits; a precision of 0 or less is printf's own
/// default of 6. Another letter gives false and leaves `out` alone.
QXSYSTEM_API bool QXNumberToString(double value, std::string& out, char format, int precision);
QXSYSTEM_API bool QXNumberToString(long double value, std::string& out, char format, int precision);

/// "true" or "false".
QXSYSTEM_API std::string QXNumberToString(const bool& value);

/// Only a bool has a text without more being said: a number or a pointer would
/// turn into "true".
template <class T>
std::string QXNumberToString(const T& value) = delete;

/// A real number has no text in a base: it would lose its fraction.
template <class T, class = std::enable_if_t<std::is_floating_point_v<T>>>
bool QXNumberToString(T value, std::string& out, int base = 10) = delete;

/// The text of a number without the trailing zeros of its fraction, of which
/// one digit stays: "1.0" for "1.000" and "2.5E-03" for "2.500E-03".
///
/// The value never changes: exponents of every form stay, and a hexadecimal
/// number or a text without a decimal fraction comes back as it is.
QXSYSTEM_API std::string QXTrimToSigFigs(const std::string& text);

/// The value at `x` of the line through (x0, y0) and (x1, y1); the caller sees
/// to it that `x0` and `x1` differ.
QXSYSTEM_API double QXLinearInterpolation(const double& x, const double& x0, const double& x1,
                                          const double& y0, const double& y1);

/// The value at (x, y) between four corners: q00 at (x0, y0), q11 at (x1, y1),
/// q01 at (x0, y1) and q10 at (x1, y0). Mind the order of the corners.
QXSYSTEM_API double QX2DLinearInterpolation(const double& x0, const double& y0, const double& x1,
                                            const double& y1, const double& q00, const double& q11,
                                            const double& q01, const double& q10, const double& x,
                                            const double& y);

}  // namespace QXSystem

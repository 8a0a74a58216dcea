// printf into a std::string. Include <qxsystem/util/qxstring.h>, which has all
// text functions.
#pragma once

#include <cstddef>
#include <string>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// What printf would print for `format`, which has the meaning and follows the
/// locale of `vsnprintf`; "" for a null `format`.
///
/// A text that printf refuses or that would pass 2 GiB gives "" and a Warning,
/// and so does lack of memory.
QXSYSTEM_API std::string QXMakeString(const char* format, ...)
    __attribute__((format(printf, 1, 2)));

/// `vsnprintf` with the arguments behind `format`.
QXSYSTEM_API int QXSNPrintf(char* buffer, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

}  // namespace QXSystem

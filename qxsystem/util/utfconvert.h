// Text from outside as UTF-8: telling whether it is, and making it so.
#pragma once

#include <string>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// Whether the zero-terminated `text` is well-formed UTF-8: no code point in
/// more bytes than it needs, none of the surrogates U+D800 to U+DFFF, none above
/// U+10FFFF, and not U+FFFE or U+FFFF. Nothing behind the terminator is read.
QXSYSTEM_API bool QXIsValidUTF8(const unsigned char* text);

/// The zero-terminated Windows-1252 `text` in UTF-8. The five bytes that this
/// encoding leaves undefined become the code points of the same value.
QXSYSTEM_API std::string QXWin1252ToUTF8(const unsigned char* text);

/// `text` itself if it is valid UTF-8, otherwise taken for Windows-1252 and
/// converted: UTF-8 in any case.
QXSYSTEM_API std::string QXBytesToUTF8(const char* text);

}  // namespace QXSystem

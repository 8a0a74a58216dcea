// Base85: bytes as printable text, five characters for four bytes.
#pragma once

#include <string>
#include <vector>

#include <qxsystem/core/export.h>

namespace QXDataFlow {

/// The text of `bytes`. Four bytes, the first the most significant, are a number
/// of five digits, the most significant first; of 1, 2 or 3 bytes at the end
/// come 2, 3 or 4 characters.
///
/// The digits are those of RFC 1924, which applies them to one number of 128
/// bits; none of them needs an escape in JSON.
QXSYSTEM_API std::string QXBase85Encode(const std::vector<unsigned char>& bytes);

/// The bytes of a text. Nothing is checked: a character that is no digit, and
/// five digits of more than 32 bits, give wrong bytes. 2, 3 or 4 characters at
/// the end give 1, 2 or 3 bytes, a single one gives none.
QXSYSTEM_API std::vector<unsigned char> QXBase85Decode(const std::string& text);

}  // namespace QXDataFlow

// Text functions: case, white space and wildcards here, and with them numbers,
// printf, tokenizers, quotes and CSV. Include this one for all.
//
// Texts are bytes; letters are those of ASCII, whatever the locale. Blank means
// space and tab. Nothing here ends the process: bad input gives a false or a
// copy.
#pragma once

#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/util/qxformat.h>
#include <qxsystem/util/qxnumber.h>
#include <qxsystem/util/qxtokenize.h>

namespace QXSystem {

/// The text in lower case.
QXSYSTEM_API std::string QXStringLower(const std::string& text);

/// The text in upper case.
QXSYSTEM_API std::string QXStringUpper(const std::string& text);

/// Whether the texts are equal up to the case of their letters.
QXSYSTEM_API bool QXStringEquals(const std::string& a, const std::string& b);

/// The text without the blanks at both ends.
QXSYSTEM_API std::string QXStringStripWhiteSpace(const std::string& text);

/// The text with a single space for every run of blanks, except one at the end,
/// which goes: " a b" for "\ta  b ", and "" for blanks alone.
QXSYSTEM_API std::string QXStringSimplifyWhiteSpace(const std::string& text);

/// The text with four spaces for every tab, wherever it stands in its line.
QXSYSTEM_API std::string QXStringTabsToSpaces(const std::string& text);

/// The message in the user's language; as there is no table of translations
/// yet, the text itself.
QXSYSTEM_API std::string QXStringTranslate(const std::string& text);

/// Whether `pattern` describes `text`, in the same case: each "*" stands for any
/// run of characters, the empty one too, and there are at most two.
///
/// What stands before the first "*" and behind the last one is compared without
/// regard to overlap: "ab*b" matches "ab". Equal texts always match. A pattern
/// with more than two "*" gives false and a Warning, unless its two ends have
/// settled it before.
QXSYSTEM_API bool QXStringMatch(const std::string& text, const std::string& pattern);

namespace detail {

/// What callers of the old names of two predicates are told.
QXSYSTEM_API const char* IsTrueDeprecated();
QXSYSTEM_API const char* IsFalseDeprecated();

}  // namespace detail

}  // namespace QXSystem

// Splitting and joining of text, quotes and CSV fields. Include
// <qxsystem/util/qxstring.h>, which has all text functions.
//
// Splitting takes time in proportion to the text. The container is emptied
// first; the text, or any other argument, may be one of its elements. The
// vector and the list forms give the same tokens.
#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// Splits `text` at every character of the set `delimiters`. Always true.
///
/// With `skipEmpty`, runs of delimiters separate, and those at the start and at
/// the end give nothing. Without, n delimiters give n + 1 tokens, one for the
/// empty text.
QXSYSTEM_API bool QXStringTokenize(std::vector<std::string>& tokens, const std::string& text,
                                   const std::string& delimiters, bool skipEmpty = true);
QXSYSTEM_API bool QXStringTokenize(std::list<std::string>& tokens, const std::string& text,
                                   const std::string& delimiters, bool skipEmpty = true);

/// The same, but in a token that begins with a character of `quotes` delimiters
/// are ordinary up to the closing quote, the same character. Always true.
///
/// A doubled quote does not close, and all quotes stay in the token. What stands
/// between the closing quote and the next delimiter belongs to the token too:
/// `"a,b"c,d` gives `"a,b"c` and `d`. Without a closing quote the rest of the text
/// is the last token. A quote inside an unquoted token has no meaning.
///
/// Unlike `QXStringTokenize`, the empty text and one of delimiters alone give no
/// token, with and without `skipEmpty`.
QXSYSTEM_API bool QXStringTokenizeQuoted(std::vector<std::string>& tokens, const std::string& text,
                                         const std::string& delimiters, const std::string& quotes,
                                         bool skipEmpty = true);
QXSYSTEM_API bool QXStringTokenizeQuoted(std::list<std::string>& tokens, const std::string& text,
                                         const std::string& delimiters, const std::string& quotes,
                                         bool skipEmpty = true);

/// Splits at white space: spaces, tabs, line feeds and carriage returns. Always
/// true.
///
/// With `keepEmpty` there is one empty token for white space at the start, one
/// for white space at the end, and one wherever more than one such character
/// separates two tokens; a text of nothing else gives one.
///
/// `maxTokens` limits the tokens, the empty ones included; 0 is no limit.
/// `endPos`, if given, receives the place of the first character, not white,
/// that was left unread: the length of `text` where nothing was.
QXSYSTEM_API bool QXStringTokenizeWhitespace(std::vector<std::string>& tokens,
                                             const std::string& text, bool keepEmpty = false,
                                             std::size_t maxTokens = 0,
                                             std::size_t* endPos = nullptr);
QXSYSTEM_API bool QXStringTokenizeWhitespace(std::list<std::string>& tokens,
                                             const std::string& text, bool keepEmpty = false,
                                             std::size_t maxTokens = 0,
                                             std::size_t* endPos = nullptr);

/// The items with `separator` between them, and one more at the end with
/// `trailing`. No items give "".
QXSYSTEM_API std::string QXStringJoin(const std::vector<std::string>& items,
                                      const std::string& separator, bool trailing = false);
QXSYSTEM_API std::string QXStringJoin(const std::list<std::string>& items,
                                      const std::string& separator, bool trailing = false);

/// The text without the first and the last character, if these are the same
/// character of the set `quotes`; else a copy.
QXSYSTEM_API std::string QXStringStripQuotes(const std::string& text, const std::string& quotes);

/// The text with every doubled quote between its enclosing quotes, which stay,
/// made a single one. Only the enclosing character counts. A text that is not
/// enclosed in the manner of `QXStringStripQuotes` is copied.
QXSYSTEM_API std::string QXStringCollapseQuotes(const std::string& text, const std::string& quotes);

/// Splits a line into fields at `delimiter` and takes the quotes off those that
/// are enclosed in `quote`, where a doubled one stands for one. Always true.
///
/// A blank before the opening quote makes it an ordinary character. Fields may
/// be empty, but a line of nothing but delimiters has none.
QXSYSTEM_API bool QXStringCSVTokenize(std::vector<std::string>& tokens, const std::string& line,
                                      char delimiter = ',', char quote = '"');
QXSYSTEM_API bool QXStringCSVTokenize(std::list<std::string>& tokens, const std::string& line,
                                      char delimiter = ',', char quote = '"');

/// The text as a field of a line: enclosed in `quote`, with the quotes inside
/// doubled, if it contains `delimiter` or begins with `quote`; else a copy.
///
/// Line feeds are not looked at: a text with one does not survive a file that is
/// read by lines.
QXSYSTEM_API std::string QXStringCSVQuote(const std::string& text, char delimiter = ',',
                                          char quote = '"');

/// A line that `QXStringCSVTokenize` splits into the same fields, unless all of
/// them are empty or `delimiter` and `quote` are the same.
QXSYSTEM_API std::string QXStringCSVJoin(const std::vector<std::string>& fields,
                                         char delimiter = ',', char quote = '"');
QXSYSTEM_API std::string QXStringCSVJoin(const std::list<std::string>& fields, char delimiter = ',',
                                         char quote = '"');

}  // namespace QXSystem

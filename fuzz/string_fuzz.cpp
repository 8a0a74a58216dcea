// Numbers, tokenizers and CSV: what is read comes back from what is written,
// joined tokens are the text again where nothing is dropped, and functions that
// overlap agree. The first byte is the delimiter, the second the quote and the
// third chooses the base; the rest is the text.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/util/qxstring.h>

#include "require.h"

using namespace QXSystem;

namespace {

using Tokens = std::vector<std::string>;

bool Same(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

Tokens NotEmpty(const Tokens& tokens) {
  Tokens result;
  for (const auto& token : tokens)
    if (!token.empty()) result.push_back(token);
  return result;
}

void CheckIntegers(const std::string& text, int base) {
  long value = 1;
  if (!QXStringToNumber(text, value, base)) {
    REQUIRE(value == 0);
    return;
  }
  REQUIRE(value == std::strtol(text.c_str(), nullptr, base));
  std::string written;
  long again = 0;
  REQUIRE(QXNumberToString(value, written, base) && QXStringToNumber(written, again, base));
  REQUIRE(again == value);
  int narrow = 0;
  unsigned short narrower = 1;
  REQUIRE(QXStringToNumber(text, narrow, base) && narrow == value);
  if (QXStringToNumber(text, narrower, base)) REQUIRE(narrower == value);
}

void CheckReals(const std::string& text, int precision) {
  char* rest;
  const double expected = std::strtod(text.c_str(), &rest);
  const auto used = static_cast<std::size_t>(rest - text.c_str());
  const bool isNumber = !text.empty() && text.find_first_not_of(" \t\n", used) == text.npos;
  double value = 1;
  REQUIRE(QXStringToNumber(text, value) == isNumber);
  REQUIRE(Same(value, isNumber ? expected : 0.0));
  if (!isNumber) return;

  double trimmed = 1;
  REQUIRE(QXStringToNumber(QXTrimToSigFigs(text), trimmed) && Same(trimmed, value));
  std::string written;
  for (const char letter : {'e', 'f', 'g'}) {
    REQUIRE(QXNumberToString(value, written, letter, precision));
    char printed[1024];
    const char format[] = {'%', '.', '*', letter, '\0'};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(printed, sizeof printed, format, precision, value);
#pragma GCC diagnostic pop
    REQUIRE(written == printed);
  }
  REQUIRE(QXNumberToString(value, written, 'e', 17) && QXStringToNumber(written, trimmed));
  REQUIRE(Same(trimmed, value) || value != value);
}

void CheckTokenizers(const std::string& text, char delimiter, char quote) {
  const std::string separator(1, delimiter);
  const bool blank = text.find_first_not_of(delimiter) == text.npos;
  Tokens all, filled;
  QXStringTokenize(all, text, separator, /*skipEmpty=*/false);
  REQUIRE(QXStringJoin(all, separator) == text);
  QXStringTokenize(filled, text, separator, /*skipEmpty=*/true);
  REQUIRE(filled == NotEmpty(all));

  QXStringTokenizeQuoted(all, text, separator, std::string(1, quote), /*skipEmpty=*/false);
  REQUIRE(blank ? all.empty() : QXStringJoin(all, separator) == text);
  QXStringTokenizeQuoted(filled, text, separator, std::string(1, quote), /*skipEmpty=*/true);
  REQUIRE(filled == NotEmpty(all));
  for (auto& token : all) {
    token = QXStringCollapseQuotes(token, std::string(1, quote));
    token = QXStringStripQuotes(token, std::string(1, quote));
  }

  Tokens fields, again;
  QXStringCSVTokenize(fields, text, delimiter, quote);
  REQUIRE(fields == all);
  QXStringCSVTokenize(again, QXStringCSVJoin(fields, delimiter, quote), delimiter, quote);
  REQUIRE(again == fields || delimiter == quote || NotEmpty(fields).empty());
}

void CheckWhitespace(const std::string& text, std::size_t maxTokens) {
  Tokens plain, kept, first, rest;
  QXStringTokenize(plain, text, " \t\n\r");
  std::size_t end = 0;
  QXStringTokenizeWhitespace(kept, text, /*keepEmpty=*/true, 0, &end);
  REQUIRE(NotEmpty(kept) == plain && end == text.size());
  QXStringTokenizeWhitespace(first, text, /*keepEmpty=*/false, maxTokens, &end);
  REQUIRE(maxTokens == 0 || first.size() <= maxTokens);
  QXStringTokenizeWhitespace(rest, text.substr(end));
  first.insert(first.end(), rest.begin(), rest.end());
  REQUIRE(first == plain);
}

void CheckMatch(const std::string& text, std::size_t a, std::size_t b, std::size_t c) {
  if (text.find('*') != text.npos || text.empty()) return;
  a %= text.size();
  b = a + b % (text.size() - a);
  c = b + c % (text.size() - b);
  // Any text between what stands before, between and behind the stars.
  REQUIRE(QXStringMatch(text, text.substr(0, a) + "*" + text.substr(b, c - b) + "*"));
  REQUIRE(QXStringMatch(text, "*" + text.substr(a, b - a) + "*" + text.substr(c)));
  REQUIRE(QXStringMatch(text, text.substr(0, a) + "*" + text.substr(c)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QXThrow.SetLevel(QXErrorLevel::Quiet);
  if (size < 3) return 0;
  const std::string text(data + 3, data + size);
  const unsigned choice = data[2];
  CheckIntegers(text, 2 + static_cast<int>(choice % 35));
  CheckIntegers(text, 10);
  CheckReals(text, 1 + static_cast<int>(choice % 30));
  CheckTokenizers(text, static_cast<char>(data[0]), static_cast<char>(data[1]));
  CheckWhitespace(text, choice % 5);
  CheckMatch(text, choice, choice / 2, choice / 3);
  return 0;
}

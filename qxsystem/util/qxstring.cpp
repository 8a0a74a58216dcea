#include <qxsystem/util/qxstring.h>

#include <string.h>

#include <algorithm>
#include <string_view>

#include <qxsystem/core/error.h>

namespace QXSystem {

namespace {

constexpr char blanks[] = " \t";

// The C library's functions ask the locale.
char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

char Upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c & ~0x20) : c;
}

// std::string_view::find may take quadratic time.
bool Contains(std::string_view text, std::string_view part) {
  return ::memmem(text.data(), text.size(), part.data(), part.size()) != nullptr;
}

}  // namespace

std::string QXStringLower(const std::string& text) {
  std::string result = text;
  std::transform(result.begin(), result.end(), result.begin(), Lower);
  return result;
}

std::string QXStringUpper(const std::string& text) {
  std::string result = text;
  std::transform(result.begin(), result.end(), result.begin(), Upper);
  return result;
}

bool QXStringEquals(const std::string& a, const std::string& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string QXStringStripWhiteSpace(const std::string& text) {
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

std::string QXStringSimplifyWhiteSpace(const std::string& text) {
  std::string result;
  bool pending = false;  // a space, if anything follows
  for (const char c : text) {
    if (c == ' ' || c == '\t') {
      pending = true;
      continue;
    }
    if (pending) result += ' ';
    pending = false;
    result += c;
  }
  return result;
}

std::string QXStringTabsToSpaces(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\t')
      result += "    ";
    else
      result += c;
  }
  return result;
}

std::string QXStringTranslate(const std::string& text) {
  return text;
}

bool QXStringMatch(const std::string& text, const std::string& pattern) {
  if (text == pattern) return true;
  const std::string_view whole = text;
  const auto first = pattern.find('*');
  if (first == std::string::npos) return false;
  const auto last = pattern.rfind('*');
  const auto prefix = std::string_view(pattern).substr(0, first);
  const auto suffix = std::string_view(pattern).substr(last + 1);
  if (whole.substr(0, prefix.size()) != prefix) return false;
  if (whole.size() < suffix.size() || whole.substr(whole.size() - suffix.size()) != suffix)
    return false;
  if (last == first) return true;

  const auto middle = std::string_view(pattern).substr(first + 1, last - first - 1);
  if (middle.find('*') != std::string_view::npos) {
    QXThrow.Warning("QXStringMatch doesn't support more than two wildcards, *'s, in a pattern");
    return false;
  }
  if (middle.empty()) return true;
  if (prefix.size() + suffix.size() > whole.size()) return false;
  return Contains(whole.substr(first, whole.size() - suffix.size() - first), middle);
}

namespace detail {

const char* IsTrueDeprecated() {
  return "IsTrue is deprecated. Please use QXIsTrue instead.";
}

const char* IsFalseDeprecated() {
  return "IsFalse is deprecated. Please use QXIsFalse instead.";
}

}  // namespace detail

}  // namespace QXSystem

#include <qxsystem/util/qxtokenize.h>

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <limits>

namespace QXSystem {

namespace {

// A set of characters, and the search for them.
class ByteSet {
public:
  explicit ByteSet(const std::string& bytes) : few_(!bytes.empty() && bytes.size() <= maxFew) {
    for (const char c : bytes) Word(c) |= Bit(c);
    if (few_)
      for (std::size_t i = 0; i < maxFew; ++i)
        members_[i] = _mm_set1_epi8(bytes[std::min(i, bytes.size() - 1)]);
  }

  bool Has(char c) const { return (words_[static_cast<unsigned char>(c) / 64] & Bit(c)) != 0; }

  // The first member from `p` on, or `end`.
  const char* Find(const char* p, const char* end) const {
    if (few_) {
      for (; end - p >= 16; p += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const int found = _mm_movemask_epi8(_mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(block, members_[0]), _mm_cmpeq_epi8(block, members_[1])),
            _mm_or_si128(_mm_cmpeq_epi8(block, members_[2]), _mm_cmpeq_epi8(block, members_[3]))));
        if (found != 0) return p + __builtin_ctz(static_cast<unsigned>(found));
      }
    }
    return std::find_if(p, end, [this](char c) { return Has(c); });
  }

  // The first other character from `p` on, or `end`.
  const char* Skip(const char* p, const char* end) const {
    while (p != end && Has(*p)) ++p;
    return p;
  }

private:
  static constexpr std::size_t maxFew = 4;

  static std::uint64_t Bit(char c) {
    return std::uint64_t{1} << (static_cast<unsigned char>(c) % 64);
  }
  std::uint64_t& Word(char c) { return words_[static_cast<unsigned char>(c) / 64]; }

  std::array<std::uint64_t, 4> words_{};  // a bit for each member
  bool few_;                              // the members fit into members_
  __m128i members_[maxFew];               // each member in all bytes, the last one repeated
};

// Appends [begin, end), a part of a text that goes on to `textEnd`.
template <class Container>
void Add(Container& tokens, const char* begin, const char* end, const char* textEnd) {
  // Copying a fixed size and cutting takes half the time of copying what most
  // tokens are, a few bytes.
  constexpr std::ptrdiff_t shortSize = 15;
  if (end - begin <= shortSize && textEnd - begin >= shortSize)
    tokens.emplace_back(begin, shortSize).resize(static_cast<std::size_t>(end - begin));
  else
    tokens.emplace_back(begin, static_cast<std::size_t>(end - begin));
}

bool IsElement(const std::string* text, const std::vector<std::string>& tokens) {
  const std::less<> before;
  return !before(text, tokens.data()) && before(text, tokens.data() + tokens.size());
}

bool IsElement(const std::string* text, const std::list<std::string>& tokens) {
  return std::any_of(tokens.begin(), tokens.end(), [&](auto& token) { return &token == text; });
}

// Empties `tokens` and lets `fill` add to it. The container's memory is used
// again, unless an input is one of the elements.
template <class Container, class Fill>
bool Refill(Container& tokens, std::initializer_list<const std::string*> inputs, Fill fill) {
  const bool aliased = std::any_of(inputs.begin(), inputs.end(),
                                   [&](auto* input) { return IsElement(input, tokens); });
  if (aliased) {
    Container fresh;
    fill(fresh);
    tokens.swap(fresh);
  } else {
    tokens.clear();
    fill(tokens);
  }
  return true;
}

template <class Container>
bool Tokenize(Container& tokens, const std::string& text, const std::string& delimiters,
              bool skipEmpty) {
  return Refill(tokens, {&text, &delimiters}, [&](Container& out) {
    const ByteSet delimiterSet(delimiters);
    const char* begin = text.data();
    const char* const textEnd = begin + text.size();
    for (;; ++begin) {
      const char* const end = delimiterSet.Find(begin, textEnd);
      if (end != begin || !skipEmpty) Add(out, begin, end, textEnd);
      if (end == textEnd) break;
      begin = end;
    }
  });
}

// The quote that closes the one at `open`, or `end`. Two adjacent ones are a pair
// that does not close.
const char* ClosingQuote(const char* open, const char* end) {
  for (const char* p = open + 1;; p += 2) {
    p = static_cast<const char*>(std::memchr(p, *open, static_cast<std::size_t>(end - p)));
    if (p == nullptr) return end;
    if (p + 1 == end || p[1] != *open) return p;
  }
}

// Calls `put(begin, end)` for every token.
template <class Put>
void SplitQuoted(const std::string& text, const ByteSet& delimiters, const ByteSet& quotes,
                 bool skipEmpty, Put put) {
  const char* const textEnd = text.data() + text.size();
  const auto putEmpty = [&](std::ptrdiff_t count) {
    for (; !skipEmpty && count > 0; --count) put(textEnd, textEnd);
  };
  const char* begin = delimiters.Skip(text.data(), textEnd);
  if (begin == textEnd) return;
  putEmpty(begin - text.data());
  for (;;) {
    const char* const plain = quotes.Has(*begin) ? ClosingQuote(begin, textEnd) : begin;
    const char* const end = delimiters.Find(plain, textEnd);
    put(begin, end);
    if (end == textEnd) return;
    begin = delimiters.Skip(end, textEnd);
    if (begin == textEnd) return putEmpty(begin - end);
    putEmpty(begin - end - 1);
  }
}

template <class Container>
bool TokenizeQuoted(Container& tokens, const std::string& text, const std::string& delimiters,
                    const std::string& quotes, bool skipEmpty) {
  return Refill(tokens, {&text, &delimiters, &quotes}, [&](Container& out) {
    const char* const textEnd = text.data() + text.size();
    SplitQuoted(text, ByteSet(delimiters), ByteSet(quotes), skipEmpty,
                [&](const char* begin, const char* end) { Add(out, begin, end, textEnd); });
  });
}

template <class Container>
bool TokenizeWhitespace(Container& tokens, const std::string& text, bool keepEmpty,
                        std::size_t maxTokens, std::size_t* endPos) {
  return Refill(tokens, {&text}, [&](Container& out) {
    const ByteSet white("\t\n\r ");
    const char* const textBegin = text.data();
    const char* const textEnd = textBegin + text.size();
    const char* p = textBegin;
    std::size_t room = maxTokens != 0 ? maxTokens : std::numeric_limits<std::size_t>::max();
    for (;;) {
      const char* const run = p;
      p = white.Skip(run, textEnd);
      const bool edge = run == textBegin || p == textEnd;
      if (keepEmpty && p - run >= (edge ? 1 : 2)) {
        if (room-- == 0) break;
        out.emplace_back();
      }
      if (p == textEnd || room-- == 0) break;
      const char* const end = white.Find(p, textEnd);
      Add(out, p, end, textEnd);
      p = end;
    }
    if (endPos != nullptr) *endPos = static_cast<std::size_t>(p - textBegin);
  });
}

template <class Container>
std::string Join(const Container& items, const std::string& separator, bool trailing) {
  std::size_t size = 0;
  for (const auto& item : items) size += item.size() + separator.size();
  std::string result;
  result.reserve(size);
  for (const auto& item : items) {
    if (&item != &items.front()) result += separator;
    result += item;
  }
  if (trailing && !items.empty()) result += separator;
  return result;
}

bool IsEnclosed(const char* begin, const char* end) {
  return end - begin >= 2 && *begin == end[-1];
}

bool IsEnclosed(const std::string& text, const std::string& quotes) {
  return IsEnclosed(text.data(), text.data() + text.size()) &&
         quotes.find(text.front()) != std::string::npos;
}

// Appends [begin, end) with each pair of adjacent quotes made one.
void AppendCollapsed(std::string& out, const char* begin, const char* end, char quote) {
  for (;;) {
    const char* const found = std::find(begin, end, quote);
    if (found == end) break;
    out.append(begin, found + 1);
    begin = found + 1;
    if (begin != end && *begin == quote) ++begin;
  }
  out.append(begin, end);
}

template <class Container>
bool TokenizeCSV(Container& tokens, const std::string& line, char delimiter, char quote) {
  return Refill(tokens, {&line}, [&](Container& out) {
    const char* const lineEnd = line.data() + line.size();
    const auto put = [&](const char* begin, const char* end) {
      if (begin == end || *begin != quote || !IsEnclosed(begin, end))
        Add(out, begin, end, lineEnd);
      else
        AppendCollapsed(out.emplace_back(), begin + 1, end - 1, quote);
    };
    SplitQuoted(line, ByteSet(std::string(1, delimiter)), ByteSet(std::string(1, quote)),
                /*skipEmpty=*/false, put);
  });
}

void AppendCSV(std::string& out, const std::string& field, char delimiter, char quote) {
  const bool plain =
      field.empty() || (field.front() != quote && field.find(delimiter) == std::string::npos);
  if (plain) {
    out += field;
    return;
  }
  out += quote;
  for (const char c : field) {
    if (c == quote) out += quote;
    out += c;
  }
  out += quote;
}

template <class Container>
std::string JoinCSV(const Container& fields, char delimiter, char quote) {
  std::string line;
  for (const auto& field : fields) {
    if (&field != &fields.front()) line += delimiter;
    AppendCSV(line, field, delimiter, quote);
  }
  return line;
}

}  // namespace

bool QXStringTokenize(std::vector<std::string>& tokens, const std::string& text,
                      const std::string& delimiters, bool skipEmpty) {
  return Tokenize(tokens, text, delimiters, skipEmpty);
}

bool QXStringTokenize(std::list<std::string>& tokens, const std::string& text,
                      const std::string& delimiters, bool skipEmpty) {
  return Tokenize(tokens, text, delimiters, skipEmpty);
}

bool QXStringTokenizeQuoted(std::vector<std::string>& tokens, const std::string& text,
                            const std::string& delimiters, const std::string& quotes,
                            bool skipEmpty) {
  return TokenizeQuoted(tokens, text, delimiters, quotes, skipEmpty);
}

bool QXStringTokenizeQuoted(std::list<std::string>& tokens, const std::string& text,
                            const std::string& delimiters, const std::string& quotes,
                            bool skipEmpty) {
  return TokenizeQuoted(tokens, text, delimiters, quotes, skipEmpty);
}

bool QXStringTokenizeWhitespace(std::vector<std::string>& tokens, const std::string& text,
                                bool keepEmpty, std::size_t maxTokens, std::size_t* endPos) {
  return TokenizeWhitespace(tokens, text, keepEmpty, maxTokens, endPos);
}

bool QXStringTokenizeWhitespace(std::list<std::string>& tokens, const std::string& text,
                                bool keepEmpty, std::size_t maxTokens, std::size_t* endPos) {
  return TokenizeWhitespace(tokens, text, keepEmpty, maxTokens, endPos);
}

std::string QXStringJoin(const std::vector<std::string>& items, const std::string& separator,
                         bool trailing) {
  return Join(items, separator, trailing);
}

std::string QXStringJoin(const std::list<std::string>& items, const std::string& separator,
                         bool trailing) {
  return Join(items, separator, trailing);
}

std::string QXStringStripQuotes(const std::string& text, const std::string& quotes) {
  return IsEnclosed(text, quotes) ? text.substr(1, text.size() - 2) : text;
}

std::string QXStringCollapseQuotes(const std::string& text, const std::string& quotes) {
  if (!IsEnclosed(text, quotes)) return text;
  const char quote = text.front();
  std::string result(1, quote);
  AppendCollapsed(result, text.data() + 1, text.data() + text.size() - 1, quote);
  result += quote;
  return result;
}

bool QXStringCSVTokenize(std::vector<std::string>& tokens, const std::string& line, char delimiter,
                         char quote) {
  return TokenizeCSV(tokens, line, delimiter, quote);
}

bool QXStringCSVTokenize(std::list<std::string>& tokens, const std::string& line, char delimiter,
                         char quote) {
  return TokenizeCSV(tokens, line, delimiter, quote);
}

std::string QXStringCSVQuote(const std::string& text, char delimiter, char quote) {
  std::string field;
  AppendCSV(field, text, delimiter, quote);
  return field;
}

std::string QXStringCSVJoin(const std::vector<std::string>& fields, char delimiter, char quote) {
  return JoinCSV(fields, delimiter, quote);
}

std::string QXStringCSVJoin(const std::list<std::string>& fields, char delimiter, char quote) {
  return JoinCSV(fields, delimiter, quote);
}

}  // namespace QXSystem

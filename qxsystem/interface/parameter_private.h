// What the sources of the parameters share: the text and binary forms of the
// value types.
#pragma once

#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>

#include <qxsystem/interface/parameter.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {

/// What separates words in names, lists and configuration texts.
constexpr char WordDelimiters[] = " \t\n";

inline bool SeparatesWords(char c) {
  return static_cast<unsigned char>(c) <= ' ' && (c == ' ' || c == '\t' || c == '\n');
}

/// Takes the next word off a text; empty when there is none.
inline std::string_view TakeWord(std::string_view& text) {
  const char* const end = text.data() + text.size();
  const char* at = text.data();
  while (at != end && SeparatesWords(*at)) ++at;
  const char* const word = at;
  while (at != end && !SeparatesWords(*at)) ++at;
  text.remove_prefix(static_cast<std::size_t>(at - text.data()));
  return {word, static_cast<std::size_t>(at - word)};
}

/// A value type as text.
template <class T>
struct TextForm {
  static bool Read(T& out, const std::string& text) { return QXStringToNumber(text, out); }
  static bool Write(std::string& out, const T& value);
};

template <>
inline bool TextForm<bool>::Write(std::string& out, const bool& value) {
  out = QXNumberToString(value);
  return true;
}
template <>
inline bool TextForm<int>::Write(std::string& out, const int& value) {
  return QXNumberToString(static_cast<long>(value), out);
}
template <>
inline bool TextForm<unsigned int>::Write(std::string& out, const unsigned int& value) {
  return QXNumberToString(static_cast<long>(value), out);
}
template <>
inline bool TextForm<float>::Write(std::string& out, const float& value) {
  return QXNumberToString(static_cast<double>(value), out, 'f', 6);
}
template <>
inline bool TextForm<double>::Write(std::string& out, const double& value) {
  return QXNumberToString(value, out, 'f', 12);
}
template <>
struct TextForm<std::string> {
  static bool Read(std::string& out, const std::string& text) {
    out = text;
    return true;
  }
  static bool Write(std::string& out, const std::string& value) { return Read(out, value); }
};

// The binary form: blocks of a head byte, a count and entries. Numbers are those
// of the host that wrote them; a bit of the head tells a reader to swap.

constexpr unsigned char BlockHead = 1;
constexpr unsigned char BlockHeadBits = 0x1F;
constexpr unsigned char BlockSwapBit = 0x40;

/// Goes through a buffer whose size is known to be enough.
struct BlockWriter {
  unsigned char* at;

  template <class N>
  void Put(N number) {
    std::memcpy(at, &number, sizeof number);
    at += sizeof number;
  }
  void Put(bool value) { *at++ = value; }
  void Put(const std::string& text) {
    Put(static_cast<std::uint32_t>(text.size()));
    std::memcpy(at, text.data(), text.size());
    at += text.size();
  }
  void Put(const QXPlatform::qxisstream& value) {
    std::string bytes;
    value.getbuffer(bytes);
    Put(bytes);
  }
};

struct BlockReader {
  const unsigned char* at;
  bool swap = false;

  template <class N>
  void Get(N& number) {
    unsigned char bytes[sizeof number];
    for (unsigned i = 0; i < sizeof bytes; ++i) bytes[swap ? sizeof bytes - 1 - i : i] = *at++;
    std::memcpy(&number, bytes, sizeof number);
  }
  void Get(bool& value) { value = *at++ != 0; }
  void Get(std::string& text) {
    std::uint32_t size;
    Get(size);
    text.assign(reinterpret_cast<const char*>(at), size);
    at += size;
  }
  void Get(QXPlatform::qxisstream& value) {
    std::string bytes;
    Get(bytes);
    value.set(bytes);
  }
};

template <class T>
unsigned EntrySize(const T&) {
  return sizeof(T);
}
inline unsigned EntrySize(bool) {
  return 1;
}
inline unsigned EntrySize(const std::string& text) {
  return 4 + static_cast<unsigned>(text.size());
}
inline unsigned EntrySize(const QXPlatform::qxisstream& value) {
  std::string bytes;
  value.getbuffer(bytes);
  return EntrySize(bytes);
}

template <class T>
unsigned BlockSize(const std::deque<T>& values) {
  unsigned size = 1 + 4;
  for (const T& value : values) size += EntrySize(value);
  return size;
}

template <class T>
void WriteBlock(BlockWriter& out, const std::deque<T>& values) {
  *out.at++ = BlockHead;
  out.Put(static_cast<std::uint32_t>(values.size()));
  for (const T& value : values) out.Put(value);
}

/// False for a block of another kind, of which only the head is consumed.
template <class T>
bool ReadBlock(BlockReader& in, std::deque<T>& values) {
  const unsigned char head = *in.at++;
  if ((head & BlockHeadBits) != BlockHead) return false;
  in.swap = (head & BlockSwapBit) != 0;
  std::uint32_t count;
  in.Get(count);
  values.clear();
  for (; count > 0; --count) in.Get(values.emplace_back());
  return true;
}

template <class T>
unsigned WriteBlocks(unsigned char* buffer, const std::deque<T>& values,
                     const std::deque<T>& defaults) {
  BlockWriter out{buffer};
  WriteBlock(out, values);
  WriteBlock(out, defaults);
  return static_cast<unsigned>(out.at - buffer);
}

template <class T>
unsigned ReadBlocks(const unsigned char* buffer, std::deque<T>& values, std::deque<T>& defaults) {
  BlockReader in{buffer};
  if (ReadBlock(in, values)) ReadBlock(in, defaults);
  return static_cast<unsigned>(in.at - buffer);
}

}  // namespace QXSystem

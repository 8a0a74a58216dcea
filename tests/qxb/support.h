// What the tests and the fuzz targets of the binary format share: stored forms
// written out by hand, the items of an object as text, and awkward streams.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string>
#include <typeinfo>
#include <vector>

#include <qxsystem/core/errortest.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/qxb/qxbrfxn.h>
#include <qxsystem/qxb/qxbwfxn.h>

namespace qxbtest {

using namespace QXSystem;
using QXPlatform::QXHalfFloat;

// Bytes from text: hexadecimal pairs, and characters between single quotes.
inline std::string Hex(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == ' ') continue;
    if (text[i] == '\'') {
      while (text[++i] != '\'') bytes += text[i];
    } else {
      bytes += static_cast<char>(std::strtol(text.substr(i++, 2).c_str(), nullptr, 16));
    }
  }
  return bytes;
}

inline std::string ToHex(const void* data, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    const unsigned byte = static_cast<const unsigned char*>(data)[i];
    text += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
  }
  return text;
}

inline std::string ToHex(const std::string& bytes) {
  return ToHex(bytes.data(), bytes.size());
}

// A payload with its length and what stands in front of that.
inline std::string Counted(std::string head, const std::string& payload) {
  std::size_t size = payload.size();
  for (; size > 0x7F; size /= 128) head += static_cast<char>(size % 128);
  head += static_cast<char>(size + 128);
  return head + payload;
}

// A generic data block of these items, as a record.
inline std::string Block(const std::string& items) {
  return Counted("\x01", Hex("01 3F") + items);
}

// The value of an item, if that is a T.
template <class T>
const T* As(const QXBaseData& item) {
  if (item.GetDataType() != QXGetDataType<T>()) return nullptr;
  return &static_cast<const QXBaseDataT<T>&>(item).GetValue();
}

// A letter or "half" for the type of number, "[]" behind it for vectors, "*" for arrays;
// then the value's bytes as they stand in memory. "" for other types.
template <class T>
std::string DescribeNumbers(const QXBaseData& item) {
  std::string text = std::is_same_v<T, QXHalfFloat> ? "half" : typeid(T).name();
  if (const T* number = As<T>(item)) return text + ":" + ToHex(number, sizeof(T));
  if (T* const* array = As<T*>(item))
    return text + "*:" + ToHex(*array, item.GetSize() * sizeof(T));
  const std::vector<T>* values = As<std::vector<T>>(item);
  if (values == nullptr) return "";
  text += "[]:";
  for (const T number : *values) text += ToHex(&number, sizeof(T));
  return text;
}
template <class... T>
std::string DescribeNumbersOf(const QXBaseData& item) {
  return (DescribeNumbers<T>(item) + ...);
}

std::string Describe(const QXBase& object);

inline std::string DescribeValue(const QXBaseData& item) {
  if (const auto* text = As<std::string>(item)) return "'" + *text + "'";
  if (const auto* object = As<QXContainer>(item)) return "{" + Describe(*object) + "}";
  if (const auto* kept = As<QXUnknownQXBData>(item))
    return "(" + kept->GetTag() + "," + std::to_string(kept->GetCode()) + "," +
           ToHex({kept->GetData().begin(), kept->GetData().end()}) + ")";
  return DescribeNumbersOf<bool, char, unsigned char, short, unsigned short, int, unsigned, float,
                           double, QXHalfFloat>(item);
}

// Names, types and values of all items, in order, each with a blank behind it.
inline std::string Describe(const QXBase& object) {
  std::string text;
  for (QXIter<QXBaseData> item = object.GetDataIter(); item; ++item)
    text += QXGetTag(item->GetTag()) + ("=" + DescribeValue(*item)) + " ";
  return text;
}

// A value as DescribeValue shows it, its stored form on a host of our byte order
// and, where that makes a difference, on one of the other.
struct StoredForm {
  const char *value, *native, *foreign = nullptr;
};
inline const StoredForm storedForms[] = {
    {"b:01", "02 01"},
    {"i:04030201", "01 04030201", "01 01020304"},
    {"f:0000C03F", "04 0000C03F", "04 3FC00000"},
    {"d:9A9999999999B93F", "08 9A999999 9999B93F", "08 3FB99999 9999999A"},
    {"'ab'", "10 82 'ab'"},
    {"''", "10 80"},
    {"i*:04030201FEFFFFFF", "20 88 04030201 FEFFFFFF", "20 88 01020304 FFFFFFFE"},
    {"j*:01000080", "40 84 01000080", "40 84 80000001"},
    {"b*:0100", "03 82 0100"},
    {"f*:0000C03F00000080", "05 88 0000C03F 00000080", "05 88 3FC00000 80000000"},
    {"d*:000000000000F8BF", "11 88 00000000 0000F8BF", "11 88 BFF80000 00000000"},
    {"half*:003E00C0", "12 01 84 003E 00C0", "12 00 84 3E00 C000"},
    {"c*:7879", "06 82 'xy'"},
    {"h*:00FF", "07 82 00FF"},
    {"b[]:010001", "50 83 010001"},
    {"b[]:", "50 80"},
    {"c[]:61FF", "51 82 61FF"},
    {"h[]:807F", "52 82 807F"},
    {"s[]:0201FEFF", "53 01 84 0201 FEFF", "53 FE 84 0102 FFFE"},
    {"t[]:00FF", "54 01 82 00FF", "54 00 82 FF00"},
    {"i[]:0D0C0B0A", "55 84 0D0C0B0A", "55 84 0A0B0C0D"},
    {"i[]:", "55 80"},
    {"j[]:01000000FE000000", "56 88 01000000 FE000000", "56 88 00000001 000000FE"},
    {"f[]:CDCCCC3D", "57 84 CDCCCC3D", "57 84 3DCCCCCD"},
    {"d[]:000000000000F83F", "58 88 00000000 0000F83F", "58 88 3FF80000 00000000"},
    {"half[]:FF7B", "61 01 82 FF7B", "61 02 82 7BFF"}};

// Items named "v" in every stored form.
inline std::string StoredItems(bool foreign = false) {
  std::string items;
  for (const StoredForm& form : storedForms)
    items += Hex("00 81 'v'") + Hex(foreign && form.foreign ? form.foreign : form.native);
  return items;
}

// The item "c": a QXContainer with the int 5 under "i".
inline std::string ContainerItem() {
  return Hex(
      "00 81 'c' 60 00 90 '!HandledQXBTag:c' 51 91"
      "35 8F 00 81 'c' 01 8A 01 3F 00 81 'i' 01 05000000");
}

// The item "u": a value that no functor here reads.
inline std::string UnreadItem() {
  return Hex("00 81 'u' 60 00 90 '!HandledQXBTag:u' 51 8B 00 83 'Fxn' 85 00 81 'u' 2A 2B");
}

// Records that nobody here reads: a long tag, a code without a name, a short
// name in the long form.
inline std::string UnknownRecords() {
  return Hex("00 85 'Notes' 84 'what' C8 82 0102 00 86 'QXBase' 81 07");
}

// The int 1 under "a", and how Describe shows it.
inline const std::string intItem = Hex("00 81 'a' 01 01000000"), intText = "a=i:01000000 ";

// Writes the data of a T, as a value too.
template <class T>
class PODWriter : public QXWriteFxn<T> {
public:
  const char* GetTag() const override { return "QXBasePOD"; }
  const void* GetType() const override { return QXGetDataType<T>(); }
  PODWriter* CreateCopy() const override { return new PODWriter(*this); }
  bool operator()(qxostream& out, const T& object,
                  const QXBinaryIOHandlerBase& handler) const override {
    return QXBWriteQXBase(out, object, GetTag(), handler);
  }
};
using ContainerWriter = PODWriter<QXContainer>;

// Reads and writes QXContainers, as values of one another too, and groups.
inline QXBinaryIOHandler ContainerHandler() {
  QXBinaryIOHandler handler;
  handler.SetReadFxn(QXBasePODReadFxn<QXContainer>(), /*asDefault=*/false);
  handler.SetReadFxn(QXGroupReadFxn<QXContainer>("QXGroup"), /*asDefault=*/false);
  handler.SetWriteFxn(ContainerWriter(), /*asDefault=*/false);
  QXInstallGenericDataHandler<QXContainer>(handler, "QXContainer");
  return handler;
}

// Reads all records into `object`; the first status that is not Success.
inline unsigned ReadAll(qxistream& in, QXContainer& object, const QXBinaryIOHandlerBase& handler) {
  unsigned status = QXBReturn::Success;
  while (status == QXBReturn::Success && !in.eof()) status = QXBinaryRead(in, object, handler);
  return status;
}

// What `write` puts into a stream, "false: " in front where it returns that.
template <class F>
std::string Written(F write) {
  qxosstream out;
  const bool done = write(out);
  return (done ? "" : "false: ") + out.str();
}

// Takes a number of bytes and refuses the others.
class RefusingStream : public qxostream {
public:
  explicit RefusingStream(std::size_t room) : room_(room) {}
  const std::string& Taken() const { return taken_; }

protected:
  std::size_t _qxwrite(const unsigned char* data, std::size_t n) override {
    n = std::min(n, room_ - taken_.size());
    taken_.append(reinterpret_cast<const char*>(data), n);
    return n;
  }

private:
  std::size_t room_;
  std::string taken_;
};

// Shows one byte more at a time, so that nothing can be borrowed from it.
class DripStream : public qxistream {
public:
  explicit DripStream(std::string bytes) : bytes_(std::move(bytes)) {}

protected:
  bool _qxfill() override {
    if (shown_ == bytes_.size()) return false;
    const std::size_t kept = Buffered();
    end_ = reinterpret_cast<const unsigned char*>(bytes_.data()) + ++shown_;
    cur_ = end_ - kept - 1;
    return true;
  }
  long _qxtell() override { return static_cast<long>(shown_); }

private:
  std::string bytes_;
  std::size_t shown_ = 0;
};

// Captures messages without printing them; an Error does not throw.
class Reports : public QXPushSimpleQXThrowTester {
public:
  Reports() {
    QXThrow.SetLevel(QXErrorLevel::Quiet);
    QXThrow.SetStrict(false);
  }
};

}  // namespace qxbtest

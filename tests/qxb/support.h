// What the tests and the fuzz targets of the binary format share: stored forms
// written out by hand, the items of an object as text, and awkward streams.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string>
#include <typeinfo>
#include <vector>

#include <qxsystem/core/base.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/errortest.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/qxb/qxb.h>
#include <qxsystem/qxb/qxbhand.h>
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

std::string Describe(const QXBase& object);

// A letter for the type of number, "[]" behind it for vectors, "*" for arrays;
// then the value's bytes as they stand in memory.
template <class T>
std::string DescribeAs(const T& number, std::size_t) {
  return typeid(T).name() + (":" + ToHex(&number, sizeof number));
}
template <class T>
std::string DescribeAs(T* const& array, std::size_t size) {
  return typeid(T).name() + ("*:" + ToHex(array, size * sizeof(T)));
}
template <class T>
std::string DescribeAs(const std::vector<T>& values, std::size_t) {
  return typeid(T).name() + ("[]:" + ToHex(values.data(), values.size() * sizeof(T)));
}
inline std::string DescribeAs(const std::vector<bool>& bits, std::size_t) {
  return "b[]:" + ToHex(std::string(bits.begin(), bits.end()));
}
inline std::string DescribeAs(const std::string& text, std::size_t) {
  return "'" + text + "'";
}
inline std::string DescribeAs(const QXContainer& object, std::size_t) {
  return "{" + Describe(object) + "}";
}
inline std::string DescribeAs(const QXUnknownQXBData& kept, std::size_t) {
  const std::string bytes(kept.GetData().begin(), kept.GetData().end());
  return "(" + kept.GetTag() + "," + std::to_string(kept.GetCode()) + "," + ToHex(bytes) + ")";
}

template <class... Number>
std::string DescribeOneOf(const QXBaseData& item) {
  std::string text = "?";
  const auto tryAs = [&](auto* type) {
    using T = std::remove_pointer_t<decltype(type)>;
    if (item.GetDataType() == QXGetDataType<T>())
      text = DescribeAs(static_cast<const QXBaseDataT<T>&>(item).GetValue(), item.GetSize());
  };
  (tryAs(static_cast<Number*>(nullptr)), ...);
  (tryAs(static_cast<Number**>(nullptr)), ...);
  (tryAs(static_cast<std::vector<Number>*>(nullptr)), ...);
  tryAs(static_cast<std::string*>(nullptr));
  tryAs(static_cast<QXContainer*>(nullptr));
  tryAs(static_cast<QXUnknownQXBData*>(nullptr));
  return text;
}

inline std::string DescribeValue(const QXBaseData& item) {
  return DescribeOneOf<bool, char, unsigned char, short, unsigned short, int, unsigned, float,
                       double, QXHalfFloat>(item);
}

// Names, types and values of all items, in order, each with a blank behind it.
inline std::string Describe(const QXBase& object) {
  std::string text;
  for (QXIter<QXBaseData> item = object.GetDataIter(); item; ++item)
    text += QXGetTag(item->GetTag()) + ("=" + DescribeValue(*item)) + " ";
  return text;
}

// An item named "v", its stored form on a host of our byte order and, where
// that makes a difference, on one of the other.
struct StoredForm {
  std::shared_ptr<QXBaseData> item;
  const char* native;
  const char* foreign;
};

template <class T>
std::shared_ptr<QXBaseData> Value(T value) {
  return std::make_shared<QXBaseDataT<T>>(QXGetTag("v"), std::move(value));
}

template <class T>
std::shared_ptr<QXBaseData> Array(std::initializer_list<T> values) {
  return std::make_shared<QXBaseDataTPtr<T*>>(QXGetTag("v"), values.begin(),
                                              static_cast<unsigned>(values.size()));
}

template <class T>
using Vector = std::vector<T>;

inline const std::vector<StoredForm>& StoredForms() {
  static const std::vector<StoredForm> forms = {
      {Value(true), "02 01", nullptr},
      {Value(0x01020304), "01 04030201", "01 01020304"},
      {Value(1.5f), "04 0000C03F", "04 3FC00000"},
      {Value(0.1), "08 9A999999 9999B93F", "08 3FB99999 9999999A"},
      {Value(std::string("ab")), "10 82 'ab'", nullptr},
      {Value(std::string()), "10 80", nullptr},
      {Array<int>({0x01020304, -2}), "20 88 04030201 FEFFFFFF", "20 88 01020304 FFFFFFFE"},
      {Array<unsigned>({0x80000001}), "40 84 01000080", "40 84 80000001"},
      {Array<bool>({true, false}), "03 82 0100", nullptr},
      {Array<float>({1.5f, -0.0f}), "05 88 0000C03F 00000080", "05 88 3FC00000 80000000"},
      {Array<double>({-1.5}), "11 88 00000000 0000F8BF", "11 88 BFF80000 00000000"},
      {Array<QXHalfFloat>({1.5f, -2.0f}), "12 01 84 003E 00C0", "12 00 84 3E00 C000"},
      {Array<char>({'x', 'y'}), "06 82 'xy'", nullptr},
      {Array<unsigned char>({0, 255}), "07 82 00FF", nullptr},
      {Value(Vector<bool>{true, false, true}), "50 83 010001", nullptr},
      {Value(Vector<bool>{}), "50 80", nullptr},
      {Value(Vector<char>{'a', -1}), "51 82 61FF", nullptr},
      {Value(Vector<unsigned char>{128, 127}), "52 82 807F", nullptr},
      {Value(Vector<short>{0x0102, -2}), "53 01 84 0201 FEFF", "53 FE 84 0102 FFFE"},
      {Value(Vector<unsigned short>{0xFF00}), "54 01 82 00FF", "54 00 82 FF00"},
      {Value(Vector<int>{0x0A0B0C0D}), "55 84 0D0C0B0A", "55 84 0A0B0C0D"},
      {Value(Vector<int>{}), "55 80", nullptr},
      {Value(Vector<unsigned>{1, 0xFE}), "56 88 01000000 FE000000", "56 88 00000001 000000FE"},
      {Value(Vector<float>{0.1f}), "57 84 CDCCCC3D", "57 84 3DCCCCCD"},
      {Value(Vector<double>{1.5}), "58 88 00000000 0000F83F", "58 88 3FF80000 00000000"},
      {Value(Vector<QXHalfFloat>{65504.0f}), "61 01 82 FF7B", "61 02 82 7BFF"}};
  return forms;
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

// A stream with every value type, a handled and an unread value, records that
// nobody reads, and a group with one of each.
inline std::string GoldenStream() {
  std::string items;
  for (const StoredForm& form : StoredForms()) items += Hex("00 81 'v'") + Hex(form.native);
  items += Hex("39 01 07000000");  // named by a code: UnknownQXB57
  const std::string block = Block(items + ContainerItem() + UnreadItem());
  return block + UnknownRecords() + Counted("\x36", Block(ContainerItem()) + UnknownRecords());
}

// Writes the data of a QXContainer, as a value too.
class ContainerWriter : public QXWriteFxn<QXContainer> {
public:
  const char* GetTag() const override { return "QXBasePOD"; }
  const void* GetType() const override { return QXGetDataType<QXContainer>(); }
  ContainerWriter* CreateCopy() const override { return new ContainerWriter(*this); }
  bool operator()(qxostream& out, const QXContainer& object,
                  const QXBinaryIOHandlerBase& handler) const override {
    return QXBWriteQXBase(out, object, GetTag(), handler);
  }
};

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

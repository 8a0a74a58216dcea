#include <qxsystem/records/recordbuffer.h>

#include <gtest/gtest.h>

#include <sstream>

#include "support.h"

using namespace recordtest;

namespace {

TEST(RecordBuffer, StoresIntegers) {
  std::istringstream cases(
      "0 00  127 7F  128 828000  255 82FF00  256 820001  32767 82FF7F  32768 83008000 "
      "8388608 8400008000  2147483648 850000008000 "
      "-1 81FF  -127 8181  -128 8280FF  -256 8200FF  -32768 830080FF "
      "9223372036854775807 88FFFFFFFFFFFFFF7F  -9223372036854775807 880100000000000080 "
      "-9223372036854775808 880000000000000080");
  long number;
  for (std::string stored; cases >> number >> stored;) {
    SCOPED_TRACE(number);
    QXWriteBuffer out;
    out.WriteInt(number);
    EXPECT_EQ(ToHex(out.Get()), stored);
    const QXBytes cutOff(out.Get().begin(), out.Get().end() - 1);
    QXReadBuffer in(out.Get()), raw(out.Get()), cut(cutOff);
    bool isNone = true;
    EXPECT_EQ(in.ReadInt(isNone), number);
    EXPECT_FALSE(isNone || in.IsValid());
    EXPECT_EQ(raw.ReadRawBytes<long>(), out.Get());
    EXPECT_EQ(cut.ReadInt(isNone), 0);
    EXPECT_TRUE(isNone && !cut.IsValid());
    // Without the prefix it is the value of an Int field.
    const bool isShort = number >= 0 && number < 128;
    EXPECT_EQ(ToHex(Types::Int.ToBytes(number)), stored.substr(isShort ? 0 : 2));
  }
  EXPECT_TRUE(cases.eof());
}

TEST(RecordBuffer, StoresOtherValuesAndNones) {
  QXWriteBuffer out;
  out.WriteInt(200U);
  out.WriteInt(-2);
  out.WriteInt(~0UL);
  out.WriteFloat(0.5);
  out.WriteBool(true);
  out.WriteString(std::string(200, 'x'));
  out.WriteBlob({1, 2});
  out.WriteNoneInt();
  out.WriteNoneString();
  out.WriteNoneFloat();
  out.WriteNoneBool();
  out.WriteNoneBlob();
  out.WriteIntVec(std::vector<int>{-1, 5});
  out.WriteIntVec(std::vector<unsigned>{0xFFFFFFFF});
  out.WriteFloatVec(std::vector<float>{0.5F});
  out.WriteBoolVec({true, false});
  out.WriteStringVec({"", "ab"});
  EXPECT_EQ(ToHex(out.Get()),
            ToHex(Bytes("82C800 81FE 81FF 000000000000E03F 01 82C800 '" + std::string(200, 'x') +
                        "' 02 0102 80 80 00000000000EF87F 80 80"
                        "02 81FF 05 01 85FFFFFFFF00 01 000000000000E03F 02 01 00 02 00 02'ab'")));
  QXReadBuffer in(out.Get());
  bool isNone[5];
  EXPECT_EQ(in.Read<long>() + in.ReadInt() + in.ReadInt(), 197);
  EXPECT_EQ(in.Read<double>(), 0.5);
  EXPECT_TRUE(in.Read<bool>());
  EXPECT_EQ(in.Read<std::string>().size(), 200u);
  EXPECT_EQ(in.ReadBlob(), (QXBytes{1, 2}));
  in.ReadInt(isNone[0]);
  in.ReadString(isNone[1]);
  in.ReadFloat(isNone[2]);
  in.ReadBool(isNone[3]);
  in.ReadBlob(isNone[4]);
  for (const bool none : isNone) EXPECT_TRUE(none);
  EXPECT_EQ(in.ReadInt(), 2);
}

// Only the none float's own bits are none.
TEST(RecordBuffer, TellsTheNoneFloatFromOtherNaNs) {
  for (const char* const nan : {"000000000000F87F", "01000000000EF87F", "00000000000EF8FF"}) {
    const QXBytes bytes = Bytes(nan);
    QXReadBuffer in(bytes);
    bool isNone = true;
    const double value = in.ReadFloat(isNone);
    EXPECT_FALSE(isNone);
    EXPECT_EQ(ToHex(Types::Float.ToBytes(value)), nan);
  }
  double scalar = 0;
  EXPECT_TRUE(Types::Float.FromBytes(scalar, Bytes("00000000000EF87F")));
  EXPECT_NE(scalar, scalar);
}

TEST(RecordBuffer, ReadsPrefixesThatAreNoIntegersAsNone) {
  for (const char* const prefix : {"80", "89", "FF"}) {
    const QXBytes bytes = Bytes(std::string(prefix) + "05");
    QXReadBuffer in(bytes), cut(bytes), text(bytes);
    bool isNone = false;
    EXPECT_EQ(in.ReadInt(isNone), 0);
    EXPECT_TRUE(isNone);
    EXPECT_EQ(in.ReadInt(), 5);
    const std::size_t raw = *prefix == '8' && prefix[1] == '0' ? 1 : 0;
    EXPECT_EQ(cut.ReadRawBytes<long>().size(), raw);
    EXPECT_EQ(text.ReadRawBytes<std::string>().size(), raw);  // its length is such an integer
  }
}

TEST(RecordBuffer, BelievesNoLengthThatCannotBe) {
  constexpr unsigned long Bad = QXReadBuffer::BadLength;
  const struct {
    const char* bytes;
    unsigned long length;
    bool isNone;
  } cases[] = {{"02 'ab'", 2, false},
               {"03 'ab'", Bad, false},
               {"81FF", Bad, false},
               {"87 00000000000008", Bad, false},
               {"88 0000000000000080", Bad, false},
               {"80", 0, true},
               {"82 01", 0, true},
               {"", 0, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bytes);
    const QXBytes bytes = Bytes(c.bytes);
    QXReadBuffer length(bytes), text(bytes), blob(bytes), limited(bytes);
    bool isNone = false;
    EXPECT_EQ(length.ReadLength(isNone), c.length);
    EXPECT_EQ(isNone, c.isNone);
    std::string tag;
    QXReadBuffer content;
    if (c.length == Bad) {
      EXPECT_THROW(text.ReadString(), std::length_error);
      EXPECT_THROW(blob.ReadBlob(), std::length_error);
      EXPECT_EQ(limited.ReadString(isNone, 16), "");
      EXPECT_TRUE(isNone);
      EXPECT_FALSE(QXReadBuffer(bytes).Unwrap(tag, content));
      EXPECT_TRUE(QXReadBuffer(bytes).ReadContainer().empty());
    } else {
      EXPECT_EQ(text.ReadString().size(), c.length);
    }
  }
  const QXBytes longer = Bytes("03 'abc'");
  QXReadBuffer in(longer);
  bool isNone = false;
  EXPECT_EQ(in.ReadString(isNone, 2), "");
  EXPECT_TRUE(isNone);
  EXPECT_EQ(in.ReadInt(), 'a');  // the text stays unread
}

TEST(RecordBuffer, WrapsSections) {
  QXWriteBuffer inner("tag"), outer("outside");
  inner.CopyWrapped(outer);
  EXPECT_TRUE(outer.Get().empty());
  inner.WriteString("ab");
  inner.CopyWrapped(outer);
  QXWriteBuffer("e").CopyWrapped(outer, /*force=*/true);
  outer.Append(inner);
  EXPECT_EQ(ToHex(outer.Get()), ToHex(Bytes("03'tag' 03 02'ab' 01'e' 00 02'ab'")));
  EXPECT_EQ(outer.WrappedSize(), 14u + 7 + 1);
  EXPECT_EQ(QXWriteBuffer().WrappedSize(), 0u);

  QXReadBuffer in(outer.Get()), raw(outer.Get()), content;
  std::string tag;
  EXPECT_TRUE(in.Unwrap(tag, content));
  EXPECT_EQ(tag, "tag");
  EXPECT_EQ(content.ReadString(), "ab");
  EXPECT_TRUE(in.Unwrap(tag, content));
  EXPECT_FALSE(content.IsValid());
  EXPECT_EQ(ToHex(raw.ReadContainer()), ToHex(Bytes("03'tag' 03 02'ab'")));
  EXPECT_FALSE(QXReadBuffer().IsValid() || QXReadBuffer().Unwrap(tag, content));

  outer.CopyWrapped(outer, /*force=*/true);  // into itself
  EXPECT_EQ(outer.Get().size(), 14u + 9 + 14);
  outer.Append(outer);
  EXPECT_EQ(outer.Get().size(), 74u);
}

}  // namespace

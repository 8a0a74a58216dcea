#include <qxsystem/qxb/qxbrfxn.h>

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <tuple>

#include "support.h"
#include "support/smallstack.h"

using namespace qxbtest;

namespace {

// Reads these bytes as a block's payload.
unsigned ReadPayload(const std::string& payload, QXBase& object,
                     const QXBinaryIOHandlerBase& handler = QXBinaryIOHandler()) {
  qxisstream in(payload);
  const unsigned status = QXBReadQXBase(in, object, payload.size(), handler);
  EXPECT_TRUE(in.eof());
  return status;
}

TEST(QXBRead, GivesEveryValueTypeInBothByteOrders) {
  std::string expected;
  for (const StoredForm& form : storedForms) expected += "v=" + std::string(form.value) + " ";
  for (const std::string& payload :
       {Hex("01 3F") + StoredItems(), Hex("00 01") + StoredItems(/*foreign=*/true)}) {
    QXContainer object;
    DripStream drops(payload);
    EXPECT_EQ(ReadPayload(payload, object), 0u);
    EXPECT_EQ(QXBReadPOD(drops, object, payload.size()), 0u);
    EXPECT_EQ(Describe(object), expected + expected);
  }
  // Each mark speaks for its own family.
  QXContainer object;
  EXPECT_EQ(ReadPayload(Hex("01 00") + intItem + Hex("00 81 'f' 04 0000C03F"), object), 0u);
  EXPECT_EQ(ReadPayload(Hex("3F 3F") + intItem + Hex("00 81 'f' 04 0000C03F"), object), 0u);
  EXPECT_EQ(Describe(object), "a=i:01000000 f=f:3FC00000 a=i:00000001 f=f:0000C03F ");
}

// Every row stands behind an int under "a", which stays whatever follows.
TEST(QXBRead, TellsDamageAndKeepsWhatCameBefore) {
  const std::tuple<std::vector<const char*>, unsigned, std::string> cases[] = {
      // Tags; what follows a type code without meaning is an item again.
      {{"39 01 02000000"}, 0, "UnknownQXB57=i:02000000 "},
      {{"7F 01 02000000"}, 0, "UnknownQXB127=i:02000000 "},
      {{"00 81 'a' 09 00 81 'a' 01 02000000"}, 0, "a=i:02000000 "},
      {{"C8 01 02000000 00 81 'a' 01 03000000"}, 6, "=i:02000000 "},
      {{"C8 01 0200", "00 81 'a'"}, 6, ""},
      // Values that are cut short, lengths that are missing, cut or lie.
      {{"00 81 'a' 01 020000", "00 81 'a' 02", "00 81 'a' 10", "00 81 'a' 55", "00 81 'a' 53 01",
        "00 81 'a' 10 00000000 00000000 0000 'a'", "00 81 'a' 10 83 'ab'",
        "00 81 'a' 57 7F7F7F7F8F 00000000"},
       4,
       ""},
      // Any byte but 0 is true, and must become a bool that C++ knows.
      {{"00 81 'b' 02 07 00 81 'b' 02 00"}, 0, "b=b:01 b=b:00 "},
      {{"00 81 'b' 03 83 0200FF 00 81 'b' 50 83 0200FF"}, 0, "b=b*:010001 b=b[]:010001 "},
      // No elements: damage in an array, unless of bool, and none in a vector.
      {{"00 81 'a' 20 80", "00 81 'a' 12 01 80"}, 4, ""},
      {{"00 81 'b' 03 80"}, 0, "b=b*: "},
      // A remainder: dropped in an array, damage in a vector.
      {{"00 81 'a' 20 86 020000000300"}, 0, "a=i*:02000000 "},
      {{"00 81 'a' 20 83 020000"}, 0, "a=i*: "},
      {{"00 81 'a' 55 86 020000000300"}, 4, ""},
      // Handled values: the envelope, the functor's head, the body's name.
      {{"00 81 'u' 60 1F 51", "00 81 'u' 60 1F 51 86 00 81 'F' 81"}, 4, ""},
      {{"00 81 'u' 60 1F", "00 81 'u' 60 1F 50 86 00 81 'F' 81 07", "00 81 'u' 60 1F 51 80"},
       6,
       ""},
      {{"00 81 'u' 60 1F 51 82 1F 80"}, 8, ""},
      {{"00 81 'u' 60 1F 51 83 1F 80 07"}, 9, ""},
      {{"00 81 'u' 60 1F 51 82 1F 81", "00 81 'u' 60 1F 51 84 1F 82 C807"}, 11, ""},
      // The name alone is a whole body, also as a code.
      {{"00 81 'u' 60 1F 51 83 1F 81 36"}, 0, "QXGroup=(QXBase,31,1F8136) "},
      {{"00 81 'u' 60 1F 51 83 1F 81 39"}, 0, "UnknownQXB57=(QXBase,31,1F8139) "},
      // The form without name and type in front takes any type byte.
      {{"00 81 'u' 60 1F 51 85 1F 83 00 81 'w'", "00 90 '!HandledQXBTag:u' 07 85 1F 83 00 81 'w'"},
       0,
       "w=(QXBase,31,1F83008177) "}};
  for (const auto& [variants, status, items] : cases)
    for (const char* bytes : variants) {
      Reports reports;
      QXContainer object;
      EXPECT_EQ(ReadPayload(Hex("01 3F") + intItem + Hex(bytes), object), status) << bytes;
      EXPECT_EQ(Describe(object), intText + items) << bytes;
    }
}

TEST(QXBRead, NeedsAllBytesOfABlock) {
  QXContainer object;
  EXPECT_EQ(ReadPayload("\x01", object), 4u);
  EXPECT_EQ(ReadPayload("\x01\x3F", object), 0u);
  const std::string whole = Hex("01 3F") + intItem;
  qxisstream in;
  for (const unsigned long length : {whole.size() + 1, QXBMaxLength, 1UL << 62})
    EXPECT_TRUE(in.set(whole) && QXBReadPOD(in, object, length) == 4 && in.eof()) << length;
  in.set(whole);
  EXPECT_THROW(QXBReadPOD(in, object, ~0UL), std::bad_alloc);
  EXPECT_EQ(Describe(object), "");
}

TEST(QXBRead, KeepsUnreadValuesBesideAllOthers) {
  // An earlier value of the name stays in front; an unread one gives way.
  const std::string second = Hex("00 81 'x' 60 1F 51 86 1F 84 00 81 'u' 07");
  QXContainer taken, free;
  taken.SetData<int>("u", 5);
  EXPECT_EQ(ReadPayload(Hex("01 3F") + UnreadItem() + second, taken), 0u);
  EXPECT_EQ(Describe(taken),
            "u=i:05000000 u=(Fxn,0,008346786E850081752A2B) u=(QXBase,31,1F8400817507) ");
  EXPECT_EQ(ReadPayload(Hex("01 3F") + UnreadItem() + intItem + second, free), 0u);
  EXPECT_EQ(Describe(free), "u=(QXBase,31,1F8400817507) " + intText);
}

TEST(QXBRead, ReadsHandledValues) {
  const std::tuple<const char*, unsigned, const char*> cases[] = {
      {"00 81 'c' 01 8A 01 3F 00 81 'i' 01 05000000", 0, "c={i=i:05000000 } "},
      {"00 81 'c'", 0, "c={} "},
      {"36", 0, "QXGroup={} "},
      {"00 85 'c'", 0, ""},
      {"C8 07", 0, ""},
      {"00 81 'c' 01", 6, ""},
      {"00 81 'c' 01 81 01", 4, ""},
      {"00 81 'c' C8 81 07", 0, "c={QXUnknownQXBData=(,200,07) } "}};
  for (const auto& [body, status, items] : cases) {
    QXContainer holder;
    const std::string item = Counted(Hex("00 81 'x' 60 1F 51"), Counted("\x35", Hex(body)));
    EXPECT_EQ(ReadPayload(Hex("01 3F") + item, holder, ContainerHandler()), status) << body;
    EXPECT_EQ(Describe(holder), items) << body;
  }
}

TEST(QXBRead, FindsTheFirstReaderOfTagAndTypeOrKeepsTheRecord) {
  QXBinaryIOHandler handler;
  const std::string record = Block(intItem), body = record.substr(1);
  const auto read = [&](const std::string& bytes) {
    QXContainer object;
    qxisstream in(bytes + "next");
    EXPECT_EQ(QXBinaryRead(in, object, handler), 0u);
    EXPECT_EQ(in.tell(), static_cast<long>(bytes.size()));
    return Describe(object);
  };
  handler.SetReadFxn(QXBasePODReadFxn<QXBinaryIOHandler>(), /*asDefault=*/false);
  handler.SetReadFxn(QXGroupReadFxn<QXContainer>("QXBase"), /*asDefault=*/false);
  EXPECT_EQ(read(record), "QXUnknownQXBData=(QXBasePOD,1," + ToHex(body.substr(1)) + ") ");
  handler.SetReadFxn(QXBasePODReadFxn<QXContainer>(), /*asDefault=*/false);
  handler.SetReadFxn(QXGroupReadFxn<QXContainer>("QXBasePOD"), /*asDefault=*/false);
  EXPECT_EQ(read(Hex("00 89 'QXBasePOD'") + body), intText);
}

TEST(QXBRead, ReadsGroupsIntoOneObjectAndStandsBehindThem) {
  const QXBinaryIOHandler handler = ContainerHandler();
  const std::string pod = Block(intItem);
  const std::tuple<std::string, unsigned, std::string> cases[] = {
      {Counted("\x36", pod) + pod, 0, intText + intText},
      {pod + Hex("1F"), 6, intText},
      {Hex("01 81 01") + pod, 4, ""}};
  for (const auto& [payload, status, items] : cases) {
    QXContainer object;
    qxisstream in(Counted("\x36", payload) + pod);
    EXPECT_EQ(QXBinaryRead(in, object, handler), status);
    EXPECT_EQ(QXBinaryRead(in, object, handler), 0u);
    EXPECT_EQ(Describe(object), items + intText);
  }
  QXContainer object;
  qxisstream cut(Counted("\x36", pod).substr(0, 8));
  EXPECT_EQ(QXBinaryRead(cut, object, handler), 4u);
}

void ReadNested() {
  for (const bool groups : {true, false})
    for (const unsigned levels : {128u, 129u, 1000u}) {
      SCOPED_TRACE(levels);
      std::string bytes = Block(intItem);
      for (unsigned i = 0; i < levels; ++i) {
        const std::string value = Counted("\x35", Hex("00 81 'c'") + bytes);
        bytes = groups ? Counted("\x36", bytes) : Block(Counted(Hex("1F 60 1F 51"), value));
      }
      Reports reports;
      QXContainer object;
      DripStream in(bytes + Block(intItem));
      EXPECT_EQ(QXBinaryRead(in, object, ContainerHandler()), levels <= 128 ? 0u : 2u);
      EXPECT_EQ(reports.NumMessages(), levels <= 128 ? 0u : 1u);
      // The outer record is behind us, and no level is left over.
      EXPECT_EQ(QXBinaryRead(in, object, ContainerHandler()), 0u);
      EXPECT_EQ(object.GetData<int>("a"), 1);
      EXPECT_TRUE(in.eof());
    }
}

TEST(QXBRead, ReadsNestingUpTo128LevelsOnASmallStack) {
  OnSmallStack(ReadNested);
}

}  // namespace

#include <qxsystem/qxb/qxbrfxn.h>

#include <gtest/gtest.h>
#include <pthread.h>

#include <new>
#include <string>

#include <platform/temp_dir.h>

#include "support.h"

using namespace qxbtest;

namespace {

// Reads a block's payload of these bytes; the status and the items.
unsigned ReadPayload(const std::string& payload, QXBase& object,
                     const QXBinaryIOHandlerBase& handler = QXBinaryIOHandler()) {
  qxisstream in(payload);
  const unsigned status = QXBReadQXBase(in, object, payload.size(), handler);
  EXPECT_TRUE(in.eof());
  return status;
}

// The items of the values 1 to `count` under "a", as Describe gives them.
std::string Ints(const std::string& values) {
  std::string text;
  for (const char value : values) text += std::string("a=i:0") + value + "000000 ";
  return text;
}

const std::string intItem = "00 81 'a' 01 01000000 ";  // the int 1 under "a"

TEST(QXBRead, GivesEveryValueTypeInBothByteOrders) {
  for (const StoredForm& form : StoredForms()) {
    SCOPED_TRACE(form.native);
    QXContainer expected, native, foreign, dripped;
    form.set(expected);
    const std::string item = Hex("00 81 'v'") + Hex(form.native);
    EXPECT_EQ(ReadPayload(Hex("01 3F") + item, native), 0u);
    EXPECT_EQ(Describe(native), Describe(expected));

    DripStream drops(Hex("01 3F") + item);
    EXPECT_EQ(QXBReadPOD(drops, dripped, item.size() + 2), 0u);
    EXPECT_EQ(Describe(dripped), Describe(expected));

    const std::string other = Hex("00 81 'v'") + Hex(form.foreign ? form.foreign : form.native);
    EXPECT_EQ(ReadPayload(Hex("00 01") + other, foreign), 0u);
    EXPECT_EQ(Describe(foreign), Describe(expected));
  }
}

TEST(QXBRead, TakesTheTwoMarksApart) {
  QXContainer object;
  const std::string items = Hex("00 81 'i' 01 01000000 00 81 'f' 04 0000C03F");
  EXPECT_EQ(ReadPayload(Hex("01 00") + items, object), 0u);
  EXPECT_EQ(ReadPayload(Hex("3F 3F") + items, object), 0u);
  EXPECT_EQ(Describe(object), "i=i:01000000 f=f:3FC00000 i=i:00000001 f=f:0000C03F ");
}

// Every row stands behind an int 1 under "a", which stays whatever follows.
TEST(QXBRead, TellsDamageAndKeepsWhatCameBefore) {
  const struct {
    const char* bytes;
    unsigned status;
    std::string items;  // behind the first
  } cases[] = {         // Tags.
               {"00 81 'a'", 6, ""},
               {"00 85 'a'", 6, ""},
               {"1F", 6, ""},
               {"39 01 02000000", 0, "UnknownQXB57=i:02000000 "},
               {"7F 01 02000000", 0, "UnknownQXB127=i:02000000 "},
               {"C8 01 02000000 00 81 'a' 01 03000000", 6, "=i:02000000 "},
               {"C8 01 0200", 6, ""},
               {"00 81 00 01 02000000", 6, "=i:02000000 "},
               // A type code without meaning is passed over; what follows is an item.
               {"00 81 'a' 09 00 81 'a' 01 02000000", 0, Ints("2")},
               {"00 81 'a' FF", 0, ""},
               // Numbers that are cut short, and true in any form.
               {"00 81 'a' 01", 4, ""},
               {"00 81 'a' 01 020000", 4, ""},
               {"00 81 'a' 02", 4, ""},
               {"00 81 'a' 08 00000000 000000", 4, ""},
               {"00 81 'b' 02 07 00 81 'b' 02 00", 0, "b=b:01 b=b:00 "},
               {"00 81 'b' 03 83 0200FF", 0, "b=b*:010001 "},
               {"00 81 'b' 50 83 0200FF", 0, "b=b[]:010001 "},
               // Lengths that are missing, cut, corrupt, too long.
               {"00 81 'a' 10", 4, ""},
               {"00 81 'a' 55", 4, ""},
               {"00 81 'a' 53", 4, ""},
               {"00 81 'a' 53 01", 4, ""},
               {"00 81 'a' 10 00", 4, ""},
               {"00 81 'a' 10 00000000 00000000 0000 'a'", 4, ""},
               {"00 81 'a' 10 83 'ab'", 4, ""},
               {"00 81 'a' 57 7F7F7F7F8F 00000000", 4, ""},
               // No elements: damage in an array, unless of bool, and none in a vector.
               {"00 81 'a' 20 80", 4, ""},
               {"00 81 'a' 06 80", 4, ""},
               {"00 81 'a' 12 01 80", 4, ""},
               {"00 81 'b' 03 80", 0, "b=b*: "},
               // A remainder: dropped in an array, damage in a vector.
               {"00 81 'a' 20 86 020000000300", 0, "a=i*:02000000 "},
               {"00 81 'a' 20 83 020000", 0, "a=i*: "},
               {"00 81 'a' 55 86 020000000300", 4, ""},
               {"00 81 'a' 54 01 83 020000", 4, ""},
               // Two values of one name, in order.
               {"00 81 'a' 01 02000000 00 81 'a' 01 03000000", 0, Ints("23")},
               // Handled values: the envelope, the functor's head, the body's name.
               {"00 81 'u' 60", 6, ""},
               {"00 81 'u' 60 1F", 6, ""},
               {"00 81 'u' 60 1F 50 86 00 81 'F' 81 07", 6, ""},
               {"00 81 'u' 60 1F 51", 4, ""},
               {"00 81 'u' 60 1F 51 86 00 81 'F' 81", 4, ""},
               {"00 81 'u' 60 1F 51 80", 6, ""},
               {"00 81 'u' 60 1F 51 82 00 81", 6, ""},
               {"00 81 'u' 60 1F 51 82 1F 80", 8, ""},
               {"00 81 'u' 60 1F 51 83 1F 80 07", 9, ""},
               {"00 81 'u' 60 1F 51 82 1F 81", 11, ""},
               {"00 81 'u' 60 1F 51 84 1F 82 0007", 11, ""},
               {"00 81 'u' 60 1F 51 84 1F 82 C807", 11, ""},
               {"00 81 'u' 60 1F 51 87 1F 85 00 81 'w' 2A2B", 0, "w=(QXBase,31,1F850081772A2B) "},
               // The name alone is a whole body, also as a code.
               {"00 81 'u' 60 1F 51 85 1F 83 00 81 'w'", 0, "w=(QXBase,31,1F83008177) "},
               {"00 81 'u' 60 1F 51 83 1F 81 36", 0, "QXGroup=(QXBase,31,1F8136) "},
               {"00 81 'u' 60 1F 51 83 1F 81 39", 0, "UnknownQXB57=(QXBase,31,1F8139) "},
               // The form without name and type in front takes any type byte.
               {"00 90 '!HandledQXBTag:u' 07 85 1F 83 00 81 'w'", 0, "w=(QXBase,31,1F83008177) "}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bytes);
    Reports reports;
    QXContainer object;
    EXPECT_EQ(ReadPayload(Hex("01 3F" + intItem + c.bytes), object), c.status);
    EXPECT_EQ(Describe(object), Ints("1") + c.items);
  }
}

TEST(QXBRead, NeedsAllBytesOfABlock) {
  Reports reports;
  for (const char* payload : {"", "01", "01 3F"}) {
    QXContainer object;
    EXPECT_EQ(ReadPayload(Hex(payload), object), std::string(payload).size() == 5 ? 0u : 4u);
  }
  const std::string whole = Hex("01 3F" + intItem);
  for (const unsigned long length : {whole.size() + 1, QXBMaxLength, 1UL << 62}) {
    QXContainer object;
    qxisstream in(whole);
    EXPECT_EQ(QXBReadPOD(in, object, length), 4u);
    EXPECT_EQ(Describe(object), "");
    EXPECT_TRUE(in.eof());
  }
  QXContainer object;
  qxisstream in(whole);
  EXPECT_THROW(QXBReadPOD(in, object, ~0UL), std::bad_alloc);
}

TEST(QXBRead, KeepsUnreadValuesBesideAllOthers) {
  // A value of the name "u" that was there is not replaced, an unread one is.
  const std::string second = Hex("00 81 'x' 60 1F 51 86 1F 84 00 81 'u' 07");
  QXContainer object;
  object.SetData<int>("u", 5);
  EXPECT_EQ(ReadPayload(Hex("01 3F") + UnreadItem(), object), 0u);
  EXPECT_EQ(ReadPayload(Hex("01 3F") + second, object), 0u);
  EXPECT_EQ(object.GetData<int>("u"), 5);
  EXPECT_EQ(Describe(object), "u=i:05000000 u=(Fxn,0," +
                                  ToHex(Hex("00 83 'Fxn' 85 00 81 'u' 2A2B")) +
                                  ") u=(QXBase,31,1F8400817507) ");

  QXContainer other;
  EXPECT_EQ(ReadPayload(Hex("01 3F" + intItem) + UnreadItem() + Hex(intItem) + second, other), 0u);
  const auto& kept = other.GetData<QXUnknownQXBData>("u");
  EXPECT_EQ(kept.GetTag(), "QXBase");
  EXPECT_EQ(kept.GetType(), QXGetDataType<QXBase>());
  EXPECT_FALSE((QXIter<QXBaseData>(other.GetDataIter()) += 3));

  // Many of them, so that looking each up in all would be seen.
  std::string block = Hex("01 3F");
  for (int i = 0; i < 40000; ++i) {
    const std::string name = "many" + std::to_string(10000 + i % 20000);
    block += Hex("1F 60 1F 51 8E 1F 8C 00 89 '" + name + "' 07");
  }
  QXContainer many;
  EXPECT_EQ(ReadPayload(block, many), 0u);
  unsigned count = 0;
  for (QXIter<QXBaseData> it = many.GetDataIter(); it; ++it) ++count;
  EXPECT_EQ(count, 20000u);
}

TEST(QXBRead, ReadsHandledValues) {
  const QXBinaryIOHandler handler = ContainerHandler();
  QXContainer object;
  object.SetData<int>("c", 1);
  EXPECT_EQ(ReadPayload(Hex("01 3F") + ContainerItem() + ContainerItem(), object, handler), 0u);
  EXPECT_EQ(Describe(object), "c=i:01000000 c={i=i:05000000 } c={i=i:05000000 } ");

  const struct {
    const char* body;
    unsigned status;
    const char* items;
  } cases[] = {{"00 81 'c'", 0, "c={} "},
               {"36", 0, "QXGroup={} "},
               {"00 85 'c'", 0, ""},
               {"C8 07", 0, ""},
               {"00 81 'c' 01", 6, ""},
               {"00 81 'c' 01 81 01", 4, ""},
               {"00 81 'c' C8 81 07", 0, "c={QXUnknownQXBData=(,200,07) } "}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.body);
    QXContainer holder;
    const std::string item = Counted(Hex("00 81 'x' 60 1F 51"), Counted("\x35", Hex(c.body)));
    EXPECT_EQ(ReadPayload(Hex("01 3F") + item, holder, handler), c.status);
    EXPECT_EQ(Describe(holder), c.items);
  }
  qxisstream in;
  EXPECT_EQ(QXBaseQXBReadFxn<QXContainer>("x")(in, object, 0, handler), 0u);
}

TEST(QXBRead, FindsTheFirstReaderOfTagAndTypeOrKeepsTheRecord) {
  // Claims the type and is no reader for it.
  class Impostor : public QXReadFxn<int> {
  public:
    const char* GetTag() const override { return "QXBasePOD"; }
    const void* GetType() const override { return QXGetDataType<QXContainer>(); }
    Impostor* CreateCopy() const override { return new Impostor(*this); }
    unsigned operator()(qxistream&, int&, unsigned long,
                        const QXBinaryIOHandlerBase&) const override {
      return QXBReturn::CheckFailed;
    }
  };
  const std::string record = Block(Hex(intItem));
  const struct {
    std::vector<const QXReadFxnBase*> readers;
    bool read;
  } cases[] = {
      {{}, false},
      {{new QXBasePODReadFxn<QXBinaryIOHandler>, new QXGroupReadFxn<QXContainer>("QXBase")}, false},
      {{new Impostor, new QXBasePODReadFxn<QXContainer>,
        new QXGroupReadFxn<QXContainer>("QXBasePOD")},
       true}};
  for (const auto& c : cases) {
    QXBinaryIOHandler handler;
    for (const QXReadFxnBase* reader : c.readers) {
      handler.SetReadFxn(*reader, /*asDefault=*/false);
      delete reader;
    }
    QXContainer object;
    qxisstream in(record + "next");
    EXPECT_EQ(QXBinaryRead(in, object, handler), 0u);
    EXPECT_EQ(in.tell(), static_cast<long>(record.size()));
    EXPECT_EQ(object.GetData<int>("a"), c.read ? 1 : 0);
    EXPECT_EQ(object.GetData<QXUnknownQXBData>("QXUnknownQXBData").GetData().size(),
              c.read ? 0u : record.size() - 2);
  }

  const struct {
    const char* bytes;
    unsigned status;
  } damaged[] = {{"", 6},         {"1F", 6},       {"1F 80", 8},
                 {"1F 80 07", 9}, {"1F 82 07", 9}, {"00 80 07", 6}};
  for (const auto& d : damaged) {
    SCOPED_TRACE(d.bytes);
    Reports reports;
    QXContainer object;
    qxisstream in(Hex(d.bytes));
    EXPECT_EQ(QXBinaryRead(in, object, QXBinaryIOHandler()), d.status);
    EXPECT_EQ(Describe(object), "");
  }
}

TEST(QXBRead, ReadsGroupsIntoOneObjectAndStandsBehindThem) {
  const QXBinaryIOHandler handler = ContainerHandler();
  const std::string pod = Block(Hex(intItem));
  const struct {
    std::string payload;
    unsigned status;
    std::string items;
  } cases[] = {{pod + pod, 0, Ints("11")},
               {pod + Hex("1F"), 6, Ints("1")},
               {Counted("\x36", pod) + pod, 0, Ints("11")},
               {Hex("01 81 01") + pod, 4, ""}};
  for (const auto& c : cases) {
    QXContainer object;
    qxisstream in(Counted("\x36", c.payload) + pod);
    EXPECT_EQ(QXBinaryRead(in, object, handler), c.status);
    EXPECT_EQ(QXBinaryRead(in, object, handler), 0u);
    EXPECT_TRUE(in.eof());
    EXPECT_EQ(Describe(object), c.items + Ints("1"));
  }
  QXContainer object;
  qxisstream cut(Counted("\x36", pod).substr(0, 8));
  EXPECT_EQ(QXBinaryRead(cut, object, handler), 4u);
  EXPECT_EQ(Describe(object), "");
}

// `levels` groups, or containers in one another, around one int.
std::string Nested(unsigned levels, bool groups) {
  std::string bytes = Block(Hex(intItem));
  for (unsigned i = 0; i < levels; ++i)
    bytes =
        groups
            ? Counted("\x36", bytes)
            : Block(Counted(Hex("00 81 'c' 60 1F 51"), Counted("\x35", Hex("00 81 'c'") + bytes)));
  return bytes;
}

template <class F>
void RunWithStack(std::size_t bytes, F work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, bytes);
  pthread_t thread;
  ASSERT_EQ(pthread_create(
                &thread, &attributes,
                [](void* f) -> void* {
                  (*static_cast<F*>(f))();
                  return nullptr;
                },
                &work),
            0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(QXBRead, ReadsNestingUpTo128LevelsOnASmallStack) {
  const QXBinaryIOHandler handler = ContainerHandler();
  const TempDir dir;
  for (const bool groups : {true, false})
    for (const unsigned levels : {128u, 129u, 1000u}) {
      SCOPED_TRACE(levels);
      const std::string bytes = Nested(levels, groups) + Block(Hex(intItem));
      const std::string name = dir.Write("nested", bytes);
      RunWithStack(1 << 20, [&] {
        Reports reports;
        qxisstream memory(bytes);
        QXPlatform::qxifstream file(name);
        for (qxistream* in : {static_cast<qxistream*>(&memory), static_cast<qxistream*>(&file)}) {
          QXContainer object;
          EXPECT_EQ(QXBinaryRead(*in, object, handler), levels <= 128 ? 0u : 2u);
          EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), levels <= 128 ? 0u : 1u);
          reports.Clear();
          // Without its own level left over, and from the right place.
          EXPECT_EQ(QXBinaryRead(*in, object, handler), 0u);
          EXPECT_TRUE(in->eof());
          EXPECT_EQ(object.GetData<int>("a"), 1);
        }
      });
    }
}

}  // namespace

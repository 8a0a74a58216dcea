#include <qxsystem/qxb/qxbwfxn.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

#include <qxsystem/platform/compress.h>

#include "support.h"

using namespace qxbtest;

namespace {

// What is written of the object, and "false: " in front if that was not true.
std::string Write(const QXBase& object, const std::string& tag = "QXBasePOD",
                  const QXBinaryIOHandlerBase& handler = QXBinaryIOHandler()) {
  qxosstream out;
  const bool done = QXBWriteQXBase(out, object, tag, handler);
  return (done ? "" : "false: ") + out.str();
}

QXContainer ReadBlock(const std::string& record, const QXBinaryIOHandlerBase& handler) {
  QXContainer object;
  qxisstream in(record);
  EXPECT_EQ(QXBinaryRead(in, object, handler), 0u);
  EXPECT_TRUE(in.eof());
  return object;
}

// A writer of values of type T that gives `bytes`, or fails.
template <class T>
class FixedWriter : public QXWriteFxn<QXBaseData> {
public:
  FixedWriter(std::string bytes, bool works) : bytes_(std::move(bytes)), works_(works) {}
  const char* GetTag() const override { return "fixed"; }
  const void* GetType() const override { return QXGetDataType<T>(); }
  FixedWriter* CreateCopy() const override { return new FixedWriter(*this); }
  bool operator()(qxostream& out, const QXBaseData&, const QXBinaryIOHandlerBase&) const override {
    out.write(bytes_);
    return works_;
  }

private:
  std::string bytes_;
  bool works_;
};

// Writes a record of one byte for any container, or fails.
class ByteWriter : public QXWriteFxn<QXContainer> {
public:
  ByteWriter(std::string tag, int byte) : tag_(std::move(tag)), byte_(byte) {}
  const char* GetTag() const override { return tag_.c_str(); }
  const void* GetType() const override { return QXGetDataType<QXContainer>(); }
  ByteWriter* CreateCopy() const override { return new ByteWriter(*this); }
  bool operator()(qxostream& out, const QXContainer&, const QXBinaryIOHandlerBase&) const override {
    const char byte = static_cast<char>(byte_);
    return byte_ >= 0 && QXBWriteRecord(out, tag_, &byte, 1);
  }

private:
  std::string tag_;
  int byte_;  // negative: fails
};

TEST(QXBWrite, HasTheStoredFormOfEveryValueType) {
  std::string items;
  QXContainer all;
  for (const StoredForm& form : StoredForms()) {
    SCOPED_TRACE(form.native);
    QXContainer object;
    form.set(object);
    const std::string item = Hex("00 81 'v'") + Hex(form.native);
    EXPECT_EQ(ToHex(Write(object)), ToHex(Block(item)));
    all += object;
    items += item;
  }
  EXPECT_EQ(Write(all), Block(items));
  EXPECT_EQ(Write(all, ""), Hex("01 3F") + items);
  EXPECT_EQ(Write(all, "Other"), Counted(Hex("00 85 'Other'"), Hex("01 3F") + items));

  // A mere pointer is one element, and none when it is null.
  int five = 5;
  QXContainer pointers;
  pointers.SetData<int*>("p", &five);
  EXPECT_EQ(Write(pointers), Block(Hex("00 81 'p' 20 84 05000000")));
  pointers.SetData<int*>("p", nullptr);
  EXPECT_EQ(Write(pointers), Block(Hex("00 81 'p' 20 80")));
}

TEST(QXBWrite, PutsHandledAndUnreadValuesIntoEnvelopes) {
  const QXBinaryIOHandler handler = ContainerHandler();
  QXContainer inner, object;
  inner.SetData<int>("i", 5);
  object.SetData<QXContainer>("c", inner);
  EXPECT_EQ(ToHex(Write(object, "QXBasePOD", handler)), ToHex(Block(ContainerItem())));

  // A name from a code, in the item's tag; in envelope and body it is a name.
  const std::string numbered = Hex("39 60 00 9B '!HandledQXBTag:UnknownQXB57' 51 84 1F 82 39 07");
  const std::string block =
      Block(UnreadItem() + numbered + Hex("39 01 05000000") + ContainerItem());
  QXBinaryIOHandler podOnly;
  podOnly.SetReadFxn(QXBasePODReadFxn<QXContainer>(), /*asDefault=*/false);
  EXPECT_EQ(ToHex(Write(ReadBlock(block, podOnly))), ToHex(block));
  EXPECT_EQ(ToHex(Write(ReadBlock(block, handler), "QXBasePOD", handler)), ToHex(block));
}

TEST(QXBWrite, TreatsSomeNamesInTheirOwnWay) {
  const auto longTag = [](const std::string& name) { return Counted(std::string(1, '\0'), name); };
  const std::string longest(1023, 'n');
  const struct {
    std::string name;
    std::string tag;  // as stored; "" for an item left out, "false" for a block refused
    unsigned warnings;
  } cases[] = {{"QXGroup", "\x36", 0},
               {"UnknownQXB57", "\x39", 0},
               {"UnknownQXB127", "\x7F", 0},
               {"UnknownQXB313", "\x39", 0},
               {"UnknownQXB57x", "\x39", 0},
               {"UnknownQXB", longTag("UnknownQXB"), 0},
               {"UnknownQXB0", longTag("UnknownQXB0"), 0},
               {"UnknownQXB200", "false", 0},
               {"UnknownQXB-1", "false", 0},
               {"QXUnknownQXBData", longTag("QXUnknownQXBData"), 0},
               {longest, longTag(longest), 0},
               {longest + "n", "", 1},
               {"", "", 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Reports reports;
    QXContainer object;
    object.AddData<int>("first", 1);
    object.AddData<int>(c.name.c_str(), 5);
    const std::string first = longTag("first") + Hex("01 01000000");
    const std::string item = c.tag.empty() ? "" : c.tag + Hex("01 05000000");
    EXPECT_EQ(Write(object), c.tag == "false" ? "false: " : Block(first + item));
    EXPECT_EQ(reports.NumMessages(), c.warnings);
  }

  // An envelope's tag has fifteen bytes more.
  const QXBinaryIOHandler handler = ContainerHandler();
  for (const std::size_t size : {1008u, 1009u}) {
    Reports reports;
    const std::string name(size, 'n');
    QXContainer object;
    object.SetData<QXContainer>(name.c_str(), QXContainer());
    const std::string written = Write(object, "QXBasePOD", handler);
    EXPECT_EQ(ReadBlock(written.empty() ? Block(Hex("00 81 'x' 02 01")) : written, handler)
                  .HasData(name.c_str()),
              size == 1008);
    EXPECT_EQ(reports.NumMessages(), size == 1008 ? 0u : 1u);
  }
  Reports reports;
  QXContainer object;
  object.SetData<int>("a", 1);
  EXPECT_EQ(Write(object, longest).size(), 3 + 1023 + 1 + 2 + 8);
  EXPECT_EQ(Write(object, longest + "n"), "false: ");
}

TEST(QXBWrite, LeavesOutWhatHasNoForm) {
  QXContainer object;
  EXPECT_EQ(Write(object), "");
  object.AddData<bool>("off", false);
  object.AddData<unsigned>("unsigned", 1);
  object.AddData<short>("short", 1);
  object.AddData<const char*>("literal", "text");
  object.AddData<QXContainer>("no functor", QXContainer());
  object.AddData<int>(0u, 1);
  object.AddData<int>(5u, 1);           // a reserved id, which has no name
  object.AddData<int>(0x7FFF0000u, 1);  // an id never given out
  object.AddData<QXUnknownQXBData>("empty", QXUnknownQXBData());
  qxisstream in(std::string("abc"));
  QXAttachData(QXUnknownQXBData(in, nullptr, 3, "Notes", 0), object);
  QXPushQXThrowHasNoMessages silent;
  EXPECT_EQ(Write(object), "");
  object.AddData<int>("a", 1);
  EXPECT_EQ(Write(object), Block(Hex("00 81 'a' 01 01000000")));
}

TEST(QXBWrite, AsksTheFirstFunctorOfTheType) {
  QXContainer object;
  object.SetData<unsigned>("u", 7);
  object.SetData<bool>("off", false);
  object.SetData<bool>("on", true);
  object.SetData<int>("a", 1);
  const std::string on = Hex("00 82 'on' 02 01"), a = Hex("00 81 'a' 01 01000000");
  const std::string u = Hex("00 81 'u' 60 00 90 '!HandledQXBTag:u' 51 83 '123'");
  const std::string off = Hex("00 83 'off' 60 00 92 '!HandledQXBTag:off' 51 83 '456'");
  const struct {
    FixedWriter<unsigned> forUnsigned;
    FixedWriter<bool> forBool;
    std::string items;
    const char* log;
  } cases[] = {{{"123", true}, {"456", true}, u + off + on + a, ""},
               {{"", true}, {"456", true}, off + on + a, ""},
               {{"123", false},
                {"456", true},
                off + on + a,
                "level = 4\nWarning: Failed to write QXBase data for tag u.  Skipping...\n"}};
  for (const auto& c : cases) {
    Reports reports;
    QXBinaryIOHandler handler;
    handler.SetBaseWriteFxn(FixedWriter<float>("never", true));
    handler.SetBaseWriteFxn(c.forUnsigned);
    handler.SetBaseWriteFxn(FixedWriter<unsigned>("second", true));
    handler.SetBaseWriteFxn(c.forBool);
    EXPECT_EQ(Write(object, "QXBasePOD", handler), Block(c.items));
    EXPECT_EQ(reports.GetErrorLog(), c.log);
  }
  // The functor of another type writes nothing, so that lists can be walked.
  qxosstream out;
  QXIter<QXBaseData> item = object.GetDataIter();
  EXPECT_TRUE(QXBaseQXBWriteFxn<QXContainer>("x")(out, *item, QXBinaryIOHandler()));
  EXPECT_EQ(out.size(), 0u);
}

TEST(QXBWrite, FindsTheWriterOfATypeOrAsksTheDefault) {
  class Default : public QXDefaultWriter {
  public:
    Default* CreateCopy() const override { return new Default(*this); }
    bool operator()(qxostream& out, const QXBinaryIOHandlerBase&) const override {
      return out.put('d'), false;
    }
  };
  QXContainer object;
  object.SetData<int>("a", 1);
  QXBinaryIOHandler handler;
  handler.SetWriteFxn(QXBasePODWriteFxn(), /*asDefault=*/false);
  qxosstream none;
  EXPECT_TRUE(QXBinaryWrite(none, object, handler));
  EXPECT_EQ(none.size(), 0u);  // the writer is one for QXBase
  EXPECT_TRUE(QXBinaryWrite<QXBase>(none, object, handler));
  EXPECT_EQ(none.str(), Block(Hex("00 81 'a' 01 01000000")));

  handler.SetWriteFxn(Default(), /*asDefault=*/true);
  qxosstream byDefault;
  EXPECT_FALSE(QXBinaryWrite(byDefault, object, handler));
  EXPECT_EQ(byDefault.str(), "d");
  handler.SetWriteFxn(ByteWriter("First", 7), /*asDefault=*/false);
  handler.SetWriteFxn(ByteWriter("Second", 8), /*asDefault=*/false);
  qxosstream first;
  EXPECT_TRUE(QXBinaryWrite(first, object, handler));
  EXPECT_EQ(first.str(), Hex("00 85 'First' 81 07"));
}

TEST(QXBWrite, CollectsRecordsInAGroup) {
  const QXBinaryIOHandler handler;
  const QXContainer object;
  const std::string children = Hex("1F 81 05 1F 81 06");
  const auto write = [&](bool compress, const char* method, std::vector<int> bytes) {
    std::vector<QXWriteFxn<QXContainer>*> list;
    for (const int byte : bytes) list.push_back(new ByteWriter("QXBase", byte));
    const QXCollectWriteFxn<QXContainer> original("QXGroup", compress, method, list);
    const QXCollectWriteFxn<QXContainer> fxn(original);
    qxosstream out;
    const bool done = fxn(out, object, handler);
    return (done ? "" : "false: ") + out.str();
  };
  EXPECT_EQ(write(false, "", {5, 6}), Counted("\x36", children));
  EXPECT_EQ(write(false, "", {}), "");
  EXPECT_EQ(write(false, "", {5, -1}), "false: ");
  EXPECT_EQ(write(true, "no such method", {5, 6}), "false: ");
  std::string packed;
  ASSERT_TRUE(QXPlatform::QXCompress(packed, children.data(), children.size(), "gz"));
  EXPECT_EQ(write(true, "gz", {5, 6}), Counted("\x36", packed));

  Reports reports;
  qxosstream out;
  EXPECT_FALSE(QXBWriteRecord(out, "QXBase", "", 0));
  EXPECT_FALSE(QXBWriteRecord(out, "", "x", 1));
  EXPECT_EQ(out.size(), 0u);
}

TEST(QXBWrite, TellsEveryRefusedByte) {
  const QXBinaryIOHandler handler = ContainerHandler();
  QXContainer object;
  for (const StoredForm& form : StoredForms()) {
    QXContainer one;
    form.set(one);
    object += one;
  }
  object.AddData<QXContainer>("c", object);
  object.AddData<std::vector<bool>>("many", std::vector<bool>(1100, true));
  const std::string whole = Write(object, "QXBasePOD", handler);
  for (std::size_t room = 0; room <= whole.size(); ++room) {
    RefusingStream block(room), group(room);
    EXPECT_EQ(QXBWriteQXBase(block, object, "QXBasePOD", handler), room == whole.size());
    EXPECT_EQ(block.Taken(), whole.substr(0, room));
    const QXCollectWriteFxn<QXContainer> collect("QXGroup", false, "", {new ContainerWriter});
    EXPECT_FALSE(collect(group, object, handler));
  }
}

TEST(QXBWrite, LeavesOutWhatLiesTooDeepToBeRead) {
  const QXBinaryIOHandler handler = ContainerHandler();
  QXContainer object;
  object.SetData<int>("a", 1);
  for (unsigned level = 0; level < 129; ++level) {
    QXContainer outer;
    outer.SetData<int>("a", 1);
    outer.SetData<QXContainer>("c", object);
    object = outer;
    Reports reports;
    const std::string written = Write(object, "QXBasePOD", handler);
    EXPECT_EQ(Describe(ReadBlock(written, handler)) == Describe(object), level < 128) << level;
    EXPECT_EQ(reports.HasMessages(), level >= 128) << level;
  }
}

template <class T>
std::vector<T> RandomBytes(std::mt19937& random) {
  std::vector<T> values(random() % 40);
  for (T& value : values) value = static_cast<T>(static_cast<int>(random() % 65536) - 32768);
  return values;
}

void AddRandomItem(QXContainer& object, std::mt19937& random, unsigned depth) {
  const char* const names[] = {"x",        "QXGroup",  "UnknownQXB99", "a name with blanks",
                               "\xC3\xA9", "MDLParity"};
  const std::string name =
      random() % 4 ? names[random() % 6] : std::string(1 + random() % 300, 'n');
  const char* tag = name.c_str();
  const auto count = static_cast<unsigned>(1 + random() % 20);
  switch (random() % 8) {
    case 0:
      object.AddData<std::vector<short>>(tag, RandomBytes<short>(random));
      break;
    case 1:
      object.AddData<std::vector<double>>(tag, RandomBytes<double>(random));
      break;
    case 2:
      object.AddData<std::vector<char>>(tag, RandomBytes<char>(random));
      break;
    case 3:
      object.AddData<std::string>(tag, std::string(random() % 300, 's'));
      break;
    case 4:
      object.AddBaseData(std::make_unique<QXBaseDataTPtr<float*>>(QXGetTag(tag), nullptr, count));
      break;
    case 5:
      object.AddData<double>(tag, static_cast<double>(random()) / 7);
      break;
    case 6: {
      QXContainer inner;
      StoredForms()[random() % StoredForms().size()].set(inner);
      object += inner;
      break;
    }
    default: {
      QXContainer inner;
      for (unsigned i = 0; depth < 4 && i < count / 4; ++i) AddRandomItem(inner, random, depth + 1);
      object.AddData<QXContainer>(tag, inner);
    }
  }
}

TEST(QXBWrite, RoundTripsRandomObjects) {
  const QXBinaryIOHandler handler = ContainerHandler();
  std::mt19937 random(20240607);
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE(round);
    QXContainer object;
    do AddRandomItem(object, random, 0);
    while (random() % 12);
    const std::string written = Write(object, "QXBasePOD", handler);
    const QXContainer again = ReadBlock(written, handler);
    EXPECT_EQ(Describe(again), Describe(object));
    EXPECT_EQ(Write(again, "QXBasePOD", handler), written);
    // A program that knows no containers passes them on as they are, but one of
    // several unread values of one name stands for all.
    qxisstream in(written);
    unsigned records = 0;
    EXPECT_EQ(QXBinaryCount(in, records), 0u);
    EXPECT_EQ(records, 1u);
  }
}

}  // namespace

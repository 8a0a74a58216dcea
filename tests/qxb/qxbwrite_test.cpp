#include <qxsystem/qxb/qxbwfxn.h>

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include <qxsystem/platform/compress.h>

#include "support.h"

using namespace qxbtest;

namespace {

std::string Write(const QXBase& object, const QXBinaryIOHandlerBase& handler = QXBinaryIOHandler(),
                  const std::string& tag = "QXBasePOD") {
  return Written([&](qxostream& out) { return QXBWriteQXBase(out, object, tag, handler); });
}

QXContainer ReadBlock(const std::string& record,
                      const QXBinaryIOHandlerBase& handler = ContainerHandler()) {
  QXContainer object;
  qxisstream in(record);
  EXPECT_EQ(QXBinaryRead(in, object, handler), 0u);
  return object;
}

// Writes fixed bytes, or fails, for a T or, as a `Base` of items, an item of type T.
template <class T, class Base = QXWriteFxn<T>, class Value = T>
class FixedWriter : public Base {
public:
  explicit FixedWriter(std::string bytes, bool works = true)
      : bytes_(std::move(bytes)), works_(works) {}
  const char* GetTag() const override { return "fixed"; }
  const void* GetType() const override { return QXGetDataType<T>(); }
  FixedWriter* CreateCopy() const override { return new FixedWriter(*this); }
  bool operator()(qxostream& out, const Value&, const QXBinaryIOHandlerBase&) const override {
    out.write(bytes_);
    return works_;
  }

private:
  std::string bytes_;
  bool works_;
};
template <class T>
using ValueWriter = FixedWriter<T, QXWriteFxn<QXBaseData>, QXBaseData>;

TEST(QXBWrite, HasTheStoredFormOfEveryValueType) {
  const QXContainer all = ReadBlock(Block(StoredItems()));
  EXPECT_EQ(ToHex(Write(all)), ToHex(Block(StoredItems())));
  EXPECT_EQ(Write(all, QXBinaryIOHandler(), ""), Hex("01 3F") + StoredItems());
  // A mere pointer is one element, and none when it is null.
  int five = 5;
  QXContainer pointers;
  pointers.AddData<int*>("p", &five);
  pointers.AddData<int*>("p", nullptr);
  EXPECT_EQ(Write(pointers), Block(Hex("00 81 'p' 20 84 05000000 00 81 'p' 20 80")));
}

TEST(QXBWrite, PutsHandledAndUnreadValuesIntoEnvelopes) {
  // A name made of a code is a code again in the item's tag, not in the others.
  const std::string numbered = Hex("39 60 00 9B '!HandledQXBTag:UnknownQXB57' 51 84 1F 82 39 07");
  const std::string block =
      Block(UnreadItem() + numbered + Hex("39 01 05000000") + ContainerItem());
  QXBinaryIOHandler knowsBlocks;
  knowsBlocks.SetReadFxn(QXBasePODReadFxn<QXContainer>(), /*asDefault=*/false);
  for (const QXBinaryIOHandler& handler : {ContainerHandler(), knowsBlocks})
    EXPECT_EQ(ToHex(Write(ReadBlock(block, handler), handler)), ToHex(block));
}

TEST(QXBWrite, TreatsSomeNamesInTheirOwnWay) {
  const std::string longest(1023, 'n'), inEnvelope(1008, 'n'), zero(1, '\0');
  // The tag as stored, "" for an item left out, "false" for a block refused; the warnings.
  const std::tuple<std::string, std::string, unsigned> cases[] = {
      {"QXGroup", "\x36", 0},
      {"UnknownQXB313", "\x39", 0},
      {"UnknownQXB57x", "\x39", 0},
      {"UnknownQXB0", Counted(zero, "UnknownQXB0"), 0},
      {"UnknownQXB200", "false", 0},
      {"UnknownQXB-1", "false", 0},
      {longest, Counted(zero, longest), 0},
      {longest + "n", "", 1},
      {"", "", 0}};
  QXContainer object;
  for (const auto& [name, tag, warnings] : cases) {
    SCOPED_TRACE(name);
    Reports reports;
    object.Clear();
    object.AddData<int>("a", 1);
    object.AddData<int>(name.c_str(), 5);
    const std::string item = tag.empty() ? "" : tag + Hex("01 05000000");
    EXPECT_EQ(Write(object), tag == "false" ? "false: " : Block(intItem + item));
    EXPECT_EQ(reports.NumMessages(), warnings);
  }
  Reports reports;
  EXPECT_EQ(Write(object, QXBinaryIOHandler(), longest),
            Counted(zero, longest) + Block(intItem).substr(1));
  EXPECT_EQ(Write(object, QXBinaryIOHandler(), longest + "n"), "false: ");
  // An envelope's tag has fifteen bytes more.
  object.AddData<QXContainer>(inEnvelope.c_str(), QXContainer());
  object.AddData<QXContainer>((inEnvelope + "n").c_str(), QXContainer());
  EXPECT_EQ(Describe(ReadBlock(Write(object, ContainerHandler()))), intText + inEnvelope + "={} ");
}

TEST(QXBWrite, LeavesOutWhatHasNoForm) {
  QXContainer object;
  EXPECT_EQ(Write(object), "");
  object.AddData<bool>("off", false);
  object.AddData<unsigned>("unsigned", 1);
  object.AddData<const char*>("literal", "text");
  object.AddData<QXContainer>("no functor", QXContainer());
  for (const unsigned nameless : {0u, 5u, 0x7FFF0000u}) object.AddData<int>(nameless, 1);
  object.AddData<QXUnknownQXBData>("without bytes", QXUnknownQXBData());
  QXPushQXThrowHasNoMessages silent;
  EXPECT_EQ(Write(object), "");
  object.AddData<int>("a", 1);
  EXPECT_EQ(Write(object), Block(intItem));
}

TEST(QXBWrite, AsksTheFirstFunctorOfAValuesType) {
  QXContainer object;
  object.SetData<unsigned>("u", 7);
  object.SetData<bool>("off", false);
  object.SetData<bool>("on", true);
  object.SetData<int>("a", 1);
  const std::string rest =
      Hex("00 83 'off' 60 00 92 '!HandledQXBTag:off' 51 83 '456' 00 82 'on' 02 01") + intItem;
  const std::tuple<ValueWriter<unsigned>, std::string, const char*> cases[] = {
      {ValueWriter<unsigned>("123"), Hex("00 81 'u' 60 00 90 '!HandledQXBTag:u' 51 83 '123'"), ""},
      {ValueWriter<unsigned>(""), "", ""},
      {ValueWriter<unsigned>("123", false), "",
       "level = 4\nWarning: Failed to write QXBase data for tag u.  Skipping...\n"}};
  for (const auto& [writer, item, log] : cases) {
    Reports reports;
    QXBinaryIOHandler handler;
    handler.SetBaseWriteFxn(writer);
    handler.SetBaseWriteFxn(ValueWriter<unsigned>("second"));
    handler.SetBaseWriteFxn(ValueWriter<bool>("456"));
    handler.SetBaseWriteFxn(ValueWriter<int>("no: an int has a form"));
    EXPECT_EQ(Write(object, handler), Block(item + rest));
    EXPECT_EQ(reports.GetErrorLog(), log);
  }
}

TEST(QXBWrite, FindsTheWriterOfATypeOrWritesNothing) {
  QXContainer object;
  object.SetData<int>("a", 1);
  QXBinaryIOHandler handler;
  handler.SetWriteFxn(QXBasePODWriteFxn(), /*asDefault=*/false);
  qxosstream out;
  EXPECT_TRUE(QXBinaryWrite<QXContainer>(out, object, handler));  // another type
  EXPECT_TRUE(QXBinaryWrite<QXBase>(out, object, handler));
  handler.SetWriteFxn(FixedWriter<QXContainer>("first"), /*asDefault=*/false);
  handler.SetWriteFxn(FixedWriter<QXContainer>("second"), /*asDefault=*/false);
  EXPECT_TRUE(QXBinaryWrite(out, object, handler));
  EXPECT_EQ(out.str(), Block(intItem) + "first");
}

TEST(QXBWrite, CollectsRecordsInAGroup) {
  using Child = FixedWriter<QXContainer>;
  const auto write = [](const char* method, std::vector<QXWriteFxn<QXContainer>*> children) {
    const QXCollectWriteFxn<QXContainer> original("QXGroup", *method, method, children);
    const std::unique_ptr<QXWriteFxn<QXContainer>> fxn(original.CreateCopy());
    return Written([&](qxostream& out) { return (*fxn)(out, QXContainer(), QXBinaryIOHandler()); });
  };
  std::string packed;
  ASSERT_TRUE(QXPlatform::QXCompress(packed, "abcde", 5, "gz"));
  EXPECT_EQ(write("", {new Child("ab"), new Child("cde")}), Counted("\x36", "abcde"));
  EXPECT_EQ(write("gz", {new Child("ab"), new Child("cde")}), Counted("\x36", packed));
  EXPECT_EQ(write("none", {new Child("ab")}), "false: ");
  EXPECT_EQ(write("", {new Child("ab"), new Child("cd", false)}), "false: ");
  EXPECT_EQ(write("", {new Child("")}), "");
  EXPECT_EQ(Written([](qxostream& out) { return QXBWriteRecord(out, "QXBase", "", 0); }),
            "false: ");
}

TEST(QXBWrite, TellsEveryRefusedByte) {
  const QXBinaryIOHandler handler = ContainerHandler();
  const QXCollectWriteFxn<QXContainer> group("QXGroup", false, "", {new ContainerWriter});
  QXContainer object = ReadBlock(Block(StoredItems()));
  object.AddData<QXContainer>("c", object);
  object.AddData<std::vector<bool>>("many", std::vector<bool>(1100, true));
  const std::string whole = Write(object, handler), grouped = Counted("\x36", whole);
  for (std::size_t room = 0; room <= grouped.size(); ++room) {
    RefusingStream out(room), collected(room);
    EXPECT_EQ(QXBWriteQXBase(out, object, "QXBasePOD", handler), room >= whole.size());
    EXPECT_EQ(out.Taken(), whole.substr(0, room));
    EXPECT_EQ(group(collected, object, handler), room == grouped.size());
    EXPECT_EQ(collected.Taken(), grouped.substr(0, room));
  }
}

TEST(QXBWrite, LeavesOutWhatLiesTooDeepToBeRead) {
  QXContainer object;
  for (unsigned level = 0; level <= 129; ++level) {
    if (level > 0) object.SetData<QXContainer>("c", QXContainer(object));
    object.SetData<int>("a", 1);
    Reports reports;
    const QXContainer again = ReadBlock(Write(object, ContainerHandler()));
    EXPECT_EQ(Describe(again) == Describe(object), level <= 128) << level;
    EXPECT_EQ(reports.HasMessages(), level > 128) << level;
  }
}

}  // namespace

#include <qxsystem/qxb/qxbhand.h>

#include <gtest/gtest.h>

#include <string>

#include "support.h"

using namespace qxbtest;

namespace {

// A reader or writer that is told apart by its mark.
template <class Base>
class Marked : public Base {
public:
  Marked(std::string tag, const void* type, char mark)
      : tag_(std::move(tag)), type_(type), mark_(mark) {}
  const char* GetTag() const override { return tag_.c_str(); }
  const void* GetType() const override { return type_; }
  Marked* CreateCopy() const override { return new Marked(*this); }
  char Mark() const { return mark_; }

private:
  std::string tag_;
  const void* type_;
  char mark_;
};
using Reader = Marked<QXReadFxnBase>;
using Writer = Marked<QXWriteFxnBase>;

const void* const typeA = QXGetDataType<int>();
const void* const typeB = QXGetDataType<double>();

template <class F>
std::string Marks(QXIterBase<F>* cursor) {
  std::string marks;
  for (QXIter<F> it = cursor; it; ++it) {
    const auto* marked = dynamic_cast<const Marked<F>*>(it.operator->());
    marks += marked ? marked->Mark() : '?';
  }
  return marks + " ";
}

// The marks of readers, writers and value writers.
std::string Contents(const QXBinaryIOHandlerBase& handler) {
  return Marks(handler.GetReadFxns()) + Marks(handler.GetWriteFxns()) +
         Marks(handler.GetBaseWriteFxns());
}

// Readers 1 to 3, writers 4 and 5, a value writer and data.
QXBinaryIOHandler Sample() {
  QXBinaryIOHandler handler;
  for (const char mark : {'1', '2', '3'})
    EXPECT_TRUE(handler.SetReadFxn(Reader(mark == '2' ? "y" : "x", typeA, mark), false));
  for (const char mark : {'4', '5'})
    EXPECT_TRUE(handler.SetWriteFxn(Writer("x", typeA, mark), false));
  EXPECT_TRUE(handler.SetBaseWriteFxn(QXBaseQXBWriteFxn<QXContainer>("x")));
  handler.SetData<int>("own", 5);
  return handler;
}

TEST(QXBHandler, FindsAndReplacesTheFirstOfATagAndType) {
  QXBinaryIOHandler handler = Sample();
  EXPECT_TRUE(handler.HasReadFxn(Reader("y", typeA, ' ')));
  EXPECT_FALSE(handler.HasReadFxn(Reader("y", typeB, ' ')));
  EXPECT_TRUE(handler.ReplaceReadFxn(Reader("x", typeA, 'a'), ""));
  EXPECT_TRUE(handler.ReplaceReadFxn(Reader("z", typeA, 'b'), "y"));  // a tag not its own
  EXPECT_FALSE(handler.ReplaceReadFxn(Reader("x", typeA, 'c'), "y"));
  EXPECT_TRUE(handler.ReplaceWriteFxn(Writer("x", typeA, 'd'), "x"));
  QXInstallGenericDataHandler<QXContainer>(handler, "boxed");
  EXPECT_EQ(Contents(handler), "ab3? d5 ?? ");
  EXPECT_TRUE(handler.HasReadFxn(QXBaseQXBReadFxn<int>("boxed")));  // both are of type QXBase
}

TEST(QXBHandler, RefusesTagsThatNoBufferHoldsAndDefaultsOfAnotherKind) {
  const std::string longest(1023, 't');
  QXBinaryIOHandler handler;
  Reports reports;
  EXPECT_FALSE(handler.SetReadFxn(Reader("", nullptr, ' '), /*asDefault=*/true));
  EXPECT_FALSE(handler.SetWriteFxn(ContainerWriter(), /*asDefault=*/true));
  EXPECT_TRUE(handler.SetReadFxn(Reader(longest, typeA, '1'), false));
  EXPECT_TRUE(handler.SetWriteFxn(Writer(longest, typeA, '2'), false));
  EXPECT_FALSE(handler.SetReadFxn(Reader(longest + "t", typeA, '3'), false));
  EXPECT_FALSE(handler.SetWriteFxn(Writer(longest + "t", typeA, '4'), false));
  EXPECT_FALSE(handler.SetBaseWriteFxn(QXBaseQXBWriteFxn<QXContainer>(longest + "t")));
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 5\n"
            "Attempt to register reader function which has a tag length of > 1024 bytes\n"
            "Attempt to register writer function which has a tag length of > 1024 bytes\n"
            "Attempt to register writer function which has a tag length of > 1024 bytes\n");
  EXPECT_EQ(Contents(handler), "1 2  ");
}

TEST(QXBHandler, CopiesAreDeepThroughAnyInterface) {
  const QXBinaryIOHandler source = Sample();
  const QXBinaryIOHandlerBase& base = source;
  QXBinaryIOHandler throughBase(base), assigned = ContainerHandler();
  assigned = source;
  const std::unique_ptr<QXBase> created(base.CreateCopy());
  for (auto* copy : {&throughBase, &assigned, dynamic_cast<QXBinaryIOHandler*>(created.get())}) {
    EXPECT_EQ(Contents(*copy), "123 45 ? ");
    EXPECT_EQ(copy->GetData<int>("own"), 5);
    copy->Clear();
    EXPECT_EQ(Contents(*copy), "   ");
    EXPECT_FALSE(copy->HasData("own"));
  }
  EXPECT_EQ(Contents(source), "123 45 ? ");
  // A source without data clears ours, but not the functors that come with it.
  assigned = Sample();
  assigned = ContainerHandler();
  EXPECT_FALSE(assigned.HasData("own"));
  EXPECT_EQ(Contents(assigned), "??? ? ? ");
}

std::string calls;
template <char name, int failures>
bool Initialise(QXBinaryIOHandlerBase&) {
  calls += name;
  return std::count(calls.begin(), calls.end(), name) > failures;
}
bool RegisterAnother(QXBinaryIOHandlerBase&) {
  QXRegisterQXBInitializer(Initialise<'z', 0>);
  return true;
}

TEST(QXBHandler, InitialisersRunInOrderAndFailedOnesTwice) {
  for (auto* function : {Initialise<'a', 0>, Initialise<'b', 1>, Initialise<'c', 2>})
    QXRegisterQXBInitializer(function);
  while (QXGetQXBInitializerCount() < 1024) QXRegisterQXBInitializer(Initialise<'.', 0>);
  QXRegisterQXBInitializer(RegisterAnother);
  Reports reports;
  QXBinaryIOHandler handler;
  QXInitializeHandler(handler);
  EXPECT_EQ(calls, "abc" + std::string(1021, '.') + "zbc");
  EXPECT_EQ(reports.GetErrorLog(), "level = 4\nDefault Initializer failed during setup.\n");
}

}  // namespace

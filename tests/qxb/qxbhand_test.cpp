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

class Skipper : public QXDefaultReader {
public:
  Skipper* CreateCopy() const override { return new Skipper(*this); }
};

const void* typeA = QXGetDataType<int>();
const void* typeB = QXGetDataType<double>();

template <class F>
std::string Marks(QXIterBase<F>* cursor) {
  std::string marks;
  for (QXIter<F> it = cursor; it; ++it) {
    const auto* marked = dynamic_cast<const Marked<F>*>(it.operator->());
    marks += marked ? marked->Mark() : '?';
  }
  return marks;
}

TEST(QXBHandler, FindsAndReplacesTheFirstOfATagAndType) {
  QXBinaryIOHandler handler;
  EXPECT_FALSE(handler.ReplaceReadFxn(Reader("x", typeA, '0'), ""));
  for (const auto& fxn : {Reader("x", typeA, '1'), Reader("y", typeA, '2'), Reader("x", typeB, '3'),
                          Reader("x", typeA, '4')})
    EXPECT_TRUE(handler.SetReadFxn(fxn, false));
  for (const auto& fxn : {Writer("x", typeA, '5'), Writer("x", typeA, '6')})
    EXPECT_TRUE(handler.SetWriteFxn(fxn, false));
  EXPECT_EQ(Marks(handler.GetReadFxns()), "1234");

  EXPECT_TRUE(handler.HasReadFxn(Reader("x", typeB, ' ')));
  EXPECT_FALSE(handler.HasReadFxn(Reader("y", typeB, ' ')));
  EXPECT_FALSE(handler.HasReadFxn(Reader("xx", typeA, ' ')));
  EXPECT_TRUE(handler.HasWriteFxn(Writer("x", typeA, ' ')));

  EXPECT_TRUE(handler.ReplaceReadFxn(Reader("x", typeA, 'a'), ""));
  EXPECT_EQ(Marks(handler.GetReadFxns()), "a234");
  // By the type of the new one and a tag that it need not have itself.
  EXPECT_TRUE(handler.ReplaceReadFxn(Reader("z", typeA, 'b'), "y"));
  EXPECT_EQ(Marks(handler.GetReadFxns()), "ab34");
  EXPECT_TRUE(handler.HasReadFxn(Reader("z", typeA, ' ')));
  EXPECT_FALSE(handler.ReplaceReadFxn(Reader("x", typeA, 'c'), "y"));
  EXPECT_TRUE(handler.ReplaceWriteFxn(Writer("x", typeA, 'd'), "x"));
  EXPECT_EQ(Marks(handler.GetWriteFxns()), "d6");

  QXInstallGenericDataHandler<QXContainer>(handler, "boxed");
  EXPECT_EQ(Marks(handler.GetReadFxns()), "ab34?");
  EXPECT_EQ(Marks(handler.GetWriteFxns()), "d6");
  QXIter<QXWriteFxn<QXBaseData>> base = handler.GetBaseWriteFxns();
  ASSERT_TRUE(base);
  EXPECT_STREQ(base->GetTag(), "boxed");
  EXPECT_EQ(base->GetType(), QXGetDataType<QXContainer>());
  EXPECT_TRUE(handler.HasReadFxn(QXBaseQXBReadFxn<int>("boxed")));
}

TEST(QXBHandler, RefusesTagsThatNoBufferHolds) {
  const std::string longest(1023, 't');
  QXBinaryIOHandler handler;
  {
    QXPushQXThrowHasNoMessages quiet;
    EXPECT_TRUE(handler.SetReadFxn(Reader(longest, typeA, '1'), false));
    EXPECT_TRUE(handler.SetWriteFxn(Writer(longest, typeA, '2'), false));
    EXPECT_TRUE(handler.SetBaseWriteFxn(QXBaseQXBWriteFxn<QXContainer>(longest)));
  }
  Reports reports;
  EXPECT_FALSE(handler.SetReadFxn(Reader(longest + "t", typeA, '3'), false));
  EXPECT_FALSE(handler.SetWriteFxn(Writer(longest + "t", typeA, '4'), false));
  EXPECT_FALSE(handler.SetBaseWriteFxn(QXBaseQXBWriteFxn<QXContainer>(longest + "t")));
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 5\n"
            "Attempt to register reader function which has a tag length of > 1024 bytes\n"
            "Attempt to register writer function which has a tag length of > 1024 bytes\n"
            "Attempt to register writer function which has a tag length of > 1024 bytes\n");
  EXPECT_EQ(Marks(handler.GetReadFxns()) + Marks(handler.GetWriteFxns()), "12");
  EXPECT_FALSE(++QXIter<QXWriteFxn<QXBaseData>>(handler.GetBaseWriteFxns()));
}

TEST(QXBHandler, HasDefaultsOfTheirKind) {
  QXBinaryIOHandler handler;
  const auto isSkipper = [&] {
    return dynamic_cast<const Skipper*>(&handler.GetDefaultReadFxn()) != nullptr;
  };
  EXPECT_FALSE(handler.SetReadFxn(Reader("", nullptr, ' '), /*asDefault=*/true));
  EXPECT_FALSE(handler.SetWriteFxn(ContainerWriter(), /*asDefault=*/true));
  EXPECT_FALSE(isSkipper());
  EXPECT_TRUE(handler.SetReadFxn(Skipper(), /*asDefault=*/true));
  EXPECT_TRUE(handler.SetReadFxn(handler.GetDefaultReadFxn(), /*asDefault=*/true));
  EXPECT_TRUE(isSkipper());
  EXPECT_EQ(Marks(handler.GetReadFxns()), "");

  qxisstream in(std::string("abc"));
  EXPECT_EQ(handler.GetDefaultReadFxn()(in, 2, "tag", handler), 0u);
  EXPECT_EQ(in.get(), 'c');
  qxosstream out;
  EXPECT_TRUE(handler.GetDefaultWriteFxn()(out, handler));
  EXPECT_EQ(out.size(), 0u);

  handler.SetReadFxn(Reader("x", typeA, '1'), false);
  handler.SetWriteFxn(Writer("x", typeA, '2'), false);
  handler.SetBaseWriteFxn(QXBaseQXBWriteFxn<QXContainer>("x"));
  handler.SetData<int>("own", 5);
  handler.Clear();
  EXPECT_FALSE(isSkipper());
  EXPECT_EQ(Marks(handler.GetReadFxns()) + Marks(handler.GetWriteFxns()), "");
  EXPECT_FALSE(QXIter<QXWriteFxn<QXBaseData>>(handler.GetBaseWriteFxns()));
  EXPECT_FALSE(handler.HasData("own"));
}

TEST(QXBHandler, CopiesAreDeepThroughAnyInterface) {
  QXBinaryIOHandler source;
  source.SetReadFxn(Skipper(), /*asDefault=*/true);
  source.SetReadFxn(Reader("x", typeA, '1'), false);
  source.SetWriteFxn(Writer("x", typeA, '2'), false);
  source.SetBaseWriteFxn(QXBaseQXBWriteFxn<QXContainer>("x"));
  source.SetData<int>("own", 5);

  QXBinaryIOHandler assigned;
  assigned.SetReadFxn(Reader("gone", typeA, '9'), false);
  assigned = source;
  const QXBinaryIOHandlerBase& base = source;
  const std::unique_ptr<QXBase> created(base.CreateCopy());
  QXBinaryIOHandler copied(source), throughBase(base);
  for (QXBinaryIOHandler* copy :
       {&assigned, &copied, &throughBase, dynamic_cast<QXBinaryIOHandler*>(created.get())}) {
    ASSERT_TRUE(copy);
    EXPECT_EQ(Marks(copy->GetReadFxns()) + Marks(copy->GetWriteFxns()), "12");
    EXPECT_TRUE(QXIter<QXWriteFxn<QXBaseData>>(copy->GetBaseWriteFxns()));
    EXPECT_TRUE(dynamic_cast<const Skipper*>(&copy->GetDefaultReadFxn()));
    EXPECT_EQ(copy->GetData<int>("own"), 5);
    copy->SetReadFxn(Reader("y", typeA, '3'), false);
  }
  EXPECT_EQ(Marks(source.GetReadFxns()), "1");

  // From a source without data, assignment clears ours but not the functors.
  const QXBinaryIOHandler bare(ContainerHandler());
  assigned = bare;
  EXPECT_FALSE(assigned.HasData("own"));
  EXPECT_TRUE(assigned.HasReadFxn(QXGroupReadFxn<QXContainer>("QXGroup")));
  assigned = *&assigned;
  EXPECT_TRUE(assigned.HasReadFxn(QXGroupReadFxn<QXContainer>("QXGroup")));
}

std::string calls;
template <char name, int failures>
bool Initialise(QXBinaryIOHandlerBase&) {
  static int left = 0;
  if (calls.find(name) == std::string::npos) left = failures;
  calls += name;
  return left-- <= 0;
}
bool RegisterAnother(QXBinaryIOHandlerBase&) {
  calls += '+';
  QXRegisterQXBInitializer(Initialise<'z', 0>);
  return true;
}

TEST(QXBHandler, InitialisersRunInOrderAndFailedOnesTwice) {
  EXPECT_EQ(QXGetQXBInitializerCount(), 0u);
  for (auto* initialiser :
       {Initialise<'a', 0>, Initialise<'b', 1>, Initialise<'c', 2>, Initialise<'d', 3>})
    QXRegisterQXBInitializer(initialiser);
  for (unsigned count = 4; count < 1024; ++count) QXRegisterQXBInitializer(Initialise<'.', 0>);
  QXRegisterQXBInitializer(Initialise<'e', 0>);
  EXPECT_EQ(QXGetQXBInitializerCount(), 1025u);

  Reports reports;
  QXBinaryIOHandler handler;
  QXInitializeHandler(handler);
  EXPECT_EQ(calls, "abcd" + std::string(1020, '.') + "ebcd");
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 4\nDefault Initializer failed during setup.\n"
            "Default Initializer failed during setup.\n");

  calls.clear();
  QXRegisterQXBInitializer(RegisterAnother);
  QXInitializeHandler(handler);
  EXPECT_EQ(calls, "abcd" + std::string(1020, '.') + "e+zbcd");
}

}  // namespace

#include <qxsystem/qxb/qxb.h>

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>

#include "support.h"

using namespace qxbtest;
using namespace std::string_literals;

namespace {

constexpr char EndInLength[] = "end of file reached in QXBReadDataLength(QXPlatform::qxistream &)";
constexpr char CorruptLength[] = "data size corrupt in QXBinary file";

std::string BadTag(int length) {
  return "error occurred while reading tag in QXBinary file (len = " + std::to_string(length) + ")";
}

// The log of warnings with these texts.
std::string Warnings(const std::vector<std::string>& texts) {
  std::string log = texts.empty() ? "" : "level = 4\n";
  for (const std::string& text : texts) log += text + "\n";
  return log;
}

template <class... Arguments>
std::string WriteTag(const std::string& name, Arguments... code) {
  qxosstream out;
  return QXBWriteTag(out, name.c_str(), code...) ? out.str() : "refused: " + out.str();
}

TEST(QXBLength, HasTheStoredFormBothWays) {
  const struct {
    unsigned long value;
    const char* bytes;
  } cases[] = {{0, "80"},
               {127, "FF"},
               {128, "00 81"},
               {300, "2C 82"},
               {16383, "7F FF"},
               {16384, "00 00 81"},
               {0xFFFFFFFF, "7F 7F 7F 7F 8F"},
               {0x100000000, "00 00 00 00 90"},
               {~0UL, "7F 7F 7F 7F 7F 7F 7F 7F 7F 81"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bytes);
    qxosstream out;
    EXPECT_TRUE(QXBWriteDataLength(out, c.value));
    if (c.value <= QXBMaxLength) QXBWriteDataLength(out, static_cast<unsigned>(c.value));
    EXPECT_EQ(out.str(), Hex(c.bytes) + (c.value <= QXBMaxLength ? Hex(c.bytes) : ""));

    qxisstream in(Hex(c.bytes) + "x");
    EXPECT_EQ(QXBReadDataLength(in, ~0UL), c.value);
    EXPECT_EQ(in.get(), 'x');
  }
  for (unsigned bytes = 1; bytes <= 9; ++bytes) {
    const unsigned long bound = 1UL << 7 * bytes;
    EXPECT_EQ(QXBDataLengthBytes(bound - 1), bytes);
    EXPECT_EQ(QXBDataLengthBytes(bound), bytes + 1);
  }
  EXPECT_EQ(QXBDataLengthBytes(0u), 1u);
  EXPECT_EQ(QXBDataLengthBytes(~0u), 5u);
}

TEST(QXBLength, ReportsWhatIsNoLength) {
  const struct {
    const char* bytes;
    unsigned long max;
    unsigned long value;
    std::vector<std::string> warnings;
    long position;
  } cases[] = {{"", ~0UL, 0, {EndInLength}, 0},
               {"00 00 80", ~0UL, 0, {}, 3},
               {"7F 7F 7F 7F 8F", 0xFFFFFFFF, 0xFFFFFFFF, {}, 5},
               {"00 00 00 00 90", 0xFFFFFFFF, 0, {CorruptLength}, 5},
               {"89", 8, 0, {CorruptLength}, 1},
               {"7F 7F 7F", ~0UL, 0, {EndInLength}, 3},
               {"00000000 00000000 00 82", ~0UL, 0, {CorruptLength}, 10},
               {"00000000 00000000 0000 81", ~0UL, 0, {CorruptLength}, 10}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bytes);
    Reports reports;
    qxisstream in(Hex(c.bytes));
    EXPECT_EQ(QXBReadDataLength(in, c.max), c.value);
    EXPECT_EQ(in.tell(), c.position);
    EXPECT_EQ(reports.GetErrorLog(), Warnings(c.warnings));
  }
}

TEST(QXBTag, HasAShortFormFor48Names) {
  std::istringstream published(
      "1 QXBasePOD 10 QXMolBase 11 QXMCMolBase 12 QXAtomPOD 13 QXBondPOD 14 QXConfPOD "
      "15 QXConfSDData 16 QXMCMolCartConf 17 QXMolAtomNames 18 QXMolAtomTypes 19 QXMolCT "
      "20 QXMolFloatCoord 21 QXMolPartialCharge 22 QXMolRadii 23 QXMolResidue 24 QXMolSDData "
      "25 QXMolTitle 26 QXConfTitle 27 MDLParity 28 QXBondStereo 29 QXMolComment "
      "30 QXConfEnergy 31 QXBase 32 QXMolDimension 33 QXConfDimension 34 zQXMCMolBase "
      "35 QXMolAtomIntType 36 QXMolBondIntType 37 QXMolRotor 38 QXConfTorsion "
      "39 QXMCMolRotorCart 40 QXMolEnergy 41 QXStyleList 42 QXStyleMap 43 QXStyleAtomID "
      "44 QXStyleConfs 45 QXStyleID 46 QXMCMolCartConfHalfFloat 47 QXMCMolCartConfDouble "
      "48 QXConfTorsionHalfFloat 49 QXConfTorsionDouble 50 QXConfTorsionCompressed "
      "51 QXConfTorsionHalfFloatCompressed 52 QXConfTorsionDoubleCompressed 53 QXContainer "
      "54 QXGroup 55 zstdQXMCMolBase 56 QXPrimarySubSearchScreen");
  std::string names[256];
  unsigned number;
  while (published >> number) published >> names[number];

  unsigned found = 0;
  for (unsigned code = 1; code < 256; ++code) {
    SCOPED_TRACE(code);
    const std::string stored(1, static_cast<char>(code));
    char name[QXBTagBufferSize], peeked[QXBTagBufferSize];
    std::memset(name, 'z', sizeof name);
    std::memset(peeked, 'z', sizeof peeked);
    unsigned char read = 0, seen = 0;
    qxisstream in(stored + "x");
    EXPECT_TRUE(QXBPeekTag(in, peeked, seen));
    EXPECT_EQ(in.tell(), 0);
    EXPECT_TRUE(QXBReadTag(in, name, read));
    EXPECT_EQ(in.tell(), 1);
    EXPECT_EQ(read, code);
    EXPECT_EQ(seen, code);
    EXPECT_EQ(name, names[code]);
    EXPECT_EQ(peeked, names[code]);
    if (names[code].empty()) {
      EXPECT_EQ(std::string(name, sizeof name), std::string(sizeof name, '\0'));
      continue;
    }
    ++found;
    EXPECT_EQ(WriteTag(names[code]), stored);
    EXPECT_EQ(WriteTag(names[code] + "x").size(), names[code].size() + 3);
    EXPECT_TRUE(QXIsInternalQXBTag((names[code] + "x").c_str(), names[code].size()));
    EXPECT_FALSE(QXIsInternalQXBTag((names[code] + "x").c_str(), names[code].size() + 1));
  }
  EXPECT_EQ(found, 48u);
  EXPECT_EQ(WriteTag("QXBas"), Hex("00 85 'QXBas'"));
  EXPECT_TRUE(QXIsInternalQXBTag("QXBasePOD", 6));
  EXPECT_FALSE(QXIsInternalQXBTag("QXBasePOD", 8));
  EXPECT_FALSE(QXIsInternalQXBTag(nullptr, 6));
}

TEST(QXBTag, IsWrittenOrRefusedWhole) {
  const std::string longest(1023, 'n');
  EXPECT_EQ(WriteTag(longest), Hex("00 7F 87") + longest);
  EXPECT_EQ(WriteTag(longest + "n"), "refused: ");
  EXPECT_EQ(WriteTag(""), "refused: ");
  // With a code, the code decides on the form.
  EXPECT_EQ(WriteTag("QXBase", static_cast<unsigned char>(0)), Hex("00 86 'QXBase'"));
  EXPECT_EQ(WriteTag("QXBase", static_cast<unsigned char>(31)), Hex("1F"));
  EXPECT_EQ(WriteTag("any", static_cast<unsigned char>(200)), Hex("C8"));
  EXPECT_EQ(WriteTag("", static_cast<unsigned char>(57)), Hex("39"));
  EXPECT_EQ(WriteTag(longest + "n", static_cast<unsigned char>(31)), "refused: ");
}

TEST(QXBTag, ReadsAndReports) {
  const struct {
    const char* bytes;
    bool more;
    int code;          // -1: none was read
    const char* name;  // null: left alone
    long position;
    std::vector<std::string> warnings;
  } cases[] = {{"", false, -1, nullptr, 0, {}},
               {"1F", false, 31, nullptr, 1, {}},
               {"00", false, 0, nullptr, 1, {}},
               {"1F 80", true, 31, "QXBase", 1, {}},
               {"00 82 'ab' 80", true, 0, "ab", 4, {}},
               {"00 86 'QXBase' 80", true, 0, "QXBase", 8, {}},
               {"00 82 'ab'", false, 0, "ab", 4, {}},
               {"00 83 'ab'", false, 0, "", 4, {}},
               {"00 80 'ab'", false, 0, "", 2, {BadTag(0)}},
               {"00 00 88 'ab'", false, 0, "", 3, {BadTag(1024)}},
               {"00 7F 7F 7F 7F 90", false, 0, "", 6, {CorruptLength, BadTag(0)}},
               {"00 00 00", false, 0, "", 3, {EndInLength, BadTag(0)}},
               {"00 83 'a' 00 'b' 80", true, 0, "a", 5, {}}};
  for (const auto& c : cases)
    for (const bool drip : {false, true}) {
      SCOPED_TRACE(c.bytes);
      Reports reports;
      char name[QXBTagBufferSize] = "before";
      unsigned char code = 99;
      DripStream drops(Hex(c.bytes));
      qxisstream memory(Hex(c.bytes));
      qxistream& in = drip ? static_cast<qxistream&>(drops) : memory;
      EXPECT_EQ(QXBReadTag(in, name, code), c.more);
      EXPECT_EQ(code, c.code < 0 ? 99 : c.code);
      EXPECT_TRUE(c.code < 0 || name == std::string(c.name ? c.name : "before")) << name;
      EXPECT_EQ(in.tell(), c.position);
      EXPECT_EQ(reports.GetErrorLog(), Warnings(c.warnings));
    }
}

TEST(QXBTag, PeekingConsumesNothingAndDecodesNoLongTag) {
  const struct {
    const char* bytes;
    bool there;
    const char* name;
  } cases[] = {{"", false, "before"}, {"1F", true, "QXBase"}, {"00 82 'ab' 80", true, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bytes);
    char name[QXBTagBufferSize] = "before";
    qxisstream in(Hex(c.bytes));
    EXPECT_EQ(QXBPeekTag(in, name), c.there);
    EXPECT_STREQ(name, c.name);
    EXPECT_EQ(in.tell(), 0);
  }
}

TEST(QXBRecords, AreSteppedOverAndCounted) {
  const struct {
    const char* bytes;
    unsigned skip;  // status of one step
    long position;
    unsigned status;  // of the count
    unsigned count;
  } cases[] = {{"", 6, 0, 0, 0},
               {"01 81 07", 0, 3, 0, 1},
               {"01 81 07  C8 82 0102  00 81 'x' 81 07", 0, 3, 0, 3},
               {"01 85 07", 0, 3, 0, 1},        // a payload that is cut short
               {"01 81 07 1F", 0, 3, 6, 1},     // a tag that ends the stream
               {"01 81 07 1F 00", 0, 3, 8, 1},  // a length that ends it
               {"01 80", 8, 2, 8, 0},
               {"01 80 01", 9, 2, 9, 0},
               {"01 00000000 90 07", 9, 6, 9, 0},  // a length of 2^32
               {"00 81 00 81 07", 6, 3, 6, 0},     // a name that is empty
               {"00 80 81 07", 6, 2, 6, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bytes);
    Reports reports;
    qxisstream one(Hex(c.bytes)), all(Hex(c.bytes));
    EXPECT_EQ(QXBinarySkip(one), c.skip);
    EXPECT_EQ(one.tell(), c.position);
    unsigned count = 99;
    EXPECT_EQ(QXBinaryCount(all, count), c.status);
    EXPECT_EQ(count, c.count);
  }
}

TEST(QXBByteOrder, SwapsUnlessAMarkIsOurs) {
  const struct {
    unsigned mark;
    bool isOne, isFloat;
  } cases[] = {{1, true, false},     {63, false, true},    {0, false, false},
               {0x101, true, false}, {0x33F, false, true}, {0xFE, false, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mark);
    EXPECT_EQ(QXBIntEndian(c.mark), !c.isOne);
    EXPECT_EQ(QXBShortEndian(c.mark), !c.isOne);
    EXPECT_EQ(QXBFPosTEndian(c.mark), !c.isOne);
    EXPECT_EQ(QXBFloatEndian(c.mark), !c.isFloat);
    EXPECT_EQ(QXGetFileEndian<int>(c.mark), !c.isOne);
    EXPECT_EQ(QXGetFileEndian<unsigned short>(c.mark), !c.isOne);
    EXPECT_EQ(QXGetFileEndian<QXHalfFloat>(c.mark), !c.isOne);
    EXPECT_EQ(QXGetFileEndian<double>(c.mark), !c.isFloat);
  }
  EXPECT_EQ(QXBIntEndian(), 1u);
  EXPECT_EQ(QXBFloatEndian(), 63u);
  EXPECT_EQ(QXGetHostEndian<long>(), 1);
  EXPECT_EQ(QXGetHostEndian<float>(), 63);
  EXPECT_EQ(QXGetHostEndian<short>(), 1);
  EXPECT_TRUE(QXIsLittleEndian<unsigned>());
  EXPECT_TRUE(QXIsByteSwapRequired<QXHalfFloat>(false));
  EXPECT_FALSE(QXIsFloatByteSwapRequired(true));
}

TEST(QXBStatus, HasAText) {
  const char* const texts[] = {"Success",
                               "No Parent Class",
                               "Check Failed",
                               "Stream Failed",
                               "Incorrect Size",
                               "Continue",
                               "Read Tag Failed",
                               "Corrupt Header",
                               "End of File",
                               "Read Length Failed",
                               "Type Check Failed",
                               "Incorrect Handler Type",
                               "Unknown QXBReturn Error"};
  for (unsigned status = 0; status < std::size(texts); ++status)
    EXPECT_STREQ(QXGetQXBReturnString(status), texts[status]);
  EXPECT_STREQ(QXGetQXBReturnString(~0u), texts[12]);
}

TEST(QXBUnknown, IsKeptPassedOnAndNeverHalf) {
  qxisstream in("abcd"s);
  const void* type = QXGetDataType<QXContainer>();
  const QXUnknownQXBData whole(in, type, 3, "Notes", 0);
  EXPECT_TRUE(whole);
  EXPECT_EQ(whole.GetTag(), "Notes");
  EXPECT_EQ(whole.GetType(), type);
  EXPECT_EQ(whole.GetData(), (std::vector<unsigned char>{'a', 'b', 'c'}));

  Reports reports;
  for (const unsigned long size : {2UL, 0xFFFFFFFFUL, ~0UL}) {
    qxisstream rest("d"s);
    const QXUnknownQXBData cut(rest, type, size, "Notes", 7);
    EXPECT_FALSE(cut);
    EXPECT_EQ(cut.GetCode(), 7);
    qxosstream out;
    EXPECT_FALSE(QXBWriteUnknown(out, cut));
    EXPECT_EQ(out.size(), 0u);
  }
  EXPECT_EQ(reports.GetErrorLog(), "");

  QXContainer object;
  int other = 0;
  QXAttachData(whole, object);
  QXAttachData(whole, &object);
  QXAttachData(whole, &other);
  QXAttachData(whole, static_cast<QXContainer*>(nullptr));
  QXContainer twice;
  twice.AddData<QXUnknownQXBData>("QXUnknownQXBData", whole);
  twice += twice;
  EXPECT_EQ(Describe(object), Describe(twice));

  const std::string stored = Hex("00 85 'Notes' 83 'abc'");
  for (std::size_t room = 0; room <= stored.size(); ++room) {
    RefusingStream out(room);
    EXPECT_EQ(QXBWriteUnknown(out, whole), room == stored.size());
    EXPECT_EQ(out.Taken(), stored.substr(0, room));
  }
}

}  // namespace

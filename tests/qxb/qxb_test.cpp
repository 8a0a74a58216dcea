#include <qxsystem/qxb/qxb.h>

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <tuple>

#include "support.h"

using namespace qxbtest;

namespace {

constexpr char EndInLength[] =
    "end of file reached in QXBReadDataLength(QXPlatform::qxistream &)\n";
constexpr char CorruptLength[] = "data size corrupt in QXBinary file\n";
const std::string badTag = "error occurred while reading tag in QXBinary file (len = ";

// The log of these warnings, each with its line end.
std::string Log(const std::string& warnings) {
  return warnings.empty() ? "" : "level = 4\n" + warnings;
}

template <class... Code>
std::string WriteTag(const std::string& name, Code... code) {
  return Written([&](qxostream& out) {
    return QXBWriteTag(out, name.c_str(), static_cast<unsigned char>(code)...);
  });
}

TEST(QXBLength, IsReadBackOrReported) {
  const std::tuple<const char*, unsigned long, unsigned long, const char*> cases[] = {
      {"80", 0, ~0UL, ""},
      {"FF", 127, ~0UL, ""},
      {"00 81", 128, ~0UL, ""},
      {"2C 82", 300, ~0UL, ""},
      {"7F 7F 7F 7F 8F", 0xFFFFFFFF, 0xFFFFFFFF, ""},
      {"7F 7F 7F 7F 7F 7F 7F 7F 7F 81", ~0UL, ~0UL, ""},
      {"00 00 80", 0, ~0UL, ""},
      {"00 00 00 00 90", 0, 0xFFFFFFFF, CorruptLength},
      {"00 00 00 00 00 00 00 00 00 82", 0, ~0UL, CorruptLength},
      {"00 00 00 00 00 00 00 00 00 00", 0, ~0UL, CorruptLength},
      {"7F 7F 7F", 0, ~0UL, EndInLength},
      {"", 0, ~0UL, EndInLength}};
  for (const auto& [bytes, value, max, warnings] : cases) {
    SCOPED_TRACE(bytes);
    Reports reports;
    const bool ends = warnings == EndInLength;
    qxosstream out;
    qxisstream in(Hex(bytes) + (ends ? "" : "\x81"));
    EXPECT_EQ(QXBReadDataLength(in, max), value);
    EXPECT_EQ(in.get(), ends ? -1 : 0x81);
    EXPECT_EQ(reports.GetErrorLog(), Log(warnings));
    EXPECT_TRUE(value == 0 || (QXBWriteDataLength(out, value) && out.str() == Hex(bytes)));
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
  for (unsigned code; published >> code;) published >> names[code];

  for (unsigned code = 1; code < 256; ++code) {
    SCOPED_TRACE(code);
    const std::string &name = names[code], stored(1, static_cast<char>(code)), longer = name + "x";
    qxisstream in(stored + "x");
    for (const bool peek : {true, false}) {
      char buffer[QXBTagBufferSize];
      std::memset(buffer, 'z', sizeof buffer);
      unsigned char read = 0;
      EXPECT_TRUE(peek ? QXBPeekTag(in, buffer, read) : QXBReadTag(in, buffer, read));
      EXPECT_EQ(in.tell(), peek ? 0 : 1);
      EXPECT_EQ(read, code);
      // Without a name the whole buffer is cleared.
      const std::size_t told = name.empty() ? sizeof buffer : name.size() + 1;
      EXPECT_EQ(std::string(buffer, told), name + std::string(told - name.size(), '\0'));
    }
    EXPECT_TRUE(name.empty() || WriteTag(name) == stored);
    EXPECT_EQ(QXIsInternalQXBTag(longer.c_str(), name.size()), !name.empty());
    EXPECT_FALSE(QXIsInternalQXBTag(longer.c_str(), longer.size()));
  }
  EXPECT_FALSE(QXIsInternalQXBTag(nullptr, 6));
}

TEST(QXBTag, IsWrittenOrRefusedWhole) {
  const std::string longest(1023, 'n');
  EXPECT_EQ(WriteTag("QXBas"), Hex("00 85 'QXBas'"));
  EXPECT_EQ(WriteTag(longest), Hex("00 7F 87") + longest);
  EXPECT_EQ(WriteTag(longest + "n") + WriteTag(""), "false: false: ");
  // With a code, the code decides on the form.
  EXPECT_EQ(WriteTag("QXBase", 0), Hex("00 86 'QXBase'"));
  EXPECT_EQ(WriteTag("any", 200) + WriteTag("", 57), Hex("C8 39"));
  EXPECT_EQ(WriteTag(longest + "n", 31), "false: ");
}

TEST(QXBTag, ReadsAndReports) {
  const std::tuple<const char*, bool, const char*, long, std::string> cases[] = {
      {"1F", false, "before", 1, ""},  // left alone
      {"00", false, "before", 1, ""},
      {"1F 80", true, "QXBase", 1, ""},
      {"00 82 'ab' 80", true, "ab", 4, ""},
      {"00 86 'QXBase' 80", true, "QXBase", 8, ""},
      {"00 82 'ab'", false, "ab", 4, ""},
      {"00 83 'ab'", false, "", 4, ""},
      {"00 80 'ab'", false, "", 2, badTag + "0)\n"},
      {"00 00 88 'ab'", false, "", 3, badTag + "1024)\n"},
      {"00 7F 7F 7F 7F 90", false, "", 6, CorruptLength + badTag + "0)\n"},
      {"00 00 00", false, "", 3, EndInLength + badTag + "0)\n"}};
  for (const auto& [bytes, more, expected, position, warnings] : cases) {
    SCOPED_TRACE(bytes);
    Reports reports;
    qxisstream in(Hex(bytes));
    char name[QXBTagBufferSize] = "before";
    unsigned char code = 99;
    EXPECT_EQ(QXBReadTag(in, name, code), more);
    EXPECT_EQ(code, Hex(bytes)[0]);
    EXPECT_STREQ(name, expected);
    EXPECT_EQ(in.tell(), position);
    EXPECT_EQ(reports.GetErrorLog(), Log(warnings));
  }
  char name[QXBTagBufferSize] = "before";
  qxisstream longTag(Hex("00 82 'ab' 80")), empty;
  EXPECT_TRUE(QXBPeekTag(longTag, name));  // does not decode it
  EXPECT_STREQ(name, "");
  EXPECT_FALSE(QXBPeekTag(empty, name) || QXBReadTag(empty, name));
}

TEST(QXBRecords, AreReadSteppedOverAndCounted) {
  // The status of reading and of skipping one record, the place behind the skip, all counted.
  const std::tuple<const char*, unsigned, unsigned, long, unsigned> cases[] = {
      {"", 6, 6, 0, 0},
      {"01 81 07  C8 82 0102  00 81 'x' 81 07", 0, 0, 3, 3},
      {"01 85 07", 9, 0, 3, 1},  // a payload that is cut short
      {"1F", 6, 6, 1, 0},        // a tag that ends the stream
      {"1F 00", 8, 8, 2, 0},     // a length that ends it
      {"01 80", 8, 8, 2, 0},
      {"01 80 01", 9, 9, 2, 0},
      {"01 00000000 90 07", 9, 9, 6, 0},  // a length of 2^32
      {"00 81 00 81 07", 6, 6, 3, 0}};    // a name that is empty
  for (const auto& [bytes, read, skip, position, records] : cases) {
    SCOPED_TRACE(bytes);
    Reports reports;
    QXContainer object;
    unsigned count = 99;
    qxisstream in(Hex(bytes)), one(Hex(bytes)), all(Hex(bytes));
    EXPECT_EQ(QXBinaryRead(in, object, QXBinaryIOHandler()), read);
    EXPECT_EQ(object.HasData("QXUnknownQXBData"), read == 0);
    EXPECT_EQ(QXBinarySkip(one), skip);
    EXPECT_EQ(one.tell(), position);
    EXPECT_EQ(QXBinaryCount(all, count), *bytes ? skip : 0);  // no record is no fault
    EXPECT_EQ(count, records);
  }
}

TEST(QXBByteOrder, SwapsUnlessAMarkIsOurs) {
  for (const unsigned mark : {0u, 1u, 63u, 0x101u, 0x33Fu, 0xFEu}) {
    EXPECT_EQ(QXBIntEndian(mark), mark % 256 != 1) << mark;
    EXPECT_EQ(QXGetFileEndian<QXHalfFloat>(mark), mark % 256 != 1) << mark;
    EXPECT_EQ(QXGetFileEndian<double>(mark), mark % 256 != 63) << mark;
  }
}

TEST(QXBStatus, HasAText) {
  std::string texts;
  for (unsigned status = 0; status <= 12; ++status)
    texts += QXGetQXBReturnString(status) + std::string("; ");
  EXPECT_EQ(texts,
            "Success; No Parent Class; Check Failed; Stream Failed; Incorrect Size; Continue; "
            "Read Tag Failed; Corrupt Header; End of File; Read Length Failed; Type Check Failed; "
            "Incorrect Handler Type; Unknown QXBReturn Error; ");
}

TEST(QXBUnknown, IsKeptPassedOnAndNeverHalf) {
  for (const unsigned long size : {3UL, 5UL, 0xFFFFFFFFUL, ~0UL}) {
    QXPushQXThrowHasNoMessages silent;
    qxisstream in(std::string("abcd"));
    const QXUnknownQXBData record(in, QXGetDataType<QXContainer>(), size, "Notes", 0);
    EXPECT_EQ(static_cast<bool>(record), size == 3);
    EXPECT_EQ(record.GetType(), QXGetDataType<QXContainer>());
    const std::string stored = size == 3 ? Hex("00 85 'Notes' 83 'abc'") : "";
    for (std::size_t room = 0; room <= stored.size(); ++room) {
      RefusingStream out(room);
      EXPECT_EQ(QXBWriteUnknown(out, record), size == 3 && room == stored.size());
      EXPECT_EQ(out.Taken(), stored.substr(0, room));
    }
    QXContainer object;
    int other = 0;
    QXAttachData(record, object);
    QXAttachData(record, &object);
    QXAttachData(record, &other);
    const std::string item = size == 3 ? "=(Notes,0,616263) " : "=(Notes,0,) ";
    EXPECT_EQ(Describe(object), "QXUnknownQXBData" + item + "QXUnknownQXBData" + item);
  }
}

}  // namespace

#include <qxsystem/qxb/qxb.h>

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>

#include "support.h"

using namespace qxbtest;

namespace {

constexpr char EndInLength[] =
    "end of file reached in QXBReadDataLength(QXPlatform::qxistream &)\n";
constexpr char CorruptLength[] = "data size corrupt in QXBinary file\n";

std::string BadTag(int length) {
  return "error occurred while reading tag in QXBinary file (len = " + std::to_string(length) +
         ")\n";
}

// The log of these warnings, each with its line end.
std::string Log(const std::string& warnings) {
  return warnings.empty() ? "" : "level = 4\n" + warnings;
}

template <class... Code>
std::string WriteTag(const std::string& name, Code... code) {
  qxosstream out;
  const bool done = QXBWriteTag(out, name.c_str(), static_cast<unsigned char>(code)...);
  return (done ? "" : "refused: ") + out.str();
}

TEST(QXBLength, IsReadBackOrReported) {
  const struct {
    const char* bytes;
    unsigned long value, max;
    const char* warnings;
  } cases[] = {{"80", 0, ~0UL, ""},
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
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bytes);
    Reports reports;
    const bool ends = c.warnings == EndInLength;
    qxisstream in(Hex(c.bytes) + (ends ? "" : "\x81"));
    EXPECT_EQ(QXBReadDataLength(in, c.max), c.value);
    EXPECT_EQ(in.get(), ends ? -1 : 0x81);
    EXPECT_EQ(reports.GetErrorLog(), Log(c.warnings));
    if (c.value == 0) continue;
    qxosstream out, narrow;
    EXPECT_TRUE(QXBWriteDataLength(out, c.value));
    EXPECT_TRUE(QXBWriteDataLength(narrow, static_cast<unsigned>(c.value)));
    EXPECT_EQ(out.str(), Hex(c.bytes));
    EXPECT_EQ(narrow.str(), Hex(c.value <= QXBMaxLength ? c.bytes : "7F 7F 7F 7F 8F"));
  }
  for (unsigned bytes = 1; bytes <= 9; ++bytes) {
    EXPECT_EQ(QXBDataLengthBytes((1UL << 7 * bytes) - 1), bytes);
    EXPECT_EQ(QXBDataLengthBytes(1UL << 7 * bytes), bytes + 1);
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
  constexpr bool (*peek)(qxistream&, char*, unsigned char&) = QXBPeekTag;
  constexpr bool (*read)(qxistream&, char*, unsigned char&) = QXBReadTag;
  std::string names[256];
  for (unsigned code; published >> code;) published >> names[code];

  for (unsigned code = 1; code < 256; ++code) {
    SCOPED_TRACE(code);
    const std::string &name = names[code], stored(1, static_cast<char>(code)), longer = name + "x";
    qxisstream in(stored + "x");
    for (const auto& [take, position] : {std::pair(peek, 0), std::pair(read, 1)}) {
      char buffer[QXBTagBufferSize];
      std::memset(buffer, 'z', sizeof buffer);
      unsigned char readCode = 0;
      EXPECT_TRUE(take(in, buffer, readCode));
      EXPECT_EQ(in.tell(), position);
      EXPECT_EQ(readCode, code);
      // Without a name the whole buffer is cleared.
      const std::size_t told = name.empty() ? sizeof buffer : name.size() + 1;
      EXPECT_EQ(std::string(buffer, told), name + std::string(told - name.size(), '\0'));
    }
    if (name.empty()) continue;
    EXPECT_EQ(WriteTag(name), stored);
    EXPECT_EQ(WriteTag(longer), Counted(std::string(1, '\0'), longer));
    EXPECT_TRUE(QXIsInternalQXBTag(longer.c_str(), name.size()));
    EXPECT_FALSE(QXIsInternalQXBTag(longer.c_str(), longer.size()));
  }
  EXPECT_FALSE(QXIsInternalQXBTag(nullptr, 6));
}

TEST(QXBTag, IsWrittenOrRefusedWhole) {
  const std::string longest(1023, 'n');
  EXPECT_EQ(WriteTag("QXBas"), Hex("00 85 'QXBas'"));
  EXPECT_EQ(WriteTag(longest), Hex("00 7F 87") + longest);
  EXPECT_EQ(WriteTag(longest + "n"), "refused: ");
  EXPECT_EQ(WriteTag(""), "refused: ");
  // With a code, the code decides on the form.
  EXPECT_EQ(WriteTag("QXBase", 0), Hex("00 86 'QXBase'"));
  EXPECT_EQ(WriteTag("any", 200), Hex("C8"));
  EXPECT_EQ(WriteTag("", 57), Hex("39"));
  EXPECT_EQ(WriteTag(longest + "n", 31), "refused: ");
}

TEST(QXBTag, ReadsAndReports) {
  const struct {
    const char* bytes;
    bool more;
    const char* name;
    long position;
    std::string warnings;
  } cases[] = {{"1F", false, "before", 1, ""},  // left alone
               {"00", false, "before", 1, ""},
               {"1F 80", true, "QXBase", 1, ""},
               {"00 82 'ab' 80", true, "ab", 4, ""},
               {"00 86 'QXBase' 80", true, "QXBase", 8, ""},
               {"00 82 'ab'", false, "ab", 4, ""},
               {"00 83 'ab'", false, "", 4, ""},
               {"00 80 'ab'", false, "", 2, BadTag(0)},
               {"00 00 88 'ab'", false, "", 3, BadTag(1024)},
               {"00 7F 7F 7F 7F 90", false, "", 6, CorruptLength + BadTag(0)},
               {"00 00 00", false, "", 3, EndInLength + BadTag(0)}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bytes);
    DripStream drops(Hex(c.bytes));
    qxisstream memory(Hex(c.bytes));
    for (qxistream* in : {static_cast<qxistream*>(&drops), static_cast<qxistream*>(&memory)}) {
      Reports reports;
      char name[QXBTagBufferSize] = "before";
      unsigned char code = 99;
      EXPECT_EQ(QXBReadTag(*in, name, code), c.more);
      EXPECT_EQ(code, Hex(c.bytes)[0]);
      EXPECT_STREQ(name, c.name);
      EXPECT_EQ(in->tell(), c.position);
      EXPECT_EQ(reports.GetErrorLog(), Log(c.warnings));
    }
  }
  char name[QXBTagBufferSize] = "before";
  qxisstream longTag(Hex("00 82 'ab' 80")), empty;
  EXPECT_TRUE(QXBPeekTag(longTag, name));  // does not decode it
  EXPECT_STREQ(name, "");
  EXPECT_FALSE(QXBPeekTag(empty, name));
  EXPECT_FALSE(QXBReadTag(empty, name));
}

TEST(QXBRecords, AreSteppedOverAndCounted) {
  const struct {
    const char* bytes;
    unsigned skip;  // status of one step
    long position;
    unsigned status;  // of the count
    unsigned count;
  } cases[] = {{"", 6, 0, 0, 0},
               {"01 81 07  C8 82 0102  00 81 'x' 81 07", 0, 3, 0, 3},
               {"01 85 07", 0, 3, 0, 1},        // a payload that is cut short
               {"01 81 07 1F", 0, 3, 6, 1},     // a tag that ends the stream
               {"01 81 07 1F 00", 0, 3, 8, 1},  // a length that ends it
               {"01 80", 8, 2, 8, 0},
               {"01 80 01", 9, 2, 9, 0},
               {"01 00000000 90 07", 9, 6, 9, 0},  // a length of 2^32
               {"00 81 00 81 07", 6, 3, 6, 0}};    // a name that is empty
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
  for (const unsigned mark : {0u, 1u, 63u, 0x101u, 0x33Fu, 0xFEu}) {
    SCOPED_TRACE(mark);
    EXPECT_EQ(QXBIntEndian(mark), mark % 256 != 1);
    EXPECT_EQ(QXGetFileEndian<unsigned short>(mark), mark % 256 != 1);
    EXPECT_EQ(QXGetFileEndian<QXHalfFloat>(mark), mark % 256 != 1);
    EXPECT_EQ(QXGetFileEndian<double>(mark), mark % 256 != 63);
  }
  EXPECT_EQ(QXGetHostEndian<long>(), 1);
  EXPECT_EQ(QXGetHostEndian<float>(), 63);
  EXPECT_TRUE(QXIsByteSwapRequired<short>(false) && !QXIsFloatByteSwapRequired(true));
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
    EXPECT_EQ(record.GetTag(), "Notes");
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
    const std::string item =
        std::string("QXUnknownQXBData=(Notes,0,") + (size == 3 ? "616263) " : ") ");
    EXPECT_EQ(Describe(object), item + item);
  }
  // In the form that each came in: long, a code alone, a long form of a short name.
  QXContainer object;
  qxisstream in(UnknownRecords());
  EXPECT_EQ(ReadAll(in, object, QXBinaryIOHandler()), 0u);
  qxosstream out;
  for (QXIter<QXBaseData> it = object.GetDataIter(QXUnknownQXBDataTagName()); it; ++it)
    EXPECT_TRUE(QXBWriteUnknown(out, static_cast<QXBaseDataT<QXUnknownQXBData>&>(*it).GetValue()));
  EXPECT_EQ(out.str(), UnknownRecords());
}

}  // namespace

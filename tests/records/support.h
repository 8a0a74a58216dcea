// What the tests and the fuzz targets of records share: bytes written out by
// hand, and a record of every feature.
#pragma once

#include <string>

#include <tests/qxb/support.h>

#include <qxsystem/records/recordbuffer.h>
#include <qxsystem/records/recordio.h>

namespace recordtest {

using namespace QXDataFlow;
using qxbtest::Reports;
using QXSystem::QXErrorLevel::Warning;

inline QXBytes Bytes(const std::string& hex) {
  const std::string bytes = qxbtest::Hex(hex);
  return {bytes.begin(), bytes.end()};
}

inline std::string ToHex(const QXBytes& bytes) {
  return qxbtest::ToHex(bytes.data(), bytes.size());
}

inline std::string ToText(const QXBytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

inline QXRecord Read(const std::string& hex) {
  QXRecord record;
  record.FromBytes(Bytes(hex));
  return record;
}

// A record of the Int field "n" with the value 5.
inline const char* const smallRecord =
    "09 'record.v1' 26 07 'version' 04 03 '1.0'"
    "06 'fields' 08 01 'n' 01 03 'Int' 00 04 'data' 03 01 01 05";

inline const char* const emptyRecord = "09 'record.v1' 0D 07 'version' 04 03 '1.0'";

// A field of every type, "a" to "o", with a value.
inline const std::string everyType =
    "09 'record.v1' 82 90 01 07 'version' 04 03 '1.0'"
    "06 'fields' 82 A8 00"
    "01 'a' 01 03 'Int' 00        01 'b' 02 06 'String' 00     01 'c' 03 05 'Float' 00"
    "01 'd' 04 04 'Blob' 00       01 'e' 05 04 'Bool' 00       01 'f' 06 06 'IntVec' 00"
    "01 'g' 07 09 'StringVec' 00  01 'h' 08 08 'FloatVec' 00   01 'i' 09 07 'BlobVec' 00"
    "01 'j' 0A 07 'BoolVec' 00    01 'k' 0B 06 'Record' 00     01 'l' 0C 09 'RecordVec' 00"
    "01 'm' 0D 05 'Range' 00      01 'n' 0E 0A 'JSONObject' 00 01 'o' 0F 04 'Link' 00"
    "04 'data' 82 C9 00"
    "01 02 D4FE"
    "02 02 'hi'"
    "03 08 000000000000F83F"
    "04 02 00FF"
    "05 01 00"
    "06 08 04 01 80 828000 81FF"
    "07 05 03 01'x' 80 00"
    "08 11 02 00000000000000C0 00000000000EF87F"
    "09 04 02 0107 80"
    "0A 04 03 01 80 00"
    "0B 31" +
    std::string(smallRecord) + "0C 1A 02" + emptyRecord +
    "80"
    "0D 1D '[1.000000,null,-1.0,0.000000]'"
    "0E 07 '{\"a\":1}'"
    "0F 07 '{\"b\":2}'";

// Options, attributes of all kinds, one with two values, and a source id.
inline const char* const withMetadata =
    "09 'record.v1' 61 07 'version' 04 03 '1.0'"
    "06 'fields' 0A 01 'a' 01 05 'Float' 01"
    "04 'meta' 3C"
    "01 02 84 0B000004 84 05000308"
    "04 84 01000002 01'c' 84 01000002 02'bb' 84 02000206 822C01 84 01000009 000000000000E03F"
    "00 00 01 84 01000001 02's1'";

// The Int field "a" without a value and with the child "k".
inline const std::string withChild =
    "09 'record.v1' 71 07 'version' 04 03 '1.0'"
    "06 'fields' 08 01 'a' 01 03 'Int' 00"
    "08 'children' 4A 01 48 01"
    "09 'record.v1' 3C 07 'version' 04 03 '1.0'"
    "06 'fields' 1B 09 '__qx__key' 02 06 'String' 00 01 'n' 01 03 'Int' 00"
    "04 'data' 06 02 01'k' 01 01 05";

inline const char* const withNull =
    "09 'record.v1' 25 07 'version' 04 03 '1.0'"
    "06 'fields' 08 01 'a' 01 03 'Int' 00 04 'data' 02 01 80";

inline const char* const withUserType =
    "09 'record.v1' 2B 07 'version' 04 03 '1.0'"
    "06 'fields' 0D 01 'u' 01 08 'ns:Thing' 00 04 'data' 03 01 01 AB";

// A section that no reader here knows, whose payload is no value of the format.
inline const char* const withUnknownSection =
    "09 'record.v1' 17 07 'version' 04 03 '1.0' 05 'later' 03 'xyz'";

inline const std::string goldenRecords[] = {smallRecord,  emptyRecord,       everyType,
                                            withMetadata, withChild,         withNull,
                                            withUserType, withUnknownSection};

inline const QXField<long> intA("a"), intN("n");
inline const QXField<std::string> stringB("b");

}  // namespace recordtest

// Records as JSON: what is read from any text, or from any bytes of a record, is
// written so that it reads as the same again.
//
// Once through is not enough: integers lose their upper half, and bytes that are
// no value become a zero.

#include <cstdint>
#include <stdexcept>
#include <string>

#include <qxsystem/core/error.h>
#include <qxsystem/records/recordjson.h>

#include "require.h"

using namespace QXDataFlow;

namespace {

// A type whose values are JSON texts.
class Verbatim : public QXFieldTypeHandler {
public:
  std::string GetName() const override { return "Verbatim"; }
  std::string BytesToJSON(const QXBytes& bytes) const override {
    return {bytes.begin(), bytes.end()};
  }
  QXBytes JSONToBytes(const std::string& json) const override { return {json.begin(), json.end()}; }
};

const bool ready = [] {
  QXSystem::QXThrow.SetLevel(QXSystem::QXErrorLevel::Quiet);
  QXFieldTypeHandlerRegistry::GetInstance().RegisterHandler(new Verbatim, 0);
  return true;
}();

std::string Rewritten(const std::string& text) {
  QXRecord record;
  REQUIRE(QXRecordFromJSON(record, text));
  return QXRecordToJSON(record);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QXRecord record;
  if (!QXRecordFromJSON(record, std::string(data, data + size))) record.FromBytes(data, size);
  try {
    const std::string text = QXRecordToJSON(record);
    if (text.empty()) return 0;  // records too deep in one another
    const std::string again = Rewritten(text);
    REQUIRE(Rewritten(again) == again);
  } catch (const std::length_error&) {
    // Bytes may claim more than there is; what was read from JSON never does.
  }
  return 0;
}

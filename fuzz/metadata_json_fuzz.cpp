// Metadata as JSON: what is read from any text is written so that it reads as the
// same again, in the place of other metadata and in addition to itself.

#include <cstdint>
#include <string>

#include <qxsystem/core/error.h>
#include <qxsystem/records/recordjson.h>

#include "require.h"

using namespace QXDataFlow;

namespace {

const bool ready = [] {
  QXSystem::QXThrow.SetLevel(QXSystem::QXErrorLevel::Quiet);
  return true;
}();

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QXFieldMeta meta, again;
  QXFieldMetaFromJSON(meta, std::string(data, data + size), /*clear=*/false);
  const std::string text = QXFieldMetaToJSON(meta);
  again.SetOption(QXMeta::GetValue("Flags.ID"));
  REQUIRE(QXFieldMetaFromJSON(again, text, /*clear=*/true));
  REQUIRE(QXFieldMetaToJSON(again) == text);
  REQUIRE(again.IsSubsetOf(meta) && meta.IsSubsetOf(again));
  REQUIRE(QXFieldMetaFromJSON(again, text, /*clear=*/false));
  REQUIRE(QXFieldMetaToJSON(again) == text);
  return 0;
}

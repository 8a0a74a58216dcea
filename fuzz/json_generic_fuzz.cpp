// JSON of generic data: what was read from any text is written so that it reads
// as the same again.

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/json/jsonhandler.h>

#include "require.h"

using namespace QXSystem;

namespace {

const bool ready = [] {
  QXThrow.SetLevel(QXErrorLevel::Quiet);
  return QXRegisterJSONHandler(QXInitContainerJSONHandler());
}();

// Whether items of one name have different types, which one array cannot show:
// a key that comes twice makes such.
bool IsMixed(const QXBase& object) {
  std::map<unsigned, const void*> types;
  for (QXIter<QXBaseData> item = object.GetDataIter(); item; ++item) {
    const void* type = item->GetDataType();
    if (types.emplace(item->GetTag(), type).first->second != type) return true;
    using List = std::vector<QXContainer>;
    List nested;
    if (item->Holds<List>()) nested = static_cast<QXBaseDataT<List>&>(*item).GetValue();
    if (item->Holds<QXContainer>())
      nested.push_back(static_cast<QXBaseDataT<QXContainer>&>(*item).GetValue());
    if (std::any_of(nested.begin(), nested.end(), IsMixed)) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  QXContainer object, again;
  QXJSONToBase(object, text);
  if (IsMixed(object)) return 0;
  const std::string written = QXBaseToJSON(object);
  REQUIRE(QXJSONToBase(again, written));
  REQUIRE(QXBaseToJSON(again) == written);

  rapidjson::Document document;
  if (!JSONParseHelper(document, text)) return 0;
  for (auto& member : document.GetObject()) {
    const auto holds = [&](auto reader) {
      const auto attribute = reader(document, member.name.GetString(), /*required=*/true);
      REQUIRE(attribute.found != attribute.failed);
      return attribute.found;
    };
    const bool number = holds(GetJSONDoubleAttr);
    REQUIRE(number || (!holds(GetJSONIntAttr) && !holds(GetJSONUnsignedAttr)));
    REQUIRE(number + holds(GetJSONStringAttr) + holds(GetJSONBoolAttr) + holds(GetJSONObjectAttr) +
                holds(GetJSONArrayAttr) <=
            1);
  }
  return 0;
}

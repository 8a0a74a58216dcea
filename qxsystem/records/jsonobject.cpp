#include <rapidjson/document.h>

#include <qxsystem/core/error.h>
#include <qxsystem/json/jsonhandler.h>
#include <qxsystem/records/types.h>

namespace QXDataFlow {

QXJSONObject::QXJSONObject(const std::string& text) {
  rapidjson::Document document;
  if (QXSystem::JSONParseHelper(document, text))
    text_ = text;
  else
    QXSystem::QXThrow.Warning("JSON object constructed with invalid string: " + text);
}

QXLinkObject::QXLinkObject(const std::string& text) : QXJSONObject(text) {}

}  // namespace QXDataFlow

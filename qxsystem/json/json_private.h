// What the library's own readers and writers of JSON share.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <rapidjson/document.h>

#include <qxsystem/json/jsonhandler.h>

namespace QXSystem {

/// Parses the text in place: `text` has `size` bytes and a zero byte behind
/// them, and the document refers to it from then on. Any JSON value is accepted
/// whose arrays and objects nest at most `depth` deep; anything else is told as
/// a warning and leaves the document null.
bool ParseInPlace(rapidjson::Document& document, char* text, std::size_t size,
                  std::size_t depth = QXMaxJSONNesting);

/// `ParseInPlace` for a document, whose top level is an object.
bool ParseObjectInPlace(rapidjson::Document& document, char* text, std::size_t size);

/// The JSON text of a node.
std::string JSONText(const rapidjson::Value& value);

/// Whether `text` is a JSON value that may stand where `writer` is now, or in
/// `levels` arrays yet to be opened there. If not, a warning tells why; an empty
/// text is none without one.
bool IsJSONText(const Writer& writer, const std::string& text, std::size_t levels = 0);

/// Writes a text as a JSON string. One so long that RapidJSON could not count
/// its bytes is replaced by an empty one, with a warning.
void WriteText(Writer& writer, std::string_view text);

/// Writes a number as `writer.Double` does, to the last character; in half the
/// time if it has many digits.
void WriteDouble(Writer& writer, double value);

/// Writes an object's data as a document of the type "container", and reads one
/// after a look at its version.
void WriteContainer(Writer& writer, const QXBase& object, unsigned int flags);
bool ReadContainer(QXBase& object, rapidjson::Value& value);

/// The type of a plain document and of nested containers.
constexpr const char* JSONContainerType = "container";

/// The text of a document that is being written.
class JSONOutput {
public:
  JSONOutput() : writer_(buffer_) {}

  Writer& GetWriter() { return writer_; }
  std::string GetText() const { return {buffer_.GetString(), buffer_.GetSize()}; }

private:
  rapidjson::StringBuffer buffer_;
  Writer writer_;
};

}  // namespace QXSystem

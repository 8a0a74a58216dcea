// JSON of generic data: any QXBase as a document, and back.
//
// What each form of the data can and cannot hold is in docs/json.md. Programs
// that write values of their own types as JSON include
// <qxsystem/json/jsonhandler.h> too.
#pragma once

#include <string>
#include <utility>

#include <qxsystem/core/base.h>
#include <qxsystem/core/export.h>

namespace QXSystem {

/// How deep arrays and objects may lie in one another in a JSON text that is
/// read or written, the outermost included.
constexpr unsigned QXMaxJSONNesting = 1024;

/// Flags of the writing functions; they look at no other bit.
namespace QXJSONFlag {
constexpr unsigned Escape = 0x800;  ///< write keys and texts through QXEscapeJSON
}

/// A value that nobody here could read, kept as the JSON text it had, to be
/// written back. Any JSON value, not only an object.
class QXSYSTEM_API JSONString {
public:
  JSONString() = default;

  /// Nothing is checked until it is written.
  explicit JSONString(std::string text) : text_(std::move(text)) {}

  const std::string& GetString() const { return text_; }

private:
  std::string text_;
};

extern template class QXBaseDataT<JSONString>;

/// The object's data as a JSON document of the type "container".
///
/// The data come in ascending order of their tag ids, those of one tag in the
/// order they have in the object; "qxhint" tells what JSON cannot show. An item
/// whose type has no JSON form and no handler is left out with a warning, as is
/// a JSONString that is no JSON text and whatever would nest too deep; of a text
/// of more than 700 MB an empty one is written, with a warning. Attached and
/// short-named data of the binary format are left out in silence, and so are an
/// item without a name and an empty JSONString.
QXSYSTEM_API std::string QXBaseToJSON(const QXBase& object, unsigned int flags = 0);

/// Replaces the object's data by those of a document, which is one that
/// `QXBaseToJSON` writes or any JSON object without a "type".
///
/// False, with a warning, for a text that is no JSON object, for a document of
/// another version, for a type that no handler knows and for data that cannot
/// be read. A text that cannot be parsed and a "type" that is no text leave the
/// object as it is; after any other failure it holds what was read until then.
QXSYSTEM_API bool QXJSONToBase(QXBase& object, std::string text);

/// Replaces every "<" by "&lt;" and every ">" by "&gt;"; an ampersand stays, so
/// that a text that had such a sequence comes back with the character instead.
QXSYSTEM_API void QXEscapeJSON(std::string& text);

/// Replaces every "&lt;" by "<" and every "&gt;" by ">".
QXSYSTEM_API void QXUnescapeJSON(std::string& text);

/// Whether documents of this version can be read: what stands before its first
/// point is "0". If not, a warning.
QXSYSTEM_API bool compatibleJSONVersion(const std::string& version);

/// The largest multiple of 1 / `factor` that is not above `value`. Where value
/// times factor is 2^52 or more in magnitude, and has no fraction to drop, it is
/// only divided again; an infinite product gives `value`.
QXSYSTEM_API double QXTruncate(double value, int factor);

}  // namespace QXSystem

// What code needs that reads or writes JSON itself: handlers for types of its
// own, the walks over an object's data, and readers of single attributes.
//
// This header includes RapidJSON.
#pragma once

#include <map>
#include <string>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <qxsystem/core/base.h>
#include <qxsystem/core/export.h>
#include <qxsystem/json/json.h>

namespace QXSystem {

/// Writes JSON text to a rapidjson::StringBuffer, without blanks. NaN and the
/// infinities become NaN, Infinity and -Infinity, which `JSONParseHelper` reads.
using Writer =
    rapidjson::Writer<rapidjson::GenericStringBuffer<rapidjson::UTF8<>>, rapidjson::UTF8<>,
                      rapidjson::UTF8<>, rapidjson::CrtAllocator, rapidjson::kWriteNanAndInfFlag>;

/// Reads and writes values of one type, and lists of them.
///
/// A value is a JSON object that has the name of its type in "type".
class QXSYSTEM_API QXJSONHandlerBase {
public:
  virtual ~QXJSONHandlerBase();

  /// Reads an object, whose "type" is this handler's, and stores it in `holder`
  /// under `key`; false when it cannot. Of a whole document `key` is the type.
  virtual bool Read(QXBase& holder, std::string key, rapidjson::Value& value) = 0;

  /// The same for an array of such objects: each is an item of its own if
  /// `multi` is set, else they are one item.
  virtual bool VRead(QXBase& holder, std::string key, rapidjson::Value& value, bool multi) = 0;

  /// Writes exactly one JSON value, an object with "type", for an item of
  /// `GetDataType`. `flags` is what `GetFlavor` gives.
  virtual void Write(QXBaseData* item, Writer& writer, unsigned int flags) = 0;

  /// Writes exactly one JSON array for an item of `GetVDataType`.
  virtual void VWrite(QXBaseData* item, Writer& writer, unsigned int flags) = 0;

  /// The name that stands in "type".
  virtual std::string GetJsonType() = 0;

  /// The identity of the type of a single value.
  virtual const void* GetDataType() = 0;

  /// The identity of the type of a list in one item; null if there is none.
  virtual const void* GetVDataType() = 0;

  /// The flags for `Write` and `VWrite`; those of the document are not passed
  /// on.
  virtual unsigned int GetFlavor() = 0;
};

/// The handlers of the process.
///
/// They are borrowed and must live as long as documents are read and written.
/// There is no lock: all handlers are added before several threads look them
/// up.
class QXSYSTEM_API QXJSONHandlerRegistry {
public:
  /// Adds a handler under its type name and, where they are not null, its two
  /// identities. It takes the place of what was there under the same key.
  void AddHandler(QXJSONHandlerBase* handler);

  /// The handler for a type name, for a type of single values, for a type of
  /// lists; null if there is none. A name that is asked for is not interned; a null
  /// one is empty.
  QXJSONHandlerBase* GetByType(const std::string& jsonType) const;
  QXJSONHandlerBase* GetByType(const char* jsonType) const;
  QXJSONHandlerBase* GetByType(const void* dataType) const;
  QXJSONHandlerBase* GetByVType(const void* dataType) const;

private:
  std::map<unsigned, QXJSONHandlerBase*> byName_;  // by the tag id of the name
  std::map<const void*, QXJSONHandlerBase*> byType_;
  std::map<const void*, QXJSONHandlerBase*> byVType_;
};

QXSYSTEM_API QXJSONHandlerRegistry& QXGetJSONHandlerRegistry();

/// Adds a handler to the registry. True.
QXSYSTEM_API bool QXRegisterJSONHandler(QXJSONHandlerBase* handler);

/// The lookups of the registry.
QXSYSTEM_API QXJSONHandlerBase* QXGetJSONHandlerByType(const std::string& jsonType);
QXSYSTEM_API QXJSONHandlerBase* QXGetJSONHandlerByType(const char* jsonType);
QXSYSTEM_API QXJSONHandlerBase* QXGetJSONHandlerByType(const void* dataType);
QXSYSTEM_API QXJSONHandlerBase* QXGetJSONVHandlerByType(const void* dataType);

/// Reads and writes QXContainer and std::vector<QXContainer>, the type
/// "container". Containers are neither read nor written unless one is
/// registered.
class QXSYSTEM_API QXContainerJSONHandler : public QXJSONHandlerBase {
public:
  ~QXContainerJSONHandler() override;

  bool Read(QXBase& holder, std::string key, rapidjson::Value& value) override;
  bool VRead(QXBase& holder, std::string key, rapidjson::Value& value, bool multi) override;
  void Write(QXBaseData* item, Writer& writer, unsigned int flags) override;
  void VWrite(QXBaseData* item, Writer& writer, unsigned int flags) override;
  std::string GetJsonType() override;
  const void* GetDataType() override;
  const void* GetVDataType() override;
  unsigned int GetFlavor() override;
};

/// A new QXContainerJSONHandler, which the caller owns; to be registered.
QXSYSTEM_API QXJSONHandlerBase* QXInitContainerJSONHandler();

/// Writes the object's data, as `QXBaseToJSON` does, and "qxhint" into a JSON
/// object that is open already.
///
/// `reserved` are `count` keys that the caller writes and reads itself, sorted
/// by their bytes; "qxhint" belongs among them. Data of these names get an
/// underscore in front, and lose it when they are read. With a null `reserved`
/// no key is changed or skipped, "qxhint" is then read as data too.
QXSYSTEM_API void QXGenBaseDataJSON(Writer& writer, const QXBase& object,
                                    const char* const* reserved, unsigned long count,
                                    unsigned int flags);

/// Reads data from the members of a JSON object and sets them in `object`,
/// which keeps what else it has. A value whose type does not fit what is there
/// is reported and left out.
///
/// False for a "qxhint" that is no object, an array whose elements differ in
/// kind and a value that its handler refuses, with a warning; what stands before
/// it has been read.
QXSYSTEM_API bool QXParseBaseDataJSON(QXBase& object, rapidjson::Value& value,
                                      const char* const* reserved, unsigned long count);

/// Parses a text whose top level is an object.
///
/// Numbers are rounded correctly; NaN, Infinity and -Infinity are numbers. False,
/// with a warning, for anything that is no JSON, for a zero byte, for arrays
/// and objects nested deeper than QXMaxJSONNesting, for a number beyond the
/// range of double, and for 2 GiB or more; the document is then null. No depth
/// of nesting costs stack. The document holds all it needs of the text.
QXSYSTEM_API bool JSONParseHelper(rapidjson::Document& document, const char* text);
QXSYSTEM_API bool JSONParseHelper(rapidjson::Document& document, const std::string& text);

/// What an attribute reader found. `found`: the key is there with a value of the
/// right type, which is in `value`. `failed`: the value has another type, or a
/// required key is absent; a warning told which. With neither, an optional key
/// is absent.
template <class T>
struct QXJSONAttr {
  bool found = false;
  bool failed = false;
  T value{};
};

/// Read the attribute `key` of a JSON object. What is no object has no
/// attributes.
QXSYSTEM_API QXJSONAttr<std::string> GetJSONStringAttr(rapidjson::Value& object, const char* key,
                                                       bool required);
QXSYSTEM_API QXJSONAttr<bool> GetJSONBoolAttr(rapidjson::Value& object, const char* key,
                                              bool required);

/// Takes every integer that fits 64 bits, signed or not, and gives its lower 32
/// bits. A number with a point or an exponent is none.
QXSYSTEM_API QXJSONAttr<int> GetJSONIntAttr(rapidjson::Value& object, const char* key,
                                            bool required);

/// Takes an integer from 0 to 4294967295.
QXSYSTEM_API QXJSONAttr<unsigned int> GetJSONUnsignedAttr(rapidjson::Value& object, const char* key,
                                                          bool required);

/// Takes any number.
QXSYSTEM_API QXJSONAttr<double> GetJSONDoubleAttr(rapidjson::Value& object, const char* key,
                                                  bool required);

/// Give the node in the document; null unless found.
QXSYSTEM_API QXJSONAttr<rapidjson::Value*> GetJSONObjectAttr(rapidjson::Value& object,
                                                             const char* key, bool required);
QXSYSTEM_API QXJSONAttr<rapidjson::Value*> GetJSONArrayAttr(rapidjson::Value& object,
                                                            const char* key, bool required);

}  // namespace QXSystem

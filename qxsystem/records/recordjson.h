// Records, and the metadata of fields, as JSON.
//
// The text shows names, types, metadata, values and children, and reads back as
// a record with the same of them; docs/json.md says what it cannot hold.
#pragma once

#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/records/datarecord.h>
#include <qxsystem/records/field.h>

namespace QXDataFlow {

/// The record as a JSON document.
///
/// Left out are the record's own metadata but for the source id, sections of
/// the byte format that are not known here, readonly flags, and options and
/// attributes that the catalogue has no name for. A field without a value, and
/// one whose bytes are no value of its type, shows the zero value of its type;
/// a user type shows nothing then, nor without a handler. The texts of JSON
/// objects, links and user values go into the document as they are: one that is
/// no JSON, or nests too deep where it would stand, is left out with a warning.
///
/// A record with others more than QXMaxNesting deep inside gives "", with a
/// warning. Bytes with vectors of texts or blobs that claim more than there is
/// throw std::length_error, as they do when the value is asked for.
QXSYSTEM_API std::string QXRecordToJSON(const QXRecord& record);

/// Replaces `record` by what a document says. Fields get indices in the order
/// they stand in; integers are read as 32 bits, but for those in vectors.
///
/// False, with a warning, for a text that is no JSON object, which leaves
/// `record` as it is, and for a document without the version or with a source
/// id or fields of a wrong type, which leaves what was read until then. A field
/// that cannot be read, or has records more than QXMaxNesting deep inside, is
/// left out with a warning; what is no object ends the fields.
QXSYSTEM_API bool QXRecordFromJSON(QXRecord& record, const std::string& text);

/// The options and attributes as a JSON object, those without a name in the
/// catalogue left out. Of an attribute with several values the first stands in
/// the place of each; only of a first one that is much longer than the others, in
/// a text beyond 64 KiB, some places are left out.
QXSYSTEM_API std::string QXFieldMetaToJSON(const QXFieldMeta& meta);

/// Adds what a JSON object says to `meta`, which is cleared first if `clear`: sets
/// options, and replaces attributes. Names that are not known, and values of
/// another type than the attribute's, are passed over.
///
/// False, with a warning, for a text that is no JSON object, which leaves
/// `meta` as it is, and if the options or the attributes are no array.
QXSYSTEM_API bool QXFieldMetaFromJSON(QXFieldMeta& meta, const std::string& text, bool clear);

}  // namespace QXDataFlow

// Records in memory and in streams.
//
// A record stream holds binary records back to back, or JSON records one per
// line. Nothing in it tells which; the caller says so.
#pragma once

#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/records/datarecord.h>

namespace QXPlatform {
class qxistream;
class qxostream;
}  // namespace QXPlatform

namespace QXDataFlow {

using QXPlatform::qxistream;
using QXPlatform::qxostream;

/// The record in the byte format.
QXSYSTEM_API QXBytes QXRecordToBytes(const QXRecord& record);

/// `QXRecord::FromBytes`; false for no bytes, and `record` stays as it is.
QXSYSTEM_API bool QXRecordFromBytes(QXRecord& record, const QXBytes& bytes);

/// Takes the bytes of one record off a stream; none at its end, and for one that
/// is cut off or has a tag of 12 bytes or more.
QXSYSTEM_API QXBytes QXReadRecordBytes(qxistream& in);

/// Writes a record behind those that are there: `format` is "binary" or "qxb",
/// which are the same, or "json". False for any other, and when the stream
/// refuses bytes.
QXSYSTEM_API bool QXWriteRecord(qxostream& out, const QXRecord& record, const std::string& format);

/// Replaces `record` by the next one of the stream. False at its end, for
/// damage and for another format.
QXSYSTEM_API bool QXReadRecord(QXRecord& record, qxistream& in, const std::string& format);

}  // namespace QXDataFlow

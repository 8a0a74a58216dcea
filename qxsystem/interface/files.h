// Settings as text: parameter files, the settings in force, the defaults, and a
// description of an interface in JSON.
#pragma once

#include <string>

#include <qxsystem/core/export.h>

namespace QXPlatform {
class qxistream;
class qxostream;
}  // namespace QXPlatform

namespace QXSystem {

class QXInterface;
class QXWriter;

/// Reads settings, a line "key value ..." each, to the end of `in`. Values with
/// blanks stand in quotes, double or single; lines that begin with "#" are
/// comments.
///
/// Lines for a parameter that has a value already are passed over, unless
/// `overwrite` lets them replace it. Faults are reported at `level` and make the
/// result false; the lines behind them are read all the same.
[[nodiscard]] QXSYSTEM_API bool QXParseParameterFile(QXInterface& interface,
                                                     QXPlatform::qxistream& in, bool overwrite,
                                                     unsigned level);

/// Writes the values of all parameters as a parameter file. With `all`, the
/// parameters without a value that are not hidden follow as comments. `mode`, if
/// not empty, is told in a comment.
///
/// Read back, the file gives the same settings, but for texts that are empty or
/// hold quotes or line ends: nothing is escaped. False when the stream refused
/// bytes.
QXSYSTEM_API bool QXWriteSettings(const QXInterface& interface, QXPlatform::qxostream& out,
                                  bool all, const std::string& mode);

/// Writes the defaults of all parameters that are not hidden, constants by their
/// names.
QXSYSTEM_API bool WriteDefaultsImpl(const QXInterface& interface, QXWriter& writer);

/// Writes a description of the interface in JSON, hidden parameters included.
/// Control characters are not escaped: in a name, brief or detail they make it
/// unreadable to strict readers. False when the stream refused bytes.
QXSYSTEM_API bool QXWriteJSON(const QXInterface& interface, QXPlatform::qxostream& out);

}  // namespace QXSystem

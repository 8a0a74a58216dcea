// Between options, the class form of a program's settings, and the interface of
// a command line.
//
//     int main(int argc, char** argv) {
//       FitOptions options;  // derived from QXOptions
//       if (const unsigned status = QXConfigureOpts(options, argc, argv, /*write=*/false))
//         return status == QXOptsStatus::Help ? 0 : 1;
#pragma once

#include <qxsystem/core/export.h>

namespace QXSystem {

class QXInterface;
class QXOptions;

/// What QXConfigureOpts answers.
namespace QXOptsStatus {
constexpr unsigned Done = 0;
constexpr unsigned Help = 1;     ///< help was asked for, and printed
constexpr unsigned Failure = 2;  ///< and told
}  // namespace QXOptsStatus

/// Makes `interface` a view of `options`: name, brief, priority and detail, and
/// copies of the parameters with their values; every child becomes a category.
/// What the interface holds already stays.
QXSYSTEM_API bool QXConfigureItf(QXInterface& interface, const QXOptions& options);

/// Takes the values of `interface` over into `options`; a parameter without value
/// there keeps the one it has here. Values go over as text and are loaded again,
/// files too.
///
/// A category is taken to the child that bears its name, else to the first options
/// of that name further below; where there are none, its parameters are looked for
/// in the options that its parent was taken to, so that flat options can read a
/// tree.
/// Ends with false at the first value that a parameter does not take.
QXSYSTEM_API bool QXUpdateOpts(QXOptions& options, const QXInterface& interface);

/// Parses a command line as QXParseCommandLine does, at QXErrorLevel::Error, and
/// fills `options`. The result is of QXOptsStatus, unless the process ends on the
/// way: with an error while errors are strict, or with "--version".
///
/// Help is printed on standard error. With `write` the settings are printed on
/// standard output, and a line end on standard error. One parse for an object:
/// what has a value counts as given.
[[nodiscard]] QXSYSTEM_API unsigned QXConfigureOpts(QXOptions& options, int argc, char** argv,
                                                    bool write);

}  // namespace QXSystem

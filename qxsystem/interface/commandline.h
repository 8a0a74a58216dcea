// Command lines: from argc and argv to the settings of an interface.
//
// docs/command-line.md is the guide for both sides of it.
#pragma once

#include <qxsystem/core/export.h>

namespace QXPlatform {
class qxostream;
}

namespace QXSystem {

class QXInterface;

/// Assigns the arguments behind the first to the parameters of `interface` and
/// loads them: "-key value", then arguments without key, parameter files last.
///
/// `version` is what "--version" prints on standard output before it ends the
/// process with status 0; null is "version not set". `requirements` is the text
/// for `QXHasRequired`, or null. Faults are reported at `level`, which at
/// QXErrorLevel::Error normally ends the process; otherwise the first complaint
/// ends the parse, with false, and what was set before it stays. `checkHelp`:
/// `QXCheckHelp` is asked first, on standard error, and when it has answered the
/// process ends with status 0.
///
/// Parse once: what has a value counts as given, so clear values before a
/// second parse.
[[nodiscard]] QXSYSTEM_API bool QXParseCommandLine(QXInterface& interface, const char* version,
                                                   int argc, char** argv,
                                                   const unsigned char* requirements,
                                                   unsigned level, bool checkHelp);
[[nodiscard]] QXSYSTEM_API bool QXParseCommandLine(QXInterface& interface, int argc, char** argv,
                                                   const unsigned char* requirements,
                                                   unsigned level, bool checkHelp);

/// Parses the command line of a program whose keys are switches of one letter:
/// "-ab" is "-a -b", and the first argument without "-" ends the switches.
///
/// Every parameter must be a bool that is false by default, with a key and
/// aliases of one letter behind a "-", or be keyless; else an Error tells, and
/// the result is false. Neither help nor "--unset" nor parameter files. Unlike
/// the full parser it goes on after a complaint, to report all it can.
[[nodiscard]] QXSYSTEM_API bool QXParseCommandLineLW(QXInterface& interface, const char* version,
                                                     int argc, char** argv,
                                                     const unsigned char* requirements,
                                                     unsigned level);
[[nodiscard]] QXSYSTEM_API bool QXParseCommandLineLW(QXInterface& interface, int argc, char** argv,
                                                     const unsigned char* requirements,
                                                     unsigned level);

/// Answers command lines that ask for a description instead of a run; true when
/// this was one, and the program should stop.
///
/// "--help", alone or with a topic and a width, goes to `out`, and so does the
/// answer to no arguments at all where `exitOnEmpty` and some parameter is
/// required; "--itf", "--json" and "--latex" go to standard output. Lines are as
/// wide as COLUMNS in the environment says, or 80 characters.
[[nodiscard]] QXSYSTEM_API bool QXCheckHelp(const QXInterface& interface, int argc, char** argv,
                                            bool exitOnEmpty, QXPlatform::qxostream& out);

}  // namespace QXSystem

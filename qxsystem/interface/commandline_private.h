// What the parsers of command lines share.
#pragma once

#include <string>
#include <vector>

#include <qxsystem/core/datatype.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter.h>

namespace QXSystem {

/// The parameters that may do without a key, in their order. False, after
/// Errors, when their numbers are not 1, 2, 3 ... or another than the last is a
/// list; all are collected even then.
bool GetKeylessParameters(const QXInterface& interface, std::vector<QXParameter*>& keyless);

/// Ends the process, with status 0, after what was printed.
[[noreturn]] void EndAfterAnswer();

/// Prints a program's version on standard output and ends the process.
[[noreturn]] void PrintVersionAndEnd(const char* version);

inline bool IsBool(const QXParameter& parameter) {
  return parameter.TypedParameterTypeID() == QXGetDataType<QXTypedParameter<bool>>();
}

}  // namespace QXSystem

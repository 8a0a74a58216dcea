// What the parsers of command lines share.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <qxsystem/core/datatype.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter.h>

namespace QXSystem {

/// What a parser is given, and how far it has come.
struct CommandLineParser {
  CommandLineParser(QXInterface& interface, const char* version, int argc, char** argv,
                    unsigned level)
      : interface_(interface),
        parameters_(interface),
        version_(version),
        arguments_(argv + std::clamp(argc, 0, 1), argv + std::max(argc, 0)),
        level_(level) {}

  QXInterface& interface_;
  const ParameterIndex parameters_;
  const char* const version_;
  const Texts arguments_;  // behind the program's name
  const unsigned level_;
  std::size_t at_ = 0;  // the next argument
};

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

// What every example program needs: its settings, whole files, an end after a
// fault, and somebody to be told how far it is.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include <qxsystem/interface/parameter.h>
#include <qxsystem/util/consoletracer.h>
#include <qxsystem/util/qxtracerbase.h>
#include <qxsystem/util/statusfiletracer.h>

/// Ends the program with a message and status 1.
[[noreturn]] void Fail(const std::string& what);

/// The setting of a parameter of a QXInterface or of QXOptions: what the user
/// gave, else the parameter's default, else `fallback`.
template <class T, class Tree>
T Setting(const Tree& tree, const std::string& key, T fallback = T()) {
  QXSystem::QXGetSetting(tree, key, fallback);
  return fallback;
}

/// All bytes of a file. One that cannot be read ends the program.
std::string ReadFile(const std::string& name);

/// Makes a file of these bytes. One that cannot be written ends the program.
void WriteFile(const std::string& name, const void* bytes, std::size_t size);

/// Whom a program tells how far it is: the reader of a status file, if one is
/// named, else whoever looks at the terminal, else nobody. Every task is a Push
/// and a Pop.
class Progress {
public:
  explicit Progress(const std::string& statusFile);

  operator QXSystem::QXTracerBase&() { return *tracer_; }

private:
  std::optional<QXSystem::QXStatusFileTracer> file_;
  std::optional<QXSystem::QXConsoleProgressTracer> console_;
  QXSystem::QXTracerBase* tracer_ = &QXSystem::QXNoTracer;
};

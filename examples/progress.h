// What the example programs share: who is told how far they are.
#pragma once

#include <optional>
#include <string>

#include <qxsystem/util/consoletracer.h>
#include <qxsystem/util/qxtracerbase.h>
#include <qxsystem/util/statusfiletracer.h>

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

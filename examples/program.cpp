#include "program.h"

#include <unistd.h>

#include <cstdlib>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

using namespace QXPlatform;
using namespace QXSystem;

void Fail(const std::string& what) {
  QXThrow.Fatal(what);
  std::abort();  // not reached
}

std::string ReadFile(const std::string& name) {
  qxifstream in(name);
  if (!in) Fail(name + ": cannot be read");
  std::string all;
  in.read(all);
  return all;
}

void WriteFile(const std::string& name, const void* bytes, std::size_t size) {
  qxofstream out(name);
  out.write(static_cast<const unsigned char*>(bytes), size);
  // What the disk refuses may show no earlier than here.
  if (!out.close()) Fail(name + ": cannot be written");
}

Progress::Progress(const std::string& statusFile) {
  constexpr float statusInterval = 0.5;  // seconds
  if (!statusFile.empty())
    tracer_ = &static_cast<QXTracerBase&>(file_.emplace(statusFile, statusInterval));
  else if (::isatty(STDERR_FILENO))
    tracer_ = &console_.emplace();
}

#include "progress.h"

#include <unistd.h>

using namespace QXSystem;

Progress::Progress(const std::string& statusFile) {
  constexpr float statusInterval = 0.5;  // seconds
  if (!statusFile.empty())
    tracer_ = &static_cast<QXTracerBase&>(file_.emplace(statusFile, statusInterval));
  else if (::isatty(STDERR_FILENO))
    tracer_ = &console_.emplace();
}

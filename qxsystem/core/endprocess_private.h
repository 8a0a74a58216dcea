// The one way in which the library ends the process.
#pragma once

namespace QXSystem {

/// Calls `exit` with `status`. Two threads must never be in `exit` at once, so
/// the first to come decides the status and all others wait here for the end.
[[noreturn]] void EndProcess(int status);

}  // namespace QXSystem

// The main thread: the one that loaded the library.
#pragma once

#include <thread>

namespace QXSystem {

/// Set before any other static of the library is constructed.
extern std::thread::id g_mainThreadId;

}  // namespace QXSystem

// The main thread: the one that ran the static initialisers of the library.
#pragma once

#include <thread>

namespace QXSystem {

/// Set before any other static of the library is constructed.
extern std::thread::id g_mainThreadId;

}  // namespace QXSystem

// Counts the heap that a test program has in use through operator new, by blocks as
// large as they really are. It replaces the operators: one source of a program
// includes it.
#pragma once

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

static std::atomic<std::size_t> inUse, peak;

// Not inlined, where a compiler would see malloc go with delete and warn.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* block = std::malloc(size != 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  const std::size_t now = inUse += malloc_usable_size(block);
  if (now > peak) peak = now;
  return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  inUse -= malloc_usable_size(block);
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

// What the fuzz targets of the binary format share.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <tests/qxb/support.h>

using namespace qxbtest;

// Damage is told by messages, of which the fuzzer makes millions.
inline const bool quiet = [] {
  QXThrow.SetLevel(QXErrorLevel::Quiet);
  QXThrow.SetStrict(false);
  return true;
}();

// Stops the fuzzer at an input that breaks a promise.
#define REQUIRE(promise)                                                       \
  do {                                                                         \
    if (promise) break;                                                        \
    std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #promise); \
    std::abort();                                                              \
  } while (false)

// The check of the fuzz targets.
#pragma once

#include <cstdio>
#include <cstdlib>

// Stops the fuzzer at an input that breaks a promise.
#define REQUIRE(promise)                                                       \
  do {                                                                         \
    if (promise) break;                                                        \
    std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #promise); \
    std::abort();                                                              \
  } while (false)

// Checking UTF-8 in two ways of the same result: character by character, and
// 32 bytes at a time.
#pragma once

#include <cstddef>

namespace QXSystem {

// Whether the `n` bytes at `text` are whole characters that QXIsValidUTF8 takes.
bool IsUtf8Portable(const unsigned char* text, std::size_t n);

// The same for processors with AVX2, and no others.
__attribute__((target("avx2"))) bool IsUtf8Avx2(const unsigned char* text, std::size_t n);

}  // namespace QXSystem

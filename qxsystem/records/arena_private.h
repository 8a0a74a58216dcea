// Memory that is taken in pieces and given back at once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace QXDataFlow {

/// Gives out memory that stays where it is until `Clear`, aligned for any type.
/// Small pieces share chunks, which grow with their number; a large one has a
/// chunk of its own.
class Arena {
public:
  Arena() = default;
  ~Arena() { Clear(); }
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  /// `size` bytes, not initialised.
  unsigned char* Take(std::size_t size) {
    constexpr std::size_t unit = alignof(std::max_align_t);
    size = (size + unit - 1) / unit * unit;
    if (size > left_) return TakeChunk(size);
    left_ -= size;
    return std::exchange(at_, at_ + size);
  }

  /// Sees to it that pieces of `size` bytes in all come from one chunk, if none
  /// of them is large.
  void Reserve(std::size_t size) {
    if (size > left_) UseChunk(size);
  }

  void Clear() {
    while (chunks_ != nullptr) ::operator delete(std::exchange(chunks_, chunks_->next));
    at_ = nullptr;
    left_ = 0;
    chunkSize_ = FirstChunk;
  }

private:
  struct alignas(std::max_align_t) Chunk {
    Chunk* next;
  };
  static constexpr std::size_t FirstChunk = 512, LargestChunk = 8192;

  unsigned char* AddChunk(std::size_t size) {
    chunks_ = new (::operator new(sizeof(Chunk) + size)) Chunk{chunks_};
    return reinterpret_cast<unsigned char*>(chunks_ + 1);
  }

  void UseChunk(std::size_t size) {
    at_ = AddChunk(size);
    left_ = size;
  }

  unsigned char* TakeChunk(std::size_t size) {
    if (size > chunkSize_ / 2) return AddChunk(size);
    UseChunk(chunkSize_);
    chunkSize_ = std::min(2 * chunkSize_, LargestChunk);
    return Take(size);
  }

  Chunk* chunks_ = nullptr;
  unsigned char* at_ = nullptr;  // of the chunk in use, where `left_` bytes are free
  std::size_t left_ = 0;
  std::size_t chunkSize_ = FirstChunk;  // of the next one
};

}  // namespace QXDataFlow

// Memory that is taken in pieces and given back at once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace QXDataFlow {

/// Gives out memory that stays where it is until `Clear`. Small pieces share
/// chunks, which grow with their number; a large one has a chunk of its own.
class Arena {
public:
  Arena() = default;
  ~Arena() { Clear(); }
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  /// `size` bytes, not initialised. They are aligned for any type if the sizes
  /// of all pieces are multiples of that.
  unsigned char* Take(std::size_t size) {
    if (size > left_) return TakeChunk(size);
    left_ -= size;
    return std::exchange(at_, at_ + size);
  }

  void Swap(Arena& other) {
    std::swap(chunks_, other.chunks_);
    std::swap(at_, other.at_);
    std::swap(left_, other.left_);
    std::swap(chunkSize_, other.chunkSize_);
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
  static constexpr std::size_t FirstChunk = 240, LargestChunk = 4096;

  unsigned char* AddChunk(std::size_t size) {
    chunks_ = new (::operator new(sizeof(Chunk) + size)) Chunk{chunks_};
    return reinterpret_cast<unsigned char*>(chunks_ + 1);
  }

  unsigned char* TakeChunk(std::size_t size) {
    if (size > chunkSize_ / 2) return AddChunk(size);
    at_ = AddChunk(chunkSize_);
    left_ = chunkSize_ - size;
    chunkSize_ = std::min(2 * chunkSize_, LargestChunk);
    return std::exchange(at_, at_ + size);
  }

  Chunk* chunks_ = nullptr;
  unsigned char* at_ = nullptr;  // of the chunk in use, where `left_` bytes are free
  std::size_t left_ = 0;
  std::size_t chunkSize_ = FirstChunk;  // of the next one
};

}  // namespace QXDataFlow

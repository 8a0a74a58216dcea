// Scratch memory: from the stack when there is little of it, else from the heap.
#pragma once

#include <cstddef>
#include <cstdint>

#include <qxsystem/platform/export.h>

namespace QXPlatform {

/// The most bytes of scratch memory that the stack gives, few against a thread's
/// whole stack; for more the heap is asked.
QXPLATFORM_API std::size_t QXGetAllocaThreshold();

/// Owner of a scratch buffer, made by `QXMalloca`:
///
///     const QXMallocaPtr scratch = QXMalloca(count * sizeof(double));
///     auto* values = static_cast<double*>(scratch.get());
///
/// The buffer is aligned to 16 and not initialised.
class QXPLATFORM_API QXMallocaPtr {
public:
  /// In front of the buffer, so that it counts towards the threshold. Its first
  /// word tells where the buffer came from.
  static constexpr std::size_t HeaderSize = 16;

  static bool FitsStack(std::size_t bytes) { return bytes <= QXGetAllocaThreshold() - HeaderSize; }

  /// Takes `stack`, header and buffer, or when it is null a block of the heap.
  /// Throws std::bad_alloc when there is none, or when `bytes` and the header
  /// are more than a size can tell.
  QXMallocaPtr(std::size_t bytes, void* stack);
  QXMallocaPtr(const QXMallocaPtr&) = delete;
  QXMallocaPtr& operator=(const QXMallocaPtr&) = delete;
  ~QXMallocaPtr();

  /// The buffer; never null.
  void* get() const { return block_ + HeaderSize; }

private:
  std::uint32_t Origin() const;

  unsigned char* block_;
};

}  // namespace QXPlatform

/// A QXMallocaPtr with `bytes` bytes; the argument is evaluated more than once.
///
/// Stack memory comes back when the function returns that says this, not at the
/// end of a block: not for use in a loop.
#define QXMalloca(bytes)                                                                \
  ::QXPlatform::QXMallocaPtr(                                                           \
      (bytes), ::QXPlatform::QXMallocaPtr::FitsStack(bytes)                             \
                   ? __builtin_alloca((bytes) + ::QXPlatform::QXMallocaPtr::HeaderSize) \
                   : nullptr)

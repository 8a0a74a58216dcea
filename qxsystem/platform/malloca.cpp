#include <qxsystem/platform/malloca.h>

#include <cstring>
#include <new>

namespace QXPlatform {

namespace {

constexpr std::uint32_t fromStack = 0xcccc;
constexpr std::uint32_t fromHeap = 0xdddd;

unsigned char* HeapBlock(std::size_t bytes) {
  std::size_t whole;
  if (__builtin_add_overflow(bytes, QXMallocaPtr::HeaderSize, &whole)) throw std::bad_alloc();
  return new unsigned char[whole];
}

}  // namespace

std::size_t QXGetAllocaThreshold() {
  return 0x10000;
}

QXMallocaPtr::QXMallocaPtr(std::size_t bytes, void* stack)
    : block_(stack ? static_cast<unsigned char*>(stack) : HeapBlock(bytes)) {
  const std::uint32_t origin = stack ? fromStack : fromHeap;
  std::memcpy(block_, &origin, sizeof origin);
}

QXMallocaPtr::~QXMallocaPtr() {
  if (Origin() == fromHeap) delete[] block_;
}

std::uint32_t QXMallocaPtr::Origin() const {
  std::uint32_t origin;
  std::memcpy(&origin, block_, sizeof origin);
  return origin;
}

}  // namespace QXPlatform

#include <qxsystem/util/hanoi.h>

#include <cstdint>
#include <limits>
#include <new>

#include <qxsystem/platform/malloca.h>

namespace QXSystem {

template bool hanoi(int*, std::size_t, int*, HanoiCompare<int>);
template bool hanoi(long*, std::size_t, long*, HanoiCompare<long>);

namespace {

// Opaque bytes of a number that the compiler knows.
template <std::size_t Size>
struct Block {
  unsigned char bytes[Size];
};

bool IsAligned(const void* p, std::size_t alignment) {
  return reinterpret_cast<std::uintptr_t>(p) % alignment == 0;
}

template <class T>
bool SortAs(void* base, std::size_t count, void* scratch, HanoiFunction compare) {
  return hanoi(static_cast<T*>(base), count, static_cast<T*>(scratch), HanoiCompare<T>(compare));
}

bool SortBytes(void* base, std::size_t count, std::size_t size, void* scratch,
               HanoiFunction compare) {
  using HanoiCore::Bytes;
  const auto before = [compare](const void* x, const void* y) { return compare(x, y) < 0; };
  return HanoiCore::Sorter<Bytes, decltype(before)>(Bytes{size}, before)
      .Sort(static_cast<unsigned char*>(base), count, static_cast<unsigned char*>(scratch));
}

}  // namespace

void hanoisort(void* base, std::size_t count, std::size_t size, HanoiFunction compare) {
  if (count == 0 || size == 0) return;
  constexpr std::size_t most =
      std::numeric_limits<std::size_t>::max() - QXPlatform::QXMallocaPtr::HeaderSize;
  if (count > most / size) throw std::bad_alloc();
  if (count == 1) return;

  const QXPlatform::QXMallocaPtr memory = QXMalloca(count * size);
  void* const scratch = memory.get();
  bool hopped;
  if (size == sizeof(int) && IsAligned(base, sizeof(int)))
    hopped = SortAs<int>(base, count, scratch, compare);
  else if (size == sizeof(long) && IsAligned(base, sizeof(long)))
    hopped = SortAs<long>(base, count, scratch, compare);
  else if (size == 12)
    hopped = SortAs<Block<12>>(base, count, scratch, compare);
  else if (size == 16)
    hopped = SortAs<Block<16>>(base, count, scratch, compare);
  else if (size == 24)
    hopped = SortAs<Block<24>>(base, count, scratch, compare);
  else if (size == 32)
    hopped = SortAs<Block<32>>(base, count, scratch, compare);
  else
    hopped = SortBytes(base, count, size, scratch, compare);
  if (hopped) std::memcpy(base, scratch, count * size);
}

}  // namespace QXSystem

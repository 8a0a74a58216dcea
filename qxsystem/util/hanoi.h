// A stable merge sort that is called as `qsort` is. Sorted runs change places
// between the array and a scratch array of its size: above the four elements
// where it begins, none is moved only to be back where it was.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// Compares two elements as for `qsort`: below, equal to or above 0 when the
/// first comes before, together with or behind the second.
using HanoiFunction = int (*)(const void*, const void*);

/// Puts `count` elements, each of `size` bytes, into ascending order; equal ones
/// keep theirs. `base` may stand at any address.
///
/// `compare` gets addresses of elements in `base` or in the scratch array, which
/// comes from the stack when it is small, else from the heap. It may throw: the
/// exception reaches the caller, and `base` holds its elements in some order.
/// So it does after an inconsistent order, which is no other harm. Throws
/// `std::bad_alloc` when there is no memory for the scratch array.
///
/// About n log2(n) comparisons, and 4 n at most for what is sorted already.
QXSYSTEM_API void hanoisort(void* base, std::size_t count, std::size_t size, HanoiFunction compare);

/// The order of a `qsort`-style function as a function object over values: true
/// when `x` comes before `y`.
template <class T>
class QXSYSTEM_API HanoiCompare {
public:
  explicit HanoiCompare(HanoiFunction compare) : compare_(compare) {}
  bool operator()(const T& x, const T& y) const { return compare_(&x, &y) < 0; }

private:
  HanoiFunction compare_;
};

namespace HanoiCore {

/// Moves elements of type `T` by assignment.
template <class T>
struct Values {
  using Pointer = T*;
  static constexpr std::ptrdiff_t Step() { return 1; }
  void Copy(T* to, const T* from) const { *to = *from; }
  void Copy(T* to, const T* from, std::size_t n) const { std::copy(from, from + n, to); }
};

/// Moves elements of `size` bytes, which need no alignment.
struct Bytes {
  using Pointer = unsigned char*;
  std::size_t size;

  std::ptrdiff_t Step() const { return static_cast<std::ptrdiff_t>(size); }
  void Copy(unsigned char* to, const unsigned char* from) const { std::memcpy(to, from, size); }
  void Copy(unsigned char* to, const unsigned char* from, std::size_t n) const {
    std::memcpy(to, from, n * size);
  }
};

/// The sort itself, over any way to move elements. `Before` answers for two
/// pointers whether the first's element, which lay behind, must go before the
/// second's.
template <class Mover, class Before>
class Sorter {
public:
  using Pointer = typename Mover::Pointer;

  Sorter(Mover mover, const Before& before) : mover_(mover), before_(before) {}

  // Sorts the `n` elements in `base`; true when the result is in `tmp`, and
  // then `base` still holds all of them. Which it is depends on the two first
  // elements and on `n` alone.
  bool Sort(Pointer base, std::size_t n, Pointer tmp) const {
    if (n < 2) return false;
    if (n == 2) return Sort2(base, tmp);
    if (n == 3) return Sort3(base, tmp);
    if (n == 4) return Sort4(base, tmp);
    const std::size_t n1 = n / 2;
    const std::size_t n2 = n - n1;
    const bool hopped1 = Sort(base, n1, tmp);
    const bool hopped2 = Sort(At(base, n1), n2, At(tmp, n1));
    const Pointer first = hopped1 ? tmp : base;
    const Pointer second = At(hopped2 ? tmp : base, n1);
    const Pointer out = hopped1 ? base : tmp;

    if (n >= MinOrderedTest && !before_(second, At(first, n1 - 1))) {
      mover_.Copy(out, first, n1);
      if (hopped1 == hopped2) mover_.Copy(At(out, n1), second, n2);
    } else if (hopped1 == hopped2) {
      MergeFromBothEnds(first, n1, n2, out);
    } else {
      MergeForward(first, n1, second, n2, out);
    }
    return !hopped1;
  }

private:
  // From this length on, one comparison asks whether two runs are in order as
  // they stand. It costs random input next to nothing.
  static constexpr std::size_t MinOrderedTest = 16;

  Pointer At(Pointer p, std::size_t i) const {
    return p + static_cast<std::ptrdiff_t>(i) * mover_.Step();
  }

  // All ones for true. What is chosen by a mask is chosen without a branch: the
  // answers of a comparison can't be foreseen, and every miss would stop the
  // next one, which could have begun in the meantime. The empty statement keeps
  // compilers from finding their way back to a branch.
  static std::ptrdiff_t Mask(bool yes) {
    std::ptrdiff_t mask = -static_cast<std::ptrdiff_t>(yes);
    asm("" : "+r"(mask));
    return mask;
  }

  // Where the mask is set `a`, else `b`.
  static Pointer Choose(std::ptrdiff_t mask, Pointer a, Pointer b) {
    const auto x = reinterpret_cast<std::uintptr_t>(a);
    const auto y = reinterpret_cast<std::uintptr_t>(b);
    return reinterpret_cast<Pointer>(y ^ ((x ^ y) & static_cast<std::uintptr_t>(mask)));
  }

  bool Sort2(Pointer base, Pointer tmp) const {
    const Pointer next = At(base, 1);
    if (!before_(next, base)) return false;
    mover_.Copy(tmp, next);
    mover_.Copy(At(tmp, 1), base);
    return true;
  }

  bool Sort3(Pointer base, Pointer tmp) const {
    const Pointer b = At(base, 1);
    const Pointer c = At(base, 2);
    const auto swap = Mask(before_(c, b));
    const Pointer low = Choose(swap, c, b);
    const Pointer high = Choose(swap, b, c);
    const auto lowBefore = Mask(before_(low, base));
    const auto bothBefore = lowBefore & Mask(before_(high, base));
    mover_.Copy(tmp, Choose(lowBefore, low, base));
    mover_.Copy(At(tmp, 1), Choose(lowBefore, Choose(bothBefore, high, base), low));
    mover_.Copy(At(tmp, 2), Choose(bothBefore, base, high));
    return true;
  }

  // Two pairs, merged from both ends; where the result belongs is decided by the
  // first pair alone.
  bool Sort4(Pointer base, Pointer tmp) const {
    const Pointer b = At(base, 1);
    const Pointer c = At(base, 2);
    const Pointer d = At(base, 3);
    const bool hopped1 = before_(b, base);
    const auto swap1 = Mask(hopped1);
    const auto swap2 = Mask(before_(d, c));
    const Pointer low1 = Choose(swap1, b, base);
    const Pointer high1 = Choose(swap1, base, b);
    const Pointer low2 = Choose(swap2, d, c);
    const Pointer high2 = Choose(swap2, c, d);
    const auto low2First = Mask(before_(low2, low1));
    const auto high1Last = Mask(before_(high2, high1));
    const Pointer x = Choose(low2First, low1, Choose(high1Last, low2, high1));
    const Pointer y = Choose(high1Last, high2, Choose(low2First, high1, low2));
    const auto swap = Mask(before_(y, x));
    mover_.Copy(tmp, Choose(low2First, low2, low1));
    mover_.Copy(At(tmp, 1), Choose(swap, y, x));
    mover_.Copy(At(tmp, 2), Choose(swap, x, y));
    mover_.Copy(At(tmp, 3), Choose(high1Last, high1, high2));
    if (hopped1) mover_.Copy(base, tmp, 4);
    return !hopped1;
  }

  // Merges two runs that lie one behind the other into free space.
  //
  // The front half of the result grows upwards while the back half grows
  // downwards: two chains of comparisons that do not wait for each other. Each
  // takes `n1` steps, so neither can leave its run, and no end needs a test. The
  // chains meet exactly. If they do not, the order is inconsistent and elements
  // were taken twice or never, so the careful merge does it again.
  void MergeFromBothEnds(Pointer first, std::size_t n1, std::size_t n2, Pointer out) const {
    const std::ptrdiff_t step = mover_.Step();
    const Pointer second = At(first, n1);
    const Pointer end = At(second, n2);
    const Pointer outEnd = At(out, n1 + n2);
    const std::ptrdiff_t half = At(out, n1) - out;
    Pointer low1 = first, low2 = second;
    Pointer high1 = second, high2 = end;  // one behind what is to be taken next
    try {
      for (std::ptrdiff_t done = 0; done != half; done += step) {
        const auto take2 = Mask(before_(low2, low1));
        mover_.Copy(out + done, Choose(take2, low2, low1));
        low1 += ~take2 & step;
        low2 += take2 & step;
        const auto take1 = Mask(before_(high2 - step, high1 - step));
        mover_.Copy(outEnd - done - step, Choose(take1, high1, high2) - step);
        high1 -= take1 & step;
        high2 -= ~take1 & step;
      }
      if (n1 != n2) {
        Pointer& middle = low1 < high1 ? low1 : low2;
        mover_.Copy(out + half, middle);
        middle += step;
      }
      if (low1 != high1 || low2 != high2) MergeForward(first, n1, second, n2, out);
    } catch (...) {
      mover_.Copy(out, first, n1 + n2);
      throw;
    }
  }

  // Merges two runs of which the second may end where the destination does: what
  // is written never overtakes what of it is still to be read.
  //
  // An exception leaves the rest of the first run in the gap in front of the
  // rest of the second, so that in this case the destination holds all elements.
  void MergeForward(Pointer first, std::size_t n1, Pointer second, std::size_t n2,
                    Pointer out) const {
    const std::ptrdiff_t step = mover_.Step();
    const Pointer end1 = At(first, n1);
    const Pointer end2 = At(second, n2);
    const auto number = [step](Pointer from, Pointer to) {
      return static_cast<std::size_t>((to - from) / step);
    };
    try {
      while (first != end1 && second != end2) {
        const std::ptrdiff_t take2 = Mask(before_(second, first));
        mover_.Copy(out, Choose(take2, second, first));
        first += ~take2 & step;
        second += take2 & step;
        out += step;
      }
    } catch (...) {
      mover_.Copy(out, first, number(first, end1));
      throw;
    }
    if (first != end1)
      mover_.Copy(out, first, number(first, end1));
    else if (out != second)
      mover_.Copy(out, second, number(second, end2));
  }

  Mover mover_;
  const Before& before_;
};

}  // namespace HanoiCore

/// Sorts `n` elements stably with a scratch array of `n` elements. False when
/// the result is in `data`, true when it is in `scratch`.
///
/// `compare(x, y)` answers whether `x`, which lay behind `y`, must go before it;
/// it may be any strict order. Elements move by copy assignment. When `compare`
/// throws, and after a true result, `data` still holds all elements.
template <class T, class Compare>
bool hanoi(T* data, std::size_t n, T* scratch, Compare compare) {
  const auto before = [&compare](const T* x, const T* y) { return bool(compare(*x, *y)); };
  return HanoiCore::Sorter<HanoiCore::Values<T>, decltype(before)>({}, before)
      .Sort(data, n, scratch);
}

extern template QXSYSTEM_API bool hanoi(int*, std::size_t, int*, HanoiCompare<int>);
extern template QXSYSTEM_API bool hanoi(long*, std::size_t, long*, HanoiCompare<long>);

}  // namespace QXSystem

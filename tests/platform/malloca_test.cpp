#include <qxsystem/platform/malloca.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

using namespace QXPlatform;

namespace {

// Uses a whole scratch buffer and tells whether it lies on this stack.
bool OnStack(std::size_t bytes) {
  const QXMallocaPtr scratch = QXMalloca(bytes);
  std::memset(scratch.get(), 0xff, bytes);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(scratch.get()) % 16, 0u);
  const char here = 0;
  const auto distance = reinterpret_cast<std::uintptr_t>(scratch.get()) -
                        reinterpret_cast<std::uintptr_t>(&here) + 0x40000;
  return distance < 0x80000;
}

}  // namespace

TEST(QXMalloca, LiesOnTheStackUpToTheThreshold) {
  const std::size_t most = QXGetAllocaThreshold() - QXMallocaPtr::HeaderSize;
  for (const std::size_t bytes : {std::size_t{0}, std::size_t{1}, most - 1, most})
    EXPECT_TRUE(OnStack(bytes)) << bytes;
  for (const std::size_t bytes : {most + 1, std::size_t{1} << 20}) EXPECT_FALSE(OnStack(bytes));
}

TEST(QXMalloca, ThrowsWhenASizeCannotTellTheBytes) {
  const std::size_t most = std::numeric_limits<std::size_t>::max();
  for (const std::size_t bytes : {most, most - 15, most - 16})
    EXPECT_THROW(QXMalloca(bytes), std::bad_alloc);
}

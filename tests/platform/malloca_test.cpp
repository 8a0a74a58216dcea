#include <qxsystem/platform/malloca.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <new>

using namespace QXPlatform;

TEST(QXMalloca, HoldsItsBytesOnBothSidesOfTheThreshold) {
  const std::size_t most = QXGetAllocaThreshold() - QXMallocaPtr::HeaderSize;
  for (const std::size_t bytes : {std::size_t{0}, most - 1, most, most + 1, 10 * most}) {
    EXPECT_EQ(QXMallocaPtr::FitsStack(bytes), bytes <= most);
    const QXMallocaPtr scratch = QXMalloca(bytes);
    std::memset(scratch.get(), 0xff, bytes);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(scratch.get()) % 16, 0u);
  }
  for (const std::size_t tooMany : {~std::size_t{0}, ~std::size_t{15}})
    EXPECT_THROW(QXMalloca(tooMany), std::bad_alloc);
}

// The main function of every test program. QX_TEST_POOL_MODE in the environment
// sets the memory-pool mode, which a process can do only once and before the
// first pooled object: with 16, the system allocator, a sanitizer sees every
// small object's life.

#include <cstdlib>

#include <gtest/gtest.h>

#include <qxsystem/core/threadsafe.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (const char* mode = std::getenv("QX_TEST_POOL_MODE"))
    QXSystem::QXSetMemPoolMode(static_cast<unsigned>(std::atoi(mode)));
  return RUN_ALL_TESTS();
}

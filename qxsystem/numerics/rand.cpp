#include <qxsystem/numerics/rand.h>

#include <ctime>

namespace QXSystem {

QXRandom::QXRandom(bool timeSeed) : seed_(0) {
  if (timeSeed) TimeSeed();
}

unsigned QXRandom::TimeSeed() {
  return seed_ = static_cast<unsigned>(std::time(nullptr));
}

int QXRandom::NextInt() {
  const auto step = [](std::uint32_t s) { return s * 1103515245 + 12345; };
  const std::uint32_t s1 = step(seed_), s2 = step(s1), s3 = step(s2);
  seed_ = s3;
  // The lowest bits of such a generator have short periods and are left out.
  return static_cast<int>((s3 >> 16 & 0x3FF) ^ ((s1 << 4 & 0x7FF00000) | (s2 >> 6 & 0xFFC00)));
}

float QXRandom::NextFloat() {
  return static_cast<float>(NextInt() * 0x1p-31);
}

}  // namespace QXSystem

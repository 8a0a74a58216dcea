// The small random number generator of old programs, for results that must stay
// as they were. New code takes an engine of ran_num_generators.h.
#pragma once

#include <cstdint>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// A linear congruential generator, whose seed is all its state.
class QXSYSTEM_API QXRandom {
public:
  /// Starts with the time in seconds, or else with 0.
  explicit QXRandom(bool timeSeed);

  void Seed(unsigned seed) { seed_ = seed; }
  unsigned GetSeed() const { return seed_; }

  /// Takes the time in seconds for the seed, and returns it.
  unsigned TimeSeed();

  /// The next number, 0 to 2^31 - 1.
  int NextInt();

  /// The next number times 2^-31, rounded: 0 to 1, of which 1 is rare.
  float NextFloat();

private:
  std::uint32_t seed_;
};

}  // namespace QXSystem

// Identifiers that nobody else draws: random hexadecimal digits.
//
// They are not secret: who sees enough of them can tell those to come.
#pragma once

#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/numerics/ran_num_generators.h>

namespace QXSystem {

/// A generator of identifiers, which any number of threads may use.
///
/// It is seeded from "/dev/urandom", or where that cannot be read from what else
/// the system offers: its random numbers, the clocks and the process. After a
/// `fork` the child seeds its generators anew, so that it does not draw what its
/// parent draws.
class QXSYSTEM_API QXUUIDGenerator {
public:
  QXUUIDGenerator();
  QXUUIDGenerator(const QXUUIDGenerator&) = delete;
  QXUUIDGenerator& operator=(const QXUUIDGenerator&) = delete;
  ~QXUUIDGenerator();

  /// The next 64 bits in 16 digits, in lower case.
  std::string GetUUID16();

private:
  unsigned forks_;  // of the process, when the engine was seeded
  QXMath::MtRng<QXMath::Mt64Traits> engine_;
};

/// The generator of the process; made on first use, and destroyed at exit.
QXSYSTEM_API QXUUIDGenerator& QXGetUUIDGenerator();

/// 16 digits from the generator of the process.
QXSYSTEM_API std::string QXGetUUID16();

/// 32 such digits, from two draws; other threads may draw in between.
QXSYSTEM_API std::string QXGetUUID32();

}  // namespace QXSystem

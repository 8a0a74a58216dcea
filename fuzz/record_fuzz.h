// What the fuzz targets of records share.
#pragma once

#include <cstdint>

#include <tests/records/every_value.h>

#include <qxsystem/core/error.h>
#include <qxsystem/records/recordio.h>

#include "require.h"

using namespace recordtest;

// Damage is told by messages, of which the fuzzer makes millions.
inline const bool quiet = [] {
  QXSystem::QXThrow.SetLevel(QXSystem::QXErrorLevel::Quiet);
  QXSystem::QXThrow.SetStrict(false);
  return true;
}();

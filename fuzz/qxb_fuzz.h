// What the fuzz targets of the binary format share.
#pragma once

#include <cstdint>

#include <tests/qxb/support.h>

#include "require.h"

using namespace qxbtest;

// Damage is told by messages, of which the fuzzer makes millions.
inline const bool quiet = [] {
  QXThrow.SetLevel(QXErrorLevel::Quiet);
  QXThrow.SetStrict(false);
  return true;
}();

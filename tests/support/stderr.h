// Capture of the standard error stream.
#pragma once

#include <string>

#include <gtest/gtest.h>

namespace qxtest {

// What `run` prints there.
template <class F>
std::string OnStderr(F run) {
  testing::internal::CaptureStderr();
  run();
  return testing::internal::GetCapturedStderr();
}

}  // namespace qxtest

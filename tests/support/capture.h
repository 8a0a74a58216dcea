// What code under test reports and prints.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include <qxsystem/core/errortest.h>

namespace qxtest {

/// Keeps the messages of its scope without printing them; an Error does not
/// throw.
struct Reports : QXSystem::QXPushSimpleQXThrowTester {
  Reports() {
    QXSystem::QXThrow.SetLevel(QXSystem::QXErrorLevel::Quiet);
    QXSystem::QXThrow.SetStrict(false);
  }
};

/// What `run` prints on standard error.
template <class F>
std::string OnStderr(F run) {
  testing::internal::CaptureStderr();
  run();
  return testing::internal::GetCapturedStderr();
}

}  // namespace qxtest

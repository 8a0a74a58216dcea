// Capture of what the library reports.
#pragma once

#include <qxsystem/core/errortest.h>

namespace qxtest {

// Captures messages without printing them; an Error does not throw.
class Reports : public QXSystem::QXPushSimpleQXThrowTester {
public:
  Reports() {
    QXSystem::QXThrow.SetLevel(QXSystem::QXErrorLevel::Quiet);
    QXSystem::QXThrow.SetStrict(false);
  }
};

}  // namespace qxtest

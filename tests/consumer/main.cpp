// An outside program: reports through the library and ends.

#include <qxsystem/core/error.h>

int main() {
  QXSystem::QXThrow.Info("consumer: done");
  return 0;
}

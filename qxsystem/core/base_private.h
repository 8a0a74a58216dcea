// The items of an object for the library's own readers and writers, without a
// cursor.
#pragma once

#include <vector>

#include <qxsystem/core/base.h>

namespace QXSystem {

struct QXBaseAccess {
  /// All items, in order; null when there never was one.
  static const std::vector<QXBaseData*>* Items(const QXBase& object) {
    return object.impl_ ? &object.impl_->Items() : nullptr;
  }

  /// The first item with `tag`, null if there is none.
  static QXBaseData* FindData(const QXBase& object, unsigned tag) {
    return object.impl_ ? object.impl_->FindData(tag) : nullptr;
  }
};

}  // namespace QXSystem

// The list of items behind a QXBase. Programs use QXBase; this header stands
// apart because its templates need it.
#pragma once

#include <memory>
#include <vector>

#include <qxsystem/core/basedata.h>
#include <qxsystem/core/export.h>

namespace QXSystem {

/// An owning list of items in order of insertion.
///
/// There is no index: an object carries few items, and a scan from the front
/// is what makes the first item of a tag win.
class QXSYSTEM_API QXBaseImpl {
public:
  QXBaseImpl();
  QXBaseImpl(const QXBaseImpl& other);
  QXBaseImpl& operator=(const QXBaseImpl& other);
  virtual ~QXBaseImpl();

  /// Deletes all items; the room for them stays.
  virtual void Clear();

  /// The first item with `tag`, null when there is none.
  QXBaseData* FindData(unsigned tag) const {
    for (QXBaseData* item : data_)
      if (item->GetTag() == tag) return item;
    return nullptr;
  }

  /// All items, for cursors to walk.
  const std::vector<QXBaseData*>& Items() const { return data_; }

  /// Puts `item` behind the others.
  void Append(std::unique_ptr<QXBaseData> item);

  /// Puts `item` in the place of `old`, which is in the list and is deleted.
  void Replace(const QXBaseData* old, std::unique_ptr<QXBaseData> item);

  /// Appends copies of the items that `other`, which may be this list, has now.
  void AppendCopies(const QXBaseImpl& other);

  /// Deletes all items with `tag`; false when there were none.
  bool DeleteData(unsigned tag);

  /// Warns of a value asked for or set with another type than it has. False.
  static bool CheckTypeWarning();

  /// What stands for a value that is missing: one object per type, built on
  /// first use and alive to the end of the process.
  template <class T>
  static const T& GetDefaultData() {
    static const T& value = *new T();
    return value;
  }

private:
  std::vector<QXBaseData*> data_;  // owned, in order of insertion
};

}  // namespace QXSystem

// The list of items behind a QXBase. Programs use QXBase; this header stands
// apart because its templates need it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include <qxsystem/core/basedata.h>
#include <qxsystem/core/export.h>

namespace QXSystem {

/// An owning list of items in order of insertion.
///
/// An object carries few items as a rule, and a scan from the front finds the
/// first item of a tag: over the tags of the first few, which stand side by side
/// here, then over the items. Only a list of many has an index, so that reading
/// a long list does not cost the square of its length.
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
    const std::size_t count = data_.size();
    for (std::size_t i = 0; i < count; ++i) {
      if (i == Few) return FindBehindFew(tag);
      if (tags_[i] == tag) return data_[i];
    }
    return nullptr;
  }

  /// All items, for cursors to walk.
  const std::vector<QXBaseData*>& Items() const { return data_; }

  /// Puts `item` behind the others.
  void Append(std::unique_ptr<QXBaseData> item) {
    data_.push_back(item.get());
    item.release();
    NoteTag(data_.size() - 1);
  }

  /// Puts `item` in the place of `old`, which is in the list, has the same tag,
  /// and is deleted.
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
  struct Index;
  static constexpr std::size_t Few = 8;
  static constexpr std::size_t Many = 64;

  QXBaseData* FindBehindFew(unsigned tag) const;

  // Has to follow whatever puts an item at `place`, the last.
  void NoteTag(std::size_t place) {
    if (place < Few)
      tags_[place] = data_[place]->GetTag();
    else if (place >= Many)
      Enter(place);
  }
  void Enter(std::size_t place) noexcept;

  std::vector<QXBaseData*> data_;     // owned, in order of insertion
  std::array<unsigned, Few> tags_{};  // those of the first items
  std::unique_ptr<Index> index_;      // of all items; null unless they are many
};

}  // namespace QXSystem

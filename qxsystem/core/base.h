// Generic data: the root class of every object that can carry named, typed
// values.
#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include <qxsystem/core/basedata.h>
#include <qxsystem/core/baseimpl.h>
#include <qxsystem/core/datatype.h>
#include <qxsystem/core/export.h>
#include <qxsystem/core/predicate.h>
#include <qxsystem/core/tagmap.h>

namespace QXSystem {

template <class T>
class QXIterBase;

/// Base of every object that carries named, typed values.
///
/// The values are a list of items in order of insertion. Several items may
/// have one name; the first wins wherever one is asked for. Names are tag ids
/// or texts; a text is interned, even by a question.
///
/// Copies are deep. An object without values costs one pointer. Any change of
/// the list ends the validity of its cursors and of references to its values.
class QXSYSTEM_API QXBase {
public:
  virtual ~QXBase();

  /// Removes all items.
  virtual void Clear();

  /// The identity of the object's class. A class derived from this one returns
  /// its own QXGetDataType.
  virtual const void* GetDataType() const = 0;

  /// Whether `id` is the identity of the object's class or of one of its
  /// bases. A derived class compares with its own and then asks its direct
  /// base.
  virtual bool IsDataType(const void* id) const = 0;

  /// A deep copy of the whole object, which the caller owns.
  virtual QXBase* CreateCopy() const = 0;

  /// Sets the value of the first item with `tag`, or appends an item. False,
  /// with a warning and nothing changed, when that item has another type.
  ///
  /// A text literal is stored as a `const char*`, the pointer and not the
  /// text: ask for `SetData<std::string>` to keep a text.
  template <class T>
  bool SetData(unsigned tag, T value);
  template <class T>
  bool SetData(const char* tag, T value) {
    return SetData<T>(QXGetTag(tag), std::move(value));
  }

  /// The same for an array, of which the object keeps a copy: called as
  /// `SetData(tag, p, n)`, `SetData<float>(tag, p, n)` or
  /// `SetData<float*>(tag, p, n)`.
  ///
  /// With a null `array` an existing item is left without elements, and a new
  /// one holds `n` elements of value zero. An item that holds a mere pointer of
  /// that type is replaced, in its place, by one that holds the array.
  template <class T, std::enable_if_t<!std::is_pointer_v<T>, int> = 0>
  bool SetData(unsigned tag, const T* array, unsigned n);
  template <class T, std::enable_if_t<std::is_pointer_v<T>, int> = 0>
  bool SetData(unsigned tag, const std::remove_pointer_t<T>* array, unsigned n) {
    return SetData<std::remove_const_t<std::remove_pointer_t<T>>>(tag, array, n);
  }
  template <class T, std::enable_if_t<!std::is_pointer_v<T>, int> = 0>
  bool SetData(const char* tag, const T* array, unsigned n) {
    return SetData<T>(QXGetTag(tag), array, n);
  }
  template <class T, std::enable_if_t<std::is_pointer_v<T>, int> = 0>
  bool SetData(const char* tag, const std::remove_pointer_t<T>* array, unsigned n) {
    return SetData<T>(QXGetTag(tag), array, n);
  }

  /// Appends an item, whatever the list holds. True.
  template <class T>
  bool AddData(unsigned tag, T value) {
    Data().Append(std::make_unique<QXBaseDataT<T>>(tag, std::move(value)));
    return true;
  }
  template <class T>
  bool AddData(const char* tag, T value) {
    return AddData<T>(QXGetTag(tag), std::move(value));
  }

  /// The value of the first item with `tag`: by value for numbers and
  /// pointers, else by reference. Without such an item the default, a value of
  /// T built without arguments; if the item has another type the default too,
  /// with a warning.
  template <class T>
  std::conditional_t<std::is_scalar_v<T>, T, const T&> GetData(unsigned tag) const;
  template <class T>
  std::conditional_t<std::is_scalar_v<T>, T, const T&> GetData(const char* tag) const {
    return GetData<T>(QXGetTag(tag));
  }

  /// Puts a copy of `item`, which must not be null, in the place of the first
  /// item with its tag, whatever the types, or appends it. True.
  bool SetBaseData(const QXBaseData* item);

  /// Appends a copy of `item`, which must not be null. True.
  bool AddBaseData(const QXBaseData* item);

  /// Appends `item` itself. True.
  bool AddBaseData(std::unique_ptr<QXBaseData> item);

  /// Whether an item has `tag`.
  bool HasData(unsigned tag) const { return impl_ && impl_->FindData(tag); }
  bool HasData(const char* tag) const { return HasData(QXGetTag(tag)); }

  /// Deletes all items with `tag`; false when there were none.
  bool DeleteData(unsigned tag) { return impl_ && impl_->DeleteData(tag); }
  bool DeleteData(const char* tag) { return DeleteData(QXGetTag(tag)); }

  /// All items, in order. The caller owns the cursor, normally through a
  /// QXIter<QXBaseData>; without items it is false at once, never null.
  QXIterBase<QXBaseData>* GetDataIter() const;

  /// The items with `tag`, in order; otherwise the same.
  QXIterBase<QXBaseData>* GetDataIter(unsigned tag) const;
  QXIterBase<QXBaseData>* GetDataIter(const char* tag) const { return GetDataIter(QXGetTag(tag)); }

  /// Appends copies of the items of `other`, which may be this object.
  QXBase& operator+=(const QXBase& other);

protected:
  QXBase() = default;
  QXBase(const QXBase& other);
  QXBase(QXBase&& other) noexcept : impl_(std::exchange(other.impl_, nullptr)) {}

  /// Takes the items of `other`, copies or themselves, for its own.
  ///
  /// Two things a derived class with state of its own must mind. From an object
  /// that never had items this is the virtual `Clear`, so what it assigns
  /// itself is put in place afterwards. And `other` may be held by a value of
  /// this object, which is gone afterwards, so it is copied from beforehand.
  QXBase& operator=(const QXBase& other);
  QXBase& operator=(QXBase&& other) noexcept;

private:
  friend struct QXBaseAccess;

  QXBaseImpl& Data() { return impl_ ? *impl_ : MakeData(); }
  QXBaseImpl& MakeData();

  QXBaseImpl* impl_ = nullptr;  // owned, null as long as no item ever was
};

/// Gives `to` copies of the items of `from` in place of its own, tag by tag.
/// Unlike an assignment it does not touch the fields of a derived class. The
/// same object on both sides is left as it is.
QXSYSTEM_API void QXCopyBaseData(QXBase& to, const QXBase& from);

/// The plain QXBase: an anonymous bag of values, also as a value in another.
class QXSYSTEM_API QXContainer : public QXBase {
public:
  QXContainer();
  ~QXContainer() override;
  QXContainer(const QXContainer& other);
  QXContainer(QXContainer&& other) noexcept;
  QXContainer& operator=(const QXContainer& other);
  QXContainer& operator=(QXContainer&& other) noexcept;

  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;
  QXContainer* CreateCopy() const override;
};

extern template class QXBaseDataT<QXContainer>;
extern template class QXBaseDataT<std::vector<QXContainer>>;

/// Holds for the items with one tag.
class QXSYSTEM_API QXEqualTag : public QXUnaryPredicate<QXBaseData> {
public:
  explicit QXEqualTag(unsigned tag) : tag_(tag) {}
  ~QXEqualTag() override;

  bool operator()(const QXBaseData& item) const override;
  QXEqualTag* CreateCopy() const override;

private:
  unsigned tag_;
};

template <class T>
bool QXBase::SetData(unsigned tag, T value) {
  QXBaseData* item = impl_ ? impl_->FindData(tag) : nullptr;
  if (!item) return AddData<T>(tag, std::move(value));
  if (!item->Holds<T>()) return QXBaseImpl::CheckTypeWarning();
  if constexpr (std::is_pointer_v<T> && std::is_object_v<std::remove_pointer_t<T>>) {
    // An owned array must not end up holding a pointer that it would free.
    if (dynamic_cast<QXBaseDataTPtr<T>*>(item)) {
      impl_->Replace(item, std::make_unique<QXBaseDataT<T>>(tag, value));
      return true;
    }
  }
  static_cast<QXBaseDataT<T>*>(item)->GetValue() = std::move(value);
  return true;
}

template <class T, std::enable_if_t<!std::is_pointer_v<T>, int>>
bool QXBase::SetData(unsigned tag, const T* array, unsigned n) {
  QXBaseData* item = impl_ ? impl_->FindData(tag) : nullptr;
  if (!item) return AddBaseData(std::make_unique<QXBaseDataTPtr<T*>>(tag, array, n));
  if (item->GetDataType() != QXGetDataType<T*>()) return QXBaseImpl::CheckTypeWarning();
  if (auto* owner = dynamic_cast<QXBaseDataTPtr<T*>*>(item)) {
    owner->SetArray(array, n);
  } else {
    auto fresh = std::make_unique<QXBaseDataTPtr<T*>>(tag, std::unique_ptr<T[]>(), 0u);
    fresh->SetArray(array, n);
    impl_->Replace(item, std::move(fresh));
  }
  return true;
}

template <class T>
std::conditional_t<std::is_scalar_v<T>, T, const T&> QXBase::GetData(unsigned tag) const {
  if (const QXBaseData* item = impl_ ? impl_->FindData(tag) : nullptr) {
    if (item->Holds<T>()) return static_cast<const QXBaseDataT<T>*>(item)->GetValue();
    QXBaseImpl::CheckTypeWarning();
  }
  return QXBaseImpl::GetDefaultData<T>();
}

}  // namespace QXSystem

// The items of generic data: a tag, a value, and the value's type identity.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include <qxsystem/core/datatype.h>
#include <qxsystem/core/export.h>
#include <qxsystem/platform/halffloat.h>

namespace QXSystem {

/// One named value of a QXBase. What follows the name is known to
/// QXBaseDataT<T> and found out by `GetDataType`.
class QXSYSTEM_API QXBaseData {
public:
  virtual ~QXBaseData();

  /// The identity of the value's type, QXGetDataType<T>(). An item that gives
  /// the identity of a T that is no pointer is a QXBaseDataT<T>.
  virtual const void* GetDataType() const = 0;

  /// The number of elements of an array item; 1 for every other, vectors and
  /// strings too.
  virtual unsigned GetSize() const = 0;

  /// A deep copy under the same tag, which the caller owns.
  virtual QXBaseData* CreateCopy() const = 0;

  /// The tag id of the name.
  unsigned GetTag() const { return tag_; }

  /// Whether the value's type is T.
  template <class T>
  bool Holds() const;

protected:
  explicit QXBaseData(unsigned tag) : tag_(tag) {}
  QXBaseData(const QXBaseData&) = default;
  QXBaseData& operator=(const QXBaseData&) = delete;

private:
  unsigned tag_;
};

template <class T>
class QXSYSTEM_API QXBaseDataT;

/// An item that holds a value of the copyable type T.
///
/// With a pointer type it holds just that pointer and owns nothing behind it;
/// QXBaseDataTPtr is the item that owns an array.
template <class T>
class QXSYSTEM_API QXBaseDataT : public QXBaseData {
public:
  /// Holds `value` under the name with the id `tag`.
  QXBaseDataT(unsigned tag, T value) : QXBaseData(tag), value_(std::move(value)) {}

  const void* GetDataType() const override { return QXGetDataType<T>(); }
  unsigned GetSize() const override { return 1; }
  QXBaseData* CreateCopy() const override { return new QXBaseDataT(*this); }

  /// The value, which may be changed. Of an array item it is the array that the
  /// item owns: its elements may be changed, the pointer must not.
  const T& GetValue() const { return value_; }
  T& GetValue() { return value_; }

protected:
  QXBaseDataT(const QXBaseDataT&) = default;

private:
  T value_;
};

template <class T>
bool QXBaseData::Holds() const {
  return &typeid(*this) == &typeid(QXBaseDataT<T>) || GetDataType() == QXGetDataType<T>();
}

template <class P>
class QXSYSTEM_API QXBaseDataTPtr;

/// An item that owns an array of T. Its type identity is that of `T*`, which a
/// QXBaseDataT<T*> has too: only the class tells the two apart.
template <class T>
class QXSYSTEM_API QXBaseDataTPtr<T*> : public QXBaseDataT<T*> {
public:
  /// Holds a copy of the `n` elements at `array`, or `n` elements of value zero
  /// when `array` is null.
  QXBaseDataTPtr(unsigned tag, const T* array, unsigned n)
      : QXBaseDataT<T*>(tag, NewArray(array, n)), size_(n) {}

  /// Takes `array` of `n` elements over.
  QXBaseDataTPtr(unsigned tag, std::unique_ptr<T[]> array, unsigned n)
      : QXBaseDataT<T*>(tag, array.release()), size_(n) {}

  ~QXBaseDataTPtr() override { delete[] this->GetValue(); }
  QXBaseDataTPtr(const QXBaseDataTPtr&) = delete;

  unsigned GetSize() const override { return size_; }
  QXBaseData* CreateCopy() const override {
    if (size_ == 0) return new QXBaseDataTPtr(this->GetTag(), std::unique_ptr<T[]>(), 0);
    return new QXBaseDataTPtr(this->GetTag(), this->GetValue(), size_);
  }

  /// Replaces the array by a copy of the `n` elements at `array`, which may be
  /// the present one; a null `array` leaves none.
  void SetArray(const T* array, unsigned n) {
    std::unique_ptr<T[]> fresh(array ? NewArray(array, n) : nullptr);
    delete[] this->GetValue();
    this->GetValue() = fresh.release();
    size_ = array ? n : 0;
  }

private:
  static T* NewArray(const T* array, unsigned n) {
    if (!array) return new T[n]();
    std::unique_ptr<T[]> fresh(new T[n]);
    std::copy_n(array, n, fresh.get());
    return fresh.release();
  }

  unsigned size_;  // elements behind the value
};

#define QX_INSTANTIATE_DATA(prefix)                               \
  prefix class QXBaseDataT<int>;                                  \
  prefix class QXBaseDataT<unsigned int>;                         \
  prefix class QXBaseDataT<float>;                                \
  prefix class QXBaseDataT<double>;                               \
  prefix class QXBaseDataT<bool>;                                 \
  prefix class QXBaseDataT<const char*>;                          \
  prefix class QXBaseDataT<std::string>;                          \
  prefix class QXBaseDataT<std::vector<int>>;                     \
  prefix class QXBaseDataT<std::vector<float>>;                   \
  prefix class QXBaseDataT<std::vector<double>>;                  \
  prefix class QXBaseDataT<std::vector<bool>>;                    \
  prefix class QXBaseDataT<std::vector<std::string>>;             \
  prefix class QXBaseDataT<std::vector<char>>;                    \
  prefix class QXBaseDataT<std::vector<unsigned char>>;           \
  prefix class QXBaseDataT<std::vector<short>>;                   \
  prefix class QXBaseDataT<std::vector<unsigned short>>;          \
  prefix class QXBaseDataT<std::vector<unsigned int>>;            \
  prefix class QXBaseDataT<std::vector<QXPlatform::QXHalfFloat>>; \
  prefix class QXBaseDataTPtr<char*>;                             \
  prefix class QXBaseDataTPtr<unsigned char*>;                    \
  prefix class QXBaseDataTPtr<bool*>;                             \
  prefix class QXBaseDataTPtr<int*>;                              \
  prefix class QXBaseDataTPtr<unsigned int*>;                     \
  prefix class QXBaseDataTPtr<float*>;                            \
  prefix class QXBaseDataTPtr<double*>;                           \
  prefix class QXBaseDataTPtr<QXPlatform::QXHalfFloat*>

QX_INSTANTIATE_DATA(extern template);

}  // namespace QXSystem

// Cursors over vectors: of pointers, of values, and of values that the cursor
// itself may own.
#pragma once

#include <memory>
#include <type_traits>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>

namespace QXSystem {

/// Base of the cursors that are an index.
///
/// Movement is arithmetic modulo 2^32 and checks no range: a cursor that was
/// moved past an end is not valid, and is again once it is moved back.
template <class T>
class QXSYSTEM_API QXOffsetIterBase : public QXIterBase<T> {
public:
  QXIterBase<T>& operator++() override {
    ++offset_;
    return *this;
  }
  QXIterBase<T>& operator--() override {
    --offset_;
    return *this;
  }
  QXIterBase<T>& operator+=(unsigned n) override {
    offset_ += n;
    return *this;
  }
  QXIterBase<T>& operator-=(unsigned n) override {
    offset_ -= n;
    return *this;
  }
  QXIterBase<T>& operator+=(int n) override { return *this += static_cast<unsigned>(n); }
  QXIterBase<T>& operator-=(int n) override { return *this -= static_cast<unsigned>(n); }
  QXIterBase<T>& ToFirst() override {
    offset_ = 0;
    return *this;
  }

protected:
  QXOffsetIterBase() = default;
  QXOffsetIterBase(const QXOffsetIterBase&) = default;

  // Moves to the last of `size` elements; without any, to before the first.
  QXIterBase<T>& ToLastOf(std::size_t size) {
    offset_ = static_cast<unsigned>(size) - 1;
    return *this;
  }

  unsigned offset_ = 0;
};

/// Walks what the pointers of a vector point to. Takes its memory from the pool
/// of 24-byte blocks, whatever `T` is. A null vector is an empty one; null
/// elements must not be there.
template <class T>
class QXSYSTEM_API QXVectorPtrIter : public QXOffsetIterBase<T>, public QXPooled<24> {
public:
  explicit QXVectorPtrIter(const std::vector<T*>* vector) : vector_(vector) {}

  QXVectorPtrIter<T>* Copy() const override { return new QXVectorPtrIter<T>(*this); }
  QXIterBase<T>& ToLast() override { return this->ToLastOf(Size()); }
  T& operator*() const override { return *(*vector_)[this->offset_]; }
  T* operator->() const override { return (*vector_)[this->offset_]; }
  operator bool() const override { return this->offset_ < Size(); }

private:
  std::size_t Size() const { return vector_ ? vector_->size() : 0; }

  const std::vector<T*>* vector_;  // borrowed
};

static_assert(sizeof(QXVectorPtrIter<int>) == 24, "must fill a block of the pool");

/// Walks the values of a vector, which are of type `T` or, when `T` is const, of
/// the type without const. A null vector is an empty one.
///
/// The elements can be changed through the cursor of a `T` that is not const,
/// although the vector is borrowed as const: who makes the cursor decides that.
template <class T>
class QXSYSTEM_API QXVectorIter : public QXOffsetIterBase<T> {
public:
  using Vector = std::vector<std::remove_const_t<T>>;

  explicit QXVectorIter(const Vector* vector) : vector_(vector) {}

  QXVectorIter<T>* Copy() const override { return new QXVectorIter<T>(*this); }
  QXIterBase<T>& ToLast() override { return this->ToLastOf(Size()); }
  T& operator*() const override { return const_cast<T&>((*vector_)[this->offset_]); }
  T* operator->() const override { return &operator*(); }
  operator bool() const override { return this->offset_ < Size(); }

private:
  std::size_t Size() const { return vector_ ? vector_->size() : 0; }

  const Vector* vector_;  // borrowed
};

/// Walks the values of a vector that may belong to the cursor: the way to return
/// a computed sequence. A null vector is an empty one.
///
/// With `owned` the vector, made with `new`, is taken over. A copy always owns a
/// vector of its own, with copies of the values.
template <class T>
class QXSYSTEM_API QXVectorCacheIter : public QXOffsetIterBase<T> {
public:
  using Vector = std::vector<std::remove_const_t<T>>;

  QXVectorCacheIter(Vector* vector, bool owned) : vector_(vector), owned_(owned) {}

  QXVectorCacheIter(const QXVectorCacheIter& other)
      : QXOffsetIterBase<T>(other),
        vector_(other.vector_ ? new Vector(*other.vector_) : nullptr),
        owned_(true) {}
  QXVectorCacheIter& operator=(const QXVectorCacheIter&) = delete;

  ~QXVectorCacheIter() override {
    if (owned_) delete vector_;
  }

  QXVectorCacheIter<T>* Copy() const override { return new QXVectorCacheIter<T>(*this); }
  QXIterBase<T>& ToLast() override { return this->ToLastOf(Size()); }
  T& operator*() const override { return (*vector_)[this->offset_]; }
  T* operator->() const override { return &operator*(); }
  operator bool() const override { return this->offset_ < Size(); }

private:
  std::size_t Size() const { return vector_ ? vector_->size() : 0; }

  Vector* vector_;
  bool owned_;  // vector_ is deleted with this cursor
};

/// The name under which annotations and headers return computed sequences.
template <class T>
using QXCacheIter = QXVectorCacheIter<T>;

}  // namespace QXSystem

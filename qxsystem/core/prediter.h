// The cursor over those elements of a vector of pointers that a predicate wants.
#pragma once

#include <memory>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/core/predicate.h>

namespace QXSystem {

/// Walks the elements for which a predicate is true, in the order of the vector.
///
/// `Pred` is derived from `QXUnaryPredicate<T>`, where `T` is the type of the
/// elements. The vector is borrowed, null being an empty one; the predicate is
/// asked anew at every step and test.
template <class Pred>
class QXSYSTEM_API QXPredVectorPtrIter : public QXIterBase<typename Pred::ArgumentType> {
public:
  using T = typename Pred::ArgumentType;

  /// Stands on the first hit, if there is one. Works with a copy of `pred`.
  QXPredVectorPtrIter(const std::vector<T*>* vector, const Pred& pred)
      : vector_(vector), pred_(static_cast<Pred*>(pred.CreateCopy())) {
    Forward();
    // Without a hit it stands on the last element, not valid, and one step away
    // from either end of the walk.
    if (offset_ > 0 && offset_ == Size()) --offset_;
  }

  QXPredVectorPtrIter(const QXPredVectorPtrIter& other)
      : QXIterBase<T>(other),
        vector_(other.vector_),
        offset_(other.offset_),
        pred_(static_cast<Pred*>(other.pred_->CreateCopy())) {}
  QXPredVectorPtrIter& operator=(const QXPredVectorPtrIter&) = delete;

  QXPredVectorPtrIter* Copy() const override { return new QXPredVectorPtrIter(*this); }

  QXIterBase<T>& operator++() override {
    ++offset_;
    return Forward();
  }
  QXIterBase<T>& operator--() override {
    --offset_;
    return Backward();
  }
  QXIterBase<T>& ToFirst() override {
    offset_ = 0;
    return Forward();
  }
  QXIterBase<T>& ToLast() override {
    offset_ = static_cast<unsigned>(Size()) - 1;
    return Backward();
  }

  T& operator*() const override { return *(*vector_)[offset_]; }
  T* operator->() const override { return (*vector_)[offset_]; }
  operator bool() const override { return InRange() && Hit(); }

private:
  std::size_t Size() const { return vector_ ? vector_->size() : 0; }
  bool InRange() const { return offset_ < Size(); }
  bool Hit() const { return (*pred_)(*(*vector_)[offset_]); }

  QXIterBase<T>& Forward() {
    while (InRange() && !Hit()) ++offset_;
    return *this;
  }

  // Below 0 the offset wraps around and is out of range.
  QXIterBase<T>& Backward() {
    while (InRange() && !Hit()) --offset_;
    return *this;
  }

  const std::vector<T*>* vector_;  // borrowed
  unsigned offset_ = 0;
  std::unique_ptr<const Pred> pred_;
};

}  // namespace QXSystem

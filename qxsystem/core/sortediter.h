// The cursor that walks another cursor's elements in a sorted order.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/core/predicate.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/util/hanoi.h>

namespace QXSystem {

/// Walks the elements of a source in the order of a predicate, which answers
/// whether its first argument comes before its second. Elements that are equal
/// to it keep their order.
///
/// The addresses of the elements are collected and sorted once, when the cursor
/// is made: what changes afterwards is not seen before `FillList` is called. A
/// copy has a copy of the source, and sorts its elements anew.
template <class T>
class QXSYSTEM_API QXSortedIter : public QXOffsetIterBase<T> {
public:
  /// Takes `source` over, null being an empty one, and works with a copy of
  /// `order`. Stands on the first element.
  QXSortedIter(QXIterBase<T>* source, const QXBinaryPredicate<T, T>& order)
      : QXSortedIter(Adopted{source}, order) {}
  QXSortedIter(QXIterBase<T>* source, const SortedIterCriterion<T>& order)
      : QXSortedIter(Adopted{source}, order) {}

  QXSortedIter(const QXSortedIter& other)
      : QXOffsetIterBase<T>(other),
        source_(other.source_ ? other.source_->Copy() : nullptr),
        order_(other.order_) {
    FillList();
  }
  QXSortedIter& operator=(const QXSortedIter&) = delete;

  /// Collects and sorts the elements of the source again; the position stays.
  void FillList() {
    list_.clear();
    if (!source_) return;
    for (source_->ToFirst(); *source_; ++*source_) list_.push_back(source_->operator->());
    std::vector<T*> scratch(list_.size());
    if (hanoi(list_.data(), list_.size(), scratch.data(), order_)) list_.swap(scratch);
  }

  QXSortedIter<T>* Copy() const override { return new QXSortedIter<T>(*this); }
  QXIterBase<T>& ToLast() override {
    if (list_.empty()) return this->ToFirst();
    return this->ToLastOf(list_.size());
  }
  T& operator*() const override { return *list_[this->offset_]; }
  T* operator->() const override { return list_[this->offset_]; }
  operator bool() const override { return this->offset_ < list_.size(); }

private:
  // The source is in good hands before anything can throw.
  struct Adopted {
    QXIterBase<T>* source;
  };
  template <class Order>
  QXSortedIter(Adopted adopted, const Order& order) : source_(adopted.source), order_(order) {
    FillList();
  }

  std::unique_ptr<QXIterBase<T>> source_;
  std::vector<T*> list_;
  SortedIterCriterion<T> order_;
};

}  // namespace QXSystem

// Cursors: the protocol by which everything in the library is enumerated. Where
// the answer is a sequence, a function gives a new `QXIterBase<T>*`, for the
// caller to hold in a `QXIter<T>`:
//
//     for (QXIter<QXBaseData> item = object.GetDataIter(); item; ++item)
//       Use(*item);
//
// Unless its class says otherwise, a cursor owns nothing and looks straight into
// the container it walks, whose end, or any change of which, ends its use. Moving an invalid cursor
// is no error. Reading from one is the caller's fault; only empty cursors report it.
//
// A cursor belongs to one thread at a time and, its memory being pooled, is
// deleted on the thread that made it; two threads may walk two copies.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/core/export.h>
#include <qxsystem/core/threadsafe.h>

namespace QXSystem {

/// Abstract cursor over elements of type `T`, which may be const.
///
/// The order of the virtual operations is part of the interface. The
/// conversions are not explicit on purpose: with an explicit `operator bool`,
/// `bool ok = cursor;` would choose `operator T*` and read from the cursor.
template <class T>
class QXSYSTEM_API QXIterBase {
public:
  virtual ~QXIterBase() = default;

  /// A new, independent cursor at the same position, for the caller.
  virtual QXIterBase<T>* Copy() const = 0;

  /// Appends the sequence of `other`, which is taken over, and returns the
  /// cursor over both; null appends nothing.
  ///
  /// The result owns this cursor, too, and takes its place in the caller's
  /// hands. It stands where this cursor stands, or, if this one is not valid, moves
  /// on as by `++`: from its end to the first element of `other`. When an exception leaves, this
  /// cursor is still the caller's and `other` is deleted.
  virtual QXIterBase<T>* Push(QXIterBase<T>* other);

  // Movement; the result is the cursor itself. A negative count moves the
  // other way.
  virtual QXIterBase<T>& operator++() = 0;
  virtual QXIterBase<T>& operator--() = 0;
  virtual QXIterBase<T>& operator+=(unsigned n) {
    for (; n; --n) ++*this;
    return *this;
  }
  virtual QXIterBase<T>& operator-=(unsigned n) {
    for (; n; --n) --*this;
    return *this;
  }
  virtual QXIterBase<T>& operator+=(int n) {
    const unsigned count = static_cast<unsigned>(n);
    return n < 0 ? *this -= 0u - count : *this += count;
  }
  virtual QXIterBase<T>& operator-=(int n) {
    const unsigned count = static_cast<unsigned>(n);
    return n < 0 ? *this += 0u - count : *this -= count;
  }

  /// To the first and the last element; without elements the cursor is not
  /// valid.
  virtual QXIterBase<T>& ToFirst() = 0;
  virtual QXIterBase<T>& ToLast() = 0;

  /// The element that the cursor stands on. Ask `operator bool` first.
  virtual T& operator*() const = 0;
  virtual T* operator->() const = 0;

  /// Whether the cursor stands on an element.
  virtual operator bool() const { return false; }

  /// The same as `operator->`.
  virtual operator T*() const { return operator->(); }

protected:
  QXIterBase() = default;
  QXIterBase(const QXIterBase&) = default;
  QXIterBase& operator=(const QXIterBase&) = default;
};

/// What reading from an empty cursor gives: reports the Error "Dereferencing
/// empty iterator" and, if that returns, a default-constructed `T` that all such
/// readers share. A `T` that can't be made so is Fatal.
template <class T>
T& QXReadEmptyIter() {
  using Value = std::remove_const_t<T>;
  constexpr const char* text = "Dereferencing empty iterator";
  QXThrow.Error("%s", text);
  if constexpr (std::is_default_constructible_v<Value>) {
    static Value* const nothing = new Value();  // lives until the process ends
    return *nothing;
  } else {
    QXThrow.Fatal("%s", text);
    std::exit(1);  // whatever the installed handler did: there is no T to return
  }
}

/// The cursor over nothing. It costs 8 bytes of a pool and no allocator call.
template <class T>
class QXSYSTEM_API QXEmptyIter : public QXIterBase<T>, public QXPooled<8> {
public:
  QXEmptyIter<T>* Copy() const override { return new QXEmptyIter<T>(*this); }
  QXIterBase<T>& operator++() override { return *this; }
  QXIterBase<T>& operator--() override { return *this; }
  QXIterBase<T>& operator+=(unsigned) override { return *this; }
  QXIterBase<T>& operator-=(unsigned) override { return *this; }
  QXIterBase<T>& operator+=(int) override { return *this; }
  QXIterBase<T>& operator-=(int) override { return *this; }
  QXIterBase<T>& ToFirst() override { return *this; }
  QXIterBase<T>& ToLast() override { return *this; }
  T& operator*() const override { return QXReadEmptyIter<T>(); }
  T* operator->() const override { return &QXReadEmptyIter<T>(); }
  operator bool() const override { return false; }
};

static_assert(sizeof(QXEmptyIter<int>) == 8, "must fill a block of the pool");

/// The sequences of several cursors one after the other, in the order in which
/// they were pushed; empty ones are skipped. Owns its parts.
///
/// A part is rewound when the walk enters it, but the first ones given are left
/// where they stand until then.
template <class T>
class QXSYSTEM_API QXConcatIter : public QXIterBase<T> {
public:
  /// A cursor without parts, which is not valid.
  QXConcatIter() = default;

  QXConcatIter(const QXConcatIter& other) : QXIterBase<T>(other), current_(other.current_) {
    parts_.reserve(other.parts_.size());
    for (const auto& part : other.parts_) parts_.emplace_back(part->Copy());
  }
  QXConcatIter& operator=(const QXConcatIter&) = delete;

  QXConcatIter<T>* Copy() const override { return new QXConcatIter<T>(*this); }

  /// Appends a part and returns this cursor. If it is not valid even with the
  /// new part, it moves on as by `++`: from the end of the old parts to the
  /// first element of the new one.
  QXIterBase<T>* Push(QXIterBase<T>* other) override {
    std::unique_ptr<QXIterBase<T>> part(other);
    if (part) {
      parts_.push_back(std::move(part));
      if (!*this) ++*this;
    }
    return this;
  }

  QXIterBase<T>& operator++() override {
    if (parts_.empty()) return *this;
    ++*parts_[current_];
    while (!*parts_[current_] && current_ + 1 < parts_.size()) parts_[++current_]->ToFirst();
    return *this;
  }

  QXIterBase<T>& operator--() override {
    if (parts_.empty()) return *this;
    --*parts_[current_];
    while (!*parts_[current_] && current_ > 0) parts_[--current_]->ToLast();
    return *this;
  }

  QXIterBase<T>& ToFirst() override {
    for (current_ = 0; current_ < parts_.size(); ++current_)
      if (parts_[current_]->ToFirst()) return *this;
    current_ = 0;
    return *this;
  }

  QXIterBase<T>& ToLast() override {
    const unsigned size = static_cast<unsigned>(parts_.size());
    for (current_ = size; current_-- > 0;)
      if (parts_[current_]->ToLast()) return *this;
    current_ = size ? size - 1 : 0;
    return *this;
  }

  T& operator*() const override { return **parts_[current_]; }
  T* operator->() const override { return parts_[current_]->operator->(); }
  operator bool() const override { return current_ < parts_.size() && *parts_[current_]; }

private:
  friend class QXIterBase<T>;

  // Joins two cursors and takes `first` over last of all, when nothing can
  // throw any more.
  QXConcatIter(QXIterBase<T>* first, std::unique_ptr<QXIterBase<T>> second) {
    parts_.reserve(2);
    parts_.emplace_back(first);
    parts_.push_back(std::move(second));
  }

  std::vector<std::unique_ptr<QXIterBase<T>>> parts_;
  unsigned current_ = 0;  // below the number of parts, or 0 without any
};

template <class T>
QXIterBase<T>* QXIterBase<T>::Push(QXIterBase<T>* other) {
  std::unique_ptr<QXIterBase<T>> second(other);
  if (!second) return this;
  auto* both = new QXConcatIter<T>(this, std::move(second));
  if (!*both) ++*both;
  return both;
}

/// The handle in which users hold a cursor: owns it, copies it by `Copy()`, and
/// forwards everything else. A handle without a cursor is an empty sequence.
template <class T>
class QXIter {
public:
  QXIter() = default;
  QXIter(std::nullptr_t) {}

  /// Takes the cursor over.
  QXIter(QXIterBase<T>* cursor) : cursor_(cursor) {}

  QXIter(const QXIter& other) : cursor_(other.Copy()) {}
  QXIter(QXIter&& other) noexcept : cursor_(std::exchange(other.cursor_, nullptr)) {}
  QXIter& operator=(QXIter other) noexcept {
    swap(other);
    return *this;
  }
  ~QXIter() { delete cursor_; }

  void swap(QXIter& other) noexcept { std::swap(cursor_, other.cursor_); }
  friend void swap(QXIter& a, QXIter& b) noexcept { a.swap(b); }

  /// A copy of the cursor for the caller; null when there is none.
  QXIterBase<T>* Copy() const { return cursor_ ? cursor_->Copy() : nullptr; }

  /// Hands the cursor itself over to the caller; the handle is empty after it.
  QXIterBase<T>* Release() { return std::exchange(cursor_, nullptr); }

  /// Appends the sequence of `other`, which is taken over.
  QXIter& Push(QXIterBase<T>* other) {
    cursor_ = cursor_ ? cursor_->Push(other) : other ? &other->ToFirst() : nullptr;
    return *this;
  }

  QXIter& operator++() {
    if (cursor_) ++*cursor_;
    return *this;
  }
  QXIter& operator--() {
    if (cursor_) --*cursor_;
    return *this;
  }
  QXIter& operator+=(unsigned n) {
    if (cursor_) *cursor_ += n;
    return *this;
  }
  QXIter& operator-=(unsigned n) {
    if (cursor_) *cursor_ -= n;
    return *this;
  }
  QXIter& operator+=(int n) {
    if (cursor_) *cursor_ += n;
    return *this;
  }
  QXIter& operator-=(int n) {
    if (cursor_) *cursor_ -= n;
    return *this;
  }
  QXIter& ToFirst() {
    if (cursor_) cursor_->ToFirst();
    return *this;
  }
  QXIter& ToLast() {
    if (cursor_) cursor_->ToLast();
    return *this;
  }

  T& operator*() const { return cursor_ ? **cursor_ : QXReadEmptyIter<T>(); }
  T* operator->() const { return cursor_ ? cursor_->operator->() : &QXReadEmptyIter<T>(); }
  operator bool() const { return cursor_ && *cursor_; }
  operator T*() const { return operator->(); }

private:
  QXIterBase<T>* cursor_ = nullptr;  // owned; null is an empty sequence
};

}  // namespace QXSystem

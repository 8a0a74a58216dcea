// Function objects that choose and order elements. They are copied together
// with the cursor that uses them, never shared.
#pragma once

#include <qxsystem/core/export.h>

namespace QXSystem {

/// A function of one argument that can be copied through its base. The flags
/// say: takes its argument by const reference; its call is const. Only both
/// together exist.
template <class Arg, class Result, bool ByConstRef, bool ConstCall>
class QXUnaryFunction;

template <class Arg, class Result>
class QXSYSTEM_API QXUnaryFunction<Arg, Result, true, true> {
public:
  using ArgumentType = Arg;
  using ResultType = Result;

  virtual ~QXUnaryFunction() = default;
  virtual Result operator()(const Arg& arg) const = 0;

  /// A copy of the same class, for the caller.
  virtual QXUnaryFunction* CreateCopy() const = 0;

protected:
  QXUnaryFunction() = default;
  QXUnaryFunction(const QXUnaryFunction&) = default;
  QXUnaryFunction& operator=(const QXUnaryFunction&) = default;
};

/// Whether an element is wanted.
template <class T>
class QXSYSTEM_API QXUnaryPredicate : public QXUnaryFunction<T, bool, true, true> {
public:
  QXUnaryPredicate* CreateCopy() const override = 0;
};

/// A relation between two arguments. As an order it answers whether `a` comes
/// before `b`.
template <class A, class B>
class QXSYSTEM_API QXBinaryPredicate {
public:
  virtual ~QXBinaryPredicate() = default;
  virtual bool operator()(const A& a, const B& b) const = 0;

  /// A copy of the same class, for the caller.
  virtual QXBinaryPredicate* CreateCopy() const = 0;

protected:
  QXBinaryPredicate() = default;
  QXBinaryPredicate(const QXBinaryPredicate&) = default;
  QXBinaryPredicate& operator=(const QXBinaryPredicate&) = default;
};

/// Orders pointers by an order of what they point to.
template <class T>
class QXSYSTEM_API SortedIterCriterion : public QXBinaryPredicate<T*, T*> {
public:
  /// Works with a copy of `order`.
  explicit SortedIterCriterion(const QXBinaryPredicate<T, T>& order) : order_(order.CreateCopy()) {}

  SortedIterCriterion(const SortedIterCriterion& other)
      : QXBinaryPredicate<T*, T*>(other), order_(other.order_->CreateCopy()) {}
  SortedIterCriterion& operator=(const SortedIterCriterion&) = delete;
  ~SortedIterCriterion() override { delete order_; }

  bool operator()(T* const& a, T* const& b) const override { return (*order_)(*a, *b); }
  SortedIterCriterion* CreateCopy() const override { return new SortedIterCriterion(*this); }

private:
  const QXBinaryPredicate<T, T>* order_;  // owned
};

}  // namespace QXSystem

// Cursors over any standard container, borrowed or owned.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>

namespace QXSystem {

/// How a cursor reaches the elements of a container `C`: they are the elements
/// of the container themselves, const.
template <class C>
struct ConstIterGuts {
  using Container = C;
  using Element = const typename C::value_type;
  static_assert(std::is_reference_v<typename C::const_reference>, "elements must be objects");
  static Element& Get(typename C::const_iterator place) { return *place; }
};

/// The container holds pointers, plain or smart: the elements are what they
/// point to.
template <class C>
struct DerefIterGuts {
  using Container = C;
  using Element = typename std::pointer_traits<typename C::value_type>::element_type;
  static Element& Get(typename C::const_iterator place) { return **place; }
};

/// The same, const.
template <class C>
struct ConstDerefIterGuts {
  using Container = C;
  using Element = const typename DerefIterGuts<C>::Element;
  static Element& Get(typename C::const_iterator place) { return **place; }
};

/// Walks a standard container that is borrowed; null is an empty one.
///
/// The index moves freely, as in the other index cursors, but the container's
/// iterator never leaves the container: it follows as soon as the index is in
/// range again. That takes time in proportion to the distance, where the
/// container has no random access, and stepping back in a container that can
/// only be walked forwards starts from its beginning.
template <class Guts>
class QXSYSTEM_API QXSTLIter : public QXIterBase<typename Guts::Element> {
public:
  using Container = typename Guts::Container;
  using T = typename Guts::Element;

  explicit QXSTLIter(const Container* container) : container_(container) {
    if (!container_) return;
    place_ = container_->begin();
    size_ = static_cast<std::size_t>(std::distance(container_->begin(), container_->end()));
  }

  QXSTLIter* Copy() const override { return new QXSTLIter(*this); }
  QXIterBase<T>& operator++() override { return MoveTo(index_ + 1); }
  QXIterBase<T>& operator--() override { return MoveTo(index_ - 1); }
  QXIterBase<T>& operator+=(unsigned n) override { return MoveTo(index_ + n); }
  QXIterBase<T>& operator-=(unsigned n) override { return MoveTo(index_ - n); }
  QXIterBase<T>& operator+=(int n) override { return MoveTo(index_ + static_cast<unsigned>(n)); }
  QXIterBase<T>& operator-=(int n) override { return MoveTo(index_ - static_cast<unsigned>(n)); }
  QXIterBase<T>& ToFirst() override { return MoveTo(0); }
  QXIterBase<T>& ToLast() override { return MoveTo(static_cast<unsigned>(size_) - 1); }
  T& operator*() const override { return Guts::Get(place_); }
  T* operator->() const override { return std::addressof(Guts::Get(place_)); }
  operator bool() const override { return index_ < size_; }

protected:
  QXIterBase<T>& MoveTo(unsigned index) {
    index_ = index;
    if (index >= size_) return *this;
    constexpr bool walksBack =
        std::is_base_of_v<std::bidirectional_iterator_tag,
                          typename std::iterator_traits<Place>::iterator_category>;
    if (!walksBack && index < placeIndex_) {
      place_ = container_->begin();
      placeIndex_ = 0;
    }
    std::advance(place_, static_cast<std::ptrdiff_t>(index) - placeIndex_);
    placeIndex_ = index;
    return *this;
  }

  const Container* container_;
  unsigned index_ = 0;

private:
  using Place = typename Container::const_iterator;
  Place place_{};                  // never behind the last element, if there is one
  std::ptrdiff_t placeIndex_ = 0;  // where place_ is: index_, when that is in range
  std::size_t size_ = 0;
};

/// Walks a standard container that it owns: the way to return a computed one. A
/// copy has a copy of the container, in which plain pointers point to the same
/// elements.
template <class Guts>
class QXSYSTEM_API QXSTLCacheIter : public QXSTLIter<Guts> {
public:
  using typename QXSTLIter<Guts>::Container;

  /// Takes over a container made with `new`; null is an empty one.
  explicit QXSTLCacheIter(const Container* container)
      : QXSTLCacheIter(std::unique_ptr<const Container>(container)) {}

  QXSTLCacheIter(const QXSTLCacheIter& other)
      : QXSTLCacheIter(std::unique_ptr<const Container>(other.owned_ ? new Container(*other.owned_)
                                                                     : nullptr)) {
    this->MoveTo(other.index_);
  }
  QXSTLCacheIter& operator=(const QXSTLCacheIter&) = delete;

  QXSTLCacheIter* Copy() const override { return new QXSTLCacheIter(*this); }

private:
  explicit QXSTLCacheIter(std::unique_ptr<const Container> container)
      : QXSTLIter<Guts>(container.get()), owned_(std::move(container)) {}

  std::unique_ptr<const Container> owned_;
};

}  // namespace QXSystem

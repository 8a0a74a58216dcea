// Union-find: disjoint groups over the integers 0 to n - 1, merged step by step.
#pragma once

#include <memory>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// Disjoint groups over the items 0 to n - 1, each known by the id of one of its
/// members, its root.
///
/// Queries shorten paths, so that even they must not run concurrently on one
/// object. Items out of range are in no group; except where it says so, asking
/// about them is no error.
class QXSYSTEM_API QXUnionFind {
public:
  /// `n` groups of one.
  explicit QXUnionFind(unsigned n);

  /// Copies are deep; memory is made anew only for another number of items.
  QXUnionFind(const QXUnionFind& other);
  QXUnionFind& operator=(const QXUnionFind& other);
  ~QXUnionFind();

  /// Merges the groups of `a` and `b`. The root of the larger one stays, at equal
  /// size that of `a`. An item out of range is reported as by `FindID`, and
  /// nothing changes.
  void Union(int a, int b) {
    if (a == b) return;
    const int ra = FindID(a);
    const int rb = FindID(b);
    if (ra == rb || ra < 0 || rb < 0) return;
    const bool larger = Entry(rb) < Entry(ra);
    const int root = larger ? rb : ra;
    const int child = larger ? ra : rb;
    Entry(root) += Entry(child);
    Entry(child) = root;
  }

  /// The root of `i`'s group; for `i` out of range an Error and -1.
  int FindID(int i) { return InRange(i) ? Root(i) : ReportRange(i); }

  /// Whether both are in one group; false when either is out of range.
  bool Related(int a, int b);

  /// The size of `i`'s group; 0 out of range.
  int Count(int i);

  /// Whether `i` is alone in its group.
  bool IsSingleton(int i) const;

  /// Whether `i` is the root of its group.
  bool IsID(int i) const;

  /// The number of groups, those of one item only if asked for.
  unsigned NumGroups(bool includeSingletons) const;

  /// The groups of two and more, G of them, for the caller, who frees them with
  /// `QXDeleteSubsets`.
  ///
  /// Entry 0 points to G and then the G roots, ascending. Entry k, from 1 to G,
  /// points to the size of the k-th root's group and then its members, in the
  /// order in which a heap sort of all items by root leaves them.
  int** Subsets();

private:
  bool InRange(int i) const { return static_cast<unsigned>(i) < n_ && i >= 0; }
  int& Entry(int i) const { return data_.get()[i]; }
  int ReportRange(int i) const;

  // Path halving: every other entry on the way up is pointed at its grandparent.
  int Root(int i) {
    for (;;) {
      const int parent = Entry(i);
      if (parent < 0) return i;
      const int grandparent = Entry(parent);
      if (grandparent < 0) return parent;
      Entry(i) = grandparent;
      i = grandparent;
    }
  }

  unsigned n_;
  std::unique_ptr<int[]> data_;  // a root's negative group size; else the parent
};

/// Frees what `QXUnionFind::Subsets` made; null is allowed.
QXSYSTEM_API void QXDeleteSubsets(int** subsets);

}  // namespace QXSystem

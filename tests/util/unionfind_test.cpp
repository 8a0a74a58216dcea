#include <qxsystem/util/unionfind.h>

#include <algorithm>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <qxsystem/core/error.h>
#include <qxsystem/core/errortest.h>

using namespace QXSystem;

namespace {

// A partition in the plainest form: every item carries the root of its group.
struct Partition {
  std::vector<int> root;

  explicit Partition(unsigned n) : root(n) {
    for (unsigned i = 0; i < n; ++i) root[i] = static_cast<int>(i);
  }
  int Count(int r) const { return static_cast<int>(std::count(root.begin(), root.end(), r)); }
  int Root(int i) const { return root[static_cast<unsigned>(i)]; }
  void Union(int a, int b) {
    int keep = Root(a), drop = Root(b);
    if (Count(drop) > Count(keep)) std::swap(keep, drop);
    std::replace(root.begin(), root.end(), drop, keep);
  }
};

// Textbook heap sort, counted from 0 and written with recursion.
using Entry = std::pair<int, int>;  // key, item
void Sink(std::vector<Entry>& heap, std::size_t i, std::size_t n) {
  std::size_t largest = i;
  const std::size_t left = 2 * i + 1, right = 2 * i + 2;
  if (left < n && heap[left].first > heap[largest].first) largest = left;
  if (right < n && heap[right].first > heap[largest].first) largest = right;
  if (largest == i) return;
  std::swap(heap[i], heap[largest]);
  Sink(heap, largest, n);
}
void HeapSort(std::vector<Entry>& entries) {
  for (std::size_t i = entries.size() / 2; i-- > 0;) Sink(entries, i, entries.size());
  for (std::size_t n = entries.size(); n-- > 1;) {
    std::swap(entries[0], entries[n]);
    Sink(entries, 0, n);
  }
}

std::vector<std::vector<int>> Subsets(QXUnionFind& groups) {
  int** const subsets = groups.Subsets();
  std::vector<std::vector<int>> result;
  for (int k = 0; k <= subsets[0][0]; ++k)
    result.emplace_back(subsets[k] + 1, subsets[k] + 1 + subsets[k][0]);
  QXDeleteSubsets(subsets);
  return result;
}

}  // namespace

TEST(QXUnionFind, AgreesWithAPlainPartition) {
  std::mt19937 dice(20);
  for (const unsigned n : {1u, 2u, 5u, 40u, 150u}) {
    QXUnionFind groups(n);
    Partition model(n);
    for (unsigned step = 0; step < 2 * n; ++step) {
      const int a = static_cast<int>(dice() % n), b = static_cast<int>(dice() % n);
      groups.Union(a, b);
      model.Union(a, b);
      if (step % 7) continue;

      unsigned roots = 0, singletons = 0;
      std::vector<Entry> grouped;
      for (int i = 0; i < static_cast<int>(n); ++i) {
        const int root = model.Root(i), count = model.Count(root);
        ASSERT_EQ(groups.FindID(i), root);
        ASSERT_EQ(groups.Count(i), count);
        ASSERT_EQ(groups.IsID(i), i == root);
        ASSERT_EQ(groups.IsSingleton(i), count == 1);
        ASSERT_EQ(groups.Related(i, a), root == model.Root(a));
        roots += i == root;
        singletons += count == 1;
        if (count > 1) grouped.emplace_back(root, i);
      }
      ASSERT_EQ(groups.NumGroups(true), roots);
      ASSERT_EQ(groups.NumGroups(false), roots - singletons);

      HeapSort(grouped);
      std::vector<std::vector<int>> expected(1);
      for (const auto& [root, item] : grouped) {
        if (expected[0].empty() || expected[0].back() != root) {
          expected[0].push_back(root);
          expected.emplace_back();
        }
        expected.back().push_back(item);
      }
      ASSERT_EQ(Subsets(groups), expected);
    }
  }
}

TEST(QXUnionFind, KeepsTheFirstRootAtEqualSizeAndTheLargerGroupsElse) {
  QXUnionFind u(4);
  u.Union(0, 1);
  u.Union(2, 3);
  u.Union(1, 3);
  EXPECT_EQ(u.FindID(3), 0);
  EXPECT_EQ(u.Count(0), 4);
  EXPECT_EQ(u.NumGroups(false), 1u);
  EXPECT_EQ(Subsets(u), (std::vector<std::vector<int>>{{0}, {1, 2, 3, 0}}));

  QXUnionFind v(3);
  v.Union(2, 1);
  v.Union(0, 1);
  EXPECT_EQ(v.FindID(0), 2);
}

TEST(QXUnionFind, HasNoSubsetsWithoutGroups) {
  for (const unsigned n : {0u, 5u}) {
    QXUnionFind u(n);
    EXPECT_EQ(u.NumGroups(true), n);
    EXPECT_EQ(u.NumGroups(false), 0u);
    EXPECT_EQ(Subsets(u), std::vector<std::vector<int>>(1));
  }
  QXDeleteSubsets(nullptr);
}

TEST(QXUnionFind, ReportsItemsOutOfRangeFromFindIDAlone) {
  QXPushSimpleQXThrowTester reports;
  QXThrow.SetStrict(false);
  QXUnionFind u(4), none(0);
  for (const int i : {-1, 4, -2147483647 - 1, 2147483647}) {
    EXPECT_FALSE(u.Related(i, 0) || u.Related(0, i) || u.Related(i, i));
    EXPECT_EQ(u.Count(i), 0);
    EXPECT_FALSE(u.IsSingleton(i) || u.IsID(i));
  }
  u.Union(-1, -1);
  EXPECT_FALSE(reports.HasMessages());

  EXPECT_EQ(u.FindID(-1), -1);
  u.Union(0, 4);
  u.Union(-1, -2);
  EXPECT_EQ(none.FindID(0), -1);
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 5\n"
            "QXUnionFind::FindID(-1) - parameter not in range [0..3]\n"
            "QXUnionFind::FindID(4) - parameter not in range [0..3]\n"
            "QXUnionFind::FindID(-1) - parameter not in range [0..3]\n"
            "QXUnionFind::FindID(-2) - parameter not in range [0..3]\n"
            "QXUnionFind::FindID(0) - parameter not in range [0..-1]\n");
  EXPECT_EQ(u.NumGroups(true), 4u);
}

TEST(QXUnionFind, CopiesDeeply) {
  QXUnionFind u(5);
  u.Union(0, 1);
  QXUnionFind copy(u), smaller(2);
  smaller = u;
  smaller = *&smaller;
  u.Union(1, 2);
  EXPECT_EQ(u.Count(0), 3);
  for (QXUnionFind* other : {&copy, &smaller}) {
    EXPECT_EQ(other->Count(0), 2);
    EXPECT_TRUE(other->IsSingleton(4));
  }
}

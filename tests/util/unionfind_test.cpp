#include <qxsystem/util/unionfind.h>

#include <algorithm>
#include <numeric>
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
  std::vector<int> roots;
  int Root(int i) const { return roots[static_cast<unsigned>(i)]; }
  int Count(int i) const {
    return static_cast<int>(std::count(roots.begin(), roots.end(), Root(i)));
  }
  void Union(int a, int b) {
    if (Count(b) > Count(a)) std::swap(a, b);
    std::replace(roots.begin(), roots.end(), Root(b), Root(a));
  }
};

// Textbook heap sort by key, counted from 0.
using Entry = std::pair<int, int>;  // key, item
void HeapSort(std::vector<Entry>& heap) {
  const auto sink = [&heap](std::size_t i, std::size_t n) {
    for (std::size_t largest = i;; i = largest) {
      for (const std::size_t child : {2 * i + 1, 2 * i + 2})
        if (child < n && heap[child].first > heap[largest].first) largest = child;
      if (largest == i) return;
      std::swap(heap[largest], heap[i]);
    }
  };
  for (std::size_t i = heap.size(); i-- > 0;) sink(i, heap.size());
  for (std::size_t n = heap.size(); n-- > 1; sink(0, n)) std::swap(heap[0], heap[n]);
}

using Groups = std::vector<std::vector<int>>;
Groups Subsets(QXUnionFind& u) {
  int** const subsets = u.Subsets();
  Groups result;
  for (int k = 0; k <= subsets[0][0]; ++k)
    result.emplace_back(subsets[k] + 1, subsets[k] + 1 + subsets[k][0]);
  QXDeleteSubsets(subsets);
  return result;
}

}  // namespace

TEST(QXUnionFind, AgreesWithAPlainPartition) {
  std::mt19937 dice(20);
  for (const unsigned n : {0u, 1u, 2u, 5u, 40u, 150u}) {
    QXUnionFind other(n), u(n + 1);
    u = other;
    Partition model{std::vector<int>(n)};
    std::iota(model.roots.begin(), model.roots.end(), 0);
    for (unsigned step = 0; step < 2 * n + 1; ++step) {
      if (step % 7 == 0) {
        unsigned roots = 0, singletons = 0;
        std::vector<Entry> grouped;
        for (int i = 0; i < static_cast<int>(n); ++i) {
          const int root = model.Root(i), count = model.Count(i);
          ASSERT_TRUE(u.FindID(i) == root && u.IsID(i) == (i == root)) << i;
          ASSERT_TRUE(u.Count(i) == count && u.IsSingleton(i) == (count == 1)) << i;
          ASSERT_EQ(u.Related(i, 0), root == model.Root(0));
          roots += i == root;
          singletons += count == 1;
          if (count > 1) grouped.emplace_back(root, i);
        }
        ASSERT_TRUE(u.NumGroups(true) == roots && u.NumGroups(false) == roots - singletons);
        HeapSort(grouped);
        Groups expected(1);
        for (const auto& [root, item] : grouped) {
          if (expected[0].empty() || expected[0].back() != root) {
            expected[0].push_back(root);
            expected.emplace_back();
          }
          expected.back().push_back(item);
        }
        ASSERT_EQ(Subsets(u), expected);
      }
      if (n == 0) continue;
      const int a = static_cast<int>(dice() % n), b = static_cast<int>(dice() % n);
      u.Union(a, b), model.Union(a, b);
    }
    EXPECT_EQ(other.NumGroups(true), n) << "what was copied stays as it was";
  }
  QXDeleteSubsets(nullptr);
}

TEST(QXUnionFind, ReportsItemsOutOfRangeFromFindIDAlone) {
  QXPushSimpleQXThrowTester reports;
  QXThrow.SetStrict(false);
  QXUnionFind u(4), none(0);
  for (const int i : {-1, 4, -2147483647 - 1})
    EXPECT_FALSE(u.Related(i, 0) || u.Related(0, i) || u.Related(i, i) || u.Count(i) ||
                 u.IsSingleton(i) || u.IsID(i));
  u.Union(-1, -1);
  EXPECT_FALSE(reports.HasMessages());

  u.Union(-1, -2), u.Union(0, 4);
  EXPECT_TRUE(u.NumGroups(true) == 4 && none.FindID(0) == -1);
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 5\n"
            "QXUnionFind::FindID(-1) - parameter not in range [0..3]\n"
            "QXUnionFind::FindID(-2) - parameter not in range [0..3]\n"
            "QXUnionFind::FindID(4) - parameter not in range [0..3]\n"
            "QXUnionFind::FindID(0) - parameter not in range [0..-1]\n");
}

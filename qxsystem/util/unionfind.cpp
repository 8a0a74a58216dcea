#include <qxsystem/util/unionfind.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include <qxsystem/core/error.h>

namespace QXSystem {

namespace {

struct Member {
  int root, item;
};

// Sinks entry `i` of the 1-based heap `a[1..n]` to its place.
void Siftdown(Member* a, std::size_t i, std::size_t n) {
  for (std::size_t child = 2 * i; child <= n; i = child, child = 2 * i) {
    if (child < n && a[child + 1].root > a[child].root) ++child;
    if (a[i].root >= a[child].root) return;
    std::swap(a[i], a[child]);
  }
}

// Heap sort by root of `a[1..n]`. It is not stable: callers see the order it
// leaves.
void Hsort(Member* a, std::size_t n) {
  for (std::size_t i = n / 2; i >= 1; --i) Siftdown(a, i, n);
  for (; n >= 2; --n) {
    std::swap(a[1], a[n]);
    Siftdown(a, 1, n - 1);
  }
}

}  // namespace

QXUnionFind::QXUnionFind(unsigned n) : n_(n), data_(new int[n]) {
  std::fill_n(data_.get(), n, -1);
}

QXUnionFind::QXUnionFind(const QXUnionFind& other) : n_(other.n_), data_(new int[other.n_]) {
  std::copy_n(other.data_.get(), n_, data_.get());
}

QXUnionFind& QXUnionFind::operator=(const QXUnionFind& other) {
  if (this == &other) return *this;
  if (n_ != other.n_) {
    data_.reset(new int[other.n_]);
    n_ = other.n_;
  }
  std::copy_n(other.data_.get(), n_, data_.get());
  return *this;
}

QXUnionFind::~QXUnionFind() = default;

int QXUnionFind::ReportRange(int i) const {
  QXThrow.Error("QXUnionFind::FindID(%d) - parameter not in range [0..%d]", i,
                static_cast<int>(n_ - 1));
  return -1;
}

bool QXUnionFind::Related(int a, int b) {
  return InRange(a) && InRange(b) && Root(a) == Root(b);
}

int QXUnionFind::Count(int i) {
  return InRange(i) ? -Entry(Root(i)) : 0;
}

bool QXUnionFind::IsSingleton(int i) const {
  return InRange(i) && Entry(i) == -1;
}

bool QXUnionFind::IsID(int i) const {
  return InRange(i) && Entry(i) < 0;
}

unsigned QXUnionFind::NumGroups(bool includeSingletons) const {
  const int limit = includeSingletons ? 0 : -1;
  return static_cast<unsigned>(
      std::count_if(data_.get(), data_.get() + n_, [limit](int entry) { return entry < limit; }));
}

int** QXUnionFind::Subsets() {
  std::vector<Member> members(1);  // counted from 1, as a heap likes it
  constexpr unsigned most = std::numeric_limits<int>::max();
  for (int i = 0; i < static_cast<int>(std::min(n_, most)); ++i)
    if (!IsSingleton(i)) members.push_back({Root(i), i});
  Hsort(members.data(), members.size() - 1);

  // One block holds all numbers, entry 0 at its start.
  const std::size_t groups = NumGroups(/*includeSingletons=*/false);
  std::unique_ptr<int*[]> subsets(new int*[groups + 1]);
  int* roots = subsets[0] = new int[1 + groups + groups + members.size() - 1];
  int* next = roots + 1 + groups;
  *roots++ = static_cast<int>(groups);
  std::size_t k = 0;
  for (auto member = members.begin() + 1; member != members.end();) {
    const int root = *roots++ = member->root;
    subsets[++k] = next;
    *next++ = -Entry(root);
    for (; member != members.end() && member->root == root; ++member) *next++ = member->item;
  }
  return subsets.release();
}

void QXDeleteSubsets(int** subsets) {
  if (!subsets) return;
  delete[] subsets[0];
  delete[] subsets;
}

}  // namespace QXSystem

#include <qxsystem/grid/grid.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/number.h>

namespace QXSystem {

namespace {

constexpr std::uint64_t maxValues = std::numeric_limits<unsigned int>::max();

bool RefusesNaN(const char* operation, float value) {
  if (!QXPlatform::QXIsNaN(value)) return false;
  QXThrow.Warning("%s unable to handle NaN: %f", operation, static_cast<double>(value));
  return true;
}

bool RefusesProduct(std::uint64_t a, std::uint64_t b) {
  if (a * b <= maxValues) return false;
  QXThrow.Warning("Grid dimensions too large for memory size: %lu x %lu", a, b);
  return true;
}

constexpr const char* wrongSize = "Attempting to set grid data with wrong size array";

}  // namespace

// ---------------------------------------------------------------- QXGridAbstractBase

QXGridAbstractBase::~QXGridAbstractBase() = default;

void QXGridAbstractBase::Clear() {
  QXBase::Clear();
}
const void* QXGridAbstractBase::GetDataType() const {
  return QXGetDataType<QXGridAbstractBase>();
}
bool QXGridAbstractBase::IsDataType(const void* id) const {
  return id == QXGetDataType<QXGridAbstractBase>() || QXBase::IsDataType(id);
}

// ---------------------------------------------------------------- QXGridBase

QXGridBase::QXGridBase() = default;

QXGridBase::QXGridBase(unsigned int x, unsigned int y, unsigned int z, float xmid, float ymid,
                       float zmid, float spacing, const std::string& title)
    : title_(title) {
  shape_.xdim = x, shape_.ydim = y, shape_.zdim = z;
  shape_.xmid = xmid, shape_.ymid = ymid, shape_.zmid = zmid;
  shape_.spacing = spacing;
  shape_.inverseSpacing = 1 / spacing;
  shape_.xmidSet = shape_.ymidSet = shape_.zmidSet = shape_.spacingSet = true;
  shape_.SetRanges();
  storedSize_ = shape_.size;
}

QXGridBase::QXGridBase(const QXGridBase& other) = default;

QXGridBase::QXGridBase(LikeTag, const QXGridBase& other)
    : title_(other.title_), shape_(other.shape_), storedSize_(other.shape_.size) {}

QXGridBase& QXGridBase::operator=(const QXGridBase& other) {
  if (this != &other && AdoptShape(other)) TakeData(other);
  return *this;
}

QXGridBase::~QXGridBase() = default;

bool QXGridBase::AdoptShape(const QXGridBase& other) {
  if (Adopt(other.shape_)) return true;
  QXThrow.Warning("%s", wrongSize);
  return false;
}

void QXGridBase::TakeShape(const QXGridBase& other) noexcept {
  shape_ = other.shape_;
  storedSize_ = shape_.size;
}

void QXGridBase::TakeData(const QXGridBase& other) {
  title_ = other.title_;
  QXCopyBaseData(*this, other);
}

// Also without memory for the values the old shape stays.
bool QXGridBase::Adopt(const Shape& shape) {
  struct Restore {
    ~Restore() {
      if (!done) now = before;
    }
    Shape& now;
    const Shape before;
    bool done;
  } restore{shape_, shape_, false};
  shape_ = shape;
  restore.done = Realloc();
  if (restore.done) storedSize_ = shape_.size;
  return restore.done;
}

bool QXGridBase::Realloc() {
  return true;
}

void QXGridBase::Clear() {
  title_.clear();
  QXGridAbstractBase::Clear();
  Realloc();
}

const void* QXGridBase::GetDataType() const {
  return QXGetDataType<QXGridBase>();
}
bool QXGridBase::IsDataType(const void* id) const {
  return id == QXGetDataType<QXGridBase>() || QXGridAbstractBase::IsDataType(id);
}
QXGridBase* QXGridBase::CreateCopy() const {
  return new QXGridBase(*this);
}

const std::string& QXGridBase::GetTitle() const {
  return title_;
}
bool QXGridBase::SetTitle(const std::string& title) {
  title_ = title;
  return true;
}
bool QXGridBase::IsTitleSet() const {
  return !title_.empty();
}

float QXGridBase::GetSpacing() const {
  return shape_.spacing;
}
bool QXGridBase::IsSpacingSet() const {
  return shape_.spacingSet;
}
unsigned int QXGridBase::GetSize() const {
  return shape_.size;
}

void QXGridBase::GetDim(unsigned int& x, unsigned int& y, unsigned int& z) const {
  x = shape_.xdim;
  y = shape_.ydim;
  z = shape_.zdim;
}
unsigned int QXGridBase::GetXDim() const {
  return shape_.xdim;
}
unsigned int QXGridBase::GetYDim() const {
  return shape_.ydim;
}
unsigned int QXGridBase::GetZDim() const {
  return shape_.zdim;
}

void QXGridBase::GetMid(float& x, float& y, float& z) const {
  x = shape_.xmid;
  y = shape_.ymid;
  z = shape_.zmid;
}
float QXGridBase::GetXMid() const {
  return shape_.xmid;
}
float QXGridBase::GetYMid() const {
  return shape_.ymid;
}
float QXGridBase::GetZMid() const {
  return shape_.zmid;
}
bool QXGridBase::IsXMidSet() const {
  return shape_.xmidSet;
}
bool QXGridBase::IsYMidSet() const {
  return shape_.ymidSet;
}
bool QXGridBase::IsZMidSet() const {
  return shape_.zmidSet;
}

bool QXGridBase::SetSpacing(float spacing) {
  if (RefusesNaN("SetSpacing", spacing) || !(spacing > 0)) return false;
  shape_.spacing = spacing;
  shape_.inverseSpacing = 1 / spacing;
  shape_.spacingSet = true;
  shape_.SetRanges();
  return true;
}

bool QXGridBase::SetMid(float x, float y, float z) {
  const bool xSet = SetXMid(x), ySet = SetYMid(y), zSet = SetZMid(z);
  return xSet && ySet && zSet;
}
bool QXGridBase::SetXMid(float x) {
  if (RefusesNaN("SetXMid", x)) return false;
  shape_.xmid = x;
  shape_.xmidSet = true;
  shape_.SetXRange();
  return true;
}
bool QXGridBase::SetYMid(float y) {
  if (RefusesNaN("SetYMid", y)) return false;
  shape_.ymid = y;
  shape_.ymidSet = true;
  shape_.SetYRange();
  return true;
}
bool QXGridBase::SetZMid(float z) {
  if (RefusesNaN("SetZMid", z)) return false;
  shape_.zmid = z;
  shape_.zmidSet = true;
  shape_.SetZRange();
  return true;
}

bool QXGridBase::SetDim(unsigned int x, unsigned int y, unsigned int z) {
  const bool same = x == shape_.xdim && y == shape_.ydim && z == shape_.zdim;
  return x != 0 && y != 0 && z != 0 && (same || Apply(x, y, z));
}
bool QXGridBase::SetXDim(unsigned int x) {
  return x != 0 && (x == shape_.xdim || Apply(x, shape_.ydim, shape_.zdim));
}
bool QXGridBase::SetYDim(unsigned int y) {
  return y != 0 && (y == shape_.ydim || Apply(shape_.xdim, y, shape_.zdim));
}
bool QXGridBase::SetZDim(unsigned int z) {
  return z != 0 && (z == shape_.zdim || Apply(shape_.xdim, shape_.ydim, z));
}

bool QXGridBase::Apply(unsigned int x, unsigned int y, unsigned int z) {
  if (x == 0 || y == 0 || z == 0) return false;
  if (RefusesProduct(x, y) || RefusesProduct(static_cast<std::uint64_t>(x) * y, z)) return false;
  Shape changed = shape_;
  changed.xdim = x;
  changed.ydim = y;
  changed.zdim = z;
  changed.SetRanges();
  return Adopt(changed);
}

void QXGridBase::Shape::SetXRange() {
  const float half = 0.5F * spacing * static_cast<float>(xdim);
  xmax = xmid + half;
  xmin = xmid - half;
  size = xdim * ydim * zdim;
}
void QXGridBase::Shape::SetYRange() {
  const float half = 0.5F * spacing * static_cast<float>(ydim);
  ymax = ymid + half;
  ymin = ymid - half;
  size = xdim * ydim * zdim;
}
void QXGridBase::Shape::SetZRange() {
  const float half = 0.5F * spacing * static_cast<float>(zdim);
  zmax = zmid + half;
  zmin = zmid - half;
  size = xdim * ydim * zdim;
}
void QXGridBase::Shape::SetRanges() {
  SetXRange();
  SetYRange();
  SetZRange();
}

// ---------------------------------------------------------------- QXFixedGrid

template <class T>
QXFixedGrid<T>::QXFixedGrid() : values_(new T[1]()) {}

template <class T>
QXFixedGrid<T>::QXFixedGrid(unsigned int x, unsigned int y, unsigned int z, float xmid, float ymid,
                            float zmid, float spacing, const std::string& title)
    : QXGridBase(x, y, z, xmid, ymid, zmid, spacing, title), values_(new T[StoredSize()]()) {}

template <class T>
QXFixedGrid<T>::QXFixedGrid(const QXFixedGrid& other)
    : QXGridBase(other), values_(new T[StoredSize()]) {
  std::copy_n(other.values_, StoredSize(), values_);
}

template <class T>
QXFixedGrid<T>::QXFixedGrid(const QXGridBase& shape, T* values)
    : QXGridBase(LikeTag(), shape), values_(values) {}

// The values of `other` are copied twice, for they may be these, seen through a
// view.
template <class T>
QXFixedGrid<T>& QXFixedGrid<T>::operator=(const QXFixedGrid& other) {
  if (this == &other) return *this;
  const std::vector<T> values(other.values_, other.values_ + other.StoredSize());
  if (!AdoptShape(other)) return *this;
  std::copy(values.begin(), values.end(), values_);
  TakeData(other);
  return *this;
}

template <class T>
QXFixedGrid<T>::~QXFixedGrid() {
  delete[] values_;
}

template <class T>
const void* QXFixedGrid<T>::GetDataType() const {
  return QXGetDataType<QXFixedGrid<T>>();
}
template <class T>
bool QXFixedGrid<T>::IsDataType(const void* id) const {
  return id == QXGetDataType<QXFixedGrid<T>>() || QXGridBase::IsDataType(id);
}
template <class T>
QXFixedGrid<T>* QXFixedGrid<T>::CreateCopy() const {
  return new QXFixedGrid(*this);
}

template <class T>
bool QXFixedGrid<T>::Realloc() {
  if (QXGridBase::GetSize() == StoredSize()) {
    std::fill_n(values_, StoredSize(), T());
  } else {
    T* fresh = new T[QXGridBase::GetSize()]();
    delete[] std::exchange(values_, fresh);
  }
  return true;
}

template <class T>
bool QXFixedGrid<T>::SetValues(const T* values, unsigned int count) {
  if (count != StoredSize()) {
    QXThrow.Warning("%s", wrongSize);
    return false;
  }
  if (!values) {
    QXThrow.Warning("Attempting to set grid data with zero pointer");
    return false;
  }
  std::copy_n(values, count, values_);
  return true;
}

// ---------------------------------------------------------------- QXFixedRefGrid

template <class T>
QXFixedRefGrid<T>::QXFixedRefGrid(const QXGridBase& shape, T* values)
    : QXFixedGrid<T>(shape, values) {}

template <class T>
QXFixedRefGrid<T>& QXFixedRefGrid<T>::operator=(const QXFixedRefGrid& other) {
  QXFixedGrid<T>::operator=(other);
  return *this;
}

template <class T>
QXFixedRefGrid<T>::~QXFixedRefGrid() {
  this->values_ = nullptr;
}

template <class T>
const void* QXFixedRefGrid<T>::GetDataType() const {
  return QXGetDataType<QXFixedRefGrid<T>>();
}
template <class T>
bool QXFixedRefGrid<T>::IsDataType(const void* id) const {
  return id == QXGetDataType<QXFixedRefGrid<T>>() || QXFixedGrid<T>::IsDataType(id);
}

template <class T>
bool QXFixedRefGrid<T>::Realloc() {
  return QXGridBase::GetSize() == this->StoredSize() && QXFixedGrid<T>::Realloc();
}

// ---------------------------------------------------------------- QXMultiGrid

template <class T>
QXMultiGrid<T>::QXMultiGrid() = default;

template <class T>
QXMultiGrid<T>::QXMultiGrid(unsigned int x, unsigned int y, unsigned int z, float xmid, float ymid,
                            float zmid, float spacing, const std::string& title)
    : QXGridBase(x, y, z, xmid, ymid, zmid, spacing, title) {}

template <class T>
QXMultiGrid<T>::QXMultiGrid(const QXMultiGrid& other) = default;

template <class T>
QXMultiGrid<T>::~QXMultiGrid() = default;

template <class T>
const void* QXMultiGrid<T>::GetDataType() const {
  return QXGetDataType<QXMultiGrid<T>>();
}
template <class T>
bool QXMultiGrid<T>::IsDataType(const void* id) const {
  return id == QXGetDataType<QXMultiGrid<T>>() || QXGridBase::IsDataType(id);
}

template <class T>
bool QXMultiGrid<T>::SetSpacing(float spacing) {
  if (!QXGridBase::SetSpacing(spacing)) return false;
  ResetGrids();
  return true;
}
template <class T>
bool QXMultiGrid<T>::SetMid(float x, float y, float z) {
  return QXGridBase::SetMid(x, y, z);
}
template <class T>
bool QXMultiGrid<T>::SetDim(unsigned int x, unsigned int y, unsigned int z) {
  return QXGridBase::SetDim(x, y, z);
}

// ---------------------------------------------------------------- QXFixedMultiGrid

template <class T>
QXFixedMultiGrid<T>::QXFixedMultiGrid() : values_(1), views_(MakeViews(values_, 1)) {}

template <class T>
QXFixedMultiGrid<T>::QXFixedMultiGrid(unsigned int x, unsigned int y, unsigned int z, float xmid,
                                      float ymid, float zmid, float spacing,
                                      const std::string& title)
    : QXMultiGrid<T>(x, y, z, xmid, ymid, zmid, spacing, title),
      values_(this->StoredSize()),
      views_(MakeViews(values_, 1)) {}

template <class T>
QXFixedMultiGrid<T>::QXFixedMultiGrid(const QXFixedMultiGrid& other)
    : QXMultiGrid<T>(other),
      values_(other.values_),
      views_(MakeViews(values_, other.views_.size())) {}

template <class T>
QXFixedMultiGrid<T>& QXFixedMultiGrid<T>::operator=(const QXFixedMultiGrid& other) {
  if (this == &other) return *this;
  QXFixedMultiGrid copy(other);
  this->TakeShape(copy);
  values_.swap(copy.values_);
  views_.swap(copy.views_);
  this->TakeData(copy);
  return *this;
}

template <class T>
QXFixedMultiGrid<T>::~QXFixedMultiGrid() = default;

template <class T>
const void* QXFixedMultiGrid<T>::GetDataType() const {
  return QXGetDataType<QXFixedMultiGrid<T>>();
}
template <class T>
bool QXFixedMultiGrid<T>::IsDataType(const void* id) const {
  return id == QXGetDataType<QXFixedMultiGrid<T>>() || QXMultiGrid<T>::IsDataType(id);
}
template <class T>
QXFixedMultiGrid<T>* QXFixedMultiGrid<T>::CreateCopy() const {
  return new QXFixedMultiGrid(*this);
}

template <class T>
bool QXFixedMultiGrid<T>::SetXMid(float x) {
  if (!QXGridBase::SetXMid(x)) return false;
  for (const auto& view : views_) view->SetXMid(x);
  return true;
}
template <class T>
bool QXFixedMultiGrid<T>::SetYMid(float y) {
  if (!QXGridBase::SetYMid(y)) return false;
  for (const auto& view : views_) view->SetYMid(y);
  return true;
}
template <class T>
bool QXFixedMultiGrid<T>::SetZMid(float z) {
  if (!QXGridBase::SetZMid(z)) return false;
  for (const auto& view : views_) view->SetZMid(z);
  return true;
}

template <class T>
auto QXFixedMultiGrid<T>::MakeViews(std::vector<T>& values, std::size_t n) const -> Views {
  const std::size_t size = values.size() / n;
  Views views;
  views.reserve(n);
  for (std::size_t i = 0; i < n; ++i)
    views.push_back(std::make_unique<QXFixedRefGrid<T>>(*this, values.data() + i * size));
  return views;
}

template <class T>
bool QXFixedMultiGrid<T>::Realloc() {
  const std::uint64_t count = std::uint64_t{QXGridBase::GetSize()} * views_.size();
  if (count > maxValues) return false;
  std::vector<T> values(count);
  Views views = MakeViews(values, views_.size());
  values_.swap(values);
  views_.swap(views);
  return true;
}

template <class T>
bool QXFixedMultiGrid<T>::SetNumGrids(unsigned int n) {
  if (n == 0 || n == views_.size()) return n != 0;
  const std::uint64_t size = this->StoredSize();
  if (size == 0 || size * n > maxValues) return false;
  std::vector<T> values(size * n);
  std::copy_n(values_.begin(), std::min(values.size(), values_.size()), values.begin());
  Views views = MakeViews(values, n);
  values_.swap(values);
  views_.swap(views);
  return true;
}

template <class T>
unsigned int QXFixedMultiGrid<T>::GetNumGrids() const {
  return static_cast<unsigned int>(views_.size());
}
template <class T>
QXFixedGrid<T>* QXFixedMultiGrid<T>::GetGrid(unsigned int i) {
  return i < views_.size() ? views_[i].get() : nullptr;
}
template <class T>
const QXFixedGrid<T>* QXFixedMultiGrid<T>::GetGrid(unsigned int i) const {
  return i < views_.size() ? views_[i].get() : nullptr;
}
template <class T>
void QXFixedMultiGrid<T>::ResetGrids() {
  views_ = MakeViews(values_, views_.size());
}

template class QXFixedGrid<float>;
template class QXFixedRefGrid<float>;
template class QXMultiGrid<float>;
template class QXFixedMultiGrid<float>;

}  // namespace QXSystem

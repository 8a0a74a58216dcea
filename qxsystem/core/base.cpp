#include <qxsystem/core/base.h>

#include <algorithm>
#include <new>
#include <unordered_map>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/core/prediter.h>
#include <qxsystem/core/vectoriter.h>

namespace QXSystem {

static_assert(sizeof(QXBase) == 2 * sizeof(void*), "an object without data costs one pointer");

QXBaseData::~QXBaseData() = default;

QX_INSTANTIATE_DATA(template);
template class QXBaseDataT<QXContainer>;
template class QXBaseDataT<std::vector<QXContainer>>;

// Where the first item of each tag stands.
struct QXBaseImpl::Index : std::unordered_map<unsigned, std::size_t> {};

QXBaseImpl::QXBaseImpl() {
  data_.reserve(Few);
}

// Delegates, so that the copies made are deleted when one more cannot be.
QXBaseImpl::QXBaseImpl(const QXBaseImpl& other) : QXBaseImpl() {
  AppendCopies(other);
}

// The copies come first: `other` may live in a value of this very list.
QXBaseImpl& QXBaseImpl::operator=(const QXBaseImpl& other) {
  if (this == &other) return *this;
  QXBaseImpl copies(other);
  data_.swap(copies.data_);
  tags_ = copies.tags_;
  index_.swap(copies.index_);
  return *this;
}

QXBaseImpl::~QXBaseImpl() {
  for (QXBaseData* item : data_) delete item;
}

void QXBaseImpl::Clear() {
  for (QXBaseData* item : data_) delete item;
  data_.clear();
  index_.reset();
}

QXBaseData* QXBaseImpl::FindBehindFew(unsigned tag) const {
  if (index_) {
    const auto place = index_->find(tag);
    return place != index_->end() ? data_[place->second] : nullptr;
  }
  const auto found = std::find_if(data_.begin() + Few, data_.end(),
                                  [tag](const QXBaseData* item) { return item->GetTag() == tag; });
  return found != data_.end() ? *found : nullptr;
}

// Without memory for an index the list goes without.
void QXBaseImpl::Enter(std::size_t place) noexcept {
  try {
    if (index_) {
      index_->emplace(data_[place]->GetTag(), place);
      return;
    }
    index_ = std::make_unique<Index>();
    for (std::size_t i = 0; i <= place; ++i) index_->emplace(data_[i]->GetTag(), i);
  } catch (const std::bad_alloc&) {
    index_.reset();
  }
}

void QXBaseImpl::Replace(const QXBaseData* old, std::unique_ptr<QXBaseData> item) {
  *std::find(data_.begin(), data_.end(), old) = item.release();
  delete old;
}

void QXBaseImpl::AppendCopies(const QXBaseImpl& other) {
  const std::size_t count = other.data_.size();
  if (const std::size_t all = data_.size() + count; all > data_.capacity())
    data_.reserve(std::max(all, 2 * data_.capacity()));
  for (std::size_t i = 0; i < count; ++i) {
    data_.push_back(other.data_[i]->CreateCopy());
    NoteTag(data_.size() - 1);
  }
}

bool QXBaseImpl::DeleteData(unsigned tag) {
  std::size_t kept = 0;
  for (QXBaseData* item : data_) {
    if (item->GetTag() == tag)
      delete item;
    else
      data_[kept++] = item;
  }
  if (kept == data_.size()) return false;
  data_.resize(kept);
  index_.reset();
  for (std::size_t i = 0; i < std::min(kept, Few); ++i) NoteTag(i);
  if (kept > Many) NoteTag(kept - 1);
  return true;
}

bool QXBaseImpl::CheckTypeWarning() {
  QXThrow.Warning("data type mismatch found when using generic data");
  return false;
}

QXBase::QXBase(const QXBase& other) : impl_(other.impl_ ? new QXBaseImpl(*other.impl_) : nullptr) {}

QXBase::~QXBase() {
  delete impl_;
}

QXBase& QXBase::operator=(const QXBase& other) {
  if (this == &other) return *this;
  if (!other.impl_)
    Clear();
  else if (impl_)
    *impl_ = *other.impl_;
  else
    impl_ = new QXBaseImpl(*other.impl_);
  return *this;
}

// `other` may be a value in our own list, so its items are taken before ours
// are deleted.
QXBase& QXBase::operator=(QXBase&& other) noexcept {
  if (this == &other) return *this;
  if (!other.impl_) {
    Clear();
  } else {
    std::unique_ptr<QXBaseImpl> old(std::exchange(impl_, std::exchange(other.impl_, nullptr)));
  }
  return *this;
}

void QXBase::Clear() {
  if (impl_) impl_->Clear();
}

bool QXBase::IsDataType(const void* id) const {
  return id == QXGetDataType<QXBase>();
}

QXBaseImpl& QXBase::MakeData() {
  impl_ = new QXBaseImpl;
  return *impl_;
}

bool QXBase::SetBaseData(const QXBaseData* item) {
  if (const QXBaseData* old = impl_ ? impl_->FindData(item->GetTag()) : nullptr)
    impl_->Replace(old, std::unique_ptr<QXBaseData>(item->CreateCopy()));
  else
    AddBaseData(item);
  return true;
}

bool QXBase::AddBaseData(const QXBaseData* item) {
  return AddBaseData(std::unique_ptr<QXBaseData>(item->CreateCopy()));
}

bool QXBase::AddBaseData(std::unique_ptr<QXBaseData> item) {
  Data().Append(std::move(item));
  return true;
}

QXIterBase<QXBaseData>* QXBase::GetDataIter() const {
  if (!impl_) return new QXEmptyIter<QXBaseData>;
  return new QXVectorPtrIter<QXBaseData>(&impl_->Items());
}

QXIterBase<QXBaseData>* QXBase::GetDataIter(unsigned tag) const {
  if (!impl_) return new QXEmptyIter<QXBaseData>;
  return new QXPredVectorPtrIter<QXEqualTag>(&impl_->Items(), QXEqualTag(tag));
}

QXBase& QXBase::operator+=(const QXBase& other) {
  if (other.impl_) Data().AppendCopies(*other.impl_);
  return *this;
}

void QXCopyBaseData(QXBase& to, const QXBase& from) {
  if (&to == &from) return;
  // `from` may be a value of `to`: copy what it has before anything goes.
  std::vector<std::unique_ptr<QXBaseData>> copies;
  for (QXIter<QXBaseData> item = from.GetDataIter(); item; ++item)
    copies.emplace_back(item->CreateCopy());
  to.QXBase::Clear();
  for (auto& copy : copies) to.AddBaseData(std::move(copy));
}

QXContainer::QXContainer() = default;
QXContainer::~QXContainer() = default;
QXContainer::QXContainer(const QXContainer& other) = default;
QXContainer::QXContainer(QXContainer&& other) noexcept = default;
QXContainer& QXContainer::operator=(const QXContainer& other) = default;
QXContainer& QXContainer::operator=(QXContainer&& other) noexcept = default;

const void* QXContainer::GetDataType() const {
  return QXGetDataType<QXContainer>();
}

bool QXContainer::IsDataType(const void* id) const {
  return id == QXGetDataType<QXContainer>() || QXBase::IsDataType(id);
}

QXContainer* QXContainer::CreateCopy() const {
  return new QXContainer(*this);
}

QXEqualTag::~QXEqualTag() = default;
bool QXEqualTag::operator()(const QXBaseData& item) const {
  return item.GetTag() == tag_;
}
QXEqualTag* QXEqualTag::CreateCopy() const {
  return new QXEqualTag(*this);
}

}  // namespace QXSystem

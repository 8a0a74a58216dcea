#include <qxsystem/qxb/qxbhand.h>

#include <cstring>

#include <qxsystem/core/error.h>
#include <qxsystem/core/threadsafe.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/qxb/qxb_private.h>
#include <qxsystem/qxb/qxbhandimpl_private.h>

namespace QXSystem {
namespace {

const char* TagOf(const char* tag) {
  return tag ? tag : "";
}

constexpr char ReaderTagTooLong[] =
    "Attempt to register reader function which has a tag length of > 1024 bytes";
constexpr char WriterTagTooLong[] =
    "Attempt to register writer function which has a tag length of > 1024 bytes";

// Whether the functor's tag, its terminating zero included, fits a tag buffer.
template <class F>
bool CheckTag(const F& fxn, const char* complaint) {
  if (std::strlen(TagOf(fxn.GetTag())) + 1 <= QXBTagBufferSize) return true;
  QXThrow.Error("%s", complaint);
  return false;
}

// Replaces `held` by a copy of `fxn`, which must be of its kind.
template <class Default, class F>
bool SetDefault(std::unique_ptr<Default>& held, const F& fxn) {
  const auto* wanted = dynamic_cast<const Default*>(&fxn);
  if (wanted) held.reset(wanted->CreateCopy());
  return wanted != nullptr;
}

template <class F>
bool ReplaceFxn(FxnList<F>& list, const F& fxn, const std::string& tag) {
  F** place = list.Find(fxn.GetType(), tag.empty() ? TagOf(fxn.GetTag()) : tag.c_str());
  if (!place) return false;
  std::unique_ptr<F> old(std::exchange(*place, fxn.CreateCopy()));
  return true;
}

// Registrations happen while libraries load, so the table is made on first use;
// it must answer during exit, so it is never destroyed.
std::vector<bool (*)(QXBinaryIOHandlerBase&)>& Initializers() {
  static auto& table = *[] {
    auto* fresh = new std::vector<bool (*)(QXBinaryIOHandlerBase&)>;
    fresh->reserve(1024);
    return fresh;
  }();
  return table;
}

}  // namespace

QXReadFxnBase::~QXReadFxnBase() = default;
QXWriteFxnBase::~QXWriteFxnBase() = default;

const char* QXDefaultReader::GetTag() const {
  return "";
}
const void* QXDefaultReader::GetType() const {
  return nullptr;
}
QXDefaultReader* QXDefaultReader::CreateCopy() const {
  return new QXDefaultReader(*this);
}
unsigned QXDefaultReader::operator()(qxistream& in, unsigned long length, const char*,
                                     const QXBinaryIOHandlerBase&) const {
  in.skip(static_cast<long>(length));
  return QXBReturn::Success;
}

const char* QXDefaultWriter::GetTag() const {
  return "";
}
const void* QXDefaultWriter::GetType() const {
  return nullptr;
}
QXDefaultWriter* QXDefaultWriter::CreateCopy() const {
  return new QXDefaultWriter(*this);
}
bool QXDefaultWriter::operator()(qxostream&, const QXBinaryIOHandlerBase&) const {
  return true;
}

template <class F>
F** FxnList<F>::Find(const void* type, const char* tag) {
  for (F*& fxn : fxns_)
    if (fxn->GetType() == type && std::strcmp(TagOf(fxn->GetTag()), tag) == 0) return &fxn;
  return nullptr;
}

QXBinaryIOImpl::QXBinaryIOImpl()
    : defaultRead(new QXDefaultReader), defaultWrite(new QXDefaultWriter) {}

QXBinaryIOImpl::QXBinaryIOImpl(const QXBinaryIOHandlerBase& other)
    : defaultRead(other.GetDefaultReadFxn().CreateCopy()),
      defaultWrite(other.GetDefaultWriteFxn().CreateCopy()) {
  reads.AppendCopies(other.GetReadFxns());
  writes.AppendCopies(other.GetWriteFxns());
  baseWrites.AppendCopies(other.GetBaseWriteFxns());
}

bool QXBinaryIOHandlerBase::IsDataType(const void* id) const {
  return id == QXGetDataType<QXBinaryIOHandlerBase>() || QXBase::IsDataType(id);
}

QXBinaryIOHandler::QXBinaryIOHandler() : impl_(new QXBinaryIOImpl) {
  // Cursors over a handler are taken at every record: have their pool ready.
  QXMemPool<24>::cachePtr();
}

QXBinaryIOHandler::QXBinaryIOHandler(const QXBinaryIOHandler& other)
    : QXBinaryIOHandler(static_cast<const QXBinaryIOHandlerBase&>(other)) {}

QXBinaryIOHandler::QXBinaryIOHandler(const QXBinaryIOHandlerBase& other)
    : QXBinaryIOHandlerBase(other), impl_(new QXBinaryIOImpl(other)) {}

// `other` may lie in our own data, so its functors are copied first; assigning
// the data may run our own Clear, so the functors are put in place last.
QXBinaryIOHandler& QXBinaryIOHandler::operator=(const QXBinaryIOHandler& other) {
  if (this == &other) return *this;
  QXBinaryIOImpl fresh(other);
  QXBase::operator=(other);
  *impl_ = std::move(fresh);
  return *this;
}

QXBinaryIOHandler::~QXBinaryIOHandler() {
  delete impl_;
}

void QXBinaryIOHandler::Clear() {
  QXBase::Clear();
  *impl_ = QXBinaryIOImpl();
}

const void* QXBinaryIOHandler::GetDataType() const {
  return QXGetDataType<QXBinaryIOHandler>();
}

bool QXBinaryIOHandler::IsDataType(const void* id) const {
  return id == QXGetDataType<QXBinaryIOHandler>() || QXBinaryIOHandlerBase::IsDataType(id);
}

QXBinaryIOHandler* QXBinaryIOHandler::CreateCopy() const {
  return new QXBinaryIOHandler(*this);
}

bool QXBinaryIOHandler::SetReadFxn(const QXReadFxnBase& fxn, bool asDefault) {
  if (!CheckTag(fxn, ReaderTagTooLong)) return false;
  if (asDefault) return SetDefault(impl_->defaultRead, fxn);
  impl_->reads.AppendCopy(fxn);
  return true;
}

bool QXBinaryIOHandler::SetWriteFxn(const QXWriteFxnBase& fxn, bool asDefault) {
  if (!CheckTag(fxn, WriterTagTooLong)) return false;
  if (asDefault) return SetDefault(impl_->defaultWrite, fxn);
  impl_->writes.AppendCopy(fxn);
  return true;
}

const QXDefaultReadFxn& QXBinaryIOHandler::GetDefaultReadFxn() const {
  return *impl_->defaultRead;
}

const QXDefaultWriteFxn& QXBinaryIOHandler::GetDefaultWriteFxn() const {
  return *impl_->defaultWrite;
}

bool QXBinaryIOHandler::ReplaceReadFxn(const QXReadFxnBase& fxn, std::string tag) {
  return ReplaceFxn(impl_->reads, fxn, tag);
}

bool QXBinaryIOHandler::ReplaceWriteFxn(const QXWriteFxnBase& fxn, std::string tag) {
  return ReplaceFxn(impl_->writes, fxn, tag);
}

bool QXBinaryIOHandler::HasReadFxn(const QXReadFxnBase& fxn) const {
  return impl_->reads.Find(fxn.GetType(), TagOf(fxn.GetTag()));
}

bool QXBinaryIOHandler::HasWriteFxn(const QXWriteFxnBase& fxn) const {
  return impl_->writes.Find(fxn.GetType(), TagOf(fxn.GetTag()));
}

QXIterBase<QXReadFxnBase>* QXBinaryIOHandler::GetReadFxns() const {
  return new QXVectorPtrIter<QXReadFxnBase>(&impl_->reads.Fxns());
}

QXIterBase<QXWriteFxnBase>* QXBinaryIOHandler::GetWriteFxns() const {
  return new QXVectorPtrIter<QXWriteFxnBase>(&impl_->writes.Fxns());
}

bool QXBinaryIOHandler::SetBaseWriteFxn(const QXWriteFxn<QXBaseData>& fxn) {
  if (!CheckTag(fxn, WriterTagTooLong)) return false;
  impl_->baseWrites.AppendCopy(fxn);
  return true;
}

QXIterBase<QXWriteFxn<QXBaseData>>* QXBinaryIOHandler::GetBaseWriteFxns() const {
  return new QXVectorPtrIter<QXWriteFxn<QXBaseData>>(&impl_->baseWrites.Fxns());
}

const QXBinaryIOHandler& EmptyHandler() {
  static const QXBinaryIOHandler& handler = *new QXBinaryIOHandler;
  return handler;
}

void QXRegisterQXBInitializer(bool (*initializer)(QXBinaryIOHandlerBase&)) {
  Initializers().push_back(initializer);
}

unsigned QXGetQXBInitializerCount() {
  return static_cast<unsigned>(Initializers().size());
}

// An initialiser may register another one, which then runs in the same pass;
// hence the index, which a table that grows does not disturb.
void QXInitializeHandler(QXBinaryIOHandlerBase& handler) {
  std::vector<std::size_t> failed;
  for (std::size_t i = 0; i < Initializers().size(); ++i)
    if (!Initializers()[i](handler)) failed.push_back(i);
  for (std::size_t i : failed)
    if (!Initializers()[i](handler)) QXThrow.Warning("Default Initializer failed during setup.");
}

}  // namespace QXSystem

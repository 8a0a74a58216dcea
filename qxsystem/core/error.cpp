#include <qxsystem/core/error.h>

#include <cstdio>
#include <thread>
#include <typeinfo>

#include <qxsystem/core/errorimpl.h>
#include <qxsystem/core/mainthread_private.h>

namespace QXSystem {

// Before every other static of the library: any of them may report, or take a
// block from the pools, which ask for the main thread.
__attribute__((init_priority(101))) std::thread::id g_mainThreadId = std::this_thread::get_id();
__attribute__((init_priority(101))) QXErrorHandler QXThrow;

namespace {

QXErrorHandlerStreamImpl* IfPlain(QXErrorHandlerImplBase* impl) {
  return typeid(*impl) == typeid(QXErrorHandlerStreamImpl)
             ? static_cast<QXErrorHandlerStreamImpl*>(impl)
             : nullptr;
}

}  // namespace

QXErrorHandler::QXErrorHandler()
    : impl_(new QXErrorHandlerStreamImpl), owned_(true), plain_(IfPlain(impl_)) {}

QXErrorHandler::QXErrorHandler(QXErrorHandler& other)
    : impl_(other.owned_ ? other.impl_->CreateCopy() : other.impl_),
      owned_(other.owned_),
      plain_(IfPlain(impl_)) {}

QXErrorHandler& QXErrorHandler::operator=(QXErrorHandler& other) {
  // Who merely borrows our own implementation has nothing else to give.
  if (this != &other && (other.owned_ || other.impl_ != impl_))
    SetHandlerImpl(other.owned_ ? other.impl_->CreateCopy() : other.impl_, other.owned_);
  return *this;
}

// Destructors that run after that of QXThrow, and threads that run on during
// `exit`, may still report.
QXErrorHandler::~QXErrorHandler() {
  if (owned_ && this != &QXThrow) delete impl_;
}

void QXErrorHandler::SetHandlerImpl(QXErrorHandlerImplBase* impl, bool owned) {
  if (owned_ && impl != impl_) delete impl_;
  impl_ = impl;
  owned_ = owned;
  plain_ = IfPlain(impl);
}

QXErrorHandlerImplBase* QXErrorHandler::GetHandlerImpl() {
  return impl_;
}

void QXErrorHandler::SetOutputStream(QXPlatform::qxostream& out) {
  SetHandlerImpl(new QXErrorHandlerStreamImpl(*impl_, out), true);
}

void QXErrorHandler::SetStrict(bool strict) {
  impl_->SetStrict(strict);
}
bool QXErrorHandler::GetStrict() const {
  return impl_->GetStrict();
}
void QXErrorHandler::SetLevel(unsigned level) {
  impl_->SetLevel(level);
}
unsigned QXErrorHandler::GetLevel() const {
  return impl_->GetLevel();
}
void QXErrorHandler::Clear() {
  impl_->Clear();
}
unsigned QXErrorHandler::Count(unsigned level) const {
  return impl_->Count(level);
}

// Whether a message of `level` would neither be shown nor counted nor end the
// process, so that it need not be formatted.
inline bool QXErrorHandler::Drops(unsigned level) const {
  return plain_ != nullptr && plain_->ThreadLevel() > level && level != QXErrorLevel::Fatal &&
         level != QXErrorLevel::Usage;
}

// Out of line, so that a dropped message does not pay for the buffer.
[[gnu::noinline]] void QXErrorHandler::VMsg(unsigned level, const char* format, std::va_list args) {
  char text[8192];
  text[0] = '\0';
  if (format != nullptr) std::vsnprintf(text, sizeof text, format, args);
  if (plain_ != nullptr)
    plain_->Report(level, text);
  else
    impl_->Msg(level, text);
}

void QXErrorHandler::Msg(unsigned level, const char* format, ...) {
  if (Drops(level)) return;
  std::va_list args;
  va_start(args, format);
  VMsg(level, format, args);
  va_end(args);
}

void QXErrorHandler::Msg(unsigned level, const std::string& text) {
  if (!Drops(level)) impl_->Msg(level, text);
}

#define QX_DEFINE_REPORT(Name)                         \
  void QXErrorHandler::Name(const char* format, ...) { \
    if (Drops(QXErrorLevel::Name)) return;             \
    std::va_list args;                                 \
    va_start(args, format);                            \
    VMsg(QXErrorLevel::Name, format, args);            \
    va_end(args);                                      \
  }                                                    \
  void QXErrorHandler::Name(const std::string& text) { \
    Msg(QXErrorLevel::Name, text);                     \
  }

QX_DEFINE_REPORT(Debug)
QX_DEFINE_REPORT(Verbose)
QX_DEFINE_REPORT(Info)
QX_DEFINE_REPORT(Warning)
QX_DEFINE_REPORT(Error)
QX_DEFINE_REPORT(Fatal)
QX_DEFINE_REPORT(Usage)
#undef QX_DEFINE_REPORT

}  // namespace QXSystem

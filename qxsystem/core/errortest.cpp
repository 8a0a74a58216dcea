#include <qxsystem/core/errortest.h>

#include <algorithm>
#include <exception>
#include <mutex>
#include <stdexcept>

namespace QXSystem {
namespace {

std::string LogText(const QXErrorLog& log) {
  std::string text;
  for (const auto& [level, messages] : log) {
    text += "level = " + std::to_string(level) + '\n';
    for (const auto& message : messages) text += message + '\n';
  }
  return text;
}

const std::vector<std::string>& AtLevel(const QXErrorLog& log, unsigned level) {
  static const std::vector<std::string> none;
  const auto found = log.find(level);
  return found == log.end() ? none : found->second;
}

bool Contains(const std::string& message, const std::string& text) {
  return message.find(text) != std::string::npos;
}

}  // namespace

bool QXContainSearchStringsAtLevel(const QXErrorLog& log, unsigned level,
                                   const std::vector<std::string>& searchStrings,
                                   std::string* message) {
  const auto& messages = AtLevel(log, level);
  for (const auto& text : searchStrings) {
    const auto contains = [&](const std::string& m) { return Contains(m, text); };
    if (std::any_of(messages.begin(), messages.end(), contains)) continue;
    if (message != nullptr)
      *message = "Could not find substring '" + text + "'\n at error level " +
                 QXErrorLevelToString(level) + "\ninside the following messages:\n'''\n" +
                 LogText(log) + "\n'''";
    return false;
  }
  return true;
}

bool QXContainAllSearchStrings(const QXErrorLog& log, const QXErrorLog& searchStrings,
                               std::string* message) {
  return std::all_of(searchStrings.begin(), searchStrings.end(), [&](const auto& entry) {
    return QXContainSearchStringsAtLevel(log, entry.first, entry.second, message);
  });
}

bool QXContainOnlySearchStrings(const QXErrorLog& log, const QXErrorLog& searchStrings,
                                std::string* message) {
  for (const auto& [level, messages] : log) {
    const auto& texts = AtLevel(searchStrings, level);
    for (const auto& m : messages) {
      const auto isIn = [&m](const std::string& text) { return Contains(m, text); };
      if (std::any_of(texts.begin(), texts.end(), isIn)) continue;
      if (message != nullptr)
        *message = (texts.empty() ? "Failure: Has Extra Messages: "
                                  : "Failure: Has Extra Messages at Error Level " +
                                        QXErrorLevelToString(level) + '\n') +
                   LogText(log);
      return false;
    }
  }
  return true;
}

struct QXErrorHandlerTestImpl::Log {
  std::mutex mutex;
  QXErrorLog messages;
};

QXErrorHandlerTestImpl::QXErrorHandlerTestImpl() : log_(std::make_shared<Log>()) {}
QXErrorHandlerTestImpl::~QXErrorHandlerTestImpl() = default;
QXErrorHandlerTestImpl::QXErrorHandlerTestImpl(const QXErrorHandlerTestImpl& other) = default;
QXErrorHandlerTestImpl& QXErrorHandlerTestImpl::operator=(const QXErrorHandlerTestImpl& other) =
    default;

void QXErrorHandlerTestImpl::Msg(unsigned level, const std::string& text) {
  {
    const std::lock_guard<std::mutex> lock(log_->mutex);
    log_->messages[level].push_back(text);
  }
  if (level == QXErrorLevel::Fatal || (level == QXErrorLevel::Error && GetStrict()))
    throw std::runtime_error(text + "\nFatal message in error handler.");
  QXErrorHandlerStreamImpl::Msg(level, text);
}

QXErrorHandlerImplBase* QXErrorHandlerTestImpl::CreateCopy() const {
  return new QXErrorHandlerTestImpl(*this);
}

QXErrorLog QXErrorHandlerTestImpl::GetLog() const {
  const std::lock_guard<std::mutex> lock(log_->mutex);
  return log_->messages;
}

void QXErrorHandlerTestImpl::ClearLog() {
  const std::lock_guard<std::mutex> lock(log_->mutex);
  log_->messages.clear();
}

QXErrorHandlerTestImpl* QXGetErrorHandlerTestImpl() {
  if (auto* impl = dynamic_cast<QXErrorHandlerTestImpl*>(QXThrow.GetHandlerImpl())) return impl;
  throw std::runtime_error("QXThrow error test impl not installed");
}

QXPushTestHandler::QXPushTestHandler()
    : saved_(QXThrow.GetHandlerImpl()->CreateCopy()), test_(new QXErrorHandlerTestImpl) {
  QXThrow.SetHandlerImpl(test_.get(), /*owned=*/false);
}

QXPushTestHandler::~QXPushTestHandler() noexcept(false) {
  QXThrow.SetHandlerImpl(saved_.release(), /*owned=*/true);
}

QXPushSimpleQXThrowTester::QXPushSimpleQXThrowTester() : exceptions_(std::uncaught_exceptions()) {}
QXPushSimpleQXThrowTester::~QXPushSimpleQXThrowTester() noexcept(false) = default;

bool QXPushSimpleQXThrowTester::HasMessages() const {
  return NumMessages() != 0;
}

bool QXPushSimpleQXThrowTester::HasMessagesAtLevel(unsigned level) const {
  return NumMessagesAtLevel(level) != 0;
}

unsigned QXPushSimpleQXThrowTester::NumMessages() const {
  std::size_t count = 0;
  for (const auto& entry : GetTestImpl().GetLog()) count += entry.second.size();
  return static_cast<unsigned>(count);
}

unsigned QXPushSimpleQXThrowTester::NumMessagesAtLevel(unsigned level) const {
  return static_cast<unsigned>(AtLevel(GetTestImpl().GetLog(), level).size());
}

void QXPushSimpleQXThrowTester::AddSearchString(unsigned level, const std::string& text) {
  searchStrings_[level].push_back(text);
}

void QXPushSimpleQXThrowTester::Clear() {
  GetTestImpl().ClearLog();
}

std::string QXPushSimpleQXThrowTester::GetErrorLog() const {
  return LogText(GetTestImpl().GetLog());
}

void QXPushSimpleQXThrowTester::Raise(const std::string& failure) const {
  if (failure.empty()) return;
  if (std::uncaught_exceptions() <= exceptions_) throw std::runtime_error(failure);
  QXPlatform::qxerr << failure << QXPlatform::qxendl;
}

// NOLINTBEGIN(bugprone-exception-escape): that is how they tell a failure.

QXPushQXThrowTest::QXPushQXThrowTest(unsigned level, const std::string& text) {
  AddSearchString(level, text);
}

QXPushQXThrowTest::~QXPushQXThrowTest() noexcept(false) {
  Raise(GetErrorMessage());
}

std::string QXPushQXThrowTest::GetErrorMessage() const {
  const auto log = GetTestImpl().GetLog();
  std::string missing;
  if (QXContainAllSearchStrings(log, GetSearchStrings(), &missing)) return {};
  return "Failure: " + LogText(log) + '\n' + missing;
}

QXPushQXThrowHasNoMessages::QXPushQXThrowHasNoMessages(const std::vector<unsigned>& excluded)
    : excluded_(excluded) {}

QXPushQXThrowHasNoMessages::~QXPushQXThrowHasNoMessages() noexcept(false) {
  Raise(GetErrorMessage());
}

std::string QXPushQXThrowHasNoMessages::GetErrorMessage() const {
  const auto log = GetTestImpl().GetLog();
  const bool counts = std::any_of(log.begin(), log.end(), [this](const auto& entry) {
    return entry.first >= QXErrorLevel::Debug && entry.first <= QXErrorLevel::Quiet &&
           std::find(excluded_.begin(), excluded_.end(), entry.first) == excluded_.end();
  });
  if (!counts) return {};
  return "Failure: ErrorHandler not empty, found the following messages:\n" + LogText(log);
}

QXPushQXThrowHasNoMessagesAtLevel::QXPushQXThrowHasNoMessagesAtLevel(unsigned level)
    : level_(level) {}

QXPushQXThrowHasNoMessagesAtLevel::~QXPushQXThrowHasNoMessagesAtLevel() noexcept(false) {
  Raise(GetErrorMessage());
}

std::string QXPushQXThrowHasNoMessagesAtLevel::GetErrorMessage() const {
  if (!HasMessagesAtLevel(level_)) return {};
  return "Failure: Has Messages at Error Level " + QXErrorLevelToString(level_);
}

QXPushQXThrowHasSpecficMessages::QXPushQXThrowHasSpecficMessages(unsigned level,
                                                                 const std::string& text) {
  AddSearchString(level, text);
}

QXPushQXThrowHasSpecficMessages::~QXPushQXThrowHasSpecficMessages() noexcept(false) {
  Raise(GetErrorMessage());
}

std::string QXPushQXThrowHasSpecficMessages::GetErrorMessage() const {
  const auto log = GetTestImpl().GetLog();
  std::string failure;
  if (QXContainAllSearchStrings(log, GetSearchStrings(), &failure))
    QXContainOnlySearchStrings(log, GetSearchStrings(), &failure);
  return failure;
}

// NOLINTEND(bugprone-exception-escape)

}  // namespace QXSystem

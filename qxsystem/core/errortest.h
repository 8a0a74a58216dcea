// Capture of reports for tests: objects that redirect QXThrow while they live
// and check, when they go, what was reported.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <qxsystem/core/errorimpl.h>

namespace QXSystem {

/// Texts by level: messages in the order in which they came, or search strings.
using QXErrorLog = std::map<unsigned, std::vector<std::string>>;

/// Whether every search string occurs in some message of its level. If not,
/// and `message` is given, it receives a text about the first that is missing.
QXSYSTEM_API bool QXContainAllSearchStrings(const QXErrorLog& log, const QXErrorLog& searchStrings,
                                            std::string* message = nullptr);

/// Whether every message contains some search string of its level. If not, and
/// `message` is given, it receives a text about the first that has none.
QXSYSTEM_API bool QXContainOnlySearchStrings(const QXErrorLog& log, const QXErrorLog& searchStrings,
                                             std::string* message = nullptr);

/// `QXContainAllSearchStrings` for one level.
QXSYSTEM_API bool QXContainSearchStringsAtLevel(const QXErrorLog& log, unsigned level,
                                                const std::vector<std::string>& searchStrings,
                                                std::string* message = nullptr);

/// An implementation that keeps all messages, and throws where others would
/// end the process.
///
/// A message is kept under the level it came with, whatever the thread's level
/// is. Then a Fatal, and an Error while strict, throws `std::runtime_error` in
/// the reporting thread, with the text and "\nFatal message in error handler.".
/// All others are printed as usual, and a Usage still ends the process with
/// status 0. It starts at Info, strict, on `QXPlatform::qxerr`.
class QXSYSTEM_API QXErrorHandlerTestImpl : public QXErrorHandlerStreamImpl {
public:
  QXErrorHandlerTestImpl();
  ~QXErrorHandlerTestImpl() override;

  /// Copies share the log.
  QXErrorHandlerTestImpl(const QXErrorHandlerTestImpl& other);
  QXErrorHandlerTestImpl& operator=(const QXErrorHandlerTestImpl& other);

  void Msg(unsigned level, const std::string& text) override;
  QXErrorHandlerImplBase* CreateCopy() const override;

  /// What has been kept so far.
  QXErrorLog GetLog() const;

  /// Forgets what has been kept.
  void ClearLog();

private:
  struct Log;
  std::shared_ptr<Log> log_;
};

/// The installed implementation of QXThrow if it is a test one; else throws
/// `std::runtime_error`.
QXSYSTEM_API QXErrorHandlerTestImpl* QXGetErrorHandlerTestImpl();

// The destructors of testers raise what they have to say.
// NOLINTBEGIN(bugprone-exception-escape)

/// Redirects QXThrow to a test implementation while it lives, then reinstalls
/// a copy of what was there before.
///
/// Inside the scope the defaults hold, whatever was set before: call
/// `QXThrow.SetStrict(false)` within it. Scopes nest. As for every change of
/// the implementation, no other thread may report at the beginning and the end
/// of the scope; threads that report in between must be able to catch. After
/// the scope, threads other than this one are at level Info.
/// `QXThrow.SetOutputStream` ends the capture.
///
/// An implementation that QXThrow owned is deleted at the beginning, so earlier
/// answers of `GetHandlerImpl` are void; in the place of one that it borrowed
/// stands, afterwards, a copy.
class QXSYSTEM_API QXPushTestHandler {
public:
  QXPushTestHandler();
  virtual ~QXPushTestHandler() noexcept(false);
  QXPushTestHandler(const QXPushTestHandler&) = delete;
  QXPushTestHandler& operator=(const QXPushTestHandler&) = delete;

protected:
  /// The implementation that captures in this scope.
  const QXErrorHandlerTestImpl& GetTestImpl() const { return *test_; }
  QXErrorHandlerTestImpl& GetTestImpl() { return *test_; }

private:
  std::unique_ptr<QXErrorHandlerImplBase> saved_;
  const std::unique_ptr<QXErrorHandlerTestImpl> test_;
};

/// Captures messages and answers questions about them.
class QXSYSTEM_API QXPushSimpleQXThrowTester : public QXPushTestHandler {
public:
  QXPushSimpleQXThrowTester();
  ~QXPushSimpleQXThrowTester() noexcept(false) override;

  /// Whether there are messages of the levels 1 to 8, of one level.
  bool HasMessages() const;
  bool HasMessagesAtLevel(unsigned level) const;

  /// Messages at all levels together, those without a name among them.
  unsigned NumMessages() const;
  unsigned NumMessagesAtLevel(unsigned level) const;

  /// Adds a text for the classes derived from this one to look for.
  void AddSearchString(unsigned level, const std::string& text);

  /// Forgets the messages; search strings stay.
  void Clear();

  /// All messages as text: for each level, in ascending order, a line "level =
  /// " and its number, then each message and a line end.
  std::string GetErrorLog() const;

protected:
  /// The texts to look for, by level.
  const QXErrorLog& GetSearchStrings() const { return searchStrings_; }

  /// For destructors: throws `std::runtime_error` with `failure`, unless that is
  /// empty. If the scope is being left by an exception, the text is printed to
  /// `QXPlatform::qxerr` instead.
  void Raise(const std::string& failure) const;

private:
  QXErrorLog searchStrings_;
  const int exceptions_;  // in flight when the scope began
};

/// Expects, at the end of its scope, that all search strings occur in messages
/// of their levels.
class QXSYSTEM_API QXPushQXThrowTest : public QXPushSimpleQXThrowTester {
public:
  QXPushQXThrowTest(unsigned level, const std::string& text);
  ~QXPushQXThrowTest() noexcept(false) override;

  /// What the destructor would say now; empty while the expectation holds.
  std::string GetErrorMessage() const;
};

/// Expects no message at the levels 1 to 8, other than those excluded.
class QXSYSTEM_API QXPushQXThrowHasNoMessages : public QXPushSimpleQXThrowTester {
public:
  explicit QXPushQXThrowHasNoMessages(const std::vector<unsigned>& excluded = {});
  ~QXPushQXThrowHasNoMessages() noexcept(false) override;

  std::string GetErrorMessage() const;

private:
  const std::vector<unsigned> excluded_;
};

/// Expects no message at one level.
class QXSYSTEM_API QXPushQXThrowHasNoMessagesAtLevel : public QXPushSimpleQXThrowTester {
public:
  explicit QXPushQXThrowHasNoMessagesAtLevel(unsigned level);
  ~QXPushQXThrowHasNoMessagesAtLevel() noexcept(false) override;

  std::string GetErrorMessage() const;

private:
  const unsigned level_;
};

/// Expects that all search strings occur in messages of their levels, and that
/// there is no message without one.
class QXSYSTEM_API QXPushQXThrowHasSpecficMessages : public QXPushSimpleQXThrowTester {
public:
  QXPushQXThrowHasSpecficMessages(unsigned level, const std::string& text);
  ~QXPushQXThrowHasSpecficMessages() noexcept(false) override;

  std::string GetErrorMessage() const;
};

// NOLINTEND(bugprone-exception-escape)

}  // namespace QXSystem

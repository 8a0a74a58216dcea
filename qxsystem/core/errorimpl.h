// What stands behind an error handler: the base of all implementations, and
// the one that prints to a stream.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/platform/threadlocal.h>

namespace QXSystem {

/// A level that starts at Info.
struct QXDefaultErrorLevel {
  unsigned level = QXErrorLevel::Info;
};

/// Base of what decides about messages: holds each thread's level, the strict
/// flag and the counters.
///
/// All operations may be called from any number of threads at once, except for
/// assignment and destruction.
class QXSYSTEM_API QXErrorHandlerImplBase {
public:
  virtual ~QXErrorHandlerImplBase();

  /// Whether an Error counts as Fatal (at first true), else as Warning.
  virtual bool GetStrict() const;

  /// The calling thread's level, Info until it sets another.
  virtual unsigned GetLevel() const;

  /// The counter of `level`; 0: the sum of 1 to 8; 9 and above: the counter of
  /// messages that had no level of 1 to 8.
  virtual unsigned Count(unsigned level) const;

  /// Sets whether an Error counts as Fatal.
  virtual void SetStrict(bool strict);

  /// Sets the calling thread's level. No range is checked.
  virtual void SetLevel(unsigned level);

  /// Adds 1 to the counter that `level` belongs to.
  virtual void IncrementCount(unsigned level);

  /// Sets the counters 1 to 8 to zero.
  virtual void Clear();

  /// Deals with one message, which may end the process.
  virtual void Msg(unsigned level, const std::string& text) = 0;

  /// A copy, the caller's, as the copy constructor makes it.
  virtual QXErrorHandlerImplBase* CreateCopy() const = 0;

protected:
  QXErrorHandlerImplBase() = default;

  /// Copies the strict flag, the counters and the calling thread's level.
  /// Other threads start at Info again.
  QXErrorHandlerImplBase(const QXErrorHandlerImplBase& other);
  QXErrorHandlerImplBase& operator=(const QXErrorHandlerImplBase& other);

  /// One counter for each level; the first is for all that are no level.
  using Counters = std::array<std::atomic<unsigned>, QXErrorLevel::Quiet + 1>;

  /// Copies counter by counter, not all of them at one moment. `order` serves
  /// loads and stores: relaxed or sequentially consistent.
  static void Copy(const Counters& from, Counters& to, std::memory_order order);

private:
  friend class QXErrorHandler;

  // What `GetLevel` of this class gives, without a virtual call.
  unsigned ThreadLevel() const { return level_.Get().level; }

  QXPlatform::QXThreadLocal<QXDefaultErrorLevel> level_;
  Counters counts_{};
  std::atomic<bool> strict_{true};
};

/// Prints messages to a stream, one line each, and ends the process through
/// `exit` after a Fatal (status 1) or a Usage (status 0).
///
/// A line is the level's prefix and the text; it reaches the stream in one
/// write, then the stream is flushed. Messages of several threads do not mix.
/// When several threads end the process, the first decides its status and the
/// others never return.
class QXSYSTEM_API QXErrorHandlerStreamImpl : public QXErrorHandlerImplBase {
public:
  /// Prints to `QXPlatform::qxerr`.
  QXErrorHandlerStreamImpl();

  /// Takes the state of `state`, as its copy constructor would, and prints to
  /// `out`, which is borrowed.
  QXErrorHandlerStreamImpl(const QXErrorHandlerImplBase& state, QXPlatform::qxostream& out);

  /// Prints to the same stream; the two do not know of each other's writing.
  QXErrorHandlerStreamImpl(const QXErrorHandlerStreamImpl& other);
  QXErrorHandlerStreamImpl& operator=(const QXErrorHandlerStreamImpl& other);

  /// The filter comes first: a message below the calling thread's level is
  /// neither shown nor counted, and an Error then has no effect at all. One
  /// that passes is Fatal or a Warning in every way, by the strict flag. Fatal
  /// and Usage end the process even when they are not shown.
  void Msg(unsigned level, const std::string& text) override;

  QXErrorHandlerImplBase* CreateCopy() const override;

private:
  friend class QXErrorHandler;

  // What `Msg` of this class does.
  void Report(unsigned level, std::string_view text);

  QXPlatform::qxostream* out_;
  std::mutex mutex_;  // held while a message is written and counted
};

}  // namespace QXSystem

// Error reporting: all diagnostics of the library and of the programs above it
// go through one object, QXThrow.
#pragma once

#include <cstdarg>
#include <string>

#include <qxsystem/core/export.h>

namespace QXPlatform {
class qxostream;
}

namespace QXSystem {

class QXErrorHandlerImplBase;
class QXErrorHandlerStreamImpl;

/// Levels of messages, ordered by weight. A handler shows what weighs as much as
/// its own level or more.
namespace QXErrorLevel {
constexpr unsigned Undefined = 0;
constexpr unsigned Debug = 1;
constexpr unsigned Verbose = 2;
constexpr unsigned Info = 3;  ///< the level that a thread starts with
constexpr unsigned Warning = 4;
constexpr unsigned Error = 5;  ///< Fatal while strict, else Warning
constexpr unsigned Fatal = 6;  ///< ends the process with status 1
constexpr unsigned Usage = 7;  ///< ends the process with status 0
constexpr unsigned Quiet = 8;  ///< prints nothing, is counted
}  // namespace QXErrorLevel

/// The name of a level, such as "Warning"; "Unknown Error Level" from 9 on.
QXSYSTEM_API std::string QXErrorLevelToString(unsigned level);

/// The front of error reporting: formats a message and hands it to a
/// replaceable implementation, which prints, counts, and may end the process.
///
/// Any thread may report at any time. The level is the calling thread's own;
/// the strict flag and the counters are shared. Replacing the implementation
/// or the stream is not guarded against reports in progress.
///
/// Formatted messages are cut at 8191 characters. The forms that take a
/// `std::string` use the text as it stands, whole, and never as a format.
class QXSYSTEM_API QXErrorHandler {
public:
  /// Reports to QXPlatform::qxerr, at level Info, strict.
  QXErrorHandler();

  /// Takes a copy of an implementation that `other` owns, and shares one that
  /// it does not own.
  QXErrorHandler(QXErrorHandler& other);

  /// The same; the present implementation is deleted if it was owned. Nothing
  /// happens when `other` borrows this handler's own.
  QXErrorHandler& operator=(QXErrorHandler& other);
  ~QXErrorHandler();

  /// Installs `impl`, which must not be null; the old one is deleted if it was
  /// owned. With `owned` this handler deletes `impl` in its turn. The installed
  /// implementation given again changes nothing but the ownership.
  void SetHandlerImpl(QXErrorHandlerImplBase* impl, bool owned);

  /// The installed implementation, valid until another one is installed.
  QXErrorHandlerImplBase* GetHandlerImpl();

  /// Prints to `out` from now on, which is borrowed and must outlive its use.
  ///
  /// The implementation becomes a plain stream one with the present one's
  /// strict flag, counters and calling thread's level, whatever its class was;
  /// other threads are back at Info.
  void SetOutputStream(QXPlatform::qxostream& out);

  /// While strict (the default) an Error is fatal, else it is a Warning.
  void SetStrict(bool strict);
  bool GetStrict() const;

  /// The calling thread's level. No range is checked.
  void SetLevel(unsigned level);
  unsigned GetLevel() const;

  /// Sets the counters 1 to 8 to zero; that of unknown levels stays.
  void Clear();

  /// Messages shown at `level`; 0: at levels 1 to 8 together; 9 and above:
  /// those of unknown levels.
  unsigned Count(unsigned level) const;

  // Slot 1 of a format is the object.
#define QX_PRINTF(slot, first) __attribute__((__format__(__printf__, slot, first)))
  /// Report at the level of their name.
  void Debug(const char* format, ...) QX_PRINTF(2, 3);
  void Verbose(const char* format, ...) QX_PRINTF(2, 3);
  void Info(const char* format, ...) QX_PRINTF(2, 3);
  void Warning(const char* format, ...) QX_PRINTF(2, 3);

  /// Ends the process with status 1 while strict, unless the thread's level is
  /// above Error. When it returns, the caller goes on.
  void Error(const char* format, ...) QX_PRINTF(2, 3);

  /// Ends the process with status 1 through `exit`, shown or not. When several
  /// threads do so, the first decides and the others wait; a program that calls
  /// `exit` itself, or returns from `main`, must do so when no other thread can
  /// report a Fatal.
  void Fatal(const char* format, ...) QX_PRINTF(2, 3);

  /// Ends the process with status 0 through `exit`, shown or not.
  void Usage(const char* format, ...) QX_PRINTF(2, 3);

  void Debug(const std::string& text);
  void Verbose(const std::string& text);
  void Info(const std::string& text);
  void Warning(const std::string& text);
  void Error(const std::string& text);
  void Fatal(const std::string& text);
  void Usage(const std::string& text);

  /// Reports at any level; those without a name are shown with their number.
  void Msg(unsigned level, const char* format, ...) QX_PRINTF(3, 4);
  void Msg(unsigned level, const std::string& text);

private:
  bool Drops(unsigned level) const;
  void VMsg(unsigned level, const char* format, std::va_list args) QX_PRINTF(3, 0);
#undef QX_PRINTF

  QXErrorHandlerImplBase* impl_;
  bool owned_;  // impl_ is deleted with this handler

  // impl_ if it is a QXErrorHandlerStreamImpl and of no class derived from it,
  // else null: of that one we know beforehand which messages leave no trace.
  QXErrorHandlerStreamImpl* plain_;
};

/// The handler of the process, usable from the first static constructor above
/// this library to the last instruction of `exit`: what it owns at the end is
/// never deleted.
QXSYSTEM_API extern QXErrorHandler QXThrow;

}  // namespace QXSystem

// The registry of readers and writers of the binary format: which tag is read
// by what, and which type is written by what.
#pragma once

#include <string>

#include <qxsystem/core/base.h>
#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/qxb/qxb.h>

namespace QXSystem {

class QXBinaryIOHandlerBase;
struct QXBinaryIOImpl;

// Functors are small objects that a handler copies. A reader is found by its
// tag and type together, a writer by its type alone. Calling one changes
// nothing in it, so threads may share a filled handler.

/// Base of all readers.
class QXSYSTEM_API QXReadFxnBase {
public:
  virtual ~QXReadFxnBase();

  /// The tag of the records that this reads. Valid as long as the functor.
  virtual const char* GetTag() const = 0;

  /// The identity of the type that this reads into; null for a default reader.
  virtual const void* GetType() const = 0;

  /// A copy, which the caller owns.
  virtual QXReadFxnBase* CreateCopy() const = 0;
};

/// Base of all writers.
class QXSYSTEM_API QXWriteFxnBase {
public:
  virtual ~QXWriteFxnBase();

  /// The tag of the records that this writes. Valid as long as the functor.
  virtual const char* GetTag() const = 0;

  /// The identity of the type that this writes; null for a default writer.
  virtual const void* GetType() const = 0;

  /// A copy, which the caller owns.
  virtual QXWriteFxnBase* CreateCopy() const = 0;
};

/// Reads the payload of a record into an object of type T.
template <class T>
class QXSYSTEM_API QXReadFxn : public QXReadFxnBase {
public:
  QXReadFxn<T>* CreateCopy() const override = 0;

  /// Reads `length` bytes from `in`, behind the record's head; leaves the
  /// stream behind them. A status of QXBReturn.
  virtual unsigned operator()(qxistream& in, T& object, unsigned long length,
                              const QXBinaryIOHandlerBase& handler) const = 0;
};

/// Writes an object of type T as one record, head included.
template <class T>
class QXSYSTEM_API QXWriteFxn : public QXWriteFxnBase {
public:
  QXWriteFxn<T>* CreateCopy() const override = 0;

  /// False when the object could not be written.
  virtual bool operator()(qxostream& out, const T& object,
                          const QXBinaryIOHandlerBase& handler) const = 0;
};

/// A reader for records of no type in particular.
class QXSYSTEM_API QXDefaultReadFxn : public QXReadFxnBase {
public:
  QXDefaultReadFxn* CreateCopy() const override = 0;

  /// Reads the payload of a record that has `tag`. A status of QXBReturn.
  virtual unsigned operator()(qxistream& in, unsigned long length, const char* tag,
                              const QXBinaryIOHandlerBase& handler) const = 0;
};

/// A writer for objects of which no other writer knows the type.
class QXSYSTEM_API QXDefaultWriteFxn : public QXWriteFxnBase {
public:
  QXDefaultWriteFxn* CreateCopy() const override = 0;

  /// False when something could not be written.
  virtual bool operator()(qxostream& out, const QXBinaryIOHandlerBase& handler) const = 0;
};

/// The default reader of a new handler: steps over the payload.
class QXSYSTEM_API QXDefaultReader : public QXDefaultReadFxn {
public:
  const char* GetTag() const override;
  const void* GetType() const override;
  QXDefaultReader* CreateCopy() const override;
  unsigned operator()(qxistream& in, unsigned long length, const char* tag,
                      const QXBinaryIOHandlerBase& handler) const override;
};

/// The default writer of a new handler: writes nothing, and that is no failure.
class QXSYSTEM_API QXDefaultWriter : public QXDefaultWriteFxn {
public:
  const char* GetTag() const override;
  const void* GetType() const override;
  QXDefaultWriter* CreateCopy() const override;
  bool operator()(qxostream& out, const QXBinaryIOHandlerBase& handler) const override;
};

/// The interface of a handler.
///
/// Lists are walked in order of registration and the first match wins, for
/// ever. What is registered is copied. A handler has no lock: fill it first,
/// share it afterwards. It is a QXBase too and may carry data of its own.
class QXSYSTEM_API QXBinaryIOHandlerBase : public QXBase {
public:
  bool IsDataType(const void* id) const override;

  /// Appends a copy of the functor, or makes it the default one. False, with an
  /// Error reported, for a tag of 1024 bytes or more, and false without report
  /// for a default functor that is no QXDefaultReadFxn (QXDefaultWriteFxn).
  ///
  /// Reading an object keeps a record without reader and never asks the
  /// default reader; writing does ask the default writer.
  virtual bool SetReadFxn(const QXReadFxnBase& fxn, bool asDefault) = 0;
  virtual bool SetWriteFxn(const QXWriteFxnBase& fxn, bool asDefault) = 0;

  virtual const QXDefaultReadFxn& GetDefaultReadFxn() const = 0;
  virtual const QXDefaultWriteFxn& GetDefaultWriteFxn() const = 0;

  /// Puts a copy of the functor in the place of the first one that has its type
  /// and the tag `tag`, by default its own. False when there is none.
  virtual bool ReplaceReadFxn(const QXReadFxnBase& fxn, std::string tag) = 0;
  virtual bool ReplaceWriteFxn(const QXWriteFxnBase& fxn, std::string tag) = 0;

  /// Whether a functor with this one's type and tag is registered.
  virtual bool HasReadFxn(const QXReadFxnBase& fxn) const = 0;
  virtual bool HasWriteFxn(const QXWriteFxnBase& fxn) const = 0;

  /// The functors, oldest first. The caller owns the cursor, which the handler
  /// must outlive.
  virtual QXIterBase<QXReadFxnBase>* GetReadFxns() const = 0;
  virtual QXIterBase<QXWriteFxnBase>* GetWriteFxns() const = 0;

  /// Appends a copy of a writer of values inside a QXBase. False, with an Error
  /// reported, for a tag of 1024 bytes or more.
  virtual bool SetBaseWriteFxn(const QXWriteFxn<QXBaseData>& fxn) = 0;

  /// The writers of values, oldest first; otherwise as the other cursors.
  virtual QXIterBase<QXWriteFxn<QXBaseData>>* GetBaseWriteFxns() const = 0;
};

/// A handler. A new one knows nothing; QXInitializeHandler fills it with what
/// the libraries of the program have registered.
class QXSYSTEM_API QXBinaryIOHandler : public QXBinaryIOHandlerBase {
public:
  QXBinaryIOHandler();

  /// Deep copies, the second of any handler, through its cursors.
  QXBinaryIOHandler(const QXBinaryIOHandler& other);
  explicit QXBinaryIOHandler(const QXBinaryIOHandlerBase& other);
  QXBinaryIOHandler& operator=(const QXBinaryIOHandler& other);
  ~QXBinaryIOHandler() override;

  /// Removes all functors and data; the default functors are fresh ones again.
  void Clear() override;

  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;
  QXBinaryIOHandler* CreateCopy() const override;

  bool SetReadFxn(const QXReadFxnBase& fxn, bool asDefault) override;
  bool SetWriteFxn(const QXWriteFxnBase& fxn, bool asDefault) override;
  const QXDefaultReadFxn& GetDefaultReadFxn() const override;
  const QXDefaultWriteFxn& GetDefaultWriteFxn() const override;
  bool ReplaceReadFxn(const QXReadFxnBase& fxn, std::string tag) override;
  bool ReplaceWriteFxn(const QXWriteFxnBase& fxn, std::string tag) override;
  bool HasReadFxn(const QXReadFxnBase& fxn) const override;
  bool HasWriteFxn(const QXWriteFxnBase& fxn) const override;
  QXIterBase<QXReadFxnBase>* GetReadFxns() const override;
  QXIterBase<QXWriteFxnBase>* GetWriteFxns() const override;
  bool SetBaseWriteFxn(const QXWriteFxn<QXBaseData>& fxn) override;
  QXIterBase<QXWriteFxn<QXBaseData>>* GetBaseWriteFxns() const override;

private:
  QXBinaryIOImpl* impl_;  // owned
};

/// Adds a function that registers a library's functors on a handler. To be
/// called at start-up, before any thread calls QXInitializeHandler.
QXSYSTEM_API void QXRegisterQXBInitializer(bool (*initializer)(QXBinaryIOHandlerBase&));

/// How many such functions there are.
QXSYSTEM_API unsigned QXGetQXBInitializerCount();

/// Calls all of them on `handler`, in order of registration, then those that
/// answered false a second time; one that fails twice is told as a warning.
QXSYSTEM_API void QXInitializeHandler(QXBinaryIOHandlerBase& handler);

}  // namespace QXSystem

// Reading objects in the binary format.
//
// A record is read by the functor that the handler has for its tag and the
// object's type. One that nobody claims is kept in the object, whole, so that a
// program can pass on what it does not understand. Whatever is wrong inside a
// record, the stream afterwards stands behind it.
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include <qxsystem/core/export.h>
#include <qxsystem/core/nesting.h>
#include <qxsystem/qxb/qxb.h>
#include <qxsystem/qxb/qxbhand.h>

namespace QXSystem {

/// A record's payload taken off the stream that it stands in, as a stream of
/// its own: what is read from it can do no harm outside. For readers of
/// records that hold further records.
class QXSYSTEM_API QXBPayload {
public:
  /// Takes `length` bytes off `in`. While the payload is in use nothing else
  /// may be read from `in`, whose memory it borrows where it can.
  QXBPayload(qxistream& in, unsigned long length);
  ~QXBPayload();
  QXBPayload(const QXBPayload&) = delete;
  QXBPayload& operator=(const QXBPayload&) = delete;

  /// Success, or IncorrectSize when fewer bytes came.
  unsigned Status() const { return status_; }

  qxistream& Stream() { return stream_; }

  /// Reads the tag that leads a handled value's body and gives the tag id of
  /// its name. False when there is none.
  bool ReadValueName(unsigned& tag);

private:
  std::string owned_;  // the bytes, where they could not be borrowed
  qxisstream stream_;
  unsigned status_;
};

/// The first reader of `handler` for this tag and type, null if none.
template <class T>
const QXReadFxn<T>* QXFindReadFxn(const QXBinaryIOHandlerBase& handler, const char* tag) {
  for (QXIter<QXReadFxnBase> it = handler.GetReadFxns(); it; ++it) {
    if (it->GetType() != QXGetDataType<T>()) continue;
    const char* own = it->GetTag();
    if (std::strcmp(own ? own : "", tag) != 0) continue;
    // A functor may claim the type without being a reader for it.
    if (const auto* fxn = dynamic_cast<const QXReadFxn<T>*>(&*it)) return fxn;
  }
  return nullptr;
}

/// Reads one record into `object`. A record without reader is attached to the
/// object with QXAttachData, if it is a QXBase, and that is Success too. Else
/// the status of the functor, or of what is wrong with the record's head.
template <class T>
unsigned QXBinaryRead(qxistream& in, T& object, const QXBinaryIOHandlerBase& handler) {
  QXBHead head;
  if (const unsigned status = head.ReadFrom(in)) return status;
  if (const QXReadFxn<T>* fxn = QXFindReadFxn<T>(handler, head.name.c_str()))
    return (*fxn)(in, object, head.length, handler);
  QXUnknownQXBData kept(in, QXGetDataType<T>(), head.length, head.name.c_str(), head.code);
  if (!kept) return QXBReturn::ReadLengthFailed;
  QXAttachData(std::move(kept), &object);
  return QXBReturn::Success;
}

/// Reads the payload of a generic data block, `length` bytes, and appends its
/// items to those of `object`, in their order; none is ever replaced but an
/// earlier unread value by one of its name.
///
/// A value whose functor the handler does not have is kept as a
/// QXUnknownQXBData under its name. At the first damage the walk ends and the
/// status tells what it was; items read before it stay. An item with an
/// unknown type code is no damage by itself. Throws std::bad_alloc for a length
/// beyond all memory.
QXSYSTEM_API unsigned QXBReadQXBase(qxistream& in, QXBase& object, unsigned long length,
                                    const QXBinaryIOHandlerBase& handler);

/// The same with an empty handler.
QXSYSTEM_API unsigned QXBReadPOD(qxistream& in, QXBase& object, unsigned long length);

/// Reads the data of a T from a "QXBasePOD" record. T derives from QXBase.
template <class T>
class QXSYSTEM_API QXBasePODReadFxn : public QXReadFxn<T> {
public:
  const char* GetTag() const override { return "QXBasePOD"; }
  const void* GetType() const override { return QXGetDataType<T>(); }
  QXBasePODReadFxn* CreateCopy() const override { return new QXBasePODReadFxn(*this); }

  unsigned operator()(qxistream& in, T& object, unsigned long length,
                      const QXBinaryIOHandlerBase& handler) const override {
    return QXBReadQXBase(in, object, length, handler);
  }
};

/// Reads a group: a record whose payload is a series of records, all read into
/// the same object. T is U or derives from it.
template <class T, class U = T>
class QXSYSTEM_API QXGroupReadFxn : public QXReadFxn<T> {
public:
  explicit QXGroupReadFxn(std::string tag) : tag_(std::move(tag)) {}

  const char* GetTag() const override { return tag_.c_str(); }
  const void* GetType() const override { return QXGetDataType<T>(); }
  QXGroupReadFxn* CreateCopy() const override { return new QXGroupReadFxn(*this); }

  /// The status of the first record that fails; CheckFailed for a group that
  /// lies deeper than QXMaxNesting.
  unsigned operator()(qxistream& in, T& object, unsigned long length,
                      const QXBinaryIOHandlerBase& handler) const override {
    QXBPayload payload(in, length);
    if (payload.Status() != QXBReturn::Success) return payload.Status();
    QXNestingScope level;
    if (!level) return QXBReturn::CheckFailed;
    unsigned status = QXBReturn::Success;
    while (status == QXBReturn::Success && !payload.Stream().eof())
      status = QXBinaryRead<U>(payload.Stream(), object, handler);
    return status;
  }

private:
  std::string tag_;
};

/// Reads a value of type T that lies in a QXBase, and appends it under the name
/// that leads its body. T can be built without arguments.
template <class T>
class QXSYSTEM_API QXBaseQXBReadFxn : public QXReadFxn<QXBase> {
public:
  explicit QXBaseQXBReadFxn(std::string tag) : tag_(std::move(tag)) {}

  const char* GetTag() const override { return tag_.c_str(); }
  const void* GetType() const override { return QXGetDataType<QXBase>(); }
  QXBaseQXBReadFxn* CreateCopy() const override { return new QXBaseQXBReadFxn(*this); }

  /// A name with nothing behind it is a T as built; a body without name adds
  /// nothing; both are Success.
  unsigned operator()(qxistream& in, QXBase& holder, unsigned long length,
                      const QXBinaryIOHandlerBase& handler) const override {
    if (length == 0) return QXBReturn::Success;
    QXBPayload payload(in, length);
    if (payload.Status() != QXBReturn::Success) return payload.Status();
    unsigned tag;
    if (!payload.ReadValueName(tag)) return QXBReturn::Success;
    T value{};
    if (!payload.Stream().eof())
      if (const unsigned status = QXBinaryRead<T>(payload.Stream(), value, handler)) return status;
    holder.AddData<T>(tag, std::move(value));
    return QXBReturn::Success;
  }

private:
  std::string tag_;
};

}  // namespace QXSystem

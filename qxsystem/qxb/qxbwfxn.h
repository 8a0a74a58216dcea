// Writing objects in the binary format.
//
// An object is written by the functor that the handler has for its type. What
// has a length in front of it is worked out in memory first, so what fails
// leaves the target as it was; only a target that refuses bytes can hold part
// of a record, and that is told.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/core/nesting.h>
#include <qxsystem/qxb/qxb.h>
#include <qxsystem/qxb/qxbhand.h>
#include <qxsystem/qxb/qxbrfxn.h>

namespace QXSystem {

/// Writes `object` with the first writer of `handler` for T; without one, with
/// the default writer, which as a rule writes nothing. The result is the
/// functor's.
template <class T>
bool QXBinaryWrite(qxostream& out, const T& object, const QXBinaryIOHandlerBase& handler) {
  for (QXIter<QXWriteFxnBase> it = handler.GetWriteFxns(); it; ++it) {
    if (it->GetType() != QXGetDataType<T>()) continue;
    // A functor may claim the type without being a writer for it.
    if (const auto* fxn = dynamic_cast<const QXWriteFxn<T>*>(&*it))
      return (*fxn)(out, object, handler);
  }
  return handler.GetDefaultWriteFxn()(out, handler);
}

/// Writes the data of `object` as a generic data block under `tag`, or, for an
/// empty `tag`, only the block's payload. An object without data that can be
/// stored writes nothing, and that is true.
///
/// Left out are: items without a name; a false bool; attached unknown records,
/// see QXBWriteUnknown; values of a type that has neither a form of its own nor
/// a functor in `handler`. An item whose name is too long, or whose functor
/// fails, is left out with a warning.
///
/// False, with nothing written, when an item bears the name of a code that
/// cannot be stored ("UnknownQXB200"), when `tag` has 1024 bytes or more, when
/// the block would be too long to be read again or holds a value that lies
/// deeper than QXMaxNesting; false too when the target refuses bytes. Where that
/// befalls the block of a value inside, its functor fails, and it is left out.
///
/// An array item without elements is stored, but ends the reading of its block
/// with IncorrectSize, unless it is of bool; a vector without elements has no
/// such trouble.
QXSYSTEM_API bool QXBWriteQXBase(qxostream& out, const QXBase& object, const std::string& tag,
                                 const QXBinaryIOHandlerBase& handler);

/// The same with an empty handler.
QXSYSTEM_API bool QXBWritePOD(qxostream& out, const QXBase& object, const std::string& tag);

/// Writes one record: `tag`, length, and the `payload`. False, with nothing
/// written, for a tag that cannot be stored, and with a warning for a payload
/// that is empty, which would read as damage, or too long to be read again;
/// false too when the target refuses bytes.
QXSYSTEM_API bool QXBWriteRecord(qxostream& out, const std::string& tag, const char* payload,
                                 std::size_t size);

/// Writes the data of any QXBase as a "QXBasePOD" record.
class QXSYSTEM_API QXBasePODWriteFxn : public QXWriteFxn<QXBase> {
public:
  const char* GetTag() const override;
  const void* GetType() const override;
  QXBasePODWriteFxn* CreateCopy() const override;
  bool operator()(qxostream& out, const QXBase& object,
                  const QXBinaryIOHandlerBase& handler) const override;
};

/// The payload of a group on its way out: `QXCollectWriteFxn` without its type.
QXSYSTEM_API bool QXBWriteGroup(qxostream& out, const std::string& tag, const qxosstream& records,
                                bool compress, const std::string& method);

/// Writes a group: one record whose payload is what its child functors write of
/// the same object, one after another. Children that write nothing make no
/// record.
template <class T>
class QXSYSTEM_API QXCollectWriteFxn : public QXWriteFxn<T> {
public:
  /// With `compress` the payload is compressed by `method`, a method of
  /// QXCompress; a reader that undoes that is the caller's to register. Takes
  /// the children over, none of which is null.
  QXCollectWriteFxn(std::string tag, bool compress, std::string method,
                    std::vector<QXWriteFxn<T>*> children)
      : tag_(std::move(tag)), compress_(compress), method_(std::move(method)) {
    for (QXWriteFxn<T>* child : children) children_.emplace_back(child);
  }
  QXCollectWriteFxn(const QXCollectWriteFxn& other)
      : QXWriteFxn<T>(other), tag_(other.tag_), compress_(other.compress_), method_(other.method_) {
    for (const auto& child : other.children_) children_.emplace_back(child->CreateCopy());
  }
  QXCollectWriteFxn& operator=(const QXCollectWriteFxn&) = delete;

  const char* GetTag() const override { return tag_.c_str(); }
  const void* GetType() const override { return QXGetDataType<T>(); }
  QXCollectWriteFxn* CreateCopy() const override { return new QXCollectWriteFxn(*this); }

  /// False, with an untouched target, when a child or the compression fails.
  bool operator()(qxostream& out, const T& object,
                  const QXBinaryIOHandlerBase& handler) const override {
    const QXNestingScope level;
    if (!level) return false;
    qxosstream records;
    for (const auto& child : children_)
      if (!(*child)(records, object, handler)) return false;
    return QXBWriteGroup(out, tag_, records, compress_, method_);
  }

private:
  std::string tag_;
  bool compress_;
  std::string method_;
  std::vector<std::unique_ptr<QXWriteFxn<T>>> children_;
};

/// Writes a value of type T that lies in a QXBase: a record that holds the
/// value's name as a tag and the value's own record.
template <class T>
class QXSYSTEM_API QXBaseQXBWriteFxn : public QXWriteFxn<QXBaseData> {
public:
  explicit QXBaseQXBWriteFxn(std::string tag) : tag_(std::move(tag)) {}

  const char* GetTag() const override { return tag_.c_str(); }
  const void* GetType() const override { return QXGetDataType<T>(); }
  QXBaseQXBWriteFxn* CreateCopy() const override { return new QXBaseQXBWriteFxn(*this); }

  /// Nothing, and true, for an item of another type. False, with an untouched
  /// target, when the value's own writer fails.
  bool operator()(qxostream& out, const QXBaseData& item,
                  const QXBinaryIOHandlerBase& handler) const override {
    if (item.GetDataType() != QXGetDataType<T>()) return true;
    qxosstream body;
    return QXBWriteTag(body, QXGetTag(item.GetTag())) &&
           QXBinaryWrite<T>(body, static_cast<const QXBaseDataT<T>&>(item).GetValue(), handler) &&
           QXBWriteRecord(out, tag_, body.data(), body.size());
  }

private:
  std::string tag_;
};

/// Makes values of type T inside a QXBase something that `handler` reads and
/// writes, as records that have `tag`.
///
/// The value itself goes through the handler's functors for T: without a writer
/// for T a value is stored as its name alone and comes back as a T as built.
template <class T>
void QXInstallGenericDataHandler(QXBinaryIOHandlerBase& handler, const char* tag) {
  handler.SetBaseWriteFxn(QXBaseQXBWriteFxn<T>(tag));
  handler.SetReadFxn(QXBaseQXBReadFxn<T>(tag), /*asDefault=*/false);
}

}  // namespace QXSystem

// The lists behind a QXBinaryIOHandler.
#pragma once

#include <memory>
#include <vector>

#include <qxsystem/qxb/qxbhand.h>

namespace QXSystem {

/// A list that owns its functors. They stand in a plain vector because the
/// cursors that the handler gives out point into it.
template <class F>
class FxnList {
public:
  FxnList() = default;
  FxnList(FxnList&& other) noexcept : fxns_(std::move(other.fxns_)) { other.fxns_.clear(); }
  FxnList& operator=(FxnList&& other) noexcept {
    fxns_.swap(other.fxns_);
    return *this;
  }
  ~FxnList() {
    for (F* fxn : fxns_) delete fxn;
  }

  void AppendCopy(const F& fxn) {
    std::unique_ptr<F> copy(fxn.CreateCopy());
    fxns_.push_back(copy.get());
    copy.release();
  }

  /// Appends copies of all that `cursor`, which is deleted, walks over.
  void AppendCopies(QXIterBase<F>* cursor) {
    for (QXIter<F> it = cursor; it; ++it) AppendCopy(*it);
  }

  /// The place of the first functor with this type and tag, null if none.
  F** Find(const void* type, const char* tag);

  const std::vector<F*>& Fxns() const { return fxns_; }

private:
  std::vector<F*> fxns_;
};

struct QXBinaryIOImpl {
  QXBinaryIOImpl();
  explicit QXBinaryIOImpl(const QXBinaryIOHandlerBase& other);

  FxnList<QXReadFxnBase> reads;
  FxnList<QXWriteFxnBase> writes;
  std::unique_ptr<QXDefaultReadFxn> defaultRead;
  std::unique_ptr<QXDefaultWriteFxn> defaultWrite;
  FxnList<QXWriteFxn<QXBaseData>> baseWrites;
};

}  // namespace QXSystem

// Making objects by a name known only at run time.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <qxsystem/core/error.h>
#include <qxsystem/core/export.h>

namespace QXSystem {

/// Makes objects of one class derived from `Base`.
template <class Base>
class QXSYSTEM_API QXFactoryWorkerBase {
public:
  /// A new object, with an empty name; the caller owns it.
  virtual Base* Construct() const = 0;

  /// A copy of the worker, which the caller owns.
  virtual QXFactoryWorkerBase* CreateCopy() const = 0;

  virtual ~QXFactoryWorkerBase() = default;
};

/// The worker for `X`, which has a constructor that takes a name.
template <class Base, class X>
class QXSYSTEM_API QXFactoryWorker : public QXFactoryWorkerBase<Base> {
public:
  Base* Construct() const override { return new X(std::string()); }
  QXFactoryWorker* CreateCopy() const override { return new QXFactoryWorker; }
};

/// Workers by key. Any thread may register and construct at any time.
template <class Key, class Base>
class QXSYSTEM_API QXSimpleFactory {
public:
  /// Takes `worker` over, under a key that has none yet; else it is deleted,
  /// and the result false.
  bool Register(const Key& key, QXFactoryWorkerBase<Base>* worker) {
    std::unique_ptr<QXFactoryWorkerBase<Base>> owned(worker);
    const std::lock_guard<std::mutex> lock(mutex_);
    return workers_.emplace(key, std::move(owned)).second;
  }

  /// A new object of the class that `key` stands for, which the caller owns.
  /// Null, with a Warning, for an unknown key; null, with an Error, for one
  /// whose worker is null.
  Base* Construct(const Key& key) const {
    std::unique_lock<std::mutex> lock(mutex_);
    const auto found = workers_.find(key);
    const bool known = found != workers_.end();
    if (known && found->second) return found->second->Construct();
    lock.unlock();
    if (known)
      QXThrow.Error("NULL pointer in Factory Registry");
    else
      QXThrow.Warning("QXSimpleFactory.  Unknown classid %s", key.c_str());
    return nullptr;
  }

private:
  mutable std::mutex mutex_;  // guards the map
  std::map<Key, std::unique_ptr<QXFactoryWorkerBase<Base>>> workers_;
};

}  // namespace QXSystem

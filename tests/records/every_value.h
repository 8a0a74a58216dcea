// Asking records for everything that is in them, as whatever it may be.
#pragma once

#include <stdexcept>
#include <string>
#include <tuple>

#include <qxsystem/records/datarecord.h>

namespace recordtest {

using namespace QXDataFlow;

/// A field called `name` of every built-in type.
template <class F>
void ForEveryField(const std::string& name, F call) {
  const auto fields = std::make_tuple(
      QXField<long>(name), QXField<std::string>(name), QXField<double>(name),
      QXField<QXBytes>(name), QXField<bool>(name), QXField<QXRecord>(name), QXField<QXRange>(name),
      QXField<QXJSONObject>(name), QXField<QXLinkObject>(name), QXVectorField<long>(name),
      QXVectorField<std::string>(name), QXVectorField<double>(name), QXVectorField<QXBytes>(name),
      QXVectorField<bool>(name), QXVectorField<QXRecord>(name));
  std::apply([&](const auto&... field) { (call(field), ...); }, fields);
}

/// Gets the value of `field`; of texts and blobs in vectors it may throw.
template <class F>
void AskForValue(const QXRecord& record, const F& field) {
  try {
    record.GetValue(field);
  } catch (const std::length_error&) {
  }
}

/// Gets every value as every type, and the children.
inline void AskForEveryValue(const QXRecord& record) {
  for (const QXFieldBase& stored : record.GetFields()) {
    const QXBytes bytes = record.GetBytes(stored);
    ForEveryField(stored.GetName(), [&](const auto& field) {
      AskForValue(record, field);
      QXRecord alone;  // the same bytes, whatever their type was
      alone.SetBytes(field, bytes);
      AskForValue(alone, field);
    });
    record.HasChildRecord(stored, "k");
    record.GetChildRecords(stored);
  }
}

}  // namespace recordtest

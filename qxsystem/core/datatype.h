// Type identity: a value for every type, the same in all shared libraries.
#pragma once

#include <cstdint>
#include <typeinfo>

#include <qxsystem/core/export.h>

namespace QXSystem {

namespace detail {

/// The 64-bit FNV-1a hash of a type's name as the compiler gives it, without a
/// leading "*", which only says how such names may be compared.
///
/// Source: Fowler, Noll, Vo, Eastlake, "The FNV Non-Cryptographic Hash
/// Algorithm".
QXSYSTEM_API std::uint64_t HashTypeName(const char* name);

}  // namespace detail

/// The identity of `T`, to be compared for equality only: no address, although
/// it travels as a pointer.
///
/// It follows from the name of the type, so one type has one identity wherever
/// it is asked for. Two local types of the same name, each in the unnamed
/// namespace of its own source, cannot be told apart: do not store such as data. `T`,
/// `const T` and `T&` share theirs, too.
template <class T>
const void* QXGetDataType() {
  static const auto identity = static_cast<std::uintptr_t>(detail::HashTypeName(typeid(T).name()));
  return reinterpret_cast<const void*>(identity);
}

}  // namespace QXSystem

// The table of the built-in field types, and the way from a type's name to typed
// code.
#pragma once

#include <string_view>
#include <tuple>

#include <qxsystem/records/types.h>

namespace QXDataFlow {

/// A built-in type: its name, what its handler answers, and the handler.
template <class Handler>
struct BuiltIn {
  std::string_view name;
  bool isPOD;
  bool isCacheable;
  const Handler* handler;
};
template <class Handler>
BuiltIn(std::string_view, bool, bool, const Handler*) -> BuiltIn<Handler>;

inline constexpr std::tuple builtIns{
    BuiltIn{"Int", true, false, &Types::Int},
    BuiltIn{"String", true, false, &Types::String},
    BuiltIn{"Float", true, false, &Types::Float},
    BuiltIn{"Blob", true, false, &Types::Blob},
    BuiltIn{"Bool", true, false, &Types::Bool},
    BuiltIn{"IntVec", true, false, &Types::IntVec},
    BuiltIn{"StringVec", true, false, &Types::StringVec},
    BuiltIn{"FloatVec", true, false, &Types::FloatVec},
    BuiltIn{"BlobVec", true, false, &Types::BlobVec},
    BuiltIn{"BoolVec", true, false, &Types::BoolVec},
    BuiltIn{"Record", false, true, &Types::Record},
    BuiltIn{"RecordVec", false, false, &Types::RecordVec},
    BuiltIn{"Range", false, false, &Types::Range},
    BuiltIn{"JSONObject", false, false, &Types::JSONObject},
    BuiltIn{"Link", false, false, &Types::Link},
};

/// The row of a handler's class.
template <class Handler>
constexpr const BuiltIn<Handler>& Row = std::get<BuiltIn<Handler>>(builtIns);

template <class Handler>
constexpr std::string_view NameOf(const Handler&) {
  return Row<Handler>.name;
}

/// Calls `visit(*row.handler)` for the built-in type called `name`, with the
/// handler's own class. False, without a call, for any other name.
template <class Visitor>
bool VisitBuiltIn(std::string_view name, Visitor&& visit) {
  return std::apply(
      [&](const auto&... row) {
        return ((name == row.name && (visit(*row.handler), true)) || ...);
      },
      builtIns);
}

/// A type's name in its parts.
struct TypeName {
  std::string_view space;  ///< in front of the last ":"; empty without one
  std::string_view type;
};

/// Splits at the last ":", unless a user type is registered under the whole
/// text.
TypeName SplitTypeName(std::string_view type);

}  // namespace QXDataFlow

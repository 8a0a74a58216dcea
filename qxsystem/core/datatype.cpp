#include <qxsystem/core/datatype.h>

namespace QXSystem::detail {

std::uint64_t HashTypeName(const char* name) {
  constexpr std::uint64_t offsetBasis = 0xcbf29ce484222325;
  constexpr std::uint64_t prime = 0x100000001b3;
  if (*name == '*') ++name;
  std::uint64_t hash = offsetBasis;
  for (; *name != '\0'; ++name) hash = (hash ^ static_cast<unsigned char>(*name)) * prime;
  return hash;
}

}  // namespace QXSystem::detail

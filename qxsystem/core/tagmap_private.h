// Tags for the library's own readers and writers, whose names are pieces of
// other memory and have a known length.
#pragma once

#include <string_view>

namespace QXSystem {

/// The id of `name`, as by QXGetTag.
unsigned TagOfName(std::string_view name);

/// The name with the id `id`, as by QXGetTag: it ends in a zero.
std::string_view NameOfTag(unsigned id);

}  // namespace QXSystem

// Tags: small process-wide ids for strings, the keys of generic data.
#pragma once

#include <string>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// The id of `name`, which gets one when it is new: 1024, 1025, and so on.
///
/// The upper 16 bits of an id number a block, the lower 16 bits a slot in it,
/// from 0 to 0x7fff: 0x7fff is followed by 0x10000. The empty name, and a null
/// pointer, have the id 0, "QXBondStereo" has 55; all other ids below 1024 are
/// reserved and no name maps to them. Ids follow the order in which names are
/// first seen, so they differ from run to run and have no place in a file.
///
/// Safe from any thread. A name that has an id is found without a lock and
/// without allocation. Names and ids are kept until the process ends. Throws
/// `std::length_error` when all 2^30 ids are used up.
QXSYSTEM_API unsigned QXGetTag(const char* name);
QXSYSTEM_API unsigned QXGetTag(const std::string& name);

/// The same; the table takes the string over when the name is new.
QXSYSTEM_API unsigned QXGetTag(std::string&& name);

/// The name with the id `id`, valid until the process ends and never null; ""
/// for reserved ids and for those never given out. Takes no lock once there is a
/// table.
///
/// A literal zero must be written `0u`, or it could be a null `name`.
QXSYSTEM_API const char* QXGetTag(unsigned id);

/// Whether `id` lies below the next one to be given out. True for reserved ids
/// and, once a block is full, for the numbers behind its last slot, which are
/// never given out.
QXSYSTEM_API bool QXHasTag(unsigned id);

/// Whether `name` has an id; it gets none by this.
QXSYSTEM_API bool QXHasTag(const char* name);
QXSYSTEM_API bool QXHasTag(const std::string& name);

}  // namespace QXSystem

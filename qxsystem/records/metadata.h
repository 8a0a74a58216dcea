// The catalogue of metadata: the ids that fields and records may carry, their
// names, and what each of them takes.
//
// An id has its group in the top byte, the subgroup in the next, the member in
// the low 16 bits. Ids are part of stored records, names of their JSON form, so
// neither ever changes.
#pragma once

#include <map>
#include <string>

#include <qxsystem/core/export.h>

namespace QXDataFlow::QXMetadata {

/// Whether an id is an attribute with values of type T, which is `int`,
/// `double` or `std::string`. Groups decide, so ids outside the catalogue have
/// an answer, too.
template <class T>
bool TakesAttribute(unsigned id);
template <>
QXSYSTEM_API bool TakesAttribute<int>(unsigned id);
template <>
QXSYSTEM_API bool TakesAttribute<double>(unsigned id);
template <>
QXSYSTEM_API bool TakesAttribute<std::string>(unsigned id);

/// Whether an id carries no value: it is an attribute of no type.
QXSYSTEM_API bool IsOption(unsigned id);

/// All ids with their names, ordered by id.
QXSYSTEM_API const std::map<unsigned, std::string>& GetMetaConstants();

/// The bits in which an id must differ from the options of the record's other
/// fields, of the field itself: an option takes the place of those that are
/// equal to it in these bits. 0 where there is no such rule.
QXSYSTEM_API unsigned QXGetMetaPerRecordMask(unsigned id);
QXSYSTEM_API unsigned QXGetMetaPerFieldMask(unsigned id);

}  // namespace QXDataFlow::QXMetadata

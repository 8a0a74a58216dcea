#include <qxsystem/records/metadata.h>

#include <algorithm>
#include <initializer_list>

#include <qxsystem/records/metadata_private.h>

namespace QXDataFlow::QXMetadata {
namespace {

// The groups whose ids carry values, by the type of these. The first text group
// is that of the ids that only records have.
constexpr unsigned StringAtts[] = {0x01000000, 0x02000000, 0x03000000, 0x07000000, 0x07010000};
constexpr unsigned FloatAtts[] = {0x09000000};
constexpr unsigned IntAtts[] = {0x06020000};

// Options that one field of a record may have at the most: Flags.ID and
// Hints.Chem.PrimaryMol. Groups of which a field may have one at the most: Units.
constexpr unsigned onePerRecord[] = {0x04000001, 0x05010001};
constexpr unsigned onePerField[] = {0x08000000};

constexpr unsigned Group = 0xFF000000, Subgroup = 0xFFFF0000;

template <std::size_t N>
bool IsIn(const unsigned (&list)[N], unsigned id) {
  return std::find(list, list + N, id) != list + N;
}

template <std::size_t N>
unsigned Mask(const unsigned (&list)[N], unsigned id) {
  if (IsIn(list, id)) return ~0U;
  if (!IsIn(list, id & Group)) return 0;
  return IsIn(onePerRecord, id & Subgroup) ? Subgroup : Group;
}

}  // namespace

template <>
bool TakesAttribute<int>(unsigned id) {
  return IsIn(IntAtts, id & Subgroup);
}
template <>
bool TakesAttribute<double>(unsigned id) {
  return IsIn(FloatAtts, id & Subgroup);
}
template <>
bool TakesAttribute<std::string>(unsigned id) {
  return IsIn(StringAtts, id & Subgroup);
}

bool IsOption(unsigned id) {
  return !TakesAttribute<std::string>(id) && !TakesAttribute<double>(id) &&
         !TakesAttribute<int>(id);
}

const std::map<unsigned, std::string>& GetMetaConstants() {
  // May be asked during exit, so it is never destroyed.
  static const auto& names = *[] {
    auto* all = new std::map<unsigned, std::string>;
    for (const MetaName& row : MetaNames) all->emplace_hint(all->end(), row.id, row.name);
    return all;
  }();
  return names;
}

unsigned QXGetMetaPerRecordMask(unsigned id) {
  return Mask(onePerRecord, id);
}

unsigned QXGetMetaPerFieldMask(unsigned id) {
  return Mask(onePerField, id);
}

}  // namespace QXDataFlow::QXMetadata

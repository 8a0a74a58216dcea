// Sets of named constants and flags as settings: text to number and back, and
// what a parameter needs to offer them. Also parameters made in one call, and
// the endings of file names.
#pragma once

#include <string>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>

namespace QXSystem {

class QXInterface;
class QXParameter;

/// One named number.
struct QXNamespacePrim {
  std::string name;
  unsigned int value;
  std::string description;  ///< for help; may have several lines
};

/// The kinds of a set. All numbers other than Constants count as Flags.
namespace QXNamespaceKind {
constexpr unsigned Constants = 1;  ///< a value is one of the numbers
constexpr unsigned Flags = 2;      ///< or several, their names joined with "|"
}  // namespace QXNamespaceKind

/// A set of named numbers. Names are compared exactly. What is not in the set is
/// told as a Warning.
class QXSYSTEM_API QXNamespaceInterface {
public:
  /// `name` is that of the set, for messages.
  QXNamespaceInterface(std::vector<QXNamespacePrim> primitives, unsigned kind, std::string name);

  unsigned GetKind() const { return kind_; }
  const std::string& GetName() const { return name_; }

  /// The named numbers as given. The caller owns the cursor, which the set must
  /// outlive.
  QXIterBase<const QXNamespacePrim>* GetPrimitives() const;

  /// Whether `text` is a name, or, of flags, names joined with "|"; of flags the
  /// empty text is valid too.
  bool IsValid(const std::string& text) const;

  /// The number that such a text stands for, of flags the union of all and 0 for
  /// the empty text; else `fallback`.
  unsigned GetValue(const std::string& text, unsigned fallback) const;

  /// The first name of `value`, or, of flags without such a name, the names of
  /// all numbers but 0 that lie wholly in it, whether or not they make up all of
  /// it. If there are none, `fallback`; a set without names does not warn.
  std::string GetName(unsigned value, const std::string& fallback) const;

private:
  const QXNamespacePrim* Find(const std::string& name) const;
  bool Combine(const std::string& text, unsigned& value) const;

  std::vector<QXNamespacePrim> primitives_;
  unsigned kind_;
  std::string name_;
};

/// Makes the names of `names` legal values of `parameter`, one of strings, and
/// with `details` describes them as `QXAddDetails` does. What the parameter
/// refuses is passed over. Neither may be null. True.
QXSYSTEM_API bool QXAddLegalValues(QXParameter* parameter, const QXNamespaceInterface* names,
                                   bool details);

/// Adds lines about the names to the long description of `parameter`: of flags
/// all of them and how they are combined, then those that have a description.
/// Most begin with a tab, which QXWriteJSON does not escape. Neither may be null.
/// True.
QXSYSTEM_API bool QXAddDetails(QXParameter* parameter, const QXNamespaceInterface* names);

/// Adds a parameter of the class that the factory knows by `type`, for all to
/// see, and returns it; `interface` owns it. `list` other than 0 makes it a list;
/// an empty `alias` is none. Null, with Warnings, for an unknown `type`.
QXSYSTEM_API QXParameter* QXCreateParam(QXInterface& interface, const std::string& type,
                                        const std::string& name, const std::string& alias,
                                        const std::string& brief, unsigned list);

/// The same, without list, with a legal range.
QXSYSTEM_API QXParameter* QXCreateParamWithRange(QXInterface& interface, const std::string& type,
                                                 const std::string& name, const std::string& alias,
                                                 const std::string& brief, const std::string& low,
                                                 const std::string& high);

/// The same, without list, of type "string".
QXSYSTEM_API QXParameter* QXCreateStringParam(QXInterface& interface, const std::string& name,
                                              const std::string& alias, const std::string& brief);

/// The ending of a file's name, in lower case: what stands behind the last "."
/// that is followed by no ending on the list `skip`, which has commas between
/// its entries. "mol" for "a.mol.gz" and "gz"; empty if there is none.
QXSYSTEM_API std::string QXFileExtension(const std::string& file, const std::string& skip);

/// All endings of a file's name, in lower case: what stands behind the first ".".
/// "tar.gz" for "a.tar.gz".
QXSYSTEM_API std::string QXFileExtensions(const std::string& file);

}  // namespace QXSystem

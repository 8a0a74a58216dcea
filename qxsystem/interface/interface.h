// The description of a program's command line: a tree of categories with
// parameters, made from a text that the program carries.
//
//     const char text[] =
//         "!PARAMETER -in\n"
//         "  !TYPE string\n"
//         "  !KEYLESS 1\n"
//         "  !BRIEF Structures to read\n"
//         "!END\n";
//
//     int main(int argc, char** argv) {
//       QXInterface itf(text, argc, argv);  // ends the process on any fault
//       std::string in;
//       QXGetSetting(itf, "-in", in);  // see parameter.h
//
// docs/command-line.md describes the text and what users of the program see.
#pragma once

#include <memory>
#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/interface/factory.h>
#include <qxsystem/interface/parameter.h>

namespace QXPlatform {
class qxistream;
class qxostream;
}  // namespace QXPlatform

namespace QXSystem {

class QXInterfaceImpl;

/// A category of parameters, and the whole tree when it has no parent.
///
/// Owns its parameters and child categories; what the operations return stays
/// the interface's. Names of parameters are expected to be unique in the tree:
/// of two with one name, look-ups find the first. Cursors belong to the caller
/// and end their validity with the next addition or deletion.
///
/// Plain setters answer true.
class QXSYSTEM_API QXInterface {
public:
  QXInterface();

  /// Configures from a text that ends in a zero byte, as `QXConfigure` does. A
  /// fault is an Error "Problem configuring QXInterface!".
  explicit QXInterface(const unsigned char* text);
  explicit QXInterface(const char* text);

  /// Then answers "--help" and its sisters, on standard error, and parses the
  /// arguments. The process ends with status 0 when help was asked for or
  /// nothing given although something is required, and with status 1 when the
  /// arguments are at fault. A text at fault, when errors are not strict, leaves
  /// the arguments unread.
  QXInterface(const unsigned char* text, int argc, char** argv);
  QXInterface(const char* text, int argc, char** argv);

  /// Copies are deep. The copy has no parent; the assigned one keeps its own.
  QXInterface(const QXInterface& other);
  QXInterface& operator=(const QXInterface& other);
  ~QXInterface();

  bool SetName(const std::string& name);
  const std::string& GetName() const;

  /// One line of description.
  bool SetBrief(const std::string& brief);
  const std::string& GetBrief() const;

  /// Appends a line to the long description.
  bool AddDetail(const std::string& line);
  QXIterBase<const std::string>* GetDetail() const;

  /// Sort key among the categories of a parent, lowest first.
  bool SetOrderPriority(int priority);
  int GetOrderPriority() const;

  /// A new parameter of the class that the factory knows by `classid`, still
  /// without name. Null, with Warnings, for an unknown one.
  QXParameter* AddParameter(const std::string& classid);

  /// Adds a copy and returns it.
  QXParameter* AddParameter(const QXParameter& parameter);

  /// Deletes a parameter from wherever it is in this tree; false if it is not.
  bool DeleteParameter(QXParameter& parameter);

  /// A new, empty child category.
  QXInterface* AddInterface();

  /// Deletes a category, with all it holds, from wherever it is in this tree;
  /// false if it is not.
  bool DeleteInterface(QXInterface& category);

  /// The first of `GetParameters(true)` that has this name or alias, in this
  /// very spelling; else null.
  QXParameter* GetParameter(const std::string& name) const;

  /// The parameters of this category, ordered by priority, then by name. With
  /// `recursive`: those of this category as they were added, then the ordered
  /// parameters of every category of `GetInterfaces(true)`.
  QXIterBase<QXParameter>* GetParameters(bool recursive) const;

  /// The first of `GetInterfaces(true)` with this very name, else null.
  QXInterface* GetInterface(const std::string& name) const;

  /// The child categories, ordered by priority, then by name. With `recursive`:
  /// the children as they were added, then the same of every child, in order.
  QXIterBase<QXInterface>* GetInterfaces(bool recursive) const;

  /// The category that this one is part of; null for a whole tree. Setting it
  /// moves nothing.
  QXInterface* Parent() const;
  bool SetParent(QXInterface* parent);

  /// Deletes all parameters and categories, and empties name, brief and detail.
  bool Clear();

  /// The factory of parameters, in which programs may register more classes. It
  /// serves all threads.
  static QXSimpleFactory<std::string, QXParameter>& Factory();

private:
  friend class QXInterfaceImpl;

  std::unique_ptr<QXInterfaceImpl> impl_;  // never null
};

/// Adds to `interface` what a configuration text describes. False after a fault,
/// which is reported as an Error; what was read before it stays. Lines of a
/// parameter that have no effect are reported too, but do not end the reading, nor
/// does a fault in a category end that of the one around it. Categories lie at most
/// QXMaxNesting deep in one another, `interface` being the first.
QXSYSTEM_API bool QXConfigure(QXInterface& interface, const unsigned char* text);
QXSYSTEM_API bool QXConfigure(QXInterface& interface, const char* text);
QXSYSTEM_API bool QXConfigure(QXInterface& interface, QXPlatform::qxistream& in);

/// Writes a configuration text from which `QXConfigure` makes the same tree,
/// hidden parameters left out. The name, brief and detail of `interface` itself
/// have no place in it; docs/command-line.md lists what else is lost. False when
/// the stream refused bytes.
QXSYSTEM_API bool QXWriteInterfaceConfigurationFile(const QXInterface& interface,
                                                    QXPlatform::qxostream& out);

/// Whether all required parameters are set and, where a requirement text is
/// given, one option of each of its blocks holds. Faults, also of the text, are
/// reported at `level`; a key that is not known always as an Error.
QXSYSTEM_API bool QXHasRequired(const QXInterface& interface, const unsigned char* requirements,
                                unsigned level);

}  // namespace QXSystem

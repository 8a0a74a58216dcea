// A program's settings as an object of a class of its own, from which a command
// line can be made, and into which the settings come back.
//
//     class FitOptions : public QXOptions {
//     public:
//       FitOptions() : QXOptions("Fit") {
//         AddParameter(QXIntParameter("-cycles", 10));
//       }
//       FitOptions* CreateCopy() const override { return new FitOptions(*this); }
//       int GetCycles() const {
//         int cycles = 0;
//         QXGetSetting(*this, "-cycles", cycles);
//         return cycles;
//       }
//     };
//
// <qxsystem/interface/interface_opts.h> connects such an object with a command
// line.
#pragma once

#include <string>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/interface/parameter.h>

namespace QXSystem {

/// Parameters, and further options as children, under a name.
///
/// A library's options become part of a program's as a child. Where names then
/// clash, a prefix or suffix for all of them helps.
///
/// Owns its parameters and children; what the operations return stays the
/// object's. Copies are deep, so pointers to parameters that a derived class
/// keeps are those of the original: look them up in the copy. Cursors belong to
/// the caller and end their validity with the next addition or deletion.
///
/// Names of parameters, and their aliases, are looked up in any case of letters,
/// names of options in the very spelling. Where `recursive` says so, this
/// object's parameters come first and then those of one child after the other,
/// with all that is below it, as they were added; otherwise they are ordered by
/// priority, then by name. Plain setters answer true.
class QXSYSTEM_API QXOptions {
public:
  explicit QXOptions(const std::string& name);

  /// Begins with so many slots that are null, for a derived class to fill. Slots
  /// that stay null are passed over everywhere.
  QXOptions(const std::string& name, unsigned long nparam, unsigned long noption);

  QXOptions(const QXOptions& other);

  /// `other` may be a part of this tree.
  QXOptions& operator=(const QXOptions& other);
  virtual ~QXOptions();

  /// Whether the settings fit together, as the derived class knows; here true.
  /// The program asks, nobody else does.
  virtual bool Validate() const;

  /// A copy of the derived class, which the caller owns.
  virtual QXOptions* CreateCopy() const = 0;

  bool SetName(const std::string& name);
  const std::string& GetName() const { return name_; }

  /// One line of description.
  bool SetBrief(const std::string& brief);
  const std::string& GetBrief() const { return brief_; }

  /// Appends a line to the long description.
  bool AddDetail(const std::string& line);
  QXIterBase<const std::string>* GetDetail() const;

  /// Sort key among the children of one parent, lowest first.
  bool SetOrderPriority(int priority);
  int GetOrderPriority() const { return order_priority_; }

  /// Add a copy and return it.
  QXParameter* AddParameter(const QXParameter& parameter);
  QXOptions* AddOption(const QXOptions& option);

  /// Delete what is anywhere in this tree; false if it is not.
  bool DeleteParameter(QXParameter& parameter);
  bool DeleteOptions(QXOptions& option);

  /// Deletes all parameters and children; name, brief and detail stay. True.
  bool Clear();

  /// Appends the parameters that have `name`, as they were added; all of them if
  /// it is empty.
  void GetParameters(std::vector<QXParameter*>& parameters, const std::string& name,
                     bool recursive) const;

  QXIterBase<QXParameter>* GetParameters(bool recursive) const;
  QXIterBase<QXParameter>* GetParameters(const char* name) const = delete;  // is no bool
  QXIterBase<QXParameter>* GetParameters(const std::string& name, bool recursive) const;

  /// The first of `GetParameters(name, true)`, else null.
  QXParameter* GetParameter(const std::string& name) const;
  bool HasParameter(const std::string& name) const { return GetParameter(name) != nullptr; }

  /// Appends the children, as they were added; with `recursive` each is followed
  /// by what is below it.
  void GetOptions(std::vector<QXOptions*>& options, bool recursive) const;
  QXIterBase<QXOptions>* GetOptions(bool recursive) const;

  /// The first of `GetOptions(true)` with this very name, else null.
  QXOptions* GetOption(const std::string& name) const;
  bool HasOption(const std::string& name) const { return GetOption(name) != nullptr; }

  /// Whether the name of `parameter` or one of its aliases is `name`.
  static bool ParamHasName(const QXParameter& parameter, const std::string& name);

  /// Rename every parameter of the tree: with the prefix "a", "-x" becomes
  /// "-a_x", whatever its first character was. Aliases stay. False when some name
  /// would not be one word, and stays.
  bool AddParameterSuffix(const std::string& suffix);
  bool AddParameterPrefix(const std::string& prefix);

  /// Sets the visibility of every parameter of the tree, or of those that have
  /// `name`, unless it is empty. See QXVisibility.
  bool SetParameterVisibility(unsigned visibility);
  bool SetParameterVisibility(const std::string& name, unsigned visibility);

  /// Takes over the values that parameters of the same names have in `other`;
  /// what has none there stays as it is. Ends with false at the first value that
  /// a parameter does not take.
  bool UpdateValues(const QXOptions& other);

  /// Appends the parameters of the tree that have a name or alias in common with
  /// another one: a command line would only ever find the first of them. With
  /// `skipHidden`, hidden ones do not take part.
  void GetDuplicateParams(std::vector<QXParameter*>& parameters, bool skipHidden) const;
  QXIterBase<QXParameter>* FindDupParameters(bool skipHidden) const;
  bool HasDupParameters(bool skipHidden) const;

protected:
  std::vector<QXParameter*> parameters_;  // owned; null slots are allowed
  std::vector<QXOptions*> options_;       // owned; null slots are allowed

private:
  std::string name_;
  std::string brief_;
  std::vector<std::string> detail_;
  int order_priority_ = 0;
};

}  // namespace QXSystem

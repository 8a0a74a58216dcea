// One named, typed setting of a command-line interface: what configuration
// texts declare, command lines and files set, and help pages describe.
#pragma once

#include <deque>
#include <string>
#include <utility>
#include <vector>

#include <qxsystem/core/datatype.h>
#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/platform/istream.h>

namespace QXSystem {

/// How widely a parameter is shown: help of level v shows those with a
/// visibility of at most v. Larger numbers count as Hidden.
namespace QXVisibility {
constexpr unsigned Simple = 0;
constexpr unsigned Normal = 1;
constexpr unsigned Hidden = 2;
}  // namespace QXVisibility

/// Two bounds of a range, as text, in either order. "inf" reaches upward from
/// the other bound, "-inf" downward, on whichever side it stands.
using QXStringPair = std::pair<std::string, std::string>;

/// One setting of a command-line interface, without its type.
///
/// Every setting is kept twice: as text, the way it arrived, and as a value of
/// its type. Text is added first and `Load` converts it; a value of the wrong
/// form is refused when it is added, one that is not legal only by those who
/// ask `IsLegalString`. What is printed is always the text.
///
/// Copies are deep. Cursors belong to the caller and end their validity with
/// the next change of the parameter. Operations that return bool answer true
/// on success; a failure changes nothing and says nothing, unless told.
class QXSYSTEM_API QXParameter {
public:
  virtual ~QXParameter();

  /// The legal values in the form that a reader of help likes best.
  virtual QXIterBase<const std::string>* GetPrettyLegalValues() const;

  /// The text of default `i` in that form.
  virtual std::string GetPrettyDefault(unsigned i = 0) const;

  /// These replace or extend the texts; false when `text` cannot be converted.
  /// The typed values change with the next `Load`.
  virtual bool SetStringValue(const std::string& text);
  virtual bool SetStringDefault(const std::string& text);
  virtual bool AddStringValue(const std::string& text);
  virtual bool AddStringDefault(const std::string& text);

  /// Remove the texts and the typed values. True.
  virtual bool ClearValues();
  virtual bool ClearDefaults();

  /// Sets the values, text and typed, from one text that lists them. False
  /// here: not every kind of parameter takes such a list.
  virtual bool SetStringValues(const std::string& list);

  /// Extend the lists that say what is legal. Illegal beats legal, and without
  /// any legal entry everything else is legal. False for text that cannot be
  /// converted; a bad bound of a legal range only shows when legality is asked.
  virtual bool AddLegalValue(const std::string& text);
  virtual bool AddIllegalValue(const std::string& text);
  virtual bool AddLegalRange(const std::string& low, const std::string& high);
  virtual bool AddIllegalRange(const std::string& low, const std::string& high);

  /// Whether `text` is a legal setting. Here: it matches no illegal value, and
  /// a legal one if there are any; in any case of letters, with "*" in the
  /// entries standing for any text.
  virtual bool IsLegalString(const std::string& text) const;

  /// Whether the parameter is set to `text`. Here: it equals one of the texts
  /// of the values, or of the defaults when there are no values.
  virtual bool IsSetToString(const std::string& text) const;

  /// Converts the texts of the values and of the defaults. False at the first
  /// that cannot be converted: those values (defaults) then are empty, their
  /// text stays.
  virtual bool Load();
  virtual bool LoadValue() = 0;
  virtual bool LoadDefault() = 0;

  /// Whether value or default `i` exists, typed; text that was not loaded does
  /// not count.
  virtual bool IsSet(unsigned i = 0) const;
  virtual bool GetHasValue(unsigned i = 0) const = 0;
  virtual bool GetHasDefault(unsigned i = 0) const = 0;

  /// The identity of QXTypedParameter<T>: what may be cast to.
  virtual const void* TypedParameterTypeID() const = 0;

  /// The word by which a configuration text and the factory know the class.
  virtual std::string ClassID() const = 0;

  /// Values and defaults in a binary form for one host: for each a byte 1, a
  /// count of 4 bytes and the entries. The texts are no part of it. `buffer`
  /// has ValueAndDefaultBinarySize() bytes; the result is the bytes written.
  virtual unsigned WriteValueAndDefaultBinary(unsigned char* buffer) const = 0;

  /// Reads that form, in either byte order, into the typed values and defaults
  /// and returns the bytes consumed. At a block that starts with another byte
  /// it stops, one byte behind its beginning. The bytes are trusted.
  virtual unsigned ReadValueAndDefaultBinary(const unsigned char* buffer) = 0;
  virtual unsigned ValueAndDefaultBinarySize() const = 0;

  /// A deep copy, which the caller owns.
  virtual QXParameter* CreateCopy() const = 0;

  /// Whether `text` can be converted to a value of the type at all.
  virtual bool IsValidString(const std::string& text) const = 0;

  /// The key as it stands on a command line, usually with a leading "-". It is
  /// one word: any other text, white space around it aside, is refused.
  bool SetName(const std::string& name);
  const std::string& GetName() const { return name_; }

  /// Further keys, each one word.
  bool AddAlias(const std::string& alias);
  QXIterBase<const std::string>* GetAliases() const;

  /// One line of description.
  bool SetBrief(const std::string& brief);
  const std::string& GetBrief() const { return brief_; }

  /// Appends a line to the long description.
  bool AddDetail(const std::string& line);
  QXIterBase<const std::string>* GetDetail() const;

  /// Whether the parameter must have a value or a default.
  bool SetRequired(bool required);
  bool GetRequired() const { return required_; }

  /// 0: the parameter needs its key. n: it is the n-th that may do without.
  bool SetKeyless(unsigned number);
  unsigned GetKeyless() const { return keyless_; }

  /// See QXVisibility; Normal at first.
  bool SetVisibility(unsigned visibility);
  unsigned GetVisibility() const { return visibility_; }

  /// Sort key among the parameters of a category, lowest first.
  bool SetOrderPriority(int priority);
  int GetOrderPriority() const { return order_priority_; }

  /// These four are kept and written out for others to use.
  bool SetInput(unsigned channel);
  unsigned GetInput() const { return input_; }
  bool SetOutput(bool output);
  bool GetOutput() const { return output_; }
  bool SetElement(const std::string& element);
  const std::string& GetElement() const { return element_; }
  bool SetCommand(const std::string& command);
  const std::string& GetCommand() const { return command_; }

  /// Whether several values may be given.
  bool SetIsList(bool list);
  bool GetIsList() const { return is_list_; }

  QXIterBase<const std::string>* GetLegalValues() const;
  QXIterBase<const std::string>* GetIllegalValues() const;
  QXIterBase<const QXStringPair>* GetLegalRanges() const;
  QXIterBase<const QXStringPair>* GetIllegalRanges() const;
  QXIterBase<const std::string>* GetStringValues() const;
  QXIterBase<const std::string>* GetStringDefaults() const;

  /// The text of value or default `i`; empty beyond the last.
  std::string GetStringValue(unsigned i = 0) const;
  std::string GetStringDefault(unsigned i = 0) const;

protected:
  explicit QXParameter(const std::string& name);
  QXParameter(const QXParameter&) = default;
  QXParameter& operator=(const QXParameter&) = default;

  const std::vector<std::string>& StringValues() const { return string_values_; }
  const std::vector<std::string>& StringDefaults() const { return string_defaults_; }
  const std::vector<std::string>& LegalValues() const { return legal_values_; }
  const std::vector<std::string>& IllegalValues() const { return illegal_values_; }
  const std::vector<QXStringPair>& LegalRanges() const { return legal_ranges_; }
  const std::vector<QXStringPair>& IllegalRanges() const { return illegal_ranges_; }

private:
  bool AddValid(std::vector<std::string>& texts, const std::string& text) const;
  bool SetValid(std::vector<std::string>& texts, const std::string& text) const;

  std::string name_;  // one word, or empty before the first name
  std::string brief_;
  std::vector<std::string> string_values_;
  std::vector<std::string> string_defaults_;
  bool required_ = false;
  unsigned keyless_ = 0;
  unsigned visibility_ = QXVisibility::Normal;
  int order_priority_ = 0;
  unsigned input_ = 0;
  bool output_ = false;
  std::vector<std::string> aliases_;  // one word each
  std::vector<std::string> legal_values_;
  std::vector<std::string> illegal_values_;
  std::vector<QXStringPair> legal_ranges_;
  std::vector<QXStringPair> illegal_ranges_;
  std::vector<std::string> detail_;
  std::string element_;
  std::string command_;
  bool is_list_ = false;
};

/// A parameter whose settings are of type T: bool, unsigned int, int, float,
/// double, std::string or qxisstream.
///
/// The typed setters keep text and values in step without a `Load`; but a later
/// `Load` makes the values anew from the text, which for float has 6 and for
/// double 12 decimals: what is smaller is lost then.
template <class T>
class QXSYSTEM_API QXTypedParameter : public QXParameter {
public:
  ~QXTypedParameter() override;

  bool ClearValues() override;
  bool ClearDefaults() override;
  bool LoadValue() override;
  bool LoadDefault() override;
  bool GetHasValue(unsigned i = 0) const override;
  bool GetHasDefault(unsigned i = 0) const override;
  const void* TypedParameterTypeID() const override;

  /// Value or default `i`; false, with `out` as it was, beyond the last.
  virtual bool GetValue(T& out, unsigned i = 0) const;
  virtual bool GetDefault(T& out, unsigned i = 0) const;

  /// What is in force: the value if there is one, else the default.
  virtual bool GetSetting(T& out, unsigned i = 0) const;

  /// These extend or replace the values or defaults; false for what is not
  /// legal.
  virtual bool AddValue(const T& value);
  virtual bool AddDefault(const T& value);
  virtual bool SetValue(const T& value);
  virtual bool SetDefault(const T& value);

  virtual QXIterBase<const T>* GetValues() const = 0;
  virtual QXIterBase<const T>* GetDefaults() const = 0;

  /// All values if there are any, else all defaults.
  virtual QXIterBase<const T>* GetSettings() const;

  /// Whether `value` is a legal setting. A list entry that cannot be
  /// understood, and a range with a bad bound, is reported as an Error; such a
  /// range makes the answer false.
  virtual bool IsLegal(const T& value) const = 0;

  /// Text to value and back; false when that cannot be done.
  virtual bool GetTypedValue(T& out, const std::string& text) const = 0;
  virtual bool GetString(std::string& out, const T& value) const = 0;

  /// The identity of the concrete class.
  virtual const void* FactoryTypeID() const = 0;

protected:
  explicit QXTypedParameter(const std::string& name);
  QXTypedParameter(const QXTypedParameter&);
  QXTypedParameter& operator=(const QXTypedParameter&);

  // After a successful `Load` each holds one entry per text, in order.
  std::deque<T> values_;
  std::deque<T> defaults_;
};

/// What is the same for every parameter of numbers, truth values or texts.
template <class T>
class QXSYSTEM_API QXPODParameter : public QXTypedParameter<T> {
public:
  ~QXPODParameter() override;

  /// Takes texts that are separated by blanks, commas, tabs or line feeds. All
  /// must be legal, and there must be one, or nothing changes.
  bool SetStringValues(const std::string& list) override;

  bool IsLegalString(const std::string& text) const override;
  bool IsSetToString(const std::string& text) const override;
  unsigned WriteValueAndDefaultBinary(unsigned char* buffer) const override;
  unsigned ReadValueAndDefaultBinary(const unsigned char* buffer) override;
  unsigned ValueAndDefaultBinarySize() const override;
  bool IsValidString(const std::string& text) const override;

  QXIterBase<const T>* GetValues() const override;
  QXIterBase<const T>* GetDefaults() const override;
  bool IsLegal(const T& value) const override;
  bool GetTypedValue(T& out, const std::string& text) const override;
  bool GetString(std::string& out, const T& value) const override;

protected:
  explicit QXPODParameter(const std::string& name);
  QXPODParameter(const std::string& name, const T& value);  // `value`: the default
  QXPODParameter(const QXPODParameter&);
  QXPODParameter& operator=(const QXPODParameter&);
};

/// Gives setting `i` of the parameter `name` of a QXInterface or of QXOptions: its
/// value, else its default. False, with `out` as it was, when there is none, no
/// such parameter, or it is of another type than T.
template <class T, class Tree>
bool QXGetSetting(const Tree& tree, const std::string& name, T& out, unsigned i = 0) {
  const QXParameter* parameter = tree.GetParameter(name);
  return parameter && parameter->TypedParameterTypeID() == QXGetDataType<QXTypedParameter<T>>() &&
         static_cast<const QXTypedParameter<T>*>(parameter)->GetSetting(out, i);
}

extern template class QXTypedParameter<bool>;
extern template class QXTypedParameter<unsigned int>;
extern template class QXTypedParameter<int>;
extern template class QXTypedParameter<float>;
extern template class QXTypedParameter<double>;
extern template class QXTypedParameter<std::string>;
extern template class QXTypedParameter<QXPlatform::qxisstream>;
extern template class QXPODParameter<bool>;
extern template class QXPODParameter<unsigned int>;
extern template class QXPODParameter<int>;
extern template class QXPODParameter<float>;
extern template class QXPODParameter<double>;
extern template class QXPODParameter<std::string>;

}  // namespace QXSystem

// The kinds of parameter that a configuration text can name.
#pragma once

#include <map>
#include <string>
#include <unordered_set>

#include <qxsystem/core/export.h>
#include <qxsystem/interface/parameter.h>

namespace QXSystem {

/// Gives a concrete class what follows from its name: class id, identity and
/// copy. A class that inherited its parent's copy would be cut down by it.
template <class Self, class Base>
class QXSYSTEM_API QXNamedParameter : public Base {
public:
  std::string ClassID() const override { return Self::StaticClassID(); }
  const void* FactoryTypeID() const override { return QXGetDataType<Self>(); }
  QXParameter* CreateCopy() const override { return new Self(static_cast<const Self&>(*this)); }

protected:
  using Base::Base;
};

// Each class has a constructor that takes the name, and most have one that
// takes a default too.

/// A truth value: "0", "1" and, in any case of letters, "yes", "no", "true",
/// "false", "on", "off", "y", "n", "t", "f". Both are always legal.
class QXSYSTEM_API QXBoolParameter
    : public QXNamedParameter<QXBoolParameter, QXPODParameter<bool>> {
public:
  explicit QXBoolParameter(const std::string& name);
  QXBoolParameter(const std::string& name, bool value);
  QXBoolParameter(const std::string& name, const char* value) = delete;  // would be true
  static std::string StaticClassID();

  bool AddLegalValue(const std::string& text) override;
  bool AddIllegalValue(const std::string& text) override;
  bool AddLegalRange(const std::string& low, const std::string& high) override;
  bool AddIllegalRange(const std::string& low, const std::string& high) override;
};

/// A signed whole number of 32 bits.
class QXSYSTEM_API QXIntParameter : public QXNamedParameter<QXIntParameter, QXPODParameter<int>> {
public:
  explicit QXIntParameter(const std::string& name);
  QXIntParameter(const std::string& name, int value);
  static std::string StaticClassID();
};

/// An unsigned whole number of 32 bits.
class QXSYSTEM_API QXUIntParameter
    : public QXNamedParameter<QXUIntParameter, QXPODParameter<unsigned int>> {
public:
  explicit QXUIntParameter(const std::string& name);
  QXUIntParameter(const std::string& name, unsigned int value);
  static std::string StaticClassID();
};

/// A real number; its text has 6 decimals when it is set as a value.
class QXSYSTEM_API QXFloatParameter
    : public QXNamedParameter<QXFloatParameter, QXPODParameter<float>> {
public:
  explicit QXFloatParameter(const std::string& name);
  QXFloatParameter(const std::string& name, float value);
  static std::string StaticClassID();
};

/// A real number; its text has 12 decimals when it is set as a value.
class QXSYSTEM_API QXDoubleParameter
    : public QXNamedParameter<QXDoubleParameter, QXPODParameter<double>> {
public:
  explicit QXDoubleParameter(const std::string& name);
  QXDoubleParameter(const std::string& name, double value);
  static std::string StaticClassID();
};

/// A text. Legal and illegal values are compared in any case of letters, with
/// "*" in them standing for any text; ranges there are none.
class QXSYSTEM_API QXStringParameter
    : public QXNamedParameter<QXStringParameter, QXPODParameter<std::string>> {
public:
  explicit QXStringParameter(const std::string& name);
  QXStringParameter(const std::string& name, const std::string& value);
  static std::string StaticClassID();

  bool AddLegalRange(const std::string& low, const std::string& high) override;
  bool AddIllegalRange(const std::string& low, const std::string& high) override;
  bool IsLegalString(const std::string& text) const override;
  bool IsLegal(const std::string& text) const override;
};

/// An unsigned number that may be given by name, in any case of letters.
class QXSYSTEM_API QXConstParameter : public QXNamedParameter<QXConstParameter, QXUIntParameter> {
public:
  /// What `GetKeyIndex` answers for a key that is not known.
  static constexpr unsigned m_invalidKey = 9999;

  explicit QXConstParameter(const std::string& name);

  /// Has one legal entry, which is the default, as a number.
  QXConstParameter(const std::string& name, unsigned value, const std::string& key);
  static std::string StaticClassID();

  /// Makes `value` legal, and `key`, in lower case, its name.
  bool AddLegalEntry(unsigned value, const std::string& key);

  /// A number or a known name becomes a legal value. A new name is paired with
  /// the first legal number that has none yet, so that numbers and names can
  /// take turns in a configuration text; false when there is none.
  bool AddLegalValue(const std::string& text) override;

  /// The number behind a name; m_invalidKey when it is not known.
  unsigned GetKeyIndex(const std::string& key) const;

  /// The names, in their order, if there are any.
  QXIterBase<const std::string>* GetPrettyLegalValues() const override;

  /// The first name of the default's number, if it has one.
  std::string GetPrettyDefault(unsigned i = 0) const override;

  bool IsValidString(const std::string& text) const override;
  bool IsLegalString(const std::string& text) const override;
  bool GetTypedValue(unsigned int& out, const std::string& text) const override;

  /// The typed setters by name; false for a name that is not known.
  using QXUIntParameter::AddDefault;
  using QXUIntParameter::AddValue;
  using QXUIntParameter::SetDefault;
  using QXUIntParameter::SetValue;
  bool AddValue(const std::string& key);
  bool AddDefault(const std::string& key);
  bool SetValue(const std::string& key);
  bool SetDefault(const std::string& key);

  /// The number that a name, here one name, stands for; false, with `out` as it
  /// was, when it is not known.
  virtual bool GetMask(const std::string& text, unsigned& out) const;

protected:
  const std::map<std::string, unsigned>& Keys() const { return keys_; }

private:
  void NameNumber(const std::string& key, unsigned number);

  std::map<std::string, unsigned> keys_;  // by name in lower case
  std::unordered_set<unsigned> named_;    // the numbers in keys_
  std::size_t nameless_ = 0;              // no legal value before it is a number without a name
};

/// Flags that have names: names joined by commas, or a number that has at
/// least one bit in common with the named ones.
class QXSYSTEM_API QXBitParameter : public QXNamedParameter<QXBitParameter, QXConstParameter> {
public:
  explicit QXBitParameter(const std::string& name);
  QXBitParameter(const std::string& name, unsigned value, const std::string& key);
  static std::string StaticClassID();

  bool IsLegalString(const std::string& text) const override;

  /// A number that is no legal value but has a bit in common with the named
  /// ones becomes one when it is set.
  using QXConstParameter::AddDefault;
  using QXConstParameter::AddValue;
  using QXConstParameter::SetDefault;
  using QXConstParameter::SetValue;
  bool AddValue(const unsigned int& value) override;
  bool AddDefault(const unsigned int& value) override;
  bool SetValue(const unsigned int& value) override;
  bool SetDefault(const unsigned int& value) override;

  /// The bits of all names; an empty text is 0. False, with `out` 0, when a
  /// name is not known.
  bool GetMask(const std::string& text, unsigned& out) const override;

  /// Whether `value` has a bit in common with the named numbers.
  bool IsValidMask(unsigned value) const;

private:
  bool Allow(unsigned value);
};

/// A text, or the name of a file that holds it.
///
/// A text that is not legal as it stands is legal when it names a file that is
/// not empty; the file's content then is the value. Asking whether a text is
/// legal may warn, once for each time it is asked.
class QXSYSTEM_API QXStringExtParameter
    : public QXNamedParameter<QXStringExtParameter, QXStringParameter> {
public:
  explicit QXStringExtParameter(const std::string& name);
  QXStringExtParameter(const std::string& name, const std::string& value);
  static std::string StaticClassID();

  bool IsLegal(const std::string& text) const override;
  bool GetTypedValue(std::string& out, const std::string& text) const override;
};

/// A file, whose content at the time of loading is the value. An empty file is
/// no value, and neither is one of unknown size, such as a pipe, that has more
/// than 256 MiB. There is no way back from a value to a text.
class QXSYSTEM_API QXFileParameter
    : public QXNamedParameter<QXFileParameter, QXTypedParameter<QXPlatform::qxisstream>> {
public:
  explicit QXFileParameter(const std::string& name);
  static std::string StaticClassID();

  bool AddLegalValue(const std::string& text) override;
  bool AddIllegalValue(const std::string& text) override;
  bool AddLegalRange(const std::string& low, const std::string& high) override;
  bool AddIllegalRange(const std::string& low, const std::string& high) override;
  unsigned WriteValueAndDefaultBinary(unsigned char* buffer) const override;
  unsigned ReadValueAndDefaultBinary(const unsigned char* buffer) override;
  unsigned ValueAndDefaultBinarySize() const override;
  bool IsValidString(const std::string& text) const override;

  QXIterBase<const QXPlatform::qxisstream>* GetValues() const override;
  QXIterBase<const QXPlatform::qxisstream>* GetDefaults() const override;
  bool IsLegal(const QXPlatform::qxisstream& value) const override;
  bool GetTypedValue(QXPlatform::qxisstream& out, const std::string& name) const override;
  bool GetString(std::string& out, const QXPlatform::qxisstream& value) const override;
};

/// A file of further settings, which the command-line parser reads.
class QXSYSTEM_API QXParamFileParameter
    : public QXNamedParameter<QXParamFileParameter, QXFileParameter> {
public:
  explicit QXParamFileParameter(const std::string& name);
  static std::string StaticClassID();
};

}  // namespace QXSystem

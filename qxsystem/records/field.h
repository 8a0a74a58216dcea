// Fields, the typed names under which records keep their values, and metadata
// of fields and records.
//
// Both are plain values. Ids of metadata are those of the catalogue in
// <qxsystem/records/metadata.h>.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/records/metadata.h>
#include <qxsystem/records/types.h>

namespace QXDataFlow {

/// Metadata: a set of options and a list of attributes.
///
/// Attributes are kept encoded, as records store them: a text as its length and
/// its bytes, a double in 8 bytes, an integer in as few bytes as it takes. An
/// id may have several values; their order is that of their bytes, shorter texts
/// first. What an id does not take is left out without a message.
///
/// Changes answer the object, for chaining.
class QXSYSTEM_API QXMeta {
public:
  /// An attribute: its id and its encoded value.
  using Attribute = std::pair<unsigned, QXBytes>;

  QXMeta() = default;
  QXMeta(const QXMeta&) = default;
  QXMeta(QXMeta&&) noexcept = default;
  QXMeta& operator=(QXMeta&&) noexcept = default;

  virtual QXMeta& operator=(const QXMeta& other);
  virtual ~QXMeta();

  /// Adds an option. It takes the place of those that exclude it: a field has
  /// one unit. Unknown ids are added, too; 0 is none.
  virtual QXMeta& SetOption(unsigned id);

  /// Adds each of `ids` in this way.
  virtual QXMeta& SetOptions(const std::vector<unsigned>& ids);
  virtual QXMeta& RemoveOption(unsigned id);

  /// Replaces all values of `id` by one.
  virtual QXMeta& SetAttribute(unsigned id, const std::string& value);
  virtual QXMeta& SetAttribute(unsigned id, const double& value);
  virtual QXMeta& SetAttribute(unsigned id, const int& value);

  /// Adds a value of `id`, also one that is there already.
  virtual QXMeta& AddAttribute(unsigned id, const std::string& value);
  virtual QXMeta& AddAttribute(unsigned id, const double& value);
  virtual QXMeta& AddAttribute(unsigned id, const int& value);

  /// Removes all values of `id`, those equal to `value`.
  virtual QXMeta& RemoveAttribute(unsigned id);
  virtual QXMeta& RemoveAttribute(unsigned id, const std::string& value);
  virtual QXMeta& RemoveAttribute(unsigned id, const double& value);
  virtual QXMeta& RemoveAttribute(unsigned id, const int& value);

  /// Removes all options and attributes.
  void Clear();

  bool HasOption(unsigned id) const;

  /// The options in ascending order.
  const std::vector<unsigned>& GetOptions() const { return options_; }

  /// Whether `id` has a value, has this value.
  bool HasAttribute(unsigned id) const;
  bool HasAttribute(unsigned id, const std::string& value) const;
  bool HasAttribute(unsigned id, const double& value) const;
  bool HasAttribute(unsigned id, const int& value) const;

  /// The value of `id` at position `index` among the values of that id; 0, 0.0
  /// or "" behind the last and for bytes that are no such value. T is `int`, the
  /// low 32 bits of what is stored, `double` or `std::string`.
  template <class T>
  T GetAttribute(unsigned id, unsigned index = 0) const;
  int GetIntAttribute(unsigned id, unsigned index = 0) const;
  double GetFloatAttribute(unsigned id, unsigned index = 0) const;
  std::string GetStrAttribute(unsigned id, unsigned index = 0) const;

  /// All attributes; those of `id`, which is 0 for all.
  const std::vector<Attribute>& GetAttributes() const { return attributes_; }
  std::vector<Attribute> GetAttributes(unsigned id) const;

  /// The encoded values of `id`.
  std::vector<QXBytes> GetAttributeBytes(unsigned id) const;

  /// Replaces all attributes by these, as they are and in this order. Nothing is
  /// checked: the bytes must be those that the id takes, or records with them
  /// cannot be read.
  void SetAttributes(std::vector<Attribute> attributes);

  /// Whether there are neither options nor attributes.
  bool IsEmpty() const { return options_.empty() && attributes_.empty(); }

  /// Sets the options of `other`, and for each id of its attributes the last
  /// value.
  void Merge(const QXMeta& other);

  /// Whether all options and attributes are among those of `other`.
  bool IsSubsetOf(const QXMeta& other) const;

  /// The name of an id in the catalogue, "" for others.
  static std::string GetName(unsigned id);

  /// The id of a name, 0 for others. "::" may stand in the place of the dots.
  static unsigned GetValue(const std::string& name);

private:
  template <class V>
  QXMeta& Put(unsigned id, const V& value, bool replace);
  QXMeta& RemoveBytes(unsigned id, const QXBytes& bytes);
  const QXBytes* Find(unsigned id, unsigned index) const;
  bool HasBytes(const Attribute& attribute) const;

  std::vector<unsigned> options_;      // ascending, each once
  std::vector<Attribute> attributes_;  // by id, then bytes, unless set as they are
};

// The changes of QXMeta, answering the derived type.
#define QX_META_CHANGE(Derived, Change, parameters, arguments) \
  Derived& Change parameters override {                        \
    QXMeta::Change arguments;                                  \
    return *this;                                              \
  }
#define QX_META_VALUE_CHANGES(Derived, Change)                                          \
  QX_META_CHANGE(Derived, Change, (unsigned id, const std::string& value), (id, value)) \
  QX_META_CHANGE(Derived, Change, (unsigned id, const double& value), (id, value))      \
  QX_META_CHANGE(Derived, Change, (unsigned id, const int& value), (id, value))
#define QX_META_CHANGES(Derived)                                                 \
  Derived() = default;                                                           \
  Derived(const Derived&) = default;                                             \
  Derived(Derived&&) noexcept = default;                                         \
  Derived& operator=(const Derived&) = default;                                  \
  Derived& operator=(Derived&&) noexcept = default;                              \
  QX_META_CHANGE(Derived, operator=, (const QXMeta& other), (other))             \
  ~Derived() override;                                                           \
  QX_META_CHANGE(Derived, SetOption, (unsigned id), (id))                        \
  QX_META_CHANGE(Derived, SetOptions, (const std::vector<unsigned>& ids), (ids)) \
  QX_META_CHANGE(Derived, RemoveOption, (unsigned id), (id))                     \
  QX_META_VALUE_CHANGES(Derived, SetAttribute)                                   \
  QX_META_VALUE_CHANGES(Derived, AddAttribute)                                   \
  QX_META_CHANGE(Derived, RemoveAttribute, (unsigned id), (id))                  \
  QX_META_VALUE_CHANGES(Derived, RemoveAttribute)

class QXFieldBase;

/// Metadata of a field.
class QXSYSTEM_API QXFieldMeta : public QXMeta {
public:
  QX_META_CHANGES(QXFieldMeta)

  /// Adds the name of `field` as a value of `id`, which must be one of the
  /// group Relations; else nothing.
  QXFieldMeta& AddRelation(unsigned id, const QXFieldBase& field);

  /// The ids of all relations to the field called `name`, in stored order.
  std::vector<unsigned> GetFieldRelations(const std::string& name) const;

  /// The names of the fields that relations refer to, each once, in ascending
  /// order.
  std::vector<std::string> GetRelatedFields() const;
};

/// Metadata of a record as a whole. It has three ids of its own, whose numbers
/// the catalogue does not have.
class QXSYSTEM_API QXRecordMeta : public QXMeta {
public:
  /// A string attribute: the id of the record's source.
  static constexpr unsigned SourceID = 0x1000001;

  QX_META_CHANGES(QXRecordMeta)

  /// The name of one of the three ids, "" for others.
  static std::string GetName(unsigned id);
};
#undef QX_META_CHANGES
#undef QX_META_VALUE_CHANGES
#undef QX_META_CHANGE

/// A field: a name, the type of its values and what else is known of them.
/// Fields belong to no record.
class QXSYSTEM_API QXFieldBase {
public:
  /// A field without name and type.
  QXFieldBase();

  /// A field without type. Mind the order of the two flags.
  explicit QXFieldBase(std::string name, QXFieldMeta meta = {}, bool readonly = false,
                       bool nullable = false);

  QXFieldBase(const QXFieldBase&);
  QXFieldBase(QXFieldBase&&) noexcept;
  QXFieldBase& operator=(const QXFieldBase&);
  QXFieldBase& operator=(QXFieldBase&&) noexcept;
  virtual ~QXFieldBase();

  const std::string& GetName() const { return name_; }
  void SetName(const std::string& name) { name_ = name; }

  /// Whether a value may be null. For users to heed; records don't.
  bool IsNullable() const { return nullable_; }

  /// Whether records refuse to set a value through this field. Bytes of records
  /// don't have it.
  bool IsReadonly() const { return readonly_; }

  /// Whether records look the field up by type and metadata: the first field, by
  /// name, that has its type and all its metadata.
  bool IsMetaMatch() const { return metaMatch_; }
  void SetMetaMatch(bool metaMatch) { metaMatch_ = metaMatch; }

  /// A copy, which does not change with the field.
  QXFieldMeta GetMeta() const { return meta_; }
  void SetMeta(const QXFieldMeta& meta) { meta_ = meta; }

  /// Whether the field has a type.
  bool IsValid() const { return !type_.empty(); }

  /// The name of the type, with its namespace and ":" in front where it has one.
  std::string GetTypeName() const;

protected:
  /// A field of the type `type` in `typeNamespace`.
  QXFieldBase(std::string type, std::string typeNamespace, std::string name, QXFieldMeta meta,
              bool readonly, bool nullable);

private:
  friend class QXRecordImpl;
  friend QXSYSTEM_API QXFieldBase MakeFieldBase(const std::string&, const std::string&, QXFieldMeta,
                                                bool, bool);

  std::string type_;           // without namespace; empty in an invalid field
  std::string typeNamespace_;  // empty for built-in types
  bool metaMatch_ = false;
  std::string name_;
  bool nullable_ = false;
  bool readonly_ = false;
  QXFieldMeta meta_;
};

/// A field of any type, given by its name.
///
/// If `type` contains ":" and no user type is registered under the whole text,
/// the part before the last ":" is the type's namespace.
QXSYSTEM_API QXFieldBase MakeFieldBase(const std::string& name, const std::string& type,
                                       QXFieldMeta meta = {}, bool readonly = false,
                                       bool nullable = false);

/// A field with values of type T, one of those of QXFieldType.
template <class T>
class QXSYSTEM_API QXField : public QXFieldBase {
public:
  explicit QXField(const std::string& name, QXFieldMeta meta = {}, bool readonly = false,
                   bool nullable = false);
};

/// A field with vectors of optional T as values, one of those of
/// QXVectorFieldType.
template <class T>
class QXSYSTEM_API QXVectorField : public QXFieldBase {
public:
  explicit QXVectorField(const std::string& name, QXFieldMeta meta = {}, bool readonly = false,
                         bool nullable = false);
};

extern template class QXField<long>;
extern template class QXField<std::string>;
extern template class QXField<double>;
extern template class QXField<QXBytes>;
extern template class QXField<bool>;
extern template class QXField<QXRecord>;
extern template class QXField<QXRange>;
extern template class QXField<QXJSONObject>;
extern template class QXField<QXLinkObject>;
extern template class QXVectorField<long>;
extern template class QXVectorField<std::string>;
extern template class QXVectorField<double>;
extern template class QXVectorField<QXBytes>;
extern template class QXVectorField<bool>;
extern template class QXVectorField<QXRecord>;

}  // namespace QXDataFlow

// What the sources of the command-line system share.
#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <qxsystem/core/iter.h>
#include <qxsystem/core/predicate.h>
#include <qxsystem/core/stliter.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter.h>
#include <qxsystem/platform/istream.h>

namespace QXSystem {

// ---- Orders ----

/// By priority, then by the bytes of the name.
template <class T>
class SortItfStuff : public QXBinaryPredicate<T, T> {
public:
  bool operator()(const T& a, const T& b) const override {
    if (a.GetOrderPriority() != b.GetOrderPriority())
      return a.GetOrderPriority() < b.GetOrderPriority();
    return a.GetName() < b.GetName();
  }
  SortItfStuff* CreateCopy() const override { return new SortItfStuff(*this); }
};

/// By the place among the parameters that may do without a key.
class KeylessSort : public QXBinaryPredicate<QXParameter, QXParameter> {
public:
  bool operator()(const QXParameter& a, const QXParameter& b) const override {
    return a.GetKeyless() < b.GetKeyless();
  }
  KeylessSort* CreateCopy() const override { return new KeylessSort(*this); }
};

/// Parameters or categories by priority and name; equal ones keep their order.
template <class T>
std::vector<T*> InOrder(std::vector<T*> items) {
  const auto before = [](const T* a, const T* b) { return SortItfStuff<T>()(*a, *b); };
  if (!std::is_sorted(items.begin(), items.end(), before))
    std::stable_sort(items.begin(), items.end(), before);
  return items;
}

// ---- The tree ----

/// A cursor of its own over items that others own.
template <class T>
QXIterBase<T>* Walk(std::vector<T*> items) {
  return new QXSTLCacheIter<DerefIterGuts<std::vector<T*>>>(new std::vector<T*>(std::move(items)));
}

/// Adds a copy to where it is owned from then on.
template <class T>
T* AddCopy(std::vector<T*>& owned, const T& item) {
  std::unique_ptr<T> copy(item.CreateCopy());
  owned.push_back(copy.get());
  return copy.release();
}

/// Deletes `item` from where it is owned; false if it is not there.
template <class T>
bool Delete(std::vector<T*>& owned, T& item) {
  const auto found = std::find(owned.begin(), owned.end(), &item);
  if (found == owned.end()) return false;
  owned.erase(found);
  delete &item;
  return true;
}

class QXInterfaceImpl {
public:
  QXInterfaceImpl();
  QXInterfaceImpl(const QXInterfaceImpl& other);  // without the parent
  QXInterfaceImpl& operator=(const QXInterfaceImpl&) = delete;
  ~QXInterfaceImpl();

  void Clear();

  /// Visits all categories below in the order of `GetInterfaces(true)`, until one
  /// says true, and returns whether one did.
  template <class Visit>
  bool VisitCategories(const Visit& visit) const {
    for (QXInterface* child : interfaces)
      if (visit(*child)) return true;
    for (QXInterface* child : InOrder(interfaces))
      if (child->impl_->VisitCategories(visit)) return true;
    return false;
  }

  std::vector<QXParameter*> parameters;  // owned
  std::vector<QXInterface*> interfaces;  // owned
  QXInterface* parent = nullptr;
  std::string name;
  std::string brief;
  std::vector<std::string> detail;
  int order_priority = 0;
};

// ---- Looking parameters up ----

/// The names under which a parameter is found, in lower case.
std::set<std::string> KeysOf(const QXParameter& parameter);

/// The parameters of a tree, an interface or options, by name and alias, in any
/// case of letters. Names that change afterwards are not seen.
class ParameterIndex {
public:
  template <class Tree>
  explicit ParameterIndex(const Tree& tree)
      : ParameterIndex(QXIter<QXParameter>(tree.GetParameters(/*recursive=*/true))) {}

  /// The first of `GetParameters(true)` that has this key, else null. Nothing
  /// has the empty key.
  QXParameter* ParameterWithFullname(const std::string& key) const;

  /// Tells at Verbose level which key is nearest to one that is not known, if
  /// that level is shown and some key is near.
  void Suggest(const std::string& key) const;

private:
  explicit ParameterIndex(QXIter<QXParameter> parameter);

  std::unordered_map<std::string, QXParameter*> parameters_;  // by key in lower case
};

inline bool IsHidden(const QXParameter& parameter) {
  return parameter.GetVisibility() >= QXVisibility::Hidden;
}

/// Whether some parameter of a tree is as wanted.
template <class Predicate>
bool AnyParameter(const QXInterface& interface, const Predicate& wanted) {
  for (QXIter<QXParameter> p = interface.GetParameters(/*recursive=*/true); p; ++p)
    if (wanted(*p)) return true;
  return false;
}

// ---- What parameters are set to ----

using Texts = std::vector<std::string>;

/// The texts that a cursor yields.
Texts Collect(QXIter<const std::string> text);

/// The defaults as people read them.
Texts PrettyDefaults(const QXParameter& parameter);

/// The place of the first of some texts that cannot be loaded; their number, if
/// there is none. They are tried on `probe`, a copy of the parameter.
std::size_t FindUnloadable(QXParameter& probe, const Texts& texts);

/// Loads a parameter to which `texts` were just added, and returns for how many
/// of them that would have succeeded, had each been loaded when it was added.
///
/// Every load begins with the first value: one for each text would take quadratic
/// time.
std::size_t LoadAdded(QXParameter& parameter, const Texts& texts);

enum class Fault { None, NotLegal, NotLoaded };

/// Adds to the values of a parameter those of `texts` that are legal, loads it, and
/// tells for each text what was wrong with it. With `replace`, the first takes the
/// place of the values there were.
std::vector<Fault> AssignTexts(QXParameter& parameter, const Texts& texts, bool replace);

/// QXParseParameterFile, for a tree that was indexed before.
bool ParseParameterFile(const ParameterIndex& parameters, QXPlatform::qxistream& in, bool overwrite,
                        unsigned level);

/// What is legal for a parameter, for a complaint: a line end and an entry for
/// each of the four lists.
std::string LegalList(const QXParameter& parameter, bool pretty);

// ---- Text ----

/// A text for output that is split at blanks again: one with a blank stands in
/// double quotes.
std::string QuoteBlanks(const std::string& text);

/// The text of a setting of `parameter`, that of a real number without needless
/// zeros, quoted.
std::string SettingText(const QXParameter& parameter, const std::string& text);

/// The line with every reference ":ref:$text$target$" replaced by what `render`
/// makes of text and target. One that lacks a "$" stays as it is.
template <class Render>
std::string ReplaceReferences(const std::string& line, const Render& render) {
  static const std::string mark = ":ref:$";
  std::string result;
  std::size_t done = 0;
  for (std::size_t at; (at = line.find(mark, done)) != std::string::npos;) {
    const std::size_t text = at + mark.size();
    const std::size_t target = line.find('$', text);
    const std::size_t end = target == std::string::npos ? target : line.find('$', target + 1);
    if (end == std::string::npos) break;  // nor can any further one be whole
    result.append(line, done, at - done);
    result += render(line.substr(text, target - text), line.substr(target + 1, end - target - 1));
    done = end + 1;
  }
  return result.append(line, done, std::string::npos);
}

/// A line, in memory that is not its own, and its first words.
struct Line {
  Line() = default;
  explicit Line(std::string_view text);

  std::string_view raw;
  std::string_view words[3];
  unsigned size = 0;        // of all words, counted up to 4
  std::string_view behind;  // the first word

  bool Is(std::string_view word) const { return words[0] == word; }
  bool Begins(char c) const { return size > 0 && words[0][0] == c; }
  bool SaysNothing() const { return size == 0 || Begins('#'); }
  std::string Word(unsigned i) const { return std::string(words[i]); }
  std::string Raw() const { return std::string(raw); }
};

/// The lines of a text or a stream, of which the last one read can be read once
/// more. They stay valid as long as the source, and the text.
class LineSource {
public:
  explicit LineSource(std::string_view text) : text_(text) {}
  explicit LineSource(QXPlatform::qxistream& in) : in_(&in) {}

  bool Next(Line& line);
  void PushBack(const Line& line) { back_ = line; }

private:
  bool Read(std::string_view& raw);

  std::string_view text_;  // what is left of it
  QXPlatform::qxistream* in_ = nullptr;
  std::deque<std::string> read_;  // from the stream
  std::optional<Line> back_;
};

}  // namespace QXSystem

#include <qxsystem/interface/files.h>

#include <algorithm>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter_private.h>
#include <qxsystem/interface/writer.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {

using QXPlatform::qxistream;
using QXPlatform::qxostream;

// ---- Parameter files ----

namespace {

constexpr char Quotes[] = "'\"";

bool IsQuote(char c) {
  return c == Quotes[0] || c == Quotes[1];
}

// Splits a line into its words and takes off their quotes, of which the two need
// not be the same. What is empty then goes.
void SplitLine(const std::string& line, Texts& words) {
  QXStringTokenizeQuoted(words, line, WordDelimiters, Quotes);
  for (std::string& word : words)
    if (word.size() >= 2 && IsQuote(word.front()) && IsQuote(word.back()))
      word = word.substr(1, word.size() - 2);
  words.erase(std::remove(words.begin(), words.end(), std::string()), words.end());
}

// Gives a parameter the values behind the key of a line.
bool AssignLine(QXParameter& parameter, const Texts& words, unsigned level) {
  const char* key = words[0].c_str();
  const bool tooMany = words.size() > 2 && !parameter.GetIsList();
  const Texts texts(words.begin() + 1, tooMany ? words.begin() + 2 : words.end());
  const std::vector<Fault> faults = AssignTexts(parameter, texts, /*replace=*/false);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const char* text = texts[i].c_str();
    if (faults[i] == Fault::NotLegal)
      QXThrow.Msg(level,
                  "%s is not a legal setting for parameter %s (specified in parameter file)%s",
                  text, key, LegalList(parameter, /*pretty=*/true).c_str());
    else if (faults[i] == Fault::NotLoaded)
      QXThrow.Msg(level,
                  "Unable to load parameter %s listed in parameter file, check that %s is a valid "
                  "setting",
                  key, text);
  }
  if (tooMany)
    QXThrow.Msg(level,
                "Problem in parameter file with key %s.  Key is followed by multiple values.", key);
  return !tooMany && std::count(faults.begin(), faults.end(), Fault::None) ==
                         static_cast<std::ptrdiff_t>(faults.size());
}

}  // namespace

bool ParseParameterFile(const ParameterIndex& parameters, qxistream& in, bool overwrite,
                        unsigned level) {
  bool good = true;
  Texts words;
  for (std::string line; in.getline(line);) {
    SplitLine(line, words);
    if (words.empty() || words[0][0] == '#') continue;
    QXParameter* parameter = parameters.ParameterWithFullname(words[0]);
    if (!parameter) {
      parameters.Suggest(words[0]);
      QXThrow.Msg(level, "Unknown parameter %s in parameter file (begin comment lines with #)",
                  words[0].c_str());
      good = false;
    } else if (words.size() < 2) {
      QXThrow.Msg(level, "In parameter file key %s is not followed by a value", words[0].c_str());
      good = false;
    } else if (overwrite || !parameter->GetHasValue(0)) {
      if (overwrite) parameter->ClearValues();
      good = AssignLine(*parameter, words, level) && good;
    }
  }
  return good;
}

bool QXParseParameterFile(QXInterface& interface, qxistream& in, bool overwrite, unsigned level) {
  return ParseParameterFile(ParameterIndex(interface), in, overwrite, level);
}

// ---- Settings and defaults ----

namespace {

// A line that can be read back: two blanks behind the name, one between texts.
std::string SettingLine(const QXParameter& parameter, QXIter<const std::string> text) {
  Texts texts = Collect(std::move(text));
  for (std::string& setting : texts) setting = SettingText(parameter, setting);
  return parameter.GetName() + "  " + QXStringJoin(texts, " ");
}

void WriteSettingsImpl(const QXInterface& interface, QXWriter& writer, bool all) {
  for (QXIter<QXParameter> p = interface.GetParameters(/*recursive=*/false); p; ++p) {
    const bool set = p->GetHasValue(0);
    if (!set && (!all || IsHidden(*p))) continue;
    if (set)
      writer(SettingLine(*p, p->GetStringValues()));
    else if (p->GetHasDefault(0))
      writer("#" + SettingLine(*p, p->GetStringDefaults()));
    else
      writer("#" + p->GetName() + " (Not set, no default)");
    writer.NewLine();
  }

  const auto shown = [all](const QXParameter& p) {
    return p.GetHasValue(0) || (all && !IsHidden(p));
  };
  for (QXIter<QXInterface> child = interface.GetInterfaces(/*recursive=*/false); child; ++child) {
    if (!AnyParameter(*child, shown)) continue;
    writer.NewLine();
    writer("#" + child->GetName() + " : " + child->GetBrief());
    writer.Indent();
    writer.NewLine();
    WriteSettingsImpl(*child, writer, all);
    writer.EndIndent();
  }
}

}  // namespace

bool QXWriteSettings(const QXInterface& interface, qxostream& out, bool all,
                     const std::string& mode) {
  QXTextWriter writer(out, "  ");
  writer.Start("#Interface settings");
  if (!mode.empty()) writer.Start("#Mode " + mode);
  WriteSettingsImpl(interface, writer, all);
  writer.End();
  return static_cast<bool>(out);
}

bool WriteDefaultsImpl(const QXInterface& interface, QXWriter& writer) {
  for (QXIter<QXParameter> p = interface.GetParameters(/*recursive=*/false); p; ++p) {
    if (IsHidden(*p)) continue;
    const Texts defaults = PrettyDefaults(*p);
    std::string line = p->GetName();
    for (const std::string& text : defaults) line += " " + QuoteBlanks(text);
    writer(defaults.empty() ? "#" + line + " : (no default setting)" : line);
    writer.NewLine();
  }
  for (QXIter<QXInterface> child = interface.GetInterfaces(/*recursive=*/false); child; ++child) {
    if (!AnyParameter(*child, [](const QXParameter& p) { return !IsHidden(p); })) continue;
    writer.NewLine();
    writer("#" + child->GetName() + " " + child->GetBrief());
    writer.Indent();
    writer.NewLine();
    WriteDefaultsImpl(*child, writer);
    writer.EndIndent();
  }
  return true;
}

// ---- JSON ----

namespace {

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string List(const Texts& items) {
  return "[" + QXStringJoin(items, ",") + "]";
}

std::string List(QXIter<const std::string> text) {
  Texts items;
  for (; text; ++text) items.push_back(Quoted(*text));
  return List(items);
}

std::string List(QXIter<const QXStringPair> range) {
  Texts items;
  for (; range; ++range) items.push_back(List({Quoted(range->first), Quoted(range->second)}));
  return List(items);
}

std::string Visibility(unsigned visibility) {
  switch (visibility) {
    case QXVisibility::Simple:
      return Quoted("simple");
    case QXVisibility::Normal:
      return Quoted("normal");
    case QXVisibility::Hidden:
      return Quoted("hidden");
    default:
      return "null";
  }
}

// One key of an object, in the order of the tables.
template <class T>
struct JSONRow {
  const char* key;
  std::string (*value)(const T&);
};

using Category = const QXInterface&;
using Param = const QXParameter&;

constexpr JSONRow<QXInterface> InterfaceRows[] = {
    {"name", [](Category i) { return Quoted(i.GetName()); }},
    {"order", [](Category i) { return std::to_string(i.GetOrderPriority()); }},
    {"brief", [](Category i) { return Quoted(i.GetBrief()); }},
    {"detail", [](Category i) { return List(i.GetDetail()); }},
};

constexpr JSONRow<QXParameter> ParameterRows[] = {
    {"name", [](Param p) { return Quoted(p.GetName()); }},
    {"order", [](Param p) { return std::to_string(p.GetOrderPriority()); }},
    {"type", [](Param p) { return Quoted(p.ClassID()); }},
    {"list", [](Param p) { return QXNumberToString(p.GetIsList()); }},
    {"alias", [](Param p) { return List(p.GetAliases()); }},
    {"default", [](Param p) { return List(p.GetStringDefaults()); }},
    {"required", [](Param p) { return QXNumberToString(p.GetRequired()); }},
    {"input", [](Param p) { return std::to_string(p.GetInput()); }},
    {"output", [](Param p) { return QXNumberToString(p.GetOutput()); }},
    {"visibility", [](Param p) { return Visibility(p.GetVisibility()); }},
    {"keyless", [](Param p) { return std::to_string(p.GetKeyless()); }},
    {"legal_value", [](Param p) { return List(p.GetLegalValues()); }},
    {"illegal_value", [](Param p) { return List(p.GetIllegalValues()); }},
    {"legal_range", [](Param p) { return List(p.GetLegalRanges()); }},
    {"illegal_range", [](Param p) { return List(p.GetIllegalRanges()); }},
    {"element", [](Param p) { return Quoted(p.GetElement()); }},
    {"command", [](Param p) { return Quoted(p.GetCommand()); }},
    {"brief", [](Param p) { return Quoted(p.GetBrief()); }},
    {"detail", [](Param p) { return List(p.GetDetail()); }},
};

template <class T, std::size_t n>
void WriteRows(const JSONRow<T> (&rows)[n], const T& item, qxostream& out) {
  const char* before = "{\n";
  for (const JSONRow<T>& row : rows) {
    out << before << Quoted(row.key) << " : " << row.value(item);
    before = ",\n";
  }
}

void WriteObject(const QXParameter& parameter, qxostream& out) {
  WriteRows(ParameterRows, parameter, out);
  out << "\n}";
}

void WriteObject(const QXInterface& interface, qxostream& out);

// The last key of an object so far, a list of objects.
template <class T>
void WriteObjects(const char* key, QXIter<T> object, qxostream& out) {
  out << ",\n" << Quoted(key) << " : [\n";
  for (bool first = true; object; ++object, first = false) {
    if (!first) out << ",\n";
    WriteObject(*object, out);
  }
  out << "\n]";
}

void WriteObject(const QXInterface& interface, qxostream& out) {
  WriteRows(InterfaceRows, interface, out);
  WriteObjects<QXParameter>("params", interface.GetParameters(/*recursive=*/false), out);
  QXIter<QXInterface> children = interface.GetInterfaces(/*recursive=*/false);
  if (children) WriteObjects("interfaces", std::move(children), out);
  out << "\n}";
}

}  // namespace

bool QXWriteJSON(const QXInterface& interface, qxostream& out) {
  WriteObject(interface, out);
  out << "\n";
  return static_cast<bool>(out);
}

}  // namespace QXSystem

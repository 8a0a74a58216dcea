// Configuration texts: interfaces from text and back.
#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/core/nesting.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter_private.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {
namespace {

// ---- The lines of a parameter ----

// The words of a line behind its keyword, a blank behind each, the last too.
std::string WordsOf(const Line& line) {
  std::string words(line.behind.size() + 1, ' ');
  std::size_t size = 0;
  std::string_view rest = line.behind;
  for (std::string_view word; !(word = TakeWord(rest)).empty(); ++size)
    size += word.copy(&words[size], word.size());
  words.resize(size);
  return words;
}

// The line behind its keyword as it stands, without the blanks at both ends.
std::string RestOf(const Line& line) {
  return QXStringStripWhiteSpace(std::string(line.behind));
}

// Hands the number or truth value of a line to a setter.
template <class T>
bool SetFrom(const Line& line, QXParameter& parameter, bool (QXParameter::*set)(T)) {
  T value;
  return QXStringToNumber(line.Word(1), value) && (parameter.*set)(value);
}

bool SetVisibility(QXParameter& parameter, const Line& line) {
  const std::string word = QXStringLower(line.Word(1));
  if (word == "simple") return parameter.SetVisibility(QXVisibility::Simple);
  if (word == "normal") return parameter.SetVisibility(QXVisibility::Normal);
  if (word == "hidden") return parameter.SetVisibility(QXVisibility::Hidden);
  QXThrow.Error("Unknown keyword, %s, passed to !VISIBILITY", line.Word(1).c_str());
  return true;
}

enum class Kind { Set, Default, Detail, Skip };

struct Keyword {
  std::string_view word;
  Kind kind;
  unsigned min, max;  // words on the line, the keyword among them
  bool (*set)(QXParameter&, const Line&) = nullptr;
};

constexpr unsigned AnyNumber = std::numeric_limits<unsigned>::max();

// All keywords of a parameter. Each of them also ends a block of detail.
constexpr Keyword Keywords[] = {
    {"!END", Kind::Skip, 1, AnyNumber},
    {"!TYPE", Kind::Skip, 1, AnyNumber},
    {"!LIST", Kind::Skip, 1, AnyNumber},
    {"!DETAIL", Kind::Detail, 1, AnyNumber},
    {"!DEFAULT", Kind::Default, 2, 2},
    {"!ALIAS", Kind::Set, 2, 2,
     [](QXParameter& p, const Line& line) { return p.AddAlias(line.Word(1)); }},
    {"!REQUIRED", Kind::Set, 2, 2,
     [](QXParameter& p, const Line& line) { return SetFrom(line, p, &QXParameter::SetRequired); }},
    {"!SIMPLE", Kind::Set, 2, 2,
     [](QXParameter& p, const Line& line) {
       bool simple;
       return QXStringToNumber(line.Word(1), simple) &&
              p.SetVisibility(simple ? QXVisibility::Simple : QXVisibility::Normal);
     }},
    {"!VISIBILITY", Kind::Set, 2, 2, SetVisibility},
    {"!KEYLESS", Kind::Set, 2, 2,
     [](QXParameter& p, const Line& line) { return SetFrom(line, p, &QXParameter::SetKeyless); }},
    {"!INPUT", Kind::Set, 2, 2,
     [](QXParameter& p, const Line& line) { return SetFrom(line, p, &QXParameter::SetInput); }},
    {"!OUTPUT", Kind::Set, 2, 2,
     [](QXParameter& p, const Line& line) { return SetFrom(line, p, &QXParameter::SetOutput); }},
    {"!LEGAL_VALUE", Kind::Set, 2, 2,
     [](QXParameter& p, const Line& line) { return p.AddLegalValue(line.Word(1)); }},
    {"!LEGAL_RANGE", Kind::Set, 3, 3,
     [](QXParameter& p, const Line& line) { return p.AddLegalRange(line.Word(1), line.Word(2)); }},
    {"!ILLEGAL_VALUE", Kind::Set, 2, 2,
     [](QXParameter& p, const Line& line) { return p.AddIllegalValue(line.Word(1)); }},
    {"!ILLEGAL_RANGE", Kind::Set, 3, 3,
     [](QXParameter& p, const Line& line) {
       return p.AddIllegalRange(line.Word(1), line.Word(2));
     }},
    {"!ELEMENT", Kind::Set, 2, AnyNumber,
     [](QXParameter& p, const Line& line) { return p.SetElement(RestOf(line)); }},
    {"!COMMAND", Kind::Set, 2, AnyNumber,
     [](QXParameter& p, const Line& line) { return p.SetCommand(RestOf(line)); }},
    {"!BRIEF", Kind::Set, 1, AnyNumber,
     [](QXParameter& p, const Line& line) { return p.SetBrief(WordsOf(line)); }},
};

const Keyword* FindKeyword(const Line& line) {
  if (!line.Begins('!')) return nullptr;
  const auto found = std::find_if(std::begin(Keywords), std::end(Keywords),
                                  [&line](const Keyword& k) { return line.Is(k.word); });
  return found == std::end(Keywords) ? nullptr : found;
}

// The same for a line that has as many words as its keyword asks for.
const Keyword* FindFittingKeyword(const Line& line) {
  const Keyword* keyword = FindKeyword(line);
  return keyword && line.size >= keyword->min && line.size <= keyword->max ? keyword : nullptr;
}

using Body = std::vector<Line>;  // of a parameter: from the line behind its head to "!END"

// Adds the lines from `at` up to the next keyword, without the indentation that
// they have in common, and gives the place of the keyword.
Body::const_iterator AddDetail(QXParameter& parameter, Body::const_iterator at,
                               Body::const_iterator end) {
  const auto stop = std::find_if(at, end, FindKeyword);
  std::size_t indent = 1000000;
  for (auto line = at; line != stop; ++line)
    indent = std::min(indent, line->raw.find_first_not_of(" \t"));  // a blank line has none
  for (; at != stop; ++at)
    parameter.AddDetail(std::string(at->raw.substr(at->raw.size() < indent ? 0 : indent)));
  return stop;
}

using Lines = std::vector<const Line*>;

Lines FindDefaults(Body::const_iterator at, Body::const_iterator end) {
  Lines lines;
  for (; at != end; ++at) {
    const Keyword* keyword = FindFittingKeyword(*at);
    if (keyword && keyword->kind == Kind::Default) lines.push_back(&*at);
  }
  return lines;
}

// Sets the defaults, and returns the lines that had no effect. Those of a list are
// loaded once, since every load begins with the first.
Lines SetDefaults(QXParameter& parameter, const Lines& lines) {
  const bool list = parameter.GetIsList();
  Lines taken, refused;
  Texts texts;
  parameter.ClearDefaults();
  for (const Line* line : lines) {
    const std::string text = line->Word(1);
    const bool good = list ? parameter.AddStringDefault(text)
                           : parameter.SetStringDefault(text) && parameter.LoadDefault();
    (good ? taken : refused).push_back(line);
    if (good) texts.push_back(text);
  }
  if (list && !parameter.LoadDefault()) {
    const std::unique_ptr<QXParameter> probe(parameter.CreateCopy());
    const auto good = static_cast<std::ptrdiff_t>(FindUnloadable(*probe, texts));
    refused.insert(refused.end(), taken.begin() + good, taken.end());
  }
  return refused;
}

// Applies the lines of a body.
void ConfigureParameter(QXParameter& parameter, const Body& body) {
  const auto complain = [&parameter](const Line& line) {
    QXThrow.Error("Problem parsing interface configuration file or parameter %s\n  line : %s",
                  parameter.GetName().c_str(), line.Raw().c_str());
  };
  Lines defaults, refused;
  for (auto line = body.begin(); line != body.end(); ++line) {
    if (line->SaysNothing()) continue;
    const Keyword* keyword = FindFittingKeyword(*line);
    if (!keyword || (keyword->kind == Kind::Set && !keyword->set(parameter, *line))) {
      complain(*line);
    } else if (keyword->kind == Kind::Detail) {
      line = AddDetail(parameter, line + 1, body.end()) - 1;
    } else if (keyword->kind == Kind::Default) {
      if (defaults.empty()) defaults = FindDefaults(line, body.end());
      if (&*line == defaults.back()) refused = SetDefaults(parameter, defaults);
    }
  }
  // The names of constants may have come after the defaults, so that these are tried
  // once more. All are, for their order is kept.
  if (!refused.empty())
    for (const Line* line : SetDefaults(parameter, defaults)) complain(*line);
  for (QXIter<const std::string> text = parameter.GetStringDefaults(); text; ++text)
    if (!parameter.IsLegalString(*text))
      QXThrow.Warning("!DEFAULT value of %s is not a legal setting for parameter %s", text->c_str(),
                      parameter.GetName().c_str());
}

// ---- The reader ----

class ConfigurationReader {
public:
  // `source` is a text or a stream.
  template <class Source>
  ConfigurationReader(QXInterface& root, Source& source) : lines_(source) {
    for (QXIter<QXInterface> child = root.GetInterfaces(/*recursive=*/true); child; ++child)
      categories_.emplace(child->GetName(), &*child);
  }

  // Reads up to "!END" or the end of the text.
  bool Read(QXInterface& category);

private:
  void ReadDetail(QXInterface& category);
  bool ReadCategory(QXInterface& parent, const Line& head);
  QXInterface* FindCategory(const QXInterface& parent, const std::string& name) const;
  bool ReadParameter(QXInterface& category, const Line& head);

  LineSource lines_;
  Body body_;  // of the parameter that is read, kept for its memory
  std::unordered_multimap<std::string, QXInterface*> categories_;  // all in the tree, by name
};

// The priority that a word gives; none gives 0.
int Priority(std::string_view word) {
  int priority;
  QXStringToNumber(std::string(word), priority);
  return priority;
}

bool ConfigurationReader::Read(QXInterface& category) {
  const QXNestingScope level;
  if (!level) return false;
  for (Line line; lines_.Next(line);) {
    if (line.SaysNothing()) continue;
    const bool named = line.size > 1;
    if (line.Is("!END")) {
      return true;
    } else if (line.Is("!BRIEF")) {
      category.SetBrief(WordsOf(line));
    } else if (line.Is("!DETAIL")) {
      ReadDetail(category);
    } else if (named && line.Is("!CATEGORY")) {
      if (!ReadCategory(category, line)) return false;
    } else if (named && line.Is("!PARAMETER")) {
      if (!ReadParameter(category, line)) return false;
    } else {
      if (line.Begins('!'))
        QXThrow.Error("Probable invalid keyword in interface configuration file\n  line : %s",
                      line.Raw().c_str());
      else
        QXThrow.Error("Configuring interface.  Unable to parse line\n  line : %s",
                      line.Raw().c_str());
      return false;
    }
  }
  return true;
}

void ConfigurationReader::ReadDetail(QXInterface& category) {
  for (Line line; lines_.Next(line); category.AddDetail(line.Raw())) {
    if (!line.Begins('!')) continue;
    lines_.PushBack(line);
    return;
  }
}

// Name and priority of a category, from a line whose name may stand in quotes.
bool ParseCategoryHead(const Line& line, std::string& name, int& priority) {
  const auto refuse = [&line](const char* why) {
    QXThrow.Error("Error parsing line\n%s\n%s", line.Raw().c_str(), why);
    return false;
  };
  const auto quotes = std::count(line.raw.begin(), line.raw.end(), '"');
  if (quotes == 0) {
    name = line.words[1];
    priority = Priority(line.words[2]);
    return true;
  }
  if (quotes != 2) return refuse("Invalid number of double quotes");
  const std::size_t open = line.raw.find('"');
  const std::size_t close = line.raw.find('"', open + 1);
  if (close == open + 1) return refuse("too many quotes");
  std::string_view behind = line.raw.substr(close + 1);
  const std::string_view word = TakeWord(behind);
  if (!TakeWord(behind).empty())
    return refuse("a single word does not follow the quoted category name");
  name = line.raw.substr(open + 1, close - open - 1);
  priority = Priority(word);
  return true;
}

bool ConfigurationReader::ReadCategory(QXInterface& parent, const Line& head) {
  std::string name;
  int priority;
  if (!ParseCategoryHead(head, name, priority)) return false;
  QXInterface* category = FindCategory(parent, name);
  if (!category) {
    category = parent.AddInterface();
    categories_.emplace(name, category);
  }
  category->SetName(name);
  category->SetOrderPriority(priority);
  if (!Read(*category)) QXThrow.Error("Problem configuring subcategory");
  return true;
}

// What `parent.GetInterface(name)` finds. Names are seldom used twice, so that the
// walk through the tree is only for those that are.
QXInterface* ConfigurationReader::FindCategory(const QXInterface& parent,
                                               const std::string& name) const {
  const auto [first, last] = categories_.equal_range(name);
  if (first == last) return nullptr;
  if (std::next(first) != last) return parent.GetInterface(name);
  const QXInterface* ancestor = first->second->Parent();
  while (ancestor && ancestor != &parent) ancestor = ancestor->Parent();
  return ancestor ? first->second : nullptr;
}

bool ConfigurationReader::ReadParameter(QXInterface& category, const Line& head) {
  const std::string name = head.Word(1);
  body_.clear();
  do {
    if (lines_.Next(body_.emplace_back())) continue;
    QXThrow.Error("Configure.  !PARAMETER %s is unterminated (by !END)", name.c_str());
    return false;
  } while (!body_.back().Is("!END"));

  // What the parameter is may be said in any of its lines.
  const auto says = [](std::string_view word) {
    return [word](const Line& line) { return line.size == 2 && line.Is(word); };
  };
  bool list = false;
  for (const Line& line : body_) {
    if (!says("!LIST")(line) || QXStringToNumber(line.Word(1), list)) continue;
    QXThrow.Error("configuring parameter %s : !LIST must be followed by true or false",
                  name.c_str());
    return false;
  }
  const auto type = std::find_if(body_.begin(), body_.end(), says("!TYPE"));
  QXParameter* parameter = type == body_.end() ? nullptr : category.AddParameter(type->Word(1));
  if (!parameter) {
    QXThrow.Error("Unknown or unspecified type for parameter %s", name.c_str());
    return false;
  }
  parameter->SetName(name);
  parameter->SetOrderPriority(Priority(head.words[2]));
  parameter->SetIsList(list);
  ConfigureParameter(*parameter, body_);
  return true;
}

// ---- The writer ----

class ConfigurationWriter {
public:
  explicit ConfigurationWriter(QXPlatform::qxostream& out) : out_(out) {}

  void Write(const QXInterface& category);

private:
  void Write(const QXParameter& parameter);
  void WriteDetail(const char* head, QXIter<const std::string> line);

  void Row(const char* keyword, const std::string& text) {
    out_ << "  " << keyword << " " << text << "\n";
  }
  void TextRow(const char* keyword, const std::string& text) {
    if (!text.empty()) Row(keyword, text);
  }
  void FlagRow(const char* keyword, bool flag) { Row(keyword, QXNumberToString(flag)); }
  void NumberRow(const char* keyword, unsigned number) {
    if (number != 0) Row(keyword, std::to_string(number));
  }
  void Rows(const char* keyword, QXIter<const std::string> text) {
    for (; text; ++text) Row(keyword, *text);
  }
  void Rows(const char* keyword, QXIter<const QXStringPair> range) {
    for (; range; ++range) Row(keyword, range->first + " " + range->second);
  }

  QXPlatform::qxostream& out_;
};

void ConfigurationWriter::Write(const QXInterface& category) {
  for (QXIter<QXParameter> p = category.GetParameters(/*recursive=*/false); p; ++p) {
    const std::string id = p->ClassID();
    if (!IsHidden(*p) && id != "Pointer" && id != "NonCL")  // which no text can describe
      Write(*p);
  }
  for (QXIter<QXInterface> child = category.GetInterfaces(/*recursive=*/false); child; ++child) {
    out_ << "!CATEGORY \"" << child->GetName() << "\"  " << child->GetOrderPriority() << "\n";
    TextRow("!BRIEF", child->GetBrief());
    WriteDetail("!DETAIL\n", child->GetDetail());
    Write(*child);
    out_ << "!END\n\n";
  }
}

void ConfigurationWriter::Write(const QXParameter& parameter) {
  out_ << "!PARAMETER " << parameter.GetName() << " " << parameter.GetOrderPriority() << "\n";
  Row("!TYPE", parameter.ClassID());
  FlagRow("!LIST", parameter.GetIsList());
  Rows("!ALIAS", parameter.GetAliases());
  for (QXIter<const std::string> text = parameter.GetStringDefaults(); text; ++text)
    TextRow("!DEFAULT", QuoteBlanks(*text));
  FlagRow("!REQUIRED", parameter.GetRequired());
  NumberRow("!INPUT", parameter.GetInput());
  FlagRow("!OUTPUT", parameter.GetOutput());
  FlagRow("!SIMPLE", parameter.GetVisibility() == QXVisibility::Simple);
  NumberRow("!KEYLESS", parameter.GetKeyless());
  Rows("!LEGAL_VALUE", parameter.GetLegalValues());
  Rows("!ILLEGAL_VALUE", parameter.GetIllegalValues());
  Rows("!LEGAL_RANGE", parameter.GetLegalRanges());
  Rows("!ILLEGAL_RANGE", parameter.GetIllegalRanges());
  TextRow("!ELEMENT", parameter.GetElement());
  TextRow("!COMMAND", parameter.GetCommand());
  TextRow("!BRIEF", parameter.GetBrief());
  WriteDetail("  !DETAIL\n", parameter.GetDetail());
  out_ << "!END\n";
}

void ConfigurationWriter::WriteDetail(const char* head, QXIter<const std::string> line) {
  if (line) out_ << head;
  for (; line; ++line) out_ << "    " << *line << "\n";
}

}  // namespace

bool QXConfigure(QXInterface& interface, QXPlatform::qxistream& in) {
  return ConfigurationReader(interface, in).Read(interface);
}

bool QXConfigure(QXInterface& interface, const char* text) {
  const std::string_view source(text ? text : "");
  return ConfigurationReader(interface, source).Read(interface);
}

bool QXConfigure(QXInterface& interface, const unsigned char* text) {
  return QXConfigure(interface, reinterpret_cast<const char*>(text));
}

bool QXWriteInterfaceConfigurationFile(const QXInterface& interface, QXPlatform::qxostream& out) {
  ConfigurationWriter(out).Write(interface);
  return static_cast<bool>(out);
}

}  // namespace QXSystem

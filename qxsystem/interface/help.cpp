#include <qxsystem/interface/help.h>

#include <vector>

#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter_private.h>
#include <qxsystem/interface/writer.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {

using QXPlatform::qxostream;

namespace {

std::string Blanks(std::size_t n) {
  return std::string(n, ' ');
}

// Writes a brief behind a name that ends in `column`; further lines begin below
// the brief's first word.
void WriteWrapped(const std::string& brief, std::size_t column, unsigned width, qxostream& out) {
  Texts words;
  QXStringTokenize(words, brief, WordDelimiters);
  const std::size_t begin = column + 2;
  column = begin;
  out << " :";
  for (const std::string& word : words) {
    column += word.size() + 1;
    if (column > width) {
      out << "\n" << Blanks(begin);
      column = begin + word.size() + 1;
    }
    out << " " << word;
  }
}

bool HasParametersWithVis(const QXInterface& interface, unsigned level) {
  return AnyParameter(interface,
                      [level](const QXParameter& p) { return p.GetVisibility() <= level; });
}

void WriteBrief(const QXInterface& interface, qxostream& out, const std::string& prefix,
                unsigned level, unsigned width) {
  bool any = false;
  for (QXIter<QXParameter> p = interface.GetParameters(/*recursive=*/false); p; ++p) {
    if (p->GetVisibility() > level) continue;
    out << prefix << p->GetName();
    if (!p->GetBrief().empty())
      WriteWrapped(p->GetBrief(), prefix.size() + p->GetName().size(), width, out);
    out << "\n";
    any = true;
  }
  if (any) out << "\n";

  any = false;
  for (QXIter<QXInterface> child = interface.GetInterfaces(/*recursive=*/false); child; ++child) {
    if (!HasParametersWithVis(*child, level)) continue;
    out << prefix << child->GetName();
    if (!child->GetBrief().empty()) out << " : " << child->GetBrief();
    out << "\n";
    WriteBrief(*child, out, prefix + "  ", level, width);
    any = true;
  }
  if (any) out << "\n";
}

const char* Title(unsigned level) {
  switch (level) {
    case QXVisibility::Normal:
      return "Complete parameter list\n";
    case QXVisibility::Hidden:
      return "Power user parameter list\n";
    default:
      return "Simple parameter list\n";
  }
}

// Writes a line for each of several items.
class DetailWriter {
public:
  explicit DetailWriter(QXWriter& writer) : writer_(writer) {}

  void Item(const std::string& text) {
    writer_(text);
    writer_.NewLine();
  }

  // Items one level below a heading.
  void Items(const std::string& heading, const Texts& items) {
    writer_(heading);
    writer_.Indent();
    writer_.NewLine();
    for (const std::string& item : items) Item(item);
    writer_.EndIndent();
  }

  void Values(const std::string& label, const char* before, QXIter<const std::string> value) {
    if (!value) return;
    std::string line = label;
    for (; value; ++value) line += before + *value;
    Item(line);
  }

  void Ranges(const std::string& heading, QXIter<const QXStringPair> range) {
    if (!range) return;
    Texts lines;
    for (; range; ++range) lines.push_back(range->first + " to " + range->second);
    Items(heading, lines);
  }

private:
  QXWriter& writer_;
};

}  // namespace

bool WriteTopLevelBriefDescription(const QXInterface& interface, const std::string& program,
                                   qxostream& out) {
  if (interface.GetBrief().empty()) return true;
  const std::string& name = interface.GetName();
  out << (name.empty() ? program : name) << " : " << interface.GetBrief() << "\n";
  return true;
}

bool WriteBriefHelpDescription(const QXInterface& interface, const std::string& program,
                               qxostream& out, unsigned level, unsigned width) {
  WriteTopLevelBriefDescription(interface, program, out);
  out << Title(level);
  WriteBrief(interface, out, "    ", level, width);
  return true;
}

bool WriteParameterDetailImpl(const QXParameter& p, QXWriter& writer) {
  DetailWriter out(writer);
  writer("Contents of parameter ");
  writer.WriteAnchor(p.GetName());
  writer.Indent();
  writer.NewLine();
  out.Values("Aliases : ", "  ", p.GetAliases());
  out.Item("Type : " + p.ClassID());
  out.Item("Allow list : " + QXNumberToString(p.GetIsList()));
  Texts defaults = PrettyDefaults(p);
  for (std::string& text : defaults) text = SettingText(p, text);
  if (defaults.size() > 1)
    out.Items("Default is a list :", defaults);
  else
    out.Item("Default : " +
             (defaults.empty() ? "(parameter does not have a default)" : defaults.front()));
  if (p.GetKeyless() != 0) out.Item("Keyless : " + std::to_string(p.GetKeyless()));
  if (IsHidden(p))
    out.Item("Hidden flag");
  else
    out.Item("Simple : " + QXNumberToString(p.GetVisibility() == QXVisibility::Simple));
  out.Item("Required : " + QXNumberToString(p.GetRequired()));
  out.Values("Legal values :", " ", p.GetPrettyLegalValues());
  out.Ranges("Legal ranges :", p.GetLegalRanges());
  out.Values("Illegal values :", " ", p.GetIllegalValues());
  out.Ranges("Illegal ranges :", p.GetIllegalRanges());
  out.Item("Brief : " + (p.GetBrief().empty() ? "(No brief description)" : p.GetBrief()));
  Texts detail;
  for (QXIter<const std::string> line = p.GetDetail(); line; ++line)
    detail.push_back(
        ReplaceReferences(*line, [](const std::string& text, const std::string&) { return text; }));
  if (!detail.empty()) out.Items("Detail", detail);
  return writer.EndIndent();
}

}  // namespace QXSystem

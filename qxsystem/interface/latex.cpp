// The fragment about one parameter for a manual in LaTeX.
#include <string>
#include <vector>

#include <qxsystem/interface/help.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter.h>
#include <qxsystem/platform/ostream.h>

namespace QXSystem {
namespace {

using QXPlatform::qxostream;

// "a", "a and b", "a, b and c".
std::string Enumerate(const Texts& items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i)
    text += (i == 0 ? "" : i + 1 < items.size() ? ", " : " and ") + items[i];
  return text;
}

// An item for a list that has entries, labelled as one or several.
void WriteItem(qxostream& out, const char* one, const char* several, const Texts& entries) {
  if (entries.empty()) return;
  out << "\\item[\\code{" << (entries.size() == 1 ? one : several) << "}] " << Enumerate(entries)
      << "\n";
}

Texts Ranges(QXIter<const QXStringPair> range) {
  Texts ranges;
  for (; range; ++range) ranges.push_back("(" + range->first + " to " + range->second + ")");
  return ranges;
}

}  // namespace

bool QXWriteParameterLatex(const QXParameter& p, qxostream& out) {
  out << "\\item[\\code{" << p.GetName() << "}] " << p.GetBrief() << "\n";
  out << "\\begin{description}\n";
  WriteItem(out, "Alias", "Aliases", Collect(p.GetAliases()));
  WriteItem(out, "Type", "Type", {p.ClassID()});
  const Texts defaults = PrettyDefaults(p);
  WriteItem(out, "Default", "Default", defaults.empty() ? Texts{"No default"} : defaults);
  WriteItem(out, "Legal Value", "Legal Values", Collect(p.GetPrettyLegalValues()));
  WriteItem(out, "Illegal Value", "Illegal Values", Collect(p.GetIllegalValues()));
  WriteItem(out, "LegalRange", "LegalRanges", Ranges(p.GetLegalRanges()));
  WriteItem(out, "IllegalRange", "IllegalRanges", Ranges(p.GetIllegalRanges()));
  out << "\\end{description}\n";
  for (QXIter<const std::string> line = p.GetDetail(); line; ++line) out << *line << "\n";
  return static_cast<bool>(out);
}

}  // namespace QXSystem

// The page of HTML about an interface.
#include <string>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/help.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter_private.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {

using QXPlatform::qxostream;

std::string HtmlLinks::WriteAnchor(const std::string& name) const {
  return "<a name=\"" + name + "\">" + name + "</a>";
}

std::string HtmlLinks::WriteLink(const std::string& name) const {
  return "<a href=#" + name + ">" + name + "</a>";
}

bool HtmlLinks::WriteWord(const std::string& word, qxostream& out) const {
  out << (names_.count(word) ? WriteLink(word) : word);
  return true;
}

bool HtmlLinks::WriteLine(const std::string& line, qxostream& out) const {
  Texts words;
  QXStringTokenize(words, line, WordDelimiters);
  for (const std::string& word : words) {
    WriteWord(word, out);
    out << " ";
  }
  out << "<br>";
  return true;
}

namespace {

class HtmlPage {
public:
  HtmlPage(qxostream& out, const QXInterface& interface);

  void WriteHead(const std::string& name, const std::string& version);
  void WriteHtmlBrief(const QXInterface& interface);
  void WriteHtml(const QXInterface& interface);

private:
  void WriteBriefOf(const QXParameter& parameter);
  void WriteCategory(const QXInterface& category);
  void WriteParameter(const QXParameter& parameter, const QXInterface& category);
  void WriteEntryHead(const char* kind, const std::string& name);
  void WriteEntryEnd() { out_ << "<br><a href=#top_of_file>Top</a>\n</blockquote>\n"; }

  void Row(const char* label, const std::string& text) { out_ << label << text << "<br>\n"; }
  void LineRow(const char* label, const std::string& line) {
    out_ << label;
    links_.WriteLine(line, out_);
    out_ << "\n";
  }
  template <class T>
  void NamesRow(const char* label, QXIter<T> named);
  void ValuesRow(const char* label, QXIter<const std::string> value);
  void RangesBlock(const char* label, QXIter<const QXStringPair> range);
  void DetailBlock(const Texts& lines);

  qxostream& out_;
  HtmlLinks links_;  // all names but that of the page itself
};

HtmlPage::HtmlPage(qxostream& out, const QXInterface& interface) : out_(out) {
  for (QXIter<QXInterface> child = interface.GetInterfaces(/*recursive=*/true); child; ++child)
    if (!links_.Add(child->GetName()))
      QXThrow.Warning("Problem with interface auto-links in html file");
  for (QXIter<QXParameter> p = interface.GetParameters(/*recursive=*/true); p; ++p)
    if (!links_.Add(p->GetName()))
      QXThrow.Warning("Problem with parameter auto-links in html file");
}

void HtmlPage::WriteHead(const std::string& name, const std::string& version) {
  const std::string help = name.empty() ? "" : "Help for " + name;
  const std::string of = version.empty() ? "" : " version " + version;
  out_ << "<html>\n<head>\n";
  if (!name.empty()) out_ << "<title> " << help << of << "</title>\n";
  out_ << "</head>\n<body>\n<a name=\"top_of_file\"></a>\n";
  out_ << "<font size=\"6\">" << help << of << "</font>\n<hr>\n";
  out_ << "<font size=\"5\"><b><u>Parameter list</u></b></font>"
       << " - Simple parameters are listed in boldface.  "
       << "Defaults are listed in parenthesis.<br>\n";
}

void HtmlPage::WriteHtmlBrief(const QXInterface& interface) {
  out_ << "<blockquote>\n";
  for (QXIter<QXParameter> p = interface.GetParameters(/*recursive=*/false); p; ++p)
    if (!IsHidden(*p)) WriteBriefOf(*p);
  for (QXIter<QXInterface> child = interface.GetInterfaces(/*recursive=*/false); child; ++child) {
    out_ << "<u>" << links_.WriteLink(child->GetName()) << "</u>";
    LineRow(" : ", child->GetBrief());
    WriteHtmlBrief(*child);
  }
  out_ << "</blockquote>\n";
}

void HtmlPage::WriteBriefOf(const QXParameter& parameter) {
  const std::string link = links_.WriteLink(parameter.GetName());
  out_ << (parameter.GetVisibility() == QXVisibility::Simple ? "<b>" + link + "</b>" : link) << " ";
  const Texts defaults = PrettyDefaults(parameter);
  if (!defaults.empty()) out_ << "(" << QXStringJoin(defaults, " ") << ")";
  if (parameter.GetBrief().empty())
    Row(" : ", "No brief description available");
  else
    LineRow(" : ", parameter.GetBrief());
}

void HtmlPage::WriteHtml(const QXInterface& interface) {
  if (interface.Parent()) WriteCategory(interface);
  for (QXIter<QXParameter> p = interface.GetParameters(/*recursive=*/false); p; ++p)
    WriteParameter(*p, interface);
  for (QXIter<QXInterface> child = interface.GetInterfaces(/*recursive=*/false); child; ++child)
    WriteHtml(*child);
}

void HtmlPage::WriteEntryHead(const char* kind, const std::string& name) {
  out_ << "<hr>\n<font size=\"4\"><u>" << kind << links_.WriteAnchor(name) << "</font></u><br>\n"
       << "<blockquote>\n";
}

void HtmlPage::WriteCategory(const QXInterface& category) {
  WriteEntryHead("Category : ", category.GetName());
  out_ << "Parameters : ";
  for (QXIter<QXParameter> p = category.GetParameters(/*recursive=*/false); p; ++p) {
    if (IsHidden(*p)) continue;
    links_.WriteWord(p->GetName(), out_);
    out_ << " ";
  }
  out_ << "<br>\nChild Categories : ";
  for (QXIter<QXInterface> child = category.GetInterfaces(/*recursive=*/false); child; ++child) {
    links_.WriteWord(child->GetName(), out_);
    out_ << " ";
  }
  out_ << "<br>\nParent Category : ";
  if (category.Parent()->GetName().empty())
    out_ << "<a href=#top_of_file>Top level</a>";
  else
    links_.WriteWord(category.Parent()->GetName(), out_);
  out_ << "<br>\n";
  LineRow("Brief : ", category.GetBrief());
  DetailBlock(Collect(category.GetDetail()));
  WriteEntryEnd();
}

// A line of a parameter's detail, which may hold references and line ends.
std::string Paragraph(const std::string& line) {
  std::string text = "<p>";
  for (const char c : line) c == '\n' ? text += "<br>" : text += c;
  return ReplaceReferences(text,
                           [](const std::string& shown, const std::string& target) {
                             return "<a href=" + target + ">" + shown + "</a>";
                           }) +
         "</p>";
}

void HtmlPage::WriteParameter(const QXParameter& p, const QXInterface& category) {
  WriteEntryHead("Parameter : ", p.GetName());
  Row("Type : ", p.ClassID());
  Row("List allowed : ", p.GetIsList() ? "yes" : "no");
  if (!category.GetName().empty()) {
    out_ << "Category : ";
    links_.WriteWord(category.GetName(), out_);
    out_ << "<br>\n";
  }
  Row("Default : ", QXStringJoin(PrettyDefaults(p), " "));
  if (IsHidden(p))
    Row("Parameter is hidden ", "");
  else
    Row("Simple : ", p.GetVisibility() == QXVisibility::Simple ? "yes" : "no");
  Row("Required : ", p.GetRequired() ? "yes" : "no");
  ValuesRow("Legal Values :", p.GetPrettyLegalValues());
  RangesBlock("Legal Ranges : ", p.GetLegalRanges());
  ValuesRow("Illegal Values :", p.GetIllegalValues());
  RangesBlock("Illegal Ranges : ", p.GetIllegalRanges());
  LineRow("Brief : ", p.GetBrief());
  Texts lines;
  for (QXIter<const std::string> line = p.GetDetail(); line; ++line)
    if (line->size() > 2) lines.push_back(Paragraph(*line));
  DetailBlock(lines);
  WriteEntryEnd();
}

void HtmlPage::ValuesRow(const char* label, QXIter<const std::string> value) {
  if (!value) return;
  std::string values;
  for (; value; ++value) values += " " + *value;
  Row(label, values);
}

void HtmlPage::RangesBlock(const char* label, QXIter<const QXStringPair> range) {
  if (!range) return;
  Row(label, "");
  out_ << "<blockquote>\n";
  for (; range; ++range) Row(range->first.c_str(), " to " + range->second);
  out_ << "</blockquote>\n";
}

void HtmlPage::DetailBlock(const Texts& lines) {
  if (lines.empty()) return;
  out_ << "<u> Detailed description</u><br>\n<blockquote>\n";
  for (const std::string& line : lines) LineRow("", line);
  out_ << "</blockquote>\n";
}

}  // namespace

bool QXWriteHtml(const QXInterface& interface, qxostream& out, const std::string& name,
                 const std::string& version) {
  HtmlPage page(out, interface);
  page.WriteHead(QXStringUpper(name.substr(0, 1)) + name.substr(name.empty() ? 0 : 1), version);
  page.WriteHtmlBrief(interface);
  out << "<a href=#top_of_file>Top</a> of page<br>\n";
  page.WriteHtml(interface);
  out << "</body>\n</html>\n";
  return static_cast<bool>(out);
}

}  // namespace QXSystem

// The switches that ask for a description: "--help" and its sisters.
#include <cstdlib>
#include <string>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/files.h>
#include <qxsystem/interface/help.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/writer.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/platform/version.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {
namespace {

using QXPlatform::qxostream;
using QXPlatform::qxout;

// A command line that asks for something.
struct Request {
  const QXInterface& interface;
  const std::string program;
  const std::string topic;  // the second word, if there is one
  unsigned width;           // of the page
  qxostream& out;
};

void PrintBrief(const Request& request, unsigned level) {
  WriteBriefHelpDescription(request.interface, request.program, request.out, level, request.width);
}

// The parameter that was meant, with or without its "-".
template <class Find>
const QXParameter* FindMeant(const std::string& name, const Find& find) {
  const QXParameter* parameter = find(name);
  return parameter ? parameter : find("-" + name);
}

// ---- "--help" and a topic ----

void PrintDefaults(const Request& request) {
  QXTextWriter writer(request.out, "  ");
  writer.Start("#Default settings");
  WriteDefaultsImpl(request.interface, writer);
  writer.End();
}

void WriteHtmlFile(const Request& request) {
  const std::string name = request.program + "_help.html";
  QXPlatform::qxofstream file(name);
  if (!file) {
    request.out << "Unable to create file '" << name << "'\n";
    return;
  }
  request.out << "Creating '" << name << "'\n";
  QXWriteHtml(request.interface, file, request.program, /*version=*/"");
  if (!file.close()) QXThrow.Warning("'%s' is not complete, the disk may be full", name.c_str());
}

void PrintDetail(const Request& request) {
  const ParameterIndex parameters(request.interface);
  const QXParameter* parameter = FindMeant(request.topic, [&parameters](const std::string& name) {
    return parameters.ParameterWithFullname(name);
  });
  if (parameter) {
    QXTextWriter writer(request.out, "  ");
    WriteParameterDetailImpl(*parameter, writer);
    writer.End();
  } else {
    parameters.Suggest(request.topic);
    request.out << "Unable to find help for '" << request.topic << "'\n";
  }
}

constexpr struct {
  const char* word;
  void (*answer)(const Request&);
} Topics[] = {
    {"simple", [](const Request& r) { PrintBrief(r, QXVisibility::Simple); }},
    {"all", [](const Request& r) { PrintBrief(r, QXVisibility::Normal); }},
    {"hidden", [](const Request& r) { PrintBrief(r, QXVisibility::Hidden); }},
    {"poweruser", [](const Request& r) { PrintBrief(r, QXVisibility::Hidden); }},
    {"defaults", PrintDefaults},
    {"versions", [](const Request& r) { QXPlatform::QXGetVersions(r.out); }},
    {"html", WriteHtmlFile},
};

void PrintTopic(const Request& request) {
  for (const auto& topic : Topics)
    if (request.topic == topic.word) return topic.answer(request);
  PrintDetail(request);
}

// ---- First words ----

void PrintHelp(const Request& request) {
  PrintBrief(request, QXVisibility::Simple);
  request.out << "Additional help functions:\n";
  for (const char* line :
       {" --help simple      : Get a list of simple parameters (as seen above)",
        " --help all         : Get a complete list of parameters",
        " --help defaults    : List the defaults for all parameters",
        " --help <parameter> : Get detailed help on a parameter",
        " --help html        : Create an html help file for this program",
        " --help versions    : List the toolkits and versions used in the application"})
    request.out << "  " << request.program << line << "\n";
}

void PrintConfiguration(const Request& request) {
  qxout << "#BeginInterface#\n";
  QXWriteInterfaceConfigurationFile(request.interface, qxout);
  qxout << "#EndInterface#\n";
}

void PrintLatex(const Request& request) {
  const QXInterface& interface = request.interface;
  const QXParameter* parameter = FindMeant(request.topic, [&interface](const std::string& name) {
    return interface.GetParameter(name);
  });
  if (parameter) QXWriteParameterLatex(*parameter, qxout);
}

constexpr struct {
  const char* word;
  int min, max;  // arguments, the program's name among them
  void (*answer)(const Request&);
} Words[] = {
    {"--itf", 2, 2, PrintConfiguration},
    {"--json", 2, 2, [](const Request& r) { QXWriteJSON(r.interface, qxout); }},
    {"--help", 2, 2, PrintHelp},
    {"--help", 3, 4, PrintTopic},
    {"--latex", 3, 3, PrintLatex},
};

// ---- No word at all ----

bool AnswerEmpty(const Request& request) {
  const auto required = [](const QXParameter& p) { return p.GetRequired(); };
  if (!AnyParameter(request.interface, required)) return false;
  request.out << "No arguments specified on the command line\n";
  WriteTopLevelBriefDescription(request.interface, request.program, request.out);
  request.out << "Required parameters:\n";
  for (QXIter<QXParameter> p = request.interface.GetParameters(/*recursive=*/true); p; ++p) {
    if (!p->GetRequired()) continue;
    request.out << "    " << p->GetName();
    if (!p->GetBrief().empty()) request.out << " : " << p->GetBrief();
    request.out << "\n";
  }
  request.out << "For more help type:\n  " << request.program << " --help\n";
  return true;
}

// The width of the page: the first of the two texts that can be read, else 80.
unsigned Width(const char* given, const char* columns) {
  unsigned width;
  for (const char* text : {given, columns})
    if (text && QXStringToNumber(std::string(text), width)) return width;
  return 80;
}

}  // namespace

bool QXCheckHelp(const QXInterface& interface, int argc, char** argv, bool exitOnEmpty,
                 qxostream& out) {
  if (argc < 1 || (argc == 1 && !exitOnEmpty)) return false;
  const Request request = {interface, argv[0], argc > 2 ? argv[2] : "",
                           Width(argc > 3 ? argv[3] : nullptr, std::getenv("COLUMNS")), out};
  if (argc == 1) return AnswerEmpty(request);
  for (const auto& word : Words) {
    if (word.word != std::string(argv[1]) || argc < word.min || argc > word.max) continue;
    word.answer(request);
    return true;
  }
  return false;
}

}  // namespace QXSystem

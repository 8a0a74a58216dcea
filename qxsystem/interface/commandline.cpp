#include <qxsystem/interface/commandline.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <unordered_map>

#include <qxsystem/core/endprocess_private.h>
#include <qxsystem/core/error.h>
#include <qxsystem/interface/commandline_private.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {

bool GetKeylessParameters(const QXInterface& interface, std::vector<QXParameter*>& keyless) {
  bool good = true;
  for (QXIter<QXParameter> p = interface.GetParameters(/*recursive=*/true); p; ++p)
    if (p->GetKeyless() != 0) keyless.push_back(&*p);
  std::stable_sort(keyless.begin(), keyless.end(), [](const QXParameter* a, const QXParameter* b) {
    return KeylessSort()(*a, *b);
  });
  if (keyless.empty()) return true;

  const QXParameter* previous = nullptr;
  for (const QXParameter* p : keyless) {
    const unsigned expected = previous ? previous->GetKeyless() + 1 : 1;
    if (p->GetKeyless() != expected) {
      if (previous)
        QXThrow.Error("Missing keyless parameter %u, have keyless parameter %u (%s) and %u (%s)",
                      expected, previous->GetKeyless(), previous->GetName().c_str(),
                      p->GetKeyless(), p->GetName().c_str());
      else
        QXThrow.Error("Missing keyless parameter 1, have keyless parameter %u (%s)",
                      p->GetKeyless(), p->GetName().c_str());
      good = false;
    }
    previous = p;
  }
  for (const QXParameter* p : keyless) {
    if (!p->GetIsList() || p == keyless.back()) continue;
    QXThrow.Error(
        "If a keyless parameter is also a list type parameter it must be the last keyless "
        "entry.\nParameter %s is violating this rule (%s is after it)",
        p->GetName().c_str(), keyless.back()->GetName().c_str());
    good = false;
  }
  return good;
}

void EndAfterAnswer() {
  QXPlatform::qxout.flush();
  EndProcess(0);
}

void PrintVersionAndEnd(const char* version) {
  QXPlatform::qxout << (version ? version : "version not set") << "\n";
  EndAfterAnswer();
}

namespace {

class CommandLine : CommandLineParser {
public:
  using CommandLineParser::CommandLineParser;

  bool Parse(const unsigned char* requirements) {
    if (!GetKeylessParameters(interface_, keyless_)) return false;
    const bool scanned = Scan();
    for (const auto& list : probes_) list.first->Load();
    if (!scanned || !AssignKeyless() || !ReadParameterFiles()) return false;
    for (QXParameter* parameter : to_unset_) parameter->ClearValues();
    return QXHasRequired(interface_, requirements, level_);
  }

private:
  bool Scan();
  QXParameter* FindUnset(const std::string& argument) const;
  bool TakeSwitch(const std::string& key, QXParameter& parameter);
  bool TakeValues(const std::string& key, QXParameter& parameter);
  bool LoadTaken(QXParameter& parameter, const Texts& texts);
  bool AssignKeyless();
  bool AssignKeyless(QXParameter& parameter, const Texts& texts);
  void NoteFile(QXParameter& parameter);
  bool ReadParameterFiles();

  bool Complain(const char* format, ...) const __attribute__((format(printf, 2, 3)));

  std::vector<QXParameter*> keyless_;  // in their order
  Texts leftover_;                     // arguments without key
  std::vector<QXParameter*> to_unset_;
  std::vector<QXParameter*> files_;  // parameter files that were given

  // Lists that were given more than once, each with a copy to try their texts on.
  std::unordered_map<QXParameter*, std::unique_ptr<QXParameter>> probes_;
};

bool CommandLine::Complain(const char* format, ...) const {
  char text[8192];  // where all messages are cut
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  QXThrow.Msg(level_, "%s", text);
  return false;
}

// ---- Arguments with keys ----

bool CommandLine::Scan() {
  while (at_ < arguments_.size()) {
    const std::string& argument = arguments_[at_++];
    if (QXParameter* parameter = FindUnset(argument)) {
      to_unset_.push_back(parameter);
      continue;
    }
    if (argument == "--version") PrintVersionAndEnd(version_);
    QXParameter* parameter = parameters_.ParameterWithFullname(argument);
    if (!parameter) {
      leftover_.push_back(argument);
      continue;
    }
    for (const std::string& unknown : leftover_) {
      parameters_.Suggest(unknown);
      Complain("Unknown parameter, %s, on command line", unknown.c_str());
    }
    if (!leftover_.empty()) return false;
    if (parameter->GetHasValue(0) && !parameter->GetIsList())
      return Complain("%s is specified twice on the command line", argument.c_str());
    if (!(IsBool(*parameter) ? TakeSwitch(argument, *parameter) : TakeValues(argument, *parameter)))
      return false;
    NoteFile(*parameter);
  }
  return true;
}

// The parameter that an argument says to unset, null when it says no such thing.
QXParameter* CommandLine::FindUnset(const std::string& argument) const {
  static const std::string prefix = "--unset";
  if (argument.compare(0, prefix.size(), prefix) != 0) return nullptr;
  return parameters_.ParameterWithFullname(argument.substr(prefix.size()));
}

// A switch may stand alone, in front of anything that is no truth value.
bool CommandLine::TakeSwitch(const std::string& key, QXParameter& parameter) {
  if (at_ < arguments_.size() && parameter.IsLegalString(arguments_[at_]))
    return TakeValues(key, parameter);
  return (parameter.AddStringValue("true") && LoadTaken(parameter, {"true"})) ||
         Complain("Problem loading parameter %s with setting %s", key.c_str(), "true");
}

bool CommandLine::TakeValues(const std::string& key, QXParameter& parameter) {
  if (at_ == arguments_.size())
    return Complain("Parameter %s on the command line is not followed by a value", key.c_str());
  const std::string& value = arguments_[at_++];
  const bool legal = parameter.IsLegalString(value) && parameter.AddStringValue(value);
  if (!legal && !(parameter.GetIsList() && parameter.SetStringValues(value)))
    return Complain("%s is not a legal setting for parameter %s (specified on command line)%s",
                    value.c_str(), key.c_str(), LegalList(parameter, /*pretty=*/true).c_str());

  // A list goes on until the next key, or what is no value of it.
  Texts taken = {value};
  while (parameter.GetIsList() && at_ < arguments_.size() &&
         !parameters_.ParameterWithFullname(arguments_[at_]) &&
         parameter.IsLegalString(arguments_[at_])) {
    const std::string& next = arguments_[at_++];
    if (!parameter.AddStringValue(next))
      return Complain(
          "%s is not a legal setting for list parameter %s (specified on command line)%s",
          next.c_str(), parameter.GetName().c_str(),
          LegalList(parameter, /*pretty=*/false).c_str());
    taken.push_back(next);
  }
  return LoadTaken(parameter, taken) || Complain("Problem loading parameter %s with setting %s",
                                                 key.c_str(), QXStringJoin(taken, "").c_str());
}

// Loads a parameter to which some texts were added. Every load begins with the first
// value: a list that is given again, and again, is loaded when all were scanned.
bool CommandLine::LoadTaken(QXParameter& parameter, const Texts& texts) {
  if (!parameter.GetIsList() || !parameter.GetHasValue(0)) return parameter.Load();
  std::unique_ptr<QXParameter>& probe = probes_[&parameter];
  if (!probe) probe.reset(parameter.CreateCopy());
  return FindUnloadable(*probe, texts) == texts.size() || parameter.Load();
}

// ---- Arguments without key ----

bool CommandLine::AssignKeyless() {
  const auto refuse = [this](std::size_t first, const auto& complain) {
    for (std::size_t i = first; i < leftover_.size(); ++i) {
      parameters_.Suggest(leftover_[i]);
      complain(leftover_[i].c_str());
    }
    return false;
  };
  if (leftover_.empty()) return true;
  if (keyless_.empty())
    return refuse(
        0, [this](const char* text) { Complain("Unknown argument on command line %s", text); });
  if (leftover_.size() > keyless_.size() && !keyless_.back()->GetIsList())
    return refuse(keyless_.size(), [this](const char* text) {
      Complain("Unknown argument %s on command line (too many arguments to be keyless)", text);
    });

  std::size_t used = 0;
  for (QXParameter* parameter : keyless_) {
    if (used == leftover_.size()) break;
    Texts texts = {leftover_[used]};
    if (parameter->GetIsList())  // the last one, which takes all
      texts.assign(leftover_.begin() + static_cast<std::ptrdiff_t>(used), leftover_.end());
    else if (parameter->GetHasValue(0))
      continue;
    if (!AssignKeyless(*parameter, texts)) return false;
    used += texts.size();
  }
  if (used == leftover_.size()) return true;
  return refuse(used, [this](const char* text) {
    Complain(
        "Unknown argument %s on command line.  There are too many arguments to be keyless (one or "
        "more keyless parameters are explicitly specified)",
        text);
  });
}

bool CommandLine::AssignKeyless(QXParameter& parameter, const Texts& texts) {
  const char* name = parameter.GetName().c_str();
  Texts added;
  for (const std::string& text : texts) {
    if (!parameter.IsLegalString(text) || !parameter.AddStringValue(text)) break;
    added.push_back(text);
  }
  const std::size_t loaded = added.empty() ? 0 : LoadAdded(parameter, added);
  if (loaded < added.size())
    return Complain("Problem loading keyless parameter %s with setting %s", name,
                    added[loaded].c_str());
  if (loaded < texts.size())
    return Complain(
        "%s is not a legal setting for the keyless parameter %s specified on the command line",
        texts[loaded].c_str(), name);
  NoteFile(parameter);
  return true;
}

// ---- Parameter files ----

void CommandLine::NoteFile(QXParameter& parameter) {
  if (parameter.ClassID() == QXParamFileParameter::StaticClassID() &&
      std::find(files_.begin(), files_.end(), &parameter) == files_.end())
    files_.push_back(&parameter);
}

// Files give what the command line did not: they are read after it, and never
// change the parameters that name them.
bool CommandLine::ReadParameterFiles() {
  using QXPlatform::qxisstream;
  for (const QXParameter* parameter : files_) {
    if (parameter->TypedParameterTypeID() != QXGetDataType<QXTypedParameter<qxisstream>>()) {
      QXThrow.Error("QXParameter is not an QXParamFileParameter");
      return false;
    }
    const auto& typed = static_cast<const QXTypedParameter<qxisstream>&>(*parameter);
    for (QXIter<const qxisstream> file = typed.GetSettings(); file; ++file) {
      qxisstream in(*file);
      if (!ParseParameterFile(parameters_, in, /*overwrite=*/false, level_))
        return Complain("Problem parsing parameter file");
    }
  }
  return true;
}

}  // namespace

bool QXParseCommandLine(QXInterface& interface, const char* version, int argc, char** argv,
                        const unsigned char* requirements, unsigned level, bool checkHelp) {
  if (checkHelp && QXCheckHelp(interface, argc, argv, /*exitOnEmpty=*/true, QXPlatform::qxerr))
    EndAfterAnswer();
  return CommandLine(interface, version, argc, argv, level).Parse(requirements);
}

bool QXParseCommandLine(QXInterface& interface, int argc, char** argv,
                        const unsigned char* requirements, unsigned level, bool checkHelp) {
  return QXParseCommandLine(interface, nullptr, argc, argv, requirements, level, checkHelp);
}

}  // namespace QXSystem

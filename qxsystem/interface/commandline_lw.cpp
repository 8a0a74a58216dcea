// The parser for programs whose keys are switches of one letter.
#include <string>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/commandline_private.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter_concrete.h>

namespace QXSystem {
namespace {

// Whether a parameter is one that this parser understands.
bool IsSwitchOrKeyless(const QXParameter& p) {
  const char* name = p.GetName().c_str();
  if (p.ClassID() == QXParamFileParameter::StaticClassID())
    QXThrow.Error("ParseCommandLineLW : does not support parameter files (%s)", name);
  if (p.GetKeyless() != 0) return true;
  if (!IsBool(p)) {
    QXThrow.Error(
        "ParseCommandLineLW : \n All non-keyless parameter keys must be booleans (%s is not)",
        name);
    return false;
  }

  bool good = true;
  bool value;
  if (!static_cast<const QXTypedParameter<bool>&>(p).GetDefault(value)) {
    QXThrow.Error(
        "ParseCommandLineLW : bool parameters must have a default value of false (%s does not "
        "have a default value)",
        name);
    good = false;
  } else if (value) {
    QXThrow.Error(
        "ParseCommandLineLW : bool parameters must have a default value of false (%s does has a "
        "default value of true)",
        name);
    good = false;
  }
  if (p.GetName().size() != 2) {
    QXThrow.Error(
        "ParseCommandLineLW : \n non-keyless bool parameters must have a - followed by a single "
        "character as a key (%s does not)",
        name);
    good = false;
  }
  for (QXIter<const std::string> alias = p.GetAliases(); alias; ++alias) {
    if (alias->size() == 2) continue;
    QXThrow.Error(
        "ParseCommandLineLW : \n non-keyless bool parameters must have a - followed by a single "
        "character as a key (an alias of %s, %s, does not)",
        name, alias->c_str());
    good = false;
  }
  return good;
}

class SwitchLine : CommandLineParser {
public:
  using CommandLineParser::CommandLineParser;

  bool Parse(const unsigned char* requirements) {
    for (QXIter<QXParameter> p = interface_.GetParameters(/*recursive=*/true); p; ++p)
      good_ = IsSwitchOrKeyless(*p) && good_;
    std::vector<QXParameter*> keyless;
    good_ = GetKeylessParameters(interface_, keyless) && good_;
    while (at_ < arguments_.size() && arguments_[at_].compare(0, 1, "-") == 0)
      TakeSwitches(arguments_[at_++]);
    TakeKeyless(keyless);
    return good_ && QXHasRequired(interface_, requirements, level_);
  }

private:
  void TakeSwitches(const std::string& group);
  void TakeSwitch(const std::string& key, const std::string& group);
  void ComplainOfKey(const std::string& key);
  void TakeKeyless(const std::vector<QXParameter*>& keyless);
  void Assign(QXParameter& parameter, const Texts& texts);

  bool good_ = true;  // nothing was reported
};

// Takes "-abc" as "-a -b -c".
void SwitchLine::TakeSwitches(const std::string& group) {
  if (group == "--version") PrintVersionAndEnd(version_);
  const QXParameter* whole = parameters_.ParameterWithFullname(group);
  if (group.size() == 1) {
    QXThrow.Msg(level_, " - is not a valid command line arg");
    good_ = false;
  } else if (whole && whole->GetKeyless() != 0) {
    ComplainOfKey(group);
  } else {
    for (const char letter : group.substr(1)) TakeSwitch({'-', letter}, group);
  }
}

void SwitchLine::TakeSwitch(const std::string& key, const std::string& group) {
  QXParameter* parameter = parameters_.ParameterWithFullname(key);
  if (parameter && parameter->GetKeyless() != 0) return ComplainOfKey(key);
  if (parameter && IsBool(*parameter) && parameter->SetStringValue("true") && parameter->Load())
    return;
  if (parameter)
    QXThrow.Msg(level_, "switch %s is not a boolean parameter", key.c_str());
  else if (group.size() > 2)
    QXThrow.Msg(level_, "Unknow switch %s (specified as part of group %s)", key.c_str(),
                group.c_str());
  else
    QXThrow.Msg(level_, "Unknow switch %s", key.c_str());
  good_ = false;
}

void SwitchLine::ComplainOfKey(const std::string& key) {
  QXThrow.Msg(level_, "%s is a keyless parameter, do not specify it with a key", key.c_str());
  good_ = false;
}

void SwitchLine::TakeKeyless(const std::vector<QXParameter*>& keyless) {
  for (QXParameter* parameter : keyless) {
    if (at_ == arguments_.size()) return;
    const bool rest = parameter->GetIsList() && parameter == keyless.back();
    const auto first = arguments_.begin() + static_cast<std::ptrdiff_t>(at_);
    const Texts texts(first, rest ? arguments_.end() : first + 1);
    Assign(*parameter, texts);
    at_ += texts.size();
  }
  if (at_ == arguments_.size()) return;
  QXThrow.Msg(level_, "Too many arguments on the command line");
  good_ = false;
}

void SwitchLine::Assign(QXParameter& parameter, const Texts& texts) {
  const std::vector<Fault> faults = AssignTexts(parameter, texts, /*replace=*/true);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (faults[i] == Fault::None) continue;
    QXThrow.Msg(level_, "Invalid command line argument %s", texts[i].c_str());
    good_ = false;
  }
}

}  // namespace

bool QXParseCommandLineLW(QXInterface& interface, const char* version, int argc, char** argv,
                          const unsigned char* requirements, unsigned level) {
  return SwitchLine(interface, version, argc, argv, level).Parse(requirements);
}

bool QXParseCommandLineLW(QXInterface& interface, int argc, char** argv,
                          const unsigned char* requirements, unsigned level) {
  return QXParseCommandLineLW(interface, nullptr, argc, argv, requirements, level);
}

}  // namespace QXSystem

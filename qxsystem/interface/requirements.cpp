// Requirement texts: which parameters a program needs together.
#include <string>
#include <string_view>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter_private.h>

namespace QXSystem {
namespace {

class Requirements {
public:
  Requirements(const QXInterface& interface, const char* text, unsigned level)
      : parameters_(interface), lines_(text), level_(level) {}

  // Whether all blocks are met. The first that is not, or that cannot be read,
  // ends the reading.
  bool Met();

private:
  struct Block {
    bool met = false;  // one of its options holds
    std::string message;
  };

  bool ReadBlock(Block& block);
  bool ReadOption(const Line& line, bool& holds) const;
  void ReadMessage(std::string& message);

  const ParameterIndex parameters_;
  LineSource lines_;
  const unsigned level_;
};

bool Requirements::Met() {
  for (Line line; lines_.Next(line);) {
    if (line.SaysNothing()) continue;
    if (!line.Is("!REQUIREMENT")) {
      QXThrow.Msg(level_, "HasRequired, Problem parsing requirement\n line %s", line.Raw().c_str());
      return false;
    }
    Block block;
    if (!ReadBlock(block)) return false;
    if (block.met) continue;
    QXThrow.Msg(level_, "Missing requirements:\n%s", block.message.c_str());
    return false;
  }
  return true;
}

// All options are read, also behind one that holds: an unknown key shall show
// wherever it stands.
bool Requirements::ReadBlock(Block& block) {
  for (Line line; lines_.Next(line) && !line.Is("!END");) {
    bool holds = false;
    if (line.Is("!OPTION") && !ReadOption(line, holds)) return false;
    block.met = block.met || holds;
    if (line.Is("!ERROR_MSG")) ReadMessage(block.message);
  }
  return true;
}

// Sets `holds` if all items of an option hold. False when it cannot be read.
bool Requirements::ReadOption(const Line& line, bool& holds) const {
  holds = true;
  std::string_view rest = line.behind;
  std::string_view item = TakeWord(rest);
  while (!item.empty()) {
    if (item.size() < 2) {
      QXThrow.Msg(level_, "HasRequired.  Problem parsing !OPTION\n line : %s", line.Raw().c_str());
      return false;
    }
    const bool negated = item[0] == '!';
    const std::string key(item.substr(negated ? 1 : 0));
    std::string_view value = item = TakeWord(rest);
    if (key[0] != '-') continue;  // means nothing
    const QXParameter* parameter = parameters_.ParameterWithFullname(key);
    if (!parameter) {
      parameters_.Suggest(key);
      QXThrow.Error("HasRequired.  Unknown key %s in !OPTION\n line : %s", key.c_str(),
                    line.Raw().c_str());
      return false;
    }
    const bool hasValue = !value.empty() && value[0] != '-' && value[0] != '!';
    if (hasValue) item = TakeWord(rest);
    const bool is = hasValue ? parameter->IsSetToString(std::string(value)) : parameter->IsSet(0);
    holds = holds && is != negated;
  }
  return true;
}

void Requirements::ReadMessage(std::string& message) {
  for (Line line; lines_.Next(line);) {
    if (line.Begins('!')) return lines_.PushBack(line);
    if (line.Begins('#')) continue;
    message += line.size == 0 ? "\n" : line.Raw() + "\n";
  }
}

}  // namespace

bool QXHasRequired(const QXInterface& interface, const unsigned char* requirements,
                   unsigned level) {
  bool good = true;
  for (QXIter<QXParameter> p = interface.GetParameters(/*recursive=*/true); p; ++p) {
    if (!p->GetRequired() || p->IsSet(0)) continue;
    QXThrow.Msg(level, "Missing required parameter %s", p->GetName().c_str());
    good = false;
  }
  if (!requirements) return good;
  const char* text = reinterpret_cast<const char*>(requirements);
  return Requirements(interface, text, level).Met() && good;
}

}  // namespace QXSystem

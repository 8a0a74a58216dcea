// Requirement texts: which parameters a program needs together.
#include <cstring>
#include <string>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/platform/istream.h>

namespace QXSystem {
namespace {

class Requirements {
public:
  Requirements(const QXInterface& interface, QXPlatform::qxistream& in, unsigned level)
      : parameters_(interface), lines_(in), level_(level) {}

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
      QXThrow.Msg(level_, "HasRequired, Problem parsing requirement\n line %s", line.raw.c_str());
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
  const auto& words = line.words;
  for (std::size_t i = 1; i < words.size(); ++i) {
    if (words[i].size() < 2) {
      QXThrow.Msg(level_, "HasRequired.  Problem parsing !OPTION\n line : %s", line.raw.c_str());
      return false;
    }
    const bool negated = words[i][0] == '!';
    if (words[i][negated] != '-') continue;  // means nothing
    const std::string key = words[i].substr(negated);
    const QXParameter* parameter = parameters_.Find(key);
    if (!parameter) {
      parameters_.Suggest(key);
      QXThrow.Error("HasRequired.  Unknown key %s in !OPTION\n line : %s", key.c_str(),
                    line.raw.c_str());
      return false;
    }
    const bool hasValue = i + 1 < words.size() && words[i + 1][0] != '-' && words[i + 1][0] != '!';
    const bool is = hasValue ? parameter->IsSetToString(words[++i]) : parameter->IsSet(0);
    holds = holds && is != negated;
  }
  return true;
}

void Requirements::ReadMessage(std::string& message) {
  for (Line line; lines_.Next(line);) {
    if (line.Begins('!')) return lines_.PushBack(line);
    if (line.Begins('#')) continue;
    message += line.words.empty() ? "\n" : line.raw + "\n";
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
  QXPlatform::qxisstream in;
  in.set(text, std::strlen(text), /*copy=*/false);
  return Requirements(interface, in, level).Met() && good;
}

}  // namespace QXSystem

#include "structure.h"

#include <cmath>

#include <qxsystem/util/qxnumber.h>
#include <qxsystem/util/qxstring.h>

#include "elements.h"
#include "text.h"

using namespace QXSystem;

namespace {

bool IsRecord(const std::string& line, std::string_view name) {
  return Columns(line, 1, 6) == name;
}

// The element of a PDB atom by its name, columns 13 to 16: the symbol stands on
// the right of the first two, except in hydrogens with long names.
unsigned char ElementOfName(std::string_view name) {
  name = name.substr(0, 4);
  const bool isOneLetter = name[0] == ' ' || (name[0] >= '0' && name[0] <= '9');
  if (isOneLetter) return GetAtomicNumber(name.substr(1, 1));
  if (name[0] == 'H' && Trim(name).size() == 4) return 1;
  const unsigned char two = GetAtomicNumber(Trim(name.substr(0, 2)));
  return two != 0 ? two : GetAtomicNumber(name.substr(0, 1));
}

}  // namespace

bool StructureReader::Line() {
  if (hasLine_) {
    hasLine_ = false;
    return true;
  }
  if (!in_.getline(line_)) return false;
  ++lineNumber_;
  return true;
}

bool StructureReader::Fail(const std::string& what) {
  error_ = "line " + std::to_string(lineNumber_) + ": " + what;
  return false;
}

bool StructureReader::Read(Model& model) {
  if (!error_.empty()) return false;
  model = Model();
  if (format_ == Unknown) {
    if (!Line()) return false;
    hasLine_ = true;
    unsigned count;
    format_ = QXStringToNumber(line_, count) ? Xyz : Pdb;
  }
  return format_ == Xyz ? ReadXyz(model) : ReadPdb(model);
}

bool StructureReader::AddAtom(std::string_view element, const std::string_view (&coordinates)[3],
                              Model& model) {
  for (const std::string_view text : coordinates) {
    double value;
    if (!QXStringToNumber(std::string(text), value) || !std::isfinite(value))
      return Fail("'" + std::string(text) + "' is no coordinate");
    model.coordinates.push_back(value);
  }
  model.elements.push_back(GetAtomicNumber(element));
  return true;
}

bool StructureReader::ReadXyz(Model& model) {
  do {  // blank lines between models
    if (!Line()) return false;
  } while (Trim(line_).empty());
  unsigned count;
  if (!QXStringToNumber(line_, count) || count == 0) return Fail("no number of atoms");
  if (!Line()) return Fail("the file ends in front of the comment");
  model.title = Trim(line_);

  std::vector<std::string> words;
  for (unsigned i = 0; i < count; ++i) {
    if (!Line())
      return Fail("the file ends after " + std::to_string(i) + " of " + std::to_string(count) +
                  " atoms");
    QXStringTokenize(words, line_, " \t");
    if (words.size() < 4) return Fail("no element and three coordinates");
    if (!AddAtom(words[0], {words[1], words[2], words[3]}, model)) return false;
    // Some programs write atomic numbers.
    unsigned number;
    if (QXStringToNumber(words[0], number) && number <= kNumElements)
      model.elements.back() = static_cast<unsigned char>(number);
  }
  return true;
}

bool StructureReader::ReadPdb(Model& model) {
  char location = ' ';  // the letter of the alternative that is taken
  while (Line()) {
    if (IsRecord(line_, "MODEL")) {
      if (!model.elements.empty()) {  // one that had no end
        hasLine_ = true;
        return true;
      }
      model.title = "model " + std::string(Columns(line_, 11, 14));
    } else if (IsRecord(line_, "ENDMDL")) {
      if (model.elements.empty()) return Fail("a model without atoms");
      return true;
    } else if (IsRecord(line_, "ATOM")) {
      if (line_.size() < 54) return Fail("an atom without coordinates");
      const char alternative = line_[16];
      if (location == ' ') location = alternative;
      if (alternative != ' ' && alternative != location) continue;
      if (!AddAtom(Columns(line_, 77, 78),
                   {Columns(line_, 31, 38), Columns(line_, 39, 46), Columns(line_, 47, 54)}, model))
        return false;
      if (model.elements.back() == 0)
        model.elements.back() = ElementOfName(std::string_view(line_).substr(12));
    }
  }
  return !model.elements.empty();
}

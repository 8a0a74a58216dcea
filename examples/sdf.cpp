#include "sdf.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

#include "elements.h"
#include "text.h"

namespace {

// What stands in the place of an element in queries and attachments.
constexpr std::string_view kNoElements[] = {"A", "Q", "*", "L", "LP", "R", "R#", "Du", "X"};

bool ParseElement(std::string_view symbol, unsigned char& number) {
  number = GetAtomicNumber(symbol);
  return number != 0 ||
         std::find(std::begin(kNoElements), std::end(kNoElements), symbol) != std::end(kNoElements);
}

// The name in a field's header: what stands in angle brackets, as in
// ">  <MolWeight> (12)", or else all the text, as in "> DT12".
std::string_view FieldName(std::string_view header) {
  const auto open = header.find('<');
  const auto close = header.rfind('>');
  if (open != header.npos && close > open) return Trim(header.substr(open + 1, close - open - 1));
  return Trim(header.substr(1));
}

}  // namespace

bool SDReader::Line() {
  if (!in_.getline(line_)) return false;
  ++lineNumber_;
  return true;
}

bool SDReader::Fail(const std::string& what) {
  error_ =
      "line " + std::to_string(lineNumber_) + ", molecule " + std::to_string(record_) + ": " + what;
  return false;
}

bool SDReader::Read(SDMolecule& molecule) {
  if (!error_.empty()) return false;
  molecule = SDMolecule();
  ++record_;

  // A title may be empty, and so may the two lines behind it. Blank lines to
  // the end of the file are no molecule.
  bool blank = true;
  for (int header = 0; header < 4; ++header) {
    if (!Line()) return blank ? false : Fail("the file ends in the header of the molecule");
    if (header == 0) molecule.title = line_;
    blank = blank && Trim(line_).empty();
  }
  while (blank && Line()) blank = Trim(line_).empty();
  if (blank) return false;

  unsigned atoms, bonds;
  const auto version = Columns(line_, 34, 39);
  if (version == "V3000") return Fail("a V3000 molecule; only V2000 is understood");
  if (!ParseNumber(Columns(line_, 1, 3), atoms) || !ParseNumber(Columns(line_, 4, 6), bonds) ||
      (version != "V2000" && !version.empty()))
    return Fail("no counts line of a V2000 molecule; is this an SD file?");

  return ReadAtoms(atoms, molecule) && ReadBonds(bonds, molecule) && PassProperties() &&
         ReadFields(molecule);
}

bool SDReader::ReadAtoms(unsigned count, SDMolecule& molecule) {
  for (unsigned i = 0; i < count; ++i) {
    if (!Line() || line_ == "$$$$")
      return Fail("the molecule ends after " + std::to_string(i) + " of " + std::to_string(count) +
                  " atoms");
    for (std::size_t column = 1; column <= 30; column += 10) {
      float value;
      if (!ParseNumber(Columns(line_, column, column + 9), value) || !std::isfinite(value))
        return Fail("no coordinate in columns " + std::to_string(column) + " to " +
                    std::to_string(column + 9));
      molecule.coordinates.push_back(value);
    }
    const auto symbol = Columns(line_, 32, 34);
    unsigned char number;
    if (!ParseElement(symbol, number)) return Fail("unknown element '" + std::string(symbol) + "'");
    molecule.elements.push_back(number);
  }
  return true;
}

bool SDReader::ReadBonds(unsigned count, SDMolecule& molecule) {
  const int atoms = static_cast<int>(molecule.elements.size());
  for (unsigned i = 0; i < count; ++i) {
    if (!Line() || line_ == "$$$$")
      return Fail("the molecule ends after " + std::to_string(i) + " of " + std::to_string(count) +
                  " bonds");
    int first, second, order;
    if (!ParseNumber(Columns(line_, 1, 3), first) || !ParseNumber(Columns(line_, 4, 6), second) ||
        !ParseNumber(Columns(line_, 7, 9), order))
      return Fail("no bond of two atoms and an order");
    if (first < 1 || first > atoms || second < 1 || second > atoms || first == second)
      return Fail("a bond between the atoms " + std::to_string(first) + " and " +
                  std::to_string(second) + " of " + std::to_string(atoms));
    molecule.bonds.insert(molecule.bonds.end(), {first - 1, second - 1, order});
  }
  return true;
}

bool SDReader::PassProperties() {
  do {
    if (!Line() || line_ == "$$$$") return Fail("the molecule ends without 'M  END'");
  } while (line_.compare(0, 6, "M  END") != 0);
  return true;
}

bool SDReader::ReadFields(SDMolecule& molecule) {
  while (Line() && line_ != "$$$$") {
    if (line_.empty() || line_[0] != '>') {
      if (Trim(line_).empty()) continue;
      return Fail("neither a data field nor the end of the molecule");
    }
    const std::string name(FieldName(line_));
    if (name.empty()) return Fail("a data field without a name");

    // A value ends at an empty line, and without one at the next molecule.
    std::string value;
    for (bool first = true; Line() && !line_.empty() && line_ != "$$$$"; first = false) {
      if (!first) value += '\n';
      value += line_;
    }
    molecule.fields.emplace_back(name, value);
    if (line_ == "$$$$") return true;
  }
  // A single molecule may go without the end mark, a molecule with data not.
  return line_ == "$$$$" || molecule.fields.empty() ||
         Fail("the file ends within the molecule's data fields");
}

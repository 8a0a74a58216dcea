#include "sdf.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace {

// Atomic number = position, from 1.
constexpr std::string_view kElements[] = {
    "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si", "P",
    "S",  "Cl", "Ar", "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn",
    "Ga", "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y",  "Zr", "Nb", "Mo", "Tc", "Ru", "Rh",
    "Pd", "Ag", "Cd", "In", "Sn", "Sb", "Te", "I",  "Xe", "Cs", "Ba", "La", "Ce", "Pr", "Nd",
    "Pm", "Sm", "Eu", "Gd", "Tb", "Dy", "Ho", "Er", "Tm", "Yb", "Lu", "Hf", "Ta", "W",  "Re",
    "Os", "Ir", "Pt", "Au", "Hg", "Tl", "Pb", "Bi", "Po", "At", "Rn", "Fr", "Ra", "Ac", "Th",
    "Pa", "U",  "Np", "Pu", "Am", "Cm", "Bk", "Cf", "Es", "Fm", "Md", "No", "Lr", "Rf", "Db",
    "Sg", "Bh", "Hs", "Mt", "Ds", "Rg", "Cn", "Nh", "Fl", "Mc", "Lv", "Ts", "Og"};

// What stands in the place of an element in queries and attachments.
constexpr std::string_view kNoElements[] = {"A", "Q", "*", "L", "LP", "R", "R#", "Du", "X"};

std::string_view Trim(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Columns [first, first + width) of a line, which may be shorter, trimmed.
std::string_view Columns(std::string_view line, std::size_t first, std::size_t width) {
  return first < line.size() ? Trim(line.substr(first, width)) : std::string_view();
}

// The number that the whole of `text` is.
template <class T>
bool Parse(std::string_view text, T& value) {
  const auto end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

bool ParseElement(std::string_view symbol, unsigned char& number) {
  if (symbol == "D" || symbol == "T") symbol = "H";
  const auto found = std::find(std::begin(kElements), std::end(kElements), symbol);
  number = 0;
  if (found != std::end(kElements))
    number = static_cast<unsigned char>(found - std::begin(kElements) + 1);
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
  const auto version = Columns(line_, 33, 6);
  if (version == "V3000") return Fail("a V3000 molecule; only V2000 is understood");
  if (!Parse(Columns(line_, 0, 3), atoms) || !Parse(Columns(line_, 3, 3), bonds) ||
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
    for (std::size_t column = 0; column < 30; column += 10) {
      float value;
      if (!Parse(Columns(line_, column, 10), value) || !std::isfinite(value))
        return Fail("no coordinate in columns " + std::to_string(column + 1) + " to " +
                    std::to_string(column + 10));
      molecule.coordinates.push_back(value);
    }
    const auto symbol = Columns(line_, 31, 3);
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
    if (!Parse(Columns(line_, 0, 3), first) || !Parse(Columns(line_, 3, 3), second) ||
        !Parse(Columns(line_, 6, 3), order))
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

#include "structure.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <qxsystem/util/qxstring.h>

using namespace QXSystem;

namespace {

constexpr Element kElements[] = {
    {"H", 1.008},   {"He", 4.0026}, {"Li", 6.94},   {"Be", 9.0122}, {"B", 10.81},   {"C", 12.011},
    {"N", 14.007},  {"O", 15.999},  {"F", 18.998},  {"Ne", 20.180}, {"Na", 22.990}, {"Mg", 24.305},
    {"Al", 26.982}, {"Si", 28.085}, {"P", 30.974},  {"S", 32.06},   {"Cl", 35.45},  {"Ar", 39.95},
    {"K", 39.098},  {"Ca", 40.078}, {"Sc", 44.956}, {"Ti", 47.867}, {"V", 50.942},  {"Cr", 51.996},
    {"Mn", 54.938}, {"Fe", 55.845}, {"Co", 58.933}, {"Ni", 58.693}, {"Cu", 63.546}, {"Zn", 65.38},
    {"Ga", 69.723}, {"Ge", 72.630}, {"As", 74.922}, {"Se", 78.971}, {"Br", 79.904}, {"Kr", 83.798},
    {"Rb", 85.468}, {"Sr", 87.62},  {"Y", 88.906},  {"Zr", 91.224}, {"Nb", 92.906}, {"Mo", 95.95},
    {"Tc", 97},     {"Ru", 101.07}, {"Rh", 102.91}, {"Pd", 106.42}, {"Ag", 107.87}, {"Cd", 112.41},
    {"In", 114.82}, {"Sn", 118.71}, {"Sb", 121.76}, {"Te", 127.60}, {"I", 126.90},  {"Xe", 131.29},
    {"Cs", 132.91}, {"Ba", 137.33}, {"La", 138.91}, {"Ce", 140.12}, {"Pr", 140.91}, {"Nd", 144.24},
    {"Pm", 145},    {"Sm", 150.36}, {"Eu", 151.96}, {"Gd", 157.25}, {"Tb", 158.93}, {"Dy", 162.50},
    {"Ho", 164.93}, {"Er", 167.26}, {"Tm", 168.93}, {"Yb", 173.05}, {"Lu", 174.97}, {"Hf", 178.49},
    {"Ta", 180.95}, {"W", 183.84},  {"Re", 186.21}, {"Os", 190.23}, {"Ir", 192.22}, {"Pt", 195.08},
    {"Au", 196.97}, {"Hg", 200.59}, {"Tl", 204.38}, {"Pb", 207.2},  {"Bi", 208.98}, {"Po", 209},
    {"At", 210},    {"Rn", 222},    {"Fr", 223},    {"Ra", 226},    {"Ac", 227},    {"Th", 232.04},
    {"Pa", 231.04}, {"U", 238.03},  {"Np", 237},    {"Pu", 244},    {"Am", 243},    {"Cm", 247},
    {"Bk", 247},    {"Cf", 251},    {"Es", 252},    {"Fm", 257},    {"Md", 258},    {"No", 259},
    {"Lr", 262},    {"Rf", 267},    {"Db", 268},    {"Sg", 269},    {"Bh", 270},    {"Hs", 269},
    {"Mt", 277},    {"Ds", 281},    {"Rg", 282},    {"Cn", 285},    {"Nh", 286},    {"Fl", 290},
    {"Mc", 290},    {"Lv", 293},    {"Ts", 294},    {"Og", 294}};
static_assert(std::size(kElements) == 118);

constexpr std::string_view kBlanks = " \t";

std::string_view Trim(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Columns `first` to `last`, counted from 1, of a line that may be shorter.
std::string_view Columns(std::string_view line, std::size_t first, std::size_t last) {
  return first <= line.size() ? Trim(line.substr(first - 1, last - first + 1)) : std::string_view();
}

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

const Element& GetElement(unsigned number) {
  return kElements[number - 1];
}

unsigned char GetAtomicNumber(std::string_view symbol) {
  const std::string text(symbol);
  if (QXStringEquals(text, "D") || QXStringEquals(text, "T")) return 1;
  const auto found =
      std::find_if(std::begin(kElements), std::end(kElements), [&text](const Element& element) {
        return QXStringEquals(text, std::string(element.symbol));
      });
  return found == std::end(kElements)
             ? 0
             : static_cast<unsigned char>(found - std::begin(kElements) + 1);
}

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
    if (QXStringToNumber(words[0], number) && number <= std::size(kElements))
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

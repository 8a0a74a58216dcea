// A small reader of SD files (V2000 molecules with data fields), enough for the
// example programs.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <qxsystem/platform/istream.h>

#include "text.h"

/// One molecule as it stands in the file.
struct SDMolecule {
  std::string title;
  std::vector<unsigned char> elements;  // atomic numbers; 0: a dummy or query atom
  std::vector<float> coordinates;       // x y z per atom, in Angstrom
  std::vector<int> bonds;               // first atom (from 0), second atom, order, per bond

  /// The data fields in file order. The lines of a value are joined by "\n".
  std::vector<std::pair<std::string, std::string>> fields;
};

/// Reads one molecule after another. Charges, stereo flags and the lines of the
/// properties block are passed over.
class SDReader {
public:
  /// Reads from `in`, which is borrowed.
  explicit SDReader(QXPlatform::qxistream& in) : in_(in) {}

  /// Replaces `molecule` by the next one. False at the end of the file and at
  /// the first fault, which `Error` then describes; reading ends there.
  bool Read(SDMolecule& molecule);

  /// Empty, or what was wrong, with the number of line and record.
  const std::string& Error() const { return error_; }

private:
  bool Line();
  bool Fail(const std::string& what);
  bool ReadAtoms(unsigned count, SDMolecule& molecule);
  bool ReadBonds(unsigned count, SDMolecule& molecule);
  bool PassProperties();
  bool ReadFields(SDMolecule& molecule);

  QXPlatform::qxistream& in_;
  std::string line_;
  unsigned long lineNumber_ = 0;  // of line_, from 1
  unsigned long record_ = 0;      // the molecule being read, from 1
  std::string error_;
};

/// Sets `value` to the number that the whole text of a data field is; false if it
/// is none. A text with leading zeros may be an identifier and is none.
template <class T>
bool SDNumber(const std::string& text, T& value) {
  const auto first = text.find_first_not_of('-');
  if (first == text.npos || text.find_first_of("0123456789.") != first) return false;
  if (text[first] == '0' && first + 1 < text.size() && text[first + 1] != '.') return false;
  return ParseNumber(text, value);
}

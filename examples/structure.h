// A small reader of structures, PDB and XYZ, enough for the example programs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <qxsystem/platform/istream.h>

/// One model of a structure.
struct Model {
  std::string title;                    // "model 3", or the comment of an XYZ file
  std::vector<unsigned char> elements;  // atomic numbers; 0: not known
  std::vector<double> coordinates;      // x y z per atom, in Angstrom
};

/// Reads one model after another. A file that begins with a number is XYZ, any
/// other PDB. Of that the ATOM records are taken; where an atom has alternative
/// locations, those of the first letter.
class StructureReader {
public:
  /// Reads from `in`, which is borrowed.
  explicit StructureReader(QXPlatform::qxistream& in) : in_(in) {}

  /// Replaces `model` by the next one, which has at least one atom. False at the
  /// end of the file and at the first fault, which `Error` then describes.
  bool Read(Model& model);

  /// Empty, or what was wrong, with the number of the line.
  const std::string& Error() const { return error_; }

private:
  bool Line();
  bool Fail(const std::string& what);
  bool ReadXyz(Model& model);
  bool ReadPdb(Model& model);
  bool AddAtom(std::string_view element, const std::string_view (&coordinates)[3], Model& model);

  QXPlatform::qxistream& in_;
  std::string line_;
  unsigned long lineNumber_ = 0;  // of line_, from 1
  enum { Unknown, Xyz, Pdb } format_ = Unknown;
  bool hasLine_ = false;  // line_ belongs to the next model
  std::string error_;
};

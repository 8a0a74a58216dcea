// What the example programs share: molecules as objects with named values, and
// the QXB files in which they lie behind a header.
#pragma once

#include <memory>
#include <string>

#include <qxsystem/core/base.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/qxb/qxbhand.h>
#include <qxsystem/qxb/qxheader.h>
#include <qxsystem/util/progressstream.h>

// Names of a molecule's values beside its data fields, which keep their own.
inline constexpr const char* kTitle = "Molecule.Title";
inline constexpr const char* kElements = "Molecule.Elements";
inline constexpr const char* kCoordinates = "Molecule.Coordinates";
inline constexpr const char* kBonds = "Molecule.Bonds";
inline constexpr const char* kOrigin = "Molecule.Origin";
inline constexpr const char* kAtomCount = "Molecule.AtomCount";
inline constexpr const char* kCentroid = "Molecule.Centroid";
inline constexpr const char* kRadiusOfGyration = "Molecule.RadiusOfGyration";

// Tags of records.
inline constexpr const char* kMolecule = "QXBasePOD";
inline constexpr const char* kHeader = "Header";

unsigned CountItems(const QXSystem::QXBase& object);

/// Prints program, version and command line of a header and of those that it has
/// as its history.
void PrintHistory(const QXSystem::QXHeader& header);

/// Teaches `handler` what every program here can read and write: molecules as
/// blocks of values, and headers. A header in a stream becomes a value of the
/// QXContainer that is read, with the name kHeader.
void InstallMolecules(QXSystem::QXBinaryIOHandler& handler);

/// Reads the molecules of a QXB file. What cannot be read ends the program.
class MoleculeReader {
public:
  /// `handler` and `tracer` are borrowed. The tracer is told how far the file is read.
  MoleculeReader(const std::string& name, const QXSystem::QXBinaryIOHandler& handler,
                 QXSystem::QXTracerBase& tracer = QXSystem::QXNoTracer);

  /// Replaces `object` by the next molecule, or by an object to which a record is
  /// attached that nobody here knows. False at the end of the file.
  bool Read(QXSystem::QXContainer& object);

  /// The header of the file, null if none was read. It stands in front of the
  /// molecules, so ask when the first one has been read.
  const QXSystem::QXHeader* Header() const { return header_.get(); }

private:
  const std::string name_;
  const QXSystem::QXBinaryIOHandler& handler_;
  QXSystem::qxprogressstream in_;
  unsigned record_ = 0;
  std::unique_ptr<QXSystem::QXHeader> header_;
};

/// Writes them. What cannot be written ends the program.
class MoleculeWriter {
public:
  MoleculeWriter(const std::string& name, const QXSystem::QXBinaryIOHandler& handler,
                 const QXSystem::QXHeader& header);

  /// Writes a molecule, or what is attached to the object in its place.
  void Write(const QXSystem::QXContainer& object);

  /// Writes a record that is none of ours.
  void WriteRecord(const std::string& tag, const std::string& payload);

  /// To be called at the end. `Discard` deletes the file.
  void Close();
  void Discard();

private:
  void Check(bool written) const;

  const std::string name_;
  const QXSystem::QXBinaryIOHandler& handler_;
  QXPlatform::qxofstream out_;
};

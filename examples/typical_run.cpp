// The main job of the library in one program: molecules of an SD file become
// objects with named values, go into a QXB file, are read again by a program
// that knows only part of what stands there, get more values and are written
// back, and nothing that the second program did not understand has changed.
//
//   typical_run FILE.sdf [DIRECTORY]
//
// writes molecules.qxb and annotated.qxb into DIRECTORY, by default the present
// one, and prints an account. Exit status 1 tells a fault, with its message.

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <qxsystem/core/base.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/qxb/qxb.h>
#include <qxsystem/qxb/qxbhand.h>
#include <qxsystem/qxb/qxbrfxn.h>
#include <qxsystem/qxb/qxbwfxn.h>

#include "sdf.h"

using namespace QXPlatform;
using namespace QXSystem;

// A value of our own type: where a molecule came from. Only a program that
// installs the two functors below can read and write it. The type has a name
// outside this file, since it is by that name that types are told apart.
struct Origin {
  std::string file;
  int record = 0;  // from 1
};

namespace {

// Names of a molecule's values beside its data fields, which keep their own.
constexpr const char* kTitle = "Molecule.Title";
constexpr const char* kElements = "Molecule.Elements";
constexpr const char* kCoordinates = "Molecule.Coordinates";
constexpr const char* kBonds = "Molecule.Bonds";
constexpr const char* kOrigin = "Molecule.Origin";
constexpr const char* kAtomCount = "Molecule.AtomCount";
constexpr const char* kCentroid = "Molecule.Centroid";
constexpr const char* kRadiusOfGyration = "Molecule.RadiusOfGyration";

// Tags of records.
constexpr const char* kMolecule = "QXBasePOD";
constexpr const char* kNotes = "ScreeningNotes";
constexpr const char* kOriginText = "Origin";        // "7 small.sdf"
constexpr const char* kOriginValue = "OriginValue";  // an Origin as a molecule's value

class OriginWriter : public QXWriteFxn<Origin> {
public:
  const char* GetTag() const override { return kOriginText; }
  const void* GetType() const override { return QXGetDataType<Origin>(); }
  OriginWriter* CreateCopy() const override { return new OriginWriter(*this); }

  bool operator()(qxostream& out, const Origin& origin,
                  const QXBinaryIOHandlerBase&) const override {
    const std::string text = std::to_string(origin.record) + ' ' + origin.file;
    return QXBWriteRecord(out, kOriginText, text.data(), text.size());
  }
};

class OriginReader : public QXReadFxn<Origin> {
public:
  const char* GetTag() const override { return kOriginText; }
  const void* GetType() const override { return QXGetDataType<Origin>(); }
  OriginReader* CreateCopy() const override { return new OriginReader(*this); }

  unsigned operator()(qxistream& in, Origin& origin, unsigned long length,
                      const QXBinaryIOHandlerBase&) const override {
    std::string text;
    if (in.read(text, length) != length) return QXBReturn::IncorrectSize;
    const char* const end = text.data() + text.size();
    const auto number = std::from_chars(text.data(), end, origin.record);
    if (number.ec != std::errc() || number.ptr == end) return QXBReturn::CheckFailed;
    origin.file.assign(number.ptr + 1, end);
    return QXBReturn::Success;
  }
};

// What every program here can read and write: molecules as blocks of values.
void InstallMolecules(QXBinaryIOHandler& handler) {
  handler.SetReadFxn(QXBasePODReadFxn<QXContainer>(), /*asDefault=*/false);
  handler.SetWriteFxn(QXBasePODWriteFxn(), /*asDefault=*/false);
}

void InstallOrigins(QXBinaryIOHandler& handler) {
  QXInstallGenericDataHandler<Origin>(handler, kOriginValue);
  handler.SetReadFxn(OriginReader(), /*asDefault=*/false);
  handler.SetWriteFxn(OriginWriter(), /*asDefault=*/false);
}

// Ends the program with a message and status 1.
[[noreturn]] void Fail(const std::string& what) {
  QXThrow.Fatal(what);
  std::abort();  // not reached
}

unsigned CountItems(const QXBase& object) {
  unsigned count = 0;
  for (QXIter<QXBaseData> item = object.GetDataIter(); item; ++item) ++count;
  return count;
}

struct Account {
  unsigned molecules = 0, atoms = 0, bonds = 0;
  unsigned intFields = 0, doubleFields = 0, textFields = 0;
  unsigned items = 0;  // of all molecules together
};

// The number that the whole of `text` is. A text with leading zeros may be an
// identifier and is none.
template <class T>
bool ParseNumber(const std::string& text, T& value) {
  const auto first = text.find_first_not_of('-');
  if (first == text.npos || text.find_first_of("0123456789.") != first) return false;
  if (text[first] == '0' && first + 1 < text.size() && text[first + 1] != '.') return false;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

void AddField(QXBase& object, const std::string& name, const std::string& text, Account& account) {
  int whole;
  double number;
  // Appended, not set: a name may occur more than once in a molecule.
  if (ParseNumber(text, whole)) {
    object.AddData<int>(name.c_str(), whole);
    ++account.intFields;
  } else if (ParseNumber(text, number)) {
    object.AddData<double>(name.c_str(), number);
    ++account.doubleFields;
  } else {
    object.AddData<std::string>(name.c_str(), text);
    ++account.textFields;
  }
}

// First program: SD file to QXB. It also writes a record of a kind that no
// other program here knows; its payload is returned.
std::string Convert(const std::string& sdName, const std::string& qxbName, Account& account) {
  qxifstream in(sdName);
  if (!in) Fail(sdName + ": cannot be read");
  qxofstream out(qxbName);
  if (!out) Fail(qxbName + ": cannot be written");

  QXBinaryIOHandler handler;
  InstallMolecules(handler);
  InstallOrigins(handler);

  std::string notes;  // every byte value, so that no byte is special
  for (int byte = 0; byte < 256; ++byte) notes += static_cast<char>(byte);

  SDReader reader(in);
  SDMolecule molecule;
  const std::string file = sdName.substr(sdName.rfind('/') + 1);
  while (reader.Read(molecule)) {
    ++account.molecules;
    account.atoms += static_cast<unsigned>(molecule.elements.size());
    account.bonds += static_cast<unsigned>(molecule.bonds.size() / 3);

    QXContainer object;
    object.SetData<std::string>(kTitle, molecule.title);
    object.SetData(kElements, molecule.elements);
    object.SetData(kCoordinates, molecule.coordinates);
    object.SetData(kBonds, molecule.bonds);
    object.SetData(kOrigin, Origin{file, static_cast<int>(account.molecules)});
    for (const auto& [name, text] : molecule.fields) AddField(object, name, text, account);
    account.items += CountItems(object);

    if (!QXBinaryWrite<QXBase>(out, object, handler)) Fail(qxbName + ": cannot be written");
    if (account.molecules == 1 && !QXBWriteRecord(out, kNotes, notes.data(), notes.size()))
      Fail(qxbName + ": cannot be written");
  }
  if (!reader.Error().empty() || account.molecules == 0) {
    out.close();
    std::remove(qxbName.c_str());
    Fail(sdName + ": " + (reader.Error().empty() ? "no molecules" : reader.Error()));
  }
  if (!out.close()) Fail(qxbName + ": cannot be written");
  return notes;
}

// Atom count, centroid and the root mean square distance from it.
void Describe(QXBase& object) {
  const auto& xyz = object.GetData<std::vector<float>>(kCoordinates);
  const std::size_t atoms = xyz.size() / 3;
  std::vector<double> centroid(3);
  double squares = 0;
  for (std::size_t i = 0; i < 3 * atoms; ++i) centroid[i % 3] += xyz[i];
  for (double& mean : centroid) mean /= atoms > 0 ? static_cast<double>(atoms) : 1;
  for (std::size_t i = 0; i < 3 * atoms; ++i)
    squares += (xyz[i] - centroid[i % 3]) * (xyz[i] - centroid[i % 3]);
  const double radius = atoms > 0 ? std::sqrt(squares / static_cast<double>(atoms)) : 0;

  object.SetData<int>(kAtomCount, static_cast<int>(atoms));
  object.SetData(kCentroid, centroid);
  object.SetData<double>(kRadiusOfGyration, radius);
}

// Writes back what came with `object` as records that nobody here can read.
bool WriteAttached(qxostream& out, const QXBase& object) {
  for (QXIter<QXBaseData> item = object.GetDataIter(QXUnknownQXBDataTagName()); item; ++item) {
    if (item->GetDataType() != QXGetDataType<QXUnknownQXBData>()) continue;
    const auto& kept = static_cast<const QXBaseDataT<QXUnknownQXBData>&>(*item).GetValue();
    if (!QXBWriteUnknown(out, kept)) return false;
  }
  return true;
}

// Second program: reads molecules, adds values and writes them back. It knows
// neither Origin nor the notes.
unsigned Annotate(const std::string& fromName, const std::string& toName) {
  qxifstream in(fromName);
  if (!in) Fail(fromName + ": cannot be read");
  qxofstream out(toName);
  if (!out) Fail(toName + ": cannot be written");

  QXBinaryIOHandler handler;
  InstallMolecules(handler);

  unsigned added = 0;
  for (unsigned record = 1; !in.eof(); ++record) {
    QXContainer object;
    const unsigned status = QXBinaryRead(in, object, handler);
    if (status != QXBReturn::Success)
      Fail(fromName + ": record " + std::to_string(record) + ": " + QXGetQXBReturnString(status));
    bool written;
    if (object.HasData(QXUnknownQXBDataTagName())) {
      written = WriteAttached(out, object);
    } else {
      const unsigned before = CountItems(object);
      Describe(object);
      added += CountItems(object) - before;
      written = QXBinaryWrite<QXBase>(out, object, handler);
    }
    if (!written) Fail(toName + ": cannot be written");
  }
  if (!out.close()) Fail(toName + ": cannot be written");
  return added;
}

// A record as it lies in a file.
struct Record {
  std::string tag, payload, bytes;
};

// The records of a file, by the primitives of the format alone.
std::vector<Record> ReadRecords(const std::string& name) {
  qxifstream file(name);
  std::string all;
  file.read(all);
  qxisstream in(all);
  std::vector<Record> records;
  while (!in.eof()) {
    const auto start = static_cast<std::size_t>(in.tell());
    char tag[QXBTagBufferSize];
    if (!QXBReadTag(in, tag)) Fail(name + ": damaged");
    Record record;
    const unsigned long length = QXBReadDataLength(in, QXBMaxLength);
    if (in.read(record.payload, length) != length) Fail(name + ": damaged");
    record.tag = tag;
    record.bytes = all.substr(start, static_cast<std::size_t>(in.tell()) - start);
    records.push_back(record);
  }
  return records;
}

std::size_t TotalBytes(const std::vector<Record>& records) {
  std::size_t sum = 0;
  for (const auto& record : records) sum += record.bytes.size();
  return sum;
}

// Third program: knows all kinds, and compares the two files.
void Compare(const std::string& sdName, const std::string& firstName, const std::string& secondName,
             const std::string& notes, const Account& account, unsigned added) {
  const auto first = ReadRecords(firstName), second = ReadRecords(secondName);
  QXBinaryIOHandler handler;
  InstallMolecules(handler);
  InstallOrigins(handler);

  bool intact = first.size() == second.size() && first.size() == account.molecules + 1;
  unsigned foreign = 0, origins = 0, items = 0;
  std::string example;  // the first molecule
  for (std::size_t i = 0; intact && i < first.size(); ++i) {
    const Record &before = first[i], &after = second[i];
    if (before.tag != kMolecule) {
      foreign += before.tag == kNotes && before.payload == notes && before.bytes == after.bytes;
      continue;
    }
    // New values stand behind the old ones. So the old block, items that the
    // second program could not read included, begins the new one.
    intact = after.tag == kMolecule && after.payload.size() > before.payload.size() &&
             after.payload.compare(0, before.payload.size(), before.payload) == 0;

    QXContainer object;
    qxisstream in(after.bytes);
    intact = intact && QXBinaryRead(in, object, handler) == QXBReturn::Success;
    items += CountItems(object);
    if (example.empty())
      example = "'" + object.GetData<std::string>(kTitle) +
                "': " + std::to_string(object.GetData<int>(kAtomCount)) +
                " atoms, radius of gyration " +
                std::to_string(object.GetData<double>(kRadiusOfGyration)) + " Angstrom";
    const auto& origin = object.GetData<Origin>(kOrigin);
    origins += origin.record == static_cast<int>(i + 1 - foreign) &&
               origin.file == sdName.substr(sdName.rfind('/') + 1);
  }
  if (!intact || foreign != 1 || origins != account.molecules || items != account.items + added)
    Fail("what was read and written back is not what was there");

  qxout << "records in:  " << first.size() << " (" << account.molecules
        << " molecules, 1 of a kind unknown to the reader), " << TotalBytes(first) << " bytes\n"
        << "records out: " << second.size() << ", " << TotalBytes(second) << " bytes\n"
        << "items in:    " << items - added << " (" << origins
        << " of a type unknown to the reader)\n"
        << "items added: " << added << " (atom count, centroid, radius of gyration)\n"
        << "items out:   " << items << "\n"
        << "added to the first molecule, " << example << "\n"
        << "came through byte for byte: the unknown record, and all items of every molecule\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    QXThrow.Warning("usage: typical_run FILE.sdf [DIRECTORY]");
    return 1;
  }
  const std::string sdName = argv[1];
  const std::string directory = argc == 3 ? argv[2] : ".";
  const std::string first = directory + "/molecules.qxb";
  const std::string second = directory + "/annotated.qxb";

  Account account;
  const std::string notes = Convert(sdName, first, account);
  qxout << account.molecules << " molecules with " << account.atoms << " atoms, " << account.bonds
        << " bonds, and data fields: " << account.intFields << " int, " << account.doubleFields
        << " double, " << account.textFields << " text\n";

  const unsigned added = Annotate(first, second);
  Compare(sdName, first, second, notes, account, added);
  return 0;
}

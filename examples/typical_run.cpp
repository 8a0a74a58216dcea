// The main job of the library in one program: molecules of an SD file become
// objects with named values and go into a QXB file; another run, which knows only
// part of what stands there, reads them, adds values and writes them back; and a
// third sees to it that nothing has changed that the second did not understand.
//
//   typical_run small.sdf molecules.qxb
//   typical_run molecules.qxb annotated.qxb
//   typical_run -task compare -in annotated.qxb -with molecules.qxb
//
// The command line comes from the text below. A header in every QXB file tells
// how it was made, and from what. Exit status 1 tells a fault, with its message.

#include <charconv>
#include <cmath>
#include <string>
#include <vector>

#include <qxsystem/core/base.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/files.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/systemnamespace.h>
#include <qxsystem/platform/file.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/qxb/qxb.h>
#include <qxsystem/qxb/qxbhand.h>
#include <qxsystem/qxb/qxbrfxn.h>
#include <qxsystem/qxb/qxbwfxn.h>
#include <qxsystem/util/progressstream.h>
#include <qxsystem/util/qxstring.h>

#include "molecules.h"
#include "program.h"
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

constexpr const char* kVersion = "1.0";

constexpr const char* kInterface = R"(
!BRIEF keeps molecules in QXB files and adds values to them
!PARAMETER -in 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF The molecules to read, an SD file or a QXB file
!END
!PARAMETER -out 2
  !TYPE string
  !KEYLESS 2
  !SIMPLE true
  !BRIEF The QXB file to write
!END
!PARAMETER -with 3
  !TYPE string
  !BRIEF For -task compare: the QXB file that -in was made from
!END
!PARAMETER -task 4
  !TYPE const
  !LEGAL_VALUE 0
  !LEGAL_VALUE auto
  !LEGAL_VALUE 1
  !LEGAL_VALUE convert
  !LEGAL_VALUE 2
  !LEGAL_VALUE annotate
  !LEGAL_VALUE 3
  !LEGAL_VALUE compare
  !DEFAULT auto
  !BRIEF What to do with the molecules
  !DETAIL
    convert   an SD file becomes a QXB file
    annotate  the molecules of a QXB file get values, see -add
    compare   two QXB files hold the same but for values that were added
    auto      annotate for a QXB file, convert for any other
!END
!PARAMETER -max 5
  !TYPE int
  !LEGAL_RANGE 1 inf
  !BRIEF Read so many molecules at most
!END
!PARAMETER -param 6
  !TYPE param_file
  !SIMPLE true
  !BRIEF A file with settings, one to a line
!END
!PARAMETER -settings 7
  !TYPE string
  !BRIEF Write the settings of this run to a file that -param can read
!END
!PARAMETER -comment 8
  !TYPE string
  !ALIAS -c
  !BRIEF A comment for the header of the file
!END
!PARAMETER -notes 9
  !TYPE bool
  !DEFAULT true
  !VISIBILITY hidden
  !BRIEF Let convert write a record of a kind that no reader knows
!END
!PARAMETER -status 10
  !TYPE string
  !BRIEF Keep a file that tells how far the program is
!END
!CATEGORY Conversion 1
  !BRIEF from SD files
  !PARAMETER -scale
    !TYPE double
    !DEFAULT 1.0
    !LEGAL_RANGE 0 inf
    !ILLEGAL_VALUE 0
    !BRIEF Angstrom for one unit of the file
  !END
!END
!CATEGORY Annotation 2
  !BRIEF of molecules
  !PARAMETER -add
    !TYPE string
    !LIST true
    !LEGAL_VALUE atoms
    !LEGAL_VALUE centroid
    !LEGAL_VALUE gyration
    !DEFAULT atoms
    !DEFAULT centroid
    !DEFAULT gyration
    !BRIEF The values to add
  !END
!END
)";

constexpr const char* kRequirements = R"(
!REQUIREMENT
  !OPTION -in -out !-task compare
  !OPTION -in -with -task compare
!ERROR_MSG
  Give -in and -out, or, for -task compare, -in and -with.
!END
)";

// By the numbers of the text above.
enum class Task : unsigned { Auto, Convert, Annotate, Compare };

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

void InstallOrigins(QXBinaryIOHandler& handler) {
  QXInstallGenericDataHandler<Origin>(handler, kOriginValue);
  handler.SetReadFxn(OriginReader(), /*asDefault=*/false);
  handler.SetWriteFxn(OriginWriter(), /*asDefault=*/false);
}

// One run of the program: its settings, and what its files' headers tell.
struct Run {
  const QXInterface& itf;
  int argc;
  char** argv;

  unsigned MaxMolecules() const { return static_cast<unsigned>(Setting(itf, "-max", 2147483647)); }

  QXHeader Header(const QXHeader* parent) const {
    return QXHeader(argc, argv, "typical_run", kVersion,
                    Setting<std::string>(itf, "-comment").c_str(), itf, parent);
  }
};

// ---- SD file to QXB ----

struct Account {
  unsigned molecules = 0, atoms = 0, bonds = 0;
  unsigned intFields = 0, doubleFields = 0, textFields = 0;
};

void AddField(QXBase& object, const std::string& name, const std::string& text, Account& account) {
  int whole;
  double number;
  // Appended, not set: a name may occur more than once in a molecule.
  if (SDNumber(text, whole)) {
    object.AddData<int>(name.c_str(), whole);
    ++account.intFields;
  } else if (SDNumber(text, number)) {
    object.AddData<double>(name.c_str(), number);
    ++account.doubleFields;
  } else {
    object.AddData<std::string>(name.c_str(), text);
    ++account.textFields;
  }
}

// A payload with every byte value, so that no byte is special.
std::string Notes() {
  std::string notes;
  for (int byte = 0; byte < 256; ++byte) notes += static_cast<char>(byte);
  return notes;
}

void Convert(const Run& run, const std::string& inName, const std::string& outName,
             QXTracerBase& tracer) {
  tracer.Push("Reading " + inName);
  qxprogressstream in(new qxifstream(inName), /*ownStream=*/true, &tracer, /*ownTracer=*/false);
  if (!in) Fail(inName + ": cannot be read");
  QXBinaryIOHandler handler;
  InstallMolecules(handler);
  InstallOrigins(handler);
  MoleculeWriter out(outName, handler, run.Header(/*parent=*/nullptr));

  const auto scale = static_cast<float>(Setting(run.itf, "-scale", 1.0));
  const bool notes = Setting(run.itf, "-notes", false);
  const std::string file = QXFileDetermineName(inName);
  Account account;
  SDReader reader(in);
  SDMolecule molecule;
  while (account.molecules < run.MaxMolecules() && reader.Read(molecule)) {
    ++account.molecules;
    account.atoms += static_cast<unsigned>(molecule.elements.size());
    account.bonds += static_cast<unsigned>(molecule.bonds.size() / 3);
    for (float& coordinate : molecule.coordinates) coordinate *= scale;

    QXContainer object;
    object.SetData<std::string>(kTitle, molecule.title);
    object.SetData(kElements, molecule.elements);
    object.SetData(kCoordinates, molecule.coordinates);
    object.SetData(kBonds, molecule.bonds);
    object.SetData(kOrigin, Origin{file, static_cast<int>(account.molecules)});
    for (const auto& [name, text] : molecule.fields) AddField(object, name, text, account);
    out.Write(object);
    if (account.molecules == 1 && notes) out.WriteRecord(kNotes, Notes());
  }
  if (!reader.Error().empty() || account.molecules == 0) {
    out.Discard();
    Fail(inName + ": " + (reader.Error().empty() ? "no molecules" : reader.Error()));
  }
  tracer.Pop();
  out.Close();
  qxout << account.molecules << " molecules with " << account.atoms << " atoms, " << account.bonds
        << " bonds, and data fields: " << account.intFields << " int, " << account.doubleFields
        << " double, " << account.textFields << " text\n";
}

// ---- Values for the molecules of a QXB file ----

// Atom count, centroid and the root mean square distance from it, as far as they
// are wanted.
void Describe(const Run& run, QXBase& object) {
  if (!object.HasData(kCoordinates)) return;
  const auto& xyz = object.GetData<std::vector<float>>(kCoordinates);
  const std::size_t atoms = xyz.size() / 3;
  std::vector<double> centroid(3);
  double squares = 0;
  for (std::size_t i = 0; i < 3 * atoms; ++i) centroid[i % 3] += xyz[i];
  for (double& mean : centroid) mean /= atoms > 0 ? static_cast<double>(atoms) : 1;
  for (std::size_t i = 0; i < 3 * atoms; ++i)
    squares += (xyz[i] - centroid[i % 3]) * (xyz[i] - centroid[i % 3]);
  const double radius = atoms > 0 ? std::sqrt(squares / static_cast<double>(atoms)) : 0;

  // QXGetSetting by number would go on into the defaults behind the values given.
  const auto* add = dynamic_cast<QXTypedParameter<std::string>*>(run.itf.GetParameter("-add"));
  for (QXIter<const std::string> wanted = add->GetSettings(); wanted; ++wanted) {
    if (QXStringEquals(*wanted, "atoms")) object.SetData<int>(kAtomCount, static_cast<int>(atoms));
    if (QXStringEquals(*wanted, "centroid")) object.SetData(kCentroid, centroid);
    if (QXStringEquals(*wanted, "gyration")) object.SetData<double>(kRadiusOfGyration, radius);
  }
}

// This one knows neither Origin nor the notes.
void Annotate(const Run& run, const std::string& inName, const std::string& outName,
              QXTracerBase& tracer) {
  tracer.Push("Adding values");
  QXBinaryIOHandler handler;
  InstallMolecules(handler);
  MoleculeReader in(inName, handler, tracer);
  QXContainer object;
  bool more = in.Read(object);
  const QXHeader header = run.Header(in.Header());
  MoleculeWriter out(outName, handler, header);

  unsigned molecules = 0, unread = 0, added = 0;
  for (; more && molecules < run.MaxMolecules(); more = in.Read(object)) {
    if (object.HasData(QXUnknownQXBDataTagName())) {
      ++unread;
    } else {
      ++molecules;
      const unsigned before = CountItems(object);
      Describe(run, object);
      added += CountItems(object) - before;
    }
    out.Write(object);
  }
  tracer.Pop();
  out.Close();
  qxout << molecules << " molecules got " << added
        << " values; records of unknown kind passed on: " << unread << "\n";
  PrintHistory(header);
}

// ---- What became of them ----

// A record as it lies in a file.
struct Record {
  std::string tag, payload, bytes;
};

// The records of a file behind its header, by the primitives of the format alone.
std::vector<Record> ReadRecords(const std::string& name) {
  const std::string all = ReadFile(name);
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
    if (record.tag != kHeader) records.push_back(record);
  }
  return records;
}

std::size_t TotalBytes(const std::vector<Record>& records) {
  std::size_t sum = 0;
  for (const auto& record : records) sum += record.bytes.size();
  return sum;
}

// This one knows all kinds. `firstName` is what Convert wrote.
void Compare(const std::string& firstName, const std::string& secondName) {
  const auto first = ReadRecords(firstName), second = ReadRecords(secondName);
  QXBinaryIOHandler handler;
  InstallMolecules(handler);
  InstallOrigins(handler);
  const auto read = [&handler](const Record& record) {
    QXContainer object;
    qxisstream in(record.bytes);
    if (QXBinaryRead(in, object, handler) != QXBReturn::Success) Fail("damaged " + record.tag);
    return object;
  };

  bool intact = first.size() == second.size();
  unsigned molecules = 0, foreign = 0, origins = 0, itemsIn = 0, itemsOut = 0;
  std::string example;  // the first molecule
  for (std::size_t i = 0; intact && i < first.size(); ++i) {
    const Record &before = first[i], &after = second[i];
    if (before.tag != kMolecule) {
      ++foreign;
      intact = before.bytes == after.bytes && (before.tag != kNotes || before.payload == Notes());
      continue;
    }
    // New values stand behind the old ones. So the old block, items that the
    // second program could not read included, begins the new one.
    intact = after.tag == kMolecule &&
             after.payload.compare(0, before.payload.size(), before.payload) == 0;
    if (!intact) break;

    const QXContainer object = read(after);
    itemsIn += CountItems(read(before));
    itemsOut += CountItems(object);
    origins += object.GetData<Origin>(kOrigin).record == static_cast<int>(++molecules);
    if (example.empty() && object.HasData(kRadiusOfGyration))
      example = "'" + object.GetData<std::string>(kTitle) + "': radius of gyration " +
                std::to_string(object.GetData<double>(kRadiusOfGyration)) + " Angstrom";
  }
  if (!intact || molecules == 0 || origins != molecules)
    Fail("what was read and written back is not what was there");

  qxout << "records in:  " << first.size() << " (" << molecules << " molecules, " << foreign
        << " of a kind unknown to the reader), " << TotalBytes(first) << " bytes\n"
        << "records out: " << second.size() << ", " << TotalBytes(second) << " bytes\n"
        << "items in:    " << itemsIn << " (" << origins << " of a type unknown to the reader)\n"
        << "items added: " << itemsOut - itemsIn << "\n";
  if (!example.empty()) qxout << "added to the first molecule, " << example << "\n";
  qxout << "came through byte for byte: the records of unknown kind, and all items of every "
           "molecule\n";
}

void WriteSettings(const QXInterface& itf, const std::string& name) {
  qxofstream out(name);
  if (!QXWriteSettings(itf, out, /*all=*/true, /*mode=*/"") || !out.close())
    Fail(name + ": cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
  QXInterface itf(kInterface);
  // Ends the program itself when something is wrong, or help was asked for.
  if (!QXParseCommandLine(itf, kVersion, argc, argv,
                          reinterpret_cast<const unsigned char*>(kRequirements),
                          QXErrorLevel::Error, /*checkHelp=*/true))
    return 1;

  const Run run = {itf, argc, argv};
  const auto in = Setting<std::string>(itf, "-in"), out = Setting<std::string>(itf, "-out");
  if (in == out) Fail("-in and -out name the same file");
  if (const auto name = Setting<std::string>(itf, "-settings"); !name.empty())
    WriteSettings(itf, name);

  auto task = static_cast<Task>(Setting<unsigned>(itf, "-task"));
  if (task == Task::Auto)
    task = QXFileExtension(in, /*skip=*/"") == "qxb" ? Task::Annotate : Task::Convert;
  Progress progress(Setting<std::string>(itf, "-status"));
  switch (task) {
    case Task::Auto:
    case Task::Convert:
      Convert(run, in, out, progress);
      break;
    case Task::Annotate:
      Annotate(run, in, out, progress);
      break;
    case Task::Compare:
      Compare(Setting<std::string>(itf, "-with"), in);
      break;
  }
  return 0;
}

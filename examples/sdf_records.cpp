// Molecules of an SD file as records: fields with types, metadata and nulls in the
// place of texts.
//
//   sdf_records small.sdf small.records
//   sdf_records -in small.sdf -out small.json -format json
//
// One molecule becomes one record. A data field of the file is an Int field if
// all its values are whole numbers, else a Float field if all are numbers, else a
// String field; a molecule without it has null there. The stream is then read back
// and shown as a table, and goes once through the other form, to see that both
// hold the same. Exit status 1 tells a fault, with its message.

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/platform/file.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/records/datarecord.h>
#include <qxsystem/records/recordio.h>
#include <qxsystem/util/qxnumber.h>
#include <qxsystem/util/qxtracerbase.h>

#include "molecules.h"
#include "program.h"
#include "sdf.h"

using namespace QXDataFlow;
using namespace QXPlatform;
using namespace QXSystem;

namespace {

constexpr const char* kVersion = "1.0";

constexpr const char* kInterface = R"(
!BRIEF turns the molecules of an SD file into a stream of records
!PARAMETER -in 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF The SD file to read
!END
!PARAMETER -out 2
  !TYPE string
  !KEYLESS 2
  !REQUIRED true
  !SIMPLE true
  !BRIEF The file for the records
!END
!PARAMETER -format 3
  !TYPE string
  !LEGAL_VALUE binary
  !LEGAL_VALUE json
  !DEFAULT binary
  !SIMPLE true
  !BRIEF The form of the records; of json a line holds one
!END
!PARAMETER -rows 4
  !TYPE int
  !DEFAULT 5
  !LEGAL_RANGE 0 inf
  !BRIEF Print so many records at most
!END
!PARAMETER -status 5
  !TYPE string
  !BRIEF Keep a file that tells how far the program is
!END
)";

constexpr const char* kText = "Molecule.Text";  // beside those of molecules.h

void TellProgress(QXTracerBase& tracer, qxistream& in) {
  const auto size = static_cast<double>(in.size());
  if (size > 0) tracer.SetProgress(100 * static_cast<double>(in.tell()) / size);
}

// ---- SD file to records ----

// A molecule, and its part of the file.
struct Entry {
  SDMolecule molecule;
  std::string text;
};

std::vector<Entry> ReadMolecules(const std::string& name, QXTracerBase& tracer) {
  tracer.Push("Reading " + name);
  const std::string all = ReadFile(name);
  qxisstream in(all);
  SDReader reader(in);
  std::vector<Entry> entries;
  std::size_t start = 0;
  SDMolecule molecule;
  while (reader.Read(molecule)) {
    const auto end = static_cast<std::size_t>(in.tell());
    entries.push_back({std::move(molecule), all.substr(start, end - start)});
    start = end;
    TellProgress(tracer, in);
  }
  tracer.Pop();
  if (!reader.Error().empty()) Fail(name + ": " + reader.Error());
  if (entries.empty()) Fail(name + ": no molecules");
  return entries;
}

// A data field of the file: what is known of it when all molecules are.
struct Column {
  std::string name;
  std::map<std::size_t, std::string> texts;  // by molecule; without those it lacks

  // Of whole numbers those that JSON keeps: it is read as 32 bits.
  std::string Type() const {
    if (texts.empty()) return "String";
    return AllAre<int>() ? "Int" : AllAre<double>() ? "Float" : "String";
  }

private:
  template <class T>
  bool AllAre() const {
    T value;
    return std::all_of(texts.begin(), texts.end(),
                       [&](const auto& row) { return SDNumber(row.second, value); });
  }
};

// In the order in which they first come. A name that a molecule has twice gives
// both lines; an empty value is none.
std::vector<Column> CollectColumns(const std::vector<Entry>& entries) {
  std::vector<Column> columns;
  std::map<std::string, std::size_t> places;
  for (std::size_t row = 0; row < entries.size(); ++row)
    for (const auto& [name, text] : entries[row].molecule.fields) {
      if (name == kTitle || name == kCoordinates || name == kText)
        Fail("a data field has the name '" + name + "', which is taken");
      const auto [place, isNew] = places.emplace(name, columns.size());
      if (isNew) columns.push_back({name, {}});
      if (text.empty()) continue;
      std::string& value = columns[place->second].texts[row];
      value += value.empty() ? text : "\n" + text;
    }
  return columns;
}

QXFieldMeta Meta(const std::string& description, const char* option = nullptr) {
  QXFieldMeta meta;
  meta.SetAttribute(QXMeta::GetValue("Annotation.Description"), description);
  if (option != nullptr) meta.SetOption(QXMeta::GetValue(option));
  return meta;
}

// Sets the value that `text` is, or null.
template <class T>
void Set(QXRecord& record, const QXFieldBase& base, const std::string* text) {
  const QXField<T> field(base.GetName(), base.GetMeta(), /*readonly=*/false, base.IsNullable());
  if (text == nullptr) {
    record.SetBytes(field, std::nullopt);
  } else if constexpr (std::is_same_v<T, std::string>) {
    record.SetValue(field, *text);
  } else {
    T value{};
    SDNumber(*text, value);
    record.SetValue(field, value);
  }
}

std::vector<QXRecord> MakeRecords(const std::vector<Entry>& entries, const std::string& file) {
  const std::vector<Column> columns = CollectColumns(entries);
  const std::string all = std::to_string(entries.size());
  std::vector<QXFieldBase> fields;
  fields.reserve(columns.size());
  for (const Column& column : columns)
    fields.push_back(MakeFieldBase(
        column.name, column.Type(),
        Meta("data field of " + std::to_string(column.texts.size()) + " of " + all + " molecules",
             "Flags.SDData"),
        /*readonly=*/false, /*nullable=*/true));
  const QXField<std::string> title(kTitle, Meta("first line of the molecule", "Flags.ID"));
  const QXVectorField<double> coordinates(kCoordinates,
                                          Meta("x, y and z of every atom", "Units.Length.Ang"));
  const QXField<QXBytes> text(kText, Meta("the molecule as it stands in the file"));

  std::vector<QXRecord> records(entries.size());
  for (std::size_t row = 0; row < entries.size(); ++row) {
    const Entry& entry = entries[row];
    QXRecord& record = records[row];
    record.SetSourceID(file + " " + std::to_string(row + 1));
    record.SetValue(title, entry.molecule.title);
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const auto value = columns[i].texts.find(row);
      const std::string* present = value != columns[i].texts.end() ? &value->second : nullptr;
      const std::string type = fields[i].GetTypeName();
      if (type == "Int")
        Set<long>(record, fields[i], present);
      else if (type == "Float")
        Set<double>(record, fields[i], present);
      else
        Set<std::string>(record, fields[i], present);
    }
    record.SetValue(coordinates, entry.molecule.coordinates);
    record.SetValue(text, QXBytes(entry.text.begin(), entry.text.end()));
  }
  return records;
}

// ---- Streams of records ----

bool Write(qxostream& out, const std::vector<QXRecord>& records, const std::string& format,
           QXTracerBase& tracer) {
  tracer.Push("Writing " + format);
  unsigned done = 0;
  for (const QXRecord& record : records) {
    if (!QXWriteRecord(out, record, format)) return false;
    tracer.SetProgress(++done, static_cast<unsigned>(records.size()));
  }
  tracer.Pop();
  return true;
}

std::vector<QXRecord> Read(qxistream& in, const std::string& format, QXTracerBase& tracer) {
  tracer.Push("Reading " + format);
  std::vector<QXRecord> records;
  while (!in.eof()) {
    if (!QXReadRecord(records.emplace_back(), in, format))
      Fail("record " + std::to_string(records.size()) + " cannot be read");
    TellProgress(tracer, in);
  }
  tracer.Pop();
  return records;
}

bool AreSame(const std::vector<QXRecord>& a, const std::vector<QXRecord>& b) {
  return std::equal(
      a.begin(), a.end(), b.begin(), b.end(),
      [](const QXRecord& x, const QXRecord& y) { return x.ToBytes() == y.ToBytes(); });
}

// ---- The table ----

std::string Cell(const QXRecord& record, const QXFieldBase& field) {
  const std::string& name = field.GetName();
  const std::string type = field.GetTypeName();
  if (record.IsNA(field)) return "-";
  if (type == "Int") return Types::Int.Format(record.GetValue(QXField<long>(name)));
  if (type == "String") return Types::String.Format(record.GetValue(QXField<std::string>(name)));
  if (type == "Blob")
    return std::to_string(record.GetValue(QXField<QXBytes>(name)).size()) + " bytes";
  if (type == "FloatVec")
    return std::to_string(record.GetValue(QXVectorField<double>(name)).size()) + " numbers";
  std::string text;
  QXNumberToString(record.GetValue(QXField<double>(name)), text, 'g', 6);
  return text;
}

// Cut to what a column holds, and to one line.
std::string Clip(std::string text) {
  constexpr std::size_t widest = 20;
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text.size() <= widest ? text : text.substr(0, widest - 2) + "..";
}

void PrintLines(std::vector<std::string>& lines) {
  for (std::string& line : lines) {
    qxout << line.substr(0, line.find_last_not_of(' ') + 1) << "\n";
    line.clear();
  }
  qxout << "\n";
}

// A line for each record and a column for each field, in parts that are as wide
// as a terminal.
void PrintTable(const std::vector<QXRecord>& records, std::size_t rows) {
  constexpr std::size_t lineWidth = 100;
  std::vector<std::string> lines(2 + std::min(rows, records.size()));
  for (const QXFieldBase& field : records[0].GetFields()) {
    std::vector<std::string> cells = {field.GetName(), field.GetTypeName()};
    for (std::size_t i = 2; i < lines.size(); ++i) cells.push_back(Cell(records[i - 2], field));
    std::size_t width = 0;
    for (std::string& cell : cells) width = std::max(width, (cell = Clip(cell)).size());
    if (lines[0].size() + width > lineWidth) PrintLines(lines);
    for (std::size_t i = 0; i < lines.size(); ++i)
      lines[i] += cells[i] + std::string(width + 2 - cells[i].size(), ' ');
  }
  PrintLines(lines);
}

}  // namespace

int main(int argc, char** argv) {
  QXInterface itf(kInterface);
  // Ends the program itself when something is wrong, or help was asked for.
  if (!QXParseCommandLine(itf, kVersion, argc, argv, /*requirements=*/nullptr, QXErrorLevel::Error,
                          /*checkHelp=*/true))
    return 1;
  const auto inName = Setting<std::string>(itf, "-in"), outName = Setting<std::string>(itf, "-out"),
             format = Setting<std::string>(itf, "-format");
  if (inName == outName) Fail("-in and -out name the same file");
  Progress progress(Setting<std::string>(itf, "-status"));

  const std::vector<QXRecord> made =
      MakeRecords(ReadMolecules(inName, progress), QXFileDetermineName(inName));
  qxofstream out(outName);
  if (!Write(out, made, format, progress) || !out.close()) Fail(outName + ": cannot be written");

  qxifstream in(outName);
  const long size = in.size();
  const std::vector<QXRecord> read = Read(in, format, progress);
  if (!AreSame(made, read)) Fail(outName + ": what is read is not what was written");
  PrintTable(read, static_cast<std::size_t>(Setting<int>(itf, "-rows")));

  const std::string otherFormat = format == "json" ? "binary" : "json";
  qxosstream other;
  const bool isWritten = Write(other, read, otherFormat, progress);
  qxisstream otherIn(other.str());
  if (!isWritten || !AreSame(read, Read(otherIn, otherFormat, progress)))
    Fail("the records are not the same as " + otherFormat);
  qxout << read.size() << " records, read back as they were written: " << size << " bytes of "
        << format << ", and again from " << other.str().size() << " bytes of " << otherFormat
        << "\n";
  return 0;
}

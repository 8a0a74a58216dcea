// A program whose settings are an object: takes molecules out of a QXB file, by
// their atoms and data fields, and parts out of the molecules.
//
//   options_run -minatoms 6 -has BoilingPoint -parts "title|fields" molecules.qxb few.qxb
//
// The command line is made from the options classes below. The settings in force
// go to standard output, as a file that -param can read, the account to standard
// error. Exit status 1 tells a fault, with its message.

#include <algorithm>
#include <string>
#include <vector>

#include <qxsystem/core/base.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_opts.h>
#include <qxsystem/interface/options.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/interface/systemnamespace.h>
#include <qxsystem/qxb/qxbhand.h>

#include "molecules.h"
#include "program.h"

using namespace QXSystem;

namespace {

// ---- Parts of a molecule, a set of flags with names ----

namespace Part {
constexpr unsigned Title = 1, Atoms = 2, Bonds = 4, Fields = 8;
}

const QXNamespaceInterface& Parts() {
  static const QXNamespaceInterface parts({{"title", Part::Title, ""},
                                           {"atoms", Part::Atoms, "elements and coordinates"},
                                           {"bonds", Part::Bonds, ""},
                                           {"fields", Part::Fields, "and all other values"},
                                           {"structure", Part::Atoms | Part::Bonds, ""}},
                                          QXNamespaceKind::Flags, "part");
  return parts;
}

unsigned PartOf(const std::string& item) {
  if (item == kTitle) return Part::Title;
  if (item == kElements || item == kCoordinates) return Part::Atoms;
  return item == kBonds ? Part::Bonds : Part::Fields;
}

// ---- The settings ----

enum class Order : unsigned { File, Title, Atoms };

// Which molecules are wanted. Could be part of other programs as well.
class SelectionOptions : public QXOptions {
public:
  SelectionOptions() : QXOptions("Selection") {
    SetBrief("of molecules");
    QXIntParameter least("-minatoms", 0), most("-maxatoms");
    least.AddLegalRange("0", "inf");
    least.SetBrief("The fewest atoms that a molecule may have");
    most.AddLegalRange("1", "inf");
    most.SetBrief("The most atoms that a molecule may have");
    QXStringParameter fields("-has");
    fields.SetIsList(true);
    fields.SetBrief("Data fields that a molecule must have");
    AddParameter(least);
    AddParameter(most);
    AddParameter(fields);
  }
  SelectionOptions* CreateCopy() const override { return new SelectionOptions(*this); }

  bool Validate() const override {
    int most;
    if (!QXGetSetting(*this, "-maxatoms", most) || GetMinAtoms() <= most) return true;
    QXThrow.Warning("-minatoms is above -maxatoms");
    return false;
  }

  int GetMinAtoms() const { return Setting<int>(*this, "-minatoms"); }

  bool Wants(const QXBase& molecule) const {
    const auto atoms =
        static_cast<int>(molecule.GetData<std::vector<unsigned char>>(kElements).size());
    if (atoms < GetMinAtoms() || atoms > Setting(*this, "-maxatoms", atoms)) return false;
    std::string field;
    for (unsigned i = 0; QXGetSetting(*this, "-has", field, i); ++i)
      if (!molecule.HasData(field.c_str())) return false;
    return true;
  }
};

class FilterOptions : public QXOptions {
public:
  FilterOptions() : QXOptions("options_run") {
    SetBrief("takes molecules out of a QXB file");
    AddFile("-in", 1, "The QXB file to read");
    AddFile("-out", 2, "The QXB file to write");
    QXParamFileParameter param("-param");
    param.SetVisibility(QXVisibility::Simple);
    param.SetBrief("A file with settings, one to a line");
    AddParameter(param);

    QXConstParameter order("-order", static_cast<unsigned>(Order::File), "file");
    order.AddLegalEntry(static_cast<unsigned>(Order::Title), "title");
    order.AddLegalEntry(static_cast<unsigned>(Order::Atoms), "atoms");
    order.SetBrief("What the molecules are ordered by");
    AddParameter(order);
    QXStringParameter parts("-parts", "title|structure|fields");
    parts.SetBrief("The parts of a molecule to keep");
    QXAddDetails(&parts, &Parts());
    AddParameter(parts);
    QXStringParameter status("-status");
    status.SetBrief("Keep a file that tells how far the program is");
    AddParameter(status);
    AddOption(SelectionOptions());
  }
  FilterOptions* CreateCopy() const override { return new FilterOptions(*this); }

  bool Validate() const override {
    return GetSelection().Validate() && Parts().IsValid(GetText("-parts"));
  }

  std::string GetText(const std::string& key) const { return Setting<std::string>(*this, key); }
  unsigned GetParts() const { return Parts().GetValue(GetText("-parts"), /*fallback=*/0); }
  Order GetOrder() const { return static_cast<Order>(Setting<unsigned>(*this, "-order")); }
  const SelectionOptions& GetSelection() const {
    return static_cast<const SelectionOptions&>(*GetOption("Selection"));
  }

private:
  void AddFile(const std::string& key, unsigned place, const std::string& brief) {
    QXStringParameter file(key);
    file.SetRequired(true);
    file.SetKeyless(place);
    file.SetOrderPriority(-1);
    file.SetVisibility(QXVisibility::Simple);
    file.SetBrief(brief);
    AddParameter(file);
  }
};

// ---- The job ----

QXContainer Keep(const QXContainer& molecule, unsigned parts) {
  QXContainer kept;
  for (QXIter<QXBaseData> item = molecule.GetDataIter(); item; ++item)
    if (parts & PartOf(QXGetTag(item->GetTag()))) kept.AddBaseData(&*item);
  return kept;
}

void Sort(std::vector<QXContainer>& molecules, Order order) {
  const auto before = [order](const QXContainer& a, const QXContainer& b) {
    const auto atoms = [](const QXContainer& molecule) {
      return molecule.GetData<std::vector<unsigned char>>(kElements).size();
    };
    if (order == Order::Atoms) return atoms(a) < atoms(b);
    return a.GetData<std::string>(kTitle) < b.GetData<std::string>(kTitle);
  };
  if (order != Order::File) std::stable_sort(molecules.begin(), molecules.end(), before);
}

}  // namespace

int main(int argc, char** argv) {
  FilterOptions options;
  if (const unsigned status = QXConfigureOpts(options, argc, argv, /*write=*/true))
    return status == QXOptsStatus::Help ? 0 : 1;
  if (!options.Validate()) return 1;

  QXBinaryIOHandler handler;
  InstallMolecules(handler);
  Progress progress(options.GetText("-status"));
  QXTracerBase& tracer = progress;
  tracer.Push("Choosing molecules");
  MoleculeReader in(options.GetText("-in"), handler, tracer);
  std::vector<QXContainer> molecules, unread;
  unsigned read = 0;
  for (QXContainer object; in.Read(object);) {
    if (object.HasData(QXUnknownQXBDataTagName())) {
      unread.push_back(object);  // a record of unknown kind, which is passed on
      continue;
    }
    ++read;
    if (options.GetSelection().Wants(object)) molecules.push_back(object);
  }
  tracer.Pop();
  Sort(molecules, options.GetOrder());

  // The header tells the settings in the form of an interface.
  QXInterface itf;
  QXConfigureItf(itf, options);
  MoleculeWriter out(options.GetText("-out"), handler,
                     QXHeader(argc, argv, "options_run", "1.0", /*comment=*/"", itf, in.Header()));
  for (const QXContainer& record : unread) out.Write(record);
  for (const QXContainer& molecule : molecules) out.Write(Keep(molecule, options.GetParts()));
  out.Close();
  QXThrow.Info("%zu of %u molecules written", molecules.size(), read);
  return 0;
}

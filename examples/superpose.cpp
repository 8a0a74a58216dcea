// Brings the models of one structure onto another as well as a rigid motion can,
// and tells what distance remains.
//
//   superpose reference.pdb models.pdb
//   superpose -weights mass -out moved.xyz reference.xyz models.pdb
//   superpose -transforms motions.records reference.pdb models.pdb

#include <cmath>
#include <string>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/core/errorimpl.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/numerics/qcprms.h>
#include <qxsystem/numerics/regrotation.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/records/datarecord.h>
#include <qxsystem/records/recordio.h>
#include <qxsystem/util/progressstream.h>
#include <qxsystem/util/qxstring.h>

#include "elements.h"
#include "program.h"
#include "structure.h"

using namespace QXPlatform;
using namespace QXSystem;

namespace {

constexpr const char* kInterface = R"(
!BRIEF brings the models of one structure onto another
!PARAMETER -ref 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF The structure that stays, PDB or XYZ; of several models the first
!END
!PARAMETER -fit 2
  !TYPE string
  !KEYLESS 2
  !REQUIRED true
  !SIMPLE true
  !BRIEF The structure whose models are moved
!END
!PARAMETER -out 3
  !TYPE string
  !SIMPLE true
  !BRIEF Write the moved models to this file, as XYZ
!END
!PARAMETER -weights 4
  !TYPE const
  !LEGAL_VALUE 0
  !LEGAL_VALUE none
  !LEGAL_VALUE 1
  !LEGAL_VALUE mass
  !DEFAULT none
  !BRIEF What an atom counts: all the same, or by the mass of its element
!END
!PARAMETER -transforms 5
  !TYPE string
  !BRIEF Write the motions to this file, as a stream of records
!END
!PARAMETER -status 6
  !TYPE string
  !BRIEF Keep a file that tells how far the program is
!END
)";

// Learns which way a superposition went: the library tells at low levels, that
// are not shown here, when it takes the slower one.
class RouteWatcher : public QXErrorHandlerStreamImpl {
public:
  void Msg(unsigned level, const std::string& text) override {
    if (text.find("Falling back to Jacobi") != text.npos) fellBack_ = true;
    if (level > QXErrorLevel::Verbose) QXErrorHandlerStreamImpl::Msg(level, text);
  }
  QXErrorHandlerImplBase* CreateCopy() const override { return new RouteWatcher(*this); }

  // The name of the route since the last call.
  const char* Take() {
    const char* const route = fellBack_ ? "Jacobi" : "polynomial";
    fellBack_ = false;
    return route;
  }

private:
  bool fellBack_ = false;
};

// The next model; false at the end of the file. Faults end the program.
bool ReadModel(StructureReader& reader, const std::string& name, Model& model) {
  if (reader.Read(model)) return true;
  if (!reader.Error().empty()) Fail(name + ": " + reader.Error());
  return false;
}

std::vector<double> Masses(const Model& model, const std::string& name) {
  std::vector<double> masses;
  for (const unsigned element : model.elements) {
    if (element == 0)
      Fail(name + ": the element of atom " + std::to_string(masses.size() + 1) + " is not known");
    masses.push_back(GetElement(element).mass);
  }
  return masses;
}

// The RMS distance of two models as they lie; null weighs all atoms the same.
double Distance(const Model& a, const Model& b, const double* weights) {
  double squares = 0, total = 0;
  for (std::size_t i = 0; i < a.elements.size(); ++i) {
    const double weight = weights ? weights[i] : 1;
    total += weight;
    for (std::size_t k = 3 * i; k < 3 * i + 3; ++k) {
      const double difference = a.coordinates[k] - b.coordinates[k];
      squares += weight * difference * difference;
    }
  }
  return std::sqrt(squares / total);
}

void AppendXyz(std::string& text, const Model& model, const std::string& comment) {
  text += std::to_string(model.elements.size()) + "\n" + comment + "\n";
  for (std::size_t i = 0; i < model.elements.size(); ++i) {
    const unsigned element = model.elements[i];
    const double* const p = &model.coordinates[3 * i];
    const std::string symbol = element == 0 ? "X" : std::string(GetElement(element).symbol);
    text += QXMakeString("%-2s %12.6f %12.6f %12.6f\n", symbol.c_str(), p[0], p[1], p[2]);
  }
}

// What became of a model, as records: row-major rotation R and translation t of
// the motion x -> R x + t.
void AppendRecord(qxostream& out, unsigned model, double before, double after,
                  const std::string& route, const double (&rot)[9], const double (&trans)[3]) {
  using namespace QXDataFlow;
  static const auto length = QXFieldMeta().SetOption(QXMeta::GetValue("Units.Length.Ang"));
  static const auto id = QXFieldMeta().SetOption(QXMeta::GetValue("Flags.ID"));
  QXRecord record;
  record.SetValue(QXField<long>("Model", id), static_cast<long>(model));
  record.SetValue(QXField<double>("RMS before", length), before);
  record.SetValue(QXField<double>("RMS after", length), after);
  record.SetValue(QXField<std::string>("Route"), route);
  record.SetValue(QXVectorField<double>("Rotation"), std::vector<double>(rot, rot + 9));
  record.SetValue(QXVectorField<double>("Translation", length),
                  std::vector<double>(trans, trans + 3));
  QXWriteRecord(out, record, "binary");
}

}  // namespace

int main(int argc, char** argv) {
  const QXInterface itf(kInterface, argc, argv);
  const auto refName = Setting<std::string>(itf, "-ref"),
             fitName = Setting<std::string>(itf, "-fit"),
             outName = Setting<std::string>(itf, "-out"),
             motionsName = Setting<std::string>(itf, "-transforms");
  const bool byMass = Setting<unsigned>(itf, "-weights") == 1;

  auto* const watcher = new RouteWatcher;
  QXThrow.SetHandlerImpl(watcher, /*owned=*/true);
  QXThrow.SetLevel(QXErrorLevel::Debug);

  Progress progress(Setting<std::string>(itf, "-status"));
  QXTracerBase& tracer = progress;
  tracer.Push("Superposing the models");
  qxifstream refFile(refName);
  qxprogressstream fitFile(new qxifstream(fitName), /*ownStream=*/true, &tracer,
                           /*ownTracer=*/false);
  if (!refFile) Fail(refName + ": cannot be read");
  if (!fitFile) Fail(fitName + ": cannot be read");
  StructureReader refReader(refFile), fitReader(fitFile);
  Model reference, model;
  if (!ReadModel(refReader, refName, reference)) Fail(refName + ": no atoms");
  const auto atoms = static_cast<unsigned>(reference.elements.size());
  const std::vector<double> masses = byMass ? Masses(reference, refName) : std::vector<double>();
  const double* const weights = byMass ? masses.data() : nullptr;

  // Nothing is written before all has been read.
  std::string table = "model  RMS before   RMS after  route\n", moved;
  qxosstream motions;
  unsigned count = 0;
  while (ReadModel(fitReader, fitName, model)) {
    ++count;
    if (model.elements.size() != atoms)
      Fail(QXMakeString("%s: model %u has %zu atoms, and %s has %u", fitName.c_str(), count,
                        model.elements.size(), refName.c_str(), atoms));
    if (model.elements != reference.elements)
      QXThrow.Warning("%s: the elements of model %u are not those of %s", fitName.c_str(), count,
                      refName.c_str());
    const double before = Distance(reference, model, weights);
    double rot[9], trans[3];
    const double after = QXMath::QXQCPRMSBetweenWeightedPoints(
        reference.coordinates.data(), model.coordinates.data(), weights, atoms, rot, trans);
    const std::string route = watcher->Take();
    table += QXMakeString("%5u  %10.4f  %10.4f  %s\n", count, before, after, route.c_str());
    AppendRecord(motions, count, before, after, route, rot, trans);
    QXMath::QXGeom3DRotate(model.coordinates.data(), rot, atoms);
    for (std::size_t i = 0; i < model.coordinates.size(); ++i) model.coordinates[i] += trans[i % 3];
    AppendXyz(moved, model, QXMakeString("model %u, RMS %.4f", count, after));
  }
  tracer.Pop();
  if (count == 0) Fail(fitName + ": no atoms");
  if (!outName.empty()) WriteFile(outName, moved.data(), moved.size());
  if (!motionsName.empty()) WriteFile(motionsName, motions.data(), motions.size());
  qxout << table;
}

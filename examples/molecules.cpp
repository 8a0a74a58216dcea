#include "molecules.h"

#include <cstdio>
#include <utility>

#include <qxsystem/core/error.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/qxb/qxbrfxn.h>
#include <qxsystem/qxb/qxbwfxn.h>

#include "program.h"

using namespace QXPlatform;
using namespace QXSystem;

unsigned CountItems(const QXBase& object) {
  unsigned count = 0;
  for (QXIter<QXBaseData> item = object.GetDataIter(); item; ++item) ++count;
  return count;
}

void PrintHistory(const QXHeader& header) {
  const auto print = [](const char* what, const QXHeader& h) {
    qxout << what << h.GetProgram() << " " << h.GetVersion() << ": " << h.GetCommandLine() << "\n";
  };
  print("made by ", header);
  for (QXIter<QXHeader> h = header.GetHistory(); h; ++h) print("  from ", *h);
}

namespace {

class HeaderWriter : public QXWriteFxn<QXHeader> {
public:
  const char* GetTag() const override { return kHeader; }
  const void* GetType() const override { return QXGetDataType<QXHeader>(); }
  HeaderWriter* CreateCopy() const override { return new HeaderWriter(*this); }

  bool operator()(qxostream& out, const QXHeader& header,
                  const QXBinaryIOHandlerBase& handler) const override {
    return QXBWriteQXBase(out, header, kHeader, handler);
  }
};

// Reads a header, or a header as the value of another object.
template <class T>
class HeaderReader : public QXReadFxn<T> {
public:
  const char* GetTag() const override { return kHeader; }
  const void* GetType() const override { return QXGetDataType<T>(); }
  HeaderReader* CreateCopy() const override { return new HeaderReader(*this); }

  unsigned operator()(qxistream& in, T& object, unsigned long length,
                      const QXBinaryIOHandlerBase& handler) const override {
    QXHeader header;
    const unsigned status = QXBReadQXBase(in, header, length, handler);
    if (status == QXBReturn::Success) Keep(object, std::move(header));
    return status;
  }

private:
  static void Keep(QXHeader& object, QXHeader header) { object = std::move(header); }
  static void Keep(QXContainer& object, QXHeader header) {
    object.SetData<QXHeader>(kHeader, std::move(header));
  }
};

}  // namespace

void InstallMolecules(QXBinaryIOHandler& handler) {
  handler.SetReadFxn(QXBasePODReadFxn<QXContainer>(), /*asDefault=*/false);
  handler.SetWriteFxn(QXBasePODWriteFxn(), /*asDefault=*/false);
  handler.SetReadFxn(HeaderReader<QXContainer>(), /*asDefault=*/false);
  handler.SetWriteFxn(HeaderWriter(), /*asDefault=*/false);
  // The headers inside a header.
  handler.SetReadFxn(HeaderReader<QXHeader>(), /*asDefault=*/false);
  QXInstallGenericDataHandler<QXHeader>(handler, "HeaderValue");
}

// ---- MoleculeReader ----

MoleculeReader::MoleculeReader(const std::string& name, const QXBinaryIOHandler& handler,
                               QXTracerBase& tracer)
    : name_(name),
      handler_(handler),
      in_(new qxifstream(name), /*ownStream=*/true, &tracer, /*ownTracer=*/false) {
  if (!in_) Fail(name_ + ": cannot be read");
}

bool MoleculeReader::Read(QXContainer& object) {
  while (!in_.eof()) {
    object.Clear();
    ++record_;
    if (const unsigned status = QXBinaryRead(in_, object, handler_))
      Fail(name_ + ": record " + std::to_string(record_) + ": " + QXGetQXBReturnString(status));
    if (!object.HasData(kHeader)) return true;
    header_ = std::make_unique<QXHeader>(object.GetData<QXHeader>(kHeader));
  }
  return false;
}

// ---- MoleculeWriter ----

MoleculeWriter::MoleculeWriter(const std::string& name, const QXBinaryIOHandler& handler,
                               const QXHeader& header)
    : name_(name), handler_(handler), out_(name) {
  Check(bool(out_) && QXBinaryWrite(out_, header, handler_));
}

// What came with an object as a record that nobody here can read is no part of
// its block of values.
void MoleculeWriter::Write(const QXContainer& object) {
  if (!object.HasData(QXUnknownQXBDataTagName()))
    return Check(QXBinaryWrite<QXBase>(out_, object, handler_));
  for (QXIter<QXBaseData> item = object.GetDataIter(QXUnknownQXBDataTagName()); item; ++item)
    if (item->Holds<QXUnknownQXBData>())
      Check(QXBWriteUnknown(out_, object.GetData<QXUnknownQXBData>(item->GetTag())));
}

void MoleculeWriter::WriteRecord(const std::string& tag, const std::string& payload) {
  Check(QXBWriteRecord(out_, tag, payload.data(), payload.size()));
}

void MoleculeWriter::Close() {
  Check(out_.close());
}

void MoleculeWriter::Discard() {
  out_.close();
  std::remove(name_.c_str());
}

void MoleculeWriter::Check(bool written) const {
  if (!written) Fail(name_ + ": cannot be written");
}

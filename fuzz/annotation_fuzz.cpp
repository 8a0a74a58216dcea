// Annotations: whatever a file says of colours and children, asking is safe, and
// what was read and has a stored form comes back from what is written.

#include <qxsystem/qxb/qxannotate.h>

#include "qxb_fuzz.h"

namespace {

unsigned CountItems(const QXBase& object) {
  unsigned count = 0;
  for (QXIter<QXBaseData> item = object.GetDataIter(); item; ++item) ++count;
  return count;
}

// Asks for everything, on all levels.
void Ask(const QXAnnotation& annotation) {
  REQUIRE(annotation.GetTitle() != nullptr);
  annotation.GetType();
  annotation.GetRenderHint();
  REQUIRE(annotation.GetColor().GetText(true).size() == 9);
  unsigned children = 0;
  for (QXIter<QXAnnotation> child = annotation.GetChildren(); child; ++child, ++children)
    Ask(*child);
  REQUIRE(children <= CountItems(annotation));
}

std::string WriteAnnotation(const QXAnnotation& annotation, const QXBinaryIOHandlerBase& handler) {
  return Written([&](qxostream& out) { return QXBinaryWrite(out, annotation, handler); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const QXBinaryIOHandler filled = [] {
    QXBinaryIOHandler handler;
    QXInitAnnotationHandlers(handler);
    return handler;
  }();
  const std::string bytes(data, data + size);
  QXAnnotation read;
  qxisstream in(bytes);
  while (!in.eof() && QXBinaryRead(in, read, filled) == QXBReturn::Success) {
  }
  Ask(read);

  // The second writing equals the first, unless that cannot be read to its end.
  QXAnnotation again;
  const std::string first = WriteAnnotation(read, filled);
  qxisstream written(first);
  if (first.compare(0, 5, "false") != 0 && !first.empty() &&
      QXBinaryRead(written, again, filled) == QXBReturn::Success)
    REQUIRE(WriteAnnotation(again, filled) == first);

  read.AddChild(again);
  Ask(read);
  return 0;
}

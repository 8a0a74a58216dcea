#include <qxsystem/qxb/qxannotate.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qxsystem/core/base_private.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/qxb/qxbrfxn.h>

namespace QXSystem {

template class QXBaseDataT<QXAnnotation>;

QXAnnotation::QXAnnotation() = default;
QXAnnotation::QXAnnotation(unsigned int type, const char* title) {
  SetType(type);
  SetTitle(title);
  SetColor(QXWhite);
}
QXAnnotation::QXAnnotation(const QXAnnotation& other) = default;
QXAnnotation::QXAnnotation(QXAnnotation&& other) noexcept = default;
QXAnnotation& QXAnnotation::operator=(const QXAnnotation& other) = default;
QXAnnotation& QXAnnotation::operator=(QXAnnotation&& other) noexcept = default;
QXAnnotation::~QXAnnotation() = default;

const void* QXAnnotation::GetDataType() const {
  return QXGetDataType<QXAnnotation>();
}
bool QXAnnotation::IsDataType(const void* id) const {
  return id == QXGetDataType<QXAnnotation>() || QXBase::IsDataType(id);
}
QXAnnotation* QXAnnotation::CreateCopy() const {
  return new QXAnnotation(*this);
}

// The items are int and char because these have a stored form.

unsigned int QXAnnotation::GetType() const {
  return static_cast<unsigned>(GetData<int>("type"));
}
QXAnnotation& QXAnnotation::SetType(unsigned int type) {
  SetData<int>("type", static_cast<int>(type));
  return *this;
}

unsigned int QXAnnotation::GetRenderHint() const {
  return static_cast<unsigned>(GetData<int>("render"));
}
QXAnnotation& QXAnnotation::SetRenderHint(unsigned int hint) {
  SetData<int>("render", static_cast<int>(hint));
  return *this;
}

const char* QXAnnotation::GetTitle() const {
  return GetData<std::string>("title").c_str();
}
QXAnnotation& QXAnnotation::SetTitle(const char* title) {
  if (title)
    SetData<std::string>("title", title);
  else
    DeleteData("title");
  return *this;
}

QXColor QXAnnotation::GetColor() const {
  constexpr const char* name = "color";
  const char* rgba = GetData<char*>(name);
  if (!rgba || QXBaseAccess::FindData(*this, QXGetTag(name))->GetSize() < 4) return QXWhite;
  return QXColor(reinterpret_cast<const unsigned char*>(rgba));
}
QXAnnotation& QXAnnotation::SetColor(const QXColor& color) {
  SetData<char>("color", reinterpret_cast<const char*>(color.GetRGBA()), 4);
  return *this;
}

// What a file says is no reason to look for more children than there are items.
unsigned QXAnnotation::CountChildren() const {
  const std::vector<QXBaseData*>* items = QXBaseAccess::Items(*this);
  const std::size_t held = items ? items->size() : 0;
  const int said = std::max(GetData<int>("children"), 0);
  return static_cast<unsigned>(std::min<std::size_t>(held, static_cast<unsigned>(said)));
}

QXAnnotation& QXAnnotation::AddChild(const QXAnnotation& child) {
  const unsigned n = CountChildren();
  AddData<QXAnnotation>(QXGetTag(std::to_string(n)), child);
  SetData<int>("children", static_cast<int>(n + 1));
  return *this;
}

QXIterBase<QXAnnotation>* QXAnnotation::GetChildren() const {
  auto children = std::make_unique<std::vector<QXAnnotation>>(CountChildren());
  for (std::size_t i = 0; i < children->size(); ++i)
    if (const std::string name = std::to_string(i); QXHasTag(name))
      (*children)[i] = GetData<QXAnnotation>(QXGetTag(name));
  return new QXCacheIter<QXAnnotation>(children.release(), /*owned=*/true);
}

namespace {

// An annotation in the making. Items stand in the order in which they are set.
class Shape {
public:
  Shape(unsigned type, const char* title) : made_(type, title) {}

  Shape& Points(const char* name, const float* points, unsigned n = 1) {
    made_.SetData<float>(name, points, 3 * n);
    return *this;
  }
  template <class T>
  Shape& Value(const char* name, const T& value) {
    made_.SetData<T>(name, value);
    return *this;
  }
  operator QXAnnotation() { return std::move(made_); }

private:
  QXAnnotation made_;
};

}  // namespace

QXAnnotation QXAnnotateSphere(const char* title, const float* a, float r, const float* hemi) {
  Shape sphere(QXAnnotationType::Sphere, title);
  sphere.Points("a", a).Value("r", r);
  return hemi ? sphere.Points("hemi", hemi) : sphere;
}

QXAnnotation QXAnnotateEllipsoid(const char* title, const float* center, float a, float b, float c,
                                 const float* d1, const float* d2, const float* d3) {
  return Shape(QXAnnotationType::Ellipsoid, title)
      .Points("center", center)
      .Value("a", a)
      .Value("b", b)
      .Value("c", c)
      .Points("d1", d1)
      .Points("d2", d2)
      .Points("d3", d3);
}

QXAnnotation QXAnnotateBox(const char* title, const float* a, const float* e) {
  return Shape(QXAnnotationType::Box, title).Points("a", a).Points("e", e);
}

QXAnnotation QXAnnotateCylinder(const char* title, const float* a, const float* b, float r1,
                                float r2) {
  return Shape(QXAnnotationType::Cylinder, title)
      .Points("a", a)
      .Points("b", b)
      .Value("r1", r1)
      .Value("r2", r2);
}

QXAnnotation QXAnnotateArrow(const char* title, const float* a, const float* b, float p, float r1,
                             float r2, float r3) {
  return Shape(QXAnnotationType::Arrow, title)
      .Points("a", a)
      .Points("b", b)
      .Value("p", p)
      .Value("r1", r1)
      .Value("r2", r2)
      .Value("r3", r3);
}

QXAnnotation QXAnnotateLine(const char* title, const float* a, const float* b) {
  return Shape(QXAnnotationType::Line, title).Points("a", a).Points("b", b);
}

QXAnnotation QXAnnotateSpline(const char* title, const float* c, unsigned int n, unsigned int sr) {
  return Shape(QXAnnotationType::Spline, title).Points("c", c, n).Value("n", n).Value("sr", sr);
}

QXAnnotation QXAnnotateSplineSurface(const char* title, const float* c, unsigned int n,
                                     unsigned int sr, int sgr, int xr, float w, float t, int st,
                                     int s) {
  return Shape(QXAnnotationType::SplineSurface, title)
      .Points("c", c, n)
      .Value("n", n)
      .Value("sr", sr)
      .Value("sgr", sgr)
      .Value("xr", xr)
      .Value("w", w)
      .Value("t", t)
      .Value("st", st)
      .Value("s", s);
}

QXAnnotation QXAnnotateTorus(const char* title, const float* a, float r1, float r2,
                             const float* d) {
  return Shape(QXAnnotationType::Torus, title)
      .Points("a", a)
      .Value("r1", r1)
      .Value("r2", r2)
      .Points("d", d);
}

QXAnnotation QXAnnotateText(const char* title, const float* a, const char* text) {
  return Shape(QXAnnotationType::Text, title)
      .Points("a", a)
      .Value("t", std::string(text ? text : ""))
      .Value("f", false)
      .Value("s", 1.0F)
      .Value("z", 1.5F);
}

QXAnnotation QXAnnotateSymbol(const char* title, const float* a, const char* name) {
  return Shape(QXAnnotationType::Symbol, title).Points("a", a).Value("t", name);
}

const char* QXAnnotationPODWriteFxn::GetTag() const {
  return "QXBasePOD";
}
const void* QXAnnotationPODWriteFxn::GetType() const {
  return QXGetDataType<QXAnnotation>();
}
QXAnnotationPODWriteFxn* QXAnnotationPODWriteFxn::CreateCopy() const {
  return new QXAnnotationPODWriteFxn(*this);
}
bool QXAnnotationPODWriteFxn::operator()(qxostream& out, const QXAnnotation& annotation,
                                         const QXBinaryIOHandlerBase& handler) const {
  return QXBWriteQXBase(out, annotation, GetTag(), handler);
}

bool QXInitAnnotationHandlers(QXBinaryIOHandlerBase& handler) {
  constexpr const char* group = "QXAnnotation";
  handler.SetReadFxn(QXGroupReadFxn<QXAnnotation, QXAnnotation>(group), /*asDefault=*/false);
  handler.SetReadFxn(QXBasePODReadFxn<QXAnnotation>(), /*asDefault=*/false);
  handler.SetWriteFxn(QXCollectWriteFxn<QXAnnotation>(group, /*compress=*/false, "gz",
                                                      {new QXAnnotationPODWriteFxn}),
                      /*asDefault=*/false);
  QXInstallGenericDataHandler<QXAnnotation>(handler, "QXBaseQXAnnotation");
  return true;
}

}  // namespace QXSystem

#include <qxsystem/qxb/qxannotate.h>

#include <algorithm>
#include <memory>
#include <string>
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

void SetPoint(QXAnnotation& annotation, const char* name, const float* point) {
  annotation.SetData<float>(name, point, 3);
}

}  // namespace

QXAnnotation QXAnnotateSphere(const char* title, const float* a, float r, const float* hemi) {
  QXAnnotation sphere(QXAnnotationType::Sphere, title);
  SetPoint(sphere, "a", a);
  sphere.SetData<float>("r", r);
  if (hemi) SetPoint(sphere, "hemi", hemi);
  return sphere;
}

QXAnnotation QXAnnotateEllipsoid(const char* title, const float* center, float a, float b, float c,
                                 const float* d1, const float* d2, const float* d3) {
  QXAnnotation ellipsoid(QXAnnotationType::Ellipsoid, title);
  SetPoint(ellipsoid, "center", center);
  ellipsoid.SetData<float>("a", a);
  ellipsoid.SetData<float>("b", b);
  ellipsoid.SetData<float>("c", c);
  SetPoint(ellipsoid, "d1", d1);
  SetPoint(ellipsoid, "d2", d2);
  SetPoint(ellipsoid, "d3", d3);
  return ellipsoid;
}

QXAnnotation QXAnnotateBox(const char* title, const float* a, const float* e) {
  QXAnnotation box(QXAnnotationType::Box, title);
  SetPoint(box, "a", a);
  SetPoint(box, "e", e);
  return box;
}

QXAnnotation QXAnnotateCylinder(const char* title, const float* a, const float* b, float r1,
                                float r2) {
  QXAnnotation cylinder(QXAnnotationType::Cylinder, title);
  SetPoint(cylinder, "a", a);
  SetPoint(cylinder, "b", b);
  cylinder.SetData<float>("r1", r1);
  cylinder.SetData<float>("r2", r2);
  return cylinder;
}

QXAnnotation QXAnnotateArrow(const char* title, const float* a, const float* b, float p, float r1,
                             float r2, float r3) {
  QXAnnotation arrow(QXAnnotationType::Arrow, title);
  SetPoint(arrow, "a", a);
  SetPoint(arrow, "b", b);
  arrow.SetData<float>("p", p);
  arrow.SetData<float>("r1", r1);
  arrow.SetData<float>("r2", r2);
  arrow.SetData<float>("r3", r3);
  return arrow;
}

QXAnnotation QXAnnotateLine(const char* title, const float* a, const float* b) {
  QXAnnotation line(QXAnnotationType::Line, title);
  SetPoint(line, "a", a);
  SetPoint(line, "b", b);
  return line;
}

QXAnnotation QXAnnotateSpline(const char* title, const float* c, unsigned int n, unsigned int sr) {
  QXAnnotation spline(QXAnnotationType::Spline, title);
  spline.SetData<float>("c", c, 3 * n);
  spline.SetData<unsigned int>("n", n);
  spline.SetData<unsigned int>("sr", sr);
  return spline;
}

QXAnnotation QXAnnotateSplineSurface(const char* title, const float* c, unsigned int n,
                                     unsigned int sr, int sgr, int xr, float w, float t, int st,
                                     int s) {
  QXAnnotation surface(QXAnnotationType::SplineSurface, title);
  surface.SetData<float>("c", c, 3 * n);
  surface.SetData<unsigned int>("n", n);
  surface.SetData<unsigned int>("sr", sr);
  surface.SetData<int>("sgr", sgr);
  surface.SetData<int>("xr", xr);
  surface.SetData<float>("w", w);
  surface.SetData<float>("t", t);
  surface.SetData<int>("st", st);
  surface.SetData<int>("s", s);
  return surface;
}

QXAnnotation QXAnnotateTorus(const char* title, const float* a, float r1, float r2,
                             const float* d) {
  QXAnnotation torus(QXAnnotationType::Torus, title);
  SetPoint(torus, "a", a);
  torus.SetData<float>("r1", r1);
  torus.SetData<float>("r2", r2);
  SetPoint(torus, "d", d);
  return torus;
}

QXAnnotation QXAnnotateText(const char* title, const float* a, const char* text) {
  QXAnnotation annotation(QXAnnotationType::Text, title);
  SetPoint(annotation, "a", a);
  annotation.SetData<std::string>("t", text ? text : "");
  annotation.SetData<bool>("f", false);
  annotation.SetData<float>("s", 1.0F);
  annotation.SetData<float>("z", 1.5F);
  return annotation;
}

QXAnnotation QXAnnotateSymbol(const char* title, const float* a, const char* name) {
  QXAnnotation symbol(QXAnnotationType::Symbol, title);
  SetPoint(symbol, "a", a);
  symbol.SetData<const char*>("t", name);
  return symbol;
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

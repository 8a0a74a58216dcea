// Annotations: small drawables attached to data, and how they are stored.
//
// An annotation is generic data with a few names that all agree on:
//
//     type, render   int        the shape; how to draw it, for the program to say
//     title          text
//     color          char[4]    red, green, blue, alpha
//     children       int        the number of annotations below this one,
//     0, 1, ...                 and these
//
// and what its shape needs. It is stored as a record "QXAnnotation" that holds
// its data block. Unsigned numbers and texts that are mere pointers have no form
// in such a block: of a spline "n" and "sr", and of a symbol "t", do not reach
// a file unless functors for them are registered.
#pragma once

#include <qxsystem/colour/color.h>
#include <qxsystem/core/base.h>
#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/qxb/qxbhand.h>
#include <qxsystem/qxb/qxbwfxn.h>

namespace QXSystem {

/// The shapes.
namespace QXAnnotationType {
constexpr unsigned Sphere = 1;
constexpr unsigned Ellipsoid = 2;
constexpr unsigned Box = 3;
constexpr unsigned Cylinder = 4;
constexpr unsigned Arrow = 5;
constexpr unsigned Line = 6;
constexpr unsigned Spline = 8;  // 7 is no shape that is made here
constexpr unsigned SplineSurface = 9;
constexpr unsigned Torus = 10;
constexpr unsigned Text = 11;
constexpr unsigned Symbol = 12;
}  // namespace QXAnnotationType

/// A drawable: a shape in space with a title, a colour and children.
///
/// The getters give what is stored, also where that comes from a file and makes
/// no sense; an item of another type than told above is reported as a warning
/// and counts as missing. Setters return the object.
class QXSYSTEM_API QXAnnotation : public QXBase {
public:
  /// Without type, title or any other item.
  QXAnnotation();

  /// White. A null title is none.
  QXAnnotation(unsigned int type, const char* title);

  QXAnnotation(const QXAnnotation& other);
  QXAnnotation(QXAnnotation&& other) noexcept;
  QXAnnotation& operator=(const QXAnnotation& other);
  QXAnnotation& operator=(QXAnnotation&& other) noexcept;
  ~QXAnnotation() override;

  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;
  QXAnnotation* CreateCopy() const override;

  /// One of QXAnnotationType; 0 if missing.
  unsigned int GetType() const;
  QXAnnotation& SetType(unsigned int type);

  /// 0 if missing.
  unsigned int GetRenderHint() const;
  QXAnnotation& SetRenderHint(unsigned int hint);

  /// "" if missing, never null; valid until the title changes. A null title
  /// deletes it.
  const char* GetTitle() const;
  QXAnnotation& SetTitle(const char* title);

  /// White if missing or less than four bytes.
  QXColor GetColor() const;
  QXAnnotation& SetColor(const QXColor& color);

  /// Appends a copy of `child`.
  QXAnnotation& AddChild(const QXAnnotation& child);

  /// Copies of the children, in order, with an empty annotation in the place of
  /// one that is missing. There are never more than this object has items,
  /// whatever it says. The caller owns the cursor.
  QXIterBase<QXAnnotation>* GetChildren() const;

private:
  unsigned CountChildren() const;
};

extern template class QXBaseDataT<QXAnnotation>;

// The shapes, white and with a title. What is given is stored under the name of
// its argument; how a shape is drawn from that is for the program that draws.
// Points and directions are three coordinates each, of which copies are kept;
// null stands for three zeros.

/// Without `hemi`, which may be null, there is no such item.
QXSYSTEM_API QXAnnotation QXAnnotateSphere(const char* title, const float* a, float r,
                                           const float* hemi);

/// The radii `a`, `b`, `c` in the directions `d1`, `d2`, `d3`.
QXSYSTEM_API QXAnnotation QXAnnotateEllipsoid(const char* title, const float* center, float a,
                                              float b, float c, const float* d1, const float* d2,
                                              const float* d3);
QXSYSTEM_API QXAnnotation QXAnnotateBox(const char* title, const float* a, const float* e);
QXSYSTEM_API QXAnnotation QXAnnotateCylinder(const char* title, const float* a, const float* b,
                                             float r1, float r2);
QXSYSTEM_API QXAnnotation QXAnnotateArrow(const char* title, const float* a, const float* b,
                                          float p, float r1, float r2, float r3);
QXSYSTEM_API QXAnnotation QXAnnotateLine(const char* title, const float* a, const float* b);

/// `c` holds `n` points.
QXSYSTEM_API QXAnnotation QXAnnotateSpline(const char* title, const float* c, unsigned int n,
                                           unsigned int sr);
QXSYSTEM_API QXAnnotation QXAnnotateSplineSurface(const char* title, const float* c, unsigned int n,
                                                  unsigned int sr, int sgr, int xr, float w,
                                                  float t, int st, int s);
QXSYSTEM_API QXAnnotation QXAnnotateTorus(const char* title, const float* a, float r1, float r2,
                                          const float* d);

/// `text` is kept as "t", null as an empty one; "f", "s" and "z" are false, 1
/// and 1.5.
QXSYSTEM_API QXAnnotation QXAnnotateText(const char* title, const float* a, const char* text);

/// Of `name`, kept as "t", only the pointer is kept: the text must outlive the
/// annotation and all its copies.
QXSYSTEM_API QXAnnotation QXAnnotateSymbol(const char* title, const float* a, const char* name);

/// Writes the data of an annotation as a "QXBasePOD" record.
class QXSYSTEM_API QXAnnotationPODWriteFxn : public QXWriteFxn<QXAnnotation> {
public:
  const char* GetTag() const override;
  const void* GetType() const override;
  QXAnnotationPODWriteFxn* CreateCopy() const override;
  bool operator()(qxostream& out, const QXAnnotation& annotation,
                  const QXBinaryIOHandlerBase& handler) const override;
};

/// Makes annotations something that `handler` reads and writes, as records and
/// as values inside other objects. True; a QXRegisterQXBInitializer takes it.
QXSYSTEM_API bool QXInitAnnotationHandlers(QXBinaryIOHandlerBase& handler);

}  // namespace QXSystem

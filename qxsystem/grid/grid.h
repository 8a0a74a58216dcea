// Grids: regular cubic lattices of values in space.
//
// A grid has dimensions, a centre, one spacing for all axes, and a title. The
// value of the point (i, j, k) stands at
//
//     i + xdim * (j + ydim * k)
//
// in its array: x runs fastest. The box of a grid reaches half a spacing beyond
// its outermost points, which thus lie at min + (i + 0.5) * spacing.
//
// Setters answer false, and leave everything as it was, where they cannot do
// what they are asked to.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <qxsystem/core/base.h>
#include <qxsystem/core/export.h>

namespace QXSystem {

/// What every grid can be asked and told. The order of the virtual operations
/// is part of the interface.
class QXSYSTEM_API QXGridAbstractBase : public QXBase {
public:
  ~QXGridAbstractBase() override;

  /// Removes the data of the QXBase.
  void Clear() override;
  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;
  QXGridAbstractBase* CreateCopy() const override = 0;

  virtual const std::string& GetTitle() const = 0;
  virtual bool SetTitle(const std::string& title) = 0;

  /// The distance between neighbouring points, and whether somebody set it.
  virtual float GetSpacing() const = 0;
  virtual bool IsSpacingSet() const = 0;

  /// The number of points.
  virtual unsigned int GetSize() const = 0;

  /// Points along the axes.
  virtual void GetDim(unsigned int& x, unsigned int& y, unsigned int& z) const = 0;
  virtual unsigned int GetXDim() const = 0;
  virtual unsigned int GetYDim() const = 0;
  virtual unsigned int GetZDim() const = 0;

  /// The centre.
  virtual void GetMid(float& x, float& y, float& z) const = 0;
  virtual float GetXMid() const = 0;
  virtual float GetYMid() const = 0;
  virtual float GetZMid() const = 0;

  /// Whether the title is not empty, and whether somebody set the centre.
  virtual bool IsTitleSet() const = 0;
  virtual bool IsXMidSet() const = 0;
  virtual bool IsYMidSet() const = 0;
  virtual bool IsZMidSet() const = 0;

  /// False for 0 and below, and for NaN, with a warning.
  virtual bool SetSpacing(float spacing) = 0;

  /// False for NaN, with a warning. `SetMid` sets the axes that it can.
  virtual bool SetMid(float x, float y, float z) = 0;
  virtual bool SetXMid(float x) = 0;
  virtual bool SetYMid(float y) = 0;
  virtual bool SetZMid(float z) = 0;

  /// All values are 0 after a change. False for a 0, and, with a warning, for
  /// more than 0xFFFFFFFF points.
  virtual bool SetDim(unsigned int x, unsigned int y, unsigned int z) = 0;
  virtual bool SetXDim(unsigned int x) = 0;
  virtual bool SetYDim(unsigned int y) = 0;
  virtual bool SetZDim(unsigned int z) = 0;

  /// Makes the storage of the values anew, all 0, for the present size. Called
  /// by the setters of dimensions, which undo the change when it is false.
  virtual bool Realloc() = 0;

protected:
  QXGridAbstractBase() = default;
  QXGridAbstractBase(const QXGridAbstractBase&) = default;
  QXGridAbstractBase& operator=(const QXGridAbstractBase&) = default;
};

/// The geometry of a grid: 1 x 1 x 1 points around the origin, 0.5 apart, unless
/// told otherwise.
class QXSYSTEM_API QXGridBase : public QXGridAbstractBase {
public:
  QXGridBase();

  /// Stores everything as it is given, 0 and NaN too, and counts it as set. The
  /// product of the dimensions has to fit the size, for nothing is checked here;
  /// SetDim does.
  QXGridBase(unsigned int x, unsigned int y, unsigned int z, float xmid, float ymid, float zmid,
             float spacing, const std::string& title);
  QXGridBase(const QXGridBase& other);

  /// A grid that refuses the size of `other` stays as it is, with a warning.
  QXGridBase& operator=(const QXGridBase& other);
  ~QXGridBase() override;

  /// Empties the title, removes the data and sets the values to 0.
  void Clear() override;
  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;
  QXGridBase* CreateCopy() const override;

  const std::string& GetTitle() const override;
  bool SetTitle(const std::string& title) override;
  float GetSpacing() const override;
  bool IsSpacingSet() const override;
  unsigned int GetSize() const override;
  void GetDim(unsigned int& x, unsigned int& y, unsigned int& z) const override;
  unsigned int GetXDim() const override;
  unsigned int GetYDim() const override;
  unsigned int GetZDim() const override;
  void GetMid(float& x, float& y, float& z) const override;
  float GetXMid() const override;
  float GetYMid() const override;
  float GetZMid() const override;
  bool IsTitleSet() const override;
  bool IsXMidSet() const override;
  bool IsYMidSet() const override;
  bool IsZMidSet() const override;
  bool SetSpacing(float spacing) override;
  bool SetMid(float x, float y, float z) override;
  bool SetXMid(float x) override;
  bool SetYMid(float y) override;
  bool SetZMid(float z) override;
  bool SetDim(unsigned int x, unsigned int y, unsigned int z) override;
  bool SetXDim(unsigned int x) override;
  bool SetYDim(unsigned int y) override;
  bool SetZDim(unsigned int z) override;
  bool Realloc() override;

  /// 1 / spacing.
  float GetInverseSpacing() const { return shape_.inverseSpacing; }

  /// The box: the centre and half of spacing times dimension to both sides.
  float GetXMin() const { return shape_.xmin; }
  float GetYMin() const { return shape_.ymin; }
  float GetZMin() const { return shape_.zmin; }
  float GetXMax() const { return shape_.xmax; }
  float GetYMax() const { return shape_.ymax; }
  float GetZMax() const { return shape_.zmax; }

protected:
  /// Shape and title of `other`, without its data.
  struct LikeTag {};
  QXGridBase(LikeTag, const QXGridBase& other);

  /// Takes the shape of `other` and makes the values anew. False, with a warning
  /// and nothing changed, when Realloc refuses.
  bool AdoptShape(const QXGridBase& other);

  /// Takes the shape of `other`, for which the values have been made already.
  void TakeShape(const QXGridBase& other) noexcept;

  /// Takes title and data of `other`, which may be held by a value of this
  /// object and is gone afterwards.
  void TakeData(const QXGridBase& other);

  /// The size that the values have: inside Realloc still the old one.
  unsigned int StoredSize() const { return storedSize_; }

private:
  struct Shape {
    unsigned int xdim = 1, ydim = 1, zdim = 1;
    float xmid = 0, ymid = 0, zmid = 0;
    float spacing = 0.5F, inverseSpacing = 2;
    bool xmidSet = false, ymidSet = false, zmidSet = false, spacingSet = false;
    // These follow from the others, by the operations below.
    float xmax = 0.25F, ymax = 0.25F, zmax = 0.25F;
    float xmin = -0.25F, ymin = -0.25F, zmin = -0.25F;
    unsigned int size = 1;

    void SetXRange();
    void SetYRange();
    void SetZRange();
    void SetRanges();
  };

  bool Apply(unsigned int x, unsigned int y, unsigned int z);
  bool Adopt(const Shape& shape);

  std::string title_;
  Shape shape_;
  unsigned int storedSize_ = 1;
};

/// A grid that owns its values, 0 unless told otherwise. T is float.
template <class T>
class QXSYSTEM_API QXFixedGrid : public QXGridBase {
public:
  QXFixedGrid();
  QXFixedGrid(unsigned int x, unsigned int y, unsigned int z, float xmid, float ymid, float zmid,
              float spacing, const std::string& title);

  /// Copies own their values, also those of a view. To a view the values of
  /// `other` are copied; one of another size leaves it as it is, with a warning.
  QXFixedGrid(const QXFixedGrid& other);
  QXFixedGrid& operator=(const QXFixedGrid& other);
  ~QXFixedGrid() override;

  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;
  QXFixedGrid* CreateCopy() const override;
  bool Realloc() override;

  /// Copies `count` values in. False, with a warning, when that is not the size
  /// or `values` is null.
  virtual bool SetValues(const T* values, unsigned int count);

  /// The values, as many as the size. Valid until the dimensions change.
  const T* GetValues() const { return values_; }
  T* GetValues() { return values_; }

protected:
  /// Shape and title of `shape`, with these values in place.
  QXFixedGrid(const QXGridBase& shape, T* values);

  T* values_;  // owned; a view lets go of it before we free it
};

/// A view: its values are part of another grid's array, which must outlive it,
/// and its size is fixed. A copy is no view, but a grid with values of its own.
template <class T>
class QXSYSTEM_API QXFixedRefGrid : public QXFixedGrid<T> {
public:
  /// Shape and title of `shape`, and the values at `values`.
  QXFixedRefGrid(const QXGridBase& shape, T* values);
  QXFixedRefGrid(const QXFixedRefGrid&) = delete;
  QXFixedRefGrid& operator=(const QXFixedRefGrid& other);
  using QXFixedGrid<T>::operator=;
  ~QXFixedRefGrid() override;

  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;

  /// Sets the values to 0; false when the size changed.
  bool Realloc() override;
};

/// Several grids over one geometry.
template <class T>
class QXSYSTEM_API QXMultiGrid : public QXGridBase {
public:
  ~QXMultiGrid() override;

  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;
  QXMultiGrid* CreateCopy() const override = 0;
  bool SetSpacing(float spacing) override;
  bool SetMid(float x, float y, float z) override;
  bool SetDim(unsigned int x, unsigned int y, unsigned int z) override;

  /// Changes the number of grids: keeps the values of those that stay, new ones
  /// are 0. False for 0, and for more than 0xFFFFFFFF values in all.
  virtual bool SetNumGrids(unsigned int n) = 0;
  virtual unsigned int GetNumGrids() const = 0;

  /// A grid by its index, null beyond the end. It belongs to this object and
  /// stays valid until the number of grids, the dimensions or the spacing
  /// change, and until Clear or ResetGrids.
  virtual QXFixedGrid<T>* GetGrid(unsigned int i) = 0;
  virtual const QXFixedGrid<T>* GetGrid(unsigned int i) const = 0;

  /// Makes the grids anew, over the same values, with this object's geometry and
  /// title.
  virtual void ResetGrids() = 0;

protected:
  QXMultiGrid();
  QXMultiGrid(unsigned int x, unsigned int y, unsigned int z, float xmid, float ymid, float zmid,
              float spacing, const std::string& title);
  QXMultiGrid(const QXMultiGrid& other);
  QXMultiGrid& operator=(const QXMultiGrid&) = delete;
};

/// Grids whose values stand in one array, those of each grid together. There is
/// always at least one; T is float.
///
/// A change of the dimensions sets all values to 0, and refuses more than
/// 0xFFFFFFFF of them. The grids follow the centre of this object at once, its
/// title when they are made anew.
template <class T>
class QXSYSTEM_API QXFixedMultiGrid : public QXMultiGrid<T> {
public:
  QXFixedMultiGrid();
  QXFixedMultiGrid(unsigned int x, unsigned int y, unsigned int z, float xmid, float ymid,
                   float zmid, float spacing, const std::string& title);
  QXFixedMultiGrid(const QXFixedMultiGrid& other);
  QXFixedMultiGrid& operator=(const QXFixedMultiGrid& other);
  ~QXFixedMultiGrid() override;

  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;
  QXFixedMultiGrid* CreateCopy() const override;
  bool SetXMid(float x) override;
  bool SetYMid(float y) override;
  bool SetZMid(float z) override;
  bool Realloc() override;

  bool SetNumGrids(unsigned int n) override;
  unsigned int GetNumGrids() const override;
  QXFixedGrid<T>* GetGrid(unsigned int i) override;
  const QXFixedGrid<T>* GetGrid(unsigned int i) const override;
  void ResetGrids() override;

private:
  using Views = std::vector<std::unique_ptr<QXFixedGrid<T>>>;

  Views MakeViews(std::vector<T>& values, std::size_t n) const;

  std::vector<T> values_;  // size times number of grids
  Views views_;            // one for each grid
};

extern template class QXFixedGrid<float>;
extern template class QXFixedRefGrid<float>;
extern template class QXMultiGrid<float>;
extern template class QXFixedMultiGrid<float>;

}  // namespace QXSystem

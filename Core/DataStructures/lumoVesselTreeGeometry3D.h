#ifndef lumoVesselTreeGeometry3D_h
#define lumoVesselTreeGeometry3D_h

#include <itkObjectFactory.h>
#include "lumoGeometry3D.h"

#include "ArVesselTree.h"

namespace lumo
{
/** Geometry of a vessel tree: its bounds are the axis-aligned box of all centre-line points (not of the vessel
 *  walls: diameters are left out), computed with an ITK bounding box. */
class VesselTreeGeometry3D : public Geometry3D
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeGeometry3D);

  using Self = VesselTreeGeometry3D;
  using Superclass = Geometry3D;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeGeometry3D, Geometry3D);

  /** Holds the tree (releasing an earlier one), resets the geometry and computes the bounds. A null tree only
   *  warns and changes nothing. */
  virtual void
  InitializeWithTree(const ArVesselTree & tree);

  const ArVesselTree &
  GetTree() const
  {
    return m_Tree;
  }

  /** Recomputes the bounds from the held tree; warns when there is none. */
  void
  UpdateBounds() override;

protected:
  VesselTreeGeometry3D();
  ~VesselTreeGeometry3D() override;

  /** A copy shares the tree (trees are reference counted), so that its bounds follow the tree as the
   *  original's do. */
  void
  CopyValuesTo(Geometry3D * other) const override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  ArVesselTree m_Tree;
};
} // namespace lumo

#endif

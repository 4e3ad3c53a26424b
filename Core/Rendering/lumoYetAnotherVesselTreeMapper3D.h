#ifndef lumoYetAnotherVesselTreeMapper3D_h
#define lumoYetAnotherVesselTreeMapper3D_h

#include <itkObjectFactory.h>
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeToLookupTableFilter.h"
#include "lumoVtkMapper3D.h"

#include <itkTimeStamp.h>
#include <vtkActor.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkSmartPointer.h>

namespace lumo
{
/** Draws a vessel tree as tubes of varying radius with a sphere at the end of every vessel, or as its centre lines.
 *
 *  The skeleton is one poly line per vessel (visible vessels of at least two points) with the point arrays
 *  "diameters" (the radius, |d| / 2; the tube filter reads it as its radius) and "vesselIds"; the surface is the
 *  tube swept along it plus the end spheres, every point carrying "vesselIds". Colours come per point through
 *  "vesselIds" from the table of VesselTreeToLookupTableFilter; the picker relies on that array.
 *
 *  Work is gated by time: geometry is rebuilt only when the tree's topology time is later than the colour time
 *  stamp, colours re-applied only when the tree's attribute time or the node's lookup table is. Node properties:
 *  "Render skeleton" (centre lines instead of tubes), "visible" (per renderer), "VesselTreeLookupTable". */
class YetAnotherVesselTreeMapper3D : public VtkMapper3D
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(YetAnotherVesselTreeMapper3D);

  using Self = YetAnotherVesselTreeMapper3D;
  using Superclass = VtkMapper3D;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(YetAnotherVesselTreeMapper3D, VtkMapper3D);

  /** The node's data as a vessel tree; null when the node holds something else. */
  VesselTreeData *
  GetInput() const;

  /** The actor (the same for every renderer). */
  vtkProp *
  GetVtkProp(BaseRenderer * renderer) override;

  /** Sides of the tube polygon, 3..256; default 10. Takes effect at the next geometry rebuild. */
  itkSetClampMacro(NumberOfSides, int, 3, 256);
  itkGetConstMacro(NumberOfSides, int);

  /** Value of the node's "Render skeleton"; false without it (and, with a warning, without node). */
  bool
  IsSkeletonRendered() const;
  /** Modification time of the table held by the node's "VesselTreeLookupTable"; 0 without one. */
  itk::ModifiedTimeType
  GetLookupTableMTime() const;

  vtkPolyData *
  GetSkeleton() const
  {
    return m_Skeleton;
  }
  vtkPolyData *
  GetSurface() const
  {
    return m_Surface;
  }
  vtkPolyData *
  GetTubes() const
  {
    return m_Tubes;
  }
  vtkPolyData *
  GetEndSpheres() const
  {
    return m_EndSpheres;
  }
  vtkPolyDataMapper *
  GetPolyDataMapper() const
  {
    return m_PolyDataMapper;
  }
  vtkActor *
  GetActor() const
  {
    return m_Actor;
  }
  /** How often the geometry and the colours were built; the tests count them to prove the gating. */
  itkGetConstMacro(GeometryBuildCount, unsigned long);
  itkGetConstMacro(ColorUpdateCount, unsigned long);

  /** The build steps, public so that tests and benchmarks can run them one by one. */
  void
  GenerateSkeleton();
  /** Tubes and end spheres, appended; subclasses may put another surface in the surface slot. */
  virtual void
  GenerateSurface();
  void
  GenerateTubes();
  void
  GenerateEndSpheres();
  void
  UpdateColors();

  void
  GenerateData() override;
  void
  GenerateDataForRenderer(BaseRenderer * renderer) override;

protected:
  YetAnotherVesselTreeMapper3D();
  ~YetAnotherVesselTreeMapper3D() override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  /** What the poly data mapper draws: the skeleton when "Render skeleton" is set, else the surface. */
  virtual vtkPolyData *
  GetRenderedPolyData() const;

private:
  vtkSmartPointer<vtkPolyData> m_Skeleton;
  vtkSmartPointer<vtkPolyData> m_Surface;
  vtkSmartPointer<vtkPolyData> m_Tubes;
  vtkSmartPointer<vtkPolyData> m_EndSpheres;
  vtkSmartPointer<vtkPolyDataMapper> m_PolyDataMapper;
  vtkSmartPointer<vtkActor> m_Actor;
  int m_NumberOfSides{ 10 };
  VesselTreeToLookupTableFilter::Pointer m_LookupTableFilter;
  itk::TimeStamp m_ColorTimeStamp;
  unsigned long m_GeometryBuildCount{ 0 };
  unsigned long m_ColorUpdateCount{ 0 };
};
} // namespace lumo

#endif

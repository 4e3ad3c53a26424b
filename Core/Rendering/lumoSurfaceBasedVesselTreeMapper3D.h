#ifndef lumoSurfaceBasedVesselTreeMapper3D_h
#define lumoSurfaceBasedVesselTreeMapper3D_h

#include "lumoSurface.h"
#include "lumoYetAnotherVesselTreeMapper3D.h"

namespace lumo
{
/** Draws a segmented vessel surface coloured by vessel instead of tubes.
 *
 *  Every triangle of the input surface gets the id of the vessel nearest to its centroid: the vessel of the closest
 *  centre-line point (or, with UseTubedSurface, the closest point of the tube surface). The labelled surface has
 *  unshared vertices, three per triangle, so that each triangle carries its own colour through "vesselIds"; it is
 *  coloured and picked exactly like the tubes. Its point normals are those of the shared-vertex surface with a
 *  feature angle of 180 degrees (no edge counts as sharp), so the surface is shaded smoothly although its vertices
 *  are not shared.
 *
 *  Display: "Render skeleton" shows the centre lines, as with the tube mapper; otherwise the labelled surface takes
 *  the place of the tubes while there is one and the node's "Render vessel surface" is not false (absent counts as
 *  true). Without an input surface, or without centre lines to label it by, the mapper draws the tubes. The
 *  labelling is redone whenever the tree's topology changes (the tubes are rebuilt) or another surface is set.
 *
 *  Progress lines go to standard output ("Preprocess surface called...", "Build skeleton surface called...",
 *  "...finished!"); failures are toolkit warnings, and a failed step leaves the previous surfaces in place. */
class SurfaceBasedVesselTreeMapper3D : public YetAnotherVesselTreeMapper3D
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(SurfaceBasedVesselTreeMapper3D);

  using Self = SurfaceBasedVesselTreeMapper3D;
  using Superclass = YetAnotherVesselTreeMapper3D;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(SurfaceBasedVesselTreeMapper3D, YetAnotherVesselTreeMapper3D);

  /** The segmented vessel surface (time step 0) to colour, in the tree's world coordinates; null (the default)
   *  draws tubes. */
  void
  SetInputSurface(Surface * surface);
  Surface *
  GetInputSurface() const;

  /** Label triangles by the nearest point of the tube surface (true) or of the centre lines (false); default
   *  false. */
  itkSetMacro(UseTubedSurface, bool);
  itkGetConstMacro(UseTubedSurface, bool);
  itkBooleanMacro(UseTubedSurface);

  /** Feature angle of the labelled surface's normals in degrees, 0 to 180; default 180 (smooth everywhere). */
  itkSetClampMacro(FeatureAngle, double, 0.0, 180.0);
  itkGetConstMacro(FeatureAngle, double);

  /** Triangulates the input surface and gives every triangle a vessel id (cell array "vesselIds" of the
   *  preprocessed surface); false, with a warning, when there is no input surface, no skeleton or a non-triangle. */
  bool
  PreprocessSurface();
  /** Builds the labelled surface from the preprocessed one (preprocessing first when there is none). */
  void
  BuildSkeletonSurface();

  /** The triangulated input surface with its cell array "vesselIds"; null before a successful preprocessing. */
  vtkPolyData *
  GetPreprocessedSurface() const
  {
    return m_PreprocessedSurface;
  }
  /** Three points per triangle, point arrays "vesselIds" and normals; null before it is built. */
  vtkPolyData *
  GetLabelledSurface() const
  {
    return m_LabelledSurface;
  }
  /** Whether the labelled surface is what the poly data mapper draws now (else skeleton or tubes). */
  bool
  IsLabelledSurfaceRendered() const;

  /** Tubes and end spheres as the tube mapper builds them, then the labelling of the input surface. */
  void
  GenerateSurface() override;
  void
  GenerateDataForRenderer(BaseRenderer * renderer) override;

protected:
  SurfaceBasedVesselTreeMapper3D();
  ~SurfaceBasedVesselTreeMapper3D() override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  virtual bool
  InputSurfaceAvailable() const;
  virtual bool
  PreprocessedSurfaceAvailable() const;
  virtual bool
  SkeletonAvailable() const;
  /** Normals of the labelled surface, taken per corner from the shared-vertex preprocessed surface. */
  virtual void
  PostProcessSurface(vtkPolyData * labelled);

  vtkPolyData *
  GetRenderedPolyData() const override;

private:
  Surface::Pointer m_InputSurface;
  bool m_UseTubedSurface{ false };
  double m_FeatureAngle{ 180.0 };
  vtkSmartPointer<vtkPolyData> m_PreprocessedSurface;
  vtkSmartPointer<vtkPolyData> m_LabelledSurface;
  /** Modification time of the input surface the labelled surface was made from (0: none). */
  itk::ModifiedTimeType m_LabelledInputTime{ 0 };
};
} // namespace lumo

#endif

#ifndef lumoVesselTreePicker_h
#define lumoVesselTreePicker_h

#include <itkObjectFactory.h>
#include "lumoBaseRenderer.h"
#include "lumoDataNode.h"
#include "lumoVesselTreeData.h"

#include <itkProcessObject.h>
#include <itkWeakPointer.h>

class vtkAbstractMapper3D;

namespace lumo
{
/** Finds the vessel under a display position of a 3-D render window.
 *
 *  Picking modes:
 *  - 0, nearest point: the surface point under the position is found by a geometric pick; the vessel whose tube
 *    surface is nearest to it (visible vessels only) wins.
 *  - 1, ray: the ray through the position is intersected with every visible vessel's tube (the segments between
 *    its points, radius interpolated along them) and end sphere; the hit nearest to the camera wins.
 *  - 2, cell picking: VTK's cell picker; the "vesselIds" value of the picked cell's first point, when the picked
 *    actor is the one of the node's tube mapper.
 *  Modes 0 and 2 hit the nearest pickable prop: other props in front of the tree (a translucent organ) are made
 *  unpickable by whoever shows them.
 *  Nothing hit: IsPicked() false and ErrorId, without a warning. Failures warn and give the same result. */
class VesselTreePicker : public itk::ProcessObject
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreePicker);

  using Self = VesselTreePicker;
  using Superclass = itk::ProcessObject;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreePicker, itk::ProcessObject);

  enum PickingMode : int
  {
    NearestPoint = 0,
    Ray = 1,
    CellPicking = 2,
  };

  using Superclass::SetInput;
  void
  SetInput(const VesselTreeData * tree);
  const VesselTreeData *
  GetInput() const;

  /** Display position in pixels, origin at the bottom left of the window. */
  void
  SetDisplayPosition(float x, float y);
  const float *
  GetDisplayPosition() const
  {
    return m_DisplayPosition;
  }
  /** The renderer that shows the tree; not owned. */
  void
  SetRenderer(BaseRenderer * renderer);
  BaseRenderer *
  GetRenderer() const
  {
    return m_Renderer.GetPointer();
  }
  /** The node holding the tree; cell picking checks that the picked actor is its mapper's. Not owned. */
  void
  SetDataNode(DataNode * node);
  DataNode *
  GetDataNode() const
  {
    return m_DataNode.GetPointer();
  }
  /** 0 nearest point, 1 ray, 2 cell picking (default). */
  itkSetMacro(PickingMode, int);
  itkGetConstMacro(PickingMode, int);

  /** The picked vessel, or VesselTreeData::ErrorId. */
  std::int32_t
  GetPickedVesselId() const
  {
    return m_PickedVesselId;
  }
  bool
  IsPicked() const
  {
    return m_Picked;
  }
  /** The ray of the last pick in world coordinates (mode 1). */
  const float *
  GetNearPoint() const
  {
    return m_NearPoint;
  }
  const float *
  GetFarPoint() const
  {
    return m_FarPoint;
  }

  /** Picks (GenerateData); no pipeline outputs are involved. */
  void
  Update() override;

protected:
  VesselTreePicker();
  ~VesselTreePicker() override = default;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  void
  PickNearestPoint();
  void
  PickAlongRay();
  void
  PickCell();
  /** Near and far point of the ray through the display position, and the camera's view direction. */
  bool
  ComputeRay(double nearPoint[3], double farPoint[3], double direction[3]);
  /** Whether the picked mapper belongs to this picker's node and is the tube mapper's. */
  bool
  ValidatePickedMapper(vtkAbstractMapper3D * picked);

  float m_DisplayPosition[2]{ 0.0f, 0.0f };
  float m_NearPoint[3]{ 0.0f, 0.0f, 0.0f };
  float m_FarPoint[3]{ 0.0f, 0.0f, 0.0f };
  std::int32_t m_PickedVesselId{ VesselTreeData::ErrorId };
  bool m_Picked{ false };
  itk::WeakPointer<BaseRenderer> m_Renderer;
  int m_PickingMode{ CellPicking };
  itk::WeakPointer<DataNode> m_DataNode;
};
} // namespace lumo

#endif

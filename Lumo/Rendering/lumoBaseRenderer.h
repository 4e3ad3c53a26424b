#ifndef lumoBaseRenderer_h
#define lumoBaseRenderer_h

#include <itkObjectFactory.h>
#include "lumoDataNode.h"
#include "lumoDataStorage.h"

#include <vtkProp.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkSmartPointer.h>

#include <map>
#include <string>

namespace lumo
{
class Mapper;

/** A vtkRenderer in its own vtkRenderWindow that draws the nodes of a data storage through their mappers.
 *
 *  Every renderer is known by its window (GetInstance) and by its name (GetByName) for as long as it lives; the
 *  name is also the key of the renderer-specific property lists of the nodes ("visible" per renderer). The mapper
 *  slot (MapperID) says which mapper of a node this renderer asks for: DataNode::Standard3D by default.
 *
 *  Creating the object does not touch the X server; Render() does. Callers that may run without a display ask
 *  lumo::IsDisplayAvailable() first (VTK aborts the process when it cannot connect). */
class BaseRenderer : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(BaseRenderer);

  using Self = BaseRenderer;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(BaseRenderer, itk::Object);

  /** The renderer drawing into a window; null for windows that no renderer owns. */
  static BaseRenderer *
  GetInstance(vtkRenderWindow * window);
  /** The renderer of that name; null when there is none. */
  static BaseRenderer *
  GetByName(const std::string & name);

  /** Unique name of the renderer; default "lumo-renderer-N" with a process-wide counter. Renaming to a name in use
   *  throws itk::ExceptionObject. */
  void
  SetName(const std::string & name);
  const std::string &
  GetName() const
  {
    return m_Name;
  }

  vtkRenderer *
  GetVtkRenderer() const
  {
    return m_VtkRenderer;
  }
  vtkRenderWindow *
  GetRenderWindow() const
  {
    return m_RenderWindow;
  }

  /** Mapper slot used for the nodes: DataNode::Standard2D (1) or Standard3D (2, default). */
  itkSetMacro(MapperID, DataNode::MapperSlotId);
  itkGetConstMacro(MapperID, DataNode::MapperSlotId);

  /** The nodes to draw; not owned beyond the smart pointer. */
  void
  SetDataStorage(DataStorage * storage);
  DataStorage *
  GetDataStorage() const
  {
    return m_DataStorage;
  }

  /** Lets every node's mapper bring its geometry and colours up to date for this renderer and keeps the
   *  renderer's props in step with the storage (props of removed nodes are taken out). No drawing. */
  void
  Update();
  /** Update(), then draws the window. Throws itk::ExceptionObject ("Cannot draw the renderer \"NAME\": no X
   *  display: ...") when the window does not exist yet and no X display can be opened. */
  void
  Render();

  /** The mapper of a node for this renderer's slot, when it is a lumo::Mapper. */
  Mapper *
  GetMapperOf(const DataNode * node) const;

  /** World coordinates of the nearest pickable surface under a display position (pixels, origin bottom left);
   *  false when the position shows background. */
  bool
  PickWorldPoint(double displayX, double displayY, double world[3]) const;

protected:
  BaseRenderer();
  ~BaseRenderer() override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  std::string m_Name;
  vtkSmartPointer<vtkRenderer> m_VtkRenderer;
  vtkSmartPointer<vtkRenderWindow> m_RenderWindow;
  DataNode::MapperSlotId m_MapperID{ DataNode::Standard3D };
  DataStorage::Pointer m_DataStorage;
  // Props this renderer added, by node, so that removed nodes take their props with them.
  std::map<const DataNode *, vtkSmartPointer<vtkProp>> m_Props;
};
} // namespace lumo

#endif

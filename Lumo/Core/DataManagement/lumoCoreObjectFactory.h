#ifndef lumoCoreObjectFactory_h
#define lumoCoreObjectFactory_h

#include "lumoCoreObjectFactoryBase.h"

#include <vector>

namespace lumo
{
/** The toolkit's object factory: answers from its own defaults for the core data types (images, surfaces, point
 *  sets) and then asks every registered extra factory (in registration order).
 *
 *  - CreateMapper: the core has no mappers in this library (rendering comes separately); the first extra factory
 *    that returns a mapper wins.
 *  - SetDefaultProperties: the core defaults (below, only keys the node lacks), then every extra factory.
 *  - File extension maps and filter texts: the core's entries plus those of every extra factory.
 *  - GetFileWriters: the core's writers (image, surface, point set) and then those of every extra factory.
 *
 *  Core defaults: every node with data gets "visible" true, "layer" 0, "opacity" 1 and "color" white; images
 *  also "binary" false and "levelwindow" spanning the voxel range; surfaces "material" (a default material),
 *  "line width" 1 and "scalar visibility" false; point sets "pointsize" 1, "show points" true, "show contour"
 *  false, "close contour" false and "color" red.
 *
 *  Core open patterns: "*.nrrd" "Nearly Raw Raster Data", "*.nii" and "*.nii.gz" "NIfTI format", "*.mhd" and
 *  "*.mha" "MetaImage", "*.gipl" and "*.gipl.gz" "UMDS GIPL Format Files", "*.png", "*.jpg", "*.jpeg", "*.tif",
 *  "*.tiff", "*.bmp" "Sets of 2D slices", "*.vtp", "*.vtk", "*.stl", "*.obj" "Surface files", "*.mps"
 *  "Point sets". Save patterns: the same without the 2-D slice formats and "*.obj". */
class CoreObjectFactory : public CoreObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CoreObjectFactory);

  using Self = CoreObjectFactory;
  using Superclass = CoreObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(CoreObjectFactory, CoreObjectFactoryBase);

  static CoreObjectFactory *
  GetInstance();

  /** Adds a factory (a factory already registered is not added twice); null is ignored. */
  void
  RegisterExtraFactory(CoreObjectFactoryBase * factory);
  /** Removes a factory; unknown factories are ignored. */
  void
  UnRegisterExtraFactory(CoreObjectFactoryBase * factory);
  /** The registered extra factories in registration order. */
  std::vector<CoreObjectFactoryBase *>
  GetExtraFactories() const;

  itk::Object::Pointer
  CreateMapper(DataNode * node, DataNode::MapperSlotId slot) override;
  void
  SetDefaultProperties(DataNode * node) override;
  std::string
  GetFileExtensions() override;
  MultimapType
  GetFileExtensionsMap() override;
  std::string
  GetSaveFileExtensions() override;
  MultimapType
  GetSaveFileExtensionsMap() override;
  FileWriterList
  GetFileWriters() override;

protected:
  CoreObjectFactory();
  ~CoreObjectFactory() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  std::vector<CoreObjectFactoryBase::Pointer> m_ExtraFactories;
};
} // namespace lumo

#endif

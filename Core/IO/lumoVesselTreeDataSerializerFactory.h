#ifndef lumoVesselTreeDataSerializerFactory_h
#define lumoVesselTreeDataSerializerFactory_h

#include <itkObjectFactoryBase.h>

namespace lumo
{
/** Makes the vessel tree data serializer known under the name the toolkit looks up for VesselTreeData:
 *  "VesselTreeDataSerializer". */
class VesselTreeDataSerializerFactory : public itk::ObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeDataSerializerFactory);

  using Self = VesselTreeDataSerializerFactory;
  using Superclass = itk::ObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  // A factory cannot be made through the factories it extends.
  itkFactorylessNewMacro(Self);
  itkTypeMacro(VesselTreeDataSerializerFactory, itk::ObjectFactoryBase);

  const char *
  GetITKSourceVersion() const override;
  const char *
  GetDescription() const override;

  /** Registers one instance with ITK's object factories, once per process. */
  static void
  RegisterOneFactory();

protected:
  VesselTreeDataSerializerFactory();
  ~VesselTreeDataSerializerFactory() override;
};
} // namespace lumo

#endif

#ifndef lumoVesselTreeLookupTablePropertySerializerFactory_h
#define lumoVesselTreeLookupTablePropertySerializerFactory_h

#include <itkObjectFactoryBase.h>

namespace lumo
{
/** Makes the vessel colour table serializer known under the name the scene IO looks up:
 *  "VesselTreeLookupTablePropertySerializer". */
class VesselTreeLookupTablePropertySerializerFactory : public itk::ObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeLookupTablePropertySerializerFactory);

  using Self = VesselTreeLookupTablePropertySerializerFactory;
  using Superclass = itk::ObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  // A factory cannot be made through the factories it extends.
  itkFactorylessNewMacro(Self);
  itkTypeMacro(VesselTreeLookupTablePropertySerializerFactory, itk::ObjectFactoryBase);

  const char *
  GetITKSourceVersion() const override;
  const char *
  GetDescription() const override;

  /** Registers one instance with ITK's object factories, once per process. */
  static void
  RegisterOneFactory();

protected:
  VesselTreeLookupTablePropertySerializerFactory();
  ~VesselTreeLookupTablePropertySerializerFactory() override;
};
} // namespace lumo

#endif

#ifndef lumoVesselTreeFileIOFactory_h
#define lumoVesselTreeFileIOFactory_h

#include <itkObjectFactoryBase.h>

namespace lumo
{
/** Makes the .ves reader known to the toolkit's file opening: registers an IOAdapter of VesselTreeFileReader as
 *  an override of "lumoIOAdapter". */
class VesselTreeFileIOFactory : public itk::ObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeFileIOFactory);

  using Self = VesselTreeFileIOFactory;
  using Superclass = itk::ObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkFactorylessNewMacro(Self);
  itkTypeMacro(VesselTreeFileIOFactory, itk::ObjectFactoryBase);

  const char *
  GetITKSourceVersion() const override;
  const char *
  GetDescription() const override;

  /** Registers one instance with ITK's object factories, once per process. */
  static void
  RegisterOneFactory();

protected:
  VesselTreeFileIOFactory();
  ~VesselTreeFileIOFactory() override;
};
} // namespace lumo

#endif

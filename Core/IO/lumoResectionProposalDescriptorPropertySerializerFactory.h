#ifndef lumoResectionProposalDescriptorPropertySerializerFactory_h
#define lumoResectionProposalDescriptorPropertySerializerFactory_h

#include <itkObjectFactoryBase.h>

namespace lumo
{
/** Makes the resection proposal descriptor serializer known under the name the scene IO looks up:
 *  "ResectionProposalDescriptorPropertySerializer". */
class ResectionProposalDescriptorPropertySerializerFactory : public itk::ObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ResectionProposalDescriptorPropertySerializerFactory);

  using Self = ResectionProposalDescriptorPropertySerializerFactory;
  using Superclass = itk::ObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  // A factory cannot be made through the factories it extends.
  itkFactorylessNewMacro(Self);
  itkTypeMacro(ResectionProposalDescriptorPropertySerializerFactory, itk::ObjectFactoryBase);

  const char *
  GetITKSourceVersion() const override;
  const char *
  GetDescription() const override;

  /** Registers one instance with ITK's object factories, once per process. */
  static void
  RegisterOneFactory();

protected:
  ResectionProposalDescriptorPropertySerializerFactory();
  ~ResectionProposalDescriptorPropertySerializerFactory() override;
};
} // namespace lumo

#endif

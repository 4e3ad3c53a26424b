#ifndef lumoPicImageIOFactory_h
#define lumoPicImageIOFactory_h

#include "itkImageIOBase.h"
#include "itkObjectFactoryBase.h"

namespace lumo
{
/** \class PicImageIOFactory
 * \brief Makes lumo::PicImageIO known to itk::ImageFileReader and itk::ImageFileWriter.
 *
 * Call RegisterOneFactory() once before reading or writing .pic and .pic.gz files through ITK.
 */
class PicImageIOFactory : public itk::ObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(PicImageIOFactory);

  using Self = PicImageIOFactory;
  using Superclass = itk::ObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  const char *
  GetITKSourceVersion() const override;

  const char *
  GetDescription() const override;

  // A factory cannot be made through the factories it is meant to extend.
  itkFactorylessNewMacro(Self);
  itkTypeMacro(PicImageIOFactory, ObjectFactoryBase);

  /** Registers one instance with ITK's list of factories. */
  static void
  RegisterOneFactory()
  {
    PicImageIOFactory::Pointer factory = PicImageIOFactory::New();
    itk::ObjectFactoryBase::RegisterFactoryInternal(factory);
  }

protected:
  PicImageIOFactory();
  ~PicImageIOFactory() override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;
};
} // namespace lumo

#endif

#ifndef lumoCalyxSceneIOReaderFactory_h
#define lumoCalyxSceneIOReaderFactory_h

#include <itkObjectFactoryBase.h>

namespace lumo
{
/** Makes the scene reader known to the toolkit's file opening: registers an IOAdapter of CalyxSceneFileReader as
 *  an override of "lumoIOAdapter". */
class CalyxSceneIOReaderFactory : public itk::ObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CalyxSceneIOReaderFactory);

  using Self = CalyxSceneIOReaderFactory;
  using Superclass = itk::ObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkFactorylessNewMacro(Self);
  itkTypeMacro(CalyxSceneIOReaderFactory, itk::ObjectFactoryBase);

  const char *
  GetITKSourceVersion() const override;
  const char *
  GetDescription() const override;

  /** Registers one instance with ITK's object factories, once per process. */
  static void
  RegisterOneFactory();

protected:
  CalyxSceneIOReaderFactory();
  ~CalyxSceneIOReaderFactory() override;
};
} // namespace lumo

#endif

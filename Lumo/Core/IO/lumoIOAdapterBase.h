#ifndef lumoIOAdapterBase_h
#define lumoIOAdapterBase_h

#include "lumoBaseProcess.h"

#include <itkObject.h>

#include <string>

namespace lumo
{
/** What lumo::DataNodeFactory asks of a registered file type: whether it reads a file, and a new reader for it.
 *
 *  Registration: an ITK object factory (an itk::ObjectFactoryBase subclass registered with
 *  itk::ObjectFactoryBase::RegisterFactory) registers, in its constructor, an override of the class name
 *  "lumoIOAdapter":
 *
 *    this->RegisterOverride("lumoIOAdapter", "lumoVesselTreeFileReader", "lumo Ves VesselTree IO", true,
 *                           itk::CreateObjectFunction<lumo::IOAdapter<lumo::VesselTreeFileReader>>::New());
 *
 *  The toolkit finds every adapter with itk::ObjectFactoryBase::CreateAllInstance("lumoIOAdapter"). */
class IOAdapterBase : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(IOAdapterBase);

  using Self = IOAdapterBase;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(IOAdapterBase, itk::Object);

  /** A new reader with file name, prefix and pattern set. */
  virtual BaseProcess::Pointer
  CreateIOProcessObject(const std::string & fileName,
                        const std::string & filePrefix,
                        const std::string & filePattern) = 0;

  virtual bool
  CanReadFile(const std::string & fileName, const std::string & filePrefix, const std::string & filePattern) = 0;

protected:
  IOAdapterBase() = default;
  ~IOAdapterBase() override = default;
};
} // namespace lumo

#endif

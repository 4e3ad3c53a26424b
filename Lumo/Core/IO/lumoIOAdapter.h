#ifndef lumoIOAdapter_h
#define lumoIOAdapter_h

#include "lumoBaseProcess.h"
#include "lumoIOAdapterBase.h"

#include <itkObject.h>

#include <string>

namespace lumo
{

/** The adapter of a reader class T: T is a lumo::BaseProcess with New(), SetFileName, SetFilePrefix and
 *  SetFilePattern (const char *), and a static CanReadFile(name, prefix, pattern) (see lumo::FileReader). */
template <typename T>
class IOAdapter : public IOAdapterBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(IOAdapter);

  using Self = IOAdapter;
  using Superclass = IOAdapterBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(IOAdapter, IOAdapterBase);
  itkNewMacro(Self);

  BaseProcess::Pointer
  CreateIOProcessObject(const std::string & fileName,
                        const std::string & filePrefix,
                        const std::string & filePattern) override
  {
    typename T::Pointer ioProcessObject = T::New();
    ioProcessObject->SetFileName(fileName.c_str());
    ioProcessObject->SetFilePrefix(filePrefix.c_str());
    ioProcessObject->SetFilePattern(filePattern.c_str());
    return ioProcessObject.GetPointer();
  }

  bool
  CanReadFile(const std::string & fileName, const std::string & filePrefix, const std::string & filePattern) override
  {
    return T::CanReadFile(fileName, filePrefix, filePattern);
  }

protected:
  IOAdapter() = default;
  ~IOAdapter() override = default;
};
} // namespace lumo

#endif

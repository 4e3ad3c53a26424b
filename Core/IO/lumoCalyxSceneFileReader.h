#ifndef lumoCalyxSceneFileReader_h
#define lumoCalyxSceneFileReader_h

#include "lumoBaseProcess.h"
#include "lumoDataStorage.h"
#include "lumoFileReader.h"

#include <itkObjectFactory.h>

#include <string>

namespace lumo
{
/** Opens a scene file (".rs") through the toolkit's file reading: Update() loads the scene into the data storage
 *  set beforehand (CalyxSceneIO::LoadScene); the reader itself has no outputs. Without a storage, Update() throws
 *  itk::ExceptionObject "Always initialize CalyxSceneFileReader with a DataStorage".
 *
 *  An application that finds this reader through its IO adapter (CalyxSceneIOReaderFactory) sets the storage on
 *  the reader the adapter makes before updating it. */
class CalyxSceneFileReader
  : public BaseProcess
  , public FileReader
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CalyxSceneFileReader);

  using Self = CalyxSceneFileReader;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(CalyxSceneFileReader, BaseProcess);

  /** Path of the scene file; default "". */
  void
  SetFileName(const char * fileName) override;
  const char *
  GetFileName() const override;
  /** Kept for the file reader convention; not used. */
  void
  SetFilePrefix(const char * filePrefix) override;
  const char *
  GetFilePrefix() const override;
  /** Kept for the file reader convention; not used. */
  void
  SetFilePattern(const char * filePattern) override;
  const char *
  GetFilePattern() const override;

  /** The storage receiving the scene's nodes (not owned: the application keeps it); default null. */
  void
  SetDataStorage(DataStorage * storage);
  DataStorage *
  GetDataStorage() const
  {
    return m_DataStorage;
  }

  /** Loads the scene now. */
  void
  Update() override;

  /** True exactly for names ending in ".rs" or ".RS" (other spellings of the case are refused). */
  static bool
  CanReadFile(const std::string & fileName, const std::string & filePrefix, const std::string & filePattern);

protected:
  CalyxSceneFileReader();
  ~CalyxSceneFileReader() override;
  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  static bool
  SetString(std::string & member, const char * value);

  std::string m_FileName;
  std::string m_FilePrefix;
  std::string m_FilePattern;
  DataStorage * m_DataStorage{ nullptr };
};
} // namespace lumo

#endif

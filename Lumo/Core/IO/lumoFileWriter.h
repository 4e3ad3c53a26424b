#ifndef lumoFileWriter_h
#define lumoFileWriter_h

#include "lumoBaseProcess.h"

#include <string>

namespace lumo
{
class BaseData;

/** Base of file writers: a process object with file name, prefix and pattern (a null string sets the empty string;
 *  setting the value already held changes nothing, otherwise the writer is marked modified), the data to write as
 *  input 0, and a success flag. Writers are not lazy: Update() and Write() run GenerateData at once. GenerateData
 *  reports failure by throwing itk::ExceptionObject (and leaves GetSuccess() false); Write() sets the flag to false
 *  before and to true after a GenerateData that returned normally. */
class FileWriter : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(FileWriter);

  using Self = FileWriter;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(FileWriter, BaseProcess);

  virtual void
  SetFileName(const char * fileName);
  virtual const char *
  GetFileName() const;
  virtual void
  SetFilePrefix(const char * filePrefix);
  virtual const char *
  GetFilePrefix() const;
  virtual void
  SetFilePattern(const char * filePattern);
  virtual const char *
  GetFilePattern() const;

  /** The data to write (input 0). */
  void
  SetInputData(BaseData * data);
  BaseData *
  GetInputData();

  /** Runs GenerateData now. */
  virtual void
  Write();
  void
  Update() override;

  bool
  GetSuccess() const
  {
    return m_Success;
  }

protected:
  FileWriter();
  ~FileWriter() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  std::string m_FileName;
  std::string m_FilePrefix;
  std::string m_FilePattern;
  bool m_Success{ false };
};
} // namespace lumo

#endif

#ifndef lumoDataNodeFactory_h
#define lumoDataNodeFactory_h

#include "lumoBaseProcess.h"
#include "lumoDataNode.h"

#include <string>

namespace lumo
{
/** Opens a file of any registered type into data nodes: a process object whose outputs are lumo::DataNode
 *  objects, one per data object read (usually one; a reader with several outputs gives several nodes, a reader
 *  without outputs, such as a scene reader that fills a storage, none).
 *
 *  The file type is found in this order:
 *    1. the IO adapters registered as overrides of "lumoIOAdapter" (itk::ObjectFactoryBase::CreateAllInstance),
 *       in ITK's factory order: the first whose CanReadFile answers true makes the reader, which is updated, and
 *       each of its lumo::BaseData outputs becomes a node;
 *    2. images, through ITK's ImageIOFactory (lumo::ReadImageFile);
 *    3. surfaces, by extension: .vtp, .vtk, .stl, .obj (lumo::ReadSurfaceFile);
 *    4. point sets, .mps (lumo::ReadPointSetFile).
 *  Each node gets its data (so the core object factory sets its defaults), the "name" (the file name without
 *  directory and extension: "liver" for ".../liver.nii.gz") and the "path" (the directory of the file).
 *
 *  Errors are itk::ExceptionObject with these descriptions (the readers' own errors pass through unchanged):
 *    "DataNodeFactory: no file name given"
 *    "DataNodeFactory: the file '<name>' does not exist"
 *    "DataNodeFactory: no reader for the file '<name>'"
 *  The existence check is skipped when a prefix or pattern is set (series readers). */
class DataNodeFactory : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(DataNodeFactory);

  using Self = DataNodeFactory;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(DataNodeFactory, BaseProcess);
  itkNewMacro(Self);

  /** Path of the file to open, absolute or relative to the current directory; default "". */
  itkSetStringMacro(FileName);
  itkGetStringMacro(FileName);
  /** Prefix of a file series (series readers only); default "". */
  itkSetStringMacro(FilePrefix);
  itkGetStringMacro(FilePrefix);
  /** printf-style pattern of a file series (series readers only); default "". */
  itkSetStringMacro(FilePattern);
  itkGetStringMacro(FilePattern);

  using Superclass::MakeOutput;
  /** A new lumo::DataNode. */
  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType index) override;

  /** Reads the file unless nothing changed since the last read (change the file name, or call Modified(), to read
   *  again). */
  void
  Update() override;

  /** Output 0 (null when the file gave no node). */
  DataNode *
  GetOutput();
  DataNode *
  GetOutput(DataObjectPointerArraySizeType index);

  /** Whether some registered type reads the file (the order above, without reading). */
  static bool
  CanReadFile(const std::string & fileName, const std::string & filePrefix = "", const std::string & filePattern = "");

protected:
  DataNodeFactory();
  ~DataNodeFactory() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;
  void
  GenerateData() override;
  /** Hands the data objects to output nodes (output count = data count). */
  void
  SetOutputData(const std::vector<BaseData::Pointer> & data);
  /** Called for each new output node after its name and "path" are set and before its data is: a subclass can put
   *  properties on the node that the data's defaults then keep (defaults never replace a property). Does nothing
   *  here. */
  virtual void
  PrepareNode(DataNode * node);

  std::string m_FileName;
  std::string m_FilePrefix;
  std::string m_FilePattern;
};
} // namespace lumo

#endif

#ifndef lumoVesselTreeFileReader_h
#define lumoVesselTreeFileReader_h

#include <itkObjectFactory.h>
#include "lumoFileReader.h"
#include "lumoVesselTreeSource.h"

#include <string>

namespace lumo
{
/** Reads a .ves file into a VesselTreeData (time step 0).
 *
 *  The tree read last is kept in a cache and handed to the output; reading again into a cache that holds a tree
 *  reads nothing, so a reader keeps its first tree until the file name changes (which empties the cache). A file
 *  that cannot be read whole is reported with an itk::ImageFileReaderException and nothing of it is kept. */
class VesselTreeFileReader
  : public VesselTreeSource
  , public FileReader
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeFileReader);

  using Self = VesselTreeFileReader;
  using Superclass = VesselTreeSource;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeFileReader, VesselTreeSource);

  /** The file to read; setting another name empties the tree cache. */
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

  /** True exactly for names ending in ".ves" or ".VES" (other spellings of the case are refused). */
  static bool
  CanReadFile(const std::string & fileName, const std::string & filePrefix, const std::string & filePattern);

  /** The cached tree; null before reading. */
  const ArVesselTree &
  GetTreeCache() const
  {
    return m_TreeCache;
  }

protected:
  VesselTreeFileReader();
  ~VesselTreeFileReader() override;

  /** Reads the file into the tree cache. */
  void
  GenerateOutputInformation() override;
  /** Hands the cached tree to the output. */
  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  void
  ReadFileIntoCache();

  std::string m_FileName;
  std::string m_FilePrefix;
  std::string m_FilePattern;
  ArVesselTree m_TreeCache;
};
} // namespace lumo

#endif

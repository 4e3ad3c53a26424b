#ifndef lumoVesselTreeDataSerializer_h
#define lumoVesselTreeDataSerializer_h

#include "lumoBaseDataSerializer.h"

#include <itkObjectFactory.h>

namespace lumo
{
/** Writes a VesselTreeData for the toolkit's own scene format: a .ves file named
 *  GetUniqueFilenameInWorkingDirectory() + "_" + file name hint + ".ves" in the working directory.
 *
 *  The file is written to working directory + "/" + name: on this platform '/' is the path separator (a backslash
 *  would become part of a file name beside the working directory instead of a separator). Serialize answers the
 *  name relative to the working directory, or "" when the data is not a VesselTreeData (logged as an error) or the
 *  write failed. */
class VesselTreeDataSerializer : public BaseDataSerializer
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeDataSerializer);

  using Self = VesselTreeDataSerializer;
  using Superclass = BaseDataSerializer;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(VesselTreeDataSerializer, BaseDataSerializer);

  std::string
  Serialize() override;

protected:
  VesselTreeDataSerializer();
  ~VesselTreeDataSerializer() override;
};
} // namespace lumo

#endif

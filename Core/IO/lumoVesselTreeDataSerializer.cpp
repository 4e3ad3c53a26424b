#include "lumoVesselTreeDataSerializer.h"

#include "lumoLogger.h"
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeFileWriter.h"

namespace lumo
{
VesselTreeDataSerializer::VesselTreeDataSerializer() = default;

VesselTreeDataSerializer::~VesselTreeDataSerializer() = default;

std::string
VesselTreeDataSerializer::Serialize()
{
  // The writer takes a non-const input; it only reads the tree.
  auto * tree = const_cast<VesselTreeData *>(dynamic_cast<const VesselTreeData *>(m_Data.GetPointer()));
  if (tree == nullptr)
  {
    LUMO_ERROR << "lumo::VesselTreeDataSerializer::Serialize"
               << " Object at " << static_cast<const void *>(m_Data.GetPointer())
               << " is not an lumo::VesselTreeData. Cannot serialize as VesselTreeData.";
    return "";
  }
  const std::string fileName = this->GetUniqueFilenameInWorkingDirectory() + "_" + m_FilenameHint + ".ves";
  const std::string directory = m_WorkingDirectory.empty() ? "." : m_WorkingDirectory;
  try
  {
    VesselTreeFileWriter::Pointer writer = VesselTreeFileWriter::New();
    writer->SetFileName((directory + "/" + fileName).c_str());
    writer->SetInputVesselTree(tree);
    writer->Write();
    return writer->GetSuccess() ? fileName : "";
  }
  catch (const itk::ExceptionObject &)
  {
    return "";
  }
}
} // namespace lumo

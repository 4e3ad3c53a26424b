#include "lumoArboCoreObjectFactory.h"

#include "lumoYetAnotherVesselTreeMapper3D.h"

#include "lumoBoolProperty.h"
#include "lumoCalyxSceneIOReaderFactory.h"
#include "lumoCoreObjectFactory.h"
#include "lumoLogger.h"
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeDataSerializerFactory.h"
#include "lumoVesselTreeFileIOFactory.h"
#include "lumoVesselTreeFileWriter.h"
#include "lumoVesselTreeLookupTable.h"
#include "lumoVesselTreeLookupTableProperty.h"
#include "lumoVesselTreeLookupTablePropertySerializerFactory.h"
#include "lumoVesselTreeToLookupTableFilter.h"

#include <mutex>

namespace lumo
{
namespace
{
// The one-time part of the constructor runs once per process.
std::once_flag g_FirstConstruction;

// The factory of RegisterArboCoreObjectFactory and whether it is registered now.
std::mutex g_RegistrationMutex;
ArboCoreObjectFactory::Pointer g_Factory;
bool g_Registered = false;
} // namespace

ArboCoreObjectFactory::ArboCoreObjectFactory()
{
  m_FileWriters.push_back(VesselTreeFileWriter::New().GetPointer());
  std::call_once(g_FirstConstruction, [this] {
    LUMO_INFO << "ArboCoreObjectFactory c'tor";
    // Scenes (.rs) first, then .ves files; the scene writer finds the colour table's serializer by class name.
    CalyxSceneIOReaderFactory::RegisterOneFactory();
    VesselTreeFileIOFactory::RegisterOneFactory();
    VesselTreeLookupTablePropertySerializerFactory::RegisterOneFactory();
    VesselTreeDataSerializerFactory::RegisterOneFactory();
    this->FillExtensionMaps();
  });
}

ArboCoreObjectFactory::~ArboCoreObjectFactory() = default;

void
ArboCoreObjectFactory::FillExtensionMaps()
{
  const std::pair<const char *, const char *> open[] = {
    { "*.rs", "Scene descriptions" },
    { "*.seq", "VALD Pic" },
    { "*.pic", "VALD Pic" },
    { "*.pic.gz", "VALD Pic" },
    { "*.seq.gz", "VALD Pic" },
    { "*.mhd", "MetaImage" },
    { "*.mps", "Point sets" },
    { "*.stl", "Surface files" },
    { "*.vtk", "Surface files" },
    { "*.vtp", "Surface files" },
    { "*.obj", "Surface files" },
    { "*.stl", "STL files" },
    { "*.vtk", "VTK surface files" },
    { "*.pvtk", "VTK image files" },
    { "*.ves", "Vessel files" },
    { "*.uvg", "Vessel files" },
    { "*.dvg", "Vessel files" },
    { "*.par", "PAR/REC files" },
    { "hpsonos.db", "DSR files" },
    { "HPSONOS.DB", "DSR files" },
    { "*.VOL", "GE US files" },
    { "*.V00", "GE US files" },
    { "*.dcm", "DICOM files" },
    { "*.gdcm", "DICOM files" },
    { "*.dc3", "DICOM files" },
    { "*.ima", "DICOM files" },
    { "*.nii", "NIfTI format" },
    { "*.png", "Sets of 2D slices" },
    { "*.bmp", "Sets of 2D slices" },
    { "*.jpg", "Sets of 2D slices" },
    { "*.jpeg", "Sets of 2D slices" },
    { "*.tiff", "Sets of 2D slices" },
    { "*.tif", "Sets of 2D slices" },
    { "*.nrrd", "Nearly Raw Raster Data" },
    { "*.vti", "VTK Image Data Files" },
    { "*.hdr", "Image Header Files" },
    { "*.gipl", "UMDS GIPL Format Files" },
    { "*.spr", "Stimulate Files" },
    { "*.lsm", "Microscope Images" },
  };
  for (const auto & entry : open)
  {
    m_FileExtensionsMap.emplace(entry.first, entry.second);
  }
  const std::pair<const char *, const char *> save[] = {
    { "*.ves", "Vessel files" },
    { "*.uvg", "Vessel files" },
    { "*.dvg", "Vessel files" },
    { "*.vtp", "Surface Files" },
  };
  for (const auto & entry : save)
  {
    m_SaveFileExtensionsMap.emplace(entry.first, entry.second);
  }
}

itk::Object::Pointer
ArboCoreObjectFactory::CreateMapper(DataNode * node, DataNode::MapperSlotId slot)
{
  if (node == nullptr || slot != DataNode::Standard3D || dynamic_cast<VesselTreeData *>(node->GetData()) == nullptr)
  {
    return nullptr;
  }
  auto mapper = YetAnotherVesselTreeMapper3D::New();
  mapper->SetDataNode(node);
  return mapper.GetPointer();
}

void
ArboCoreObjectFactory::SetDefaultProperties(DataNode * node)
{
  if (node == nullptr)
  {
    return;
  }
  auto * tree = dynamic_cast<VesselTreeData *>(node->GetData());
  if (tree == nullptr)
  {
    return;
  }
  node->SetBoolProperty("visible", true);

  // The filter colours each vessel from the colour scheme; the scheme then carries the per-vessel table, so that the
  // node's property holds both. Data without a tree yet (a node filled later) gets the scheme alone: the filter
  // would only warn.
  VesselTreeLookupTable::Pointer colors = VesselTreeLookupTable::New();
  if (!tree->GetVesselTreeData(0).isNull())
  {
    VesselTreeToLookupTableFilter::Pointer filter = VesselTreeToLookupTableFilter::New();
    filter->SetInput(tree);
    filter->SetLookupTable(colors);
    filter->Update();
    colors->SetVtkLookupTable(filter->GetOutput()->GetVtkLookupTable());
  }
  node->SetProperty("VesselTreeLookupTable", VesselTreeLookupTableProperty::New(colors));

  node->SetProperty("Render skeleton", BoolProperty::New(false));
}

void
ArboCoreObjectFactory::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
}

void
RegisterArboCoreObjectFactory()
{
  std::lock_guard<std::mutex> lock(g_RegistrationMutex);
  if (g_Registered)
  {
    return;
  }
  if (g_Factory.IsNull())
  {
    g_Factory = ArboCoreObjectFactory::New();
  }
  CoreObjectFactory::GetInstance()->RegisterExtraFactory(g_Factory);
  g_Registered = true;
}

void
UnRegisterArboCoreObjectFactory()
{
  std::lock_guard<std::mutex> lock(g_RegistrationMutex);
  if (!g_Registered)
  {
    return;
  }
  CoreObjectFactory::GetInstance()->UnRegisterExtraFactory(g_Factory);
  g_Registered = false;
}
} // namespace lumo

// The toolkit's object factory.

#include "lumoCoreObjectFactory.h"

#include "lumoBoolProperty.h"
#include "lumoColorProperty.h"
#include "lumoFloatProperty.h"
#include "lumoImageWriter.h"
#include "lumoIntProperty.h"
#include "lumoLevelWindowProperty.h"
#include "lumoMaterialProperty.h"
#include "lumoPointSetWriter.h"
#include "lumoSurfaceWriter.h"

#include <algorithm>

namespace lumo
{
namespace
{
/** Adds the pairs of extra that target does not hold yet. */
void
MergeExtensions(CoreObjectFactoryBase::MultimapType & target, const CoreObjectFactoryBase::MultimapType & extra)
{
  for (const auto & entry : extra)
  {
    const auto range = target.equal_range(entry.first);
    const bool present =
      std::any_of(range.first, range.second, [&](const auto & existing) { return existing.second == entry.second; });
    if (!present)
    {
      target.insert(entry);
    }
  }
}
} // namespace

CoreObjectFactory *
CoreObjectFactory::GetInstance()
{
  static CoreObjectFactory::Pointer instance = [] {
    CoreObjectFactory::Pointer factory = new CoreObjectFactory;
    factory->UnRegister();
    return factory;
  }();
  return instance;
}

CoreObjectFactory::CoreObjectFactory()
{
  const std::pair<const char *, const char *> open[] = {
    { "*.nrrd", "Nearly Raw Raster Data" },
    { "*.nii", "NIfTI format" },
    { "*.nii.gz", "NIfTI format" },
    { "*.mhd", "MetaImage" },
    { "*.mha", "MetaImage" },
    { "*.gipl", "UMDS GIPL Format Files" },
    { "*.gipl.gz", "UMDS GIPL Format Files" },
    { "*.png", "Sets of 2D slices" },
    { "*.jpg", "Sets of 2D slices" },
    { "*.jpeg", "Sets of 2D slices" },
    { "*.tif", "Sets of 2D slices" },
    { "*.tiff", "Sets of 2D slices" },
    { "*.bmp", "Sets of 2D slices" },
    { "*.vtp", "Surface files" },
    { "*.vtk", "Surface files" },
    { "*.stl", "Surface files" },
    { "*.obj", "Surface files" },
    { "*.mps", "Point sets" },
  };
  for (const auto & entry : open)
  {
    m_FileExtensionsMap.emplace(entry.first, entry.second);
  }
  const std::pair<const char *, const char *> save[] = {
    { "*.nrrd", "Nearly Raw Raster Data" },
    { "*.nii", "NIfTI format" },
    { "*.nii.gz", "NIfTI format" },
    { "*.mhd", "MetaImage" },
    { "*.mha", "MetaImage" },
    { "*.gipl", "UMDS GIPL Format Files" },
    { "*.vtp", "Surface files" },
    { "*.vtk", "Surface files" },
    { "*.stl", "Surface files" },
    { "*.mps", "Point sets" },
  };
  for (const auto & entry : save)
  {
    m_SaveFileExtensionsMap.emplace(entry.first, entry.second);
  }
  m_FileWriters.push_back(ImageWriter::New().GetPointer());
  m_FileWriters.push_back(SurfaceWriter::New().GetPointer());
  m_FileWriters.push_back(PointSetWriter::New().GetPointer());
}

CoreObjectFactory::~CoreObjectFactory() = default;

void
CoreObjectFactory::RegisterExtraFactory(CoreObjectFactoryBase * factory)
{
  if (!factory)
  {
    return;
  }
  for (const auto & registered : m_ExtraFactories)
  {
    if (registered == factory)
    {
      return;
    }
  }
  m_ExtraFactories.emplace_back(factory);
  this->Modified();
}

void
CoreObjectFactory::UnRegisterExtraFactory(CoreObjectFactoryBase * factory)
{
  const auto end = std::remove_if(m_ExtraFactories.begin(),
                                  m_ExtraFactories.end(),
                                  [&](const CoreObjectFactoryBase::Pointer & p) { return p == factory; });
  if (end != m_ExtraFactories.end())
  {
    m_ExtraFactories.erase(end, m_ExtraFactories.end());
    this->Modified();
  }
}

std::vector<CoreObjectFactoryBase *>
CoreObjectFactory::GetExtraFactories() const
{
  std::vector<CoreObjectFactoryBase *> result;
  for (const auto & factory : m_ExtraFactories)
  {
    result.push_back(factory);
  }
  return result;
}

itk::Object::Pointer
CoreObjectFactory::CreateMapper(DataNode * node, DataNode::MapperSlotId slot)
{
  if (!node)
  {
    return nullptr;
  }
  // A copy: a factory may (un)register factories while it is asked.
  const std::vector<CoreObjectFactoryBase::Pointer> extras = m_ExtraFactories;
  for (const auto & factory : extras)
  {
    itk::Object::Pointer mapper = factory->CreateMapper(node, slot);
    if (mapper.IsNotNull())
    {
      return mapper;
    }
  }
  return nullptr;
}

void
CoreObjectFactory::SetDefaultProperties(DataNode * node)
{
  if (!node || !node->GetData())
  {
    return;
  }
  BaseData * data = node->GetData();
  node->AddProperty("visible", BoolProperty::New(true));
  node->AddProperty("layer", IntProperty::New(0));
  node->AddProperty("opacity", FloatProperty::New(1.0f));
  if (auto * image = dynamic_cast<Image *>(data))
  {
    node->AddProperty("color", ColorProperty::New(1.0f, 1.0f, 1.0f));
    node->AddProperty("binary", BoolProperty::New(false));
    // The default level window scans every voxel for the range: not done when the node already has one (a
    // scene's saved level window), which the default would not replace anyway.
    if (node->GetProperty("levelwindow") == nullptr)
    {
      double minimum = 0.0;
      double maximum = 255.0;
      LevelWindow levelWindow;
      if (image->GetScalarRange(minimum, maximum))
      {
        levelWindow.SetRangeMinMax(minimum, maximum);
        levelWindow.SetWindowBounds(minimum, maximum);
        levelWindow.SetDefaultLevelWindow(levelWindow.GetLevel(), levelWindow.GetWindow());
      }
      node->AddProperty("levelwindow", LevelWindowProperty::New(levelWindow));
    }
  }
  else if (dynamic_cast<Surface *>(data))
  {
    node->AddProperty("color", ColorProperty::New(1.0f, 1.0f, 1.0f));
    node->AddProperty("material", MaterialProperty::New());
    node->AddProperty("line width", FloatProperty::New(1.0f));
    node->AddProperty("scalar visibility", BoolProperty::New(false));
  }
  else if (dynamic_cast<PointSet *>(data))
  {
    node->AddProperty("color", ColorProperty::New(1.0f, 0.0f, 0.0f));
    node->AddProperty("pointsize", FloatProperty::New(1.0f));
    node->AddProperty("show points", BoolProperty::New(true));
    node->AddProperty("show contour", BoolProperty::New(false));
    node->AddProperty("close contour", BoolProperty::New(false));
  }
  const std::vector<CoreObjectFactoryBase::Pointer> extras = m_ExtraFactories;
  for (const auto & factory : extras)
  {
    factory->SetDefaultProperties(node);
  }
}

std::string
CoreObjectFactory::GetFileExtensions()
{
  return CreateFileExtensions(this->GetFileExtensionsMap());
}

CoreObjectFactory::MultimapType
CoreObjectFactory::GetFileExtensionsMap()
{
  MultimapType all = m_FileExtensionsMap;
  for (const auto & factory : m_ExtraFactories)
  {
    MergeExtensions(all, factory->GetFileExtensionsMap());
  }
  return all;
}

std::string
CoreObjectFactory::GetSaveFileExtensions()
{
  return CreateFileExtensions(this->GetSaveFileExtensionsMap());
}

CoreObjectFactory::MultimapType
CoreObjectFactory::GetSaveFileExtensionsMap()
{
  MultimapType all = m_SaveFileExtensionsMap;
  for (const auto & factory : m_ExtraFactories)
  {
    MergeExtensions(all, factory->GetSaveFileExtensionsMap());
  }
  return all;
}

CoreObjectFactory::FileWriterList
CoreObjectFactory::GetFileWriters()
{
  FileWriterList all = m_FileWriters;
  for (const auto & factory : m_ExtraFactories)
  {
    const FileWriterList extra = factory->GetFileWriters();
    all.insert(all.end(), extra.begin(), extra.end());
  }
  return all;
}

void
CoreObjectFactory::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "ExtraFactories: " << m_ExtraFactories.size() << std::endl;
}
} // namespace lumo

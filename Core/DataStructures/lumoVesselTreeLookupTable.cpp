#include "lumoVesselTreeLookupTable.h"

#include "VesselLabels.h"

#include <cstdlib>

namespace lumo
{
namespace
{
VesselTreeLookupTable::ColorType
rgba(double r, double g, double b, double a)
{
  VesselTreeLookupTable::ColorType color;
  color.Set(r, g, b, a);
  return color;
}
} // namespace

VesselTreeLookupTable::VesselTreeLookupTable()
  : m_SharedMaterialProperties(Material::New())
{
  // A fixed seed: the default segment and status colours are the same in every run.
  std::srand(2);
  InitializeColors();
}

VesselTreeLookupTable::~VesselTreeLookupTable() = default;

void
VesselTreeLookupTable::InitializeColors()
{
  m_ColorForActive = rgba(1, 1, 0, 1);
  m_ColorForInvisible = rgba(0, 0, 0, 0);
  m_ColorForUnknown = rgba(1, 1, 1, 1);
  m_ColorByType = { rgba(0.6, 0.6, 0.6, 1.0),
                    rgba(0.2, 0.54, 1.0, 1.0),
                    rgba(0.5, 0.09, 0.72, 1.0),
                    rgba(0.66, 0.0, 0.0, 1.0),
                    rgba(0.34, 0.5, 0.09, 1.0) };
  m_ColorBySegment.assign(28, ColorType());
  m_ColorBySegment[0] = rgba(1, 1, 1, 1);
  for (std::size_t i = 1; i < m_ColorBySegment.size(); ++i)
  {
    m_ColorBySegment[i] = GenerateRandomColor();
  }
  m_ColorByResectionStatus.assign(5, ColorType());
  for (ColorType & color : m_ColorByResectionStatus)
  {
    color = GenerateRandomColor();
  }
}

VesselTreeLookupTable::ColorType
VesselTreeLookupTable::GenerateRandomColor()
{
  const double red = GenerateRandomNumber();
  const double green = GenerateRandomNumber();
  const double blue = GenerateRandomNumber();
  return rgba(red, green, blue, 1.0);
}

double
VesselTreeLookupTable::GenerateRandomNumber()
{
  // The colours are meant for a generator of 15 random bits (0 to 32767); the low 15 bits of a wider generator
  // keep every component between 0 and 1.
  return static_cast<double>(std::rand() & 0x7FFF) / 32767.0;
}

VesselTreeLookupTable::ColorType
VesselTreeLookupTable::GetColorForActive() const
{
  return m_ColorForActive;
}

void
VesselTreeLookupTable::SetColorForActive(ColorType color)
{
  if (color != m_ColorForActive)
  {
    m_ColorForActive = color;
    this->Modified();
  }
}

VesselTreeLookupTable::ColorType
VesselTreeLookupTable::GetColorForInvisible() const
{
  return m_ColorForInvisible;
}

void
VesselTreeLookupTable::SetColorForInvisible(ColorType color)
{
  if (color != m_ColorForInvisible)
  {
    m_ColorForInvisible = color;
    this->Modified();
  }
}

VesselTreeLookupTable::ColorType
VesselTreeLookupTable::GetColorForUnknown() const
{
  return m_ColorForUnknown;
}

void
VesselTreeLookupTable::SetColorForUnknown(ColorType color)
{
  if (color != m_ColorForUnknown)
  {
    m_ColorForUnknown = color;
    this->Modified();
  }
}

VesselTreeLookupTable::ColorVectorType
VesselTreeLookupTable::GetColorByType() const
{
  return m_ColorByType;
}

void
VesselTreeLookupTable::SetColorByType(const ColorVectorType & colors)
{
  m_ColorByType = colors;
  this->Modified();
}

VesselTreeLookupTable::ColorVectorType
VesselTreeLookupTable::GetColorBySegment() const
{
  return m_ColorBySegment;
}

void
VesselTreeLookupTable::SetColorBySegment(const ColorVectorType & colors)
{
  m_ColorBySegment = colors;
  this->Modified();
}

VesselTreeLookupTable::ColorVectorType
VesselTreeLookupTable::GetColorByResectionStatus() const
{
  return m_ColorByResectionStatus;
}

void
VesselTreeLookupTable::SetColorByResectionStatus(const ColorVectorType & colors)
{
  m_ColorByResectionStatus = colors;
  this->Modified();
}

Material *
VesselTreeLookupTable::GetSharedMaterialProperties() const
{
  return m_SharedMaterialProperties;
}

void
VesselTreeLookupTable::SetSharedMaterialProperties(Material * material)
{
  if (material != m_SharedMaterialProperties.GetPointer())
  {
    m_SharedMaterialProperties = material;
    this->Modified();
  }
}

VesselTreeLookupTable::Layout
VesselTreeLookupTable::AllColorsLayout()
{
  Layout layout;
  for (int type = 0; type <= 4; ++type)
  {
    layout.emplace_back(Slot::Type, type);
  }
  for (int segment = 2; segment <= 27; ++segment)
  {
    layout.emplace_back(Slot::Segment, segment);
  }
  for (int status = 1; status <= 4; ++status)
  {
    layout.emplace_back(Slot::Status, status);
  }
  return layout;
}

VesselTreeLookupTable::Layout
VesselTreeLookupTable::SystemLayout(std::int32_t type)
{
  Layout layout{ { Slot::Active, 0 }, { Slot::Type, 0 }, { Slot::Type, type } };
  if (type == PortalVein)
  {
    // The portal materials stop at segment 10 (S_VIII): S_All has no vessels of its own.
    for (int segment = 2; segment <= 10; ++segment)
    {
      layout.emplace_back(Slot::Segment, segment);
    }
  }
  else if (type == HepaticVein)
  {
    for (int segment = 12; segment <= 27; ++segment)
    {
      layout.emplace_back(Slot::Segment, segment);
    }
  }
  return layout;
}

VesselTreeLookupTable::ColorType *
VesselTreeLookupTable::ColorOf(Slot slot, int index)
{
  ColorVectorType * colors = nullptr;
  switch (slot)
  {
    case Slot::Active:
      return &m_ColorForActive;
    case Slot::Type:
      colors = &m_ColorByType;
      break;
    case Slot::Segment:
      colors = &m_ColorBySegment;
      break;
    case Slot::Status:
      colors = &m_ColorByResectionStatus;
      break;
  }
  if (index < 0 || static_cast<std::size_t>(index) >= colors->size())
  {
    return nullptr;
  }
  return &(*colors)[index];
}

VesselTreeLookupTable::MaterialVectorType::Pointer
VesselTreeLookupTable::ToMaterials(const Layout & layout) const
{
  auto materials = MaterialVectorType::New();
  auto * self = const_cast<VesselTreeLookupTable *>(this);
  for (const auto & [slot, index] : layout)
  {
    const ColorType * color = self->ColorOf(slot, index);
    const ColorType value = color != nullptr ? *color : m_ColorForUnknown;
    auto material = Material::New();
    material->Initialize(*m_SharedMaterialProperties);
    material->SetColor(static_cast<float>(value[0]), static_cast<float>(value[1]), static_cast<float>(value[2]));
    material->SetOpacity(value[3]);
    switch (slot)
    {
      case Slot::Active:
        material->SetName("Active");
        break;
      case Slot::Type:
        material->SetName(VesselLabels::bloodVesselTypeName(index));
        break;
      case Slot::Segment:
        material->SetName(VesselLabels::segmentTypeName(index));
        break;
      case Slot::Status:
        material->SetName(VesselLabels::resectionStatusName(index));
        break;
    }
    materials->InsertElement(materials->Size(), material);
  }
  return materials;
}

void
VesselTreeLookupTable::FromMaterials(const Layout & layout,
                                     const MaterialVectorType * materials,
                                     const char * sizeMessageEnd)
{
  const std::size_t count = materials != nullptr ? materials->Size() : 0;
  if (count != layout.size())
  {
    itkWarningMacro("Size of material vector is not as expected (" << count << sizeMessageEnd);
  }
  // Whatever is there is read, in the layout's order.
  for (std::size_t i = 0; i < count && i < layout.size(); ++i)
  {
    const Material * material = materials->ElementAt(static_cast<unsigned int>(i));
    ColorType * color = ColorOf(layout[i].first, layout[i].second);
    if (material == nullptr || color == nullptr)
    {
      continue;
    }
    const Color rgb = material->GetColor();
    color->Set(rgb[0], rgb[1], rgb[2], material->GetOpacity());
  }
  this->Modified();
}

VesselTreeLookupTable::MaterialVectorType::Pointer
VesselTreeLookupTable::GetColorsAsMaterialProperties() const
{
  return ToMaterials(AllColorsLayout());
}

void
VesselTreeLookupTable::SetColorsFromMaterialProperties(const MaterialVectorType * materials)
{
  FromMaterials(AllColorsLayout(),
                materials,
                " instead of 35)!. Maybe you are reading a scene file created with an older version of LUMO? Trying "
                "to continue...");
}

VesselTreeLookupTable::MaterialVectorType::Pointer
VesselTreeLookupTable::GetColorsAsMaterialProperties(std::int32_t type) const
{
  switch (type)
  {
    case PortalVein:
      return GetPortalVeinColorsAsMaterialProperties();
    case HepaticVein:
      return GetHepaticVeinColorsAsMaterialProperties();
    case Artery:
      return GetArteryColorsAsMaterialProperties();
    case BileDuct:
      return GetBileDuctColorsAsMaterialProperties();
    default:
      return GetColorsAsMaterialProperties();
  }
}

void
VesselTreeLookupTable::SetColorsFromMaterialProperties(std::int32_t type, const MaterialVectorType * materials)
{
  switch (type)
  {
    case PortalVein:
      SetPortalVeinColorsFromMaterialProperties(materials);
      break;
    case HepaticVein:
      SetHepaticVeinColorsFromMaterialProperties(materials);
      break;
    case Artery:
      SetArteryColorsFromMaterialProperties(materials);
      break;
    case BileDuct:
      SetBileDuctColorsFromMaterialProperties(materials);
      break;
    default:
      SetColorsFromMaterialProperties(materials);
      break;
  }
}

VesselTreeLookupTable::MaterialVectorType::Pointer
VesselTreeLookupTable::GetPortalVeinColorsAsMaterialProperties() const
{
  return ToMaterials(SystemLayout(PortalVein));
}

void
VesselTreeLookupTable::SetPortalVeinColorsFromMaterialProperties(const MaterialVectorType * materials)
{
  FromMaterials(SystemLayout(PortalVein), materials, " instead of 12)!.");
}

VesselTreeLookupTable::MaterialVectorType::Pointer
VesselTreeLookupTable::GetHepaticVeinColorsAsMaterialProperties() const
{
  return ToMaterials(SystemLayout(HepaticVein));
}

void
VesselTreeLookupTable::SetHepaticVeinColorsFromMaterialProperties(const MaterialVectorType * materials)
{
  FromMaterials(SystemLayout(HepaticVein), materials, " instead of 19)!.");
}

VesselTreeLookupTable::MaterialVectorType::Pointer
VesselTreeLookupTable::GetArteryColorsAsMaterialProperties() const
{
  return ToMaterials(SystemLayout(Artery));
}

void
VesselTreeLookupTable::SetArteryColorsFromMaterialProperties(const MaterialVectorType * materials)
{
  FromMaterials(SystemLayout(Artery), materials, " instead of 3)!.");
}

VesselTreeLookupTable::MaterialVectorType::Pointer
VesselTreeLookupTable::GetBileDuctColorsAsMaterialProperties() const
{
  return ToMaterials(SystemLayout(BileDuct));
}

void
VesselTreeLookupTable::SetBileDuctColorsFromMaterialProperties(const MaterialVectorType * materials)
{
  FromMaterials(SystemLayout(BileDuct), materials, " instead of 3)!.");
}

bool
VesselTreeLookupTable::operator==(const LookupTable & other) const
{
  const auto * table = dynamic_cast<const VesselTreeLookupTable *>(&other);
  if (table == nullptr)
  {
    return Superclass::operator==(other);
  }
  return m_ColorForActive == table->m_ColorForActive && m_ColorForInvisible == table->m_ColorForInvisible &&
         m_ColorForUnknown == table->m_ColorForUnknown && m_ColorByType == table->m_ColorByType &&
         m_ColorBySegment == table->m_ColorBySegment && m_ColorByResectionStatus == table->m_ColorByResectionStatus;
}

LookupTable &
VesselTreeLookupTable::operator=(const LookupTable & other)
{
  const auto * table = dynamic_cast<const VesselTreeLookupTable *>(&other);
  if (table == nullptr)
  {
    return Superclass::operator=(other);
  }
  if (table != this)
  {
    Superclass::operator=(other);
    m_ColorForActive = table->m_ColorForActive;
    m_ColorForInvisible = table->m_ColorForInvisible;
    m_ColorForUnknown = table->m_ColorForUnknown;
    m_ColorByType = table->m_ColorByType;
    m_ColorBySegment = table->m_ColorBySegment;
    m_ColorByResectionStatus = table->m_ColorByResectionStatus;
    m_SharedMaterialProperties = table->m_SharedMaterialProperties;
    this->Modified();
  }
  return *this;
}

void
VesselTreeLookupTable::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "ColorForActive: " << m_ColorForActive << std::endl;
  os << indent << "ColorForInvisible: " << m_ColorForInvisible << std::endl;
  os << indent << "ColorForUnknown: " << m_ColorForUnknown << std::endl;
  os << indent << "Colours by type, segment, resection status: " << m_ColorByType.size() << ", "
     << m_ColorBySegment.size() << ", " << m_ColorByResectionStatus.size() << std::endl;
}
} // namespace lumo

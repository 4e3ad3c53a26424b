#include "lumoResectionProposalDescriptorProperty.h"

#include "lumoLogger.h"

#include <locale>
#include <sstream>

namespace lumo
{
bool
ResectionProposalDescriptorProperty::LabelDescriptor::operator==(const LabelDescriptor & other) const
{
  return Label == other.Label && Name == other.Name && ResectionType == other.ResectionType && Volume == other.Volume &&
         SurfaceOutputIndex == other.SurfaceOutputIndex && Color == other.Color;
}

ResectionProposalDescriptorProperty::ResectionProposalDescriptorProperty() = default;

ResectionProposalDescriptorProperty::~ResectionProposalDescriptorProperty() = default;

void
ResectionProposalDescriptorProperty::SetResectionProposalName(const char * name)
{
  this->SetResectionProposalName(std::string(name != nullptr ? name : ""));
}

void
ResectionProposalDescriptorProperty::SetResectionProposalName(const std::string & name)
{
  if (m_ResectionProposalName != name)
  {
    m_ResectionProposalName = name;
    this->Modified();
  }
}

void
ResectionProposalDescriptorProperty::AddLabelDescriptor(const LabelDescriptor & descriptor)
{
  if (m_LabelDescriptorSet.insert(descriptor).second)
  {
    this->Modified();
  }
}

ResectionProposalDescriptorProperty::LabelSetType
ResectionProposalDescriptorProperty::GetLabelSet() const
{
  LabelSetType labels;
  for (const LabelDescriptor & descriptor : m_LabelDescriptorSet)
  {
    labels.insert(labels.end(), descriptor.Label);
  }
  return labels;
}

const ResectionProposalDescriptorProperty::LabelDescriptor &
ResectionProposalDescriptorProperty::GetLabelDescriptor(int label) const
{
  LabelDescriptor key;
  key.Label = label;
  const auto found = m_LabelDescriptorSet.find(key);
  if (found != m_LabelDescriptorSet.end())
  {
    return *found;
  }
  LUMO_ERROR << "lumo::ResectionProposalDescriptorProperty::GetLabelDescriptor: label descriptor for label not found";
  // Callers read fields of the answer; a shared default keeps the reference valid.
  static const LabelDescriptor missing{};
  return missing;
}

std::string
ResectionProposalDescriptorProperty::GetLabelName(int label) const
{
  return this->GetLabelDescriptor(label).Name;
}

ResectionProposalDescriptorProperty::ResectionType
ResectionProposalDescriptorProperty::GetResectionType(int label) const
{
  return this->GetLabelDescriptor(label).ResectionType;
}

float
ResectionProposalDescriptorProperty::GetVolume(int label) const
{
  return this->GetLabelDescriptor(label).Volume;
}

Color
ResectionProposalDescriptorProperty::GetColor(int label) const
{
  return this->GetLabelDescriptor(label).Color;
}

int
ResectionProposalDescriptorProperty::GetLabelForSurfaceIndex(int index) const
{
  for (const LabelDescriptor & descriptor : m_LabelDescriptorSet)
  {
    if (descriptor.SurfaceOutputIndex == index)
    {
      return descriptor.Label;
    }
  }
  return -1;
}

std::string
ResectionProposalDescriptorProperty::GetValueAsString() const
{
  // The classic locale keeps the decimal point whatever the process's global locale is.
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << "Resection proposal: " << m_ResectionProposalName << "\n Number of labels: " << m_LabelDescriptorSet.size()
       << "\n";
  for (const LabelDescriptor & descriptor : m_LabelDescriptorSet)
  {
    text << "Label " << descriptor.Name << ": "
         << "Label = " << descriptor.Label << ", ResectionType = " << static_cast<int>(descriptor.ResectionType)
         << ", Volume = " << descriptor.Volume << "\n";
  }
  return text.str();
}

bool
ResectionProposalDescriptorProperty::IsEqual(const BaseProperty & other) const
{
  const auto * property = dynamic_cast<const Self *>(&other);
  if (property == nullptr)
  {
    return false;
  }
  return m_ResectionProposalName == property->m_ResectionProposalName &&
         m_LabelDescriptorSet == property->m_LabelDescriptorSet;
}

bool
ResectionProposalDescriptorProperty::Assign(const BaseProperty & other)
{
  const auto * property = dynamic_cast<const Self *>(&other);
  if (property == nullptr)
  {
    return false;
  }
  if (!this->IsEqual(*property))
  {
    m_ResectionProposalName = property->m_ResectionProposalName;
    m_LabelDescriptorSet = property->m_LabelDescriptorSet;
    this->Modified();
  }
  return true;
}

void
ResectionProposalDescriptorProperty::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "ResectionProposalName: " << m_ResectionProposalName << std::endl;
  os << indent << "NumberOfLabels: " << m_LabelDescriptorSet.size() << std::endl;
}
} // namespace lumo

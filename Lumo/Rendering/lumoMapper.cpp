#include "lumoMapper.h"

#include "lumoBaseRenderer.h"

namespace lumo
{
void
Mapper::SetDataNode(DataNode * node)
{
  if (m_DataNode.GetPointer() != node)
  {
    m_DataNode = node;
    this->Modified();
  }
}

BaseData *
Mapper::GetData() const
{
  const DataNode * node = m_DataNode.GetPointer();
  return node ? node->GetData() : nullptr;
}

void
Mapper::Update(BaseRenderer * renderer)
{
  const BaseData * data = this->GetData();
  if (data != nullptr && data->GetMTime() > m_GenerateTime.GetMTime())
  {
    ++m_GenerateDataCount;
    this->GenerateData();
    m_GenerateTime.Modified();
  }
  this->GenerateDataForRenderer(renderer);
}

bool
Mapper::IsVisible(const BaseRenderer * renderer, const std::string & name) const
{
  const DataNode * node = m_DataNode.GetPointer();
  if (node == nullptr)
  {
    return true;
  }
  return node->IsVisible(renderer ? renderer->GetName() : std::string(), name, true);
}

void
Mapper::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "DataNode: " << m_DataNode.GetPointer() << '\n';
  os << indent << "GenerateDataCount: " << m_GenerateDataCount << '\n';
}
} // namespace lumo

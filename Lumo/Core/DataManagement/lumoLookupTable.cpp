// The colour lookup table.

#include "lumoLookupTable.h"

#include <vtkLookupTable.h>

namespace lumo
{
LookupTable::LookupTable()
  : m_LookupTable(vtkLookupTable::New())
{
  m_LookupTable->SetTableRange(0.0, 255.0);
  m_LookupTable->Build();
}

LookupTable::~LookupTable()
{
  m_LookupTable->Delete();
}

void
LookupTable::SetVtkLookupTable(vtkLookupTable * table)
{
  if (!table || table == m_LookupTable)
  {
    return;
  }
  table->Register(nullptr);
  m_LookupTable->Delete();
  m_LookupTable = table;
  this->Modified();
}

long long
LookupTable::GetNumberOfColors() const
{
  return m_LookupTable->GetNumberOfTableValues();
}

void
LookupTable::GetTableValue(long long index, double rgba[4]) const
{
  m_LookupTable->GetTableValue(static_cast<vtkIdType>(index), rgba);
}

void
LookupTable::SetTableValue(long long index, const double rgba[4])
{
  m_LookupTable->SetTableValue(static_cast<vtkIdType>(index), rgba[0], rgba[1], rgba[2], rgba[3]);
  this->Modified();
}

void
LookupTable::ChangeOpacity(long long index, double opacity)
{
  if (index < 0 || index >= this->GetNumberOfColors())
  {
    return;
  }
  double rgba[4];
  m_LookupTable->GetTableValue(static_cast<vtkIdType>(index), rgba);
  rgba[3] = opacity;
  m_LookupTable->SetTableValue(static_cast<vtkIdType>(index), rgba);
  this->Modified();
}

void
LookupTable::ChangeOpacityForAll(double opacity)
{
  const long long count = this->GetNumberOfColors();
  for (long long i = 0; i < count; ++i)
  {
    double rgba[4];
    m_LookupTable->GetTableValue(static_cast<vtkIdType>(i), rgba);
    rgba[3] = opacity;
    m_LookupTable->SetTableValue(static_cast<vtkIdType>(i), rgba);
  }
  this->Modified();
}

bool
LookupTable::operator==(const LookupTable & other) const
{
  if (m_LookupTable == other.m_LookupTable)
  {
    return true;
  }
  const long long count = this->GetNumberOfColors();
  if (count != other.GetNumberOfColors())
  {
    return false;
  }
  const double * range = m_LookupTable->GetTableRange();
  const double * otherRange = other.m_LookupTable->GetTableRange();
  if (range[0] != otherRange[0] || range[1] != otherRange[1])
  {
    return false;
  }
  for (long long i = 0; i < count; ++i)
  {
    double a[4];
    double b[4];
    this->GetTableValue(i, a);
    other.GetTableValue(i, b);
    for (int c = 0; c < 4; ++c)
    {
      if (a[c] != b[c])
      {
        return false;
      }
    }
  }
  return true;
}

LookupTable &
LookupTable::operator=(const LookupTable & other)
{
  if (this != &other)
  {
    m_LookupTable->DeepCopy(other.m_LookupTable);
    this->Modified();
  }
  return *this;
}

itk::LightObject::Pointer
LookupTable::InternalClone() const
{
  itk::LightObject::Pointer clone = this->CreateAnother();
  auto * table = dynamic_cast<LookupTable *>(clone.GetPointer());
  if (table)
  {
    *table = *this;
  }
  return clone;
}

void
LookupTable::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "NumberOfColors: " << this->GetNumberOfColors() << std::endl;
}
} // namespace lumo

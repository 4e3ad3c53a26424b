// Base of the lookup table sources.

#include "lumoLookupTableSource.h"

#include "lumoLookupTable.h"

namespace lumo
{
LookupTableSource::LookupTableSource()
{
  this->SetNumberOfRequiredOutputs(1);
  this->SetNthOutput(0, this->MakeOutput(0));
}

itk::DataObject::Pointer
LookupTableSource::MakeOutput(DataObjectPointerArraySizeType)
{
  return LookupTable::New().GetPointer();
}

LookupTable *
LookupTableSource::GetOutput()
{
  return dynamic_cast<LookupTable *>(this->GetPrimaryOutput());
}

LookupTable *
LookupTableSource::GetOutput(DataObjectPointerArraySizeType index)
{
  return dynamic_cast<LookupTable *>(this->itk::ProcessObject::GetOutput(index));
}

void
LookupTableSource::GenerateData()
{}
} // namespace lumo

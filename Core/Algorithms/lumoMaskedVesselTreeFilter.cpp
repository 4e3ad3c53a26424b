#include "lumoMaskedVesselTreeFilter.h"

namespace lumo
{
MaskedVesselTreeFilter::MaskedVesselTreeFilter()
{
  this->SetNumberOfRequiredInputs(2);
}

MaskedVesselTreeFilter::~MaskedVesselTreeFilter() = default;

void
MaskedVesselTreeFilter::SetMask(const Image * mask)
{
  this->SetNthInput(1, const_cast<Image *>(mask));
}

const Image *
MaskedVesselTreeFilter::GetMask()
{
  return dynamic_cast<const Image *>(this->ProcessObject::GetInput(1));
}

void
MaskedVesselTreeFilter::GenerateData()
{
  const VesselTreeData * input = this->GetInput();
  const Image * mask = this->GetMask();
  if (input == nullptr || mask == nullptr)
  {
    itkWarningMacro("a vessel tree and a mask are needed");
    return;
  }
  const MaskCrossSection sections(mask);
  if (!sections.IsValid())
  {
    itkWarningMacro("the mask must be a 3-D unsigned 8-bit image; " << this->GetNameOfWhatIsRefined() << " are kept");
    this->GetOutput()->Graft(input);
    return;
  }
  ArVesselTree tree = cloneVesselTree(input->GetVesselTreeData(0));
  if (!tree.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
    while (it->hasNext())
    {
      ar<Vessel> vessel = it->next();
      if (!vessel.isNull())
      {
        this->RefineVessel(tree, vessel, sections);
      }
    }
  }
  this->GetOutput()->SetVesselTreeData(tree, 0);
}
} // namespace lumo

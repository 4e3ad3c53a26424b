#include "lumoCalyxDataNodeFactory.h"

namespace lumo
{
CalyxDataNodeFactory::CalyxDataNodeFactory() = default;

CalyxDataNodeFactory::~CalyxDataNodeFactory() = default;

void
CalyxDataNodeFactory::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
}
} // namespace lumo

#include "arboSupplyAreas.h"

#include "arboError.h"

#include "VesselLabels.h"

#include <itkCommand.h>
#include <itkEventObject.h>

#include <stdexcept>

namespace arbo
{
using Calculator = lumo::VascularSupplyAreasCalculator;

const std::vector<std::pair<std::string, SupplyMode>> &
supplyModes()
{
  static const std::vector<std::pair<std::string, SupplyMode>> table{
    { "portal-defined-segments", Calculator::PortalDefinedSegments },
    { "portal-segments", Calculator::PortalSegments },
    { "hepatic-defined-segments", Calculator::HepaticDefinedSegments },
    { "hepatic-segments", Calculator::HepaticSegments },
    { "all-vessels-segments", Calculator::AllVesselsSegments },
    { "all-vessels-types", Calculator::AllVesselsTypes },
    { "portal-resection-status", Calculator::PortalResectionStatus },
    { "portal-defined-resection-status", Calculator::PortalDefinedResectionStatus },
    { "hepatic-resection-status", Calculator::HepaticResectionStatus },
    { "hepatic-defined-resection-status", Calculator::HepaticDefinedResectionStatus },
  };
  return table;
}

std::string
supplyLabelName(SupplyMode mode, std::uint32_t label)
{
  if (label == 0)
  {
    return "no supplying vessel";
  }
  const auto value = static_cast<std::int32_t>(label);
  if (mode == Calculator::AllVesselsTypes)
  {
    return VesselLabels::bloodVesselTypeName(value - 1);
  }
  if (mode >= Calculator::PortalResectionStatus)
  {
    return VesselLabels::resectionStatusName(value);
  }
  return VesselLabels::segmentTypeName(value);
}

lumo::Image::Pointer
computeSupplyAreas(lumo::Image * organ,
                   lumo::VesselTreeData * tree,
                   SupplyMode mode,
                   unsigned int threads,
                   const std::string & organName,
                   const std::string & treeName,
                   const std::string & modeName,
                   itk::Command * observer)
{
  auto calculator = Calculator::New();
  calculator->SetOrganSegmentation(organ);
  calculator->SetVesselTree(tree);
  calculator->SetCalculationMode(mode);
  if (threads > 0)
  {
    calculator->SetNumberOfWorkUnits(threads);
  }
  if (observer != nullptr)
  {
    calculator->AddObserver(itk::ProgressEvent(), observer);
  }
  try
  {
    calculator->Update();
  }
  catch (const itk::ExceptionObject & e)
  {
    // Problems of the organ image come first in the calculator; the rest concern the tree.
    const std::string what = e.GetDescription();
    const bool organProblem = what.rfind("Organ", 0) == 0 || what.rfind("No valid organ", 0) == 0;
    throw Error(organProblem ? organName : treeName, what);
  }
  catch (const std::runtime_error & e)
  {
    std::string what = e.what();
    if (what.find("theList->size() == 0") != std::string::npos)
    {
      what += " (no vessel of the tree takes part in mode " + modeName + ")";
    }
    throw Error(treeName, what);
  }
  lumo::Image::Pointer areas = calculator->GetOutput();
  return areas;
}
} // namespace arbo

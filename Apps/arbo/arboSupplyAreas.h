#ifndef arboSupplyAreas_h
#define arboSupplyAreas_h

#include "lumoImage.h"
#include "lumoVascularSupplyAreasCalculator.h"
#include "lumoVesselTreeData.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace itk
{
class Command;
}

namespace arbo
{
using SupplyMode = lumo::VascularSupplyAreasCalculator::CalculationMode;

/** The names of the calculation modes ("portal-defined-segments", ...), in the calculator's order. */
const std::vector<std::pair<std::string, SupplyMode>> &
supplyModes();

/** What a label of the mode's output means ("no supplying vessel" for 0, a segment, type or status name). */
std::string
supplyLabelName(SupplyMode mode, std::uint32_t label);

/** The supply areas of an unsigned 8-bit organ mask by a tree. `organName` and `treeName` name the inputs in
 *  messages; `modeName` is the mode as the user gave it. threads 0 uses every core. The observer, if any, gets the
 *  calculator's progress events. Throws arbo::Error charged to the organ or the tree when the calculator refuses
 *  them. */
lumo::Image::Pointer
computeSupplyAreas(lumo::Image * organ,
                   lumo::VesselTreeData * tree,
                   SupplyMode mode,
                   unsigned int threads,
                   const std::string & organName,
                   const std::string & treeName,
                   const std::string & modeName,
                   itk::Command * observer = nullptr);
} // namespace arbo

#endif

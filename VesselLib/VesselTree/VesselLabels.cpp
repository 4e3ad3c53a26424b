#include "VesselLabels.h"

#include <array>
#include <charconv>

namespace
{
const std::array<const char *, 5> bloodVesselTypeNames = { "Undefined",
                                                           "Hepatic vein",
                                                           "Portal vein",
                                                           "Artery",
                                                           "Bile duct" };

// Index = segment value - 1.
const std::array<const char *, 27> segmentTypeNames = { "S_Undefined", "S_I",    "S_II",   "S_III",  "S_IVa",  "S_IVb",
                                                        "S_V",         "S_VI",   "S_VII",  "S_VIII", "S_All",  "HS_LSV",
                                                        "HS_LS",       "HS_LI",  "HS_SML", "HS_SMM", "HS_MLI", "HS_MRI",
                                                        "HS_MRS",      "HS_RSV", "HS_RRI", "HS_RLI", "HS_PCS", "HS_PCI",
                                                        "HS_MLS",      "HS_RRS", "HS_RLS" };

// Index = status value - 1.
const std::array<const char *, 4> resectionStatusNames = { "Undefined resection status",
                                                           "Not to be resected",
                                                           "To be resected",
                                                           "Area at risk" };

bool
parseInteger(const std::string & text, std::int32_t & value)
{
  if (text.empty())
  {
    return false;
  }
  const char * first = text.data();
  const char * last = text.data() + text.size();
  auto result = std::from_chars(first, last, value);
  return result.ec == std::errc() && result.ptr == last;
}
} // namespace

std::string
VesselLabels::bloodVesselTypeName(std::int32_t type)
{
  if (type >= 0 && type < static_cast<std::int32_t>(bloodVesselTypeNames.size()))
  {
    return bloodVesselTypeNames[type];
  }
  return "Unknown";
}

std::string
VesselLabels::segmentTypeName(std::int32_t segment)
{
  if (segment >= 1 && segment <= static_cast<std::int32_t>(segmentTypeNames.size()))
  {
    return segmentTypeNames[segment - 1];
  }
  return "Unknown";
}

std::string
VesselLabels::resectionStatusName(std::int32_t status)
{
  if (status >= 1 && status <= static_cast<std::int32_t>(resectionStatusNames.size()))
  {
    return resectionStatusNames[status - 1];
  }
  return "Unknown";
}

bool
VesselLabels::parseBloodVesselType(const std::string & text, std::int32_t & type)
{
  static const std::array<const char *, 5> aliases = { "undefined", "hepatic", "portal", "artery", "bile" };
  for (std::size_t i = 0; i < aliases.size(); ++i)
  {
    if (text == aliases[i] || text == bloodVesselTypeNames[i])
    {
      type = static_cast<std::int32_t>(i);
      return true;
    }
  }
  std::int32_t value = 0;
  if (parseInteger(text, value) && value >= 0 && value < static_cast<std::int32_t>(aliases.size()))
  {
    type = value;
    return true;
  }
  return false;
}

bool
VesselLabels::parseSegmentType(const std::string & text, std::int32_t & segment)
{
  for (std::size_t i = 0; i < segmentTypeNames.size(); ++i)
  {
    if (text == segmentTypeNames[i])
    {
      segment = static_cast<std::int32_t>(i) + 1;
      return true;
    }
  }
  if (text == "undefined")
  {
    segment = S_Undefined;
    return true;
  }
  std::int32_t value = 0;
  if (parseInteger(text, value) && value >= 1 && value <= static_cast<std::int32_t>(segmentTypeNames.size()))
  {
    segment = value;
    return true;
  }
  return false;
}

bool
VesselLabels::parseResectionStatus(const std::string & text, std::int32_t & status)
{
  static const std::array<const char *, 4> aliases = { "undefined", "keep", "resect", "risk" };
  for (std::size_t i = 0; i < aliases.size(); ++i)
  {
    if (text == aliases[i] || text == resectionStatusNames[i])
    {
      status = static_cast<std::int32_t>(i) + 1;
      return true;
    }
  }
  std::int32_t value = 0;
  if (parseInteger(text, value) && value >= 1 && value <= static_cast<std::int32_t>(aliases.size()))
  {
    status = value;
    return true;
  }
  return false;
}

#ifndef VesselLabels_h
#define VesselLabels_h

#include <cstdint>
#include <string>

/** The three clinical labels of a vessel. The numbers are stored in files and properties and never change.
 *  Fields that hold them are plain 32-bit integers: values outside the enumerations are kept as they are. */

enum BloodVesselType : std::int32_t
{
  UndefinedBloodVesselType = 0,
  HepaticVein = 1,
  PortalVein = 2,
  Artery = 3,
  BileDuct = 4
};

/** Liver segments of the portal venous system (2..11) and territories of the hepatic veins (12..27). */
enum SegmentType : std::int32_t
{
  S_Undefined = 1,
  S_I = 2,
  S_II = 3,
  S_III = 4,
  S_IVa = 5,
  S_IVb = 6,
  S_V = 7,
  S_VI = 8,
  S_VII = 9,
  S_VIII = 10,
  S_All = 11,
  HS_LSV = 12,
  HS_LS = 13,
  HS_LI = 14,
  HS_SML = 15,
  HS_SMM = 16,
  HS_MLI = 17,
  HS_MRI = 18,
  HS_MRS = 19,
  HS_RSV = 20,
  HS_RRI = 21,
  HS_RLI = 22,
  HS_PCS = 23,
  HS_PCI = 24,
  HS_MLS = 25,
  HS_RRS = 26,
  HS_RLS = 27
};

enum ResectionStatus : std::int32_t
{
  UndefinedResectionStatus = 1,
  NotToBeResected = 2,
  ToBeResected = 3,
  AreaAtRisk = 4
};

/** Names and value ranges of the labels; the single home of these texts. */
class VesselLabels
{
public:
  /** "Undefined", "Hepatic vein", "Portal vein", "Artery", "Bile duct"; "Unknown" for any other value. */
  static std::string
  bloodVesselTypeName(std::int32_t type);
  /** "S_Undefined", "S_I" ... "HS_RLS"; "Unknown" for any other value. */
  static std::string
  segmentTypeName(std::int32_t segment);
  /** "Undefined resection status", "Not to be resected", "To be resected", "Area at risk"; else "Unknown". */
  static std::string
  resectionStatusName(std::int32_t status);

  /** 2 <= v < 12 */
  static bool
  isPortalSegment(std::int32_t segment)
  {
    return segment >= 2 && segment < 12;
  }
  /** 11 < v < 28 */
  static bool
  isHepaticTerritory(std::int32_t segment)
  {
    return segment > 11 && segment < 28;
  }

  /** Inverse of the name functions, for command lines and scripts. Accepts the number, the exact name, or a short
   *  lower-case alias ("portal", "hepatic", "artery", "bile", "undefined"; "resect", "keep", "risk", "undefined").
   *  Returns false when the text names nothing. */
  static bool
  parseBloodVesselType(const std::string & text, std::int32_t & type);
  static bool
  parseSegmentType(const std::string & text, std::int32_t & segment);
  static bool
  parseResectionStatus(const std::string & text, std::int32_t & status);
};

#endif

#include "Vessel.h"
#include "VesselLabelRules.h"
#include "VesselLabels.h"

#include <gtest/gtest.h>

TEST(VesselElement, DefaultsAreAVisibleInactivePortalVeinWithUnsetIds)
{
  Vessel vessel;
  EXPECT_EQ(vessel.numberOfPoints(), 0u);
  EXPECT_TRUE(vessel.isPristine());
  EXPECT_TRUE(vessel.getProperties().isVisible());
  EXPECT_FALSE(vessel.getProperties().isActive());
  EXPECT_EQ(vessel.getProperties().getSegmentType(), 1);
  EXPECT_EQ(vessel.getProperties().getResectionStatus(), 1);
  EXPECT_EQ(vessel.getProperties().getBloodVesselType(), 2);
  EXPECT_EQ(vessel.getProperties().getReserved(), 0);
  EXPECT_EQ(vessel.getVesselId(), -1);
  EXPECT_EQ(vessel.getCleaningLabel(), -1);
  EXPECT_FALSE(vessel.isCleaningLabelSet());
  vessel.setCleaningLabel(0);
  EXPECT_TRUE(vessel.isCleaningLabelSet());
}

TEST(VesselElement, AppendingAPointClearsThePristineFlagAndLengthAddsUp)
{
  Vessel vessel;
  vessel.appendPoint({ 0, 0, 0, 2 });
  EXPECT_FALSE(vessel.isPristine());
  vessel.appendPoint({ 3, 4, 0, 2 });
  vessel.appendPoint({ 3, 4, 12, 1 });
  EXPECT_EQ(vessel.numberOfPoints(), 3u);
  EXPECT_DOUBLE_EQ(vessel.centreLineLength(), 17.0);
  Vessel copy(vessel);
  EXPECT_EQ(copy.getPoints(), vessel.getPoints());
}

TEST(VesselLabelNames, NamesAndUnknownValues)
{
  EXPECT_EQ(VesselLabels::bloodVesselTypeName(0), "Undefined");
  EXPECT_EQ(VesselLabels::bloodVesselTypeName(1), "Hepatic vein");
  EXPECT_EQ(VesselLabels::bloodVesselTypeName(2), "Portal vein");
  EXPECT_EQ(VesselLabels::bloodVesselTypeName(3), "Artery");
  EXPECT_EQ(VesselLabels::bloodVesselTypeName(4), "Bile duct");
  EXPECT_EQ(VesselLabels::bloodVesselTypeName(5), "Unknown");
  EXPECT_EQ(VesselLabels::bloodVesselTypeName(-1), "Unknown");
  EXPECT_EQ(VesselLabels::segmentTypeName(0), "Unknown");
  EXPECT_EQ(VesselLabels::segmentTypeName(1), "S_Undefined");
  EXPECT_EQ(VesselLabels::segmentTypeName(5), "S_IVa");
  EXPECT_EQ(VesselLabels::segmentTypeName(11), "S_All");
  EXPECT_EQ(VesselLabels::segmentTypeName(12), "HS_LSV");
  EXPECT_EQ(VesselLabels::segmentTypeName(23), "HS_PCS");
  EXPECT_EQ(VesselLabels::segmentTypeName(27), "HS_RLS");
  EXPECT_EQ(VesselLabels::segmentTypeName(28), "Unknown");
  EXPECT_EQ(VesselLabels::resectionStatusName(0), "Unknown");
  EXPECT_EQ(VesselLabels::resectionStatusName(1), "Undefined resection status");
  EXPECT_EQ(VesselLabels::resectionStatusName(2), "Not to be resected");
  EXPECT_EQ(VesselLabels::resectionStatusName(3), "To be resected");
  EXPECT_EQ(VesselLabels::resectionStatusName(4), "Area at risk");
  EXPECT_EQ(VesselLabels::resectionStatusName(5), "Unknown");
}

TEST(VesselLabelNames, RangesOfPortalSegmentsAndHepaticTerritories)
{
  EXPECT_FALSE(VesselLabels::isPortalSegment(1));
  EXPECT_TRUE(VesselLabels::isPortalSegment(2));
  EXPECT_TRUE(VesselLabels::isPortalSegment(11));
  EXPECT_FALSE(VesselLabels::isPortalSegment(12));
  EXPECT_FALSE(VesselLabels::isHepaticTerritory(11));
  EXPECT_TRUE(VesselLabels::isHepaticTerritory(12));
  EXPECT_TRUE(VesselLabels::isHepaticTerritory(27));
  EXPECT_FALSE(VesselLabels::isHepaticTerritory(28));
}

TEST(VesselLabelNames, ParsingAcceptsNumbersNamesAndAliases)
{
  std::int32_t value = -7;
  EXPECT_TRUE(VesselLabels::parseBloodVesselType("artery", value));
  EXPECT_EQ(value, 3);
  EXPECT_TRUE(VesselLabels::parseBloodVesselType("Hepatic vein", value));
  EXPECT_EQ(value, 1);
  EXPECT_TRUE(VesselLabels::parseBloodVesselType("4", value));
  EXPECT_EQ(value, 4);
  EXPECT_FALSE(VesselLabels::parseBloodVesselType("5", value));
  EXPECT_FALSE(VesselLabels::parseBloodVesselType("vein", value));
  EXPECT_EQ(value, 4);

  EXPECT_TRUE(VesselLabels::parseSegmentType("S_IVa", value));
  EXPECT_EQ(value, 5);
  EXPECT_TRUE(VesselLabels::parseSegmentType("HS_LS", value));
  EXPECT_EQ(value, 13);
  EXPECT_TRUE(VesselLabels::parseSegmentType("27", value));
  EXPECT_EQ(value, 27);
  EXPECT_FALSE(VesselLabels::parseSegmentType("0", value));
  EXPECT_FALSE(VesselLabels::parseSegmentType("s_iva", value));
  EXPECT_FALSE(VesselLabels::parseSegmentType("5x", value));

  EXPECT_TRUE(VesselLabels::parseResectionStatus("resect", value));
  EXPECT_EQ(value, 3);
  EXPECT_TRUE(VesselLabels::parseResectionStatus("keep", value));
  EXPECT_EQ(value, 2);
  EXPECT_TRUE(VesselLabels::parseResectionStatus("risk", value));
  EXPECT_EQ(value, 4);
  EXPECT_TRUE(VesselLabels::parseResectionStatus("undefined", value));
  EXPECT_EQ(value, 1);
  EXPECT_FALSE(VesselLabels::parseResectionStatus("0", value));
  EXPECT_FALSE(VesselLabels::parseResectionStatus("", value));
}

namespace
{
Vessel
activeVessel(std::int32_t type, std::int32_t segment)
{
  Vessel vessel;
  vessel.getProperties().setBloodVesselType(type);
  vessel.getProperties().setSegmentType(segment);
  vessel.getProperties().setActive(true);
  return vessel;
}
} // namespace

TEST(VesselLabelRules, SettingTheTypeResetsASegmentOfTheOtherSystem)
{
  Vessel portal = activeVessel(PortalVein, S_II);
  VesselLabelRules::applyBloodVesselType(portal, Artery);
  EXPECT_EQ(portal.getProperties().getBloodVesselType(), Artery);
  EXPECT_EQ(portal.getProperties().getSegmentType(), S_Undefined);
  EXPECT_FALSE(portal.getProperties().isActive());

  Vessel hepatic = activeVessel(HepaticVein, HS_RSV);
  VesselLabelRules::applyBloodVesselType(hepatic, PortalVein);
  EXPECT_EQ(hepatic.getProperties().getSegmentType(), S_Undefined);
  EXPECT_EQ(hepatic.getProperties().getBloodVesselType(), PortalVein);

  Vessel stays = activeVessel(PortalVein, S_II);
  VesselLabelRules::applyBloodVesselType(stays, PortalVein);
  EXPECT_EQ(stays.getProperties().getSegmentType(), S_II);
  EXPECT_FALSE(stays.getProperties().isActive());

  Vessel hepaticStays = activeVessel(HepaticVein, HS_RSV);
  VesselLabelRules::applyBloodVesselType(hepaticStays, HepaticVein);
  EXPECT_EQ(hepaticStays.getProperties().getSegmentType(), HS_RSV);

  // S_All (11) is a portal segment: it does not survive a change to a hepatic vein.
  Vessel all = activeVessel(PortalVein, S_All);
  VesselLabelRules::applyBloodVesselType(all, HepaticVein);
  EXPECT_EQ(all.getProperties().getSegmentType(), S_Undefined);

  // The first and the last hepatic territory (HS_LSV 12, HS_RLS 27) are hepatic: kept by a hepatic vein, cleared
  // by any other type.
  for (std::int32_t territory : { HS_LSV, HS_RLS })
  {
    Vessel kept = activeVessel(HepaticVein, territory);
    VesselLabelRules::applyBloodVesselType(kept, HepaticVein);
    EXPECT_EQ(kept.getProperties().getSegmentType(), territory);
    for (std::int32_t type : { PortalVein, Artery })
    {
      Vessel cleared = activeVessel(HepaticVein, territory);
      VesselLabelRules::applyBloodVesselType(cleared, type);
      EXPECT_EQ(cleared.getProperties().getSegmentType(), S_Undefined) << territory << " to type " << type;
    }
    Vessel hepatic = activeVessel(HepaticVein, S_Undefined);
    EXPECT_TRUE(VesselLabelRules::applySegmentType(hepatic, territory));
    Vessel portal = activeVessel(PortalVein, S_Undefined);
    EXPECT_FALSE(VesselLabelRules::applySegmentType(portal, territory));
  }
  Vessel beyond = activeVessel(HepaticVein, S_Undefined);
  EXPECT_FALSE(VesselLabelRules::applySegmentType(beyond, HS_RLS + 1));
}

TEST(VesselLabelRules, ASegmentIsTakenOnlyWhenItFitsTheType)
{
  Vessel portal = activeVessel(PortalVein, S_II);
  EXPECT_FALSE(VesselLabelRules::applySegmentType(portal, HS_RSV));
  EXPECT_EQ(portal.getProperties().getSegmentType(), S_II);
  EXPECT_TRUE(portal.getProperties().isActive());
  EXPECT_TRUE(VesselLabelRules::applySegmentType(portal, S_VIII));
  EXPECT_EQ(portal.getProperties().getSegmentType(), S_VIII);

  Vessel hepatic = activeVessel(HepaticVein, S_Undefined);
  EXPECT_FALSE(VesselLabelRules::applySegmentType(hepatic, S_V));
  EXPECT_TRUE(VesselLabelRules::applySegmentType(hepatic, HS_RLS));
  EXPECT_EQ(hepatic.getProperties().getSegmentType(), HS_RLS);

  for (std::int32_t type : { 0, 1, 2, 3, 4, 9 })
  {
    Vessel any = activeVessel(type, type == HepaticVein ? HS_LS : (type == PortalVein ? S_I : S_Undefined));
    EXPECT_TRUE(VesselLabelRules::applySegmentType(any, S_Undefined)) << "type " << type;
    EXPECT_EQ(any.getProperties().getSegmentType(), S_Undefined);
  }

  Vessel artery = activeVessel(Artery, S_Undefined);
  EXPECT_FALSE(VesselLabelRules::applySegmentType(artery, S_II));
  EXPECT_FALSE(VesselLabelRules::applySegmentType(artery, HS_LS));
  EXPECT_EQ(artery.getProperties().getSegmentType(), S_Undefined);
}

TEST(VesselLabelRules, StatusAndVisibilitySetTheFieldAndDeactivate)
{
  Vessel vessel = activeVessel(PortalVein, S_II);
  VesselLabelRules::applyResectionStatus(vessel, ToBeResected);
  EXPECT_EQ(vessel.getProperties().getResectionStatus(), ToBeResected);
  EXPECT_FALSE(vessel.getProperties().isActive());
  vessel.getProperties().setActive(true);
  VesselLabelRules::applyVisibility(vessel, false);
  EXPECT_FALSE(vessel.getProperties().isVisible());
  EXPECT_FALSE(vessel.getProperties().isActive());
}

#include "lumoVesselTreeLookupTable.h"
#include "lumoVesselTreeLookupTableProperty.h"

#include "VesselLabels.h"

#include "WarningCapture.h"

#include <gtest/gtest.h>

using namespace lumo;
using Table = VesselTreeLookupTable;

namespace
{
std::vector<std::string>
namesOf(const Table::MaterialVectorType * materials)
{
  std::vector<std::string> names;
  for (unsigned int i = 0; i < materials->Size(); ++i)
  {
    names.push_back(materials->ElementAt(i)->GetName());
  }
  return names;
}

Table::ColorType
rgba(double r, double g, double b, double a)
{
  Table::ColorType color;
  color.Set(r, g, b, a);
  return color;
}
} // namespace

TEST(VesselTreeLookupTable, DefaultColours)
{
  auto table = Table::New();
  EXPECT_STREQ(table->GetNameOfClass(), "VesselTreeLookupTable");
  EXPECT_EQ(table->GetColorForActive(), rgba(1, 1, 0, 1));
  EXPECT_EQ(table->GetColorForInvisible(), rgba(0, 0, 0, 0));
  EXPECT_EQ(table->GetColorForUnknown(), rgba(1, 1, 1, 1));
  const Table::ColorVectorType types = table->GetColorByType();
  ASSERT_EQ(types.size(), 5u);
  EXPECT_EQ(types[0], rgba(0.6, 0.6, 0.6, 1.0));
  EXPECT_EQ(types[1], rgba(0.2, 0.54, 1.0, 1.0));
  EXPECT_EQ(types[2], rgba(0.5, 0.09, 0.72, 1.0));
  EXPECT_EQ(types[3], rgba(0.66, 0.0, 0.0, 1.0));
  EXPECT_EQ(types[4], rgba(0.34, 0.5, 0.09, 1.0));
  const Table::ColorVectorType segments = table->GetColorBySegment();
  ASSERT_EQ(segments.size(), 28u);
  EXPECT_EQ(segments[0], rgba(1, 1, 1, 1));
  ASSERT_EQ(table->GetColorByResectionStatus().size(), 5u);
  for (const auto & color : segments)
  {
    for (unsigned int c = 0; c < 3; ++c)
    {
      EXPECT_GE(color[c], 0.0);
      EXPECT_LE(color[c], 1.0);
    }
    EXPECT_EQ(color[3], 1.0);
  }
  // Random colours differ from each other.
  EXPECT_NE(segments[1], segments[2]);
}

TEST(VesselTreeLookupTable, TwoFreshTablesAreEqualColourForColour)
{
  auto a = Table::New();
  std::rand();
  auto b = Table::New();
  EXPECT_TRUE(*a == *b);
  EXPECT_EQ(a->GetColorBySegment(), b->GetColorBySegment());
  EXPECT_EQ(a->GetColorByResectionStatus(), b->GetColorByResectionStatus());
  b->SetColorForActive(rgba(0, 1, 0, 1));
  EXPECT_FALSE(*a == *b);
  static_cast<LookupTable &>(*a) = static_cast<const LookupTable &>(*b);
  EXPECT_TRUE(*a == *b);
  EXPECT_EQ(a->GetColorForActive(), rgba(0, 1, 0, 1));
}

TEST(VesselTreeLookupTable, MaterialVectorsHaveTheirStatedLayouts)
{
  auto table = Table::New();
  auto artery = table->GetArteryColorsAsMaterialProperties();
  EXPECT_EQ(namesOf(artery), (std::vector<std::string>{ "Active", "Undefined", "Artery" }));
  EXPECT_EQ(namesOf(table->GetBileDuctColorsAsMaterialProperties()),
            (std::vector<std::string>{ "Active", "Undefined", "Bile duct" }));
  auto portal = table->GetPortalVeinColorsAsMaterialProperties();
  EXPECT_EQ(namesOf(portal),
            (std::vector<std::string>{ "Active",
                                       "Undefined",
                                       "Portal vein",
                                       "S_I",
                                       "S_II",
                                       "S_III",
                                       "S_IVa",
                                       "S_IVb",
                                       "S_V",
                                       "S_VI",
                                       "S_VII",
                                       "S_VIII" }));
  auto hepatic = table->GetHepaticVeinColorsAsMaterialProperties();
  ASSERT_EQ(hepatic->Size(), 19u);
  EXPECT_EQ(hepatic->ElementAt(2)->GetName(), "Hepatic vein");
  EXPECT_EQ(hepatic->ElementAt(3)->GetName(), "HS_LSV");
  EXPECT_EQ(hepatic->ElementAt(18)->GetName(), "HS_RLS");
  auto all = table->GetColorsAsMaterialProperties();
  ASSERT_EQ(all->Size(), 35u);
  EXPECT_EQ(all->ElementAt(0)->GetName(), "Undefined");
  EXPECT_EQ(all->ElementAt(5)->GetName(), "S_I");
  EXPECT_EQ(all->ElementAt(30)->GetName(), "HS_RLS");
  EXPECT_EQ(all->ElementAt(31)->GetName(), "Undefined resection status");
  EXPECT_EQ(all->ElementAt(34)->GetName(), "Area at risk");
  EXPECT_EQ(namesOf(table->GetColorsAsMaterialProperties(::Artery)), namesOf(artery));

  // Colour and opacity come from the table, the rest from the shared material.
  table->GetSharedMaterialProperties()->SetSpecularPower(42.0);
  table->SetColorForActive(rgba(0.25, 0.5, 0.75, 0.5));
  auto again = table->GetArteryColorsAsMaterialProperties();
  EXPECT_FLOAT_EQ(again->ElementAt(0)->GetColor()[2], 0.75f);
  EXPECT_DOUBLE_EQ(again->ElementAt(0)->GetOpacity(), 0.5);
  EXPECT_DOUBLE_EQ(again->ElementAt(0)->GetSpecularPower(), 42.0);
}

TEST(VesselTreeLookupTable, MaterialsReadBackIntoTheColours)
{
  auto source = Table::New();
  auto portal = source->GetPortalVeinColorsAsMaterialProperties();
  ASSERT_EQ(portal->ElementAt(4)->GetName(), "S_II");
  portal->ElementAt(4)->SetColor(0.0f, 0.5f, 1.0f);
  portal->ElementAt(4)->SetOpacity(0.25);
  auto target = Table::New();
  target->SetPortalVeinColorsFromMaterialProperties(portal);
  EXPECT_EQ(target->GetColorBySegment()[3], rgba(0.0, 0.5, 1.0, 0.25));

  auto all = source->GetColorsAsMaterialProperties();
  all->ElementAt(34)->SetColor(1.0f, 0.0f, 0.0f);
  target->SetColorsFromMaterialProperties(all);
  EXPECT_EQ(target->GetColorByResectionStatus()[4], rgba(1, 0, 0, 1));
}

TEST(VesselTreeLookupTable, UnexpectedVectorSizesWarn)
{
  lumotest::WarningCapture capture;
  auto table = Table::New();
  auto portal = table->GetPortalVeinColorsAsMaterialProperties();
  portal->pop_back();
  table->SetPortalVeinColorsFromMaterialProperties(portal);
  auto hepatic = table->GetArteryColorsAsMaterialProperties();
  table->SetHepaticVeinColorsFromMaterialProperties(hepatic);
  table->SetBileDuctColorsFromMaterialProperties(table->GetPortalVeinColorsAsMaterialProperties());
  table->SetColorsFromMaterialProperties(table->GetArteryColorsAsMaterialProperties());
  EXPECT_EQ(capture.messages(),
            (std::vector<std::string>{
              "Size of material vector is not as expected (11 instead of 12)!.",
              "Size of material vector is not as expected (3 instead of 19)!.",
              "Size of material vector is not as expected (12 instead of 3)!.",
              "Size of material vector is not as expected (3 instead of 35)!. Maybe you are reading a scene file "
              "created with an older version of LUMO? Trying to continue..." }));
  ASSERT_FALSE(capture.texts().empty());
  EXPECT_NE(capture.texts()[0].find("lumoVesselTreeLookupTable"), std::string::npos);
}

TEST(VesselTreeLookupTableProperty, SharesItsTableAndComparesByValue)
{
  auto table = Table::New();
  auto a = VesselTreeLookupTableProperty::New(table);
  auto b = VesselTreeLookupTableProperty::New(Table::New());
  EXPECT_TRUE(a->IsEqual(*b));
  b->GetVesselTreeLookupTable()->SetColorForUnknown(rgba(0, 0, 0, 1));
  EXPECT_FALSE(a->IsEqual(*b));
  EXPECT_TRUE(b->Assign(*a));
  EXPECT_EQ(b->GetVesselTreeLookupTable(), table.GetPointer());
  EXPECT_EQ(a->GetValueAsString(), "vessel tree colours: 5 types, 28 segments, 5 resection states");
  auto empty = VesselTreeLookupTableProperty::New();
  EXPECT_EQ(empty->GetValueAsString(), "no vessel tree lookup table");
  EXPECT_FALSE(empty->IsEqual(*a));
  EXPECT_TRUE(empty->IsEqual(*VesselTreeLookupTableProperty::New()));
}

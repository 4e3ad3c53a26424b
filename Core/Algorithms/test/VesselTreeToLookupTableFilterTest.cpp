#include "lumoLookupTableProperty.h"
#include "lumoVesselTreeLookupTableProperty.h"
#include "lumoVesselTreeToLookupTableFilter.h"

#include "VesselTestTree.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

#include <vtkLookupTable.h>

#include <cmath>

using namespace lumo;
using namespace vessel_test;
using Table = VesselTreeLookupTable;

namespace
{
/** A root (id 1) with children 2 to 7 carrying the labels of the cases. */
VesselTreeData::Pointer
makeData()
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  auto label = [&](int id, int status, int segment, int type, bool active = false) {
    ar<Vessel> vessel = addChild(tree->getRootNode(), id)->getData();
    vessel->getProperties().setResectionStatus(status);
    vessel->getProperties().setSegmentType(segment);
    vessel->getProperties().setBloodVesselType(type);
    vessel->getProperties().setActive(active);
  };
  label(2, 3, 5, 2);        // status wins
  label(3, 1, 5, 2);        // segment wins
  label(4, 1, 1, 3);        // type
  label(5, 4, 20, 1, true); // active wins
  label(6, 1, 0, 2);        // unknown segment
  label(9, 7, 5, 2);        // unknown status; ids 7 and 8 belong to no vessel
  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(tree.release()));
  return data;
}

/** The table's colour of an id is the expected one, within the 8-bit resolution of a VTK lookup table. */
::testing::AssertionResult
hasColor(const LookupTable & table, int id, const Table::ColorType & expected)
{
  double rgba[4];
  table.GetVtkLookupTable()->GetTableValue(id, rgba);
  for (unsigned int c = 0; c < 4; ++c)
  {
    if (std::abs(rgba[c] - expected[c]) > 0.5 / 255.0 + 1e-9)
    {
      return ::testing::AssertionFailure()
             << "id " << id << " component " << c << ": " << rgba[c] << " instead of " << expected[c];
    }
  }
  return ::testing::AssertionSuccess();
}
} // namespace

TEST(VesselTreeToLookupTableFilter, ColoursByPriority)
{
  lumotest::WarningCapture capture;
  auto colors = Table::New();
  auto filter = VesselTreeToLookupTableFilter::New();
  filter->SetInput(makeData());
  filter->SetLookupTable(colors);
  filter->Update();
  const LookupTable & result = *filter->GetOutput();
  EXPECT_EQ(result.GetNumberOfColors(), 10);
  EXPECT_TRUE(hasColor(result, 1, colors->GetColorByType()[2]));
  EXPECT_TRUE(hasColor(result, 2, colors->GetColorByResectionStatus()[3]));
  EXPECT_TRUE(hasColor(result, 3, colors->GetColorBySegment()[5]));
  EXPECT_TRUE(hasColor(result, 4, colors->GetColorByType()[3]));
  EXPECT_TRUE(hasColor(result, 5, colors->GetColorForActive()));
  EXPECT_TRUE(hasColor(result, 6, colors->GetColorForUnknown()));
  EXPECT_TRUE(hasColor(result, 9, colors->GetColorForUnknown()));
  EXPECT_TRUE(hasColor(result, 7, colors->GetColorForInvisible()));
  EXPECT_EQ(
    capture.messages(),
    (std::vector<std::string>{ "unknown segment type(0) encountered!", "unknown resections status(7) encountered!" }));
  EXPECT_NE(capture.texts()[0].find("lumoVesselTreeToLookupTableFilter"), std::string::npos);
}

TEST(VesselTreeToLookupTableFilter, TheNodesTableIsUsedAndSetBack)
{
  auto data = makeData();
  auto node = DataNode::New();
  node->SetData(data);
  auto colors = Table::New();
  colors->SetColorForActive(Table::ColorType(0.5));
  node->SetProperty("VesselTreeLookupTable", VesselTreeLookupTableProperty::New(colors));
  auto filter = VesselTreeToLookupTableFilter::New();
  filter->SetInput(data);
  filter->SetDataNode(node);
  filter->Update();
  EXPECT_TRUE(hasColor(*filter->GetOutput(), 5, Table::ColorType(0.5)));
  auto * property = dynamic_cast<VesselTreeLookupTableProperty *>(node->GetProperty("VesselTreeLookupTable"));
  ASSERT_NE(property, nullptr);
  EXPECT_EQ(property->GetVesselTreeLookupTable(), colors.GetPointer());
}

TEST(VesselTreeToLookupTableFilter, MissingPiecesWarnAndStop)
{
  lumotest::WarningCapture capture;
  auto filter = VesselTreeToLookupTableFilter::New();
  auto empty = VesselTreeData::New();
  filter->SetInput(empty);
  filter->Update();
  auto node = DataNode::New();
  node->SetProperty("VesselTreeLookupTable", LookupTableProperty::New(LookupTable::New()));
  filter->SetDataNode(node);
  filter->Update();
  node->SetProperty("VesselTreeLookupTable", VesselTreeLookupTableProperty::New(Table::New()));
  filter->Modified();
  filter->Update();
  EXPECT_EQ(
    capture.messages(),
    (std::vector<std::string>{ "Sorry, lut is NULL...",
                               "Associated lookup table is not a vessel tree lookup table!",
                               "Sorry, no tree available for lookuptable calculation. Trying to continue..." }));
  EXPECT_EQ(filter->GetOutput()->GetNumberOfColors(), 1);
}

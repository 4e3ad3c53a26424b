#include "SupplyTestSupport.h"

#include "VesselIDRelabeling.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>

using namespace supply_test;

namespace
{
/** Ids 2 (portal S_V keep), 5 (undefined type, S_Undefined, resect) and 7 (artery, undefined status); 3, 4 and 6
 *  belong to no vessel. */
ArVesselTree
labelledTree()
{
  return makeStar({ 2, PortalVein, S_V, NotToBeResected, {} },
                  { { 5, UndefinedBloodVesselType, S_Undefined, ToBeResected, {} },
                    { 7, Artery, S_Undefined, UndefinedResectionStatus, {} } });
}

/** A 4 x 2 x 1 id volume holding 0, 2, 5, 7 / 3, 2, 7, 5. */
lumoIpPicDescriptor *
idVolume()
{
  const std::uint32_t sizes[3] = { 4, 2, 1 };
  lumoIpPicDescriptor * pic = lumoIpPicNewVolume(lumoIpPicUInt, 16, 3, sizes);
  const std::uint16_t ids[8] = { 0, 2, 5, 7, 3, 2, 7, 5 };
  std::copy_n(ids, 8, static_cast<std::uint16_t *>(pic->data));
  return pic;
}

std::vector<std::uint16_t>
contentOf(const lumoIpPicDescriptor * pic)
{
  const auto * data = static_cast<const std::uint16_t *>(pic->data);
  return std::vector<std::uint16_t>(data, data + lumoIpPicElements(pic));
}

using Labels = std::vector<std::uint16_t>;
using PicPointer = std::unique_ptr<lumoIpPicDescriptor, void (*)(lumoIpPicDescriptor *)>;

PicPointer
owned(lumoIpPicDescriptor * pic)
{
  return PicPointer(pic, lumoIpPicFree);
}

/** The message of the exception and what went to standard output meanwhile. */
std::pair<std::string, std::string>
failureOf(const std::function<void()> & action)
{
  std::ostringstream captured;
  std::streambuf * previous = std::cout.rdbuf(captured.rdbuf());
  std::string message = "(nothing thrown)";
  try
  {
    action();
  }
  catch (const std::exception & e)
  {
    message = e.what();
  }
  std::cout.rdbuf(previous);
  return { message, captured.str() };
}
} // namespace

TEST(VesselIDRelabeling, TheThreeRules)
{
  const ArVesselTree tree = labelledTree();
  IdToSegmentRelabelingRule segment(tree);
  IdToTypeRelabelingRule type(tree);
  IdToResectionStatusRelabelingRule status(tree);

  auto segments = owned(idVolume());
  EXPECT_EQ(VesselIDRelabeling::relabel(segments.get(), &segment, false), segments.get());
  // Id 3 lies between vessel ids and belongs to none: it becomes background.
  EXPECT_EQ(contentOf(segments.get()), (Labels{ 0, S_V, S_Undefined, S_Undefined, 0, S_V, S_Undefined, S_Undefined }));

  auto types = owned(idVolume());
  VesselIDRelabeling::relabel(types.get(), &type, false);
  // Type + 1: the undefined type (0) becomes 1, not background.
  EXPECT_EQ(contentOf(types.get()), (Labels{ 0, 3, 1, 4, 0, 3, 4, 1 }));

  auto statuses = owned(idVolume());
  VesselIDRelabeling::relabel(statuses.get(), &status, false);
  EXPECT_EQ(contentOf(statuses.get()), (Labels{ 0, 2, 3, 1, 0, 2, 1, 3 }));
}

TEST(VesselIDRelabeling, CopyLeavesTheInputAlone)
{
  IdToTypeRelabelingRule type(labelledTree());
  auto input = owned(idVolume());
  auto copy = owned(VesselIDRelabeling::relabel(input.get(), &type, true));
  ASSERT_NE(copy.get(), input.get());
  EXPECT_EQ(contentOf(copy.get()), (Labels{ 0, 3, 1, 4, 0, 3, 4, 1 }));
  EXPECT_EQ(contentOf(input.get()), (Labels{ 0, 2, 5, 7, 3, 2, 7, 5 }));
}

TEST(VesselIDRelabeling, RangeOverflowOfEachRule)
{
  const ArVesselTree tree = labelledTree();
  IdToSegmentRelabelingRule segment(tree);
  IdToTypeRelabelingRule type(tree);
  IdToResectionStatusRelabelingRule status(tree);
  EXPECT_EQ(failureOf([&] { segment.getNewLabel(8); }),
            std::make_pair(std::string("IdToSegmentRelabelingRule::getNewLabel(...): Id > size()"),
                           std::string("Range overflow: 8\n")));
  EXPECT_EQ(failureOf([&] { type.getNewLabel(9); }),
            std::make_pair(std::string("IdToTypeRelabelingRule::getNewLabel(...): Id > size()!"),
                           std::string("Range overflow: 9\n")));
  EXPECT_EQ(failureOf([&] { status.getNewLabel(65535); }),
            std::make_pair(std::string("IdToResectionStatusRelabelingRule::getNewLabel(...): Id > size()!"),
                           std::string("Range overflow: 65535\n")));
  EXPECT_EQ(segment.getNewLabel(7), S_Undefined);

  // In place, the voxels before the offending one are already relabelled.
  auto pic = owned(idVolume());
  static_cast<std::uint16_t *>(pic->data)[3] = 12;
  EXPECT_EQ(failureOf([&] { VesselIDRelabeling::relabel(pic.get(), &status, false); }).second, "Range overflow: 12\n");
  EXPECT_EQ(contentOf(pic.get()), (Labels{ 0, 2, 3, 12, 3, 2, 7, 5 }));
}

TEST(VesselIDRelabeling, RefusesBadVolumes)
{
  IdToSegmentRelabelingRule rule(labelledTree());
  auto pic = owned(idVolume());
  EXPECT_EQ(failureOf([&] { VesselIDRelabeling::relabel(nullptr, &rule, false); }).first,
            "Error in VesselIDRelabeling::relabel(...): parameter == NULL!");
  EXPECT_EQ(failureOf([&] { VesselIDRelabeling::relabel(pic.get(), nullptr, true); }).first,
            "Error in VesselIDRelabeling::relabel(...): parameter == NULL!");
  const std::uint32_t sizes[3] = { 4, 2, 1 };
  auto flat = owned(lumoIpPicNewVolume(lumoIpPicUInt, 16, 2, sizes));
  EXPECT_EQ(failureOf([&] { VesselIDRelabeling::relabel(flat.get(), &rule, false); }).first,
            "Error in VesselIDRelabeling::relabel(...): pic->dim!=3");
  for (auto kind :
       { std::make_pair(lumoIpPicFloat, 32u), std::make_pair(lumoIpPicUInt, 8u), std::make_pair(lumoIpPicInt, 16u) })
  {
    auto other = owned(lumoIpPicNewVolume(kind.first, kind.second, 3, sizes));
    EXPECT_EQ(failureOf([&] { VesselIDRelabeling::relabel(other.get(), &rule, false); }).first,
              "Error in VesselIDRelabeling::relabel(...): wrong datatype (!=lumoIpUInt2_t)");
  }
}

TEST(VesselIDRelabeling, SharedIdsGoToTheVesselVisitedLast)
{
  const ArVesselTree tree =
    makeStar({ 1, PortalVein, S_II, 1, {} }, { { 1, PortalVein, S_III, 1, {} }, { 1, PortalVein, S_IVa, 1, {} } });
  IdToSegmentRelabelingRule rule(tree);
  EXPECT_EQ(rule.getNewLabel(1), S_IVa);
  EXPECT_EQ(rule.getNewLabel(0), 0);
}

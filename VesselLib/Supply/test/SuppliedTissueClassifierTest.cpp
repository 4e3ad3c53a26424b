#include "SupplyTestSupport.h"

#include "KDTreeNextVesselEstimator.h"
#include "SuppliedTissueClassifier.h"
#include "VesselTreeSamplers.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

using namespace supply_test;

namespace
{
std::string
messageOf(const std::function<void()> & action)
{
  try
  {
    action();
  }
  catch (const std::exception & e)
  {
    return e.what();
  }
  return "(nothing thrown)";
}

/** Portal vessel 1 at x = 0 and hepatic vessel 2 at x = 8, both along the line y = z = 0. */
ArVesselTree
twoVessels()
{
  return makeStar({ 1, PortalVein, S_V, NotToBeResected, { { 0, 0, 0, 1 } } },
                  { { 2, HepaticVein, HS_LS, ToBeResected, { { 8, 0, 0, 1 } } } });
}

/** A row of 9 organ voxels along x (value 1), the rest of a 9 x 2 x 1 volume background. */
ThreeDPicAccessor<unsigned char> *
organRow()
{
  lumoIpPicDescriptor * pic = newOrgan(9, 2, 1);
  for (std::uint32_t x = 0; x < 9; ++x)
  {
    voxel<unsigned char>(pic, x, 0, 0) = 1;
  }
  return new ThreeDPicAccessor<unsigned char>(pic, true, 0);
}

std::vector<std::uint16_t>
rowIds(const SuppliedTissueClassifier & classifier, std::uint32_t y = 0)
{
  std::vector<std::uint16_t> ids;
  for (unsigned short x = 0; x < 9; ++x)
  {
    ids.push_back(classifier.getVesselIDVolume()->getVoxel(x, static_cast<unsigned short>(y), 0));
  }
  return ids;
}

using Ids = std::vector<std::uint16_t>;

class NullSampler : public AbstractVesselTreeSampler
{
public:
  VesselElementList *
  sampleVesselTree(ArVesselTree) override
  {
    return nullptr;
  }

protected:
  bool
  samplesVessel(const Vessel &) const override
  {
    return true;
  }
};
} // namespace

TEST(SuppliedTissueClassifier, ClassifiesOrganVoxelsWithIdsAndDistances)
{
  SuppliedTissueClassifier classifier(organRow(), twoVessels());
  EXPECT_EQ(classifier.getVesselIDVolume(), nullptr);
  classifier.cumputeSuppliedTissue();
  // x = 4 is as far from both: vessel 1 was sampled first.
  EXPECT_EQ(rowIds(classifier), (Ids{ 1, 1, 1, 1, 1, 2, 2, 2, 2 }));
  EXPECT_EQ(rowIds(classifier, 1), Ids(9, 0));
  ThreeDPicAccessor<float> * distances = classifier.getDistanceVolume();
  ASSERT_NE(distances, nullptr);
  EXPECT_EQ(distances->getVoxel(3, 0, 0), 3.0f);
  EXPECT_EQ(distances->getVoxel(4, 0, 0), 4.0f);
  EXPECT_EQ(distances->getVoxel(8, 0, 0), 0.0f);
  EXPECT_EQ(distances->getVoxel(3, 1, 0), 0.0f);
  // The results are 16-bit and float volumes of the organ's size, with the accessor defaults.
  lumoIpPicDescriptor * pic = classifier.getVesselIDVolume()->getPic();
  EXPECT_EQ(pic->type, lumoIpPicUInt);
  EXPECT_EQ(pic->bpe, 16u);
  EXPECT_EQ((std::vector<std::uint32_t>{ pic->dim, pic->n[0], pic->n[1], pic->n[2] }),
            (std::vector<std::uint32_t>{ 3, 9, 2, 1 }));
  EXPECT_EQ(distances->getPic()->type, lumoIpPicFloat);
  EXPECT_EQ(classifier.getVesselIDVolume()->getVoxelSizeX(), 1.0f);
}

TEST(SuppliedTissueClassifier, BackgroundOnlyOrganAndNoDistanceVolume)
{
  SuppliedTissueClassifier classifier(new ThreeDPicAccessor<unsigned char>(newOrgan(4, 4, 4), true, 0), twoVessels());
  classifier.setComputeDistance(false);
  classifier.cumputeSuppliedTissue();
  EXPECT_EQ(classifier.getDistanceVolume(), nullptr);
  lumoIpPicDescriptor * ids = classifier.getVesselIDVolume()->getPic();
  const auto * data = static_cast<const std::uint16_t *>(ids->data);
  EXPECT_EQ(std::count(data, data + 64, 0), 64);

  // The tree is still sampled: an empty one is refused even though no voxel needs it.
  SuppliedTissueClassifier empty(new ThreeDPicAccessor<unsigned char>(newOrgan(4, 4, 4), true, 0),
                                 ArVesselTree(new LinkedVesselTree()));
  EXPECT_EQ(messageOf([&] { empty.cumputeSuppliedTissue(); }),
            "Error in KDTreeNextVesselEstimator::setVesselElementList: theList->size() == 0!");
}

TEST(SuppliedTissueClassifier, AnyNonBackgroundValueIsClassified)
{
  ThreeDPicAccessor<unsigned char> * organ = organRow();
  organ->setVoxel(7, 1, 0, 200);
  organ->setVoxel(0, 0, 0, 0);
  SuppliedTissueClassifier classifier(organ, twoVessels());
  classifier.cumputeSuppliedTissue();
  EXPECT_EQ(rowIds(classifier), (Ids{ 0, 1, 1, 1, 1, 2, 2, 2, 2 }));
  EXPECT_EQ(classifier.getVesselIDVolume()->getVoxel(7, 1, 0), 2);

  // With outside value 1, voxels of value 1 are background and 0 is tissue.
  SuppliedTissueClassifier inverted(new ThreeDPicAccessor<unsigned char>(newOrgan(9, 1, 1), true, 1), twoVessels());
  EXPECT_EQ(SuppliedTissueClassifier::getBackgroundValue(), 1);
  inverted.cumputeSuppliedTissue();
  EXPECT_EQ(rowIds(inverted), (Ids{ 1, 1, 1, 1, 1, 2, 2, 2, 2 }));
}

TEST(SuppliedTissueClassifier, BackgroundValueIsSharedByAllInstances)
{
  SuppliedTissueClassifier first(organRow(), twoVessels());
  EXPECT_EQ(SuppliedTissueClassifier::getBackgroundValue(), 0);
  // A second classifier on a volume whose outside value is 1 changes it for the first as well.
  SuppliedTissueClassifier second(new ThreeDPicAccessor<unsigned char>(newOrgan(9, 2, 1), true, 1), twoVessels());
  EXPECT_EQ(SuppliedTissueClassifier::getBackgroundValue(), 1);
  first.cumputeSuppliedTissue();
  // Now the organ row (value 1) is background for the first one and the other row (value 0) is tissue.
  EXPECT_EQ(rowIds(first), Ids(9, 0));
  EXPECT_EQ(rowIds(first, 1), (Ids{ 1, 1, 1, 1, 1, 2, 2, 2, 2 }));
}

TEST(SuppliedTissueClassifier, TransformationMovesTheSamplesOnceAndTheFirstListIsReused)
{
  SuppliedTissueClassifier classifier(organRow(), twoVessels());
  // Shift by +2 along x: vessel 1 at 2, vessel 2 at 10.
  const double shift[4][4] = { { 1, 0, 0, 2 }, { 0, 1, 0, 0 }, { 0, 0, 1, 0 }, { 7, 7, 7, 7 } };
  classifier.setTransformation(shift);
  classifier.cumputeSuppliedTissue();
  const Ids shifted{ 1, 1, 1, 1, 1, 1, 1, 2, 2 };
  EXPECT_EQ(rowIds(classifier), shifted);
  EXPECT_EQ(classifier.getDistanceVolume()->getVoxel(0, 0, 0), 2.0f);

  // Another matrix and another sampler change nothing: the samples of the first run stay.
  const double identity[4][4] = { { 1, 0, 0, 0 }, { 0, 1, 0, 0 }, { 0, 0, 1, 0 }, { 0, 0, 0, 1 } };
  classifier.setTransformation(identity);
  classifier.setVesselTreeSampler(new HepaVesselTreeSampler());
  classifier.cumputeSuppliedTissue();
  EXPECT_EQ(rowIds(classifier), shifted);
  EXPECT_EQ(classifier.getDistanceVolume()->getVoxel(0, 0, 0), 2.0f);
}

TEST(SuppliedTissueClassifier, VoxelPositionsUseTheOrganAccessorsOriginAndVoxelSize)
{
  // Vessel 1 at (10, 0, 0), vessel 2 at (0, 0, 0); organ origin (10, 0, 0), voxel size 2.
  const ArVesselTree tree =
    makeStar({ 1, PortalVein, S_V, 1, { { 10, 0, 0, 1 } } }, { { 2, PortalVein, S_VI, 1, { { 0, 0, 0, 1 } } } });
  auto * organ = new ThreeDPicAccessor<unsigned char>(newOrgan(2, 1, 1), true, 0);
  organ->setVoxel(0, 0, 0, 1);
  organ->setVoxel(1, 0, 0, 1);
  organ->setOrigin(10, 0, 0);
  organ->setVoxelSize(2, 2, 2);
  SuppliedTissueClassifier classifier(organ, tree);
  classifier.cumputeSuppliedTissue();
  EXPECT_EQ(classifier.getVesselIDVolume()->getVoxel(0, 0, 0), 1);
  EXPECT_EQ(classifier.getDistanceVolume()->getVoxel(0, 0, 0), 0.0f);
  EXPECT_EQ(classifier.getDistanceVolume()->getVoxel(1, 0, 0), 2.0f);
}

TEST(SuppliedTissueClassifier, Errors)
{
  EXPECT_EQ(messageOf([] { SuppliedTissueClassifier classifier(nullptr, twoVessels()); }),
            "Error in SuppliedTissueClassifier::SuppliedTissueClassifier(): volume == NULL");
  SuppliedTissueClassifier classifier(organRow(), twoVessels());
  EXPECT_EQ(messageOf([&] { classifier.setVesselTreeSampler(nullptr); }),
            "Error in SuppliedTissueClassifier::setVesselTreeSampler(...): sampler == NULL");
  classifier.setVesselTreeSampler(new NullSampler());
  EXPECT_EQ(messageOf([&] { classifier.cumputeSuppliedTissue(); }),
            "Error in SuppliedTissueClassifier::cumputeSuppliedTissue(...): elementList == NULL");
  // The organ volume stays the caller's when it says so.
  auto * organ = organRow();
  {
    SuppliedTissueClassifier borrowing(organ, twoVessels());
    borrowing.setOwnsOrganVolume(false);
  }
  EXPECT_EQ(organ->getVoxel(0, 0, 0), 1);
  delete organ;
}

TEST(SuppliedTissueClassifier, VoxelByVoxelPathForOtherEstimators)
{
  // An estimator without group queries is asked once per voxel; the result is the same.
  class PlainEstimator : public KDTreeNextVesselEstimator
  {
  public:
    bool
    supportsConcurrentQueries() const override
    {
      return false;
    }
    void
    estimateGroup(const float *, std::size_t, std::uint16_t *, float *, NextVesselWorkspace &) override
    {
      FAIL() << "group query on a voxel-by-voxel estimator";
    }
  };
  SuppliedTissueClassifier classifier(organRow(), twoVessels());
  classifier.setNextVesselEstimator(new PlainEstimator());
  classifier.cumputeSuppliedTissue();
  EXPECT_EQ(rowIds(classifier), (Ids{ 1, 1, 1, 1, 1, 2, 2, 2, 2 }));
  EXPECT_EQ(classifier.getDistanceVolume()->getVoxel(3, 0, 0), 3.0f);
}

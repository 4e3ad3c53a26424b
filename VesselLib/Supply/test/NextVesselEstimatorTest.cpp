#include "SupplyTestSupport.h"

#include "KDTreeNextVesselEstimator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <stdexcept>
#include <string>

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

struct Estimate
{
  std::uint16_t id;
  float distance;
};

Estimate
estimateAt(KDTreeNextVesselEstimator & estimator, float x, float y, float z)
{
  TissueElement element(x, y, z, 5);
  estimator.estimate(element);
  EXPECT_EQ(element.getOrganLabel(), 5);
  EXPECT_EQ(element.getPosition()[0], x);
  return { element.getVesselId(), element.getDistance() };
}

class NextVesselEstimator : public ::testing::Test
{
protected:
  void
  SetUp() override
  {
    m_Estimator.setDistanceMeasure(new EuclideanDistanceMeasure());
  }
  KDTreeNextVesselEstimator m_Estimator;
};
} // namespace

TEST_F(NextVesselEstimator, RejectsNullAndEmptyInputsAndKeepsItsState)
{
  KDTreeNextVesselEstimator fresh;
  EXPECT_EQ(fresh.getVesselElementList(), nullptr);
  EXPECT_EQ(fresh.getDistanceMeasure(), nullptr);
  EXPECT_EQ(messageOf([&] { fresh.setDistanceMeasure(nullptr); }),
            "Error in KDTreeNextVesselEstimator::setDistanceMeasure(...): measure == NULL");
  EXPECT_EQ(messageOf([&] { fresh.setVesselElementList(nullptr); }),
            "Error in KDTreeNextVesselEstimator::setVesselElementLIst(): theList == NULL!");
  VesselElementList empty;
  EXPECT_EQ(messageOf([&] { fresh.setVesselElementList(&empty); }),
            "Error in KDTreeNextVesselEstimator::setVesselElementList: theList->size() == 0!");
  EXPECT_EQ(fresh.getVesselElementList(), nullptr);

  VesselElementList list{ { 0, 0, 0, 1, 7 }, { 10, 0, 0, 1, 8 } };
  m_Estimator.setVesselElementList(&list);
  EXPECT_THROW(m_Estimator.setVesselElementList(&empty), std::runtime_error);
  EXPECT_THROW(m_Estimator.setVesselElementList(nullptr), std::runtime_error);
  EXPECT_EQ(m_Estimator.getVesselElementList(), &list);
  EXPECT_EQ(estimateAt(m_Estimator, 9, 0, 0).id, 8);
  EXPECT_EQ(estimateAt(m_Estimator, 1, 0, 0).id, 7);

  // A later list replaces the index.
  VesselElementList other{ { 100, 0, 0, 1, 3 } };
  m_Estimator.setVesselElementList(&other);
  EXPECT_EQ(m_Estimator.getVesselElementList(), &other);
  EXPECT_EQ(estimateAt(m_Estimator, 1, 0, 0).id, 3);
}

TEST_F(NextVesselEstimator, OneSampleServesEveryVoxel)
{
  VesselElementList list{ { 1, 2, 3, 1, 42 } };
  m_Estimator.setVesselElementList(&list);
  EXPECT_EQ(m_Estimator.getK(), 1);
  EXPECT_EQ(estimateAt(m_Estimator, 1, 2, 3).id, 42);
  EXPECT_EQ(estimateAt(m_Estimator, 1, 2, 3).distance, 0.0f);
  const Estimate far = estimateAt(m_Estimator, 4, 6, 15);
  EXPECT_EQ(far.id, 42);
  EXPECT_EQ(far.distance, 13.0f); // (3, 4, 12)
}

TEST_F(NextVesselEstimator, TiesGoToTheSampleTakenFirst)
{
  // Two vessels with a sample at the same position: the first in the list wins, whichever id is larger.
  VesselElementList same{ { 5, 5, 5, 1, 9 }, { 5, 5, 5, 1, 2 }, { 0, 0, 0, 1, 4 } };
  m_Estimator.setVesselElementList(&same);
  EXPECT_EQ(m_Estimator.getK(), 3);
  EXPECT_EQ(estimateAt(m_Estimator, 5, 5, 5).id, 9);
  EXPECT_EQ(estimateAt(m_Estimator, 6, 5, 5).id, 9);

  // Eight samples at the corners of a cube around the query: more than three tie, the lowest index wins even when
  // it is not among the first three a k-nearest query would meet.
  VesselElementList corners;
  std::uint16_t id = 20;
  for (float z : { 1.0f, -1.0f })
  {
    for (float y : { 1.0f, -1.0f })
    {
      for (float x : { 1.0f, -1.0f })
      {
        corners.push_back({ x, y, z, 1, id++ });
      }
    }
  }
  corners.push_back({ 0, 0, 2, 1, 99 }); // farther: sqrt(3) < 2
  m_Estimator.setVesselElementList(&corners);
  const Estimate centre = estimateAt(m_Estimator, 0, 0, 0);
  EXPECT_EQ(centre.id, 20);
  EXPECT_EQ(centre.distance, static_cast<float>(std::sqrt(3.0)));
  // Slightly towards the last corner (-1, -1, -1): that one alone is nearest.
  EXPECT_EQ(estimateAt(m_Estimator, -0.25f, -0.25f, -0.25f).id, 27);
}

TEST_F(NextVesselEstimator, GroupQueriesAgreeWithSingleQueries)
{
  VesselElementList list;
  for (int i = 0; i < 50; ++i)
  {
    list.push_back({ static_cast<float>(i % 7) * 1.5f,
                     static_cast<float>(i % 5),
                     static_cast<float>(i / 10),
                     1,
                     static_cast<std::uint16_t>(i + 1) });
  }
  m_Estimator.setVesselElementList(&list);
  std::vector<float> positions;
  for (int z = 0; z < 4; ++z)
  {
    for (int y = 0; y < 4; ++y)
    {
      for (int x = 0; x < 4; ++x)
      {
        positions.insert(positions.end(), { x * 0.75f + 2, y * 0.5f + 1, z * 1.25f });
      }
    }
  }
  std::vector<std::uint16_t> ids(64);
  std::vector<float> distances(64);
  NextVesselWorkspace workspace;
  m_Estimator.estimateGroup(positions.data(), 64, ids.data(), distances.data(), workspace);
  for (std::size_t i = 0; i < 64; ++i)
  {
    const Estimate single = estimateAt(m_Estimator, positions[3 * i], positions[3 * i + 1], positions[3 * i + 2]);
    EXPECT_EQ(ids[i], single.id) << i;
    EXPECT_EQ(distances[i], single.distance) << i;
  }
}

#include "ar.h"

#include <gtest/gtest.h>

namespace
{
struct Counted
{
  explicit Counted(int * liveCount)
    : live(liveCount)
  {
    ++*live;
  }
  ~Counted() { --*live; }
  int * live;
};
} // namespace

TEST(ArHandle, CountsLiveInTheRegistryAndTheLastHandleDestroys)
{
  int live = 0;
  const std::size_t before = ar<Counted>::registrySize();
  auto * object = new Counted(&live);
  {
    ar<Counted> first(object);
    EXPECT_EQ(ar<Counted>::count(object), 1);
    EXPECT_EQ(ar<Counted>::registrySize(), before + 1);
    {
      ar<Counted> second = first;
      EXPECT_EQ(ar<Counted>::count(object), 2);
      EXPECT_EQ(second.get(), object);
      EXPECT_TRUE(second == first);
      // A new handle made from the raw pointer shares the same count.
      ar<Counted> third(object);
      EXPECT_EQ(ar<Counted>::count(object), 3);
    }
    EXPECT_EQ(ar<Counted>::count(object), 1);
    EXPECT_EQ(live, 1);
  }
  EXPECT_EQ(live, 0);
  EXPECT_EQ(ar<Counted>::count(object), 0);
  EXPECT_EQ(ar<Counted>::registrySize(), before);
}

TEST(ArHandle, AssignmentReleasesTheOldObjectAndSelfAssignmentDoesNothing)
{
  int live = 0;
  ar<Counted> a(new Counted(&live));
  ar<Counted> b(new Counted(&live));
  EXPECT_EQ(live, 2);
  Counted * first = a.get();
  a = a.get();
  EXPECT_EQ(ar<Counted>::count(first), 1);
  a = b;
  EXPECT_EQ(live, 1);
  EXPECT_EQ(ar<Counted>::count(b.get()), 2);
  a = nullptr;
  EXPECT_TRUE(a.isNull());
  EXPECT_EQ(ar<Counted>::count(b.get()), 1);
  ar<Counted> moved(std::move(b));
  EXPECT_TRUE(b.isNull());
  EXPECT_EQ(ar<Counted>::count(moved.get()), 1);
  moved = ar<Counted>();
  EXPECT_EQ(live, 0);
}

TEST(ArHandle, NullHandlesTouchNoEntry)
{
  const std::size_t before = ar<Counted>::registrySize();
  ar<Counted> empty;
  ar<Counted> copy = empty;
  copy = empty;
  EXPECT_FALSE(copy);
  EXPECT_EQ(ar<Counted>::count(nullptr), 0);
  EXPECT_EQ(ar<Counted>::registrySize(), before);
}

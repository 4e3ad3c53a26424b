#include "lumoIntProperty.h"
#include "lumoLogger.h"
#include "lumoResectionProposalDescriptorProperty.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using namespace lumo;
using Descriptor = ResectionProposalDescriptorProperty::LabelDescriptor;
using Property = ResectionProposalDescriptorProperty;

namespace
{
Descriptor
makeDescriptor(int label, const std::string & name, Property::ResectionType type, float volume, int surface)
{
  Descriptor descriptor;
  descriptor.Label = label;
  descriptor.Name = name;
  descriptor.ResectionType = type;
  descriptor.Volume = volume;
  descriptor.SurfaceOutputIndex = surface;
  descriptor.Color.Set(0.25f, 0.5f, 1.0f);
  return descriptor;
}

/** Remnant (2), Resected (3), At risk (4), added out of order. */
Property::Pointer
makePlan()
{
  auto property = Property::New();
  property->SetResectionProposalName("Plan");
  property->AddLabelDescriptor(makeDescriptor(4, "At risk", Property::AreaAtRisk, 0.5f, 2));
  property->AddLabelDescriptor(makeDescriptor(2, "Remnant", Property::NotToBeResected, 1234.5f, 0));
  property->AddLabelDescriptor(makeDescriptor(3, "Resected", Property::ToBeResected, 12.25f, 1));
  return property;
}

/** Collects the log lines written while it lives. */
class LogCapture
{
public:
  LogCapture()
  {
    Logger::SetSink([this](Logger::Level level, const std::string & message) { m_Lines.emplace_back(level, message); });
  }
  ~LogCapture() { Logger::SetSink(nullptr); }
  LogCapture(const LogCapture &) = delete;
  LogCapture &
  operator=(const LogCapture &) = delete;

  const std::vector<std::pair<Logger::Level, std::string>> &
  Lines() const
  {
    return m_Lines;
  }

private:
  std::vector<std::pair<Logger::Level, std::string>> m_Lines;
};
} // namespace

TEST(ResectionProposalDescriptorProperty, KeepsOneDescriptorPerLabelInLabelOrder)
{
  Property::Pointer property = makePlan();
  EXPECT_STREQ(property->GetNameOfClass(), "ResectionProposalDescriptorProperty");
  EXPECT_EQ(property->GetResectionProposalName(), "Plan");
  ASSERT_EQ(property->GetNumberOfLabels(), 3u);
  EXPECT_EQ(property->GetLabelSet(), (std::set<int>{ 2, 3, 4 }));
  std::vector<int> order;
  for (const Descriptor & descriptor : property->GetLabelDesriptorSet())
  {
    order.push_back(descriptor.Label);
  }
  EXPECT_EQ(order, (std::vector<int>{ 2, 3, 4 }));

  // A second descriptor for label 3 does not replace the first.
  const itk::ModifiedTimeType before = property->GetMTime();
  property->AddLabelDescriptor(makeDescriptor(3, "Other", Property::AreaAtRisk, 99.0f, 7));
  EXPECT_EQ(property->GetNumberOfLabels(), 3u);
  EXPECT_EQ(property->GetLabelName(3), "Resected");
  EXPECT_EQ(property->GetResectionType(3), Property::ToBeResected);
  EXPECT_FLOAT_EQ(property->GetVolume(3), 12.25f);
  EXPECT_EQ(property->GetMTime(), before);
  EXPECT_EQ(property->GetColor(4)[2], 1.0f);

  std::string name("from a string");
  property->SetResectionProposalName(name);
  EXPECT_EQ(property->GetResectionProposalName(), name);
}

TEST(ResectionProposalDescriptorProperty, ValueAsStringBytes)
{
  EXPECT_EQ(makePlan()->GetValueAsString(),
            "Resection proposal: Plan\n Number of labels: 3\n"
            "Label Remnant: Label = 2, ResectionType = 2, Volume = 1234.5\n"
            "Label Resected: Label = 3, ResectionType = 3, Volume = 12.25\n"
            "Label At risk: Label = 4, ResectionType = 4, Volume = 0.5\n");
  EXPECT_EQ(Property::New()->GetValueAsString(), "Resection proposal: \n Number of labels: 0\n");
}

TEST(ResectionProposalDescriptorProperty, LabelForSurfaceIndexIsTheFirstInLabelOrder)
{
  auto property = Property::New();
  property->AddLabelDescriptor(makeDescriptor(7, "b", Property::ToBeResected, 1, 1));
  property->AddLabelDescriptor(makeDescriptor(5, "a", Property::ToBeResected, 1, 1));
  property->AddLabelDescriptor(makeDescriptor(9, "c", Property::ToBeResected, 1, 0));
  EXPECT_EQ(property->GetLabelForSurfaceIndex(1), 5);
  EXPECT_EQ(property->GetLabelForSurfaceIndex(0), 9);
  EXPECT_EQ(property->GetLabelForSurfaceIndex(2), -1);
  EXPECT_EQ(property->GetLabelForSurfaceIndex(-1), -1);
}

TEST(ResectionProposalDescriptorProperty, AMissingLabelIsLoggedAndAnswersDefaults)
{
  Property::Pointer property = makePlan();
  LogCapture log;
  const Descriptor & missing = property->GetLabelDescriptor(17);
  EXPECT_EQ(missing.Label, 0);
  EXPECT_EQ(missing.Name, "");
  EXPECT_EQ(missing.ResectionType, Property::UndefinedResectionStatus);
  EXPECT_EQ(missing.Volume, 0.0f);
  EXPECT_EQ(missing.Color, Color(0.0f));
  ASSERT_EQ(log.Lines().size(), 1u);
  EXPECT_EQ(log.Lines()[0].first, Logger::Level::Error);
  EXPECT_EQ(log.Lines()[0].second,
            "lumo::ResectionProposalDescriptorProperty::GetLabelDescriptor: label descriptor for label not found");

  EXPECT_EQ(property->GetLabelName(1), "");
  EXPECT_EQ(log.Lines().size(), 2u);
  EXPECT_EQ(property->GetLabelName(2), "Remnant");
  EXPECT_EQ(log.Lines().size(), 2u);
}

TEST(ResectionProposalDescriptorProperty, IsEqualAndAssignFollowThePropertyProtocol)
{
  Property::Pointer a = makePlan();
  Property::Pointer b = makePlan();
  EXPECT_TRUE(a->IsEqual(*b));
  EXPECT_TRUE(*a == *b);

  b->SetResectionProposalName("Other");
  EXPECT_FALSE(a->IsEqual(*b));
  b->SetResectionProposalName("Plan");

  // Same labels, one field differs.
  auto c = Property::New();
  c->SetResectionProposalName("Plan");
  for (Descriptor descriptor : a->GetLabelDesriptorSet())
  {
    if (descriptor.Label == 4)
    {
      descriptor.SurfaceOutputIndex = 5;
    }
    c->AddLabelDescriptor(descriptor);
  }
  EXPECT_FALSE(a->IsEqual(*c));
  EXPECT_FALSE(a->IsEqual(*IntProperty::New(3)));

  const itk::ModifiedTimeType before = c->GetMTime();
  EXPECT_TRUE(c->Assign(*a));
  EXPECT_TRUE(c->IsEqual(*a));
  EXPECT_GT(c->GetMTime(), before);
  EXPECT_EQ(c->GetLabelDescriptor(4).SurfaceOutputIndex, 2);

  // Assigning an equal value does not mark modified; another class is refused and changes nothing.
  const itk::ModifiedTimeType after = c->GetMTime();
  EXPECT_TRUE(c->Assign(*b));
  EXPECT_EQ(c->GetMTime(), after);
  EXPECT_FALSE(c->Assign(*IntProperty::New(3)));
  EXPECT_TRUE(c->IsEqual(*a));

  // Clone goes through CreateAnother and Assign.
  auto clone = a->Clone();
  EXPECT_TRUE(clone->IsEqual(*a));
  EXPECT_NE(clone.GetPointer(), a.GetPointer());
}

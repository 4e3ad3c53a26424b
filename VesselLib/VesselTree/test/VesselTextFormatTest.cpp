#include "VesselTestTree.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace vessel_test;
using Ids = std::vector<int>;

namespace
{
const std::string header = "VALD-KRN 2000 Tree\n";

ar<Vessel>
labelledVessel()
{
  ar<Vessel> vessel = makeVessel(7);
  vessel->getProperties().setSegmentType(S_IVa);
  vessel->getProperties().setResectionStatus(ToBeResected);
  vessel->appendPoint({ 1.0f, 2.5f, -3.0f, 0.5f });
  return vessel;
}

std::string
textOf(const Tree<ar<Vessel>> & tree)
{
  std::ostringstream os;
  tree.write(os);
  return os.str();
}

std::string
textOf(const ar<Vessel> & vessel)
{
  std::ostringstream os;
  os << vessel;
  return os.str();
}

/** Reads a tree; the stream state tells whether it succeeded. */
std::unique_ptr<LinkedVesselTree>
readTree(const std::string & text, bool * ok = nullptr)
{
  auto tree = std::make_unique<LinkedVesselTree>();
  std::istringstream is(text);
  tree->read(is);
  if (ok != nullptr)
  {
    *ok = !is.fail();
  }
  return tree;
}
} // namespace

TEST(VesselTextFormat, RecordBytes)
{
  EXPECT_EQ(textOf(labelledVessel()), " { t f 5 2 3    7 -1 1  [ 1 2.5 -3 0.5 ]  } ");
  ar<Vessel> empty = makeVessel(3);
  empty->getProperties().setVisible(false);
  empty->getProperties().setActive(true);
  empty->setCleaningLabel(12);
  empty->getProperties().setBloodVesselType(HepaticVein);
  EXPECT_EQ(textOf(empty), " { f t 1 1 1    3 12 0  } ");
}

TEST(VesselTextFormat, OneVesselTreeBytes)
{
  LinkedVesselTree tree;
  tree.setRoot(labelledVessel());
  EXPECT_EQ(textOf(tree), header + "{ \n   " + textOf(labelledVessel()) + " -\n}\n");
}

TEST(VesselTextFormat, RootWithTwoLeavesBytes)
{
  LinkedVesselTree tree;
  tree.setRoot(makeVessel(1));
  addChild(tree.getRootNode(), 2);
  addChild(tree.getRootNode(), 3);
  const std::string r = textOf(makeVessel(1));
  const std::string a = textOf(makeVessel(2));
  const std::string b = textOf(makeVessel(3));
  const std::string expected = header + "{ \n" + "   " + r + " " + "\n" + "      <\n" + "         " + a + " -" + "|\n" +
                               "         " + b + " -" + "\n" + "      >\n" + "   " + "\n}\n";
  EXPECT_EQ(textOf(tree), expected);
}

TEST(VesselTextFormat, RootlessTreeIsWrittenButDoesNotReadBack)
{
  LinkedVesselTree tree;
  const std::string text = textOf(tree);
  EXPECT_EQ(text, header + "{ \n}\n");
  bool ok = true;
  auto back = readTree(text, &ok);
  EXPECT_FALSE(ok);
}

TEST(VesselTextFormat, SixSignificantDigitsAndExponentForm)
{
  ar<Vessel> vessel = makeVessel(1);
  vessel->appendPoint({ 12.3456789f, 100000.0f, 1234567.0f, 0.0000001f });
  const std::string text = textOf(vessel);
  EXPECT_EQ(text, " { t f 1 2 1    1 -1 1  [ 12.3457 100000 1.23457e+06 1e-07 ]  } ");

  std::istringstream is(text);
  ar<Vessel> back;
  is >> back;
  ASSERT_FALSE(is.fail());
  EXPECT_FLOAT_EQ(back->getPoint(0).x, 12.3457f);
  EXPECT_FLOAT_EQ(back->getPoint(0).diameter, 1e-07f);
  EXPECT_FLOAT_EQ(back->getPoint(0).z, 1234570.0f);
  // Both spellings of the exponent read alike.
  std::istringstream threeDigits(" { t f 1 2 1    1 -1 1  [ 0 0 0 1e-007 ]  } ");
  ar<Vessel> other;
  threeDigits >> other;
  ASSERT_FALSE(threeDigits.fail());
  EXPECT_EQ(other->getPoint(0).diameter, back->getPoint(0).diameter);
  EXPECT_FALSE(back->isPristine());
}

TEST(VesselTextFormat, AnyWhiteSpaceLayoutReadsAlike)
{
  auto tree = makeThreeLevelTree();
  tree->getRootNode()->getData()->appendPoint({ 1, 2, 3, 4 });
  tree->getRootNode()->getChild(1)->getData()->appendPoint({ -1.5f, 2e-3f, 3, 0.25f });
  const std::string canonical = textOf(*tree);

  const std::string compact = "VALD-KRN 2000 Tree\n{{t f 1 2 1 1 -1 1[1 2 3 4]}<{t f 1 2 1 2 -1 0}<{t f 1 2 1 4 -1 0}-|"
                              "{t f 1 2 1 5 -1 0}->|{t f 1 2 1 3 -1 1[-1.5 0.002 3 0.25]}<{t f 1 2 1 6 -1 0}->>}";
  const std::string spread = "VALD-KRN\t2000\r\nTree\n\n{\t{ t\tf 1\n2 1 1 -1 1 [ 1 2 3 4 ] } \v< { t f 1 2 1 2 -1 0 }"
                             " < { t f 1 2 1 4 -1 0 } - | { t f 1 2 1 5 -1 0 } - > | { t f 1 2 1 3 -1 1 [ -1.5 "
                             "2e-3 3 .25 ] } < { t f 1 2 1 6 -1 0 } - > >\f}";
  // Files from Windows end their lines with CR LF; other writers put a sign before positive numbers.
  std::string crlf;
  for (char c : canonical)
  {
    crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
  }
  std::string signs = compact;
  signs.replace(signs.find("[1 2 3 4]"), 9, "[+1 2 +3 +4]");
  signs.replace(signs.find("{t f 1 2 1 3 -1 1"), 17, "{t f +1 2 1 +3 -1 +1");
  for (const std::string & text : { canonical, compact, spread, crlf, signs })
  {
    bool ok = false;
    auto back = readTree(text, &ok);
    ASSERT_TRUE(ok) << text;
    EXPECT_EQ(textOf(*back), canonical);
    EXPECT_EQ(preorderIds(*back), (Ids{ 1, 2, 4, 5, 3, 6 }));
  }
}

TEST(VesselTextFormat, ATreeSurvivesWriteReadWrite)
{
  auto tree = makeThreeLevelTree();
  int n = 0;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    ar<Vessel> v = it->next();
    v->getProperties().setSegmentType(2 + n);
    v->getProperties().setResectionStatus(1 + n % 4);
    v->getProperties().setVisible(n % 2 == 0);
    v->setCleaningLabel(n - 1);
    for (int p = 0; p < n; ++p)
    {
      v->appendPoint({ 0.1f * p, -7.25f * p, 1e5f + p, 3.0f / (p + 1) });
    }
    ++n;
  }
  const std::string text = textOf(*tree);
  bool ok = false;
  auto back = readTree(text, &ok);
  ASSERT_TRUE(ok);
  EXPECT_EQ(textOf(*back), text);
}

TEST(VesselTextFormat, OnlyALowerCaseTIsTrue)
{
  for (const char * flag : { "T", "1", "x", "f" })
  {
    std::istringstream is(std::string(" { ") + flag + " " + flag + " 1 2 1 1 -1 0 } ");
    ar<Vessel> vessel;
    is >> vessel;
    ASSERT_FALSE(is.fail()) << flag;
    EXPECT_FALSE(vessel->getProperties().isVisible()) << flag;
    EXPECT_FALSE(vessel->getProperties().isActive()) << flag;
  }
  std::istringstream is(" { t t 1 2 1 1 -1 0 } ");
  ar<Vessel> vessel;
  is >> vessel;
  EXPECT_TRUE(vessel->getProperties().isVisible());
  EXPECT_TRUE(vessel->getProperties().isActive());
}

TEST(VesselTextFormat, ResectionStatusBelowOneReadsAsOneAndOtherValuesAreKept)
{
  for (const auto & [text, status] :
       std::vector<std::pair<std::string, int>>{ { "0", 1 }, { "-5", 1 }, { "1", 1 }, { "4", 4 }, { "17", 17 } })
  {
    std::istringstream is(" { t f 33 9 " + text + "    1 -1 0 } ");
    ar<Vessel> vessel;
    is >> vessel;
    ASSERT_FALSE(is.fail());
    EXPECT_EQ(vessel->getProperties().getResectionStatus(), status) << text;
    EXPECT_EQ(vessel->getProperties().getSegmentType(), 33);
    EXPECT_EQ(vessel->getProperties().getBloodVesselType(), 9);
  }
}

TEST(VesselTextFormat, AVesselWithoutPointsReadsBackWithoutPoints)
{
  std::istringstream is(textOf(makeVessel(5)));
  ar<Vessel> vessel;
  is >> vessel;
  ASSERT_FALSE(is.fail());
  EXPECT_EQ(vessel->numberOfPoints(), 0u);
  EXPECT_EQ(vessel->getVesselId(), 5);
  EXPECT_FALSE(vessel->isPristine());
}

TEST(VesselTextFormat, ReadingIntoATreeWithARootLeavesTheStreamWhereItWas)
{
  auto tree = makeThreeLevelTree();
  const std::string text = textOf(*makeThreeLevelTree());
  std::istringstream is(text);
  const auto before = is.tellg();
  tree->read(is);
  EXPECT_EQ(is.tellg(), before);
  EXPECT_TRUE(is.good());
  std::string word;
  is >> word;
  EXPECT_EQ(word, "VALD-KRN");
  EXPECT_EQ(tree->numberOfNodes(), 6);
}

TEST(VesselTextFormat, HeaderWordsAreNotChecked)
{
  bool ok = false;
  auto tree = readTree("some other words { { t f 1 2 1 1 -1 0 } - }", &ok);
  EXPECT_TRUE(ok);
  EXPECT_EQ(tree->numberOfNodes(), 1);
}

TEST(VesselTextFormat, MalformedNumbersFailTheStream)
{
  for (const char * text : { " { t f x 2 1 1 -1 0 } ",
                             " { t f 1 2 1 1 -1 -1 } ",
                             " { t f 1 2 1 1 -1 1 [ 1 2 nan 4 ] } ",
                             " { t f 1 2 1 1 -1 1 [ 1 2 1e99 4 ] } ",
                             " { t f 1 2 1 99999999999 -1 0 } ",
                             " { t f 1 2 1 1 -1 1 [ 1 2 3 ",
                             "" })
  {
    std::istringstream is(text);
    ar<Vessel> vessel;
    is >> vessel;
    EXPECT_TRUE(is.fail()) << text;
    ASSERT_FALSE(vessel.isNull());
  }
}

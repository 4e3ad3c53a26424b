#include "ArboTestSupport.h"

#include "ArVesselTree.h"

#include <fstream>
#include <locale>
#include <set>

using namespace arbo_test;

namespace
{
/** Ids of the vessels that satisfy the predicate, read from a .ves file. */
template <class Predicate>
std::set<int>
idsWhere(const std::string & file, Predicate predicate)
{
  std::ifstream in(file);
  in.imbue(std::locale::classic());
  LinkedVesselTree tree;
  tree.read(in);
  EXPECT_FALSE(in.fail()) << file;
  std::set<int> ids;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree.newPreorderIterator());
  while (it->hasNext())
  {
    ar<Vessel> vessel = it->next();
    if (predicate(*vessel))
    {
      ids.insert(vessel->getVesselId());
    }
  }
  return ids;
}

std::set<int>
withStatus(const std::string & file, int status)
{
  return idsWhere(file, [status](const Vessel & v) { return v.getProperties().getResectionStatus() == status; });
}
} // namespace

class ArboLabel : public ArboTest
{
protected:
  const std::string sample = dataFile("sample-portal.ves");
};

TEST_F(ArboLabel, SubtreeMarksExactlyTheDownstreamVessels)
{
  // In the sample, vessel 5 (right anterior branch) feeds 9 (S_V) and 10 (S_VIII), which end in 18, 19, 20, 21.
  ArboRun run =
    runArbo({ "label", sample, "-o", path("plan.ves"), "--vessel", "5", "--select", "subtree", "--status", "resect" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err,
            "arbo: 7 of 7 selected vessels (subtree of vessel 5) now carry resection status To be resected\n"
            "arbo: wrote " +
              path("plan.ves") + "\n");
  const std::set<int> before = withStatus(sample, 3);
  std::set<int> expected = before;
  expected.insert({ 5, 9, 10, 18, 19, 20, 21 });
  EXPECT_EQ(withStatus(path("plan.ves"), 3), expected);
  EXPECT_EQ(idsWhere(path("plan.ves"), [](const Vessel & v) { return v.getProperties().isActive(); }), std::set<int>{});
}

TEST_F(ArboLabel, PathAndSingleSelections)
{
  ArboRun path_ =
    runArbo({ "-q", "label", sample, "-o", path("path.ves"), "--vessel", "21", "--select", "path", "--status", "4" });
  ASSERT_EQ(path_.status, 0) << path_.err;
  EXPECT_EQ(path_.err, "");
  EXPECT_EQ(withStatus(path("path.ves"), 4), (std::set<int>{ 1, 2, 5, 10, 21 }));

  ArboRun single = runArbo({ "-q", "label", sample, "-o", path("single.ves"), "--vessel", "3", "--hide" });
  ASSERT_EQ(single.status, 0);
  EXPECT_EQ(idsWhere(path("single.ves"), [](const Vessel & v) { return !v.getProperties().isVisible(); }),
            std::set<int>{ 3 });
}

TEST_F(ArboLabel, TypesAndSegmentsFollowTheLabellingRules)
{
  ArboRun type = runArbo(
    { "-q", "label", sample, "-o", path("artery.ves"), "--vessel", "11", "--select", "subtree", "--type", "artery" });
  ASSERT_EQ(type.status, 0) << type.err;
  EXPECT_EQ(idsWhere(path("artery.ves"), [](const Vessel & v) { return v.getProperties().getBloodVesselType() == 3; }),
            (std::set<int>{ 11, 22, 23 }));
  // Their S_VI segment does not fit an artery.
  EXPECT_EQ(idsWhere(path("artery.ves"), [](const Vessel & v) { return v.getProperties().getSegmentType() == 8; }),
            std::set<int>{});

  ArboRun refused = runArbo({ "label", sample, "-o", path("seg.ves"), "--vessel", "3", "--segment", "HS_LS" });
  ASSERT_EQ(refused.status, 0);
  EXPECT_EQ(refused.err,
            "arbo: 0 of 1 selected vessels (single of vessel 3) now carry segment HS_LS; 1 kept their "
            "segment, which must fit the vessel type\narbo: wrote " +
              path("seg.ves") + "\n");
}

TEST_F(ArboLabel, UnknownIdsAndNamesWriteNothing)
{
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
    { { "--vessel", "99", "--status", "resect" }, "arbo: " + sample + ": has no vessel with id 99\n" },
    { { "--vessel", "5", "--type", "veins" },
      "arbo: --type: unknown blood vessel type 'veins' (use portal, hepatic, artery, bile, undefined or 0 to 4)\n" },
    { { "--vessel", "5", "--segment", "S_IX" },
      "arbo: --segment: unknown segment 'S_IX' (use S_I .. S_VIII, S_IVa, S_IVb, S_All, HS_LSV .. HS_RLS, "
      "undefined or 1 to 27)\n" },
    { { "--vessel", "5", "--status", "cut" },
      "arbo: --status: unknown resection status 'cut' (use resect, keep, risk, undefined or 1 to 4)\n" },
  };
  for (const auto & [options, message] : cases)
  {
    std::vector<std::string> arguments{ "label", sample, "-o", path("out.ves") };
    arguments.insert(arguments.end(), options.begin(), options.end());
    ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, message);
    EXPECT_TRUE(files().empty());
  }
}

TEST_F(ArboLabel, ExactlyOneLabelIsUsage)
{
  for (const std::vector<std::string> & extra : std::vector<std::vector<std::string>>{
         {}, { "--hide", "--show" }, { "--status", "resect", "--type", "artery" } })
  {
    std::vector<std::string> arguments{ "label", sample, "-o", path("out.ves"), "--vessel", "5" };
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 2) << run.err;
    EXPECT_TRUE(files().empty());
  }
  ArboRun badSelect = runArbo({ "label", sample, "-o", path("out.ves"), "--vessel", "5", "--select", "all", "--hide" });
  EXPECT_EQ(badSelect.status, 2);
}

TEST_F(ArboLabel, LabelsComeFromTheNearestVesselOfAReferenceTree)
{
  // The reference: the sample with the posterior branch (vessel 6 and its subtree) marked for resection.
  ArboRun plan = runArbo(
    { "-q", "label", sample, "-o", path("plan.ves"), "--vessel", "6", "--select", "subtree", "--status", "resect" });
  ASSERT_EQ(plan.status, 0);
  // The target: the sample with every label reset, as a tree fresh from an image would be.
  ArboRun bare = runArbo(
    { "-q", "label", sample, "-o", path("bare.ves"), "--vessel", "1", "--select", "subtree", "--type", "undefined" });
  ASSERT_EQ(bare.status, 0);
  ArboRun reset = runArbo({ "-q",
                            "label",
                            path("bare.ves"),
                            "-o",
                            path("bare.ves"),
                            "--vessel",
                            "1",
                            "--select",
                            "subtree",
                            "--status",
                            "undefined" });
  ASSERT_EQ(reset.status, 0);
  ASSERT_EQ(withStatus(path("bare.ves"), 1).size(), 29u);

  ArboRun run = runArbo({ "label", path("bare.ves"), "-o", path("labelled.ves"), "--from", path("plan.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err,
            "arbo: 29 vessels took the type, segment and resection status of their nearest vessel in " +
              path("plan.ves") + "\narbo: wrote " + path("labelled.ves") + "\n");
  EXPECT_EQ(withStatus(path("labelled.ves"), 3), withStatus(path("plan.ves"), 3));
  EXPECT_EQ(idsWhere(path("labelled.ves"), [](const Vessel & v) { return v.getProperties().getSegmentType() == 8; }),
            idsWhere(sample, [](const Vessel & v) { return v.getProperties().getSegmentType() == 8; }));

  // The same tree splits nowhere: --no-split gives the same file.
  run = runArbo({ "-q", "label", path("bare.ves"), "-o", path("whole.ves"), "--from", path("plan.ves"), "--no-split" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(readFile(path("whole.ves")), readFile(path("labelled.ves")));
  ArboRun alone = runArbo({ "label", path("bare.ves"), "-o", path("x.ves"), "--vessel", "3", "--hide", "--no-split" });
  EXPECT_EQ(alone.status, 2);
  EXPECT_EQ(alone.err.rfind("arbo: --no-split requires --from\n", 0), 0u) << alone.err;
  EXPECT_FALSE(std::filesystem::exists(path("x.ves")));

  ArboRun both =
    runArbo({ "label", path("bare.ves"), "-o", path("x.ves"), "--from", path("plan.ves"), "--vessel", "3" });
  EXPECT_EQ(both.status, 2);
  ArboRun missing = runArbo({ "label", path("bare.ves"), "-o", path("x.ves"), "--from", path("none.ves") });
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "arbo: " + path("none.ves") + ": cannot be opened (No such file or directory)\n");
  EXPECT_FALSE(std::filesystem::exists(path("x.ves")));
}

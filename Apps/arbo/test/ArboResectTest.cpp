#include "ArboTestSupport.h"
#include "HandTreeSupport.h"

#include "ArVesselTree.h"
#include "lumoCalyxSceneIO.h"
#include "lumoDataStorage.h"
#include "lumoImageIO.h"
#include "lumoResectionProposalDescriptorPropertySerializer.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <fstream>
#include <locale>
#include <map>

using namespace arbo_test;

namespace
{
using hand_tree::VesselRecipe;

void
writeTree(const std::string & file, const std::vector<VesselRecipe> & recipes)
{
  std::ofstream out(file);
  out.imbue(std::locale::classic());
  hand_tree::makeTree(recipes).data->GetVesselTreeData(0)->write(out);
}

/** A row of 21 voxels of 1 mm along x: 0..19 organ, 20 outside. */
lumo::Image::Pointer
rowImage(const std::vector<unsigned int> & ones, unsigned int length = 21, double spacing = 1.0, double origin = 0.0)
{
  auto image = lumo::Image::New();
  lumo::Vector3D voxel;
  voxel.Fill(1.0);
  voxel[0] = spacing;
  lumo::Point3D corner;
  corner.Fill(0.0);
  corner[0] = origin;
  lumo::Geometry3D::DirectionType direction;
  direction.SetIdentity();
  image->Initialize(itk::IOComponentEnum::UCHAR, { { length, 1, 1 } }, voxel, corner, direction);
  auto * data = static_cast<unsigned char *>(image->GetData());
  for (unsigned int x : ones)
  {
    data[x] = 1;
  }
  return image;
}

std::vector<unsigned int>
organVoxels()
{
  std::vector<unsigned int> voxels;
  for (unsigned int x = 0; x < 20; ++x)
  {
    voxels.push_back(x);
  }
  return voxels;
}

std::string
labelsIn(const std::string & file)
{
  lumo::Image::Pointer image = lumo::ReadImageFile(file);
  const auto * data = static_cast<const unsigned char *>(image->GetData());
  std::string text;
  for (std::size_t i = 0; i < image->GetNumberOfVoxels(); ++i)
  {
    text += static_cast<char>('0' + data[i]);
  }
  return text;
}

/** The row with its trees: portal A (x 10) with B (4, child C at 1) and D (16); hepatic H1 (19) with H2 (4, child
 *  H3 at 7). Territories: C {0..2}, B {3..6}, A {7..13}, D {14..19}; drainage H2 {0..5}, H3 {6..12}, H1 {13..19}.
 */
class ArboResectTest : public ArboTest
{
protected:
  void
  SetUp() override
  {
    ArboTest::SetUp();
    lumo::WriteImageFile(rowImage(organVoxels()), path("organ.nrrd"));
    lumo::WriteImageFile(rowImage({ 2 }), path("tumour.nrrd"));
    writeTree(path("portal.ves"),
              { { -1, 1, 2, 2, { 10 } }, { 0, 2, 2, 1, { 4 } }, { 1, 3, 2, 1, { 1 } }, { 0, 4, 2, 1, { 16 } } });
    writeTree(path("hepatic.ves"), { { -1, 1, 1, 1, { 19 } }, { 0, 2, 1, 1, { 4 } }, { 1, 3, 1, 1, { 7 } } });
    m_Inputs = files();
  }

  /** A refused run: exit 1, exactly that line on stderr and no new file. */
  void
  expectRefused(const std::vector<std::string> & arguments, const std::string & line)
  {
    const ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 1) << run.err;
    EXPECT_EQ(run.err, line + "\n");
    EXPECT_EQ(files(), m_Inputs);
  }

  std::vector<std::string> m_Inputs;
};
} // namespace

TEST_F(ArboResectTest, ThreeMarginsWriteImagesProposalsTreesAndTheTable)
{
  const ArboRun run = runArbo({ "resect",
                                path("organ.nrrd"),
                                path("portal.ves"),
                                "--hepatic",
                                path("hepatic.ves"),
                                "--tumour",
                                path("tumour.nrrd"),
                                "--margin",
                                "0,1,2",
                                "-o",
                                path("risk.nrrd"),
                                "--tree-out",
                                path("plan.ves"),
                                "--min-flr",
                                "50" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(labelsIn(path("risk-0mm.nrrd")), "223222222222222222220");
  EXPECT_EQ(labelsIn(path("risk-1mm.nrrd")), "333322222222222222220");
  // 2 mm reach B (point at 4) and H2 (point at 4): B, C devascularised, H2, H3 congested.
  EXPECT_EQ(labelsIn(path("risk-2mm.nrrd")), "333333344444422222220");
  for (const char * name : { "risk-0mm.proposal.xml",
                             "risk-1mm.proposal.xml",
                             "risk-2mm.proposal.xml",
                             "plan-0mm.ves",
                             "plan-1mm.ves",
                             "plan-2mm.ves" })
  {
    EXPECT_TRUE(std::filesystem::exists(path(name))) << name;
  }
  EXPECT_NE(readFile(path("risk-2mm.proposal.xml"))
              .find("<LabelDescriptor Label=\"4\" Name=\"Area at risk\" ResectionType=\"AreaAtRisk\" Volume=\"0.006"),
            std::string::npos)
    << readFile(path("risk-2mm.proposal.xml"));

  EXPECT_NE(run.out.find("margin 2 mm -> " + path("risk-2mm.nrrd") +
                         "\n"
                         "  part            voxels          ml  % organ\n"
                         "  remnant              7        0.01    35.00\n"
                         "  resected             7        0.01    35.00\n"
                         "  at risk              6        0.01    30.00\n"
                         "  tumour               1        0.00     5.00\n"
                         "  FLR 36.84 % (remnant / (organ - tumour))\n"),
            std::string::npos)
    << run.out;
  // 1 mm keeps 16 of 19 voxels (84.21 %): only 2 mm is flagged.
  EXPECT_NE(run.err.find("arbo: note: the future liver remnant of margin 2 mm is 36.84 %, below 50.00 % (--min-flr)"),
            std::string::npos)
    << run.err;
  EXPECT_EQ(run.err.find("margin 1 mm is"), std::string::npos);

  // The plan tree of 2 mm: portal statuses 2, 3, 3, 2 and hepatic 2, 4, 4 under a joining root.
  const ArboRun info = runArbo({ "info", path("plan-2mm.ves"), "--json" });
  ASSERT_EQ(info.status, 0) << info.err;
  // The joining root keeps the undefined status (1).
  std::map<int, int> statuses;
  const auto description = nlohmann::json::parse(info.out);
  for (const auto & entry : description["resectionStatus"])
  {
    statuses[entry["value"].get<int>()] = entry["vessels"].get<int>();
  }
  EXPECT_EQ(statuses, (std::map<int, int>{ { 1, 1 }, { 2, 3 }, { 3, 2 }, { 4, 2 } })) << info.out;
}

TEST_F(ArboResectTest, JsonGivesTheSameNumbers)
{
  const ArboRun run = runArbo({ "resect",
                                path("organ.nrrd"),
                                path("portal.ves"),
                                "--tumour",
                                path("tumour.nrrd"),
                                "--margin",
                                "1",
                                "-o",
                                path("risk.nii.gz"),
                                "--surfaces",
                                path("surfaces"),
                                "--surface-format",
                                "stl",
                                "--json" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(files().size(), m_Inputs.size() + 3);
  EXPECT_TRUE(std::filesystem::is_regular_file(path("surfaces/risk-remnant.stl")));
  EXPECT_TRUE(std::filesystem::is_regular_file(path("surfaces/risk-resected.stl")));
  EXPECT_FALSE(std::filesystem::exists(path("surfaces/risk-at-risk.stl")));
  EXPECT_EQ(labelsIn(path("risk.nii.gz")), "333322222222222222220");
  EXPECT_TRUE(std::filesystem::exists(path("risk.proposal.xml")));
  const auto report = nlohmann::json::parse(run.out);
  EXPECT_EQ(report["organ_voxels"], 20);
  ASSERT_EQ(report["proposals"].size(), 1u);
  const auto & proposal = report["proposals"][0];
  EXPECT_EQ(proposal["margin_mm"], 1.0);
  EXPECT_EQ(proposal["remnant"]["voxels"], 16);
  EXPECT_EQ(proposal["resected"]["voxels"], 4);
  EXPECT_EQ(proposal["at_risk"]["voxels"], 0);
  EXPECT_EQ(proposal["tumour"]["voxels"], 1);
  EXPECT_DOUBLE_EQ(proposal["resected"]["percent"].get<double>(), 20.0);
  EXPECT_DOUBLE_EQ(proposal["flr_percent"].get<double>(), 1600.0 / 19.0);
  EXPECT_EQ(proposal["below_min_flr"], false);
}

TEST_F(ArboResectTest, PlanModeUsesTheTreeStatuses)
{
  writeTree(path("planned.ves"),
            { { -1, 1, 2, 2, { 10 } }, { 0, 2, 2, 3, { 4 } }, { 1, 3, 2, 1, { 1 } }, { 0, 4, 2, 4, { 16 } } });
  const ArboRun run =
    runArbo({ "resect", path("organ.nrrd"), path("planned.ves"), "--plan", "-o", path("planned.nrrd") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(labelsIn(path("planned.nrrd")), "222333322222224444440");
  EXPECT_NE(run.out.find("  FLR 50.00 % (remnant / organ)\n"), std::string::npos) << run.out;
}

TEST_F(ArboResectTest, BadInputsLeaveNothingBehind)
{
  const auto tumourRun = [&](const std::string & tumour) {
    return std::vector<std::string>{
      "resect", path("organ.nrrd"), path("portal.ves"), "--tumour", path(tumour), "--margin", "0,5",
      "-o",     path("risk.nrrd")
    };
  };
  lumo::WriteImageFile(rowImage({ 2 }, 20), path("short.nrrd"));
  lumo::WriteImageFile(rowImage({ 2 }, 21, 0.5), path("fine.nrrd"));
  lumo::WriteImageFile(rowImage({ 2 }, 21, 1.0, 4.0), path("shifted.nrrd"));
  lumo::Image::Pointer turned = rowImage({ 2 });
  lumo::Geometry3D::DirectionType direction;
  direction.Fill(0.0);
  direction[0][1] = 1.0;
  direction[1][0] = 1.0;
  direction[2][2] = 1.0;
  turned->SetDirection(direction);
  lumo::WriteImageFile(turned, path("turned.nrrd"));
  lumo::WriteImageFile(rowImage({}), path("empty.nrrd"));
  lumo::WriteImageFile(rowImage({ 20 }), path("outside.nrrd"));
  m_Inputs = files();

  expectRefused(tumourRun("short.nrrd"),
                "arbo: " + path("short.nrrd") +
                  ": lies on another grid than the organ: they differ in size (20 x 1 x 1 vs 21 x 1 x 1)");
  expectRefused(tumourRun("fine.nrrd"),
                "arbo: " + path("fine.nrrd") +
                  ": lies on another grid than the organ: they differ in spacing (0.5, 1, 1 vs 1, 1, 1 mm)");
  expectRefused(tumourRun("shifted.nrrd"),
                "arbo: " + path("shifted.nrrd") +
                  ": lies on another grid than the organ: they differ in origin (4, 0, 0 vs 0, 0, 0 mm)");
  expectRefused(tumourRun("turned.nrrd"),
                "arbo: " + path("turned.nrrd") + ": lies on another grid than the organ: they differ in direction");
  expectRefused(tumourRun("empty.nrrd"), "arbo: " + path("empty.nrrd") + ": holds no tumour voxel (every voxel is 0)");
  expectRefused(tumourRun("outside.nrrd"), "arbo: " + path("outside.nrrd") + ": lies entirely outside the organ");
  expectRefused(
    { "resect", path("organ.nrrd"), path("hepatic.ves"), "--tumour", path("tumour.nrrd"), "-o", path("risk.nrrd") },
    "arbo: " + path("hepatic.ves") + ": holds no portal vein with centre-line points");
  expectRefused({ "resect",
                  path("organ.nrrd"),
                  path("portal.ves"),
                  "--hepatic",
                  path("portal.ves"),
                  "--tumour",
                  path("tumour.nrrd"),
                  "-o",
                  path("risk.nrrd") },
                "arbo: " + path("portal.ves") + ": holds no hepatic vein with centre-line points");
  expectRefused({ "resect", path("organ.nrrd"), path("portal.ves"), "--plan", "-o", path("plan.nrrd") },
                "arbo: " + path("portal.ves") +
                  ": no vessel is marked to be resected or at risk (set resection statuses with \"arbo label ... "
                  "--status resect\" or in \"arbo view\")");
  expectRefused(
    { "resect", path("tumour.nrrd"), path("portal.ves"), "--tumour", path("missing.nrrd"), "-o", path("risk.nrrd") },
    "arbo: " + path("missing.nrrd") + ": cannot be opened (No such file or directory)");
  // The trees go last: the images and proposals written before them are removed again.
  expectRefused({ "resect",
                  path("organ.nrrd"),
                  path("portal.ves"),
                  "--tumour",
                  path("tumour.nrrd"),
                  "--margin",
                  "0,5",
                  "-o",
                  path("risk.nrrd"),
                  "--tree-out",
                  path("missing/plan.ves") },
                "arbo: " + path("missing/plan-0mm.ves") + ": the folder " + path("missing") + " does not exist");
  expectRefused(
    { "resect", path("organ.nrrd"), path("portal.ves"), "--tumour", path("tumour.nrrd"), "-o", path("risk.txt") },
    "arbo: " + path("risk.txt") +
      ": cannot write an image as '.txt' (supported: .nrrd, .nii, .nii.gz, .mhd, .mha, .pic, .pic.gz)");
}

TEST_F(ArboResectTest, UsageErrorsExitTwo)
{
  const std::vector<std::string> base{ "resect", path("organ.nrrd"), path("portal.ves"), "-o", path("risk.nrrd") };
  const auto withArguments = [&](std::vector<std::string> extra) {
    std::vector<std::string> arguments = base;
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    return runArbo(arguments);
  };
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
    { { "--tumour", path("tumour.nrrd"), "--margin", "-5" }, "'-5' is not a margin in mm (a number >= 0)" },
    { { "--tumour", path("tumour.nrrd"), "--margin", "5,ten" }, "'ten' is not a margin in mm (a number >= 0)" },
    { { "--tumour", path("tumour.nrrd"), "--margin", "5,5.0" }, "the margin 5 mm is given twice" },
    { { "--tumour", path("tumour.nrrd"), "--plan" }, "give exactly one of --plan and --tumour TUMOUR" },
    { {}, "give exactly one of --plan and --tumour TUMOUR (or --plane POINTS)" },
    { { "--plan", "--margin", "5" }, "a margin belongs to --tumour, not to --plan" },
  };
  for (const auto & [extra, message] : cases)
  {
    const ArboRun run = withArguments(extra);
    EXPECT_EQ(run.status, 2) << message;
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
    EXPECT_EQ(files(), m_Inputs);
  }
  const ArboRun help = runArbo({ "resect", "--help" });
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("arbo resect liver.nrrd portal.ves --tumour tumour.nrrd --margin 0,5,10 -o risk.nrrd"),
            std::string::npos);
}

namespace
{
/** A box of 21 x 3 x 2 voxels of 1 mm: the organ fills x 0..19 at every y and z, x 20 is outside. */
lumo::Image::Pointer
boxImage(const std::vector<unsigned int> & columns)
{
  auto image = lumo::Image::New();
  lumo::Vector3D voxel;
  voxel.Fill(1.0);
  lumo::Point3D corner;
  corner.Fill(0.0);
  lumo::Geometry3D::DirectionType direction;
  direction.SetIdentity();
  image->Initialize(itk::IOComponentEnum::UCHAR, { { 21, 3, 2 } }, voxel, corner, direction);
  auto * data = static_cast<unsigned char *>(image->GetData());
  for (unsigned int row = 0; row < 6; ++row)
  {
    for (unsigned int x : columns)
    {
      data[row * 21 + x] = 1;
    }
  }
  return image;
}

void
writePoints(const std::string & file, const std::vector<std::array<double, 3>> & points)
{
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<LumoPointSet version=\"1\">\n  <TimeStep index=\"0\">\n";
  for (std::size_t i = 0; i < points.size(); ++i)
  {
    text << "    <Point id=\"" << i << "\" x=\"" << points[i][0] << "\" y=\"" << points[i][1] << "\" z=\""
         << points[i][2] << "\"/>\n";
  }
  text << "  </TimeStep>\n</LumoPointSet>\n";
  writeFile(file, text.str());
}

/** Six times the same row of labels: the box's rows along x. */
std::string
sixRows(const std::string & row)
{
  std::string text;
  for (int i = 0; i < 6; ++i)
  {
    text += row;
  }
  return text;
}

/** The row's trees in the box organ, cut by the plane x = 11.5 (front: x 12..19, away from the organ's centre). */
class ArboResectPlaneTest : public ArboResectTest
{
protected:
  void
  SetUp() override
  {
    ArboResectTest::SetUp();
    lumo::WriteImageFile(boxImage(organVoxels()), path("box.nrrd"));
    writePoints(path("cut.mps"), { { 11.5, 0, 0 }, { 11.5, 5, 0 }, { 11.5, 0, 5 } });
    m_Inputs = files();
  }

  std::vector<std::string>
  cutRun(const std::vector<std::string> & extra, const std::string & plane = "cut.mps")
  {
    std::vector<std::string> arguments{ "resect", path("box.nrrd"), path("portal.ves"), "--plane", path(plane),
                                        "-o",     path("cut.nrrd") };
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    return arguments;
  }
};
} // namespace

TEST_F(ArboResectPlaneTest, PlaneBetweenTwoHalvesGivesTheExactCounts)
{
  const ArboRun run = runArbo(cutRun({}));
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(labelsIn(path("cut.nrrd")), sixRows("222222222222333333330"));
  EXPECT_EQ(run.out,
            "Cut along " + path("cut.mps") + " (front side resected) with " + path("portal.ves") + " in " +
              path("box.nrrd") +
              "\n"
              "organ: 120 voxels, 0.12 ml\n"
              "\n"
              "plane -> " +
              path("cut.nrrd") +
              "\n"
              "  part            voxels          ml  % organ\n"
              "  remnant             72        0.07    60.00\n"
              "  resected            48        0.05    40.00\n"
              "  at risk              0        0.00     0.00\n"
              "  FLR 60.00 % (remnant / organ)\n");
  EXPECT_EQ(run.err, "arbo: wrote " + path("cut.nrrd") + " and " + path("cut.proposal.xml") + "\n");

  // The back side: the portal root (x 10) is resected, so the whole remnant (x 12..19) is cut off from its supply,
  // the root's own territory (x 12, 13) with it.
  const ArboRun back = runArbo(cutRun({ "--resect-side", "back", "--json" }));
  ASSERT_EQ(back.status, 0) << back.err;
  EXPECT_EQ(labelsIn(path("cut.nrrd")), sixRows("333333333333444444440"));
  const auto report = nlohmann::json::parse(back.out);
  EXPECT_EQ(report["mode"], "plane");
  EXPECT_EQ(report["resect_side"], "back");
  EXPECT_EQ(report["plane"], path("cut.mps"));
  const auto & proposal = report["proposals"][0];
  EXPECT_EQ(proposal["remnant"]["voxels"], 0);
  EXPECT_EQ(proposal["resected"]["voxels"], 72);
  EXPECT_EQ(proposal["at_risk"]["voxels"], 48);
  EXPECT_DOUBLE_EQ(proposal["flr_percent"].get<double>(), 0.0);
  EXPECT_EQ(proposal["notes"],
            nlohmann::json::array({ "The portal root lies on the resected side: the whole remnant loses its portal "
                                    "supply" }));
  EXPECT_NE(back.err.find("arbo: note: The portal root lies on the resected side"), std::string::npos) << back.err;
  EXPECT_NE(back.err.find("arbo: note: the future liver remnant of the cut is 0.00 %, below 25.00 % (--min-flr)"),
            std::string::npos)
    << back.err;
}

TEST_F(ArboResectPlaneTest, AVesselCrossingThePlaneCutsItsDownstreamPart)
{
  // Root R at x 16 (remnant when the back is resected), E runs 13 -> 9 -> 5 across the plane, G returns to 14.
  writeTree(path("crossing.ves"), { { -1, 1, 2, 2, { 16 } }, { 0, 2, 2, 2, { 13, 9, 5 } }, { 1, 3, 2, 2, { 14 } } });
  const ArboRun run = runArbo({ "resect",
                                path("box.nrrd"),
                                path("crossing.ves"),
                                "--plane",
                                path("cut.mps"),
                                "--resect-side",
                                "back",
                                "-o",
                                path("cut.nrrd"),
                                "--tree-out",
                                path("cut.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(labelsIn(path("cut.nrrd")), sixRows("333333333333224222220"));
  EXPECT_NE(run.out.find("  remnant             42        0.04    35.00\n"
                         "  resected            72        0.07    60.00\n"
                         "  at risk              6        0.01     5.00\n"),
            std::string::npos)
    << run.out;
  // R kept, E crosses into the resected side (still 2: its remnant point 13 keeps the supply), G cut off (4).
  const ArboRun info = runArbo({ "info", path("cut.ves"), "--json" });
  ASSERT_EQ(info.status, 0) << info.err;
  std::map<int, int> statuses;
  const auto description = nlohmann::json::parse(info.out);
  for (const auto & entry : description["resectionStatus"])
  {
    statuses[entry["value"].get<int>()] = entry["vessels"].get<int>();
  }
  EXPECT_EQ(statuses, (std::map<int, int>{ { 2, 2 }, { 4, 1 } })) << info.out;
}

TEST_F(ArboResectPlaneTest, TheTumourChoosesTheSide)
{
  lumo::WriteImageFile(boxImage({ 17 }), path("box-tumour.nrrd"));
  const ArboRun run =
    runArbo(cutRun({ "--tumour", path("box-tumour.nrrd"), "--hepatic", path("hepatic.ves"), "--min-flr", "0" }));
  ASSERT_EQ(run.status, 0) << run.err;
  // The hepatic root (x 19) goes with the tumour's side: the whole remnant loses its drainage.
  EXPECT_EQ(labelsIn(path("cut.nrrd")), sixRows("444444444444333333330"));
  EXPECT_NE(run.out.find("(front side resected, the tumour's)"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("  remnant              0        0.00     0.00\n"
                         "  resected            48        0.05    40.00\n"
                         "  at risk             72        0.07    60.00\n"
                         "  tumour               6        0.01     5.00\n"
                         "  FLR 0.00 % (remnant / (organ - tumour))\n"),
            std::string::npos)
    << run.out;
  EXPECT_EQ(run.err,
            "arbo: note: The hepatic root lies on the resected side: the whole remnant loses its drainage\n"
            "arbo: wrote " +
              path("cut.nrrd") + " and " + path("cut.proposal.xml") + "\n");
}

TEST_F(ArboResectPlaneTest, BadPlanesLeaveNothingBehind)
{
  writePoints(path("two.mps"), { { 11.5, 0, 0 }, { 11.5, 5, 0 } });
  writePoints(path("line.mps"), { { 11.5, 0, 0 }, { 11.5, 1, 0 }, { 11.5, 2, 0 }, { 11.5, 3, 0 } });
  writePoints(path("beside.mps"), { { 30, 0, 0 }, { 30, 5, 0 }, { 30, 0, 5 } });
  lumo::WriteImageFile(rowImage({ 17 }), path("row-tumour.nrrd"));
  lumo::WriteImageFile(boxImage({}), path("no-tumour.nrrd"));
  lumo::WriteImageFile(boxImage({ 20 }), path("outside-tumour.nrrd"));
  m_Inputs = files();

  expectRefused(cutRun({}, "two.mps"),
                "arbo: " + path("two.mps") + ": A deformable plane needs at least 3 control points, got 2");
  expectRefused(cutRun({}, "line.mps"),
                "arbo: " + path("line.mps") + ": The control points of a deformable plane lie on one line");
  expectRefused(cutRun({}, "beside.mps"),
                "arbo: " + path("beside.mps") + ": misses the organ: every organ voxel lies on one side of it");
  expectRefused(cutRun({}, "missing.mps"),
                "arbo: " + path("missing.mps") + ": cannot be opened (No such file or directory)");
  expectRefused(cutRun({ "--tumour", path("row-tumour.nrrd") }),
                "arbo: " + path("row-tumour.nrrd") +
                  ": lies on another grid than the organ: they differ in size (21 x 1 x 1 vs 21 x 3 x 2)");
  expectRefused(cutRun({ "--tumour", path("no-tumour.nrrd") }),
                "arbo: " + path("no-tumour.nrrd") + ": holds no tumour voxel (every voxel is 0)");
  expectRefused(cutRun({ "--tumour", path("outside-tumour.nrrd") }),
                "arbo: " + path("outside-tumour.nrrd") + ": lies entirely outside the organ");
  // A failing tree write removes the image and proposal written before it.
  expectRefused(cutRun({ "--tree-out", path("missing/cut.ves") }),
                "arbo: " + path("missing/cut.ves") + ": the folder " + path("missing") + " does not exist");
}

TEST_F(ArboResectPlaneTest, PlaneUsageErrorsExitTwo)
{
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
    { { "--plan" }, "give exactly one of --plan and --plane POINTS" },
    { { "--margin", "5" }, "a margin belongs to --tumour without --plane: the plane is the cut" },
    { { "--resect-side", "left" }, "--resect-side: left not in {front,back}" },
    { { "--resect-side", "back", "--tumour", path("tumour.nrrd") },
      "give --resect-side or --tumour with --plane, not both: each chooses the side" },
  };
  for (const auto & [extra, message] : cases)
  {
    const ArboRun run = runArbo(cutRun(extra));
    EXPECT_EQ(run.status, 2) << message;
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
    EXPECT_EQ(files(), m_Inputs);
  }
  const ArboRun withoutPlane = runArbo(
    { "resect", path("box.nrrd"), path("portal.ves"), "--plan", "--resect-side", "back", "-o", path("x.nrrd") });
  EXPECT_EQ(withoutPlane.status, 2);
  EXPECT_NE(withoutPlane.err.find("--resect-side belongs to --plane"), std::string::npos) << withoutPlane.err;
  const ArboRun help = runArbo({ "resect", "--help" });
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("arbo resect liver.nrrd portal.ves --plane cut.mps --resect-side back -o cut.nrrd"),
            std::string::npos);
  EXPECT_NE(help.out.find("--plane POINTS    a cutting surface through the control points"), std::string::npos);
}

TEST_F(ArboResectTest, OrganAndTumourFromOneSixteenBitLabelMap)
{
  // Liver 1 on x 0..19 with the tumour 3 at x 2: the same organ and tumour as organ.nrrd and tumour.nrrd.
  auto labels = lumo::Image::New();
  lumo::Vector3D voxel;
  voxel.Fill(1.0);
  lumo::Point3D corner;
  corner.Fill(0.0);
  lumo::Geometry3D::DirectionType direction;
  direction.SetIdentity();
  labels->Initialize(itk::IOComponentEnum::USHORT, { { 21, 1, 1 } }, voxel, corner, direction);
  auto * data = static_cast<unsigned short *>(labels->GetData());
  for (unsigned int x = 0; x < 20; ++x)
  {
    data[x] = x == 2 ? 3 : 1;
  }
  lumo::WriteImageFile(labels, path("labels.nrrd"));
  m_Inputs = files();

  const ArboRun run = runArbo({ "-q",
                                "resect",
                                path("labels.nrrd"),
                                path("portal.ves"),
                                "--hepatic",
                                path("hepatic.ves"),
                                "--tumour",
                                path("labels.nrrd"),
                                "--organ-label",
                                "1",
                                "--tumour-label",
                                "3",
                                "--margin",
                                "0,2",
                                "-o",
                                path("risk.nrrd") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(labelsIn(path("risk-0mm.nrrd")), "223222222222222222220");
  EXPECT_EQ(labelsIn(path("risk-2mm.nrrd")), "333333344444422222220");
  for (const char * name : { "risk-0mm.nrrd", "risk-2mm.nrrd" })
  {
    std::filesystem::remove(path(name));
  }
  std::filesystem::remove(path("risk-0mm.proposal.xml"));
  std::filesystem::remove(path("risk-2mm.proposal.xml"));

  expectRefused({ "resect",
                  path("labels.nrrd"),
                  path("portal.ves"),
                  "--tumour",
                  path("labels.nrrd"),
                  "--organ-label",
                  "1",
                  "--tumour-label",
                  "5",
                  "-o",
                  path("risk.nrrd") },
                "arbo: " + path("labels.nrrd") + ": label 5 does not occur (labels present: 1, 3)");
}

// --scene: the proposal joins a plan saved as one scene, with its inputs as sources.
class ArboResectSceneTest : public ArboResectTest
{
protected:
  std::vector<std::string>
  resect(const std::string & margins, const std::string & scene)
  {
    return { "resect",          path("organ.nrrd"),  path("portal.ves"), "--hepatic", path("hepatic.ves"),
             "--tumour",        path("tumour.nrrd"), "--margin",         margins,     "-o",
             path("risk.nrrd"), "--tree-out",        path("plan.ves"),   "--scene",   scene };
  }

  std::vector<std::string>
  folder(const std::string & name) const
  {
    std::vector<std::string> names;
    for (const auto & entry : std::filesystem::directory_iterator(path(name)))
    {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
};

TEST_F(ArboResectSceneTest, ANewSceneGainsTheProposalWithItsDescriptorAndColours)
{
  std::filesystem::create_directory(path("plan"));
  ArboRun run = runArbo(resect("2", path("plan/plan.rs")));
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find("arbo: added 1 resection to " + path("plan/plan.rs") + "\n"), std::string::npos) << run.err;

  run = runArbo({ "scene", "info", path("plan/plan.rs"), "--json" });
  ASSERT_EQ(run.status, 0) << run.err;
  const nlohmann::json json = nlohmann::json::parse(run.out);
  ASSERT_EQ(json["nodes"].size(), 6u);
  std::vector<std::string> names;
  for (const auto & node : json["nodes"])
  {
    names.push_back(node["name"]);
  }
  EXPECT_EQ(names, (std::vector<std::string>{ "organ", "portal", "hepatic", "tumour", "risk", "plan" }));
  const auto & risk = json["nodes"][4];
  EXPECT_EQ(risk["type"], "image");
  EXPECT_EQ(risk["file"], "risk.pic");
  EXPECT_EQ(risk["sources"],
            nlohmann::json::array(
              { json["nodes"][0]["id"], json["nodes"][1]["id"], json["nodes"][2]["id"], json["nodes"][3]["id"] }));
  EXPECT_EQ(risk["properties"].value("LookupTable", ""), "5 colors");
  const std::string descriptor = risk["properties"].value("ResectionProposalDescriptor", "");
  EXPECT_EQ(descriptor.rfind("Resection proposal: Safety margin 2 mm\n", 0), 0u) << descriptor;
  EXPECT_EQ(json["nodes"][5]["type"], "vesseltree");
  EXPECT_EQ(json["nodes"][5]["sources"], nlohmann::json::array({ risk["id"] }));
  EXPECT_EQ(folder("plan"),
            (std::vector<std::string>{
              "hepatic.ves", "organ.pic", "plan.rs", "plan.ves", "portal.ves", "risk.pic", "tumour.pic" }));

  // Reopened, the descriptor is the one written beside the image, and the image's labels are the proposal's.
  lumo::DataStorage::Pointer storage = lumo::DataStorage::New();
  testing::internal::CaptureStdout();
  const bool loaded = lumo::CalyxSceneIO::New()->LoadScene(storage, path("plan"), "plan.rs");
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(loaded);
  lumo::DataNode * node = storage->GetNamedNode("risk");
  ASSERT_NE(node, nullptr);
  auto * saved =
    dynamic_cast<lumo::ResectionProposalDescriptorProperty *>(node->GetProperty("ResectionProposalDescriptor"));
  ASSERT_NE(saved, nullptr);
  EXPECT_TRUE(saved->IsEqual(*lumo::ReadResectionProposalDescriptorFile(path("risk.proposal.xml"))));
  EXPECT_EQ(labelsIn(path("plan/risk.pic")), "333333344444422222220");
}

TEST_F(ArboResectSceneTest, AnExistingSceneKeepsItsNodesAndTheProposalsAreReplaced)
{
  std::filesystem::create_directory(path("plan"));
  ArboRun run =
    runArbo({ "scene", "create", path("plan/plan.rs"), "organ=" + path("organ.nrrd"), "portal=" + path("portal.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  run = runArbo(resect("0,2", path("plan/plan.rs")));
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find("arbo: added 2 resections to "), std::string::npos) << run.err;
  // Again: the proposals and their trees are replaced under their names, nothing is doubled or left behind.
  run = runArbo(resect("0,2", path("plan/plan.rs")));
  ASSERT_EQ(run.status, 0) << run.err;
  run = runArbo({ "scene", "info", path("plan/plan.rs") });
  ASSERT_EQ(run.status, 0) << run.err;
  const nlohmann::json json = nlohmann::json::parse(runArbo({ "scene", "info", path("plan/plan.rs"), "--json" }).out);
  std::vector<std::string> names;
  for (const auto & node : json["nodes"])
  {
    names.push_back(node["name"]);
  }
  EXPECT_EQ(names,
            (std::vector<std::string>{
              "organ", "portal", "hepatic", "tumour", "risk-0mm", "plan-0mm", "risk-2mm", "plan-2mm" }));
  EXPECT_EQ(folder("plan"),
            (std::vector<std::string>{ "hepatic.ves",
                                       "organ.pic",
                                       "plan-0mm.ves",
                                       "plan-2mm.ves",
                                       "plan.rs",
                                       "portal.ves",
                                       "risk-0mm.pic",
                                       "risk-2mm.pic",
                                       "tumour.pic" }));
  // The text form: one line per node, the descriptor's lines joined.
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 9);
  EXPECT_NE(
    run.out.find(" | ResectionProposalDescriptor = Resection proposal: Safety margin 2 mm; Number of labels: 3; "
                 "Label "),
    std::string::npos)
    << run.out;
}

TEST_F(ArboResectSceneTest, ABadSceneCostsNothingAndKeepsTheSceneAsItWas)
{
  expectRefused(resect("2", path("missing/plan.rs")),
                "arbo: " + path("missing/plan.rs") + ": the folder " + path("missing") + " does not exist");
  expectRefused(resect("2", path("plan.txt")),
                "arbo: " + path("plan.txt") + ": is not a scene file name (a scene file ends in .rs)");
  const std::string refused = "<?xml version=\"1.0\"?>\n<Version FileVersion=\"2\"/>\n";
  writeFile(path("plan.rs"), refused);
  m_Inputs = files();
  expectRefused(resect("2", path("plan.rs")),
                "arbo: " + path("plan.rs") + ": is not a scene that can be loaded (arbo scene info tells why)");
  EXPECT_EQ(readFile(path("plan.rs")), refused);
}

TEST_F(ArboResectSceneTest, SurfacesJoinInTheResectionColoursWithTheImageAsSource)
{
  std::vector<std::string> arguments = resect("2", path("plan.rs"));
  arguments.insert(arguments.end(), { "--surfaces", path("surfaces") });
  ArboRun run = runArbo(arguments);
  ASSERT_EQ(run.status, 0) << run.err;
  const nlohmann::json json = nlohmann::json::parse(runArbo({ "scene", "info", path("plan.rs"), "--json" }).out);
  ASSERT_EQ(json["nodes"].size(), 9u);
  const auto & image = json["nodes"][4];
  EXPECT_EQ(image["name"], "risk");
  const std::vector<std::array<std::string, 4>> expected{ { "risk-remnant", "[0.3, 0.75, 0.35]", "0.15" },
                                                          { "risk-resected", "[0.9, 0.15, 0.1]", "0.55" },
                                                          { "risk-at-risk", "[1, 0.6, 0.05]", "0.55" } };
  for (std::size_t i = 0; i < expected.size(); ++i)
  {
    const auto & node = json["nodes"][5 + i];
    EXPECT_EQ(node["name"], expected[i][0]);
    EXPECT_EQ(node["type"], "surface");
    EXPECT_EQ(node["file"], expected[i][0] + ".vtp");
    EXPECT_EQ(node["properties"].value("color", ""), expected[i][1]);
    EXPECT_EQ(node["properties"].value("opacity", ""), expected[i][2]);
    EXPECT_EQ(node["sources"], nlohmann::json::array({ image["id"] }));
  }
  // The plan tree's file: the tree written beside the scene by --tree-out is not the scene's to replace.
  EXPECT_EQ(json["nodes"][8]["name"], "plan");
  EXPECT_EQ(json["nodes"][8]["file"], "plan_2.ves");
}

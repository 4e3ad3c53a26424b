#include "ArboTestSupport.h"

#include "ArVesselTree.h"
#include "lumoImageIO.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <locale>
#include <map>

using namespace arbo_test;

namespace
{
struct VesselRecipe
{
  int parent;
  int id;
  int type;
  int status;
  std::vector<float> x;
};

void
writeTree(const std::string & file, const std::vector<VesselRecipe> & recipes)
{
  LinkedVesselTree tree;
  std::vector<VesselNode *> nodes;
  for (const VesselRecipe & recipe : recipes)
  {
    ar<Vessel> vessel(new Vessel());
    vessel->setVesselId(recipe.id);
    vessel->getProperties().setBloodVesselType(recipe.type);
    vessel->getProperties().setResectionStatus(recipe.status);
    for (float x : recipe.x)
    {
      vessel->appendPoint({ x, 0.0f, 0.0f, 1.0f });
    }
    if (recipe.parent < 0)
    {
      tree.setRoot(vessel);
      nodes.push_back(tree.getRootNode());
    }
    else
    {
      VesselNode * parent = nodes[static_cast<std::size_t>(recipe.parent)];
      auto * node = new VesselNode(parent, vessel);
      parent->addChild(node);
      nodes.push_back(node);
    }
  }
  std::ofstream out(file);
  out.imbue(std::locale::classic());
  tree.write(out);
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
    { {}, "give exactly one of --plan and --tumour TUMOUR" },
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

#include "ArboTestSupport.h"
#include "VesselTestTree.h"

#include "ArVesselTree.h"
#include "lumoImageAccess.h"
#include "lumoImageIO.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <locale>

using namespace arbo_test;
using vessel_test::makeStar;
using vessel_test::VesselRecipe;

namespace
{
void
writeTree(const std::string & file, const std::vector<VesselRecipe> & vessels)
{
  ArVesselTree tree = makeStar(vessels);
  std::ofstream out(file);
  out.imbue(std::locale::classic());
  tree->write(out);
}

/** A 10 x 4 x 3 organ at origin (-5, 20, 100) with spacing (2, 2.5, 4) (20 mm^3 per voxel); the slab x < 2 is
 *  background, so 8 x 4 x 3 = 96 voxels are organ, of value `value`; a `tumour` label replaces it at x = 9. */
lumo::Image::Pointer
makeOrgan(itk::IOComponentEnum type = itk::IOComponentEnum::UCHAR,
          unsigned int dimension = 3,
          double value = 1.0,
          double tumour = 0.0)
{
  auto organ = lumo::Image::New();
  lumo::Vector3D spacing = lumotest::V(2.0, 2.5, dimension == 3 ? 4.0 : 1.0);
  lumo::Point3D origin = lumotest::P(-5.0, 20.0, dimension == 3 ? 100.0 : 0.0);
  lumo::Geometry3D::DirectionType direction;
  direction.SetIdentity();
  organ->Initialize(type, { { 10, 4, dimension == 3 ? 3u : 1u } }, spacing, origin, direction, dimension);
  lumo::DispatchPixelType(type, [&](auto * typed) {
    using Pixel = std::remove_pointer_t<decltype(typed)>;
    auto * data = static_cast<Pixel *>(organ->GetData());
    for (std::size_t i = 0; i < organ->GetNumberOfVoxels(); ++i)
    {
      const double label = i % 10 == 9 && tumour != 0.0 ? tumour : value;
      data[i] = static_cast<Pixel>(i % 10 >= 2 ? label : 0.0);
    }
  });
  return organ;
}

/** Portal S_V near index x = 3 (world x = 1), portal S_VI near index x = 8 (world x = 11), hepatic HS_LS far away
 *  beyond the organ; all portal at status "keep". Along x, organ voxels 2..5 are nearer S_V, 6..9 nearer S_VI. */
std::vector<VesselRecipe>
treeRecipe()
{
  return { { 1, 2, S_V, 2, { { 1, 23.75f, 104, 2 } } },
           { 2, 2, S_VI, 2, { { 11, 23.75f, 104, 2 } } },
           { 3, 1, HS_LS, 1, { { 500, 23.75f, 104, 2 } } } };
}

class ArboSupply : public ArboTest
{
protected:
  void
  SetUp() override
  {
    ArboTest::SetUp();
    lumo::WriteImageFile(makeOrgan(), path("liver.nrrd"));
    writeTree(path("portal.ves"), treeRecipe());
  }
};
} // namespace

TEST_F(ArboSupply, TableAddsUpToTheOrganAndTheImageKeepsItsGeometry)
{
  ArboRun run = runArbo({ "supply", path("liver.nrrd"), path("portal.ves"), "-o", path("areas.nrrd"), "--json" });
  ASSERT_EQ(run.status, 0) << run.err;
  const auto json = nlohmann::json::parse(run.out);
  EXPECT_EQ(json["mode"], "portal-defined-segments");
  EXPECT_EQ(json["organ_voxels"], 96);
  EXPECT_DOUBLE_EQ(json["organ_millilitres"].get<double>(), 1.92);
  ASSERT_EQ(json["labels"].size(), 2u);
  double millilitres = 0.0;
  double percent = 0.0;
  for (const auto & label : json["labels"])
  {
    millilitres += label["millilitres"].get<double>();
    percent += label["percent"].get<double>();
    EXPECT_EQ(label["voxels"], 48);
  }
  EXPECT_DOUBLE_EQ(millilitres, 1.92);
  EXPECT_DOUBLE_EQ(percent, 100.0);
  EXPECT_EQ(json["labels"][0]["label"], S_V);
  EXPECT_EQ(json["labels"][0]["name"], "S_V");
  EXPECT_EQ(json["labels"][1]["name"], "S_VI");

  lumo::Image::Pointer areas = lumo::ReadImageFile(path("areas.nrrd"));
  lumo::Image::Pointer organ = makeOrgan();
  EXPECT_EQ(areas->GetPixelType(), itk::IOComponentEnum::UCHAR);
  EXPECT_EQ(areas->GetSize(), organ->GetSize());
  EXPECT_EQ(areas->GetSpacing(), organ->GetSpacing());
  EXPECT_EQ(areas->GetOrigin(), organ->GetOrigin());
  EXPECT_EQ(areas->GetDirection(), organ->GetDirection());
  const auto * labels = static_cast<const unsigned char *>(areas->GetData());
  const std::vector<unsigned char> row(labels, labels + 10);
  EXPECT_EQ(row, (std::vector<unsigned char>{ 0, 0, S_V, S_V, S_V, S_V, S_VI, S_VI, S_VI, S_VI }));
}

TEST_F(ArboSupply, RepeatedOrCollidingVesselIdsGiveTheTerritoriesOfUniqueIds)
{
  ArboRun unique = runArbo({ "supply", path("liver.nrrd"), path("portal.ves"), "-o", path("unique.nrrd") });
  ASSERT_EQ(unique.status, 0) << unique.err;
  // Ids as other tools write them: all the same; and unique ids that meet in the 16 bits of the id volume
  // (65537 and 1) or fall on its "no vessel" value (65536).
  std::vector<VesselRecipe> same = treeRecipe();
  std::vector<VesselRecipe> colliding = treeRecipe();
  const int collidingIds[] = { 65537, 1, 65536 };
  for (std::size_t i = 0; i < same.size(); ++i)
  {
    same[i].id = 7;
    colliding[i].id = collidingIds[i];
  }
  writeTree(path("same.ves"), same);
  writeTree(path("colliding.ves"), colliding);

  ArboRun info = runArbo({ "info", path("same.ves"), "--json" });
  ASSERT_EQ(info.status, 0) << info.err;
  EXPECT_EQ(nlohmann::json::parse(info.out)["repeatedVesselIds"], 2);
  info = runArbo({ "info", path("colliding.ves") });
  EXPECT_NE(
    info.out.find("  vessel ids:           0 repeated, 2 clashing in the 16 bits of the supply areas; supply and "
                  "label renumber them 1..3 in pre-order\n"),
    std::string::npos)
    << info.out;

  for (const char * name : { "same", "colliding" })
  {
    const std::string tree = path(std::string(name) + ".ves");
    const std::string areas = path(std::string(name) + ".nrrd");
    ArboRun run = runArbo({ "supply", path("liver.nrrd"), tree, "-o", areas });
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(readFile(areas), readFile(path("unique.nrrd"))) << name;
    EXPECT_NE(run.err.find("arbo: " + tree + ": note: vessel ids renumbered 1..3 in pre-order ("), std::string::npos)
      << run.err;
    EXPECT_TRUE(runArbo({ "--quiet", "supply", path("liver.nrrd"), tree, "-o", areas }).err.empty());
  }
}

TEST_F(ArboSupply, PrintsATableByModeWithNames)
{
  ArboRun run = runArbo({ "supply",
                          path("liver.nrrd"),
                          path("portal.ves"),
                          "-o",
                          path("types.nii.gz"),
                          "--mode",
                          "all-vessels-types",
                          "--threads",
                          "2" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "Supply areas of " + path("liver.nrrd") + " by " + path("portal.ves") +
              " (all-vessels-types)\n"
              "  label  name                              voxels          ml        %\n"
              "      3  Portal vein                           96        1.92   100.00\n"
              "         organ                                 96        1.92   100.00\n");
  EXPECT_EQ(run.err, "arbo: wrote " + path("types.nii.gz") + "\n");

  ArboRun status = runArbo({ "-q",
                             "supply",
                             path("liver.nrrd"),
                             path("portal.ves"),
                             "-o",
                             path("status.nrrd"),
                             "--mode",
                             "hepatic-resection-status" });
  ASSERT_EQ(status.status, 0) << status.err;
  EXPECT_NE(status.out.find("      1  Undefined resection status            96        1.92   100.00\n"),
            std::string::npos)
    << status.out;
  EXPECT_EQ(status.err, "");
}

TEST_F(ArboSupply, FailuresNameTheFileAndLeaveNothingBehind)
{
  lumo::WriteImageFile(makeOrgan(itk::IOComponentEnum::SHORT, 3, 1.0, 3.0), path("labels.nrrd"));
  lumo::WriteImageFile(makeOrgan(itk::IOComponentEnum::UCHAR, 2), path("slice.png"));
  writeTree(path("undefined.ves"), { { 1, 2, S_Undefined, 1, { { 1, 23.75f, 104, 2 } } } });
  const std::vector<std::string> before = files();

  ArboRun missingLabel =
    runArbo({ "supply", path("labels.nrrd"), path("portal.ves"), "-o", path("out.nrrd"), "--organ-label", "2" });
  EXPECT_EQ(missingLabel.status, 1);
  EXPECT_EQ(missingLabel.out, "");
  EXPECT_EQ(missingLabel.err, "arbo: " + path("labels.nrrd") + ": label 2 does not occur (labels present: 1, 3)\n");

  ArboRun flat = runArbo({ "supply", path("slice.png"), path("portal.ves"), "-o", path("out.nrrd") });
  EXPECT_EQ(flat.status, 1);
  EXPECT_EQ(flat.err, "arbo: " + path("slice.png") + ": is a 2-D image; supply areas need a 3-D organ segmentation\n");

  ArboRun noVessels = runArbo({ "supply", path("liver.nrrd"), path("undefined.ves"), "-o", path("out.nrrd") });
  EXPECT_EQ(noVessels.status, 1);
  EXPECT_EQ(noVessels.err,
            "arbo: " + path("undefined.ves") +
              ": Error in KDTreeNextVesselEstimator::setVesselElementList: theList->size() == 0! (no "
              "vessel of the tree takes part in mode portal-defined-segments)\n");

  ArboRun missing = runArbo({ "supply", path("none.nrrd"), path("portal.ves"), "-o", path("out.nrrd") });
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "arbo: " + path("none.nrrd") + ": cannot be opened (No such file or directory)\n");

  ArboRun missingTree = runArbo({ "supply", path("liver.nrrd"), path("none.ves"), "-o", path("out.nrrd") });
  EXPECT_EQ(missingTree.status, 1);
  EXPECT_EQ(missingTree.err, "arbo: " + path("none.ves") + ": cannot be opened (No such file or directory)\n");

  ArboRun treeAsOrgan = runArbo({ "supply", path("portal.ves"), path("portal.ves"), "-o", path("out.nrrd") });
  EXPECT_EQ(treeAsOrgan.status, 1);
  EXPECT_EQ(treeAsOrgan.err,
            "arbo: " + path("portal.ves") + ": holds a vessel tree, not an organ segmentation image\n");

  ArboRun badMode =
    runArbo({ "supply", path("liver.nrrd"), path("portal.ves"), "-o", path("out.nrrd"), "--mode", "lobes" });
  EXPECT_EQ(badMode.status, 2);
  EXPECT_NE(badMode.err.find("--mode: lobes not in {portal-defined-segments,"), std::string::npos) << badMode.err;

  ArboRun badEnding = runArbo({ "supply", path("liver.nrrd"), path("portal.ves"), "-o", path("out.ves") });
  EXPECT_EQ(badEnding.status, 1);
  EXPECT_EQ(files(), before);
}

TEST_F(ArboSupply, HelpTeachesTheModes)
{
  ArboRun run = runArbo({ "supply", "--help" });
  EXPECT_EQ(run.status, 0);
  for (const char * text : { "portal-defined-segments (default)",
                             "hepatic-defined-resection-status",
                             "arbo supply liver.nrrd portal.ves -o segments.nrrd",
                             "--threads",
                             "--json" })
  {
    EXPECT_NE(run.out.find(text), std::string::npos) << text;
  }
}

TEST_F(ArboSupply, FurtherTreesSupplyTogetherWithTheFirst)
{
  // A hepatic vein near index x = 8 takes the S_VI side from the portal tree's second vessel.
  writeTree(path("portal-only.ves"), { { 1, 2, S_V, 2, { { 1, 23.75f, 104, 2 } } } });
  writeTree(path("hepatic.ves"), { { 1, 1, HS_LS, 1, { { 11, 23.75f, 104, 2 } } } });
  ArboRun run = runArbo({ "supply",
                          path("liver.nrrd"),
                          path("portal-only.ves"),
                          "--with",
                          path("hepatic.ves"),
                          "-o",
                          path("types.nrrd"),
                          "--mode",
                          "all-vessels-types",
                          "--json" });
  ASSERT_EQ(run.status, 0) << run.err;
  const auto json = nlohmann::json::parse(run.out);
  std::map<int, long long> voxels;
  for (const auto & row : json["labels"])
  {
    voxels[row["label"].get<int>()] = row["voxels"].get<long long>();
  }
  // Of each row of 8 organ voxels (x = 2..9), 4 are nearer the portal vein (type 2, label 3) and 4 nearer the
  // hepatic vein (type 1, label 2); 4 rows in 3 slices.
  EXPECT_EQ(voxels, (std::map<int, long long>{ { 2, 48 }, { 3, 48 } }));

  ArboRun missing = runArbo(
    { "supply", path("liver.nrrd"), path("portal-only.ves"), "--with", path("none.ves"), "-o", path("out.nrrd") });
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "arbo: " + path("none.ves") + ": cannot be opened (No such file or directory)\n");
  EXPECT_FALSE(std::filesystem::exists(path("out.nrrd")));
}

TEST_F(ArboSupply, SixteenBitFloatAndLabelMapOrgansAreConvertedAtTheBoundary)
{
  const std::string reference = readFile(path("liver.nrrd"));
  ArboRun eight = runArbo({ "-q", "supply", path("liver.nrrd"), path("portal.ves"), "-o", path("eight.nrrd") });
  ASSERT_EQ(eight.status, 0) << eight.err;

  // Every voxel other than 0 is organ, whatever the type and value.
  lumo::WriteImageFile(makeOrgan(itk::IOComponentEnum::USHORT, 3, 1000.0), path("sixteen.nrrd"));
  lumo::WriteImageFile(makeOrgan(itk::IOComponentEnum::FLOAT, 3, 0.25), path("float.nrrd"));
  for (const char * name : { "sixteen", "float" })
  {
    const std::string organ = path(std::string(name) + ".nrrd");
    ArboRun run = runArbo({ "-q", "supply", organ, path("portal.ves"), "-o", path(std::string(name) + "-areas.nrrd") });
    ASSERT_EQ(run.status, 0) << name << ": " << run.err;
    // The same table below the title line, which names the organ file.
    EXPECT_EQ(run.out.substr(run.out.find('\n')), eight.out.substr(eight.out.find('\n'))) << name;
    EXPECT_EQ(readFile(path(std::string(name) + "-areas.nrrd")), readFile(path("eight.nrrd"))) << name;
  }

  // A label map with liver 1 and a tumour 3 in the column x = 9: the tumour is not organ with --organ-label 1,
  // so 7 of each row's 8 voxels remain (84 in all), 48 nearer S_V and 36 nearer S_VI.
  lumo::WriteImageFile(makeOrgan(itk::IOComponentEnum::SHORT, 3, 1.0, 3.0), path("labels.nrrd"));
  ArboRun labels = runArbo({ "supply",
                             path("labels.nrrd"),
                             path("portal.ves"),
                             "-o",
                             path("labels-areas.nrrd"),
                             "--organ-label",
                             "1",
                             "--json" });
  ASSERT_EQ(labels.status, 0) << labels.err;
  const auto json = nlohmann::json::parse(labels.out);
  EXPECT_EQ(json["organ_voxels"], 84);
  ASSERT_EQ(json["labels"].size(), 2u);
  EXPECT_EQ(json["labels"][0]["voxels"], 48);
  EXPECT_EQ(json["labels"][1]["voxels"], 36);
  lumo::Image::Pointer areas = lumo::ReadImageFile(path("labels-areas.nrrd"));
  const auto * row = static_cast<const unsigned char *>(areas->GetData());
  EXPECT_EQ(std::vector<unsigned char>(row, row + 10),
            (std::vector<unsigned char>{ 0, 0, S_V, S_V, S_V, S_V, S_VI, S_VI, S_VI, 0 }));
  // Without a label the tumour counts as organ as well.
  ArboRun all = runArbo({ "supply", path("labels.nrrd"), path("portal.ves"), "-o", path("all.nrrd"), "--json" });
  ASSERT_EQ(all.status, 0) << all.err;
  EXPECT_EQ(nlohmann::json::parse(all.out)["organ_voxels"], 96);
  EXPECT_EQ(readFile(path("liver.nrrd")), reference);
}

TEST_F(ArboSupply, SceneGainsTheLabelImageWithTheOrganAndTreeAsSources)
{
  // The scene in a folder of its own: its data files are named after the nodes.
  std::filesystem::create_directory(path("plan"));
  ArboRun run = runArbo(
    { "supply", path("liver.nrrd"), path("portal.ves"), "-o", path("areas.nrrd"), "--scene", path("plan/plan.rs") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find("arbo: added areas to " + path("plan/plan.rs") + "\n"), std::string::npos) << run.err;

  run = runArbo({ "scene", "info", path("plan/plan.rs"), "--json" });
  ASSERT_EQ(run.status, 0) << run.err;
  nlohmann::json json = nlohmann::json::parse(run.out);
  ASSERT_EQ(json["nodes"].size(), 3u);
  EXPECT_EQ(json["nodes"][0]["name"], "liver");
  EXPECT_EQ(json["nodes"][0]["type"], "image");
  EXPECT_EQ(json["nodes"][0]["properties"]["opacity"], "0.18"); // the organ veiled
  EXPECT_EQ(json["nodes"][1]["name"], "portal");
  EXPECT_EQ(json["nodes"][1]["type"], "vesseltree");
  EXPECT_EQ(json["nodes"][2]["name"], "areas");
  EXPECT_EQ(json["nodes"][2]["type"], "image");
  EXPECT_EQ(json["nodes"][2]["file"], "areas.pic");
  EXPECT_EQ(json["nodes"][2]["sources"], nlohmann::json::array({ json["nodes"][0]["id"], json["nodes"][1]["id"] }));

  // A second run replaces its result and reuses the inputs already in the scene.
  run = runArbo({ "supply",
                  path("liver.nrrd"),
                  path("portal.ves"),
                  "-o",
                  path("areas.nrrd"),
                  "--mode",
                  "all-vessels-types",
                  "--scene",
                  path("plan/plan.rs") });
  ASSERT_EQ(run.status, 0) << run.err;
  run = runArbo({ "scene", "info", path("plan/plan.rs") });
  ASSERT_EQ(run.status, 0) << run.err;
  json = nlohmann::json::parse(runArbo({ "scene", "info", path("plan/plan.rs"), "--json" }).out);
  ASSERT_EQ(json["nodes"].size(), 3u);
  EXPECT_EQ(json["nodes"][2]["name"], "areas");
  EXPECT_EQ(json["nodes"][2]["sources"].size(), 2u);
  // Nothing orphaned: the scene and its three data files.
  std::vector<std::string> written;
  for (const auto & entry : std::filesystem::directory_iterator(path("plan")))
  {
    written.push_back(entry.path().filename().string());
  }
  std::sort(written.begin(), written.end());
  EXPECT_EQ(written, (std::vector<std::string>{ "areas.pic", "liver.pic", "plan.rs", "portal.ves" }));
}

TEST_F(ArboSupply, ASceneThatCannotBeLoadedCostsNothing)
{
  writeFile(path("plan.rs"), "<?xml version=\"1.0\"?>\n<Version FileVersion=\"2\"/>\n");
  const ArboRun run =
    runArbo({ "supply", path("liver.nrrd"), path("portal.ves"), "-o", path("areas.nrrd"), "--scene", path("plan.rs") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("plan.rs") + ": is not a scene that can be loaded (arbo scene info tells why)\n");
  EXPECT_EQ(readFile(path("plan.rs")), "<?xml version=\"1.0\"?>\n<Version FileVersion=\"2\"/>\n");
  EXPECT_EQ(files(), (std::vector<std::string>{ "liver.nrrd", "plan.rs", "portal.ves" }));
}

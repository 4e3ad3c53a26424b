#include "ArboTestSupport.h"

#include "arboFiles.h"

#include "lumoImage.h"
#include "lumoImageIO.h"

#include <nlohmann/json.hpp>

using namespace arbo_test;

namespace
{
const std::vector<std::string> phantomFiles = { "hepatic.nrrd",      "organ.nrrd",       "portal.nrrd",
                                                "truth-hepatic.ves", "truth-portal.ves", "tumour.nrrd" };

std::vector<std::string>
namesIn(const std::filesystem::path & folder)
{
  std::vector<std::string> names;
  for (const auto & entry : std::filesystem::directory_iterator(folder))
  {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

/** A root (0,0,0)-(10,0,0) and two branches from its end, diameter 2, shifted along z by dz. */
void
writeTree(const std::string & file, float dz, bool withSecondBranch = true)
{
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  auto line = [dz](float x0, float y0, float x1, float y1) {
    ar<Vessel> vessel(new Vessel());
    vessel->appendPoint({ x0, y0, dz, 2 });
    vessel->appendPoint({ x1, y1, dz, 2 });
    return vessel;
  };
  tree->setRoot(line(0, 0, 10, 0));
  VesselNode * root = tree->getRootNode();
  root->addChild(new VesselNode(root, line(10, 0, 20, 0)));
  if (withSecondBranch)
  {
    root->addChild(new VesselNode(root, line(10, 0, 10, 10)));
  }
  auto data = lumo::VesselTreeData::New();
  data->initialize(handle);
  arbo::writeData(data, file);
}

nlohmann::json
compareJson(const std::vector<std::string> & arguments)
{
  std::vector<std::string> all = { "compare" };
  all.insert(all.end(), arguments.begin(), arguments.end());
  all.push_back("--json");
  ArboRun run = runArbo(all);
  EXPECT_EQ(run.status, 0) << run.err;
  return nlohmann::json::parse(run.out);
}
} // namespace

class ArboPhantom : public ArboTest
{};

TEST_F(ArboPhantom, WritesTheSixFilesIntoANewFolderTheSameForTheSameSeed)
{
  ArboRun run = runArbo({ "phantom", "--out", path("a/b"), "--seed", "5" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_NE(run.out.find("96 x 96 x 64 voxels of 2.5 x 2.5 x 3 mm"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("truth-portal.ves"), std::string::npos);
  EXPECT_EQ(namesIn(path("a/b")), phantomFiles);

  ArboRun again = runArbo({ "-q", "phantom", "--out", path("c"), "--seed", "5", "--size", "small" });
  ASSERT_EQ(again.status, 0) << again.err;
  EXPECT_EQ(again.out, "");
  ArboRun other = runArbo({ "-q", "phantom", "--out", path("d"), "--seed", "6" });
  ASSERT_EQ(other.status, 0) << other.err;
  for (const std::string & name : phantomFiles)
  {
    EXPECT_EQ(readFile(path("a/b/" + name)), readFile(path("c/" + name))) << name;
  }
  EXPECT_NE(readFile(path("a/b/truth-portal.ves")), readFile(path("d/truth-portal.ves")));
  EXPECT_NE(readFile(path("a/b/portal.nrrd")), readFile(path("d/portal.nrrd")));
  EXPECT_NE(readFile(path("a/b/tumour.nrrd")), readFile(path("d/tumour.nrrd")));
  EXPECT_NE(run.out.find("  tumour.nrrd         tumour mask, "), std::string::npos) << run.out;
  lumo::Image::Pointer tumour = lumo::ReadImageFile(path("a/b/tumour.nrrd"));
  EXPECT_EQ(tumour->GetPixelTypeAsString(), "unsigned_char");
  EXPECT_EQ(tumour->GetSize(), lumo::ReadImageFile(path("a/b/organ.nrrd"))->GetSize());

  lumo::Image::Pointer organ = lumo::ReadImageFile(path("a/b/organ.nrrd"));
  EXPECT_EQ(organ->GetPixelTypeAsString(), "unsigned_char");
  EXPECT_EQ(organ->GetDimension(0), 96u);
  EXPECT_EQ(organ->GetDimension(2), 64u);
  EXPECT_DOUBLE_EQ(organ->GetSpacing()[2], 3.0);
  EXPECT_DOUBLE_EQ(organ->GetOrigin()[0], -118.75);

  // The written truth matches itself exactly, as the files hold exactly the trees the masks were made from.
  const nlohmann::json self = compareJson({ path("a/b/truth-portal.ves"), path("c/truth-portal.ves") });
  EXPECT_NEAR(self["truthToTest"]["meanMillimetres"].get<double>(), 0.0, 1e-9);
  EXPECT_EQ(self["recall"], 1.0);
  EXPECT_EQ(self["precision"], 1.0);
  const nlohmann::json info = nlohmann::json::parse(runArbo({ "info", path("a/b/truth-hepatic.ves"), "--json" }).out);
  EXPECT_EQ(info["bloodVesselTypes"][0]["name"], "Hepatic vein");
}

TEST_F(ArboPhantom, RefusesBadArguments)
{
  for (const std::vector<std::string> & arguments : { std::vector<std::string>{ "phantom" },
                                                      { "phantom", "--out", path("p"), "--size", "huge" },
                                                      { "phantom", "--out", path("p"), "--seed", "many" },
                                                      { "phantom", "--out", path("p"), "--seed", "-3" },
                                                      { "phantom", "--out", path("p"), "extra" } })
  {
    ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 2) << arguments.back() << ": " << run.err;
    EXPECT_NE(run.err.find("Run \"arbo --help\" for usage."), std::string::npos);
  }
  EXPECT_NE(runArbo({ "phantom", "--out", path("p"), "--size", "huge" }).err.find("--size"), std::string::npos);
  EXPECT_NE(runArbo({ "phantom" }).err.find("--out is required"), std::string::npos);
  EXPECT_TRUE(files().empty());
}

TEST_F(ArboPhantom, OutputFolderProblemsLeaveEverythingAsItWas)
{
  writeFile(path("plain"), "not a folder");
  ArboRun run = runArbo({ "phantom", "--out", path("plain") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("plain") + ": exists and is not a folder\n");
  EXPECT_EQ(readFile(path("plain")), "not a folder");

  run = runArbo({ "phantom", "--out", path("plain/sub") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("plain/sub") + ": cannot be created (Not a directory)\n");

  // One of the six names is taken by a folder: nothing is written, an earlier file keeps its content.
  std::filesystem::create_directories(path("out/truth-portal.ves"));
  writeFile(path("out/organ.nrrd"), "earlier");
  run = runArbo({ "phantom", "--out", path("out") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("out/truth-portal.ves") + ": is a folder; the phantom's file cannot replace it\n");
  EXPECT_EQ(namesIn(path("out")), (std::vector<std::string>{ "organ.nrrd", "truth-portal.ves" }));
  EXPECT_EQ(readFile(path("out/organ.nrrd")), "earlier");
  EXPECT_EQ(files(), (std::vector<std::string>{ "out", "plain" }));
}

class ArboCompare : public ArboTest
{};

TEST_F(ArboCompare, MeasuresAShiftedAndAnIncompleteTree)
{
  writeTree(path("truth.ves"), 0.0f);
  writeTree(path("shifted.ves"), 0.5f);
  writeTree(path("partial.ves"), 0.0f, false);

  nlohmann::json json = compareJson({ path("truth.ves"), path("shifted.ves") });
  EXPECT_DOUBLE_EQ(json["truthToTest"]["meanMillimetres"].get<double>(), 0.5);
  EXPECT_DOUBLE_EQ(json["testToTruth"]["p95Millimetres"].get<double>(), 0.5);
  EXPECT_EQ(json["recall"], 1.0);
  EXPECT_EQ(json["truthTree"]["vessels"], 3);
  EXPECT_EQ(json["truthTree"]["bifurcations"], 1);
  EXPECT_EQ(json["voxelSizeMillimetres"], 1.0);

  json = compareJson({ path("truth.ves"), path("partial.ves") });
  EXPECT_DOUBLE_EQ(json["recall"].get<double>(), 2.0 / 3.0);
  EXPECT_EQ(json["precision"], 1.0);
  EXPECT_EQ(json["testTree"]["vessels"], 2);

  // Recall restricted to vessels of radius >= 2 voxels of 0.5 mm = 1 mm: all three; of 3 voxels: none.
  json = compareJson({ path("truth.ves"), path("partial.ves"), "--voxel-size", "0.5", "--min-radius-voxels", "3" });
  EXPECT_EQ(json["trueVesselsConsidered"], 0);
  EXPECT_TRUE(json["recall"].is_null());

  ArboRun table = runArbo({ "compare", path("truth.ves"), path("partial.ves") });
  ASSERT_EQ(table.status, 0) << table.err;
  EXPECT_NE(table.out.find("  recall:                      66.7 %    (2 of 3 true vessels found)\n"), std::string::npos)
    << table.out;
  EXPECT_NE(table.out.find("  precision:                  100.0 %    (2 of 2 test vessels correct)\n"),
            std::string::npos)
    << table.out;
}

TEST_F(ArboCompare, ReportsBadArgumentsAndFiles)
{
  writeTree(path("truth.ves"), 0.0f);
  for (const std::vector<std::string> & arguments :
       { std::vector<std::string>{ "compare", path("truth.ves") },
         { "compare", path("truth.ves"), path("truth.ves"), "--voxel-size", "0" },
         { "compare", path("truth.ves"), path("truth.ves"), "--voxel-size", "-1" },
         { "compare", path("truth.ves"), path("truth.ves"), "--voxel-size", "thin" },
         { "compare", path("truth.ves"), path("truth.ves"), "--min-radius-voxels", "-0.5" } })
  {
    ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 2) << arguments.back() << ": " << run.err;
    EXPECT_EQ(run.out, "");
  }

  ArboRun run = runArbo({ "compare", path("truth.ves"), path("missing.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("missing.ves") + ": cannot be opened (No such file or directory)\n");

  run = runArbo({ "compare", path("missing.ves"), path("truth.ves") });
  EXPECT_EQ(run.err, "arbo: " + path("missing.ves") + ": cannot be opened (No such file or directory)\n");

  writeFile(path("broken.ves"), "VALD-KRN 2000 Tree\n{ { t f 1 2 1 1 -1 2 [ 0 0");
  run = runArbo({ "compare", path("truth.ves"), path("broken.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: " + path("broken.ves") + ": is not a valid vessel tree file (malformed or truncated text)\n");

  writeFile(path("pointless.ves"), "VALD-KRN 2000 Tree\n{ { t f 1 2 1 1 -1 0 } - }\n");
  run = runArbo({ "compare", path("pointless.ves"), path("truth.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("pointless.ves") + ": holds no centre-line points to compare\n");

  lumo::Image::Pointer image = lumo::Image::New();
  lumo::Image::SizeType size;
  size.fill(2);
  image->Initialize(itk::IOComponentEnum::UCHAR, size);
  lumo::WriteImageFile(image, path("image.nrrd"));
  run = runArbo({ "compare", path("image.nrrd"), path("truth.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: " + path("truth.ves") + ": holds vessel tree, not an image like " + path("image.nrrd") + "\n");
  run = runArbo({ "compare", path("truth.ves"), path("image.nrrd") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("image.nrrd") + ": holds image, not a vessel tree\n");
  EXPECT_EQ(run.out, "");
}

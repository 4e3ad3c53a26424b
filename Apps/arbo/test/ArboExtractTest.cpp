#include "ArboTestSupport.h"

#include "ArVesselTree.h"
#include "TubeMask.h"
#include "lumoImage.h"
#include "lumoImageIO.h"

#include <locale>

using namespace arbo_test;

namespace
{
lumo::Image::Pointer
newImage(itk::IOComponentEnum type, unsigned int x, unsigned int y, unsigned int z, unsigned int dimension = 3)
{
  lumo::Image::SizeType size;
  size[0] = x;
  size[1] = y;
  size[2] = z;
  auto image = lumo::Image::New();
  image->Initialize(type, size, dimension);
  return image;
}

std::unique_ptr<LinkedVesselTree>
readTree(const std::string & file)
{
  std::ifstream in(file);
  in.imbue(std::locale::classic());
  std::string magic;
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->read(in);
  return tree;
}
} // namespace

class ArboExtract : public ArboTest
{
protected:
  /** The Y of the extraction tests with spacing 0.5 mm, written as unsigned 8-bit NRRD. */
  std::string
  writeY(itk::IOComponentEnum type = itk::IOComponentEnum::UCHAR)
  {
    auto image = newImage(type, 60, 40, 21);
    std::vector<unsigned char> mask(60 * 40 * 21, 0);
    const std::uint32_t size[3] = { 60, 40, 21 };
    drawY(mask.data(), size);
    if (type == itk::IOComponentEnum::UCHAR)
      std::copy(mask.begin(), mask.end(), static_cast<unsigned char *>(image->GetData()));
    else
      for (std::size_t i = 0; i < mask.size(); ++i)
        static_cast<unsigned short *>(image->GetData())[i] = mask[i] != 0 ? 1000 : 0;
    lumo::Vector3D spacing;
    spacing.Fill(0.5);
    image->SetSpacing(spacing);
    const std::string file = path(type == itk::IOComponentEnum::UCHAR ? "y.nrrd" : "y16.nrrd");
    lumo::WriteImageFile(image, file);
    return file;
  }
};

TEST_F(ArboExtract, YMaskGivesARootAndTwoBranchesOfTheChosenType)
{
  const std::string mask = writeY();
  ArboRun run = runArbo({ "extract", mask, "-o", path("y.ves"), "--type", "hepatic" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("arbo: 3 vessels (Hepatic vein) from a skeleton of 69 voxels"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("arbo: wrote " + path("y.ves") + "\n"), std::string::npos);
  auto tree = readTree(path("y.ves"));
  ASSERT_EQ(tree->numberOfNodes(), 3);
  VesselNode * root = tree->getRootNode();
  EXPECT_EQ(root->getData()->getVesselId(), 1);
  EXPECT_EQ(root->getData()->getProperties().getBloodVesselType(), 1);
  EXPECT_EQ(root->getChild(1)->getData()->getProperties().getBloodVesselType(), 1);
  // Without --start the root is the thickest end point: an end of the stem or of a branch, in mm.
  const VesselPoint start = root->getData()->getPoint(0);
  EXPECT_NEAR(start.diameter, 3.0f, 0.5f);
  // Children start where their parent ends (diameters are measured per vessel, so only the positions agree).
  const VesselPoint childStart = root->getChild(0)->getData()->getPoint(0);
  const VesselPoint parentEnd = root->getData()->getPoints().back();
  EXPECT_EQ(childStart.x, parentEnd.x);
  EXPECT_EQ(childStart.y, parentEnd.y);
  EXPECT_EQ(childStart.z, parentEnd.z);

  run =
    runArbo({ "--quiet", "extract", mask, "-o", path("s.ves"), "--start", "4,20,10", "--smooth", "2", "--prune", "1" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  tree = readTree(path("s.ves"));
  ASSERT_EQ(tree->numberOfNodes(), 3);
  EXPECT_EQ(tree->getRootNode()->getData()->getPoint(0).x, 2.0f); // voxel 4 at 0.5 mm
  EXPECT_EQ(tree->getRootNode()->getData()->getProperties().getBloodVesselType(), 2);
}

TEST_F(ArboExtract, SixteenBitMaskIsThresholdedWithANote)
{
  const std::string mask = writeY(itk::IOComponentEnum::USHORT);
  ArboRun run = runArbo({ "extract", mask, "-o", path("y.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err.rfind("arbo: note: " + mask +
                            " holds unsigned_short voxels, not unsigned 8-bit; voxels above 0 are taken as vessel\n",
                          0),
            0u)
    << run.err;
  EXPECT_EQ(readTree(path("y.ves"))->numberOfNodes(), 3);
  run = runArbo({ "-q", "extract", mask, "-o", path("quiet.ves") });
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
}

TEST_F(ArboExtract, EmptyTwoDimensionalAndNonImageInputsFailWithAMessageAndNoOutput)
{
  const std::string empty = path("empty.nrrd");
  lumo::WriteImageFile(newImage(itk::IOComponentEnum::UCHAR, 8, 8, 8), empty);
  ArboRun run = runArbo({ "extract", empty, "-o", path("out.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + empty + ": the mask is empty (no voxel above 0): nothing to extract\n");

  auto flat = newImage(itk::IOComponentEnum::UCHAR, 8, 8, 1, 2);
  std::fill_n(static_cast<unsigned char *>(flat->GetData()), 64, 1);
  const std::string flatFile = path("flat.png");
  lumo::WriteImageFile(flat, flatFile);
  run = runArbo({ "extract", flatFile, "-o", path("out.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + flatFile + ": is a 2-D image; vessel extraction needs a 3-D mask\n");

  writeFile(path("tree.ves"), readFile(dataFile("sample-portal.ves")));
  run = runArbo({ "extract", path("tree.ves"), "-o", path("out.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("tree.ves") + ": holds a vessel tree, not a vessel mask image\n");

  run = runArbo({ "extract", path("missing.nrrd"), "-o", path("out.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err.rfind("arbo: " + path("missing.nrrd") + ": ", 0), 0u);

  EXPECT_EQ(files(), (std::vector<std::string>{ "empty.nrrd", "flat.png", "tree.ves" }));
}

TEST_F(ArboExtract, BadOptionsAreRefusedBeforeAnythingIsRead)
{
  const std::string mask = writeY();
  ArboRun run = runArbo({ "extract", mask, "-o", path("out.ves"), "--type", "vein" });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(
    run.err,
    "arbo: --type: unknown blood vessel type 'vein' (use portal, hepatic, artery, bile, undefined or 0 to 4)\n");
  run = runArbo({ "extract", mask, "-o", path("out.ves"), "--start", "4,20" });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: --start: '4,20' is not a voxel index i,j,k (three whole numbers from 0)\n");
  run = runArbo({ "extract", mask, "-o", path("out.ves"), "--start", "60,0,0" });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: --start: voxel 60,0,0 is outside the image of 60 x 40 x 21 voxels\n");
  run = runArbo({ "extract", mask, "-o", path("out.txt") });
  EXPECT_EQ(run.status, 1);
  run = runArbo({ "extract", mask });
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(files(), (std::vector<std::string>{ "y.nrrd" }));
}

TEST_F(ArboExtract, FullAndSingleVoxelMasksGiveSmallTrees)
{
  auto full = newImage(itk::IOComponentEnum::UCHAR, 6, 5, 4);
  std::fill_n(static_cast<unsigned char *>(full->GetData()), 6 * 5 * 4, 1);
  lumo::WriteImageFile(full, path("full.nrrd"));
  ArboRun run = runArbo({ "-q", "extract", path("full.nrrd"), "-o", path("full.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_GE(readTree(path("full.ves"))->numberOfNodes(), 1);

  auto single = newImage(itk::IOComponentEnum::UCHAR, 5, 5, 5);
  static_cast<unsigned char *>(single->GetData())[62] = 1; // (2, 2, 2)
  lumo::WriteImageFile(single, path("single.nrrd"));
  run = runArbo({ "-q", "extract", path("single.nrrd"), "-o", path("single.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  auto tree = readTree(path("single.ves"));
  ASSERT_EQ(tree->numberOfNodes(), 1);
  ASSERT_EQ(tree->getRootNode()->getData()->numberOfPoints(), 1u);
  EXPECT_EQ(tree->getRootNode()->getData()->getPoint(0), (VesselPoint{ 2, 2, 2, 1 }));
}

TEST_F(ArboExtract, HelpTeachesWithExamples)
{
  ArboRun run = runArbo({ "extract", "--help" });
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.out.find("arbo extract portal-mask.nii.gz -o portal.ves --type portal"), std::string::npos);
  EXPECT_NE(run.out.find("--no-endpoint-suppression"), std::string::npos);
  EXPECT_NE(run.out.find("thickest end point"), std::string::npos);
}

#include "ArboTestSupport.h"

#include "ArVesselTree.h"
#include "TubeMask.h"
#include "lumoImage.h"
#include "lumoImageIO.h"

#include <cmath>
#include <iostream>
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
  EXPECT_EQ(
    run.err.rfind("arbo: note: " + mask +
                    " holds unsigned_short voxels, not unsigned 8-bit; voxels other than 0 are taken as vessel\n",
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
  EXPECT_EQ(run.err, "arbo: " + empty + ": the mask is empty (no voxel other than 0): nothing to extract\n");

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

namespace
{
/** Total centre-line length of a tree (mm) and the largest distance of its points from the line x = x0 + z,
 *  y = y0 (mm). */
void
measureDiagonal(LinkedVesselTree & tree, double x0, double y0, double & length, double & offLine)
{
  length = 0.0;
  offLine = 0.0;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree.newPreorderIterator());
  while (it->hasNext())
  {
    const auto & points = it->next()->getPoints();
    for (std::size_t i = 0; i < points.size(); ++i)
    {
      const VesselPoint & p = points[i];
      // Distance from the line through (x0, y0, 0) along (1, 0, 1) / sqrt(2).
      const double u = (p.x - x0 - p.z) / std::sqrt(2.0);
      offLine = std::max(offLine, std::hypot(u, p.y - y0));
      if (i > 0)
      {
        const VesselPoint & q = points[i - 1];
        length += std::sqrt((p.x - q.x) * (p.x - q.x) + (p.y - q.y) * (p.y - q.y) + (p.z - q.z) * (p.z - q.z));
      }
    }
  }
}
} // namespace

TEST_F(ArboExtract, LabelPicksTheVesselsOfALabelMap)
{
  // Liver 1 around the Y of vessels 2, a tumour 3 beside it; 16-bit, as label maps often are.
  const std::uint32_t size[3] = { 60, 40, 21 };
  std::vector<unsigned char> y(60 * 40 * 21, 0);
  drawY(y.data(), size);
  auto labels = newImage(itk::IOComponentEnum::USHORT, 60, 40, 21);
  auto * voxels = static_cast<unsigned short *>(labels->GetData());
  for (std::size_t i = 0; i < y.size(); ++i)
  {
    const std::size_t x = i % 60;
    const std::size_t row = (i / 60) % 40;
    voxels[i] = y[i] != 0 ? 2 : (x >= 40 && row >= 16 && row <= 24 ? 3 : 1);
  }
  lumo::Vector3D spacing;
  spacing.Fill(0.5);
  labels->SetSpacing(spacing);
  lumo::WriteImageFile(labels, path("labels.nrrd"));
  const std::string mask = writeY();

  ArboRun plain = runArbo({ "-q", "extract", mask, "-o", path("plain.ves") });
  ASSERT_EQ(plain.status, 0) << plain.err;
  ArboRun run = runArbo({ "extract", path("labels.nrrd"), "--label", "2", "-o", path("label.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  // No note about the voxel type: the label says what counts.
  EXPECT_EQ(run.err.rfind("arbo: 3 vessels (Portal vein) from a skeleton of 69 voxels", 0), 0u) << run.err;
  EXPECT_EQ(readFile(path("label.ves")), readFile(path("plain.ves")));

  // Without --label the whole labelled block is vessel: not the Y.
  run = runArbo({ "-q", "extract", path("labels.nrrd"), "-o", path("all.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(readFile(path("all.ves")), readFile(path("plain.ves")));

  const std::vector<std::string> before = files();
  run = runArbo({ "extract", path("labels.nrrd"), "--label", "5", "-o", path("five.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "arbo: " + path("labels.nrrd") + ": label 5 does not occur (labels present: 1, 2, 3)\n");
  EXPECT_EQ(files(), before);
}

TEST_F(ArboExtract, ThickSlicesAreInterpolatedSoThatADiagonalVesselStaysWhole)
{
  // A vessel of radius 2 mm at 45 degrees through slices of 5 mm with pixels of 0.5 mm, from (10, 10, 5) to
  // (50, 10, 45) mm: 56.6 mm long. Each slice cuts it in an ellipse 5.7 mm long, shifted by 5 mm per slice.
  const unsigned int nx = 120;
  const unsigned int ny = 40;
  const unsigned int nz = 11;
  auto image = newImage(itk::IOComponentEnum::UCHAR, nx, ny, nz);
  auto * data = static_cast<unsigned char *>(image->GetData());
  const double from[3] = { 10.0, 10.0, 5.0 };
  const double to[3] = { 50.0, 10.0, 45.0 };
  for (unsigned int k = 0; k < nz; ++k)
    for (unsigned int j = 0; j < ny; ++j)
      for (unsigned int i = 0; i < nx; ++i)
      {
        const double p[3] = { 0.5 * i - from[0], 0.5 * j - from[1], 5.0 * k - from[2] };
        const double d[3] = { to[0] - from[0], to[1] - from[1], to[2] - from[2] };
        double t = (p[0] * d[0] + p[1] * d[1] + p[2] * d[2]) / (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        t = std::min(1.0, std::max(0.0, t));
        const double q[3] = { p[0] - t * d[0], p[1] - t * d[1], p[2] - t * d[2] };
        data[(k * ny + j) * nx + i] = q[0] * q[0] + q[1] * q[1] + q[2] * q[2] <= 4.0 ? 1 : 0;
      }
  lumo::Vector3D spacing;
  spacing[0] = 0.5;
  spacing[1] = 0.5;
  spacing[2] = 5.0;
  image->SetSpacing(spacing);
  lumo::WriteImageFile(image, path("thick.nrrd"));

  ArboRun run = runArbo({ "extract", path("thick.nrrd"), "-o", path("thick.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err.rfind("arbo: note: slices of 5 mm interpolated to 0.5 mm (10 per slice, shape-based) before "
                          "thinning; --no-resample keeps them\n",
                          0),
            0u)
    << run.err;
  EXPECT_EQ(run.err.find("not connected to the root"), std::string::npos) << run.err;
  auto tree = readTree(path("thick.ves"));
  EXPECT_EQ(tree->numberOfNodes(), 1);
  double length = 0.0;
  double offLine = 0.0;
  measureDiagonal(*tree, 5.0, 10.0, length, offLine);
  // The line is 56.6 mm long; where the mask ends between two slices is known only to a slice, so each end may
  // be off by half a slice (2.5 mm).
  EXPECT_NEAR(length, 56.6, 5.0);
  // World coordinates: the centre line stays on the true line, within a pixel and a half.
  EXPECT_LT(offLine, 0.75);

  // Thinned as they are, the slices give a staircase: connected, but far longer than the vessel. Centring each
  // point on its cross-section takes the steps out again.
  run = runArbo({ "-q", "extract", path("thick.nrrd"), "-o", path("raw.ves"), "--no-resample", "--raw-centre-lines" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  measureDiagonal(*readTree(path("raw.ves")), 5.0, 10.0, length, offLine);
  EXPECT_GT(length, 56.6 + 10.0);
  run = runArbo({ "-q", "extract", path("thick.nrrd"), "-o", path("raw.ves"), "--no-resample" });
  ASSERT_EQ(run.status, 0) << run.err;
  measureDiagonal(*readTree(path("raw.ves")), 5.0, 10.0, length, offLine);
  EXPECT_NEAR(length, 56.6, 5.0);
}

TEST_F(ArboExtract, JoinPiecesKeepsAThinSteepVesselConnectedAcrossThickSlices)
{
  // A vessel of radius 1 mm at 60 degrees from the slice normal, slices of 5 mm, pixels of 0.5 mm: each slice cuts
  // it in an ellipse 4 mm long, and the ellipses of neighbouring slices lie 8.7 mm apart, 4.7 mm edge to edge.
  const unsigned int nx = 180;
  const unsigned int ny = 40;
  const unsigned int nz = 11;
  auto image = newImage(itk::IOComponentEnum::UCHAR, nx, ny, nz);
  auto * data = static_cast<unsigned char *>(image->GetData());
  const double from[3] = { 10.0, 10.0, 5.0 };
  const double d[3] = { 40.0 * std::sqrt(3.0), 0.0, 40.0 };
  for (unsigned int k = 0; k < nz; ++k)
    for (unsigned int j = 0; j < ny; ++j)
      for (unsigned int i = 0; i < nx; ++i)
      {
        const double p[3] = { 0.5 * i - from[0], 0.5 * j - from[1], 5.0 * k - from[2] };
        double t = (p[0] * d[0] + p[1] * d[1] + p[2] * d[2]) / (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        t = std::min(1.0, std::max(0.0, t));
        const double q[3] = { p[0] - t * d[0], p[1] - t * d[1], p[2] - t * d[2] };
        data[(k * ny + j) * nx + i] = q[0] * q[0] + q[1] * q[1] + q[2] * q[2] <= 1.0 ? 1 : 0;
      }
  lumo::Vector3D spacing;
  spacing[0] = 0.5;
  spacing[1] = 0.5;
  spacing[2] = 5.0;
  image->SetSpacing(spacing);
  lumo::WriteImageFile(image, path("steep.nrrd"));

  // Interpolated in place, the pieces stay apart: the tree is one of them.
  ArboRun run = runArbo({ "extract", path("steep.nrrd"), "-o", path("apart.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find("not connected to the root"), std::string::npos) << run.err;

  run = runArbo({ "extract", path("steep.nrrd"), "-o", path("joined.ves"), "--join-pieces" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err.find("not connected to the root"), std::string::npos) << run.err;
  auto tree = readTree(path("joined.ves"));
  EXPECT_EQ(tree->numberOfNodes(), 1);
  double length = 0.0;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const auto & points = it->next()->getPoints();
    for (std::size_t i = 1; i < points.size(); ++i)
    {
      const VesselPoint & p = points[i];
      const VesselPoint & q = points[i - 1];
      length += std::sqrt((p.x - q.x) * (p.x - q.x) + (p.y - q.y) * (p.y - q.y) + (p.z - q.z) * (p.z - q.z));
    }
  }
  // 80 mm long; each end is known only to half a slice along the vessel (5 mm at this angle).
  EXPECT_NEAR(length, 80.0, 10.0);

  // Joining needs the interpolation: refused with --no-resample, nothing written.
  const std::vector<std::string> before = files();
  run = runArbo({ "extract", path("steep.nrrd"), "-o", path("raw.ves"), "--join-pieces", "--no-resample" });
  EXPECT_NE(run.status, 0);
  EXPECT_EQ(run.err.rfind("arbo: --no-resample excludes --join-pieces\n", 0), 0u) << run.err;
  EXPECT_EQ(files(), before);
}

TEST_F(ArboExtract, TerminalVesselsReachTheCentreOfTheirRoundedEnds)
{
  // A Y of tubes with rounded ends, pixels of 0.5 mm: a stem of radius 1.5 mm from (5, 20, 10) to (25, 20, 10) mm
  // and two branches from there to (45, 10, 10) and (45, 30, 10), tapering to 0.7 mm. Thinning stops short of the
  // thin ends.
  const unsigned int nx = 100;
  const unsigned int ny = 80;
  const unsigned int nz = 40;
  auto image = newImage(itk::IOComponentEnum::UCHAR, nx, ny, nz);
  auto * data = static_cast<unsigned char *>(image->GetData());
  const double segments[3][2][3] = { { { 5, 20, 10 }, { 25, 20, 10 } },
                                     { { 25, 20, 10 }, { 45, 10, 10 } },
                                     { { 25, 20, 10 }, { 45, 30, 10 } } };
  for (unsigned int k = 0; k < nz; ++k)
    for (unsigned int j = 0; j < ny; ++j)
      for (unsigned int i = 0; i < nx; ++i)
        for (const auto & s : segments)
        {
          const double p[3] = { 0.5 * i - s[0][0], 0.5 * j - s[0][1], 0.5 * k - s[0][2] };
          const double d[3] = { s[1][0] - s[0][0], s[1][1] - s[0][1], s[1][2] - s[0][2] };
          double t = (p[0] * d[0] + p[1] * d[1] + p[2] * d[2]) / (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
          t = std::min(1.0, std::max(0.0, t));
          const double q[3] = { p[0] - t * d[0], p[1] - t * d[1], p[2] - t * d[2] };
          const double r = &s == &segments[0] ? 1.5 : 1.5 - 0.8 * t;
          if (q[0] * q[0] + q[1] * q[1] + q[2] * q[2] <= r * r)
          {
            data[(k * ny + j) * nx + i] = 1;
          }
        }
  lumo::Vector3D spacing;
  spacing.Fill(0.5);
  image->SetSpacing(spacing);
  lumo::WriteImageFile(image, path("y.nrrd"));

  ArboRun run = runArbo({ "-q", "extract", path("y.nrrd"), "-o", path("y.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  auto tree = readTree(path("y.ves"));
  ASSERT_EQ(tree->numberOfNodes(), 3);
  std::vector<VesselPoint> ends;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (tree->isLeaf(vessel))
    {
      ends.push_back(vessel->getPoints().back());
    }
  }
  ASSERT_EQ(ends.size(), 2u);
  for (const VesselPoint & end : ends)
  {
    // The root starts at one of the three ends; the other two are the leaves' ends. Thinning alone stops a pixel
    // (0.5 mm) short of them.
    double nearest = 1e9;
    for (const double * trueEnd : { segments[0][0], segments[1][1], segments[2][1] })
    {
      nearest = std::min(nearest, std::hypot(end.x - trueEnd[0], end.y - trueEnd[1], end.z - trueEnd[2]));
    }
    EXPECT_LT(nearest, 0.4) << end.x << ", " << end.y << ", " << end.z;
  }
}

TEST_F(ArboExtract, MessagesOfTheThinningCodeBecomeNotesOnStandardError)
{
  // A block with a dent in its top, thinned with slices twice the pixel size: the voxel under the dent faces the
  // background only across a slice and the thinning code reports that it finds no neighbour.
  auto block = newImage(itk::IOComponentEnum::UCHAR, 11, 11, 9);
  auto * data = static_cast<unsigned char *>(block->GetData());
  for (int z = 1; z <= 6; ++z)
    for (int y = 1; y <= 9; ++y)
      for (int x = 1; x <= 9; ++x)
        data[(z * 11 + y) * 11 + x] = 1;
  data[(6 * 11 + 5) * 11 + 5] = 0;
  lumo::Vector3D spacing;
  spacing[0] = 1.0;
  spacing[1] = 1.0;
  spacing[2] = 2.0;
  block->SetSpacing(spacing);
  lumo::WriteImageFile(block, path("dent.nrrd"));

  testing::internal::CaptureStdout();
  ArboRun run = runArbo({ "extract", path("dent.nrrd"), "-o", path("dent.ves") });
  const std::string console = testing::internal::GetCapturedStdout();
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(console, "");
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("arbo: note: Error in Selle Skeletonizer::getNextNeighbour(...): Point has no neighbours!\n"),
            std::string::npos)
    << run.err;

  testing::internal::CaptureStdout();
  run = runArbo({ "-q", "extract", path("dent.nrrd"), "-o", path("quiet.ves") });
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  // Standard output is the console's again.
  testing::internal::CaptureStdout();
  std::cout << "after" << std::endl;
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "after\n");
}

TEST_F(ArboExtract, ATrunkThatThinsAwayIsGivenBackAsTheRoot)
{
  // The small phantom of seed 2: its portal trunk (radius 7 mm in voxels of 2.5 mm) thins into the first branching,
  // and the thickest end point lies at the end of a branch, far from the hilum.
  ArboRun run = runArbo({ "-q", "phantom", "--out", path("phantom"), "--size", "small", "--seed", "2" });
  ASSERT_EQ(run.status, 0) << run.err;
  const std::string mask = path("phantom/portal.nrrd");
  const std::string truth = path("phantom/truth-portal.ves");
  auto distance = [&](const std::string & tree) {
    ArboRun compare = runArbo({ "compare", truth, tree, "--voxel-size", "2.5", "--min-radius-voxels", "1.5" });
    EXPECT_EQ(compare.status, 0) << compare.err;
    const std::string marker = "truth to test distance:";
    return std::stod(compare.out.substr(compare.out.find(marker) + marker.size()));
  };

  run = runArbo({ "extract", mask, "-o", path("stub.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find("arbo: note: the root vessel was extended by "), std::string::npos) << run.err;
  // Within 0.6 voxel of the true centre lines on average.
  const double withStub = distance(path("stub.ves"));
  EXPECT_LE(withStub, 0.6 * 2.5);
  // The root starts where the true trunk does (the hilum), within two voxels.
  const VesselPoint root = readTree(path("stub.ves"))->getRootNode()->getData()->getPoint(0);
  const VesselPoint hilum = readTree(truth)->getRootNode()->getData()->getPoint(0);
  EXPECT_LT(std::hypot(root.x - hilum.x, root.y - hilum.y, root.z - hilum.z), 5.0);

  run = runArbo({ "extract", mask, "-o", path("nostub.ves"), "--no-stub" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err.find("extended"), std::string::npos) << run.err;
  // The trunk's stretch is missing: a quarter of a voxel further from the truth on average.
  EXPECT_GT(distance(path("nostub.ves")), withStub + 0.25 * 2.5);
}

// Pixels of 0.5 mm with slices of 2 and 4 mm: the thinning reaches the thick axes' voxels only after several
// layers along the fine one. A straight tube of radius 5 mm along x must come out as one vessel along its axis.
TEST_F(ArboExtract, AStraightTubeInAnisotropicVoxelsGivesOneVesselAlongItsAxis)
{
  const unsigned int nx = 80;
  const unsigned int ny = 20;
  const unsigned int nz = 12;
  auto image = newImage(itk::IOComponentEnum::UCHAR, nx, ny, nz);
  auto * data = static_cast<unsigned char *>(image->GetData());
  for (unsigned int k = 0; k < nz; ++k)
    for (unsigned int j = 0; j < ny; ++j)
      for (unsigned int i = 0; i < nx; ++i)
      {
        const double dy = 2.0 * (static_cast<double>(j) - 10.0);
        const double dz = 4.0 * (static_cast<double>(k) - 6.0);
        data[(k * ny + j) * nx + i] = dy * dy + dz * dz <= 25.0 ? 1 : 0;
      }
  lumo::Vector3D spacing;
  spacing[0] = 0.5;
  spacing[1] = 2.0;
  spacing[2] = 4.0;
  image->SetSpacing(spacing);
  lumo::WriteImageFile(image, path("tube.nrrd"));

  for (const char * resampling : { "--no-resample", "-q" })
  {
    SCOPED_TRACE(resampling);
    const ArboRun run = runArbo({ "-q", "extract", path("tube.nrrd"), "-o", path("tube.ves"), resampling });
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
    auto tree = readTree(path("tube.ves"));
    ASSERT_EQ(tree->numberOfNodes(), 1);
    const ar<Vessel> vessel = tree->getRootNode()->getData();
    ASSERT_GT(vessel->numberOfPoints(), 2);
    const VesselPoint first = vessel->getPoint(0);
    const VesselPoint last = vessel->getPoint(vessel->numberOfPoints() - 1);
    // Along x over most of the 40 mm, on the axis (y 20 mm, z 24 mm), at a diameter near 10 mm.
    EXPECT_GT(std::abs(last.x - first.x), 25.0f);
    for (std::size_t p = 0; p < vessel->numberOfPoints(); ++p)
    {
      const VesselPoint point = vessel->getPoint(p);
      EXPECT_NEAR(point.y, 20.0f, 1.0f) << p;
      EXPECT_NEAR(point.z, 24.0f, 2.0f) << p;
    }
    EXPECT_NEAR(vessel->getPoint(vessel->numberOfPoints() / 2).diameter, 10.0f, 1.5f);
  }
}

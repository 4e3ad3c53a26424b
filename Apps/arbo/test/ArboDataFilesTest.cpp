#include "ArboTestSupport.h"

#include "lumoImage.h"
#include "lumoImageIO.h"

#include "arboAtomicFile.h"

#include <nlohmann/json.hpp>
#include <vtkCellData.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>
#include <vtkXMLPolyDataReader.h>

#include <cmath>

using namespace arbo_test;

class ArboDataFiles : public ArboTest
{
protected:
  /** A 4 x 3 x 2 unsigned 8-bit image with a tilted direction, spacing (0.8, 0.8, 1.5) and origin (-10, 20, 5). */
  lumo::Image::Pointer
  makeImage() const
  {
    auto image = lumo::Image::New();
    lumo::Image::SizeType size;
    size[0] = 4;
    size[1] = 3;
    size[2] = 2;
    lumo::Vector3D spacing;
    spacing[0] = 0.8;
    spacing[1] = 0.8;
    spacing[2] = 1.5;
    lumo::Point3D origin;
    origin[0] = -10;
    origin[1] = 20;
    origin[2] = 5;
    lumo::Image::DirectionType direction;
    direction.SetIdentity();
    const double c = std::cos(0.3);
    const double s = std::sin(0.3);
    direction[0][0] = c;
    direction[0][1] = -s;
    direction[1][0] = s;
    direction[1][1] = c;
    image->Initialize(itk::IOComponentEnum::UCHAR, size, spacing, origin, direction);
    auto * voxels = static_cast<unsigned char *>(image->GetData());
    for (unsigned int i = 0; i < 24; ++i)
    {
      voxels[i] = static_cast<unsigned char>(i * 10);
    }
    return image;
  }
};

TEST_F(ArboDataFiles, ImagesConvertBetweenFormatsKeepingVoxelsAndGeometry)
{
  lumo::Image::Pointer original = makeImage();
  lumo::WriteImageFile(original, path("image.nrrd"));
  std::string previous = path("image.nrrd");
  for (const char * name : { "image.nii.gz", "image.pic.gz", "image.mhd", "image.pic", "image.nii", "back.nrrd" })
  {
    ArboRun run = runArbo({ "-q", "convert", previous, path(name) });
    ASSERT_EQ(run.status, 0) << name << ": " << run.err;
    previous = path(name);
  }
  lumo::Image::Pointer back = lumo::ReadImageFile(previous);
  ASSERT_EQ(back->GetNumberOfVoxels(), 24u);
  EXPECT_EQ(back->GetPixelTypeAsString(), "unsigned_char");
  EXPECT_EQ(std::memcmp(back->GetData(), original->GetData(), 24), 0);
  for (unsigned int i = 0; i < 3; ++i)
  {
    EXPECT_NEAR(back->GetSpacing()[i], original->GetSpacing()[i], 1e-6);
    EXPECT_NEAR(back->GetOrigin()[i], original->GetOrigin()[i], 1e-5);
    for (unsigned int j = 0; j < 3; ++j)
    {
      EXPECT_NEAR(back->GetDirection()[i][j], original->GetDirection()[i][j], 1e-6);
    }
  }
}

TEST_F(ArboDataFiles, InfoDescribesAnImage)
{
  lumo::WriteImageFile(makeImage(), path("image.nrrd"));
  ArboRun run = runArbo({ "info", path("image.nrrd") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            path("image.nrrd") + ": image (3-D)\n"
                                 "  size:          4 x 3 x 2 voxels\n"
                                 "  spacing:       0.8 x 0.8 x 1.5 mm\n"
                                 "  origin:        (-10, 20, 5) mm\n"
                                 "  direction:     [0.955336, -0.29552, 0]\n"
                                 "                 [0.29552, 0.955336, 0]\n"
                                 "                 [0, 0, 1]\n"
                                 "  pixel type:    unsigned_char\n"
                                 "  value range:   0 .. 230\n"
                                 "  voxels:        24 (0.96 mm3 each)\n");
  ArboRun json = runArbo({ "info", path("image.nrrd"), "--json" });
  ASSERT_EQ(json.status, 0);
  const auto parsed = nlohmann::json::parse(json.out);
  EXPECT_EQ(parsed["kind"], "image");
  EXPECT_EQ(parsed["size"], nlohmann::json::parse("[4, 3, 2]"));
  EXPECT_EQ(parsed["maximum"], 230.0);
}

TEST_F(ArboDataFiles, ATreeBecomesCentreLinesForVtkTools)
{
  ArboRun run = runArbo({ "-q", "convert", dataFile("sample-portal.ves"), path("sample.vtp") });
  ASSERT_EQ(run.status, 0) << run.err;
  auto reader = vtkSmartPointer<vtkXMLPolyDataReader>::New();
  reader->SetFileName(path("sample.vtp").c_str());
  reader->Update();
  vtkPolyData * lines = reader->GetOutput();
  EXPECT_EQ(lines->GetNumberOfLines(), 29);
  EXPECT_EQ(lines->GetNumberOfPoints(), 190);
  EXPECT_NE(lines->GetPointData()->GetArray("radius"), nullptr);
  EXPECT_NE(lines->GetPointData()->GetArray("vesselIds"), nullptr);
  for (const char * name : { "vesselId", "bloodVesselType", "segment", "resectionStatus" })
  {
    EXPECT_NE(lines->GetCellData()->GetArray(name), nullptr) << name;
  }
  EXPECT_EQ(lines->GetPointData()->GetArray("radius")->GetTuple1(0), 7.0);
}

TEST_F(ArboDataFiles, DataThatDoesNotFitTheOutputIsRefused)
{
  lumo::WriteImageFile(makeImage(), path("image.nrrd"));
  ArboRun run = runArbo({ "convert", path("image.nrrd"), path("image.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: " + path("image.ves") +
              ": cannot write an image as '.ves' (supported: .nrrd, .nii, .nii.gz, .mhd, .mha, .pic, "
              ".pic.gz)\n");
  ArboRun label = runArbo({ "label", path("image.nrrd"), "-o", path("x.ves"), "--vessel", "1", "--hide" });
  EXPECT_EQ(label.status, 1);
  EXPECT_EQ(label.err, "arbo: " + path("image.nrrd") + ": holds image, not a vessel tree\n");
  writeFile(path("broken.nrrd"), "NRRD0004\ntype: nonsense\n\n");
  ArboRun broken = runArbo({ "info", path("broken.nrrd") });
  EXPECT_EQ(broken.status, 1);
  EXPECT_EQ(broken.err.rfind("arbo: " + path("broken.nrrd") + ": ", 0), 0u);
  EXPECT_EQ(std::count(broken.err.begin(), broken.err.end(), '\n'), 1);
  EXPECT_EQ(files(), (std::vector<std::string>{ "broken.nrrd", "image.nrrd" }));
}

TEST_F(ArboDataFiles, LabelImagesCompareVoxelByVoxel)
{
  lumo::Image::Pointer truth = makeImage();
  lumo::Image::Pointer test = makeImage();
  auto * a = static_cast<unsigned char *>(truth->GetData());
  auto * b = static_cast<unsigned char *>(test->GetData());
  for (unsigned int i = 0; i < 24; ++i)
  {
    a[i] = i < 4 ? 0 : (i < 14 ? 2 : 3); // 10 voxels of 2, 10 of 3
    b[i] = a[i];
  }
  b[5] = 3;  // one 2 becomes 3
  b[20] = 0; // one 3 is lost
  lumo::WriteImageFile(truth, path("truth.nrrd"));
  lumo::WriteImageFile(test, path("test.nrrd"));
  ArboRun run = runArbo({ "compare", path("truth.nrrd"), path("test.nrrd") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            path("test.nrrd") + " against " + path("truth.nrrd") +
              " (label images)\n"
              "  same label:   90.0 % of 20 labelled voxels\n"
              "  label    true voxels    test voxels     Dice\n"
              "      2             10              9    0.947\n"
              "      3             10             10    0.900\n");
  lumo::WriteImageFile(makeImage(), path("other.nrrd"));
  ArboRun tree = runArbo({ "compare", path("truth.nrrd"), dataFile("sample-portal.ves") });
  EXPECT_EQ(tree.status, 1);
  EXPECT_EQ(tree.err,
            "arbo: " + dataFile("sample-portal.ves") + ": holds vessel tree, not an image like " + path("truth.nrrd") +
              "\n");
}

TEST_F(ArboDataFiles, AHeaderAndItsDataFileAreWrittenUnderTheirOwnNames)
{
  lumo::WriteImageFile(makeImage(), path("image.nrrd"));
  for (int pass = 0; pass < 2; ++pass) // the second pass replaces the pair
  {
    for (const char * name : { "image.mhd", "image.nhdr" })
    {
      ArboRun run = runArbo({ "-q", "convert", path("image.nrrd"), path(name) });
      ASSERT_EQ(run.status, 0) << name << ": " << run.err;
    }
  }
  EXPECT_EQ(files(),
            (std::vector<std::string>{ "image.mhd", "image.nhdr", "image.nrrd", "image.raw.gz", "image.zraw" }));
  EXPECT_NE(readFile(path("image.mhd")).find("ElementDataFile = image.zraw\n"), std::string::npos);
  EXPECT_NE(readFile(path("image.nhdr")).find("data file: image.raw.gz\n"), std::string::npos);
  EXPECT_EQ(lumo::ReadImageFile(path("image.mhd"))->GetNumberOfVoxels(), 24u);
}

TEST_F(ArboDataFiles, AWriterThatThrowsLeavesTheTargetUntouchedAndNoTemporaryFile)
{
  writeFile(path("plan.ves"), "the user's earlier file\n");
  std::string temporary;
  EXPECT_THROW(arbo::writeAtomically(path("plan.ves"),
                                     [&](const std::string & file) {
                                       temporary = file;
                                       writeFile(file, "half of a new file");
                                       throw std::runtime_error("disk full");
                                     }),
               std::runtime_error);
  EXPECT_NE(temporary, path("plan.ves"));
  EXPECT_EQ(std::filesystem::path(temporary).parent_path(), m_Folder);
  EXPECT_EQ(readFile(path("plan.ves")), "the user's earlier file\n");
  EXPECT_EQ(files(), (std::vector<std::string>{ "plan.ves" }));

  // With no earlier file, nothing is left at all.
  EXPECT_THROW(arbo::writeAtomically(path("new.ves"), [](const std::string &) { throw std::runtime_error("x"); }),
               std::runtime_error);
  EXPECT_EQ(files(), (std::vector<std::string>{ "plan.ves" }));
}

#include "ArboPictureSupport.h"
#include "ArboTestSupport.h"

#include "arboViewer.h"

#include "lumoImage.h"
#include "lumoImageIO.h"
#include "lumoSurfaceBasedVesselTreeMapper3D.h"
#include "lumoVesselTreeFileWriter.h"
#include "lumoVesselTreeLookupTable.h"

#include "RenderedVesselTree.h"
#include "TubeMask.h"

#include <vtkImageData.h>
#include <vtkPNGReader.h>
#include <vtkPolyData.h>

#include <iostream>

using namespace arbo_test;

namespace
{
/** The picking tree (vessel 1 along x, 2 and 3 to (60, +-30, 0), 4 up along z) and its mask in 1 mm voxels: a
 *  label map with the vessels as label 2 and a block of label 1 away from them, and a plain 0/1 mask. In the mask
 *  vessel 2 is 6 mm thick where its tube has a radius of 2 mm, so that a click beside the tube hits the surface. */
class ArboVesselSurface : public ArboTest
{
protected:
  void
  SetUp() override
  {
    auto writer = lumo::VesselTreeFileWriter::New();
    writer->SetInputVesselTree(vessel_test::makePickingTree());
    writer->SetFileName(path("portal.ves").c_str());
    writer->Update();

    const std::uint32_t size[3] = { 80, 80, 50 };
    const double origin[3] = { -10, -40, -10 };
    std::vector<unsigned char> vessels(size[0] * size[1] * size[2], 0);
    auto tube = [&](std::array<double, 3> from, std::array<double, 3> to, double radius) {
      TubeSegment segment{};
      for (int a = 0; a < 3; ++a)
      {
        segment.from[a] = from[a] - origin[a];
        segment.to[a] = to[a] - origin[a];
      }
      segment.radius = radius;
      drawTube(vessels.data(), size, segment);
    };
    tube({ 0, 0, 0 }, { 40, 0, 0 }, 4);
    tube({ 40, 0, 0 }, { 60, 30, 0 }, 6);
    tube({ 40, 0, 0 }, { 60, -30, 0 }, 2);
    tube({ 40, 0, 0 }, { 40, 0, 30 }, 1.5);

    auto image = lumo::Image::New();
    lumo::Vector3D spacing;
    spacing.Fill(1.0);
    lumo::Point3D corner;
    for (int a = 0; a < 3; ++a)
    {
      corner[a] = origin[a];
    }
    image->Initialize(itk::IOComponentEnum::USHORT,
                      { { size[0], size[1], size[2] } },
                      spacing,
                      corner,
                      lumo::Geometry3D::DirectionType::GetIdentity());
    auto * labels = static_cast<std::uint16_t *>(image->GetData());
    for (std::size_t i = 0; i < vessels.size(); ++i)
    {
      labels[i] = vessels[i] ? 2 : 0;
    }
    for (std::uint32_t z = 40; z < 46; ++z)
      for (std::uint32_t y = 2; y < 8; ++y)
        for (std::uint32_t x = 2; x < 8; ++x)
          labels[(z * size[1] + y) * size[0] + x] = 1;
    lumo::WriteImageFile(image, path("labels.nrrd"));
    for (std::size_t i = 0; i < vessels.size(); ++i)
    {
      labels[i] = vessels[i];
    }
    lumo::WriteImageFile(image, path("vessels.nrrd"));
  }

  std::unique_ptr<arbo::Viewer>
  open()
  {
    arbo::Viewer::Options options;
    options.files = { path("portal.ves") };
    options.vesselMask = path("labels.nrrd");
    options.vesselLabel = 2;
    options.width = 500;
    options.height = 400;
    options.view = "top";
    auto viewer = std::make_unique<arbo::Viewer>(options, m_Context);
    viewer->show();
    viewer->attach();
    return viewer;
  }

  static std::vector<std::int32_t>
  activeVessels(const arbo::Viewer & viewer)
  {
    auto * data = static_cast<lumo::VesselTreeData *>(viewer.scene().trees[0]->GetData());
    std::vector<std::int32_t> active;
    for (std::int32_t id = 1; id <= 4; ++id)
    {
      if (data->GetVesselById(id, 0)->getProperties().isActive())
      {
        active.push_back(id);
      }
    }
    return active;
  }

  std::ostringstream m_Out;
  std::ostringstream m_Err;
  arbo::Context m_Context{ m_Out, m_Err, false, {}, 0 };
};
} // namespace

TEST_F(ArboVesselSurface, ViewerShowsTheColouredSurfaceAndPicksOnIt)
{
  LUMO_REQUIRE_DISPLAY();
  std::ostringstream stdoutText;
  std::streambuf * previous = std::cout.rdbuf(stdoutText.rdbuf());
  auto viewer = open();
  std::cout.rdbuf(previous);
  EXPECT_EQ(stdoutText.str(), ""); // the mapper's progress lines stay out of the user's output
  auto * mapper = dynamic_cast<lumo::SurfaceBasedVesselTreeMapper3D *>(
    viewer->scene().trees[0]->GetMapper(lumo::DataNode::Standard3D));
  ASSERT_NE(mapper, nullptr);
  EXPECT_EQ(viewer->treeDrawing(), "vessel surface");
  ASSERT_NE(mapper->GetLabelledSurface(), nullptr);
  EXPECT_EQ(mapper->GetPolyDataMapper()->GetInput(), mapper->GetLabelledSurface());

  // 4 mm beside vessel 2's centre line: on the 6 mm mask surface, off its 2 mm tube.
  const double beside[3] = { 50 + 4 * 15 / std::hypot(15.0, 10.0), 15 - 4 * 10 / std::hypot(15.0, 10.0), 0 };
  click(*viewer, at(*viewer, beside[0], beside[1], 6));
  EXPECT_EQ(activeVessels(*viewer), std::vector<std::int32_t>{ 2 });

  press(*viewer, "t");
  EXPECT_EQ(viewer->statusText(), "Tubes");
  EXPECT_EQ(mapper->GetPolyDataMapper()->GetInput(), mapper->GetSurface());
  click(*viewer, at(*viewer, 55, -22.5, 2)); // on vessel 3's tube
  EXPECT_EQ(activeVessels(*viewer), std::vector<std::int32_t>{ 3 });
  click(*viewer, at(*viewer, beside[0], beside[1], 6)); // beside the tube now: vessel 2 is not hit
  EXPECT_NE(activeVessels(*viewer), std::vector<std::int32_t>{ 2 });
  press(*viewer, "t");
  EXPECT_EQ(viewer->statusText(), "Centre lines");
  EXPECT_EQ(mapper->GetPolyDataMapper()->GetInput(), mapper->GetSkeleton());
  press(*viewer, "t");
  EXPECT_EQ(viewer->statusText(), "Vessel surface, coloured by the nearest vessel");
  EXPECT_EQ(mapper->GetPolyDataMapper()->GetInput(), mapper->GetLabelledSurface());
}

TEST_F(ArboVesselSurface, RenderDrawsTheSurfaceColouredByVesselInsteadOfTubes)
{
  LUMO_REQUIRE_DISPLAY();
  // Vessel 2 a hepatic vein, the others portal: its share of the picture grows with its thick mask.
  auto data = vessel_test::makePickingTree();
  data->GetVesselById(2, 0)->getProperties().setBloodVesselType(1);
  auto writer = lumo::VesselTreeFileWriter::New();
  writer->SetInputVesselTree(data);
  writer->SetFileName(path("typed.ves").c_str());
  writer->Update();
  const auto colors = lumo::VesselTreeLookupTable::New();
  const auto hepatic = colors->GetColorByType()[1];
  const auto portal = colors->GetColorByType()[2];

  ArboRun run = runArbo({ "render", path("typed.ves"), "-o", path("tubes.png"), "--view", "top", "-q" });
  ASSERT_EQ(run.status, 0) << run.err;
  run = runArbo({ "render",
                  path("labels.nrrd"),
                  path("typed.ves"),
                  "-o",
                  path("surface.png"),
                  "--view",
                  "top",
                  "--vessel-surface",
                  "--label",
                  "2" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "arbo: wrote " + path("surface.png") + " (1024x768, 1 tree, 1 surface)\n");
  const double tubeShare =
    static_cast<double>(pixelsOfColor(path("tubes.png"), hepatic)) / pixelsOfColor(path("tubes.png"), portal);
  const double surfaceShare =
    static_cast<double>(pixelsOfColor(path("surface.png"), hepatic)) / pixelsOfColor(path("surface.png"), portal);
  EXPECT_GT(pixelsOfColor(path("surface.png"), portal), 5000);
  EXPECT_GT(surfaceShare, 1.8 * tubeShare) << surfaceShare << " " << tubeShare;
}

TEST_F(ArboVesselSurface, BadInputsAreOneLineAndWriteNothing)
{
  LUMO_REQUIRE_DISPLAY();
  writeFile(path("old.png"), "keep me");
  const auto before = files();
  auto fails = [&](std::vector<std::string> arguments, const std::string & message) {
    arguments.insert(arguments.end(), { "-o", path("old.png") });
    const ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 1) << message;
    EXPECT_EQ(run.err, "arbo: " + message + "\n");
    EXPECT_EQ(files(), before);
    EXPECT_EQ(readFile(path("old.png")), "keep me");
  };
  const std::string tree = path("portal.ves");
  fails({ "render", path("vessels.nrrd"), tree, "--label", "2" },
        "--label 2: the label of the vessel mask needs --vessel-surface");
  fails({ "render", path("vessels.nrrd"), tree, "--vessel-surface", "--skeleton" },
        "--vessel-surface and --skeleton exclude each other (the surface or the centre lines)");
  fails({ "render", tree, "--vessel-surface" },
        "--vessel-surface: no vessel mask among the files (give the mask, an image, and one vessel tree)");
  fails({ "render", path("vessels.nrrd"), "--vessel-surface" },
        "--vessel-surface colours the mask by the vessels of one tree; 0 trees were given");
  fails({ "render", path("vessels.nrrd"), tree, tree, "--vessel-surface" },
        "--vessel-surface colours the mask by the vessels of one tree; 2 trees were given");
  fails({ "render", path("labels.nrrd"), tree, "--vessel-surface", "--label", "7" },
        path("labels.nrrd") + ": label 7 does not occur (labels present: 1, 2)");

  ArboRun run = runArbo({ "view", path("vessels.nrrd"), tree, "--label", "2" });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: --label 2: the label of the vessel mask needs --vessel-surface\n");
  run = runArbo({ "view", tree, "--vessel-surface" });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: --vessel-surface: no vessel mask among the files (give the mask, an image, and one vessel tree)\n");
  EXPECT_EQ(files(), before);
}

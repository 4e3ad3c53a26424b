#include "lumoCalyxDataNodeFactory.h"
#include "lumoImage.h"
#include "lumoImageIO.h"
#include "lumoLevelWindowProperty.h"
#include "lumoStringProperty.h"
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeFileIOFactory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

using namespace lumo;

TEST(CalyxDataNodeFactory, OpensFilesLikeTheToolkitsNodeFactory)
{
  VesselTreeFileIOFactory::RegisterOneFactory();
  CalyxDataNodeFactory::Pointer factory = CalyxDataNodeFactory::New();
  EXPECT_STREQ(factory->GetNameOfClass(), "CalyxDataNodeFactory");
  EXPECT_STREQ(factory->CreateAnother()->GetNameOfClass(), "CalyxDataNodeFactory");
  EXPECT_NE(dynamic_cast<DataNodeFactory *>(factory.GetPointer()), nullptr);

  const std::string missing = std::string(LUMO_TEST_DATA_DIR) + "/missing.ves";
  factory->SetFileName(missing);
  try
  {
    factory->Update();
    ADD_FAILURE() << "no exception";
  }
  catch (const itk::ExceptionObject & e)
  {
    EXPECT_EQ(std::string(e.GetDescription()), "DataNodeFactory: the file '" + missing + "' does not exist");
  }
  EXPECT_TRUE(factory->GetOutput() == nullptr || factory->GetOutput()->GetData() == nullptr); // nothing read

  factory->SetFileName(std::string(LUMO_TEST_DATA_DIR) + "/sample-portal.ves");
  factory->Update();
  ASSERT_NE(factory->GetOutput(), nullptr);
  auto * data = dynamic_cast<VesselTreeData *>(factory->GetOutput()->GetData());
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data->GetVesselTreeData(0)->numberOfNodes(), 29);
  EXPECT_EQ(factory->GetOutput()->GetName(), "sample-portal");
}

TEST(CalyxDataNodeFactory, InitialPropertiesComeBeforeTheDataAndAreKept)
{
  // A saved level window given before the data: the image's default (a scan of every voxel) neither replaces it
  // nor is computed; the saved name wins over the file's.
  const std::string file =
    (std::filesystem::temp_directory_path() / ("lumo-initial-properties-" + std::to_string(getpid()) + ".nrrd"))
      .string();
  auto image = Image::New();
  Image::SizeType size{ { 4, 3, 2 } };
  image->Initialize(itk::IOComponentEnum::UCHAR, size);
  static_cast<unsigned char *>(image->GetData())[5] = 200;
  WriteImageFile(image, file);

  auto saved = PropertyList::New();
  LevelWindow window;
  window.SetRangeMinMax(-10, 10);
  window.SetLevelWindow(1, 4);
  auto level = LevelWindowProperty::New(window);
  saved->SetProperty("levelwindow", level);
  saved->SetProperty("name", StringProperty::New("organ"));

  CalyxDataNodeFactory::Pointer factory = CalyxDataNodeFactory::New();
  factory->SetFileName(file);
  factory->SetInitialProperties(saved);
  factory->Update();
  ASSERT_NE(factory->GetOutput(), nullptr);
  auto * kept = dynamic_cast<LevelWindowProperty *>(factory->GetOutput()->GetProperty("levelwindow"));
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(kept->GetLevelWindow().GetRangeMin(), -10.0);
  EXPECT_EQ(kept->GetLevelWindow().GetRangeMax(), 10.0);
  EXPECT_EQ(kept->GetLevelWindow().GetLevel(), 1.0);
  EXPECT_EQ(kept->GetLevelWindow().GetWindow(), 4.0);
  EXPECT_EQ(factory->GetOutput()->GetName(), "organ");
  EXPECT_NE(factory->GetOutput()->GetProperty("binary"), nullptr); // the other defaults are still added
  // A copy: what is set on the node later (as defaults do) does not reach the given list.
  EXPECT_NE(kept, level.GetPointer());
  factory->GetOutput()->SetStringProperty("name", "renamed");
  EXPECT_EQ(saved->GetProperty("name")->GetValueAsString(), "organ");

  // Without them, the default level window spans the voxels' range.
  factory->SetInitialProperties(nullptr);
  factory->Update();
  auto * defaults = dynamic_cast<LevelWindowProperty *>(factory->GetOutput()->GetProperty("levelwindow"));
  ASSERT_NE(defaults, nullptr);
  EXPECT_EQ(defaults->GetLevelWindow().GetRangeMin(), 0.0);
  EXPECT_EQ(defaults->GetLevelWindow().GetRangeMax(), 200.0);
  EXPECT_EQ(factory->GetOutput()->GetName(), "lumo-initial-properties-" + std::to_string(getpid()));
  std::filesystem::remove(file);
}

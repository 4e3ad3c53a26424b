#include "lumoCalyxDataNodeFactory.h"
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeFileIOFactory.h"

#include <gtest/gtest.h>

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

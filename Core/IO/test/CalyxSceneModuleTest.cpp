// In a process of its own: only the module's registration makes scenes known to the toolkit's file opening.
#include "SceneTestData.h"

#include "lumoArboCoreObjectFactory.h"
#include "lumoBaseDataSerializer.h"
#include "lumoBasePropertySerializer.h"
#include "lumoCalyxSceneFileReader.h"
#include "lumoDataNodeFactory.h"
#include "lumoIOAdapterBase.h"

#include <LumoTestUtilities.h>

#include <itkObjectFactoryBase.h>

using namespace lumo;
using namespace scenetest;
namespace fs = std::filesystem;

namespace
{
/** What an application does to open a file through the toolkit: the first IO adapter that reads it. */
BaseProcess::Pointer
OpenThroughTheToolkit(const std::string & file)
{
  for (const auto & instance : itk::ObjectFactoryBase::CreateAllInstance("lumoIOAdapter"))
  {
    auto * adapter = dynamic_cast<IOAdapterBase *>(instance.GetPointer());
    if (adapter != nullptr && adapter->CanReadFile(file, "", ""))
    {
      return adapter->CreateIOProcessObject(file, "", "");
    }
  }
  return nullptr;
}
} // namespace

TEST(CalyxSceneModule, RegistrationMakesScenesAndColourTablesKnown)
{
  EXPECT_FALSE(DataNodeFactory::CanReadFile("plan.rs"));
  EXPECT_TRUE(BasePropertySerializer::CreateForProperty("VesselTreeLookupTableProperty").IsNull());
  VesselTreeData::Pointer tree = MakeTree();
  EXPECT_TRUE(BaseDataSerializer::CreateForData(tree).IsNull());
  RegisterArboCoreObjectFactory();
  BaseDataSerializer::Pointer serializer = BaseDataSerializer::CreateForData(tree);
  ASSERT_TRUE(serializer.IsNotNull());
  EXPECT_STREQ(serializer->GetNameOfClass(), "VesselTreeDataSerializer");
  EXPECT_TRUE(DataNodeFactory::CanReadFile("plan.rs"));
  EXPECT_TRUE(DataNodeFactory::CanReadFile("plan.RS"));
  EXPECT_FALSE(DataNodeFactory::CanReadFile("plan.Rs"));
  EXPECT_TRUE(BasePropertySerializer::CreateForProperty("VesselTreeLookupTableProperty").IsNotNull());

  // A scene written by hand (no scene writer in this process before the registration was checked).
  lumotest::TemporaryDirectory folder;
  fs::copy_file(fs::path(LUMO_TEST_DATA_DIR) / "sample-portal.ves", folder.Path() / "portal.ves");
  WriteText(folder.Path() / "plan.rs",
            "<?xml version=\"1.0\"?>\n<Version FileVersion=\"1\"/>\n"
            "<SceneObject type=\"vesseltree\" file=\"portal.ves\" DependenyUID=\"A\"/>\n");
  BaseProcess::Pointer process = OpenThroughTheToolkit((folder.Path() / "plan.rs").string());
  auto * reader = dynamic_cast<CalyxSceneFileReader *>(process.GetPointer());
  ASSERT_NE(reader, nullptr);
  DataStorage::Pointer storage = DataStorage::New();
  reader->SetDataStorage(storage);
  reader->Update();
  ASSERT_EQ(storage->GetNumberOfNodes(), 1u);
  DataNode * node = storage->GetNamedNode("portal");
  ASSERT_NE(node, nullptr);
  EXPECT_NE(dynamic_cast<VesselTreeData *>(node->GetData()), nullptr);
  // The module's defaults came with the data.
  EXPECT_NE(node->GetProperty("VesselTreeLookupTable"), nullptr);
}

// The scene file reader and its IO factory, and the vessel tree serializer of the toolkit's own scene format.
#include "SceneTestData.h"

#include "lumoCalyxSceneFileReader.h"
#include "lumoCalyxSceneIO.h"
#include "lumoCalyxSceneIOReaderFactory.h"
#include "lumoLogger.h"
#include "lumoVesselTreeDataSerializer.h"

#include <LumoTestUtilities.h>

#include <regex>

using namespace lumo;
using namespace scenetest;
namespace fs = std::filesystem;

TEST(CalyxSceneFileReader, AcceptsOnlyRsAndUpperCaseRS)
{
  EXPECT_TRUE(CalyxSceneFileReader::CanReadFile("plan.rs", "", ""));
  EXPECT_TRUE(CalyxSceneFileReader::CanReadFile("/data/PLAN.RS", "", ""));
  EXPECT_FALSE(CalyxSceneFileReader::CanReadFile("plan.Rs", "", ""));
  EXPECT_FALSE(CalyxSceneFileReader::CanReadFile("plan.rS", "", ""));
  EXPECT_FALSE(CalyxSceneFileReader::CanReadFile("", "", ""));
  EXPECT_FALSE(CalyxSceneFileReader::CanReadFile("plan.rs.bak", "", ""));
  EXPECT_TRUE(CalyxSceneFileReader::CanReadFile(".rs", "", ""));
}

TEST(CalyxSceneFileReader, UpdateWithoutStorageThrowsAndStringsMarkModifiedOnlyOnChange)
{
  CalyxSceneFileReader::Pointer reader = CalyxSceneFileReader::New();
  EXPECT_STREQ(reader->GetNameOfClass(), "CalyxSceneFileReader");
  EXPECT_STREQ(reader->CreateAnother()->GetNameOfClass(), "CalyxSceneFileReader");
  reader->SetFileName("plan.rs");
  try
  {
    reader->Update();
    ADD_FAILURE() << "no exception";
  }
  catch (const itk::ExceptionObject & e)
  {
    EXPECT_STREQ(e.GetDescription(), "Always initialize CalyxSceneFileReader with a DataStorage");
  }

  const auto time = reader->GetMTime();
  reader->SetFileName("plan.rs");
  reader->SetFilePrefix("");
  reader->SetFilePattern(nullptr);
  EXPECT_EQ(reader->GetMTime(), time);
  reader->SetFilePrefix("p");
  EXPECT_GT(reader->GetMTime(), time);
  reader->SetFilePrefix(nullptr);
  EXPECT_STREQ(reader->GetFilePrefix(), "");
  reader->SetFilePattern("%d");
  EXPECT_STREQ(reader->GetFilePattern(), "%d");
}

TEST(CalyxSceneFileReader, LoadsIntoTheStorageAndHasNoOutputs)
{
  lumotest::TemporaryDirectory folder;
  DataStorage::Pointer storage = DataStorage::New();
  storage->Add(MakeNode(MakeTree(), "portal"));
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(storage, (folder.Path() / "plan.rs").string()));

  CalyxSceneFileReader::Pointer reader = CalyxSceneFileReader::New();
  DataStorage::Pointer loaded = DataStorage::New();
  reader->SetDataStorage(loaded);
  reader->SetFileName((folder.Path() / "plan.rs").string().c_str());
  reader->Update();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(reader->GetNumberOfIndexedOutputs(), 0u);
  ASSERT_EQ(loaded->GetNumberOfNodes(), 1u);
  EXPECT_NE(loaded->GetNamedNode("portal")->GetData(), nullptr);
}

TEST(CalyxSceneIOReaderFactory, RegistersTheReaderAsAnIOAdapter)
{
  CalyxSceneIOReaderFactory::Pointer factory = CalyxSceneIOReaderFactory::New();
  EXPECT_STREQ(factory->GetDescription(),
               "CalyxSceneFile IO Factory, stupidly wraps the Calyx scene loading for lumoIOAdapter");
  std::list<std::string> names = factory->GetClassOverrideNames();
  std::list<std::string> with = factory->GetClassOverrideWithNames();
  std::list<std::string> descriptions = factory->GetClassOverrideDescriptions();
  ASSERT_EQ(names.size(), 1u);
  EXPECT_EQ(names.front(), "lumoIOAdapter");
  EXPECT_EQ(with.front(), "lumoCalyxSceneFileReader");
  EXPECT_EQ(descriptions.front(), "lumo CalyxScene IO");
}

TEST(VesselTreeDataSerializer, WritesTheTreeInsideTheWorkingDirectory)
{
  lumotest::TemporaryDirectory folder;
  VesselTreeDataSerializer::Pointer serializer = VesselTreeDataSerializer::New();
  EXPECT_STREQ(serializer->GetNameOfClass(), "VesselTreeDataSerializer");
  VesselTreeData::Pointer tree = MakeTree();
  serializer->SetData(tree);
  serializer->SetWorkingDirectory(folder.Path().string());
  serializer->SetFilenameHint("portal");
  const std::string name = serializer->Serialize();
  EXPECT_TRUE(std::regex_match(name, std::regex("[0-9A-Za-z]{10}_portal\\.ves"))) << name;
  EXPECT_EQ(Entries(folder.Path()), std::set<std::string>{ name });
  EXPECT_EQ(ReadText(folder.Path() / name).rfind("VALD-KRN 2000 Tree", 0), 0u);

  // No hint: the name ends in an underscore before the extension.
  serializer->SetFilenameHint("");
  const std::string unnamed = serializer->Serialize();
  EXPECT_TRUE(std::regex_match(unnamed, std::regex("[0-9A-Za-z]{10}_\\.ves"))) << unnamed;
  EXPECT_TRUE(fs::is_regular_file(folder.Path() / unnamed));
  EXPECT_EQ(Entries(folder.Path()).size(), 2u);

  // A directory that cannot be written: "" and nothing written.
  serializer->SetWorkingDirectory((folder.Path() / "missing").string());
  EXPECT_EQ(serializer->Serialize(), "");
}

TEST(VesselTreeDataSerializer, RefusesOtherDataWithAnError)
{
  std::vector<std::string> messages;
  Logger::SetSink([&messages](Logger::Level level, const std::string & message) {
    if (level == Logger::Level::Error)
    {
      messages.push_back(message);
    }
  });
  VesselTreeDataSerializer::Pointer serializer = VesselTreeDataSerializer::New();
  Surface::Pointer surface = MakeSurface();
  serializer->SetData(surface);
  EXPECT_EQ(serializer->Serialize(), "");
  Logger::SetSink(nullptr);
  std::ostringstream address;
  address << static_cast<const void *>(surface.GetPointer());
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0],
            "lumo::VesselTreeDataSerializer::Serialize Object at " + address.str() +
              " is not an lumo::VesselTreeData. Cannot serialize as VesselTreeData.");
}

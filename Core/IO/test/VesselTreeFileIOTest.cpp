#include "lumoDataNodeFactory.h"
#include "lumoIOAdapter.h"
#include "lumoVesselTreeFileIOFactory.h"
#include "lumoVesselTreeFileReader.h"
#include "lumoVesselTreeFileWriter.h"

#include "VesselTestTree.h"
#include "WarningCapture.h"

#include <LumoTestUtilities.h>

#include <gtest/gtest.h>

#include <itkImageFileReader.h>

#include <filesystem>
#include <fstream>

using namespace lumo;

namespace
{
std::string
sample()
{
  return std::string(LUMO_TEST_DATA_DIR) + "/sample-portal.ves";
}

std::string
readText(const std::string & path)
{
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

class VesselTreeFileIO : public ::testing::Test
{
protected:
  std::string
  path(const std::string & name) const
  {
    return m_Directory.File(name);
  }
  void
  write(const std::string & name, const std::string & text) const
  {
    std::ofstream(path(name), std::ios::binary) << text;
  }
  /** The message of the exception that reading the file throws; "" when it reads. */
  static std::string
  readError(const std::string & file)
  {
    auto reader = VesselTreeFileReader::New();
    reader->SetFileName(file.c_str());
    try
    {
      reader->Update();
    }
    catch (const itk::ImageFileReaderException & e)
    {
      EXPECT_TRUE(reader->GetTreeCache().isNull());
      EXPECT_TRUE(reader->GetOutput()->GetVesselTreeData(0).isNull());
      return e.GetDescription();
    }
    return "";
  }

  lumotest::TemporaryDirectory m_Directory;
  const std::filesystem::path & m_Folder{ m_Directory.Path() };
};
} // namespace

TEST(VesselTreeFileReader, CanReadOnlyTheTwoSpellingsOfTheEnding)
{
  EXPECT_TRUE(VesselTreeFileReader::CanReadFile("a.ves", "", ""));
  EXPECT_TRUE(VesselTreeFileReader::CanReadFile("B.VES", "", ""));
  EXPECT_FALSE(VesselTreeFileReader::CanReadFile("a.Ves", "", ""));
  EXPECT_FALSE(VesselTreeFileReader::CanReadFile("a.ves.bak", "", ""));
  EXPECT_FALSE(VesselTreeFileReader::CanReadFile("a.dvg", "", ""));
  EXPECT_FALSE(VesselTreeFileReader::CanReadFile("ves", "", ""));
}

TEST_F(VesselTreeFileIO, ReadsTheSampleIntoTimeStepZero)
{
  auto reader = VesselTreeFileReader::New();
  EXPECT_STREQ(reader->GetNameOfClass(), "VesselTreeFileReader");
  reader->SetFileName(sample().c_str());
  reader->Update();
  VesselTreeData * data = reader->GetOutput();
  EXPECT_TRUE(data->IsInitialized());
  EXPECT_EQ(data->GetVesselTreeData(0)->numberOfNodes(), 29);
  EXPECT_EQ(data->GetMinVesselId(0), 1);
  EXPECT_EQ(data->GetMaxVesselId(0), 29);
  EXPECT_EQ(data->GetVesselById(11, 0)->getProperties().getSegmentType(), S_VI);
}

TEST_F(VesselTreeFileIO, ReaderErrorsAreExceptionsAndKeepNothing)
{
  write("broken.ves", "VALD-KRN 2000 Tree\n{ \n { t f 1 2 1 1 -1 2 [ 1 2 3 4 ] ");
  write("rootless.ves", "VALD-KRN 2000 Tree\n{ \n}\n");
  EXPECT_EQ(readError(""), "Sorry, the filename of the vessel tree to be read is empty!");
  EXPECT_EQ(readError(path("missing.ves")), "Sorry, the requested vessel tree file could not be opened!");
  EXPECT_EQ(readError(path("broken.ves")), "Sorry, an error occurred while reading the requested vessel tree file!");
  EXPECT_EQ(readError(path("rootless.ves")), "Sorry, an error occurred while reading the requested vessel tree file!");
}

TEST_F(VesselTreeFileIO, TheCacheKeepsTheFirstTreeUntilTheFileNameChanges)
{
  auto reader = VesselTreeFileReader::New();
  reader->SetFileName(sample().c_str());
  reader->Update();
  const ArVesselTree first = reader->GetTreeCache();

  write("other.ves", "VALD-KRN 2000 Tree { { t f 1 2 1 5 -1 0 } - }");
  std::filesystem::copy_file(path("other.ves"), path("copy.ves"));
  reader->Modified();
  reader->Update();
  EXPECT_EQ(reader->GetTreeCache(), first);
  EXPECT_EQ(reader->GetOutput()->GetVesselTreeData(0)->numberOfNodes(), 29);

  reader->SetFileName(path("other.ves").c_str());
  EXPECT_TRUE(reader->GetTreeCache().isNull());
  reader->Update();
  EXPECT_EQ(reader->GetOutput()->GetVesselTreeData(0)->numberOfNodes(), 1);
  EXPECT_EQ(reader->GetOutput()->GetMaxVesselId(0), 5);
}

TEST_F(VesselTreeFileIO, WriterWritesTheCanonicalText)
{
  auto reader = VesselTreeFileReader::New();
  reader->SetFileName(sample().c_str());
  reader->Update();
  auto writer = VesselTreeFileWriter::New();
  EXPECT_EQ(writer->GetDefaultFilename(), "VesselTree.ves");
  EXPECT_EQ(writer->GetFileDialogPattern(), "LUMO VesselTree (*.ves)");
  EXPECT_EQ(writer->GetDefaultExtension(), ".ves");
  EXPECT_EQ(writer->GetPossibleFileExtensions(), (std::vector<std::string>{ ".ves", ".dvg", ".uvg" }));
  writer->SetInputVesselTree(reader->GetOutput());
  writer->SetFileName(path("copy.ves").c_str());
  writer->Update();
  EXPECT_TRUE(writer->GetSuccess());
  EXPECT_EQ(readText(path("copy.ves")), readText(sample()));
}

TEST_F(VesselTreeFileIO, WriterFailuresCreateNoFile)
{
  lumotest::WarningCapture capture;
  auto writer = VesselTreeFileWriter::New();
  writer->Update();
  auto empty = VesselTreeData::New();
  writer->SetInputVesselTree(empty);
  writer->SetFileName(path("empty.ves").c_str());
  writer->Update();
  EXPECT_EQ(capture.messages(),
            (std::vector<std::string>{ "Sorry, input to VesselTreeFileWriter is NULL!",
                                       "Sorry, input vessel tree is empty!" }));

  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(vessel_test::makeThreeLevelTree().release()));
  auto unnamed = VesselTreeFileWriter::New();
  unnamed->SetInputVesselTree(data);
  try
  {
    unnamed->Update();
    ADD_FAILURE() << "no exception";
  }
  catch (const itk::ExceptionObject & e)
  {
    EXPECT_EQ(std::string(e.GetDescription()), "Sorry, filename has not been set!");
  }
  unnamed->SetFileName(path("no/folder/tree.ves").c_str());
  try
  {
    unnamed->Update();
    ADD_FAILURE() << "no exception";
  }
  catch (const itk::ExceptionObject & e)
  {
    EXPECT_EQ(std::string(e.GetDescription()),
              "Sorry, file " + path("no/folder/tree.ves") + " could not be opened for writing!");
  }
  EXPECT_TRUE(std::filesystem::is_empty(m_Folder));
}

TEST_F(VesselTreeFileIO, TheFactoryLetsTheToolkitOpenVesFiles)
{
  VesselTreeFileIOFactory::RegisterOneFactory();
  VesselTreeFileIOFactory::RegisterOneFactory();
  int adapters = 0;
  for (const auto & object : itk::ObjectFactoryBase::CreateAllInstance("lumoIOAdapter"))
  {
    auto * adapter = dynamic_cast<IOAdapterBase *>(object.GetPointer());
    if (adapter != nullptr && adapter->CanReadFile("tree.ves", "", ""))
    {
      ++adapters;
    }
  }
  EXPECT_EQ(adapters, 1);

  auto factory = DataNodeFactory::New();
  factory->SetFileName(sample());
  factory->Update();
  DataNode * node = factory->GetOutput();
  ASSERT_NE(node, nullptr);
  auto * data = dynamic_cast<VesselTreeData *>(node->GetData());
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data->GetVesselTreeData(0)->numberOfNodes(), 29);
}

// IO adapters found through ITK's object factory, the data node factory and the serializer base.

#include "LumoTestUtilities.h"

#include <lumoBaseDataSerializer.h>
#include <lumoDataNodeFactory.h>
#include <lumoFileNames.h>
#include <lumoFileReader.h>
#include <lumoIOAdapter.h>
#include <lumoLogger.h>
#include <lumoPointSetIO.h>
#include <lumoSurfaceIO.h>

#include <gtest/gtest.h>

#include <itkObjectFactoryBase.h>
#include <itkVersion.h>

#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>

#include <fstream>

using namespace lumo;

namespace
{
/** A reader of ".tst" files: one point per line "x y z". */
class TestTextReader
  : public BaseProcess
  , public FileReader
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(TestTextReader);

  using Self = TestTextReader;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(TestTextReader, BaseProcess);

  static bool
  CanReadFile(const std::string & fileName, const std::string &, const std::string &)
  {
    return EndsWithNoCase(fileName, ".tst");
  }

  const char *
  GetFileName() const override
  {
    return m_FileName.c_str();
  }
  void
  SetFileName(const char * name) override
  {
    m_FileName = name ? name : "";
  }
  const char *
  GetFilePrefix() const override
  {
    return m_FilePrefix.c_str();
  }
  void
  SetFilePrefix(const char * prefix) override
  {
    m_FilePrefix = prefix ? prefix : "";
  }
  const char *
  GetFilePattern() const override
  {
    return m_FilePattern.c_str();
  }
  void
  SetFilePattern(const char * pattern) override
  {
    m_FilePattern = pattern ? pattern : "";
  }

  using Superclass::MakeOutput;
  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType) override
  {
    return PointSet::New().GetPointer();
  }

protected:
  TestTextReader()
  {
    this->SetNumberOfRequiredOutputs(1);
    this->SetNthOutput(0, this->MakeOutput(0));
  }
  void
  GenerateData() override
  {
    auto * output = dynamic_cast<PointSet *>(this->GetOutputData(0));
    std::ifstream in(m_FileName);
    double x, y, z;
    while (in >> x >> y >> z)
    {
      Point3D p;
      p[0] = x;
      p[1] = y;
      p[2] = z;
      output->AddPoint(p);
    }
  }

  std::string m_FileName, m_FilePrefix, m_FilePattern;
};

class TestIOFactory : public itk::ObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(TestIOFactory);

  using Self = TestIOFactory;
  using Superclass = itk::ObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  // A factory cannot be made through the factories it is meant to extend.
  itkFactorylessNewMacro(Self);
  itkTypeMacro(TestIOFactory, ObjectFactoryBase);

  const char *
  GetITKSourceVersion() const override
  {
    return ITK_SOURCE_VERSION;
  }
  const char *
  GetDescription() const override
  {
    return "Test IO factory";
  }

protected:
  TestIOFactory()
  {
    this->RegisterOverride("lumoIOAdapter",
                           "lumoTestTextReader",
                           "lumo Test IO",
                           true,
                           itk::CreateObjectFunction<IOAdapter<TestTextReader>>::New());
  }
};

/** Registers the test factory for the lifetime of the object. */
class ScopedTestFactory
{
public:
  ScopedTestFactory()
    : m_Factory(TestIOFactory::New())
  {
    itk::ObjectFactoryBase::RegisterFactory(m_Factory);
  }
  ~ScopedTestFactory() { itk::ObjectFactoryBase::UnRegisterFactory(m_Factory); }

private:
  TestIOFactory::Pointer m_Factory;
};

std::string
FactoryError(const std::string & fileName)
{
  DataNodeFactory::Pointer factory = DataNodeFactory::New();
  factory->SetFileName(fileName);
  try
  {
    factory->Update();
  }
  catch (const itk::ExceptionObject & e)
  {
    return e.GetDescription();
  }
  return "";
}
} // namespace

TEST(IOAdapterTest, RegistrationIsFoundThroughCreateAllInstance)
{
  auto countAdapters = [] {
    int count = 0;
    for (const auto & instance : itk::ObjectFactoryBase::CreateAllInstance("lumoIOAdapter"))
    {
      count += dynamic_cast<IOAdapter<TestTextReader> *>(instance.GetPointer()) ? 1 : 0;
    }
    return count;
  };
  EXPECT_EQ(countAdapters(), 0);
  {
    ScopedTestFactory registration;
    EXPECT_EQ(countAdapters(), 1);
    for (const auto & instance : itk::ObjectFactoryBase::CreateAllInstance("lumoIOAdapter"))
    {
      auto * adapter = dynamic_cast<IOAdapterBase *>(instance.GetPointer());
      ASSERT_NE(adapter, nullptr);
      if (!dynamic_cast<IOAdapter<TestTextReader> *>(adapter))
      {
        continue;
      }
      EXPECT_TRUE(adapter->CanReadFile("a/b.TST", "", ""));
      EXPECT_FALSE(adapter->CanReadFile("a/b.txt", "", ""));
      BaseProcess::Pointer reader = adapter->CreateIOProcessObject("x.tst", "pre", "pat");
      auto * textReader = dynamic_cast<TestTextReader *>(reader.GetPointer());
      ASSERT_NE(textReader, nullptr);
      EXPECT_STREQ(textReader->GetFileName(), "x.tst");
      EXPECT_STREQ(textReader->GetFilePrefix(), "pre");
      EXPECT_STREQ(textReader->GetFilePattern(), "pat");
    }
  }
  EXPECT_EQ(countAdapters(), 0);
}

TEST(DataNodeFactoryTest, RegisteredAdaptersComeFirst)
{
  lumotest::TemporaryDirectory directory;
  const std::string file = directory.File("seeds.tst");
  std::ofstream(file) << "1 2 3\n4 5 6\n";
  EXPECT_FALSE(DataNodeFactory::CanReadFile(file));
  ScopedTestFactory registration;
  EXPECT_TRUE(DataNodeFactory::CanReadFile(file));
  DataNodeFactory::Pointer factory = DataNodeFactory::New();
  factory->SetFileName(file);
  factory->Update();
  ASSERT_NE(factory->GetOutput(), nullptr);
  auto * pointSet = dynamic_cast<PointSet *>(factory->GetOutput()->GetData());
  ASSERT_NE(pointSet, nullptr);
  EXPECT_EQ(pointSet->GetSize(), 2u);
  EXPECT_EQ(factory->GetOutput()->GetName(), "seeds");
}

TEST(DataNodeFactoryTest, MissingFileAndUnknownType)
{
  lumotest::TemporaryDirectory directory;
  const std::string missing = directory.File("missing.nrrd");
  EXPECT_EQ(FactoryError(missing), "DataNodeFactory: the file '" + missing + "' does not exist");
  const std::string unknown = directory.File("notes.xyz");
  std::ofstream(unknown) << "nothing to read\n";
  EXPECT_EQ(FactoryError(unknown), "DataNodeFactory: no reader for the file '" + unknown + "'");
  EXPECT_EQ(FactoryError(""), "DataNodeFactory: no file name given");
  EXPECT_FALSE(DataNodeFactory::CanReadFile(unknown));
}

TEST(DataNodeFactoryTest, SurfacesAndPointSetsAndLaziness)
{
  lumotest::TemporaryDirectory directory;
  vtkSmartPointer<vtkPolyData> polyData = vtkSmartPointer<vtkPolyData>::New();
  vtkSmartPointer<vtkPoints> points = vtkSmartPointer<vtkPoints>::New();
  points->InsertNextPoint(1, 2, 3);
  polyData->SetPoints(points);
  Surface::Pointer surface = Surface::New();
  surface->SetVtkPolyData(polyData);
  WriteSurfaceFile(surface, directory.File("skin.vtp"));
  PointSet::Pointer pointSet = PointSet::New();
  pointSet->AddPoint(Point3D(1.0));
  WritePointSetFile(pointSet, directory.File("marks.mps"));

  DataNodeFactory::Pointer factory = DataNodeFactory::New();
  factory->SetFileName(directory.File("skin.vtp"));
  factory->Update();
  DataNode::Pointer first = factory->GetOutput();
  ASSERT_TRUE(first);
  EXPECT_STREQ(first->GetData()->GetNameOfClass(), "Surface");
  EXPECT_NE(first->GetProperty("material"), nullptr); // core defaults
  factory->Update();
  EXPECT_EQ(factory->GetOutput(), first.GetPointer()); // nothing changed: not read again

  factory->SetFileName(directory.File("marks.mps"));
  factory->Update();
  ASSERT_NE(factory->GetOutput(), nullptr);
  EXPECT_NE(factory->GetOutput(), first.GetPointer());
  EXPECT_STREQ(factory->GetOutput()->GetData()->GetNameOfClass(), "PointSet");
  EXPECT_STREQ(first->GetData()->GetNameOfClass(), "Surface"); // the earlier node keeps its data
  EXPECT_EQ(factory->GetOutput()->GetName(), "marks");
}

TEST(BaseDataSerializerTest, UniqueNamesAndLookUp)
{
  lumotest::TemporaryDirectory directory;
  BaseDataSerializer::Pointer serializer = BaseDataSerializer::New();
  serializer->SetWorkingDirectory(directory.Path().string());
  serializer->SetFilenameHint("tree");
  const std::string a = serializer->GetUniqueFilenameInWorkingDirectory();
  const std::string b = serializer->GetUniqueFilenameInWorkingDirectory();
  EXPECT_EQ(a.size(), 10u);
  EXPECT_NE(a, b);

  // The base class cannot serialize: an error line and "".
  std::vector<std::string> lines;
  Logger::SetSink(
    [&](Logger::Level level, const std::string & message) { lines.push_back(Logger::FormatLine(level, message)); });
  serializer->SetData(PointSet::New());
  EXPECT_EQ(serializer->Serialize(), "");
  Logger::SetSink(nullptr);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].rfind("[error] BaseDataSerializer cannot serialize the object at ", 0), 0u) << lines[0];

  EXPECT_FALSE(BaseDataSerializer::CreateForData(PointSet::New()));
}

TEST(FileNamesTest, ExtensionsAndNames)
{
  EXPECT_EQ(GetFileExtension("a/B.NII.GZ"), ".nii.gz");
  EXPECT_EQ(GetFileExtension("c.vtp"), ".vtp");
  EXPECT_EQ(GetFileExtension("dir.d/noext"), "");
  EXPECT_EQ(GetFileExtension(".hidden"), "");
  EXPECT_EQ(GetFileNameWithoutExtension("/data/liver.nii.gz"), "liver");
  EXPECT_EQ(GetFileNameWithoutExtension("tree.ves"), "tree");
  EXPECT_EQ(GetDirectoryOfPath("/data/liver.nii.gz"), "/data");
  EXPECT_EQ(GetDirectoryOfPath("liver.nii.gz"), "");
  EXPECT_TRUE(EndsWithNoCase("B.VES", ".ves"));
  EXPECT_FALSE(EndsWithNoCase("s", ".ves"));
}

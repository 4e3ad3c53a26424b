// Loading the module into a program that links only the toolkit, and the loader's failures.

#include "lumoBoolProperty.h"
#include "lumoCoreObjectFactory.h"
#include "lumoDataNodeFactory.h"
#include "lumoIOAdapterBase.h"
#include "lumoLogger.h"
#include "lumoModuleLoader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

using namespace lumo;

namespace
{
std::string
sample()
{
  return std::string(LUMO_TEST_DATA_DIR) + "/sample-portal.ves";
}

int
vesAdapters()
{
  int count = 0;
  for (const auto & object : itk::ObjectFactoryBase::CreateAllInstance("lumoIOAdapter"))
  {
    auto * adapter = dynamic_cast<IOAdapterBase *>(object.GetPointer());
    count += adapter != nullptr && adapter->CanReadFile("tree.ves", "", "") ? 1 : 0;
  }
  return count;
}

int
extraFactoriesNamed(const std::string & name)
{
  const auto factories = CoreObjectFactory::GetInstance()->GetExtraFactories();
  return static_cast<int>(std::count_if(
    factories.begin(), factories.end(), [&](CoreObjectFactoryBase * f) { return f->GetNameOfClass() == name; }));
}

int
writersNamed(const std::string & name)
{
  const auto writers = CoreObjectFactory::GetInstance()->GetFileWriters();
  return static_cast<int>(
    std::count_if(writers.begin(), writers.end(), [&](const auto & w) { return w->GetNameOfClass() == name; }));
}

std::string
loadError(ModuleLoader * loader, const std::string & path)
{
  try
  {
    loader->Load(path);
  }
  catch (const itk::ExceptionObject & e)
  {
    return e.GetDescription();
  }
  return "no exception";
}
} // namespace

TEST(ModuleLoader, MissingFileIsRefusedWithTheLinkersMessage)
{
  auto loader = ModuleLoader::New();
  const std::string path = std::string(LUMO_TEST_DATA_DIR) + "/no-such-module.so";
  EXPECT_EQ(loadError(loader, path),
            "ModuleLoader: cannot load '" + path + "': " + path +
              ": cannot open shared object file: No such file or directory");
  EXPECT_EQ(loadError(loader, ""), "ModuleLoader: no module path given");
  EXPECT_TRUE(loader->GetLoadedModules().empty());
}

TEST(ModuleLoader, FileThatIsNoSharedObjectIsRefused)
{
  auto loader = ModuleLoader::New();
  EXPECT_EQ(loadError(loader, sample()),
            "ModuleLoader: cannot load '" + sample() + "': " + sample() + ": invalid ELF header");
  EXPECT_TRUE(loader->GetLoadedModules().empty());
  EXPECT_EQ(vesAdapters(), 0);
}

TEST(ModuleLoader, SharedObjectWithoutActivatorIsNoModule)
{
  auto loader = ModuleLoader::New();
  EXPECT_EQ(loadError(loader, VESSELLIB_FILE),
            std::string("ModuleLoader: '") + VESSELLIB_FILE +
              "' is not a module: it has no symbol _us_module_activator_instance_");
  EXPECT_TRUE(loader->GetLoadedModules().empty());
  EXPECT_EQ(extraFactoriesNamed("ArboCoreObjectFactory"), 0);
}

// Last in the file: a run of the whole program keeps the module loaded afterwards. The failures above leave nothing
// registered, so the program is still without the module here.
TEST(ModuleLoader, LoadedModuleOpensVesFilesWithItsDefaults)
{
  auto before = DataNodeFactory::New();
  before->SetFileName(sample());
  try
  {
    before->Update();
    ADD_FAILURE() << "a .ves file opened without the module";
  }
  catch (const itk::ExceptionObject & e)
  {
    EXPECT_EQ(std::string(e.GetDescription()), "DataNodeFactory: no reader for the file '" + sample() + "'");
  }

  std::vector<std::string> log;
  Logger::SetSink(
    [&](Logger::Level level, const std::string & message) { log.push_back(Logger::FormatLine(level, message)); });
  auto loader = ModuleLoader::New();
  const ModuleInfo info = loader->Load(LUMOARBO_MODULE_FILE);
  const ModuleInfo again = loader->Load(LUMOARBO_MODULE_FILE);
  Logger::SetSink(nullptr);

  EXPECT_EQ(log, std::vector<std::string>{ "[info] ArboCoreObjectFactory c'tor" });
  EXPECT_EQ(info.GetName(), "LumoArbo");
  EXPECT_EQ(info.GetVersion(), LUMO_PROJECT_VERSION);
  EXPECT_EQ(info.GetDependencyList(),
            (std::vector<std::string>{
              "LumoExt", "Segmentation", "lumoIpPic", "VesselLib", "SceneSerialization", "LegacyAdaptors", "Lumo" }));
  EXPECT_TRUE(std::filesystem::equivalent(info.GetLocation(), LUMOARBO_MODULE_FILE)) << info.GetLocation();
  EXPECT_EQ(again.GetLocation(), info.GetLocation());
  ASSERT_EQ(loader->GetLoadedModules().size(), 1u);
  EXPECT_EQ(loader->GetLoadedModules()[0].GetName(), "LumoArbo");

  // Reader, writer and default properties once each, although the module was loaded twice.
  EXPECT_EQ(vesAdapters(), 1);
  EXPECT_EQ(writersNamed("VesselTreeFileWriter"), 1);
  EXPECT_EQ(extraFactoriesNamed("ArboCoreObjectFactory"), 1);
  EXPECT_NE(CoreObjectFactory::GetInstance()->GetFileExtensions().find("Vessel files (*.dvg *.uvg *.ves);;"),
            std::string::npos);

  auto factory = DataNodeFactory::New();
  factory->SetFileName(sample());
  factory->Update();
  ASSERT_EQ(factory->GetNumberOfOutputs(), 1u);
  DataNode * node = factory->GetOutput();
  ASSERT_NE(node, nullptr);
  ASSERT_NE(node->GetData(), nullptr);
  EXPECT_STREQ(node->GetData()->GetNameOfClass(), "VesselTreeData");
  EXPECT_EQ(node->GetName(), "sample-portal");
  bool visible = false;
  EXPECT_TRUE(node->GetBoolProperty("visible", visible));
  EXPECT_TRUE(visible);
  bool skeleton = true;
  EXPECT_TRUE(node->GetBoolProperty("Render skeleton", skeleton));
  EXPECT_FALSE(skeleton);
  BaseProperty * table = node->GetProperty("VesselTreeLookupTable");
  ASSERT_NE(table, nullptr);
  EXPECT_STREQ(table->GetNameOfClass(), "VesselTreeLookupTableProperty");
  EXPECT_EQ(table->GetValueAsString(), "vessel tree colours: 5 types, 28 segments, 5 resection states");

  // The 3-D slot gets the module's tube mapper, bound to the node; the 2-D slot stays empty.
  itk::Object * mapper = node->GetMapper(DataNode::Standard3D);
  ASSERT_NE(mapper, nullptr);
  EXPECT_STREQ(mapper->GetNameOfClass(), "YetAnotherVesselTreeMapper3D");
  EXPECT_EQ(node->GetMapper(DataNode::Standard3D), mapper);
  EXPECT_EQ(node->GetMapper(DataNode::Standard2D), nullptr);
}

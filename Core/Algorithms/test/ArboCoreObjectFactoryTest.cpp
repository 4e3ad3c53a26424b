// The module's object factory, its registration and the module record, in a program that links the module.
// The first test must run first in its process: it watches the one-time part of the factory's construction.

#include "lumoArboCoreObjectFactory.h"
#include "lumoYetAnotherVesselTreeMapper3D.h"
#include "lumoArboModule.h"
#include "lumoBoolProperty.h"
#include "lumoCoreObjectFactory.h"
#include "lumoDataNodeFactory.h"
#include "lumoImage.h"
#include "lumoIOAdapter.h"
#include "lumoLogger.h"
#include "lumoModuleLoader.h"
#include "lumoSurface.h"
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeLookupTableProperty.h"
#include "lumoVesselTreeToLookupTableFilter.h"

#include "WarningCapture.h"

#include <gtest/gtest.h>

#include <vtkLookupTable.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

using namespace lumo;

namespace
{
/** Collects the log lines while alive. */
class LogCapture
{
public:
  LogCapture()
  {
    Logger::SetSink([this](Logger::Level level, const std::string & message) {
      std::lock_guard<std::mutex> lock(m_Mutex);
      lines.push_back(Logger::FormatLine(level, message));
    });
  }
  ~LogCapture() { Logger::SetSink(nullptr); }
  LogCapture(const LogCapture &) = delete;
  LogCapture &
  operator=(const LogCapture &) = delete;

  std::vector<std::string> lines;

private:
  std::mutex m_Mutex;
};

template <typename Predicate>
int
countExtraFactories(Predicate predicate)
{
  const auto factories = CoreObjectFactory::GetInstance()->GetExtraFactories();
  return static_cast<int>(std::count_if(factories.begin(), factories.end(), predicate));
}

int
arboFactories()
{
  return countExtraFactories(
    [](CoreObjectFactoryBase * f) { return std::string(f->GetNameOfClass()) == "ArboCoreObjectFactory"; });
}

int
vesselTreeWriters()
{
  const auto writers = CoreObjectFactory::GetInstance()->GetFileWriters();
  return static_cast<int>(std::count_if(writers.begin(), writers.end(), [](const auto & w) {
    return std::string(w->GetNameOfClass()) == "VesselTreeFileWriter";
  }));
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

ArboCoreObjectFactory *
registeredFactory()
{
  for (CoreObjectFactoryBase * factory : CoreObjectFactory::GetInstance()->GetExtraFactories())
  {
    if (auto * arbo = dynamic_cast<ArboCoreObjectFactory *>(factory))
    {
      return arbo;
    }
  }
  return nullptr;
}

DataNode::Pointer
openSample()
{
  auto factory = DataNodeFactory::New();
  factory->SetFileName(std::string(LUMO_TEST_DATA_DIR) + "/sample-portal.ves");
  factory->Update();
  return factory->GetOutput();
}
} // namespace

TEST(ArboCoreObjectFactory, RegistersOnceLogsOnceAndUnregisters)
{
  LogCapture log;
  EXPECT_EQ(vesAdapters(), 0);
  RegisterArboCoreObjectFactory();
  RegisterArboCoreObjectFactory();
  EXPECT_EQ(log.lines, std::vector<std::string>{ "[info] ArboCoreObjectFactory c'tor" });
  EXPECT_EQ(arboFactories(), 1);
  EXPECT_EQ(vesselTreeWriters(), 1);
  EXPECT_EQ(vesAdapters(), 1);
  ArboCoreObjectFactory * registered = registeredFactory();
  ASSERT_NE(registered, nullptr);
  EXPECT_EQ(registered->GetFileExtensionsMap().size(), 39u);

  // Later instances have their writer but neither log nor announce patterns again.
  ArboCoreObjectFactory::Pointer second = ArboCoreObjectFactory::New();
  EXPECT_EQ(log.lines.size(), 1u);
  EXPECT_TRUE(second->GetFileExtensionsMap().empty());
  EXPECT_TRUE(second->GetSaveFileExtensionsMap().empty());
  EXPECT_EQ(second->GetFileExtensions(), "");
  ASSERT_EQ(second->GetFileWriters().size(), 1u);
  EXPECT_STREQ(second->GetFileWriters()[0]->GetNameOfClass(), "VesselTreeFileWriter");
  EXPECT_STREQ(second->CreateAnother()->GetNameOfClass(), "ArboCoreObjectFactory");

  UnRegisterArboCoreObjectFactory();
  UnRegisterArboCoreObjectFactory();
  EXPECT_EQ(arboFactories(), 0);
  EXPECT_EQ(vesselTreeWriters(), 0);
  EXPECT_EQ(CoreObjectFactory::GetInstance()->GetFileExtensions().find("Vessel files"), std::string::npos);
  DataNode::Pointer unclaimed = openSample(); // the IO factory stays: the file still opens, without module defaults
  EXPECT_EQ(unclaimed->GetProperty("Render skeleton"), nullptr);

  // Registering again brings back the same factory with its maps, silently.
  RegisterArboCoreObjectFactory();
  EXPECT_EQ(registeredFactory(), registered);
  EXPECT_EQ(registered->GetFileExtensionsMap().size(), 39u);
  EXPECT_EQ(arboFactories(), 1);
  EXPECT_EQ(vesAdapters(), 1);
  EXPECT_EQ(log.lines.size(), 1u);
}

TEST(ArboCoreObjectFactory, ExtensionMapsHoldTheModulesPatterns)
{
  RegisterArboCoreObjectFactory();
  ArboCoreObjectFactory * factory = registeredFactory();
  ASSERT_NE(factory, nullptr);

  // The patterns are seen through the texts built from the maps: every pattern once per description (so "*.stl"
  // and "*.vtk" twice), nothing else.
  EXPECT_EQ(factory->GetFileExtensionsMap().size(), 39u);
  EXPECT_EQ(factory->GetSaveFileExtensionsMap().size(), 4u);
  // Descriptions in byte order (capitals first), each with its patterns in byte order.
  EXPECT_EQ(factory->GetFileExtensions(),
            "DICOM files (*.dc3 *.dcm *.gdcm *.ima);;"
            "DSR files (HPSONOS.DB hpsonos.db);;"
            "GE US files (*.V00 *.VOL);;"
            "Image Header Files (*.hdr);;"
            "MetaImage (*.mhd);;"
            "Microscope Images (*.lsm);;"
            "NIfTI format (*.nii);;"
            "Nearly Raw Raster Data (*.nrrd);;"
            "PAR/REC files (*.par);;"
            "Point sets (*.mps);;"
            "STL files (*.stl);;"
            "Scene descriptions (*.rs);;"
            "Sets of 2D slices (*.bmp *.jpeg *.jpg *.png *.tif *.tiff);;"
            "Stimulate Files (*.spr);;"
            "Surface files (*.obj *.stl *.vtk *.vtp);;"
            "UMDS GIPL Format Files (*.gipl);;"
            "VALD Pic (*.pic *.pic.gz *.seq *.seq.gz);;"
            "VTK Image Data Files (*.vti);;"
            "VTK image files (*.pvtk);;"
            "VTK surface files (*.vtk);;"
            "Vessel files (*.dvg *.uvg *.ves);;");
  EXPECT_EQ(factory->GetSaveFileExtensions(), "Surface Files (*.vtp);;Vessel files (*.dvg *.uvg *.ves);;");

  // The toolkit's texts gain the module's entries; both spellings of the surface entry stay.
  const std::string save3 = CoreObjectFactory::GetInstance()->GetSaveFileExtensions();
  EXPECT_NE(save3.find("Surface Files (*.vtp);;Surface files (*.stl *.vtk *.vtp);;"), std::string::npos) << save3;
  EXPECT_NE(save3.find("Vessel files (*.dvg *.uvg *.ves);;"), std::string::npos) << save3;
}

TEST(ArboCoreObjectFactory, VesselTreeNodesGetTheModulesDefaults)
{
  RegisterArboCoreObjectFactory();
  lumotest::WarningCapture warnings;
  DataNode::Pointer node = openSample();
  ASSERT_NE(node, nullptr);
  auto * tree = dynamic_cast<VesselTreeData *>(node->GetData());
  ASSERT_NE(tree, nullptr);

  bool visible = false;
  EXPECT_TRUE(node->GetBoolProperty("visible", visible));
  EXPECT_TRUE(visible);
  auto * skeleton = dynamic_cast<BoolProperty *>(node->GetProperty("Render skeleton"));
  ASSERT_NE(skeleton, nullptr);
  EXPECT_FALSE(skeleton->GetValue());
  auto * tableProperty = dynamic_cast<VesselTreeLookupTableProperty *>(node->GetProperty("VesselTreeLookupTable"));
  ASSERT_NE(tableProperty, nullptr);
  VesselTreeLookupTable * colors = tableProperty->GetVesselTreeLookupTable();
  ASSERT_NE(colors, nullptr);

  // The property's table is the per-vessel table of this tree: the same as the filter gives on its own.
  auto filter = VesselTreeToLookupTableFilter::New();
  filter->SetInput(tree);
  filter->SetLookupTable(VesselTreeLookupTable::New());
  filter->Update();
  vtkLookupTable * expected = filter->GetOutput()->GetVtkLookupTable();
  vtkLookupTable * actual = colors->GetVtkLookupTable();
  ASSERT_NE(actual, nullptr);
  ASSERT_EQ(actual->GetNumberOfTableValues(), 30); // vessel ids 1 to 29 in the sample
  ASSERT_EQ(actual->GetNumberOfTableValues(), expected->GetNumberOfTableValues());
  for (vtkIdType id = 0; id < actual->GetNumberOfTableValues(); ++id)
  {
    double a[4];
    double e[4];
    actual->GetTableValue(id, a);
    expected->GetTableValue(id, e);
    EXPECT_TRUE(std::equal(a, a + 4, e)) << "vessel id " << id;
  }
  EXPECT_TRUE(warnings.texts().empty());

  // A node without a tree yet gets the defaults too, with the colour scheme alone and without warnings.
  DataNode::Pointer empty = DataNode::New();
  empty->SetData(VesselTreeData::New());
  EXPECT_NE(dynamic_cast<VesselTreeLookupTableProperty *>(empty->GetProperty("VesselTreeLookupTable")), nullptr);
  EXPECT_NE(empty->GetProperty("Render skeleton"), nullptr);
  EXPECT_TRUE(warnings.texts().empty());
}

TEST(ArboCoreObjectFactory, OtherNodesAndSlotsAreLeftAlone)
{
  RegisterArboCoreObjectFactory();
  for (BaseData::Pointer data : { BaseData::Pointer(Surface::New()), BaseData::Pointer(Image::New()) })
  {
    DataNode::Pointer node = DataNode::New();
    node->SetData(data);
    EXPECT_EQ(node->GetProperty("Render skeleton"), nullptr) << data->GetNameOfClass();
    EXPECT_EQ(node->GetProperty("VesselTreeLookupTable"), nullptr) << data->GetNameOfClass();
    EXPECT_EQ(registeredFactory()->CreateMapper(node, DataNode::Standard3D), nullptr);
  }
  DataNode::Pointer vessels = DataNode::New();
  vessels->SetData(VesselTreeData::New());
  EXPECT_EQ(registeredFactory()->CreateMapper(vessels, DataNode::Standard2D), nullptr);
  // Vessel trees get the tube mapper in the 3-D slot, bound to their node.
  auto * tubes = dynamic_cast<YetAnotherVesselTreeMapper3D *>(vessels->GetMapper(DataNode::Standard3D));
  ASSERT_NE(tubes, nullptr);
  EXPECT_EQ(tubes->GetDataNode(), vessels.GetPointer());
  EXPECT_EQ(registeredFactory()->CreateMapper(nullptr, DataNode::Standard3D), nullptr);
  registeredFactory()->SetDefaultProperties(nullptr); // ignored
}

TEST(ArboModule, RecordIsMadeOnceWhenTwoThreadsAskAtOnce)
{
  std::atomic<int> waiting{ 2 };
  const ModuleInfo * seen[2] = { nullptr, nullptr };
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i)
  {
    threads.emplace_back([&, i] {
      // Both threads ask at the same moment, before either has made the record.
      --waiting;
      while (waiting.load() > 0)
      {}
      seen[i] = &GetArboModuleInfo();
    });
  }
  for (auto & thread : threads)
  {
    thread.join();
  }
  ASSERT_NE(seen[0], nullptr);
  EXPECT_EQ(seen[0], seen[1]);
  EXPECT_EQ(seen[0], &GetArboModuleInfo());
  EXPECT_EQ(seen[0]->GetName(), "LumoArbo");
  EXPECT_EQ(seen[0]->GetDependencies(),
            "LumoExt Segmentation lumoIpPic VesselLib SceneSerialization LegacyAdaptors Lumo");
  EXPECT_EQ(seen[0]->GetVersion(), LUMO_PROJECT_VERSION);
  EXPECT_TRUE(std::filesystem::equivalent(seen[0]->GetLocation(), LUMOARBO_MODULE_FILE)) << seen[0]->GetLocation();
}

TEST(ArboModule, LinkedInAndLoadedTwiceRegistersOnce)
{
  RegisterArboCoreObjectFactory();
  auto loader = ModuleLoader::New();
  const ModuleInfo first = loader->Load(LUMOARBO_MODULE_FILE);
  const ModuleInfo second = loader->Load(LUMOARBO_MODULE_FILE);
  EXPECT_EQ(first.GetName(), "LumoArbo");
  EXPECT_EQ(second.GetLocation(), first.GetLocation());
  ASSERT_EQ(loader->GetLoadedModules().size(), 1u);
  EXPECT_EQ(arboFactories(), 1);
  EXPECT_EQ(vesselTreeWriters(), 1);
  EXPECT_EQ(vesAdapters(), 1);
  // The activator the loader called is the one of the linked library: one record in the process.
  EXPECT_EQ(loader->GetLoadedModules()[0].GetLocation(), GetArboModuleInfo().GetLocation());
}

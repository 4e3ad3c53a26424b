// Data nodes (property lists per renderer, mappers) and the data storage with its predicates.

#include <lumoBoolProperty.h>
#include <lumoCoreObjectFactory.h>
#include <lumoDataStorage.h>
#include <lumoFloatProperty.h>
#include <lumoImage.h>
#include <lumoIntProperty.h>
#include <lumoNodePredicateAnd.h>
#include <lumoNodePredicateDataType.h>
#include <lumoNodePredicateNot.h>
#include <lumoNodePredicateOr.h>
#include <lumoNodePredicateProperty.h>
#include <lumoPointSet.h>
#include <lumoStringProperty.h>
#include <lumoSurface.h>

#include <gtest/gtest.h>

#include <vector>

using namespace lumo;

TEST(DataNodeTest, RendererListsFallBackToTheGeneralList)
{
  DataNode::Pointer node = DataNode::New();
  node->SetBoolProperty("visible", true);
  node->SetBoolProperty("visible", false, "3d");
  node->SetStringProperty("name", "liver");

  bool visible = false;
  EXPECT_TRUE(node->GetBoolProperty("visible", visible));
  EXPECT_TRUE(visible);
  EXPECT_TRUE(node->GetBoolProperty("visible", visible, "3d"));
  EXPECT_FALSE(visible);
  // A renderer without its own value sees the general one.
  EXPECT_TRUE(node->GetBoolProperty("visible", visible, "axial"));
  EXPECT_TRUE(visible);
  std::string name;
  EXPECT_TRUE(node->GetStringProperty("name", name, "3d"));
  EXPECT_EQ(name, "liver");
  EXPECT_EQ(node->GetName(), "liver");

  EXPECT_TRUE(node->IsVisible(""));
  EXPECT_FALSE(node->IsVisible("3d"));
  EXPECT_TRUE(node->IsOn("absent key", "3d", true));
  EXPECT_FALSE(node->IsOn("absent key", "3d", false));

  // GetProperty(key, renderer) answers the renderer's object first.
  BaseProperty * general = node->GetProperty("visible");
  BaseProperty * renderer = node->GetProperty("visible", "3d");
  EXPECT_NE(general, renderer);
  EXPECT_EQ(node->GetPropertyList()->GetProperty("visible"), general);
  EXPECT_EQ(node->GetPropertyList("3d")->GetProperty("visible"), renderer);
  EXPECT_EQ(node->GetPropertyList("3d")->GetProperty("name"), nullptr);

  // Only "3d" has a list of its own: look-ups for "axial" do not create one.
  EXPECT_EQ(node->GetPropertyListNames(), std::vector<std::string>{ "3d" });
  EXPECT_TRUE(node->HasPropertyList("3d"));
  EXPECT_FALSE(node->HasPropertyList("axial"));
}

TEST(DataNodeTest, ReplacePropertyAndAddProperty)
{
  DataNode::Pointer node = DataNode::New();
  IntProperty::Pointer layer = IntProperty::New(1);
  node->SetProperty("layer", layer, "2d");
  node->SetProperty("layer", IntProperty::New(5), "2d"); // same class: assigned into the existing object
  EXPECT_EQ(node->GetProperty("layer", "2d"), layer.GetPointer());
  EXPECT_EQ(layer->GetValue(), 5);

  IntProperty::Pointer replacement = IntProperty::New(9);
  node->ReplaceProperty("layer", replacement, "2d");
  EXPECT_EQ(node->GetProperty("layer", "2d"), replacement.GetPointer());
  EXPECT_EQ(layer->GetValue(), 5);

  node->AddProperty("layer", IntProperty::New(100), "2d"); // present: unchanged
  EXPECT_EQ(replacement->GetValue(), 9);
  node->AddProperty("layer", IntProperty::New(100), "2d", true); // overwrite
  EXPECT_EQ(replacement->GetValue(), 100);

  EXPECT_TRUE(node->DeleteProperty("layer", "2d"));
  EXPECT_FALSE(node->DeleteProperty("layer", "never made"));
  EXPECT_EQ(node->GetProperty("layer", "2d"), nullptr);
}

TEST(DataNodeTest, SetDataSetsCoreDefaultsWithoutOverwriting)
{
  DataNode::Pointer node = DataNode::New();
  node->SetFloatProperty("opacity", 0.3f);
  Surface::Pointer surface = Surface::New();
  node->SetData(surface);
  EXPECT_EQ(node->GetData(), surface.GetPointer());
  EXPECT_TRUE(node->IsVisible());
  float opacity = 0.0f;
  EXPECT_TRUE(node->GetOpacity(opacity));
  EXPECT_FLOAT_EQ(opacity, 0.3f); // kept
  EXPECT_NE(node->GetProperty("material"), nullptr);
  int layer = -1;
  EXPECT_TRUE(node->GetIntProperty("layer", layer));
  EXPECT_EQ(layer, 0);

  DataNode::Pointer pointNode = DataNode::New();
  pointNode->SetData(PointSet::New());
  float rgb[3] = { 0, 0, 0 };
  EXPECT_TRUE(pointNode->GetColor(rgb));
  EXPECT_FLOAT_EQ(rgb[0], 1.0f);
  EXPECT_FLOAT_EQ(rgb[1], 0.0f);
}

namespace
{
/** A stand-in for a rendering module: makes an itk::Object "mapper" for surfaces in the 3-D slot and sets a
 *  default property. */
class TestMapper : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(TestMapper);

  using Self = TestMapper;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(TestMapper, Object);

protected:
  TestMapper() = default;
  ~TestMapper() override = default;

public:
};

class TestObjectFactory : public CoreObjectFactoryBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(TestObjectFactory);

  using Self = TestObjectFactory;
  using Superclass = CoreObjectFactoryBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  // A factory cannot be made through the factories it is meant to extend.
  itkFactorylessNewMacro(Self);
  itkTypeMacro(TestObjectFactory, CoreObjectFactoryBase);

  itk::Object::Pointer
  CreateMapper(DataNode * node, DataNode::MapperSlotId slot) override
  {
    ++created;
    if (slot == DataNode::Standard3D && dynamic_cast<Surface *>(node->GetData()))
    {
      return TestMapper::New().GetPointer();
    }
    return nullptr;
  }
  void
  SetDefaultProperties(DataNode * node) override
  {
    if (dynamic_cast<Surface *>(node->GetData()))
    {
      node->AddProperty("Render skeleton", BoolProperty::New(false));
    }
  }
  int created{ 0 };

protected:
  TestObjectFactory()
  {
    m_FileExtensionsMap.emplace("*.ves", "Vessel files");
    m_FileExtensionsMap.emplace("*.dvg", "Vessel files");
    m_FileExtensionsMap.emplace("*.rs", "Scene descriptions");
    m_SaveFileExtensionsMap.emplace("*.ves", "Vessel files");
  }
};
} // namespace

TEST(DataNodeTest, MapperSlotsAskTheObjectFactory)
{
  TestObjectFactory::Pointer factory = TestObjectFactory::New();
  CoreObjectFactory::GetInstance()->RegisterExtraFactory(factory);
  CoreObjectFactory::GetInstance()->RegisterExtraFactory(factory); // once only
  EXPECT_EQ(CoreObjectFactory::GetInstance()->GetExtraFactories().size(), 1u);

  DataNode::Pointer node = DataNode::New();
  EXPECT_EQ(node->GetMapper(DataNode::Standard3D), nullptr); // no data: nothing asked
  EXPECT_EQ(factory->created, 0);
  node->SetData(Surface::New());
  bool renderSkeleton = true;
  EXPECT_TRUE(node->GetBoolProperty("Render skeleton", renderSkeleton));
  EXPECT_FALSE(renderSkeleton);

  itk::Object * mapper = node->GetMapper(DataNode::Standard3D);
  ASSERT_NE(mapper, nullptr);
  EXPECT_STREQ(mapper->GetNameOfClass(), "TestMapper");
  EXPECT_EQ(node->GetMapper(DataNode::Standard3D), mapper); // kept
  EXPECT_EQ(node->GetMapper(DataNode::Standard2D), nullptr);

  node->SetMapper(DataNode::Standard2D, TestMapper::New());
  EXPECT_NE(node->GetMapper(DataNode::Standard2D), nullptr);
  node->SetData(Surface::New()); // new data drops the mappers
  EXPECT_NE(node->GetMapper(DataNode::Standard3D), mapper);

  // File extensions of the extra factory join the core's.
  const std::string open = CoreObjectFactory::GetInstance()->GetFileExtensions();
  EXPECT_NE(open.find("Vessel files (*.dvg *.ves);;"), std::string::npos);
  EXPECT_NE(open.find("Scene descriptions (*.rs);;"), std::string::npos);
  EXPECT_NE(open.find("Nearly Raw Raster Data (*.nrrd);;"), std::string::npos);
  EXPECT_NE(CoreObjectFactory::GetInstance()->GetSaveFileExtensions().find("Vessel files (*.ves);;"),
            std::string::npos);

  CoreObjectFactory::GetInstance()->UnRegisterExtraFactory(factory);
  EXPECT_TRUE(CoreObjectFactory::GetInstance()->GetExtraFactories().empty());
  EXPECT_EQ(CoreObjectFactory::GetInstance()->GetFileExtensions().find("Vessel files"), std::string::npos);
}

TEST(CoreObjectFactoryTest, FilterTextLayout)
{
  CoreObjectFactoryBase::MultimapType map;
  map.emplace("*.vtp", "Surface files");
  map.emplace("*.stl", "Surface files");
  map.emplace("*.stl", "STL files");
  map.emplace("*.stl", "STL files"); // duplicate pair: listed once
  EXPECT_EQ(CoreObjectFactoryBase::CreateFileExtensions(map), "STL files (*.stl);;Surface files (*.stl *.vtp);;");
  EXPECT_EQ(CoreObjectFactoryBase::CreateFileExtensions({}), "");
}

TEST(CoreObjectFactoryTest, CoreWriters)
{
  const auto writers = CoreObjectFactory::GetInstance()->GetFileWriters();
  ASSERT_GE(writers.size(), 3u);
  EXPECT_EQ(writers[0]->GetDefaultExtension(), ".nrrd");
  EXPECT_EQ(writers[1]->GetFileDialogPattern(), "Surface (*.vtp *.vtk *.stl)");
  EXPECT_EQ(writers[2]->GetDefaultFilename(), "PointSet.mps");
  EXPECT_TRUE(writers[1]->CanWriteBaseDataType(Surface::New()));
  EXPECT_FALSE(writers[1]->CanWriteBaseDataType(PointSet::New()));
}

namespace
{
DataNode::Pointer
MakeNode(const std::string & name, BaseData * data = nullptr)
{
  DataNode::Pointer node = DataNode::New();
  node->SetName(name);
  if (data)
  {
    node->SetData(data);
  }
  return node;
}

std::vector<std::string>
Names(const DataStorage::SetOfObjects * nodes)
{
  std::vector<std::string> names;
  for (const DataNode::Pointer & node : *nodes)
  {
    names.push_back(node->GetName());
  }
  return names;
}
} // namespace

class DataStorageTest : public ::testing::Test
{
protected:
  void
  SetUp() override
  {
    storage = DataStorage::New();
    image = MakeNode("image", Image::New());
    surface = MakeNode("surface", Surface::New());
    points = MakeNode("points", PointSet::New());
    helper = MakeNode("helper", Surface::New());
    helper->SetBoolProperty("helper object", true);
    derived = MakeNode("derived", Surface::New());
    storage->Add(image);
    storage->Add(surface, image);
    storage->Add(points);
    storage->Add(helper);
    DataStorage::SetOfObjects::Pointer sources = DataStorage::SetOfObjects::New();
    sources->InsertElement(0, surface);
    sources->InsertElement(1, points);
    storage->Add(derived, sources);
  }

  DataStorage::Pointer storage;
  DataNode::Pointer image, surface, points, helper, derived;
};

TEST_F(DataStorageTest, AllInInsertionOrderAndManagedFlag)
{
  EXPECT_EQ(Names(storage->GetAll()), (std::vector<std::string>{ "image", "surface", "points", "helper", "derived" }));
  bool managed = false;
  EXPECT_TRUE(image->GetBoolProperty("IsDataStoreManaged", managed));
  EXPECT_TRUE(managed);
  EXPECT_EQ(storage->GetNamedNode("points"), points.GetPointer());
  EXPECT_EQ(storage->GetNamedObject<PointSet>("points"), points->GetData());
  EXPECT_EQ(storage->GetNamedObject<Image>("points"), nullptr);
  EXPECT_EQ(storage->GetNamedNode("nothing"), nullptr);
}

TEST_F(DataStorageTest, SubsetsWithAndNotPropertyPredicates)
{
  // What the scene writer saves: NOT("helper object" == true) AND has "IsDataStoreManaged".
  NodePredicateProperty::Pointer isHelper = NodePredicateProperty::New("helper object", BoolProperty::New(true));
  NodePredicateNot::Pointer notHelper = NodePredicateNot::New(isHelper);
  NodePredicateProperty::Pointer managed = NodePredicateProperty::New("IsDataStoreManaged");
  NodePredicateAnd::Pointer saved = NodePredicateAnd::New(notHelper, managed);
  EXPECT_EQ(Names(storage->GetSubset(saved)), (std::vector<std::string>{ "image", "surface", "points", "derived" }));
  EXPECT_EQ(Names(storage->GetSubset(isHelper)), std::vector<std::string>{ "helper" });

  NodePredicateDataType::Pointer isSurface = NodePredicateDataType::New("Surface");
  EXPECT_EQ(Names(storage->GetSubset(isSurface)), (std::vector<std::string>{ "surface", "helper", "derived" }));
  NodePredicateAnd::Pointer surfaceNotHelper = NodePredicateAnd::New(isSurface, notHelper);
  EXPECT_EQ(Names(storage->GetSubset(surfaceNotHelper)), (std::vector<std::string>{ "surface", "derived" }));
  NodePredicateOr::Pointer imageOrPoints =
    NodePredicateOr::New(NodePredicateDataType::New("Image"), TNodePredicateDataType<PointSet>::New());
  EXPECT_EQ(Names(storage->GetSubset(imageOrPoints)), (std::vector<std::string>{ "image", "points" }));

  // Property with a value of another class never matches; a missing property never matches.
  EXPECT_EQ(storage->GetSubset(NodePredicateProperty::New("helper object", IntProperty::New(1)))->Size(), 0u);
  // A renderer-specific value wins for that renderer.
  helper->SetBoolProperty("helper object", false, "3d");
  EXPECT_EQ(storage->GetSubset(NodePredicateProperty::New("helper object", BoolProperty::New(true), "3d"))->Size(), 0u);
  EXPECT_EQ(storage->GetNode(isSurface), surface.GetPointer());
  // Empty And is true, empty Or false, and null nodes fail every predicate.
  EXPECT_EQ(storage->GetSubset(NodePredicateAnd::New())->Size(), 5u);
  EXPECT_EQ(storage->GetSubset(NodePredicateOr::New())->Size(), 0u);
  EXPECT_FALSE(notHelper->CheckNode(nullptr));
}

TEST_F(DataStorageTest, SourcesAndDerivations)
{
  EXPECT_EQ(Names(storage->GetSources(derived)), (std::vector<std::string>{ "surface", "points" }));
  EXPECT_EQ(Names(storage->GetSources(derived, nullptr, false)),
            (std::vector<std::string>{ "surface", "points", "image" }));
  EXPECT_EQ(Names(storage->GetSources(derived, NodePredicateDataType::New("PointSet"))),
            std::vector<std::string>{ "points" });
  EXPECT_EQ(Names(storage->GetDerivations(image)), std::vector<std::string>{ "surface" });
  EXPECT_EQ(Names(storage->GetDerivations(image, nullptr, false)), (std::vector<std::string>{ "surface", "derived" }));
  EXPECT_EQ(storage->GetSources(image)->Size(), 0u);
  EXPECT_EQ(storage->GetSources(MakeNode("outside"))->Size(), 0u);

  // Removing a node removes it from the sources of the others.
  storage->Remove(surface);
  EXPECT_FALSE(storage->Exists(surface));
  EXPECT_EQ(Names(storage->GetSources(derived)), std::vector<std::string>{ "points" });
  EXPECT_EQ(surface->GetProperty("IsDataStoreManaged"), nullptr);
  EXPECT_EQ(storage->GetNumberOfNodes(), 4u);
  storage->Remove(surface); // not there: nothing happens
  EXPECT_EQ(storage->GetNumberOfNodes(), 4u);
}

TEST_F(DataStorageTest, AddErrors)
{
  auto expectError = [](const std::function<void()> & call, const std::string & message) {
    try
    {
      call();
      ADD_FAILURE() << "no exception for: " << message;
    }
    catch (const itk::InvalidArgumentError & e)
    {
      EXPECT_EQ(std::string(e.GetDescription()), message);
    }
  };
  expectError([&] { storage->Add(nullptr); }, "DataStorage::Add: the node is null");
  expectError([&] { storage->Add(image); }, "DataStorage::Add: the node is already in the storage");
  DataNode::Pointer outsider = MakeNode("outsider");
  expectError([&] { storage->Add(MakeNode("new"), outsider); },
              "DataStorage::Add: a source node is not in the storage");
  DataStorage::SetOfObjects::Pointer withNull = DataStorage::SetOfObjects::New();
  withNull->InsertElement(0, nullptr);
  expectError([&] { storage->Add(MakeNode("new"), withNull); }, "DataStorage::Add: a source node is null");
  EXPECT_EQ(storage->GetNumberOfNodes(), 5u);
}

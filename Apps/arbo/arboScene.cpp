#include "arboScene.h"

#include "arboAtomicFile.h"
#include "arboError.h"
#include "arboFiles.h"

#include "lumoTemporaryFileGuard.h"
#include "lumoArboCoreObjectFactory.h"
#include "lumoCalyxSceneIO.h"
#include "lumoCalyxSceneReaderV1.h"
#include "lumoImage.h"
#include "lumoImageAccess.h"
#include "lumoLabelImageSurfaceFilter.h"
#include "lumoLookupTable.h"
#include "lumoPointSet.h"
#include "lumoLookupTableProperty.h"
#include "lumoPointSet.h"
#include "lumoSurface.h"
#include "lumoSurfaceVtkMapper3D.h"
#include "lumoVesselTreeLookupTable.h"
#include "lumoVesselTreeLookupTableProperty.h"
#include "lumoYetAnotherVesselTreeMapper3D.h"

#include <itkImageRegionConstIterator.h>
#include <vtkCamera.h>
#include <vtkMath.h>
#include <vtkDiscreteFlyingEdges3D.h>
#include <vtkImageData.h>
#include <vtkLookupTable.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkPolyDataNormals.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkShortArray.h>
#include <vtkWindowedSincPolyDataFilter.h>

#include <algorithm>
#include <filesystem>
#include <cmath>
#include <iostream>
#include <set>

namespace arbo
{
namespace
{
/** The image's labels as a VTK volume of shorts in world units (origin and spacing; the direction is applied to
 *  the surface afterwards), and the set of non-zero labels. */
struct Orientation
{
  itk::Matrix<double, 3, 3> direction;
  itk::Point<double, 3> origin;
};

vtkSmartPointer<vtkImageData>
labelVolume(const std::string & path, const lumo::Image * image, std::set<int> & labels, Orientation & orientation)
{
  auto volume = vtkSmartPointer<vtkImageData>::New();
  lumo::AccessByItk(image, [&](auto * itkImage) {
    using ImageType = std::remove_pointer_t<decltype(itkImage)>;
    const auto region = itkImage->GetLargestPossibleRegion();
    const auto size = region.GetSize();
    volume->SetDimensions(static_cast<int>(size[0]), static_cast<int>(size[1]), static_cast<int>(size[2]));
    volume->SetSpacing(itkImage->GetSpacing()[0], itkImage->GetSpacing()[1], itkImage->GetSpacing()[2]);
    volume->SetOrigin(itkImage->GetOrigin()[0], itkImage->GetOrigin()[1], itkImage->GetOrigin()[2]);
    volume->AllocateScalars(VTK_SHORT, 1);
    orientation.direction = itkImage->GetDirection();
    orientation.origin = itkImage->GetOrigin();
    auto * out = static_cast<short *>(volume->GetScalarPointer());
    itk::ImageRegionConstIterator<ImageType> it(itkImage, region);
    for (; !it.IsAtEnd(); ++it, ++out)
    {
      const double value = static_cast<double>(it.Get());
      if (value < 0 || value > 32767 || value != std::floor(value))
      {
        throw Error(path,
                    "holds values that are not labels (whole numbers 0 to 32767); only masks and label "
                    "images can be shown");
      }
      *out = static_cast<short>(value);
      if (*out != 0)
      {
        labels.insert(*out);
      }
    }
  });
  return volume;
}

/** Surfaces of all labels (one contour value each), smoothed a little, in world coordinates. */
vtkSmartPointer<vtkPolyData>
labelSurfaces(vtkImageData * volume, const std::set<int> & labels, const Orientation & orientation)
{
  auto contours = vtkSmartPointer<vtkDiscreteFlyingEdges3D>::New();
  contours->SetInputData(volume);
  int index = 0;
  for (int label : labels)
  {
    contours->SetValue(index++, label);
  }
  contours->ComputeScalarsOn();
  contours->ComputeNormalsOff();
  auto smoother = vtkSmartPointer<vtkWindowedSincPolyDataFilter>::New();
  smoother->SetInputConnection(contours->GetOutputPort());
  smoother->SetNumberOfIterations(15);
  smoother->SetPassBand(0.1);
  smoother->NonManifoldSmoothingOn();
  smoother->NormalizeCoordinatesOn();
  auto normals = vtkSmartPointer<vtkPolyDataNormals>::New();
  normals->SetInputConnection(smoother->GetOutputPort());
  normals->SplittingOff();
  normals->Update();
  vtkSmartPointer<vtkPolyData> surface = normals->GetOutput();

  // Direction cosines: rotate about the origin, as the image's index-to-world mapping does.
  const auto & direction = orientation.direction;
  const auto & origin = orientation.origin;
  bool identity = true;
  for (unsigned r = 0; r < 3; ++r)
  {
    for (unsigned c = 0; c < 3; ++c)
    {
      identity = identity && direction(r, c) == (r == c ? 1.0 : 0.0);
    }
  }
  if (!identity)
  {
    vtkPoints * points = surface->GetPoints();
    for (vtkIdType i = 0; points && i < points->GetNumberOfPoints(); ++i)
    {
      double p[3], q[3];
      points->GetPoint(i, p);
      for (unsigned r = 0; r < 3; ++r)
      {
        q[r] = origin[r];
        for (unsigned c = 0; c < 3; ++c)
        {
          q[r] += direction(r, c) * (p[c] - origin[c]);
        }
      }
      points->SetPoint(i, q);
    }
  }
  return surface;
}

/** Colours of the labels: the liver segment colours of the vessel colour table where they exist. */
lumo::LookupTable::Pointer
labelColors(const std::set<int> & labels)
{
  const auto vesselColors = lumo::VesselTreeLookupTable::New();
  const auto segments = vesselColors->GetColorBySegment();
  const int maxLabel = labels.empty() ? 1 : *labels.rbegin();
  auto table = vtkSmartPointer<vtkLookupTable>::New();
  table->SetNumberOfTableValues(maxLabel + 1);
  table->SetTableRange(0, maxLabel);
  for (int label = 0; label <= maxLabel; ++label)
  {
    if (label > 1 && static_cast<std::size_t>(label) < segments.size())
    {
      const auto & c = segments[label];
      table->SetTableValue(label, c[0], c[1], c[2], 1.0);
    }
    else
    {
      // Golden-ratio hues: neighbouring labels far apart in colour.
      const double hue = std::fmod(label * 0.618033988749895, 1.0);
      double rgb[3];
      vtkMath::HSVToRGB(hue, 0.65, 0.9, rgb, rgb + 1, rgb + 2);
      table->SetTableValue(label, rgb[0], rgb[1], rgb[2], 1.0);
    }
  }
  table->Build();
  auto lookupTable = lumo::LookupTable::New();
  lookupTable->SetVtkLookupTable(table);
  return lookupTable;
}

/** Whether every label is one of a resection image's: 2 remnant, 3 to be resected, 4 at risk. */
bool
resectionLabels(const std::set<int> & labels)
{
  return std::all_of(labels.begin(), labels.end(), [](int label) { return label >= 2 && label <= 4; });
}

const char *
resectionPartName(int label)
{
  return label == 2 ? "remnant" : (label == 3 ? "resected" : "at risk");
}

/** One surface node per label of a resection image, coloured by resection status (the label is the status). */
void
addResection(Scene & scene,
             const std::string & path,
             lumo::Image * image,
             std::vector<std::pair<lumo::DataNode::Pointer, int>> & parts)
{
  auto filter = lumo::LabelImageSurfaceFilter::New();
  filter->SetInput(image);
  filter->Update();
  const auto colors = planningColourTable()->GetColorByResectionStatus();
  for (unsigned int i = 0; i < filter->GetNumberOfIndexedOutputs(); ++i)
  {
    const int label = static_cast<int>(filter->GetOutputLabels()[i]);
    auto node = lumo::DataNode::New();
    node->SetData(filter->GetOutput(i));
    node->SetName(path + " (" + resectionPartName(label) + ")");
    const auto & c = colors[label];
    node->SetColor(c[0], c[1], c[2]);
    node->SetBoolProperty("scalar visibility", false);
    auto mapper = lumo::SurfaceVtkMapper3D::New();
    mapper->SetDataNode(node);
    node->SetMapper(lumo::DataNode::Standard3D, mapper);
    scene.storage->Add(node);
    parts.emplace_back(node, label);
    ++scene.surfaces;
  }
  ++scene.resections;
}
} // namespace

std::string
proposalFileOf(const std::string & imagePath)
{
  const std::string ending = formatExtension(imagePath);
  return imagePath.substr(0, imagePath.size() - ending.size()) + ".proposal.xml";
}

bool
isSceneFile(const std::string & path)
{
  const std::string name = std::filesystem::path(path).filename().string();
  return name.size() > 3 &&
         (name.compare(name.size() - 3, 3, ".rs") == 0 || name.compare(name.size() - 3, 3, ".RS") == 0);
}

CapturedMessages::CapturedMessages()
  : m_Previous(std::cout.rdbuf(m_Buffer.rdbuf()))
{}

CapturedMessages::~CapturedMessages()
{
  std::cout.rdbuf(m_Previous);
}

lumo::DataStorage::Pointer
loadSceneFile(const std::string & path, std::string & messages)
{
  registerFileTypes();
  lumo::RegisterArboCoreObjectFactory(); // trees get the module's node defaults (tube mapper, vessel colour table)
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec))
  {
    throw Error(path, "no such file");
  }
  std::string directory = std::filesystem::path(path).parent_path().string();
  if (directory.empty())
  {
    directory = ".";
  }
  auto storage = lumo::DataStorage::New();
  auto reader = lumo::CalyxSceneReaderV1::New();
  bool loaded = false;
  {
    CapturedMessages captured;
    loaded =
      lumo::CalyxSceneIO::New()->LoadScene(storage, directory, std::filesystem::path(path).filename().string(), reader);
    messages = captured.text();
  }
  if (!loaded && reader->GetLoadedNodes().empty())
  {
    throw Error(path, "is not a scene that can be loaded (arbo scene info tells why)");
  }
  for (lumo::DataNode * node : reader->GetLoadedNodes())
  {
    if (!storage->Exists(node))
    {
      throw Error(path, "node '" + node->GetName() + "' could not be placed (a source is missing)");
    }
  }
  return storage;
}

namespace
{
/** Whether the image holds a single non-zero value and no negative or fractional one: an organ mask. */
bool
isMask(const lumo::Image * image)
{
  bool mask = true;
  double label = 0;
  lumo::AccessByItk(image, [&](auto * itkImage) {
    using ImageType = std::remove_pointer_t<decltype(itkImage)>;
    itk::ImageRegionConstIterator<ImageType> it(itkImage, itkImage->GetLargestPossibleRegion());
    for (; !it.IsAtEnd() && mask; ++it)
    {
      const double value = static_cast<double>(it.Get());
      if (value == 0)
      {
        continue;
      }
      mask = value > 0 && value == std::floor(value) && (label == 0 || value == label);
      label = value;
    }
  });
  return mask && label != 0;
}
} // namespace

lumo::DataNode::Pointer
sceneNode(const std::string & name, lumo::BaseData * data)
{
  lumo::RegisterArboCoreObjectFactory();
  auto node = lumo::DataNode::New();
  node->SetData(data);
  node->SetName(name);
  auto * image = dynamic_cast<lumo::Image *>(data);
  if (image != nullptr && isMask(image))
  {
    // The organ as drawn around trees: a veil in the organ colour.
    node->SetColor(0.87f, 0.72f, 0.60f);
    node->SetOpacity(0.18f);
  }
  return node;
}

std::string
nodeNameOf(const std::string & file)
{
  const std::string name = std::filesystem::path(file).filename().string();
  return name.substr(0, name.find('.'));
}

lumo::DataStorage::Pointer
openSceneForUpdate(const std::string & path)
{
  if (!isSceneFile(path))
  {
    throw Error(path, "is not a scene file name (a scene file ends in .rs)");
  }
  std::error_code ec;
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  if (!folder.empty() && !std::filesystem::is_directory(folder, ec))
  {
    throw Error(path, "the folder " + folder.string() + " does not exist");
  }
  if (!std::filesystem::exists(path, ec))
  {
    registerFileTypes();
    return lumo::DataStorage::New();
  }
  std::string messages;
  return loadSceneFile(path, messages);
}

void
addResultsToScene(lumo::DataStorage * scene,
                  const std::string & path,
                  const std::vector<std::pair<std::string, lumo::BaseData::Pointer>> & inputs,
                  const std::vector<SceneResult> & results)
{
  auto findNode = [scene](const std::string & name) -> lumo::DataNode * {
    const lumo::DataStorage::SetOfObjects::ConstPointer all = scene->GetAll();
    for (const lumo::DataNode::Pointer & node : *all)
    {
      if (node->GetName() == name)
      {
        return node;
      }
    }
    return nullptr;
  };
  std::vector<lumo::DataNode *> inputNodes;
  for (const auto & [name, data] : inputs)
  {
    lumo::DataNode * node = findNode(name);
    if (node == nullptr)
    {
      lumo::DataNode::Pointer added = sceneNode(name, data);
      scene->Add(added);
      node = added;
    }
    inputNodes.push_back(node);
  }
  for (const SceneResult & result : results)
  {
    auto sources = lumo::DataStorage::SetOfObjects::New();
    for (const std::string & name : result.sources)
    {
      if (lumo::DataNode * node = findNode(name))
      {
        sources->push_back(node);
      }
    }
    if (result.sources.empty())
    {
      for (lumo::DataNode * node : inputNodes)
      {
        sources->push_back(node);
      }
    }
    if (lumo::DataNode * previous = findNode(result.name))
    {
      scene->Remove(previous); // the result of an earlier run
    }
    lumo::DataNode::Pointer node = sceneNode(result.name, result.data);
    for (const auto & [key, property] : result.properties)
    {
      node->SetProperty(key, property);
    }
    scene->Add(node, sources);
  }
  CapturedMessages messages;
  lumo::TemporaryFileGuard::InstallSignalHandlers();
  if (!lumo::CalyxSceneIO::New()->SaveScene(scene, path))
  {
    throw Error(path, "the scene could not be saved");
  }
}

std::vector<std::pair<std::string, lumo::BaseProperty::Pointer>>
resectionProperties(lumo::BaseProperty * descriptor)
{
  const auto colors = planningColourTable()->GetColorByResectionStatus();
  auto table = vtkSmartPointer<vtkLookupTable>::New();
  table->SetNumberOfTableValues(5);
  table->SetTableRange(0, 4);
  table->SetTableValue(0, 0.0, 0.0, 0.0, 0.0); // outside the organ
  for (int label = 1; label <= 4; ++label)
  {
    const auto & c = colors[label];
    table->SetTableValue(label, c[0], c[1], c[2], 1.0);
  }
  auto lookupTable = lumo::LookupTable::New();
  lookupTable->SetVtkLookupTable(table);
  return { { "ResectionProposalDescriptor", descriptor },
           { "LookupTable", lumo::LookupTableProperty::New(lookupTable).GetPointer() } };
}

lumo::VesselTreeLookupTable::Pointer
planningColourTable()
{
  auto table = lumo::VesselTreeLookupTable::New();
  auto rgba = [](double r, double g, double b) {
    lumo::VesselTreeLookupTable::ColorType c;
    c[0] = r;
    c[1] = g;
    c[2] = b;
    c[3] = 1.0;
    return c;
  };
  // Indexed by resection status: none, undefined, not to be resected, to be resected, area at risk.
  table->SetColorByResectionStatus(
    { rgba(0.6, 0.6, 0.6), rgba(0.6, 0.6, 0.6), rgba(0.3, 0.75, 0.35), rgba(0.9, 0.15, 0.1), rgba(1.0, 0.6, 0.05) });
  return table;
}

Scene
buildScene(const std::vector<std::string> & files, bool renderSkeleton, bool resections)
{
  Scene scene;
  scene.storage = lumo::DataStorage::New();
  std::vector<std::pair<lumo::DataNode::Pointer, bool>> images; // node, is an organ
  std::vector<std::pair<lumo::DataNode::Pointer, int>> parts;   // node, resection label
  // Nodes of a scene file: the surfaces made from each image, and the image node with its saved properties.
  struct Saved
  {
    std::size_t firstImage;
    std::size_t firstPart;
    lumo::DataNode::Pointer node;
  };
  std::vector<Saved> saved;
  // Every file as a list of (name, data, node of a scene or null).
  struct Item
  {
    std::string path;
    lumo::BaseData::Pointer data;
    lumo::DataNode::Pointer sceneNode;
    int sceneIndex{ -1 };
  };
  std::vector<Item> items;
  for (const std::string & path : files)
  {
    if (!isSceneFile(path))
    {
      items.push_back({ path, readData(path), nullptr, -1 });
      continue;
    }
    std::string messages;
    lumo::DataStorage::Pointer loaded = loadSceneFile(path, messages);
    scene.sceneFiles.push_back(path);
    scene.sceneStorages.push_back(loaded);
    const lumo::DataStorage::SetOfObjects::ConstPointer all = loaded->GetAll();
    for (const lumo::DataNode::Pointer & node : *all)
    {
      bool visible = true;
      node->GetBoolProperty("visible", visible);
      if (!visible || node->GetData() == nullptr || dynamic_cast<lumo::PointSet *>(node->GetData()) != nullptr)
      {
        continue; // hidden, empty, or a point set (nothing this picture draws)
      }
      items.push_back({ node->GetName().empty() ? path : node->GetName(),
                        node->GetData(),
                        node,
                        static_cast<int>(scene.sceneFiles.size()) - 1 });
    }
  }
  for (const Item & item : items)
  {
    const std::string & path = item.path;
    lumo::BaseData::Pointer data = item.data;
    // A scene's node keeps its saved properties (colour tables, names); files get a new node.
    lumo::DataNode::Pointer node = item.sceneNode ? item.sceneNode : lumo::DataNode::New();
    if (auto * tree = dynamic_cast<lumo::VesselTreeData *>(data.GetPointer()))
    {
      node->SetData(tree);
      if (dynamic_cast<lumo::VesselTreeLookupTableProperty *>(node->GetProperty("VesselTreeLookupTable")) == nullptr)
      {
        node->SetProperty("VesselTreeLookupTable", lumo::VesselTreeLookupTableProperty::New(planningColourTable()));
      }
      auto * mapper = dynamic_cast<lumo::YetAnotherVesselTreeMapper3D *>(node->GetMapper(lumo::DataNode::Standard3D));
      if (mapper == nullptr)
      {
        auto tubes = lumo::YetAnotherVesselTreeMapper3D::New();
        tubes->SetDataNode(node);
        node->SetMapper(lumo::DataNode::Standard3D, tubes);
      }
      node->SetBoolProperty("Render skeleton", renderSkeleton);
      node->SetName(path);
      scene.storage->Add(node);
      scene.trees.push_back(node);
      scene.treeFiles.push_back(path);
      scene.treeScenes.push_back(item.sceneIndex);
      continue;
    }
    if (item.sceneNode && dynamic_cast<lumo::Surface *>(data.GetPointer()) != nullptr)
    {
      // A surface of the scene is drawn as saved.
      auto mapper = lumo::SurfaceVtkMapper3D::New();
      mapper->SetDataNode(node);
      node->SetMapper(lumo::DataNode::Standard3D, mapper);
      scene.storage->Add(node);
      ++scene.surfaces;
      continue;
    }
    auto * image = dynamic_cast<lumo::Image *>(data.GetPointer());
    if (image == nullptr)
    {
      throw Error(path, "holds " + kindOf(data) + "; only vessel trees, masks and label images can be shown");
    }
    std::set<int> labels;
    Orientation orientation;
    vtkSmartPointer<vtkImageData> volume = labelVolume(path, image, labels, orientation);
    if (labels.empty())
    {
      throw Error(path, "is empty (every voxel is 0): nothing to show");
    }
    if (item.sceneNode)
    {
      saved.push_back({ images.size(), parts.size(), item.sceneNode });
      node = lumo::DataNode::New(); // the image becomes surfaces: new nodes
    }
    std::error_code ec;
    const bool described = item.sceneNode ? item.sceneNode->GetProperty("ResectionProposalDescriptor") != nullptr
                                          : std::filesystem::is_regular_file(proposalFileOf(path), ec);
    if (resectionLabels(labels) && (resections || described))
    {
      addResection(scene, path, image, parts);
      continue;
    }
    auto surface = lumo::Surface::New();
    surface->SetVtkPolyData(labelSurfaces(volume, labels, orientation));
    node->SetData(surface);
    node->SetName(path);
    const bool organ = labels.size() == 1;
    if (organ && scene.organ.IsNull())
    {
      scene.organ = image;
      scene.organFile = path;
      scene.organNode = node;
    }
    if (organ)
    {
      node->SetColor(0.87f, 0.72f, 0.60f);
      node->SetBoolProperty("scalar visibility", false);
    }
    else
    {
      node->SetColor(1.0f, 1.0f, 1.0f);
      node->SetBoolProperty("scalar visibility", true);
      node->SetProperty("LookupTable", lumo::LookupTableProperty::New(labelColors(labels)));
    }
    auto mapper = lumo::SurfaceVtkMapper3D::New();
    mapper->SetDataNode(node);
    node->SetMapper(lumo::DataNode::Standard3D, mapper);
    scene.storage->Add(node);
    images.emplace_back(node, organ);
    ++scene.surfaces;
  }
  // Surfaces around trees are see-through and let clicks pass to the vessels; alone they are solid.
  for (auto & [node, organ] : images)
  {
    const bool withTrees = !scene.trees.empty();
    node->SetOpacity(withTrees ? (organ ? 0.18f : 0.35f) : (organ ? 0.6f : 1.0f));
    node->SetBoolProperty("pickable", !withTrees);
  }
  // The remnant is what stays: drawn as a veil, so that the parts to be taken stand out within the organ.
  for (auto & [node, label] : parts)
  {
    const bool withTrees = !scene.trees.empty();
    node->SetOpacity(label == 2 ? (withTrees ? 0.15f : 0.25f) : (withTrees ? 0.55f : 1.0f));
    node->SetBoolProperty("pickable", !withTrees);
  }
  // Saved properties of a scene's images: an organ takes its colour and opacity; the saved opacity of a label or
  // resection image scales the opacities above, so that a scene can fade a whole image or keep it as drawn.
  for (std::size_t i = 0; i < saved.size(); ++i)
  {
    const std::size_t imageEnd = i + 1 < saved.size() ? saved[i + 1].firstImage : images.size();
    const std::size_t partEnd = i + 1 < saved.size() ? saved[i + 1].firstPart : parts.size();
    const lumo::DataNode * source = saved[i].node;
    float opacity = 1.0f;
    const bool hasOpacity = source->GetOpacity(opacity);
    float rgb[3] = { 0, 0, 0 };
    const bool hasColor = source->GetColor(rgb);
    for (std::size_t k = saved[i].firstImage; k < imageEnd; ++k)
    {
      auto & [node, organ] = images[k];
      if (organ)
      {
        if (hasColor)
        {
          node->SetColor(rgb[0], rgb[1], rgb[2]);
        }
        if (hasOpacity)
        {
          node->SetOpacity(opacity);
        }
      }
      else if (hasOpacity)
      {
        float own = 1.0f;
        node->GetOpacity(own);
        node->SetOpacity(own * opacity);
      }
    }
    for (std::size_t k = saved[i].firstPart; k < partEnd; ++k)
    {
      float own = 1.0f;
      parts[k].first->GetOpacity(own);
      parts[k].first->SetOpacity(own * (hasOpacity ? opacity : 1.0f));
    }
  }
  if (resections && scene.resections == 0)
  {
    throw Error(files.empty() ? std::string() : files.front(),
                "--resection: no image among the files has only the labels of a resection (2 remnant, 3 resected, "
                "4 at risk)");
  }
  return scene;
}

lumo::DeformablePlane::Pointer
readPlane(const std::string & path)
{
  lumo::BaseData::Pointer data = readData(path);
  auto * points = dynamic_cast<lumo::PointSet *>(data.GetPointer());
  if (points == nullptr)
  {
    throw Error(path, "holds " + kindOf(data) + "; a cutting plane is given by its control points (.mps)");
  }
  auto plane = lumo::DeformablePlane::New();
  try
  {
    plane->SetControlPoints(points);
  }
  catch (const itk::ExceptionObject & e)
  {
    throw Error(path, e.GetDescription());
  }
  return plane;
}

void
showPlane(Scene & scene, lumo::DeformablePlane * plane)
{
  if (scene.plane.GetPointer() != plane || scene.planeNode.IsNull())
  {
    // The box: the organ, else everything (a plane alone is drawn around its control points).
    double box[6] = { 1, -1, 1, -1, 1, -1 };
    auto include = [&box](const double * b) {
      for (int axis = 0; axis < 3; ++axis)
      {
        if (b[2 * axis] > b[2 * axis + 1])
        {
          return;
        }
      }
      for (int axis = 0; axis < 3; ++axis)
      {
        const bool empty = box[2 * axis] > box[2 * axis + 1];
        box[2 * axis] = empty ? b[2 * axis] : std::min(box[2 * axis], b[2 * axis]);
        box[2 * axis + 1] = empty ? b[2 * axis + 1] : std::max(box[2 * axis + 1], b[2 * axis + 1]);
      }
    };
    auto boundsOf = [&include](lumo::DataNode * node) {
      if (auto * surface = dynamic_cast<lumo::Surface *>(node->GetData()); surface && surface->GetVtkPolyData())
      {
        include(surface->GetVtkPolyData()->GetBounds());
      }
      else if (node->GetData() != nullptr)
      {
        const auto & b = node->GetData()->GetGeometry()->GetBounds();
        const double copy[6] = { b[0], b[1], b[2], b[3], b[4], b[5] };
        include(copy);
      }
    };
    if (scene.organNode)
    {
      boundsOf(scene.organNode);
    }
    else
    {
      auto all = scene.storage->GetAll();
      for (const auto & node : all->CastToSTLConstContainer())
      {
        boundsOf(node);
      }
    }
    if (box[0] > box[1])
    {
      const auto & b = plane->GetGeometry()->GetBounds();
      const double copy[6] = { b[0], b[1], b[2], b[3], b[4], b[5] };
      include(copy);
    }
    std::copy(box, box + 6, scene.planeBox.begin());
    scene.plane = plane;
  }
  lumo::Surface::Pointer surface = plane->CreateSurface(scene.planeBox, 64);
  if (scene.planeNode)
  {
    // The node keeps its surface object, so that its mapper sees the new shape.
    static_cast<lumo::Surface *>(scene.planeNode->GetData())->SetVtkPolyData(surface->GetVtkPolyData());
    return;
  }
  scene.planeNode = lumo::DataNode::New();
  scene.planeNode->SetData(surface);
  scene.planeNode->SetName("cutting plane");
  // Cyan: apart from the organ, the segment and the resection colours.
  scene.planeNode->SetColor(0.25f, 0.85f, 0.95f);
  scene.planeNode->SetOpacity(0.5f);
  scene.planeNode->SetBoolProperty("scalar visibility", false);
  scene.planeNode->SetBoolProperty("pickable", false);
  auto mapper = lumo::SurfaceVtkMapper3D::New();
  mapper->SetDataNode(scene.planeNode);
  scene.planeNode->SetMapper(lumo::DataNode::Standard3D, mapper);
  scene.storage->Add(scene.planeNode);
}

void
setUpWindow(lumo::BaseRenderer & renderer, int width, int height)
{
  vtkRenderWindow * window = renderer.GetRenderWindow();
  window->SetSize(width, height);
  window->SetMultiSamples(0);
  window->SetAlphaBitPlanes(1);
  vtkRenderer * r = renderer.GetVtkRenderer();
  r->SetBackground(0.10, 0.11, 0.13);
  r->SetBackground2(0.30, 0.32, 0.36);
  r->GradientBackgroundOn();
  // Translucent organ and territory surfaces sorted per pixel, so that vessels inside them show in depth order.
  r->UseDepthPeelingOn();
  r->SetMaximumNumberOfPeels(8);
  r->SetOcclusionRatio(0.0);
}

const std::vector<std::string> &
viewNames()
{
  static const std::vector<std::string> names{ "front", "back", "left", "right", "top", "bottom", "iso" };
  return names;
}

void
setView(lumo::BaseRenderer & renderer, const std::string & view)
{
  // Patient coordinates as in the images (LPS): x to the left, y to the back, z up. "front" looks at the face.
  double from[3] = { 0, -1, 0 };
  double up[3] = { 0, 0, 1 };
  if (view == "back")
  {
    from[1] = 1;
  }
  else if (view == "left")
  {
    from[0] = 1;
    from[1] = 0;
  }
  else if (view == "right")
  {
    from[0] = -1;
    from[1] = 0;
  }
  else if (view == "top" || view == "bottom")
  {
    from[1] = 0;
    from[2] = view == "top" ? 1 : -1;
    up[1] = -1;
    up[2] = 0;
  }
  else if (view == "iso")
  {
    from[0] = -1;
    from[1] = -1;
    from[2] = 1;
  }
  else if (view != "front")
  {
    throw Error("", "unknown view \"" + view + "\" (front, back, left, right, top, bottom or iso)");
  }
  renderer.Update();
  vtkRenderer * r = renderer.GetVtkRenderer();
  vtkCamera * camera = r->GetActiveCamera();
  camera->SetFocalPoint(0, 0, 0);
  camera->SetPosition(from);
  camera->SetViewUp(up);
  r->ResetCamera();
  camera->Zoom(1.15);
  r->ResetCameraClippingRange();
}
} // namespace arbo

#include "lumoCalyxSceneIO.h"

#include "lumoCalyxSceneReaderV1.h"

#include "lumoBaseRenderer.h"
#include "lumoBasePropertySerializer.h"
#include "lumoBoolProperty.h"
#include "lumoColorProperty.h"
#include "lumoColorPropertySerializer.h"
#include "lumoDoubleProperty.h"
#include "lumoFloatProperty.h"
#include "lumoGroupTagProperty.h"
#include "lumoImage.h"
#include "lumoImageIO.h"
#include "lumoIntProperty.h"
#include "lumoLevelWindowProperty.h"
#include "lumoLookupTableProperty.h"
#include "lumoMaterial.h"
#include "lumoNodePredicateAnd.h"
#include "lumoNodePredicateNot.h"
#include "lumoNodePredicateProperty.h"
#include "lumoPointSet.h"
#include "lumoPointSetWriter.h"
#include "lumoResectionProposalDescriptorPropertySerializer.h"
#include "lumoProgressBar.h"
#include "lumoRenderingManager.h"
#include "lumoStringProperty.h"
#include "lumoSurface.h"
#include "lumoSurfaceIO.h"
#include "lumoUIDGenerator.h"
#include "lumoVector3DProperty.h"
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeFileIOFactory.h"
#include "lumoVesselTreeFileWriter.h"
#include "lumoVesselTreeLookupTableProperty.h"
#include "lumoVesselTreeLookupTablePropertySerializerFactory.h"
#include "lumoVtkScalarModeProperty.h"

#include <tinyxml2.h>
#include <vtkLookupTable.h>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <map>

// Messages name this file relative to the repository (the build maps source paths so).
#define LUMO_SCENE_REPORT(message) Report(__FILE__, __LINE__, message)

namespace fs = std::filesystem;

namespace lumo
{
namespace
{
/** An exception's own text: for ITK's exceptions the description, without the location ITK puts before it. */
std::string
ExceptionText(const std::exception & e)
{
  const auto * itkException = dynamic_cast<const itk::ExceptionObject *>(&e);
  return itkException != nullptr ? itkException->GetDescription() : e.what();
}

std::string
ToLower(std::string text)
{
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

bool
EndsWithNoCase(const std::string & text, const std::string & suffix)
{
  return text.size() >= suffix.size() && ToLower(text.substr(text.size() - suffix.size())) == ToLower(suffix);
}

std::string
DirectoryOf(const std::string & filename)
{
  const std::string directory = fs::path(filename).parent_path().string();
  return directory.empty() ? "." : directory;
}

void
SetRGB(tinyxml2::XMLElement * element, const Color & color)
{
  element->SetAttribute("R", color[0]);
  element->SetAttribute("G", color[1]);
  element->SetAttribute("B", color[2]);
}

tinyxml2::XMLElement *
MinMax(tinyxml2::XMLDocument & document, const char * name, const double * range)
{
  tinyxml2::XMLElement * element = document.NewElement(name);
  element->SetAttribute("min", range[0]);
  element->SetAttribute("max", range[1]);
  return element;
}

/** The plain file names a scene document references in its own folder (others cannot be its own files). */
std::set<std::string>
ReferencedFiles(const tinyxml2::XMLDocument & document)
{
  std::set<std::string> files;
  for (const tinyxml2::XMLElement * object = document.FirstChildElement("SceneObject"); object != nullptr;
       object = object->NextSiblingElement("SceneObject"))
  {
    const char * file = object->Attribute("file");
    if (file != nullptr && *file != '\0' && std::string(file).find('/') == std::string::npos &&
        std::string(file) != "." && std::string(file) != "..")
    {
      files.insert(file);
    }
  }
  return files;
}

/** The files that other scene files of the folder reference (read quietly, within the same limits). */
std::set<std::string>
FilesOfOtherScenes(const std::string & directory, const std::string & sceneFile)
{
  std::set<std::string> files;
  std::error_code error;
  const fs::path self = fs::weakly_canonical(sceneFile, error);
  for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error))
  {
    const fs::path path = it->path();
    const std::string name = path.filename().string();
    if (name.rfind(".~", 0) == 0 || !(EndsWithNoCase(name, ".rs")) || !it->is_regular_file(error))
    {
      continue;
    }
    std::error_code ignored;
    if (fs::weakly_canonical(path, ignored) == self ||
        fs::file_size(path, ignored) > CalyxSceneIO::MaximumSceneFileSize)
    {
      continue;
    }
    tinyxml2::XMLDocument document;
    if (document.LoadFile(path.string().c_str()) == tinyxml2::XML_SUCCESS)
    {
      const std::set<std::string> theirs = ReferencedFiles(document);
      files.insert(theirs.begin(), theirs.end());
    }
  }
  return files;
}
} // namespace

CalyxSceneIO::CalyxSceneIO()
{
  // Scenes hold .ves files and vessel colour tables whatever the application registered: make sure both are known.
  VesselTreeFileIOFactory::RegisterOneFactory();
  VesselTreeLookupTablePropertySerializerFactory::RegisterOneFactory();
}

CalyxSceneIO::~CalyxSceneIO() = default;

void
CalyxSceneIO::Report(const char * sourceFile, int line, const std::string & message)
{
  std::cout << sourceFile << " l. " << line << (message.empty() || message[0] == ':' ? "" : ": ") << message
            << std::endl;
}

void
CalyxSceneIO::AppendDeclarationAndVersion(tinyxml2::XMLDocument & document)
{
  // tinyxml2 writes the declaration's text as given: version only, as an empty encoding and standalone leave out.
  document.InsertEndChild(document.NewDeclaration("xml version=\"1.0\""));
  tinyxml2::XMLElement * version = document.NewElement("Version");
  version->SetAttribute("Writer", __FILE__);
  version->SetAttribute("CVSRevision", "$Revision$");
  version->SetAttribute("FileVersion", 1);
  document.InsertEndChild(version);
}

bool
CalyxSceneIO::SaveScene(DataStorage * storage, const std::string & filename)
{
  NodePredicateProperty::Pointer isHelper = NodePredicateProperty::New("helper object", BoolProperty::New(true));
  NodePredicateNot::Pointer notHelper = NodePredicateNot::New(isHelper);
  return this->SaveScene(storage, notHelper, filename);
}

bool
CalyxSceneIO::SaveScene(DataStorage * storage, const NodePredicateBase * predicate, const std::string & filename)
{
  if (filename.empty())
  {
    LUMO_SCENE_REPORT(": No filename given. Not possible to save scene.");
    return false;
  }
  if (storage == nullptr)
  {
    return false;
  }

  NodePredicateProperty::Pointer managed = NodePredicateProperty::New("IsDataStoreManaged");
  NodePredicateAnd::Pointer condition = NodePredicateAnd::New();
  if (predicate != nullptr)
  {
    condition->AddPredicate(predicate);
  }
  condition->AddPredicate(managed);
  DataStorage::SetOfObjects::ConstPointer subset = storage->GetSubset(condition);
  LUMO_SCENE_REPORT(std::to_string(subset->Size()) + " objects to save.");

  UIDGenerator idGenerator("OBJECT_", 8);
  std::map<const DataNode *, std::string> ids;
  std::map<const DataNode *, std::vector<const DataNode *>> sources;
  for (const DataNode::Pointer & node : *subset)
  {
    if (node.IsNull())
    {
      LUMO_SCENE_REPORT("Unlikely event that we get a NULL pointer as an object for saving.");
      continue;
    }
    ids[node] = idGenerator.GetUID();
    DataStorage::SetOfObjects::ConstPointer parents = storage->GetSources(node);
    for (const DataNode::Pointer & parent : *parents)
    {
      sources[node].push_back(parent.GetPointer());
    }
  }
  if (subset->Size() == 0)
  {
    LUMO_SCENE_REPORT(": There's nothing in this scene! Won't save an empty file.");
    return false;
  }

  std::error_code error;
  const std::string directory = DirectoryOf(filename);
  const bool replacing = fs::exists(filename, error);
  m_StagingPrefix = ".~" + UIDGenerator("", 8).GetUID() + "_";
  m_StagedFiles.clear();
  m_StagedGuards.clear();
  m_UsedFileNames.clear();
  m_OwnedFileNames.clear();
  m_DataFileFailed = false;
  // The scene file's own name is taken: no data file may replace it.
  m_UsedFileNames.insert(ToLower(fs::path(filename).filename().string()));

  auto discardStagedFiles = [this] {
    for (const auto & [temporary, final] : m_StagedFiles)
    {
      std::error_code ignored;
      fs::remove(temporary, ignored);
    }
    m_StagedFiles.clear();
    m_StagedGuards.clear();
    m_StagingPrefix.clear();
  };

  // The files the previous version of this scene references are its own: they may be replaced, and those the new
  // version no longer names are removed after the save. Any other file of the folder (an input beside the scene,
  // another scene's file) is never written over: data files take other names.
  std::set<std::string> previousFiles;
  if (replacing)
  {
    tinyxml2::XMLDocument previous;
    if (fs::file_size(filename, error) <= MaximumSceneFileSize && !error &&
        previous.LoadFile(filename.c_str()) == tinyxml2::XML_SUCCESS)
    {
      previousFiles = ReferencedFiles(previous);
    }
  }
  m_OwnedFileNames = previousFiles;

  tinyxml2::XMLDocument document;
  this->AppendDeclarationAndVersion(document);
  ProgressBar::GetInstance()->AddStepsToDo(static_cast<unsigned int>(subset->Size()));

  const std::vector<vtkRenderWindow *> & windows = RenderingManager::GetInstance()->GetAllRegisteredRenderWindows();
  for (const DataNode::Pointer & node : *subset)
  {
    if (node.IsNull())
    {
      LUMO_SCENE_REPORT("Empty node found during scene output. FIX IT! Bug to lumoarbo-developers@lists.lumo.dev");
      continue;
    }
    tinyxml2::XMLElement * element = this->SaveBaseData(document, node, directory);
    if (replacing && m_DataFileFailed)
    {
      // Saving over a scene: a half-written scene would replace a whole one.
      LUMO_SCENE_REPORT("Scene " + filename +
                        " not saved: a data file could not be written; the previous scene is kept.");
      discardStagedFiles();
      ProgressBar::GetInstance()->Progress(static_cast<unsigned int>(subset->Size()));
      return false;
    }
    if (element == nullptr)
    {
      LUMO_SCENE_REPORT("Some problems to write this node:");
      ProgressBar::GetInstance()->Progress(1);
      continue;
    }
    element->SetAttribute("DependenyUID", ids[node].c_str());
    for (const DataNode * source : sources[node])
    {
      auto id = ids.find(source);
      if (id != ids.end())
      {
        tinyxml2::XMLElement * sourceElement = document.NewElement("Source");
        sourceElement->SetAttribute("UID", id->second.c_str());
        element->InsertEndChild(sourceElement);
      }
    }
    for (vtkRenderWindow * window : windows)
    {
      BaseRenderer * renderer = BaseRenderer::GetInstance(window);
      if (renderer == nullptr || !node->HasPropertyList(renderer->GetName()))
      {
        continue;
      }
      const PropertyList * list = node->GetPropertyList(renderer->GetName());
      if (!list->IsEmpty())
      {
        element->InsertEndChild(SerializeImportantPropertiesFromList(document, list, renderer->GetName()));
      }
    }
    const PropertyList * general = node->GetPropertyList();
    if (!general->IsEmpty())
    {
      element->InsertEndChild(SerializeImportantPropertiesFromList(document, general, ""));
    }
    document.InsertEndChild(element);
    ProgressBar::GetInstance()->Progress(1);
  }

  const std::string sceneName = fs::path(filename).filename().string();
  const std::string stagedScene = directory + "/" + m_StagingPrefix + sceneName;
  m_StagedGuards.push_back(std::make_unique<TemporaryFileGuard>(stagedScene));
  if (!this->WriteDocument(document, stagedScene))
  {
    LUMO_SCENE_REPORT("Could not write the scene file " + filename + "; the previous scene is kept.");
    fs::remove(stagedScene, error);
    discardStagedFiles();
    return false;
  }

  // Commit: move replaced files aside, the new ones into place, then the scene file; undo on any failure. An
  // interrupt waits until the scene is whole again, old or new.
  const TemporaryFileGuard::DeferInterrupts deferred;
  std::vector<std::pair<std::string, std::string>> backups; // (backup, final)
  std::vector<std::string> placed;
  bool committed = true;
  for (const auto & [temporary, final] : m_StagedFiles)
  {
    if (fs::exists(final, error))
    {
      const std::string backup = directory + "/" + m_StagingPrefix + "previous_" + fs::path(final).filename().string();
      fs::rename(final, backup, error);
      if (error)
      {
        committed = false;
        break;
      }
      backups.emplace_back(backup, final);
    }
    fs::rename(temporary, final, error);
    if (error)
    {
      committed = false;
      break;
    }
    placed.push_back(final);
  }
  if (committed)
  {
    fs::rename(stagedScene, filename, error);
    committed = !error;
  }
  if (!committed)
  {
    LUMO_SCENE_REPORT("Could not put the scene " + filename + " in place (" + error.message() +
                      "); the previous scene is kept.");
    std::error_code ignored;
    for (const std::string & final : placed)
    {
      fs::remove(final, ignored);
    }
    for (const auto & [backup, final] : backups)
    {
      fs::rename(backup, final, ignored);
    }
    fs::remove(stagedScene, ignored);
    discardStagedFiles();
    return false;
  }
  for (const auto & [backup, final] : backups)
  {
    fs::remove(backup, error);
  }
  // Syncing the folder makes the new scene's names durable and commits the removal of the replaced files now:
  // left to the file system, freeing large files stalls the writes of the next save (about 2x its time).
  {
    const int folder = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0)
    {
      ::fsync(folder);
      ::close(folder);
    }
  }

  if (!previousFiles.empty())
  {
    const std::set<std::string> current = ReferencedFiles(document);
    const std::set<std::string> elsewhere = FilesOfOtherScenes(directory, filename);
    for (const std::string & file : previousFiles)
    {
      const fs::path path = fs::path(directory) / file;
      if (current.count(file) == 0 && elsewhere.count(file) == 0 &&
          fs::is_regular_file(fs::symlink_status(path, error)))
      {
        fs::remove(path, error);
      }
    }
  }
  m_StagedFiles.clear();
  m_StagedGuards.clear();
  m_StagingPrefix.clear();
  return true;
}

tinyxml2::XMLElement *
CalyxSceneIO::SaveBaseData(tinyxml2::XMLDocument & document, DataNode * node, const std::string & directory)
{
  if (node == nullptr || node->GetData() == nullptr)
  {
    return nullptr;
  }
  BaseData * data = node->GetData();
  UIDGenerator generator("CalyxSceneObject_", 5);
  std::string name = MakeSafeFileName(node->GetName());
  if (name.empty())
  {
    name = generator.GetUID();
  }

  tinyxml2::XMLElement * element = document.NewElement("SceneObject");
  std::string file;
  if (auto * image = dynamic_cast<Image *>(data))
  {
    element->SetAttribute("type", "image");
    file = this->SaveImage(image, name, directory);
  }
  else if (auto * surface = dynamic_cast<Surface *>(data))
  {
    element->SetAttribute("type", "surface");
    file = this->SaveSurface(surface, name, directory);
  }
  else if (auto * pointSet = dynamic_cast<PointSet *>(data))
  {
    element->SetAttribute("type", "pointset");
    file = this->SavePointSet(pointSet, name, directory);
  }
  else if (auto * tree = dynamic_cast<VesselTreeData *>(data))
  {
    element->SetAttribute("type", "vesseltree");
    file = this->SaveVesselTreeData(tree, name, directory);
  }
  if (!file.empty())
  {
    element->SetAttribute("file", file.c_str());
  }
  return element;
}

std::string
CalyxSceneIO::UniqueFileName(const std::string & name, const std::string & extension, const std::string & directory)
{
  // The stem keeps an accepted extension at its end: uniqueness numbers go before it.
  std::string stem = name;
  std::string suffix = extension;
  if (!extension.empty() && EndsWithNoCase(name, extension))
  {
    stem = name.substr(0, name.size() - extension.size());
    suffix = name.substr(name.size() - extension.size());
  }
  // Taken: a name this save already gave, or a file of the folder that the scene does not own.
  auto taken = [this, &directory](const std::string & file) {
    if (m_UsedFileNames.count(ToLower(file)) != 0)
    {
      return true;
    }
    std::error_code ignored;
    return m_OwnedFileNames.count(file) == 0 &&
           fs::symlink_status(fs::path(directory) / file, ignored).type() != fs::file_type::not_found;
  };
  std::string candidate = stem + suffix;
  for (int n = 2; taken(candidate); ++n)
  {
    candidate = stem + "_" + std::to_string(n) + suffix;
  }
  m_UsedFileNames.insert(ToLower(candidate));
  return candidate;
}

std::string
CalyxSceneIO::SaveDataFile(BaseData * data,
                           const std::string & name,
                           const std::string & directory,
                           const std::vector<std::string> & acceptedExtensions,
                           const char * exceptionTail)
{
  std::string extension = acceptedExtensions.front();
  for (const std::string & accepted : acceptedExtensions)
  {
    if (EndsWithNoCase(name, accepted))
    {
      extension = accepted;
    }
  }
  const std::string fileName = EndsWithNoCase(name, extension)
                                 ? this->UniqueFileName(name, extension, directory)
                                 : this->UniqueFileName(name + extension, extension, directory);
  const std::string finalPath = directory + "/" + fileName;
  const std::string path = m_StagingPrefix.empty() ? finalPath : directory + "/" + m_StagingPrefix + fileName;
  if (!m_StagingPrefix.empty())
  {
    m_StagedGuards.push_back(std::make_unique<TemporaryFileGuard>(path));
  }
  try
  {
    this->WriteDataFile(data, path);
  }
  catch (const std::exception & e)
  {
    LUMO_SCENE_REPORT("Error during attempt to write '" + name + exceptionTail + " " + ExceptionText(e));
    std::error_code ignored;
    fs::remove(path, ignored);
    m_DataFileFailed = true;
    return "";
  }
  if (!m_StagingPrefix.empty())
  {
    m_StagedFiles.emplace_back(path, finalPath);
  }
  return fileName;
}

std::string
CalyxSceneIO::SaveImage(Image * image, const std::string & name, const std::string & directory)
{
  return this->SaveDataFile(image, name, directory, { ".pic" }, "'.pic Exception says:");
}

std::string
CalyxSceneIO::SaveSurface(Surface * surface, const std::string & name, const std::string & directory)
{
  return this->SaveDataFile(surface, name, directory, { ".vtp", ".vtk", ".stl" }, "'.vtp Exception says:");
}

std::string
CalyxSceneIO::SavePointSet(PointSet * pointSet, const std::string & name, const std::string & directory)
{
  return this->SaveDataFile(pointSet, name, directory, { ".mps" }, "'.mps Exception says:");
}

std::string
CalyxSceneIO::SaveVesselTreeData(VesselTreeData * tree, const std::string & name, const std::string & directory)
{
  return this->SaveDataFile(tree, name, directory, { ".ves" }, "' Exception says:");
}

void
CalyxSceneIO::WriteDataFile(BaseData * data, const std::string & path)
{
  if (auto * image = dynamic_cast<Image *>(data))
  {
    WriteImageFile(image, path);
  }
  else if (auto * surface = dynamic_cast<Surface *>(data))
  {
    WriteSurfaceFile(surface, path);
  }
  else if (auto * pointSet = dynamic_cast<PointSet *>(data))
  {
    PointSetWriter::Pointer writer = PointSetWriter::New();
    writer->SetFileName(path.c_str());
    writer->SetInputData(pointSet);
    writer->Write();
    if (!writer->GetSuccess())
    {
      throw itk::ExceptionObject(__FILE__, __LINE__, "PointSetWriter could (somehow) not write to disk.", ITK_LOCATION);
    }
  }
  else if (auto * tree = dynamic_cast<VesselTreeData *>(data))
  {
    VesselTreeFileWriter::Pointer writer = VesselTreeFileWriter::New();
    writer->SetFileName(path.c_str());
    writer->SetInputVesselTree(tree);
    writer->Write();
    if (!writer->GetSuccess())
    {
      throw itk::ExceptionObject(
        __FILE__, __LINE__, "VesselTreeFileWriter could (somehow) not write to disk.", ITK_LOCATION);
    }
  }
}

bool
CalyxSceneIO::WriteDocument(tinyxml2::XMLDocument & document, const std::string & path)
{
  return document.SaveFile(path.c_str()) == tinyxml2::XML_SUCCESS;
}

std::string
CalyxSceneIO::MakeSafeFileName(const std::string & name)
{
  std::string safe;
  safe.reserve(name.size());
  for (char c : name)
  {
    const auto u = static_cast<unsigned char>(c);
    const bool forbidden = u < 0x20 || u == 0x7f || std::string("/\\:*?\"<>|").find(c) != std::string::npos;
    safe += forbidden ? '_' : c;
  }
  const std::size_t first = safe.find_first_not_of(". ");
  safe = first == std::string::npos ? "" : safe.substr(first);
  if (safe.size() > MaximumFileNameStemLength)
  {
    std::size_t cut = MaximumFileNameStemLength;
    // Do not split a UTF-8 sequence: back off over continuation bytes.
    while (cut > 0 && (static_cast<unsigned char>(safe[cut]) & 0xC0) == 0x80)
    {
      --cut;
    }
    safe.resize(cut);
  }
  return safe;
}

// -- properties --------------------------------------------------------------------------------------------------

tinyxml2::XMLElement *
CalyxSceneIO::SerializeBoolProperty(tinyxml2::XMLDocument & document, const BoolProperty * property)
{
  if (property == nullptr)
  {
    return nullptr;
  }
  tinyxml2::XMLElement * element = document.NewElement("BoolProperty");
  element->SetAttribute("value", property->GetValue() ? "true" : "false");
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeStringProperty(tinyxml2::XMLDocument & document, const StringProperty * property)
{
  if (property == nullptr)
  {
    return nullptr;
  }
  tinyxml2::XMLElement * element = document.NewElement("StringProperty");
  element->SetAttribute("value", property->GetValue().c_str());
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeIntProperty(tinyxml2::XMLDocument & document, const IntProperty * property)
{
  if (property == nullptr)
  {
    return nullptr;
  }
  tinyxml2::XMLElement * element = document.NewElement("IntProperty");
  element->SetAttribute("value", property->GetValue());
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeFloatProperty(tinyxml2::XMLDocument & document, const FloatProperty * property)
{
  if (property == nullptr)
  {
    return nullptr;
  }
  tinyxml2::XMLElement * element = document.NewElement("FloatProperty");
  element->SetAttribute("value", property->GetValue());
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeDoubleProperty(tinyxml2::XMLDocument & document, const DoubleProperty * property)
{
  if (property == nullptr)
  {
    return nullptr;
  }
  tinyxml2::XMLElement * element = document.NewElement("DoubleProperty");
  element->SetAttribute("value", property->GetValue());
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeVector3DProperty(tinyxml2::XMLDocument & document, const Vector3DProperty * property)
{
  if (property == nullptr)
  {
    return nullptr;
  }
  tinyxml2::XMLElement * element = document.NewElement("Vector3DProperty");
  element->SetAttribute("x", property->GetValue()[0]);
  element->SetAttribute("y", property->GetValue()[1]);
  element->SetAttribute("z", property->GetValue()[2]);
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeColorProperty(tinyxml2::XMLDocument & document, const ColorProperty * property)
{
  if (property == nullptr)
  {
    return nullptr;
  }
  return ColorPropertySerializer::ColorToXML(*property, document);
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeMaterial(tinyxml2::XMLDocument & document, const Material * material)
{
  static const char * const interpolations[] = { "flat", "gouraud", "phong" };
  static const char * const representations[] = { "points", "wireframe", "surface" };
  if (material == nullptr)
  {
    return nullptr;
  }
  const int interpolation = static_cast<int>(material->GetInterpolation());
  const int representation = static_cast<int>(material->GetRepresentation());
  if (interpolation < 0 || interpolation > 2 || representation < 0 || representation > 2)
  {
    return nullptr; // no partial material
  }
  tinyxml2::XMLElement * element = document.NewElement("Material");
  element->SetAttribute("ColorCoefficient", material->GetColorCoefficient());
  element->SetAttribute("SpecularCoefficient", material->GetSpecularCoefficient());
  element->SetAttribute("SpecularPower", material->GetSpecularPower());
  element->SetAttribute("Opacity", material->GetOpacity());
  tinyxml2::XMLElement * color = document.NewElement("Color");
  SetRGB(color, material->GetColor());
  element->InsertEndChild(color);
  tinyxml2::XMLElement * specular = document.NewElement("SpecularColor");
  SetRGB(specular, material->GetSpecularColor());
  element->InsertEndChild(specular);
  element->SetAttribute("Interpolation", interpolations[interpolation]);
  element->SetAttribute("Representation", representations[representation]);
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeLevelWindowProperty(tinyxml2::XMLDocument & document, const LevelWindowProperty * property)
{
  if (property == nullptr)
  {
    return nullptr;
  }
  const LevelWindow & levelWindow = property->GetLevelWindow();
  tinyxml2::XMLElement * element = document.NewElement("LevelWindowProperty");
  element->SetAttribute("fixed", levelWindow.IsFixed() ? "true" : "false");
  tinyxml2::XMLElement * current = document.NewElement("CurrentSettings");
  current->SetAttribute("level", levelWindow.GetLevel());
  current->SetAttribute("window", levelWindow.GetWindow());
  element->InsertEndChild(current);
  tinyxml2::XMLElement * defaults = document.NewElement("DefaultSettings");
  defaults->SetAttribute("level", levelWindow.GetDefaultLevel());
  defaults->SetAttribute("window", levelWindow.GetDefaultWindow());
  element->InsertEndChild(defaults);
  const double range[2] = { levelWindow.GetRangeMin(), levelWindow.GetRangeMax() };
  element->InsertEndChild(MinMax(document, "CurrentRange", range));
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeLookupTableProperty(tinyxml2::XMLDocument & document, const LookupTableProperty * property)
{
  if (property == nullptr || property->GetLookupTable() == nullptr)
  {
    return nullptr;
  }
  vtkLookupTable * table = property->GetLookupTable()->GetVtkLookupTable();
  tinyxml2::XMLElement * element = document.NewElement("LookupTableProperty");
  element->SetAttribute("NumberOfColors", static_cast<int>(table->GetNumberOfTableValues()));
  element->SetAttribute("Scale", table->GetScale());
  element->SetAttribute("Ramp", table->GetRamp());
  element->InsertEndChild(MinMax(document, "HueRange", table->GetHueRange()));
  element->InsertEndChild(MinMax(document, "ValueRange", table->GetValueRange()));
  element->InsertEndChild(MinMax(document, "SaturationRange", table->GetSaturationRange()));
  element->InsertEndChild(MinMax(document, "AlphaRange", table->GetAlphaRange()));
  element->InsertEndChild(MinMax(document, "TableRange", table->GetTableRange()));
  tinyxml2::XMLElement * entries = document.NewElement("Table");
  for (vtkIdType i = 0; i < table->GetNumberOfTableValues(); ++i)
  {
    double rgba[4];
    table->GetTableValue(i, rgba);
    tinyxml2::XMLElement * entry = document.NewElement("RgbaColor");
    entry->SetAttribute("R", rgba[0]);
    entry->SetAttribute("G", rgba[1]);
    entry->SetAttribute("B", rgba[2]);
    entry->SetAttribute("A", rgba[3]);
    entries->InsertEndChild(entry);
  }
  element->InsertEndChild(entries);
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeVesselTreeLookupTableProperty(tinyxml2::XMLDocument & document,
                                                     const VesselTreeLookupTableProperty * property)
{
  if (property == nullptr)
  {
    return nullptr;
  }
  BasePropertySerializer::Pointer serializer = BasePropertySerializer::CreateForProperty(property->GetNameOfClass());
  if (serializer.IsNull())
  {
    return nullptr;
  }
  serializer->SetProperty(property);
  tinyxml2::XMLElement * element = serializer->Serialize(document);
  if (element != nullptr)
  {
    // In a scene the table's element is named after the property class; its content is the table's.
    element->SetName("VesselTreeLookupTableProperty");
  }
  return element;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeVtkScalarModeProperty(tinyxml2::XMLDocument &, const VtkScalarModeProperty *)
{
  return nullptr;
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeGroupTagProperty(tinyxml2::XMLDocument & document, const GroupTagProperty * property)
{
  return property == nullptr ? nullptr : document.NewElement("GroupTagProperty");
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeResectionProposalDescriptorProperty(tinyxml2::XMLDocument & document,
                                                           const ResectionProposalDescriptorProperty * property)
{
  return property == nullptr ? nullptr
                             : ResectionProposalDescriptorPropertySerializer::PropertyToXML(*property, document);
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeProperty(tinyxml2::XMLDocument & document, const BaseProperty * property)
{
  if (auto * p = dynamic_cast<const BoolProperty *>(property))
  {
    return SerializeBoolProperty(document, p);
  }
  if (auto * p = dynamic_cast<const StringProperty *>(property))
  {
    return SerializeStringProperty(document, p);
  }
  if (auto * p = dynamic_cast<const IntProperty *>(property))
  {
    return SerializeIntProperty(document, p);
  }
  if (auto * p = dynamic_cast<const FloatProperty *>(property))
  {
    return SerializeFloatProperty(document, p);
  }
  if (auto * p = dynamic_cast<const DoubleProperty *>(property))
  {
    return SerializeDoubleProperty(document, p);
  }
  if (auto * p = dynamic_cast<const Vector3DProperty *>(property))
  {
    return SerializeVector3DProperty(document, p);
  }
  if (auto * p = dynamic_cast<const Material *>(property))
  {
    return SerializeMaterial(document, p);
  }
  if (auto * p = dynamic_cast<const ColorProperty *>(property))
  {
    return SerializeColorProperty(document, p);
  }
  if (auto * p = dynamic_cast<const LevelWindowProperty *>(property))
  {
    return SerializeLevelWindowProperty(document, p);
  }
  if (auto * p = dynamic_cast<const LookupTableProperty *>(property))
  {
    return SerializeLookupTableProperty(document, p);
  }
  if (auto * p = dynamic_cast<const VesselTreeLookupTableProperty *>(property))
  {
    return SerializeVesselTreeLookupTableProperty(document, p);
  }
  if (auto * p = dynamic_cast<const VtkScalarModeProperty *>(property))
  {
    return SerializeVtkScalarModeProperty(document, p);
  }
  if (auto * p = dynamic_cast<const GroupTagProperty *>(property))
  {
    return SerializeGroupTagProperty(document, p);
  }
  if (auto * p = dynamic_cast<const ResectionProposalDescriptorProperty *>(property))
  {
    return SerializeResectionProposalDescriptorProperty(document, p);
  }
  return nullptr;
}

namespace
{
tinyxml2::XMLElement *
SerializeList(tinyxml2::XMLDocument & document,
              const PropertyList * list,
              const std::string & renderWindowName,
              const std::set<std::string> * keys)
{
  tinyxml2::XMLElement * element = document.NewElement("PropertyList");
  if (!renderWindowName.empty())
  {
    element->SetAttribute("RenderWindow", renderWindowName.c_str());
  }
  if (list == nullptr)
  {
    return element;
  }
  for (const auto & [key, property] : *list->GetMap())
  {
    if (keys != nullptr && keys->count(key) == 0)
    {
      continue;
    }
    tinyxml2::XMLElement * child = CalyxSceneIO::SerializeProperty(document, property);
    if (child != nullptr)
    {
      child->SetAttribute("name", key.c_str());
      element->InsertEndChild(child);
    }
  }
  return element;
}
} // namespace

tinyxml2::XMLElement *
CalyxSceneIO::SerializeImportantPropertiesFromList(tinyxml2::XMLDocument & document,
                                                   const PropertyList * list,
                                                   const std::string & renderWindowName)
{
  return SerializeList(document, list, renderWindowName, nullptr);
}

tinyxml2::XMLElement *
CalyxSceneIO::SerializeImportantVisualizationPropertiesFromList(tinyxml2::XMLDocument & document,
                                                                const PropertyList * list,
                                                                const std::string & renderWindowName)
{
  return SerializeList(document, list, renderWindowName, &VisualPropertyKeys());
}

const std::set<std::string> &
CalyxSceneIO::VisualPropertyKeys()
{
  static const std::set<std::string> keys{ "color",
                                           "color mode",
                                           "color_coefficient",
                                           "interpolation",
                                           "layer",
                                           "line width",
                                           "material",
                                           "opacity",
                                           "representation",
                                           "scalar mode",
                                           "scalar visibility",
                                           "specular_coefficient",
                                           "specular_color",
                                           "specular_power",
                                           "wireframe line width",
                                           "LookupTable",
                                           "TransferFunction",
                                           "binary",
                                           "levelwindow",
                                           "ResectionProposalDescriptor",
                                           "outline binary",
                                           "texture interpolation",
                                           "reslice interpolation",
                                           "volumerendering",
                                           "showVolume",
                                           "use color",
                                           "show contour",
                                           "contoursize",
                                           "pointsize",
                                           "show points",
                                           "show distances",
                                           "show angles",
                                           "show distant lines",
                                           "label",
                                           "close contour",
                                           "name" };
  return keys;
}

// -- material descriptions ---------------------------------------------------------------------------------------

bool
CalyxSceneIO::SaveMaterialDescription(DataNode * node, const std::string & filename)
{
  if (filename.empty())
  {
    LUMO_SCENE_REPORT(": No filename given. Not possible to save material description.");
    return false;
  }
  if (node == nullptr)
  {
    LUMO_SCENE_REPORT("Unlikely event that we get a NULL pointer as an object for saving.");
    return false;
  }
  tinyxml2::XMLDocument document;
  this->AppendDeclarationAndVersion(document);
  for (vtkRenderWindow * window : RenderingManager::GetInstance()->GetAllRegisteredRenderWindows())
  {
    BaseRenderer * renderer = BaseRenderer::GetInstance(window);
    if (renderer != nullptr && node->HasPropertyList(renderer->GetName()) &&
        !node->GetPropertyList(renderer->GetName())->IsEmpty())
    {
      document.InsertEndChild(SerializeImportantVisualizationPropertiesFromList(
        document, node->GetPropertyList(renderer->GetName()), renderer->GetName()));
    }
  }
  tinyxml2::XMLElement * general =
    SerializeImportantVisualizationPropertiesFromList(document, node->GetPropertyList(), "");
  if (general == nullptr)
  {
    LUMO_SCENE_REPORT("Some problems to write this node:");
  }
  else
  {
    document.InsertEndChild(general);
  }
  return this->WriteDocument(document, filename);
}

bool
CalyxSceneIO::LoadMaterialDescription(DataNode * node, const std::string & filename)
{
  if (filename.empty())
  {
    LUMO_SCENE_REPORT(": No filename given. Not possible to load material description.");
    return false;
  }
  tinyxml2::XMLDocument document;
  if (!LoadSceneDocument(filename, document))
  {
    return false;
  }
  int version = 1;
  if (const tinyxml2::XMLElement * element = document.FirstChildElement("Version"))
  {
    if (element->QueryIntAttribute("FileVersion", &version) != tinyxml2::XML_SUCCESS)
    {
      version = 1;
      LUMO_SCENE_REPORT("Scene file " + filename + " does not contain version information! Trying version 1 format.");
    }
  }
  if (version != 1)
  {
    LUMO_SCENE_REPORT(": Version of scene file (" + std::to_string(version) + ") not supported.");
    return false;
  }
  if (node == nullptr)
  {
    return false;
  }
  CalyxSceneReaderV1::Pointer reader = CalyxSceneReaderV1::New();
  for (const tinyxml2::XMLElement * list = document.FirstChildElement("PropertyList"); list != nullptr;
       list = list->NextSiblingElement("PropertyList"))
  {
    reader->ApplyPropertyList(node, list);
  }
  return true;
}

// -- loading -----------------------------------------------------------------------------------------------------

bool
CalyxSceneIO::LoadSceneDocument(const std::string & path, tinyxml2::XMLDocument & document)
{
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);
  if (!error && size > MaximumSceneFileSize)
  {
    LUMO_SCENE_REPORT("Scene file " + path + " refused: it is larger than 64 MiB (" + std::to_string(size) +
                      " bytes).");
    return false;
  }
  const tinyxml2::XMLError result = document.LoadFile(path.c_str());
  if (result == tinyxml2::XML_ELEMENT_DEPTH_EXCEEDED)
  {
    LUMO_SCENE_REPORT("Scene file " + path + " refused: its XML is nested deeper than " +
                      std::to_string(TINYXML2_MAX_ELEMENT_DEPTH) + " levels.");
    return false;
  }
  if (result != tinyxml2::XML_SUCCESS)
  {
    LUMO_SCENE_REPORT("Could not open/read/parse " + path);
    return false;
  }
  std::size_t count = 0;
  for (const tinyxml2::XMLElement * object = document.FirstChildElement("SceneObject"); object != nullptr;
       object = object->NextSiblingElement("SceneObject"))
  {
    if (++count > MaximumNumberOfSceneObjects)
    {
      LUMO_SCENE_REPORT("Scene file " + path + " refused: it holds more than " +
                        std::to_string(MaximumNumberOfSceneObjects) + " scene objects.");
      document.Clear();
      return false;
    }
  }
  return true;
}

bool
CalyxSceneIO::LoadScene(DataStorage * storage, const std::string & directory, const std::string & filename)
{
  CalyxSceneReaderV1::Pointer reader = CalyxSceneReaderV1::New();
  return this->LoadScene(storage, directory, filename, reader);
}

bool
CalyxSceneIO::LoadScene(DataStorage * storage,
                        const std::string & directory,
                        const std::string & filename,
                        CalyxSceneReaderV1 * reader)
{
  if (filename.empty())
  {
    LUMO_SCENE_REPORT(": No filename given. Not possible to load scene.");
    return false;
  }
  const std::string workingDirectory = directory.empty() ? "." : directory;
  const std::string path = workingDirectory + "/" + filename;
  tinyxml2::XMLDocument document;
  if (!LoadSceneDocument(path, document))
  {
    return false;
  }
  int version = 1;
  if (const tinyxml2::XMLElement * element = document.FirstChildElement("Version"))
  {
    if (element->QueryIntAttribute("FileVersion", &version) != tinyxml2::XML_SUCCESS)
    {
      version = 1;
      LUMO_SCENE_REPORT("Scene file " + path + " does not contain version information! Trying version 1 format.");
    }
  }
  if (version != 1)
  {
    LUMO_SCENE_REPORT(": Version of scene file (" + std::to_string(version) + ") not supported.");
    return false;
  }
  if (reader == nullptr)
  {
    return false;
  }
  return reader->LoadScene(document, workingDirectory, storage);
}

void
CalyxSceneIO::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "StagingPrefix: " << m_StagingPrefix << std::endl;
  os << indent << "StagedFiles: " << m_StagedFiles.size() << std::endl;
}
} // namespace lumo

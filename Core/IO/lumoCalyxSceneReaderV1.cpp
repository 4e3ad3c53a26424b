#include "lumoCalyxSceneReaderV1.h"

#include "lumoCalyxDataNodeFactory.h"
#include "lumoCalyxSceneIO.h"

#include "lumoBasePropertySerializer.h"
#include "lumoBoolProperty.h"
#include "lumoColorProperty.h"
#include "lumoColorPropertySerializer.h"
#include "lumoDoubleProperty.h"
#include "lumoFloatProperty.h"
#include "lumoGroupTagProperty.h"
#include "lumoIntProperty.h"
#include "lumoLevelWindowProperty.h"
#include "lumoLookupTableProperty.h"
#include "lumoMaterial.h"
#include "lumoProgressBar.h"
#include "lumoResectionProposalDescriptorPropertySerializer.h"
#include "lumoStringProperty.h"
#include "lumoVector3DProperty.h"

#include <tinyxml2.h>
#include <vtkLookupTable.h>
#include <vtkNew.h>

#include <cstring>
#include <filesystem>
#include <iterator>
#include <set>

// Messages name this file relative to the repository (the build maps source paths so).
#define LUMO_SCENE_REPORT(message) CalyxSceneIO::Report(__FILE__, __LINE__, message)

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

bool
ReadRGB(const tinyxml2::XMLElement * element, Color & color)
{
  float r = 0, g = 0, b = 0;
  if (element == nullptr || element->QueryFloatAttribute("R", &r) != tinyxml2::XML_SUCCESS ||
      element->QueryFloatAttribute("G", &g) != tinyxml2::XML_SUCCESS ||
      element->QueryFloatAttribute("B", &b) != tinyxml2::XML_SUCCESS)
  {
    return false;
  }
  color.Set(r, g, b);
  return true;
}

bool
ReadMinMax(const tinyxml2::XMLElement * parent, const char * name, double range[2])
{
  const tinyxml2::XMLElement * element = parent->FirstChildElement(name);
  return element != nullptr && element->QueryDoubleAttribute("min", &range[0]) == tinyxml2::XML_SUCCESS &&
         element->QueryDoubleAttribute("max", &range[1]) == tinyxml2::XML_SUCCESS;
}

int
IndexOfWord(const char * word, const char * const words[3])
{
  for (int i = 0; word != nullptr && i < 3; ++i)
  {
    if (std::strcmp(word, words[i]) == 0)
    {
      return i;
    }
  }
  return -1;
}

BaseProperty::Pointer
DecodeMaterial(const tinyxml2::XMLElement * element)
{
  static const char * const interpolations[] = { "flat", "gouraud", "phong" };
  static const char * const representations[] = { "points", "wireframe", "surface" };
  double colorCoefficient = 0, specularCoefficient = 0, specularPower = 0, opacity = 0;
  Color color, specular;
  const int interpolation = IndexOfWord(element->Attribute("Interpolation"), interpolations);
  const int representation = IndexOfWord(element->Attribute("Representation"), representations);
  if (element->QueryDoubleAttribute("ColorCoefficient", &colorCoefficient) != tinyxml2::XML_SUCCESS ||
      element->QueryDoubleAttribute("SpecularCoefficient", &specularCoefficient) != tinyxml2::XML_SUCCESS ||
      element->QueryDoubleAttribute("SpecularPower", &specularPower) != tinyxml2::XML_SUCCESS ||
      element->QueryDoubleAttribute("Opacity", &opacity) != tinyxml2::XML_SUCCESS ||
      !ReadRGB(element->FirstChildElement("Color"), color) ||
      !ReadRGB(element->FirstChildElement("SpecularColor"), specular) || interpolation < 0 || representation < 0)
  {
    return nullptr;
  }
  Material::Pointer material = Material::New();
  material->SetColorCoefficient(colorCoefficient);
  material->SetSpecularCoefficient(specularCoefficient);
  material->SetSpecularPower(specularPower);
  material->SetOpacity(opacity);
  material->SetColor(color);
  material->SetSpecularColor(specular);
  material->SetInterpolation(static_cast<Material::InterpolationType>(interpolation));
  material->SetRepresentation(static_cast<Material::RepresentationType>(representation));
  return material.GetPointer();
}

BaseProperty::Pointer
DecodeLevelWindow(const tinyxml2::XMLElement * element)
{
  bool fixed = false;
  double level = 0, window = 0, defaultLevel = 0, defaultWindow = 0, range[2] = { 0, 0 };
  const tinyxml2::XMLElement * current = element->FirstChildElement("CurrentSettings");
  const tinyxml2::XMLElement * defaults = element->FirstChildElement("DefaultSettings");
  if (element->QueryBoolAttribute("fixed", &fixed) != tinyxml2::XML_SUCCESS || current == nullptr ||
      defaults == nullptr || current->QueryDoubleAttribute("level", &level) != tinyxml2::XML_SUCCESS ||
      current->QueryDoubleAttribute("window", &window) != tinyxml2::XML_SUCCESS ||
      defaults->QueryDoubleAttribute("level", &defaultLevel) != tinyxml2::XML_SUCCESS ||
      defaults->QueryDoubleAttribute("window", &defaultWindow) != tinyxml2::XML_SUCCESS ||
      !ReadMinMax(element, "CurrentRange", range))
  {
    return nullptr;
  }
  LevelWindow levelWindow;
  levelWindow.SetRangeMinMax(range[0], range[1]);
  levelWindow.SetDefaultLevelWindow(defaultLevel, defaultWindow);
  levelWindow.SetLevelWindow(level, window);
  levelWindow.SetFixed(fixed); // last: a fixed window ignores new settings
  return LevelWindowProperty::New(levelWindow).GetPointer();
}

BaseProperty::Pointer
DecodeLookupTable(const tinyxml2::XMLElement * element)
{
  int numberOfColors = 0, scale = 0, ramp = 0;
  double hue[2], value[2], saturation[2], alpha[2], tableRange[2];
  const tinyxml2::XMLElement * entries = element->FirstChildElement("Table");
  if (element->QueryIntAttribute("NumberOfColors", &numberOfColors) != tinyxml2::XML_SUCCESS ||
      element->QueryIntAttribute("Scale", &scale) != tinyxml2::XML_SUCCESS ||
      element->QueryIntAttribute("Ramp", &ramp) != tinyxml2::XML_SUCCESS || numberOfColors < 0 ||
      !ReadMinMax(element, "HueRange", hue) || !ReadMinMax(element, "ValueRange", value) ||
      !ReadMinMax(element, "SaturationRange", saturation) || !ReadMinMax(element, "AlphaRange", alpha) ||
      !ReadMinMax(element, "TableRange", tableRange) || entries == nullptr)
  {
    return nullptr;
  }
  // A table is sized only for colours that are there: the count alone must not decide an allocation.
  int present = 0;
  for (const tinyxml2::XMLElement * entry = entries->FirstChildElement("RgbaColor");
       entry != nullptr && present < numberOfColors;
       entry = entry->NextSiblingElement("RgbaColor"))
  {
    ++present;
  }
  if (present < numberOfColors)
  {
    return nullptr;
  }
  vtkNew<vtkLookupTable> table;
  table->SetScale(scale);
  table->SetRamp(ramp);
  table->SetHueRange(hue);
  table->SetValueRange(value);
  table->SetSaturationRange(saturation);
  table->SetAlphaRange(alpha);
  table->SetTableRange(tableRange);
  table->SetNumberOfTableValues(numberOfColors);
  vtkIdType index = 0;
  for (const tinyxml2::XMLElement * entry = entries->FirstChildElement("RgbaColor");
       entry != nullptr && index < numberOfColors;
       entry = entry->NextSiblingElement("RgbaColor"), ++index)
  {
    double rgba[4] = { 0, 0, 0, 0 };
    entry->QueryDoubleAttribute("R", &rgba[0]);
    entry->QueryDoubleAttribute("G", &rgba[1]);
    entry->QueryDoubleAttribute("B", &rgba[2]);
    entry->QueryDoubleAttribute("A", &rgba[3]);
    table->SetTableValue(index, rgba);
  }
  LookupTable::Pointer lookupTable = LookupTable::New();
  lookupTable->SetVtkLookupTable(table);
  return LookupTableProperty::New(lookupTable).GetPointer();
}

BaseProperty::Pointer
DecodeBySerializer(const std::string & propertyClass, const tinyxml2::XMLElement * element, const char * rootName)
{
  BasePropertySerializer::Pointer serializer = BasePropertySerializer::CreateForProperty(propertyClass);
  if (serializer.IsNull())
  {
    return nullptr;
  }
  // The serializer reads its own element form: the same content under its root name.
  tinyxml2::XMLDocument scratch;
  tinyxml2::XMLNode * copy = element->DeepClone(&scratch);
  copy->ToElement()->SetName(rootName);
  scratch.InsertEndChild(copy);
  return serializer->Deserialize(scratch.RootElement());
}

BaseProperty::Pointer
DecodeProperty(const tinyxml2::XMLElement * element)
{
  const std::string type = element->Name();
  if (type == "BoolProperty")
  {
    const char * value = element->Attribute("value");
    if (value == nullptr || (std::strcmp(value, "true") != 0 && std::strcmp(value, "false") != 0))
    {
      return nullptr;
    }
    return BoolProperty::New(std::strcmp(value, "true") == 0).GetPointer();
  }
  if (type == "StringProperty")
  {
    const char * value = element->Attribute("value");
    return value == nullptr ? nullptr : StringProperty::New(value).GetPointer();
  }
  if (type == "IntProperty")
  {
    int value = 0;
    return element->QueryIntAttribute("value", &value) != tinyxml2::XML_SUCCESS ? nullptr
                                                                                : IntProperty::New(value).GetPointer();
  }
  if (type == "FloatProperty")
  {
    float value = 0;
    return element->QueryFloatAttribute("value", &value) != tinyxml2::XML_SUCCESS
             ? nullptr
             : FloatProperty::New(value).GetPointer();
  }
  if (type == "DoubleProperty")
  {
    double value = 0;
    return element->QueryDoubleAttribute("value", &value) != tinyxml2::XML_SUCCESS
             ? nullptr
             : DoubleProperty::New(value).GetPointer();
  }
  if (type == "Vector3DProperty")
  {
    Vector3D value;
    if (element->QueryDoubleAttribute("x", &value[0]) != tinyxml2::XML_SUCCESS ||
        element->QueryDoubleAttribute("y", &value[1]) != tinyxml2::XML_SUCCESS ||
        element->QueryDoubleAttribute("z", &value[2]) != tinyxml2::XML_SUCCESS)
    {
      return nullptr;
    }
    return Vector3DProperty::New(value).GetPointer();
  }
  if (type == "Material")
  {
    return DecodeMaterial(element);
  }
  if (type == "ColorProperty")
  {
    return ColorPropertySerializer::ColorFromXML(element).GetPointer();
  }
  if (type == "LevelWindowProperty")
  {
    return DecodeLevelWindow(element);
  }
  if (type == "LookupTableProperty")
  {
    return DecodeLookupTable(element);
  }
  if (type == "VesselTreeLookupTableProperty")
  {
    return DecodeBySerializer(type, element, "VesselTreeLookupTable");
  }
  if (type == "GroupTagProperty")
  {
    return GroupTagProperty::New().GetPointer();
  }
  if (type == "ResectionProposalDescriptorProperty")
  {
    return ResectionProposalDescriptorPropertySerializer::PropertyFromXML(element).GetPointer();
  }
  return nullptr;
}

/** The node's name as the scene gives it (its general "name" string), for messages before the node exists. */
std::string
SavedName(const tinyxml2::XMLElement * sceneObject)
{
  for (const tinyxml2::XMLElement * list = sceneObject->FirstChildElement("PropertyList"); list != nullptr;
       list = list->NextSiblingElement("PropertyList"))
  {
    if (list->Attribute("RenderWindow") != nullptr)
    {
      continue;
    }
    for (const tinyxml2::XMLElement * p = list->FirstChildElement("StringProperty"); p != nullptr;
         p = p->NextSiblingElement("StringProperty"))
    {
      if (p->Attribute("name", "name") && p->Attribute("value"))
      {
        return p->Attribute("value");
      }
    }
  }
  return "";
}
} // namespace

CalyxSceneReaderV1::CalyxSceneReaderV1() = default;

CalyxSceneReaderV1::~CalyxSceneReaderV1() = default;

PropertyList::Pointer
CalyxSceneReaderV1::DecodePropertyList(const tinyxml2::XMLElement * element)
{
  PropertyList::Pointer list = PropertyList::New();
  if (element == nullptr)
  {
    return list;
  }
  for (const tinyxml2::XMLElement * child = element->FirstChildElement(); child != nullptr;
       child = child->NextSiblingElement())
  {
    const char * key = child->Attribute("name");
    if (key == nullptr)
    {
      continue;
    }
    BaseProperty::Pointer property = DecodeProperty(child);
    if (property.IsNotNull())
    {
      list->ReplaceProperty(key, property);
    }
  }
  return list;
}

void
CalyxSceneReaderV1::ApplyPropertyList(DataNode * node, const tinyxml2::XMLElement * element)
{
  if (node == nullptr || element == nullptr)
  {
    return;
  }
  const char * window = element->Attribute("RenderWindow");
  const std::string renderer = window == nullptr ? "" : window;
  PropertyList::Pointer list = DecodePropertyList(element);
  for (const auto & [key, property] : *list->GetMap())
  {
    node->ReplaceProperty(key, property, renderer);
  }
}

std::string
CalyxSceneReaderV1::WhyDataFileIsRefused(const std::string & file, const std::string & workingDirectory)
{
  if (file.empty())
  {
    return "the file name is empty";
  }
  const fs::path relative(file);
  if (relative.is_absolute() || file[0] == '/')
  {
    return "the path is absolute";
  }
  for (const fs::path & part : relative)
  {
    if (part == "..")
    {
      return "the path holds a '..' component";
    }
  }
  std::error_code error;
  const fs::path folder = fs::weakly_canonical(fs::absolute(workingDirectory, error), error);
  const fs::path target = fs::weakly_canonical(fs::absolute(fs::path(workingDirectory) / relative, error), error);
  if (error)
  {
    return "the path cannot be resolved (" + error.message() + ")";
  }
  // Component by component: "/scene-other" must not pass for a file inside "/scene".
  auto f = folder.begin();
  auto t = target.begin();
  for (; f != folder.end(); ++f, ++t)
  {
    if (f->empty() && std::next(f) == folder.end())
    {
      break; // trailing separator of the folder
    }
    if (t == target.end() || *f != *t)
    {
      return "the path leads outside the scene's folder";
    }
  }
  if (t == target.end())
  {
    return "the path names the scene's folder itself";
  }
  return "";
}

DataNode::Pointer
CalyxSceneReaderV1::LoadSceneObject(const tinyxml2::XMLElement * element, const std::string & workingDirectory)
{
  if (element == nullptr)
  {
    return nullptr;
  }
  // The id first: messages about the data file name the node by it.
  std::string id;
  if (const char * saved = element->Attribute("DependenyUID"))
  {
    id = saved;
  }
  if (id.empty())
  {
    id = m_IdGenerator.GetUID();
  }
  while (m_NodeOfId.count(id) != 0)
  {
    id = m_IdGenerator.GetUID();
  }

  // The saved properties first: the node takes the general ones before its data, so that defaults the data would
  // compute (an image's level window from all its voxels) are not computed when the scene has them.
  std::vector<std::pair<std::string, PropertyList::Pointer>> lists;
  PropertyList::Pointer general;
  for (const tinyxml2::XMLElement * list = element->FirstChildElement("PropertyList"); list != nullptr;
       list = list->NextSiblingElement("PropertyList"))
  {
    const char * window = list->Attribute("RenderWindow");
    lists.emplace_back(window == nullptr ? "" : window, DecodePropertyList(list));
    if (window == nullptr)
    {
      general = lists.back().second;
    }
  }

  DataNode::Pointer node;
  if (const char * file = element->Attribute("file"))
  {
    const std::string path = workingDirectory + "/" + file;
    const std::string refusal = WhyDataFileIsRefused(file, workingDirectory);
    if (!refusal.empty())
    {
      LUMO_SCENE_REPORT("Node '" + SavedName(element) + "' (" + id + "): the data file '" + file +
                        "' is not read: " + refusal + ".");
    }
    else
    {
      try
      {
        CalyxDataNodeFactory::Pointer factory = CalyxDataNodeFactory::New();
        factory->SetFileName(path);
        factory->SetInitialProperties(general);
        factory->Update();
        node = factory->GetOutput();
        if (node.IsNull() || node->GetData() == nullptr)
        {
          node = nullptr;
          LUMO_SCENE_REPORT("Error during attempt to read '" + path + "'. Factory returned NULL object.");
        }
      }
      catch (const std::exception & e)
      {
        node = nullptr;
        LUMO_SCENE_REPORT("Error during attempt to read '" + path + "'. Exception says: " + ExceptionText(e));
      }
    }
  }
  if (node.IsNull())
  {
    node = DataNode::New();
  }

  m_IdOfNode[node] = id;
  m_NodeOfId[id] = node;
  std::vector<std::string> & sources = m_SourceIds[node];
  for (const tinyxml2::XMLElement * source = element->FirstChildElement("Source"); source != nullptr;
       source = source->NextSiblingElement("Source"))
  {
    if (const char * uid = source->Attribute("UID"))
    {
      sources.emplace_back(uid);
    }
  }
  // Again after the data: the saved values win over the data's defaults and the name taken from the file.
  for (const auto & [renderer, list] : lists)
  {
    for (const auto & [key, property] : *list->GetMap())
    {
      node->ReplaceProperty(key, property, renderer);
    }
  }
  return node;
}

bool
CalyxSceneReaderV1::LoadScene(const tinyxml2::XMLDocument & document,
                              const std::string & workingDirectory,
                              DataStorage * storage)
{
  ProgressBar * progress = ProgressBar::GetInstance();
  progress->AddStepsToDo(4);
  for (const tinyxml2::XMLElement * element = document.FirstChildElement("SceneObject"); element != nullptr;
       element = element->NextSiblingElement("SceneObject"))
  {
    progress->AddStepsToDo(1);
    DataNode::Pointer node = this->LoadSceneObject(element, workingDirectory);
    if (node.IsNotNull())
    {
      m_LoadedNodes.push_back(node);
    }
    progress->Progress(1);
  }
  progress->Progress(4);
  if (storage == nullptr)
  {
    return true;
  }

  std::set<std::string> placed;
  std::list<std::pair<DataNode::Pointer, std::vector<std::string>>> todo;
  for (const DataNode::Pointer & node : m_LoadedNodes)
  {
    const std::vector<std::string> & sources = m_SourceIds[node];
    if (sources.empty())
    {
      storage->Add(node);
      placed.insert(m_IdOfNode[node]);
    }
    else
    {
      todo.emplace_back(node, sources);
    }
  }
  bool placedSome = true;
  while (placedSome && !todo.empty())
  {
    placedSome = false;
    for (auto entry = todo.begin(); entry != todo.end();)
    {
      DataStorage::SetOfObjects::Pointer parents = DataStorage::SetOfObjects::New();
      bool complete = true;
      for (const std::string & sourceId : entry->second)
      {
        auto source = m_NodeOfId.find(sourceId);
        if (placed.count(sourceId) == 0 || source == m_NodeOfId.end())
        {
          complete = false;
          break;
        }
        parents->push_back(source->second);
      }
      if (!complete)
      {
        ++entry;
        continue;
      }
      storage->Add(entry->first, parents);
      placed.insert(m_IdOfNode[entry->first]);
      entry = todo.erase(entry);
      placedSome = true;
    }
  }
  if (!todo.empty())
  {
    LUMO_SCENE_REPORT("ERROR: TODO list of CalyxSceneReaderV1 not empty after loading. Unable to load " +
                      std::to_string(todo.size()) + " objects.");
    for (const auto & entry : todo)
    {
      LUMO_SCENE_REPORT("Node " + entry.first->GetName() + " (" + m_IdOfNode[entry.first] +
                        ") could not be added to the DataStorage");
    }
    return false;
  }
  return true;
}

std::string
CalyxSceneReaderV1::GetSceneId(const DataNode * node) const
{
  auto it = m_IdOfNode.find(node);
  return it == m_IdOfNode.end() ? "" : it->second;
}

void
CalyxSceneReaderV1::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "LoadedNodes: " << m_LoadedNodes.size() << std::endl;
}
} // namespace lumo

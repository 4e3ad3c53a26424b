// arbo scene create / info: a whole plan as one scene file.
#include "arboCommands.h"

#include "arboError.h"
#include "arboFiles.h"
#include "arboScene.h"

#include "lumoArboCoreObjectFactory.h"
#include "lumoCalyxSceneIO.h"
#include "lumoCalyxSceneReaderV1.h"
#include "lumoDataStorage.h"
#include "lumoResectionProposalDescriptorPropertySerializer.h"
#include "lumoTemporaryFileGuard.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <tinyxml2.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <ostream>
#include <sstream>

namespace arbo
{
namespace
{
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

struct CreateOptions
{
  std::string output;
  std::vector<std::string> items;
  std::vector<std::string> sources;
  std::vector<std::string> hidden;
};

struct InfoOptions
{
  std::string file;
  bool json{ false };
};

std::pair<std::string, std::string>
splitPair(const std::string & text, const std::string & what)
{
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
  {
    throw Error("", what + " '" + text + "' is not of the form A=B");
  }
  return { text.substr(0, equals), text.substr(equals + 1) };
}

/** A property's text on one line: its lines joined by "; ", without their leading blanks or a final newline. */
std::string
oneLine(const std::string & text)
{
  std::string line;
  std::istringstream lines(text);
  for (std::string part; std::getline(lines, part);)
  {
    const std::size_t start = part.find_first_not_of(" \t\r");
    if (start == std::string::npos)
    {
      continue;
    }
    line += (line.empty() ? "" : "; ") + part.substr(start);
  }
  return line;
}

void
runCreate(const CreateOptions & options, Context & context)
{
  registerFileTypes();
  lumo::RegisterArboCoreObjectFactory(); // trees get the module's node defaults (tube mapper, vessel colour table)
  std::vector<lumo::DataNode::Pointer> nodes;
  std::map<std::string, lumo::DataNode *> byName;
  for (const std::string & item : options.items)
  {
    std::string name;
    std::string file = item;
    const std::size_t equals = item.find('=');
    if (equals != std::string::npos && !fs::exists(item))
    {
      name = item.substr(0, equals);
      file = item.substr(equals + 1);
    }
    lumo::BaseData::Pointer data = readData(file);
    if (name.empty())
    {
      name = nodeNameOf(file);
    }
    if (byName.count(name) != 0)
    {
      throw Error(file, "a node named '" + name + "' is already in the scene (give another with NAME=FILE)");
    }
    lumo::DataNode::Pointer node = sceneNode(name, data); // tube mapper and colours for trees, a veiled organ
    // A resection image brings its label descriptor when "<stem>.proposal.xml" lies beside it.
    const fs::path proposal =
      fs::path(file).parent_path() /
      (fs::path(file).filename().string().substr(0, fs::path(file).filename().string().find('.')) + ".proposal.xml");
    if (fs::exists(proposal))
    {
      try
      {
        for (const auto & [key, property] :
             resectionProperties(lumo::ReadResectionProposalDescriptorFile(proposal.string()).GetPointer()))
        {
          node->SetProperty(key, property);
        }
      }
      catch (const itk::ExceptionObject & e)
      {
        throw Error(proposal.string(), e.GetDescription());
      }
    }
    nodes.push_back(node);
    byName[name] = node;
  }

  std::map<lumo::DataNode *, std::vector<lumo::DataNode *>> parents;
  for (const std::string & source : options.sources)
  {
    const auto [child, parent] = splitPair(source, "--source");
    if (byName.count(child) == 0 || byName.count(parent) == 0)
    {
      throw Error("", "--source " + source + ": no node named '" + (byName.count(child) == 0 ? child : parent) + "'");
    }
    parents[byName[child]].push_back(byName[parent]);
  }

  for (const std::string & name : options.hidden)
  {
    if (byName.count(name) == 0)
    {
      throw Error("", "--hide " + name + ": no node named '" + name + "'");
    }
    byName[name]->SetVisibility(false);
  }

  // Parents first, so that the storage knows every source when a node is added.
  lumo::DataStorage::Pointer storage = lumo::DataStorage::New();
  std::vector<lumo::DataNode::Pointer> pending = nodes;
  while (!pending.empty())
  {
    std::vector<lumo::DataNode::Pointer> later;
    for (const lumo::DataNode::Pointer & node : pending)
    {
      auto sources = lumo::DataStorage::SetOfObjects::New();
      bool ready = true;
      for (lumo::DataNode * parent : parents[node])
      {
        ready = ready && storage->Exists(parent);
        sources->push_back(parent);
      }
      if (ready)
      {
        storage->Add(node, sources);
      }
      else
      {
        later.push_back(node);
      }
    }
    if (later.size() == pending.size())
    {
      throw Error("", "the --source options form a cycle (" + later.front()->GetName() + ")");
    }
    pending = later;
  }

  CapturedMessages messages;
  // An interrupt removes the scene's staged files; the earlier scene stays whole.
  lumo::TemporaryFileGuard::InstallSignalHandlers();
  const bool saved = lumo::CalyxSceneIO::New()->SaveScene(storage, options.output);
  const std::string text = messages.text();
  if (!saved)
  {
    context.err << text;
    throw Error(options.output, "the scene could not be saved");
  }
  if (!context.quiet)
  {
    context.out << options.output << ": scene of " << nodes.size() << " node" << (nodes.size() == 1 ? "" : "s") << "\n";
  }
}

void
runInfo(const InfoOptions & options, Context & context)
{
  registerFileTypes();
  lumo::RegisterArboCoreObjectFactory(); // trees get the module's node defaults (tube mapper, vessel colour table)
  if (!fs::is_regular_file(options.file))
  {
    throw Error(options.file, "no such file");
  }
  std::string directory = fs::path(options.file).parent_path().string();
  if (directory.empty())
  {
    directory = ".";
  }
  const std::string name = fs::path(options.file).filename().string();

  lumo::DataStorage::Pointer storage = lumo::DataStorage::New();
  lumo::CalyxSceneReaderV1::Pointer reader = lumo::CalyxSceneReaderV1::New();
  tinyxml2::XMLDocument document;
  std::string messages;
  {
    CapturedMessages captured;
    const bool loaded = lumo::CalyxSceneIO::New()->LoadScene(storage, directory, name, reader);
    messages = captured.text();
    // Refused as a whole (limits, version, not XML): nothing was read.
    if (!loaded && reader->GetLoadedNodes().empty())
    {
      context.err << messages;
      throw Error(options.file, "is not a scene that can be loaded");
    }
    lumo::CalyxSceneIO::LoadSceneDocument(directory + "/" + name, document);
  }
  context.err << messages;

  Json nodes = Json::array();
  std::vector<std::string> problems;
  std::size_t index = 0;
  const auto & loaded = reader->GetLoadedNodes();
  for (const tinyxml2::XMLElement * element = document.FirstChildElement("SceneObject");
       element != nullptr && index < loaded.size();
       element = element->NextSiblingElement("SceneObject"), ++index)
  {
    lumo::DataNode * node = loaded[index];
    Json entry;
    entry["name"] = node->GetName();
    entry["id"] = reader->GetSceneId(node);
    entry["type"] = element->Attribute("type") ? element->Attribute("type") : "";
    entry["file"] = element->Attribute("file") ? element->Attribute("file") : "";
    Json sources = Json::array();
    for (const tinyxml2::XMLElement * source = element->FirstChildElement("Source"); source != nullptr;
         source = source->NextSiblingElement("Source"))
    {
      sources.push_back(source->Attribute("UID") ? source->Attribute("UID") : "");
    }
    entry["sources"] = sources;
    Json properties = Json::object();
    for (const auto & [key, property] : *node->GetPropertyList()->GetMap())
    {
      if (key != "IsDataStoreManaged")
      {
        properties[key] = property->GetValueAsString();
      }
    }
    entry["properties"] = properties;
    const bool dataLoaded = element->Attribute("file") == nullptr || node->GetData() != nullptr;
    const bool placed = storage->Exists(node);
    entry["loaded"] = dataLoaded;
    entry["placed"] = placed;
    if (!dataLoaded)
    {
      problems.push_back("node '" + node->GetName() + "' (" + reader->GetSceneId(node) + "): its data did not load");
    }
    if (!placed)
    {
      problems.push_back("node '" + node->GetName() + "' (" + reader->GetSceneId(node) +
                         "): could not be placed (a source is missing)");
    }
    nodes.push_back(entry);
  }

  if (options.json)
  {
    Json json;
    json["file"] = options.file;
    json["nodes"] = nodes;
    json["problems"] = problems;
    context.out << json.dump(2) << "\n";
  }
  else
  {
    context.out << options.file << ": scene of " << nodes.size() << " node" << (nodes.size() == 1 ? "" : "s") << "\n";
    for (const Json & entry : nodes)
    {
      context.out << "  " << entry["name"].get<std::string>() << " (" << entry["id"].get<std::string>() << "): "
                  << (entry["type"].get<std::string>().empty() ? "no data type" : entry["type"].get<std::string>())
                  << ", file " << (entry["file"].get<std::string>().empty() ? "-" : entry["file"].get<std::string>())
                  << (entry["loaded"].get<bool>() ? "" : " (not loaded)")
                  << (entry["placed"].get<bool>() ? "" : " (not placed)");
      // One line per node: sources and properties follow after " | ", a value of several lines joined by "; ".
      if (!entry["sources"].empty())
      {
        context.out << " | sources:";
        for (const Json & source : entry["sources"])
        {
          context.out << " " << source.get<std::string>();
        }
      }
      for (const auto & [key, value] : entry["properties"].items())
      {
        context.out << " | " << key << " = " << oneLine(value.get<std::string>());
      }
      context.out << "\n";
    }
  }
  for (const std::string & problem : problems)
  {
    context.err << "arbo: " << options.file << ": " << problem << "\n";
  }
  if (!problems.empty())
  {
    context.status = 1;
  }
}
} // namespace

void
addSceneCommand(CLI::App & app, Context & context)
{
  CLI::App * scene = app.add_subcommand("scene", "Save a whole plan as one scene file, or describe a scene");
  scene->require_subcommand(1);

  auto create = std::make_shared<CreateOptions>();
  CLI::App * createCommand = scene->add_subcommand("create", "Write a scene of the given files (FILE or NAME=FILE)");
  createCommand->add_option("output", create->output, "Scene file to write (.rs)")->required();
  createCommand->add_option("items", create->items, "Data files, each FILE or NAME=FILE")->required();
  createCommand->add_option("--source", create->sources, "CHILD=PARENT: the node CHILD derives from PARENT");
  createCommand->add_option("--hide", create->hidden, "NAME: the node is saved hidden (not drawn, \"visible\" false)");
  createCommand->callback([create, &context] { runCreate(*create, context); });

  auto info = std::make_shared<InfoOptions>();
  CLI::App * infoCommand = scene->add_subcommand("info", "Describe the nodes of a scene and whether each loaded");
  infoCommand->add_option("file", info->file, "Scene file (.rs)")->required();
  infoCommand->add_flag("--json", info->json, "Print JSON");
  infoCommand->callback([info, &context] { runInfo(*info, context); });
}
} // namespace arbo

// libFuzzer entry for scene files (.rs) with their property lists. Every input is written as "scene.rs" into a scratch
// folder of the process that also holds a small tree and point set for scenes to name; the folder is made once and
// removed at exit. Loading must never write: the folder holds the same files afterwards.

#include "FuzzSupport.h"

#include "lumoCalyxSceneIO.h"
#include "lumoResectionProposalDescriptorPropertySerializerFactory.h"
#include "lumoVesselTreeLookupTablePropertySerializerFactory.h"

#include <fstream>
#include <set>

namespace
{
const char * const TreeText = "VALD-KRN 2000 Tree\n{\n { t f 1 2 1 1 -1 2 [ 0 0 0 12 ] [ 10 0 0 11 ] } <\n"
                              "  { t f 7 2 1 2 -1 2 [ 10 0 0 6 ] [ 20 5 0 5 ] } - |\n"
                              "  { t f 10 2 3 3 -1 2 [ 10 0 0 6 ] [ 20 -5 0 5 ] } - >\n}\n";
const char * const PointsText = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<LumoPointSet version=\"1\">\n"
                                "<TimeStep index=\"0\"><Point id=\"0\" x=\"1\" y=\"2\" z=\"3\"/></TimeStep>\n"
                                "</LumoPointSet>\n";

void
writeFile(const std::filesystem::path & path, const char * data, std::size_t size)
{
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(data, static_cast<std::streamsize>(size));
  lumofuzz::require(static_cast<bool>(out));
}

const lumofuzz::ScratchFolder &
sceneFolder()
{
  static const lumofuzz::ScratchFolder folder;
  static const bool filled = [] {
    writeFile(folder.Path() / "tree.ves", TreeText, std::strlen(TreeText));
    writeFile(folder.Path() / "points.mps", PointsText, std::strlen(PointsText));
    lumo::VesselTreeLookupTablePropertySerializerFactory::RegisterOneFactory();
    lumo::ResectionProposalDescriptorPropertySerializerFactory::RegisterOneFactory();
    return true;
  }();
  (void)filled;
  return folder;
}

std::set<std::string>
listing(const std::filesystem::path & folder)
{
  std::set<std::string> names;
  for (const auto & entry : std::filesystem::directory_iterator(folder))
  {
    names.insert(entry.path().filename().string());
  }
  return names;
}

bool
load(const std::filesystem::path & folder, lumo::DataStorage * storage)
{
  return lumo::CalyxSceneIO::New()->LoadScene(storage, folder.string(), "scene.rs");
}
} // namespace

bool
lumoFuzzAccepts(const std::uint8_t * data, std::size_t size)
{
  const lumofuzz::ScratchFolder & folder = sceneFolder();
  writeFile(folder.Path() / "scene.rs", reinterpret_cast<const char *>(data), size);
  return load(folder.Path(), lumo::DataStorage::New());
}

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
  const lumofuzz::ScratchFolder & folder = sceneFolder();
  writeFile(folder.Path() / "scene.rs", reinterpret_cast<const char *>(data), size);
  const std::set<std::string> before = listing(folder.Path());
  auto storage = lumo::DataStorage::New();
  load(folder.Path(), storage);
  lumofuzz::require(listing(folder.Path()) == before);
  return 0;
}

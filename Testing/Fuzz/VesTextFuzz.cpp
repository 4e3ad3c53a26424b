// libFuzzer entry for the .ves text: the tree's stream reading (and with it the vessel record operator) and the file
// reader. Both must accept or refuse an input alike. An accepted tree is written and read again: the second text must
// equal the first, so that what the writer produces always reads back.

#include "FuzzSupport.h"

#include "ArVesselTree.h"
#include "lumoVesselTreeFileReader.h"

#include <itkObject.h>

#include <locale>
#include <sstream>

namespace
{
/** The tree of the text, or null when the stream failed. */
ArVesselTree
readText(const std::string & text)
{
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  ArVesselTree tree(new LinkedVesselTree());
  tree->read(in);
  return in.fail() ? ArVesselTree() : tree;
}

std::string
writeText(const ArVesselTree & tree)
{
  std::ostringstream out;
  out.imbue(std::locale::classic());
  tree->write(out);
  return out.str();
}

std::size_t
countVessels(const ArVesselTree & tree)
{
  std::size_t count = 0;
  const LinkedVesselTree * linked = asLinkedVesselTree(tree);
  std::vector<const VesselNode *> pending{ linked->getRootNode() };
  while (!pending.empty())
  {
    const VesselNode * node = pending.back();
    pending.pop_back();
    if (node == nullptr)
    {
      continue;
    }
    ++count;
    for (const VesselNode * child : node->children())
    {
      pending.push_back(child);
    }
  }
  return count;
}
} // namespace

bool
lumoFuzzAccepts(const std::uint8_t * data, std::size_t size)
{
  return !readText(std::string(reinterpret_cast<const char *>(data), size)).isNull();
}

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
  static const lumofuzz::ScratchFile scratch("ves-fuzz");
  itk::Object::GlobalWarningDisplayOff();
  const ArVesselTree tree = readText(std::string(reinterpret_cast<const char *>(data), size));

  scratch.Write(data, size);
  auto reader = lumo::VesselTreeFileReader::New();
  reader->SetFileName(scratch.Path().c_str());
  bool fileAccepted = true;
  try
  {
    reader->Update();
  }
  catch (const itk::ExceptionObject & e)
  {
    fileAccepted = false;
    lumofuzz::require(std::string(e.GetDescription()) ==
                      "Sorry, an error occurred while reading the requested vessel tree file!");
    lumofuzz::require(reader->GetTreeCache().isNull());
  }
  lumofuzz::require(fileAccepted == !tree.isNull());
  if (tree.isNull())
  {
    return 0;
  }

  const std::string written = writeText(tree);
  const ArVesselTree again = readText(written);
  lumofuzz::require(!again.isNull());
  lumofuzz::require(countVessels(again) == countVessels(tree));
  lumofuzz::require(writeText(again) == written);
  lumofuzz::require(writeText(reader->GetTreeCache()) == written);
  return 0;
}

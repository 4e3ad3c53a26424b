#ifndef HandTreeSupport_h
#define HandTreeSupport_h

// Hand-made vessel trees along the x axis and small organ images, shared by the tests of the resection generators
// and of arbo resect.

#include "lumoImage.h"
#include "lumoVesselTreeData.h"

#include <cstdint>
#include <vector>

namespace hand_tree
{
using namespace lumo;

/** One vessel of a hand-made tree: parent is an index into the recipe list (-1 for the root). */
struct VesselRecipe
{
  int parent;
  std::int32_t id;
  std::int32_t type;
  std::int32_t status;
  std::vector<float> x; // points along the x axis, y = z = 0
};

struct HandTree
{
  VesselTreeData::Pointer data;
  std::vector<ar<Vessel>> vessels;

  std::int32_t
  status(std::size_t i) const
  {
    return vessels[i]->getProperties().getResectionStatus();
  }
};

inline HandTree
makeTree(const std::vector<VesselRecipe> & recipes, float scale = 1.0f, float shift = 0.0f)
{
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  HandTree result;
  std::vector<VesselNode *> nodes;
  for (const VesselRecipe & recipe : recipes)
  {
    ar<Vessel> vessel(new Vessel());
    vessel->setVesselId(recipe.id);
    vessel->getProperties().setBloodVesselType(recipe.type);
    vessel->getProperties().setResectionStatus(recipe.status);
    for (float x : recipe.x)
    {
      vessel->appendPoint({ shift + x * scale, 0.0f, 0.0f, 1.0f });
    }
    if (recipe.parent < 0)
    {
      tree->setRoot(vessel);
      nodes.push_back(tree->getRootNode());
    }
    else
    {
      VesselNode * parent = nodes[static_cast<std::size_t>(recipe.parent)];
      auto * node = new VesselNode(parent, vessel);
      parent->addChild(node);
      nodes.push_back(node);
    }
    result.vessels.push_back(vessel);
  }
  result.data = VesselTreeData::New();
  result.data->initialize(handle);
  return result;
}

inline Image::Pointer
makeImage(unsigned int sx, unsigned int sy, unsigned int sz, Vector3D spacing, Point3D origin)
{
  auto image = Image::New();
  Geometry3D::DirectionType direction;
  direction.SetIdentity();
  image->Initialize(itk::IOComponentEnum::UCHAR, { { sx, sy, sz } }, spacing, origin, direction);
  return image;
}

inline Vector3D
spacingOf(double x, double y = 1.0, double z = 1.0)
{
  Vector3D spacing;
  spacing[0] = x;
  spacing[1] = y;
  spacing[2] = z;
  return spacing;
}

inline Point3D
pointAt(double x)
{
  Point3D origin;
  origin.Fill(0.0);
  origin[0] = x;
  return origin;
}

} // namespace hand_tree

#endif

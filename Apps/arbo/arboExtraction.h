#ifndef arboExtraction_h
#define arboExtraction_h

#include "arboMasks.h"

#include "lumoImage.h"
#include "lumoVesselTreeData.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

namespace arbo
{
/** How a vessel tree is extracted from a mask; the defaults are those of "arbo extract". */
struct ExtractionSettings
{
  /** Blood vessel type given to every vessel (0 to 4; default 2, portal). */
  std::int32_t type{ 2 };
  /** The label of the vessels in a label map; without one every voxel other than 0 is vessel. */
  std::optional<long> label;
  /** Voxel index i, j, k of the root, when given; startText is how the user wrote it, for messages. */
  bool haveStart{ false };
  unsigned int start[3]{ 0, 0, 0 };
  std::string startText;
  unsigned int cleanedIterations{ 0 };
  bool endpointSuppression{ true };
  bool keepSpurs{ false };
  /** Terminal vessels shorter than this (mm) are dropped, repeatedly; 0 keeps them. */
  double prune{ 0.0 };
  // Two passes take the voxel staircase out of the centre lines and, on the phantoms, bring them nearer the truth.
  unsigned int smooth{ 2 };
  bool rawDiameters{ false };
  // Off: points stay on the thinning's voxels instead of the centres of the mask's cross-sections.
  bool rawCentreLines{ false };
  bool resample{ true };
  // With resample: pieces of thick slices that overlap nothing in the next slice move towards the nearest piece.
  bool joinPieces{ false };
  bool stub{ true };
};

/** What an extraction did, for the summary lines. */
struct ExtractionReport
{
  std::size_t vessels{ 0 };
  std::size_t skeletonVoxels{ 0 };
  std::size_t extracted{ 0 };
  std::size_t spurs{ 0 };
  std::size_t pruned{ 0 };
  StubResult stub;
  std::size_t leftOutParts{ 0 };
  std::size_t leftOutVoxels{ 0 };
};

/** The vessel tree of a vessel mask (any voxel type), in the mask's world coordinates. `name` names the mask in
 *  messages (a file, or an argument). Notes (voxel type converted, slices interpolated, messages of the thinning
 *  code) go to `notes` as "arbo: note: ..." lines unless quiet. Throws arbo::Error for a mask that cannot be
 *  thinned (2-D, too large, empty, label missing) or a start outside it; nothing is extracted then. */
lumo::VesselTreeData::Pointer
extractVesselTree(lumo::Image * image,
                  const std::string & name,
                  const ExtractionSettings & settings,
                  ExtractionReport & report,
                  std::ostream & notes,
                  bool quiet);
} // namespace arbo

#endif

#ifndef arboVesselSurface_h
#define arboVesselSurface_h

#include "arboScene.h"

#include "lumoSurface.h"

#include <optional>
#include <string>
#include <vector>

namespace arbo
{
/** Takes the vessel mask out of the files of `arbo render`/`arbo view --vessel-surface`: the first file that holds
 *  an image (trees and scenes are not read here). Throws arbo::Error when none does. */
std::string
takeVesselMask(std::vector<std::string> & files);

/** The surface of a vessel mask in world coordinates (discrete flying edges halfway between vessel and background
 *  voxels, windowed-sinc smoothing). With a label, the voxels of that label of a label map; without, every voxel
 *  other than 0. Throws arbo::Error naming the file when it is no image or the label does not occur. */
lumo::Surface::Pointer
vesselMaskSurface(const std::string & path, const std::optional<long> & label);

/** Draws the scene's one tree as the vessel surface coloured by the nearest vessel (the surface-based mapper takes
 *  the place of the tube mapper; "Render vessel surface" on, "Render skeleton" off). Throws arbo::Error unless the
 *  scene has exactly one tree. */
void
showVesselSurface(Scene & scene, lumo::Surface * surface);
} // namespace arbo

#endif

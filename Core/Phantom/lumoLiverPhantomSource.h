#ifndef lumoLiverPhantomSource_h
#define lumoLiverPhantomSource_h

#include <itkObjectFactory.h>
#include "lumoBaseProcess.h"
#include "lumoImage.h"
#include "lumoVesselTreeData.h"

#include <itkSize.h>
#include <itkVector.h>

#include <cstdint>
#include <string>

namespace lumo
{
/** A synthetic liver with its portal and hepatic venous trees, for measuring extraction accuracy against a known
 *  truth.
 *
 *  The anatomy is fixed in millimetres (world coordinates with x towards the patient's left, y posterior, z
 *  superior, centred on the origin of the world); only the branching below the segmental level depends on the
 *  seed. The volume (size and spacing) only decides how finely the same anatomy is sampled, so that a seed gives
 *  the same true trees at every size; the field of view should cover 240 x 240 x 192 mm.
 *
 *  Outputs: 0 the organ mask, 1 the portal vein mask, 2 the hepatic vein mask (unsigned 8-bit, 1 inside, 0
 *  outside, identity direction, the volume centred on the world origin), 3 the true portal tree, 4 the true hepatic
 *  tree (world coordinates in mm, ids from 1 in breadth-first order, diameters in mm), 5 the tumour mask (unsigned
 *  8-bit on the organ's grid).
 *
 *  Tumours: one to three lesions, round (a ball) or lobulated (a ball with two or three smaller balls blended onto
 *  it), 9 to 16 mm in radius, placed by a random stream of their own (the organ and the trees are the same as
 *  without them). Each lesion lies at least 3 mm inside the organ, at least 10 mm from the other lesions and at least
 *  20 mm from the centre lines of both trunks (the root vessels of the portal and hepatic trees and their
 *  children), so that a 10 mm safety margin around it cuts no trunk vessel. Like the trees, the lesions are fixed in
 *  millimetres for a seed: every size shows the same ones. A voxel is tumour when its centre lies inside a lesion
 *  and inside the organ.
 *
 *  A voxel is organ when EvaluateOrgan() at its centre is <= 0. A voxel is vessel when its centre lies within the
 *  local radius of a centre-line segment of the tree: with a, b the segment's end points and ra, rb their radii
 *  (the stored diameters halved), t the projection parameter of the centre clamped to [0, 1], the voxel is inside
 *  when |p - (a + t (b - a))|^2 <= (ra + t (rb - ra))^2, computed in double from the stored float values. */
class LiverPhantomSource : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(LiverPhantomSource);

  using Self = LiverPhantomSource;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(LiverPhantomSource, BaseProcess);

  using SizeType = itk::Size<3>;
  using SpacingType = itk::Vector<double, 3>;

  /** Volumes that share the 240 x 240 x 192 mm field of view: 96 x 96 x 64 at 2.5 x 2.5 x 3 mm (tests),
   *  256 x 256 x 160 at 0.9375 x 0.9375 x 1.2 mm, 512 x 512 x 300 at 0.46875 x 0.46875 x 0.64 mm. */
  enum class SizePreset
  {
    Small,
    Medium,
    Large
  };

  /** Sets Size and Spacing to the preset's. */
  void
  SetSizePreset(SizePreset preset);
  /** "small", "medium" or "large"; false for any other text. */
  static bool
  ParseSizePreset(const std::string & text, SizePreset & preset);

  /** Seed of the random branching; the same seed gives the same outputs byte for byte; default 1. */
  itkSetMacro(Seed, std::uint64_t);
  itkGetConstMacro(Seed, std::uint64_t);
  /** Number of voxels along x, y, z; default 96 x 96 x 64; each at least 1. */
  itkSetMacro(Size, SizeType);
  itkGetConstMacro(Size, SizeType);
  /** Voxel spacing in mm; default 2.5 x 2.5 x 3; each > 0. */
  itkSetMacro(Spacing, SpacingType);
  itkGetConstMacro(Spacing, SpacingType);
  /** Radius of both trees where they start (portal hilum, hepatic confluence) in mm; default 7; > MinimumRadius. */
  itkSetMacro(RootRadius, double);
  itkGetConstMacro(RootRadius, double);
  /** No vessel starts thinner than this radius in mm; a bifurcation that would make one is not made; default 1;
   *  > 0. */
  itkSetMacro(MinimumRadius, double);
  itkGetConstMacro(MinimumRadius, double);
  /** End radius over start radius of every vessel (a slight taper); default 0.95; in (0, 1]. */
  itkSetMacro(TaperRatio, double);
  itkGetConstMacro(TaperRatio, double);
  /** Least distance in mm from a centre-line point to the organ surface, beyond the vessel's radius; default 2.5;
   *  >= 0. With centre-line points at most 2 mm apart it keeps every vessel voxel inside the organ. */
  itkSetMacro(WallMargin, double);
  itkGetConstMacro(WallMargin, double);

  /** The organ as a smooth implicit shape: negative inside, positive outside, 1-Lipschitz (so |value| is at most
   *  the distance in mm to the surface). A wedge with a large rounded right lobe, a thinner left lobe, a flattened
   *  posterior side and an inferior notch between the lobes. */
  static double
  EvaluateOrgan(double x, double y, double z);

  Image *
  GetOrganMask();
  Image *
  GetPortalMask();
  Image *
  GetHepaticMask();
  VesselTreeData *
  GetPortalTree();
  VesselTreeData *
  GetHepaticTree();
  Image *
  GetTumourMask();
  /** Number of lesions of the last update (1 to 3; 0 before the first). */
  itkGetConstMacro(NumberOfTumours, unsigned int);

  using Superclass::MakeOutput;
  /** Images for outputs 0 to 2 and 5, vessel tree data for 3 and 4. */
  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType index) override;

protected:
  LiverPhantomSource();
  ~LiverPhantomSource() override;

  /** The outputs have no requested regions to negotiate. */
  void
  GenerateOutputInformation() override
  {}
  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  std::uint64_t m_Seed{ 1 };
  SizeType m_Size{ { 96, 96, 64 } };
  SpacingType m_Spacing;
  double m_RootRadius{ 7.0 };
  double m_MinimumRadius{ 1.0 };
  double m_TaperRatio{ 0.95 };
  double m_WallMargin{ 2.5 };
  unsigned int m_NumberOfTumours{ 0 };
};
} // namespace lumo

#endif

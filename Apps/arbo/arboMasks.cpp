#include "arboMasks.h"

#include "arboError.h"

#include "lumoImageAccess.h"

#include <itkImageRegionConstIterator.h>
#include <itkRegionOfInterestImageFilter.h>
#include <itkSignedMaurerDistanceMapImageFilter.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <sstream>
#include <vector>

namespace arbo
{
namespace
{
using MaskType = itk::Image<unsigned char, 3>;

/** The labels of an image other than 0, for the message about a missing one (at most a dozen, then "..."). */
template <typename TPixel>
std::string
labelsPresent(const itk::Image<TPixel, 3> * image)
{
  std::set<TPixel> labels;
  itk::ImageRegionConstIterator<itk::Image<TPixel, 3>> it(image, image->GetLargestPossibleRegion());
  for (it.GoToBegin(); !it.IsAtEnd() && labels.size() <= 12; ++it)
  {
    if (it.Get() != TPixel(0))
    {
      labels.insert(it.Get());
    }
  }
  if (labels.empty())
  {
    return "no label other than 0";
  }
  std::ostringstream text;
  text << "labels present: ";
  std::size_t shown = 0;
  for (const TPixel value : labels)
  {
    if (shown == 12)
    {
      text << ", ...";
      break;
    }
    text << (shown++ > 0 ? ", " : "") << +value;
  }
  return text.str();
}
} // namespace

lumo::Image::Pointer
binaryMaskOf(lumo::Image * image, const std::string & file, const std::optional<long> & label, std::size_t & voxels)
{
  voxels = 0;
  if (!label && image->GetPixelType() == itk::IOComponentEnum::UCHAR)
  {
    const auto * data = static_cast<const unsigned char *>(image->GetData());
    for (std::size_t i = 0, n = image->GetNumberOfVoxels(); i < n; ++i)
    {
      voxels += data[i] != 0 ? 1 : 0;
    }
    return image;
  }
  auto mask = MaskType::New();
  std::string present;
  lumo::AccessByItk(image, [&](auto * itkImage) {
    using InputType = std::remove_pointer_t<decltype(itkImage)>;
    using PixelType = typename InputType::PixelType;
    mask->CopyInformation(itkImage);
    mask->SetRegions(itkImage->GetLargestPossibleRegion());
    mask->Allocate();
    itk::ImageRegionConstIterator<InputType> in(itkImage, itkImage->GetLargestPossibleRegion());
    unsigned char * out = mask->GetBufferPointer();
    // Compared in double: a label beyond the voxel type's range simply does not occur.
    const double wanted = label ? static_cast<double>(*label) : 0.0;
    for (in.GoToBegin(); !in.IsAtEnd(); ++in, ++out)
    {
      const PixelType value = in.Get();
      *out = label ? (static_cast<double>(value) == wanted ? 1 : 0) : (value != PixelType(0) ? 1 : 0);
      voxels += *out;
    }
    if (label && voxels == 0)
    {
      present = labelsPresent(itkImage);
    }
  });
  if (label && voxels == 0)
  {
    throw Error(file, "label " + std::to_string(*label) + " does not occur (" + present + ")");
  }
  return lumo::ImportItkImage(mask.GetPointer());
}

unsigned int
sliceInterpolationFactor(const lumo::Image * mask)
{
  const lumo::Vector3D spacing = mask->GetSpacing();
  const double inPlane = std::min(spacing[0], spacing[1]);
  if (!(inPlane > 0.0) || !(spacing[2] > 2.0 * inPlane) || mask->GetSize()[2] < 2)
  {
    return 1;
  }
  return static_cast<unsigned int>(std::lround(spacing[2] / inPlane));
}

namespace
{
/** A connected piece (8-connected) of one slice of a mask: its pixels (indices within the slice) and centroid. */
struct SlicePiece
{
  std::vector<std::size_t> pixels;
  double cx{ 0.0 };
  double cy{ 0.0 };
  // Bounding box in pixels, to skip far pieces quickly.
  long x0{ 0 };
  long y0{ 0 };
  long x1{ 0 };
  long y1{ 0 };
};

std::vector<SlicePiece>
piecesOf(const unsigned char * slice, std::size_t nx, std::size_t ny)
{
  std::vector<SlicePiece> pieces;
  std::vector<char> seen(nx * ny, 0);
  std::vector<std::size_t> stack;
  for (std::size_t start = 0; start < nx * ny; ++start)
  {
    if (slice[start] == 0 || seen[start])
    {
      continue;
    }
    SlicePiece piece;
    seen[start] = 1;
    stack.push_back(start);
    while (!stack.empty())
    {
      const std::size_t i = stack.back();
      stack.pop_back();
      piece.pixels.push_back(i);
      const long x = static_cast<long>(i % nx);
      const long y = static_cast<long>(i / nx);
      for (long dy = -1; dy <= 1; ++dy)
        for (long dx = -1; dx <= 1; ++dx)
        {
          const long u = x + dx;
          const long v = y + dy;
          if (u < 0 || v < 0 || u >= static_cast<long>(nx) || v >= static_cast<long>(ny))
          {
            continue;
          }
          const std::size_t j = static_cast<std::size_t>(v) * nx + static_cast<std::size_t>(u);
          if (slice[j] != 0 && !seen[j])
          {
            seen[j] = 1;
            stack.push_back(j);
          }
        }
    }
    piece.x0 = piece.x1 = static_cast<long>(start % nx);
    piece.y0 = piece.y1 = static_cast<long>(start / nx);
    for (std::size_t i : piece.pixels)
    {
      piece.cx += static_cast<double>(i % nx);
      piece.cy += static_cast<double>(i / nx);
      piece.x0 = std::min(piece.x0, static_cast<long>(i % nx));
      piece.x1 = std::max(piece.x1, static_cast<long>(i % nx));
      piece.y0 = std::min(piece.y0, static_cast<long>(i / nx));
      piece.y1 = std::max(piece.y1, static_cast<long>(i / nx));
    }
    piece.cx /= static_cast<double>(piece.pixels.size());
    piece.cy /= static_cast<double>(piece.pixels.size());
    pieces.push_back(std::move(piece));
  }
  return pieces;
}

/** A piece of one slice that overlaps nothing in the neighbouring slice, moved towards the nearest piece there
 *  while it is interpolated: an oblique thin vessel is cut by thick slices into pieces that do not overlap from
 *  slice to slice, and interpolating the distances in place would leave a gap between every two of them. */
struct MovingPiece
{
  const SlicePiece * piece{ nullptr };
  // Where its centroid arrives in the other slice (pixels), and whether it starts in the lower slice.
  double dx{ 0.0 };
  double dy{ 0.0 };
  bool lower{ true };
};

/** The pieces of `from` that overlap nothing in `to`, each paired with the piece of `to` that comes nearest to it
 *  (edge to edge, at most `reach` mm). */
void
findMovingPieces(const std::vector<SlicePiece> & from,
                 const unsigned char * to,
                 const std::vector<SlicePiece> & toPieces,
                 std::size_t nx,
                 double sx,
                 double sy,
                 double reach,
                 bool lower,
                 std::vector<MovingPiece> & moving)
{
  for (const SlicePiece & piece : from)
  {
    if (std::any_of(piece.pixels.begin(), piece.pixels.end(), [to](std::size_t i) { return to[i] != 0; }))
    {
      continue;
    }
    double nearestGap = std::numeric_limits<double>::max();
    const SlicePiece * target = nullptr;
    for (const SlicePiece & other : toPieces)
    {
      const double bx = std::max<double>(0.0, static_cast<double>(std::max(other.x0 - piece.x1, piece.x0 - other.x1)));
      const double by = std::max<double>(0.0, static_cast<double>(std::max(other.y0 - piece.y1, piece.y0 - other.y1)));
      if (bx * sx > reach || by * sy > reach)
      {
        continue;
      }
      for (std::size_t j : other.pixels)
      {
        const double ox = static_cast<double>(j % nx);
        const double oy = static_cast<double>(j / nx);
        for (std::size_t i : piece.pixels)
        {
          const double gx = (ox - static_cast<double>(i % nx)) * sx;
          const double gy = (oy - static_cast<double>(i / nx)) * sy;
          const double gap = gx * gx + gy * gy;
          if (gap < nearestGap)
          {
            nearestGap = gap;
            target = &other;
          }
        }
      }
    }
    if (target == nullptr || std::sqrt(nearestGap) > reach)
    {
      continue;
    }
    MovingPiece move;
    move.piece = &piece;
    move.lower = lower;
    if (target->pixels.size() <= 4 * piece.pixels.size())
    {
      // Pieces of like size are the cuts of one vessel: centroid to centroid follows its centre line.
      move.dx = target->cx - piece.cx;
      move.dy = target->cy - piece.cy;
    }
    else
    {
      // A branch meeting a thicker vessel: towards the nearest pixel of it.
      double nearest = std::numeric_limits<double>::max();
      for (std::size_t j : target->pixels)
      {
        const double gx = (static_cast<double>(j % nx) - piece.cx) * sx;
        const double gy = (static_cast<double>(j / nx) - piece.cy) * sy;
        if (gx * gx + gy * gy < nearest)
        {
          nearest = gx * gx + gy * gy;
          move.dx = static_cast<double>(j % nx) - piece.cx;
          move.dy = static_cast<double>(j / nx) - piece.cy;
        }
      }
    }
    moving.push_back(move);
  }
}
} // namespace

lumo::Image::Pointer
interpolateSlices(const lumo::Image * mask, unsigned int factor, std::size_t & voxels, bool joinPieces)
{
  using SliceType = itk::Image<unsigned char, 2>;
  const auto input = lumo::ImageToItkImage<unsigned char>(mask);
  const MaskType::SizeType size = input->GetLargestPossibleRegion().GetSize();
  const std::size_t sliceVoxels = size[0] * size[1];
  const MaskType::SpacingType spacing = input->GetSpacing();
  const float step = static_cast<float>(std::min(spacing[0], spacing[1]));

  // Signed in-plane distance per slice (negative inside), shifted by half a pixel so that 0 lies between the
  // object's boundary pixels (0 in the distance map) and the background pixels next to them. Outside, distances
  // are capped at the slice spacing, as if the object were at most a slice away: where the object ends between two
  // slices it then ends in a dome instead of flat at its last slice, which thinning would fray into a star.
  const float cap = static_cast<float>(spacing[2]);
  std::vector<float> shifted(sliceVoxels * size[2]);
  for (std::size_t z = 0; z < size[2]; ++z)
  {
    const unsigned char * in = input->GetBufferPointer() + z * sliceVoxels;
    float * d = shifted.data() + z * sliceVoxels;
    const auto count =
      static_cast<std::size_t>(std::count_if(in, in + sliceVoxels, [](unsigned char v) { return v != 0; }));
    if (count == 0 || count == sliceVoxels)
    {
      std::fill(d, d + sliceVoxels, count == 0 ? cap : -cap);
      continue;
    }
    auto slice = SliceType::New();
    SliceType::SizeType sliceSize;
    sliceSize[0] = size[0];
    sliceSize[1] = size[1];
    slice->SetRegions(sliceSize);
    SliceType::SpacingType sliceSpacing;
    sliceSpacing[0] = spacing[0];
    sliceSpacing[1] = spacing[1];
    slice->SetSpacing(sliceSpacing);
    slice->Allocate();
    std::copy(in, in + sliceVoxels, slice->GetBufferPointer());
    auto distance = itk::SignedMaurerDistanceMapImageFilter<SliceType, itk::Image<float, 2>>::New();
    distance->SetInput(slice);
    distance->SetUseImageSpacing(true);
    distance->SetSquaredDistance(false);
    distance->SetInsideIsPositive(false);
    distance->SetNumberOfWorkUnits(1);
    distance->Update();
    const float * map = distance->GetOutput()->GetBufferPointer();
    for (std::size_t i = 0; i < sliceVoxels; ++i)
    {
      d[i] = std::min(cap, map[i] - 0.5f * step);
    }
  }

  // Pieces of a slice that overlap nothing in the next slice (or the previous) and the moves that join them.
  const double reach = 1.5 * spacing[2];
  std::vector<std::vector<SlicePiece>> pieces(size[2]);
  for (std::size_t z = 0; joinPieces && z < size[2]; ++z)
  {
    pieces[z] = piecesOf(input->GetBufferPointer() + z * sliceVoxels, size[0], size[1]);
  }
  std::vector<std::vector<MovingPiece>> moves(size[2]);
  for (std::size_t z = 0; joinPieces && z + 1 < size[2]; ++z)
  {
    const unsigned char * lower = input->GetBufferPointer() + z * sliceVoxels;
    const unsigned char * upper = lower + sliceVoxels;
    findMovingPieces(pieces[z], upper, pieces[z + 1], size[0], spacing[0], spacing[1], reach, true, moves[z]);
    findMovingPieces(pieces[z + 1], lower, pieces[z], size[0], spacing[0], spacing[1], reach, false, moves[z]);
  }

  auto output = MaskType::New();
  MaskType::SizeType outputSize = size;
  outputSize[2] = (size[2] - 1) * factor + 1;
  output->SetRegions(outputSize);
  MaskType::SpacingType outputSpacing = spacing;
  outputSpacing[2] = spacing[2] / factor;
  output->SetSpacing(outputSpacing);
  output->SetOrigin(input->GetOrigin());
  output->SetDirection(input->GetDirection());
  output->Allocate();
  voxels = 0;
  for (std::size_t z = 0; z < outputSize[2]; ++z)
  {
    unsigned char * out = output->GetBufferPointer() + z * sliceVoxels;
    const std::size_t below = z / factor;
    const unsigned int offset = static_cast<unsigned int>(z % factor);
    if (offset == 0)
    {
      // The original slices stay as they are.
      const unsigned char * in = input->GetBufferPointer() + below * sliceVoxels;
      for (std::size_t i = 0; i < sliceVoxels; ++i)
      {
        out[i] = in[i] != 0 ? 1 : 0;
        voxels += out[i];
      }
      continue;
    }
    const float t = static_cast<float>(offset) / static_cast<float>(factor);
    const float * a = shifted.data() + below * sliceVoxels;
    const float * b = a + sliceVoxels;
    for (std::size_t i = 0; i < sliceVoxels; ++i)
    {
      out[i] = (1.0f - t) * a[i] + t * b[i] < 0.0f ? 1 : 0;
    }
    // A moving piece is drawn on its way from its own slice to just past the middle, so that the pieces from both
    // sides overlap there; the dome that the distances leave in its place would be a bump beside its path.
    for (const MovingPiece & move : moves[below])
    {
      for (std::size_t i : move.piece->pixels)
      {
        out[i] = 0;
      }
    }
    for (const MovingPiece & move : moves[below])
    {
      const bool drawn = move.lower ? 2 * offset <= factor + 1 : 2 * offset + 1 >= factor;
      if (!drawn)
      {
        continue;
      }
      const double f = move.lower ? t : 1.0 - t;
      const long sx = std::lround(f * move.dx);
      const long sy = std::lround(f * move.dy);
      for (std::size_t i : move.piece->pixels)
      {
        const long x = static_cast<long>(i % size[0]) + sx;
        const long y = static_cast<long>(i / size[0]) + sy;
        if (x >= 0 && y >= 0 && x < static_cast<long>(size[0]) && y < static_cast<long>(size[1]))
        {
          out[static_cast<std::size_t>(y) * size[0] + static_cast<std::size_t>(x)] = 1;
        }
      }
    }
    voxels += static_cast<std::size_t>(std::count(out, out + sliceVoxels, 1));
  }
  return lumo::ImportItkImage(output.GetPointer());
}

namespace
{
/** Index-space helpers of a mask with its geometry. */
struct MaskGeometry
{
  MaskType::ConstPointer image;
  MaskType::SizeType size;
  std::size_t
  index(long x, long y, long z) const
  {
    return (static_cast<std::size_t>(z) * size[1] + static_cast<std::size_t>(y)) * size[0] +
           static_cast<std::size_t>(x);
  }
  bool
  inside(long x, long y, long z) const
  {
    return x >= 0 && y >= 0 && z >= 0 && x < static_cast<long>(size[0]) && y < static_cast<long>(size[1]) &&
           z < static_cast<long>(size[2]);
  }
  itk::Point<double, 3>
  world(long x, long y, long z) const
  {
    MaskType::IndexType i{ { x, y, z } };
    itk::Point<double, 3> p;
    image->TransformIndexToPhysicalPoint(i, p);
    return p;
  }
  /** Whether the voxel nearest to a world point is in the mask (false outside the image). */
  bool
  inMask(const itk::Point<double, 3> & p) const
  {
    itk::ContinuousIndex<double, 3> c;
    image->TransformPhysicalPointToContinuousIndex(p, c);
    const long x = std::lround(c[0]);
    const long y = std::lround(c[1]);
    const long z = std::lround(c[2]);
    return inside(x, y, z) && image->GetBufferPointer()[index(x, y, z)] != 0;
  }
};

/** Marks the mask voxels within `reach` of a point. */
void
cover(const MaskGeometry & g, const itk::Point<double, 3> & centre, double reach, std::vector<unsigned char> & covered)
{
  itk::ContinuousIndex<double, 3> c;
  g.image->TransformPhysicalPointToContinuousIndex(centre, c);
  const MaskType::SpacingType & spacing = g.image->GetSpacing();
  // Half-widths from the smallest spacing hold for any direction of the axes.
  const double smallest = std::min({ spacing[0], spacing[1], spacing[2] });
  const long half = static_cast<long>(std::ceil(reach / smallest));
  const long cx = std::lround(c[0]);
  const long cy = std::lround(c[1]);
  const long cz = std::lround(c[2]);
  for (long z = cz - half; z <= cz + half; ++z)
    for (long y = cy - half; y <= cy + half; ++y)
      for (long x = cx - half; x <= cx + half; ++x)
      {
        if (g.inside(x, y, z) && g.world(x, y, z).SquaredEuclideanDistanceTo(centre) <= reach * reach)
        {
          covered[g.index(x, y, z)] = 1;
        }
      }
}
} // namespace

std::optional<UncoveredPart>
thickestUncoveredPart(const ArVesselTree & tree, const lumo::Image * mask)
{
  if (tree.isNull() || tree->getRoot().isNull() || tree->getRoot()->numberOfPoints() == 0)
  {
    return std::nullopt;
  }
  MaskGeometry g;
  g.image = lumo::ImageToItkImage<unsigned char>(mask).GetPointer();
  g.size = g.image->GetLargestPossibleRegion().GetSize();
  const MaskType::SpacingType & spacing = g.image->GetSpacing();
  const double voxel = std::max({ spacing[0], spacing[1], spacing[2] });
  const double fine = std::min({ spacing[0], spacing[1], spacing[2] });
  const unsigned char * data = g.image->GetBufferPointer();
  const std::size_t count = g.size[0] * g.size[1] * g.size[2];

  // What the tree covers: every centre-line sample with its radius and a voxel.
  std::vector<unsigned char> covered(count, 0);
  double largest = 0.0;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (vessel.isNull())
    {
      continue;
    }
    const auto & points = vessel->getPoints();
    for (std::size_t i = 0; i < points.size(); ++i)
    {
      const VesselPoint & b = points[i];
      const VesselPoint & a = i > 0 ? points[i - 1] : b;
      const double length =
        std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y) + (b.z - a.z) * (b.z - a.z));
      const int steps = std::max(1, static_cast<int>(std::ceil(length / (0.5 * fine))));
      for (int s = i > 0 ? 1 : 0; s <= steps; ++s)
      {
        const double t = static_cast<double>(s) / steps;
        itk::Point<double, 3> p;
        p[0] = a.x + t * (b.x - a.x);
        p[1] = a.y + t * (b.y - a.y);
        p[2] = a.z + t * (b.z - a.z);
        const double radius = 0.5 * (a.diameter + t * (b.diameter - a.diameter));
        cover(g, p, radius + voxel, covered);
        largest = std::max(largest, radius);
      }
    }
  }

  // The uncovered parts, largest first.
  std::vector<std::vector<std::size_t>> parts;
  std::vector<unsigned char> seen(count, 0);
  for (std::size_t start = 0; start < count; ++start)
  {
    if (data[start] == 0 || covered[start] != 0 || seen[start] != 0)
    {
      continue;
    }
    std::vector<std::size_t> part{ start };
    seen[start] = 1;
    for (std::size_t next = 0; next < part.size(); ++next)
    {
      const long x = static_cast<long>(part[next] % g.size[0]);
      const long y = static_cast<long>((part[next] / g.size[0]) % g.size[1]);
      const long z = static_cast<long>(part[next] / (g.size[0] * g.size[1]));
      for (long dz = -1; dz <= 1; ++dz)
        for (long dy = -1; dy <= 1; ++dy)
          for (long dx = -1; dx <= 1; ++dx)
          {
            if (!g.inside(x + dx, y + dy, z + dz))
            {
              continue;
            }
            const std::size_t n = g.index(x + dx, y + dy, z + dz);
            if (data[n] != 0 && covered[n] == 0 && seen[n] == 0)
            {
              seen[n] = 1;
              part.push_back(n);
            }
          }
    }
    parts.push_back(std::move(part));
  }
  covered.clear();
  seen.clear();
  std::sort(parts.begin(), parts.end(), [](const auto & a, const auto & b) { return a.size() > b.size(); });
  if (parts.size() > 3)
  {
    parts.resize(3);
  }

  // The thickest uncovered voxel: its distance to the background, measured in a box around its part.
  double thickest = 0.0;
  itk::Point<double, 3> centre;
  for (const auto & part : parts)
  {
    MaskType::IndexType low{
      { static_cast<long>(g.size[0]), static_cast<long>(g.size[1]), static_cast<long>(g.size[2]) }
    };
    MaskType::IndexType high{ { 0, 0, 0 } };
    for (const std::size_t v : part)
    {
      const long c[3] = { static_cast<long>(v % g.size[0]),
                          static_cast<long>((v / g.size[0]) % g.size[1]),
                          static_cast<long>(v / (g.size[0] * g.size[1])) };
      for (unsigned int a = 0; a < 3; ++a)
      {
        low[a] = std::min(low[a], c[a]);
        high[a] = std::max(high[a], c[a]);
      }
    }
    // The box reaches as far beyond the part as the part is long: a background farther away than that would only
    // make the part thicker than the two voxels asked for below.
    const long pad = std::max({ high[0] - low[0], high[1] - low[1], high[2] - low[2] }) + 2;
    MaskType::RegionType box;
    for (unsigned int a = 0; a < 3; ++a)
    {
      low[a] = std::max(0L, low[a] - pad);
      high[a] = std::min(static_cast<long>(g.size[a]) - 1, high[a] + pad);
      box.SetIndex(a, low[a]);
      box.SetSize(a, static_cast<std::size_t>(high[a] - low[a] + 1));
    }
    auto crop = itk::RegionOfInterestImageFilter<MaskType, MaskType>::New();
    crop->SetInput(g.image);
    crop->SetRegionOfInterest(box);
    auto distance = itk::SignedMaurerDistanceMapImageFilter<MaskType, itk::Image<float, 3>>::New();
    distance->SetInput(crop->GetOutput());
    distance->SetUseImageSpacing(true);
    distance->SetSquaredDistance(false);
    distance->SetInsideIsPositive(true);
    distance->SetNumberOfWorkUnits(1);
    distance->Update();
    const itk::Image<float, 3> * map = distance->GetOutput();
    for (const std::size_t v : part)
    {
      const MaskType::IndexType i{ { static_cast<long>(v % g.size[0]),
                                     static_cast<long>((v / g.size[0]) % g.size[1]),
                                     static_cast<long>(v / (g.size[0] * g.size[1])) } };
      // The cut-out's indices start at 0. The map is 0 on the boundary voxels: half a voxel more is the radius.
      const MaskType::IndexType inBox{ { i[0] - low[0], i[1] - low[1], i[2] - low[2] } };
      const double radius = map->GetPixel(inBox) + 0.5 * fine;
      if (radius > thickest)
      {
        thickest = radius;
        centre = g.world(i[0], i[1], i[2]);
      }
    }
  }
  // A lost trunk is about as thick as the thickest vessel found; bumps of the wall and loose ends are much thinner.
  if (thickest < 1.5 * fine || thickest < 0.75 * largest)
  {
    return std::nullopt;
  }
  return UncoveredPart{ centre, thickest };
}

StubResult
extendRootTowards(const ArVesselTree & tree, const lumo::Image * mask, const UncoveredPart & part)
{
  StubResult result;
  if (tree.isNull() || tree->getRoot().isNull() || tree->getRoot()->numberOfPoints() == 0)
  {
    return result;
  }
  MaskGeometry g;
  g.image = lumo::ImageToItkImage<unsigned char>(mask).GetPointer();
  g.size = g.image->GetLargestPossibleRegion().GetSize();
  const MaskType::SpacingType & spacing = g.image->GetSpacing();
  const double voxel = std::max({ spacing[0], spacing[1], spacing[2] });
  const double fine = std::min({ spacing[0], spacing[1], spacing[2] });
  const itk::Point<double, 3> centre = part.centre;
  const double thickest = part.radius;

  // From the root's first point through the thickest voxel, inside the mask all the way.
  ar<Vessel> root = tree->getRoot();
  const VesselPoint first = root->getPoint(0);
  itk::Point<double, 3> q;
  q[0] = first.x;
  q[1] = first.y;
  q[2] = first.z;
  itk::Vector<double, 3> direction = centre - q;
  const double toCentre = direction.GetNorm();
  if (toCentre < fine)
  {
    return result;
  }
  direction /= toCentre;
  const double step = 0.5 * fine;
  double reach = 0.0;
  while (g.inMask(q + direction * (reach + step)))
  {
    reach += step;
  }
  if (reach < toCentre)
  {
    return result;
  }
  // The mask ends about a radius beyond the centre line's end.
  const double length = std::max(toCentre, reach - thickest);
  const int pieces = std::max(1, static_cast<int>(std::ceil(length / voxel)));
  Vessel::PointList points;
  for (int s = pieces; s >= 1; --s)
  {
    const double t = static_cast<double>(s) / pieces;
    const itk::Point<double, 3> p = q + direction * (t * length);
    points.push_back(VesselPoint{ static_cast<float>(p[0]),
                                  static_cast<float>(p[1]),
                                  static_cast<float>(p[2]),
                                  static_cast<float>(first.diameter + t * (2.0 * thickest - first.diameter)) });
  }
  points.insert(points.end(), root->getPoints().begin(), root->getPoints().end());
  root->setPoints(std::move(points));
  result.length = length;
  result.radius = thickest;
  return result;
}

std::size_t
extendTerminalVessels(const ArVesselTree & tree, const lumo::Image * mask)
{
  if (tree.isNull() || tree->getRoot().isNull())
  {
    return 0;
  }
  MaskGeometry g;
  g.image = lumo::ImageToItkImage<unsigned char>(mask).GetPointer();
  g.size = g.image->GetLargestPossibleRegion().GetSize();
  const MaskType::SpacingType & spacing = g.image->GetSpacing();
  const double voxel = std::max({ spacing[0], spacing[1], spacing[2] });
  const double step = 0.25 * std::min({ spacing[0], spacing[1], spacing[2] });

  std::vector<ar<Vessel>> ends;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    ar<Vessel> vessel = it->next();
    if (!vessel.isNull() && vessel->numberOfPoints() >= 2 && tree->isLeaf(vessel))
    {
      ends.push_back(vessel);
    }
  }
  std::size_t extended = 0;
  for (ar<Vessel> & vessel : ends)
  {
    const VesselPoint last = vessel->getPoints().back();
    const double radius = std::max(0.5 * last.diameter, 0.5 * voxel);
    itk::Point<double, 3> end;
    end[0] = last.x;
    end[1] = last.y;
    end[2] = last.z;
    // The direction of the last stretch, not of the last step, which thinning makes jagged.
    const double stretch = std::max(2.0, 2.0 * radius);
    itk::Point<double, 3> back = end;
    double walked = 0.0;
    for (std::size_t i = vessel->numberOfPoints() - 1; i-- > 0 && walked < stretch;)
    {
      const VesselPoint & p = vessel->getPoint(i);
      itk::Point<double, 3> q;
      q[0] = p.x;
      q[1] = p.y;
      q[2] = p.z;
      walked += (q - back).GetNorm();
      back = q;
    }
    itk::Vector<double, 3> direction = end - back;
    const double norm = direction.GetNorm();
    if (norm < step || !g.inMask(end))
    {
      continue;
    }
    direction /= norm;
    const double most = std::max(5.0, 4.0 * radius);
    double reach = 0.0;
    while (reach + step <= most + radius && g.inMask(end + direction * (reach + step)))
    {
      reach += step;
    }
    const double length = std::min(most, reach - radius);
    if (length < 0.5 * voxel)
    {
      continue;
    }
    Vessel::PointList points = vessel->getPoints();
    const int pieces = std::max(1, static_cast<int>(std::ceil(length / voxel)));
    for (int s = 1; s <= pieces; ++s)
    {
      const itk::Point<double, 3> p = end + direction * (length * s / pieces);
      points.push_back(
        VesselPoint{ static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2]), last.diameter });
    }
    vessel->setPoints(std::move(points));
    ++extended;
  }
  return extended;
}
} // namespace arbo

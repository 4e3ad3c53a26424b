#include "lumoLiverPhantomSource.h"

#include <itkMacro.h>
#include <itkMultiThreaderBase.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <random>
#include <vector>

namespace lumo
{
namespace
{
using Vec = std::array<double, 3>;

Vec
add(const Vec & a, const Vec & b)
{
  return { a[0] + b[0], a[1] + b[1], a[2] + b[2] };
}
Vec
sub(const Vec & a, const Vec & b)
{
  return { a[0] - b[0], a[1] - b[1], a[2] - b[2] };
}
Vec
scale(const Vec & a, double s)
{
  return { a[0] * s, a[1] * s, a[2] * s };
}
double
dot(const Vec & a, const Vec & b)
{
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
double
length(const Vec & a)
{
  return std::sqrt(dot(a, a));
}
Vec
normalized(const Vec & a)
{
  const double n = length(a);
  return n > 0.0 ? scale(a, 1.0 / n) : Vec{ 0.0, 0.0, 1.0 };
}

/** The value as the .ves format writes it (six significant digits), so that the files hold exactly the trees the
 *  masks were made from. */
double
stored(double value)
{
  if (value == 0.0 || !std::isfinite(value))
  {
    return value;
  }
  const double scale = std::pow(10.0, 5 - static_cast<int>(std::floor(std::log10(std::abs(value)))));
  return static_cast<double>(static_cast<float>(std::round(value * scale) / scale));
}

Vec
stored(const Vec & p)
{
  return { stored(p[0]), stored(p[1]), stored(p[2]) };
}

/** (|q| - 1) times the shortest semi-axis, q the point in the ellipsoid's unit frame: 1-Lipschitz. */
double
ellipsoid(double x, double y, double z, const Vec & centre, const Vec & axes)
{
  const double qx = (x - centre[0]) / axes[0];
  const double qy = (y - centre[1]) / axes[1];
  const double qz = (z - centre[2]) / axes[2];
  return (std::sqrt(qx * qx + qy * qy + qz * qz) - 1.0) * std::min({ axes[0], axes[1], axes[2] });
}

/** Polynomial smooth minimum; its gradient is a convex combination of the two gradients, so it stays 1-Lipschitz. */
double
smoothMin(double a, double b, double k)
{
  const double h = std::clamp(0.5 + 0.5 * (b - a) / k, 0.0, 1.0);
  return b + h * (a - b) - k * h * (1.0 - h);
}
double
smoothMax(double a, double b, double k)
{
  return -smoothMin(-a, -b, k);
}

/** Uniform numbers from the raw 64-bit engine, so that the phantom does not depend on the standard library's
 *  distributions (which differ between implementations). */
class Random
{
public:
  explicit Random(std::uint64_t seed)
    : m_Engine(seed)
  {}
  double
  uniform()
  {
    return static_cast<double>(m_Engine() >> 11) * (1.0 / 9007199254740992.0);
  }
  double
  uniform(double low, double high)
  {
    return low + (high - low) * uniform();
  }
  Vec
  unitVector()
  {
    const double z = uniform(-1.0, 1.0);
    const double phi = uniform(0.0, 6.283185307179586);
    const double s = std::sqrt(std::max(0.0, 1.0 - z * z));
    return { s * std::cos(phi), s * std::sin(phi), z };
  }

private:
  std::mt19937_64 m_Engine;
};

/** Territory labels of the side branches of a hepatic vein stem, by the side branch's direction. */
struct VeinRule
{
  std::int32_t lateralSuperior;
  std::int32_t lateralInferior;
  std::int32_t medialSuperior;
  std::int32_t medialInferior;
  double lateralSign; // sign of x towards the rule's "lateral" side
};

const VeinRule veinRules[] = {
  { 0, 0, 0, 0, 0.0 },                      // none: branches inherit the parent's label
  { HS_RRS, HS_RRI, HS_RLS, HS_RLI, -1.0 }, // right hepatic vein
  { HS_MRS, HS_MRI, HS_MLS, HS_MLI, -1.0 }, // middle hepatic vein (right and left of it)
  { HS_LS, HS_LI, HS_LS, HS_LI, 1.0 },      // left hepatic vein
};

/** One vessel of the layout that is placed by hand: the Couinaud layout down to the segmental branches and the
 *  three hepatic vein stems. Siblings' fractions of the parent's flow add up to 1 (Murray's law). */
struct PlannedVessel
{
  int parent;
  double fraction;
  Vec target;
  std::int32_t segment; // 0: takes the label of its largest branch
  int rule;             // vein rule of a hepatic stem
  double reach;         // fraction of the way to the target that the vessel covers
};

struct GrownVessel
{
  std::vector<Vec> points;
  double startRadius{ 0.0 };
  double endRadius{ 0.0 };
  std::int32_t segment{ 0 };
  int rule{ 0 };
  std::vector<int> children;
};

/** Grows one tree: the planned vessels first, then random Murray bifurcations until the vessels get thinner than the
 *  minimum radius or reach the organ's wall. */
class TreeGrower
{
public:
  TreeGrower(Random & random, const Vec & low, const Vec & high, double minimumRadius, double taper, double margin)
    : m_Random(random)
    , m_Low(low)
    , m_High(high)
    , m_MinimumRadius(minimumRadius)
    , m_Taper(taper)
    , m_Margin(margin)
  {}

  std::vector<GrownVessel>
  grow(const Vec & start, double rootRadius, const std::vector<PlannedVessel> & plan)
  {
    m_Vessels.clear();
    std::vector<int> planned;
    for (const PlannedVessel & p : plan)
    {
      GrownVessel vessel;
      Vec from = start;
      Vec direction;
      if (p.parent < 0)
      {
        vessel.startRadius = rootRadius;
        direction = sub(p.target, start);
      }
      else
      {
        const GrownVessel & parent = m_Vessels[planned[p.parent]];
        from = parent.points.back();
        vessel.startRadius = parent.endRadius * std::cbrt(p.fraction);
        direction = sub(p.target, from);
      }
      // Targets move a little with the seed, so that seeds differ from the first branches on.
      Vec target = add(p.target, scale(m_Random.unitVector(), 4.0));
      vessel.points = polyline(from, direction, vessel.startRadius, p.reach * length(sub(target, from)), &target, 0.0);
      if (vessel.points.size() < 2)
      {
        itkGenericExceptionMacro(<< "The phantom's vessel layout does not fit the organ");
      }
      vessel.endRadius = vessel.startRadius * m_Taper;
      vessel.segment = p.segment;
      vessel.rule = p.rule;
      m_Vessels.push_back(vessel);
      const int index = static_cast<int>(m_Vessels.size()) - 1;
      planned.push_back(index);
      if (p.parent >= 0)
      {
        m_Vessels[planned[p.parent]].children.push_back(index);
      }
    }
    std::deque<int> queue;
    for (int index : planned)
    {
      if (m_Vessels[index].children.empty())
      {
        queue.push_back(index);
      }
    }
    while (!queue.empty())
    {
      const int index = queue.front();
      queue.pop_front();
      bifurcate(index, queue);
    }
    // A vessel without a segment of its own carries that of its thickest branch; branches come later in the list.
    for (auto it = m_Vessels.rbegin(); it != m_Vessels.rend(); ++it)
    {
      if (it->segment == 0 && !it->children.empty())
      {
        it->segment = m_Vessels[it->children.front()].segment;
      }
    }
    return m_Vessels;
  }

  /** The organ and the field of view as one implicit shape (1-Lipschitz, negative inside). */
  double
  allowed(const Vec & p) const
  {
    double value = LiverPhantomSource::EvaluateOrgan(p[0], p[1], p[2]);
    for (int k = 0; k < 3; ++k)
    {
      value = std::max({ value, m_Low[k] - p[k], p[k] - m_High[k] });
    }
    return value;
  }

private:
  static constexpr double maximumStep = 2.0;

  Vec
  inward(const Vec & p) const
  {
    const double h = 0.5;
    Vec g;
    for (int k = 0; k < 3; ++k)
    {
      Vec a = p;
      Vec b = p;
      a[k] -= h;
      b[k] += h;
      g[k] = (allowed(b) - allowed(a)) / (2.0 * h);
    }
    return scale(normalized(g), -1.0);
  }

  /** A centre line from start, steps of at most 2 mm, each point at least radius + margin inside; it turns away
   *  from the wall when it meets it and ends where it cannot. */
  std::vector<Vec>
  polyline(const Vec & start, const Vec & direction, double radius, double wanted, const Vec * target, double jitter)
  {
    std::vector<Vec> points{ stored(start) };
    const int steps = std::max(1, static_cast<int>(std::ceil(wanted / maximumStep)));
    const double step = std::max(wanted, 1.0) / steps;
    const double required = -(radius + m_Margin);
    Vec p = points.front();
    Vec d = normalized(direction);
    for (int i = 0; i < steps; ++i)
    {
      Vec want = d;
      if (target != nullptr)
      {
        const Vec toTarget = sub(*target, p);
        const double distance = length(toTarget);
        if (distance > 1e-6)
        {
          want = add(want, scale(toTarget, 0.5 / distance));
        }
      }
      const Vec wobble = m_Random.unitVector();
      d = normalized(add(want, scale(wobble, jitter)));
      bool placed = false;
      for (int attempt = 0; attempt < 8 && !placed; ++attempt)
      {
        const Vec q = stored(add(p, scale(d, step)));
        if (allowed(q) <= required)
        {
          p = q;
          placed = true;
        }
        else
        {
          d = normalized(add(d, scale(inward(q), 0.7)));
        }
      }
      if (!placed)
      {
        break;
      }
      points.push_back(p);
    }
    return points;
  }

  void
  bifurcate(int index, std::deque<int> & queue)
  {
    const GrownVessel & parent = m_Vessels[index];
    const std::size_t n = parent.points.size();
    const Vec d = normalized(sub(parent.points[n - 1], parent.points[n - 2]));
    const double r = parent.endRadius;
    double f = m_Random.uniform(0.55, 0.85);
    const Vec w = m_Random.unitVector();
    const double lengthA = m_Random.uniform(4.0, 7.0);
    const double lengthB = m_Random.uniform(4.0, 7.0);
    if (r * std::cbrt(1.0 - f) < m_MinimumRadius)
    {
      f = 0.5;
    }
    const double rA = r * std::cbrt(f);
    const double rB = r * std::cbrt(1.0 - f);
    if (rB < m_MinimumRadius)
    {
      return;
    }
    // Branching angles of least work for the two radii.
    const double r2 = r * r;
    const double cosA = std::clamp((r2 * r2 + std::pow(rA, 4) - std::pow(rB, 4)) / (2.0 * r2 * rA * rA), -1.0, 1.0);
    const double cosB = std::clamp((r2 * r2 + std::pow(rB, 4) - std::pow(rA, 4)) / (2.0 * r2 * rB * rB), -1.0, 1.0);
    Vec u = sub(w, scale(d, dot(w, d)));
    if (length(u) < 1e-6)
    {
      u = std::abs(d[0]) < 0.9 ? Vec{ 1.0, 0.0, 0.0 } : Vec{ 0.0, 1.0, 0.0 };
      u = sub(u, scale(d, dot(u, d)));
    }
    u = normalized(u);
    const Vec dA = add(scale(d, cosA), scale(u, std::sqrt(1.0 - cosA * cosA)));
    const Vec dB = sub(scale(d, cosB), scale(u, std::sqrt(1.0 - cosB * cosB)));
    const Vec from = parent.points.back();
    const std::int32_t segment = parent.segment;
    const int rule = parent.rule;
    GrownVessel a;
    a.points = polyline(from, dA, rA, rA * lengthA + 2.0, nullptr, 0.15);
    GrownVessel b;
    b.points = polyline(from, dB, rB, rB * lengthB + 2.0, nullptr, 0.15);
    if (a.points.size() < 2 || b.points.size() < 2)
    {
      return;
    }
    a.startRadius = rA;
    a.endRadius = rA * m_Taper;
    a.segment = segment;
    a.rule = rule;
    b.startRadius = rB;
    b.endRadius = rB * m_Taper;
    b.segment = segment;
    if (rule != 0)
    {
      const VeinRule & v = veinRules[rule];
      const bool lateral = dB[0] * v.lateralSign > 0.0;
      const bool superior = dB[2] >= 0.0;
      b.segment =
        lateral ? (superior ? v.lateralSuperior : v.lateralInferior) : (superior ? v.medialSuperior : v.medialInferior);
    }
    m_Vessels.push_back(std::move(a));
    m_Vessels.push_back(std::move(b));
    const int first = static_cast<int>(m_Vessels.size()) - 2;
    m_Vessels[index].children = { first, first + 1 };
    queue.push_back(first);
    queue.push_back(first + 1);
  }

  Random & m_Random;
  Vec m_Low;
  Vec m_High;
  double m_MinimumRadius;
  double m_Taper;
  double m_Margin;
  std::vector<GrownVessel> m_Vessels;
};

const std::vector<PlannedVessel> portalPlan = {
  { -1, 1.0, { -5, 12, -14 }, 0, 0, 1.0 },      // 0 main portal vein from the hilum
  { 0, 0.62, { -32, 10, -6 }, 0, 0, 1.0 },      // 1 right portal vein
  { 0, 0.38, { 22, 8, -6 }, 0, 0, 1.0 },        // 2 left portal vein, transverse part
  { 1, 0.55, { -42, -14, 0 }, 0, 0, 1.0 },      // 3 right anterior branch
  { 1, 0.45, { -58, 28, -4 }, 0, 0, 1.0 },      // 4 right posterior branch
  { 3, 0.55, { -45, -8, 40 }, S_VIII, 0, 0.6 }, // 5
  { 3, 0.45, { -50, -30, -32 }, S_V, 0, 0.6 },  // 6
  { 4, 0.5, { -72, 36, 32 }, S_VII, 0, 0.6 },   // 7
  { 4, 0.5, { -80, 20, -36 }, S_VI, 0, 0.6 },   // 8
  { 2, 0.9, { 32, -12, 0 }, 0, 0, 1.0 },        // 9 umbilical part
  { 2, 0.1, { 2, 36, 8 }, S_I, 0, 0.6 },        // 10 caudate branch
  { 9, 0.55, { 50, -8, 12 }, 0, 0, 1.0 },       // 11 lateral branch of the left lobe
  { 9, 0.45, { 14, -30, 4 }, 0, 0, 1.0 },       // 12 medial branch (segment IV)
  { 11, 0.5, { 78, 6, 24 }, S_II, 0, 0.6 },     // 13
  { 11, 0.5, { 72, -24, 8 }, S_III, 0, 0.6 },   // 14
  { 12, 0.5, { 8, -28, 32 }, S_IVa, 0, 0.6 },   // 15
  { 12, 0.5, { 8, -44, -16 }, S_IVb, 0, 0.6 },  // 16
};

const std::vector<PlannedVessel> hepaticPlan = {
  { -1, 1.0, { -8, 26, 26 }, 0, 0, 1.0 },          // 0 confluence at the vena cava
  { 0, 0.45, { -78, 12, -12 }, HS_RSV, 1, 0.35 },  // 1 right hepatic vein
  { 0, 0.55, { 2, 22, 18 }, 0, 0, 1.0 },           // 2 common trunk of the middle and left veins
  { 2, 0.55, { -12, -35, -22 }, HS_SMM, 2, 0.35 }, // 3 middle hepatic vein
  { 2, 0.45, { 58, 0, 20 }, HS_LSV, 3, 0.35 },     // 4 left hepatic vein
};

const Vec hilum{ 0, 14, -28 };
const Vec venaCava{ -12, 32, 36 };

/** Breadth-first ids from 1, points with diameters interpolated by arc length. */
ArVesselTree
makeTree(const std::vector<GrownVessel> & vessels, std::int32_t type)
{
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  std::deque<std::pair<int, VesselNode *>> queue{ { 0, nullptr } };
  std::int32_t id = 1;
  while (!queue.empty())
  {
    const auto [index, parentNode] = queue.front();
    queue.pop_front();
    const GrownVessel & grown = vessels[index];
    ar<Vessel> vessel(new Vessel());
    vessel->setVesselId(id++);
    vessel->getProperties().setBloodVesselType(type);
    vessel->getProperties().setSegmentType(grown.segment);
    double total = 0.0;
    for (std::size_t i = 1; i < grown.points.size(); ++i)
    {
      total += length(sub(grown.points[i], grown.points[i - 1]));
    }
    double run = 0.0;
    for (std::size_t i = 0; i < grown.points.size(); ++i)
    {
      if (i > 0)
      {
        run += length(sub(grown.points[i], grown.points[i - 1]));
      }
      const double t = total > 0.0 ? run / total : 0.0;
      const double radius = grown.startRadius + t * (grown.endRadius - grown.startRadius);
      const Vec & p = grown.points[i];
      vessel->appendPoint({ static_cast<float>(p[0]),
                            static_cast<float>(p[1]),
                            static_cast<float>(p[2]),
                            static_cast<float>(stored(2.0 * radius)) });
    }
    VesselNode * node = nullptr;
    if (parentNode == nullptr)
    {
      tree->setRoot(vessel);
      node = tree->getRootNode();
    }
    else
    {
      node = new VesselNode(parentNode, vessel);
      parentNode->addChild(node);
    }
    for (int child : grown.children)
    {
      queue.emplace_back(child, node);
    }
  }
  return handle;
}

/** Straight piece of a centre line with the radii at its ends, as stored in the tree. */
struct Segment
{
  Vec a;
  Vec b;
  double ra;
  double rb;
};

std::vector<Segment>
segmentsOf(const ArVesselTree & tree)
{
  std::vector<Segment> segments;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const Vessel::PointList & points = it->next()->getPoints();
    for (std::size_t i = 1; i < points.size(); ++i)
    {
      const VesselPoint & p = points[i - 1];
      const VesselPoint & q = points[i];
      segments.push_back({ { p.x, p.y, p.z }, { q.x, q.y, q.z }, 0.5 * p.diameter, 0.5 * q.diameter });
    }
  }
  return segments;
}

struct Grid
{
  std::array<std::size_t, 3> size;
  Vec origin;
  Vec spacing;
  double
  coordinate(int axis, std::size_t index) const
  {
    return origin[axis] + static_cast<double>(index) * spacing[axis];
  }
};

void
rasteriseSegments(const std::vector<Segment> & segments, const Grid & grid, std::uint8_t * voxels)
{
  const std::size_t nx = grid.size[0];
  const std::size_t ny = grid.size[1];
  auto slice = [&](itk::SizeValueType k) {
    const double z = grid.coordinate(2, k);
    std::uint8_t * plane = voxels + k * nx * ny;
    for (const Segment & s : segments)
    {
      const double reach = std::max(s.ra, s.rb) + 1e-9;
      if (z < std::min(s.a[2], s.b[2]) - reach || z > std::max(s.a[2], s.b[2]) + reach)
      {
        continue;
      }
      std::array<std::size_t, 2> first{};
      std::array<std::size_t, 2> last{};
      bool empty = false;
      for (int axis = 0; axis < 2; ++axis)
      {
        const double low = (std::min(s.a[axis], s.b[axis]) - reach - grid.origin[axis]) / grid.spacing[axis];
        const double high = (std::max(s.a[axis], s.b[axis]) + reach - grid.origin[axis]) / grid.spacing[axis];
        const double top = static_cast<double>(grid.size[axis] - 1);
        if (high < 0.0 || low > top)
        {
          empty = true;
          break;
        }
        first[axis] = static_cast<std::size_t>(std::ceil(std::max(low, 0.0)));
        last[axis] = static_cast<std::size_t>(std::floor(std::min(high, top)));
      }
      if (empty)
      {
        continue;
      }
      const Vec ab = sub(s.b, s.a);
      const double ll = dot(ab, ab);
      for (std::size_t j = first[1]; j <= last[1]; ++j)
      {
        const double y = grid.coordinate(1, j);
        for (std::size_t i = first[0]; i <= last[0]; ++i)
        {
          const Vec p{ grid.coordinate(0, i), y, z };
          const Vec ap = sub(p, s.a);
          double t = ll > 0.0 ? dot(ap, ab) / ll : 0.0;
          t = std::clamp(t, 0.0, 1.0);
          const Vec d = sub(ap, scale(ab, t));
          const double r = s.ra + t * (s.rb - s.ra);
          if (dot(d, d) <= r * r)
          {
            plane[j * nx + i] = 1;
          }
        }
      }
    }
  };
  itk::MultiThreaderBase::New()->ParallelizeArray(0, grid.size[2], slice, nullptr);
}

/** Along each row the organ function changes by at most the distance walked, so a value far from zero settles the
 *  sign of the next voxels without evaluating them; the result is that of evaluating every voxel. */
void
rasteriseOrgan(const Grid & grid, std::uint8_t * voxels)
{
  const std::size_t nx = grid.size[0];
  const std::size_t ny = grid.size[1];
  auto slice = [&](itk::SizeValueType k) {
    const double z = grid.coordinate(2, k);
    for (std::size_t j = 0; j < ny; ++j)
    {
      const double y = grid.coordinate(1, j);
      std::uint8_t * row = voxels + (k * ny + j) * nx;
      std::size_t i = 0;
      while (i < nx)
      {
        const double value = LiverPhantomSource::EvaluateOrgan(grid.coordinate(0, i), y, z);
        const std::uint8_t inside = value <= 0.0 ? 1 : 0;
        const double settled = (std::abs(value) - 1e-6) / grid.spacing[0];
        const std::size_t more = settled > 1.0 ? std::min(static_cast<std::size_t>(settled), nx - 1 - i) : 0;
        std::fill(row + i, row + i + more + 1, inside);
        i += more + 1;
      }
    }
  };
  itk::MultiThreaderBase::New()->ParallelizeArray(0, grid.size[2], slice, nullptr);
}

/** A ball with smaller balls blended onto it; no lobes for a round lesion. */
struct Lesion
{
  Vec centre;
  double radius;
  std::vector<std::pair<Vec, double>> lobes;

  static constexpr double blend = 3.0;

  /** Negative inside, 1-Lipschitz. */
  double
  evaluate(const Vec & p) const
  {
    double value = length(sub(p, centre)) - radius;
    for (const auto & [lobeCentre, lobeRadius] : lobes)
    {
      value = smoothMin(value, length(sub(p, lobeCentre)) - lobeRadius, blend);
    }
    return value;
  }
  /** Radius of a ball about the centre that holds the lesion (the blend adds at most a quarter of its width). */
  double
  extent() const
  {
    double reach = radius;
    for (const auto & [lobeCentre, lobeRadius] : lobes)
    {
      reach = std::max(reach, length(sub(lobeCentre, centre)) + lobeRadius);
    }
    return reach + 0.25 * blend;
  }
};

double
distanceToSegment(const Vec & p, const Segment & s)
{
  const Vec ab = sub(s.b, s.a);
  const double ll = dot(ab, ab);
  const double t = ll > 0.0 ? std::clamp(dot(sub(p, s.a), ab) / ll, 0.0, 1.0) : 0.0;
  return length(sub(p, add(s.a, scale(ab, t))));
}

/** The centre lines of the root vessel and its children: cutting one of them would take most of the liver. */
void
appendTrunk(const ArVesselTree & tree, std::vector<Segment> & trunk)
{
  const VesselNode * root = asLinkedVesselTree(tree)->getRootNode();
  std::vector<const VesselNode *> nodes{ root };
  nodes.insert(nodes.end(), root->children().begin(), root->children().end());
  for (const VesselNode * node : nodes)
  {
    const Vessel::PointList & points = node->getData()->getPoints();
    for (std::size_t i = 1; i < points.size(); ++i)
    {
      trunk.push_back(
        { { points[i - 1].x, points[i - 1].y, points[i - 1].z }, { points[i].x, points[i].y, points[i].z }, 0.0, 0.0 });
    }
  }
}

/** One to three lesions by rejection sampling in a stream of their own; the first always finds room (the right
 *  lobe alone holds many places far enough from the trunks), later ones may give up. */
std::vector<Lesion>
placeLesions(std::uint64_t seed, const std::vector<Segment> & trunk)
{
  Random random(seed ^ 0x74756d6f7572ULL);
  const int wanted = 1 + std::min(2, static_cast<int>(random.uniform() * 3.0));
  std::vector<Lesion> lesions;
  for (int n = 0; n < wanted; ++n)
  {
    bool placed = false;
    for (int attempt = 0; attempt < 2000 && !placed; ++attempt)
    {
      Lesion lesion;
      lesion.radius = random.uniform(9.0, 16.0);
      if (random.uniform() < 0.5)
      {
        const int lobes = random.uniform() < 0.5 ? 2 : 3;
        for (int k = 0; k < lobes; ++k)
        {
          const double lobeRadius = lesion.radius * random.uniform(0.45, 0.7);
          const Vec offset = scale(random.unitVector(), lesion.radius * random.uniform(0.55, 0.8));
          lesion.lobes.emplace_back(offset, lobeRadius);
        }
      }
      // Inside the field of view of every size preset.
      lesion.centre = { random.uniform(-105.0, 105.0), random.uniform(-105.0, 105.0), random.uniform(-80.0, 80.0) };
      for (auto & lobe : lesion.lobes)
      {
        lobe.first = add(lesion.centre, lobe.first);
      }
      const double extent = lesion.extent();
      if (LiverPhantomSource::EvaluateOrgan(lesion.centre[0], lesion.centre[1], lesion.centre[2]) > -(extent + 3.0))
      {
        continue;
      }
      bool clear = true;
      for (const Segment & s : trunk)
      {
        clear = clear && distanceToSegment(lesion.centre, s) >= extent + 20.0;
      }
      for (const Lesion & other : lesions)
      {
        clear = clear && length(sub(lesion.centre, other.centre)) >= extent + other.extent() + 10.0;
      }
      if (clear)
      {
        lesions.push_back(lesion);
        placed = true;
      }
    }
    if (!placed)
    {
      break;
    }
  }
  return lesions;
}

/** Voxels whose centre is inside a lesion and inside the organ; only each lesion's bounding box is visited. */
void
rasteriseLesions(const std::vector<Lesion> & lesions,
                 const Grid & grid,
                 const std::uint8_t * organ,
                 std::uint8_t * voxels)
{
  const std::size_t nx = grid.size[0];
  const std::size_t ny = grid.size[1];
  for (const Lesion & lesion : lesions)
  {
    const double reach = lesion.extent();
    std::array<std::size_t, 3> first{};
    std::array<std::size_t, 3> last{};
    bool empty = false;
    for (int axis = 0; axis < 3; ++axis)
    {
      const double low = (lesion.centre[axis] - reach - grid.origin[axis]) / grid.spacing[axis];
      const double high = (lesion.centre[axis] + reach - grid.origin[axis]) / grid.spacing[axis];
      const double top = static_cast<double>(grid.size[axis] - 1);
      if (high < 0.0 || low > top)
      {
        empty = true;
        break;
      }
      first[axis] = static_cast<std::size_t>(std::ceil(std::max(low, 0.0)));
      last[axis] = static_cast<std::size_t>(std::floor(std::min(high, top)));
    }
    if (empty)
    {
      continue;
    }
    for (std::size_t k = first[2]; k <= last[2]; ++k)
    {
      for (std::size_t j = first[1]; j <= last[1]; ++j)
      {
        for (std::size_t i = first[0]; i <= last[0]; ++i)
        {
          const std::size_t index = (k * ny + j) * nx + i;
          const Vec p{ grid.coordinate(0, i), grid.coordinate(1, j), grid.coordinate(2, k) };
          if (organ[index] == 1 && lesion.evaluate(p) <= 0.0)
          {
            voxels[index] = 1;
          }
        }
      }
    }
  }
}
} // namespace

LiverPhantomSource::LiverPhantomSource()
{
  m_Spacing[0] = 2.5;
  m_Spacing[1] = 2.5;
  m_Spacing[2] = 3.0;
  this->SetNumberOfRequiredOutputs(6);
  for (unsigned int i = 0; i < 6; ++i)
  {
    this->SetNthOutput(i, this->MakeOutput(i));
  }
}

LiverPhantomSource::~LiverPhantomSource() = default;

itk::DataObject::Pointer
LiverPhantomSource::MakeOutput(DataObjectPointerArraySizeType index)
{
  if (index < 3 || index == 5)
  {
    return Image::New().GetPointer();
  }
  return VesselTreeData::New().GetPointer();
}

void
LiverPhantomSource::SetSizePreset(SizePreset preset)
{
  SizeType size{ { 96, 96, 64 } };
  SpacingType spacing;
  switch (preset)
  {
    case SizePreset::Small:
      size[0] = 96;
      size[1] = 96;
      size[2] = 64;
      break;
    case SizePreset::Medium:
      size[0] = 256;
      size[1] = 256;
      size[2] = 160;
      break;
    case SizePreset::Large:
      size[0] = 512;
      size[1] = 512;
      size[2] = 300;
      break;
  }
  spacing[0] = 240.0 / static_cast<double>(size[0]);
  spacing[1] = 240.0 / static_cast<double>(size[1]);
  spacing[2] = 192.0 / static_cast<double>(size[2]);
  this->SetSize(size);
  this->SetSpacing(spacing);
}

bool
LiverPhantomSource::ParseSizePreset(const std::string & text, SizePreset & preset)
{
  if (text == "small")
  {
    preset = SizePreset::Small;
  }
  else if (text == "medium")
  {
    preset = SizePreset::Medium;
  }
  else if (text == "large")
  {
    preset = SizePreset::Large;
  }
  else
  {
    return false;
  }
  return true;
}

double
LiverPhantomSource::EvaluateOrgan(double x, double y, double z)
{
  const double right = ellipsoid(x, y, z, { -40, 5, -2 }, { 72, 66, 68 });
  const double middle = ellipsoid(x, y, z, { 5, 2, 10 }, { 52, 52, 48 });
  const double left = ellipsoid(x, y, z, { 48, -6, 18 }, { 66, 44, 26 });
  double organ = smoothMin(smoothMin(right, middle, 12.0), left, 15.0);
  // Flat against the spine and the vena cava behind.
  organ = smoothMax(organ, y - 60.0, 8.0);
  // The inferior surface rises towards the left lobe: the wedge.
  const double slope = 0.35;
  organ = smoothMax(organ, (-64.0 + slope * (x + 40.0) - z) / std::sqrt(1.0 + slope * slope), 10.0);
  // The inferior notch between the lobes, in front.
  const double notch = ellipsoid(x, y, z, { 14, -60, -24 }, { 14, 30, 40 });
  return smoothMax(organ, -notch, 6.0);
}

Image *
LiverPhantomSource::GetOrganMask()
{
  return dynamic_cast<Image *>(this->GetOutput(0));
}

Image *
LiverPhantomSource::GetPortalMask()
{
  return dynamic_cast<Image *>(this->GetOutput(1));
}

Image *
LiverPhantomSource::GetHepaticMask()
{
  return dynamic_cast<Image *>(this->GetOutput(2));
}

VesselTreeData *
LiverPhantomSource::GetPortalTree()
{
  return dynamic_cast<VesselTreeData *>(this->GetOutput(3));
}

VesselTreeData *
LiverPhantomSource::GetHepaticTree()
{
  return dynamic_cast<VesselTreeData *>(this->GetOutput(4));
}

Image *
LiverPhantomSource::GetTumourMask()
{
  return dynamic_cast<Image *>(this->GetOutput(5));
}

void
LiverPhantomSource::GenerateData()
{
  for (unsigned int k = 0; k < 3; ++k)
  {
    if (m_Size[k] < 1 || !(m_Spacing[k] > 0.0))
    {
      itkExceptionMacro(<< "Size and spacing must be positive");
    }
  }
  if (!(m_MinimumRadius > 0.0) || !(m_RootRadius > m_MinimumRadius) || !(m_TaperRatio > 0.0) || m_TaperRatio > 1.0 ||
      !(m_WallMargin >= 0.0))
  {
    itkExceptionMacro(<< "Radii, taper ratio or wall margin out of range");
  }
  Grid grid;
  Image::SizeType size;
  Vector3D spacing;
  Point3D origin;
  Vec high;
  for (int k = 0; k < 3; ++k)
  {
    grid.size[k] = m_Size[k];
    grid.spacing[k] = m_Spacing[k];
    grid.origin[k] = -0.5 * static_cast<double>(m_Size[k] - 1) * m_Spacing[k];
    high[k] = -grid.origin[k];
    size[k] = m_Size[k];
    spacing[k] = grid.spacing[k];
    origin[k] = grid.origin[k];
  }
  Image::DirectionType direction;
  direction.SetIdentity();

  Random random(m_Seed);
  TreeGrower grower(random, grid.origin, high, m_MinimumRadius, m_TaperRatio, m_WallMargin);
  if (grower.allowed(hilum) > -(m_RootRadius + m_WallMargin) ||
      grower.allowed(venaCava) > -(m_RootRadius + m_WallMargin))
  {
    itkExceptionMacro(<< "The field of view does not hold the phantom's vessels");
  }
  const ArVesselTree portal = makeTree(grower.grow(hilum, m_RootRadius, portalPlan), PortalVein);
  const ArVesselTree hepatic = makeTree(grower.grow(venaCava, m_RootRadius, hepaticPlan), HepaticVein);
  this->GetPortalTree()->initialize(portal);
  this->GetHepaticTree()->initialize(hepatic);

  Image * masks[] = { this->GetOrganMask(), this->GetPortalMask(), this->GetHepaticMask(), this->GetTumourMask() };
  for (Image * mask : masks)
  {
    mask->Initialize(itk::IOComponentEnum::UCHAR, size, spacing, origin, direction);
  }
  rasteriseOrgan(grid, static_cast<std::uint8_t *>(masks[0]->GetData()));
  rasteriseSegments(segmentsOf(portal), grid, static_cast<std::uint8_t *>(masks[1]->GetData()));
  rasteriseSegments(segmentsOf(hepatic), grid, static_cast<std::uint8_t *>(masks[2]->GetData()));

  std::vector<Segment> trunk;
  appendTrunk(portal, trunk);
  appendTrunk(hepatic, trunk);
  const std::vector<Lesion> lesions = placeLesions(m_Seed, trunk);
  if (lesions.empty())
  {
    itkExceptionMacro(<< "The organ has no room for a tumour away from the trunks");
  }
  m_NumberOfTumours = static_cast<unsigned int>(lesions.size());
  rasteriseLesions(lesions,
                   grid,
                   static_cast<const std::uint8_t *>(masks[0]->GetData()),
                   static_cast<std::uint8_t *>(masks[3]->GetData()));
}

void
LiverPhantomSource::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Seed: " << m_Seed << "\n";
  os << indent << "Size: " << m_Size << "\n";
  os << indent << "Spacing: " << m_Spacing << "\n";
  os << indent << "RootRadius: " << m_RootRadius << "\n";
  os << indent << "MinimumRadius: " << m_MinimumRadius << "\n";
  os << indent << "TaperRatio: " << m_TaperRatio << "\n";
  os << indent << "WallMargin: " << m_WallMargin << "\n";
  os << indent << "NumberOfTumours: " << m_NumberOfTumours << "\n";
}
} // namespace lumo

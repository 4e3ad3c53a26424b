// The compiled half of the Python package lumoarbo: arrays in and out without copies, the work of the arbo
// commands through the same functions, errors as Python exceptions with arbo's one-line messages. The package's
// Python half (lumoarbo/__init__.py) builds the tree objects on the plain records exchanged here.

#include "arboError.h"
#include "arboExtraction.h"
#include "arboFiles.h"
#include "arboMasks.h"
#include "arboResectionErrors.h"
#include "arboScene.h"
#include "arboSupplyAreas.h"
#include "arboTreeAnalysis.h"

#include "lumoDeformablePlaneRPG.h"
#include "lumoImage.h"
#include "lumoLabelStatistics.h"
#include "lumoLiverPhantomSource.h"
#include "lumoProgressBar.h"
#include "lumoResectionPlanRPG.h"
#include "lumoSafetyMarginRPG.h"
#include "lumoVesselTreeData.h"

#include "VesselIdRenumbering.h"
#include "VesselLabels.h"

#include <itkImage.h>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace py = pybind11;

namespace
{
/** Bad arguments or data: ValueError with the message "<name>: <what>". */
struct ValueFailure : std::runtime_error
{
  using std::runtime_error::runtime_error;
};
/** A file that cannot be read or written: OSError. */
struct FileFailure : std::runtime_error
{
  using std::runtime_error::runtime_error;
};

std::string
messageOf(const arbo::Error & e)
{
  return e.file().empty() ? std::string(e.what()) : e.file() + ": " + e.what();
}

// The vessel trees' handle registry and the thinning code are process-wide: one piece of heavy work at a time.
// Other Python threads run meanwhile, as the GIL is released during the work.
std::mutex &
workMutex()
{
  static std::mutex mutex;
  return mutex;
}

/** Runs heavy work without the GIL and with the work lock; arbo::Error becomes ValueError, or OSError for file
 *  work. */
template <typename Work>
auto
runWork(Work && work, bool files = false)
{
  try
  {
    py::gil_scoped_release release;
    std::lock_guard<std::mutex> lock(workMutex());
    return work();
  }
  catch (const arbo::Error & e)
  {
    if (files)
    {
      throw FileFailure(messageOf(e));
    }
    throw ValueFailure(messageOf(e));
  }
}

// ---------------------------------------------------------------------------------------------------------------
// Geometry and arrays

struct Geometry
{
  lumo::Vector3D spacing;
  lumo::Point3D origin;
  lumo::Image::DirectionType direction;
};

Geometry
geometryOf(const std::vector<double> & spacing,
           const std::vector<double> & origin,
           const std::vector<std::vector<double>> & direction)
{
  Geometry g;
  if (spacing.size() != 3)
  {
    throw ValueFailure("spacing: give three voxel sizes in mm, (x, y, z)");
  }
  if (origin.size() != 3)
  {
    throw ValueFailure("origin: give three coordinates in mm, (x, y, z)");
  }
  for (unsigned int a = 0; a < 3; ++a)
  {
    if (!(spacing[a] > 0.0) || !std::isfinite(spacing[a]))
    {
      throw ValueFailure("spacing: every voxel size must be a number > 0 (mm)");
    }
    if (!std::isfinite(origin[a]))
    {
      throw ValueFailure("origin: every coordinate must be a finite number (mm)");
    }
    g.spacing[a] = spacing[a];
    g.origin[a] = origin[a];
  }
  if (direction.size() != 3)
  {
    throw ValueFailure("direction: give a 3 x 3 matrix whose columns are the directions of the x, y and z axes");
  }
  for (unsigned int r = 0; r < 3; ++r)
  {
    if (direction[r].size() != 3)
    {
      throw ValueFailure("direction: give a 3 x 3 matrix whose columns are the directions of the x, y and z axes");
    }
    for (unsigned int c = 0; c < 3; ++c)
    {
      g.direction[r][c] = direction[r][c];
    }
  }
  const auto & d = g.direction;
  const double determinant = d[0][0] * (d[1][1] * d[2][2] - d[1][2] * d[2][1]) -
                             d[0][1] * (d[1][0] * d[2][2] - d[1][2] * d[2][0]) +
                             d[0][2] * (d[1][0] * d[2][1] - d[1][1] * d[2][0]);
  if (!(std::abs(determinant) > 1e-6))
  {
    throw ValueFailure("direction: the matrix is singular (its columns must be three independent directions)");
  }
  return g;
}

template <typename T>
lumo::Image::Pointer
wrapBuffer(void * data, const py::ssize_t * shape, const Geometry & g)
{
  using ItkImage = itk::Image<T, 3>;
  auto image = ItkImage::New();
  typename ItkImage::RegionType region;
  for (unsigned int a = 0; a < 3; ++a)
  {
    region.SetSize(a, static_cast<itk::SizeValueType>(shape[2 - a]));
  }
  image->SetRegions(region);
  image->SetSpacing(g.spacing);
  image->SetOrigin(g.origin);
  image->SetDirection(g.direction);
  // The array keeps its memory: the image only looks at it.
  image->GetPixelContainer()->SetImportPointer(static_cast<T *>(data), region.GetNumberOfPixels(), false);
  auto wrapped = lumo::Image::New();
  wrapped->InitializeByItkImage(image);
  return wrapped;
}

/** A volume as the library takes it. A C-contiguous array of a voxel type the images hold is looked at in place
 *  (booleans as unsigned 8-bit); any other array is converted once into `converted`, which must outlive the image. */
lumo::Image::Pointer
imageOf(const py::array & input, const std::string & name, const Geometry & g, py::array & converted)
{
  if (input.ndim() != 3)
  {
    throw ValueFailure(name + ": is a " + std::to_string(input.ndim()) +
                       "-D array; give a 3-D volume in (z, y, x) order");
  }
  for (int a = 0; a < 3; ++a)
  {
    if (input.shape(a) == 0)
    {
      throw ValueFailure(name + ": the array has no voxels");
    }
  }
  py::array array = input;
  py::dtype dtype = array.dtype();
  const char kind = dtype.kind();
  const bool native = dtype.byteorder() == '=' || dtype.byteorder() == '|';
  const bool supported = native && (kind == 'b' || ((kind == 'u' || kind == 'i') && dtype.itemsize() <= 8) ||
                                    (kind == 'f' && (dtype.itemsize() == 4 || dtype.itemsize() == 8)));
  const bool contiguous = (array.flags() & py::array::c_style) != 0;
  if (!supported || !contiguous)
  {
    py::module_ numpy = py::module_::import("numpy");
    py::object target = supported ? py::object(dtype) : py::object(numpy.attr("float64"));
    if (kind == 'b')
    {
      target = numpy.attr("uint8");
    }
    else if (kind == 'u' || kind == 'i' || (kind == 'f' && (dtype.itemsize() == 4 || dtype.itemsize() == 8)))
    {
      // The same type in the machine's byte order.
      target = dtype.attr("newbyteorder")("=");
    }
    converted = numpy.attr("ascontiguousarray")(array, py::arg("dtype") = target);
    array = converted;
    dtype = array.dtype();
  }
  void * data = const_cast<void *>(array.data());
  const py::ssize_t * shape = array.shape();
  const char k = dtype.kind();
  const auto size = dtype.itemsize();
  if (k == 'b' || (k == 'u' && size == 1))
  {
    return wrapBuffer<unsigned char>(data, shape, g);
  }
  if (k == 'i' && size == 1)
  {
    return wrapBuffer<signed char>(data, shape, g);
  }
  if (k == 'u' && size == 2)
  {
    return wrapBuffer<unsigned short>(data, shape, g);
  }
  if (k == 'i' && size == 2)
  {
    return wrapBuffer<short>(data, shape, g);
  }
  if (k == 'u' && size == 4)
  {
    return wrapBuffer<unsigned int>(data, shape, g);
  }
  if (k == 'i' && size == 4)
  {
    return wrapBuffer<int>(data, shape, g);
  }
  if (k == 'u' && size == 8)
  {
    return wrapBuffer<unsigned long>(data, shape, g);
  }
  if (k == 'i' && size == 8)
  {
    return wrapBuffer<long>(data, shape, g);
  }
  if (k == 'f' && size == 4)
  {
    return wrapBuffer<float>(data, shape, g);
  }
  return wrapBuffer<double>(data, shape, g);
}

/** The voxels of an image as a (z, y, x) array that shares its memory and keeps the image alive. */
py::array
arrayOf(lumo::Image * image)
{
  py::dtype dtype;
  switch (image->GetPixelType())
  {
    case itk::IOComponentEnum::UCHAR:
      dtype = py::dtype::of<std::uint8_t>();
      break;
    case itk::IOComponentEnum::CHAR:
      dtype = py::dtype::of<std::int8_t>();
      break;
    case itk::IOComponentEnum::USHORT:
      dtype = py::dtype::of<std::uint16_t>();
      break;
    case itk::IOComponentEnum::SHORT:
      dtype = py::dtype::of<std::int16_t>();
      break;
    case itk::IOComponentEnum::UINT:
      dtype = py::dtype::of<std::uint32_t>();
      break;
    case itk::IOComponentEnum::INT:
      dtype = py::dtype::of<std::int32_t>();
      break;
    case itk::IOComponentEnum::ULONG:
      dtype = py::dtype::of<std::uint64_t>();
      break;
    case itk::IOComponentEnum::LONG:
      dtype = py::dtype::of<std::int64_t>();
      break;
    case itk::IOComponentEnum::FLOAT:
      dtype = py::dtype::of<float>();
      break;
    default:
      dtype = py::dtype::of<double>();
  }
  const auto & size = image->GetSize();
  image->Register();
  py::capsule owner(image, [](void * held) { static_cast<lumo::Image *>(held)->UnRegister(); });
  return py::array(
    dtype,
    { static_cast<py::ssize_t>(size[2]), static_cast<py::ssize_t>(size[1]), static_cast<py::ssize_t>(size[0]) },
    image->GetData(),
    owner);
}

py::dict
geometryDict(const lumo::Image * image)
{
  const lumo::Vector3D spacing = image->GetSpacing();
  const lumo::Point3D origin = image->GetOrigin();
  const auto direction = image->GetDirection();
  py::list rows;
  for (unsigned int r = 0; r < 3; ++r)
  {
    rows.append(py::make_tuple(direction[r][0], direction[r][1], direction[r][2]));
  }
  py::dict d;
  d["spacing"] = py::make_tuple(spacing[0], spacing[1], spacing[2]);
  d["origin"] = py::make_tuple(origin[0], origin[1], origin[2]);
  d["direction"] = py::tuple(rows);
  return d;
}

// ---------------------------------------------------------------------------------------------------------------
// Trees as records: a dict per vessel with "id", "visible", "active", "segment", "type", "status",
// "cleaning_label", "points" (N x 4 float32: x, y, z, radius in mm) and "children" (a list of such dicts).

py::dict
recordOf(const VesselNode * node)
{
  py::dict record;
  const ar<Vessel> vessel = node->getData();
  static const Vessel empty;
  const Vessel & v = vessel.isNull() ? empty : *vessel;
  const VesselProperties & p = v.getProperties();
  record["id"] = v.getVesselId();
  record["visible"] = p.isVisible();
  record["active"] = p.isActive();
  record["segment"] = p.getSegmentType();
  record["type"] = p.getBloodVesselType();
  record["status"] = p.getResectionStatus();
  record["cleaning_label"] = v.getCleaningLabel();
  py::array_t<float> points({ static_cast<py::ssize_t>(v.numberOfPoints()), static_cast<py::ssize_t>(4) });
  auto out = points.mutable_unchecked<2>();
  for (std::size_t i = 0; i < v.numberOfPoints(); ++i)
  {
    const VesselPoint & point = v.getPoint(i);
    out(i, 0) = point.x;
    out(i, 1) = point.y;
    out(i, 2) = point.z;
    // Halving and doubling a float are exact: radii round-trip to the same diameters.
    out(i, 3) = point.diameter / 2.0f;
  }
  record["points"] = points;
  py::list children;
  for (const VesselNode * child : node->children())
  {
    if (child != nullptr)
    {
      children.append(recordOf(child));
    }
  }
  record["children"] = children;
  return record;
}

py::object
recordOf(const ArVesselTree & tree)
{
  const LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr || linked->getRootNode() == nullptr)
  {
    return py::none();
  }
  return recordOf(linked->getRootNode());
}

template <typename T>
T
field(const py::dict & record, const char * key, T fallback)
{
  return record.contains(key) ? record[key].cast<T>() : fallback;
}

VesselNode *
nodeOf(const py::dict & record, VesselNode * parent, int depth)
{
  if (depth > 100000)
  {
    throw ValueFailure("tree: vessels nested more than 100000 deep");
  }
  ar<Vessel> vessel(new Vessel());
  VesselProperties & p = vessel->getProperties();
  p.setVisible(field<bool>(record, "visible", true));
  p.setActive(field<bool>(record, "active", false));
  // Missing labels take a new vessel's defaults.
  const VesselProperties defaults;
  p.setSegmentType(field<std::int32_t>(record, "segment", defaults.getSegmentType()));
  p.setBloodVesselType(field<std::int32_t>(record, "type", defaults.getBloodVesselType()));
  p.setResectionStatus(field<std::int32_t>(record, "status", defaults.getResectionStatus()));
  vessel->setVesselId(field<std::int32_t>(record, "id", -1));
  vessel->setCleaningLabel(field<std::int32_t>(record, "cleaning_label", -1));
  if (record.contains("points"))
  {
    auto points = py::array_t<float, py::array::c_style | py::array::forcecast>::ensure(record["points"]);
    if (!points || points.ndim() != 2 || (points.shape(0) > 0 && points.shape(1) != 4))
    {
      throw ValueFailure("tree: the points of vessel " + std::to_string(vessel->getVesselId()) +
                         " are no N x 4 array (x, y, z, radius)");
    }
    auto in = points.unchecked<2>();
    Vessel::PointList list(static_cast<std::size_t>(points.shape(0)));
    for (py::ssize_t i = 0; i < points.shape(0); ++i)
    {
      list[i] = VesselPoint{ in(i, 0), in(i, 1), in(i, 2), in(i, 3) * 2.0f };
    }
    vessel->setPoints(std::move(list));
  }
  auto * node = new VesselNode(parent, vessel);
  std::unique_ptr<VesselNode> guard(node);
  if (record.contains("children"))
  {
    for (const py::handle child : record["children"])
    {
      VesselNode * childNode = nodeOf(child.cast<py::dict>(), node, depth + 1);
      node->addChild(childNode);
    }
  }
  return guard.release();
}

/** A tree of the records, its ids renumbered as arbo renumbers those of a file when they cannot be told apart. */
lumo::VesselTreeData::Pointer
treeOf(const py::object & record)
{
  auto * linked = new LinkedVesselTree();
  ArVesselTree handle(linked);
  if (!record.is_none())
  {
    linked->setRootNode(nodeOf(record.cast<py::dict>(), nullptr, 0));
  }
  if (VesselIdRenumbering::inspect(handle).needsRenumbering())
  {
    VesselIdRenumbering::renumberInPreorder(handle);
  }
  auto data = lumo::VesselTreeData::New();
  data->initialize(handle);
  return data;
}

// ---------------------------------------------------------------------------------------------------------------
// The functions

py::object
readVes(const std::string & path)
{
  lumo::VesselTreeData::Pointer tree = runWork([&] { return arbo::readVesselTree(path); }, true);
  return recordOf(tree->GetVesselTreeData(0));
}

void
writeVes(const py::object & record, const std::string & path)
{
  lumo::VesselTreeData::Pointer tree = treeOf(record);
  runWork([&] { arbo::writeData(tree, path); }, true);
}

py::tuple
extract(const py::array & mask,
        const std::vector<double> & spacing,
        const std::vector<double> & origin,
        const std::vector<std::vector<double>> & direction,
        std::optional<long> label,
        const std::string & type,
        std::optional<std::vector<long>> start,
        unsigned int cleanedIterations,
        bool endpointSuppression,
        bool keepSpurs,
        double prune,
        unsigned int smooth,
        bool rawDiameters,
        bool resample,
        bool stub,
        bool rawCentreLines)
{
  arbo::ExtractionSettings settings;
  if (!VesselLabels::parseBloodVesselType(type, settings.type))
  {
    throw ValueFailure("type: unknown blood vessel type '" + type +
                       "' (use portal, hepatic, artery, bile, undefined or 0 to 4)");
  }
  if (start)
  {
    std::ostringstream text;
    for (std::size_t a = 0; a < start->size(); ++a)
    {
      text << (a > 0 ? "," : "") << (*start)[a];
    }
    if (start->size() != 3 || (*start)[0] < 0 || (*start)[1] < 0 || (*start)[2] < 0)
    {
      throw ValueFailure("start: '" + text.str() + "' is not a voxel index i,j,k (three whole numbers from 0)");
    }
    settings.haveStart = true;
    for (unsigned int a = 0; a < 3; ++a)
    {
      settings.start[a] = static_cast<unsigned int>((*start)[a]);
    }
    settings.startText = text.str();
  }
  if (!(prune >= 0.0))
  {
    throw ValueFailure("prune: give a length >= 0 (mm)");
  }
  settings.label = label;
  settings.cleanedIterations = cleanedIterations;
  settings.endpointSuppression = endpointSuppression;
  settings.keepSpurs = keepSpurs;
  settings.prune = prune;
  settings.smooth = smooth;
  settings.rawDiameters = rawDiameters;
  settings.resample = resample;
  settings.stub = stub;
  settings.rawCentreLines = rawCentreLines;
  const Geometry g = geometryOf(spacing, origin, direction);
  py::array converted;
  lumo::Image::Pointer image = imageOf(mask, "mask", g, converted);
  std::ostringstream notes;
  arbo::ExtractionReport report;
  lumo::VesselTreeData::Pointer tree;
  try
  {
    tree = runWork([&] { return arbo::extractVesselTree(image, "mask", settings, report, notes, false); });
  }
  catch (const ValueFailure & e)
  {
    // The start is an argument here, not an option.
    std::string what = e.what();
    if (what.rfind("--start: ", 0) == 0)
    {
      what = "start: " + what.substr(9);
    }
    throw ValueFailure(what);
  }
  py::dict summary;
  summary["vessels"] = report.vessels;
  summary["skeleton_voxels"] = report.skeletonVoxels;
  summary["extracted"] = report.extracted;
  summary["spurs"] = report.spurs;
  summary["pruned"] = report.pruned;
  summary["stub_mm"] = report.stub.length;
  summary["left_out_parts"] = report.leftOutParts;
  summary["left_out_voxels"] = report.leftOutVoxels;
  summary["notes"] = notes.str();
  return py::make_tuple(recordOf(tree->GetVesselTreeData(0)), summary);
}

py::tuple
supply(const py::array & organArray,
       const py::list & trees,
       const std::vector<double> & spacing,
       const std::vector<double> & origin,
       const std::vector<std::vector<double>> & direction,
       const std::string & modeName,
       unsigned int threads,
       std::optional<long> organLabel)
{
  const auto & modes = arbo::supplyModes();
  auto found = std::find_if(modes.begin(), modes.end(), [&](const auto & m) { return m.first == modeName; });
  if (found == modes.end())
  {
    std::string names;
    for (const auto & m : modes)
    {
      names += (names.empty() ? "" : ", ") + m.first;
    }
    throw ValueFailure("mode: unknown mode '" + modeName + "' (use " + names + ")");
  }
  if (threads > 1024)
  {
    throw ValueFailure("threads: give 1 to 1024 threads, or 0 for every core");
  }
  const Geometry g = geometryOf(spacing, origin, direction);
  py::array converted;
  lumo::Image::Pointer organImage = imageOf(organArray, "organ", g, converted);
  std::vector<lumo::VesselTreeData::Pointer> data;
  for (const py::handle record : trees)
  {
    data.push_back(treeOf(py::reinterpret_borrow<py::object>(record)));
  }
  lumo::Image::Pointer organ;
  lumo::Image::Pointer areas;
  lumo::LabelStatistics::Pointer statistics = lumo::LabelStatistics::New();
  runWork([&] {
    std::size_t voxels = 0;
    organ = arbo::binaryMaskOf(organImage, "organ", organLabel, voxels);
    lumo::VesselTreeData::Pointer tree = data.front();
    if (data.size() > 1)
    {
      // Several vascular systems at once: one tree holding them all.
      std::vector<ArVesselTree> legacy;
      for (const auto & d : data)
      {
        legacy.push_back(d->GetVesselTreeData(0));
      }
      tree = lumo::VesselTreeData::New();
      tree->initialize(joinVesselTrees(legacy));
    }
    areas = arbo::computeSupplyAreas(organ, tree, found->second, threads, "organ", "tree", modeName);
    statistics->SetLabelImage(areas);
    statistics->SetMask(organ);
    statistics->Compute();
    return 0;
  });
  py::list table;
  for (const auto & entry : statistics->GetEntries())
  {
    py::dict row;
    row["label"] = entry.label;
    row["name"] = arbo::supplyLabelName(found->second, entry.label);
    row["voxels"] = entry.voxels;
    row["millilitres"] = entry.millilitres;
    row["percent"] = entry.percent;
    table.append(row);
  }
  py::dict total;
  total["voxels"] = statistics->GetTotalVoxels();
  total["millilitres"] = statistics->GetTotalMillilitres();
  return py::make_tuple(arrayOf(areas), table, total);
}

py::list
resect(const py::array & organArray,
       const py::object & portalRecord,
       const py::object & hepaticRecord,
       const std::vector<double> & spacing,
       const std::vector<double> & origin,
       const std::vector<std::vector<double>> & direction,
       bool plan,
       const py::object & tumourArray,
       const std::vector<double> & margins,
       const std::string & planePath,
       const std::string & resectSide,
       unsigned int threads,
       std::optional<long> organLabel,
       std::optional<long> tumourLabel)
{
  const bool cut = !planePath.empty();
  const bool withTumour = !tumourArray.is_none();
  if (static_cast<int>(plan) + static_cast<int>(withTumour) + static_cast<int>(cut) != 1)
  {
    throw ValueFailure("resect: give exactly one of plan=True, tumour=TUMOUR and plane=POINTS");
  }
  if (!withTumour && !margins.empty())
  {
    throw ValueFailure("margins: a margin belongs to a tumour");
  }
  if (!cut && !resectSide.empty())
  {
    throw ValueFailure("resect_side: the resected side belongs to a plane");
  }
  if (cut && resectSide != "front" && resectSide != "back" && !resectSide.empty())
  {
    throw ValueFailure("resect_side: '" + resectSide + "' is neither front nor back");
  }
  std::vector<double> widths = withTumour && margins.empty() ? std::vector<double>{ 10.0 } : margins;
  for (double m : widths)
  {
    if (!std::isfinite(m) || m < 0.0)
    {
      throw ValueFailure("margins: every margin must be a number >= 0 (mm)");
    }
  }
  if (threads > 1024)
  {
    throw ValueFailure("threads: give 1 to 1024 threads, or 0 for every core");
  }
  const Geometry g = geometryOf(spacing, origin, direction);
  py::array organCopy;
  py::array tumourCopy;
  lumo::Image::Pointer organImage = imageOf(organArray, "organ", g, organCopy);
  lumo::Image::Pointer tumourImage =
    withTumour ? imageOf(tumourArray.cast<py::array>(), "tumour", g, tumourCopy) : nullptr;
  lumo::VesselTreeData::Pointer portal = treeOf(portalRecord);
  lumo::VesselTreeData::Pointer hepatic = hepaticRecord.is_none() ? nullptr : treeOf(hepaticRecord);
  const arbo::ResectionInputNames names{
    "organ", "portal", hepatic ? "hepatic" : "", withTumour ? "tumour" : "", planePath
  };

  struct Outcome
  {
    double margin;
    lumo::Image::Pointer image;
    std::size_t voxels[5]{ 0, 0, 0, 0, 0 };
    std::size_t tumourVoxels{ 0 };
    double flr{ 0.0 };
    std::vector<std::string> notes;
  };
  // A plane file that cannot be read is a file error, reported before any work.
  lumo::DeformablePlane::Pointer plane = cut ? runWork([&] { return arbo::readPlane(planePath); }, true) : nullptr;
  std::vector<Outcome> outcomes;
  std::size_t organVoxels = 0;
  double voxelMl = 0.0;
  runWork([&] {
    std::size_t voxels = 0;
    lumo::Image::Pointer organ = arbo::binaryMaskOf(organImage, "organ", organLabel, voxels);
    lumo::Image::Pointer tumour = withTumour ? arbo::binaryMaskOf(tumourImage, "tumour", tumourLabel, voxels) : nullptr;
    lumo::VascularTerritoryRPG::Pointer generator;
    lumo::SafetyMarginRPG::Pointer margin;
    if (plan)
    {
      generator = lumo::ResectionPlanRPG::New().GetPointer();
      generator->SetProposalName("Resection plan");
    }
    else if (cut)
    {
      plane->SetOrgan(organ);
      auto cutter = lumo::DeformablePlaneRPG::New();
      cutter->SetCuttingPlane(plane);
      using Side = lumo::DeformablePlaneRPG::ResectSideType;
      cutter->SetResectSide(resectSide == "back" ? Side::Back : Side::Front);
      cutter->SetProposalName("Cutting plane");
      generator = cutter.GetPointer();
    }
    else
    {
      margin = lumo::SafetyMarginRPG::New();
      margin->SetTumourMask(tumour);
      margin->SetDistanceMapReach(*std::max_element(widths.begin(), widths.end()));
      generator = margin.GetPointer();
    }
    generator->SetOrganSegmentation(organ);
    generator->SetVesselTree(portal);
    if (hepatic)
    {
      generator->SetHepaticVesselTree(hepatic);
    }
    if (threads > 0)
    {
      generator->SetNumberOfWorkUnits(threads);
    }
    const std::size_t runs = margin ? widths.size() : 1;
    for (std::size_t run = 0; run < runs; ++run)
    {
      Outcome outcome;
      outcome.margin = margin ? widths[run] : std::nan("");
      if (margin)
      {
        margin->SetMarginWidth(widths[run]);
      }
      try
      {
        generator->Update();
      }
      catch (const itk::ExceptionObject & e)
      {
        arbo::throwResectionError(e.GetDescription(), names);
      }
      catch (const std::runtime_error & e)
      {
        arbo::throwResectionError(e.what(), names);
      }
      // Each proposal keeps its own image: the generator's is overwritten by the next update.
      const lumo::Image * result = generator->GetResectionImage();
      outcome.image = lumo::Image::New();
      outcome.image->Initialize(result->GetPixelType(),
                                result->GetSize(),
                                result->GetSpacing(),
                                result->GetOrigin(),
                                result->GetDirection(),
                                result->GetDimension());
      std::memcpy(outcome.image->GetData(), result->GetData(), result->GetBufferSizeInBytes());
      for (std::uint8_t label = 2; label <= 4; ++label)
      {
        outcome.voxels[label] = generator->GetNumberOfVoxels(label);
      }
      outcome.tumourVoxels = generator->GetNumberOfTumourVoxels();
      outcome.flr = generator->GetFutureLiverRemnantPercent();
      if (auto * cutter = dynamic_cast<lumo::DeformablePlaneRPG *>(generator.GetPointer()))
      {
        outcome.notes = cutter->GetNotes();
      }
      outcomes.push_back(outcome);
    }
    organVoxels = generator->GetNumberOfOrganVoxels();
    voxelMl = generator->GetVoxelMillilitres();
    return 0;
  });
  auto part = [&](std::size_t voxels) {
    py::dict d;
    d["voxels"] = voxels;
    d["millilitres"] = static_cast<double>(voxels) * voxelMl;
    d["percent"] = organVoxels == 0 ? 0.0 : 100.0 * static_cast<double>(voxels) / static_cast<double>(organVoxels);
    return d;
  };
  py::list list;
  for (const Outcome & o : outcomes)
  {
    py::dict d;
    d["margin_mm"] = std::isnan(o.margin) ? py::object(py::none()) : py::object(py::float_(o.margin));
    d["labels"] = arrayOf(o.image);
    d["remnant"] = part(o.voxels[2]);
    d["resected"] = part(o.voxels[3]);
    d["at_risk"] = part(o.voxels[4]);
    d["tumour"] = part(o.tumourVoxels);
    d["flr_percent"] = o.flr;
    d["notes"] = o.notes;
    // The generators mark the trees' resection statuses: the plan that goes with the labels.
    d["portal"] = recordOf(portal->GetVesselTreeData(0));
    d["hepatic"] = hepatic ? recordOf(hepatic->GetVesselTreeData(0)) : py::object(py::none());
    list.append(d);
  }
  return list;
}

py::dict
compare(const py::object & truthRecord, const py::object & testRecord, double voxelSize, double minimumRadiusVoxels)
{
  if (!(voxelSize > 0.0))
  {
    throw ValueFailure("voxel_size: give a length > 0 (mm)");
  }
  if (!(minimumRadiusVoxels >= 0.0))
  {
    throw ValueFailure("min_radius_voxels: give a number >= 0");
  }
  lumo::VesselTreeData::Pointer truth = treeOf(truthRecord);
  lumo::VesselTreeData::Pointer test = treeOf(testRecord);
  const VesselTreeComparison::Result r = runWork([&] {
    return arbo::compareVesselTrees(
      truth->GetVesselTreeData(0), test->GetVesselTreeData(0), "truth", "test", voxelSize, minimumRadiusVoxels);
  });
  py::dict d;
  d["truth_to_test_mean_mm"] = r.truthToTestMean;
  d["truth_to_test_p95_mm"] = r.truthToTestP95;
  d["test_to_truth_mean_mm"] = r.testToTruthMean;
  d["test_to_truth_p95_mm"] = r.testToTruthP95;
  d["recall"] = r.recall;
  d["true_vessels_considered"] = r.trueVesselsConsidered;
  d["true_vessels_found"] = r.trueVesselsFound;
  d["precision"] = r.precision;
  d["test_vessels_correct"] = r.testVesselsCorrect;
  d["radius_error_median_mm"] = r.radiusErrorMedian;
  d["radius_error_relative"] = r.radiusErrorRelative;
  d["matched_samples"] = r.matchedSamples;
  d["true_vessels"] = r.trueVessels;
  d["test_vessels"] = r.testVessels;
  d["true_bifurcations"] = r.trueBifurcations;
  d["test_bifurcations"] = r.testBifurcations;
  return d;
}

py::tuple
labelFrom(const py::object & treeRecord, const py::object & referenceRecord)
{
  lumo::VesselTreeData::Pointer tree = treeOf(treeRecord);
  lumo::VesselTreeData::Pointer reference = treeOf(referenceRecord);
  const std::size_t labelled = runWork(
    [&] { return arbo::transferLabelsFrom(reference->GetVesselTreeData(0), tree->GetVesselTreeData(0), "reference"); });
  return py::make_tuple(recordOf(tree->GetVesselTreeData(0)), labelled);
}

py::dict
phantom(const std::string & size, std::uint64_t seed)
{
  lumo::LiverPhantomSource::SizePreset preset{};
  if (!lumo::LiverPhantomSource::ParseSizePreset(size, preset))
  {
    throw ValueFailure("size: '" + size + "' is not a phantom size (use small, medium or large)");
  }
  auto source = lumo::LiverPhantomSource::New();
  runWork([&] {
    source->SetSizePreset(preset);
    source->SetSeed(seed);
    source->Update();
    return 0;
  });
  py::dict d = geometryDict(source->GetOrganMask());
  d["organ"] = arrayOf(source->GetOrganMask());
  d["portal"] = arrayOf(source->GetPortalMask());
  d["hepatic"] = arrayOf(source->GetHepaticMask());
  d["tumour"] = arrayOf(source->GetTumourMask());
  d["portal_tree"] = recordOf(source->GetPortalTree()->GetVesselTreeData(0));
  d["hepatic_tree"] = recordOf(source->GetHepaticTree()->GetVesselTreeData(0));
  return d;
}

/** Name and number of a label kind: ("Portal vein", 2) from "portal", "2" or 2. Numbers are taken as they are
 *  (files may hold any), named "Unknown" when the kind has no such value; names must be known. */
template <bool (*Parse)(const std::string &, std::int32_t &), std::string (*Name)(std::int32_t)>
py::tuple
labelOf(const py::object & value, const char * what)
{
  std::int32_t number = 0;
  if (py::isinstance<py::int_>(value) && !py::isinstance<py::bool_>(value))
  {
    const long long given = value.cast<long long>();
    if (given < INT32_MIN || given > INT32_MAX)
    {
      throw ValueFailure(std::string(what) + ": " + std::to_string(given) + " is out of range");
    }
    number = static_cast<std::int32_t>(given);
  }
  else
  {
    const std::string text = py::str(value).cast<std::string>();
    if (!Parse(text, number))
    {
      throw ValueFailure(std::string(what) + ": unknown value '" + text + "'");
    }
  }
  return py::make_tuple(Name(number), number);
}
} // namespace

PYBIND11_MODULE(_lumoarbo, m)
{
  m.doc() = "Compiled core of lumoarbo; use the lumoarbo package.";
  py::register_exception_translator([](std::exception_ptr p) {
    try
    {
      if (p)
      {
        std::rethrow_exception(p);
      }
    }
    catch (const ValueFailure & e)
    {
      PyErr_SetString(PyExc_ValueError, e.what());
    }
    catch (const FileFailure & e)
    {
      PyErr_SetString(PyExc_OSError, e.what());
    }
    catch (const arbo::Error & e)
    {
      PyErr_SetString(PyExc_ValueError, messageOf(e).c_str());
    }
  });
  // Python callers get results, not a progress bar on standard output.
  lumo::ProgressBar::GetInstance()->SetQuiet(true);
  arbo::registerFileTypes();

  const std::vector<std::vector<double>> identity{ { 1, 0, 0 }, { 0, 1, 0 }, { 0, 0, 1 } };
  m.def("read_ves", &readVes, py::arg("path"));
  m.def("write_ves", &writeVes, py::arg("record"), py::arg("path"));
  m.def("extract",
        &extract,
        py::arg("mask"),
        py::arg("spacing"),
        py::arg("origin"),
        py::arg("direction"),
        py::arg("label"),
        py::arg("type"),
        py::arg("start"),
        py::arg("cleaned_iterations"),
        py::arg("endpoint_suppression"),
        py::arg("keep_spurs"),
        py::arg("prune"),
        py::arg("smooth"),
        py::arg("raw_diameters"),
        py::arg("resample"),
        py::arg("stub"),
        py::arg("raw_centre_lines"));
  m.def("supply",
        &supply,
        py::arg("organ"),
        py::arg("trees"),
        py::arg("spacing"),
        py::arg("origin"),
        py::arg("direction"),
        py::arg("mode"),
        py::arg("threads"),
        py::arg("organ_label"));
  m.def("resect",
        &resect,
        py::arg("organ"),
        py::arg("portal"),
        py::arg("hepatic"),
        py::arg("spacing"),
        py::arg("origin"),
        py::arg("direction"),
        py::arg("plan"),
        py::arg("tumour"),
        py::arg("margins"),
        py::arg("plane"),
        py::arg("resect_side"),
        py::arg("threads"),
        py::arg("organ_label"),
        py::arg("tumour_label"));
  m.def("compare", &compare, py::arg("truth"), py::arg("test"), py::arg("voxel_size"), py::arg("min_radius_voxels"));
  m.def("label_from", &labelFrom, py::arg("tree"), py::arg("reference"));
  m.def("phantom", &phantom, py::arg("size"), py::arg("seed"));
  m.def("type_label",
        &labelOf<&VesselLabels::parseBloodVesselType, &VesselLabels::bloodVesselTypeName>,
        py::arg("value"),
        py::arg("what"));
  m.def("segment_label",
        &labelOf<&VesselLabels::parseSegmentType, &VesselLabels::segmentTypeName>,
        py::arg("value"),
        py::arg("what"));
  m.def("status_label",
        &labelOf<&VesselLabels::parseResectionStatus, &VesselLabels::resectionStatusName>,
        py::arg("value"),
        py::arg("what"));
  m.def("supply_modes", [] {
    std::vector<std::string> names;
    for (const auto & entry : arbo::supplyModes())
    {
      names.push_back(entry.first);
    }
    return names;
  });
  m.attr("IDENTITY") = identity;
  // For the tests: where the library finds the voxels of an array, and as which type.
  m.def("_image_buffer", [identity](const py::array & array) {
    py::array converted;
    lumo::Image::Pointer image = imageOf(array, "array", geometryOf({ 1, 1, 1 }, { 0, 0, 0 }, identity), converted);
    return py::make_tuple(reinterpret_cast<std::uintptr_t>(image->GetData()), image->GetPixelTypeAsString());
  });
}

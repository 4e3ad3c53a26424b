#include "arboCommands.h"

#include "arboError.h"
#include "arboFiles.h"

#include "lumoImage.h"
#include "lumoPointSet.h"
#include "lumoResectionProposalDescriptorPropertySerializer.h"
#include "lumoSurface.h"

#include "VesselLabels.h"
#include "VesselIdRenumbering.h"
#include "VesselTreeStatistics.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <vtkPolyData.h>

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace arbo
{
namespace
{
using Json = nlohmann::ordered_json;
using NameFunction = std::string (*)(std::int32_t);

struct InfoOptions
{
  std::string file;
  bool json{ false };
};

Json
countsAsJson(const std::map<std::int32_t, std::size_t> & counts, NameFunction name)
{
  Json result = Json::array();
  for (const auto & [value, count] : counts)
  {
    result.push_back({ { "value", value }, { "name", name(value) }, { "vessels", count } });
  }
  return result;
}

void
printCounts(std::ostream & out,
            const char * title,
            const std::map<std::int32_t, std::size_t> & counts,
            NameFunction name)
{
  out << "  " << title << ":\n";
  for (const auto & [value, count] : counts)
  {
    std::ostringstream label;
    label << name(value) << " (" << value << ")";
    out << "    " << std::left << std::setw(34) << label.str() << std::right << std::setw(8) << count << "\n";
  }
}

/** Numbers as a person reads them: up to six significant digits. */
std::string
number(double value)
{
  std::ostringstream os;
  os << std::setprecision(6) << value;
  return os.str();
}

std::string
triple(double a, double b, double c, const char * separator)
{
  return number(a) + separator + number(b) + separator + number(c);
}

void
describeVesselTree(const lumo::VesselTreeData & data, const InfoOptions & options, Context & context)
{
  const VesselTreeStatistics statistics(data.GetVesselTreeData(0));
  const VesselIdRenumbering::Report ids = VesselIdRenumbering::inspect(data.GetVesselTreeData(0));
  if (options.json)
  {
    Json json;
    json["file"] = options.file;
    json["kind"] = "vessel tree";
    json["vessels"] = statistics.numberOfVessels();
    json["points"] = statistics.numberOfPoints();
    json["depth"] = statistics.depth();
    json["bifurcations"] = statistics.numberOfBifurcations();
    json["lengthMillimetres"] = statistics.totalLength();
    json["bloodVesselTypes"] = countsAsJson(statistics.bloodVesselTypeCounts(), &VesselLabels::bloodVesselTypeName);
    json["segments"] = countsAsJson(statistics.segmentCounts(), &VesselLabels::segmentTypeName);
    json["resectionStatus"] = countsAsJson(statistics.resectionStatusCounts(), &VesselLabels::resectionStatusName);
    json["repeatedVesselIds"] = ids.duplicates;
    json["collidingVesselIds"] = ids.collisions;
    context.out << json.dump(2) << "\n";
    return;
  }
  std::ostream & out = context.out;
  out << options.file << ": vessel tree\n";
  out << "  vessels:              " << statistics.numberOfVessels() << "\n";
  out << "  points:               " << statistics.numberOfPoints() << "\n";
  out << "  depth:                " << statistics.depth() << "\n";
  out << "  bifurcations:         " << statistics.numberOfBifurcations() << "\n";
  std::ostringstream length;
  length << std::fixed << std::setprecision(1) << statistics.totalLength();
  out << "  centre-line length:   " << length.str() << " mm\n";
  printCounts(out, "blood vessel types", statistics.bloodVesselTypeCounts(), &VesselLabels::bloodVesselTypeName);
  printCounts(out, "segments", statistics.segmentCounts(), &VesselLabels::segmentTypeName);
  printCounts(out, "resection status", statistics.resectionStatusCounts(), &VesselLabels::resectionStatusName);
  if (ids.needsRenumbering())
  {
    out << "  vessel ids:           " << ids.duplicates << " repeated, " << ids.collisions
        << " clashing in the 16 bits of the supply areas; supply and label renumber them 1.." << ids.vessels
        << " in pre-order\n";
  }
}

void
describeImage(const lumo::Image & image, const InfoOptions & options, Context & context)
{
  const unsigned int dimension = image.GetDimension();
  const lumo::Vector3D spacing = image.GetSpacing();
  const lumo::Point3D origin = image.GetOrigin();
  const auto direction = image.GetDirection();
  double minimum = 0.0;
  double maximum = 0.0;
  image.GetScalarRange(minimum, maximum);
  bool identity = true;
  for (unsigned int r = 0; r < 3; ++r)
  {
    for (unsigned int c = 0; c < 3; ++c)
    {
      identity = identity && direction[r][c] == (r == c ? 1.0 : 0.0);
    }
  }
  double voxelVolume = spacing[0] * spacing[1] * (dimension == 3 ? spacing[2] : 1.0);
  if (options.json)
  {
    Json json;
    json["file"] = options.file;
    json["kind"] = "image";
    json["dimension"] = dimension;
    Json size = Json::array();
    Json spacingJson = Json::array();
    Json originJson = Json::array();
    for (unsigned int i = 0; i < dimension; ++i)
    {
      size.push_back(image.GetDimension(i));
      spacingJson.push_back(spacing[i]);
      originJson.push_back(origin[i]);
    }
    json["size"] = size;
    json["spacingMillimetres"] = spacingJson;
    json["originMillimetres"] = originJson;
    Json rows = Json::array();
    for (unsigned int r = 0; r < 3; ++r)
    {
      rows.push_back({ direction[r][0], direction[r][1], direction[r][2] });
    }
    json["direction"] = rows;
    json["pixelType"] = image.GetPixelTypeAsString();
    json["minimum"] = minimum;
    json["maximum"] = maximum;
    json["voxels"] = image.GetNumberOfVoxels();
    context.out << json.dump(2) << "\n";
    return;
  }
  std::ostream & out = context.out;
  out << options.file << ": image (" << dimension << "-D)\n";
  if (dimension == 3)
  {
    out << "  size:          " << image.GetDimension(0) << " x " << image.GetDimension(1) << " x "
        << image.GetDimension(2) << " voxels\n";
    out << "  spacing:       " << triple(spacing[0], spacing[1], spacing[2], " x ") << " mm\n";
    out << "  origin:        (" << triple(origin[0], origin[1], origin[2], ", ") << ") mm\n";
  }
  else
  {
    out << "  size:          " << image.GetDimension(0) << " x " << image.GetDimension(1) << " pixels\n";
    out << "  spacing:       " << number(spacing[0]) << " x " << number(spacing[1]) << " mm\n";
    out << "  origin:        (" << number(origin[0]) << ", " << number(origin[1]) << ") mm\n";
  }
  if (identity)
  {
    out << "  direction:     identity\n";
  }
  else
  {
    for (unsigned int r = 0; r < 3; ++r)
    {
      out << (r == 0 ? "  direction:     " : "                 ") << "["
          << triple(direction[r][0], direction[r][1], direction[r][2], ", ") << "]\n";
    }
  }
  out << "  pixel type:    " << image.GetPixelTypeAsString() << "\n";
  out << "  value range:   " << number(minimum) << " .. " << number(maximum) << "\n";
  out << "  voxels:        " << image.GetNumberOfVoxels() << " (" << number(voxelVolume) << " "
      << (dimension == 3 ? "mm3" : "mm2") << " each)\n";
}

void
describeOther(const lumo::BaseData & data, const InfoOptions & options, Context & context)
{
  std::size_t points = 0;
  std::size_t cells = 0;
  if (const auto * surface = dynamic_cast<const lumo::Surface *>(&data))
  {
    if (vtkPolyData * polyData = surface->GetVtkPolyData(0))
    {
      points = static_cast<std::size_t>(polyData->GetNumberOfPoints());
      cells = static_cast<std::size_t>(polyData->GetNumberOfCells());
    }
  }
  else if (const auto * pointSet = dynamic_cast<const lumo::PointSet *>(&data))
  {
    points = pointSet->GetSize(0);
  }
  const std::string kind = kindOf(&data);
  if (options.json)
  {
    Json json;
    json["file"] = options.file;
    json["kind"] = kind;
    json["points"] = points;
    if (kind == "surface")
    {
      json["cells"] = cells;
    }
    context.out << json.dump(2) << "\n";
    return;
  }
  context.out << options.file << ": " << kind << "\n";
  context.out << "  points:        " << points << "\n";
  if (kind == "surface")
  {
    context.out << "  cells:         " << cells << "\n";
  }
}
/** Whether the name ends in ".proposal.xml" (any case): the descriptor file written beside a resection image. */
bool
isProposalFile(const std::string & path)
{
  static const std::string ending = ".proposal.xml";
  if (path.size() <= ending.size())
  {
    return false;
  }
  std::string tail = path.substr(path.size() - ending.size());
  std::transform(tail.begin(), tail.end(), tail.begin(), [](unsigned char c) { return std::tolower(c); });
  return tail == ending;
}

std::string
resectionTypeWord(int type)
{
  const char * word = lumo::ResectionProposalDescriptorPropertySerializer::GetResectionTypeWord(type);
  return word ? word : std::to_string(type);
}

void
describeProposal(const InfoOptions & options, Context & context)
{
  lumo::ResectionProposalDescriptorProperty::Pointer proposal;
  try
  {
    proposal = lumo::ReadResectionProposalDescriptorFile(options.file);
  }
  catch (const itk::ExceptionObject & e)
  {
    // The reader names the file itself; the line names it once, in front.
    std::string reason = e.GetDescription();
    const std::string prefix = "cannot read the resection proposal file '" + options.file + "': ";
    if (reason.rfind(prefix, 0) == 0)
    {
      reason = reason.substr(prefix.size());
    }
    throw Error(options.file, "is not a readable resection proposal (" + reason + ")");
  }
  const auto & descriptors = proposal->GetLabelDesriptorSet();
  if (options.json)
  {
    Json json;
    json["file"] = options.file;
    json["kind"] = "resection proposal";
    json["name"] = proposal->GetResectionProposalName();
    Json labels = Json::array();
    for (const auto & d : descriptors)
    {
      labels.push_back({ { "label", d.Label },
                         { "name", d.Name },
                         { "resectionType", resectionTypeWord(d.ResectionType) },
                         { "resectionTypeValue", static_cast<int>(d.ResectionType) },
                         { "volumeMillilitres", d.Volume },
                         { "surfaceIndex", d.SurfaceOutputIndex },
                         { "color", { d.Color[0], d.Color[1], d.Color[2] } } });
    }
    json["labels"] = labels;
    context.out << json.dump(2) << "\n";
    return;
  }
  std::ostream & out = context.out;
  out << options.file << ": resection proposal\n";
  out << "  name:          " << proposal->GetResectionProposalName() << "\n";
  out << "  labels:        " << descriptors.size() << "\n";
  for (const auto & d : descriptors)
  {
    out << "    " << d.Label << " " << d.Name << ": " << resectionTypeWord(d.ResectionType) << ", " << number(d.Volume)
        << " ml, surface " << d.SurfaceOutputIndex << "\n";
  }
}
} // namespace

void
addInfoCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<InfoOptions>();
  CLI::App * command = app.add_subcommand("info", "Describe a file: vessel tree, image, surface or point set");
  command->footer("A vessel tree (.ves): numbers of vessels and points, depth, bifurcations, total centre-line "
                  "length, and how many vessels carry each blood vessel type, segment and resection status.\n"
                  "An image (.nrrd, .nii, .nii.gz, .mhd, .mha, .pic, .pic.gz): size, spacing, origin, direction, "
                  "pixel type and value range.\n"
                  "A resection proposal (NAME.proposal.xml): its name and, per label, the part's name, resection "
                  "type, volume in ml and surface index.\n"
                  "Examples: arbo info portal.ves --json\n"
                  "          arbo info liver.nii.gz");
  command->add_option("file", options->file, "The file to describe")->required();
  command->add_flag("--json", options->json, "Print the description as JSON");
  command->callback([options, &context] {
    if (isProposalFile(options->file))
    {
      describeProposal(*options, context);
      return;
    }
    lumo::BaseData::Pointer data = readData(options->file);
    if (auto * tree = dynamic_cast<lumo::VesselTreeData *>(data.GetPointer()))
    {
      describeVesselTree(*tree, *options, context);
    }
    else if (auto * image = dynamic_cast<lumo::Image *>(data.GetPointer()))
    {
      describeImage(*image, *options, context);
    }
    else
    {
      describeOther(*data, *options, context);
    }
  });
}
} // namespace arbo

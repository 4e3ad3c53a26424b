#include "arboCommands.h"

#include "arboAtomicFile.h"
#include "arboError.h"
#include "arboFiles.h"
#include "arboScene.h"
#include "arboMasks.h"
#include "arboResectionErrors.h"

#include "lumoColorProperty.h"
#include "lumoFloatProperty.h"
#include "lumoImage.h"
#include "lumoDeformablePlaneRPG.h"
#include "lumoImageIO.h"
#include "lumoResectionPlanRPG.h"
#include "lumoResectionProposalDescriptorPropertySerializer.h"
#include "lumoSafetyMarginRPG.h"
#include "lumoSurface.h"

#include "ArVesselTree.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <iomanip>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <vector>

namespace arbo
{
namespace
{
using Json = nlohmann::ordered_json;
using Generator = lumo::VascularTerritoryRPG;

struct ResectOptions
{
  std::string organ;
  std::string portal;
  std::string hepatic;
  bool plan{ false };
  std::string tumour;
  std::string margins;
  std::string plane;
  std::string resectSide;
  std::string output;
  std::string surfaces;
  std::string surfaceFormat{ "vtp" };
  std::string treeOut;
  std::string scene;
  bool json{ false };
  double minFlr{ 25.0 };
  unsigned int threads{ 0 };
  std::optional<long> organLabel;
  std::optional<long> tumourLabel;
};

/** One margin as given and as it appears in file names ("2.5" for 2.5 mm). */
struct Margin
{
  double millimetres;
  std::string text;
};

/** What one proposal came to, kept until every proposal is computed so that a failure writes nothing. */
struct Result
{
  bool hasMargin{ false };
  Margin margin{ 0.0, "" };
  std::string output;
  std::string proposal;
  std::string tree;
  lumo::Image::Pointer image;
  lumo::ResectionProposalDescriptorProperty::Pointer descriptor;
  lumo::VesselTreeData::Pointer plan;
  /** Surface files and their surfaces, in label order, and the label each shows. */
  std::vector<std::pair<std::string, lumo::Surface::Pointer>> surfaces;
  std::vector<int> surfaceLabels;
  std::size_t voxels[5]{ 0, 0, 0, 0, 0 };
  std::size_t tumourVoxels{ 0 };
  double flr{ 0.0 };
  /** Whether the tumour row and the tumour's share of the FLR belong in the table. */
  bool withTumour{ false };
  std::vector<std::string> notes;
};

std::string
fixed(double value, int decimals)
{
  std::ostringstream text;
  text << std::fixed << std::setprecision(decimals) << value;
  return text.str();
}

/** "-5mm" inserted before the format's ending: resection.nii.gz -> resection-5mm.nii.gz. */
std::string
withSuffix(const std::string & path, const std::string & suffix)
{
  const std::string extension = formatExtension(path);
  return path.substr(0, path.size() - extension.size()) + suffix + path.substr(path.size() - extension.size());
}

std::string
stemOf(const std::string & path)
{
  return path.substr(0, path.size() - formatExtension(path).size());
}

/** "0,5,10" to margins; anything but numbers >= 0 is a usage error. */
std::vector<Margin>
parseMargins(const std::string & list)
{
  std::vector<Margin> margins;
  std::stringstream stream(list);
  for (std::string item; std::getline(stream, item, ',');)
  {
    std::istringstream number(item);
    number.imbue(std::locale::classic());
    double value = 0.0;
    if (!(number >> value) || !(number >> std::ws).eof() || !std::isfinite(value) || value < 0.0)
    {
      throw CLI::ValidationError("--margin", "'" + item + "' is not a margin in mm (a number >= 0)");
    }
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << value;
    for (const Margin & earlier : margins)
    {
      if (earlier.text == text.str())
      {
        throw CLI::ValidationError("--margin", "the margin " + text.str() + " mm is given twice");
      }
    }
    margins.push_back({ value, text.str() });
  }
  if (margins.empty() || list.back() == ',')
  {
    throw CLI::ValidationError("--margin", "'" + list + "' is not a list of margins in mm (like 0,5,10)");
  }
  return margins;
}

lumo::Image::Pointer
readImage(const std::string & path, const std::string & what)
{
  lumo::BaseData::Pointer data = readData(path);
  auto * image = dynamic_cast<lumo::Image *>(data.GetPointer());
  if (image == nullptr)
  {
    throw Error(path, "holds a " + kindOf(data) + ", not " + what);
  }
  return image;
}

/** The plane generator compares only sizes: the whole grid is checked here, in the words of the margin mode. */
void
checkSameGrid(const lumo::Image & tumour, const lumo::Image & organ, const std::string & tumourPath)
{
  const auto text = [](auto a, auto b, auto c, const char * separator) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << a << separator << b << separator << c;
    return out.str();
  };
  const auto near = [](double a, double b) { return std::abs(a - b) <= 1e-6 * std::max(1.0, std::abs(b)); };
  const std::string differ = "lies on another grid than the organ: they differ in ";
  const auto size = tumour.GetSize();
  const auto organSize = organ.GetSize();
  if (tumour.GetDimension() != 3 || size != organSize)
  {
    throw Error(tumourPath,
                differ + "size (" + text(size[0], size[1], size[2], " x ") + " vs " +
                  text(organSize[0], organSize[1], organSize[2], " x ") + ")");
  }
  const lumo::Vector3D spacing = tumour.GetSpacing();
  const lumo::Vector3D organSpacing = organ.GetSpacing();
  const lumo::Point3D origin = tumour.GetOrigin();
  const lumo::Point3D organOrigin = organ.GetOrigin();
  for (unsigned int a = 0; a < 3; ++a)
  {
    if (!near(spacing[a], organSpacing[a]))
    {
      throw Error(tumourPath,
                  differ + "spacing (" + text(spacing[0], spacing[1], spacing[2], ", ") + " vs " +
                    text(organSpacing[0], organSpacing[1], organSpacing[2], ", ") + " mm)");
    }
  }
  for (unsigned int a = 0; a < 3; ++a)
  {
    if (!near(origin[a], organOrigin[a]))
    {
      throw Error(tumourPath,
                  differ + "origin (" + text(origin[0], origin[1], origin[2], ", ") + " vs " +
                    text(organOrigin[0], organOrigin[1], organOrigin[2], ", ") + " mm)");
    }
  }
  for (unsigned int r = 0; r < 3; ++r)
  {
    for (unsigned int c = 0; c < 3; ++c)
    {
      if (!near(tumour.GetDirection()[r][c], organ.GetDirection()[r][c]))
      {
        throw Error(tumourPath, differ + "direction");
      }
    }
  }
}

/** The generator's refusals in the command's words, charged to the file they concern. */
[[noreturn]] void
rethrowForFiles(const std::string & what, const ResectOptions & options)
{
  throwResectionError(what, { options.organ, options.portal, options.hepatic, options.tumour, options.plane });
}

lumo::Image::Pointer
copyOf(const lumo::Image * image)
{
  auto copy = lumo::Image::New();
  copy->Initialize(image->GetPixelType(),
                   image->GetSize(),
                   image->GetSpacing(),
                   image->GetOrigin(),
                   image->GetDirection(),
                   image->GetDimension());
  std::memcpy(copy->GetData(), image->GetData(), image->GetBufferSizeInBytes());
  return copy;
}

void
writeProposal(const lumo::ResectionProposalDescriptorProperty & descriptor, const std::string & path)
{
  try
  {
    lumo::WriteResectionProposalDescriptorFile(descriptor, path);
  }
  catch (const itk::ExceptionObject & e)
  {
    throw Error(path, e.GetDescription());
  }
}

/** Writes every file of every result; when one fails, the files this run already wrote are removed again. */
void
writeResults(const std::vector<Result> & results)
{
  std::vector<std::string> written;
  std::string createdFolder;
  try
  {
    for (const Result & result : results)
    {
      writeData(result.image, result.output);
      written.push_back(result.output);
      writeProposal(*result.descriptor, result.proposal);
      written.push_back(result.proposal);
      if (!result.tree.empty())
      {
        writeData(result.plan, result.tree);
        written.push_back(result.tree);
      }
      for (const auto & [file, surface] : result.surfaces)
      {
        const std::filesystem::path folder = std::filesystem::path(file).parent_path();
        std::error_code ec;
        if (!std::filesystem::exists(folder, ec))
        {
          if (!std::filesystem::create_directories(folder, ec))
          {
            throw Error(folder.string(), "cannot be created (" + ec.message() + ")");
          }
          createdFolder = folder.string();
        }
        writeData(surface, file);
        written.push_back(file);
      }
    }
  }
  catch (...)
  {
    std::error_code ec;
    for (const std::string & file : written)
    {
      std::filesystem::remove(file, ec);
    }
    if (!createdFolder.empty())
    {
      std::filesystem::remove(createdFolder, ec); // only when empty
    }
    throw;
  }
}

/** The node name of a result file: its name without the format's ending ("risk-2.5mm.nrrd" -> "risk-2.5mm"). */
std::string
resultName(const std::string & file)
{
  return std::filesystem::path(stemOf(file)).filename().string();
}

/** Adds the proposals to the scene: each resection image with its descriptor and the resection colours, sourced
 *  from the command's inputs; its surfaces and plan tree sourced from the image. */
void
addToScene(lumo::DataStorage * scene,
           const ResectOptions & options,
           lumo::Image * organ,
           lumo::VesselTreeData * portal,
           lumo::VesselTreeData * hepatic,
           lumo::Image * tumour,
           const std::vector<Result> & results)
{
  std::vector<std::pair<std::string, lumo::BaseData::Pointer>> inputs{ { nodeNameOf(options.organ), organ },
                                                                       { nodeNameOf(options.portal), portal } };
  if (hepatic != nullptr)
  {
    inputs.emplace_back(nodeNameOf(options.hepatic), hepatic);
  }
  if (tumour != nullptr && options.tumour != options.organ)
  {
    inputs.emplace_back(nodeNameOf(options.tumour), tumour);
  }
  if (!options.plane.empty())
  {
    inputs.emplace_back(nodeNameOf(options.plane), readData(options.plane));
  }
  // Surfaces in the resection colours, drawn as around trees: the remnant a veil, the parts taken see-through.
  const auto colors = planningColourTable()->GetColorByResectionStatus();
  std::vector<SceneResult> nodes;
  for (const Result & result : results)
  {
    const std::string image = resultName(result.output);
    nodes.push_back({ image, result.image.GetPointer(), resectionProperties(result.descriptor), {} });
    for (std::size_t i = 0; i < result.surfaces.size(); ++i)
    {
      const int label = result.surfaceLabels[i];
      lumo::Color color;
      color.Set(colors[label][0], colors[label][1], colors[label][2]);
      nodes.push_back({ resultName(result.surfaces[i].first),
                        result.surfaces[i].second.GetPointer(),
                        { { "color", lumo::ColorProperty::New(color).GetPointer() },
                          { "opacity", lumo::FloatProperty::New(label == 2 ? 0.15f : 0.55f).GetPointer() } },
                        { image } });
    }
    if (!result.tree.empty())
    {
      nodes.push_back({ resultName(result.tree), result.plan.GetPointer(), {}, { image } });
    }
  }
  addResultsToScene(scene, options.scene, inputs, nodes);
}

Json
part(std::size_t voxels, double voxelMillilitres, std::size_t organVoxels)
{
  return { { "voxels", voxels },
           { "millilitres", static_cast<double>(voxels) * voxelMillilitres },
           { "percent", organVoxels == 0 ? 0.0 : 100.0 * static_cast<double>(voxels) / organVoxels } };
}

void
resect(const ResectOptions & options, Context & context)
{
  const bool cut = !options.plane.empty();
  if (cut && options.plan)
  {
    throw CLI::ValidationError("resect", "give exactly one of --plan and --plane POINTS");
  }
  if (!cut && options.plan == !options.tumour.empty())
  {
    throw CLI::ValidationError("resect", "give exactly one of --plan and --tumour TUMOUR (or --plane POINTS)");
  }
  if (options.plan && !options.margins.empty())
  {
    throw CLI::ValidationError("--margin", "a margin belongs to --tumour, not to --plan");
  }
  if (cut && !options.margins.empty())
  {
    throw CLI::ValidationError("--margin", "a margin belongs to --tumour without --plane: the plane is the cut");
  }
  if (!cut && !options.resectSide.empty())
  {
    throw CLI::ValidationError("--resect-side", "--resect-side belongs to --plane");
  }
  if (!options.resectSide.empty() && !options.tumour.empty())
  {
    throw CLI::ValidationError("--resect-side",
                               "give --resect-side or --tumour with --plane, not both: each chooses the side");
  }
  // Only the tumour mode without a plane has margins.
  const bool withMargins = !options.plan && !cut;
  const std::vector<Margin> margins =
    withMargins ? parseMargins(options.margins.empty() ? "10" : options.margins) : std::vector<Margin>{};
  if (!lumo::CanWriteImageFile(options.output))
  {
    throw Error(options.output,
                "cannot write an image as '" + formatExtension(options.output) +
                  "' (supported: .nrrd, .nii, .nii.gz, .mhd, .mha, .pic, .pic.gz)");
  }
  if (!options.treeOut.empty() && formatExtension(options.treeOut) != ".ves" &&
      formatExtension(options.treeOut) != ".vtp")
  {
    throw Error(options.treeOut,
                "cannot write a vessel tree as '" + formatExtension(options.treeOut) + "' (supported: .ves, .vtp)");
  }

  // The scene is opened first: a scene that cannot be loaded or saved costs no calculation and writes nothing.
  lumo::DataStorage::Pointer scene = options.scene.empty() ? nullptr : openSceneForUpdate(options.scene);

  // Label maps and other voxel types become the 8-bit masks the generators take.
  lumo::Image::Pointer organImage = readImage(options.organ, "an organ segmentation image");
  std::size_t maskVoxels = 0;
  lumo::Image::Pointer organ = organImage->GetDimension() == 3
                                 ? binaryMaskOf(organImage, options.organ, options.organLabel, maskVoxels)
                                 : organImage;
  lumo::VesselTreeData::Pointer portal = readVesselTree(options.portal);
  lumo::VesselTreeData::Pointer hepatic;
  if (!options.hepatic.empty())
  {
    hepatic = readVesselTree(options.hepatic);
  }
  lumo::Image::Pointer tumour;
  lumo::Image::Pointer tumourImage;
  if (!options.tumour.empty())
  {
    tumourImage = readImage(options.tumour, "a tumour mask image");
    tumour = tumourImage->GetDimension() == 3
               ? binaryMaskOf(tumourImage, options.tumour, options.tumourLabel, maskVoxels)
               : tumourImage;
    // Organ and tumour from one label map: the tumour is part of the organ, as it is of the liver.
    if (options.tumour == options.organ && options.organLabel && organ->GetPixelType() == itk::IOComponentEnum::UCHAR &&
        tumour->GetPixelType() == itk::IOComponentEnum::UCHAR &&
        organ->GetNumberOfVoxels() == tumour->GetNumberOfVoxels())
    {
      auto * o = static_cast<unsigned char *>(organ->GetData());
      const auto * t = static_cast<const unsigned char *>(tumour->GetData());
      for (std::size_t i = 0, n = organ->GetNumberOfVoxels(); i < n; ++i)
      {
        o[i] = o[i] != 0 || t[i] != 0 ? 1 : 0;
      }
    }
  }
  lumo::DeformablePlane::Pointer plane;
  if (cut)
  {
    plane = readPlane(options.plane);
    // Front is the side facing away from the organ's centre, as in arbo view. Anything but a 3-D mask is
    // refused by the generator below.
    if (organ->GetDimension() == 3 && organ->GetPixelType() == itk::IOComponentEnum::UCHAR)
    {
      plane->SetOrgan(organ);
    }
    if (tumour)
    {
      checkSameGrid(*tumour, *organ, options.tumour);
      // As in the margin mode: a tumour wholly outside the organ is a wrong file, not a side to choose.
      const auto * t = static_cast<const unsigned char *>(tumour->GetData());
      const auto * o = static_cast<const unsigned char *>(organ->GetData());
      bool any = false;
      bool inside = false;
      for (std::size_t i = 0; i < organ->GetNumberOfVoxels() && !inside; ++i)
      {
        any = any || t[i] != 0;
        inside = t[i] != 0 && o[i] != 0;
      }
      if (any && !inside)
      {
        throw Error(options.tumour, "lies entirely outside the organ");
      }
    }
  }

  Generator::Pointer generator;
  lumo::SafetyMarginRPG::Pointer margin;
  lumo::DeformablePlaneRPG::Pointer cutter;
  if (options.plan)
  {
    generator = lumo::ResectionPlanRPG::New().GetPointer();
  }
  else if (cut)
  {
    cutter = lumo::DeformablePlaneRPG::New();
    cutter->SetCuttingPlane(plane);
    using Side = lumo::DeformablePlaneRPG::ResectSideType;
    cutter->SetResectSide(tumour ? Side::Tumour : (options.resectSide == "back" ? Side::Back : Side::Front));
    if (tumour)
    {
      cutter->SetTumourMask(tumour);
    }
    generator = cutter.GetPointer();
  }
  else
  {
    margin = lumo::SafetyMarginRPG::New();
    margin->SetTumourMask(tumour);
    // One distance map serves every margin when it reaches the largest.
    double largest = 0.0;
    for (const Margin & m : margins)
    {
      largest = std::max(largest, m.millimetres);
    }
    margin->SetDistanceMapReach(largest);
    generator = margin.GetPointer();
  }
  generator->SetOrganSegmentation(organ);
  generator->SetVesselTree(portal);
  if (hepatic)
  {
    generator->SetHepaticVesselTree(hepatic);
  }
  generator->SetGenerateSurfaces(!options.surfaces.empty());
  if (options.threads > 0)
  {
    generator->SetNumberOfWorkUnits(options.threads);
  }

  std::vector<Result> results;
  const std::size_t runs = withMargins ? margins.size() : 1;
  for (std::size_t run = 0; run < runs; ++run)
  {
    Result result;
    result.output = options.output;
    result.tree = options.treeOut;
    if (margin)
    {
      result.hasMargin = true;
      result.margin = margins[run];
      margin->SetMarginWidth(result.margin.millimetres);
      margin->SetProposalName("Safety margin " + result.margin.text + " mm");
      if (margins.size() > 1)
      {
        result.output = withSuffix(options.output, "-" + result.margin.text + "mm");
        result.tree = options.treeOut.empty() ? "" : withSuffix(options.treeOut, "-" + result.margin.text + "mm");
      }
    }
    else
    {
      generator->SetProposalName(cut ? "Cutting plane" : "Resection plan");
    }
    result.proposal = stemOf(result.output) + ".proposal.xml";
    try
    {
      generator->Update();
    }
    catch (const itk::ExceptionObject & e)
    {
      rethrowForFiles(e.GetDescription(), options);
    }
    catch (const std::runtime_error & e)
    {
      rethrowForFiles(e.what(), options);
    }
    // The last proposal keeps the generator's own image; earlier ones are copied before the next update.
    result.image = results.size() + 1 == runs ? lumo::Image::Pointer(generator->GetResectionImage())
                                              : copyOf(generator->GetResectionImage());
    result.descriptor = generator->GetResectionProposalDescriptor();
    for (std::uint8_t label = 2; label <= 4; ++label)
    {
      result.voxels[label] = generator->GetNumberOfVoxels(label);
    }
    result.tumourVoxels = generator->GetNumberOfTumourVoxels();
    result.flr = generator->GetFutureLiverRemnantPercent();
    result.withTumour = tumour.IsNotNull();
    if (cutter)
    {
      result.notes = cutter->GetNotes();
    }
    if (!options.surfaces.empty())
    {
      static const char * const words[5] = { "", "", "remnant", "resected", "at-risk" };
      const std::string base = std::filesystem::path(stemOf(result.output)).filename().string();
      for (unsigned int i = 0; i < generator->GetNumberOfResectionSurfaces(); ++i)
      {
        const int label = result.descriptor->GetLabelForSurfaceIndex(static_cast<int>(i));
        if (label < 2 || label > 4)
        {
          continue;
        }
        auto surface = lumo::Surface::New();
        surface->Graft(generator->GetResectionSurface(i));
        const std::string file =
          (std::filesystem::path(options.surfaces) / (base + "-" + words[label] + "." + options.surfaceFormat))
            .string();
        result.surfaces.emplace_back(file, surface);
        result.surfaceLabels.push_back(label);
      }
    }
    if (!result.tree.empty())
    {
      std::vector<ArVesselTree> trees{ portal->GetVesselTreeData(0) };
      if (hepatic)
      {
        trees.push_back(hepatic->GetVesselTreeData(0));
      }
      result.plan = lumo::VesselTreeData::New();
      result.plan->initialize(trees.size() == 1 ? cloneVesselTree(trees.front()) : joinVesselTrees(trees));
    }
    results.push_back(result);
  }
  writeResults(results);
  if (scene)
  {
    addToScene(scene, options, organImage, portal, hepatic, tumourImage, results);
    if (!context.quiet)
    {
      context.err << "arbo: added " << results.size() << " resection" << (results.size() == 1 ? "" : "s") << " to "
                  << options.scene << "\n";
    }
  }

  const std::size_t organVoxels = generator->GetNumberOfOrganVoxels();
  const std::string resectedSide = cutter && cutter->GetResectedSide() < 0 ? "back" : "front";
  const double voxelMl = generator->GetVoxelMillilitres();
  if (options.json)
  {
    Json list = Json::array();
    for (const Result & result : results)
    {
      Json entry;
      entry["margin_mm"] = result.hasMargin ? Json(result.margin.millimetres) : Json(nullptr);
      entry["output"] = result.output;
      entry["proposal"] = result.proposal;
      if (!result.tree.empty())
      {
        entry["tree"] = result.tree;
      }
      entry["remnant"] = part(result.voxels[2], voxelMl, organVoxels);
      entry["resected"] = part(result.voxels[3], voxelMl, organVoxels);
      entry["at_risk"] = part(result.voxels[4], voxelMl, organVoxels);
      entry["tumour"] = part(result.tumourVoxels, voxelMl, organVoxels);
      entry["flr_percent"] = result.flr;
      entry["below_min_flr"] = result.flr < options.minFlr;
      if (cutter)
      {
        entry["notes"] = result.notes;
      }
      list.push_back(entry);
    }
    Json report{ { "organ", options.organ },
                 { "portal", options.portal },
                 { "hepatic", options.hepatic.empty() ? Json(nullptr) : Json(options.hepatic) },
                 { "mode", options.plan ? "plan" : (cut ? "plane" : "tumour") },
                 { "tumour", tumour ? Json(options.tumour) : Json(nullptr) },
                 { "plane", cut ? Json(options.plane) : Json(nullptr) },
                 { "resect_side", cutter ? Json(resectedSide) : Json(nullptr) },
                 { "organ_voxels", organVoxels },
                 { "organ_millilitres", static_cast<double>(organVoxels) * voxelMl },
                 { "min_flr_percent", options.minFlr },
                 { "proposals", list } };
    context.out << report.dump(2) << "\n";
  }
  else
  {
    std::ostream & out = context.out;
    if (options.plan)
    {
      out << "Resection plan of " << options.portal;
    }
    else if (cut)
    {
      out << "Cut along " << options.plane << " (" << resectedSide << " side resected"
          << (tumour ? ", the tumour's" : "") << ") with " << options.portal;
    }
    else
    {
      out << "Risk analysis of " << options.tumour << " with " << options.portal;
    }
    out << (options.hepatic.empty() ? "" : " and " + options.hepatic) << " in " << options.organ << "\n";
    out << "organ: " << organVoxels << " voxels, " << fixed(static_cast<double>(organVoxels) * voxelMl, 2) << " ml\n";
    for (const Result & result : results)
    {
      out << "\n"
          << (result.hasMargin ? "margin " + result.margin.text + " mm" : std::string(cut ? "plane" : "plan")) << " -> "
          << result.output << "\n";
      out << "  " << std::left << std::setw(10) << "part" << std::right << std::setw(12) << "voxels" << std::setw(12)
          << "ml" << std::setw(9) << "% organ"
          << "\n";
      const auto row = [&](const char * name, std::size_t voxels) {
        const double share = organVoxels == 0 ? 0.0 : 100.0 * static_cast<double>(voxels) / organVoxels;
        out << "  " << std::left << std::setw(10) << name << std::right << std::setw(12) << voxels << std::setw(12)
            << fixed(static_cast<double>(voxels) * voxelMl, 2) << std::setw(9) << fixed(share, 2) << "\n";
      };
      row("remnant", result.voxels[2]);
      row("resected", result.voxels[3]);
      row("at risk", result.voxels[4]);
      if (result.withTumour)
      {
        row("tumour", result.tumourVoxels);
      }
      out << "  FLR " << fixed(result.flr, 2) << " %"
          << (result.withTumour ? " (remnant / (organ - tumour))" : " (remnant / organ)") << "\n";
    }
    if (results.size() > 1)
    {
      out << "\n  " << std::right << std::setw(9) << "margin" << std::setw(14) << "resected ml" << std::setw(13)
          << "at risk ml" << std::setw(13) << "remnant ml" << std::setw(9) << "FLR %"
          << "\n";
      for (const Result & result : results)
      {
        out << "  " << std::setw(9) << (result.margin.text + " mm") << std::setw(14)
            << fixed(static_cast<double>(result.voxels[3]) * voxelMl, 2) << std::setw(13)
            << fixed(static_cast<double>(result.voxels[4]) * voxelMl, 2) << std::setw(13)
            << fixed(static_cast<double>(result.voxels[2]) * voxelMl, 2) << std::setw(9) << fixed(result.flr, 2)
            << "\n";
      }
    }
  }
  if (!context.quiet)
  {
    for (const Result & result : results)
    {
      for (const std::string & note : result.notes)
      {
        context.err << "arbo: note: " << note << "\n";
      }
      if (result.flr < options.minFlr)
      {
        context.err << "arbo: note: the future liver remnant of "
                    << (result.hasMargin ? "margin " + result.margin.text + " mm"
                                         : std::string(cut ? "the cut" : "the plan"))
                    << " is " << fixed(result.flr, 2) << " %, below " << fixed(options.minFlr, 2) << " % (--min-flr)\n";
      }
    }
    for (const Result & result : results)
    {
      context.err << "arbo: wrote " << result.output << " and " << result.proposal
                  << (result.tree.empty() ? "" : " and " + result.tree) << "\n";
    }
  }
}
} // namespace

void
addResectCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<ResectOptions>();
  CLI::App * command = app.add_subcommand(
    "resect",
    "Resection proposal from a plan, a tumour with safety margins or a cutting plane: resected, at risk, remnant, FLR");
  command->footer(
    "Three ways to a proposal:\n"
    "  --plan            the resection statuses of the tree (arbo label --status, arbo view): each organ voxel\n"
    "                    takes the status of the portal vein with the nearest centre-line point\n"
    "  --tumour TUMOUR   risk analysis: the zone within --margin mm of the tumour (world mm, voxel centres) is\n"
    "                    resected; every portal vein with a point in the zone is cut, and with it everything it\n"
    "                    supplies downstream; with --hepatic, veins cut in the zone congest what they drain\n"
    "  --plane POINTS    a cutting surface through the control points of POINTS.mps (at least 3, not on one\n"
    "                    line; more than 3 bend it through every point): the organ on --resect-side (front:\n"
    "                    the side facing away from the organ's centre, the default; back) is resected, or with\n"
    "                    --tumour the side holding the tumour. A portal point whose path from the root crosses\n"
    "                    the surface loses its supply (with --hepatic, a hepatic point its drainage), and the\n"
    "                    remnant it supplies (drains) is at risk\n"
    "Labels of the output image: 0 outside the organ, 2 remnant, 3 to be resected, 4 area at risk. Beside it,\n"
    "<stem>.proposal.xml describes the labels (names, volumes in ml, colours). Several margins (--margin 0,5,10)\n"
    "give one image per margin, named by inserting -<margin>mm before the ending, and share one distance map and\n"
    "one territory labelling. The future liver remnant (FLR) is remnant / (organ - tumour inside the organ); a\n"
    "note on stderr flags proposals below --min-flr.\n"
    "The tumour mask must lie on the organ's grid (size, spacing, origin, direction); any non-zero voxel is\n"
    "tumour, or with --tumour-label N the voxels of value N (organ likewise with --organ-label N; organ and tumour\n"
    "may be one label map, whose tumour then counts as organ too). Any voxel type is taken. Trees are in the organ's "
    "world coordinates. With --tree-out, the trees are written with the statuses\n"
    "of the proposal (3 devascularised, 4 congested, 2 kept), for arbo view and arbo render.\n"
    "Examples: arbo resect liver.nrrd portal.ves --tumour tumour.nrrd --margin 0,5,10 -o risk.nrrd\n"
    "          arbo resect liver.nrrd portal.ves --hepatic hepatic.ves --tumour tumour.nrrd --margin 10 \\\n"
    "            -o resection.nii.gz --tree-out plan.ves --json\n"
    "          arbo resect liver.nrrd plan.ves --plan -o planned.nrrd\n"
    "          arbo resect liver.nrrd portal.ves --plane cut.mps --resect-side back -o cut.nrrd");
  command->add_option("organ", options->organ, "Organ segmentation (3-D image, 0 = outside) or label map")->required();
  command->add_option(
    "--organ-label", options->organLabel, "The organ's label in a label map (default: every voxel but 0)");
  command->add_option(
    "--tumour-label", options->tumourLabel, "The tumour's label in a label map (default: every voxel but 0)");
  command->add_option("portal", options->portal, "Portal vein tree (.ves) in the organ's world coordinates")
    ->required();
  command->add_option("--hepatic", options->hepatic, "Hepatic vein tree (.ves): drainage, areas at risk");
  command->add_flag("--plan", options->plan, "Proposal from the trees' resection statuses");
  command->add_option("--tumour", options->tumour, "Tumour mask on the organ's grid (non-zero = tumour)");
  command->add_option("--plane", options->plane, "Cut along the surface through these control points (.mps)");
  command->add_option("--resect-side", options->resectSide, "With --plane: the side resected (default front)")
    ->check(CLI::IsMember({ "front", "back" }));
  command->add_option("--margin", options->margins, "Safety margin(s) in mm, comma-separated (default 10)");
  command->add_option("-o,--output", options->output, "Resection image to write (.nrrd, .nii.gz, .mha, ...)")
    ->required();
  command->add_option("--surfaces", options->surfaces, "Folder for one smoothed surface per label (made if missing)");
  command->add_option("--surface-format", options->surfaceFormat, "File format of the surfaces")
    ->check(CLI::IsMember({ "vtp", "stl", "obj" }))
    ->capture_default_str();
  command->add_option("--tree-out", options->treeOut, "Write the trees with the proposal's statuses (.ves, .vtp)");
  command->add_option("--scene",
                      options->scene,
                      "Add the resection images (and the surfaces and plan trees written) to this scene (.rs, created "
                      "when missing), with the organ, trees, tumour and plane as sources");
  command->add_flag("--json", options->json, "Print the results as JSON (for scripts)");
  command->add_option("--min-flr", options->minFlr, "FLR percent below which a note is printed")
    ->check(CLI::Range(0.0, 100.0))
    ->capture_default_str();
  command->add_option("--threads", options->threads, "Threads for the territories (default: all cores)")
    ->check(CLI::Range(1u, 1024u));
  command->callback([options, &context] { resect(*options, context); });
}
} // namespace arbo

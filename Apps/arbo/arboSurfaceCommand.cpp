#include "arboCommands.h"

#include "arboAtomicFile.h"
#include "arboError.h"
#include "arboFiles.h"

#include "lumoImage.h"
#include "lumoImageAccess.h"
#include "lumoLabelImageSurfaceFilter.h"

#include <CLI/CLI.hpp>
#include <itkImageRegionConstIterator.h>
#include <vtkAppendPolyData.h>
#include <vtkCellData.h>
#include <vtkDecimatePro.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkIntArray.h>
#include <vtkMassProperties.h>
#include <vtkOBJWriter.h>
#include <vtkPLYWriter.h>
#include <vtkPolyData.h>
#include <vtkPolyDataNormals.h>
#include <vtkSTLWriter.h>
#include <vtkSmartPointer.h>
#include <vtkWindowedSincPolyDataFilter.h>
#include <vtkXMLPolyDataWriter.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <sstream>

namespace arbo
{
namespace
{
struct SurfaceOptions
{
  std::string input;
  std::string output;
  std::vector<long> labels;
  int smooth{ 15 };
  double decimate{ 0.0 };
};

const std::vector<std::string> &
meshEndings()
{
  static const std::vector<std::string> endings{ ".vtp", ".stl", ".obj", ".ply" };
  return endings;
}

/** A label image of an integer type as it is; one of a floating type as 32-bit integers when every value is a whole
 *  number in that range (label maps saved as float by other tools), otherwise refused. */
lumo::Image::Pointer
integerLabels(lumo::Image * image, const std::string & path)
{
  if (!image->IsFloatingPoint())
  {
    return image;
  }
  auto labels = itk::Image<std::int32_t, 3>::New();
  lumo::AccessByItk(image, [&](auto * itkImage) {
    using InputType = std::remove_pointer_t<decltype(itkImage)>;
    labels->CopyInformation(itkImage);
    labels->SetRegions(itkImage->GetLargestPossibleRegion());
    labels->Allocate();
    std::int32_t * out = labels->GetBufferPointer();
    itk::ImageRegionConstIterator<InputType> it(itkImage, itkImage->GetLargestPossibleRegion());
    for (; !it.IsAtEnd(); ++it, ++out)
    {
      const double value = static_cast<double>(it.Get());
      if (!(value == std::floor(value)) || value < std::numeric_limits<std::int32_t>::min() ||
          value > std::numeric_limits<std::int32_t>::max())
      {
        throw Error(path,
                    "holds values that are not labels (whole numbers); meshes are made of label images and masks");
      }
      *out = static_cast<std::int32_t>(value);
    }
  });
  return lumo::ImportItkImage(labels.GetPointer());
}

/** Number of voxels of every non-zero label. */
std::map<long, std::size_t>
countLabels(const lumo::Image * image)
{
  std::map<long, std::size_t> counts;
  lumo::AccessByItk(image, [&](auto * itkImage) {
    using ImageType = std::remove_pointer_t<decltype(itkImage)>;
    using PixelType = typename ImageType::PixelType;
    itk::ImageRegionConstIterator<ImageType> it(itkImage, itkImage->GetLargestPossibleRegion());
    PixelType last{};
    std::size_t run = 0;
    // Label images are long runs of one value: count runs, not voxels, into the map.
    for (; !it.IsAtEnd(); ++it)
    {
      const PixelType value = it.Get();
      if (run > 0 && value != last)
      {
        counts[static_cast<long>(last)] += run;
        run = 0;
      }
      last = value;
      ++run;
    }
    if (run > 0)
    {
      counts[static_cast<long>(last)] += run;
    }
  });
  counts.erase(0);
  return counts;
}

vtkSmartPointer<vtkPolyData>
withNormals(vtkPolyData * mesh)
{
  // The triangles face out of the label already (the surface filter sees to that): no reorientation.
  auto normals = vtkSmartPointer<vtkPolyDataNormals>::New();
  normals->SetInputData(mesh);
  normals->SplittingOff();
  normals->ConsistencyOff();
  normals->AutoOrientNormalsOff();
  normals->ComputePointNormalsOn();
  normals->ComputeCellNormalsOff();
  normals->Update();
  return normals->GetOutput();
}

/** Fewer triangles (topology kept), smoothing, then the volume given back: the contour halfway between
 *  label and background voxels cuts every convex edge and corner of the voxels, and smoothing rounds thin parts
 *  further, so a mesh of a vessel a few voxels thick encloses several per cent less than its voxels. The surface is
 *  moved along its normals by the distance that restores the voxel volume (Newton steps on volume = area x
 *  distance), at most half the smallest voxel spacing, so that it stays within the voxels it bounds. */
vtkSmartPointer<vtkPolyData>
finishMesh(vtkPolyData * mesh, double decimate, int smooth, double voxelVolume, double maximumShift)
{
  vtkSmartPointer<vtkPolyData> result = mesh;
  if (decimate > 0.0 && mesh->GetNumberOfPolys() > 0)
  {
    // Topology kept (no splitting, no hole made at a vertex): the mesh stays closed and manifold, which quadric
    // decimation does not promise. The volume is given back below.
    auto reduce = vtkSmartPointer<vtkDecimatePro>::New();
    reduce->SetInputData(result);
    reduce->SetTargetReduction(decimate);
    reduce->PreserveTopologyOn();
    reduce->SplittingOff();
    reduce->BoundaryVertexDeletionOff();
    reduce->SetMaximumError(VTK_DOUBLE_MAX);
    reduce->Update();
    result = reduce->GetOutput();
  }
  if (smooth > 0 && result->GetNumberOfPolys() > 0)
  {
    // The label surface filter's smoothing: windowed sinc, which does not shrink the mesh as Laplacian smoothing
    // would.
    auto smoother = vtkSmartPointer<vtkWindowedSincPolyDataFilter>::New();
    smoother->SetInputData(result);
    smoother->SetNumberOfIterations(static_cast<unsigned int>(smooth));
    smoother->SetPassBand(0.05);
    smoother->NormalizeCoordinatesOn();
    smoother->BoundarySmoothingOff();
    smoother->FeatureEdgeSmoothingOff();
    smoother->NonManifoldSmoothingOn();
    smoother->Update();
    result = smoother->GetOutput();
  }
  result = withNormals(result);
  double shifted = 0.0;
  for (int step = 0; step < 3 && result->GetNumberOfPolys() > 0; ++step)
  {
    auto mass = vtkSmartPointer<vtkMassProperties>::New();
    mass->SetInputData(result);
    mass->Update();
    if (!(mass->GetSurfaceArea() > 0.0) || std::abs(mass->GetVolume() - voxelVolume) < 1e-4 * voxelVolume)
    {
      break;
    }
    const double wanted = (voxelVolume - mass->GetVolume()) / mass->GetSurfaceArea();
    const double shift = std::clamp(shifted + wanted, -maximumShift, maximumShift) - shifted;
    if (shift == 0.0)
    {
      break;
    }
    shifted += shift;
    vtkPoints * points = result->GetPoints();
    vtkDataArray * normals = result->GetPointData()->GetNormals();
    for (vtkIdType id = 0; id < points->GetNumberOfPoints(); ++id)
    {
      double p[3], n[3];
      points->GetPoint(id, p);
      normals->GetTuple(id, n);
      points->SetPoint(id, p[0] + shift * n[0], p[1] + shift * n[1], p[2] + shift * n[2]);
    }
    points->Modified();
    result = withNormals(result);
  }
  return result;
}

void
writeMesh(vtkPolyData * mesh, const std::string & ending, const std::string & path, const std::string & target)
{
  int error = 0;
  if (ending == ".vtp")
  {
    auto writer = vtkSmartPointer<vtkXMLPolyDataWriter>::New();
    writer->SetInputData(mesh);
    writer->SetFileName(path.c_str());
    writer->SetDataModeToBinary();
    error = writer->Write() == 1 ? writer->GetErrorCode() : 1;
  }
  else if (ending == ".stl")
  {
    auto writer = vtkSmartPointer<vtkSTLWriter>::New();
    writer->SetInputData(mesh);
    writer->SetFileName(path.c_str());
    writer->SetFileTypeToBinary();
    error = writer->Write() == 1 ? writer->GetErrorCode() : 1;
  }
  else if (ending == ".obj")
  {
    auto writer = vtkSmartPointer<vtkOBJWriter>::New();
    writer->SetInputData(mesh);
    writer->SetFileName(path.c_str());
    error = writer->Write() == 1 ? writer->GetErrorCode() : 1;
  }
  else
  {
    auto writer = vtkSmartPointer<vtkPLYWriter>::New();
    writer->SetInputData(mesh);
    writer->SetFileName(path.c_str());
    writer->SetFileTypeToBinary();
    error = writer->Write() == 1 ? writer->GetErrorCode() : 1;
  }
  if (error != 0)
  {
    throw Error(target, "cannot be written");
  }
}

/** Writes every file to a temporary beside its target first; the targets are replaced only when all were written,
 *  so a failure leaves every earlier file as it was. */
void
writeAll(const std::vector<std::pair<std::string, vtkSmartPointer<vtkPolyData>>> & files,
         const std::string & ending,
         std::size_t index = 0)
{
  if (index == files.size())
  {
    return;
  }
  writeAtomically(files[index].first, [&](const std::string & temporary) {
    writeMesh(files[index].second, ending, temporary, files[index].first);
    writeAll(files, ending, index + 1);
  });
}

int
runSurface(const SurfaceOptions & options, Context & context)
{
  const std::string ending = formatExtension(options.output);
  if (std::find(meshEndings().begin(), meshEndings().end(), ending) == meshEndings().end())
  {
    throw Error(options.output,
                "meshes are written as .vtp, .stl, .obj or .ply: give a file name with one of these endings");
  }
  // Checked here rather than by the parser: every bad input is one line and exit status 1.
  if (options.smooth < 0 || options.smooth > 1000)
  {
    throw Error("", "--smooth " + std::to_string(options.smooth) + ": the smoothing iterations are 0 to 1000");
  }
  if (!(options.decimate >= 0.0 && options.decimate <= 0.95))
  {
    std::ostringstream text;
    text << "--decimate " << options.decimate << ": the fraction of triangles to remove is 0 to 0.95";
    throw Error("", text.str());
  }
  for (const long label : options.labels)
  {
    if (label == 0)
    {
      throw Error("", "--label 0: label 0 is the background, it has no surface");
    }
  }
  lumo::BaseData::Pointer data = readData(options.input);
  auto * image = dynamic_cast<lumo::Image *>(data.GetPointer());
  if (image == nullptr)
  {
    throw Error(options.input, "is a " + kindOf(data) + ", not an image; meshes are made of label images and masks");
  }
  lumo::Image::Pointer labels = integerLabels(image, options.input);

  auto filter = lumo::LabelImageSurfaceFilter::New();
  filter->SetInput(labels);
  filter->SetLabels(lumo::LabelImageSurfaceFilter::LabelVector(options.labels.begin(), options.labels.end()));
  // Smoothing comes after decimation (see finishMesh): the voxel staircase, many flat triangles, decimates
  // without tearing, where a smoothed mesh can come out with open or non-manifold edges.
  filter->SetSmoothingIterations(0);
  filter->ComputeNormalsOff();
  try
  {
    filter->Update();
  }
  catch (const itk::ExceptionObject & e)
  {
    std::string what = e.GetDescription();
    const std::string prefix = "LabelImageSurfaceFilter: ";
    if (what.rfind(prefix, 0) == 0)
    {
      what = what.substr(prefix.size());
    }
    throw Error(options.input, what);
  }
  const auto & found = filter->GetOutputLabels();
  if (found.empty())
  {
    throw Error(options.input, "is empty (every voxel is 0): no surface to make");
  }

  std::vector<std::pair<std::string, vtkSmartPointer<vtkPolyData>>> files;
  std::vector<vtkSmartPointer<vtkPolyData>> meshes;
  const std::map<long, std::size_t> voxels = countLabels(labels);
  const lumo::Vector3D spacing = labels->GetSpacing();
  const double voxelVolume = spacing[0] * spacing[1] * spacing[2];
  const double maximumShift = 0.5 * std::min({ spacing[0], spacing[1], spacing[2] });
  for (std::size_t i = 0; i < found.size(); ++i)
  {
    const double volume = static_cast<double>(voxels.at(static_cast<long>(found[i]))) * voxelVolume;
    meshes.push_back(
      finishMesh(filter->GetOutput(i)->GetVtkPolyData(0), options.decimate, options.smooth, volume, maximumShift));
  }
  if (ending == ".vtp")
  {
    // One file: every label's mesh, its triangles tagged by the cell array "label".
    auto append = vtkSmartPointer<vtkAppendPolyData>::New();
    for (std::size_t i = 0; i < found.size(); ++i)
    {
      auto tags = vtkSmartPointer<vtkIntArray>::New();
      tags->SetName("label");
      tags->SetNumberOfTuples(meshes[i]->GetNumberOfCells());
      tags->Fill(static_cast<double>(found[i]));
      meshes[i]->GetCellData()->AddArray(tags);
      append->AddInputData(meshes[i]);
    }
    append->Update();
    files.emplace_back(options.output, append->GetOutput());
  }
  else
  {
    const std::string stem = options.output.substr(0, options.output.size() - ending.size());
    const std::string suffix = options.output.substr(options.output.size() - ending.size());
    for (std::size_t i = 0; i < found.size(); ++i)
    {
      files.emplace_back(found.size() == 1 ? options.output : stem + "-" + std::to_string(found[i]) + suffix,
                         meshes[i]);
    }
  }
  writeAll(files, ending);

  if (!context.quiet)
  {
    for (std::size_t i = 0; i < found.size(); ++i)
    {
      auto mass = vtkSmartPointer<vtkMassProperties>::New();
      mass->SetInputData(meshes[i]);
      mass->Update();
      context.err << "arbo: label " << found[i] << ": " << meshes[i]->GetNumberOfPolys() << " triangles, "
                  << std::lround(mass->GetVolume()) << " mm3 -> " << (ending == ".vtp" ? files[0] : files[i]).first
                  << "\n";
    }
  }
  return 0;
}
} // namespace

void
addSurfaceCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<SurfaceOptions>();
  CLI::App * command =
    app.add_subcommand("surface", "Write meshes of a label image (organ, territories, resection, vessel masks)");
  command->footer(
    "Every label (or those of --label) becomes a closed triangle mesh in world coordinates (millimetres, as the\n"
    "image lies in the scanner), for 3-D printing and other viewers. The surface runs halfway between label and\n"
    "background voxels, is thinned out (--decimate), smoothed with a windowed sinc filter and moved along its\n"
    "normals (by at most half a voxel) until it encloses the volume of the label's voxels: within 1 % unless the\n"
    "label is only a voxel thick.\n\n"
    "Output by the ending of -o:\n"
    "  .vtp               one file holding every label's mesh, the cell array \"label\" tells them apart\n"
    "  .stl, .obj, .ply   one file per label: with one label OUT itself, with several OUT with \"-LABEL\" before\n"
    "                     its ending (segments.stl -> segments-2.stl, segments-3.stl, ...)\n"
    "Files are replaced only when all were written. Floating-point images are taken when every value is a whole\n"
    "number.\n\n"
    "Examples:\n"
    "  arbo surface organ.nrrd -o liver.stl\n"
    "  arbo surface segments.nrrd -o segments.vtp --decimate 0.5\n"
    "  arbo surface labels.nii.gz -o vessels.obj --label 2 --label 3 --smooth 30");
  command->add_option("labels", options->input, "The label image or mask")->required();
  command->add_option("-o,--output", options->output, "The mesh file (.vtp, .stl, .obj or .ply)")->required();
  command->add_option("--label", options->labels, "A label to mesh (repeatable); default: every label but 0");
  command
    ->add_option("--smooth", options->smooth, "Iterations of the windowed sinc smoothing (0 keeps the voxel steps)")
    ->capture_default_str();
  command
    ->add_option(
      "--decimate",
      options->decimate,
      "Fraction of the triangles to remove, 0 to 0.95 (at most: the mesh stays closed, thin parts keep more)")
    ->capture_default_str();
  command->callback([options, &context]() { context.status = runSurface(*options, context); });
}
} // namespace arbo

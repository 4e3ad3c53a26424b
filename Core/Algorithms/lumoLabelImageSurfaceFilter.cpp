#include "lumoLabelImageSurfaceFilter.h"

#include "lumoImageAccess.h"

#include <vtkDiscreteFlyingEdges3D.h>
#include <vtkImageData.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataNormals.h>
#include <vtkReverseSense.h>
#include <vtkSMPTools.h>
#include <vtkSmartPointer.h>
#include <vtkUnsignedCharArray.h>
#include <vtkWindowedSincPolyDataFilter.h>

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <string>
#include <type_traits>

namespace lumo
{
namespace
{
using LabelFilterLabel = LabelImageSurfaceFilter::LabelType;

/** Voxel index bounds of one label, inclusive. */
struct LabelBox
{
  std::array<long, 3> Min{
    { std::numeric_limits<long>::max(), std::numeric_limits<long>::max(), std::numeric_limits<long>::max() }
  };
  std::array<long, 3> Max{ { -1, -1, -1 } };

  double
  Voxels() const
  {
    return static_cast<double>(Max[0] - Min[0] + 1) * (Max[1] - Min[1] + 1) * (Max[2] - Min[2] + 1);
  }

  void
  Merge(const LabelBox & other)
  {
    for (unsigned int i = 0; i < 3; ++i)
    {
      Min[i] = std::min(Min[i], other.Min[i]);
      Max[i] = std::max(Max[i], other.Max[i]);
    }
  }

  void
  AddRun(long x0, long x1, long y, long z)
  {
    Min[0] = std::min(Min[0], x0);
    Max[0] = std::max(Max[0], x1);
    Min[1] = std::min(Min[1], y);
    Max[1] = std::max(Max[1], y);
    Min[2] = std::min(Min[2], z);
    Max[2] = std::max(Max[2], z);
  }
};

using BoxMap = std::map<LabelFilterLabel, LabelBox>;

/** Bounding boxes of every non-zero value, found run by run along x (a label image is mostly long runs), one slice
 *  per task of VTK's thread pool. */
template <typename T>
BoxMap
FindLabelBoxes(const T * voxels, const Image::SizeType & size)
{
  const long nx = static_cast<long>(size[0]);
  const long ny = static_cast<long>(size[1]);
  std::vector<BoxMap> slices(size[2]);
  vtkSMPTools::For(0, static_cast<vtkIdType>(size[2]), 1, [&](vtkIdType first, vtkIdType last) {
    for (long z = first; z < last; ++z)
    {
      BoxMap & boxes = slices[z];
      for (long y = 0; y < ny; ++y)
      {
        const T * row = voxels + (z * ny + y) * nx;
        long x = 0;
        while (x < nx)
        {
          const T value = row[x];
          long end = x + 1;
          while (end < nx && row[end] == value)
          {
            ++end;
          }
          if (value != 0)
          {
            boxes[static_cast<LabelFilterLabel>(value)].AddRun(x, end - 1, y, z);
          }
          x = end;
        }
      }
    }
  });
  BoxMap boxes;
  for (const BoxMap & slice : slices)
  {
    for (const auto & [label, box] : slice)
    {
      boxes[label].Merge(box);
    }
  }
  return boxes;
}

/** The label's box with one voxel of background on every side, as a binary image (1 label, 0 other) whose points
 *  sit at index times spacing. */
template <typename T>
vtkSmartPointer<vtkImageData>
CutOutLabel(const T * voxels, const Image::SizeType & size, const Vector3D & spacing, const LabelBox & box, T label)
{
  std::array<long, 3> lo{};
  std::array<int, 3> dims{};
  for (unsigned int i = 0; i < 3; ++i)
  {
    lo[i] = box.Min[i] - 1;
    dims[i] = static_cast<int>(box.Max[i] - box.Min[i] + 3);
  }
  vtkSmartPointer<vtkImageData> cut = vtkSmartPointer<vtkImageData>::New();
  cut->SetDimensions(dims[0], dims[1], dims[2]);
  cut->SetSpacing(spacing[0], spacing[1], spacing[2]);
  cut->SetOrigin(lo[0] * spacing[0], lo[1] * spacing[1], lo[2] * spacing[2]);
  vtkSmartPointer<vtkUnsignedCharArray> scalars = vtkSmartPointer<vtkUnsignedCharArray>::New();
  scalars->SetName("label");
  scalars->SetNumberOfValues(static_cast<vtkIdType>(dims[0]) * dims[1] * dims[2]);
  unsigned char * out = scalars->GetPointer(0);
  std::fill(out, out + scalars->GetNumberOfValues(), static_cast<unsigned char>(0));
  const long nx = static_cast<long>(size[0]);
  const long ny = static_cast<long>(size[1]);
  for (long z = box.Min[2]; z <= box.Max[2]; ++z)
  {
    for (long y = box.Min[1]; y <= box.Max[1]; ++y)
    {
      const T * row = voxels + (z * ny + y) * nx;
      unsigned char * outRow = out + ((z - lo[2]) * dims[1] + (y - lo[1])) * dims[0] + (box.Min[0] - lo[0]);
      for (long x = box.Min[0]; x <= box.Max[0]; ++x)
      {
        outRow[x - box.Min[0]] = row[x] == label ? 1 : 0;
      }
    }
  }
  cut->GetPointData()->SetScalars(scalars);
  return cut;
}

struct SurfaceSettings
{
  unsigned int iterations;
  double passBand;
  bool normals;
  bool mirrored;
  Point3D origin;
  Image::DirectionType direction;
};

/** Contour, smoothing, placement in the world and normals of one cut-out label. */
vtkSmartPointer<vtkPolyData>
MakeSurface(vtkImageData * cut, const SurfaceSettings & settings)
{
  vtkSmartPointer<vtkDiscreteFlyingEdges3D> contour = vtkSmartPointer<vtkDiscreteFlyingEdges3D>::New();
  contour->SetInputData(cut);
  contour->SetValue(0, 1.0);
  contour->ComputeNormalsOff();
  contour->ComputeGradientsOff();
  contour->ComputeScalarsOff();
  contour->Update();
  vtkSmartPointer<vtkPolyData> mesh = contour->GetOutput();

  if (settings.iterations > 0 && mesh->GetNumberOfPoints() > 0)
  {
    vtkSmartPointer<vtkWindowedSincPolyDataFilter> smoother = vtkSmartPointer<vtkWindowedSincPolyDataFilter>::New();
    smoother->SetInputData(mesh);
    smoother->SetNumberOfIterations(settings.iterations);
    smoother->SetPassBand(settings.passBand);
    smoother->NormalizeCoordinatesOn();
    smoother->BoundarySmoothingOff();
    smoother->FeatureEdgeSmoothingOff();
    smoother->NonManifoldSmoothingOn();
    smoother->Update();
    mesh = smoother->GetOutput();
  }

  // Index times spacing to world: rotate by the direction, then move to the origin.
  const Point3D & origin = settings.origin;
  const Image::DirectionType & direction = settings.direction;
  vtkSmartPointer<vtkPoints> world = vtkSmartPointer<vtkPoints>::New();
  world->SetDataTypeToFloat();
  world->SetNumberOfPoints(mesh->GetNumberOfPoints());
  for (vtkIdType id = 0; id < mesh->GetNumberOfPoints(); ++id)
  {
    double p[3];
    mesh->GetPoint(id, p);
    double w[3];
    for (unsigned int r = 0; r < 3; ++r)
    {
      w[r] = origin[r] + direction[r][0] * p[0] + direction[r][1] * p[1] + direction[r][2] * p[2];
    }
    world->SetPoint(id, w);
  }
  vtkSmartPointer<vtkPolyData> surface = vtkSmartPointer<vtkPolyData>::New();
  surface->SetPoints(world);
  surface->SetPolys(mesh->GetPolys());

  // A mirroring direction turns the triangles inside out; turn them back so that they face out of the label.
  if (settings.mirrored)
  {
    vtkSmartPointer<vtkReverseSense> reverse = vtkSmartPointer<vtkReverseSense>::New();
    reverse->SetInputData(surface);
    reverse->ReverseCellsOn();
    reverse->ReverseNormalsOff();
    reverse->Update();
    surface = reverse->GetOutput();
  }
  if (settings.normals)
  {
    // Flying edges orients every triangle out of the label already: no consistency pass is needed.
    vtkSmartPointer<vtkPolyDataNormals> normals = vtkSmartPointer<vtkPolyDataNormals>::New();
    normals->SetInputData(surface);
    normals->ComputePointNormalsOn();
    normals->ComputeCellNormalsOff();
    normals->SplittingOff();
    normals->ConsistencyOff();
    normals->AutoOrientNormalsOff();
    normals->Update();
    surface = normals->GetOutput();
  }
  return surface;
}

[[noreturn]] void
Fail(unsigned int line, const std::string & message)
{
  throw itk::ExceptionObject(
    __FILE__, line, "LabelImageSurfaceFilter: " + message, "lumo::LabelImageSurfaceFilter::GenerateData");
}
} // namespace

LabelImageSurfaceFilter::LabelImageSurfaceFilter()
{
  this->SetNumberOfRequiredInputs(1);
  this->SetNumberOfRequiredOutputs(0);
  this->SetNthOutput(0, this->MakeOutput(0));
}

LabelImageSurfaceFilter::~LabelImageSurfaceFilter() = default;

itk::DataObject::Pointer
LabelImageSurfaceFilter::MakeOutput(DataObjectPointerArraySizeType)
{
  return Surface::New().GetPointer();
}

void
LabelImageSurfaceFilter::SetLabels(const LabelVector & labels)
{
  if (labels != m_Labels)
  {
    m_Labels = labels;
    this->Modified();
  }
}

void
LabelImageSurfaceFilter::SetInput(const Image * labelImage)
{
  this->SetNthInput(0, const_cast<Image *>(labelImage));
}

const Image *
LabelImageSurfaceFilter::GetInput()
{
  return dynamic_cast<const Image *>(this->ProcessObject::GetInput(0));
}

Surface *
LabelImageSurfaceFilter::GetOutput(DataObjectPointerArraySizeType index)
{
  return dynamic_cast<Surface *>(this->ProcessObject::GetOutput(index));
}

void
LabelImageSurfaceFilter::GenerateData()
{
  const Image * image = this->GetInput();
  if (image == nullptr || !image->IsInitialized())
  {
    Fail(__LINE__, "no label image");
  }
  if (image->IsFloatingPoint())
  {
    Fail(__LINE__, "the label image has pixel type " + image->GetPixelTypeAsString() + "; an integer type is needed");
  }
  for (const LabelType label : m_Labels)
  {
    if (label == 0)
    {
      Fail(__LINE__, "label 0 is the background");
    }
  }

  const Image::SizeType size = image->GetSize();
  const Vector3D spacing = image->GetSpacing();
  const Point3D origin = image->GetOrigin();
  const Image::DirectionType direction = image->GetDirection();
  const double determinant = direction[0][0] * (direction[1][1] * direction[2][2] - direction[1][2] * direction[2][1]) -
                             direction[0][1] * (direction[1][0] * direction[2][2] - direction[1][2] * direction[2][0]) +
                             direction[0][2] * (direction[1][0] * direction[2][1] - direction[1][1] * direction[2][0]);
  const bool mirrored = determinant < 0.0;

  struct Work
  {
    LabelType label;
    LabelBox box;
    vtkSmartPointer<vtkPolyData> surface;
  };
  std::vector<Work> work;
  const SurfaceSettings settings{ m_SmoothingIterations, m_PassBand, m_ComputeNormals, mirrored, origin, direction };
  DispatchPixelType(image->GetPixelType(), [&](auto * tag) {
    using T = std::remove_pointer_t<decltype(tag)>;
    const T * voxels = static_cast<const T *>(image->GetData());
    const BoxMap boxes = FindLabelBoxes<T>(voxels, size);
    LabelVector labels = m_Labels;
    if (labels.empty())
    {
      for (const auto & entry : boxes)
      {
        labels.push_back(entry.first);
      }
    }
    for (const LabelType label : labels)
    {
      const auto found = boxes.find(label);
      if (found == boxes.end())
      {
        Fail(__LINE__, "label " + std::to_string(label) + " is not in the image");
      }
      work.push_back({ label, found->second, nullptr });
    }
    // Labels are independent: each is a task of VTK's thread pool, the largest boxes first so that the small ones
    // fill the gaps. Contouring inside a task runs on the same pool.
    std::vector<std::size_t> order(work.size());
    for (std::size_t i = 0; i < order.size(); ++i)
    {
      order[i] = i;
    }
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
      return work[a].box.Voxels() > work[b].box.Voxels();
    });
    vtkSMPTools::For(0, static_cast<vtkIdType>(order.size()), 1, [&](vtkIdType begin, vtkIdType end) {
      for (vtkIdType i = begin; i < end; ++i)
      {
        Work & item = work[order[i]];
        vtkSmartPointer<vtkImageData> cut = CutOutLabel<T>(voxels, size, spacing, item.box, static_cast<T>(item.label));
        item.surface = MakeSurface(cut, settings);
      }
    });
  });

  this->ResizeOutputs(work.size());
  m_OutputLabels.clear();
  for (std::size_t index = 0; index < work.size(); ++index)
  {
    this->GetOutput(index)->SetVtkPolyData(work[index].surface);
    m_OutputLabels.push_back(work[index].label);
  }
}

void
LabelImageSurfaceFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Labels:";
  for (const LabelType label : m_Labels)
  {
    os << ' ' << label;
  }
  os << (m_Labels.empty() ? " (every label present)\n" : "\n");
  os << indent << "SmoothingIterations: " << m_SmoothingIterations << '\n';
  os << indent << "PassBand: " << m_PassBand << '\n';
  os << indent << "ComputeNormals: " << (m_ComputeNormals ? "On" : "Off") << '\n';
}
} // namespace lumo

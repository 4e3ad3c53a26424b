#ifndef ArboPictureSupport_h
#define ArboPictureSupport_h

#include "lumoVesselTreeLookupTable.h"

#include <vtkImageData.h>
#include <vtkPNGReader.h>
#include <vtkSmartPointer.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace arbo_test
{
/** Pixels whose colour is the given colour under white light: a multiple k of it (shading), k >= 0.3. */
inline int
pixelsOfColor(const std::string & png, const lumo::VesselTreeLookupTable::ColorType & color)
{
  auto reader = vtkSmartPointer<vtkPNGReader>::New();
  reader->SetFileName(png.c_str());
  reader->Update();
  vtkImageData * image = reader->GetOutput();
  const int * dims = image->GetDimensions();
  const int components = image->GetNumberOfScalarComponents();
  const auto * pixel = static_cast<const unsigned char *>(image->GetScalarPointer());
  const double cc = color[0] * color[0] + color[1] * color[1] + color[2] * color[2];
  int count = 0;
  for (int i = 0; i < dims[0] * dims[1]; ++i, pixel += components)
  {
    const double p[3] = { pixel[0] / 255.0, pixel[1] / 255.0, pixel[2] / 255.0 };
    const double k = (p[0] * color[0] + p[1] * color[1] + p[2] * color[2]) / cc;
    double residual = 0;
    for (int c = 0; c < 3; ++c)
    {
      residual = std::max(residual, std::abs(p[c] - k * color[c]));
    }
    count += (k >= 0.3 && residual < 0.04) ? 1 : 0;
  }
  return count;
}
} // namespace arbo_test

#endif

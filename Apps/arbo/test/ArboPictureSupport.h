#ifndef ArboPictureSupport_h
#define ArboPictureSupport_h

#include "arboViewer.h"

#include "lumoVesselTreeLookupTable.h"

#include <vtkCommand.h>
#include <vtkRenderWindowInteractor.h>
#include <vtkRenderer.h>

#include <vtkImageData.h>
#include <vtkPNGReader.h>
#include <vtkSmartPointer.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace arbo_test
{
/** Pixels of a PNG picture for which the test holds, given the pixel's red, green and blue. */
template <typename Test>
int
countPixels(const std::string & png, Test test)
{
  auto reader = vtkSmartPointer<vtkPNGReader>::New();
  reader->SetFileName(png.c_str());
  reader->Update();
  vtkImageData * image = reader->GetOutput();
  const int * dims = image->GetDimensions();
  const int components = image->GetNumberOfScalarComponents();
  const auto * pixel = static_cast<const unsigned char *>(image->GetScalarPointer());
  int count = 0;
  for (int i = 0; i < dims[0] * dims[1]; ++i, pixel += components)
  {
    count += test(pixel[0], pixel[1], pixel[2]) ? 1 : 0;
  }
  return count;
}

/** Pixels whose colour is the given colour under white light: a multiple k of it (shading), k >= 0.3. */
inline int
pixelsOfColor(const std::string & png, const lumo::VesselTreeLookupTable::ColorType & color)
{
  const double cc = color[0] * color[0] + color[1] * color[1] + color[2] * color[2];
  return countPixels(png, [&color, cc](unsigned char red, unsigned char green, unsigned char blue) {
    const double p[3] = { red / 255.0, green / 255.0, blue / 255.0 };
    const double k = (p[0] * color[0] + p[1] * color[1] + p[2] * color[2]) / cc;
    double residual = 0;
    for (int c = 0; c < 3; ++c)
    {
      residual = std::max(residual, std::abs(p[c] - k * color[c]));
    }
    return k >= 0.3 && residual < 0.04;
  });
}

/** Display position of a world point in the viewer's window. */
inline std::array<int, 2>
at(const arbo::Viewer & viewer, double x, double y, double z)
{
  vtkRenderer * r = viewer.renderer()->GetVtkRenderer();
  r->SetWorldPoint(x, y, z, 1.0);
  r->WorldToDisplay();
  double display[3];
  r->GetDisplayPoint(display);
  return { static_cast<int>(std::lround(display[0])), static_cast<int>(std::lround(display[1])) };
}

/** A press and release without motion, through the window's own event handling. */
inline void
click(arbo::Viewer & viewer, const std::array<int, 2> & position, bool shift = false)
{
  vtkRenderWindowInteractor * window = viewer.windowInteractor();
  window->SetEventInformation(position[0], position[1], 0, shift ? 1 : 0);
  window->InvokeEvent(vtkCommand::LeftButtonPressEvent);
  window->InvokeEvent(vtkCommand::LeftButtonReleaseEvent);
}

/** A key press by its key symbol ("t", "Delete"), through the window's own event handling. */
inline void
press(arbo::Viewer & viewer, const char * keySymbol, bool shift = false)
{
  vtkRenderWindowInteractor * window = viewer.windowInteractor();
  window->SetEventInformation(0, 0, 0, shift ? 1 : 0, keySymbol[1] == '\0' ? keySymbol[0] : 0, 1, keySymbol);
  window->InvokeEvent(vtkCommand::KeyPressEvent);
}
} // namespace arbo_test

#endif

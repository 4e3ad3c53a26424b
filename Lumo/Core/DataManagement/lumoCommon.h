#ifndef lumoCommon_h
#define lumoCommon_h

// Basic types and the New() macros with constructor arguments shared by every class of the toolkit slice (namespace
// lumo). Kept light: ITK's macros, smart pointer and object factory (for itkNewMacro), points, vectors, RGB pixels.

#include <itkMacro.h>
#include <itkObjectFactory.h>
#include <itkPoint.h>
#include <itkRGBPixel.h>
#include <itkSmartPointer.h>
#include <itkVector.h>

namespace lumo
{
/** Coordinate type of geometries (millimetres in world space). */
using ScalarType = double;
using Point3D = itk::Point<ScalarType, 3>;
using Vector3D = itk::Vector<ScalarType, 3>;
/** RGB colour, each component in [0, 1]. */
using Color = itk::RGBPixel<float>;
/** Time step index of time-resolved data. */
using TimeStepType = unsigned int;
} // namespace lumo

/** New() with one, two or three constructor arguments (the object is made with plain new, no factory look-up). */
#define lumoNewMacro1Param(classname, type)                                                                            \
  static Pointer New(type _arg)                                                                                        \
  {                                                                                                                    \
    Pointer smartPtr = new classname(_arg);                                                                            \
    smartPtr->UnRegister();                                                                                            \
    return smartPtr;                                                                                                   \
  }                                                                                                                    \
  ITK_MACROEND_NOOP_STATEMENT

#define lumoNewMacro2Param(classname, typea, typeb)                                                                    \
  static Pointer New(typea _arga, typeb _argb)                                                                         \
  {                                                                                                                    \
    Pointer smartPtr = new classname(_arga, _argb);                                                                    \
    smartPtr->UnRegister();                                                                                            \
    return smartPtr;                                                                                                   \
  }                                                                                                                    \
  ITK_MACROEND_NOOP_STATEMENT

#define lumoNewMacro3Param(classname, typea, typeb, typec)                                                             \
  static Pointer New(typea _arga, typeb _argb, typec _argc)                                                            \
  {                                                                                                                    \
    Pointer smartPtr = new classname(_arga, _argb, _argc);                                                             \
    smartPtr->UnRegister();                                                                                            \
    return smartPtr;                                                                                                   \
  }                                                                                                                    \
  ITK_MACROEND_NOOP_STATEMENT

#endif

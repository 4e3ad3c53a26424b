#ifndef lumoVector3DProperty_h
#define lumoVector3DProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A 3-D vector (x, y, z); default (0, 0, 0). GetValueAsString: "[x, y, z]" with the numbers in shortest
 *  round-trip form, for instance "[1, 2.5, -3]". */
lumoDeclareGenericProperty(Vector3DProperty, Vector3D, Vector3D(0.0));
} // namespace lumo

#endif

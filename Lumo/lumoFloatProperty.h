#ifndef lumoFloatProperty_h
#define lumoFloatProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A single-precision number; default 0. GetValueAsString: shortest round-trip form ("0.5", "0.1", "3"). */
lumoDeclareGenericProperty(FloatProperty, float, 0.0f);
} // namespace lumo

#endif

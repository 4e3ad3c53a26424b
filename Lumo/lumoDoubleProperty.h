#ifndef lumoDoubleProperty_h
#define lumoDoubleProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A double-precision number; default 0. GetValueAsString: shortest round-trip form ("0.1", "2.5", "1e-07"). */
lumoDeclareGenericProperty(DoubleProperty, double, 0.0);
} // namespace lumo

#endif

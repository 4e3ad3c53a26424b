#ifndef lumoBoolProperty_h
#define lumoBoolProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A boolean; default false. GetValueAsString: "true" or "false". */
lumoDeclareGenericProperty(BoolProperty, bool, false);
} // namespace lumo

#endif

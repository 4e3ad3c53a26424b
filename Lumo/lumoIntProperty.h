#ifndef lumoIntProperty_h
#define lumoIntProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A signed integer; default 0. GetValueAsString: decimal ("-12"). */
lumoDeclareGenericProperty(IntProperty, int, 0);
} // namespace lumo

#endif

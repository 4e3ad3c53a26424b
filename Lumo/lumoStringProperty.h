#ifndef lumoStringProperty_h
#define lumoStringProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A string; default empty. GetValueAsString: the string itself. */
lumoDeclareGenericProperty(StringProperty, std::string, std::string());
} // namespace lumo

#endif

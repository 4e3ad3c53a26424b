#ifndef lumoColorPropertySerializer_h
#define lumoColorPropertySerializer_h

#include "lumoBasePropertySerializer.h"
#include "lumoColorProperty.h"

#include <itkObjectFactory.h>

namespace lumo
{
/** The XML element of a colour property in scene files: <ColorProperty R="1" G="0.5" B="0"/>, the components as
 *  floating-point numbers (in [0, 1] by convention; stored as given). Reading needs the element name
 *  "ColorProperty" and all three components as numbers; anything else reads as no property.
 *
 *  Other serializers that hold a colour (materials, resection proposal labels, the scene writer) use the static
 *  pair ColorToXML / ColorFromXML. */
class ColorPropertySerializer : public BasePropertySerializer
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ColorPropertySerializer);

  using Self = ColorPropertySerializer;
  using Superclass = BasePropertySerializer;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(ColorPropertySerializer, BasePropertySerializer);

  /** Null when the property set is not a ColorProperty. */
  tinyxml2::XMLElement *
  Serialize(tinyxml2::XMLDocument & document) override;
  BaseProperty::Pointer
  Deserialize(const tinyxml2::XMLElement * element) override;

  /** A new element "ColorProperty" of the document (not linked into it). */
  static tinyxml2::XMLElement *
  ColorToXML(const ColorProperty & property, tinyxml2::XMLDocument & document);
  /** A new property from an element "ColorProperty"; null for a null element, another element name, or a
   *  component that is missing or not a number. */
  static ColorProperty::Pointer
  ColorFromXML(const tinyxml2::XMLElement * element);

protected:
  ColorPropertySerializer();
  ~ColorPropertySerializer() override;
};
} // namespace lumo

#endif

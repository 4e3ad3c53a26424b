#ifndef lumoBasePropertySerializer_h
#define lumoBasePropertySerializer_h

#include "lumoBaseProperty.h"

#include <itkObjectFactory.h>

#include <string>

namespace tinyxml2
{
class XMLDocument;
class XMLElement;
} // namespace tinyxml2

namespace lumo
{
/** Turns one property class into an XML element of a scene file and back. Serializers are found by the class name
 *  of the property: the serializer of "FooProperty" is registered with ITK's object factories under the name
 *  "FooPropertySerializer" (see CreateForProperty). */
class BasePropertySerializer : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(BasePropertySerializer);

  using Self = BasePropertySerializer;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(BasePropertySerializer, itk::Object);

  /** The property to serialize. */
  void
  SetProperty(const BaseProperty * property);
  const BaseProperty *
  GetProperty() const;

  /** A new element of the document describing the property (not yet linked into the document); null when the
   *  property is missing or of a class this serializer does not know. */
  virtual tinyxml2::XMLElement *
  Serialize(tinyxml2::XMLDocument & document) = 0;

  /** A new property from an element written by Serialize; null when the element cannot be read. */
  virtual BaseProperty::Pointer
  Deserialize(const tinyxml2::XMLElement * element) = 0;

  /** The serializer registered for a property class name ("FooProperty" finds "FooPropertySerializer"); null
   *  when there is none. */
  static Pointer
  CreateForProperty(const std::string & propertyClassName);

protected:
  BasePropertySerializer();
  ~BasePropertySerializer() override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  BaseProperty::ConstPointer m_Property;
};
} // namespace lumo

#endif

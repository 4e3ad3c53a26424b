#ifndef lumoPropertyList_h
#define lumoPropertyList_h

#include "lumoBaseProperty.h"

#include <map>
#include <string>

namespace lumo
{
/** A map from key to property, ordered by key.
 *
 *  SetProperty(key, property):
 *    - a null property is ignored;
 *    - when the key holds this very object, nothing happens;
 *    - when the key holds a property of the same class, the new value is assigned into the existing object
 *      (so that everything sharing that object sees the change) and the new object is not stored;
 *    - otherwise (absent key, or another class) the given object is stored under the key.
 *  ReplaceProperty(key, property) always stores the given object (a null property removes the key).
 *  The list is marked modified whenever its content changes. */
class PropertyList : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(PropertyList);

  using Self = PropertyList;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(PropertyList, itk::Object);
  itkNewMacro(Self);

  using PropertyMap = std::map<std::string, BaseProperty::Pointer>;

  /** The property of that key, or null. */
  BaseProperty *
  GetProperty(const std::string & key) const;

  void
  SetProperty(const std::string & key, BaseProperty * property);

  void
  ReplaceProperty(const std::string & key, BaseProperty * property);

  /** Removes the key; false when absent. */
  bool
  DeleteProperty(const std::string & key);

  bool
  IsEmpty() const
  {
    return m_Properties.empty();
  }

  std::size_t
  GetSize() const
  {
    return m_Properties.size();
  }

  const PropertyMap *
  GetMap() const
  {
    return &m_Properties;
  }

  /** Removes every property. */
  void
  Clear();

  /** Copies the properties of the other list into this one with SetProperty, key by key. */
  void
  ConcatenatePropertyList(const PropertyList * other, bool replace = false);

  /** Typed look-ups: false (value untouched) when the key is absent or holds another class. */
  bool
  GetBoolProperty(const std::string & key, bool & value) const;
  bool
  GetStringProperty(const std::string & key, std::string & value) const;
  bool
  GetIntProperty(const std::string & key, int & value) const;
  bool
  GetFloatProperty(const std::string & key, float & value) const;
  bool
  GetDoubleProperty(const std::string & key, double & value) const;

  /** The latest modification time of the list and of every property in it. */
  itk::ModifiedTimeType
  GetMTime() const override;

protected:
  PropertyList() = default;
  ~PropertyList() override = default;
  itk::LightObject::Pointer
  InternalClone() const override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  PropertyMap m_Properties;
};
} // namespace lumo

#endif

#ifndef lumoGenericProperty_h
#define lumoGenericProperty_h

#include "lumoBaseProperty.h"

#include <string>
#include <typeinfo>

namespace lumo
{
/** Text forms of the values of the generic properties (see each property class for the exact form).
 *  Numbers are written in the classic locale; floating-point numbers in the shortest form that reads back to the
 *  same value ("0.1", "2", "1e+20"). */
std::string
ValueToPropertyString(bool value);
std::string
ValueToPropertyString(int value);
std::string
ValueToPropertyString(float value);
std::string
ValueToPropertyString(double value);
std::string
ValueToPropertyString(const std::string & value);
std::string
ValueToPropertyString(const Vector3D & value);
std::string
ValueToPropertyString(const Color & value);

/** A property holding one value of type T, compared with ==. The named property classes (BoolProperty,
 *  StringProperty, IntProperty...) are thin subclasses; two properties are equal only when they are of the same
 *  class and hold equal values. */
template <typename T>
class GenericProperty : public BaseProperty
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  GenericProperty(const GenericProperty &) = delete;
  GenericProperty(GenericProperty &&) = delete;
  GenericProperty &
  operator=(GenericProperty &&) = delete;
  GenericProperty &
  operator=(const GenericProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = GenericProperty;
  using Superclass = BaseProperty;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(GenericProperty, BaseProperty);
  using ValueType = T;

  virtual void
  SetValue(const T & value)
  {
    if (!(m_Value == value))
    {
      m_Value = value;
      this->Modified();
    }
  }

  virtual const T &
  GetValue() const
  {
    return m_Value;
  }

  bool
  IsEqual(const BaseProperty & other) const override
  {
    if (typeid(*this) != typeid(other))
    {
      return false;
    }
    return m_Value == static_cast<const GenericProperty &>(other).m_Value;
  }

  bool
  Assign(const BaseProperty & other) override
  {
    if (typeid(*this) != typeid(other))
    {
      return false;
    }
    this->SetValue(static_cast<const GenericProperty &>(other).m_Value);
    return true;
  }

  std::string
  GetValueAsString() const override
  {
    return ValueToPropertyString(m_Value);
  }

protected:
  GenericProperty()
    : m_Value()
  {}
  explicit GenericProperty(const T & value)
    : m_Value(value)
  {}
  ~GenericProperty() override = default;

  T m_Value;
};
} // namespace lumo

#endif

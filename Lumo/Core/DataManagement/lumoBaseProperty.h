#ifndef lumoBaseProperty_h
#define lumoBaseProperty_h

#include "lumoCommon.h"

#include <itkObject.h>

#include <string>

namespace lumo
{
/** Base of every property that data nodes carry (the toolkit property protocol).
 *
 *  - IsEqual(other): same class and same value. Properties of different classes are never equal.
 *  - Assign(other): copies the value of a property of the same class into this one and answers true; answers false
 *    and changes nothing for another class. Marks this property modified when the value changed.
 *  - GetValueAsString(): a short human-readable form of the value; each class documents its exact form.
 *  - operator== and operator!= go through IsEqual.
 *
 *  Properties are reference counted (itk::Object); a property object may be shared by several lists, and a list
 *  that receives a value for a key whose property is of the same class assigns the value into the existing
 *  object (see PropertyList::SetProperty). */
class BaseProperty : public itk::Object
{
public:
  // Shared and reference counted: never copied or moved. Assignment stays: it is the property protocol's
  // value copy (Assign), declared below.
  BaseProperty(const BaseProperty &) = delete;
  BaseProperty(BaseProperty &&) = delete;
  BaseProperty &
  operator=(BaseProperty &&) = delete;

  using Self = BaseProperty;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(BaseProperty, itk::Object);

  virtual bool
  IsEqual(const BaseProperty & other) const = 0;

  virtual bool
  Assign(const BaseProperty & other) = 0;

  /** The default answers "n/a". */
  virtual std::string
  GetValueAsString() const;

  bool
  operator==(const BaseProperty & other) const
  {
    return this->IsEqual(other);
  }
  bool
  operator!=(const BaseProperty & other) const
  {
    return !this->IsEqual(other);
  }

  /** Assigns through Assign(); a property of another class is left unchanged. */
  BaseProperty &
  operator=(const BaseProperty & other)
  {
    this->Assign(other);
    return *this;
  }

protected:
  BaseProperty() = default;
  ~BaseProperty() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  /** Clone(): a new object of the same class (CreateAnother) that was given this value with Assign. */
  itk::LightObject::Pointer
  InternalClone() const override;
};
} // namespace lumo

#endif

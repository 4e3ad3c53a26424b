#ifndef lumoGroupTagProperty_h
#define lumoGroupTagProperty_h

#include "lumoBaseProperty.h"

namespace lumo
{
/** A property without a value: its presence under a key tags a node as a member of the group named by the key.
 *  Any two group tags are equal. GetValueAsString: the empty string. */
class GroupTagProperty : public BaseProperty
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  GroupTagProperty(const GroupTagProperty &) = delete;
  GroupTagProperty(GroupTagProperty &&) = delete;
  GroupTagProperty &
  operator=(GroupTagProperty &&) = delete;
  GroupTagProperty &
  operator=(const GroupTagProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = GroupTagProperty;
  using Superclass = BaseProperty;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(GroupTagProperty, BaseProperty);
  itkNewMacro(Self);

  bool
  IsEqual(const BaseProperty & other) const override;
  bool
  Assign(const BaseProperty & other) override;
  std::string
  GetValueAsString() const override;

protected:
  GroupTagProperty() = default;
  ~GroupTagProperty() override = default;
};
} // namespace lumo

#endif

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
  lumoClassMacro(GroupTagProperty, BaseProperty);
  itkFactorylessNewMacro(Self);

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

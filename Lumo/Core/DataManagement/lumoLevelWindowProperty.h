#ifndef lumoLevelWindowProperty_h
#define lumoLevelWindowProperty_h

#include "lumoBaseProperty.h"
#include "lumoLevelWindow.h"

namespace lumo
{
/** Holds a LevelWindow value (copied in and out). GetValueAsString: "L:" + level + " W:" + window, numbers in
 *  shortest round-trip form, for instance "L:40 W:400". */
class LevelWindowProperty : public BaseProperty
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  LevelWindowProperty(const LevelWindowProperty &) = delete;
  LevelWindowProperty(LevelWindowProperty &&) = delete;
  LevelWindowProperty &
  operator=(LevelWindowProperty &&) = delete;
  LevelWindowProperty &
  operator=(const LevelWindowProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = LevelWindowProperty;
  using Superclass = BaseProperty;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(LevelWindowProperty, BaseProperty);
  itkNewMacro(Self);
  lumoNewMacro1Param(LevelWindowProperty, const LevelWindow &);

  const LevelWindow &
  GetLevelWindow() const
  {
    return m_LevelWindow;
  }
  const LevelWindow &
  GetValue() const
  {
    return m_LevelWindow;
  }
  void
  SetLevelWindow(const LevelWindow & levelWindow);
  void
  SetValue(const LevelWindow & levelWindow)
  {
    this->SetLevelWindow(levelWindow);
  }

  bool
  IsEqual(const BaseProperty & other) const override;
  bool
  Assign(const BaseProperty & other) override;
  std::string
  GetValueAsString() const override;

protected:
  LevelWindowProperty() = default;
  explicit LevelWindowProperty(const LevelWindow & levelWindow)
    : m_LevelWindow(levelWindow)
  {}
  ~LevelWindowProperty() override = default;

  LevelWindow m_LevelWindow;
};
} // namespace lumo

#endif

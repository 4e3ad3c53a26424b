// The level window property.

#include "lumoLevelWindowProperty.h"

#include "lumoGenericProperty.h"

#include <typeinfo>

namespace lumo
{
void
LevelWindowProperty::SetLevelWindow(const LevelWindow & levelWindow)
{
  if (m_LevelWindow != levelWindow)
  {
    m_LevelWindow = levelWindow;
    this->Modified();
  }
}

bool
LevelWindowProperty::IsEqual(const BaseProperty & other) const
{
  return typeid(*this) == typeid(other) &&
         m_LevelWindow == static_cast<const LevelWindowProperty &>(other).m_LevelWindow;
}

bool
LevelWindowProperty::Assign(const BaseProperty & other)
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  this->SetLevelWindow(static_cast<const LevelWindowProperty &>(other).m_LevelWindow);
  return true;
}

std::string
LevelWindowProperty::GetValueAsString() const
{
  return "L:" + ValueToPropertyString(m_LevelWindow.GetLevel()) +
         " W:" + ValueToPropertyString(m_LevelWindow.GetWindow());
}
} // namespace lumo

#include "lumoStatusBar.h"

namespace lumo
{
StatusBar *
StatusBar::GetInstance()
{
  static StatusBar instance;
  return &instance;
}

void
StatusBar::DisplayText(const std::string & text)
{
  m_Text = text;
  if (m_Implementation)
  {
    // A copy: the implementation may replace itself.
    const Implementation show = m_Implementation;
    show(m_Text);
  }
}

void
StatusBar::SetImplementation(Implementation implementation)
{
  m_Implementation = std::move(implementation);
}
} // namespace lumo

#ifndef WarningCapture_h
#define WarningCapture_h

#include <itkObject.h>
#include <itkOutputWindow.h>

#include <string>
#include <vector>

namespace lumotest
{
/** While alive, every toolkit warning goes into `texts` instead of the console, with global warnings switched on.
 *  The previous output window and warning setting come back on destruction. */
class WarningCapture
{
public:
  WarningCapture()
    : m_Window(Window::New())
    , m_Previous(itk::OutputWindow::GetInstance())
    , m_PreviousDisplay(itk::Object::GetGlobalWarningDisplay())
  {
    itk::OutputWindow::SetInstance(m_Window);
    itk::Object::GlobalWarningDisplayOn();
  }
  ~WarningCapture()
  {
    itk::OutputWindow::SetInstance(m_Previous);
    itk::Object::SetGlobalWarningDisplay(m_PreviousDisplay);
  }
  WarningCapture(const WarningCapture &) = delete;
  WarningCapture &
  operator=(const WarningCapture &) = delete;

  const std::vector<std::string> &
  texts() const
  {
    return m_Window->texts;
  }
  /** The messages alone: what follows "): " on the second line of each warning, without the closing line ends. */
  std::vector<std::string>
  messages() const
  {
    std::vector<std::string> result;
    for (const std::string & text : m_Window->texts)
    {
      const auto start = text.find("): ");
      std::string message = start == std::string::npos ? text : text.substr(start + 3);
      while (!message.empty() && message.back() == '\n')
      {
        message.pop_back();
      }
      result.push_back(message);
    }
    return result;
  }
  void
  clear()
  {
    m_Window->texts.clear();
  }

private:
  class Window : public itk::OutputWindow
  {
  public:
    using Self = Window;
    using Superclass = itk::OutputWindow;
    using Pointer = itk::SmartPointer<Self>;
    using ConstPointer = itk::SmartPointer<const Self>;
    itkFactorylessNewMacro(Self);
    itkTypeMacro(Window, itk::OutputWindow);

    void
    DisplayWarningText(const char * text) override
    {
      texts.emplace_back(text);
    }
    void
    DisplayText(const char * text) override
    {
      texts.emplace_back(text);
    }
    std::vector<std::string> texts;
  };

  Window::Pointer m_Window;
  itk::OutputWindow::Pointer m_Previous;
  bool m_PreviousDisplay;
};
} // namespace lumotest

#endif

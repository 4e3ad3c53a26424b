#ifndef lumoStatusBar_h
#define lumoStatusBar_h

#include <functional>
#include <string>

namespace lumo
{
/** The process-wide status text ("Vessel 12 selected"). DisplayText keeps the text and passes it to the
 *  implementation the application installed (a label, a corner of the render window); without one the text is
 *  only kept. Not thread-safe (one user-interface thread). */
class StatusBar
{
public:
  /** Shows a text. */
  using Implementation = std::function<void(const std::string &)>;

  static StatusBar *
  GetInstance();

  StatusBar(const StatusBar &) = delete;
  StatusBar &
  operator=(const StatusBar &) = delete;

  /** Keeps the text and shows it through the implementation, if any. */
  void
  DisplayText(const std::string & text);
  /** The last text displayed ("" at first). */
  const std::string &
  GetText() const
  {
    return m_Text;
  }

  /** Installs the implementation (an empty function removes it); the kept text is not shown again. */
  void
  SetImplementation(Implementation implementation);
  bool
  HasImplementation() const
  {
    return static_cast<bool>(m_Implementation);
  }

private:
  StatusBar() = default;

  std::string m_Text;
  Implementation m_Implementation;
};
} // namespace lumo

#endif

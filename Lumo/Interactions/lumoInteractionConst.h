#ifndef lumoInteractionConst_h
#define lumoInteractionConst_h

// Constants of the interaction framework: the kinds of raw events, mouse buttons, modifier keys and special keys
// (what an application puts into a lumo::Event), and the ids of the shipped state events and actions (what the
// shipped pattern file LumoInteraction.xml uses; docs/interaction.md). No class here.

namespace lumo
{
/** Kind of a raw event. */
enum class EventType : int
{
  None = 0,
  MouseButtonPress = 1,
  MouseButtonRelease = 2,
  MouseMove = 3,
  KeyPress = 4
};

/** The mouse button of a press or release; None for moves and keys. */
enum class MouseButton : int
{
  None = 0,
  Left = 1,
  Right = 2,
  Middle = 3
};

/** Modifier keys held during an event, a bit mask. */
using ModifierMask = unsigned int;
constexpr ModifierMask NoModifier = 0x0;
constexpr ModifierMask ShiftModifier = 0x1;
constexpr ModifierMask ControlModifier = 0x2;
constexpr ModifierMask AltModifier = 0x4;

/** Key codes: a printable character (33..126) is its ASCII code, as typed (case-sensitive); the keys below have
 *  codes from 256 on. 0 is "no key" (mouse events). */
namespace Key
{
constexpr int None = 0;
constexpr int Escape = 256;
constexpr int Return = 257;
constexpr int Delete = 258;
constexpr int BackSpace = 259;
constexpr int Tab = 260;
constexpr int Space = 261;
constexpr int Left = 262;
constexpr int Right = 263;
constexpr int Up = 264;
constexpr int Down = 265;
} // namespace Key

/** State event ids. 0 is never a valid id: EventMapper::Map answers it for an event that maps to nothing. The
 *  others are those of the shipped event table (LumoInteraction.xml); a pattern file may define more. */
namespace EventId
{
constexpr int None = 0;
/** A left button press without modifiers ("LeftClick"). */
constexpr int LeftClick = 1;
/** A left button press with Shift only ("ShiftLeftClick"). */
constexpr int ShiftLeftClick = 3;
/** Answers that actions send to their own state machine: "No" (nothing picked) and "Yes" (picked). */
constexpr int No = 1003;
constexpr int Yes = 1004;
} // namespace EventId

/** Action ids of the shipped patterns; the interactor registers a function for each. */
namespace ActionId
{
/** Pick the element under the event's position, then send EventId::Yes or EventId::No. */
constexpr int CheckElement = 30;
/** Add the picked element to the selection. */
constexpr int MultipleSelect = 61;
/** Select the picked element (only it). */
constexpr int Select = 65;
/** Clear the selection. */
constexpr int Deselect = 75;
} // namespace ActionId
} // namespace lumo

#endif

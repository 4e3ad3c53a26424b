#ifndef lumoYetAnotherVesselTreeInteractor_h
#define lumoYetAnotherVesselTreeInteractor_h

#include <itkObjectFactory.h>
#include "lumoCommon.h"
#include "lumoInteractor.h"
#include "lumoVesselTreeData.h"

namespace lumo
{
/** Selects vessels of a vessel tree by clicks into a 3-D render window.
 *
 *  Made with New(state machine type, node), normally the shipped type "VesselTreeSelection": a click runs
 *  action 30 (OnCheckElement: pick under the mouse, answer 1004 on a hit, 1003 otherwise), 1004 then runs 65
 *  (OnSelect) and 1003 runs 75 (OnDeselect); a shift-click leads through 30 and 1004 to 61 (OnMultipleSelect).
 *  Each action changes the selection with a VesselTreeOperation executed on the tree (705 select, 805 deselect,
 *  703 add), registers its undo with the undo controller while undo is enabled, asks for a redraw of all windows
 *  and writes a status text. Which vessels a pick activates follows the tree's activation mode.
 *
 *  Interaction targets one tree at a time, the class-wide active vessel tree: an interactor only takes events
 *  while its node is the active one. */
class YetAnotherVesselTreeInteractor : public Interactor
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(YetAnotherVesselTreeInteractor);

  using Self = YetAnotherVesselTreeInteractor;
  using Superclass = Interactor;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(YetAnotherVesselTreeInteractor, Interactor);
  lumoNewMacro2Param(YetAnotherVesselTreeInteractor, const std::string &, DataNode *);

  /** The node whose tree interaction targets (not owned; null: none). */
  static void
  SetActiveVesselTree(DataNode * node);
  static DataNode *
  GetActiveVesselTree();

  /** The confidence of the base class while this interactor's node is the active tree, else 0. Warns when the
   *  active tree, this node or their data are missing. */
  double
  CanHandleEvent(const StateEvent * stateEvent) const override;

  /** The vessel found by the last check; VesselTreeData::ErrorId when nothing was hit. */
  std::int32_t
  GetLastPickedVesselId() const
  {
    return m_LastPickedVesselId;
  }

  /** How picks are made (VesselTreePicker modes 0, 1, 2); default 2, cell picking. */
  itkSetMacro(PickingMode, int);
  itkGetConstMacro(PickingMode, int);

protected:
  YetAnotherVesselTreeInteractor(const std::string & type, DataNode * node);
  ~YetAnotherVesselTreeInteractor() override = default;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  bool
  OnCheckElement(Action * action, const StateEvent * stateEvent);
  bool
  OnSelect(Action * action, const StateEvent * stateEvent);
  bool
  OnDeselect(Action * action, const StateEvent * stateEvent);
  bool
  OnMultipleSelect(Action * action, const StateEvent * stateEvent);

private:
  /** Executes the operation on the tree, registers its undo, redraws and shows the status text. */
  bool
  Apply(VesselTreeData * tree,
        int operationType,
        std::int32_t id,
        int undoType,
        std::int32_t undoId,
        const std::string & description,
        const std::string & status);

  static DataNode * m_ActiveVesselTree;
  std::int32_t m_LastPickedVesselId{ VesselTreeData::ErrorId };
  int m_PickingMode{ 2 };
};
} // namespace lumo

#endif

#include "lumoYetAnotherVesselTreeInteractor.h"

#include "lumoBaseRenderer.h"
#include "lumoDisplayPositionEvent.h"
#include "lumoRenderingManager.h"
#include "lumoStateEvent.h"
#include "lumoStatusBar.h"
#include "lumoVesselTreeOperation.h"
#include "lumoVesselTreePicker.h"
#include "lumoYetAnotherVesselTreeMapper3D.h"

namespace lumo
{
DataNode * YetAnotherVesselTreeInteractor::m_ActiveVesselTree = nullptr;

YetAnotherVesselTreeInteractor::YetAnotherVesselTreeInteractor(const std::string & type, DataNode * node)
  : Interactor(type, node)
{
  this->RegisterAction(30, &Self::OnCheckElement);
  this->RegisterAction(65, &Self::OnSelect);
  this->RegisterAction(75, &Self::OnDeselect);
  this->RegisterAction(61, &Self::OnMultipleSelect);
}

void
YetAnotherVesselTreeInteractor::SetActiveVesselTree(DataNode * node)
{
  m_ActiveVesselTree = node;
}

DataNode *
YetAnotherVesselTreeInteractor::GetActiveVesselTree()
{
  return m_ActiveVesselTree;
}

double
YetAnotherVesselTreeInteractor::CanHandleEvent(const StateEvent * stateEvent) const
{
  if (m_ActiveVesselTree == nullptr)
  {
    itkWarningMacro(" m_ActiveVesselTree is NULL!");
    return 0.0;
  }
  if (m_ActiveVesselTree->GetData() == nullptr)
  {
    itkWarningMacro(" m_ActiveVesselTree->GetData() is NULL!");
    return 0.0;
  }
  if (m_DataNode == nullptr)
  {
    itkWarningMacro(" m_DataNode is NULL!");
    return 0.0;
  }
  if (m_DataNode->GetData() == nullptr)
  {
    itkWarningMacro(" m_DataNode->GetData() is NULL!");
    return 0.0;
  }
  if (m_ActiveVesselTree != m_DataNode)
  {
    return 0.0;
  }
  return Superclass::CanHandleEvent(stateEvent);
}

bool
YetAnotherVesselTreeInteractor::OnCheckElement(Action *, const StateEvent * stateEvent)
{
  auto * tree = m_DataNode ? dynamic_cast<VesselTreeData *>(m_DataNode->GetData()) : nullptr;
  const auto * event = stateEvent ? dynamic_cast<const DisplayPositionEvent *>(stateEvent->GetEvent()) : nullptr;
  if (tree == nullptr || event == nullptr)
  {
    return false;
  }
  m_LastPickedVesselId = VesselTreeData::ErrorId;
  BaseRenderer * renderer = event->GetSender();
  // Only 3-D windows that show this node with the tube mapper can be picked in; a click elsewhere hits nothing.
  if (renderer != nullptr && renderer->GetMapperID() == DataNode::Standard3D &&
      dynamic_cast<YetAnotherVesselTreeMapper3D *>(m_DataNode->GetMapper(DataNode::Standard3D)) != nullptr)
  {
    auto picker = VesselTreePicker::New();
    picker->SetInput(tree);
    picker->SetDataNode(m_DataNode);
    picker->SetRenderer(renderer);
    picker->SetPickingMode(m_PickingMode);
    const auto & position = event->GetDisplayPosition();
    picker->SetDisplayPosition(static_cast<float>(position[0]), static_cast<float>(position[1]));
    picker->Update();
    if (picker->IsPicked())
    {
      m_LastPickedVesselId = picker->GetPickedVesselId();
    }
  }
  const StateEvent answer(m_LastPickedVesselId != VesselTreeData::ErrorId ? 1004 : 1003, event);
  this->HandleEvent(&answer);
  return true;
}

bool
YetAnotherVesselTreeInteractor::Apply(VesselTreeData * tree,
                                      int operationType,
                                      std::int32_t id,
                                      int undoType,
                                      std::int32_t undoId,
                                      const std::string & description,
                                      const std::string & status)
{
  auto * operation = new VesselTreeOperation(operationType, id);
  auto * inverse = new VesselTreeOperation(undoType, undoId);
  tree->ExecuteOperation(operation);
  // Takes both operations over; they are kept for undo only while undo is enabled.
  this->RegisterUndoOperation(tree, operation, inverse, description);
  RenderingManager::GetInstance()->RequestUpdateAll();
  StatusBar::GetInstance()->DisplayText(status);
  return true;
}

bool
YetAnotherVesselTreeInteractor::OnSelect(Action *, const StateEvent *)
{
  auto * tree = m_DataNode ? dynamic_cast<VesselTreeData *>(m_DataNode->GetData()) : nullptr;
  if (tree == nullptr)
  {
    itkWarningMacro("Associated vessel tree is null!");
    return false;
  }
  return this->Apply(tree,
                     VesselTreeOperation::Select,
                     m_LastPickedVesselId,
                     VesselTreeOperation::Select,
                     0,
                     "Select",
                     "Picked vessel: ID " + std::to_string(m_LastPickedVesselId));
}

bool
YetAnotherVesselTreeInteractor::OnDeselect(Action *, const StateEvent *)
{
  auto * tree = m_DataNode ? dynamic_cast<VesselTreeData *>(m_DataNode->GetData()) : nullptr;
  if (tree == nullptr)
  {
    itkWarningMacro("associated vessel tree is null!");
    return false;
  }
  // Undo selects again what was picked before the click on nothing.
  const std::int32_t previous = tree->GetPickedVesselId(0);
  return this->Apply(tree,
                     VesselTreeOperation::Deselect,
                     m_LastPickedVesselId,
                     VesselTreeOperation::Select,
                     previous,
                     "Deselect",
                     "No vessel hit!");
}

bool
YetAnotherVesselTreeInteractor::OnMultipleSelect(Action *, const StateEvent *)
{
  auto * tree = m_DataNode ? dynamic_cast<VesselTreeData *>(m_DataNode->GetData()) : nullptr;
  if (tree == nullptr)
  {
    itkWarningMacro("Associated vessel tree is null!");
    return false;
  }
  return this->Apply(tree,
                     VesselTreeOperation::MultipleSelect,
                     m_LastPickedVesselId,
                     VesselTreeOperation::MultipleSelect,
                     0,
                     "MultipleSelect",
                     "Picked vessel: ID " + std::to_string(m_LastPickedVesselId));
}

void
YetAnotherVesselTreeInteractor::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "LastPickedVesselId: " << m_LastPickedVesselId << '\n';
  os << indent << "PickingMode: " << m_PickingMode << '\n';
  os << indent << "ActiveVesselTree: " << m_ActiveVesselTree << '\n';
}
} // namespace lumo

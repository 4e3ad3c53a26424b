#ifndef lumoVesselTreeToLookupTableFilter_h
#define lumoVesselTreeToLookupTableFilter_h

#include <itkObjectFactory.h>
#include "lumoDataNode.h"
#include "lumoLookupTableSource.h"
#include "lumoVesselTreeData.h"

#include <itkWeakPointer.h>

namespace lumo
{
/** Colours every vessel of a tree: a vtkLookupTable indexed by vessel id, computed from the tree's labels and a
 *  VesselTreeLookupTable. The colour table is the one of the data node (property "VesselTreeLookupTable") when a
 *  node is set, else the one given with SetLookupTable.
 *
 *  Priority: an active vessel takes the active colour; otherwise a defined resection status (not 1) its status
 *  colour; otherwise a defined segment (not 1) its segment colour; otherwise its type colour. A label outside its
 *  colour vector warns once and takes the colour for unknown. Table entries of ids that belong to no vessel take the
 *  colour for invisible. */
class VesselTreeToLookupTableFilter : public LookupTableSource
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeToLookupTableFilter);

  using Self = VesselTreeToLookupTableFilter;
  using Superclass = LookupTableSource;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeToLookupTableFilter, LookupTableSource);

  void
  SetInput(const VesselTreeData * tree);
  const VesselTreeData *
  GetInput();

  /** The node whose colour table is used and which gets the table back as its property; not owned (the node's
   *  mapper owns this filter). */
  void
  SetDataNode(DataNode * node);
  DataNode *
  GetDataNode() const;

  /** The colour table used when no node is set. */
  void
  SetLookupTable(LookupTable * table);
  LookupTable *
  GetLookupTable() const;

protected:
  VesselTreeToLookupTableFilter();
  ~VesselTreeToLookupTableFilter() override;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  LookupTable *
  AssociatedLookupTable() const;

  itk::WeakPointer<DataNode> m_DataNode;
  LookupTable::Pointer m_LookupTable;
};
} // namespace lumo

#endif

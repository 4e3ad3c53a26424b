#ifndef lumoCalyxDataNodeFactory_h
#define lumoCalyxDataNodeFactory_h

#include <itkObjectFactory.h>
#include "lumoDataNodeFactory.h"
#include "lumoPropertyList.h"

namespace lumo
{
/** The node factory of the module's scene reading: opens the data files a scene names into data nodes. It reads
 *  exactly as DataNodeFactory does (the same readers, order, node names and messages); being a class of its own, it
 *  can be replaced through ITK's object factories without replacing the toolkit's DataNodeFactory. */
class CalyxDataNodeFactory : public DataNodeFactory
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CalyxDataNodeFactory);

  using Self = CalyxDataNodeFactory;
  using Superclass = DataNodeFactory;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(CalyxDataNodeFactory, DataNodeFactory);

  /** Properties every output node takes before its data is set (a scene's saved list), so that defaults computed
   *  from the data, like an image's level window from a scan of all voxels, are not computed when saved. Null (the
   *  default) for none; each node gets copies of the list's properties. */
  itkSetObjectMacro(InitialProperties, PropertyList);
  itkGetConstObjectMacro(InitialProperties, PropertyList);

protected:
  CalyxDataNodeFactory();
  ~CalyxDataNodeFactory() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;
  void
  PrepareNode(DataNode * node) override;

private:
  PropertyList::Pointer m_InitialProperties;
};
} // namespace lumo

#endif

#ifndef lumoCalyxDataNodeFactory_h
#define lumoCalyxDataNodeFactory_h

#include <itkObjectFactory.h>
#include "lumoDataNodeFactory.h"

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

protected:
  CalyxDataNodeFactory();
  ~CalyxDataNodeFactory() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;
};
} // namespace lumo

#endif

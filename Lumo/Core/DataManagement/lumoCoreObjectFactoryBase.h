#ifndef lumoCoreObjectFactoryBase_h
#define lumoCoreObjectFactoryBase_h

#include "lumoDataNode.h"
#include "lumoFileWriterWithInformation.h"

#include <map>
#include <string>
#include <vector>

namespace lumo
{
/** What a module tells the toolkit about its data types: the mapper for a node and slot, the default properties
 *  of a node, the file patterns it opens and saves, and its file writers. Modules derive from it and register an
 *  instance with lumo::CoreObjectFactory::GetInstance()->RegisterExtraFactory.
 *
 *  Extension maps are multimaps from a file pattern ("*.ves") to a description ("Vessel files"); a pattern may
 *  have several descriptions and a description several patterns. Filter text (CreateFileExtensions): one entry
 *  per description, descriptions in alphabetical order, each "description (pattern pattern ...);;" with the
 *  description's patterns in the map's order (alphabetical) separated by single spaces, and nothing else:
 *    {"*.vtp": "Surface files", "*.stl": "Surface files", "*.stl": "STL files"}
 *      -> "STL files (*.stl);;Surface files (*.stl *.vtp);;"
 *  The defaults of this base answer from the protected members m_FileExtensionsMap, m_SaveFileExtensionsMap and
 *  m_FileWriters, which a subclass fills in its constructor. */
class CoreObjectFactoryBase : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CoreObjectFactoryBase);

  using Self = CoreObjectFactoryBase;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(CoreObjectFactoryBase, itk::Object);

  using MultimapType = std::multimap<std::string, std::string>;
  using FileWriterList = std::vector<FileWriterWithInformation::Pointer>;

  /** A new mapper for the node's data in that slot, or null when this factory has none. */
  virtual itk::Object::Pointer
  CreateMapper(DataNode * node, DataNode::MapperSlotId slot) = 0;

  /** Sets the node's default properties for its data (this factory's data types only). */
  virtual void
  SetDefaultProperties(DataNode * node) = 0;

  /** Filter text of the patterns offered for opening. */
  virtual std::string
  GetFileExtensions();
  virtual MultimapType
  GetFileExtensionsMap();
  /** Filter text of the patterns offered for saving. */
  virtual std::string
  GetSaveFileExtensions();
  virtual MultimapType
  GetSaveFileExtensionsMap();
  virtual FileWriterList
  GetFileWriters();

  /** The filter text of a map (layout above). */
  static std::string
  CreateFileExtensions(const MultimapType & fileExtensionsMap);

protected:
  CoreObjectFactoryBase() = default;
  ~CoreObjectFactoryBase() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  MultimapType m_FileExtensionsMap;
  MultimapType m_SaveFileExtensionsMap;
  FileWriterList m_FileWriters;
};
} // namespace lumo

#endif

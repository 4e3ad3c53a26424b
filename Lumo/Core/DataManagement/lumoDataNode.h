#ifndef lumoDataNode_h
#define lumoDataNode_h

#include "lumoBaseData.h"
#include "lumoLevelWindow.h"
#include "lumoPropertyList.h"

#include <itkDataObject.h>

#include <map>
#include <string>
#include <vector>

namespace lumo
{
/** A node of the data storage: one data object with its properties and its mappers.
 *
 *  Properties: a general property list, and one list per renderer name (created on demand by
 *  GetPropertyList(name)). Look-ups with a renderer name consult that renderer's list first and then the general
 *  list; an empty renderer name means the general list only. Setting with a renderer name writes the renderer's
 *  list, with an empty name the general one.
 *
 *  Mappers: one per slot (MapperSlot: 1 the standard 2-D slot, 2 the standard 3-D slot), held as itk::Object
 *  smart pointers so that the rendering library, which comes later, can plug in its lumo::Mapper classes without
 *  this library knowing them. GetMapper(slot) asks lumo::CoreObjectFactory for a mapper when the slot is empty.
 *  Mappers should refer back to their node without a counted reference (no cycle).
 *
 *  SetData with new data drops the mappers and lets lumo::CoreObjectFactory set the default properties of the new
 *  data (only keys the node does not have yet).
 *
 *  A DataNode is an itk::DataObject, so that process objects (lumo::DataNodeFactory) can have nodes as outputs. */
class DataNode : public itk::DataObject
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(DataNode);

  using Self = DataNode;
  using Superclass = itk::DataObject;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(DataNode, itk::DataObject);
  itkNewMacro(Self);

  using MapperSlotId = int;
  enum MapperSlot : MapperSlotId
  {
    Standard2D = 1,
    Standard3D = 2,
  };
  using PropertyListMap = std::map<std::string, PropertyList::Pointer>;

  // -- data -----------------------------------------------------------------------------------------------------------

  BaseData *
  GetData() const
  {
    return m_Data;
  }
  virtual void
  SetData(BaseData * data);

  // -- property lists -----------------------------------------------------------------------------------------------

  /** The general list for an empty name, else the list of that renderer (created when missing). Never null. */
  PropertyList *
  GetPropertyList(const std::string & rendererName = "") const;
  /** Whether the renderer has a list of its own (without creating one). */
  bool
  HasPropertyList(const std::string & rendererName) const;
  /** The names of the renderers that have a list of their own, in name order. */
  std::vector<std::string>
  GetPropertyListNames() const;

  /** The renderer's property, else the general one, else null. */
  BaseProperty *
  GetProperty(const std::string & key, const std::string & rendererName = "") const;

  /** PropertyList::SetProperty on the renderer's (or the general) list. */
  void
  SetProperty(const std::string & key, BaseProperty * property, const std::string & rendererName = "");
  /** PropertyList::ReplaceProperty on the renderer's (or the general) list. */
  void
  ReplaceProperty(const std::string & key, BaseProperty * property, const std::string & rendererName = "");
  /** Like SetProperty, but only when the key is absent from that list or overwrite is true. */
  void
  AddProperty(const std::string & key,
              BaseProperty * property,
              const std::string & rendererName = "",
              bool overwrite = false);
  /** Removes the key from that list; false when absent. */
  bool
  DeleteProperty(const std::string & key, const std::string & rendererName = "");

  // -- typed getters: false (value untouched) when absent or of another class --------------------------------------

  bool
  GetBoolProperty(const std::string & key, bool & value, const std::string & rendererName = "") const;
  bool
  GetStringProperty(const std::string & key, std::string & value, const std::string & rendererName = "") const;
  bool
  GetIntProperty(const std::string & key, int & value, const std::string & rendererName = "") const;
  bool
  GetFloatProperty(const std::string & key, float & value, const std::string & rendererName = "") const;
  bool
  GetDoubleProperty(const std::string & key, double & value, const std::string & rendererName = "") const;
  bool
  GetColor(float rgb[3], const std::string & rendererName = "", const std::string & key = "color") const;
  bool
  GetOpacity(float & opacity, const std::string & rendererName = "", const std::string & key = "opacity") const;
  bool
  GetVisibility(bool & visible, const std::string & rendererName = "", const std::string & key = "visible") const;
  bool
  GetLevelWindow(LevelWindow & levelWindow,
                 const std::string & rendererName = "",
                 const std::string & key = "levelwindow") const;
  bool
  GetName(std::string & name, const std::string & rendererName = "", const std::string & key = "name") const;
  /** The "name" string of the general list, or "" when there is none. */
  std::string
  GetName() const;

  /** The boolean, or defaultIsOn when absent. */
  bool
  IsOn(const std::string & key, const std::string & rendererName = "", bool defaultIsOn = true) const;
  /** IsOn for "visible" (or another key). */
  bool
  IsVisible(const std::string & rendererName = "", const std::string & key = "visible", bool defaultIsOn = true) const;

  // -- typed setters (SetProperty with a new property of the class) ------------------------------------------------

  void
  SetBoolProperty(const std::string & key, bool value, const std::string & rendererName = "");
  void
  SetStringProperty(const std::string & key, const std::string & value, const std::string & rendererName = "");
  void
  SetIntProperty(const std::string & key, int value, const std::string & rendererName = "");
  void
  SetFloatProperty(const std::string & key, float value, const std::string & rendererName = "");
  void
  SetDoubleProperty(const std::string & key, double value, const std::string & rendererName = "");
  void
  SetName(const std::string & name);
  void
  SetVisibility(bool visible, const std::string & rendererName = "", const std::string & key = "visible");
  void
  SetColor(const Color & color, const std::string & rendererName = "", const std::string & key = "color");
  void
  SetColor(float red,
           float green,
           float blue,
           const std::string & rendererName = "",
           const std::string & key = "color");
  void
  SetOpacity(float opacity, const std::string & rendererName = "", const std::string & key = "opacity");
  void
  SetLevelWindow(const LevelWindow & levelWindow,
                 const std::string & rendererName = "",
                 const std::string & key = "levelwindow");

  // -- mappers ------------------------------------------------------------------------------------------------------

  /** The mapper of the slot; when the slot is empty and the node has data, lumo::CoreObjectFactory is asked for
   *  one (and it is kept). Null when no factory makes one. */
  itk::Object *
  GetMapper(MapperSlotId slot) const;
  /** Sets (or, with null, clears) the mapper of a slot. */
  void
  SetMapper(MapperSlotId slot, itk::Object * mapper);

  /** The latest modification time of the node, its data and its property lists. */
  itk::ModifiedTimeType
  GetMTime() const override;

protected:
  DataNode();
  ~DataNode() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  BaseData::Pointer m_Data;
  PropertyList::Pointer m_PropertyList;
  mutable PropertyListMap m_RendererPropertyLists;
  mutable std::map<MapperSlotId, itk::Object::Pointer> m_Mappers;
};
} // namespace lumo

#endif

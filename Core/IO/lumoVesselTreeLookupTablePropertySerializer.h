#ifndef lumoVesselTreeLookupTablePropertySerializer_h
#define lumoVesselTreeLookupTablePropertySerializer_h

#include "lumoBasePropertySerializer.h"
#include "lumoVesselTreeLookupTable.h"

namespace lumo
{
/** The XML element "VesselTreeLookupTable" of a vessel colour table in a scene file: the colours for active,
 *  invisible and unknown vessels ("ColorForActive", "ColorForInvisible", "ColorForUnknown", attributes "r", "g",
 *  "b", "a"), then the colour vectors ("ColorByType", "ColorBySegment", "ColorByResectionStatus", attribute "size",
 *  one child "rgba" per entry with "index", "r", "g", "b", "a").
 *
 *  Reading starts from a default table; what the element holds replaces it. Vectors take the element's size (new
 *  entries transparent black); an entry without index or component is skipped; an index not below the size makes
 *  the whole read fail. */
class VesselTreeLookupTablePropertySerializer : public BasePropertySerializer
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeLookupTablePropertySerializer);

  using Self = VesselTreeLookupTablePropertySerializer;
  using Superclass = BasePropertySerializer;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeLookupTablePropertySerializer, BasePropertySerializer);

  tinyxml2::XMLElement *
  Serialize(tinyxml2::XMLDocument & document) override;
  BaseProperty::Pointer
  Deserialize(const tinyxml2::XMLElement * element) override;

  /** The element of a table. */
  static tinyxml2::XMLElement *
  TableToXML(const VesselTreeLookupTable & table, tinyxml2::XMLDocument & document);
  /** The table of an element; throws std::out_of_range for an entry index not below its vector's size and
   *  std::invalid_argument for an element of another name or a negative size. */
  static VesselTreeLookupTable::Pointer
  TableFromXML(const tinyxml2::XMLElement * element);

protected:
  VesselTreeLookupTablePropertySerializer();
  ~VesselTreeLookupTablePropertySerializer() override;
};
} // namespace lumo

#endif

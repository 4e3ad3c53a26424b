#ifndef lumoResectionProposalDescriptorPropertySerializer_h
#define lumoResectionProposalDescriptorPropertySerializer_h

#include "lumoBasePropertySerializer.h"
#include "lumoResectionProposalDescriptorProperty.h"

#include <itkObjectFactory.h>

#include <string>

namespace lumo
{
/** The XML element of a resection proposal descriptor, in scene files and as the root of "<stem>.proposal.xml":
 *
 *    <ResectionProposalDescriptorProperty ResectionProposalName="Plan">
 *      <LabelDescriptor Label="2" Name="Remnant" ResectionType="NotToBeResected" Volume="1234.5"
 *                       SurfaceOutputIndex="0">
 *        <ColorProperty R="0.8" G="0.8" B="0.8"/>
 *      </LabelDescriptor>
 *    </ResectionProposalDescriptorProperty>
 *
 *  One "LabelDescriptor" per label in label order; its colour is written by ColorPropertySerializer. Resection
 *  types are written as "UndefinedResectionStatus" (1), "NotToBeResected" (2), "ToBeResected" (3) and
 *  "AreaAtRisk" (4); another value writes no "ResectionType" attribute. Reading also takes the older words
 *  "Resected" (3), "NotResected" (2) and "Unclear" (4).
 *
 *  Reading keeps what it can, descriptor by descriptor, starting each from the defaults (undefined type, volume 0,
 *  black):
 *  - "Label" missing or not an integer, or "Volume" or "SurfaceOutputIndex" missing or not a number: the
 *    descriptor is skipped silently;
 *  - "ResectionType" missing or not one of the words above, or a negative "SurfaceOutputIndex": the descriptor is
 *    skipped and " Error in reading ResectionProposalDescriptorProperty, LabelDescriptor <name>" is written as a
 *    line to standard output;
 *  - the colour comes from the first child element; when that is not a readable "ColorProperty" the descriptor
 *    stays black;
 *  - a second descriptor for a label already read is ignored (the first stays). */
class ResectionProposalDescriptorPropertySerializer : public BasePropertySerializer
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ResectionProposalDescriptorPropertySerializer);

  using Self = ResectionProposalDescriptorPropertySerializer;
  using Superclass = BasePropertySerializer;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(ResectionProposalDescriptorPropertySerializer, BasePropertySerializer);

  /** Null when the property set is not a ResectionProposalDescriptorProperty. */
  tinyxml2::XMLElement *
  Serialize(tinyxml2::XMLDocument & document) override;
  /** Null only for a null element or one of another name. */
  BaseProperty::Pointer
  Deserialize(const tinyxml2::XMLElement * element) override;

  /** A new element "ResectionProposalDescriptorProperty" of the document (not linked into it). */
  static tinyxml2::XMLElement *
  PropertyToXML(const ResectionProposalDescriptorProperty & property, tinyxml2::XMLDocument & document);
  /** A new property from an element "ResectionProposalDescriptorProperty" (rules above); null for a null element
   *  or one of another name. */
  static ResectionProposalDescriptorProperty::Pointer
  PropertyFromXML(const tinyxml2::XMLElement * element);

  /** The word written for a resection type; null for a value without one. */
  static const char *
  GetResectionTypeWord(int type);
  /** The value of a written or older word; 0 for anything else. */
  static int
  GetResectionTypeOfWord(const std::string & word);

protected:
  ResectionProposalDescriptorPropertySerializer();
  ~ResectionProposalDescriptorPropertySerializer() override;
};

/** Writes the property as an XML document whose root is its element. The document goes to a temporary file beside
 *  `path` that is renamed over `path` when complete, so `path` is either left as it was or replaced whole. Throws
 *  itk::ExceptionObject "cannot write the resection proposal file '<path>': <reason>". */
void
WriteResectionProposalDescriptorFile(const ResectionProposalDescriptorProperty & property, const std::string & path);

/** Reads a file written by WriteResectionProposalDescriptorFile. Throws itk::ExceptionObject "cannot read the
 *  resection proposal file '<path>': <reason>", the reason being "no such file", "not an XML document (<parser
 *  message>)", "no root element" or "its root element is <name>, not ResectionProposalDescriptorProperty" (or the
 * system's message when the file cannot be opened). */
ResectionProposalDescriptorProperty::Pointer
ReadResectionProposalDescriptorFile(const std::string & path);
} // namespace lumo

#endif

#ifndef lumoCalyxSceneReader_h
#define lumoCalyxSceneReader_h

#include "lumoDataStorage.h"

#include <itkObject.h>

#include <string>

namespace tinyxml2
{
class XMLDocument;
} // namespace tinyxml2

namespace lumo
{
/** Turns a parsed scene document of one file version into data nodes of a storage. */
class CalyxSceneReader : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CalyxSceneReader);

  using Self = CalyxSceneReader;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(CalyxSceneReader, itk::Object);

  /** Reads the document's nodes, their data files relative to the working directory, into the storage (a null
   *  storage reads them without placing them); true unless nodes were left unplaced. */
  virtual bool
  LoadScene(const tinyxml2::XMLDocument & document, const std::string & workingDirectory, DataStorage * storage) = 0;

protected:
  CalyxSceneReader() = default;
  ~CalyxSceneReader() override = default;
};
} // namespace lumo

#endif

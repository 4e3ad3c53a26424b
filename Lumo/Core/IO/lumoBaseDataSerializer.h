#ifndef lumoBaseDataSerializer_h
#define lumoBaseDataSerializer_h

#include "lumoBaseData.h"

#include <itkObject.h>

#include <string>

namespace lumo
{
/** Writes one data object into a working directory for the toolkit's own scene format and answers the name of the
 *  file written (relative to the working directory), or "" on failure.
 *
 *  Serializers are found by class name: the serializer of a data class "X" is registered with ITK's object
 *  factory as an override of "XSerializer" (for instance "VesselTreeDataSerializer") and created with
 *  CreateForData / itk::ObjectFactoryBase::CreateAllInstance. The base class's Serialize logs an error and
 *  answers "". */
class BaseDataSerializer : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(BaseDataSerializer);

  using Self = BaseDataSerializer;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(BaseDataSerializer, itk::Object);
  itkNewMacro(Self);

  /** A name subclasses may base the written file name on (no directory); default "". */
  itkSetStringMacro(FilenameHint);
  itkGetStringMacro(FilenameHint);
  /** Existing directory the file is written into; default "" (the current directory). */
  itkSetStringMacro(WorkingDirectory);
  itkGetStringMacro(WorkingDirectory);
  /** The data to write (held by reference count); default null, for which Serialize fails. */
  itkSetConstObjectMacro(Data, BaseData);
  itkGetConstObjectMacro(Data, BaseData);

  /** Writes the data; the name of the file written, or "" on failure. */
  virtual std::string
  Serialize();

  /** A new random stem (10 characters from [0-9A-Za-z]) with which no entry of the working directory begins, so
   *  that stem + anything is a new file name there. */
  std::string
  GetUniqueFilenameInWorkingDirectory();

  /** The first serializer registered for the data's class name + "Serializer", or null. */
  static Pointer
  CreateForData(const BaseData * data);

protected:
  BaseDataSerializer();
  ~BaseDataSerializer() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  std::string m_FilenameHint;
  std::string m_WorkingDirectory;
  BaseData::ConstPointer m_Data;
};
} // namespace lumo

#endif

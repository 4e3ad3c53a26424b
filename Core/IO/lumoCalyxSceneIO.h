#ifndef lumoCalyxSceneIO_h
#define lumoCalyxSceneIO_h

#include "lumoDataStorage.h"
#include "lumoNodePredicateBase.h"
#include "lumoPropertyList.h"
#include "lumoTemporaryFileGuard.h"

#include <itkObject.h>
#include <itkObjectFactory.h>

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tinyxml2
{
class XMLDocument;
class XMLElement;
} // namespace tinyxml2

namespace lumo
{
class BoolProperty;
class StringProperty;
class IntProperty;
class FloatProperty;
class DoubleProperty;
class Vector3DProperty;
class ColorProperty;
class Material;
class LevelWindowProperty;
class LookupTableProperty;
class VesselTreeLookupTableProperty;
class VtkScalarModeProperty;
class GroupTagProperty;
class ResectionProposalDescriptorProperty;
class Image;
class Surface;
class PointSet;
class VesselTreeData;
class CalyxSceneReaderV1;

/** Saves the nodes of a data storage as one XML scene file (".rs") with one data file per node beside it, and
 *  loads such a scene back (see docs/scenes.md for the format).
 *
 *  Saving: every node whose "helper object" is not true and that the storage manages. Data files are named after
 *  the node's "name", cleaned into a safe file name (no path separators, no leading dots, no control characters, at
 *  most 120 bytes) and made unique within the scene and against every file of the folder that the scene does not
 *  own (the files its previous version names are its own), so that no input beside the scene and no other scene's
 *  file is written over ("organ.pic" there: the node "organ" writes "organ_2.pic"); a node without a usable name
 *  gets "CalyxSceneObject_" + 5 random characters. The type's extension is appended unless the name already ends in an
 * accepted one (".pic" for images; ".vtp", ".vtk" or ".stl" for surfaces, which also selects the format; ".mps";
 * ".ves").
 *
 *  Every file is first written under a temporary name (".~" + random + "_" + final name) in the scene's folder and
 *  renamed into place only when all of them and the XML were written, so saving over an existing scene either
 *  replaces it as a whole or leaves it as it was. When a scene file already exists, a data file that cannot be
 *  written makes the whole save fail (nothing changes); when none exists, the node is kept without "file" and the
 *  rest is saved. After replacing a scene, the data files that only the previous version referenced are removed,
 *  unless another scene file in the same folder names them.
 *
 *  Loading refuses, with one message each, scene files over MaximumSceneFileSize bytes, XML nested deeper than
 *  tinyxml2 parses, more than MaximumNumberOfSceneObjects "SceneObject" elements and file versions other than 1.
 *  Data files are read only inside the scene's folder (see CalyxSceneReaderV1).
 *
 *  Messages go to standard output, each preceded by the source file and line ("Core/IO/lumoCalyxSceneIO.cpp l. 42:
 *  ..."); nothing throws out of this class. */
class CalyxSceneIO : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CalyxSceneIO);

  using Self = CalyxSceneIO;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(CalyxSceneIO, itk::Object);

  /** Scene files larger than this (64 MiB) are not parsed. */
  static constexpr std::uintmax_t MaximumSceneFileSize = 64u * 1024u * 1024u;
  /** Scene files with more "SceneObject" elements than this are not loaded. */
  static constexpr std::size_t MaximumNumberOfSceneObjects = 100000;
  /** Cleaned node names are cut to this many bytes before the extension is added. */
  static constexpr std::size_t MaximumFileNameStemLength = 120;

  /** Saves every managed node that is not a helper object; true on success. */
  virtual bool
  SaveScene(DataStorage * storage, const std::string & filename);
  /** Saves every managed node the predicate accepts (a null predicate accepts all); true on success. */
  virtual bool
  SaveScene(DataStorage * storage, const NodePredicateBase * predicate, const std::string & filename);

  /** The "SceneObject" element of a node (not linked into the document) with its data file written into the
   *  directory; null for a null node or a node without data. */
  tinyxml2::XMLElement *
  SaveBaseData(tinyxml2::XMLDocument & document, DataNode * node, const std::string & directory);

  /** Write one data file into the directory; the file name written (without directory), "" on failure. */
  std::string
  SaveImage(Image * image, const std::string & name, const std::string & directory);
  std::string
  SaveSurface(Surface * surface, const std::string & name, const std::string & directory);
  std::string
  SavePointSet(PointSet * pointSet, const std::string & name, const std::string & directory);
  std::string
  SaveVesselTreeData(VesselTreeData * tree, const std::string & name, const std::string & directory);

  /** Writes the visual properties of a node (the whitelist of docs/scenes.md); true on success. */
  bool
  SaveMaterialDescription(DataNode * node, const std::string & filename);
  /** Puts the properties of a material description file on the node; true on success. */
  bool
  LoadMaterialDescription(DataNode * node, const std::string & filename);

  /** Loads directory + "/" + filename (an empty directory is "."), adding its nodes to the storage; true when the
   *  version was accepted and every node could be placed. */
  bool
  LoadScene(DataStorage * storage, const std::string & directory, const std::string & filename);
  /** The same with a given reader, so that callers can see every node it read (GetLoadedNodes), placed or not. */
  bool
  LoadScene(DataStorage * storage,
            const std::string & directory,
            const std::string & filename,
            CalyxSceneReaderV1 * reader);

  /** One element per property class; null for a null property or a value that has no element (a material with an
   *  interpolation or representation outside 0..2). The element carries no "name" yet. */
  static tinyxml2::XMLElement *
  SerializeBoolProperty(tinyxml2::XMLDocument & document, const BoolProperty * property);
  static tinyxml2::XMLElement *
  SerializeStringProperty(tinyxml2::XMLDocument & document, const StringProperty * property);
  static tinyxml2::XMLElement *
  SerializeIntProperty(tinyxml2::XMLDocument & document, const IntProperty * property);
  static tinyxml2::XMLElement *
  SerializeFloatProperty(tinyxml2::XMLDocument & document, const FloatProperty * property);
  static tinyxml2::XMLElement *
  SerializeDoubleProperty(tinyxml2::XMLDocument & document, const DoubleProperty * property);
  static tinyxml2::XMLElement *
  SerializeVector3DProperty(tinyxml2::XMLDocument & document, const Vector3DProperty * property);
  static tinyxml2::XMLElement *
  SerializeColorProperty(tinyxml2::XMLDocument & document, const ColorProperty * property);
  static tinyxml2::XMLElement *
  SerializeMaterial(tinyxml2::XMLDocument & document, const Material * material);
  static tinyxml2::XMLElement *
  SerializeLevelWindowProperty(tinyxml2::XMLDocument & document, const LevelWindowProperty * property);
  static tinyxml2::XMLElement *
  SerializeLookupTableProperty(tinyxml2::XMLDocument & document, const LookupTableProperty * property);
  /** Through the serializer registered as "VesselTreeLookupTablePropertySerializer"; null when none is. */
  static tinyxml2::XMLElement *
  SerializeVesselTreeLookupTableProperty(tinyxml2::XMLDocument & document,
                                         const VesselTreeLookupTableProperty * property);
  /** Scalar modes are not saved: always null. */
  static tinyxml2::XMLElement *
  SerializeVtkScalarModeProperty(tinyxml2::XMLDocument & document, const VtkScalarModeProperty * property);
  static tinyxml2::XMLElement *
  SerializeGroupTagProperty(tinyxml2::XMLDocument & document, const GroupTagProperty * property);
  /** The descriptor of a resection proposal's labels (ResectionProposalDescriptorPropertySerializer's element). */
  static tinyxml2::XMLElement *
  SerializeResectionProposalDescriptorProperty(tinyxml2::XMLDocument & document,
                                               const ResectionProposalDescriptorProperty * property);
  /** Any property of a class above, tested in the order of the scene format; null for the others. */
  static tinyxml2::XMLElement *
  SerializeProperty(tinyxml2::XMLDocument & document, const BaseProperty * property);

  /** A "PropertyList" element with every property that has an element ("RenderWindow" set when the name is not
   *  empty). */
  static tinyxml2::XMLElement *
  SerializeImportantPropertiesFromList(tinyxml2::XMLDocument & document,
                                       const PropertyList * list,
                                       const std::string & renderWindowName);
  /** The same, restricted to the keys of VisualPropertyKeys(). */
  static tinyxml2::XMLElement *
  SerializeImportantVisualizationPropertiesFromList(tinyxml2::XMLDocument & document,
                                                    const PropertyList * list,
                                                    const std::string & renderWindowName);
  /** The keys a material description keeps. */
  static const std::set<std::string> &
  VisualPropertyKeys();

  /** A node name made into a file name stem that cannot leave its folder: path separators, control characters and
   *  the characters ':*?"<>|' become '_', leading dots and blanks go, and the result is cut to
   *  MaximumFileNameStemLength bytes (at a UTF-8 character boundary). "" when nothing is left. */
  static std::string
  MakeSafeFileName(const std::string & name);

  /** Loads a scene file into the document within the limits above; false (with the message printed) when the file
   *  is refused or cannot be parsed. */
  static bool
  LoadSceneDocument(const std::string & path, tinyxml2::XMLDocument & document);

  /** Prints a message to standard output with its source location: file + " l. " + line, then the message (after
   *  ": " unless it begins with ':'). */
  static void
  Report(const char * sourceFile, int line, const std::string & message);

protected:
  CalyxSceneIO();
  ~CalyxSceneIO() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  /** Writes one data object to a path; throws itk::ExceptionObject (or another std::exception) on failure.
   *  The format follows the data's class and the path's extension. */
  virtual void
  WriteDataFile(BaseData * data, const std::string & path);
  /** Writes a document to a path; false on failure. */
  virtual bool
  WriteDocument(tinyxml2::XMLDocument & document, const std::string & path);

private:
  std::string
  UniqueFileName(const std::string & name, const std::string & extension, const std::string & directory);
  std::string
  SaveDataFile(BaseData * data,
               const std::string & name,
               const std::string & directory,
               const std::vector<std::string> & acceptedExtensions,
               const char * exceptionTail);
  void
  AppendDeclarationAndVersion(tinyxml2::XMLDocument & document);

  // Saving state: prefix of the temporary names in the folder ("" outside SaveScene: files go straight to their
  // names), the files written under temporary names (temporary path, final path), the file names used so far
  // (lower case), the files of the folder the scene being replaced owns (those its previous version names) and
  // whether a data file failed.
  std::string m_StagingPrefix;
  std::vector<std::pair<std::string, std::string>> m_StagedFiles;
  // Keep the staged files on the list of what an interrupt removes, while they are staged.
  std::vector<std::unique_ptr<TemporaryFileGuard>> m_StagedGuards;
  std::set<std::string> m_UsedFileNames;
  std::set<std::string> m_OwnedFileNames;
  bool m_DataFileFailed{ false };
};
} // namespace lumo

#endif

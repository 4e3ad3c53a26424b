#ifndef lumoCalyxSceneReaderV1_h
#define lumoCalyxSceneReaderV1_h

#include "lumoCalyxSceneReader.h"
#include "lumoDataNode.h"
#include "lumoUIDGenerator.h"

#include <itkObjectFactory.h>

#include <list>
#include <map>
#include <string>
#include <vector>

namespace tinyxml2
{
class XMLElement;
} // namespace tinyxml2

namespace lumo
{
/** Reads scene files of version 1 (docs/scenes.md): one node per "SceneObject", added to the storage after all its
 *  sources, whatever their order in the file.
 *
 *  A "file" attribute is read only when it names a file inside the working directory: an absolute path, a path with
 *  a ".." component, or one that resolves (through symbolic links) outside the directory is refused, and the node
 *  is created without data with a message naming the node and the reason. A data file that cannot be read leaves
 *  the node without data as well; loading goes on. Ids that occur twice are replaced for the later nodes, so
 *  sources naming them resolve to the first. */
class CalyxSceneReaderV1 : public CalyxSceneReader
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CalyxSceneReaderV1);

  using Self = CalyxSceneReaderV1;
  using Superclass = CalyxSceneReader;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(CalyxSceneReaderV1, CalyxSceneReader);

  bool
  LoadScene(const tinyxml2::XMLDocument & document,
            const std::string & workingDirectory,
            DataStorage * storage) override;

  /** A node for one "SceneObject" element (without data when it has no readable file); null for a null element. */
  DataNode::Pointer
  LoadSceneObject(const tinyxml2::XMLElement * element, const std::string & workingDirectory);

  /** The properties of a "PropertyList" element; elements of unknown classes, without "name" or with unreadable
   *  values are left out. */
  static PropertyList::Pointer
  DecodePropertyList(const tinyxml2::XMLElement * element);

  /** Decodes a "PropertyList" element and puts its properties on the node with ReplaceProperty, into the list of
   *  the renderer its "RenderWindow" names (the general list without it). */
  static void
  ApplyPropertyList(DataNode * node, const tinyxml2::XMLElement * element);

  /** Why a "file" attribute may not be read from the working directory; "" when it may. */
  static std::string
  WhyDataFileIsRefused(const std::string & file, const std::string & workingDirectory);

  /** Every node read by LoadScene, one per "SceneObject" element, in document order (placed or not). */
  const std::vector<DataNode::Pointer> &
  GetLoadedNodes() const
  {
    return m_LoadedNodes;
  }

  /** The scene id under which a node was read; "" for a node of another scene. */
  std::string
  GetSceneId(const DataNode * node) const;

protected:
  CalyxSceneReaderV1();
  ~CalyxSceneReaderV1() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  std::vector<DataNode::Pointer> m_LoadedNodes;
  std::map<const DataNode *, std::string> m_IdOfNode;
  std::map<std::string, DataNode *> m_NodeOfId;
  std::map<const DataNode *, std::vector<std::string>> m_SourceIds;
  UIDGenerator m_IdGenerator{ "UID_" };
};
} // namespace lumo

#endif

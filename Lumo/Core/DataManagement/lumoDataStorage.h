#ifndef lumoDataStorage_h
#define lumoDataStorage_h

#include "lumoDataNode.h"
#include "lumoNodePredicateBase.h"

#include <itkVectorContainer.h>

#include <string>
#include <vector>

namespace lumo
{
/** The set of data nodes of an application, with the derivation relation: each node may have source nodes (the
 *  nodes it was computed from) that are in the storage. Nodes keep the order in which they were added; every
 *  query answers in that order.
 *
 *  Add marks the node with the boolean property "IsDataStoreManaged" = true (Remove deletes it), so that
 *  predicates can tell stored nodes from others. Remove also removes the node from the sources of every other
 *  node. Errors are itk::InvalidArgumentError with these messages:
 *    "DataStorage::Add: the node is null"
 *    "DataStorage::Add: the node is already in the storage"
 *    "DataStorage::Add: a source node is null"
 *    "DataStorage::Add: a source node is not in the storage" */
class DataStorage : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(DataStorage);

  using Self = DataStorage;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(DataStorage, itk::Object);
  itkNewMacro(Self);

  using SetOfObjects = itk::VectorContainer<unsigned int, DataNode::Pointer>;

  /** Adds a node with its sources (null: none). */
  void
  Add(DataNode * node, const SetOfObjects * sources = nullptr);
  /** Adds a node with one source. */
  void
  Add(DataNode * node, DataNode * source);

  /** Removes a node (nothing happens for a node not in the storage). */
  void
  Remove(const DataNode * node);
  void
  Remove(const SetOfObjects * nodes);

  bool
  Exists(const DataNode * node) const;

  /** Every node. */
  SetOfObjects::ConstPointer
  GetAll() const;
  /** The nodes for which the predicate holds (every node for a null predicate). */
  SetOfObjects::ConstPointer
  GetSubset(const NodePredicateBase * condition) const;
  /** The sources of the node (with onlyDirectSources false: their sources too, transitively, each once, nearest
   *  first), filtered by the predicate when given. Empty for a node not in the storage. */
  SetOfObjects::ConstPointer
  GetSources(const DataNode * node, const NodePredicateBase * condition = nullptr, bool onlyDirectSources = true) const;
  /** The nodes that have this node as a source (transitively when onlyDirectDerivations is false). */
  SetOfObjects::ConstPointer
  GetDerivations(const DataNode * node,
                 const NodePredicateBase * condition = nullptr,
                 bool onlyDirectDerivations = true) const;

  /** The first node for which the predicate holds, or null. */
  DataNode *
  GetNode(const NodePredicateBase * condition = nullptr) const;
  /** The first node whose "name" is the given one, or null. */
  DataNode *
  GetNamedNode(const std::string & name) const;
  /** The data of the first node with that name, if it is a T; else null. */
  template <typename T>
  T *
  GetNamedObject(const std::string & name) const
  {
    DataNode * node = this->GetNamedNode(name);
    return node ? dynamic_cast<T *>(node->GetData()) : nullptr;
  }

  std::size_t
  GetNumberOfNodes() const
  {
    return m_Entries.size();
  }

protected:
  DataStorage() = default;
  ~DataStorage() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  struct Entry
  {
    DataNode::Pointer node;
    std::vector<DataNode::Pointer> sources;
  };
  const Entry *
  FindEntry(const DataNode * node) const;

  std::vector<Entry> m_Entries;
};
} // namespace lumo

#endif

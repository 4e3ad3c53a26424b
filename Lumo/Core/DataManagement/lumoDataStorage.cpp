// The set of data nodes with their derivations.

#include "lumoDataStorage.h"

#include <algorithm>
#include <set>

namespace lumo
{
namespace
{
constexpr const char * ManagedKey = "IsDataStoreManaged";
}

const DataStorage::Entry *
DataStorage::FindEntry(const DataNode * node) const
{
  for (const Entry & entry : m_Entries)
  {
    if (entry.node == node)
    {
      return &entry;
    }
  }
  return nullptr;
}

void
DataStorage::Add(DataNode * node, const SetOfObjects * sources)
{
  if (!node)
  {
    throw itk::InvalidArgumentError(__FILE__, __LINE__, "DataStorage::Add: the node is null", "lumo::DataStorage::Add");
  }
  if (this->Exists(node))
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "DataStorage::Add: the node is already in the storage", "lumo::DataStorage::Add");
  }
  Entry entry;
  entry.node = node;
  if (sources)
  {
    for (const DataNode::Pointer & source : *sources)
    {
      if (source.IsNull())
      {
        throw itk::InvalidArgumentError(
          __FILE__, __LINE__, "DataStorage::Add: a source node is null", "lumo::DataStorage::Add");
      }
      if (!this->Exists(source))
      {
        throw itk::InvalidArgumentError(
          __FILE__, __LINE__, "DataStorage::Add: a source node is not in the storage", "lumo::DataStorage::Add");
      }
      if (std::find(entry.sources.begin(), entry.sources.end(), source) == entry.sources.end())
      {
        entry.sources.push_back(source);
      }
    }
  }
  m_Entries.push_back(std::move(entry));
  node->SetBoolProperty(ManagedKey, true);
  this->Modified();
}

void
DataStorage::Add(DataNode * node, DataNode * source)
{
  SetOfObjects::Pointer sources = SetOfObjects::New();
  if (source)
  {
    sources->InsertElement(0, source);
  }
  this->Add(node, sources);
}

void
DataStorage::Remove(const DataNode * node)
{
  if (!node)
  {
    return;
  }
  const auto it =
    std::find_if(m_Entries.begin(), m_Entries.end(), [&](const Entry & entry) { return entry.node == node; });
  if (it == m_Entries.end())
  {
    return;
  }
  DataNode::Pointer removed = it->node;
  m_Entries.erase(it);
  for (Entry & entry : m_Entries)
  {
    entry.sources.erase(std::remove(entry.sources.begin(), entry.sources.end(), removed), entry.sources.end());
  }
  removed->DeleteProperty(ManagedKey);
  this->Modified();
}

void
DataStorage::Remove(const SetOfObjects * nodes)
{
  if (!nodes)
  {
    return;
  }
  for (const DataNode::Pointer & node : *nodes)
  {
    this->Remove(node);
  }
}

bool
DataStorage::Exists(const DataNode * node) const
{
  return node && this->FindEntry(node) != nullptr;
}

namespace
{
DataStorage::SetOfObjects::ConstPointer
Filter(const std::vector<DataNode::Pointer> & nodes, const NodePredicateBase * condition)
{
  DataStorage::SetOfObjects::Pointer result = DataStorage::SetOfObjects::New();
  unsigned int index = 0;
  for (const DataNode::Pointer & node : nodes)
  {
    if (!condition || condition->CheckNode(node))
    {
      result->InsertElement(index++, node);
    }
  }
  return result.GetPointer();
}
} // namespace

DataStorage::SetOfObjects::ConstPointer
DataStorage::GetAll() const
{
  return this->GetSubset(nullptr);
}

DataStorage::SetOfObjects::ConstPointer
DataStorage::GetSubset(const NodePredicateBase * condition) const
{
  std::vector<DataNode::Pointer> nodes;
  nodes.reserve(m_Entries.size());
  for (const Entry & entry : m_Entries)
  {
    nodes.push_back(entry.node);
  }
  return Filter(nodes, condition);
}

DataStorage::SetOfObjects::ConstPointer
DataStorage::GetSources(const DataNode * node, const NodePredicateBase * condition, bool onlyDirectSources) const
{
  std::vector<DataNode::Pointer> found;
  const Entry * start = this->FindEntry(node);
  if (start)
  {
    // Breadth first: nearest sources first, each node once.
    std::set<const DataNode *> seen{ node };
    std::vector<DataNode::Pointer> frontier = start->sources;
    while (!frontier.empty())
    {
      std::vector<DataNode::Pointer> next;
      for (const DataNode::Pointer & source : frontier)
      {
        if (!seen.insert(source.GetPointer()).second)
        {
          continue;
        }
        found.push_back(source);
        if (!onlyDirectSources)
        {
          const Entry * sourceEntry = this->FindEntry(source);
          if (sourceEntry)
          {
            next.insert(next.end(), sourceEntry->sources.begin(), sourceEntry->sources.end());
          }
        }
      }
      frontier.swap(next);
    }
  }
  return Filter(found, condition);
}

DataStorage::SetOfObjects::ConstPointer
DataStorage::GetDerivations(const DataNode * node,
                            const NodePredicateBase * condition,
                            bool onlyDirectDerivations) const
{
  std::vector<DataNode::Pointer> found;
  if (this->FindEntry(node))
  {
    std::set<const DataNode *> seen{ node };
    std::vector<const DataNode *> frontier{ node };
    while (!frontier.empty())
    {
      std::vector<const DataNode *> next;
      // Storage order within each generation.
      for (const Entry & entry : m_Entries)
      {
        for (const DataNode * parent : frontier)
        {
          if (std::find(entry.sources.begin(), entry.sources.end(), parent) != entry.sources.end())
          {
            if (seen.insert(entry.node.GetPointer()).second)
            {
              found.push_back(entry.node);
              next.push_back(entry.node);
            }
            break;
          }
        }
      }
      if (onlyDirectDerivations)
      {
        break;
      }
      frontier.swap(next);
    }
  }
  return Filter(found, condition);
}

DataNode *
DataStorage::GetNode(const NodePredicateBase * condition) const
{
  for (const Entry & entry : m_Entries)
  {
    if (!condition || condition->CheckNode(entry.node))
    {
      return entry.node;
    }
  }
  return nullptr;
}

DataNode *
DataStorage::GetNamedNode(const std::string & name) const
{
  for (const Entry & entry : m_Entries)
  {
    std::string nodeName;
    if (entry.node->GetName(nodeName) && nodeName == name)
    {
      return entry.node;
    }
  }
  return nullptr;
}

void
DataStorage::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Nodes: " << m_Entries.size() << std::endl;
}
} // namespace lumo

#ifndef VesselIDRelabeling_h
#define VesselIDRelabeling_h

#include "ArVesselTree.h"

#include "lumoIpPicDescriptor.h"

#include <cstdint>
#include <string>
#include <vector>

/** Maps a vessel id to a new label. */
class AbstractRelabelingRule
{
public:
  virtual ~AbstractRelabelingRule() = default;
  virtual std::int32_t
  getNewLabel(const std::uint32_t & id) = 0;
};

/** A table from vessel id to label, built once from a tree: (largest id) + 1 entries, zero for ids that no vessel
 *  owns, filled in pre-order so that of two vessels sharing an id the later one wins. */
class TableRelabelingRule : public AbstractRelabelingRule
{
public:
  /** Prints "Range overflow: <id>" to standard output and throws the rule's message for an id beyond the table. */
  std::int32_t
  getNewLabel(const std::uint32_t & id) override;

protected:
  TableRelabelingRule() = default;
  /** Fills the table with label(vessel) for every vessel of the tree. */
  void
  buildTable(const ArVesselTree & tree);
  virtual std::int32_t
  labelOf(const Vessel & vessel) const = 0;
  virtual const char *
  overflowMessage() const = 0;

private:
  std::vector<std::int32_t> m_table;
};

/** Label = the vessel's segment type. */
class IdToSegmentRelabelingRule : public TableRelabelingRule
{
public:
  explicit IdToSegmentRelabelingRule(ArVesselTree tree);

protected:
  std::int32_t
  labelOf(const Vessel & vessel) const override;
  const char *
  overflowMessage() const override;
};

/** Label = the vessel's blood vessel type + 1, so that type 0 ("Undefined") does not become background. */
class IdToTypeRelabelingRule : public TableRelabelingRule
{
public:
  explicit IdToTypeRelabelingRule(ArVesselTree tree);

protected:
  std::int32_t
  labelOf(const Vessel & vessel) const override;
  const char *
  overflowMessage() const override;
};

/** Label = the vessel's resection status. */
class IdToResectionStatusRelabelingRule : public TableRelabelingRule
{
public:
  explicit IdToResectionStatusRelabelingRule(ArVesselTree tree);

protected:
  std::int32_t
  labelOf(const Vessel & vessel) const override;
  const char *
  overflowMessage() const override;
};

/** Rewrites a 16-bit vessel id volume through a rule. */
class VesselIDRelabeling
{
public:
  /** Every non-zero voxel v becomes rule.getNewLabel(v) truncated to 16 bits; 0 stays 0. Works on the descriptor
   *  itself, or with copy on a deep copy that the caller then owns. Throws for a null argument, a dimension other
   *  than 3 or another element type than unsigned 16-bit; an exception of the rule leaves the voxels before the
   *  offending one relabelled. */
  static lumoIpPicDescriptor *
  relabel(lumoIpPicDescriptor * pic, AbstractRelabelingRule * rule, bool copy);
};

#endif

#ifndef lumoPruneVesselTreeFilter_h
#define lumoPruneVesselTreeFilter_h

#include <itkObjectFactory.h>
#include "lumoVesselTreeToVesselTreeFilter.h"

namespace lumo
{
/** Drops terminal vessels (leaves other than the root) that are shorter than MinimumLength or thinner than
 *  MinimumDiameter, again and again until no vessel is dropped, since a parent whose branches all went may have
 *  become a short leaf itself. Then, when MergeSingleChildren is on, a vessel left with one child is merged with it.
 *  The output holds a pruned copy of input 0's tree (time step 0) with ids 1, 2, ... in breadth-first order. */
class PruneVesselTreeFilter : public VesselTreeToVesselTreeFilter
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(PruneVesselTreeFilter);

  using Self = PruneVesselTreeFilter;
  using Superclass = VesselTreeToVesselTreeFilter;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(PruneVesselTreeFilter, VesselTreeToVesselTreeFilter);

  /** Terminal vessels with a centre line shorter than this (mm) are dropped; default 0 (none); >= 0. */
  itkSetMacro(MinimumLength, double);
  itkGetConstMacro(MinimumLength, double);
  /** Terminal vessels whose mean diameter is below this (mm) are dropped; default 0 (none); >= 0. */
  itkSetMacro(MinimumDiameter, double);
  itkGetConstMacro(MinimumDiameter, double);
  /** Merge a vessel left with a single child with that child; default true. */
  itkSetMacro(MergeSingleChildren, bool);
  itkGetConstMacro(MergeSingleChildren, bool);
  itkBooleanMacro(MergeSingleChildren);

  /** Vessels dropped by the last run (merged ones not counted). */
  itkGetConstMacro(NumberOfDroppedVessels, std::size_t);

protected:
  PruneVesselTreeFilter();
  ~PruneVesselTreeFilter() override;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  double m_MinimumLength{ 0.0 };
  double m_MinimumDiameter{ 0.0 };
  bool m_MergeSingleChildren{ true };
  std::size_t m_NumberOfDroppedVessels{ 0 };
};
} // namespace lumo

#endif

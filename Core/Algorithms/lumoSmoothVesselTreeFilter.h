#ifndef lumoSmoothVesselTreeFilter_h
#define lumoSmoothVesselTreeFilter_h

#include <itkObjectFactory.h>
#include "lumoVesselTreeToVesselTreeFilter.h"

#include <cstdint>
#include <memory>

class CentreLineSmoother;

namespace lumo
{
/** Smooths every centre line of input 0's tree (positions and diameters) with a CentreLineSmoother, keeping each
 *  vessel's first and last point, so that branches stay attached where their parents end. The output holds a
 *  smoothed copy; ids and labels are kept. The smoother counts in the filter's modified time: changing its
 *  parameters makes the next update run again. */
class SmoothVesselTreeFilter : public VesselTreeToVesselTreeFilter
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(SmoothVesselTreeFilter);

  using Self = SmoothVesselTreeFilter;
  using Superclass = VesselTreeToVesselTreeFilter;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(SmoothVesselTreeFilter, VesselTreeToVesselTreeFilter);

  /** Smoothing passes over each centre line; default 2; 0 copies the tree unchanged. */
  itkSetMacro(NumberOfIterations, unsigned int);
  itkGetConstMacro(NumberOfIterations, unsigned int);

  /** Takes over the smoother (deleting the previous one); null is ignored. Default: a BinomialCentreLineSmoother. */
  void
  SetSmoother(CentreLineSmoother * smoother);
  CentreLineSmoother *
  GetSmoother() const;

  /** The later of the filter's own time and the last change of the smoother's parameters. */
  itk::ModifiedTimeType
  GetMTime() const override;

protected:
  SmoothVesselTreeFilter();
  ~SmoothVesselTreeFilter() override;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  unsigned int m_NumberOfIterations{ 2 };
  std::unique_ptr<CentreLineSmoother> m_Smoother;
  // The smoother is a legacy object without time stamps: its modification count is compared with the one last
  // seen, and a change is stamped here.
  mutable std::uint64_t m_SeenSmootherCount{ 0 };
  mutable itk::TimeStamp m_SmootherTime;
};
} // namespace lumo

#endif

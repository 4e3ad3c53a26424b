#ifndef lumoVascularSupplyAreasCalculator_h
#define lumoVascularSupplyAreasCalculator_h

#include <itkObjectFactory.h>
#include "lumoImageSource.h"
#include "lumoVesselTreeData.h"

#include <cstdint>

namespace lumo
{
/** Labels every voxel of an organ segmentation by the vessel that supplies it: the vessel owning the nearest
 *  centre-line sample. The calculation mode decides which vessels take part and what the labels mean (segment,
 *  blood vessel type + 1, or resection status); background voxels (0) stay 0.
 *
 *  Inputs: 0 the organ segmentation (a 3-D unsigned 8-bit lumo::Image), 1 the vessel tree (lumo::VesselTreeData,
 *  time step 0, in world coordinates). Output 0: an unsigned 8-bit label image with the organ's geometry.
 *
 *  Voxel (x, y, z) is compared with the samples at (x, y, z) times the spacing; the samples are brought into that
 *  frame by the inverse of the organ's index-to-world matrix with the spacing divided out of its columns. The
 *  search is exact: every voxel gets the nearest sample's vessel, ties going to the sample taken first, for any
 *  number of work units.
 *
 *  Errors: itk::ExceptionObject "No valid organ segmentation found", "Organ segmentation has wrong dimension",
 *  "Organ segmentation has wrong type ( should be lumoIpUInt1_t)"; itk::InvalidArgumentError
 *  "VascularSupplyAreasCalculator: No VesselTreeData found" and "VascularSupplyAreasCalculator: No legacy vessel
 *  tree found inside VesselTreeData". std::runtime_error of the legacy classes passes through unchanged, for
 *  instance "Error in KDTreeNextVesselEstimator::setVesselElementList: theList->size() == 0!" when the mode's
 *  sampler finds no vessel. A mode outside 0 to 9 only warns ("unknown calculation mode encountered!") and leaves
 *  the output as it is. Progress is reported through itk::ProgressEvent. */
class VascularSupplyAreasCalculator : public ImageSource
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VascularSupplyAreasCalculator);

  using Self = VascularSupplyAreasCalculator;
  using Superclass = ImageSource;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VascularSupplyAreasCalculator, ImageSource);

  enum CalculationMode : std::int32_t
  {
    PortalDefinedSegments = 0,        // portal veins of a defined segment; labels: segment
    PortalSegments = 1,               // all portal veins; labels: segment
    HepaticDefinedSegments = 2,       // hepatic veins of a defined segment; labels: segment
    HepaticSegments = 3,              // all hepatic veins; labels: segment
    AllVesselsSegments = 4,           // every vessel; labels: segment
    AllVesselsTypes = 5,              // every vessel; labels: blood vessel type + 1
    PortalResectionStatus = 6,        // all portal veins; labels: resection status
    PortalDefinedResectionStatus = 7, // portal veins of a defined resection status; labels: resection status
    HepaticResectionStatus = 8,       // all hepatic veins; labels: resection status
    HepaticDefinedResectionStatus = 9 // hepatic veins of a defined resection status; labels: resection status
  };

  /** Which vessels supply tissue and what the labels mean; default PortalDefinedSegments. */
  itkSetMacro(CalculationMode, CalculationMode);
  itkGetConstMacro(CalculationMode, CalculationMode);

  // SetNumberOfWorkUnits / GetNumberOfWorkUnits (itk::ProcessObject): work units the voxel loop is split into on
  // the filter's multi-threader (ITK's thread pool); default ITK's global default number of threads; 1 runs on
  // the calling thread. The labels are the same for any number.

  void
  SetOrganSegmentation(const Image * organ);
  const Image *
  GetOrganSegmentation();
  void
  SetVesselTree(const VesselTreeData * tree);
  const VesselTreeData *
  GetVesselTree();

  /** Input 0 (the organ segmentation). */
  virtual void
  SetInput(const Image * organ);
  /** Input 0 the organ segmentation, input 1 the vessel tree. */
  virtual void
  SetInput(DataObjectPointerArraySizeType index, const itk::DataObject * input);

  /** Element kind of the output in Pic terms: 4 (unsigned integer). */
  static int
  GetOutputType();
  /** Bits per element of the output: 8. */
  static int
  GetOutputBpe();

protected:
  VascularSupplyAreasCalculator();
  ~VascularSupplyAreasCalculator() override;

  const itk::DataObject *
  GetInput(DataObjectPointerArraySizeType index);

  /** Does nothing: the output is made in GenerateData. */
  void
  GenerateOutputInformation() override;
  void
  GenerateData() override;
  /** Missing inputs are reported by GenerateData with its own messages. */
  void
  VerifyPreconditions() ITKv5_CONST override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  void
  Warn(int line, const char * message) const;

  CalculationMode m_CalculationMode{ PortalDefinedSegments };
};
} // namespace lumo

#endif

#ifndef lumoVesselTreeLookupTable_h
#define lumoVesselTreeLookupTable_h

#include <itkObjectFactory.h>
#include "lumoLookupTable.h"
#include "lumoMaterial.h"

#include <itkRGBAPixel.h>
#include <itkVectorContainer.h>

#include <cstdint>
#include <vector>

namespace lumo
{
/** The colour table of a vessel tree: one colour per blood vessel type, per segment and per resection status, and
 *  the colours for active (selected), invisible and unknown vessels. Which table colours a vessel is decided by
 *  VesselTreeToLookupTableFilter; this class holds the colours.
 *
 *  It converts itself to and from vectors of materials, the form in which scene files and material editors
 *  exchange vessel colours. The default segment and resection-status colours are random but the same in every
 *  run: the constructor seeds the standard generator with a fixed value. */
class VesselTreeLookupTable : public LookupTable
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeLookupTable);

  using Self = VesselTreeLookupTable;
  using Superclass = LookupTable;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeLookupTable, LookupTable);

  /** Red, green, blue, alpha; each 0 to 1. */
  using ColorType = itk::RGBAPixel<double>;
  using ColorVectorType = std::vector<ColorType>;
  using MaterialVectorType = itk::VectorContainer<unsigned int, Material::Pointer>;

  virtual ColorType
  GetColorForActive() const;
  virtual void
  SetColorForActive(ColorType color);
  virtual ColorType
  GetColorForInvisible() const;
  virtual void
  SetColorForInvisible(ColorType color);
  virtual ColorType
  GetColorForUnknown() const;
  virtual void
  SetColorForUnknown(ColorType color);

  /** Indexed by blood vessel type (5 entries by default). */
  virtual ColorVectorType
  GetColorByType() const;
  virtual void
  SetColorByType(const ColorVectorType & colors);
  /** Indexed by segment value 0 to 27 (28 entries by default). */
  virtual ColorVectorType
  GetColorBySegment() const;
  virtual void
  SetColorBySegment(const ColorVectorType & colors);
  /** Indexed by resection status 0 to 4 (5 entries by default). */
  virtual ColorVectorType
  GetColorByResectionStatus() const;
  virtual void
  SetColorByResectionStatus(const ColorVectorType & colors);

  /** The material whose non-colour properties (shading, specular...) every generated material copies. */
  virtual Material *
  GetSharedMaterialProperties() const;
  virtual void
  SetSharedMaterialProperties(Material * material);

  /** Types 0 to 4, segments 2 to 27, resection statuses 1 to 4: 35 materials. */
  virtual MaterialVectorType::Pointer
  GetColorsAsMaterialProperties() const;
  virtual void
  SetColorsFromMaterialProperties(const MaterialVectorType * materials);
  /** The materials that belong to one vascular system (dispatches to the four functions below). */
  virtual MaterialVectorType::Pointer
  GetColorsAsMaterialProperties(std::int32_t type) const;
  virtual void
  SetColorsFromMaterialProperties(std::int32_t type, const MaterialVectorType * materials);
  /** "Active", type 0, type 2, segments 2 to 10: 12 materials. */
  virtual MaterialVectorType::Pointer
  GetPortalVeinColorsAsMaterialProperties() const;
  virtual void
  SetPortalVeinColorsFromMaterialProperties(const MaterialVectorType * materials);
  /** "Active", type 0, type 1, segments 12 to 27: 19 materials. */
  virtual MaterialVectorType::Pointer
  GetHepaticVeinColorsAsMaterialProperties() const;
  virtual void
  SetHepaticVeinColorsFromMaterialProperties(const MaterialVectorType * materials);
  /** "Active", type 0, type 3: 3 materials. */
  virtual MaterialVectorType::Pointer
  GetArteryColorsAsMaterialProperties() const;
  virtual void
  SetArteryColorsFromMaterialProperties(const MaterialVectorType * materials);
  /** "Active", type 0, type 4: 3 materials. */
  virtual MaterialVectorType::Pointer
  GetBileDuctColorsAsMaterialProperties() const;
  virtual void
  SetBileDuctColorsFromMaterialProperties(const MaterialVectorType * materials);

  /** With another vessel tree table: every colour and colour vector equal. Otherwise the plain table comparison. */
  bool
  operator==(const LookupTable & other) const override;
  /** From another vessel tree table: all its colours and its shared material properties. */
  LookupTable &
  operator=(const LookupTable & other) override;

protected:
  VesselTreeLookupTable();
  ~VesselTreeLookupTable() override;

  virtual void
  InitializeColors();
  virtual ColorType
  GenerateRandomColor();
  virtual double
  GenerateRandomNumber();

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  /** Which colour a material slot stands for. */
  enum class Slot
  {
    Active,
    Type,
    Segment,
    Status
  };
  using Layout = std::vector<std::pair<Slot, int>>;

  MaterialVectorType::Pointer
  ToMaterials(const Layout & layout) const;
  void
  FromMaterials(const Layout & layout, const MaterialVectorType * materials, const char * sizeMessageEnd);
  ColorType *
  ColorOf(Slot slot, int index);

  static Layout
  AllColorsLayout();
  static Layout
  SystemLayout(std::int32_t type);

  ColorType m_ColorForActive;
  ColorType m_ColorForInvisible;
  ColorType m_ColorForUnknown;
  ColorVectorType m_ColorByType;
  ColorVectorType m_ColorBySegment;
  ColorVectorType m_ColorByResectionStatus;
  Material::Pointer m_SharedMaterialProperties;
};
} // namespace lumo

#endif

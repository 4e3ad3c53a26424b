#ifndef lumoResectionProposalDescriptorProperty_h
#define lumoResectionProposalDescriptorProperty_h

#include "lumoBaseProperty.h"

#include <itkObjectFactory.h>

#include <cstdint>
#include <set>
#include <string>

namespace lumo
{
/** Describes the labels of a resection proposal image: the proposal's name and, per label value, its name,
 *  resection type, volume, the surface output of the generating source that shows it, and its colour.
 *
 *  Descriptors are kept in a set ordered by label, so each label occurs once (adding a descriptor for a label that
 *  is already present keeps the old one) and iteration runs in increasing label order.
 *
 *  GetValueAsString, for a proposal "Plan" with one label:
 *  "Resection proposal: Plan\n Number of labels: 1\nLabel Remnant: Label = 2, ResectionType = 2, Volume = 12.5\n".
 *
 *  IsEqual compares the name and every field of every descriptor; Assign copies both. */
class ResectionProposalDescriptorProperty : public BaseProperty
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ResectionProposalDescriptorProperty);

  using Self = ResectionProposalDescriptorProperty;
  using Superclass = BaseProperty;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(ResectionProposalDescriptorProperty, BaseProperty);

  /** The resection status values of a vessel, used for parts of the organ. */
  enum ResectionType : std::int32_t
  {
    UndefinedResectionStatus = 1,
    NotToBeResected = 2,
    ToBeResected = 3,
    AreaAtRisk = 4
  };

  /** One label of the proposal image. Ordered (and made unique in the set) by Label alone. */
  struct LabelDescriptor
  {
    /** The label value in the image. */
    std::int32_t Label{ 0 };
    std::string Name;
    // Qualified type names: the fields carry the names of their types.
    ResectionProposalDescriptorProperty::ResectionType ResectionType{ UndefinedResectionStatus };
    /** Volume of the part, in millilitres. */
    float Volume{ 0.0f };
    /** Index of the surface output of the generating source that shows the label; negative means none. */
    std::int32_t SurfaceOutputIndex{ -1 };
    lumo::Color Color{ 0.0f };

    bool
    operator<(const LabelDescriptor & other) const
    {
      return Label < other.Label;
    }
    /** Every field equal. */
    bool
    operator==(const LabelDescriptor & other) const;
    bool
    operator!=(const LabelDescriptor & other) const
    {
      return !(*this == other);
    }
  };

  using LabelDescriptorSetType = std::set<LabelDescriptor>;
  using LabelSetType = std::set<int>;

  void
  SetResectionProposalName(const char * name);
  void
  SetResectionProposalName(const std::string & name);
  const std::string &
  GetResectionProposalName() const
  {
    return m_ResectionProposalName;
  }

  /** Inserts the descriptor unless one with the same label is already present (that one stays). */
  void
  AddLabelDescriptor(const LabelDescriptor & descriptor);

  /** The descriptors in label order. (The name's spelling is part of the interface.) */
  const LabelDescriptorSetType &
  GetLabelDesriptorSet() const
  {
    return m_LabelDescriptorSet;
  }
  /** Every label value. */
  LabelSetType
  GetLabelSet() const;
  unsigned int
  GetNumberOfLabels() const
  {
    return static_cast<unsigned int>(m_LabelDescriptorSet.size());
  }

  /** The descriptor of a label. For a label without one, logs the error "label descriptor for label not found"
   *  and answers a default descriptor (label 0, empty name, undefined type, volume 0, no surface, black). */
  const LabelDescriptor &
  GetLabelDescriptor(int label) const;
  std::string
  GetLabelName(int label) const;
  ResectionType
  GetResectionType(int label) const;
  float
  GetVolume(int label) const;
  Color
  GetColor(int label) const;

  /** The label of the first descriptor (in label order) shown by surface output `index`, or -1. */
  int
  GetLabelForSurfaceIndex(int index) const;

  std::string
  GetValueAsString() const override;
  bool
  IsEqual(const BaseProperty & other) const override;
  bool
  Assign(const BaseProperty & other) override;

protected:
  ResectionProposalDescriptorProperty();
  ~ResectionProposalDescriptorProperty() override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  std::string m_ResectionProposalName;
  LabelDescriptorSetType m_LabelDescriptorSet;
};
} // namespace lumo

#endif

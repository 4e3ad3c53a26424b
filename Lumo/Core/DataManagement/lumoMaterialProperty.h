#ifndef lumoMaterialProperty_h
#define lumoMaterialProperty_h

#include "lumoMaterial.h"

namespace lumo
{
/** A node property that holds a lumo::Material by value: SetMaterial and Assign copy the values into the held
 *  material object (never null); GetMaterial gives the held object for reading or editing. IsEqual compares the
 *  materials. GetValueAsString: that of the material. */
class MaterialProperty : public BaseProperty
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  MaterialProperty(const MaterialProperty &) = delete;
  MaterialProperty(MaterialProperty &&) = delete;
  MaterialProperty &
  operator=(MaterialProperty &&) = delete;
  MaterialProperty &
  operator=(const MaterialProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = MaterialProperty;
  using Superclass = BaseProperty;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(MaterialProperty, BaseProperty);
  itkNewMacro(Self);
  lumoNewMacro1Param(MaterialProperty, const Material &);

  Material *
  GetMaterial() const
  {
    return m_Material;
  }
  Material *
  GetValue() const
  {
    return m_Material;
  }
  void
  SetMaterial(const Material & material);
  void
  SetValue(const Material & material)
  {
    this->SetMaterial(material);
  }

  bool
  IsEqual(const BaseProperty & other) const override;
  bool
  Assign(const BaseProperty & other) override;
  std::string
  GetValueAsString() const override;

  /** Includes the modification time of the held material. */
  itk::ModifiedTimeType
  GetMTime() const override;

protected:
  MaterialProperty();
  explicit MaterialProperty(const Material & material);
  ~MaterialProperty() override = default;

  Material::Pointer m_Material;
};
} // namespace lumo

#endif

#ifndef lumoMaterial_h
#define lumoMaterial_h

#include "lumoBaseProperty.h"

#include <string>

class vtkProperty;

namespace lumo
{
/** The surface appearance of a rendered object: a name, the colour with its diffuse coefficient, the specular
 *  colour, coefficient and power, the opacity, the interpolation and representation modes and the line width.
 *  It is itself a property (the scene format stores it as "Material"), and ApplyTo puts the values on a
 *  vtkProperty. Defaults: white, colour coefficient 1, specular white with coefficient 1 and power 10, opacity 1,
 *  Gouraud interpolation, surface representation, line width 1.
 *
 *  The interpolation and representation modes are stored as given, also outside 0..2 (readers of old files may
 *  produce such values; the scene writer refuses them). */
class Material : public BaseProperty
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  Material(const Material &) = delete;
  Material(Material &&) = delete;
  Material &
  operator=(Material &&) = delete;
  Material &
  operator=(const Material & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = Material;
  using Superclass = BaseProperty;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(Material, BaseProperty);
  itkNewMacro(Self);
  /** A default material with the given colour and opacity. */
  lumoNewMacro2Param(Material, const Color &, double);

  enum InterpolationType
  {
    Flat = 0,
    Gouraud = 1,
    Phong = 2,
  };
  enum RepresentationType
  {
    Points = 0,
    Wireframe = 1,
    Surface = 2,
  };

  /** Free name of the material, kept in scene files; default "". */
  itkSetMacro(Name, std::string);
  itkGetConstReferenceMacro(Name, std::string);
  void
  SetColor(const Color & color);
  void
  SetColor(float red, float green, float blue);
  const Color &
  GetColor() const
  {
    return m_Color;
  }
  /** Diffuse coefficient of the colour, 0..1 (not clamped); default 1. */
  itkSetMacro(ColorCoefficient, double);
  itkGetConstMacro(ColorCoefficient, double);
  void
  SetSpecularColor(const Color & color);
  void
  SetSpecularColor(float red, float green, float blue);
  const Color &
  GetSpecularColor() const
  {
    return m_SpecularColor;
  }
  /** Specular coefficient, 0..1 (not clamped); default 1. */
  itkSetMacro(SpecularCoefficient, double);
  itkGetConstMacro(SpecularCoefficient, double);
  /** Specular power (shininess), VTK range 0..128 (not clamped); default 10. */
  itkSetMacro(SpecularPower, double);
  itkGetConstMacro(SpecularPower, double);
  /** Opacity, 0 (invisible) .. 1 (opaque) (not clamped); default 1. */
  itkSetMacro(Opacity, double);
  itkGetConstMacro(Opacity, double);
  /** Shading: Flat, Gouraud or Phong (other numbers kept as given); default Gouraud. */
  itkSetEnumMacro(Interpolation, InterpolationType);
  itkGetEnumMacro(Interpolation, InterpolationType);
  /** Points, Wireframe or Surface (other numbers kept as given); default Surface. */
  itkSetEnumMacro(Representation, RepresentationType);
  itkGetEnumMacro(Representation, RepresentationType);
  /** Width of lines in pixels, > 0 (not checked); default 1. */
  itkSetMacro(LineWidth, double);
  itkGetConstMacro(LineWidth, double);

  /** Copies every value, the name included. */
  void
  Initialize(const Material & other);

  /** Puts colour, diffuse (= colour coefficient), specular colour, coefficient and power, opacity,
   *  interpolation (when in 0..2), representation (when in 0..2) and line width onto the VTK property. */
  void
  ApplyTo(vtkProperty * property) const;
  /** Takes the same values from a VTK property (the name is kept). */
  void
  InitializeFrom(vtkProperty * property);

  /** Every value equal, the name included. */
  bool
  IsEqual(const BaseProperty & other) const override;
  /** Copies every value of another Material. */
  bool
  Assign(const BaseProperty & other) override;
  /** For instance "color [1, 0, 0], opacity 0.5, interpolation Gouraud, representation Surface". */
  std::string
  GetValueAsString() const override;

  static const char *
  GetInterpolationName(int interpolation);
  static const char *
  GetRepresentationName(int representation);

protected:
  Material();
  Material(const Color & color, double opacity);
  ~Material() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  std::string m_Name;
  Color m_Color{ 1.0f };
  double m_ColorCoefficient{ 1.0 };
  Color m_SpecularColor{ 1.0f };
  double m_SpecularCoefficient{ 1.0 };
  double m_SpecularPower{ 10.0 };
  double m_Opacity{ 1.0 };
  InterpolationType m_Interpolation{ Gouraud };
  RepresentationType m_Representation{ Surface };
  double m_LineWidth{ 1.0 };
};
} // namespace lumo

#endif

#ifndef lumoColorProperty_h
#define lumoColorProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** An RGB colour with float components in [0, 1] (the range is the caller's to respect: values are stored as
 *  given); default white. GetValueAsString: "[r, g, b]", for instance "[1, 0.5, 0]". */
class ColorProperty : public GenericProperty<Color>
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  ColorProperty(const ColorProperty &) = delete;
  ColorProperty(ColorProperty &&) = delete;
  ColorProperty &
  operator=(ColorProperty &&) = delete;
  ColorProperty &
  operator=(const ColorProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = ColorProperty;
  using Superclass = GenericProperty<Color>;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(ColorProperty, GenericProperty);
  itkNewMacro(Self);
  lumoNewMacro1Param(ColorProperty, const Color &);
  lumoNewMacro3Param(ColorProperty, float, float, float);
  /** From the first three elements of the array. */
  lumoNewMacro1Param(ColorProperty, const float *);

  const Color &
  GetColor() const
  {
    return this->GetValue();
  }
  void
  SetColor(const Color & color)
  {
    this->SetValue(color);
  }
  void
  SetColor(float red, float green, float blue)
  {
    Color color;
    color.Set(red, green, blue);
    this->SetValue(color);
  }

protected:
  ColorProperty()
    : Superclass(MakeColor(1.0f, 1.0f, 1.0f))
  {}
  explicit ColorProperty(const Color & color)
    : Superclass(color)
  {}
  ColorProperty(float red, float green, float blue)
    : Superclass(MakeColor(red, green, blue))
  {}
  explicit ColorProperty(const float * rgb)
    : Superclass(MakeColor(rgb[0], rgb[1], rgb[2]))
  {}
  ~ColorProperty() override = default;

  static Color
  MakeColor(float red, float green, float blue)
  {
    Color color;
    color.Set(red, green, blue);
    return color;
  }
};
} // namespace lumo

#endif

// Properties: IsEqual, Assign, GetValueAsString, Clone; property lists.

#include <lumoBoolProperty.h>
#include <lumoColorProperty.h>
#include <lumoDoubleProperty.h>
#include <lumoFloatProperty.h>
#include <lumoGroupTagProperty.h>
#include <lumoIntProperty.h>
#include <lumoLevelWindowProperty.h>
#include <lumoLookupTableProperty.h>
#include <lumoMaterialProperty.h>
#include <lumoPropertyList.h>
#include <lumoStringProperty.h>
#include <lumoVector3DProperty.h>
#include <lumoVtkScalarModeProperty.h>

#include <gtest/gtest.h>

#include <vtkLookupTable.h>
#include <vtkProperty.h>
#include <vtkSmartPointer.h>

using namespace lumo;

TEST(PropertyTest, ValueAsStringExactForms)
{
  EXPECT_EQ(BoolProperty::New(true)->GetValueAsString(), "true");
  EXPECT_EQ(BoolProperty::New(false)->GetValueAsString(), "false");
  EXPECT_EQ(StringProperty::New("liver left")->GetValueAsString(), "liver left");
  EXPECT_EQ(IntProperty::New(-12)->GetValueAsString(), "-12");
  EXPECT_EQ(FloatProperty::New(0.5f)->GetValueAsString(), "0.5");
  EXPECT_EQ(FloatProperty::New(0.1f)->GetValueAsString(), "0.1");
  EXPECT_EQ(DoubleProperty::New(0.1)->GetValueAsString(), "0.1");
  EXPECT_EQ(DoubleProperty::New(2.0)->GetValueAsString(), "2");
  EXPECT_EQ(DoubleProperty::New(1e-7)->GetValueAsString(), "1e-07");
  Vector3D v;
  v[0] = 1.0;
  v[1] = 2.5;
  v[2] = -3.0;
  EXPECT_EQ(Vector3DProperty::New(v)->GetValueAsString(), "[1, 2.5, -3]");
  EXPECT_EQ(ColorProperty::New(1.0f, 0.5f, 0.0f)->GetValueAsString(), "[1, 0.5, 0]");
  EXPECT_EQ(LevelWindowProperty::New(LevelWindow(40, 400))->GetValueAsString(), "L:40 W:400");
  EXPECT_EQ(VtkScalarModeProperty::New(3)->GetValueAsString(), "PointFieldData");
  EXPECT_EQ(GroupTagProperty::New()->GetValueAsString(), "");
  EXPECT_EQ(LookupTableProperty::New()->GetValueAsString(), "no lookup table");
  EXPECT_EQ(LookupTableProperty::New(LookupTable::New())->GetValueAsString(), "256 colors");
  Material::Pointer material = Material::New();
  material->SetColor(1.0f, 0.0f, 0.0f);
  material->SetOpacity(0.5);
  EXPECT_EQ(material->GetValueAsString(),
            "color [1, 0, 0], opacity 0.5, interpolation Gouraud, representation Surface");
  EXPECT_EQ(MaterialProperty::New(*material)->GetValueAsString(), material->GetValueAsString());
}

TEST(PropertyTest, DefaultValues)
{
  EXPECT_FALSE(BoolProperty::New()->GetValue());
  EXPECT_EQ(IntProperty::New()->GetValue(), 0);
  EXPECT_EQ(StringProperty::New()->GetValue(), "");
  EXPECT_EQ(ColorProperty::New()->GetValueAsString(), "[1, 1, 1]");
  EXPECT_EQ(Vector3DProperty::New()->GetValueAsString(), "[0, 0, 0]");
  EXPECT_EQ(VtkScalarModeProperty::New()->GetValueAsString(), "Default");
}

TEST(PropertyTest, IsEqualComparesClassAndValue)
{
  EXPECT_TRUE(BoolProperty::New(true)->IsEqual(*BoolProperty::New(true)));
  EXPECT_FALSE(BoolProperty::New(true)->IsEqual(*BoolProperty::New(false)));
  // Same value, different classes: never equal.
  EXPECT_FALSE(IntProperty::New(1)->IsEqual(*BoolProperty::New(true)));
  EXPECT_FALSE(FloatProperty::New(1.0f)->IsEqual(*DoubleProperty::New(1.0)));
  EXPECT_TRUE(*StringProperty::New("a") == *StringProperty::New("a"));
  EXPECT_TRUE(*StringProperty::New("a") != *StringProperty::New("b"));
  EXPECT_TRUE(*GroupTagProperty::New() == *GroupTagProperty::New());
  EXPECT_FALSE(*GroupTagProperty::New() == *BoolProperty::New());
  EXPECT_TRUE(*ColorProperty::New(0.1f, 0.2f, 0.3f) == *ColorProperty::New(0.1f, 0.2f, 0.3f));
  EXPECT_FALSE(*ColorProperty::New(0.1f, 0.2f, 0.3f) == *ColorProperty::New(0.1f, 0.2f, 0.4f));

  LevelWindow a(40, 400);
  LevelWindow b(40, 400);
  b.SetRangeMinMax(-1000, 3000);
  EXPECT_FALSE(*LevelWindowProperty::New(a) == *LevelWindowProperty::New(b));
  EXPECT_TRUE(*LevelWindowProperty::New(a) == *LevelWindowProperty::New(a));

  // Lookup tables are compared by value.
  LookupTable::Pointer t1 = LookupTable::New();
  LookupTable::Pointer t2 = LookupTable::New();
  EXPECT_TRUE(*LookupTableProperty::New(t1) == *LookupTableProperty::New(t2));
  t2->ChangeOpacity(3, 0.25);
  EXPECT_FALSE(*LookupTableProperty::New(t1) == *LookupTableProperty::New(t2));
  EXPECT_TRUE(*LookupTableProperty::New() == *LookupTableProperty::New());
  EXPECT_FALSE(*LookupTableProperty::New() == *LookupTableProperty::New(t1));
}

TEST(PropertyTest, AssignCopiesOnlyWithinTheClass)
{
  IntProperty::Pointer target = IntProperty::New(1);
  const auto before = target->GetMTime();
  EXPECT_TRUE(target->Assign(*IntProperty::New(7)));
  EXPECT_EQ(target->GetValue(), 7);
  EXPECT_GT(target->GetMTime(), before);

  EXPECT_FALSE(target->Assign(*DoubleProperty::New(3.0)));
  EXPECT_EQ(target->GetValue(), 7);

  // operator= goes through Assign.
  StringProperty::Pointer s = StringProperty::New("x");
  *s = *StringProperty::New("y");
  EXPECT_EQ(s->GetValue(), "y");

  MaterialProperty::Pointer m = MaterialProperty::New();
  Material::Pointer red = Material::New();
  red->SetColor(1.0f, 0.0f, 0.0f);
  red->SetName("red");
  EXPECT_TRUE(m->Assign(*MaterialProperty::New(*red)));
  EXPECT_TRUE(m->GetMaterial()->IsEqual(*red));
  EXPECT_NE(m->GetMaterial(), red.GetPointer()); // held by value

  VtkScalarModeProperty::Pointer mode = VtkScalarModeProperty::New();
  EXPECT_FALSE(mode->SetValue(9));
  EXPECT_TRUE(mode->SetValue(std::string("CellData")));
  EXPECT_EQ(mode->GetVtkScalarMode(), 2);
  EXPECT_FALSE(mode->SetValue(std::string("Cells")));
}

TEST(PropertyTest, CloneGivesAnEqualIndependentObject)
{
  ColorProperty::Pointer color = ColorProperty::New(0.2f, 0.4f, 0.6f);
  itk::LightObject::Pointer copy = color->Clone();
  auto * clone = dynamic_cast<ColorProperty *>(copy.GetPointer());
  ASSERT_NE(clone, nullptr);
  EXPECT_NE(clone, color.GetPointer());
  EXPECT_TRUE(clone->IsEqual(*color));
  clone->SetColor(0.0f, 0.0f, 0.0f);
  EXPECT_FALSE(clone->IsEqual(*color));
  EXPECT_STREQ(clone->GetNameOfClass(), "ColorProperty");
}

TEST(PropertyTest, MaterialAppliesToVtkProperty)
{
  Material::Pointer material = Material::New();
  material->SetColor(0.5f, 0.25f, 1.0f);
  material->SetColorCoefficient(0.75);
  material->SetSpecularColor(0.0f, 1.0f, 0.0f);
  material->SetSpecularCoefficient(0.3);
  material->SetSpecularPower(20.0);
  material->SetOpacity(0.4);
  material->SetInterpolation(Material::Phong);
  material->SetRepresentation(Material::Wireframe);
  material->SetLineWidth(2.0);
  vtkSmartPointer<vtkProperty> property = vtkSmartPointer<vtkProperty>::New();
  material->ApplyTo(property);
  double rgb[3];
  property->GetDiffuseColor(rgb);
  EXPECT_DOUBLE_EQ(rgb[0], 0.5);
  EXPECT_DOUBLE_EQ(rgb[1], 0.25);
  EXPECT_DOUBLE_EQ(rgb[2], 1.0);
  EXPECT_DOUBLE_EQ(property->GetDiffuse(), 0.75);
  property->GetSpecularColor(rgb);
  EXPECT_DOUBLE_EQ(rgb[1], 1.0);
  EXPECT_DOUBLE_EQ(property->GetSpecular(), 0.3);
  EXPECT_DOUBLE_EQ(property->GetSpecularPower(), 20.0);
  EXPECT_DOUBLE_EQ(property->GetOpacity(), 0.4);
  EXPECT_EQ(property->GetInterpolation(), VTK_PHONG);
  EXPECT_EQ(property->GetRepresentation(), VTK_WIREFRAME);
  EXPECT_FLOAT_EQ(property->GetLineWidth(), 2.0f);

  Material::Pointer back = Material::New();
  back->InitializeFrom(property);
  EXPECT_TRUE(back->IsEqual(*material));
}

TEST(PropertyListTest, SetPropertyAssignsIntoAnExistingPropertyOfTheSameClass)
{
  PropertyList::Pointer list = PropertyList::New();
  EXPECT_TRUE(list->IsEmpty());
  BoolProperty::Pointer shared = BoolProperty::New(false);
  list->SetProperty("visible", shared);
  EXPECT_EQ(list->GetProperty("visible"), shared.GetPointer());

  // Same class: the value goes into the existing object.
  list->SetProperty("visible", BoolProperty::New(true));
  EXPECT_EQ(list->GetProperty("visible"), shared.GetPointer());
  EXPECT_TRUE(shared->GetValue());

  // Another class: the new object replaces the old one.
  IntProperty::Pointer number = IntProperty::New(3);
  list->SetProperty("visible", number);
  EXPECT_EQ(list->GetProperty("visible"), number.GetPointer());

  // ReplaceProperty always stores the object given.
  IntProperty::Pointer other = IntProperty::New(4);
  list->ReplaceProperty("visible", other);
  EXPECT_EQ(list->GetProperty("visible"), other.GetPointer());
  EXPECT_EQ(number->GetValue(), 3);

  list->SetProperty("null is ignored", nullptr);
  EXPECT_EQ(list->GetProperty("null is ignored"), nullptr);
  EXPECT_EQ(list->GetMap()->size(), 1u);

  EXPECT_TRUE(list->DeleteProperty("visible"));
  EXPECT_FALSE(list->DeleteProperty("visible"));
  EXPECT_TRUE(list->IsEmpty());
}

TEST(PropertyListTest, TypedGettersAndModificationTime)
{
  PropertyList::Pointer list = PropertyList::New();
  list->SetProperty("name", StringProperty::New("portal vein"));
  list->SetProperty("opacity", FloatProperty::New(0.5f));
  std::string name;
  EXPECT_TRUE(list->GetStringProperty("name", name));
  EXPECT_EQ(name, "portal vein");
  bool flag = true;
  EXPECT_FALSE(list->GetBoolProperty("name", flag)); // wrong class
  EXPECT_FALSE(list->GetBoolProperty("absent", flag));
  EXPECT_TRUE(flag);
  float opacity = 0.0f;
  EXPECT_TRUE(list->GetFloatProperty("opacity", opacity));
  EXPECT_FLOAT_EQ(opacity, 0.5f);

  const auto before = list->GetMTime();
  dynamic_cast<FloatProperty *>(list->GetProperty("opacity"))->SetValue(0.25f);
  EXPECT_GT(list->GetMTime(), before); // a property's change shows in the list's time
}

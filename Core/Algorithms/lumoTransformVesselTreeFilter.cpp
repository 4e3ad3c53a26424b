#include "lumoTransformVesselTreeFilter.h"

#include "lumoVesselTreeOperation.h"

#include <vtkLinearTransform.h>
#include <vtkMatrix4x4.h>
#include <vtkTransform.h>

namespace lumo
{
TransformVesselTreeFilter::TransformVesselTreeFilter()
  : m_Transform(vtkSmartPointer<vtkTransform>::New())
{}

TransformVesselTreeFilter::~TransformVesselTreeFilter() = default;

void
TransformVesselTreeFilter::SetVtkTransform(vtkLinearTransform * transform)
{
  if (transform == nullptr)
  {
    itkWarningMacro("Transform is NULL!");
    return;
  }
  auto matrix = vtkSmartPointer<vtkMatrix4x4>::New();
  transform->Update();
  matrix->DeepCopy(transform->GetMatrix());
  m_Transform->Identity();
  m_Transform->Concatenate(matrix);
  this->Modified();
}

void
TransformVesselTreeFilter::SetTranslation(float x, float y, float z)
{
  m_Transform->Translate(x, y, z);
  this->Modified();
}

void
TransformVesselTreeFilter::GetTranslation(float translation[3])
{
  m_Transform->Update();
  vtkMatrix4x4 * matrix = m_Transform->GetMatrix();
  for (int r = 0; r < 3; ++r)
  {
    translation[r] = static_cast<float>(matrix->GetElement(r, 3));
  }
}

void
TransformVesselTreeFilter::DeductSpacingFromTransform(const itk::Vector<float, 3> & spacing)
{
  m_Transform->Update();
  auto matrix = vtkSmartPointer<vtkMatrix4x4>::New();
  matrix->DeepCopy(m_Transform->GetMatrix());
  for (int r = 0; r < 3; ++r)
  {
    for (int c = 0; c < 3; ++c)
    {
      matrix->SetElement(r, c, matrix->GetElement(r, c) / spacing[c]);
    }
  }
  m_Transform->Identity();
  m_Transform->Concatenate(matrix);
  this->Modified();
}

vtkTransform *
TransformVesselTreeFilter::GetTransform() const
{
  return m_Transform;
}

void
TransformVesselTreeFilter::GenerateData()
{
  auto * input = const_cast<VesselTreeData *>(this->GetInput());
  if (input == nullptr)
  {
    itkWarningMacro("Input is NULL!");
    return;
  }
  const ArVesselTree inputTree = input->GetVesselTreeData(0);
  const ArVesselTree working = m_InPlace ? inputTree : cloneVesselTree(inputTree);

  m_Transform->Update();
  vtkMatrix4x4 * matrix = m_Transform->GetMatrix();
  if (matrix == nullptr)
  {
    itkWarningMacro("Matrix is NULL!");
    return;
  }
  double m[3][4];
  for (int r = 0; r < 3; ++r)
  {
    for (int c = 0; c < 4; ++c)
    {
      m[r][c] = matrix->GetElement(r, c);
    }
  }
  if (!working.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(working->newPreorderIterator());
    while (it->hasNext())
    {
      ar<Vessel> vessel = it->next();
      if (vessel.isNull())
      {
        continue;
      }
      for (std::size_t i = 0; i < vessel->numberOfPoints(); ++i)
      {
        VesselPoint p = vessel->getPoint(i);
        const double x = p.x;
        const double y = p.y;
        const double z = p.z;
        p.x = static_cast<float>(m[0][0] * x + m[0][1] * y + m[0][2] * z + m[0][3]);
        p.y = static_cast<float>(m[1][0] * x + m[1][1] * y + m[1][2] * z + m[1][3]);
        p.z = static_cast<float>(m[2][0] * x + m[2][1] * y + m[2][2] * z + m[2][3]);
        vessel->setPoint(i, p);
      }
    }
  }

  if (m_InPlace)
  {
    // The input object itself becomes the output, so that a pick or a label on the one is the other's. The filter
    // lets go of it as input: the object's source is now this filter, and a pipeline through it would loop (each
    // update would transform the points again).
    input->TopologyModified();
    this->SetNthOutput(0, input);
    this->SetNthInput(0, nullptr);
    return;
  }
  VesselTreeData * output = this->GetOutput();
  output->SetVesselTreeData(working, 0);
  output->SetActivationMode(input->GetActivationMode(0), 0);
  VesselTreeOperation select(VesselTreeOperation::Select, input->GetPickedVesselId(0));
  output->ExecuteOperation(&select);
}

void
TransformVesselTreeFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "InPlace: " << m_InPlace << std::endl;
}
} // namespace lumo

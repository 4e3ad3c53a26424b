#include "lumoDeformablePlane.h"

#include "lumoDeformablePlaneOperation.h"
#include "lumoImageAccess.h"
#include "lumoSlicedGeometry3D.h"

#include <vnl/algo/vnl_svd.h>
#include <vnl/vnl_matrix.h>
#include <vnl/vnl_vector.h>
#include <vtkBox.h>
#include <vtkCellArray.h>
#include <vtkClipPolyData.h>
#include <vtkFloatArray.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumo
{
namespace
{
double
Dot(const Vector3D & a, const Vector3D & b)
{
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector3D
Cross(const Vector3D & a, const Vector3D & b)
{
  Vector3D c;
  c[0] = a[1] * b[2] - a[2] * b[1];
  c[1] = a[2] * b[0] - a[0] * b[2];
  c[2] = a[0] * b[1] - a[1] * b[0];
  return c;
}

[[noreturn]] void
Refuse(const char * file, unsigned int line, const std::string & message)
{
  throw itk::InvalidArgumentError(file, line, message, "DeformablePlane");
}
} // namespace

DeformablePlane::DeformablePlane()
{
  m_Center.Fill(0.0);
  m_OrganCentroid.Fill(0.0);
  m_Normal.Fill(0.0);
  m_Normal[2] = 1.0;
  m_AxisU.Fill(0.0);
  m_AxisU[0] = 1.0;
  m_AxisV.Fill(0.0);
  m_AxisV[1] = 1.0;
  this->UpdateBounds();
}

DeformablePlane::~DeformablePlane() = default;

void
DeformablePlane::SetSmoothing(double smoothing)
{
  smoothing = std::max(0.0, smoothing);
  if (smoothing == m_Smoothing)
  {
    return;
  }
  const double old = m_Smoothing;
  m_Smoothing = smoothing;
  try
  {
    this->Refit();
  }
  catch (...)
  {
    m_Smoothing = old;
    throw;
  }
  this->Modified();
}

// -- fitting ----------------------------------------------------------------------------------------------------------

DeformablePlane::Fit
DeformablePlane::ComputeFit(const PointsContainer & points) const
{
  const std::size_t n = points.size();
  if (n < 3)
  {
    Refuse(__FILE__, __LINE__, "A deformable plane needs at least 3 control points, got " + std::to_string(n));
  }
  Fit fit;
  Vector3D sum;
  sum.Fill(0.0);
  for (const Point3D & p : points)
  {
    sum += p.GetVectorFromOrigin();
  }
  for (unsigned int a = 0; a < 3; ++a)
  {
    fit.Center[a] = sum[a] / static_cast<double>(n);
  }
  vnl_matrix<double> covariance(3, 3, 0.0);
  for (const Point3D & p : points)
  {
    const Vector3D d = p - fit.Center;
    for (unsigned int r = 0; r < 3; ++r)
    {
      for (unsigned int c = 0; c < 3; ++c)
      {
        covariance(r, c) += d[r] * d[c];
      }
    }
  }
  // For a symmetric positive semi-definite matrix the singular vectors are the eigenvectors, the singular values
  // (in decreasing order) the eigenvalues.
  vnl_svd<double> eigen(covariance);
  const double largest = eigen.W(0);
  const double middle = eigen.W(1);
  // Relative to the spread along the line: points within about 1e-6 of its length of one line count as collinear.
  if (!(largest > 0.0) || middle <= 1e-12 * largest)
  {
    Refuse(__FILE__, __LINE__, "The control points of a deformable plane lie on one line");
  }
  for (unsigned int a = 0; a < 3; ++a)
  {
    fit.Normal[a] = eigen.V()(a, 2);
    fit.AxisU[a] = eigen.V()(a, 0);
  }
  fit.Normal.Normalize();
  fit.AxisU.Normalize();

  double sign = 0.0;
  if (m_HasOrganCentroid)
  {
    const double away = Dot(fit.Normal, fit.Center - m_OrganCentroid);
    if (std::abs(away) > 1e-9 * std::sqrt(largest))
    {
      sign = away > 0 ? 1.0 : -1.0;
    }
  }
  for (int a = 2; sign == 0.0 && a >= 0; --a)
  {
    if (std::abs(fit.Normal[a]) > 1e-12)
    {
      sign = fit.Normal[a] > 0 ? 1.0 : -1.0;
    }
  }
  fit.Normal *= sign;
  fit.AxisV = Cross(fit.Normal, fit.AxisU);

  fit.U.resize(n);
  fit.V.resize(n);
  std::vector<double> heights(n);
  double largestHeight = 0.0;
  double radius = 0.0;
  for (std::size_t i = 0; i < n; ++i)
  {
    const Vector3D d = points[i] - fit.Center;
    fit.U[i] = Dot(d, fit.AxisU);
    fit.V[i] = Dot(d, fit.AxisV);
    heights[i] = Dot(d, fit.Normal);
    largestHeight = std::max(largestHeight, std::abs(heights[i]));
    radius = std::max(radius, d.GetNorm());
  }
  // Points on the fitted plane up to rounding: the surface is the plane itself.
  fit.Flat = largestHeight <= 1e-9 * std::max(1.0, radius);
  if (fit.Flat)
  {
    fit.U.clear();
    fit.V.clear();
    return fit;
  }

  // Thin-plate spline: [K + lambda I, P; P^T, 0] [w; a] = [h; 0], K_ij = phi(|q_i - q_j|), P_i = (1, u_i, v_i).
  const std::size_t m = n + 3;
  vnl_matrix<double> system(m, m, 0.0);
  vnl_vector<double> rhs(m, 0.0);
  for (std::size_t i = 0; i < n; ++i)
  {
    for (std::size_t j = 0; j < n; ++j)
    {
      const double du = fit.U[i] - fit.U[j];
      const double dv = fit.V[i] - fit.V[j];
      const double r2 = du * du + dv * dv;
      system(i, j) = r2 > 0.0 ? 0.5 * r2 * std::log(r2) : 0.0;
    }
    system(i, i) += m_Smoothing;
    system(i, n) = system(n, i) = 1.0;
    system(i, n + 1) = system(n + 1, i) = fit.U[i];
    system(i, n + 2) = system(n + 2, i) = fit.V[i];
    rhs(i) = heights[i];
  }
  // The SVD solves the symmetric indefinite system stably; control points that project onto the same place get
  // the least-squares compromise instead of a breakdown.
  vnl_svd<double> solver(system);
  solver.zero_out_relative(1e-13);
  const vnl_vector<double> solution = solver.solve(rhs);
  fit.Weights.assign(solution.begin(), solution.begin() + static_cast<std::ptrdiff_t>(n));
  for (unsigned int k = 0; k < 3; ++k)
  {
    fit.Affine[k] = solution(n + k);
  }
  return fit;
}

void
DeformablePlane::ApplyFit(const PointsContainer & points, Fit && fit)
{
  m_ControlPoints = points;
  m_Center = fit.Center;
  m_Normal = fit.Normal;
  m_AxisU = fit.AxisU;
  m_AxisV = fit.AxisV;
  m_Flat = fit.Flat;
  m_NodeU = std::move(fit.U);
  m_NodeV = std::move(fit.V);
  m_Weights = std::move(fit.Weights);
  std::copy(fit.Affine, fit.Affine + 3, m_Affine);
  m_Initialized = true;
  this->UpdateBounds();
  this->Modified();
}

void
DeformablePlane::CheckControlPoints() const
{
  if (m_ControlPoints.size() < 3)
  {
    Refuse(__FILE__,
           __LINE__,
           "A deformable plane needs at least 3 control points, got " + std::to_string(m_ControlPoints.size()));
  }
}

void
DeformablePlane::Refit()
{
  if (!m_ControlPoints.empty())
  {
    this->ApplyFit(m_ControlPoints, this->ComputeFit(m_ControlPoints));
  }
}

void
DeformablePlane::UpdateBounds()
{
  double bounds[6] = { 0, 0, 0, 0, 0, 0 };
  for (std::size_t i = 0; i < m_ControlPoints.size(); ++i)
  {
    for (unsigned int a = 0; a < 3; ++a)
    {
      if (i == 0 || m_ControlPoints[i][a] < bounds[2 * a])
      {
        bounds[2 * a] = m_ControlPoints[i][a];
      }
      if (i == 0 || m_ControlPoints[i][a] > bounds[2 * a + 1])
      {
        bounds[2 * a + 1] = m_ControlPoints[i][a];
      }
    }
  }
  this->GetGeometry(0)->SetFloatBounds(bounds);
}

// -- control points ---------------------------------------------------------------------------------------------------

void
DeformablePlane::SetControlPoints(const PointsContainer & points)
{
  this->ApplyFit(points, this->ComputeFit(points));
}

void
DeformablePlane::SetControlPoints(const PointSet * points)
{
  if (points == nullptr)
  {
    Refuse(__FILE__, __LINE__, "A deformable plane needs at least 3 control points, got 0");
  }
  PointsContainer list;
  for (const auto & entry : points->GetPoints(0))
  {
    list.push_back(entry.second);
  }
  this->SetControlPoints(list);
}

PointSet::Pointer
DeformablePlane::GetControlPointsAsPointSet() const
{
  auto pointSet = PointSet::New();
  for (std::size_t i = 0; i < m_ControlPoints.size(); ++i)
  {
    pointSet->InsertPoint(static_cast<PointSet::PointIdentifier>(i), m_ControlPoints[i]);
  }
  return pointSet;
}

void
DeformablePlane::ExecuteAndRecord(UndoController * undo,
                                  Operation * operation,
                                  Operation * inverse,
                                  const char * description)
{
  try
  {
    this->ExecuteOperation(operation);
  }
  catch (...)
  {
    delete operation;
    delete inverse;
    throw;
  }
  if (undo != nullptr)
  {
    undo->SetOperationEvent(new OperationEvent(this, operation, inverse, description));
  }
  else
  {
    delete operation;
    delete inverse;
  }
}

void
DeformablePlane::MoveControlPoint(unsigned int index, const Point3D & point, UndoController * undo)
{
  if (index >= m_ControlPoints.size())
  {
    Refuse(__FILE__, __LINE__, "No control point " + std::to_string(index) + " in a deformable plane");
  }
  const Point3D old = m_ControlPoints[index];
  auto * operation = new DeformablePlaneOperation(DeformablePlaneOperation::MovePoint, index, point);
  auto * inverse = new DeformablePlaneOperation(DeformablePlaneOperation::MovePoint, index, old);
  this->ExecuteAndRecord(undo, operation, inverse, "Move control point");
}

unsigned int
DeformablePlane::AddControlPoint(const Point3D & point, UndoController * undo)
{
  const auto index = static_cast<unsigned int>(m_ControlPoints.size());
  auto * operation = new DeformablePlaneOperation(DeformablePlaneOperation::InsertPoint, index, point);
  auto * inverse = new DeformablePlaneOperation(DeformablePlaneOperation::RemovePoint, index, point);
  this->ExecuteAndRecord(undo, operation, inverse, "Add control point");
  return index;
}

void
DeformablePlane::RemoveControlPoint(unsigned int index, UndoController * undo)
{
  if (index >= m_ControlPoints.size())
  {
    Refuse(__FILE__, __LINE__, "No control point " + std::to_string(index) + " in a deformable plane");
  }
  const Point3D old = m_ControlPoints[index];
  auto * operation = new DeformablePlaneOperation(DeformablePlaneOperation::RemovePoint, index, old);
  auto * inverse = new DeformablePlaneOperation(DeformablePlaneOperation::InsertPoint, index, old);
  this->ExecuteAndRecord(undo, operation, inverse, "Remove control point");
}

void
DeformablePlane::ExecuteOperation(Operation * operation)
{
  auto * planeOperation = dynamic_cast<DeformablePlaneOperation *>(operation);
  if (planeOperation == nullptr)
  {
    itkWarningMacro("Operation is not of type lumo::DeformablePlaneOperation!");
    return;
  }
  PointsContainer points = m_ControlPoints;
  const unsigned int index = planeOperation->GetIndex();
  switch (planeOperation->GetOperationType())
  {
    case DeformablePlaneOperation::MovePoint:
      if (index >= points.size())
      {
        Refuse(__FILE__, __LINE__, "No control point " + std::to_string(index) + " in a deformable plane");
      }
      points[index] = planeOperation->GetPoint();
      break;
    case DeformablePlaneOperation::InsertPoint:
      points.insert(points.begin() + std::min<std::size_t>(index, points.size()), planeOperation->GetPoint());
      break;
    case DeformablePlaneOperation::RemovePoint:
      if (index >= points.size())
      {
        Refuse(__FILE__, __LINE__, "No control point " + std::to_string(index) + " in a deformable plane");
      }
      points.erase(points.begin() + index);
      break;
    default:
      itkWarningMacro("Unknown operation type " << planeOperation->GetOperationType());
      return;
  }
  this->SetControlPoints(points);
}

// -- orientation ------------------------------------------------------------------------------------------------------

void
DeformablePlane::SetOrganCentroid(const Point3D & centroid)
{
  if (m_HasOrganCentroid && centroid == m_OrganCentroid)
  {
    return;
  }
  m_HasOrganCentroid = true;
  m_OrganCentroid = centroid;
  this->Refit();
  this->Modified();
}

void
DeformablePlane::SetOrgan(const Image * organ)
{
  double sum[3] = { 0, 0, 0 };
  std::uint64_t count = 0;
  if (organ != nullptr && organ->IsInitialized())
  {
    AccessByItk(organ, [&](auto * itkImage) {
      const auto * data = itkImage->GetBufferPointer();
      const auto & size = organ->GetSize();
      std::size_t i = 0;
      for (unsigned int z = 0; z < size[2]; ++z)
      {
        for (unsigned int y = 0; y < size[1]; ++y)
        {
          for (unsigned int x = 0; x < size[0]; ++x, ++i)
          {
            if (data[i] != 0)
            {
              sum[0] += x;
              sum[1] += y;
              sum[2] += z;
              ++count;
            }
          }
        }
      }
    });
  }
  if (count == 0)
  {
    this->RemoveOrganCentroid();
    return;
  }
  // The transform is affine: the world centroid is the image of the mean index.
  Point3D index;
  for (unsigned int a = 0; a < 3; ++a)
  {
    index[a] = sum[a] / static_cast<double>(count);
  }
  Point3D world;
  organ->GetGeometry(0)->IndexToWorld(index, world);
  this->SetOrganCentroid(world);
}

void
DeformablePlane::RemoveOrganCentroid()
{
  if (!m_HasOrganCentroid)
  {
    return;
  }
  m_HasOrganCentroid = false;
  this->Refit();
  this->Modified();
}

// -- evaluation -------------------------------------------------------------------------------------------------------

void
DeformablePlane::ToPlane(const Point3D & point, double & u, double & v, double & w) const
{
  const Vector3D d = point - m_Center;
  u = Dot(d, m_AxisU);
  v = Dot(d, m_AxisV);
  w = Dot(d, m_Normal);
}

double
DeformablePlane::EvaluateHeight(double u, double v) const
{
  if (m_Flat)
  {
    return 0.0;
  }
  // phi(r) = r^2 ln r = r^2 ln(r^2) / 2.
  double h = m_Affine[0] + m_Affine[1] * u + m_Affine[2] * v;
  for (std::size_t i = 0; i < m_Weights.size(); ++i)
  {
    const double du = u - m_NodeU[i];
    const double dv = v - m_NodeV[i];
    const double r2 = du * du + dv * dv;
    if (r2 > 0.0)
    {
      h += m_Weights[i] * 0.5 * r2 * std::log(r2);
    }
  }
  return h;
}

double
DeformablePlane::EvaluateHeightAndGradient(double u, double v, double & gu, double & gv) const
{
  gu = 0.0;
  gv = 0.0;
  if (m_Flat)
  {
    return 0.0;
  }
  double h = m_Affine[0] + m_Affine[1] * u + m_Affine[2] * v;
  gu = m_Affine[1];
  gv = m_Affine[2];
  for (std::size_t i = 0; i < m_Weights.size(); ++i)
  {
    const double du = u - m_NodeU[i];
    const double dv = v - m_NodeV[i];
    const double r2 = du * du + dv * dv;
    if (r2 > 0.0)
    {
      // d/du (r^2 ln(r^2) / 2) = du (ln(r^2) + 1).
      const double logR2 = std::log(r2);
      h += m_Weights[i] * 0.5 * r2 * logR2;
      const double g = m_Weights[i] * (logR2 + 1.0);
      gu += g * du;
      gv += g * dv;
    }
  }
  return h;
}

double
DeformablePlane::GetSignedHeight(const Point3D & point) const
{
  double u, v, w;
  this->ToPlane(point, u, v, w);
  return w - this->EvaluateHeight(u, v);
}

int
DeformablePlane::GetSide(const Point3D & point) const
{
  const double height = this->GetSignedHeight(point);
  return height > m_Tolerance ? 1 : (height < -m_Tolerance ? -1 : 0);
}

Point3D
DeformablePlane::ProjectOntoSurface(const Point3D & point) const
{
  double u, v, w;
  this->ToPlane(point, u, v, w);
  return m_Center + m_AxisU * u + m_AxisV * v + m_Normal * this->EvaluateHeight(u, v);
}

Vector3D
DeformablePlane::GetFrontNormal(const Point3D & point) const
{
  double u, v, w, gu, gv;
  this->ToPlane(point, u, v, w);
  this->EvaluateHeightAndGradient(u, v, gu, gv);
  // The graph s(u, v) = c + u U + v V + h N has the normal s_u x s_v = N - h_u U - h_v V.
  Vector3D normal = m_Normal - m_AxisU * gu - m_AxisV * gv;
  normal.Normalize();
  return normal;
}

Vector3D
DeformablePlane::GetBackNormal(const Point3D & point) const
{
  return -this->GetFrontNormal(point);
}

// -- side of voxels ---------------------------------------------------------------------------------------------------

// The columns run along the grid axis whose direction is closest to N. Along a column, index t, the plane
// coordinates change linearly (u = u0 + a t, v = v0 + b t, w = w0 + c t, |c| the largest of the three axes'), and
// the signed height H(t) = w(t) - h(u(t), v(t)) is zero where the column meets the surface. For the flat plane H is
// linear and its zero is computed directly; for the curved surface it is found by Newton's method started from the
// neighbouring column's crossing (two or three spline evaluations per column). The voxels on either side of the
// crossing are then classified by comparing their index with it, without evaluating the spline again.
//
// Assumption: the surface meets every column at most once, that is H is monotonic along the column, which holds
// while the surface's slope over the best-fit plane stays below the slope of the column axis against the plane
// (|h_u a + h_v b| < |c|; at least 1/sqrt(2) for the chosen axis). Where a column does not satisfy it (Newton does
// not settle or H' has the wrong sign), the column is evaluated voxel by voxel, and the voxels between its first
// and last change of side are reported as on the surface.
DeformablePlane::ColumnCrossings
DeformablePlane::ComputeColumnCrossings(const SlicedGeometry3D * grid) const
{
  if (grid == nullptr)
  {
    Refuse(__FILE__, __LINE__, "DeformablePlane: no voxel grid given");
  }
  this->CheckControlPoints();
  double matrix[16];
  grid->GetIndexToWorldMatrix(matrix);
  const SlicedGeometry3D::SizeType & size = grid->GetSize();

  // Plane coordinates of voxel 0 and their change per index step along each axis.
  Point3D origin;
  for (unsigned int r = 0; r < 3; ++r)
  {
    origin[r] = matrix[4 * r + 3];
  }
  double u0, v0, w0;
  this->ToPlane(origin, u0, v0, w0);
  double du[3], dv[3], dw[3];
  unsigned int axis = 2;
  double best = -1.0;
  for (unsigned int a = 0; a < 3; ++a)
  {
    Vector3D step;
    for (unsigned int r = 0; r < 3; ++r)
    {
      step[r] = matrix[4 * r + a];
    }
    du[a] = Dot(step, m_AxisU);
    dv[a] = Dot(step, m_AxisV);
    dw[a] = Dot(step, m_Normal);
    const double closeness = std::abs(dw[a]) / step.GetNorm();
    if (closeness > best)
    {
      best = closeness;
      axis = a;
    }
  }
  ColumnCrossings crossings;
  crossings.Axis = axis;
  crossings.ColumnAxes[0] = axis == 0 ? 1 : 0;
  crossings.ColumnAxes[1] = axis == 2 ? 1 : 2;
  const unsigned int a0 = crossings.ColumnAxes[0];
  const unsigned int a1 = crossings.ColumnAxes[1];
  crossings.ColumnSize[0] = size[a0];
  crossings.ColumnSize[1] = size[a1];
  const double a = du[axis], b = dv[axis], c = dw[axis];
  crossings.LowSide = c > 0 ? -1 : 1;
  const std::size_t columns = static_cast<std::size_t>(size[a0]) * size[a1];
  crossings.Begin.resize(columns);
  crossings.End.resize(columns);
  const auto length = static_cast<std::int32_t>(size[axis]);
  const double tolerance = m_Tolerance;

  // Begin: first index not on the low side, End: first index on the high side, from the positions where H
  // crosses the band's edges (tBegin where H = LowSide * tolerance, tEnd where H = -LowSide * tolerance).
  auto setFromEdges = [&](std::size_t column, double tBegin, double tEnd, double uc, double vc, double wc) {
    double begin = std::ceil(tBegin);
    double end = std::floor(tEnd) + 1.0;
    // The edges are found to far below 1e-6 voxels; only an index that close to one is evaluated.
    auto exactSide = [&](double k) {
      const double h = wc + c * k - this->EvaluateHeight(uc + a * k, vc + b * k);
      return h > tolerance ? 1 : (h < -tolerance ? -1 : 0);
    };
    if (std::abs(tBegin - std::round(tBegin)) < 1e-6)
    {
      const double k = std::round(tBegin);
      begin = exactSide(k) == crossings.LowSide ? k + 1 : k;
    }
    if (std::abs(tEnd - std::round(tEnd)) < 1e-6)
    {
      const double k = std::round(tEnd);
      end = exactSide(k) == -crossings.LowSide ? k : k + 1;
    }
    begin = std::min<double>(std::max(begin, 0.0), length);
    end = std::min<double>(std::max(end, begin), length);
    crossings.Begin[column] = static_cast<std::int32_t>(begin);
    crossings.End[column] = static_cast<std::int32_t>(end);
  };

  // Newton's method for H(t) = target from t; false when it does not settle or H is not monotonic there.
  auto solve = [&](double target, double & t, double & slope, double uc, double vc, double wc) {
    for (int iteration = 0; iteration < 50; ++iteration)
    {
      double gu, gv;
      const double h = this->EvaluateHeightAndGradient(uc + a * t, vc + b * t, gu, gv);
      slope = c - (gu * a + gv * b);
      if (!(slope * c > 0.0))
      {
        return false;
      }
      const double step = (target - (wc + c * t - h)) / slope;
      t += step;
      if (!std::isfinite(t))
      {
        return false;
      }
      // Newton converges quadratically: after a step this short the error is far below the 1e-6 voxels that
      // setFromEdges relies on.
      if (std::abs(step) < 1e-5)
      {
        return true;
      }
    }
    return false;
  };

  // Voxel by voxel, for columns that break the assumption above.
  auto scanColumn = [&](std::size_t column, double uc, double vc, double wc) {
    std::int32_t begin = 0;
    std::int32_t end = length;
    while (begin < length)
    {
      const double h = wc + c * begin - this->EvaluateHeight(uc + a * begin, vc + b * begin);
      if ((h > tolerance ? 1 : (h < -tolerance ? -1 : 0)) != crossings.LowSide)
      {
        break;
      }
      ++begin;
    }
    while (end > begin)
    {
      const double k = end - 1;
      const double h = wc + c * k - this->EvaluateHeight(uc + a * k, vc + b * k);
      if ((h > tolerance ? 1 : (h < -tolerance ? -1 : 0)) != -crossings.LowSide)
      {
        break;
      }
      --end;
    }
    crossings.Begin[column] = begin;
    crossings.End[column] = end;
  };

  double previous = std::numeric_limits<double>::quiet_NaN();
  double beforePrevious = previous;
  double rowStart = previous;
  std::size_t column = 0;
  for (unsigned int j = 0; j < size[a1]; ++j)
  {
    for (unsigned int i = 0; i < size[a0]; ++i, ++column)
    {
      const double uc = u0 + du[a0] * i + du[a1] * j;
      const double vc = v0 + dv[a0] * i + dv[a1] * j;
      const double wc = w0 + dw[a0] * i + dw[a1] * j;
      if (m_Flat)
      {
        setFromEdges(
          column, (crossings.LowSide * tolerance - wc) / c, (-crossings.LowSide * tolerance - wc) / c, uc, vc, wc);
        continue;
      }
      // Start from the neighbours' crossings, extrapolated linearly along the row.
      double t;
      if (i == 0)
      {
        t = std::isnan(rowStart) ? -wc / c : rowStart;
      }
      else
      {
        t = std::isnan(beforePrevious) ? previous : 2.0 * previous - beforePrevious;
      }
      double slope = c;
      bool settled = solve(0.0, t, slope, uc, vc, wc);
      double tBegin = t, tEnd = t;
      if (settled)
      {
        const double band = tolerance / std::abs(slope);
        tBegin = t - band;
        tEnd = t + band;
        // Up to a thousandth of a voxel the band's edges are where the tangent says; a wider band is measured on
        // the curve itself.
        if (band > 1e-3)
        {
          double edgeSlope;
          settled = solve(crossings.LowSide * tolerance, tBegin, edgeSlope, uc, vc, wc) &&
                    solve(-crossings.LowSide * tolerance, tEnd, edgeSlope, uc, vc, wc);
        }
      }
      if (settled)
      {
        setFromEdges(column, tBegin, tEnd, uc, vc, wc);
      }
      else
      {
        scanColumn(column, uc, vc, wc);
        t = std::isnan(previous) ? -wc / c : previous;
      }
      if (i == 0)
      {
        rowStart = t;
        beforePrevious = std::numeric_limits<double>::quiet_NaN();
      }
      else
      {
        beforePrevious = previous;
      }
      previous = t;
    }
  }
  return crossings;
}

namespace
{
void
CheckMask(const Image * grid, const Image * mask)
{
  if (mask == nullptr)
  {
    return;
  }
  if (mask->GetPixelType() != itk::IOComponentEnum::UCHAR || mask->GetSize() != grid->GetSize())
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "DeformablePlane: the mask must be an unsigned 8-bit image of the grid's size",
                                    "DeformablePlane");
  }
}

/** Calls f(row, t, begin, end) for each row of voxels along x, in an order that suits the cache; row is the offset
 *  of the row's first voxel. Either t >= 0: voxel x of the row has the index t in its column, whose crossing is
 *  begin[x], end[x]; or t = -1: the row is classified by ranges, x < *begin low side, x >= *end high side, the rest
 *  on the surface. The second form serves rows that are one column (columns along x) and rows that lie wholly on
 *  one side (all of their columns cross the surface above or below them), which are most rows of a smooth cut. */
template <typename RowFunction>
void
ForEachRow(const DeformablePlane::ColumnCrossings & crossings, const Image::SizeType & size, RowFunction && f)
{
  const std::size_t nx = size[0], ny = size[1], nz = size[2];
  const std::int32_t * begin = crossings.Begin.data();
  const std::int32_t * end = crossings.End.data();
  if (crossings.Axis == 0)
  {
    for (std::size_t z = 0; z < nz; ++z)
    {
      for (std::size_t y = 0; y < ny; ++y)
      {
        f((z * ny + y) * nx, -1, begin + z * ny + y, end + z * ny + y);
      }
    }
    return;
  }
  // Per line of columns (along x), the first crossing and the last end: rows before the one are all on the low
  // side, rows from the other all on the high side.
  const std::size_t lines = crossings.Axis == 2 ? ny : nz;
  std::vector<std::int32_t> lowest(lines), highest(lines);
  for (std::size_t line = 0; line < lines; ++line)
  {
    const std::int32_t * b = begin + line * nx;
    const std::int32_t * e = end + line * nx;
    lowest[line] = *std::min_element(b, b + nx);
    highest[line] = *std::max_element(e, e + nx);
  }
  const auto all = static_cast<std::int32_t>(nx);
  const std::int32_t none = 0;
  auto row = [&](std::size_t offset, std::size_t line, std::size_t t) {
    const auto index = static_cast<std::int32_t>(t);
    if (index < lowest[line])
    {
      f(offset, -1, &all, &all);
    }
    else if (index >= highest[line])
    {
      f(offset, -1, &none, &none);
    }
    else
    {
      f(offset, index, begin + line * nx, end + line * nx);
    }
  };
  if (crossings.Axis == 2)
  {
    // Columns across the slices: a few rows at a time through all slices, so that their crossings stay in the
    // cache instead of being read from memory once per slice.
    constexpr std::size_t block = 8;
    for (std::size_t y0 = 0; y0 < ny; y0 += block)
    {
      const std::size_t y1 = std::min(ny, y0 + block);
      for (std::size_t z = 0; z < nz; ++z)
      {
        for (std::size_t y = y0; y < y1; ++y)
        {
          row((z * ny + y) * nx, y, z);
        }
      }
    }
    return;
  }
  for (std::size_t z = 0; z < nz; ++z)
  {
    for (std::size_t y = 0; y < ny; ++y)
    {
      row((z * ny + y) * nx, z, y);
    }
  }
}
} // namespace

Image::Pointer
DeformablePlane::ComputeSideImage(const Image * grid, const Image * mask) const
{
  if (grid == nullptr || !grid->IsInitialized())
  {
    Refuse(__FILE__, __LINE__, "DeformablePlane: no voxel grid given");
  }
  CheckMask(grid, mask);
  auto sides = Image::New();
  sides->Initialize(
    itk::IOComponentEnum::UCHAR, grid->GetSize(), grid->GetSpacing(), grid->GetOrigin(), grid->GetDirection());
  this->LabelSides(grid, mask, static_cast<unsigned char *>(sides->GetData()), FrontLabel, BackLabel, OnSurfaceLabel);
  return sides;
}

void
DeformablePlane::LabelSides(const Image * grid,
                            const Image * mask,
                            unsigned char * out,
                            unsigned char frontLabel,
                            unsigned char backLabel,
                            unsigned char onSurfaceLabel) const
{
  if (grid == nullptr || !grid->IsInitialized() || out == nullptr)
  {
    Refuse(__FILE__, __LINE__, "DeformablePlane: no voxel grid given");
  }
  CheckMask(grid, mask);
  const ColumnCrossings crossings = this->ComputeColumnCrossings(grid->GetSlicedGeometry(0));
  const auto * in = mask != nullptr ? static_cast<const unsigned char *>(mask->GetData()) : nullptr;
  const unsigned char low = crossings.LowSide > 0 ? frontLabel : backLabel;
  const unsigned char high = crossings.LowSide > 0 ? backLabel : frontLabel;
  const std::size_t nx = grid->GetSize()[0];
  ForEachRow(crossings,
             grid->GetSize(),
             [&](std::size_t row, std::int32_t t, const std::int32_t * begin, const std::int32_t * end) {
               unsigned char * labels = out + row;
               const unsigned char * voxels = in != nullptr ? in + row : nullptr;
               if (t < 0)
               {
                 const auto b = static_cast<std::size_t>(*begin);
                 const auto e = static_cast<std::size_t>(*end);
                 if (voxels == nullptr)
                 {
                   std::fill(labels, labels + b, low);
                   std::fill(labels + b, labels + e, onSurfaceLabel);
                   std::fill(labels + e, labels + nx, high);
                   return;
                 }
                 for (std::size_t x = 0; x < nx; ++x)
                 {
                   const unsigned char label = x < b ? low : (x >= e ? high : onSurfaceLabel);
                   labels[x] = voxels[x] != 0 ? label : labels[x];
                 }
                 return;
               }
               for (std::size_t x = 0; x < nx; ++x)
               {
                 const unsigned char label = t < begin[x] ? low : (t >= end[x] ? high : onSurfaceLabel);
                 labels[x] = (voxels == nullptr || voxels[x] != 0) ? label : labels[x];
               }
             });
}

DeformablePlane::SideCounts
DeformablePlane::CountSides(const Image * mask) const
{
  if (mask == nullptr || !mask->IsInitialized())
  {
    Refuse(__FILE__, __LINE__, "DeformablePlane: no mask given");
  }
  CheckMask(mask, mask);
  const ColumnCrossings crossings = this->ComputeColumnCrossings(mask->GetSlicedGeometry(0));
  const auto * in = static_cast<const unsigned char *>(mask->GetData());
  const std::size_t nx = mask->GetSize()[0];
  std::uint64_t total = 0, lowCount = 0, highCount = 0;
  ForEachRow(crossings,
             mask->GetSize(),
             [&](std::size_t row, std::int32_t t, const std::int32_t * begin, const std::int32_t * end) {
               const unsigned char * voxels = in + row;
               if (t < 0)
               {
                 // Three ranges.
                 const auto b = static_cast<std::size_t>(*begin);
                 const auto e = static_cast<std::size_t>(*end);
                 std::uint64_t rowLow = 0, rowMiddle = 0, rowHigh = 0;
                 for (std::size_t x = 0; x < b; ++x)
                 {
                   rowLow += voxels[x] != 0;
                 }
                 for (std::size_t x = b; x < e; ++x)
                 {
                   rowMiddle += voxels[x] != 0;
                 }
                 for (std::size_t x = e; x < nx; ++x)
                 {
                   rowHigh += voxels[x] != 0;
                 }
                 total += rowLow + rowMiddle + rowHigh;
                 lowCount += rowLow;
                 highCount += rowHigh;
                 return;
               }
               // Branch-free: the voxel's index in its column against its column's crossing.
               std::uint32_t rowTotal = 0, rowLow = 0, rowHigh = 0;
               for (std::size_t x = 0; x < nx; ++x)
               {
                 const std::uint32_t inside = voxels[x] != 0;
                 rowTotal += inside;
                 rowLow += inside & static_cast<std::uint32_t>(t < begin[x]);
                 rowHigh += inside & static_cast<std::uint32_t>(t >= end[x]);
               }
               total += rowTotal;
               lowCount += rowLow;
               highCount += rowHigh;
             });
  SideCounts counts;
  counts.OnSurface = total - lowCount - highCount;
  counts.Front = crossings.LowSide > 0 ? lowCount : highCount;
  counts.Back = crossings.LowSide > 0 ? highCount : lowCount;
  return counts;
}

// -- drawing ----------------------------------------------------------------------------------------------------------

Surface::Pointer
DeformablePlane::CreateSurface(const Geometry3D::BoundsArrayType & worldBox, unsigned int resolution) const
{
  this->CheckControlPoints();
  resolution = std::max(1u, resolution);
  // The box's shadow on the plane: every surface point inside the box lies over it.
  double umin = std::numeric_limits<double>::max(), umax = -umin, vmin = umin, vmax = -umin;
  for (unsigned int corner = 0; corner < 8; ++corner)
  {
    Point3D p;
    p[0] = worldBox[(corner & 1) ? 1 : 0];
    p[1] = worldBox[(corner & 2) ? 3 : 2];
    p[2] = worldBox[(corner & 4) ? 5 : 4];
    double u, v, w;
    this->ToPlane(p, u, v, w);
    umin = std::min(umin, u);
    umax = std::max(umax, u);
    vmin = std::min(vmin, v);
    vmax = std::max(vmax, v);
  }
  auto points = vtkSmartPointer<vtkPoints>::New();
  points->SetDataTypeToDouble();
  auto normals = vtkSmartPointer<vtkFloatArray>::New();
  normals->SetNumberOfComponents(3);
  normals->SetName("Normals");
  const unsigned int nodes = resolution + 1;
  for (unsigned int j = 0; j < nodes; ++j)
  {
    const double v = vmin + (vmax - vmin) * j / resolution;
    for (unsigned int i = 0; i < nodes; ++i)
    {
      const double u = umin + (umax - umin) * i / resolution;
      double gu, gv;
      const double h = this->EvaluateHeightAndGradient(u, v, gu, gv);
      const Point3D p = m_Center + m_AxisU * u + m_AxisV * v + m_Normal * h;
      points->InsertNextPoint(p[0], p[1], p[2]);
      Vector3D normal = m_Normal - m_AxisU * gu - m_AxisV * gv;
      normal.Normalize();
      normals->InsertNextTuple3(normal[0], normal[1], normal[2]);
    }
  }
  auto triangles = vtkSmartPointer<vtkCellArray>::New();
  for (unsigned int j = 0; j < resolution; ++j)
  {
    for (unsigned int i = 0; i < resolution; ++i)
    {
      // Counter-clockwise seen from the front (U x V = N).
      const vtkIdType p00 = j * nodes + i, p10 = p00 + 1, p01 = p00 + nodes, p11 = p01 + 1;
      const vtkIdType first[3] = { p00, p10, p11 };
      const vtkIdType second[3] = { p00, p11, p01 };
      triangles->InsertNextCell(3, first);
      triangles->InsertNextCell(3, second);
    }
  }
  auto grid = vtkSmartPointer<vtkPolyData>::New();
  grid->SetPoints(points);
  grid->SetPolys(triangles);
  grid->GetPointData()->SetNormals(normals);

  auto box = vtkSmartPointer<vtkBox>::New();
  box->SetBounds(worldBox[0], worldBox[1], worldBox[2], worldBox[3], worldBox[4], worldBox[5]);
  auto clip = vtkSmartPointer<vtkClipPolyData>::New();
  clip->SetInputData(grid);
  clip->SetClipFunction(box);
  clip->InsideOutOn(); // keep where the box function is negative: inside
  clip->Update();
  auto clipped = vtkSmartPointer<vtkPolyData>::New();
  clipped->DeepCopy(clip->GetOutput());

  auto surface = Surface::New();
  surface->SetVtkPolyData(clipped);
  return surface;
}

// -- data object ------------------------------------------------------------------------------------------------------

bool
DeformablePlane::IsEmptyTimeStep(TimeStepType t) const
{
  return t != 0 || m_ControlPoints.empty();
}

void
DeformablePlane::Clear()
{
  Superclass::Clear();
  m_ControlPoints.clear();
  m_Flat = true;
  m_NodeU.clear();
  m_NodeV.clear();
  m_Weights.clear();
  m_Initialized = false;
  this->UpdateBounds();
  this->Modified();
}

void
DeformablePlane::Graft(const itk::DataObject * data)
{
  const auto * other = dynamic_cast<const DeformablePlane *>(data);
  if (other == nullptr || other == this)
  {
    return;
  }
  Superclass::Graft(data);
  m_Smoothing = other->m_Smoothing;
  m_Tolerance = other->m_Tolerance;
  m_HasOrganCentroid = other->m_HasOrganCentroid;
  m_OrganCentroid = other->m_OrganCentroid;
  m_ControlPoints = other->m_ControlPoints;
  m_Center = other->m_Center;
  m_Normal = other->m_Normal;
  m_AxisU = other->m_AxisU;
  m_AxisV = other->m_AxisV;
  m_Flat = other->m_Flat;
  m_NodeU = other->m_NodeU;
  m_NodeV = other->m_NodeV;
  m_Weights = other->m_Weights;
  std::copy(other->m_Affine, other->m_Affine + 3, m_Affine);
  m_Initialized = other->m_Initialized;
  this->Modified();
}

itk::LightObject::Pointer
DeformablePlane::InternalClone() const
{
  itk::LightObject::Pointer clone = this->CreateAnother();
  auto * plane = dynamic_cast<DeformablePlane *>(clone.GetPointer());
  if (plane != nullptr)
  {
    plane->Graft(this);
  }
  return clone;
}

void
DeformablePlane::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Control points: " << m_ControlPoints.size() << std::endl;
  for (std::size_t i = 0; i < m_ControlPoints.size(); ++i)
  {
    os << indent.GetNextIndent() << i << ": " << m_ControlPoints[i] << std::endl;
  }
  os << indent << "Smoothing: " << m_Smoothing << std::endl;
  os << indent << "Tolerance: " << m_Tolerance << std::endl;
  os << indent << "Organ centroid: ";
  if (m_HasOrganCentroid)
  {
    os << m_OrganCentroid << std::endl;
  }
  else
  {
    os << "none" << std::endl;
  }
  os << indent << "Center: " << m_Center << std::endl;
  os << indent << "Normal: " << m_Normal << std::endl;
  os << indent << (m_Flat ? "Flat" : "Curved (thin-plate spline)") << std::endl;
}
} // namespace lumo

// lumo::PointSet and its .mps file format (tinyxml2).

#include "lumoFileNames.h"
#include "lumoPointSetIO.h"

#include <tinyxml2.h>

#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <set>

namespace lumo
{
// ---------------------------------------------------------------------------------------------------------------
// PointSet

PointSet::PointSet()
  : m_Points(1)
{}

PointSet::~PointSet() = default;

void
PointSet::InsertPoint(PointIdentifier id, const Point3D & point, TimeStepType t)
{
  if (t >= m_Points.size())
  {
    this->Expand(t + 1);
  }
  m_Points[t][id] = point;
  m_Initialized = true;
  this->CalculateBounds(t);
  this->Modified();
}

PointSet::PointIdentifier
PointSet::AddPoint(const Point3D & point, TimeStepType t)
{
  PointIdentifier id = 0;
  if (t < m_Points.size() && !m_Points[t].empty())
  {
    id = m_Points[t].rbegin()->first + 1;
  }
  this->InsertPoint(id, point, t);
  return id;
}

bool
PointSet::RemovePoint(PointIdentifier id, TimeStepType t)
{
  if (t >= m_Points.size() || m_Points[t].erase(id) == 0)
  {
    return false;
  }
  this->CalculateBounds(t);
  this->Modified();
  return true;
}

bool
PointSet::IndexExists(PointIdentifier id, TimeStepType t) const
{
  return t < m_Points.size() && m_Points[t].count(id) > 0;
}

bool
PointSet::GetPointIfExists(PointIdentifier id, Point3D & point, TimeStepType t) const
{
  if (t >= m_Points.size())
  {
    return false;
  }
  const auto it = m_Points[t].find(id);
  if (it == m_Points[t].end())
  {
    return false;
  }
  point = it->second;
  return true;
}

Point3D
PointSet::GetPoint(PointIdentifier id, TimeStepType t) const
{
  Point3D point;
  if (!this->GetPointIfExists(id, point, t))
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "PointSet::GetPoint: no point " + std::to_string(id) + " at time step " +
                                      std::to_string(t),
                                    "lumo::PointSet::GetPoint");
  }
  return point;
}

std::size_t
PointSet::GetSize(TimeStepType t) const
{
  return t < m_Points.size() ? m_Points[t].size() : 0;
}

const PointSet::PointsContainer &
PointSet::GetPoints(TimeStepType t) const
{
  static const PointsContainer empty;
  return t < m_Points.size() ? m_Points[t] : empty;
}

bool
PointSet::IsEmptyTimeStep(TimeStepType t) const
{
  return this->GetSize(t) == 0;
}

void
PointSet::Expand(unsigned int timeSteps)
{
  Superclass::Expand(timeSteps);
  if (timeSteps > m_Points.size())
  {
    m_Points.resize(timeSteps);
  }
}

void
PointSet::Clear()
{
  m_Points.assign(1, PointsContainer());
  Superclass::Clear();
}

void
PointSet::Graft(const itk::DataObject * data)
{
  const auto * other = dynamic_cast<const PointSet *>(data);
  if (!other || other == this)
  {
    return;
  }
  Superclass::Graft(data);
  m_Points = other->m_Points;
}

void
PointSet::CalculateBounds(TimeStepType t)
{
  Geometry3D * geometry = this->GetGeometry(t);
  if (!geometry || t >= m_Points.size())
  {
    return;
  }
  Geometry3D::BoundsArrayType bounds;
  bounds.Fill(0.0);
  bool first = true;
  for (const auto & entry : m_Points[t])
  {
    for (unsigned int axis = 0; axis < 3; ++axis)
    {
      const ScalarType value = entry.second[axis];
      if (first || value < bounds[2 * axis])
      {
        bounds[2 * axis] = value;
      }
      if (first || value > bounds[2 * axis + 1])
      {
        bounds[2 * axis + 1] = value;
      }
    }
    first = false;
  }
  geometry->SetBounds(bounds);
}

void
PointSet::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  for (TimeStepType t = 0; t < m_Points.size(); ++t)
  {
    os << indent << "Time step " << t << ": " << m_Points[t].size() << " points" << std::endl;
  }
}

// ---------------------------------------------------------------------------------------------------------------
// .mps IO

namespace
{
constexpr unsigned long MaximumTimeSteps = 100000;

std::string
NumberToText(double value)
{
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  return std::string(buffer, result.ptr);
}

class MpsParser
{
public:
  explicit MpsParser(const std::string & fileName)
    : m_FileName(fileName)
  {}

  [[noreturn]] void
  Fail(const tinyxml2::XMLNode * node, const std::string & what) const
  {
    const std::string message = "Malformed point set file '" + m_FileName + "', line " +
                                std::to_string(node ? node->GetLineNum() : 0) + ": " + what;
    throw itk::ExceptionObject(__FILE__, __LINE__, message, "lumo::ReadPointSetFile");
  }

  /** Every attribute of the element is one of the allowed names. */
  void
  CheckAttributes(const tinyxml2::XMLElement * element, std::initializer_list<const char *> allowed) const
  {
    for (const tinyxml2::XMLAttribute * attribute = element->FirstAttribute(); attribute; attribute = attribute->Next())
    {
      bool known = false;
      for (const char * name : allowed)
      {
        known = known || std::string(name) == attribute->Name();
      }
      if (!known)
      {
        Fail(element, std::string("unexpected attribute \"") + attribute->Name() + "\" on <" + element->Name() + ">");
      }
    }
  }

  const char *
  Required(const tinyxml2::XMLElement * element, const char * name) const
  {
    const char * value = element->Attribute(name);
    if (!value)
    {
      Fail(element, std::string("<") + element->Name() + "> without attribute \"" + name + "\"");
    }
    return value;
  }

  unsigned long
  Unsigned(const tinyxml2::XMLElement * element, const char * name, unsigned long maximum) const
  {
    const std::string text = Required(element, name);
    unsigned long value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size() || value > maximum)
    {
      Fail(element,
           std::string("attribute \"") + name + "\" of <" + element->Name() + "> is \"" + text +
             "\", not an integer from 0 to " + std::to_string(maximum));
    }
    return value;
  }

  double
  Coordinate(const tinyxml2::XMLElement * element, const char * name) const
  {
    const std::string text = Required(element, name);
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size() || !std::isfinite(value))
    {
      Fail(element,
           std::string("attribute \"") + name + "\" of <" + element->Name() + "> is \"" + text +
             "\", not a finite number");
    }
    return value;
  }

  /** Only elements of the given name (and white space or comments) below the node. */
  void
  CheckChildren(const tinyxml2::XMLNode * parent, const char * allowed) const
  {
    for (const tinyxml2::XMLNode * child = parent->FirstChild(); child; child = child->NextSibling())
    {
      if (child->ToComment())
      {
        continue;
      }
      const tinyxml2::XMLElement * element = child->ToElement();
      if (!element)
      {
        Fail(child, std::string("unexpected text in <") + parent->Value() + ">");
      }
      if (std::string(element->Name()) != allowed)
      {
        Fail(element,
             std::string("unexpected element <") + element->Name() + "> in <" + parent->Value() + ">, expected <" +
               allowed + ">");
      }
    }
  }

  PointSet::Pointer
  Parse(const tinyxml2::XMLDocument & document) const
  {
    const tinyxml2::XMLElement * root = document.RootElement();
    if (!root || std::string(root->Name()) != "LumoPointSet")
    {
      Fail(root, std::string("the root element is <") + (root ? root->Name() : "") + ">, expected <LumoPointSet>");
    }
    CheckAttributes(root, { "version" });
    const std::string version = Required(root, "version");
    if (version != "1")
    {
      Fail(root, "unsupported version \"" + version + "\", expected \"1\"");
    }
    CheckChildren(root, "TimeStep");

    PointSet::Pointer pointSet = PointSet::New();
    std::set<unsigned long> steps;
    for (const tinyxml2::XMLElement * step = root->FirstChildElement("TimeStep"); step;
         step = step->NextSiblingElement("TimeStep"))
    {
      CheckAttributes(step, { "index" });
      const unsigned long t = Unsigned(step, "index", MaximumTimeSteps - 1);
      if (!steps.insert(t).second)
      {
        Fail(step, "time step " + std::to_string(t) + " appears twice");
      }
      pointSet->Expand(static_cast<unsigned int>(t + 1));
      CheckChildren(step, "Point");
      std::set<unsigned long> ids;
      for (const tinyxml2::XMLElement * point = step->FirstChildElement("Point"); point;
           point = point->NextSiblingElement("Point"))
      {
        CheckAttributes(point, { "id", "x", "y", "z" });
        const unsigned long id = Unsigned(point, "id", std::numeric_limits<PointSet::PointIdentifier>::max());
        if (!ids.insert(id).second)
        {
          Fail(point, "point id " + std::to_string(id) + " appears twice in time step " + std::to_string(t));
        }
        Point3D p;
        p[0] = Coordinate(point, "x");
        p[1] = Coordinate(point, "y");
        p[2] = Coordinate(point, "z");
        if (point->FirstChild())
        {
          Fail(point, "<Point> must be empty");
        }
        pointSet->InsertPoint(static_cast<PointSet::PointIdentifier>(id), p, static_cast<TimeStepType>(t));
      }
    }
    return pointSet;
  }

private:
  std::string m_FileName;
};
} // namespace

bool
CanReadPointSetFile(const std::string & fileName)
{
  return EndsWithNoCase(fileName, ".mps");
}

PointSet::Pointer
ReadPointSetFile(const std::string & fileName)
{
  std::error_code error;
  if (fileName.empty() || !std::filesystem::is_regular_file(fileName, error))
  {
    throw itk::ExceptionObject(__FILE__,
                               __LINE__,
                               "Could not read point set '" + fileName + "': the file does not exist",
                               "lumo::ReadPointSetFile");
  }
  tinyxml2::XMLDocument document;
  if (document.LoadFile(fileName.c_str()) != tinyxml2::XML_SUCCESS)
  {
    const char * detail = document.ErrorStr();
    throw itk::ExceptionObject(__FILE__,
                               __LINE__,
                               "Could not read point set '" + fileName + "': not well-formed XML (" +
                                 (detail ? detail : "unknown error") + ")",
                               "lumo::ReadPointSetFile");
  }
  return MpsParser(fileName).Parse(document);
}

void
WritePointSetFile(const PointSet * pointSet, const std::string & fileName)
{
  if (!pointSet)
  {
    throw itk::ExceptionObject(__FILE__,
                               __LINE__,
                               "Could not write point set '" + fileName + "': the point set is null",
                               "lumo::WritePointSetFile");
  }
  tinyxml2::XMLDocument document;
  document.InsertEndChild(document.NewDeclaration("xml version=\"1.0\" encoding=\"UTF-8\""));
  tinyxml2::XMLElement * root = document.NewElement("LumoPointSet");
  root->SetAttribute("version", "1");
  document.InsertEndChild(root);
  for (TimeStepType t = 0; t < pointSet->GetTimeSteps(); ++t)
  {
    tinyxml2::XMLElement * step = document.NewElement("TimeStep");
    step->SetAttribute("index", std::to_string(t).c_str());
    root->InsertEndChild(step);
    for (const auto & entry : pointSet->GetPoints(t))
    {
      tinyxml2::XMLElement * point = document.NewElement("Point");
      point->SetAttribute("id", std::to_string(entry.first).c_str());
      point->SetAttribute("x", NumberToText(entry.second[0]).c_str());
      point->SetAttribute("y", NumberToText(entry.second[1]).c_str());
      point->SetAttribute("z", NumberToText(entry.second[2]).c_str());
      step->InsertEndChild(point);
    }
  }
  if (document.SaveFile(fileName.c_str()) != tinyxml2::XML_SUCCESS)
  {
    const char * detail = document.ErrorStr();
    throw itk::ExceptionObject(__FILE__,
                               __LINE__,
                               "Could not write point set '" + fileName + "': " + (detail ? detail : "write failed"),
                               "lumo::WritePointSetFile");
  }
}

// ---------------------------------------------------------------------------------------------------------------
// PointSetWriter

void
PointSetWriter::SetInput(PointSet * pointSet)
{
  this->SetInputData(pointSet);
}

PointSet *
PointSetWriter::GetInput()
{
  return dynamic_cast<PointSet *>(this->GetInputData());
}

std::string
PointSetWriter::GetDefaultFilename() const
{
  return "PointSet.mps";
}

std::string
PointSetWriter::GetFileDialogPattern() const
{
  return "Point sets (*.mps)";
}

std::string
PointSetWriter::GetDefaultExtension() const
{
  return ".mps";
}

std::vector<std::string>
PointSetWriter::GetPossibleFileExtensions() const
{
  return { ".mps" };
}

bool
PointSetWriter::CanWriteBaseDataType(const BaseData * data) const
{
  return dynamic_cast<const PointSet *>(data) != nullptr;
}

void
PointSetWriter::DoWrite(BaseData * data)
{
  if (this->CanWriteBaseDataType(data))
  {
    this->SetInputData(data);
    this->Write();
  }
}

void
PointSetWriter::GenerateData()
{
  lumo::WritePointSetFile(this->GetInput(), m_FileName);
}
} // namespace lumo

// The point set file format (.mps, tinyxml2).

#include "lumoPointSetIO.h"

#include "lumoFileNames.h"
#include "lumoPointSet.h"

#include <tinyxml2.h>

#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <set>

namespace lumo
{
namespace
{
constexpr unsigned long MaximumTimeSteps = 100000;
// Time steps a file may leave out (empty) below its largest index.
constexpr unsigned long MaximumEmptyTimeSteps = 1024;

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
    // Every time step up to the largest index is allocated, so indices may run ahead of the <TimeStep> elements of
    // the file only by a bounded gap of empty steps: what is allocated stays in proportion to the file.
    unsigned long stepsInFile = 0;
    for (const tinyxml2::XMLElement * step = root->FirstChildElement("TimeStep"); step;
         step = step->NextSiblingElement("TimeStep"))
    {
      ++stepsInFile;
    }
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
      if (t >= stepsInFile + MaximumEmptyTimeSteps)
      {
        Fail(step,
             "time step " + std::to_string(t) + " lies too far beyond the " + std::to_string(stepsInFile) +
               " time steps of the file (at most " + std::to_string(MaximumEmptyTimeSteps) + " empty steps between)");
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
} // namespace lumo

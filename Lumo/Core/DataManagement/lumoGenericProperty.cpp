// Text forms of the generic property values.

#include "lumoGenericProperty.h"

#include <charconv>

namespace lumo
{
namespace
{
template <typename T>
std::string
ShortestFloatingPoint(T value)
{
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  return std::string(buffer, result.ptr);
}

template <typename TArray>
std::string
BracketedTriple(const TArray & values)
{
  return "[" + ValueToPropertyString(values[0]) + ", " + ValueToPropertyString(values[1]) + ", " +
         ValueToPropertyString(values[2]) + "]";
}
} // namespace

std::string
ValueToPropertyString(bool value)
{
  return value ? "true" : "false";
}

std::string
ValueToPropertyString(int value)
{
  return std::to_string(value);
}

std::string
ValueToPropertyString(float value)
{
  return ShortestFloatingPoint(value);
}

std::string
ValueToPropertyString(double value)
{
  return ShortestFloatingPoint(value);
}

std::string
ValueToPropertyString(const std::string & value)
{
  return value;
}

std::string
ValueToPropertyString(const Vector3D & value)
{
  return BracketedTriple(value);
}

std::string
ValueToPropertyString(const Color & value)
{
  return BracketedTriple(value);
}
} // namespace lumo

#ifndef arboResectionErrors_h
#define arboResectionErrors_h

#include <string>

namespace arbo
{
/** How the inputs of a resection are named in messages (files, or arguments); empty when not given. */
struct ResectionInputNames
{
  std::string organ;
  std::string portal;
  std::string hepatic;
  std::string tumour;
  std::string plane;
};

/** Throws the resection generators' refusal `what` as arbo::Error in the words of arbo resect, charged to the
 *  input it concerns. */
[[noreturn]] void
throwResectionError(const std::string & what, const ResectionInputNames & names);
} // namespace arbo

#endif

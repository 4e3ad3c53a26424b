#include "arboResectionErrors.h"

#include "arboError.h"

namespace arbo
{
void
throwResectionError(const std::string & what, const ResectionInputNames & names)
{
  const std::string gridPrefix = "Tumour mask and organ segmentation differ in ";
  if (what.rfind(gridPrefix, 0) == 0)
  {
    throw Error(names.tumour, "lies on another grid than the organ: they differ in " + what.substr(gridPrefix.size()));
  }
  if (what == "Tumour mask holds no tumour voxel")
  {
    throw Error(names.tumour, "holds no tumour voxel (every voxel is 0)");
  }
  if (what == "Tumour lies entirely outside the organ")
  {
    throw Error(names.tumour, "lies entirely outside the organ");
  }
  if (what == "Portal tree holds no portal vein with centre-line points")
  {
    throw Error(names.portal, "holds no portal vein with centre-line points");
  }
  if (what == "Hepatic tree holds no hepatic vein with centre-line points")
  {
    throw Error(names.hepatic, "holds no hepatic vein with centre-line points");
  }
  if (what == "No vessel is marked to be resected or at risk")
  {
    throw Error(names.hepatic.empty() ? names.portal : names.portal + ", " + names.hepatic,
                "no vessel is marked to be resected or at risk (set resection statuses with \"arbo label ... "
                "--status resect\" or in \"arbo view\")");
  }
  if (what == "The cutting plane misses the organ")
  {
    throw Error(names.plane, "misses the organ: every organ voxel lies on one side of it");
  }
  if (what.rfind("Organ segmentation", 0) == 0)
  {
    throw Error(names.organ, "is not an organ segmentation: it must be a 3-D unsigned 8-bit image");
  }
  throw Error(names.portal, what);
}
} // namespace arbo

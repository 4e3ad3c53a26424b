// Accuracy of the whole extraction road on the liver phantom: for every size and several seeds, the phantom's
// masks go through "arbo extract" and the result is measured against the true trees with "arbo compare", exactly as
// a user would run them. The figures cover the true vessels of radius at least 1.5 voxels. Arguments are passed on to
// every "arbo extract" (for instance "--smooth 2" or "--no-stub"), so that settings can be compared run by run; the
// turning column is the mean angle between consecutive centre-line pieces of the extracted trees (degrees), the
// staircase that smoothing takes away.

#include "arboApplication.h"

#include "ArVesselTree.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

namespace
{
struct Run
{
  int status{ 0 };
  std::string out;
  std::string err;
};

Run
runArbo(std::vector<std::string> arguments)
{
  arguments.insert(arguments.begin(), "arbo");
  std::vector<const char *> argv;
  for (const std::string & argument : arguments)
  {
    argv.push_back(argument.c_str());
  }
  std::ostringstream out;
  std::ostringstream err;
  Run run;
  run.status = arbo::runApplication(static_cast<int>(argv.size()), argv.data(), out, err);
  run.out = out.str();
  run.err = err.str();
  return run;
}

/** The phantom's in-plane spacing per size, the voxel size of the accuracy goals. */
double
voxelSize(const std::string & size)
{
  return size == "small" ? 2.5 : (size == "medium" ? 0.9375 : 0.46875);
}

/** Mean angle (degrees) between consecutive pieces of the centre lines of a .ves file. */
double
meanTurning(const std::string & file)
{
  std::ifstream in(file);
  in.imbue(std::locale::classic());
  LinkedVesselTree tree;
  tree.read(in);
  double sum = 0.0;
  std::size_t count = 0;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree.newPreorderIterator());
  while (it->hasNext())
  {
    const auto & p = it->next()->getPoints();
    for (std::size_t i = 2; i < p.size(); ++i)
    {
      const double a[3] = { p[i - 1].x - p[i - 2].x, p[i - 1].y - p[i - 2].y, p[i - 1].z - p[i - 2].z };
      const double b[3] = { p[i].x - p[i - 1].x, p[i].y - p[i - 1].y, p[i].z - p[i - 1].z };
      const double la = std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]);
      const double lb = std::sqrt(b[0] * b[0] + b[1] * b[1] + b[2] * b[2]);
      if (la > 0.0 && lb > 0.0)
      {
        const double c = (a[0] * b[0] + a[1] * b[1] + a[2] * b[2]) / (la * lb);
        sum += std::acos(std::max(-1.0, std::min(1.0, c))) * 180.0 / M_PI;
        ++count;
      }
    }
  }
  return count > 0 ? sum / static_cast<double>(count) : 0.0;
}

const char *
verdict(bool met)
{
  return met ? "met" : "MISSED";
}
} // namespace

int
main(int argc, char ** argv)
{
  std::vector<std::string> extractOptions;
  for (int i = 1; i < argc; ++i)
  {
    // scripts/bench hands every benchmark its own options.
    if (std::string(argv[i]).rfind("--benchmark", 0) != 0)
    {
      extractOptions.push_back(argv[i]);
    }
  }
  const std::filesystem::path folder =
    std::filesystem::temp_directory_path() /
    ("lumo-accuracy-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
  std::filesystem::create_directories(folder);
  bool allMet = true;
  std::string shown;
  for (const std::string & option : extractOptions)
  {
    shown += " " + option;
  }
  std::printf("Extraction accuracy on the liver phantom (true vessels of radius >= 1.5 voxels), arbo extract%s\n",
              shown.c_str());
  std::printf("%-7s %4s %-8s %8s %10s %14s %16s %12s %8s\n",
              "size",
              "seed",
              "system",
              "recall",
              "precision",
              "mean dist (vx)",
              "radius err (vx)",
              "turning (deg)",
              "goals");
  for (const std::string size : { "small", "medium", "large" })
  {
    const double voxel = voxelSize(size);
    for (int seed : { 1, 2, 3 })
    {
      const std::string dir = (folder / (size + "-" + std::to_string(seed))).string();
      Run phantom = runArbo({ "-q", "phantom", "--out", dir, "--size", size, "--seed", std::to_string(seed) });
      if (phantom.status != 0)
      {
        std::printf("phantom %s seed %d failed: %s", size.c_str(), seed, phantom.err.c_str());
        return 1;
      }
      for (const std::string system : { "portal", "hepatic" })
      {
        const std::string extracted = dir + "/extracted-" + system + ".ves";
        std::vector<std::string> extractArguments{ "-q",     "extract", dir + "/" + system + ".nrrd", "-o", extracted,
                                                   "--type", system };
        extractArguments.insert(extractArguments.end(), extractOptions.begin(), extractOptions.end());
        Run extract = runArbo(extractArguments);
        if (extract.status != 0)
        {
          std::printf("extract %s %s seed %d failed: %s", system.c_str(), size.c_str(), seed, extract.err.c_str());
          return 1;
        }
        std::ostringstream voxelText;
        voxelText << voxel;
        Run compare = runArbo({ "compare",
                                dir + "/truth-" + system + ".ves",
                                extracted,
                                "--json",
                                "--voxel-size",
                                voxelText.str(),
                                "--min-radius-voxels",
                                "1.5" });
        if (compare.status != 0)
        {
          std::printf("compare failed: %s", compare.err.c_str());
          return 1;
        }
        const auto json = nlohmann::json::parse(compare.out);
        const double recall = json["recall"].is_null() ? 0.0 : json["recall"].get<double>();
        const double precision = json["precision"].get<double>();
        const double distance = json["truthToTest"]["meanMillimetres"].get<double>() / voxel;
        const double radius = json["radiusError"]["medianMillimetres"].is_null()
                                ? INFINITY
                                : json["radiusError"]["medianMillimetres"].get<double>() / voxel;
        const bool met = recall >= 0.95 && precision >= 0.95 && distance <= 0.6 && radius <= 0.5;
        allMet = allMet && met;
        std::printf("%-7s %4d %-8s %7.1f%% %9.1f%% %14.3f %16.3f %12.1f %8s\n",
                    size.c_str(),
                    seed,
                    system.c_str(),
                    100.0 * recall,
                    100.0 * precision,
                    distance,
                    radius,
                    meanTurning(extracted),
                    verdict(met));
        std::fflush(stdout);
      }
    }
  }
  std::filesystem::remove_all(folder);
  std::printf("goals (recall >= 95%%, precision >= 95%%, mean centre-line distance <= 0.6 voxel, median radius error "
              "<= 0.5 voxel): %s\n",
              allMet ? "met on every phantom" : "MISSED on some phantom");
  return 0;
}

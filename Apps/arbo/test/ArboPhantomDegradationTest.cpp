#include "ArboTestSupport.h"

#include "lumoImage.h"
#include "lumoImageIO.h"

#include <cmath>

using namespace arbo_test;

namespace
{
std::vector<unsigned char>
voxelsOf(const std::string & file)
{
  lumo::Image::Pointer image = lumo::ReadImageFile(file);
  const auto * data = static_cast<const unsigned char *>(image->GetData());
  return { data, data + image->GetNumberOfVoxels() };
}

/** Voxels set in `a` but not in `b`. */
std::size_t
onlyIn(const std::vector<unsigned char> & a, const std::vector<unsigned char> & b)
{
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
  {
    count += a[i] != 0 && b[i] == 0 ? 1 : 0;
  }
  return count;
}

std::size_t
common(const std::vector<unsigned char> & a, const std::vector<unsigned char> & b)
{
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
  {
    count += a[i] != 0 && b[i] != 0 ? 1 : 0;
  }
  return count;
}

/** 26-connected parts of the voxels set in `a` but not in `b`, in a volume of the small phantom's size. */
std::size_t
partsOnlyIn(const std::vector<unsigned char> & a, const std::vector<unsigned char> & b)
{
  const long size[3] = { 96, 96, 64 };
  std::vector<unsigned char> seen(a.size(), 0);
  std::size_t parts = 0;
  for (std::size_t start = 0; start < a.size(); ++start)
  {
    if (a[start] == 0 || b[start] != 0 || seen[start] != 0)
      continue;
    ++parts;
    std::vector<std::size_t> stack{ start };
    seen[start] = 1;
    while (!stack.empty())
    {
      const std::size_t v = stack.back();
      stack.pop_back();
      const long x = static_cast<long>(v) % size[0];
      const long y = static_cast<long>(v) / size[0] % size[1];
      const long z = static_cast<long>(v) / (size[0] * size[1]);
      for (long dz = -1; dz <= 1; ++dz)
        for (long dy = -1; dy <= 1; ++dy)
          for (long dx = -1; dx <= 1; ++dx)
          {
            if (x + dx < 0 || y + dy < 0 || z + dz < 0 || x + dx >= size[0] || y + dy >= size[1] || z + dz >= size[2])
              continue;
            const std::size_t n = static_cast<std::size_t>(((z + dz) * size[1] + y + dy) * size[0] + x + dx);
            if (a[n] != 0 && b[n] == 0 && seen[n] == 0)
            {
              seen[n] = 1;
              stack.push_back(n);
            }
          }
    }
  }
  return parts;
}
} // namespace

class ArboPhantomDegradation : public ArboTest
{
protected:
  std::string
  phantom(const std::string & name, std::vector<std::string> options, const std::string & seed = "2")
  {
    std::vector<std::string> arguments{ "-q", "phantom", "--out", path(name), "--seed", seed };
    arguments.insert(arguments.end(), options.begin(), options.end());
    ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    return path(name);
  }
};

TEST_F(ArboPhantomDegradation, EachOptionDoesWhatItSaysAndTheTruthStays)
{
  const std::string clean = phantom("clean", {});
  const auto portal = voxelsOf(clean + "/portal.nrrd");
  const auto hepatic = voxelsOf(clean + "/hepatic.nrrd");

  // Thick slices: the same field of view in slices of 6 mm; the true trees are the same.
  const std::string thick = phantom("thick", { "--slice", "6" });
  lumo::Image::Pointer thickOrgan = lumo::ReadImageFile(thick + "/organ.nrrd");
  EXPECT_EQ(thickOrgan->GetSize()[2], 32u);
  EXPECT_EQ(thickOrgan->GetSpacing()[2], 6.0);
  EXPECT_EQ(readFile(thick + "/truth-portal.ves"), readFile(clean + "/truth-portal.ves"));

  // Noise flips boundary voxels only, about the share asked for.
  const std::string noisy = phantom("noisy", { "--noise", "10" });
  const auto noisyPortal = voxelsOf(noisy + "/portal.nrrd");
  const std::size_t removed = onlyIn(portal, noisyPortal);
  const std::size_t added = onlyIn(noisyPortal, portal);
  EXPECT_GT(removed, 0u);
  EXPECT_GT(added, 0u);
  std::size_t boundary = 0;
  for (std::size_t i = 0; i < portal.size(); ++i)
  {
    const long x = static_cast<long>(i % 96);
    const long y = static_cast<long>(i / 96 % 96);
    const long z = static_cast<long>(i / (96 * 96));
    bool differs = false;
    const long steps[6][3] = { { -1, 0, 0 }, { 1, 0, 0 }, { 0, -1, 0 }, { 0, 1, 0 }, { 0, 0, -1 }, { 0, 0, 1 } };
    for (const auto & s : steps)
    {
      const long nx = x + s[0], ny = y + s[1], nz = z + s[2];
      if (nx >= 0 && ny >= 0 && nz >= 0 && nx < 96 && ny < 96 && nz < 64)
        differs = differs || portal[static_cast<std::size_t>((nz * 96 + ny) * 96 + nx)] != portal[i];
    }
    boundary += differs ? 1 : 0;
    // A flipped voxel was a boundary voxel.
    if (portal[i] != noisyPortal[i])
    {
      EXPECT_TRUE(differs) << i;
    }
  }
  // 10 % of the boundary, within four standard deviations of the binomial count.
  const double expected = 0.1 * static_cast<double>(boundary);
  EXPECT_NEAR(static_cast<double>(removed + added), expected, 4.0 * std::sqrt(expected * 0.9));

  // Holes only take voxels away.
  const std::string holes = phantom("holes", { "--holes", "10" });
  const auto holedPortal = voxelsOf(holes + "/portal.nrrd");
  EXPECT_EQ(onlyIn(holedPortal, portal), 0u);
  EXPECT_GT(onlyIn(portal, holedPortal), 0u);

  // Fragments only add voxels, in as many separate pieces as asked for, away from the vessels.
  const std::string fragments = phantom("fragments", { "--fragments", "4" });
  const auto fragmentedPortal = voxelsOf(fragments + "/portal.nrrd");
  EXPECT_EQ(onlyIn(portal, fragmentedPortal), 0u);
  EXPECT_EQ(partsOnlyIn(fragmentedPortal, portal), 4u);
  EXPECT_EQ(partsOnlyIn(voxelsOf(fragments + "/hepatic.nrrd"), hepatic), 4u);

  // Touching: each vessel mask reaches further into the other than the clean ones (which share a few voxels where
  // coarse voxels hold both).
  const std::size_t shared = common(portal, hepatic);
  const std::string touching = phantom("touching", { "--touching", "2" });
  const auto touchingPortal = voxelsOf(touching + "/portal.nrrd");
  EXPECT_EQ(onlyIn(portal, touchingPortal), 0u);
  EXPECT_GT(onlyIn(touchingPortal, portal), 0u);
  EXPECT_GT(common(touchingPortal, hepatic), shared);
  EXPECT_GT(common(voxelsOf(touching + "/hepatic.nrrd"), portal), shared);

  // Without options the phantom is the clean one.
  const std::string zero = phantom("zero", { "--noise", "0", "--holes", "0", "--fragments", "0", "--touching", "0" });
  for (const char * file : { "/organ.nrrd", "/portal.nrrd", "/hepatic.nrrd" })
    EXPECT_EQ(readFile(zero + file), readFile(clean + file)) << file;
}

TEST_F(ArboPhantomDegradation, TheSameSeedGivesTheSameDamage)
{
  const std::vector<std::string> all{ "--noise", "5", "--holes", "5", "--fragments", "3", "--touching", "2" };
  const std::string a = phantom("a", all);
  const std::string b = phantom("b", all);
  const std::string other = phantom("other", all, "3");
  for (const char * file : { "/organ.nrrd", "/portal.nrrd", "/hepatic.nrrd" })
  {
    EXPECT_EQ(readFile(a + file), readFile(b + file)) << file;
    EXPECT_NE(readFile(a + file), readFile(other + file)) << file;
  }
}

TEST_F(ArboPhantomDegradation, BadValuesAreRefused)
{
  for (const std::vector<std::string> & bad : std::vector<std::vector<std::string>>{
         { "--noise", "101" }, { "--noise", "-1" }, { "--slice", "0" }, { "--holes", "many" } })
  {
    std::vector<std::string> arguments{ "phantom", "--out", path("bad") };
    arguments.insert(arguments.end(), bad.begin(), bad.end());
    ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 2) << bad[0] << " " << bad[1];
    EXPECT_NE(run.err.find(bad[0]), std::string::npos) << run.err;
  }
  EXPECT_FALSE(std::filesystem::exists(path("bad")));
}

#ifndef HostileInputs_h
#define HostileInputs_h

// Damaged and hostile files of every format the project reads, in one place: truncated and garbage vessel tree
// text, counts that promise more than the file holds, Pic headers announcing gigabytes, image headers promising
// 20 GB, malformed point sets, scenes nested too deep or with a colour table of two billion entries. Each reader's
// own tests check its messages; the bounded-resources test runs all of them under an address-space limit.

#include <cstdint>
#include <string>
#include <vector>

namespace lumotest
{
struct HostileInput
{
  const char * name;
  /** File name to write it under: the ending chooses the reader. */
  std::string fileName;
  std::string content;
};

namespace hostile_detail
{
inline void
putLittleEndian(std::string & bytes, std::uint64_t value, int size)
{
  for (int i = 0; i < size; ++i)
  {
    bytes.push_back(static_cast<char>((value >> (8 * i)) & 0xff));
  }
}

/** A Pic header of unsigned 8-bit voxels with the given sizes and voxel byte count, no tags, then `data`. */
inline std::string
picFile(const std::vector<std::uint32_t> & sizes, std::uint64_t voxelBytes, const std::string & data)
{
  std::string bytes("\x89LPIC\r\n\x1a", 8);
  putLittleEndian(bytes, 1, 2);
  putLittleEndian(bytes, 0, 2);
  putLittleEndian(bytes, 4, 4);
  putLittleEndian(bytes, 8, 4);
  putLittleEndian(bytes, sizes.size(), 4);
  for (const std::uint32_t size : sizes)
  {
    putLittleEndian(bytes, size, 4);
  }
  putLittleEndian(bytes, 0, 4);
  putLittleEndian(bytes, 0, 4);
  putLittleEndian(bytes, voxelBytes, 8);
  return bytes + data;
}

inline std::string
nrrd(const std::string & sizes, const std::string & encoding, const std::string & data)
{
  return "NRRD0004\ntype: unsigned char\ndimension: 3\nsizes: " + sizes + "\nencoding: " + encoding + "\n\n" + data;
}

inline std::string
scene(const std::string & body)
{
  return "<?xml version=\"1.0\"?>\n<Version FileVersion=\"1\"/>\n" + body;
}
} // namespace hostile_detail

/** Vessel tree text that the .ves reader must refuse. */
inline std::vector<HostileInput>
hostileVesselTrees()
{
  const std::string header = "VALD-KRN 2000 Tree\n";
  return {
    { "empty", "empty.ves", "" },
    { "garbage", "garbage.ves", "not a tree\n" },
    { "binary", "binary.ves", "\x01\x02\x03 \xff\xfe { {" },
    { "truncated", "truncated.ves", header + "{ \n    { t f 1 2 1    1 -1 3  [ 1 2 3 4 ]  [ 1 2" },
    { "negative point count", "negative.ves", "a b c { { t f 1 2 1 1 -1 -7 } - }" },
    { "fewer points than counted", "fewer.ves", "a b c { { t f 1 2 1 1 -1 2 [ 1 2 3 4 ] } - }" },
    { "huge point count", "huge.ves", header + "{ { t f 1 2 1 1 -1 4294967295 [ 1 2 3 4 ] [ 5 6 7 8 ] } - }" },
    { "unbalanced children", "unbalanced.ves", "a b c { { t f 1 2 1 1 -1 0 } < < < < <" },
    { "a million open levels", "deep.ves", header + std::string(2000000, '{') },
  };
}

/** Image files whose header promises far more than they hold, or damaged Pic files. */
inline std::vector<HostileInput>
hostileImages()
{
  using namespace hostile_detail;
  const std::string gzipOfZeros("\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03\x63\x60\x18\x05\x00\x00\xc2\x85\x0b\xaa"
                                "\x00\x01\x00\x00",
                                24);
  return {
    { "NRRD promising 20 GB raw", "big.nrrd", nrrd("4000 4000 1250", "raw", std::string(40, '\0')) },
    { "NRRD promising 20 GB gzip", "bigz.nrrd", nrrd("4000 4000 1250", "gzip", gzipOfZeros) },
    { "NRRD with negative sizes", "negative.nrrd", nrrd("-4 4 4", "raw", std::string(64, '\0')) },
    { "NRRD with a missing data file",
      "detached.nhdr",
      "NRRD0004\ntype: unsigned char\ndimension: 3\nsizes: 4000 4000 1250\nencoding: raw\ndata file: nowhere.raw\n\n" },
    { "MetaImage promising 20 GB",
      "big.mha",
      "ObjectType = Image\nNDims = 3\nDimSize = 4000 4000 1250\nElementType = MET_UCHAR\nElementDataFile = LOCAL\n" +
        std::string(40, '\0') },
    { "Pic announcing 1000^3 bytes with 2 present", "big.pic", picFile({ 1000, 1000, 1000 }, 1000000000, "ab") },
    { "Pic announcing more than 16 GiB", "huge.pic", picFile({ 65536, 65536, 65536 }, 1ull << 48, "") },
    { "Pic with a wrong voxel count", "mismatch.pic", picFile({ 2, 2, 2 }, 9, std::string(9, '\0')) },
    { "Pic cut in its header", "cut.pic", picFile({ 2, 2, 2 }, 8, "").substr(0, 20) },
  };
}

/** Point set files (.mps) that the reader must refuse. */
inline std::vector<HostileInput>
hostilePointSets()
{
  const std::string head = "<?xml version=\"1.0\"?>\n<LumoPointSet version=\"1\">\n";
  return {
    { "point set with a huge time step",
      "steps.mps",
      head + "<TimeStep index=\"4294967295\"><Point id=\"0\" x=\"1\" y=\"2\" z=\"3\"/></TimeStep></LumoPointSet>\n" },
    { "point set with a huge point id",
      "ids.mps",
      head + "<TimeStep index=\"0\"><Point id=\"18446744073709551616\" x=\"1\" y=\"2\" z=\"3\"/></TimeStep>"
             "</LumoPointSet>\n" },
    { "point set cut short", "cut.mps", head + "<TimeStep index=\"0\"><Point id=\"0\" x=\"1\"" },
  };
}

/** Scene files (.rs) that loading must refuse, or load without what is broken in them. */
inline std::vector<HostileInput>
hostileScenes()
{
  using namespace hostile_detail;
  std::string deep = "<SceneObject>";
  for (int i = 0; i < 200; ++i)
  {
    deep += "<a>";
  }
  for (int i = 0; i < 200; ++i)
  {
    deep += "</a>";
  }
  return {
    { "scene of a later version", "future.rs", "<?xml version=\"1.0\"?>\n<Version FileVersion=\"2\"/>\n" },
    { "scene nested too deep", "deep.rs", scene(deep + "</SceneObject>\n") },
    { "scene cut short", "cut.rs", scene("<SceneObject><properties") },
    { "scene colour table of two billion colours",
      "table.rs",
      scene("<SceneObject DependenyUID=\"A\"><PropertyList><StringProperty value=\"table\" name=\"name\"/>"
            "<LookupTableProperty name=\"LookupTable\" NumberOfColors=\"2147483647\" Scale=\"0\" Ramp=\"1\">"
            "<HueRange min=\"0\" max=\"1\"/><ValueRange min=\"0\" max=\"1\"/><SaturationRange min=\"0\" "
            "max=\"1\"/><AlphaRange min=\"0\" max=\"1\"/><TableRange min=\"0\" max=\"1\"/><Table><RgbaColor "
            "R=\"1\" G=\"0\" B=\"0\" A=\"1\"/></Table></LookupTableProperty></PropertyList></SceneObject>\n") },
  };
}

/** Vessel tree lookup table property XML that the serializer must refuse. */
inline std::vector<HostileInput>
hostileLookupTableXml()
{
  return {
    { "colour vector of two billion entries",
      "table.xml",
      "<VesselTreeLookupTable><ColorBySegment size=\"2147483647\"><rgba index=\"0\" r=\"1\" g=\"0\" b=\"0\" "
      "a=\"1\"/></ColorBySegment></VesselTreeLookupTable>" },
    { "negative size", "negative.xml", "<VesselTreeLookupTable><ColorByType size=\"-1\"/></VesselTreeLookupTable>" },
    { "index past the size",
      "index.xml",
      "<VesselTreeLookupTable><ColorByType size=\"2\"><rgba index=\"2\" r=\"1\" g=\"0\" b=\"0\" a=\"1\"/>"
      "</ColorByType></VesselTreeLookupTable>" },
  };
}
} // namespace lumotest

#endif

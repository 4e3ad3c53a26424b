#include "ArboTestSupport.h"

#include "lumoResectionProposalDescriptorPropertySerializer.h"

#include <nlohmann/json.hpp>

using namespace arbo_test;
using Names = std::vector<std::string>;

namespace
{
const std::string malformedTree = "VALD-KRN 2000 Tree\n{ \n    { t f 1 2 1    1 -1 3  [ 1 2 3 4 ]  [ 1 2";
}

TEST(ArboUsage, HelpAndVersionExitZero)
{
  ArboRun help = runArbo({ "--help" });
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("info"), std::string::npos);
  EXPECT_NE(help.out.find("convert"), std::string::npos);
  EXPECT_NE(help.out.find("Exit status"), std::string::npos);
  EXPECT_EQ(help.err, "");

  ArboRun infoHelp = runArbo({ "info", "--help" });
  EXPECT_EQ(infoHelp.status, 0);
  EXPECT_NE(infoHelp.out.find("--json"), std::string::npos);

  ArboRun version = runArbo({ "--version" });
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out.rfind("arbo ", 0), 0u);
}

TEST(ArboUsage, BadUsageExitsTwoWithAHint)
{
  for (const std::vector<std::string> & arguments : std::vector<std::vector<std::string>>{
         {}, { "frobnicate" }, { "info" }, { "info", "a.ves", "--colour" }, { "convert", "a.ves" } })
  {
    ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 2) << run.err;
    EXPECT_EQ(run.err.rfind("arbo: ", 0), 0u) << run.err;
    EXPECT_NE(run.err.find("Run \"arbo --help\" for usage."), std::string::npos);
    EXPECT_EQ(run.out, "");
  }
}

class ArboInfo : public ArboTest
{};

TEST_F(ArboInfo, DescribesTheSampleTree)
{
  const std::string sample = dataFile("sample-portal.ves");
  ArboRun run = runArbo({ "info", sample });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out,
            sample + ": vessel tree\n"
                     "  vessels:              29\n"
                     "  points:               190\n"
                     "  depth:                5\n"
                     "  bifurcations:         12\n"
                     "  centre-line length:   884.0 mm\n"
                     "  blood vessel types:\n"
                     "    Portal vein (2)                         29\n"
                     "  segments:\n"
                     "    S_Undefined (1)                          6\n"
                     "    S_I (2)                                  1\n"
                     "    S_II (3)                                 3\n"
                     "    S_III (4)                                3\n"
                     "    S_IVa (5)                                2\n"
                     "    S_IVb (6)                                2\n"
                     "    S_V (7)                                  3\n"
                     "    S_VI (8)                                 3\n"
                     "    S_VII (9)                                3\n"
                     "    S_VIII (10)                              3\n"
                     "  resection status:\n"
                     "    Not to be resected (2)                  21\n"
                     "    To be resected (3)                       7\n"
                     "    Area at risk (4)                         1\n");
}

TEST_F(ArboInfo, JsonCarriesTheSameFigures)
{
  ArboRun run = runArbo({ "info", dataFile("sample-portal.ves"), "--json" });
  ASSERT_EQ(run.status, 0) << run.err;
  const auto json = nlohmann::json::parse(run.out);
  EXPECT_EQ(json["kind"], "vessel tree");
  EXPECT_EQ(json["vessels"], 29);
  EXPECT_EQ(json["points"], 190);
  EXPECT_EQ(json["depth"], 5);
  EXPECT_EQ(json["bloodVesselTypes"][0]["name"], "Portal vein");
  EXPECT_EQ(json["bloodVesselTypes"][0]["vessels"], 29);
  EXPECT_EQ(json["resectionStatus"][1]["name"], "To be resected");
  EXPECT_EQ(json["resectionStatus"][1]["vessels"], 7);
  EXPECT_EQ(json["segments"].size(), 10u);
}

TEST_F(ArboInfo, BadFilesExitOneWithOneLineNamingTheFile)
{
  writeFile(path("broken.ves"), malformedTree);
  writeFile(path("empty.ves"), "");
  writeFile(path("tree.txt"), "some text");
  std::filesystem::create_directories(path("folder.ves"));
  const std::vector<std::pair<std::string, std::string>> cases = {
    { path("broken.ves"), "is not a valid vessel tree file (malformed or truncated text)" },
    { path("empty.ves"), "is not a valid vessel tree file (malformed or truncated text)" },
    { path("missing.ves"), "cannot be opened (No such file or directory)" },
    { path("folder.ves"), "is a folder, not a file" },
    { path("tree.txt"),
      "unsupported file type '.txt' (readable: .ves, .nrrd, .nhdr, .nii, .nii.gz, .mhd, .mha, "
      ".pic, .pic.gz, .vtp, .vtk, .stl, .obj, .mps)" },
  };
  for (const auto & [file, message] : cases)
  {
    ArboRun run = runArbo({ "info", file });
    EXPECT_EQ(run.status, 1) << file;
    EXPECT_EQ(run.err, "arbo: " + file + ": " + message + "\n");
    EXPECT_EQ(run.out, "");
  }
}

class ArboConvert : public ArboTest
{};

TEST_F(ArboConvert, TheSampleIsAlreadyInCanonicalForm)
{
  ArboRun run = runArbo({ "convert", dataFile("sample-portal.ves"), path("copy.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "arbo: wrote " + path("copy.ves") + "\n");
  EXPECT_EQ(readFile(path("copy.ves")), readFile(dataFile("sample-portal.ves")));
  EXPECT_EQ(files(), (Names{ "copy.ves" }));

  ArboRun quiet = runArbo({ "--quiet", "convert", dataFile("sample-portal.ves"), path("copy.ves") });
  EXPECT_EQ(quiet.status, 0);
  EXPECT_EQ(quiet.err, "");
}

TEST_F(ArboConvert, AnyLayoutIsRewrittenCanonically)
{
  writeFile(path("compact.ves"), "VALD-KRN 2000 Tree\n{{t f 5 2 3 7 -1 1[1 2.50 -3 0.5]}-}");
  ArboRun run = runArbo({ "-q", "convert", path("compact.ves"), path("canonical.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(readFile(path("canonical.ves")),
            "VALD-KRN 2000 Tree\n{ \n    { t f 5 2 3    7 -1 1  [ 1 2.5 -3 0.5 ]  }  -\n}\n");
}

TEST_F(ArboConvert, AnUnreadableInputCreatesNoOutputAndKeepsAnOldOne)
{
  writeFile(path("broken.ves"), malformedTree);
  ArboRun run = runArbo({ "convert", path("broken.ves"), path("new.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: " + path("broken.ves") + ": is not a valid vessel tree file (malformed or truncated text)\n");
  EXPECT_EQ(files(), (Names{ "broken.ves" }));

  writeFile(path("old.ves"), "earlier content");
  run = runArbo({ "convert", path("broken.ves"), path("old.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(readFile(path("old.ves")), "earlier content");
  EXPECT_EQ(files(), (Names{ "broken.ves", "old.ves" }));
}

TEST_F(ArboConvert, OutputProblemsAreReportedAndLeaveNothingBehind)
{
  const std::string sample = dataFile("sample-portal.ves");
  ArboRun noFolder = runArbo({ "convert", sample, path("no/such/folder/out.ves") });
  EXPECT_EQ(noFolder.status, 1);
  EXPECT_EQ(noFolder.err,
            "arbo: " + path("no/such/folder/out.ves") + ": the folder " + path("no/such/folder") + " does not exist\n");

  ArboRun wrongType = runArbo({ "convert", sample, path("out.png") });
  EXPECT_EQ(wrongType.status, 1);
  EXPECT_EQ(wrongType.err,
            "arbo: " + path("out.png") + ": cannot write a vessel tree as '.png' (supported: .ves, .vtp)\n");

  std::filesystem::create_directories(path("taken.ves"));
  ArboRun folder = runArbo({ "convert", sample, path("taken.ves") });
  EXPECT_EQ(folder.status, 1);
  EXPECT_EQ(folder.err, "arbo: " + path("taken.ves") + ": is a folder, not a file\n");
  EXPECT_EQ(files(), (Names{ "taken.ves" }));
}

namespace
{
/** A proposal of three parts, written out of label order. */
void
writeProposal(const std::string & file)
{
  using Property = lumo::ResectionProposalDescriptorProperty;
  auto proposal = Property::New();
  proposal->SetResectionProposalName("Risk analysis 10 mm");
  auto part = [](std::int32_t label, const char * name, Property::ResectionType type, float volume, int surface) {
    Property::LabelDescriptor d;
    d.Label = label;
    d.Name = name;
    d.ResectionType = type;
    d.Volume = volume;
    d.SurfaceOutputIndex = surface;
    d.Color[0] = 0.5f;
    d.Color[1] = 0.25f;
    d.Color[2] = 1.0f;
    return d;
  };
  proposal->AddLabelDescriptor(part(4, "At risk", Property::AreaAtRisk, 12.25f, 2));
  proposal->AddLabelDescriptor(part(2, "Remnant", Property::NotToBeResected, 1234.5f, 0));
  proposal->AddLabelDescriptor(part(3, "Resected", Property::ToBeResected, 310.0f, 1));
  lumo::WriteResectionProposalDescriptorFile(*proposal, file);
}
} // namespace

TEST_F(ArboInfo, DescribesAResectionProposal)
{
  writeProposal(path("cut.proposal.xml"));
  ArboRun run = runArbo({ "info", path("cut.proposal.xml") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out,
            path("cut.proposal.xml") + ": resection proposal\n"
                                       "  name:          Risk analysis 10 mm\n"
                                       "  labels:        3\n"
                                       "    2 Remnant: NotToBeResected, 1234.5 ml, surface 0\n"
                                       "    3 Resected: ToBeResected, 310 ml, surface 1\n"
                                       "    4 At risk: AreaAtRisk, 12.25 ml, surface 2\n");

  run = runArbo({ "info", path("cut.proposal.xml"), "--json" });
  ASSERT_EQ(run.status, 0) << run.err;
  const auto json = nlohmann::json::parse(run.out);
  EXPECT_EQ(json["kind"], "resection proposal");
  EXPECT_EQ(json["name"], "Risk analysis 10 mm");
  ASSERT_EQ(json["labels"].size(), 3u);
  EXPECT_EQ(json["labels"][1]["label"], 3);
  EXPECT_EQ(json["labels"][1]["resectionType"], "ToBeResected");
  EXPECT_EQ(json["labels"][1]["resectionTypeValue"], 3);
  EXPECT_EQ(json["labels"][1]["volumeMillilitres"], 310.0);
  EXPECT_EQ(json["labels"][1]["surfaceIndex"], 1);
  EXPECT_EQ(json["labels"][1]["color"], nlohmann::json({ 0.5, 0.25, 1.0 }));
  EXPECT_EQ(json["labels"][2]["surfaceIndex"], 2);
}

TEST_F(ArboInfo, BadProposalFilesExitOneWithOneLine)
{
  writeFile(path("text.proposal.xml"), "not xml <");
  writeFile(path("other.PROPOSAL.XML"), "<Scene/>\n");
  const std::vector<std::pair<std::string, std::string>> cases = {
    { path("missing.proposal.xml"), "is not a readable resection proposal (no such file)" },
    { path("other.PROPOSAL.XML"),
      "is not a readable resection proposal (its root element is Scene, not ResectionProposalDescriptorProperty)" },
  };
  for (const auto & [file, message] : cases)
  {
    const ArboRun run = runArbo({ "info", file });
    EXPECT_EQ(run.status, 1) << file;
    EXPECT_EQ(run.err, "arbo: " + file + ": " + message + "\n");
    EXPECT_EQ(run.out, "");
  }
  const ArboRun run = runArbo({ "info", path("text.proposal.xml") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err.rfind("arbo: " + path("text.proposal.xml") +
                            ": is not a readable resection proposal (not an XML "
                            "document (",
                          0),
            0u)
    << run.err;
  EXPECT_EQ(files(), (std::vector<std::string>{ "other.PROPOSAL.XML", "text.proposal.xml" }));
}

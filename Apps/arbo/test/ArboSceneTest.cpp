// arbo scene create / info.
#include "ArboTestSupport.h"

#include <nlohmann/json.hpp>

using namespace arbo_test;
using Json = nlohmann::json;

class ArboScene : public ArboTest
{};

TEST_F(ArboScene, CreateThenInfoDescribesEveryNode)
{
  std::filesystem::copy_file(dataFile("sample-portal.ves"), path("tree.ves"));
  ArboRun run = runArbo({ "scene",
                          "create",
                          path("out/plan.rs"),
                          "portal=" + path("tree.ves"),
                          path("tree.ves"),
                          "--source",
                          "portal=tree" });
  // The folder must exist: the scene is not written anywhere else.
  EXPECT_EQ(run.status, 1);
  std::filesystem::create_directory(path("out"));
  run = runArbo({ "scene",
                  "create",
                  path("out/plan.rs"),
                  "portal=" + path("tree.ves"),
                  path("tree.ves"),
                  "--source",
                  "portal=tree" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, path("out/plan.rs") + ": scene of 2 nodes\n");

  run = runArbo({ "scene", "info", path("out/plan.rs"), "--json" });
  ASSERT_EQ(run.status, 0) << run.err;
  const Json json = Json::parse(run.out);
  ASSERT_EQ(json["nodes"].size(), 2u);
  EXPECT_EQ(json["nodes"][0]["name"], "tree"); // parents first
  EXPECT_EQ(json["nodes"][1]["name"], "portal");
  EXPECT_EQ(json["nodes"][1]["type"], "vesseltree");
  EXPECT_EQ(json["nodes"][1]["file"], "portal.ves");
  EXPECT_EQ(json["nodes"][1]["sources"], Json::array({ json["nodes"][0]["id"] }));
  EXPECT_EQ(json["nodes"][1]["loaded"], true);
  EXPECT_EQ(json["nodes"][1]["placed"], true);
  EXPECT_EQ(json["nodes"][1]["properties"]["VesselTreeLookupTable"],
            "vessel tree colours: 5 types, 28 segments, 5 resection states");
  EXPECT_TRUE(json["problems"].empty());
}

TEST_F(ArboScene, InfoNamesNodesThatDidNotLoadOrCouldNotBePlaced)
{
  writeFile(path("plan.rs"),
            "<?xml version=\"1.0\"?>\n<Version FileVersion=\"1\"/>\n"
            "<SceneObject type=\"vesseltree\" file=\"../escape.ves\" DependenyUID=\"A\"><PropertyList>"
            "<StringProperty value=\"portal\" name=\"name\"/></PropertyList></SceneObject>\n"
            "<SceneObject DependenyUID=\"B\"><Source UID=\"GONE\"/><PropertyList>"
            "<StringProperty value=\"cut\" name=\"name\"/></PropertyList></SceneObject>\n");
  ArboRun run = runArbo({ "scene", "info", path("plan.rs") });
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("arbo: " + path("plan.rs") + ": node 'portal' (A): its data did not load\n"),
            std::string::npos)
    << run.err;
  EXPECT_NE(run.err.find("arbo: " + path("plan.rs") + ": node 'cut' (B): could not be placed (a source is missing)\n"),
            std::string::npos)
    << run.err;
  EXPECT_NE(run.err.find("the path holds a '..' component"), std::string::npos) << run.err;
  EXPECT_NE(run.out.find("  portal (A): vesseltree, file ../escape.ves (not loaded) | name = portal\n"),
            std::string::npos)
    << run.out;
  EXPECT_NE(run.out.find("  cut (B): no data type, file - (not placed) | sources: GONE | name = cut\n"),
            std::string::npos)
    << run.out;
}

TEST_F(ArboScene, RefusedScenesAndBadArguments)
{
  writeFile(path("v2.rs"), "<?xml version=\"1.0\"?>\n<Version FileVersion=\"2\"/>\n<SceneObject/>\n");
  ArboRun run = runArbo({ "scene", "info", path("v2.rs") });
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find(": Version of scene file (2) not supported.\n"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("arbo: " + path("v2.rs") + ": is not a scene that can be loaded\n"), std::string::npos)
    << run.err;
  EXPECT_EQ(run.out, "");

  std::filesystem::copy_file(dataFile("sample-portal.ves"), path("tree.ves"));
  run = runArbo({ "scene", "create", path("plan.rs"), path("tree.ves"), "--source", "tree=liver" });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: --source tree=liver: no node named 'liver'\n");
  run = runArbo({ "scene",
                  "create",
                  path("plan.rs"),
                  path("tree.ves"),
                  "a=" + path("tree.ves"),
                  "--source",
                  "tree=a",
                  "--source",
                  "a=tree" });
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("form a cycle"), std::string::npos) << run.err;
  run = runArbo({ "scene", "create", path("plan.rs"), path("missing.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(files(), (std::vector<std::string>{ "tree.ves", "v2.rs" })); // nothing written
}

TEST_F(ArboScene, HiddenNodesAreSavedNotVisible)
{
  std::filesystem::copy_file(dataFile("sample-portal.ves"), path("tree.ves"));
  std::filesystem::create_directory(path("out"));
  ArboRun run = runArbo({ "scene", "create", path("out/plan.rs"), "portal=" + path("tree.ves"), "--hide", "nobody" });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: --hide nobody: no node named 'nobody'\n");
  EXPECT_FALSE(std::filesystem::exists(path("out/plan.rs")));

  run = runArbo({ "scene", "create", path("out/plan.rs"), "portal=" + path("tree.ves"), "--hide", "portal" });
  ASSERT_EQ(run.status, 0) << run.err;
  run = runArbo({ "scene", "info", path("out/plan.rs"), "--json" });
  ASSERT_EQ(run.status, 0) << run.err;
  const Json json = Json::parse(run.out);
  ASSERT_EQ(json["nodes"].size(), 1u);
  EXPECT_EQ(json["nodes"][0]["properties"]["visible"], "false");
}

TEST_F(ArboScene, AnInputBesideTheSceneIsNeverWrittenOver)
{
  // The node "portal" would write portal.ves, the very file it was read from: it takes another name.
  std::filesystem::copy_file(dataFile("sample-portal.ves"), path("portal.ves"));
  const std::string input = readFile(path("portal.ves"));
  writeFile(path("portal_2.ves"), "not a tree, and not the scene's");
  for (int run = 0; run < 2; ++run) // the second saves over the first, replacing its own file
  {
    const ArboRun created = runArbo({ "scene", "create", path("plan.rs"), path("portal.ves") });
    ASSERT_EQ(created.status, 0) << created.err;
    EXPECT_EQ(readFile(path("portal.ves")), input);
    EXPECT_EQ(readFile(path("portal_2.ves")), "not a tree, and not the scene's");
    EXPECT_EQ(files(), (std::vector<std::string>{ "plan.rs", "portal.ves", "portal_2.ves", "portal_3.ves" })) << run;
  }
  const Json json = Json::parse(runArbo({ "scene", "info", path("plan.rs"), "--json" }).out);
  ASSERT_EQ(json["nodes"].size(), 1u);
  EXPECT_EQ(json["nodes"][0]["file"], "portal_3.ves");
  EXPECT_EQ(json["nodes"][0]["loaded"], true);
}

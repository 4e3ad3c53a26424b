// Interrupting arbo while it writes: the arbo program runs in a child process and gets SIGINT or SIGTERM as soon as
// its temporary file (or staging folder) appears. It must die by that signal and leave neither a temporary file
// nor a partial output, and an earlier output must keep its bytes.

#include "ArboTestSupport.h"

#include "lumoImage.h"
#include "lumoImageIO.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <thread>

using namespace arbo_test;

namespace
{
/** Starts the arbo program with its output thrown away. */
pid_t
startArbo(const std::vector<std::string> & arguments)
{
  const pid_t child = ::fork();
  if (child == 0)
  {
    const int null = ::open("/dev/null", O_WRONLY);
    ::dup2(null, 1);
    ::dup2(null, 2);
    std::vector<char *> argv{ const_cast<char *>("arbo") };
    for (const std::string & argument : arguments)
    {
      argv.push_back(const_cast<char *>(argument.c_str()));
    }
    argv.push_back(nullptr);
    ::execv(ARBO_EXECUTABLE, argv.data());
    ::_exit(127);
  }
  return child;
}

class ArboInterruptTest : public ArboTest
{
protected:
  /** Waits (up to 60 s) until a name starting with `prefix` appears in the test folder, then sends `signal`; false
   *  when arbo ended before. The exit status goes to `status`. */
  bool
  interruptWhenPresent(pid_t child, const std::string & prefix, int signal, int & status)
  {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (std::chrono::steady_clock::now() < deadline)
    {
      for (const std::string & name : files())
      {
        if (name.rfind(prefix, 0) == 0)
        {
          ::kill(child, signal);
          ::waitpid(child, &status, 0);
          return true;
        }
      }
      if (::waitpid(child, &status, WNOHANG) == child)
      {
        return false;
      }
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    return false;
  }
};

TEST_F(ArboInterruptTest, AnInterruptedConversionLeavesNoTemporaryFileAndTheEarlierOutputAsItWas)
{
  // 16 MB of noise: compressing it to .nii.gz takes long enough to be interrupted.
  auto image = lumo::Image::New();
  image->Initialize(itk::IOComponentEnum::UCHAR, { { 256, 256, 256 } });
  auto * data = static_cast<unsigned char *>(image->GetData());
  std::uint32_t state = 12345;
  for (std::size_t i = 0; i < 256u * 256u * 256u; ++i)
  {
    state = state * 1664525u + 1013904223u;
    data[i] = static_cast<unsigned char>(state >> 24);
  }
  lumo::WriteImageFile(image, path("noise.nrrd"));
  const std::string previous = "the earlier output";

  for (const int signal : { SIGINT, SIGTERM })
  {
    SCOPED_TRACE(signal == SIGINT ? "SIGINT" : "SIGTERM");
    writeFile(path("out.nii.gz"), previous);
    const pid_t child = startArbo({ "convert", path("noise.nrrd"), path("out.nii.gz") });
    int status = 0;
    ASSERT_TRUE(interruptWhenPresent(child, ".arbo-", signal, status)) << "arbo ended before it was interrupted";
    ASSERT_TRUE(WIFSIGNALED(status)) << "exit status " << status;
    EXPECT_EQ(WTERMSIG(status), signal);
    EXPECT_EQ(files(), (std::vector<std::string>{ "noise.nrrd", "out.nii.gz" }));
    EXPECT_EQ(readFile(path("out.nii.gz")), previous);
  }
}

TEST_F(ArboInterruptTest, AnInterruptedSceneSaveLeavesTheEarlierSceneAsItWas)
{
  auto small = lumo::Image::New();
  small->Initialize(itk::IOComponentEnum::UCHAR, { { 8, 8, 8 } });
  lumo::WriteImageFile(small, path("small.nrrd"));
  ArboRun run = runArbo({ "-q", "scene", "create", path("plan.rs"), path("small.nrrd") });
  ASSERT_EQ(run.status, 0) << run.err;
  const std::vector<std::string> earlier = files();
  ASSERT_EQ(earlier, (std::vector<std::string>{ "plan.rs", "small.nrrd", "small.pic" }));
  const std::string scene = readFile(path("plan.rs"));
  const std::string data = readFile(path("small.pic"));
  // 32 MB to stage: long enough to be interrupted before the scene's files are swapped.
  auto big = lumo::Image::New();
  big->Initialize(itk::IOComponentEnum::UCHAR, { { 512, 256, 256 } });
  lumo::WriteImageFile(big, path("big.nrrd"));

  for (const int signal : { SIGINT, SIGTERM })
  {
    SCOPED_TRACE(signal == SIGINT ? "SIGINT" : "SIGTERM");
    const pid_t child = startArbo({ "scene", "create", path("plan.rs"), path("big.nrrd") });
    int status = 0;
    ASSERT_TRUE(interruptWhenPresent(child, ".~", signal, status)) << "arbo ended before it was interrupted";
    ASSERT_TRUE(WIFSIGNALED(status)) << "exit status " << status;
    EXPECT_EQ(WTERMSIG(status), signal);
    EXPECT_EQ(files(), (std::vector<std::string>{ "big.nrrd", "plan.rs", "small.nrrd", "small.pic" }));
    EXPECT_EQ(readFile(path("plan.rs")), scene);
    EXPECT_EQ(readFile(path("small.pic")), data);
  }
}

TEST_F(ArboInterruptTest, AnInterruptedPhantomLeavesNoStagingFolderAndNoPartOfThePhantom)
{
  const pid_t child = startArbo({ "phantom", "--out", m_Folder.string(), "--size", "medium" });
  int status = 0;
  ASSERT_TRUE(interruptWhenPresent(child, ".phantom-", SIGINT, status)) << "arbo ended before it was interrupted";
  ASSERT_TRUE(WIFSIGNALED(status)) << "exit status " << status;
  EXPECT_EQ(WTERMSIG(status), SIGINT);
  // The six files are moved in with interrupts held back: all of them or none.
  const std::vector<std::string> all{ "hepatic.nrrd",      "organ.nrrd",       "portal.nrrd",
                                      "truth-hepatic.ves", "truth-portal.ves", "tumour.nrrd" };
  const std::vector<std::string> left = files();
  EXPECT_TRUE(left.empty() || left == all) << ::testing::PrintToString(left);
}
} // namespace

#ifndef ExtractionTestSupport_h
#define ExtractionTestSupport_h

// Helpers shared by the extraction tests: masks, exact regexes for death tests and stdout capture in a child.

#include "lumoIpPicDescriptor.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <iostream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

/** A zeroed unsigned 8-bit volume. */
inline lumoIpPicDescriptor *
newMask(std::uint32_t sizeX, std::uint32_t sizeY, std::uint32_t sizeZ)
{
  const std::uint32_t sizes[3] = { sizeX, sizeY, sizeZ };
  return lumoIpPicNewVolume(lumoIpPicUInt, 8, 3, sizes);
}

inline unsigned char &
maskVoxel(lumoIpPicDescriptor * pic, std::uint32_t x, std::uint32_t y, std::uint32_t z)
{
  return static_cast<unsigned char *>(pic->data)[(static_cast<std::size_t>(z) * pic->n[1] + y) * pic->n[0] + x];
}

/** A regular expression matching exactly the text (for the message checks of death tests). */
inline std::string
exactly(const std::string & text)
{
  std::string pattern = "^";
  for (char c : text)
  {
    if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos)
    {
      pattern += '\\';
    }
    pattern += c;
  }
  return pattern + "\n$";
}

/** Outcome of a function run in a forked child: its exit status and everything it wrote to standard output. */
struct ChildOutcome
{
  int exitCode;
  std::string output;
};

inline ChildOutcome
runInChild(const std::function<void()> & body)
{
  std::cout.flush();
  std::fflush(stdout);
  int fds[2];
  if (pipe(fds) != 0)
  {
    return { -1, "" };
  }
  const pid_t pid = fork();
  if (pid == 0)
  {
    close(fds[0]);
    dup2(fds[1], STDOUT_FILENO);
    close(fds[1]);
    body();
    std::cout.flush();
    _exit(0);
  }
  close(fds[1]);
  std::string output;
  char buffer[256];
  ssize_t got = 0;
  while ((got = read(fds[0], buffer, sizeof buffer)) > 0)
  {
    output.append(buffer, static_cast<std::size_t>(got));
  }
  close(fds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  return { WIFEXITED(status) ? WEXITSTATUS(status) : -1, output };
}

#endif

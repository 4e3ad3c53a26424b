#include "arboApplication.h"

#include <iostream>

int
main(int argc, char ** argv)
{
  std::ios::sync_with_stdio(false);
  const int status = arbo::runApplication(argc, argv, std::cout, std::cerr);
  std::cout.flush();
  return status;
}

#include "host/errors.h"

#include <cstdio>

#include "host/color.h"

int Complain(const std::string &message, int status) {
  const bool ended = !message.empty() && message.back() == '\n';
  const std::string line = Colored(stderr, "orli: " + message + (ended ? "" : "\n"));
  std::fputs(line.c_str(), stderr);
  return status;
}

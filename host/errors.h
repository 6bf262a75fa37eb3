// Exit statuses, and errors on standard error.
#ifndef ORLI11_HOST_ERRORS_H
#define ORLI11_HOST_ERRORS_H

#include <string>

enum ExitStatus {
  kExitGood = 0,
  kExitWrong = 1,  // the data or a formula is wrong, or the output cannot be written
  kExitUsage = 2   // the command line is wrong
};

// Writes an error and returns `status`.
int Complain(const std::string &message, int status);

#endif

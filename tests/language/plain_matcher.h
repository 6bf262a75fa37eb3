// A second scanner, slow and plain: each token rule tried by itself on the text, by walking all its
// readings at once. It shares nothing with the automaton, the notation of the rules or the actions.
#ifndef ORLI11_TESTS_LANGUAGE_PLAIN_MATCHER_H
#define ORLI11_TESTS_LANGUAGE_PLAIN_MATCHER_H

#include <string>

#include "scan_run.h"

enum class PlainPage { kSingleByte, kDoubleByte, kUtf8 };

struct PlainInput {
  std::string text;  // at most 62 bytes
  uint16_t flags;
  bool nameCheck;
  PlainPage page;
};

struct PlainResult {
  ScanResult scan;
  bool ambiguous = false;  // one match of the date rule passed different last marks
};

PlainResult PlainScan(const PlainInput &input);

#endif

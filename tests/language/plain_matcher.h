// A second scanner, slow and simple: each token rule is tried on the text by itself, following all
// its readings in parallel. It shares nothing with the automaton, the notation of the rules or the
// actions.
#ifndef ORLI11_TESTS_LANGUAGE_PLAIN_MATCHER_H
#define ORLI11_TESTS_LANGUAGE_PLAIN_MATCHER_H

#include <cstdint>
#include <string>
#include <vector>

#include "orli11.h"

struct ScanInput {
  int32_t codePage;
  std::string text;
  uint16_t flags = 0;
  bool nameCheck = false;
};

struct ScannedToken {
  int32_t code = 0, offset = 0, span = 0;
  int32_t delivered = 0;  // bytes read when the token was returned
  int32_t taken = 0;      // bytes of the last match
  uint16_t dateUnit = 0, modifier = 0;
  std::string value = {};  // a text, or the bytes of a number; empty for none
};

struct ScanResult {
  std::vector<ScannedToken> tokens;  // the last is the end of the text
  std::string failures;              // " bad date 2+5" and " error 112@5+6", if any
};

constexpr const char *kLooseKeyword = "Net Sales";  // in any case
constexpr const char *kExactKeyword = "Gross Tax";  // as written

// For a text of at most 62 bytes.
ScanResult PlainScan(const ScanInput &input);

#endif

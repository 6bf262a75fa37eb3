// Runs the scanner over a whole text and keeps what it said.
#ifndef ORLI11_TESTS_LANGUAGE_SCAN_RUN_H
#define ORLI11_TESTS_LANGUAGE_SCAN_RUN_H

#include <cstdint>
#include <string>
#include <vector>

#include "orli11.h"

struct ScannedToken {
  int32_t code = 0;
  int32_t offset = 0, span = 0;
  std::string value;      // a text, or the bytes of a number; empty for none
  int32_t delivered = 0;  // bytes read when the token was returned
  int32_t taken = 0;      // bytes of the last match
  uint16_t dateUnit = 0, modifier = 0;

  bool operator==(const ScannedToken &) const = default;
};

struct ScanResult {
  std::vector<ScannedToken> tokens;  // the last is the end of the text
  bool badDateSeen = false;
  int32_t badDateOffset = 0, badDateLength = 0;
  FormulaError error = {};
};

constexpr const char *kLooseKeyword = "Net Sales";  // in any case
constexpr const char *kExactKeyword = "Gross Tax";  // as written

// A context with the two keywords.
EC NewScanContext();

// Scans `text` under `flags`, and once more behind its end, which must say the same.
ScanResult ScanWhole(EC ec, uint16_t flags, bool nameCheck, const std::string &text);

// "IDENT@0+1:x AND NUMBER@6+1:1": a number shows its text, a word with a code shows the code.
std::string Print(const ScanResult &result, const std::string &text);

// A text with its unprintable bytes as \xHH.
std::string Escaped(const std::string &text);

#endif

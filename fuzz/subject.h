// Contexts for the fuzz targets, with items of every kind and type, and the first bytes of an
// input, which select how it is used.
#ifndef ORLI11_FUZZ_SUBJECT_H
#define ORLI11_FUZZ_SUBJECT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "orli11.h"

struct SubjectDeleter {
  void operator()(EC ec) const { ORLDestroyEC(ec); }
};
using Subject = std::unique_ptr<ExprContext, SubjectDeleter>;

constexpr size_t kSettingBytes = 2;

// Byte 0: the code page in the low two bits, above them the memory that there is.
struct Settings {
  uint8_t heap;
  uint8_t rest;  // byte 1: the flags of the context for a formula, BlockSetting for a block
};

enum BlockSetting : uint8_t {
  kVersionMask = 3,   // the version that the block is given,
  kPatchVersion = 4,  // when it is
  kLookup = 8,        // the context can look names up
  kReport = 16,
  kNoFormulas = 32,
  kPlain = 64  // no flags of the language
};

// Sets the code page of the process.
Settings TakeSettings(const uint8_t *data);

// Lets only the allocations of the settings succeed, most often all, until it is called again with
// `limited` false.
void LimitHeap(const Settings &settings, bool limited);

// All functions of the library, functions that take arguments by name or of any type, and keywords.
Subject FunctionSubject(uint16_t flags, bool lookup);
// With that, input items of all types: with a value, with null and without one.
Subject ItemSubject(uint16_t flags);

// Ends the process, as a finding of the fuzzer, when `holds` is false.
void Require(bool holds, const char *what);

// Evaluates each expression by both entries.
void EvaluateAll(EC ec);

std::string WriteBlock(EC ec);

#endif

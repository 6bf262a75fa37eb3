// Blocks and the contexts that they are read into, as the tests of the stored form need them.
#ifndef ORLI11_TESTS_PERSISTENCE_BLOCK_SUPPORT_H
#define ORLI11_TESTS_PERSISTENCE_BLOCK_SUPPORT_H

#include <cstdio>
#include <cstring>
#include <numeric>
#include <string>
#include <utility>

#include "engine/context.h"
#include "support/context.h"

// What the host was notified of in a load: "?name" for a lookup, "!text id@offset+length" for an
// error.
inline std::string hostLog;

// Returns the value that block_format.py uses. A leading "_" was added by the load.
inline int32_t NameValue(EC, HEXP, int32_t size, void **value, const char *name) {
  const std::string bytes = name + (*name == '_' ? 1 : 0);
  const auto add = [](int sum, char byte) { return sum + static_cast<uint8_t>(byte); };
  const std::string text = std::to_string(std::accumulate(bytes.begin(), bytes.end(), 0, add) % 97);
  if (size != sizeof(NumberValue)) return FUNStrVarResult(value, size, ("v" + text).c_str());
  WRENNumFromText(static_cast<NumberValue *>(*value), text.c_str());
  return 1;
}

inline int32_t LeftOperand(EC, HEXP, int32_t, int32_t, const NumberValue *left, int32_t,
                           const NumberValue *, int32_t, NumberValue *result) {
  *result = *left;
  return 1;
}

// Knows every name but those with "Unknown".
inline void *LookUp(const char *name) {
  hostLog += std::string("?") + name + " ";
  if (std::strstr(name, "Unknown") != nullptr) return nullptr;
  return std::strncmp(name, "Op", 2) == 0 ? Address(&LeftOperand) : Address(&NameValue);
}

inline void NoteError(EC, const char *text, const FormulaError *error) {
  hostLog += std::string("!") + text + " " + Outcome({nullptr, *error, 0}) + " ";
}

// A context for a load; it may have a function ReportAverage with parameters of subclass 7.
struct LoadTarget {
  bool lookup = true;
  int16_t reportAverage = 0;  // its count of parameters; 0: no such function
};
inline OwnedContext ContextFor(const LoadTarget &target) {
  const OrlLookupProc lookup = target.lookup ? &LookUp : nullptr;
  OwnedContext ec(ORLCreateEC(nullptr, lookup, nullptr, ORL_FLAG_RANGES));
  ORL_EXPR_ITEM_WITH(1) function = {};
  std::strcpy(function.item.name, "ReportAverage");
  function.item.paramCount = target.reportAverage;
  function.parameters[0] = {1, 0, 7};
  if (target.reportAverage != 0) ORLAddExpressionItem(ec.get(), &function.item);
  return ec;
}

// Reads a heap copy of just the block's size.
inline int32_t Load(EC ec, const std::string &block, bool formulas = true) {
  const std::unique_ptr<char[]> copy(new char[block.size()]);
  std::memcpy(copy.get(), block.data(), block.size());
  hostLog.clear();
  const int32_t size = static_cast<int32_t>(block.size());
  return ORLSetECContents(ec, size, copy.get(), formulas ? 1 : 0, &NoteError);
}

// The block, written into a buffer of the size that is asked for.
inline std::string BlockOf(EC ec) {
  std::string block(static_cast<size_t>(ORLGetECBlockSize(ec, 1)), '\xEE');
  const int32_t size = ORLGetECBlock(ec, static_cast<int32_t>(block.size()), block.data());
  return block.substr(0, static_cast<size_t>(size));
}

// Everything that is stored of a context, in a line: "op3=Name", "Name(kind,type,...)=RoutineName"
// with "!" after it where the routine is missing, "-" for an empty element, "Name:=Text".
inline std::string StateOf(EC ec) {
  std::string state;
  for (int32_t i = 0; i < kGroupCount * kOperatorTypes; ++i) {
    const OperatorSlots &slots = ec->operators[i / kOperatorTypes];
    const char *name = slots.names[i % kOperatorTypes];
    if (name == nullptr) continue;
    const bool found = slots.procs[i % kOperatorTypes] != nullptr;
    state += "op" + std::to_string(i) + "=" + name + (found ? " " : "! ");
  }
  for (uint32_t i = 0; i < HandleArrayRows(ec->inputs.rows); ++i) {
    const auto *row = static_cast<const ExprItem *>(HandleArrayPointerAt(ec->inputs.rows, i));
    state += row == nullptr ? "- " : row->name;
    if (row == nullptr) continue;
    char separator = '(';
    for (int field : {+row->kind, +row->dataType, +row->paramCount, +row->subClass,
                      +row->optionalCount, +row->itemFlags}) {
      state += std::exchange(separator, ',') + std::to_string(field);
    }
    state += std::string(")=") + (row->routineName == nullptr ? "" : row->routineName);
    state += row->routine == nullptr ? "! " : " ";
  }
  for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
    HEXP exp = ORLHEXPFromOrdinal(ec, i);
    state += NameOf(ec, exp) + ":=" + TextOf(ec, exp) + " ";
  }
  return state;
}

inline std::string Hex(const std::string &bytes) {
  std::string hex;
  char pair[3];
  for (const char byte : bytes) {
    std::snprintf(pair, sizeof pair, "%02x", static_cast<uint8_t>(byte));
    hex += pair;
  }
  return hex;
}

inline std::string Unhex(const std::string &hex) {
  std::string bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

#endif

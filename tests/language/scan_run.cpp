#include "scan_run.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "engine/context.h"
#include "language/scanner.h"

namespace {

// Takes the value out of the state and frees it.
std::string TakeValue(ParseState &state, int32_t token) {
  std::string result;
  if (state.tokenValue != nullptr) {
    const auto *bytes = static_cast<const char *>(state.tokenValue);
    const size_t size = token == TOK_NUMBER ? sizeof(NumberValue) : std::strlen(bytes);
    EXPECT_EQ(WRENMemSize(state.tokenValue), token == TOK_NUMBER ? size : size + 1);
    result.assign(bytes, size);
  }
  WRENMemFree(state.tokenValue);
  state.tokenValue = nullptr;
  return result;
}

ScannedToken ScanOne(ParseState &state) {
  ScannedToken result;
  result.code = ScanToken(state);
  result.value = TakeValue(state, result.code);
  result.offset = state.tokenOffset;
  result.span = state.tokenSpan;
  result.delivered = BytesDelivered(state);
  result.taken = state.tokenLength;
  result.dateUnit = state.dateUnit;
  result.modifier = state.modifier;
  return result;
}

bool HasText(int32_t token) {
  return token >= TOK_IDENT && token <= TOK_DATE && token != 261;
}

std::string PrintToken(const ScannedToken &token, const std::string &text) {
  std::string name = TokenName(token.code);
  if (token.code == TOK_AND || token.code == TOK_END) return name;
  std::string result = name + "@" + std::to_string(token.offset) + "+" + std::to_string(token.span);
  if (token.code == TOK_NUMBER) {
    result += ":" + text.substr(static_cast<size_t>(token.offset), static_cast<size_t>(token.span));
  }
  if (HasText(token.code)) result += ":" + token.value;
  if (token.code == TOK_DATEUNIT) result += ":" + std::to_string(token.dateUnit);
  if (token.code == TOK_MODIFIER) result += ":" + std::to_string(token.modifier);
  return result;
}

void AddKeyword(EC ec, const char *name, uint16_t caseSensitive) {
  ExprItem row = {};
  row.kind = ORL_KEYWORD;
  row.dataType = 300;
  std::snprintf(row.name, sizeof row.name, "%s", name);
  row.caseSensitive = caseSensitive;
  EXPECT_EQ(ORLAddExpressionItem(ec, &row), 1);
}

}  // namespace

EC NewScanContext() {
  EC ec = ORLCreateEC(nullptr, nullptr, nullptr, 0);
  AddKeyword(ec, kLooseKeyword, 0);
  AddKeyword(ec, kExactKeyword, 1);
  return ec;
}

ScanResult ScanWhole(EC ec, uint16_t flags, bool nameCheck, const std::string &text) {
  ParseState &state = CurrentParseState();
  ec->flags = flags;
  ResetParseState(state, ec, text.c_str(), nameCheck);
  state.tokenOffset = state.tokenSpan = 0;
  ScanResult result;
  do {
    result.tokens.push_back(ScanOne(state));
  } while (result.tokens.back().code != TOK_END && result.tokens.size() <= text.size() + 1);
  EXPECT_TRUE(ScanOne(state) == result.tokens.back()) << "another answer behind the end";
  result.badDateSeen = state.badDateSeen;
  result.badDateOffset = state.badDateOffset;
  result.badDateLength = state.badDateLength;
  result.error = state.error;
  return result;
}

std::string Print(const ScanResult &result, const std::string &text) {
  std::string printed;
  for (const ScannedToken &token : result.tokens) {
    if (token.code == TOK_END) break;
    if (!printed.empty()) printed += ' ';
    printed += PrintToken(token, text);
  }
  return printed;
}

std::string Escaped(const std::string &text) {
  std::string result;
  for (const char byte : text) {
    char shown[8];
    const auto code = static_cast<unsigned char>(byte);
    std::snprintf(shown, sizeof shown, code >= 32 && code < 127 ? "%c" : "\\x%02X", code);
    result += shown;
  }
  return result;
}

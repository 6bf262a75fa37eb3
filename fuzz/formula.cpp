// Parses any text in a context with everything in it, and computes what parses.
#include <cstring>

#include "closed/wren/memory.h"
#include "fuzz/subject.h"

namespace {

void UseFormula(EC ec, HEXP exp, const std::string &text, uint16_t type) {
  Require(ORLGetExpressionDataType(ec, exp) == type, "the type is the one reported");
  uint16_t cloned = 0;
  HEXP clone = ORLCloneExpression(ec, exp, nullptr, &cloned);
  Require(clone != nullptr && cloned == type, "a formula can be cloned");
  EvaluateAll(ec);
  const bool used = ORLIsItemUsed(ec, exp, ORL_INPUT, "Amount") != 0;
  ORLRenameExpressionItem(ec, ORL_INPUT, "Amount", "\"the new name\"");
  Require(ORLIsItemUsed(ec, exp, ORL_INPUT, "Amount") == 0, "a renamed item is not used");
  Require(!used || ORLIsItemUsed(ec, exp, ORL_INPUT, "\"the new name\"") != 0, "its name follows");
  ORLRenameExpressionItem(ec, ORL_FUNCTION, "StrLength", "Text");
  EvaluateAll(ec);
  FormulaError error = {};
  ORLParseFormula(ec, clone, text.c_str(), "Other", &error, &type);
  const Subject copy(ORLCopyEC(ec));
  EvaluateAll(copy.get());
}

void ParseText(const Settings &settings, const std::string &text) {
  const Subject subject = ItemSubject(settings.rest);
  EC ec = subject.get();
  uint16_t type = 0;
  FormulaError error = {};
  Require(ORLParseString(ec, "Amount * Tax", "Net", &error, &type) != nullptr, "Net is parsed");
  LimitHeap(settings, true);
  HEXP exp = ORLParseString(ec, text.c_str(), "Tested", &error, &type);
  ORLValidName(ec, text.c_str(), nullptr);
  if (exp != nullptr) {
    EvaluateAll(ec);
  }
  LimitHeap(settings, false);
  if (exp != nullptr) {
    UseFormula(ec, exp, text, type);
  } else {
    const auto length = static_cast<int64_t>(text.size());
    const bool whole = error.offset == 0 && error.length == 1000;  // a keyword alone
    Require(error.id >= ORL_ERR_TYPENUM && error.id <= ORL_ERR_SUBCLASS, "the message is known");
    Require(whole || (error.offset >= 0 && error.length >= 0 &&
                      int64_t{error.offset} + error.length <= length + 1),
            "the faulty bytes are bytes of the text");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < kSettingBytes) {
    return 0;
  }
  const Settings settings = TakeSettings(data);
  const int64_t blocks = TEST_LiveBlocks();
  const auto *start = reinterpret_cast<const char *>(data) + kSettingBytes;
  ParseText(settings, std::string(start, strnlen(start, size - kSettingBytes)));
  Require(TEST_LiveBlocks() == blocks, "all blocks are freed");
  return 0;
}

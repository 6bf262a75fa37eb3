// Loads blocks of any bytes. A context that was loaded must be the same after it is written and
// read again.
#include <cstdlib>
#include <cstring>

#include "closed/wren/memory.h"
#include "engine/context.h"
#include "fuzz/subject.h"

namespace {

void NoteReport(EC ec, const char *text, const FormulaError *error) {
  const auto length = static_cast<int32_t>(std::strlen(text));
  Require(ec != nullptr && error->offset >= 0 && error->offset <= 2 * length + 1,
          "a report has a place of its formula");
}

int32_t Load(EC ec, const Settings &settings, const void *block, size_t size) {
  return ORLSetECContents(ec, static_cast<int32_t>(size), block, (settings.rest & kNoFormulas) == 0,
                          (settings.rest & kReport) != 0 ? NoteReport : nullptr);
}

void RenameSome(EC ec) {
  for (const char *name : {"B", "a longer name than before"}) {
    if (HandleArrayRows(ec->inputs.rows) > 0) {
      const auto *row = static_cast<ExprItem *>(HandleArrayPointerAt(ec->inputs.rows, 0));
      ORLRenameExpressionItem(ec, ORL_INPUT, row != nullptr ? row->name : "", name);
      EvaluateAll(ec);
    }
  }
  ORLRenameExpressionItem(ec, ORL_FUNCTION, "StrLength", "L");
  EvaluateAll(ec);
  WriteBlock(ec);
}

void Use(const Settings &settings, const char *block, size_t size) {
  const bool lookup = (settings.rest & kLookup) != 0;
  const uint16_t flags = (settings.rest & kPlain) != 0 ? 0 : ORL_FLAG_RANGES | ORL_FLAG_MODIFIERS;
  const Subject subject = FunctionSubject(flags, lookup);
  LimitHeap(settings, true);
  const int32_t loaded = Load(subject.get(), settings, block, size);
  LimitHeap(settings, false);
  const std::string written = WriteBlock(subject.get());
  if (loaded == 1) {
    const Subject again = FunctionSubject(flags, lookup);
    Require(Load(again.get(), settings, written.data(), written.size()) == 1, "it loads again");
    Require(WriteBlock(again.get()) == written, "it is written as it was read");
  }
  EvaluateAll(subject.get());
  RenameSome(subject.get());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size <= kSettingBytes) {
    return 0;
  }
  const Settings settings = TakeSettings(data);
  const int64_t blocks = TEST_LiveBlocks();
  size -= kSettingBytes;
  auto *block = static_cast<char *>(std::malloc(size));  // of just that size, for the sanitizer
  std::memcpy(block, data + kSettingBytes, size);
  if ((settings.rest & kPatchVersion) != 0) {
    block[0] = static_cast<char>(settings.rest & kVersionMask);
  }
  Use(settings, block, size);
  std::free(block);
  Require(TEST_LiveBlocks() == blocks, "all blocks are freed");
  return 0;
}

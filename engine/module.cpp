#include "engine/module.h"

#include "platform/strings.h"
#include "resources/string_ids.h"

void *moduleHandle = nullptr;
EC defaultContext = nullptr;
ModuleTexts moduleTexts;

namespace {

constexpr uint32_t kProcessAttach = 1;

struct TextToLoad {
  char *buffer;
  uint32_t id;
  int32_t size;
};

void LoadModuleTexts() {
  const TextToLoad texts[] = {
      {moduleTexts.baseNames[kClassFormula], kStringFormulaStem,
       sizeof moduleTexts.baseNames[kClassFormula]},
      {moduleTexts.baseNames[kClassRange], kStringRangeWord,
       sizeof moduleTexts.baseNames[kClassRange]},
      {moduleTexts.baseNames[kClassSet], kStringSetWord, sizeof moduleTexts.baseNames[kClassSet]},
      {moduleTexts.editorTitles[kClassFormula], kStringFormulaEditorTitle,
       sizeof moduleTexts.editorTitles[kClassFormula]},
      {moduleTexts.editorTitles[kClassRange], kStringRangeEditorTitle,
       sizeof moduleTexts.editorTitles[kClassRange]},
      {moduleTexts.editorTitles[kClassSet], kStringSetEditorTitle,
       sizeof moduleTexts.editorTitles[kClassSet]},
      {moduleTexts.typeLabels[kLabelNumber], kStringNumberLabel,
       sizeof moduleTexts.typeLabels[kLabelNumber]},
      {moduleTexts.typeLabels[kLabelDate], kStringDateLabel,
       sizeof moduleTexts.typeLabels[kLabelDate]},
      {moduleTexts.typeLabels[kLabelString], kStringStringLabel,
       sizeof moduleTexts.typeLabels[kLabelString]},
      {moduleTexts.typeLabels[kLabelAny], kStringAnyLabel,
       sizeof moduleTexts.typeLabels[kLabelAny]},
      {moduleTexts.typeLabels[kLabelKeyword], kStringKeywordLabel,
       sizeof moduleTexts.typeLabels[kLabelKeyword]},
  };
  for (const TextToLoad &text : texts) {
    LoadStringA(moduleHandle, text.id, text.buffer, text.size);
  }
}

// Runs when the library is loaded, before the host's own constructors.
__attribute__((constructor(200))) void AttachToProcess() {
  static char instance;
  ModuleEntry(&instance, kProcessAttach, nullptr);
}

}  // namespace

int32_t ModuleEntry(void *instance, uint32_t reason, void * /*reserved*/) {
  if (reason != kProcessAttach || moduleHandle != nullptr) {
    return 1;
  }
  moduleHandle = instance;
  NameIndexSeed();
  LoadModuleTexts();
  defaultContext = ORLCreateEC(nullptr, nullptr, nullptr, 0);
  return 1;
}

uint32_t ORLVersion(void) {
  return ORL_VERSION_MAJOR << 16 | ORL_VERSION_MINOR << 8 | ORL_VERSION_PATCH;
}

int32_t WEP(int32_t /*code*/) {
  return 1;
}

void *FUNModuleHandle(void) {
  return moduleHandle;
}

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

template <int32_t size>
TextToLoad InBuffer(char (&buffer)[size], uint32_t id) {
  return {buffer, id, size};
}

void LoadModuleTexts() {
  const TextToLoad texts[] = {
      InBuffer(moduleTexts.baseNames[kClassFormula], kStringFormulaStem),
      InBuffer(moduleTexts.baseNames[kClassRange], kStringRangeWord),
      InBuffer(moduleTexts.baseNames[kClassSet], kStringSetWord),
      InBuffer(moduleTexts.editorTitles[kClassFormula], kStringFormulaEditorTitle),
      InBuffer(moduleTexts.editorTitles[kClassRange], kStringRangeEditorTitle),
      InBuffer(moduleTexts.editorTitles[kClassSet], kStringSetEditorTitle),
      InBuffer(moduleTexts.typeLabels[kLabelNumber], kStringNumberLabel),
      InBuffer(moduleTexts.typeLabels[kLabelDate], kStringDateLabel),
      InBuffer(moduleTexts.typeLabels[kLabelString], kStringStringLabel),
      InBuffer(moduleTexts.typeLabels[kLabelAny], kStringAnyLabel),
      InBuffer(moduleTexts.typeLabels[kLabelKeyword], kStringKeywordLabel),
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

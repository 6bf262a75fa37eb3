#include "engine/module.h"

#include "platform/strings.h"

void *moduleHandle = nullptr;
EC defaultContext = nullptr;
ModuleTexts moduleTexts;

namespace {

constexpr uint32_t kProcessAttach = 1;

struct TextToLoad {
  uint32_t id;
  char *buffer;
  int32_t size;
};

void LoadModuleTexts() {
  const TextToLoad texts[] = {
      {208, moduleTexts.baseNames[kClassFormula], 128},
      {214, moduleTexts.baseNames[kClassRange], 128},
      {215, moduleTexts.baseNames[kClassSet], 128},
      {207, moduleTexts.editorTitles[kClassFormula], 128},
      {212, moduleTexts.editorTitles[kClassRange], 128},
      {213, moduleTexts.editorTitles[kClassSet], 128},
      {227, moduleTexts.typeLabels[kLabelNumber], 40},
      {228, moduleTexts.typeLabels[kLabelDate], 40},
      {229, moduleTexts.typeLabels[kLabelString], 40},
      {230, moduleTexts.typeLabels[kLabelAny], 40},
      {231, moduleTexts.typeLabels[kLabelKeyword], 40},
  };
  for (const TextToLoad &text : texts) {
    LoadStringA(moduleHandle, text.id, text.buffer, text.size);
  }
}

// Runs when the library is loaded, ahead of the host's own constructors.
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

int32_t WEP(int32_t /*code*/) {
  return 1;
}

void *FUNModuleHandle(void) {
  return moduleHandle;
}

// The module: its handle, the strings it keeps loaded and the default context.
#ifndef ORLI11_ENGINE_MODULE_H
#define ORLI11_ENGINE_MODULE_H

#include <cstdint>

#include "engine/context.h"

// Not null once the module is initialised.
extern void *moduleHandle;

// The context that ORLValidName uses for a null one; null when it could not be created.
extern EC defaultContext;

// Data type labels of the signature display.
enum TypeLabel : int32_t {
  kLabelNumber,
  kLabelDate,
  kLabelString,
  kLabelAny,
  kLabelKeyword,
  kLabelCount
};

// The strings that the module loads once.
struct ModuleTexts {
  char baseNames[kClassCount][128];  // of generated names
  char editorTitles[kClassCount][128];
  char typeLabels[kLabelCount][40];
};
extern ModuleTexts moduleTexts;

// The module entry. Only the first call with `reason` 1 does any work. Returns 1.
int32_t ModuleEntry(void *instance, uint32_t reason, void *reserved);

#endif

// The entries of the formula editor. No window system is attached yet, so no dialog can open: to
// the caller it is as if the user had cancelled it.
#include "orli11.h"

HEXP ORLBuildExpression(void * /*parentWindow*/, EC /*ec*/, HEXP /*exp*/, uint16_t /*textLimit*/) {
  return nullptr;
}

int32_t ORLErrorDisplay(void * /*parentWindow*/, const char * /*text*/,
                        const FormulaError * /*error*/) {
  return -1;
}

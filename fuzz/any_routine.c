/* The routine of every name that a stored block may hold: whatever its type, it uses no arguments
 * and returns the value that is there. In C, for a routine without a prototype. */
#include <stdint.h>

int32_t AnyRoutine(void);

int32_t AnyRoutine(void) {
  return 1;
}

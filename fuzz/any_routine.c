/* The routine of every name that a stored block may hold: whatever it is called as, it takes
 * nothing and gives the value that is there. In C, where a routine without a prototype is what it
 * looks like. */
#include <stdint.h>

int32_t AnyRoutine(void);

int32_t AnyRoutine(void) {
  return 1;
}

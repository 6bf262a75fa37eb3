// The routines of the built-in functions.
#ifndef ORLI11_FUNCTIONS_REGISTRY_H
#define ORLI11_FUNCTIONS_REGISTRY_H

// The built-in routine of a full name such as "FUNStrMid", or null when there is none.
void *RoutineByName(const char *fullName);

#endif

// The built-in functions: their rows and the routines behind them.
#ifndef ORLI11_FUNCTIONS_REGISTRY_H
#define ORLI11_FUNCTIONS_REGISTRY_H

#include <cstdint>

#include "orli11.h"

// Ids of the function rows in the string table.
constexpr uint32_t kFirstFunctionRow = 20000;
constexpr uint32_t kLastFunctionRow = 20045;

// The built-in routine of a full name such as "FUNStrMid", or null when there is none.
void *RoutineByName(const char *fullName);

#endif

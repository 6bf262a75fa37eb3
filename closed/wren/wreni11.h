// For hosts that have this folder in their include path.
#include "../../include/orli11/wreni11.h"

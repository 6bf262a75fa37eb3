// The functions that formulas share with databases, under their ODBC names.
#ifndef ORLI11_HOST_ODBC_FUNCTIONS_H
#define ORLI11_HOST_ODBC_FUNCTIONS_H

#include <orli11.h>

// Declares the functions in a context; false when out of memory. Extended text marks their calls as
// scalar functions of ODBC; computed here they return what most databases return.
bool OdbcFunctionsDeclare(EC ec);

#endif

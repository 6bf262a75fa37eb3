/* odbc_functions.h - the functions that formulas share with databases, under their ODBC names. */
#ifndef ORLI11_HOST_ODBC_FUNCTIONS_H
#define ORLI11_HOST_ODBC_FUNCTIONS_H

#include <orli11.h>

/* Declares the functions in a context; false without memory. Extended text marks their calls as
 * scalar functions of ODBC; computed here they give what most databases give. */
bool OdbcFunctionsDeclare(EC ec);

#endif

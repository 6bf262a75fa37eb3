/* values.h - between the text of a field or cell and the engine's values. */
#ifndef ORLI11_HOST_VALUES_H
#define ORLI11_HOST_VALUES_H

#include <orli11.h>

#include <string>

/* The value of a field that is not empty; false when it is no number or date of the form. A number
 * of more digits than a NumberValue holds is left to be text, since it would be rounded. */
bool NumberFromField(const char *text, NumberValue *value);
/* ISO dates, and what the country settings allow; a time alone is no date. */
bool DateFromField(const char *text, NumberValue *value);

/* The text of a computed value of type Number, Date or String: plain decimal digits
 * (with an exponent where they are more than 99), an ISO date with the time when it is not
 * midnight, the text itself. Null values give the empty text. False when the engine cannot write
 * the value. */
bool CellFromValue(int32_t type, const void *value, std::string &cell);

#endif

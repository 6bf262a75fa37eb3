// The scanner: bytes of a formula text to tokens.
#ifndef ORLI11_LANGUAGE_SCANNER_H
#define ORLI11_LANGUAGE_SCANNER_H

#include <cstdint>

#include "language/parse_state.h"

// The next token code. Fills tokenOffset, tokenSpan and tokenValue of the state; the value belongs
// to the caller. After TOK_END every further call gives TOK_END.
int32_t ScanToken(ParseState &state);

// The code of a date unit word with or without one S, in any case; 0 for any other word.
uint16_t DateUnitOfWord(const char *word);

#endif

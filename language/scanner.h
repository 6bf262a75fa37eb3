// The scanner: from the bytes of a formula text to tokens.
#ifndef ORLI11_LANGUAGE_SCANNER_H
#define ORLI11_LANGUAGE_SCANNER_H

#include <cstdint>
#include <string_view>

#include "language/parse_state.h"

// The next token code. Fills tokenOffset and tokenSpan of the state; the token's text is there.
// TOK_AND leaves them as they were. After TOK_END every further call returns TOK_END.
//
// A text is read as if one blank followed it. A match of kLongestMatch bytes that could still grow
// stores ORL_ERR_MAXTOKEN in state.error and ends the text: TOK_END.
int32_t ScanToken(ParseState &state);

// The code of a date unit word with or without one S, in any case; 0 for any other word.
uint16_t DateUnitOfWord(std::string_view word);

#endif

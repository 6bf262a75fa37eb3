// The walk through a formula's text word by word, for rename and the editor. It is coarser than the
// scanner: it knows double quotes and separators and nothing else.
#ifndef ORLI11_ANALYSIS_TOKEN_WALK_H
#define ORLI11_ANALYSIS_TOKEN_WALK_H

#include <cstdint>

inline constexpr int32_t kTokenQuote = '"';

// One step: `text` to `text + length` is consumed; its first `lead` bytes are delimiters, the rest
// is the token. Together the spans are the whole text; a tail of delimiters has an empty token.
struct TokenSpan {
  const char *text;
  int32_t length;
  int32_t lead;
};

// Consumes the next span at `*text`; false at the end. `token` receives the token with a terminator
// and must have the capacity for the whole text.
bool NextToken(const char **text, char *token, TokenSpan *span);

#endif

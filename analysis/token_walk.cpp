#include "analysis/token_walk.h"

#include "orli11.h"
#include "wreni11.h"

bool NextToken(const char **text, char *token, TokenSpan *span) {
  if (**text == '\0') {
    return false;
  }
  span->text = *text;
  span->length =
      WRENStrTokenize(token, *text, ORL_WORD_DELIMITERS, ORL_WORD_DELIMITERS, 0, kTokenQuote, 0);
  span->lead = span->length - WRENStrLen(token);
  *text += span->length;
  return true;
}

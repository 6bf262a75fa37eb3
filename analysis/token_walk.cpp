#include "analysis/token_walk.h"

#include "wreni11.h"

bool NextToken(const char **text, char *token, TokenSpan *span) {
  if (**text == '\0') {
    return false;
  }
  span->text = *text;
  span->length =
      WRENStrTokenize(token, *text, kTokenDelimiters, kTokenDelimiters, 0, kTokenQuote, 0);
  span->lead = span->length - WRENStrLen(token);
  *text += span->length;
  return true;
}

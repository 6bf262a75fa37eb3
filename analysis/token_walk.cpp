#include "analysis/token_walk.h"

#include "wreni11.h"

bool NextStretch(const char **text, char *token, TokenStretch *stretch) {
  if (**text == '\0') {
    return false;
  }
  stretch->text = *text;
  stretch->length =
      WRENStrTokenize(token, *text, kTokenDelimiters, kTokenDelimiters, 0, kTokenQuote, 0);
  stretch->lead = stretch->length - WRENStrLen(token);
  *text += stretch->length;
  return true;
}

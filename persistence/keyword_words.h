// Names of the oldest blocks that have become words of the language since.
#ifndef ORLI11_PERSISTENCE_KEYWORD_WORDS_H
#define ORLI11_PERSISTENCE_KEYWORD_WORDS_H

#include "platform/owned.h"

// A copy of the text in which every word that is a date unit begins with "_"; null when there is no
// memory.
OwnedText RenameKeywordWords(const char *text);

#endif

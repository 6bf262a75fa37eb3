// Names in the oldest blocks that have since become words of the language.
#ifndef ORLI11_PERSISTENCE_KEYWORD_WORDS_H
#define ORLI11_PERSISTENCE_KEYWORD_WORDS_H

#include "platform/owned.h"

// A copy of the text in which every word that is a date unit begins with "_"; null when out of
// memory.
OwnedText RenameKeywordWords(const char *text);

#endif

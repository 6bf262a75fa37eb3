// Names of the oldest blocks that have become words of the language since.
#ifndef ORLI11_PERSISTENCE_KEYWORD_WORDS_H
#define ORLI11_PERSISTENCE_KEYWORD_WORDS_H

// A copy of the text in which every word that is a date unit begins with "_", in a block of
// WRENMemAlloc; null when there is no memory.
char *RenameKeywordWords(const char *text);

#endif

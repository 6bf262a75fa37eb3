// Characters as numbers, and their case.
//
// A character's code is its byte in 1252, the byte or the two bytes of the pair (lead byte first)
// in 932, and the code point in UTF-8, where a byte that starts no valid sequence has a code beyond
// all code points. Case mappings keep the count of bytes, so texts change case in place.
#ifndef ORLI11_CLOSED_WREN_CASEMAP_H
#define ORLI11_CLOSED_WREN_CASEMAP_H

#include <cstddef>
#include <cstdint>

#include "closed/wren/codepage.h"

// Each step-th code from `first` to `last` maps to itself plus `delta`.
struct CaseRun {
  uint32_t first, last, step;
  int32_t delta;
};

// Code of bytes that are not UTF-8: kStrayByte + byte.
constexpr uint32_t kStrayByte = 0x110000;

struct TextChar {
  uint32_t code;
  size_t bytes;  // 0 at the terminator
};

TextChar CharAt(const char *text, CodePage page);

uint32_t UpperCode(uint32_t code, CodePage page);
uint32_t LowerCode(uint32_t code, CodePage page);
// Title case, for the first letter of a word in lower case: the capital, but of a digraph (dž) only
// the first part is capital, and scripts that use capitals for whole words only are unchanged.
uint32_t TitleCode(uint32_t code, CodePage page);

// Case folding: characters that differ only in case fold to the same code. (Upper case of the lower
// case: some letters have two small forms, some two capital ones.)
uint32_t CaselessCode(uint32_t code, CodePage page);

// Writes the bytes of a character, as many as its TextChar says.
void WriteChar(char *target, uint32_t code, CodePage page);

// True for the characters that words consist of: letters, digits and what belongs to them. False
// for blanks, punctuation, symbols and stray bytes.
bool IsWordCode(uint32_t code, CodePage page);

// True for characters that do not end a word when they are inside it: the apostrophes, straight and
// curly, and the middle dot of Catalan.
bool JoinsLetters(uint32_t code, CodePage page);

#endif

/* foreign_words.h - what other languages write, and what is written in formulas instead. */
#ifndef ORLI11_HOST_FOREIGN_WORDS_H
#define ORLI11_HOST_FOREIGN_WORDS_H

#include <cstdint>
#include <string_view>

/* Where a word stands that this language does not have. */
enum WordPlace {
  kWordValue = 1,   /* where a value is wanted */
  kWordCalled = 2,  /* in front of a parenthesis */
  kWordBetween = 4, /* where an operator is wanted */
  kWordAlone = kWordValue | kWordCalled
};

/* The sentence about a word, in any case, at that place; empty when there is none. */
std::string_view HintForWord(std::string_view word, WordPlace place);

/* The sentence about a sign of ASCII, such as "&"; empty when there is none. */
std::string_view HintForSign(std::string_view sign);

/* The sentence about a character beyond ASCII that the text begins with. `length` receives the
 * bytes of the character; it is 1 where the sentence is empty. */
std::string_view HintForCharacter(std::string_view text, size_t &length);

/* The sentence about an error whose number alone tells what is wrong; empty for the others. */
std::string_view HintForError(int32_t id);

constexpr std::string_view kNoComparisons =
    "there are no comparisons: NumberIFF, StrIFF and DateIFF choose by a sign, as in "
    "NumberIFF(a - b, 1, 2, 3), which is 1 if a is less than b, 2 if they are equal, else 3";
constexpr std::string_view kNoComments = "there are no comments in formulas";

#endif

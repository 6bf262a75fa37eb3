// Words and operators of other languages, and what to write in formulas
// instead.
#ifndef ORLI11_HOST_FOREIGN_WORDS_H
#define ORLI11_HOST_FOREIGN_WORDS_H

#include <cstdint>
#include <string_view>

// The context of a word that this language does not have.
enum WordPlace {
  kWordValue = 1,    // where a value is expected
  kWordCalled = 2,   // before a parenthesis
  kWordBetween = 4,  // where an operator is expected
  kWordAlone = kWordValue | kWordCalled
};

// The sentence about a word, in any case, in that context; empty when there is none.
std::string_view HintForWord(std::string_view word, WordPlace place);

// The sentence about an ASCII sign, such as "&"; empty when there is none.
std::string_view HintForSign(std::string_view sign);

// The sentence about a character other than ASCII at the start of the text. `length` receives the
// bytes of the character; it is 1 where the sentence is empty.
std::string_view HintForCharacter(std::string_view text, size_t &length);

// The sentence about an error whose id alone says what is wrong; empty for others.
std::string_view HintForError(int32_t id);

constexpr std::string_view kNoComparisons =
    "there are no comparisons: NumberIFF, StrIFF and DateIFF choose by a sign, as in "
    "NumberIFF(a - b, 1, 2, 3), which is 1 if a is less than b, 2 if they are equal, else 3";
constexpr std::string_view kNoComments = "there are no comments in formulas";

#endif

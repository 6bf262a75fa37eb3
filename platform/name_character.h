// The Unicode characters that names consist of.
#ifndef ORLI11_PLATFORM_NAME_CHARACTER_H
#define ORLI11_PLATFORM_NAME_CHARACTER_H

#include <cstdint>

// True when a name may hold the code point, 80 or more, without quotes: every one but white space,
// dashes, quotation marks and format characters, which a reader cannot distinguish from operators
// or cannot see at all. U+200C and U+200D belong to names, since the spelling of words depends on
// them.
bool IsNameCharacter(uint32_t codePoint);

#endif

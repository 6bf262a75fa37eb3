// The platform's string comparison, case and characters, in the active code page.
#ifndef ORLI11_PLATFORM_TEXT_H
#define ORLI11_PLATFORM_TEXT_H

#include <cstddef>
#include <cstdint>

// The collation order of two strings: letters by alphabet, small before capital among equals. 0 for
// equal bytes only. Null is the empty string and below everything else.
int32_t lstrcmpA(const char *left, const char *right);
// The same without regard to case.
int32_t lstrcmpiA(const char *left, const char *right);

char *lstrcpyA(char *target, const char *source);
char *lstrcatA(char *target, const char *source);

// The next character; does not move past the terminator.
char *CharNextA(const char *text);

// 1 when the single byte is a letter; in UTF-8 every byte from 128 up counts as one.
int32_t IsCharAlphaA(char byte);

// The active code page of the process: 1252, 932 or 65001.
constexpr int32_t kCodePage932 = 932;
constexpr int32_t kCodePageUtf8 = 65001;
int32_t ActiveCodePage();

// The bytes of the longest character of any of them.
constexpr size_t kLongestChar = 4;

// The bytes of the character that begins with this byte: 1 where it is not a lead byte.
int32_t CharacterBytes(uint8_t lead);

// True when both strings have the same bytes; as lstrcmpA(left, right) == 0, but faster.
bool SameText(const char *left, const char *right);

#endif

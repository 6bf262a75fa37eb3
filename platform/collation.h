// Collation: the order of strings in lists for people, in the active code page.
//
// Strings compare by their letters first: signs, then digits, then the Latin alphabet, then all
// other characters by their code. Between strings with the same letters the first accent that
// differs decides (plain before accented), then the first letter that differs in case (small before
// capital). So "cote" < "Cote" < "côte" < "coter". Ligatures sort as they are spelled out: "æ"
// after "ae", "ß" after "ss". The order is built in and the same on every machine.
#ifndef ORLI11_PLATFORM_COLLATION_H
#define ORLI11_PLATFORM_COLLATION_H

#include <cstdint>

// -1, 0 or 1 in a code page: 1252, 932 or 65001, the active one. Linear in the shorter string. 0
// means that at most forms of the same letter and case differ, as the two small sigmas do.
int32_t CollateTexts(const char *left, const char *right, int32_t page);

#endif

// The token rules: which bytes make a token of the formula language.
//
// Notation of a pattern
//   "+="      the bytes between the quotes
//   [a-z_]    one byte of the set; [^ab] one byte that is not in it. \t, \n, \xHH and a backslash
//             before any other byte mean one byte. The zero byte, the end of a text, is in no
//             set.
//   {name}    the definition of that name
//   x y  x|y  x and then y; x or y. Blanks between parts mean nothing.
//   x? x* x+  at most one, any number of, one or more x; ( ) group
//   /         the mark: a match of the rule is cut at the last mark that it passed
//
// The build makes the automaton of automaton.h from these rows.
#ifndef ORLI11_LANGUAGE_TOKEN_RULES_H
#define ORLI11_LANGUAGE_TOKEN_RULES_H

#include <cstdint>
#include <iterator>

struct TokenDefinition {
  const char *name;
  const char *pattern;
};

// A definition uses only those above it.
//
// A string literal, as a drawing of its states ("stop" ends the match):
//
//   state     other bytes  backslash  single quote  accepting
//   inside    inside       escaped    closed        no          after the opening quote
//   escaped   inside       escaped    quoted        no
//   closed    stop         stop       inside        yes         the next quote doubles this one
//   quoted    inside       escaped    quoted        yes         an escaped quote or, when no other
//                                                               follows, the closing one
constexpr TokenDefinition kTokenDefinitions[] = {
    {"letter", R"([A-Za-z])"},
    {"word", R"({letter}+)"},
    {"month", R"({letter}{letter}{letter}+)"},
    {"number", R"([0-9]+)"},
    {"space", R"([\t\n ]+)"},

    // A pair is a double-byte character; the single bytes from 0x81 up are letters of other code
    // pages. The action determines which of the two a byte is.
    {"pair", R"([\x81-\x9F\xE0-\xFC] [\x40-\x7E\x80-\xFC])"},
    {"namestart", R"([A-Za-z#$_@\x81-\xFF]|{pair})"},
    {"plainname", R"({namestart}({namestart}|[0-9])*)"},
    {"segment", R"({plainname} | ["][^"]+["] | [`][^`]+[`])"},

    {"dash", R"([-/\\])"},
    {"separator", R"([-./:\\])"},
    {"point", R"([.:])"},
    {"tail", R"(","[ ]* | [ ]+)"},
    // The forms 1-2-99 and 1/2.99; 1.2/99; 1.2.99; 1-Jan-99; Jan 1, 99. 1 Jan 99, which ends after
    // its second letter where a time follows: the letters may be a marker as in "1 am".
    {"date", R"({number}{dash}{number}{separator}{number} |
                {number}{point}{number}{dash}{number} |
                {number}{point}{number}{point}{number} |
                {number}{separator}{word}{separator}{number} |
                {month}{space}{number}{tail}{number} |
                {number}{space}{letter}{letter} / {letter}+ {tail}{number})"},
    {"time", R"({number}({point}{number}({point}{number}({point}{number})?)?)?)"},
    // "am", "pm" or what the country says, and the byte that must follow.
    {"marker", R"({space}? {letter}{letter} / [\n ()*+,\-/|])"},

    {"escapes", R"([\\][\\']*)"},
};

// ORDER RULE: kTokenRules below and kRuleActions in scan_actions.cpp follow this list. At equal
// length an earlier rule takes precedence.
enum TokenRule : uint8_t {
  kRuleWord,
  kRulePhrase,  // two words that may be a keyword
  kRuleSystemName,
  kRuleName,
  kRuleNumber,
  kRuleExponent,  // a number with exponent: one digit before the point, a sign after the E
  kRuleFraction,
  kRuleMonthDate,  // 1 Jan 99
  kRuleDate,
  kRuleString,
  kRuleCall,  // a name with its parenthesis
  kRuleConcat,
  kRuleOperator,
  kRuleSpace,
  kRuleOther,
  kTokenRuleCount
};

struct TokenRuleRow {
  TokenRule rule;
  const char *pattern;
};

constexpr TokenRuleRow kTokenRules[] = {
    {kRuleWord, R"({word})"},
    {kRulePhrase, R"({word} " " {word})"},
    {kRuleSystemName, R"("@" ([Nn][Oo][Ww] | [Pp][Ii]))"},
    {kRuleName, R"({segment} ("." {segment} ("." {segment})?)?)"},
    {kRuleNumber, R"({number} ("." [0-9]*)?)"},
    {kRuleExponent, R"([0-9] "." {number} [Ee] [-+] {number})"},
    {kRuleFraction, R"([0-9]* "." {number} | {number})"},
    {kRuleMonthDate, R"({number}{space}{month}{tail}{number})"},
    {kRuleDate, R"({date} (({space}|{separator}) {time} {marker}?)? |
       {number} ({point}{number} ({point}{number})?)? {marker}?)"},
    {kRuleString, R"("'" ([^\\'] | "''" | {escapes}[^\\'])* ("'" | {escapes}"'"))"},
    {kRuleCall, R"({plainname} [ ]* "(")"},
    {kRuleConcat, R"("||")"},
    {kRuleOperator, R"([%()*+,\-/<=>{}])"},
    {kRuleSpace, R"({space})"},
    {kRuleOther, R"([^\n])"},
};
static_assert(std::size(kTokenRules) == kTokenRuleCount);

// In UTF-8 every byte from 128 up belongs to a name and none begins a double-byte pair. The
// automaton reads them all as this byte: a letter that is neither half of a pair.
constexpr uint8_t kUtf8NameByte = 0xFF;

#endif

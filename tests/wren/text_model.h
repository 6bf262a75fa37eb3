// A plain model of text in a code page: the characters as separate strings.
#ifndef ORLI11_TESTS_WREN_TEXT_MODEL_H
#define ORLI11_TESTS_WREN_TEXT_MODEL_H

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

using Chars = std::vector<std::string>;

constexpr int32_t kCodePages[] = {1252, 932, 65001};

// Sets the active code page for a scope of a test; restores the default afterwards.
struct CodePageScope {
  explicit CodePageScope(int32_t page);
  ~CodePageScope();
  CodePageScope(const CodePageScope &) = delete;
  CodePageScope &operator=(const CodePageScope &) = delete;
};

// The characters of a text. In UTF-8 a character is what is the encoding of some code point.
Chars SplitChars(const std::string &text, int32_t page);
// A count below 0 is none; all that there are for one beyond the end.
std::string JoinChars(const Chars &chars, int64_t first, int64_t count);
std::string Utf8Of(uint32_t codePoint);

// Text of up to `most` pieces that are likely to break a walk: characters of every length, bytes
// that are not characters, blanks, quotes, delimiters.
std::string RandomText(std::mt19937 &random, int32_t page, size_t most);

// A heap block of exactly `bytes` bytes, filled with 7E, so that a sanitizer sees a byte too much.
std::unique_ptr<char[]> ExactBuffer(size_t bytes);

// The bytes in a form that a failure can be read in.
std::string Shown(const std::string &text);

// The lines that a command prints; fails the test when the command fails.
std::vector<std::string> LinesOf(const std::string &command);

#endif

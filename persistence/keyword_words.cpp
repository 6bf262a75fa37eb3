#include "persistence/keyword_words.h"

#include <cstring>

#include "analysis/token_walk.h"
#include "orli11.h"
#include "platform/text.h"
#include "wreni11.h"

namespace {

// Longer tokens are not unit words.
constexpr int32_t kLongestWord = 15;

// A changed word has at least three letters and follows a delimiter or begins the text.
uint32_t RoomForRenamed(size_t length) {
  return static_cast<uint32_t>(length + length / 3 + 2);
}

}  // namespace

OwnedText RenameKeywordWords(const char *text) {
  const size_t length = std::strlen(text);
  if (length > INT32_MAX / 2) {
    return nullptr;
  }
  OwnedText renamed = Allocate<char>(RoomForRenamed(length));
  const OwnedText token = Allocate<char>(length, 1);
  if (renamed == nullptr || token == nullptr) {
    return nullptr;
  }
  char *target = renamed.get();
  for (TokenSpan span; NextToken(&text, token.get(), &span);) {
    char word[kLongestWord + 2];
    const bool changes =
        span.length - span.lead <= kLongestWord && ORLInputNameIsKeyword(word, token.get()) != 0;
    std::memcpy(target, span.text, static_cast<size_t>(span.length));
    if (changes) {
      lstrcpyA(target + span.lead, word);
    }
    target += span.length + (changes ? 1 : 0);
  }
  *target = '\0';
  return renamed;
}

// Placeholders: words in a text that the user still has to replace.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "analysis/token_walk.h"
#include "editor/editor.h"
#include "editor/window_calls.h"
#include "engine/module.h"
#include "platform/text.h"

namespace {

struct Span {
  int32_t start, length;  // start -1: nothing
};

bool IsPlaceholder(const EditorState &editor, const char *token) {
  if (editor.editorMode != kModeFormula && WRENStrEqualNoCase(token, editor.expressionWord) != 0) {
    return true;
  }
  return std::any_of(std::begin(moduleTexts.typeLabels), std::end(moduleTexts.typeLabels),
                     [token](const char *label) { return WRENStrEqualNoCase(token, label) != 0; });
}

// The first token from a byte on that is a placeholder; quoted text is one token. `token` has
// capacity for the text.
Span FindWord(const EditorState &editor, const char *text, char *token, int32_t from = 0) {
  int32_t used = 0;
  while (text[used] != '\0') {
    used += WRENStrTokenize(token, text + used, ORL_WORD_DELIMITERS, ORL_WORD_DELIMITERS, 0,
                            kTokenQuote, 0);
    const int32_t length = WRENStrLen(token);
    if (used - length >= from && IsPlaceholder(editor, token)) {
      return {used - length, length};
    }
  }
  return {-1, 0};
}

// The first occurrence of exactly these bytes, from an offset on, that is not in the middle of a
// character.
Span FindBytes(const char *text, const char *pattern, int32_t from = 0) {
  const int32_t length = WRENStrLen(pattern);
  for (const char *at = text; *at != '\0'; at = CharNextA(at)) {
    if (at - text >= from && std::strncmp(at, pattern, static_cast<size_t>(length)) == 0) {
      return {static_cast<int32_t>(at - text), length};
    }
  }
  return {-1, 0};
}

Span FindPlaceholder(const EditorState &editor, const char *text, char *token) {
  Span found = FindWord(editor, text, token);
  if (found.start < 0 && editor.editorMode == kModeSet) {
    found = FindBytes(text, editor.expressionTail);
  }
  return found.start < 0 ? FindBytes(text, editor.anyTail) : found;
}

// In order of position, words and tails alike.
Span FindFrom(const EditorState &editor, const char *text, char *token, int32_t from) {
  Span first = {-1, 0};
  for (const Span found :
       {FindWord(editor, text, token, from), FindBytes(text, editor.anyTail, from),
        editor.editorMode == kModeSet ? FindBytes(text, editor.expressionTail, from)
                                      : Span{-1, 0}}) {
    if (found.start >= 0 && (first.start < 0 || found.start < first.start)) {
      first = found;
    }
  }
  return first;
}

}  // namespace

bool OrlFindPlaceholder(const EditorState &editor, const char *text, int32_t from, int32_t *start,
                        int32_t *end) {
  const OwnedText token = Allocate<char>(std::strlen(text) + 1);
  if (token == nullptr) {
    return false;
  }
  Span found = FindFrom(editor, text, token.get(), from);
  if (found.start < 0) {
    found = FindFrom(editor, text, token.get(), 0);
  }
  *start = found.start;
  *end = found.start + found.length;
  return found.start >= 0;
}

void OrlSelectPlaceholder(const EditorState &editor) {
  OrlWindow edit = ItemOf(editor.dialog, kEditText);
  const Selection selection = SelectionOf(edit);
  if (selection.start == selection.end) {
    const OwnedText text = TextOfWindow(edit);
    const OwnedText token = text == nullptr ? nullptr : Allocate<char>(std::strlen(text.get()) + 1);
    if (token == nullptr) {
      return;
    }
    const Span found = FindPlaceholder(editor, text.get(), token.get());
    if (found.start >= 0) {
      Select(edit, found.start, found.start + found.length);
    }
  }
  OrlEnableEditButtons(editor);
}

void OrlSeedText(const EditorState &editor) {
  if (editor.editorMode == kModeFormula) {
    return;
  }
  const char *word = editor.expressionWord;
  char text[3 * kLabelSize + 16];
  if (editor.editorMode == kModeRange) {
    std::snprintf(text, sizeof text, "%s AND %s", word, word);
  } else {
    std::snprintf(text, sizeof text, "%s, %s %s", word, word, editor.expressionTail);
  }
  SetItemText(editor.dialog, kEditText, text);
  Select(ItemOf(editor.dialog, kEditText), 0, WRENStrLen(word));
  OrlEnableEditButtons(editor);
}

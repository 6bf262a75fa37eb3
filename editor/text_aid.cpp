// What a window system can query about the text that is being written. It passes the text of the
// edit, and lists by their ids.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/mode_texts.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"
#include "language/parse.h"
#include "platform/text.h"

namespace {

constexpr int32_t kLists[] = {kListItems, kListFormulas, kListFunctions, 0};

int32_t FindPlaceholder(const char *text, int32_t from, int32_t *start, int32_t *end) {
  const EditorState *editor = OpenEditor();
  return editor != nullptr && OrlFindPlaceholder(*editor, text, from, start, end) ? 1 : 0;
}

// As in "Number", or "Set: String" for a set or range.
void ReportType(int32_t kind, uint16_t dataType, OrlTextState *state) {
  const char *type = OrlTypeLabel(dataType);
  if (kind == kModeFormula) {
    std::snprintf(state->message, sizeof state->message, "%s", type);
  } else {
    const EditorText word = LoadText(kModeTexts[kind].word);
    std::snprintf(state->message, sizeof state->message, "%.200s: %s", word.text, type);
  }
}

void ReportError(const FormulaError &error, int32_t length, OrlTextState *state) {
  state->error = error.id;
  state->start = std::clamp(error.offset, 0, length);
  const int64_t end = int64_t{state->start} + std::max(error.length, 0);
  state->end = static_cast<int32_t>(std::min<int64_t>(end, length));
  ORLErrorText(error.id, sizeof state->message, state->message);
}

int32_t Check(const char *text, OrlTextState *state) {
  EditorState *editor = OpenEditor();
  const OwnedText copy = editor == nullptr ? nullptr : CopyText(text);
  if (copy == nullptr) {
    return 0;
  }
  *state = {};
  OrlCutTail(*editor, copy.get());
  if (copy.get()[std::strspn(copy.get(), " \t\r\n")] == '\0') {
    return 0;
  }
  HEXP exp = OrlCurrentExpression(*editor);
  FormulaError error = {};
  uint16_t dataType = 0;
  const int32_t kind = ClassifyText(editor->ec, exp, copy.get(),
                                    exp == nullptr ? nullptr : exp->entry.name, &error, &dataType);
  if (kind < 0) {
    ReportError(error, WRENStrLen(copy.get()), state);
  } else {
    ReportType(kind, dataType, state);
  }
  return 1;
}

void Insert(int32_t list, const char *row) {
  EditorState *editor = OpenEditor();
  if (editor != nullptr) {
    OrlInsertName(*editor, list, row);
  }
}

int32_t Print(const char *text, char *buffer, int32_t size) {
  std::snprintf(buffer, static_cast<size_t>(size), "%s", text);
  return 1;
}

int32_t DescribeFunction(const EditorState &editor, const char *name, char *buffer, int32_t size) {
  const ExprItem *function = ItemFind(&editor.ec->functions, name);
  if (function == nullptr) {
    return 0;
  }
  Print(name, buffer, size);
  return OrlHostDescribes(name, buffer, size) || OrlBuildTemplate(buffer, size, function) ? 1 : 0;
}

int32_t Describe(int32_t list, const char *row, char *buffer, int32_t size) {
  const EditorState *editor = OpenEditor();
  if (editor == nullptr || size <= 0) {
    return 0;
  }
  if (list == kListFunctions) {
    return DescribeFunction(*editor, row, buffer, size);
  }
  if (list == kListFormulas) {
    HEXP exp = ORLHEXPFromName(editor->ec, row);
    return exp == nullptr ? 0 : Print(exp->text, buffer, size);
  }
  const ExprItem *item = ItemFind(&editor->ec->inputs, row);
  return item == nullptr ? 0
                         : Print(OrlTypeLabel(static_cast<uint16_t>(item->dataType)), buffer, size);
}

int32_t IsShown(int32_t list, const char *row) {
  return list != kListFunctions || OrlHostShows(row) ? 1 : 0;
}

int32_t Next() {
  EditorState *editor = OpenEditor();
  return editor != nullptr && OrlSaveAndGoOn(*editor) ? 1 : 0;
}

const char *HelpPath(int32_t *context) {
  const EditorState *editor = OpenEditor();
  *context = editor == nullptr ? 0 : editor->ec->helpContext;
  return editor == nullptr ? "" : editor->ec->helpPath;
}

constexpr OrlTextAid kTextAid = {sizeof kTextAid, FindPlaceholder, Check, kLists,  Insert,
                                 Describe,        IsShown,         Next,  HelpPath};

}  // namespace

void OrlOfferTextAid(const EditorState &editor) {
  const auto setTextAid = Optional(&OrlWindowSystem::SetTextAid);
  if (setTextAid != nullptr) {
    setTextAid(ItemOf(editor.dialog, kEditText), &kTextAid);
  }
}

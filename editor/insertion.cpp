// Insertion into the text: picks from the lists, the buttons, the values, and brackets.
#include <algorithm>
#include <cstring>

#include "editor/editor.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"
#include "language/tree.h"
#include "platform/text.h"

namespace {

constexpr int32_t kTailLimit = 40;  // a selection of that many bytes is no tail

// The selection of an edit as it fits the text that was taken from it.
Selection SelectionIn(OrlWindow edit, int32_t length) {
  const Selection selection = SelectionOf(edit);
  const int32_t start = std::clamp(selection.start, 0, length);
  return {start, std::clamp(selection.end, start, length)};
}

// What stands around an inserted text, by the tail that it replaces.
struct Surroundings {
  const char *before;  // goes ahead of the inserted text
  const char *tail;    // goes to the end of the whole text, behind a blank
};

Surroundings SurroundingsFor(const char *text, Selection selection) {
  const EditorState &editor = CurrentEditor();
  char selected[kTailLimit];
  const int32_t length = selection.end - selection.start;
  if (length < 1 || length >= kTailLimit) {
    return {"", nullptr};
  }
  std::memcpy(selected, text + selection.start, static_cast<size_t>(length));
  selected[length] = '\0';
  if (WRENStrEqualNoCase(selected, editor.anyTail) != 0) {
    return {",", nullptr};
  }
  if (editor.editorMode == kModeSet && WRENStrEqualNoCase(selected, editor.expressionTail) != 0) {
    return {",", editor.expressionTail};
  }
  return {"", nullptr};
}

char *Put(char *target, const char *text, int32_t length) {
  std::memcpy(target, text, static_cast<size_t>(length));
  return target + length;
}

// The name of a function with its template, in a block of its own; null without memory.
char *FunctionWithTemplate(const char *name, const ExprItem *function) {
  const int32_t size = WRENStrLen(name) + OrlTemplateLength(function) + 1;
  char *text = static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(size)));
  if (text != nullptr) {
    Put(text, name, WRENStrLen(name));
    OrlBuildTemplate(text, size, function);
  }
  return text;
}

// Inserts a function with its template and selects the first placeholder.
void InsertFunction(OrlWindow edit, const char *name) {
  const ExprItem *function = ItemFind(&CurrentEditor().ec->functions, name);
  char *text = function == nullptr ? nullptr : FunctionWithTemplate(name, function);
  if (text == nullptr) {
    return;
  }
  const bool distinct = (function->itemFlags & ORL_FUNC_NEEDS_DISTINCT) != 0;
  const bool bracket = function->firstOptional == 0 && function->optionalCount != 0;
  const int32_t ahead = WRENStrLen("(") + (distinct ? WRENStrLen("DISTINCT ") : 0) +
                        (bracket ? WRENStrLen("[") : 0) + WRENStrLen(" ");
  const int32_t label = function->paramCount > 0 ? WRENStrLen(OrlParameterLabel(function, 0)) : 0;
  const int32_t at = OrlInsertText(edit, text, WRENStrLen(text));
  if (at >= 0 && label > 0) {
    const int32_t start = at + WRENStrLen(name) + ahead;
    Select(edit, start, start + label);
  }
  WRENMemFree(text);
}

// A formula is written with parentheses. It cannot name itself, and no text can hold a range or a
// set by its name.
void InsertFormula(OrlWindow edit, const char *name) {
  HEXP exp = ORLHEXPFromName(CurrentEditor().ec, name);
  if (exp == nullptr || exp == OrlCurrentExpression() || NodeKindOf(exp->tree) == NODE_SET ||
      NodeKindOf(exp->tree) == NODE_RANGE) {
    return;
  }
  const int32_t length = WRENStrLen(name);
  char *text = static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(length) + 3));
  if (text != nullptr) {
    Put(Put(text, name, length), "()", 2);
    OrlInsertText(edit, text, length + 2);
    WRENMemFree(text);
  }
}

}  // namespace

void OrlInsertItem(OrlWindow list) {
  const int32_t row = CurrentRow(list);
  const int32_t id = Windows()->GetDlgCtrlID(list);
  if (row < 0 || (id == kListFormulas && row == 0)) {
    return;
  }
  char *name = TextOfRow(list, row);
  OrlWindow edit = ItemOf(Windows()->GetParent(list), kEditText);
  if (name == nullptr) {
    return;
  }
  switch (id) {
    case kListItems:
      OrlInsertText(edit, name, WRENStrLen(name));
      break;
    case kListFunctions:
      InsertFunction(edit, name);
      break;
    case kListFormulas:
      InsertFormula(edit, name);
      break;
    default:
      break;
  }
  WRENMemFree(name);
}

int32_t OrlInsertText(OrlWindow edit, const char *text, int32_t length) {
  char *old = TextOfWindow(edit);
  if (old == nullptr) {
    return -1;
  }
  const int32_t oldLength = WRENStrLen(old);
  const Selection selection = SelectionIn(edit, oldLength);
  const auto [before, tail] = SurroundingsFor(old, selection);
  const int32_t behind = oldLength - selection.end;
  const int64_t size = int64_t{selection.start} + WRENStrLen(before) + length + behind +
                       (tail == nullptr ? 0 : 1 + WRENStrLen(tail)) + 1;
  char *fresh =
      size > INT32_MAX ? nullptr : static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(size)));
  if (fresh == nullptr) {
    WRENMemFree(old);
    return -1;
  }
  char *at = Put(fresh, old, selection.start);
  at = Put(at, before, WRENStrLen(before));
  const auto start = static_cast<int32_t>(at - fresh);
  at = Put(at, text, length);
  at = Put(at, old + selection.end, behind);
  if (tail != nullptr) {
    Put(Put(at, " ", 1), tail, WRENStrLen(tail));
  }
  Windows()->SetWindowText(edit, fresh);
  WRENMemFree(old);
  WRENMemFree(fresh);
  Select(edit, start + length, start + length);
  Windows()->SetFocus(edit);
  SetModified(edit, true);
  OrlWindow dialog = Windows()->GetParent(edit);
  Send(dialog, ORL_WM_COMMAND, kEditText | ORL_EN_CHANGE << 16, reinterpret_cast<intptr_t>(edit));
  Windows()->PostMessage(dialog, kMessageSelectPlaceholder, 0, 0);
  return start;
}

void OrlWrapSelection(OrlWindow edit) {
  char *old = TextOfWindow(edit);
  const int32_t length = WRENStrLen(old);
  char *fresh = length > INT32_MAX - 3
                    ? nullptr
                    : static_cast<char *>(WRENMemAlloc(static_cast<uint32_t>(length) + 3));
  if (old != nullptr && fresh != nullptr) {
    const auto [start, end] = SelectionIn(edit, length);
    char *at = Put(Put(fresh, old, start), "(", 1);
    at = Put(Put(at, old + start, end - start), ")", 1);
    Put(at, old + end, length - end);
    Windows()->SetWindowText(edit, fresh);
    Select(edit, length + 2, length + 2);
    Windows()->SetFocus(edit);
    SetModified(edit, true);
  }
  WRENMemFree(old);
  WRENMemFree(fresh);
}

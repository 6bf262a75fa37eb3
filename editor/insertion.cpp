// Insertion into the text: picks from the lists, the buttons, the values, and brackets.
#include <algorithm>
#include <cassert>
#include <cstring>

#include "editor/editor.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/items.h"
#include "language/tree.h"
#include "platform/text.h"

namespace {

constexpr int32_t kTailLimit = 40;  // a selection of that many bytes is not a tail

// The selection of an edit, clamped to the text that was read from it.
Selection SelectionIn(OrlWindow edit, int32_t length) {
  const Selection selection = SelectionOf(edit);
  const int32_t start = std::clamp(selection.start, 0, length);
  return {start, std::clamp(selection.end, start, length)};
}

// What is added around an inserted text, by the placeholder tail that it replaces.
struct Surroundings {
  const char *before;  // is inserted before the text
  const char *tail;    // is appended to the whole text after a blank
};

Surroundings SurroundingsFor(const EditorState &editor, const char *text, Selection selection) {
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

// The name of a function with its template, in a block of its own; null when out of memory.
OwnedText FunctionWithTemplate(const char *name, const ExprItem *function) {
  const int32_t size = WRENStrLen(name) + OrlTemplateLength(function) + 1;
  OwnedText text = Allocate<char>(static_cast<uint32_t>(size));
  if (text != nullptr) {
    Put(text.get(), name, WRENStrLen(name));
    OrlBuildTemplate(text.get(), size, function);
  }
  return text;
}

// Inserts a function with its template and selects the first placeholder.
void InsertFunction(const EditorState &editor, const char *name) {
  const ExprItem *function = ItemFind(&editor.ec->functions, name);
  const OwnedText text = function == nullptr ? nullptr : FunctionWithTemplate(name, function);
  if (text == nullptr) {
    return;
  }
  const bool distinct = (function->itemFlags & ORL_FUNC_NEEDS_DISTINCT) != 0;
  const bool bracket = function->firstOptional == 0 && function->optionalCount != 0;
  const int32_t prefix = WRENStrLen("(") + (distinct ? WRENStrLen("DISTINCT ") : 0) +
                         (bracket ? WRENStrLen("[") : 0) + WRENStrLen(" ");
  const int32_t label = function->paramCount > 0 ? WRENStrLen(OrlParameterLabel(function, 0)) : 0;
  const int32_t at = OrlInsertText(editor, text.get(), WRENStrLen(text.get()));
  if (at >= 0 && label > 0) {
    const int32_t start = at + WRENStrLen(name) + prefix;
    Select(ItemOf(editor.dialog, kEditText), start, start + label);
  }
}

// A formula is written with parentheses. It cannot refer to itself, and no text can refer to a
// range or a set by its name.
void InsertFormula(EditorState &editor, const char *name) {
  HEXP exp = ORLHEXPFromName(editor.ec, name);
  if (exp == nullptr || exp == OrlCurrentExpression(editor) || NodeKindOf(exp->tree) == NODE_SET ||
      NodeKindOf(exp->tree) == NODE_RANGE) {
    return;
  }
  const int32_t length = WRENStrLen(name);
  const OwnedText text = Allocate<char>(static_cast<uint32_t>(length) + 3);
  if (text != nullptr) {
    Put(Put(text.get(), name, length), "()", 2);
    OrlInsertText(editor, text.get(), length + 2);
  }
}

}  // namespace

void OrlInsertItem(EditorState &editor, OrlWindow list) {
  const int32_t row = CurrentRow(list);
  const int32_t id = Windows()->GetDlgCtrlID(list);
  if (row < 0 || (id == kListFormulas && row == 0)) {
    return;
  }
  const OwnedText name = TextOfRow(list, row);
  if (name != nullptr) {
    OrlInsertName(editor, id, name.get());
  }
}

void OrlInsertName(EditorState &editor, int32_t list, const char *name) {
  switch (list) {
    case kListItems:
      OrlInsertText(editor, name, WRENStrLen(name));
      break;
    case kListFunctions:
      InsertFunction(editor, name);
      break;
    case kListFormulas:
      InsertFormula(editor, name);
      break;
    default:
      break;
  }
}

int32_t OrlInsertText(const EditorState &editor, const char *text, int32_t length) {
  assert(text != nullptr && length >= 0);
  OrlWindow edit = ItemOf(editor.dialog, kEditText);
  const OwnedText oldText = TextOfWindow(edit);
  if (oldText == nullptr) {
    return -1;
  }
  const char *old = oldText.get();
  const int32_t oldLength = WRENStrLen(old);
  const Selection selection = SelectionIn(edit, oldLength);
  const auto [before, tail] = SurroundingsFor(editor, old, selection);
  const int32_t rest = oldLength - selection.end;
  const int64_t size = int64_t{selection.start} + WRENStrLen(before) + length + rest +
                       (tail == nullptr ? 0 : 1 + WRENStrLen(tail)) + 1;
  const OwnedText fresh = size > INT32_MAX ? nullptr : Allocate<char>(static_cast<uint64_t>(size));
  if (fresh == nullptr) {
    return -1;
  }
  char *at = Put(fresh.get(), old, selection.start);
  at = Put(at, before, WRENStrLen(before));
  const auto start = static_cast<int32_t>(at - fresh.get());
  at = Put(at, text, length);
  at = Put(at, old + selection.end, rest);
  if (tail != nullptr) {
    Put(Put(at, " ", 1), tail, WRENStrLen(tail));
  }
  Windows()->SetWindowText(edit, fresh.get());
  Select(edit, start + length, start + length);
  Windows()->SetFocus(edit);
  SetModified(edit, true);
  Send(editor.dialog, ORL_WM_COMMAND, kEditText | ORL_EN_CHANGE << 16,
       reinterpret_cast<intptr_t>(edit));
  Windows()->PostMessage(editor.dialog, kMessageSelectPlaceholder, 0, 0);
  return start;
}

void OrlWrapSelection(const EditorState &editor) {
  OrlWindow edit = ItemOf(editor.dialog, kEditText);
  const OwnedText oldText = TextOfWindow(edit);
  const char *old = oldText.get();
  const int32_t length = WRENStrLen(old);
  const OwnedText fresh =
      length > INT32_MAX - 3 ? nullptr : Allocate<char>(static_cast<uint32_t>(length) + 3);
  if (old == nullptr || fresh == nullptr) {
    return;
  }
  const auto [start, end] = SelectionIn(edit, length);
  char *at = Put(Put(fresh.get(), old, start), "(", 1);
  at = Put(Put(at, old + start, end - start), ")", 1);
  Put(at, old + end, length - end);
  Windows()->SetWindowText(edit, fresh.get());
  Select(edit, length + 2, length + 2);
  Windows()->SetFocus(edit);
  SetModified(edit, true);
}

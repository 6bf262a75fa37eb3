// The values dialog: values of the selected data item, listed by the host, which go into the text
// as literals.
#include <algorithm>
#include <cstring>
#include <iterator>

#include "dates/date_template.h"
#include "dates/date_text.h"
#include "editor/editor.h"
#include "editor/editor_text.h"
#include "editor/window_calls.h"
#include "engine/context.h"
#include "engine/host_call.h"
#include "engine/items.h"
#include "resources/dialogs.h"

namespace {

// The title of the dialog without an item; one dialog at a time.
thread_local char baseTitle[kLabelSize];

// ---- Literals -----------------------------------------------------------------------------------

char *DateLiteral(const EditorState &editor, const char *text) {
  const ExprContext &ec = *editor.ec;
  const bool anyTemplate = std::any_of(std::begin(ec.dateConvert), std::end(ec.dateConvert),
                                       [](const char *convert) { return convert != nullptr; });
  if ((ec.dateConvertFlags & ORL_CONVERT_EXTENDED_TEXT) != 0 || !anyTemplate) {
    return nullptr;
  }
  char date[kDateTextSize];
  const int32_t form = DateRewriteText(text, date, ec.pictures[0], ec.pictures[1], ec.pictures[2]);
  const bool quoted =
      (ec.dateConvertFlags & ORL_CONVERT_SETS_PLAIN) != 0 && editor.editorMode == kModeSet;
  const char *format = quoted ? "'%s'" : TemplateOfForm(ec.dateConvert, form);
  if (format == nullptr) {
    return nullptr;
  }
  char *literal = static_cast<char *>(
      WRENMemAlloc(static_cast<uint32_t>(std::strlen(format) + std::strlen(date) + 1)));
  if (literal != nullptr) {
    char *end = literal;
    FillDateTemplate(format, date, [&end](const char *part, int64_t length) {
      std::memcpy(end, part, static_cast<size_t>(length));
      end += length;
    });
  }
  return literal;
}

// What the formula language wants for a listed value, in a block of its own; null when the value
// goes in as it is listed.
char *LiteralOf(const EditorState &editor, const char *text) {
  if (editor.itemValueType == ORL_TYPE_DATE) {
    return DateLiteral(editor, text);
  }
  if (editor.itemValueType != ORL_TYPE_STRING) {
    return nullptr;
  }
  char *literal =
      static_cast<char *>(WRENMemAlloc(2 * static_cast<uint32_t>(std::strlen(text)) + 3));
  if (literal != nullptr) {
    OrlQuoteString(literal, text);
  }
  return literal;
}

void InsertValue(OrlWindow window) {
  EditorState &editor = CurrentEditor();
  OrlWindow list = ItemOf(window, kListValues);
  char *text = TextOfRow(list, CurrentRow(list));
  if (text == nullptr) {
    return;
  }
  char *literal = LiteralOf(editor, text);
  const char *inserted = literal != nullptr ? literal : text;
  OrlInsertText(ItemOf(Windows()->GetParent(window), kEditText), inserted, WRENStrLen(inserted));
  WRENMemFree(literal);
  WRENMemFree(text);
}

// ---- The window ---------------------------------------------------------------------------------

// Beside the list of functions, and moved back where that would leave the screen.
void PlaceWindow(OrlWindow window) {
  const OrlWindowSystem &windows = *Windows();
  OrlRect own = {};
  OrlRect list = {};
  windows.GetWindowRect(window, &own);
  windows.GetWindowRect(ItemOf(windows.GetParent(window), kListFunctions), &list);
  const int32_t width = own.right - own.left;
  const int32_t height = own.bottom - own.top;
  const int32_t x = std::min(list.right, windows.GetSystemMetrics(ORL_SM_CXFULLSCREEN) - width);
  const int32_t y = std::min(list.top + (list.bottom - list.top) / 4,
                             windows.GetSystemMetrics(ORL_SM_CYFULLSCREEN) - height);
  windows.MoveWindow(window, x, y, width, height);
}

void Open(OrlWindow window) {
  Windows()->GetWindowText(window, baseTitle, sizeof baseTitle);
  PlaceWindow(window);
  Windows()->ShowWindow(window, 1);
}

void TakeItem(OrlWindow window, const char *name) {
  EditorState &editor = CurrentEditor();
  editor.itemValueType = name != nullptr ? InputDataType(editor.ec, name) : -1;
  if (name == nullptr || name[0] == '\0' || !SetJoinedTitle(window, name, baseTitle)) {
    Windows()->SetWindowText(window, baseTitle);
  }
}

void Close(OrlWindow window) {
  OrlWindow dialog = Windows()->GetParent(window);
  CurrentEditor().valuesWindow = nullptr;
  OrlSyncValuesButton(dialog, 0);
  Windows()->DestroyWindow(window);
}

// The dialog goes without having been closed: with the editor, or by a routine of the host.
void Forget(OrlWindow window) {
  if (CurrentEditor().valuesWindow == window) {
    CurrentEditor().valuesWindow = nullptr;
    OrlCaptionValues(Windows()->GetParent(window));
  }
}

}  // namespace

void OrlQuoteString(char *target, const char *text) {
  *target++ = '\'';
  while (*text != '\0') {
    if (*text == '\'') {
      *target++ = '\'';
    }
    // A character goes over whole: the second byte of one may look like a quote.
    for (const char *end = WRENStrAdvance(text, 1); text != end; text++) {
      *target++ = *text;
    }
  }
  *target++ = '\'';
  *target = '\0';
}

void OrlFillValues(OrlWindow dialog, int32_t first) {
  EditorState &editor = CurrentEditor();
  OrlWindow items = ItemOf(dialog, kListItems);
  char *name = TextOfRow(items, CurrentRow(items));
  if (name == nullptr || editor.valuesWindow == nullptr) {
    WRENMemFree(name);
    return;
  }
  SendText(editor.valuesWindow, kMessageTakeItem, 0, name);
  OrlWindow list = ItemOf(editor.valuesWindow, kListValues);
  CallHost([&] { editor.ec->listValuesProc(editor.ec, name, list, first, &editor.valuesMore); });
  WRENMemFree(name);
  OrlFollowContext(dialog);
}

void OrlOpenValues(OrlWindow dialog) {
  EditorState &editor = CurrentEditor();
  if (editor.ec->listValuesProc == nullptr) {
    return;
  }
  if (editor.valuesWindow != nullptr) {
    OrlFillValues(dialog, 0);
    EnableItem(dialog, kButtonValues, false);
    return;
  }
  editor.valuesWindow =
      Windows()->CreateDialogParam(FindDialog(kDialogValues), dialog, OrlListValuesDlgProc, 0);
  if (editor.valuesWindow == nullptr) {
    return;
  }
  OrlFillValues(dialog, 1);
  if (editor.valuesMore == 0) {
    EnableItem(dialog, kButtonValues, false);
  }
}

void OrlSyncValuesButton(OrlWindow dialog, int32_t first) {
  EditorState &editor = CurrentEditor();
  if (editor.ec->listValuesProc == nullptr) {
    return;
  }
  const bool hasRow = CurrentRow(ItemOf(dialog, kListItems)) >= 0;
  EnableItem(dialog, kButtonValues, hasRow);
  OrlCaptionValues(dialog);
  if (hasRow && editor.valuesWindow != nullptr) {
    OrlFillValues(dialog, first);
    if (editor.valuesMore == 0) {
      EnableItem(dialog, kButtonValues, false);
    }
  }
}

intptr_t OrlListValuesDlgProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (!EditorRuns()) {
    return 0;
  }
  switch (message) {
    case ORL_WM_INITDIALOG:
      Open(window);
      return 1;
    case kMessageTakeItem:
      TakeItem(window, reinterpret_cast<const char *>(lParam));
      return 0;
    case ORL_WM_COMMAND:
      if (wParam == (kListValues | uintptr_t{ORL_LBN_DBLCLK} << 16)) {
        InsertValue(window);
      }
      return 0;
    case ORL_WM_CLOSE:
      Close(window);
      return 1;
    case ORL_WM_DESTROY:
      Forget(window);
      return 0;
    default:
      return 0;
  }
}

// The values dialog: values of the selected data item, listed by the host, which are inserted into
// the text as literals.
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

// ---- Literals -----------------------------------------------------------------------------------

OwnedText DateLiteral(const EditorState &editor, const char *text) {
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
  OwnedText literal = Allocate<char>(std::strlen(format) + std::strlen(date) + 1);
  if (literal != nullptr) {
    char *end = literal.get();
    FillDateTemplate(format, date, [&end](const char *part, int64_t length) {
      std::memcpy(end, part, static_cast<size_t>(length));
      end += length;
    });
  }
  return literal;
}

// The literal for a listed value, in a block of its own; null when the value is inserted as it is
// listed.
OwnedText LiteralOf(const EditorState &editor, const char *text) {
  if (editor.itemValueType == ORL_TYPE_DATE) {
    return DateLiteral(editor, text);
  }
  if (editor.itemValueType != ORL_TYPE_STRING) {
    return nullptr;
  }
  OwnedText literal = Allocate<char>(2 * std::strlen(text) + 3);
  if (literal != nullptr) {
    OrlQuoteString(literal.get(), text);
  }
  return literal;
}

void InsertValue(const EditorState &editor, OrlWindow window) {
  OrlWindow list = ItemOf(window, kListValues);
  const OwnedText text = TextOfRow(list, CurrentRow(list));
  if (text == nullptr) {
    return;
  }
  const OwnedText literal = LiteralOf(editor, text.get());
  const char *inserted = literal != nullptr ? literal.get() : text.get();
  OrlInsertText(editor, inserted, WRENStrLen(inserted));
}

// ---- The window ---------------------------------------------------------------------------------

// Placed beside the list of functions, and moved back where that would be off the screen.
void PlaceWindow(const EditorState &editor, OrlWindow window) {
  const OrlWindowSystem &windows = *Windows();
  OrlRect own = {};
  OrlRect list = {};
  windows.GetWindowRect(window, &own);
  windows.GetWindowRect(ItemOf(editor.dialog, kListFunctions), &list);
  const int32_t width = own.right - own.left;
  const int32_t height = own.bottom - own.top;
  const int32_t x = std::min(list.right, windows.GetSystemMetrics(ORL_SM_CXFULLSCREEN) - width);
  const int32_t y = std::min(list.top + (list.bottom - list.top) / 4,
                             windows.GetSystemMetrics(ORL_SM_CYFULLSCREEN) - height);
  windows.MoveWindow(window, x, y, width, height);
}

void Open(EditorState &editor, OrlWindow window) {
  Windows()->GetWindowText(window, editor.valuesTitle, sizeof editor.valuesTitle);
  PlaceWindow(editor, window);
  Windows()->ShowWindow(window, 1);
}

void TakeItem(EditorState &editor, OrlWindow window, const char *name) {
  editor.itemValueType = name != nullptr ? InputDataType(editor.ec, name) : -1;
  if (name == nullptr || name[0] == '\0' || !SetJoinedTitle(window, name, editor.valuesTitle)) {
    Windows()->SetWindowText(window, editor.valuesTitle);
  }
}

void Close(EditorState &editor, OrlWindow window) {
  editor.valuesWindow = nullptr;
  OrlSyncValuesButton(editor, kListingMore);
  Windows()->DestroyWindow(window);
}

// The dialog is destroyed without having been closed: with the editor, or by a host routine.
void Forget(EditorState &editor, OrlWindow window) {
  if (editor.valuesWindow == window) {
    editor.valuesWindow = nullptr;
    OrlCaptionValues(editor);
  }
}

}  // namespace

void OrlQuoteString(char *target, const char *text) {
  *target++ = '\'';
  while (*text != '\0') {
    if (*text == '\'') {
      *target++ = '\'';
    }
    // A character is copied whole: the second byte of one may look like a quote.
    for (const char *end = WRENStrAdvance(text, 1); text != end; ++text) {
      *target++ = *text;
    }
  }
  *target++ = '\'';
  *target = '\0';
}

void OrlFillValues(EditorState &editor, ValuesListing listing) {
  OrlWindow items = ItemOf(editor.dialog, kListItems);
  const OwnedText name = TextOfRow(items, CurrentRow(items));
  if (name == nullptr || editor.valuesWindow == nullptr) {
    return;
  }
  SendText(editor.valuesWindow, kMessageTakeItem, 0, name.get());
  OrlWindow list = ItemOf(editor.valuesWindow, kListValues);
  CallHost(
      [&] { editor.ec->listValuesProc(editor.ec, name.get(), list, listing, &editor.valuesMore); });
  OrlFollowContext(editor);
}

void OrlOpenValues(EditorState &editor) {
  if (editor.ec->listValuesProc == nullptr) {
    return;
  }
  if (editor.valuesWindow != nullptr) {
    OrlFillValues(editor, kListingMore);
    EnableItem(editor.dialog, kButtonValues, false);
    return;
  }
  editor.valuesWindow = Windows()->CreateDialogParam(FindDialog(kDialogValues), editor.dialog,
                                                     OrlListValuesDlgProc, 0);
  if (editor.valuesWindow == nullptr) {
    return;
  }
  OrlFillValues(editor, kListingNew);
  if (editor.valuesMore == 0) {
    EnableItem(editor.dialog, kButtonValues, false);
  }
}

void OrlSyncValuesButton(EditorState &editor, ValuesListing listing) {
  if (editor.ec->listValuesProc == nullptr) {
    return;
  }
  const bool hasRow = CurrentRow(ItemOf(editor.dialog, kListItems)) >= 0;
  EnableItem(editor.dialog, kButtonValues, hasRow);
  OrlCaptionValues(editor);
  if (hasRow && editor.valuesWindow != nullptr) {
    OrlFillValues(editor, listing);
    if (editor.valuesMore == 0) {
      EnableItem(editor.dialog, kButtonValues, false);
    }
  }
}

intptr_t OrlListValuesDlgProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  EditorState *const open = OpenEditor();
  if (open == nullptr) {
    return 0;
  }
  EditorState &editor = *open;
  switch (message) {
    case ORL_WM_INITDIALOG:
      Open(editor, window);
      return 1;
    case kMessageTakeItem:
      TakeItem(editor, window, reinterpret_cast<const char *>(lParam));
      return 0;
    case ORL_WM_COMMAND:
      if (wParam == (kListValues | uintptr_t{ORL_LBN_DBLCLK} << 16)) {
        InsertValue(editor, window);
      }
      return 0;
    case ORL_WM_CLOSE:
      Close(editor, window);
      return 1;
    case ORL_WM_DESTROY:
      Forget(editor, window);
      return 0;
    default:
      return 0;
  }
}

// Rows of the Formulas list: a bitmap for the kind, where there are kinds, and the name.
#include "editor/editor.h"
#include "editor/window_calls.h"
#include "engine/context.h"

void *OrlRowBitmap(const EditorState &editor, int32_t row, const char *text) {
  const int32_t kind =
      row == 0 ? editor.editorMode : KindOfExpression(ORLHEXPFromName(editor.ec, text));
  return editor.rowBitmaps[kind];
}

namespace {

void DrawRow(const EditorState &editor, const OrlDrawItem *draw, const OrlRect *textRect) {
  const OwnedText text = TextOfRow(draw->list, draw->row);
  if (text == nullptr) {
    return;
  }
  void *bitmap = EditorHasModes(editor) ? OrlRowBitmap(editor, draw->row, text.get()) : nullptr;
  if (bitmap != nullptr) {
    const int32_t rowHeight = draw->rect.bottom - draw->rect.top;
    const int32_t down = (rowHeight - editor.bitmapHeight + 1) / 2;
    Windows()->DrawBitmap(draw->surface, bitmap, draw->rect.left, draw->rect.top + down);
  }
  Windows()->DrawText(draw->surface, text.get(), textRect);
}

}  // namespace

void OrlDrawFormulaRow(const EditorState &editor, const OrlDrawItem *draw) {
  if (draw == nullptr) {
    return;
  }
  const bool entire = (draw->action & ORL_DRAW_ENTIRE) != 0;
  const bool asksSelection = (draw->action & ORL_DRAW_SELECT) != 0;
  const bool asksFocus = (draw->action & ORL_DRAW_FOCUS) != 0;
  const bool selected = (draw->state & ORL_STATE_SELECTED) != 0;
  const bool focused = (draw->state & ORL_STATE_FOCUS) != 0;
  OrlRect textRect = draw->rect;
  if (EditorHasModes(editor)) {
    textRect.left += editor.bitmapWidth + editor.metrics.averageWidth;
  }
  if (entire && draw->row >= 0) {
    DrawRow(editor, draw, &textRect);
    if (selected && !asksSelection) {
      Windows()->InvertRect(draw->surface, &textRect);
    }
    if (focused && !asksFocus) {
      Windows()->DrawFocusRect(draw->surface, &draw->rect);
    }
  }
  if (asksSelection && (!entire || selected)) {
    Windows()->InvertRect(draw->surface, &textRect);
  }
  if (asksFocus && (!entire || focused)) {
    Windows()->DrawFocusRect(draw->surface, &draw->rect);
  }
}

// Controls that are moved when the editor opens.
#include "editor/editor.h"
#include "editor/window_calls.h"
#include "engine/context.h"

namespace {

// The rectangle of a control in its dialog's client area.
OrlRect PlaceOf(OrlWindow dialog, int32_t id) {
  OrlRect place = {0, 0, 0, 0};
  Windows()->GetWindowRect(ItemOf(dialog, id), &place);
  Windows()->ScreenToClient(dialog, &place.left, &place.top);
  Windows()->ScreenToClient(dialog, &place.right, &place.bottom);
  return place;
}

void MoveTo(OrlWindow dialog, int32_t id, const OrlRect &place) {
  Windows()->MoveWindow(ItemOf(dialog, id), place.left, place.top, place.right - place.left,
                        place.bottom - place.top);
}

}  // namespace

// The box of operators is enlarged for a fifth one.
void OrlLayoutOperators(const EditorState &editor) {
  EC ec = editor.ec;
  if (ec->concatAllowed == 0 && (ec->flags & ORL_FLAG_PERCENT) == 0) {
    ShowItem(editor.dialog, kButtonConcat, false);
    return;
  }
  const OrlRect button = PlaceOf(editor.dialog, kButtonConcat);
  OrlRect box = PlaceOf(editor.dialog, kGroupOperators);
  box.bottom += button.bottom - button.top;
  MoveTo(editor.dialog, kGroupOperators, box);
  if (ec->concatAllowed == 0) {
    SetItemText(editor.dialog, kButtonConcat, "%");
  }
}

// The label is placed just below the mode buttons, and the list's height is a whole number of
// rows.
void OrlLayoutFormulas(const EditorState &editor) {
  const OrlTextMetrics &metrics = editor.metrics;
  const int32_t rowHeight = metrics.height + metrics.externalLeading;
  OrlRect label = PlaceOf(editor.dialog, kLabelFormulas);
  OrlRect list = PlaceOf(editor.dialog, kListFormulas);
  const int32_t down = PlaceOf(editor.dialog, kOptionFormula).bottom - label.top + 3;
  const int32_t left = list.bottom - list.top - down;
  const int32_t shift = down + (rowHeight > 0 ? left % rowHeight : 0);
  label.top += shift;
  label.bottom += shift;
  MoveTo(editor.dialog, kLabelFormulas, label);
  list.top += shift;
  MoveTo(editor.dialog, kListFormulas, list);
}

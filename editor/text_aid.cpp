// What the editor tells a window system of the text that is being written.
#include "editor/editor.h"
#include "editor/window_calls.h"

namespace {

int32_t FindPlaceholder(const char *text, int32_t from, int32_t *start, int32_t *end) {
  const EditorState *editor = OpenEditor();
  return editor != nullptr && OrlFindPlaceholder(*editor, text, from, start, end) ? 1 : 0;
}

constexpr OrlTextAid kTextAid = {sizeof kTextAid, FindPlaceholder};

}  // namespace

void OrlOfferTextAid(const EditorState &editor) {
  const auto setTextAid = Optional(&OrlWindowSystem::SetTextAid);
  if (setTextAid != nullptr) {
    setTextAid(ItemOf(editor.dialog, kEditText), &kTextAid);
  }
}

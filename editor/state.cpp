// The state of the editor: which one is open, what it shows, and properties of expressions.
#include <cassert>

#include "editor/editor.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "language/stored_tree.h"

namespace {

// The state of the editor that this thread has open, on the stack of its entry; null without one.
// Besides it only the record of the error box, which opens without an editor too, is thread-local:
// a library that is loaded late has little space for such data.
thread_local EditorState *openEditor;

}  // namespace

EditorState *OpenEditor() {
  return Windows() != nullptr ? openEditor : nullptr;
}

bool EditorIsOpen() {
  return openEditor != nullptr;
}

void SetOpenEditor(EditorState *editor) {
  assert((editor == nullptr) != (openEditor == nullptr));
  openEditor = editor;
}

bool EditorHasModes(const EditorState &editor) {
  return editor.ec->listValuesProc != nullptr && editor.repair == nullptr;
}

void OrlSetCurrentExpression(EditorState &editor, HEXP exp) {
  editor.currentExp = exp;
  editor.currentSerial = RefTo(exp).serial;
}

HEXP OrlCurrentExpression(EditorState &editor) {
  if (!IsStored(editor.ec, {editor.currentExp, editor.currentSerial})) {
    editor.currentExp = nullptr;
  }
  return editor.currentExp;
}

int32_t KindOfExpression(HEXP exp) {
  return exp != nullptr && exp->tree != nullptr ? int32_t{ClassOfRoot(NodeKindOf(exp->tree))}
                                                : int32_t{kModeFormula};
}

bool OrlIsHiddenExpression(EC ec, HEXP exp) {
  return (ORLIsExpressionSimple(ec, exp) != 0 || ORLIsExpressionSimpleInput(ec, exp) != 0) &&
         ORLIsExpNameGenerated(ec, exp) != 0;
}

// The entries of the formula editor.
#include <cstring>

#include "editor/editor.h"
#include "engine/context.h"
#include "engine/expressions.h"
#include "engine/host_call.h"
#include "resources/dialogs.h"

namespace {

// The result of DialogBoxParam; -1 also when there is no window system.
intptr_t RunDialog(OrlWindow parent, BuildRecord &record) {
  const OrlDialogTemplate *dialog = FindDialog(kDialogEditor);
  if (dialog == nullptr || WindowsForDialog() == nullptr) {
    return -1;
  }
  const DialogInUse inUse;
  const auto parameter = reinterpret_cast<intptr_t>(&record);
  return CallHost([=] { return Windows()->DialogBoxParam(dialog, parent, OrlDlgProc, parameter); });
}

EditorMode ModeOfType(int32_t type) {
  return type == 1 ? kModeSet : type == 2 ? kModeRange : kModeFormula;
}

}  // namespace

HEXP ORLBuildExpression(void *parentWindow, EC ec, HEXP exp, uint16_t textLimit) {
  return ORLBuildExpressionOfType(parentWindow, ec, exp, textLimit, 0, nullptr);
}

HEXP ORLBuildExpressionOfType(void *parentWindow, EC ec, HEXP exp, uint16_t textLimit, int32_t type,
                              const char *itemName) {
  return OrlRunEditor(parentWindow, {ec, exp, nullptr, textLimit}, ModeOfType(type),
                      itemName == nullptr ? "" : itemName, nullptr);
}

HEXP OrlRunEditor(OrlWindow parent, BuildRecord record, EditorMode mode, const char *itemName,
                  FormulaRepair *repair) {
  EC ec = record.ec;
  if (ec == nullptr || EditorIsOpen()) {
    return nullptr;
  }
  if (ORLGetExpressionOrdinal(ec, record.exp) < 0) {
    record.exp = nullptr;  // a handle that is destroyed, or of another context, may point anywhere
  }
  EditorState editor = {};
  SetOpenEditor(&editor);
  editor.record = &record;
  editor.ec = ec;
  editor.repair = repair;
  OrlSetCurrentExpression(editor, record.exp);
  editor.editorMode = mode;
  const size_t itemLength = strnlen(itemName, sizeof editor.valuesItem);
  if (itemLength < sizeof editor.valuesItem) {  // longer than any item's name: no item is meant
    std::memcpy(editor.valuesItem, itemName, itemLength);
  }
  const intptr_t ended = RunDialog(parent, record);
  SetOpenEditor(nullptr);
  if (ended == -1) {
    const FormulaError error = {ORL_ERR_MEMLOW, 0, 0};
    ORLErrorDisplay(parent, "", &error);
    return nullptr;
  }
  return ORLGetExpressionOrdinal(ec, record.result) < 0 ? nullptr : record.result;
}

// The ids of the controls in the dialogs. Those that a host can need are defined in windows.h.
#ifndef ORLI11_RESOURCES_CONTROL_IDS_H
#define ORLI11_RESOURCES_CONTROL_IDS_H

#include <cstdint>

#include "orli11/windows.h"

enum EditorControl : int32_t {
  kButtonOk = ORL_ID_OK,
  kButtonCancel = ORL_ID_CANCEL,
  kEditText = ORL_EDITOR_TEXT,
  kEditName = ORL_EDITOR_NAME,
  kButtonCopy = 102,
  kButtonCut = 103,
  kButtonPaste = 104,
  kButtonWrap = 105,
  kListItems = ORL_EDITOR_ITEMS,
  kListFunctions = ORL_EDITOR_FUNCTIONS,
  kButtonPlus = 108,
  kButtonMinus = 109,
  kButtonTimes = 110,
  kButtonDivide = 111,
  kButtonConcat = 112,
  kGroupOperators = 113,
  kListFormulas = ORL_EDITOR_FORMULAS,
  kLabelName = 115,
  kButtonDelete = ORL_EDITOR_DELETE,
  kButtonSelect = ORL_EDITOR_SELECT,
  kButtonShowText = ORL_EDITOR_SHOW_TEXT,
  kGroupDigits = 119,
  kButtonDigit0 = 120,
  kButtonDigit1 = 121,
  kButtonDigit2 = 122,
  kButtonDigit3 = 123,
  kButtonDigit4 = 124,
  kButtonDigit5 = 125,
  kButtonDigit6 = 126,
  kButtonDigit7 = 127,
  kButtonDigit8 = 128,
  kButtonDigit9 = 129,
  kButtonPoint = 130,
  kButtonClear = ORL_EDITOR_CLEAR,
  kButtonApply = 132,
  kButtonValues = ORL_EDITOR_VALUES,
  kOptionFormula = ORL_EDITOR_FORMULA_MODE,
  kOptionRange = ORL_EDITOR_RANGE_MODE,
  kOptionSet = ORL_EDITOR_SET_MODE,
  kLabelFormulas = 137,
  kLabelMode = 138,
  kEditStatus = 139
};

// The one list of the values dialog, and the one edit of the text view.
constexpr int32_t kListValues = 100;
constexpr int32_t kEditView = 100;

// Both error boxes.
enum ErrorControl : int32_t { kErrorText = 200, kErrorMessage = 201, kErrorOk = 202 };

// A control that cannot be addressed.
constexpr int32_t kNoControl = -1;

#endif

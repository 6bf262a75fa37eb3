// String ids of the texts of the three modes, and of the kinds of stored expressions.
#ifndef ORLI11_EDITOR_MODE_TEXTS_H
#define ORLI11_EDITOR_MODE_TEXTS_H

#include <cstdint>

#include "editor/editor.h"
#include "resources/string_ids.h"

struct ModeTexts {
  int32_t optionButton;
  StringId newRow;  // the first row of the Formulas list
  StringId title;
  StringId saveCaption;
  StringId deleteCaption;
  StringId word;
  StringId viewTitle;
  StringId selectCaption;
  StringId showCaption;
  StringId status;
};

// By EditorMode.
constexpr ModeTexts kModeTexts[kModeCount] = {
    {kOptionFormula, kStringNewFormulaRow, kStringFormulaEditorTitle, kStringSaveFormulaCaption,
     kStringDeleteFormulaCaption, kStringFormulaWord, kStringFormulaTextTitle, kStringSelectFormula,
     kStringShowFormulaText, kStringFormulaStatus},
    {kOptionRange, kStringNewRangeRow, kStringRangeEditorTitle, kStringSaveRangeCaption,
     kStringDeleteRangeCaption, kStringRangeWord, kStringRangeTextTitle, kStringSelectRange,
     kStringShowRangeText, kStringRangeStatus},
    {kOptionSet, kStringNewSetRow, kStringSetEditorTitle, kStringSaveSetCaption,
     kStringDeleteSetCaption, kStringSetWord, kStringSetTextTitle, kStringSelectSet,
     kStringShowSetText, kStringSetStatus},
};

#endif

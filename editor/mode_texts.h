// The texts of the three modes, and of the kinds of stored expressions: ids of strings.
#ifndef ORLI11_EDITOR_MODE_TEXTS_H
#define ORLI11_EDITOR_MODE_TEXTS_H

#include <cstdint>

#include "editor/editor.h"

struct ModeTexts {
  int32_t optionButton;
  uint32_t newRow;  // the first row of the Formulas list
  uint32_t title;
  uint32_t saveCaption;
  uint32_t deleteCaption;
  uint32_t word;
  uint32_t viewTitle;
  uint32_t selectCaption;
  uint32_t showCaption;
  uint32_t status;
};

// By EditorMode.
// clang-format off
constexpr ModeTexts kModeTexts[kModeCount] = {
    // button        row  title save delete word view select show status
    {kOptionFormula, 201, 207,  203, 206,   216, 217, 235,   238, 232},
    {kOptionRange,   210, 212,  241, 243,   214, 218, 236,   239, 233},
    {kOptionSet,     211, 213,  242, 244,   215, 219, 237,   240, 234},
};
// clang-format on

#endif

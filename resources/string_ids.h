// The ids of the rows in the string table. Messages of the language have those of orli11.h.
#ifndef ORLI11_RESOURCES_STRING_IDS_H
#define ORLI11_RESOURCES_STRING_IDS_H

#include <cstdint>

enum StringId : uint32_t {
  kStringErrorCaption = 104,  // the title of the error box

  kStringNewFormulaRow = 201,
  kStringSaveQuestion = 202,
  kStringSaveFormulaCaption = 203,
  kStringDeleteQuestion = 204,  // one of the three words follows
  kStringDeleteDenied = 205,
  kStringDeleteFormulaCaption = 206,
  kStringFormulaEditorTitle = 207,
  kStringFormulaStem = 208,  // of generated names
  kStringExpressionWord = 209,
  kStringNewRangeRow = 210,
  kStringNewSetRow = 211,
  kStringRangeEditorTitle = 212,
  kStringSetEditorTitle = 213,
  kStringRangeWord = 214,  // also the stem of generated names
  kStringSetWord = 215,    // the same
  kStringFormulaWord = 216,
  kStringFormulaTextTitle = 217,
  kStringRangeTextTitle = 218,
  kStringSetTextTitle = 219,
  kStringRangeInFormulaMode = 220,  // the text is of another kind than the mode
  kStringSetInFormulaMode = 221,
  kStringFormulaInRangeMode = 222,
  kStringSetInRangeMode = 223,
  kStringFormulaInSetMode = 224,
  kStringRangeInSetMode = 225,
  kStringWarningWord = 226,  // follows the title of the editor

  // Data types, as the signature of a function shows them.
  kStringNumberLabel = 227,
  kStringDateLabel = 228,
  kStringStringLabel = 229,
  kStringAnyLabel = 230,
  kStringKeywordLabel = 231,

  kStringFormulaStatus = 232,
  kStringRangeStatus = 233,
  kStringSetStatus = 234,
  kStringSelectFormula = 235,
  kStringSelectRange = 236,
  kStringSelectSet = 237,
  kStringShowFormulaText = 238,
  kStringShowRangeText = 239,
  kStringShowSetText = 240,
  kStringSaveRangeCaption = 241,
  kStringSaveSetCaption = 242,
  kStringDeleteRangeCaption = 243,
  kStringDeleteSetCaption = 244,
  kStringOpenValues = 245,
  kStringListValues = 246,

  // The table of functions.
  kStringFirstFunction = 20000,
  kStringLastFunction = 20045
};

#endif

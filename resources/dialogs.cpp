#include "resources/dialogs.h"

#include <cstring>
#include <iterator>

#include "resources/control_ids.h"

namespace {

constexpr OrlControlKind kLabel = ORL_CONTROL_LABEL;
constexpr OrlControlKind kEdit = ORL_CONTROL_EDIT;
constexpr OrlControlKind kList = ORL_CONTROL_LIST;
constexpr OrlControlKind kButton = ORL_CONTROL_BUTTON;
constexpr OrlControlKind kOption = ORL_CONTROL_OPTION;
constexpr OrlControlKind kFrame = ORL_CONTROL_GROUP;

constexpr uint32_t kCentered = ORL_STYLE_CENTERED;
constexpr uint32_t kLines = ORL_STYLE_LINES;
constexpr uint32_t kScrolls = ORL_STYLE_LINES | ORL_STYLE_SCROLL_BAR;
constexpr uint32_t kKeepsSelection = ORL_STYLE_KEEP_SELECTION;
constexpr uint32_t kReadOnly = ORL_STYLE_READ_ONLY;
constexpr uint32_t kSorted = ORL_STYLE_SORTED | ORL_STYLE_NOTIFY;
constexpr uint32_t kOwnerDraw = ORL_STYLE_OWNER_DRAW;
constexpr uint32_t kGroup = ORL_STYLE_GROUP;
constexpr uint32_t kNoTab = ORL_STYLE_NO_TAB;
constexpr uint32_t kDefault = ORL_STYLE_DEFAULT;

// Columns: id, kind, style, caption; x, y, width, height. An edit that fills its dialog's width
// begins a unit outside of it, so that the frame of the dialog covers its border.

// clang-format off
constexpr OrlControl kEditorControls[] = {
    // The name of the edit for screen readers.
    {kNoControl,        kLabel,  0, "FORMULA_TEXT", 0, 0, 0, 0},
    {kEditText,         kEdit,   kScrolls | kKeepsSelection, "", -1, -1, 301, 45},

    {kLabelMode,        kLabel,  kCentered, "Editor &Mode", 126, 46, 51, 8},
    {kOptionFormula,    kOption, kGroup, "Formula|formula|0x00c0c0c0", 105, 57, 31, 24},
    {kOptionRange,      kOption, 0,      "Range|range|0x00c0c0c0",     136, 57, 31, 24},
    {kOptionSet,        kOption, 0,      "Set|set|0x00c0c0c0",         167, 57, 31, 24},

    // The label and the list of the formulas are moved when the mode buttons are shown.
    {kNoControl,        kLabel,  kCentered, "Data &Items", 26, 46, 51, 8},
    {kListItems,        kList,   kSorted,   "",             9, 57, 81, 85},
    {kLabelFormulas,    kLabel,  kCentered, "Form&ulas",  126, 46, 51, 8},
    {kListFormulas,     kList,   kSorted | kOwnerDraw, "", 106, 57, 89, 85},
    {kNoControl,        kLabel,  kCentered, "&Functions", 223, 46, 51, 8},
    {kListFunctions,    kList,   kSorted,   "",           208, 57, 79, 85},

    {kNoControl,        kFrame,  0,      "Edit",    9, 138, 60, 75},
    {kButtonCut,        kButton, kGroup, "Cu&t",   25, 147, 26, 14},
    {kButtonCopy,       kButton, 0,      "&Copy",  25, 163, 26, 14},
    {kButtonPaste,      kButton, 0,      "&Paste", 25, 179, 26, 14},
    {kButtonClear,      kButton, 0,      "C&lear", 25, 195, 26, 14},

    {kButtonSelect,     kButton, 0, "&Select Formula",             106, 145, 90, 14},
    {kButtonShowText,   kButton, 0, "S&how Formula Text...",       106, 161, 90, 14},
    {kButtonApply,      kButton, 0, "&Apply changes",              106, 177, 90, 14},
    {kButtonValues,     kButton, 0, "Data Item &Values Dialog...", 106, 177, 90, 14},
    {kLabelName,        kLabel,  kCentered, "For&mula Name",       104, 193, 93, 10},
    {kEditName,         kEdit,   kGroup, "",                        80, 205, 139, 12},

    {kButtonOk,         kButton, kDefault, "OK",  9, 225, 42, 14},
    {kButtonCancel,     kButton, 0, "Cancel",    57, 225, 42, 14},
    {kButtonDelete,     kButton, 0, "&Delete",  105, 225, 42, 14},
    {kButtonWrap,       kButton, 0, "(...)",    153, 225, 42, 14},

    {kGroupOperators,   kFrame,  0, "Operators", 232, 138, 51, 38},
    {kButtonPlus,       kButton, kGroup, "+", 242, 151, 14, 11},
    {kButtonMinus,      kButton, 0,      "-", 258, 151, 14, 11},
    {kButtonTimes,      kButton, 0,      "*", 242, 163, 14, 11},
    {kButtonDivide,     kButton, 0,      "/", 258, 163, 14, 11},
    {kButtonConcat,     kButton, 0,      "||", 250, 174, 14, 11},

    {kGroupDigits,      kFrame,  0, "Numeric Pad", 226, 188, 62, 60},
    {kButtonDigit7,     kButton, kGroup, "7", 235, 200, 14, 11},
    {kButtonDigit8,     kButton, 0,      "8", 250, 200, 14, 11},
    {kButtonDigit9,     kButton, 0,      "9", 266, 200, 14, 11},
    {kButtonDigit4,     kButton, 0,      "4", 235, 211, 14, 11},
    {kButtonDigit5,     kButton, 0,      "5", 250, 211, 14, 11},
    {kButtonDigit6,     kButton, 0,      "6", 266, 211, 14, 11},
    {kButtonDigit1,     kButton, 0,      "1", 235, 223, 14, 11},
    {kButtonDigit2,     kButton, 0,      "2", 250, 223, 14, 11},
    {kButtonDigit3,     kButton, 0,      "3", 266, 223, 14, 11},
    {kButtonDigit0,     kButton, 0,      "0", 242, 234, 14, 11},
    {kButtonPoint,      kButton, 0,      ".", 258, 234, 14, 11},

    // Reaches below the dialog, which cuts it off.
    {kEditStatus,       kEdit,   kLines | kNoTab | kReadOnly, "", -1, 255, 301, 28},
};

constexpr OrlControl kTextViewControls[] = {
    {kEditView,     kEdit, kScrolls | kReadOnly, "", -1, -1, 182, 52},
};

constexpr OrlControl kValuesControls[] = {
    {kNoControl,    kLabel, 0, "Values", 0, 0, 0, 0},
    {kListValues,   kList, kSorted, "", 5, 5, 90, 60},
};

constexpr OrlControl kErrorControls[] = {
    {kErrorText,    kEdit,   kScrolls | kKeepsSelection | kReadOnly, "", -1, -1, 203, 39},
    {kErrorMessage, kLabel,  kCentered, "", 1, 44, 200, 24},
    {kErrorOk,      kButton, kDefault, "OK", 81, 71, 43, 14},
};

constexpr OrlControl kLoadErrorControls[] = {
    {kErrorText,    kEdit,   kScrolls | kKeepsSelection | kReadOnly, "", -1, -1, 203, 39},
    {kErrorMessage, kLabel,  kCentered, "", 1, 44, 200, 24},
    {kErrorOk,      kButton, kDefault, "OK", 80, 114, 43, 14},
    {kNoControl,    kLabel,  kCentered, "The above error occured while loading, please correct "
                                       "the error to continue loading formulas.", 1, 79, 200, 25},
};

constexpr char kFont[] = "MS SANS SERIF";

// Columns: name, title, font and its size; x, y, width, height; shown by itself; controls.
constexpr OrlDialogTemplate kDialogs[] = {
    {kDialogEditor, "Formula Editor", kFont, 8, 9, 10, 300, 273, 0,
     std::size(kEditorControls), kEditorControls},
    {kDialogTextView, "Formula Text", kFont, 8, 150, 100, 180, 50, 1,
     std::size(kTextViewControls), kTextViewControls},
    {kDialogValues, "Values", kFont, 8, 20, 100, 100, 70, 1,
     std::size(kValuesControls), kValuesControls},
    {kDialogError, "Formula Information", kFont, 8, 58, 22, 202, 89, 0,
     std::size(kErrorControls), kErrorControls},
    {kDialogLoadError, "Formula Information", kFont, 8, 58, 22, 202, 135, 0,
     std::size(kLoadErrorControls), kLoadErrorControls},
};
// clang-format on

}  // namespace

const OrlDialogTemplate *FindDialog(const char *name) {
  for (const OrlDialogTemplate &dialog : kDialogs) {
    if (name != nullptr && std::strcmp(dialog.name, name) == 0) {
      return &dialog;
    }
  }
  return nullptr;
}

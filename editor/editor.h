// The formula editor: its state, and the routines that its files call in each other.
//
// Each routine works on the dialog of the state that it receives. All run on the dialog's thread; a
// thread has one editor at a time.
#ifndef ORLI11_EDITOR_EDITOR_H
#define ORLI11_EDITOR_EDITOR_H

#include <cstdint>

#include "orli11.h"
#include "platform/owned.h"
#include "platform/window_system.h"

// What the user edits: the kind of a text, and the mode of the dialog.
enum EditorMode : int32_t { kModeFormula, kModeRange, kModeSet, kModeCount };

// What a host's help routine is asked for: a page by its number or by its key.
enum HelpCommand : int32_t { kHelpByNumber = 1, kHelpByKey = 257 };

// Controls of the editor dialog.
enum EditorControl : int32_t {
  kButtonOk = 1,
  kButtonCancel = 2,
  kEditText = 100,
  kEditName = 101,
  kButtonCopy = 102,
  kButtonCut = 103,
  kButtonPaste = 104,
  kButtonWrap = 105,
  kListItems = 106,
  kListFunctions = 107,
  kButtonPlus = 108,
  kButtonMinus = 109,
  kButtonTimes = 110,
  kButtonDivide = 111,
  kButtonConcat = 112,
  kGroupOperators = 113,
  kListFormulas = 114,
  kLabelName = 115,
  kButtonDelete = 116,
  kButtonSelect = 117,
  kButtonShowText = 118,
  kGroupDigits = 119,
  kButtonDigit0 = 120,
  kButtonDigit9 = 129,
  kButtonPoint = 130,
  kButtonClear = 131,
  kButtonApply = 132,
  kButtonValues = 133,
  kOptionFormula = 134,
  kOptionRange = 135,
  kOptionSet = 136,
  kLabelFormulas = 137,
  kLabelMode = 138,
  kEditStatus = 139
};

// The one list of the values dialog, and the one edit of the text view.
constexpr int32_t kListValues = 100;
constexpr int32_t kEditView = 100;

// Private messages.
enum EditorMessage : uint32_t {
  kMessageErrorShown = 1025,        // error box: it has been painted for the first time
  kMessageShowExpression = 1124,    // text view; wParam: mode, lParam: HEXP or null
  kMessageTakeItem = 1125,          // values dialog; lParam: name of the data item
  kMessageSelectPlaceholder = 1126  // editor
};

struct FormulaRepair;

// What the entry points pass to the dialog, on their stack.
struct BuildRecord {
  EC ec;
  HEXP exp;
  HEXP result;
  uint16_t textLimit;
};

// The timer that opens the error box in a recovery.
constexpr uintptr_t kErrorTimer = 1;

constexpr int32_t kLabelSize = 129;  // "Expression" and similar words, at most 128 characters

struct EditorState {
  BuildRecord *record;
  EC ec;
  OrlWindow dialog;        // null until it exists
  HEXP currentExp;         // shown in the two edits; null for a new text
  uint64_t currentSerial;  // of that expression
  int32_t editorMode;      // EditorMode
  FormulaRepair *repair;   // the stored formula to be corrected, or null
  char valuesItem[65];     // the data item whose values are to open at start, or empty
  char expressionWord[kLabelSize];
  char expressionTail[kLabelSize + 8];  // [,Expression...]
  char anyTail[kLabelSize + 8];         // [,Any...]
  void *rowBitmaps[kModeCount];         // all null when rows have none
  int32_t bitmapWidth, bitmapHeight;
  OrlTextMetrics metrics;
  OrlWindow textViewWindow;
  OrlWindow valuesWindow;
  int32_t valuesMore;
  int32_t itemValueType;
  OrlWindowProc controlProcs[kEditStatus + 1];  // the controls' own procedures, by control id
};

// The state of the editor that runs on this thread, or null. A host may call the procedures of its
// windows at any time: each looks it up once and passes it on.
EditorState *OpenEditor();

// Whether an editor runs on this thread, and the routine that sets it.
bool EditorIsOpen();
void SetOpenEditor(EditorState *editor);

// Opens the editor on the record's expression; null when nothing was stored. With `repair` it is
// opened on that formula instead.
HEXP OrlRunEditor(OrlWindow parent, BuildRecord record, EditorMode mode, const char *itemName,
                  FormulaRepair *repair);

// True with a list values routine and outside recovery: modes, row bitmaps and values are
// available.
bool EditorHasModes(const EditorState &editor);

// Makes an expression, or null, the one that is shown.
void OrlSetCurrentExpression(EditorState &editor, HEXP exp);
// `currentExp`; it is set to null when the host has destroyed that expression.
HEXP OrlCurrentExpression(EditorState &editor);

// The kind of a stored expression, by its root.
int32_t KindOfExpression(HEXP exp);
// Whether the list of formulas leaves an expression out.
bool OrlIsHiddenExpression(EC ec, HEXP exp);

// ---- Frame (frame.cpp, opening.cpp, layout.cpp, mode.cpp, display.cpp, controls.cpp) ------------

// Makes the row of exactly that text the current and the top row; false when there is none.
bool OrlFindExact(OrlWindow list, const char *name, int32_t *row);
// Initialises the dialog: state, controls, and what they show.
void OrlOpenDialog(EditorState &editor);
void OrlInitDialog(EditorState &editor);
void OrlShowCurrent(EditorState &editor);
void OrlSetMode(EditorState &editor, int32_t target, bool interactive);
void OrlSetTitle(EditorState &editor);
void OrlSetStatus(const EditorState &editor);
void OrlEnableEditButtons(const EditorState &editor);
void OrlEnableDelete(const EditorState &editor);
void OrlEnableShowText(const EditorState &editor);
void OrlCaptionByRow(const EditorState &editor);
// The user has selected another row of the Formulas list: updates buttons, captions and text view.
void OrlFollowRow(EditorState &editor, bool openTextView);
void OrlCaptionValues(const EditorState &editor);
void OrlEnableOk(const EditorState &editor);
// Whether the user has changed text or name.
bool OrlIsModified(const EditorState &editor);
void OrlClearModified(const EditorState &editor);
void OrlHelpRequest(EditorState &editor, OrlWindow control, OrlHelpProc callback);
void OrlLayoutOperators(const EditorState &editor);
void OrlLayoutFormulas(const EditorState &editor);

// ---- Lists and insertion (insertion.cpp, placeholders.cpp, templates.cpp, rows.cpp) -------------

void OrlInsertItem(EditorState &editor, OrlWindow list);
// What the row of that name in the list with that id represents.
void OrlInsertName(EditorState &editor, int32_t list, const char *name);
// Appends the parameter template of a function to the name in `buffer` of `size` bytes; false when
// it does not fit.
bool OrlBuildTemplate(char *buffer, int32_t size, const ExprItem *item);
// The bytes of that template, and the placeholder of one parameter in it.
int32_t OrlTemplateLength(const ExprItem *item);
const char *OrlParameterLabel(const ExprItem *item, int32_t index);
// The word for a data type.
const char *OrlTypeLabel(uint16_t dataType);
// Replaces the edit's selection by the first `length` bytes of a text. Returns their offset
// or -1 when out of memory, with the edit as it was.
int32_t OrlInsertText(const EditorState &editor, const char *text, int32_t length);
void OrlSelectPlaceholder(const EditorState &editor);
// The first placeholder that begins at a byte of the text or after it, else the first of all. False
// when there is none, or when out of memory.
bool OrlFindPlaceholder(const EditorState &editor, const char *text, int32_t from, int32_t *start,
                        int32_t *end);
void OrlSeedText(const EditorState &editor);
void OrlWrapSelection(const EditorState &editor);
void OrlDrawFormulaRow(const EditorState &editor, const OrlDrawItem *draw);
void *OrlRowBitmap(const EditorState &editor, int32_t row, const char *text);

// ---- Save and delete (save.cpp, select.cpp, follow.cpp) -----------------------------------------

HEXP OrlSaveText(EditorState &editor);
// In Set mode the placeholder for further members at the end is not part of the text.
void OrlCutTail(const EditorState &editor, char *text);
// Saves, and starts a new text. False when nothing was saved; the text is then kept.
bool OrlSaveAndGoOn(EditorState &editor);
bool OrlAskSave(EditorState &editor);
void OrlSelectFormula(EditorState &editor);
void OrlDeleteSelected(EditorState &editor);
// Updates the rows of the list of formulas, and what depends on them, after a host routine, which
// may have changed the context. Calls no host routine.
void OrlFollowContext(EditorState &editor);

// ---- Information about the text (text_aid.cpp) --------------------------------------------------

void OrlOfferTextAid(const EditorState &editor);

// ---- What the host adds to the editor (host.cpp) ------------------------------------------------

// Whether the host accepts what is about to be stored for the expression that is shown. Also true
// for a text that does not parse, which the save will report.
bool OrlHostAccepts(EditorState &editor, const char *text, const char *name);
// Notifies the host that an expression has been stored, renamed or deleted.
void OrlNotifyHost(const EditorState &editor);
// The host's description of a function, truncated to `size` bytes; false when it has none.
bool OrlHostDescribes(const char *function, char *buffer, int32_t size);
// Whether lists show a function.
bool OrlHostShows(const char *function);

// ---- Side windows and error boxes (text_view.cpp, values.cpp, error_box.cpp) --------------------

void OrlOpenTextView(EditorState &editor);
void OrlOpenValues(EditorState &editor);
void OrlFillValues(EditorState &editor, int32_t first);
void OrlSyncValuesButton(EditorState &editor, int32_t first);
// Writes a string as a literal; `target` has capacity for twice its length and 3 bytes.
void OrlQuoteString(char *target, const char *text);
// Selects the faulty bytes of a text in an edit.
void OrlSelectError(OrlWindow edit, const FormulaError &error);
intptr_t OrlLoadErrorDisplay(OrlWindow parent, const char *text, const FormulaError *error);

// ---- Texts of controls (control_text.cpp) -------------------------------------------------------

// Copies; null when out of memory, and for a row that does not exist.
OwnedText TextOfWindow(OrlWindow window);
OwnedText TextOfRow(OrlWindow list, int32_t row);

// The expression whose name a row of list 114 shows; null for row 0, which shows none, and for a
// name that no longer exists.
HEXP ExpressionOfRow(const EditorState &editor, OrlWindow list, int32_t row);

// A row of list 114 whose data is this ordinal, or -1.
int32_t RowOfOrdinal(OrlWindow list, int32_t ordinal);

#endif

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
#include "resources/control_ids.h"

// What the user edits: the kind of a text, and the mode of the dialog.
enum EditorMode : int32_t { kModeFormula, kModeRange, kModeSet, kModeCount };

// What a host's help routine is asked for: a page by its number or by its key.
enum HelpCommand : int32_t { kHelpByNumber = 1, kHelpByKey = 257 };

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
  OrlWindow dialog;                        // null until it exists
  HEXP currentExp;                         // shown in the two edits; null for a new text
  uint64_t currentSerial;                  // of that expression
  int32_t editorMode;                      // EditorMode
  FormulaRepair *repair;                   // the stored formula to be corrected, or null
  char valuesItem[sizeof ExprItem::name];  // the data item whose values are to open at start, or
                                           // empty
  char expressionWord[kLabelSize];
  char expressionTail[kLabelSize + 8];  // [,Expression...]
  char anyTail[kLabelSize + 8];         // [,Any...]
  void *rowBitmaps[kModeCount];         // all null when rows have none
  int32_t bitmapWidth, bitmapHeight;
  OrlTextMetrics metrics;
  OrlWindow textViewWindow;        // null while it is closed
  OrlWindowProc textViewEditProc;  // its edit's own procedure
  OrlWindow valuesWindow;          // null while it is closed
  char valuesTitle[kLabelSize];    // its title without an item
  int32_t valuesMore;              // 0 when the host has listed all values of the item
  int32_t itemValueType;           // data type of the item whose values are listed, or -1
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

// True when the host has a list-values routine and no repair is in progress: modes, row bitmaps and
// values are available.
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

// Makes the row of exactly that text the current and the top row and returns it in `*row`; false
// when there is none.
bool OrlFindExact(OrlWindow list, const char *name, int32_t *row);

// Fills the dialog that has just been created: state, controls, and what they show. Requires
// `editor.dialog`.
void OrlOpenDialog(EditorState &editor);
// The part of it that fills the lists and shows the first text.
void OrlInitDialog(EditorState &editor);

// Shows the current expression, or an empty text with a generated name, in the edits and what
// depends on them; the edits then count as unchanged.
void OrlShowCurrent(EditorState &editor);
// Changes to the mode of an option button, kOptionFormula to kOptionSet. `interactive`: the user
// chose it. Then a changed text is offered for saving, which may cancel the change, and a new text
// is begun.
void OrlSetMode(EditorState &editor, int32_t optionButton, bool interactive);

// Sets the dialog's title: that of the mode, and the name of the current expression.
void OrlSetTitle(EditorState &editor);
// Sets the mode's instructions.
void OrlSetStatus(const EditorState &editor);

// Enables the buttons that need a selection in the text, and Paste, which needs text in the
// clipboard.
void OrlEnableEditButtons(const EditorState &editor);
// Enables Delete when the host permits deletes and nothing uses the formula of the current row.
void OrlEnableDelete(const EditorState &editor);
// Enables the button of the text view when the current row is a formula.
void OrlEnableShowText(const EditorState &editor);
// Enables OK when both text and name are given.
void OrlEnableOk(const EditorState &editor);

// Sets the captions of the Select and Show Text buttons by the kind of the current row, if any.
void OrlCaptionByRow(const EditorState &editor);
// Sets the caption of the values button: opens the values dialog, or lists more in it.
void OrlCaptionValues(const EditorState &editor);

// The user has selected another row of the Formulas list: updates buttons, captions and text view.
void OrlFollowRow(EditorState &editor, bool openTextView);

// Whether the user has changed text or name.
bool OrlIsModified(const EditorState &editor);
void OrlClearModified(const EditorState &editor);

// Calls `callback`, which may be null, with the help for a control: the selected function in the
// list of functions, otherwise the page of the editor.
void OrlHelpRequest(EditorState &editor, OrlWindow control, OrlHelpProc callback);

// Fits the box of operators to whether there is a fifth one.
void OrlLayoutOperators(const EditorState &editor);
// Moves the list of formulas and its label below the mode buttons.
void OrlLayoutFormulas(const EditorState &editor);

// ---- Lists and insertion (insertion.cpp, placeholders.cpp, templates.cpp, rows.cpp) -------------

// Inserts what the current row of a list represents; nothing for the row of a new text.
void OrlInsertItem(EditorState &editor, OrlWindow list);
// Inserts what the row `name` of list `list` represents.
void OrlInsertName(EditorState &editor, int32_t list, const char *name);

// Appends the parameter template of a function to the name in `buffer` of `size` bytes; false when
// it does not fit.
bool OrlBuildTemplate(char *buffer, int32_t size, const ExprItem *item);
// The bytes of that template, and the placeholder of one parameter in it.
int32_t OrlTemplateLength(const ExprItem *item);
const char *OrlParameterLabel(const ExprItem *item, int32_t index);
// The word for a data type.
const char *OrlTypeLabel(uint16_t dataType);

// Replaces the edit's selection by the first `length` bytes of a text and posts
// kMessageSelectPlaceholder. Returns their offset, or -1 when out of memory, with the edit as it
// was.
int32_t OrlInsertText(const EditorState &editor, const char *text, int32_t length);
// Selects the first placeholder of the text if nothing is selected. No effect when out of memory.
void OrlSelectPlaceholder(const EditorState &editor);
// The first placeholder that begins at a byte of the text or after it, else the first of all. False
// when there is none, or when out of memory.
bool OrlFindPlaceholder(const EditorState &editor, const char *text, int32_t from, int32_t *start,
                        int32_t *end);
// In the Range and Set modes, sets the edit to a template with its first placeholder selected.
void OrlSeedText(const EditorState &editor);
// Puts parentheses around the selected text, also an empty one. No effect when out of memory.
void OrlWrapSelection(const EditorState &editor);

// Draws a row of the list of formulas, or what has changed of it; null is accepted.
void OrlDrawFormulaRow(const EditorState &editor, const OrlDrawItem *draw);
// The bitmap for the kind of the expression that a row names, or null when bitmaps are not loaded.
// The editor owns it.
void *OrlRowBitmap(const EditorState &editor, int32_t row, const char *text);

// ---- Save and delete (save.cpp, select.cpp, follow.cpp) -----------------------------------------

// Stores text and name. Returns the expression; null when the text is empty, the user or the host
// refuses, the text does not parse (the error box has been shown, unless the text was deferred in
// a repair), or out of memory.
HEXP OrlSaveText(EditorState &editor);
// In Set mode the placeholder for further members at the end is not part of the text.
void OrlCutTail(const EditorState &editor, char *text);
// Saves, and starts a new text. False when nothing was saved; the text is then kept.
bool OrlSaveAndGoOn(EditorState &editor);
// Asks whether to save changes. True when the caller may go on: saved, or No.
bool OrlAskSave(EditorState &editor);
// Makes the formula of the current row the current expression, in its mode. A changed text is
// offered for saving first, which may cancel that.
void OrlSelectFormula(EditorState &editor);
// Deletes the formula of the current row, when the host permits it and the user confirms.
void OrlDeleteSelected(EditorState &editor);
// Updates the rows of the list of formulas, and what depends on them, after a host routine, which
// may have changed the context. Calls no host routine.
void OrlFollowContext(EditorState &editor);

// ---- Information about the text (text_aid.cpp) --------------------------------------------------

// Gives the window system the queries of OrlTextAid for the text, if it takes them.
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

// Shows the formula of the current row in the text view, which is opened if need be; for the row of
// a new text an open view is emptied.
void OrlOpenTextView(EditorState &editor);

// What the host is to list in the values dialog: the `first` of OrlListValuesProc.
enum ValuesListing : int32_t { kListingMore = 0, kListingNew = 1 };

// Opens the values dialog for the selected item, or lists more values in it.
void OrlOpenValues(EditorState &editor);
// Has the host list values of the selected item in the values dialog, if both exist.
void OrlFillValues(EditorState &editor, ValuesListing listing);
// Updates the values button after the selection of items or the values dialog has changed, and
// lists values of the selected item if the dialog is open.
void OrlSyncValuesButton(EditorState &editor, ValuesListing listing);
// Writes a string as a literal; `target` has capacity for twice its length and 3 bytes.
void OrlQuoteString(char *target, const char *text);

// Selects the faulty bytes of a text in an edit.
void OrlSelectError(OrlWindow edit, const FormulaError &error);
// Shows an error of a load, with an alert sound, and waits until the user closes the box. `error`
// must not be null. Returns 1, or -1 when the box could not be opened.
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

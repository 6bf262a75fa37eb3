/* windows.h - the operations of a window system that the formula editor needs, as one table.
 *
 * The engine draws nothing and has no event loop: a window system creates dialogs from the engine's
 * templates, keeps the state of their controls and sends each event to the procedure of its window.
 * Without one no dialog can be created.
 *
 * Messages, notifications and their parameters are those of the Win32 interface, with its numbers,
 * in the subset below. Texts are zero-terminated bytes in the active code page; positions and
 * lengths in texts are bytes. All calls and events are on the thread that runs the dialog.
 */
#ifndef ORLI11_WINDOWS_H
#define ORLI11_WINDOWS_H

#include "orli11.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A window: a dialog, or a control in one. */
typedef void *OrlWindow;

/* The procedure of a window. For a dialog: the result of an event that it handles; 0 leaves the
 * event to the window system. For a control: see SetWindowProc. */
typedef intptr_t (*OrlWindowProc)(OrlWindow window, uint32_t message, uintptr_t wParam,
                                  intptr_t lParam);

/* ---- Templates ------------------------------------------------------------------------------- */

typedef enum {
  ORL_CONTROL_LABEL,
  ORL_CONTROL_EDIT,
  ORL_CONTROL_LIST,
  ORL_CONTROL_BUTTON,
  ORL_CONTROL_OPTION, /* an option button; its caption is text|bitmap name|transparent colour */
  ORL_CONTROL_GROUP   /* a frame with a caption */
} OrlControlKind;

/* Styles of controls. */
enum {
  ORL_STYLE_CENTERED = 1,    /* label: the text is centred */
  ORL_STYLE_LINES = 2,       /* edit of several lines, separated by \n; otherwise of one line */
  ORL_STYLE_SORTED = 4,      /* list: LB_ADDSTRING keeps the rows in the order of lstrcmpiA */
  ORL_STYLE_NOTIFY = 8,      /* list: notifies the dialog of selections and double clicks */
  ORL_STYLE_OWNER_DRAW = 16, /* list: rows are drawn by the dialog, all of one height */
  ORL_STYLE_GROUP = 32,      /* starts a group */
  ORL_STYLE_NO_TAB = 64,     /* the tab key skips it */
  ORL_STYLE_DEFAULT = 128,   /* button: pressed by the Return key */
  ORL_STYLE_KEEP_SELECTION = 256, /* edit: shows its selection also without the focus */
  ORL_STYLE_SCROLL_BAR = 512,     /* edit of several lines: with a vertical scroll bar */
  ORL_STYLE_READ_ONLY = 1024      /* edit: its dialog prevents changes by the user */
};

/* A control; its rectangle in dialog units. A control with id -1 cannot be addressed. */
typedef struct {
  int32_t id;
  OrlControlKind kind;
  uint32_t style;
  const char *caption;
  int16_t x, y, width, height;
} OrlControl;

/* A dialog: a popup with caption and system menu. Controls are in tab order. */
typedef struct {
  const char *name;
  const char *title;
  const char *font;
  int16_t fontSize;
  int16_t x, y, width, height;
  int32_t visible; /* shown as soon as it is created; a modal dialog always is */
  int32_t controlCount;
  const OrlControl *controls;
} OrlDialogTemplate;

/* A bitmap: a whole BMP file, and its size in pixels. */
typedef struct {
  const char *name;
  const uint8_t *file;
  uint32_t fileSize;
  int32_t width, height;
} OrlBitmap;

/* ---- Events ---------------------------------------------------------------------------------- */

enum {
  ORL_WM_DESTROY = 2,  /* the window is being destroyed; its children still exist */
  ORL_WM_SETFOCUS = 7, /* control: it receives the focus; wParam: the window that had it or null */
  ORL_WM_PAINT = 15,   /* dialog: it is shown or redrawn */
  ORL_WM_CLOSE = 16,   /* dialog: the user closes it by its frame */
  ORL_WM_SETCURSOR = 32,
  ORL_WM_DRAWITEM = 43,    /* dialog; lParam: OrlDrawItem */
  ORL_WM_MEASUREITEM = 44, /* dialog, before WM_INITDIALOG; lParam: OrlMeasureItem */
  ORL_WM_SETFONT = 48,     /* dialog, before WM_MEASUREITEM and WM_INITDIALOG */
  ORL_WM_KEYDOWN = 256,    /* control; wParam: key */
  ORL_WM_KEYUP = 257,
  ORL_WM_CHAR = 258,       /* control; wParam: one byte of the character, lead byte first */
  ORL_WM_INITDIALOG = 272, /* lParam: the parameter given to the dialog */
  ORL_WM_COMMAND = 273,    /* dialog; wParam: id, notification << 16; lParam: the control */
  ORL_WM_TIMER = 275,      /* dialog; wParam: timer */
  ORL_WM_MOUSEMOVE = 512,  /* control; lParam: x, y << 16 */
  ORL_WM_LBUTTONDOWN = 513,
  ORL_WM_LBUTTONUP = 514,
  ORL_WM_LBUTTONDBLCLK = 515,
  ORL_WM_RBUTTONDBLCLK = 518,
  ORL_WM_HELP_REQUEST = 33791 /* dialog; wParam: control, lParam: OrlHelpProc */
};

/* Notifications of controls in WM_COMMAND. */
enum {
  ORL_BN_CLICKED = 0,
  ORL_LBN_SELCHANGE = 1, /* the user has selected another row */
  ORL_LBN_DBLCLK = 2,
  /* The text has changed: by the user, by the clipboard messages; an edit of one line reports it
   * also when the program sets its text, one of several lines does not. */
  ORL_EN_CHANGE = 768
};

/* Keys in WM_KEYDOWN and WM_KEYUP. */
enum {
  ORL_VK_TAB = 9,
  ORL_VK_RETURN = 13,
  ORL_VK_ESCAPE = 27,
  ORL_VK_SPACE = 32,
  ORL_VK_END = 35,
  ORL_VK_HOME = 36,
  ORL_VK_LEFT = 37,
  ORL_VK_UP = 38,
  ORL_VK_RIGHT = 39,
  ORL_VK_DOWN = 40,
  ORL_VK_DELETE = 46,
  ORL_VK_BACK = 8
};

/* Commands without a control: the Return key when there is no default button, Escape and the close
 * button of a modal dialog. */
enum { ORL_ID_OK = 1, ORL_ID_CANCEL = 2 };

/* Controls of the formula editor, as in `control` of OrlHelp. The other ids from ORL_EDITOR_TEXT to
 * ORL_EDITOR_CLEAR are labels, and buttons that edit the text or insert into it. */
enum {
  ORL_EDITOR_TEXT = 100,      /* the text of the formula */
  ORL_EDITOR_NAME = 101,      /* its name */
  ORL_EDITOR_ITEMS = 106,     /* the list of input items and keywords */
  ORL_EDITOR_FUNCTIONS = 107, /* the list of functions */
  ORL_EDITOR_FORMULAS = 114,  /* the list of formulas, and what acts on its row: */
  ORL_EDITOR_DELETE = 116,
  ORL_EDITOR_SELECT = 117,
  ORL_EDITOR_SHOW_TEXT = 118,
  ORL_EDITOR_CLEAR = 131,        /* deletes the selected text */
  ORL_EDITOR_VALUES = 133,       /* opens the values of the selected item */
  ORL_EDITOR_FORMULA_MODE = 134, /* the three modes */
  ORL_EDITOR_RANGE_MODE = 135,
  ORL_EDITOR_SET_MODE = 136
};

/* Messages to an edit. */
enum {
  ORL_EM_GETSEL = 176,    /* wParam, lParam: int32_t * for start and end, or null */
  ORL_EM_SETSEL = 177,    /* start, end: clamped to the text; 0, -1 is everything */
  ORL_EM_GETMODIFY = 184, /* 1 when the user has changed the text since the program set it */
  ORL_EM_SETMODIFY = 185,
  ORL_EM_LIMITTEXT = 197, /* bytes that the user can enter; 0: no limit */
  ORL_WM_CUT = 768,
  ORL_WM_COPY = 769,
  ORL_WM_PASTE = 770,
  ORL_WM_CLEAR = 771
};

/* Messages to a list. Rows count from 0; -1 (ORL_LB_ERR) is not a row. */
enum {
  ORL_LB_ERR = -1,
  ORL_LB_ADDSTRING = 384,    /* lParam: text; the row's index */
  ORL_LB_INSERTSTRING = 385, /* wParam: row, -1 for the end, also in a sorted list */
  ORL_LB_DELETESTRING = 386,
  ORL_LB_SETCURSEL = 390, /* wParam: row, or -1 for none */
  ORL_LB_GETCURSEL = 392,
  ORL_LB_GETTEXT = 393, /* lParam: buffer large enough for the text; its length */
  ORL_LB_GETTEXTLEN = 394,
  ORL_LB_GETCOUNT = 395,
  ORL_LB_FINDSTRING = 399, /* wParam: row to search after, -1 for all; lParam: the beginning of a
                              row's text, in any case; wraps around at the end */
  ORL_LB_SETTOPINDEX = 407,
  ORL_LB_GETITEMDATA = 409,
  ORL_LB_SETITEMDATA = 410,
  ORL_CB_ADDSTRING = 323 /* to a combo box of the host's */
};

typedef struct {
  int32_t left, top, right, bottom;
} OrlRect;

typedef struct {
  int32_t height, externalLeading, averageWidth; /* pixels */
} OrlTextMetrics;

typedef struct {
  int32_t control, row;
  int32_t height; /* set by the dialog */
} OrlMeasureItem;

/* The action for drawing a row, and the row's state. */
enum {
  ORL_DRAW_ENTIRE = 1,
  ORL_DRAW_SELECT = 2,
  ORL_DRAW_FOCUS = 4,
  ORL_STATE_SELECTED = 1,
  ORL_STATE_FOCUS = 16
};

typedef struct {
  int32_t control, row; /* row -1: an empty list */
  uint32_t action, state;
  OrlWindow list;
  void *surface; /* to be passed to the drawing operations */
  OrlRect rect;
  intptr_t data;
} OrlDrawItem;

/* Question boxes. */
enum {
  ORL_MB_OK = 0,
  ORL_MB_YESNOCANCEL = 3,
  ORL_MB_YESNO = 4,
  ORL_MB_ICONSTOP = 16,
  ORL_MB_ICONQUESTION = 32,
  ORL_MB_DEFBUTTON2 = 256,
  ORL_IDYES = 6,
  ORL_IDNO = 7
};

/* Metrics of the screen. */
enum { ORL_SM_CXFULLSCREEN = 16, ORL_SM_CYFULLSCREEN = 17 };

/* ---- The host of an editor ------------------------------------------------------------------- */

/* `flags` of OrlEditorHost. */
enum {
  ORL_HOST_DISCARDS = 1, /* changes of the user are discarded without a question */
  ORL_HOST_UNAIDED = 2   /* no completion or checks while the user types */
};

/* What the user requests help with. The strings are valid during the call. */
typedef struct {
  uint32_t size;
  OrlWindow dialog;    /* of the user */
  int32_t control;     /* the id of the control that has the focus, or 0; ORL_EDITOR_... */
  int32_t number;      /* of the page, or 0 with a key */
  const char *key;     /* the selected function, "Error messages", or null */
  const char *message; /* of a message box: its text, else empty */
  const char *path;    /* as set by ORLSetHelpPath */
  int32_t context;
} OrlHelp;

/* What a host adds to the formula editor, for window systems with SetEditorHost. Each routine may
 * be null and receives `user`; it runs on the thread of the dialog, and may show message boxes over
 * it. */
typedef struct {
  uint32_t size; /* of the record that the host was compiled with; later ones grow at the end */
  uint32_t flags;
  void *user;
  /* A valid text is about to be stored: as a new expression where `exp` is null, else in place of
   * that one. `name` is empty where one will be generated. 0 prevents that; the text then stays in
   * the editor.
   */
  int32_t (*MaySave)(void *user, OrlWindow dialog, HEXP exp, const char *text, const char *name);
  /* The user has stored, renamed or deleted an expression; called before the dialog shows it. */
  void (*Changed)(void *user, OrlWindow dialog);
  /* The user requests help, for a control or a selected function. */
  void (*Help)(void *user, const OrlHelp *help);
  /* Writes the description of a function, truncated to `size` bytes with its terminator: a line
   * with its name and arguments, as in "StrLeft(text: String, count: Number): String", and one
   * about what it does. 0 when there is none. */
  int32_t (*DescribeFunction)(void *user, const char *name, char *buffer, int32_t size);
  /* 0 for a function that lists do not show. Formulas can call it anyway. */
  int32_t (*ShowsFunction)(void *user, const char *name);
  /* Adds rows to the empty list of a preview window: the values of the text for the first rows of
   * data. Called when the text has changed and is valid. The window exists only with this routine.
   */
  void (*Preview)(void *user, const char *text, OrlWindow list);
} OrlEditorHost;

/* ---- Information about the text of an editor ------------------------------------------------- */

typedef struct {
  int32_t error;      /* the message id of the error; 0: none */
  int32_t start, end; /* the span of the error */
  char message[256];  /* the error message, else the type of the value */
} OrlTextState;

/* Queries about a text that is being edited, for window systems with SetTextAid. Texts and
 * positions are those of the edit, in bytes. `list` is the id of a list whose rows are names that
 * the text can contain. Only Insert and Next store or change anything. Each may be null. */
typedef struct {
  uint32_t size; /* of the record that the editor was compiled with; later ones grow at the end */
  /* The first placeholder that begins at a byte of the text or after it, else the first of all. 1,
   * or 0 when there is none. */
  int32_t (*FindPlaceholder)(const char *text, int32_t from, int32_t *start, int32_t *end);
  /* The error that saving the text would report, whatever its name. Calls no host routine. 1, or 0
   * for an empty text. */
  int32_t (*Check)(const char *text, OrlTextState *state);
  const int32_t *lists; /* their ids; 0 ends them */
  /* Replaces the selection by a row, as a double click on the row does. */
  void (*Insert)(int32_t list, const char *row);
  /* Writes the description of a row, truncated to `size` bytes with its terminator: for a function
   * a line with its arguments and possibly another. 0 when there is none. */
  int32_t (*Describe)(int32_t list, const char *row, char *buffer, int32_t size);
  /* 0 for a row that the host hides. */
  int32_t (*IsShown)(int32_t list, const char *row);
  /* Stores the text as the default button does, and starts a new one. 1, or 0 when the text was not
   * stored. */
  int32_t (*Next)(void);
  /* The values set by ORLSetHelpPath. */
  const char *(*HelpPath)(int32_t *context);
} OrlTextAid;

/* ---- The operations -------------------------------------------------------------------------- */

/* The table of a window system. `size` is that of the table it was compiled with; later tables only
 * grow at the end. No entry may be null except the optional ones after `DrawFocusRect`; a table may
 * also end there. Operations on a null, destroyed or unknown window do nothing and return 0, null
 * or the empty string. */
typedef struct {
  uint32_t size;

  /* Creates a dialog, sends it WM_SETFONT, WM_MEASUREITEM for each owner-drawn list and
   * WM_INITDIALOG with `parameter`, and runs it until EndDialog. Returns the value passed to
   * EndDialog, or -1 when the dialog could not be created. `parent` may be a window of the host
   * that the system does not know. */
  intptr_t (*DialogBoxParam)(const OrlDialogTemplate *dialog, OrlWindow parent, OrlWindowProc proc,
                             intptr_t parameter);
  /* Ends the modal dialog with a value; it is destroyed when the current event has been handled. */
  void (*EndDialog)(OrlWindow dialog, intptr_t result);
  /* Creates a modeless dialog, which is served by its parent's loop and destroyed with the
   * parent. */
  OrlWindow (*CreateDialogParam)(const OrlDialogTemplate *dialog, OrlWindow parent,
                                 OrlWindowProc proc, intptr_t parameter);
  void (*DestroyWindow)(OrlWindow window);

  OrlWindow (*GetDlgItem)(OrlWindow dialog, int32_t id);
  int32_t (*GetDlgCtrlID)(OrlWindow control);
  OrlWindow (*GetParent)(OrlWindow window); /* of a control its dialog, of a dialog its parent */

  void (*SetWindowText)(OrlWindow window, const char *text);
  /* Copies up to size - 1 bytes of the text and a terminator; returns the bytes copied. */
  int32_t (*GetWindowText)(OrlWindow window, char *buffer, int32_t size);
  int32_t (*GetWindowTextLength)(OrlWindow window);

  void (*EnableWindow)(OrlWindow window, int32_t enabled);
  int32_t (*IsWindowEnabled)(OrlWindow window);
  void (*ShowWindow)(OrlWindow window, int32_t shown);
  int32_t (*IsWindowVisible)(OrlWindow window);
  void (*SetFocus)(OrlWindow window);

  void (*GetWindowRect)(OrlWindow window, OrlRect *rect); /* pixels of the screen, with the frame */
  void (*GetClientRect)(OrlWindow window, OrlRect *rect); /* from 0, 0, without the frame */
  void (*ScreenToClient)(OrlWindow window, int32_t *x, int32_t *y);
  /* A control in pixels of its dialog's client area, a dialog in pixels of the screen. */
  void (*MoveWindow)(OrlWindow window, int32_t x, int32_t y, int32_t width, int32_t height);
  int32_t (*GetSystemMetrics)(int32_t index);
  void (*GetTextMetrics)(OrlWindow dialog, OrlTextMetrics *metrics); /* of the dialog's font */

  /* Replaces a control's procedure and returns the former one, to be called by CallWindowProc for
   * events that should reach the control. */
  OrlWindowProc (*SetWindowProc)(OrlWindow control, OrlWindowProc proc);
  intptr_t (*CallWindowProc)(OrlWindowProc proc, OrlWindow window, uint32_t message,
                             uintptr_t wParam, intptr_t lParam);

  /* Sends a message to a window's procedure (for a control: the one set by SetWindowProc),
   * immediately or after the current event. */
  intptr_t (*SendMessage)(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);
  void (*PostMessage)(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam);
  void (*SetTimer)(OrlWindow dialog, uintptr_t timer, uint32_t milliseconds);
  void (*KillTimer)(OrlWindow dialog, uintptr_t timer);

  /* Checks `id` of the option buttons first to last, and unchecks the others. */
  void (*CheckRadioButton)(OrlWindow dialog, int32_t first, int32_t last, int32_t id);
  /* A question box: 1 OK, 2 Cancel, ORL_IDYES or ORL_IDNO. */
  int32_t (*MessageBox)(OrlWindow parent, const char *text, const char *caption, uint32_t type);
  void (*MessageBeep)(uint32_t type);
  int32_t (*IsClipboardTextAvailable)(void);

  void *(*LoadBitmap)(const OrlBitmap *bitmap); /* null when it cannot be loaded */
  void (*DeleteBitmap)(void *bitmap);
  void (*DrawBitmap)(void *surface, void *bitmap, int32_t x, int32_t y);
  /* One line, centred vertically in the rectangle. */
  void (*DrawText)(void *surface, const char *text, const OrlRect *rect);
  void (*InvertRect)(void *surface, const OrlRect *rect);
  void (*DrawFocusRect)(void *surface, const OrlRect *rect);

  /* ---- Optional operations ---- */

  /* Sets what a host adds to editors that open from now on; null for nothing. The record is
   * referenced, not copied. Returns the previous one, or null. */
  const OrlEditorHost *(*SetEditorHost)(const OrlEditorHost *host);
  const OrlEditorHost *(*GetEditorHost)(void);
  /* Sets the text aid of an edit, for help while text is entered, and makes it the main control of
   * its dialog. The record is referenced, not copied. */
  void (*SetTextAid)(OrlWindow edit, const OrlTextAid *aid);
  /* Shows a page of help in Markdown beside a dialog, replacing the previous page. */
  void (*ShowPage)(OrlWindow dialog, const char *title, const char *page);
} OrlWindowSystem;

/* Sets the window system of the process; null removes it. The table is referenced, not copied. 1,
 * or 0 for a table that is too small or has a null entry, and while a dialog is open. */
ORL_API int32_t ORLSetWindowSystem(const OrlWindowSystem *system);

/* The current window system, or null: for callbacks that send messages to the windows that they
 * receive. */
ORL_API const OrlWindowSystem *ORLGetWindowSystem(void);

/* Null when a dialog can be opened, else the reason as text (ASCII), valid until the thread's next
 * call. When the host has set no window system, the library's own one on Qt widgets
 * (libORLI11-qt.so, next to this library) is loaded here and by the first dialog, provided that
 * DISPLAY, WAYLAND_DISPLAY or QT_QPA_PLATFORM names a display. */
ORL_API const char *ORLWindowSystemProblem(void);

#ifdef __cplusplus
}
#endif

#endif

#include "tests/platform/headless_dialog.h"

#include <map>
#include <sstream>
#include <utility>

namespace {

const OrlControl kControls[] = {
    {-1, ORL_CONTROL_LABEL, 0, "Label", 0, 0, 20, 8},
    {10, ORL_CONTROL_EDIT, ORL_STYLE_LINES, "", -1, 10, 100, 40},
    {11, ORL_CONTROL_EDIT, 0, "one", 0, 50, 100, 12},
    {12, ORL_CONTROL_LIST, ORL_STYLE_SORTED | ORL_STYLE_NOTIFY, "", 0, 62, 50, 25},
    {13, ORL_CONTROL_LIST, ORL_STYLE_OWNER_DRAW | ORL_STYLE_NOTIFY, "", 50, 62, 50, 25},
    {14, ORL_CONTROL_OPTION, ORL_STYLE_GROUP, "A", 0, 90, 10, 10},
    {15, ORL_CONTROL_OPTION, ORL_STYLE_NO_TAB, "B", 10, 90, 10, 10},
    {1, ORL_CONTROL_BUTTON, ORL_STYLE_DEFAULT, "OK", 0, 100, 40, 14},
    {2, ORL_CONTROL_BUTTON, 0, "Cancel", 40, 100, 40, 14},
    {16, ORL_CONTROL_BUTTON, 0, "Ask", 80, 100, 40, 14},
    {17, ORL_CONTROL_BUTTON, 0, "Nested", 120, 100, 40, 14},
    {18, ORL_CONTROL_EDIT, 0, "", 0, 120, 40, 14},
    {19, ORL_CONTROL_BUTTON, 0, "Beside", 40, 120, 40, 14}};

std::ostringstream noted;
OrlWindowProc editProc;
OrlWindow beside;

struct User {
  bool came;
  std::string todo;  // the first act after "/" waits for the next dialog
  std::vector<int32_t> answers;
};

intptr_t Watch(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (message != ORL_WM_DESTROY) noted << "!" << message << " ";
  const bool swallowed = message == ORL_WM_CHAR && wParam == 'x';
  return swallowed ? 0 : sys.CallWindowProc(editProc, window, message, wParam, lParam);
}

OrlWindow Item(OrlWindow dialog, int32_t id) {
  return sys.GetDlgItem(dialog, id);
}

void Open(OrlWindow dialog, int32_t id) {
  if (id <= 2) sys.EndDialog(dialog, id);
  if (id == 14 || id == 15) sys.CheckRadioButton(dialog, 14, 15, id);
  if (id == 16)
    noted << "=" + std::to_string(sys.MessageBox(dialog, "?", "Ask", ORL_MB_YESNO)) << " ";
  if (id == 17)
    noted << "=" + std::to_string(sys.DialogBoxParam(&kSmallDialog, dialog, SmallProc, 0)) << " ";
  if (id == 19) beside = sys.CreateDialogParam(&kSmallDialog, dialog, SmallProc, 1);
}

void Fill(OrlWindow dialog) {
  editProc = sys.SetWindowProc(Item(dialog, 18), Watch);
  for (const char *row : {"pear", "Apple", "fig", "apricot"}) {
    const auto text = reinterpret_cast<intptr_t>(row);
    sys.SendMessage(Item(dialog, 12), ORL_LB_ADDSTRING, 0, text);
    sys.SendMessage(Item(dialog, 13), ORL_LB_INSERTSTRING, 0, text);
  }
}

void DrawRow(const OrlDrawItem &draw) {
  noted << "d" << draw.row << "." << draw.action << "." << draw.state << " ";
  if (draw.action == ORL_DRAW_ENTIRE) sys.DrawText(draw.surface, "text", &draw.rect);
  if (draw.action == ORL_DRAW_SELECT) sys.InvertRect(draw.surface, &draw.rect);
  if (draw.action == ORL_DRAW_FOCUS) sys.DrawFocusRect(draw.surface, &draw.rect);
}

// The text of a control, of an edit with its selection in braces; rows with a star at the current.
std::string Shown(OrlWindow dialog, int32_t id) {
  OrlHeadlessState state = {};
  ORLHeadlessLook(dialog, id, &state);
  char buffer[64] = {};
  std::string text;
  for (int32_t row = 0; row < state.rowCount; ++row) {
    ORLHeadlessRow(dialog, id, row, buffer, sizeof(buffer));
    text += std::string(row == 0 ? "" : ",") + (row == state.currentRow ? "*" : "") + buffer;
  }
  ORLHeadlessText(dialog, id, buffer, sizeof(buffer));
  text += buffer;
  if (state.kind == ORL_CONTROL_EDIT) {
    text.insert(static_cast<size_t>(state.selectionEnd), "}");
    text.insert(static_cast<size_t>(state.selectionStart), "{");
  }
  return text + (state.modified + state.checked != 0 ? "+" : "");
}

std::string Drawn(OrlWindow dialog, int32_t list, int32_t row) {
  OrlHeadlessRowShown shown = {};
  if (ORLHeadlessRowShows(dialog, list, row, &shown) == 0) return "nothing";
  return std::string(shown.text) + (shown.inverted != 0 ? " inverted" : "") +
         (shown.focusRect != 0 ? " focus" : "");
}

std::string Focus(OrlWindow dialog) {
  OrlHeadlessState state = {};
  for (int32_t i = 0; ORLHeadlessControlAt(dialog, i) != nullptr; ++i) {
    const int32_t id = sys.GetDlgCtrlID(ORLHeadlessControlAt(dialog, i));
    if (id > 0 && ORLHeadlessLook(dialog, id, &state) != 0 && state.focused != 0) {
      return "@" + std::to_string(id);
    }
  }
  return "@";
}

struct Act {
  OrlWindow dialog;
  int32_t id, a, b;
  uint32_t Unsigned() const { return static_cast<uint32_t>(a); }
};

int32_t Note(const std::string &text) {
  noted << text << " ";
  return 1;
}

int32_t Move(const Act &act) {
  OrlHeadlessState state = {};
  ORLHeadlessLook(act.dialog, act.id, &state);
  sys.MoveWindow(state.window, state.rect.left, state.rect.top, state.rect.right - state.rect.left,
                 act.a);
  return 1;
}

const std::map<std::string, int32_t (*)(const Act &)> kVerbs = {
    {"key",
     [](const Act &t) {
       return ORLHeadlessKey(t.dialog, t.id, t.Unsigned(), static_cast<uint32_t>(t.b));
     }},
    {"type",
     [](const Act &t) {
       return ORLHeadlessType(t.dialog, t.id,
                              (std::string(1, static_cast<char>(t.a)) + "x").c_str());
     }},
    {"click", [](const Act &t) { return ORLHeadlessClick(t.dialog, t.id); }},
    {"twice", [](const Act &t) { return ORLHeadlessDoubleClick(t.dialog, t.id); }},
    {"focus", [](const Act &t) { return ORLHeadlessFocus(t.dialog, t.id); }},
    {"select", [](const Act &t) { return ORLHeadlessSelect(t.dialog, t.id, t.a, t.b); }},
    {"row", [](const Act &t) { return ORLHeadlessClickRow(t.dialog, t.id, t.a); }},
    {"double", [](const Act &t) { return ORLHeadlessDoubleClickRow(t.dialog, t.id, t.a); }},
    {"right", [](const Act &t) { return ORLHeadlessRightDoubleClickRow(t.dialog, t.id, t.a); }},
    {"close", [](const Act &t) { return ORLHeadlessClose(t.dialog); }},
    {"wait", [](const Act &t) { return ORLHeadlessWait(static_cast<uint32_t>(t.id)); }},
    {"repaint", [](const Act &t) { return ORLHeadlessRepaint(t.dialog); }},
    {"beside", [](const Act &t) { return ORLHeadlessClick(beside, t.id); }},
    {"away", [](const Act &) { return ORLHeadlessClose(beside); }},
    {"disable", [](const Act &t) { return sys.EnableWindow(Item(t.dialog, t.id), 0), 1; }},
    {"hide", [](const Act &t) { return sys.ShowWindow(Item(t.dialog, t.id), 0), 1; }},
    {"move", Move},
    {"send",
     [](const Act &t) {
       return Note(std::to_string(sys.SendMessage(Item(t.dialog, t.id), t.Unsigned(),
                                                  static_cast<uintptr_t>(t.b),
                                                  reinterpret_cast<intptr_t>("AP"))));
     }},
    {"timer",
     [](const Act &t) {
       return sys.SetTimer(t.dialog, static_cast<uintptr_t>(t.id), t.Unsigned()), 1;
     }},
    {"?", [](const Act &t) { return Note(Shown(t.dialog, t.id)); }},
    {"shows", [](const Act &t) { return Note(Drawn(t.dialog, t.id, t.a)); }},
    {"@", [](const Act &t) { return Note(Focus(t.dialog)); }}};

int32_t Script(void *data, OrlWindow window) {
  User &user = *static_cast<User *>(data);
  if (!std::exchange(user.came, true)) noted.str("");
  OrlHeadlessState state = {};
  ORLHeadlessLook(window, ORL_HEADLESS_SELF, &state);
  if (state.kind == ORL_HEADLESS_BOX) {
    if (user.answers.empty()) return 0;
    const int32_t answer = user.answers.back();
    user.answers.pop_back();
    return ORLHeadlessAnswer(window, answer);
  }
  const size_t slash = user.todo.find('/');
  std::istringstream acts(user.todo.substr(0, slash));
  user.todo = slash == std::string::npos ? "" : user.todo.substr(slash + 1);
  if (acts.str().empty()) return 0;
  for (std::string act; std::getline(acts >> std::ws, act, ';');) {
    std::istringstream words(act);
    std::string verb;
    Act parsed = {window, 0, 0, 0};
    words >> verb >> parsed.id >> parsed.a >> parsed.b;
    if (kVerbs.at(verb)(parsed) == 0) Note("-");
  }
  return 1;
}

}  // namespace

const OrlDialogTemplate kSmallDialog = {"SMALL", "Small", "", 8,  10,       20,
                                        200,     140,     1,  13, kControls};

intptr_t SmallProc(OrlWindow dialog, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  switch (message) {
    case ORL_WM_COMMAND:
      noted << (wParam & 0xFFFF) << ":" << (wParam >> 16) << " ";
      if (wParam < 0x10000) Open(dialog, static_cast<int32_t>(wParam));
      return 1;
    case ORL_WM_MEASUREITEM:
      reinterpret_cast<OrlMeasureItem *>(lParam)->height = 20;
      break;
    case ORL_WM_INITDIALOG:
      Fill(dialog);
      break;
    case ORL_WM_DRAWITEM:
      DrawRow(*reinterpret_cast<const OrlDrawItem *>(lParam));
      return 1;
    case ORL_WM_CLOSE:
      sys.DestroyWindow(dialog);
      break;
    case ORL_WM_TIMER:
      sys.PostMessage(dialog, 1000 + static_cast<uint32_t>(wParam), 0, 0);
      break;
    default:
      break;
  }
  noted << "m" << message << " ";
  return lParam;  // of WM_INITDIALOG: whether the focus goes to the first control
}

std::string Play(const std::string &acts, const std::vector<int32_t> &answers) {
  User user = {false, acts, answers};
  ORLHeadlessStart(Script, &user);
  const intptr_t result = sys.DialogBoxParam(&kSmallDialog, nullptr, SmallProc, 0);
  ORLHeadlessEnd();
  return noted.str() + "|" + std::to_string(result);
}

// Sessions of the editor: open, act, inspect, through the window system without a screen.
//
//   const HEXP made = Edit(ec, {}, [](OrlWindow d) {
//     Act(d, "double 106 Amount; click 108; type 100 5; click 1");
//   });
#ifndef ORLI11_TESTS_EDITOR_SESSION_H
#define ORLI11_TESTS_EDITOR_SESSION_H

#include <functional>
#include <string>
#include <vector>

#include "orli11.h"
#include "resources/control_ids.h"
#include "windows/headless/headless.h"

using Steps = std::function<void(OrlWindow dialog)>;

// How the editor is opened.
struct Opening {
  HEXP exp = nullptr;
  int32_t type = 0;  // 1: set, 2: range
  const char *item = nullptr;
  uint16_t limit = 0;
};

// A list values routine without values.
inline void ListNothing(EC, const char *, void *, int32_t, int32_t *) {}

// A permission routine that lets every expression be deleted.
inline int32_t PermitAll(EC, HEXP, void *) {
  return 1;
}

// Runs an action with a simulated user. For each editor that opens, `steps` are run once it is
// open; if it is still open then, it is cancelled. Question boxes are answered by `answers` in
// turn, and by Cancel after the last; error boxes are read and closed. The messages of boxes and
// error boxes are in Messages().
void WithUser(const Steps &steps, const std::vector<int32_t> &answers,
              const std::function<void()> &action);

// What the host does while a box of the next run is open, before each is answered.
void AtBoxes(const std::function<void()> &host);

// ORLBuildExpressionOfType with a user.
HEXP Edit(EC ec, const Opening &opening, const Steps &steps,
          const std::vector<int32_t> &answers = {});

// The messages of the last run, in order: "caption|text" of a question box, "!message|text" of an
// error box, its text with the selection marked as by Marked.
const std::vector<std::string> &Messages();
std::string AllMessages();  // the same in one text, joined by " / "

// Performs user actions in order, and expects that each is possible, or impossible if it begins
// with "no ". Rows are named by their text.
//   click ID | double LIST ROW | right LIST ROW | row LIST ROW | type ID TEXT | key ID NUMBER
//   select ID FROM TO | wait MILLISECONDS | focus ID | close
void Act(OrlWindow dialog, const std::string &acts);

// The state of a control, or of the dialog without an id; all zero when it does not exist.
OrlHeadlessState Look(OrlWindow dialog, int32_t id = ORL_HEADLESS_SELF);
// The text of a control, the title of a dialog.
std::string Text(OrlWindow dialog, int32_t id = ORL_HEADLESS_SELF);
// The text of an edit with its selection in braces: "A AND {Expression}", with the caret "A{}".
std::string Marked(OrlWindow dialog, int32_t id = kEditText);
// The rows of a list, "*" before the current one, followed by ":data" where `data` is true.
std::vector<std::string> Rows(OrlWindow dialog, int32_t list, bool data = false);
std::string RowList(OrlWindow dialog, int32_t list, bool data = false);  // joined by ", "
// The ids of `ids` that are enabled, or visible.
std::vector<int32_t> Enabled(OrlWindow dialog, const std::vector<int32_t> &ids);
std::vector<int32_t> Visible(OrlWindow dialog, const std::vector<int32_t> &ids);

#endif

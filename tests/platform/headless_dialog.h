// A small dialog that records its events, and a user of it.
#ifndef ORLI11_TESTS_PLATFORM_HEADLESS_DIALOG_H
#define ORLI11_TESTS_PLATFORM_HEADLESS_DIALOG_H

#include <string>
#include <vector>

#include "windows/headless/headless.h"

inline const OrlWindowSystem &sys = *ORLHeadlessSystem();

// Labels and edits 10 (lines), 11 and 18 (watched, swallows "x"), sorted list 12, owner-drawn list
// 13, options 14 and 15, buttons 1 (default), 2, 16 (asks), 17 (opens another, modal) and 19 (opens
// another beside it).
extern const OrlDialogTemplate kSmallDialog;
// Notes "ID:NOTIFICATION" of commands, "dROW.ACTION.STATE" of drawings, "mMESSAGE" of all others,
// "!MESSAGE" of what reaches edit 18, "=RESULT" of what it has opened.
intptr_t SmallProc(OrlWindow dialog, uint32_t message, uintptr_t wParam, intptr_t lParam);

// Runs the dialog with a user who does "verb id a b; ..." in it, and after "/" in the next dialog
// that waits for input, and answers boxes by `answers`, the last first. What has been noted from
// then on, with "-" for an action that was refused, and after "|" the dialog's result.
//   key ID KEY HELD | type ID BYTE (and "x") | click ID | twice ID | focus ID | select ID FROM TO |
//   row LIST ROW | double LIST ROW | right LIST ROW | close | wait MILLISECONDS | repaint |
//   beside ID, away (click in, close the modeless dialog) | disable ID | hide ID | move ID HEIGHT |
//   send ID MESSAGE WPARAM (noted, the lParam is "AP") | timer TIMER MILLISECONDS |
//   ? ID (what it shows) | shows LIST ROW (what is drawn) | @ (the focus)
std::string Play(const std::string &acts, const std::vector<int32_t> &answers = {});

#endif

// Limits of the window system without a screen: loops, windows, memory; and its metrics.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

#include "closed/wren/memory.h"
#include "platform/window_system.h"
#include "tests/platform/headless_dialog.h"

namespace {

// Dialogs with a procedure and a script of the test's own; the script comes once.
using Procedure = std::function<void(OrlWindow, uint32_t, uintptr_t, intptr_t)>;
Procedure handle;
std::function<void(OrlWindow)> look;

intptr_t Handle(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (handle) handle(window, message, wParam, lParam);
  return 0;
}

int32_t LookOnce(void * /*user*/, OrlWindow window) {
  if (look) std::exchange(look, nullptr)(window);
  return 0;
}

intptr_t WithDialog(Procedure procedure, std::function<void(OrlWindow)> script) {
  const int64_t blocks = TEST_LiveBlocks();
  handle = std::move(procedure);
  look = std::move(script);
  EXPECT_EQ(1, ORLHeadlessStart(LookOnce, nullptr));
  const intptr_t result = sys.DialogBoxParam(&kSmallDialog, nullptr, Handle, 0);
  ORLHeadlessEnd();
  EXPECT_EQ(blocks, TEST_LiveBlocks());
  return result;
}

intptr_t OpenOver(OrlWindow parent) {
  return sys.DialogBoxParam(&kSmallDialog, parent, Handle, 0);
}

TEST(HeadlessLimits, EndlessScriptsAndEventsEnd) {
  EXPECT_EQ(0, WithDialog(nullptr, nullptr)) << "a dialog that does not end by command 2";
  int32_t opened = 0;
  const auto cancels = [&](OrlWindow window, uint32_t message, uintptr_t, intptr_t) {
    if (message == ORL_WM_INITDIALOG) ++opened;
    if (message == ORL_WM_COMMAND) sys.EndDialog(window, OpenOver(window));
  };
  EXPECT_EQ(-1, WithDialog(cancels, [](OrlWindow) { throw 1; }));
  EXPECT_EQ(100, opened) << "dialogs that open others when they are cancelled";
  int32_t events = 0;
  const auto floods = [&](OrlWindow window, uint32_t message, uintptr_t, intptr_t) {
    if (message != 1000 && message != ORL_WM_PAINT) return;
    if (++events % 100 == 0) sys.MessageBox(window, "", nullptr, ORL_MB_OK);
    sys.PostMessage(window, 1000, 0, 0);
  };
  WithDialog(floods, nullptr);
  EXPECT_GT(events, 50000);
}

TEST(HeadlessLimits, ADialogThatHasEndedReceivesNoMore) {
  const auto ends = [](OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t) {
    EXPECT_NE(1000U, message);
    if (message != ORL_WM_COMMAND || wParam != 14) return;
    sys.EndDialog(window, 5);
    sys.EndDialog(window, 6);
    sys.PostMessage(window, 1000, 0, 0);
  };
  EXPECT_EQ(5, WithDialog(ends, [](OrlWindow dialog) {
              EXPECT_EQ(1, ORLHeadlessClick(dialog, 14));
              EXPECT_EQ(0, ORLHeadlessClick(dialog, 15));
            }));
  const auto never = [](OrlWindow window, uint32_t message, uintptr_t, intptr_t) {
    if (message == ORL_WM_INITDIALOG) sys.EndDialog(window, -1);
  };
  EXPECT_EQ(-1, WithDialog(never, [](OrlWindow) { ADD_FAILURE(); }));
}

int32_t IsFocused(OrlWindow dialog, int32_t id) {
  OrlHeadlessState state = {};
  return ORLHeadlessLook(dialog, id, &state) != 0 ? state.focused : -1;
}

TEST(HeadlessLimits, DisabledAndCoveredDialogsIgnoreTheUser) {
  int32_t paints = 0;
  OrlWindow beside = nullptr;
  OrlWindow owner = nullptr;  // once it is below another
  const auto watches = [&](OrlWindow dialog, uint32_t message, uintptr_t, intptr_t) {
    paints += message == ORL_WM_PAINT ? 1 : 0;
    if (message != ORL_WM_INITDIALOG || owner == nullptr) return;
    sys.SetFocus(sys.GetDlgItem(owner, 11));
    EXPECT_EQ(0, IsFocused(owner, 11) + sys.IsWindowEnabled(owner)) << "below a modal dialog";
    EXPECT_EQ(1, IsFocused(dialog, ORL_HEADLESS_SELF));
    sys.DestroyWindow(beside);  // which ends the dialog that is just opening over it
  };
  WithDialog(watches, [&](OrlWindow dialog) {
    sys.EnableWindow(dialog, 0);
    EXPECT_EQ(0, ORLHeadlessClick(dialog, 14));
    sys.EnableWindow(dialog, 1);
    EXPECT_EQ(1, ORLHeadlessClick(dialog, 14));
    beside = sys.CreateDialogParam(&kSmallDialog, dialog, Handle, 0);
    OrlRect rect = {};
    sys.GetWindowRect(beside, &rect);
    EXPECT_EQ((std::pair{15 + 3 + 15, 33 + 22 + 33}), (std::pair{rect.left, rect.top}));
    EXPECT_EQ(1, ORLHeadlessClick(beside, 14));
    sys.ShowWindow(beside, 0);
    EXPECT_EQ(1, IsFocused(dialog, 14));
    EXPECT_EQ(0, ORLHeadlessClick(beside, 14));
    sys.ShowWindow(beside, 1);
    EXPECT_EQ(1, ORLHeadlessClick(beside, 14));
    EXPECT_EQ(3, paints);
    owner = dialog;
    look = [](OrlWindow) { ADD_FAILURE(); };
    EXPECT_EQ(0, OpenOver(beside));
    EXPECT_EQ(nullptr, sys.GetDlgItem(beside, 14));
    EXPECT_EQ(2, IsFocused(dialog, 11) + sys.IsWindowEnabled(dialog));
    look = [](OrlWindow box) { EXPECT_EQ(0, ORLHeadlessClose(box) + ORLHeadlessAnswer(box, 1)); };
    EXPECT_EQ(ORL_IDNO, sys.MessageBox(dialog, "", "", ORL_MB_YESNO));
  });
}

TEST(HeadlessLimits, UserReachesOnlyVisibleAndEnabledControls) {
  int32_t notified = 0;
  const auto disables = [&](OrlWindow dialog, uint32_t message, uintptr_t wParam, intptr_t) {
    if (message != ORL_WM_COMMAND || (wParam & 0xFFFF) != 12) return;
    ++notified;
    sys.EnableWindow(sys.GetDlgItem(dialog, 12), 0);
  };
  WithDialog(disables, [&](OrlWindow dialog) {
    sys.SendMessage(sys.GetDlgItem(dialog, 12), ORL_LB_ADDSTRING, 0, 0);
    EXPECT_EQ(1, ORLHeadlessDoubleClickRow(dialog, 12, 0));
    EXPECT_EQ(1, notified) << "the list is disabled by the first press";
    EXPECT_EQ(0, ORLHeadlessDoubleClickRow(dialog, 12, 0));
    sys.CheckRadioButton(dialog, 14, 14, 14);
    sys.CheckRadioButton(dialog, 15, 15, 15);
    OrlHeadlessState first = {}, second = {};
    EXPECT_EQ(2, ORLHeadlessLook(dialog, 14, &first) + ORLHeadlessLook(dialog, 15, &second));
    EXPECT_EQ(2, first.checked + second.checked) << "options beyond the range stay";
    look = [dialog](OrlWindow over) {
      EXPECT_EQ(1, sys.MessageBox(dialog, "", "", ORL_MB_OK));
      EXPECT_EQ(1, IsFocused(over, ORL_HEADLESS_SELF)) << "the box has a parent further below";
    };
    EXPECT_EQ(0, OpenOver(dialog));
  });
}

TEST(HeadlessLimits, RowsAreRemovedWhileTheyAreDrawn) {
  void *surface = nullptr;
  const auto deletes = [&](OrlWindow, uint32_t message, uintptr_t, intptr_t lParam) {
    if (message != ORL_WM_DRAWITEM) return;
    const auto *draw = reinterpret_cast<const OrlDrawItem *>(lParam);
    surface = draw->surface;
    sys.SendMessage(draw->list, ORL_LB_DELETESTRING, 0, 0);
    sys.InvertRect(surface, &draw->rect);
    sys.DrawText(surface, "gone", &draw->rect);
  };
  WithDialog(deletes, [&](OrlWindow dialog) {
    OrlWindow list = sys.GetDlgItem(dialog, 13);
    for (int32_t i = 0; i < 3; ++i) sys.SendMessage(list, ORL_LB_ADDSTRING, 0, 0);
    OrlHeadlessRowShown shown = {};
    EXPECT_EQ(0, ORLHeadlessRowShows(dialog, 13, 2, &shown));
    sys.DrawText(surface, "late", &shown.rowRect);
    EXPECT_EQ(1, ORLHeadlessFocus(dialog, 13));
    EXPECT_EQ(0, sys.SendMessage(list, ORL_LB_GETCOUNT, 0, 0));
  });
}

TEST(HeadlessLimits, LongTextsAreWithinReachOfTheMouse) {
  WithDialog(nullptr, [](OrlWindow dialog) {
    std::string text;
    for (int32_t i = 0; i < 6000; ++i) text += "\r\n";
    text += std::string(40000, 'a');
    sys.SetWindowText(sys.GetDlgItem(dialog, 10), text.c_str());
    OrlHeadlessState state = {};
    for (const auto &[from, to] : {std::pair{0, -1}, {51000, 7}, {8000, 51999}}) {
      EXPECT_EQ(1, ORLHeadlessSelect(dialog, 10, from, to));
      ORLHeadlessLook(dialog, 10, &state);
      const int32_t end = to < 0 ? 52000 : to == 7 ? 6 : to;
      EXPECT_EQ((std::pair{std::min(from, end), std::max(from, end)}),
                (std::pair{state.selectionStart, state.selectionEnd}));
    }
  });
}

TEST(HeadlessLimits, GeometryComesFromTheFont) {
  WithDialog(nullptr, [](OrlWindow dialog) {
    OrlHeadlessState state = {};
    OrlRect rect = {};
    const auto text = [](const OrlRect &r) {
      return testing::PrintToString(std::vector<int32_t>{r.left, r.top, r.right, r.bottom});
    };
    ORLHeadlessLook(dialog, ORL_HEADLESS_SELF, &state);
    EXPECT_EQ("{ 15, 33, 321, 286 }", text(state.rect));
    sys.GetClientRect(dialog, &rect);
    EXPECT_EQ("{ 0, 0, 300, 228 }", text(rect));
    ORLHeadlessLook(dialog, 10, &state);
    EXPECT_EQ("{ -2, 16, 148, 81 }", text(state.rect));
    sys.GetWindowRect(state.window, &rect);
    EXPECT_EQ("{ 16, 71, 166, 136 }", text(rect));
    sys.ScreenToClient(dialog, &rect.left, &rect.top);
    EXPECT_EQ("{ -2, 16, 166, 136 }", text(rect));
  });
}

TEST(HeadlessLimits, UnknownWindowsDoNothing) {
  OrlWindow gone = nullptr;
  WithDialog(nullptr, [&](OrlWindow dialog) { gone = sys.GetDlgItem(dialog, 10); });
  ASSERT_EQ(1, ORLHeadlessStart(nullptr, nullptr));
  sys.CreateDialogParam(&kSmallDialog, nullptr, Handle, 0);
  int32_t local = 0;
  for (OrlWindow window : {gone, OrlWindow{}, static_cast<OrlWindow>(&local)}) {
    char text[] = "~";
    OrlRect rect = {1, 1, 1, 1};
    OrlHeadlessState state = {};
    sys.EndDialog(window, 1);
    sys.DestroyWindow(window);
    sys.SetWindowText(window, "x");
    sys.EnableWindow(window, 1);
    sys.ShowWindow(window, 1);
    sys.SetFocus(window);
    sys.MoveWindow(window, 0, 0, 1, 1);
    sys.PostMessage(window, 1, 0, 0);
    sys.SetTimer(window, 1, 1);
    sys.KillTimer(window, 1);
    sys.CheckRadioButton(window, 0, 1, 1);
    sys.DeleteBitmap(window);
    sys.DrawText(window, "", &rect);
    sys.GetWindowRect(window, &rect);
    EXPECT_EQ(0, sys.GetWindowText(window, text, 2) + sys.GetWindowTextLength(window) + text[0]);
    EXPECT_EQ(0, sys.IsWindowEnabled(window) + sys.IsWindowVisible(window) + rect.left);
    EXPECT_EQ(0, sys.SendMessage(window, ORL_LB_GETCURSEL, 0, 0) + sys.GetDlgCtrlID(window));
    EXPECT_EQ(0, sys.CallWindowProc(Handle, window, 1, 0, 0));
    EXPECT_TRUE(sys.GetParent(window) == nullptr && sys.GetDlgItem(window, 10) == nullptr);
    EXPECT_TRUE(sys.SetWindowProc(window, Handle) == nullptr);
    EXPECT_EQ(0, ORLHeadlessLook(window, -1, &state) + ORLHeadlessClick(window, 10) +
                     ORLHeadlessType(window, 10, "a") + ORLHeadlessAnswer(window, 1));
    EXPECT_EQ(-2, ORLHeadlessText(window, -1, text, 2) + ORLHeadlessName(window, text, 2));
  }
  ORLHeadlessEnd();
}

TEST(HeadlessLimits, WithoutMemoryNoDialogOpensAndTextsStay) {
  const int64_t blocks = TEST_LiveBlocks();
  for (int64_t count = 0, opened = 0; opened == 0; ++count) {
    ASSERT_LT(count, 200);
    ASSERT_EQ(1, ORLHeadlessStart(LookOnce, nullptr));
    look = [&](OrlWindow dialog) {
      opened = 1;
      TEST_FailAllocationsAfter(0);
      OrlHeadlessState state = {};
      EXPECT_EQ(1, ORLHeadlessType(dialog, 11, "a")) << "pressed in vain";
      sys.SetWindowText(sys.GetDlgItem(dialog, 12), "text");
      EXPECT_EQ(0, ORLHeadlessSetClipboard("a"));
      for (int64_t allowed = 0; allowed < 4; ++allowed) {
        TEST_FailAllocationsAfter(allowed);
        EXPECT_EQ(0, sys.MessageBox(dialog, "", "", ORL_MB_OK)) << allowed;
      }
      EXPECT_EQ(1, ORLHeadlessLook(dialog, 12, &state));
      EXPECT_EQ(0, state.textLength);
    };
    TEST_FailAllocationsAfter(count);
    const intptr_t result = sys.DialogBoxParam(&kSmallDialog, nullptr, Handle, 0);
    TEST_FailAllocationsAfter(-1);
    EXPECT_EQ(opened - 1, result) << count;
    ORLHeadlessEnd();
    EXPECT_EQ(blocks, TEST_LiveBlocks()) << count;
  }
}

TEST(HeadlessLimits, WindowSystemIsCopiedAndNotReplacedDuringADialog) {
  OrlWindowSystem broken = sys;
  broken.DrawFocusRect = nullptr;
  EXPECT_EQ(0, ORLSetWindowSystem(&broken));
  broken = sys;
  // Before the optional operations a table may end.
  broken.size = offsetof(OrlWindowSystem, SetEditorHost) - 1;
  EXPECT_EQ(0, ORLSetWindowSystem(&broken));
  ++broken.size;
  EXPECT_EQ(1, ORLSetWindowSystem(&broken));
  EXPECT_EQ(1, ORLSetWindowSystem(nullptr));
  WithDialog(nullptr, [](OrlWindow) {
    const DialogInUse inUse;  // as the dialogs of the engine have it
    EXPECT_EQ(0, ORLSetWindowSystem(nullptr) + ORLHeadlessStart(LookOnce, nullptr));
    ORLHeadlessEnd();
    EXPECT_EQ(&sys, ORLGetWindowSystem());
  });
  EXPECT_EQ(nullptr, ORLGetWindowSystem());
}

}  // namespace

// The window system without a screen where things end: loops, windows, memory; and its measures.
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "closed/wren/memory.h"
#include "platform/window_system.h"
#include "tests/platform/headless_dialog.h"

namespace {

const OrlWindowSystem &sys = *ORLHeadlessSystem();

// Dialogs with a procedure or a script of the test's own.
std::function<intptr_t(OrlWindow, uint32_t, uintptr_t)> handle;
std::function<void(OrlWindow)> look;

intptr_t Handle(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t /*lParam*/) {
  return handle ? handle(window, message, wParam) : 0;
}

int32_t LookOnce(void * /*user*/, OrlWindow window) {
  if (look) std::exchange(look, nullptr)(window);
  return 0;
}

intptr_t WithDialog(std::function<intptr_t(OrlWindow, uint32_t, uintptr_t)> procedure,
                    std::function<void(OrlWindow)> script) {
  handle = std::move(procedure);
  look = std::move(script);
  EXPECT_EQ(1, ORLHeadlessStart(LookOnce, nullptr));
  const intptr_t result = sys.DialogBoxParam(&kSmallDialog, nullptr, Handle, 0);
  ORLHeadlessEnd();
  return result;
}

TEST(HeadlessLimits, NothingCanHang) {
  EXPECT_EQ(0, WithDialog(nullptr, nullptr)) << "a dialog that does not end by command 2";
  int32_t boxes = 0;
  EXPECT_EQ(5, WithDialog(
                   [&](OrlWindow window, uint32_t message, uintptr_t) -> intptr_t {
                     if (message == ORL_WM_COMMAND && boxes++ == 0) {
                       EXPECT_EQ(1, sys.MessageBox(window, "", nullptr, ORL_MB_OK));
                       sys.EndDialog(window, 5);
                       sys.EndDialog(window, 6);
                     }
                     if (message == 1000 || message == ORL_WM_PAINT) {
                       sys.PostMessage(window, 1000, 0, 0);
                     }
                     return 0;
                   },
                   [](OrlWindow) { throw 1; }));
  EXPECT_EQ(-1, WithDialog(
                    [](OrlWindow window, uint32_t message, uintptr_t) -> intptr_t {
                      if (message == ORL_WM_INITDIALOG) sys.EndDialog(window, -1);
                      return 1;
                    },
                    [](OrlWindow) { ADD_FAILURE(); }));
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

TEST(HeadlessLimits, WindowsThatAreNotThereDoNothing) {
  OrlWindow gone = nullptr;
  WithDialog(nullptr, [&](OrlWindow dialog) { gone = sys.GetDlgItem(dialog, 10); });
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
      EXPECT_EQ(0, sys.MessageBox(dialog, "", "", 0) + ORLHeadlessSetClipboard("a"));
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

TEST(HeadlessLimits, TheSystemIsTakenWholeAndNotFromUnderADialog) {
  OrlWindowSystem broken = sys;
  broken.DrawFocusRect = nullptr;
  EXPECT_EQ(0, ORLSetWindowSystem(&broken));
  broken = sys;
  broken.size = sizeof(broken) - 1;
  EXPECT_EQ(0, ORLSetWindowSystem(&broken));
  WithDialog(nullptr, [](OrlWindow) {
    EXPECT_EQ(0, ORLSetWindowSystem(nullptr) + ORLHeadlessStart(LookOnce, nullptr));
    ORLHeadlessEnd();
    EXPECT_EQ(&sys, Windows());
  });
  EXPECT_EQ(nullptr, Windows());
}

}  // namespace

// Hosts with and without an application of their own.
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QTimer>
#include <clocale>
#include <cstdlib>
#include <string>
#include <thread>

#include "orli11/qt_windows.h"

namespace {

const OrlControl kControls[] = {{1, ORL_CONTROL_BUTTON, ORL_STYLE_DEFAULT, "OK", 5, 5, 40, 14}};
const OrlDialogTemplate kDialog = {"D", "Dialog", "", 8, 0, 0, 50, 24, 0, 1, kControls};

const OrlWindowSystem *sys = nullptr;
OrlWindow opened = nullptr;

// Closes itself as soon as it is open.
intptr_t Proc(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (message == ORL_WM_INITDIALOG) {
    opened = window;
    sys->PostMessage(window, ORL_WM_COMMAND, ORL_ID_OK, lParam);
  } else if (message == ORL_WM_COMMAND && wParam == ORL_ID_OK) {
    sys->EndDialog(window, lParam);
  }
  return 0;
}

intptr_t RunDialog(OrlWindow parent, intptr_t parameter) {
  sys = ORLQtWindowSystem();
  return sys == nullptr ? -2 : sys->DialogBoxParam(&kDialog, parent, Proc, parameter);
}

struct Setting {  // of the environment, for a while
  std::string name, before;
  Setting(const char *variable, const char *value) : name(variable), before(std::getenv(variable)) {
    setenv(variable, value, 1);
  }
  ~Setting() { setenv(name.c_str(), before.c_str(), 1); }
  Setting(const Setting &) = delete;
  Setting &operator=(const Setting &) = delete;
};

int argumentCount = 1;
char programName[] = "host";
char *arguments[] = {programName, nullptr};

TEST(QtApplication, IsCreatedForAHostWithoutOneAndRemoved) {
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  for (intptr_t round = 7; round < 9; ++round) {
    EXPECT_EQ(round, RunDialog(nullptr, round));
    EXPECT_EQ(nullptr, QCoreApplication::instance());
    EXPECT_EQ(locale, std::setlocale(LC_ALL, nullptr));
    EXPECT_EQ(0, sys->GetWindowTextLength(opened)) << "a window that has gone";
  }
  intptr_t elsewhere = 0;
  std::thread([&elsewhere] { elsewhere = RunDialog(nullptr, 5); }).join();
  EXPECT_EQ(5, elsewhere);
  EXPECT_EQ(nullptr, sys->CreateDialogParam(&kDialog, nullptr, Proc, 0))
      << "no event loop would serve it";
}

TEST(QtApplication, OfTheHostIsUsed) {
  const QApplication host(argumentCount, arguments);
  QWidget window;
  EXPECT_EQ(3, RunDialog(&window, 3));
  EXPECT_EQ(4, RunDialog(reinterpret_cast<void *>(12345), 4)) << "an unknown parent";
  EXPECT_EQ(&host, QCoreApplication::instance());
  QComboBox combo;
  const auto text = reinterpret_cast<intptr_t>(
      "Stra\xDF"
      "e");
  EXPECT_EQ(0, sys->SendMessage(&combo, ORL_CB_ADDSTRING, 0, text));
  EXPECT_EQ(QStringLiteral("Stra\u00DFe"), combo.itemText(0));
  EXPECT_EQ(0, sys->SendMessage(&window, ORL_CB_ADDSTRING, 0, text));

  intptr_t elsewhere = 0;
  std::string problem;
  std::thread([&] {
    elsewhere = RunDialog(nullptr, 5);
    problem = ORLQtWindowSystemProblem();
  }).join();
  EXPECT_EQ(-2, elsewhere);
  EXPECT_EQ("the application of the process runs on another thread", problem);
}

TEST(QtApplicationDeathTest, LetsTheHostExitInsideOfADialog) {
  const auto leave = [](OrlWindow, uint32_t message, uintptr_t, intptr_t) -> intptr_t {
    if (message == ORL_WM_PAINT) std::exit(7);
    return 0;
  };
  EXPECT_EXIT(ORLQtWindowSystem()->DialogBoxParam(&kDialog, nullptr, leave, 0),
              testing::ExitedWithCode(7), "");
}

// A user quits the host while a dialog is open: the dialog is asked, and the host may end anyway.
TEST(QtApplication, EndsWithItsDialogs) {
  for (const bool refuses : {false, true}) {
    QApplication host(argumentCount, arguments);
    sys = ORLQtWindowSystem();
    intptr_t result = -2;
    const auto refuse = [](OrlWindow, uint32_t, uintptr_t, intptr_t) -> intptr_t { return 0; };
    const auto agree = [](OrlWindow window, uint32_t message, uintptr_t wParam,
                          intptr_t) -> intptr_t {
      if (message == ORL_WM_COMMAND && wParam == ORL_ID_CANCEL) sys->EndDialog(window, 9);
      return 0;
    };
    QTimer::singleShot(0, &host, [&] {
      QTimer::singleShot(0, &host, &QCoreApplication::quit);
      if (refuses) QTimer::singleShot(50, &host, [] { QCoreApplication::exit(0); });
      result = sys->DialogBoxParam(&kDialog, nullptr, refuses ? +refuse : +agree, 0);
    });
    EXPECT_EQ(0, QApplication::exec());
    EXPECT_EQ(refuses ? 0 : 9, result);
  }
}

TEST(QtApplication, ReportsWhyNoDialogCanBeShown) {
  const struct {
    const char *platform, *display, *problem;
  } rows[] = {
      {"nonsense", ":0", "Qt has no plugin for the platform 'nonsense'"},
      {"linuxfb", ":0", "dialogs are not shown on the platform 'linuxfb'"},
      {"xcb", ":4711", "the display ':4711' does not answer"},
      {"xcb:x;nonsense", "", "Qt has no plugin for the platform 'nonsense'"},
      {";", ":4711",
       "no display is there: DISPLAY, WAYLAND_DISPLAY and QT_QPA_PLATFORM are not set"},
  };
  setenv("DISPLAY", "", 0);
  for (const auto &row : rows) {
    const Setting platform("QT_QPA_PLATFORM", row.platform);
    const Setting display("DISPLAY", row.display);
    EXPECT_EQ(-2, RunDialog(nullptr, 1)) << row.platform;
    EXPECT_STREQ(row.problem, ORLQtWindowSystemProblem()) << row.platform;
  }
  const Setting second("QT_QPA_PLATFORM", "nonsense;offscreen");
  EXPECT_EQ(1, RunDialog(nullptr, 1)) << ORLQtWindowSystemProblem();
  const QCoreApplication host(argumentCount, arguments);
  EXPECT_EQ(-2, RunDialog(nullptr, 1));
  EXPECT_STREQ("the process has an application object that is not a QApplication",
               ORLQtWindowSystemProblem());
}

}  // namespace

// The QApplication that widgets need: the host's, or one of our own while dialogs are open.
//
// A QApplication whose platform cannot be started ends its process. So its requirements are checked
// first: the platform's plugin, and whether its display responds.
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QApplication>
#include <QFile>
#include <QStringList>
#include <QThread>
#include <clocale>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>

#include "orli11/qt_windows.h"
#include "windows/qt/state.h"

namespace qt_windows {

namespace {

// Our own application, with the arguments that it refers to.
struct OwnApplication {
  std::string name, platform;
  char *arguments[4] = {};
  int count = 3;
  std::unique_ptr<QApplication> application;
};
// Not deleted when the process ends inside a dialog: Qt may be unloaded by then.
OwnApplication *ownApplication = nullptr;
// Guards the creation and deletion of our own application, and the check whether one can be
// created.
std::recursive_mutex changing;

thread_local QByteArray problem;

bool FailWith(const QString &what) {
  problem = what.toLatin1();
  return false;
}

// A connection to the X server, kept until the application has its own: some servers reset when
// their last client disconnects, and refuse connections meanwhile.
struct XConnection {
  using Disconnect = void (*)(void *);
  void *connection = nullptr;
  Disconnect disconnect = nullptr;
  XConnection() = default;
  ~XConnection() {
    if (connection != nullptr) {
      disconnect(connection);
    }
  }
  XConnection(const XConnection &) = delete;
  XConnection &operator=(const XConnection &) = delete;
};

// True when the X server that DISPLAY names responds; checked with the library that Qt's plugin
// uses.
bool AnswersX(XConnection *kept) {
  constexpr int kTries = 5;
  constexpr unsigned long kPause = 20;  // milliseconds
  using Connect = void *(*)(const char *, int *);
  using HasError = int (*)(void *);
  void *library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    return false;
  }
  const auto connect = reinterpret_cast<Connect>(dlsym(library, "xcb_connect"));
  const auto hasError = reinterpret_cast<HasError>(dlsym(library, "xcb_connection_has_error"));
  const auto disconnect =
      reinterpret_cast<XConnection::Disconnect>(dlsym(library, "xcb_disconnect"));
  if (connect == nullptr || hasError == nullptr || disconnect == nullptr) {
    return false;
  }
  for (int tries = 0; tries < kTries; ++tries) {
    void *connection = connect(nullptr, nullptr);
    if (hasError(connection) == 0) {
      kept->connection = connection;
      kept->disconnect = disconnect;
      return true;
    }
    disconnect(connection);
    QThread::msleep(kPause);
  }
  return false;
}

// True when the socket of the compositor that WAYLAND_DISPLAY names accepts a connection.
bool AnswersWayland() {
  QByteArray path = qgetenv("WAYLAND_DISPLAY");
  if (!path.startsWith('/')) {
    path = qgetenv("XDG_RUNTIME_DIR") + '/' + (path.isEmpty() ? QByteArray("wayland-0") : path);
  }
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= static_cast<qsizetype>(sizeof(address.sun_path))) {
    return false;
  }
  std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()) + 1);
  const int handle = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (handle < 0) {
    return false;
  }
  const bool good =
      ::connect(handle, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
  close(handle);
  return good;
}

// True when the plugin of a platform is installed and its libraries load.
bool HasPlugin(const QString &platform) {
  const QString plugin = platform == QLatin1String("wayland") ? platform + "-generic" : platform;
  for (const QString &folder : QCoreApplication::libraryPaths()) {
    const QByteArray file = QFile::encodeName(folder + "/platforms/libq" + plugin + ".so");
    if (dlopen(file.constData(), RTLD_LAZY | RTLD_LOCAL) != nullptr) {
      return true;
    }
  }
  return false;
}

// The platforms to try: those that QT_QPA_PLATFORM names, else by the type of the session.
QStringList Candidates() {
  const QString asked = QString::fromLocal8Bit(qgetenv("QT_QPA_PLATFORM"));
  if (!asked.isEmpty()) {
    return asked.split(';', Qt::SkipEmptyParts);
  }
  const bool wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
  const bool x = !qEnvironmentVariableIsEmpty("DISPLAY");
  QStringList found;
  if (x) {
    found.push_back("xcb");
  }
  if (wayland) {
    found.insert(qgetenv("XDG_SESSION_TYPE") == "wayland" ? 0 : found.size(), "wayland");
  }
  return found;
}

// Platforms that start whenever their plugin is installed. Others take over a whole screen or card,
// and end the process when there is none.
bool StartsAnywhere(const QString &platform) {
  return QStringList{"offscreen", "minimal", "vnc"}.contains(platform);
}

// The first platform that can be started, with its parameters; empty with the reason in `problem`.
QString ChoosePlatform(XConnection *kept) {
  FailWith("no display is there: DISPLAY, WAYLAND_DISPLAY and QT_QPA_PLATFORM are not set");
  for (const QString &candidate : Candidates()) {
    const QString platform = candidate.section(':', 0, 0);
    const bool wayland = platform.startsWith(QLatin1String("wayland"));
    if (!HasPlugin(platform)) {
      FailWith("Qt has no plugin for the platform '" + platform + "'");
    } else if (platform != QLatin1String("xcb") && !wayland && !StartsAnywhere(platform)) {
      FailWith("dialogs are not shown on the platform '" + platform + "'");
    } else if (platform == QLatin1String("xcb") && !AnswersX(kept)) {
      FailWith("the display '" + QString::fromLocal8Bit(qgetenv("DISPLAY")) + "' does not answer");
    } else if (wayland && !AnswersWayland()) {
      FailWith("the Wayland compositor does not answer");
    } else {
      problem.clear();
      return candidate;
    }
  }
  return {};
}

// Qt writes warnings to the terminal, as for locales that are not UTF-8; only fatal messages are
// passed on.
void KeepQuiet(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message) {
  if (type == QtFatalMsg || type == QtCriticalMsg) {
    std::fprintf(stderr, "%s\n", qPrintable(message));
  }
}

std::string ProgramName() {
  QFile file("/proc/self/comm");
  const bool open = file.open(QIODevice::ReadOnly);
  const QByteArray name = open ? file.readAll().trimmed() : QByteArray();
  return name.isEmpty() ? "orli" : name.toStdString();
}

// Restores the host's locale: a QApplication sets that of the environment.
void Start(const QString &platform) {
  ownApplication = new OwnApplication;
  ownApplication->name = ProgramName();
  ownApplication->platform = platform.toStdString();
  static char option[] = "-platform";
  ownApplication->arguments[0] = ownApplication->name.data();
  ownApplication->arguments[1] = option;
  ownApplication->arguments[2] = ownApplication->platform.data();
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  const QtMessageHandler before = qInstallMessageHandler(KeepQuiet);
  ownApplication->application =
      std::make_unique<QApplication>(ownApplication->count, ownApplication->arguments);
  QApplication::setQuitOnLastWindowClosed(false);
  qInstallMessageHandler(before);
  std::setlocale(LC_ALL, locale.c_str());
}

}  // namespace

bool BeginApplication() {
  const std::lock_guard<std::recursive_mutex> lock(changing);
  const QCoreApplication *present = QCoreApplication::instance();
  if (present != nullptr) {
    return (qobject_cast<const QApplication *>(present) != nullptr ||
            FailWith("the process has an application object that is not a QApplication")) &&
           (present->thread() == QThread::currentThread() ||
            FailWith("the application of the process runs on another thread"));
  }
  XConnection kept;
  const QString platform = ChoosePlatform(&kept);
  if (platform.isEmpty()) {
    return false;
  }
  Start(platform);
  return true;
}

void EndApplication() {
  const std::lock_guard<std::recursive_mutex> lock(changing);
  if (ownApplication != nullptr && Dialogs().empty()) {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    delete ownApplication;
    ownApplication = nullptr;
  }
}

bool CanShow() {
  const std::lock_guard<std::recursive_mutex> lock(changing);
  if (QCoreApplication::instance() != nullptr) {
    return BeginApplication();
  }
  XConnection kept;
  return !ChoosePlatform(&kept).isEmpty();
}

const char *CannotShow() {
  return problem.constData();
}

}  // namespace qt_windows

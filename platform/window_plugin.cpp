// The window system that is shipped with the library, a plugin: loaded when it is needed.
#include <dlfcn.h>
#include <sys/auxv.h>

#include <atomic>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "platform/window_system.h"

namespace {

constexpr char kPlugin[] = "libORLI11-qt.so.1";

// The routines of orli11/qt_windows.h.
using SystemRoutine = const OrlWindowSystem *(*)();
using ProblemRoutine = const char *(*)();
struct Plugin {
  SystemRoutine system;
  ProblemRoutine problem;
};

std::mutex loading;
Plugin plugin;

// The plugin's table, once it is loaded.
std::atomic<const OrlWindowSystem *> pluginSystem{nullptr};

struct Problem {
  char text[512];
};
thread_local Problem problem;

void SetProblem(const char *what, const char *detail) {
  std::snprintf(problem.text, sizeof(problem.text), "%s%s", what, detail);
}

bool IsSet(const char *variable) {
  const char *value = std::getenv(variable);
  return value != nullptr && *value != 0;
}

// Next to this library first, then on the library search path.
void *OpenPlugin() {
  Dl_info self = {};
  if (dladdr(reinterpret_cast<const void *>(&ORLSetWindowSystem), &self) != 0) {
    const char *slash = std::strrchr(self.dli_fname, '/');
    const auto folder = slash == nullptr ? 0 : static_cast<int>(slash + 1 - self.dli_fname);
    char path[PATH_MAX];
    const int length = std::snprintf(path, sizeof(path), "%.*s%s", folder, self.dli_fname, kPlugin);
    void *library = folder > 0 && length < PATH_MAX ? dlopen(path, RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (library != nullptr) {
      return library;
    }
  }
  return dlopen(kPlugin, RTLD_NOW | RTLD_LOCAL);
}

// It is never unloaded: the libraries that it uses cannot be unloaded safely.
bool LoadPlugin() {
  const std::lock_guard<std::mutex> lock(loading);
  if (plugin.system != nullptr) {
    return true;
  }
  void *library = OpenPlugin();
  if (library == nullptr) {
    SetProblem("the window system cannot be loaded: ", dlerror());
    return false;
  }
  const auto system = reinterpret_cast<SystemRoutine>(dlsym(library, "ORLQtWindowSystem"));
  const auto reason = reinterpret_cast<ProblemRoutine>(dlsym(library, "ORLQtWindowSystemProblem"));
  if (system == nullptr || reason == nullptr) {
    SetProblem(kPlugin, " is not the window system of this library");
    return false;
  }
  plugin = {system, reason};
  return true;
}

// The table of the plugin, which is not changed once it is loaded; null with the reason in
// `problem`.
const OrlWindowSystem *PluginSystem() {
  if (!IsSet("DISPLAY") && !IsSet("WAYLAND_DISPLAY") && !IsSet("QT_QPA_PLATFORM")) {
    SetProblem("no display is there: DISPLAY, WAYLAND_DISPLAY and QT_QPA_PLATFORM are not set", "");
    return nullptr;
  }
  // Otherwise whoever starts the program could choose what is loaded.
  if (getauxval(AT_SECURE) != 0) {
    SetProblem("a program with rights that its user does not have shows no dialogs", "");
    return nullptr;
  }
  if (!LoadPlugin()) {
    return nullptr;
  }
  const OrlWindowSystem *system = plugin.system();
  if (system == nullptr) {
    SetProblem("", plugin.problem());
  } else {
    pluginSystem = system;
  }
  return system;
}

}  // namespace

const OrlWindowSystem *WindowsForDialog() {
  const OrlWindowSystem *inForce = Windows();
  // A host's own table is used as it is; the plugin is asked whether it can still open windows.
  if (inForce != nullptr && inForce != pluginSystem) {
    return inForce;
  }
  const OrlWindowSystem *system = PluginSystem();
  const bool isNew = system != nullptr && inForce == nullptr;
  // Another thread may have set it in the meantime, and have a dialog open.
  if (isNew && ORLSetWindowSystem(system) == 0 && Windows() != system) {
    SetProblem(kPlugin, " is not of this library's version");
    return nullptr;
  }
  return system;
}

const char *ORLWindowSystemProblem(void) {
  return WindowsForDialog() != nullptr ? nullptr : problem.text;
}

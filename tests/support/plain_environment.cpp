// Gives a test program the same environment on every machine, whatever the settings of its user's
// language and desktop: before all other constructors, as libraries read it early.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

extern char **environ;

namespace {

constexpr const char *kSettings[] = {"LANG", "LC_",  "LOCPATH",     "TZ",       "QT_",
                                     "XDG_", "KDE_", "FONTCONFIG_", "DESKTOP_", "SESSION_MANAGER"};

[[gnu::constructor(101)]] void MakeEnvironmentPlain() {
  std::vector<std::string> set;
  for (char **each = environ; *each != nullptr; ++each) {
    for (const char *start : kSettings) {
      if (std::strncmp(*each, start, std::strlen(start)) == 0) {
        set.emplace_back(*each, std::strcspn(*each, "="));
      }
    }
  }
  for (const std::string &name : set) {
    unsetenv(name.c_str());
  }
  setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
}

}  // namespace

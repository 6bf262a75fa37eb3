// Lookup of windows by handle.
#include <algorithm>
#include <unordered_map>

#include "windows/qt/state.h"

namespace qt_windows {

namespace {

// Numbers that are not plausible addresses and are never reused.
struct Handles {
  std::unordered_map<uintptr_t, Place> places;
  uintptr_t last = 0;
  std::vector<Dialog *> dialogs;
};

Handles &AllHandles() {
  static Handles handles;
  return handles;
}

}  // namespace

Place Find(OrlWindow window) {
  const auto &places = AllHandles().places;
  const auto found = places.find(reinterpret_cast<uintptr_t>(window));
  return found == places.end() ? Place{} : found->second;
}

Dialog *FindDialog(OrlWindow window) {
  const Place place = Find(window);
  return place.control == nullptr ? place.dialog : nullptr;
}

Control *FindControl(OrlWindow window) {
  return Find(window).control;
}

Control *ControlById(Dialog *dialog, int32_t id) {
  if (dialog == nullptr || id == -1) {
    return nullptr;
  }
  const auto &controls = dialog->controls;
  const auto found = std::find_if(controls.begin(), controls.end(),
                                  [id](const auto &control) { return control->id == id; });
  return found == controls.end() ? nullptr : found->get();
}

OrlWindow NewHandle(Dialog *dialog, Control *control) {
  Handles &handles = AllHandles();
  ++handles.last;
  handles.places[handles.last] = {dialog, control};
  return reinterpret_cast<OrlWindow>(handles.last);
}

void ForgetHandles(Dialog *dialog) {
  Handles &handles = AllHandles();
  for (const auto &control : dialog->controls) {
    handles.places.erase(reinterpret_cast<uintptr_t>(control->window));
  }
  handles.places.erase(reinterpret_cast<uintptr_t>(dialog->window));
  handles.dialogs.erase(std::remove(handles.dialogs.begin(), handles.dialogs.end(), dialog),
                        handles.dialogs.end());
}

const std::vector<Dialog *> &Dialogs() {
  return AllHandles().dialogs;
}

void LinkDialog(Dialog *dialog) {
  AllHandles().dialogs.push_back(dialog);
}

Dialog *TopModal() {
  const auto &dialogs = Dialogs();
  const auto found = std::find_if(dialogs.rbegin(), dialogs.rend(),
                                  [](const Dialog *dialog) { return dialog->modal; });
  return found == dialogs.rend() ? nullptr : *found;
}

}  // namespace qt_windows

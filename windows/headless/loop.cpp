// Events: sent, posted, timed; and the loops of modal dialogs and boxes.
#include "windows/headless/state.h"

#include <algorithm>

#include "engine/host_call.h"

namespace headless {

namespace {

// A dialog that posts itself events forever must not keep the loop from its user.
constexpr uint64_t kMostEventsAtOnce = 100000;

bool IsLoopOver() {
  const Dialog *top = TopModal();
  return top != nullptr && top->ended;
}

bool TakePosted(Posted *taken) {
  const Owned<Posted> first(session.firstPosted);
  if (first == nullptr) {
    return false;
  }
  *taken = *first;
  session.firstPosted = first->next;
  if (first->next == nullptr) {
    session.lastPosted = nullptr;
  }
  return true;
}

bool HandlePosted() {
  Posted posted;
  while (session.eventsAtOnce >= kMostEventsAtOnce && TakePosted(&posted)) {
  }
  if (!TakePosted(&posted)) {
    return false;
  }
  ++session.eventsAtOnce;
  Send(posted.window, posted.message, posted.wParam, posted.lParam);
  return true;
}

// Draws one dialog or list that is new or has changed, the oldest first.
bool PaintNext() {
  if (session.eventsAtOnce >= kMostEventsAtOnce) {
    return false;
  }
  Dialog *next = nullptr;
  Control *nextList = nullptr;
  for (Dialog *dialog = session.newest; dialog != nullptr; dialog = dialog->older) {
    if (!dialog->visible || dialog->going) {
      continue;
    }
    Control *end = dialog->controls + dialog->controlCount;
    Control *list = std::find_if(dialog->controls, end, [](const Control &control) {
      return control.list.dirty && control.visible;
    });
    if (dialog->needsPaint || list != end) {
      next = dialog;
      nextList = list == end ? nullptr : list;
    }
  }
  if (next == nullptr) {
    return false;
  }
  ++session.eventsAtOnce;
  if (next->needsPaint) {
    next->needsPaint = false;
    Send(next->window, ORL_WM_PAINT, 0, 0);
  } else {
    const Hold hold(next);
    DrawRowsInView(nextList);
  }
  return true;
}

// Cancels a dialog or box when the script has ended.
void CancelUnattended(Dialog *dialog) {
  if (dialog->box) {
    EndModal(dialog, CancelOfBox(dialog->boxType));
    return;
  }
  SendCommand(dialog, ORL_ID_CANCEL);
  RunPosted();
  if (!dialog->ended) {
    EndModal(dialog, 0);
  }
}

Timer *NextTimer(uint64_t until, Dialog **owner) {
  Timer *next = nullptr;
  for (Dialog *dialog = session.newest; dialog != nullptr; dialog = dialog->older) {
    for (Timer *timer = dialog->timers; timer != nullptr; timer = timer->next) {
      const bool sooner = next == nullptr || timer->due < next->due ||
                          (timer->due == next->due && timer->order < next->order);
      if (timer->due <= until && sooner) {
        next = timer;
        *owner = dialog;
      }
    }
  }
  return next;
}

}  // namespace

intptr_t Send(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  return SendToPlace<Hold>(Find(window), OwnProc, window, message, wParam, lParam);
}

void Post(OrlWindow window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
  if (Find(window).dialog == nullptr) {
    return;
  }
  auto *posted = static_cast<Posted *>(WRENMemAlloc(sizeof(Posted)));
  if (posted == nullptr) {
    return;
  }
  *posted = {nullptr, window, message, wParam, lParam};
  Posted *&link = session.lastPosted == nullptr ? session.firstPosted : session.lastPosted->next;
  link = posted;
  session.lastPosted = posted;
}

void Notify(const Control *control, uint32_t notification) {
  Send(control->dialog->window, ORL_WM_COMMAND,
       static_cast<uint16_t>(control->id) | uintptr_t{notification} << 16,
       reinterpret_cast<intptr_t>(control->window));
}

void SendCommand(Dialog *dialog, int32_t id) {
  const Control *control = ControlById(dialog, id);
  Send(dialog->window, ORL_WM_COMMAND, static_cast<uint16_t>(id),
       reinterpret_cast<intptr_t>(control == nullptr ? nullptr : control->window));
}

void RunPosted() {
  while (!IsLoopOver() && HandlePosted()) {
  }
}

void Settle() {
  while (!IsLoopOver() && (HandlePosted() || PaintNext())) {
  }
}

void EndModal(Dialog *dialog, intptr_t result) {
  if (dialog->modal && !dialog->ended) {
    dialog->ended = true;
    dialog->result = result;
  }
}

intptr_t RunModal(Dialog *dialog) {
  const Hold hold(dialog);
  session.eventsAtOnce = ModalCount() == 1 ? 0 : session.eventsAtOnce;
  while (!dialog->ended) {
    Settle();
    if (dialog->ended) {
      break;
    }
    if (session.scriptOver || session.script == nullptr) {
      CancelUnattended(dialog);
      continue;
    }
    session.eventsAtOnce = 0;
    const int32_t more =
        CallHost([dialog] { return session.script(session.user, dialog->window); });
    session.scriptOver = session.scriptOver || more == 0;
  }
  return dialog->result;
}

bool SendNextTimer(uint64_t until) {
  Dialog *dialog = nullptr;
  Timer *timer = NextTimer(until, &dialog);
  if (timer == nullptr) {
    return false;
  }
  session.clock = std::max(session.clock, timer->due);
  timer->due = session.clock + timer->period;
  timer->order = ++session.timerOrder;
  Send(dialog->window, ORL_WM_TIMER, timer->id, 0);
  return true;
}

void SetTimerOf(Dialog *dialog, uintptr_t id, uint32_t period) {
  constexpr uint32_t kShortestPeriod = 10;
  Timer *timer = dialog->timers;
  while (timer != nullptr && timer->id != id) {
    timer = timer->next;
  }
  if (timer == nullptr) {
    timer = static_cast<Timer *>(WRENMemAlloc(sizeof(Timer)));
    if (timer == nullptr) {
      return;
    }
    timer->id = id;
    timer->next = dialog->timers;
    dialog->timers = timer;
  }
  timer->period = std::max(period, kShortestPeriod);
  timer->due = session.clock + timer->period;
  timer->order = ++session.timerOrder;
}

void KillTimerOf(Dialog *dialog, uintptr_t id) {
  for (Timer **link = &dialog->timers; *link != nullptr; link = &(*link)->next) {
    if ((*link)->id == id) {
      const Owned<Timer> timer(*link);
      *link = timer->next;
      return;
    }
  }
}

bool BoxOffers(uint32_t type, int32_t answer) {
  switch (type & 15) {
    case ORL_MB_YESNO:
      return answer == ORL_IDYES || answer == ORL_IDNO;
    case ORL_MB_YESNOCANCEL:
      return answer == ORL_IDYES || answer == ORL_IDNO || answer == ORL_ID_CANCEL;
    default:
      return answer == ORL_ID_OK;
  }
}

int32_t CancelOfBox(uint32_t type) {
  for (const int32_t answer : {+ORL_ID_CANCEL, +ORL_IDNO}) {
    if (BoxOffers(type, answer)) {
      return answer;
    }
  }
  return ORL_ID_OK;
}

int32_t ShowBox(OrlWindow parent, const char *text, const char *caption, uint32_t type) {
  void *boxes = session.boxes;
  if (!Reserve(&boxes, &session.boxCapacity, session.boxCount + 1, sizeof(BoxRecord))) {
    return 0;
  }
  session.boxes = static_cast<BoxRecord *>(boxes);
  OwnedText keptText = CopyOfText(text);
  OwnedText keptCaption = CopyOfText(caption);
  Dialog *box =
      keptText == nullptr || keptCaption == nullptr ? nullptr : NewBox(parent, caption, type);
  if (box == nullptr) {
    return 0;
  }
  const int32_t index = session.boxCount++;
  session.boxes[index] = {keptText.release(), keptCaption.release(), type, box->window, parent, 0};
  const Hold hold(box);
  const auto answer = static_cast<int32_t>(RunModal(box));
  session.boxes[index].answer = answer;
  Destroy(box);
  return answer;
}

}  // namespace headless

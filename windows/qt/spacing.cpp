// Even spacing of controls in rows and columns, and window sizes that users have chosen.
#include <QGuiApplication>
#include <QSettings>
#include <algorithm>
#include <cstdlib>

#include "windows/qt/list_box.h"
#include "windows/qt/state.h"

namespace qt_windows {

namespace {

// Buttons of one kind and size in one frame, several of which form a row or column.
struct Member {
  const OrlControl *row;
  Control *control;
};
using Members = std::vector<Member>;

// Controls that extend beyond its lower edge are in it too.
const Control *FrameAround(const Dialog &dialog, const Control &self) {
  for (const auto &control : dialog.controls) {
    if (control->kind == ORL_CONTROL_GROUP && control->base.contains(self.base.topLeft())) {
      return control.get();
    }
  }
  return nullptr;
}

// The members of the group that a control begins; empty when it is in one that another begins.
Members GroupOf(const Dialog &dialog, size_t first) {
  const OrlControl &model = dialog.model->controls[first];
  const Control *frame = FrameAround(dialog, *dialog.controls[first]);
  Members members;
  for (size_t i = 0; i < dialog.controls.size(); ++i) {
    const OrlControl &row = dialog.model->controls[i];
    if (row.kind == model.kind && row.width == model.width && row.height == model.height &&
        FrameAround(dialog, *dialog.controls[i]) == frame) {
      if (i < first) {
        return {};
      }
      members.push_back({&row, dialog.controls[i].get()});
    }
  }
  return members;
}

// One axis of a group: the positions of its members in the template, and the conversion to pixels.
struct SpacingAxis {
  int16_t OrlControl::*place;
  int16_t OrlControl::*extent;
  double unit;
  void (QRect::*move)(int);
};

// Positions whose steps differ by at most one unit get equal steps.
void SpaceAlong(const Members &members, const SpacingAxis &axis) {
  std::vector<int32_t> places;
  for (const Member &member : members) {
    places.push_back(member.row->*axis.place);
  }
  std::sort(places.begin(), places.end());
  places.erase(std::unique(places.begin(), places.end()), places.end());
  const auto count = static_cast<int32_t>(places.size()) - 1;
  if (count < 2) {
    return;
  }
  const double step = static_cast<double>(places.back() - places.front()) / count;
  for (int32_t i = 0; i < count; ++i) {
    const int32_t here = places[static_cast<size_t>(i) + 1] - places[static_cast<size_t>(i)];
    if (std::abs(here - step) > 1 || here > 2 * (members[0].row->*axis.extent)) {
      return;
    }
  }
  const int start = qRound(places.front() * axis.unit);
  const int pixels = qRound(step * axis.unit);
  for (const Member &member : members) {
    const auto found = std::find(places.begin(), places.end(), member.row->*axis.place);
    (member.control->base.*axis.move)(start + pixels * static_cast<int>(found - places.begin()));
  }
}

// ---- Sizes

QString KeyOf(const Dialog &dialog) {
  return QStringLiteral("sizes/") + QString::fromLatin1(dialog.model->name);
}

// Only with a user, who would recognise the dialog.
bool IsRemembered(const Dialog &dialog) {
  return *dialog.model->name != 0 && QGuiApplication::platformName() != QLatin1String("offscreen");
}

QSettings &Settings() {
  static QSettings settings(QSettings::IniFormat, QSettings::UserScope, "orli11", "windows");
  return settings;
}

}  // namespace

void SpaceEvenly(Dialog *dialog) {
  for (size_t i = 0; i < dialog->controls.size(); ++i) {
    const OrlControlKind kind = dialog->controls[i]->kind;
    const Members members =
        kind == ORL_CONTROL_BUTTON || kind == ORL_CONTROL_OPTION ? GroupOf(*dialog, i) : Members();
    if (members.size() > 2) {
      SpaceAlong(members, {&OrlControl::x, &OrlControl::width, dialog->unitX, &QRect::moveLeft});
      SpaceAlong(members, {&OrlControl::y, &OrlControl::height, dialog->unitY, &QRect::moveTop});
    }
  }
}

void AlignLists(Dialog *dialog) {
  for (const auto &list : dialog->controls) {
    for (const auto &other : dialog->controls) {
      if (!IsList(*list) || !IsList(*other)) {
        continue;
      }
      QRect place = list->widget->geometry();
      const QRect beside = other->widget->geometry();
      const int apart = std::abs(place.bottom() - beside.bottom());
      if (beside.top() < place.top() && apart > 0 &&
          apart <= HeightOfRow(static_cast<const ListBox *>(list.get())) &&
          !place.intersects(beside)) {
        place.moveBottom(beside.bottom());
        list->widget->setGeometry(place);
        break;
      }
    }
  }
}

void RestoreSize(Dialog *dialog) {
  const QSize more = IsRemembered(*dialog) ? Settings().value(KeyOf(*dialog)).toSize() : QSize();
  if (more.isValid() && !more.isNull()) {
    ResizeClient(dialog, (dialog->baseSize + more).boundedTo({kLargestWindow, kLargestWindow}));
  }
}

void KeepSize(Dialog *dialog) {
  const QWidget *widget = dialog->widget;
  if (IsRemembered(*dialog) && widget->isVisible() && !widget->isMaximized() &&
      widget->size() != dialog->given) {
    Settings().setValue(KeyOf(*dialog), dialog->client->size() - dialog->baseSize);
    Settings().sync();
  }
}

}  // namespace qt_windows

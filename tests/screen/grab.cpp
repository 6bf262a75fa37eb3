// grab FILE X Y WIDTH HEIGHT - writes a part of the screen to a picture file, as its name says
// (.png, .ppm).
// grab FILE - the part of the screen where something is on its black ground, which the picture
// leaves open. grab font - the height of the font that dialogs have, in pixels.
#include <QApplication>
#include <QFontMetricsF>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

// The least rectangle around all that is not black.
QRect Filled(const QImage &screen) {
  QRect filled;
  for (int y = 0; y < screen.height(); ++y) {
    for (int x = 0; x < screen.width(); ++x) {
      if (qGray(screen.pixel(x, y)) != 0 && !filled.contains(x, y)) {
        filled |= QRect(x, y, 1, 1);
      }
    }
  }
  return filled;
}

// Makes the black ground transparent: all that hangs together with a black corner.
void ClearGround(QImage *picture) {
  *picture = picture->convertToFormat(QImage::Format_ARGB32);
  const QRect all = picture->rect();
  std::vector<QPoint> open = {all.topLeft(), all.topRight(), all.bottomLeft(), all.bottomRight()};
  while (!open.empty()) {
    const QPoint at = open.back();
    open.pop_back();
    if (all.contains(at) && picture->pixel(at) == qRgb(0, 0, 0)) {
      picture->setPixel(at, qRgba(0, 0, 0, 0));
      for (const QPoint &step : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)}) {
        open.push_back(at + step);
      }
    }
  }
}

}  // namespace

int main(int argc, char **argv) {
  const QApplication application(argc, argv);
  if (argc == 2 && std::strcmp(argv[1], "font") == 0) {
    const double height = QFontMetricsF(QApplication::font()).height();
    std::printf("%f\n", height * application.devicePixelRatio());
    return 0;
  }
  if (argc != 2 && argc != 6) {
    std::fprintf(stderr, "usage: grab FILE [X Y WIDTH HEIGHT]\n");
    return 2;
  }
  QImage picture = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
  picture = picture.copy(argc == 2 ? Filled(picture)
                                   : QRect(std::atoi(argv[2]), std::atoi(argv[3]),
                                           std::atoi(argv[4]), std::atoi(argv[5])));
  if (argc == 2) {
    ClearGround(&picture);
  }
  if (!picture.save(argv[1])) {
    std::fprintf(stderr, "grab: cannot write %s\n", argv[1]);
    return 1;
  }
  return 0;
}

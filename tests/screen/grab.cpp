// grab FILE X Y WIDTH HEIGHT - writes a part of the screen to a picture file, as its name tells
// (.png, .ppm).
// grab font - the height of the font that dialogs have, in pixels.
#include <QApplication>
#include <QFontMetricsF>
#include <QPixmap>
#include <QScreen>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char **argv) {
  const QApplication application(argc, argv);
  if (argc == 2 && std::strcmp(argv[1], "font") == 0) {
    const double height = QFontMetricsF(QApplication::font()).height();
    std::printf("%f\n", height * application.devicePixelRatio());
    return 0;
  }
  if (argc != 6) {
    std::fprintf(stderr, "usage: grab FILE X Y WIDTH HEIGHT\n");
    return 2;
  }
  const QPixmap picture = QGuiApplication::primaryScreen()->grabWindow(
      0, std::atoi(argv[2]), std::atoi(argv[3]), std::atoi(argv[4]), std::atoi(argv[5]));
  if (!picture.save(argv[1])) {
    std::fprintf(stderr, "grab: cannot write %s\n", argv[1]);
    return 1;
  }
  return 0;
}

// Dialogs for places and ids that cannot work; bitmaps by a reader of BMP files against the
// drawings that they are made of.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <span>
#include <string>

#include "resources/bitmaps.h"
#include "resources/dialogs.h"

namespace {

// The status text (139) alone is cut off at the lower edge.
TEST(ResourcesTest, ControlsAreInsideTheirDialogs) {
  for (const char *name :
       {kDialogEditor, kDialogTextView, kDialogValues, kDialogError, kDialogLoadError}) {
    const OrlDialogTemplate *dialog = FindDialog(name);
    ASSERT_NE(nullptr, dialog) << name;
    std::set<int32_t> ids;
    for (const OrlControl &c : std::span(dialog->controls, size_t(dialog->controlCount))) {
      EXPECT_TRUE(c.id == -1 || ids.insert(c.id).second) << name << c.id;
      const int height = c.id == 139 ? c.height - 10 : c.height;
      EXPECT_TRUE(c.x >= -1 && c.x + c.width <= dialog->width + 1 && c.y >= -1 &&
                  c.y + height <= dialog->height + 1)
          << name << c.id;
    }
  }
  EXPECT_TRUE(FindDialog(nullptr) == nullptr && FindDialog("EXPBIL") == nullptr);
}

TEST(ResourcesTest, BitmapsAreBmpFilesOfTheDrawings) {
  for (const std::string name : {"formula", "range", "set", "formulal", "rangel", "setl"}) {
    SCOPED_TRACE(name);
    const OrlBitmap *bitmap = FindBitmap(name.c_str());
    ASSERT_TRUE(bitmap != nullptr && bitmap->fileSize > 54);
    const auto number = [bitmap](size_t at, size_t bytes) {
      size_t value = 0;
      while (bytes > 0) value = value << 8 | bitmap->file[at + --bytes];
      return value;
    };
    const bool small = name.back() == 'l';
    const size_t width = small ? 14 : 40, height = small ? 10 : 44, stride = small ? 16 : 40;
    const size_t pixels = 54 + 4 * number(46, 4), size = pixels + stride * height;
    const size_t fields[][3] = {{0, 2, 0x4d42}, {2, 4, size},   {10, 4, pixels},
                                {14, 4, 40},    {18, 4, width}, {22, 4, height},
                                {26, 2, 1},     {28, 2, 8},     {30, 4, 0}};
    for (const auto &[at, bytes, value] : fields) ASSERT_EQ(value, number(at, bytes)) << at;
    ASSERT_EQ(size, bitmap->fileSize);
    EXPECT_TRUE(size_t(bitmap->width) == width && size_t(bitmap->height) == height);
    EXPECT_EQ(bitmap, FindBitmap(bitmap->name)) << "its own name is in capitals";
    std::ifstream drawing("resources/bitmaps/" + name + ".txt");
    std::string line;
    std::map<char, size_t> colors;
    while (std::getline(drawing, line) && !line.empty()) {
      if (line.size() == 8) colors[line[0]] = std::stoul(line.substr(2), nullptr, 16);
    }
    for (size_t y = 0; y < height; ++y) {
      ASSERT_TRUE(std::getline(drawing, line) && line.size() == width) << y;
      for (size_t x = 0; x < width; ++x) {
        const size_t color = bitmap->file[pixels + (height - 1 - y) * stride + x];
        ASSERT_EQ(colors.at(line[x]), number(54 + 4 * color, 4)) << x << ", " << y;
      }
    }
    EXPECT_EQ(0xc0c0c0U, colors.at(line[0])) << "the corner is not background";
  }
  EXPECT_TRUE(FindBitmap(nullptr) == nullptr && FindBitmap("form") == nullptr);
}

TEST(ResourcesTest, WrongDrawingsEndTheBuildWithTheirLine) {
  const std::pair<const char *, const char *> drawings[] = {
      {"A 2 1\n. c0c0c0\n\n..\n", ""},
      {"A 2\n. c0c0c0\n\n..\n", ":1: NAME"},
      {"; a\nA 2 0\n. c0c0c0\n\n", ":2: NAME"},
      {"A 2 1\n. c0c0c\n\n..\n", ":2: a letter"},
      {"A 2 1\n. c0c0c0\n. 000000\n\n..\n", ":3: the letter"},
      {"A 2 1\n. c0c0c0\n\n...\n", ":4: a row of 3"},
      {"A 2 1\n. c0c0c0\n\n.x\n", ":4: no colour for the letter x"},
      {"A 2 1\n. c0c0c0\n\n..\n..\n", ":5: a row more"},
      {"A 2 2\n. c0c0c0\n\n..\n", ":5: only 1"}};
  const std::string file = testing::TempDir() + "orli_drawing.txt", log = file + ".log";
  const std::string call = BITMAP_GENERATOR " " + file + ".inc " + file + " 2> " + log;
  for (const auto &[drawing, error] : drawings) {
    std::ofstream(file) << drawing;
    EXPECT_EQ(*error == 0, std::system(call.c_str()) == 0) << drawing;
    std::string line;
    std::getline(std::ifstream(log) >> std::ws, line);
    EXPECT_EQ(*error != 0, line.starts_with(file + error)) << drawing << line;
  }
}

}  // namespace

// Generates BMP files from pictures that are drawn with letters, and a table of them in C++. Run by
// the build with the file to write and the pictures. A picture is a text file:
//
//   ; comment
//   NAME WIDTH HEIGHT
//   . c0c0c0            the palette: a letter and its colour, red green blue
//   # 000080
//                       an empty line
//   ..#..               HEIGHT rows of WIDTH letters, the top row first
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr size_t kMaxSide = 1024;
constexpr int kNoColor = -1;

struct Picture {
  std::string name;
  size_t width, height;
  std::vector<uint32_t> colors;  // 0x00rrggbb
  std::array<int, 256> colorOf;  // by letter: its place in `colors`, or kNoColor
  std::vector<std::string> rows;
};

// A file and the line that was read last.
struct Source {
  const char *path;
  std::ifstream stream;
  std::string line;
  int number;
};

[[noreturn]] void Fail(const Source &source, const std::string &what) {
  std::fprintf(stderr, "%s:%d: %s\n", source.path, source.number, what.c_str());
  std::exit(1);
}

// The next line that is not a comment; false at the end of the file.
bool NextLine(Source &source) {
  do {
    ++source.number;
    if (!std::getline(source.stream, source.line)) {
      return false;
    }
  } while (source.line.starts_with(';'));
  return true;
}

void ReadHeader(Source &source, Picture &picture) {
  NextLine(source);
  std::istringstream words(source.line);
  std::string rest;
  if (!(words >> picture.name >> picture.width >> picture.height) || words >> rest ||
      picture.width - 1 >= kMaxSide || picture.height - 1 >= kMaxSide) {
    Fail(source, "NAME WIDTH HEIGHT expected");
  }
  for (const char letter : picture.name) {
    if (std::isupper(static_cast<unsigned char>(letter)) == 0) {
      Fail(source, "the name has other letters than A to Z");
    }
  }
}

void ReadPalette(Source &source, Picture &picture) {
  picture.colorOf.fill(kNoColor);
  while (NextLine(source) && !source.line.empty()) {
    const std::string &line = source.line;
    if (line.size() != 8 || line[0] == ' ' || line[1] != ' ' ||
        line.find_first_not_of("0123456789abcdef", 2) != std::string::npos) {
      Fail(source, "a letter and a colour of six hexadecimal digits expected");
    }
    int &color = picture.colorOf[static_cast<unsigned char>(line[0])];
    if (color != kNoColor) {
      Fail(source, "the letter has a colour already");
    }
    color = static_cast<int>(picture.colors.size());
    picture.colors.push_back(static_cast<uint32_t>(std::stoul(line.substr(2), nullptr, 16)));
  }
}

void ReadRows(Source &source, Picture &picture) {
  while (NextLine(source)) {
    const std::string &row = source.line;
    if (picture.rows.size() == picture.height) {
      Fail(source, "a row more than the picture is high");
    }
    if (row.size() != picture.width) {
      Fail(source, "a row of " + std::to_string(row.size()) + " letters instead of " +
                       std::to_string(picture.width));
    }
    for (const char letter : row) {
      if (picture.colorOf[static_cast<unsigned char>(letter)] == kNoColor) {
        Fail(source, std::string("no colour for the letter ") + letter);
      }
    }
    picture.rows.push_back(row);
  }
  if (picture.rows.size() < picture.height) {
    Fail(source, "only " + std::to_string(picture.rows.size()) + " rows");
  }
}

void Put(std::vector<uint8_t> &file, uint32_t value, int bytes) {
  for (; bytes > 0; --bytes) {
    file.push_back(static_cast<uint8_t>(value & 0xff));
    value >>= 8;
  }
}

// File header, information header of 40 bytes, palette, and the rows from the bottom up, each
// filled to a multiple of 4 bytes.
std::vector<uint8_t> BmpFile(const Picture &picture) {
  const auto colors = static_cast<uint32_t>(picture.colors.size());
  const auto width = static_cast<uint32_t>(picture.width);
  const auto height = static_cast<uint32_t>(picture.height);
  const uint32_t stride = (width + 3) / 4 * 4;
  const uint32_t pixels = 14 + 40 + 4 * colors;

  std::vector<uint8_t> file = {'B', 'M'};
  Put(file, pixels + stride * height, 4);
  Put(file, 0, 4);  // reserved
  Put(file, pixels, 4);

  Put(file, 40, 4);
  Put(file, width, 4);
  Put(file, height, 4);
  Put(file, 1, 2);  // planes
  Put(file, 8, 2);  // bits of a pixel
  Put(file, 0, 4);  // not compressed
  Put(file, stride * height, 4);
  Put(file, 3780, 4);  // pixels in a metre, across and down: 96 in an inch
  Put(file, 3780, 4);
  Put(file, colors, 4);
  Put(file, 0, 4);  // all colours are important
  for (const uint32_t color : picture.colors) {
    Put(file, color, 4);
  }
  for (size_t row = height; row > 0; --row) {
    for (const char letter : picture.rows[row - 1]) {
      Put(file, static_cast<uint32_t>(picture.colorOf[static_cast<unsigned char>(letter)]), 1);
    }
    Put(file, 0, static_cast<int>(stride - width));
  }
  return file;
}

void PrintFile(const Picture &picture) {
  std::printf("constexpr uint8_t k%s[] = {", picture.name.c_str());
  size_t column = 0;
  for (const uint8_t byte : BmpFile(picture)) {
    std::printf("%s%d,", column++ % 24 == 0 ? "\n  " : "", byte);
  }
  std::printf("\n};\n\n");
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 3 || std::freopen(argv[1], "w", stdout) == nullptr) {
    std::fprintf(stderr, "usage: bitmap_generator TARGET PICTURE...\n");
    return 1;
  }
  std::printf("// Made from the pictures in bitmaps/ by bitmap_generator.cpp.\n\n");
  std::vector<Picture> pictures;
  std::set<std::string> names;
  for (int i = 2; i < argc; ++i) {
    Source source = {argv[i], std::ifstream(argv[i]), "", 0};
    Picture picture = {};
    ReadHeader(source, picture);
    if (!names.insert(picture.name).second) {
      Fail(source, "another picture has this name");
    }
    ReadPalette(source, picture);
    ReadRows(source, picture);
    PrintFile(picture);
    pictures.push_back(picture);
  }
  std::printf("constexpr OrlBitmap kBitmaps[] = {\n");
  for (const Picture &picture : pictures) {
    const char *name = picture.name.c_str();
    std::printf("  {\"%s\", k%s, sizeof(k%s), %zu, %zu},\n", name, name, name, picture.width,
                picture.height);
  }
  std::printf("};\n");
  return std::fclose(stdout) == 0 ? 0 : 1;
}

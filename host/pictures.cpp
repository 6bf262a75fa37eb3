#include "host/pictures.h"

#include <orli11.h>

#include "host/tokens.h"
#include "host/underline.h"

namespace {

bool IsDatePicture(const std::string &picture) {
  return WRENFmtCheckDatePicture(picture.c_str()) == 1;
}

bool IsNumberPicture(const std::string &picture) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.numberPicture = picture.c_str();
  record.useCountry = 1;
  record.flags = WREN_FMT_FLAG_NUMBER;
  return WRENFmtCheckNumberPicture(&record) == 1;
}

struct PictureFunction {
  const char *name, *what;
  bool (*good)(const std::string &picture);
};

constexpr PictureFunction kPictureFunctions[] = {
    {"DateToStrPicture", "a date", IsDatePicture},
    {"NumberToStrPicture", "a number", IsNumberPicture},
};

// The string literal that is the whole second argument of the call at `name`, or null.
const Token *SecondArgument(const std::vector<Token> &tokens, size_t name) {
  int depth = 0;
  for (size_t i = name + 1; i + 2 < tokens.size(); ++i) {
    depth += tokens[i].kind == kTokenOpen ? 1 : tokens[i].kind == kTokenClose ? -1 : 0;
    if (depth == 0) {
      break;
    }
    if (depth == 1 && tokens[i].kind == kTokenComma) {
      const bool alone = tokens[i + 1].kind == kTokenString && tokens[i + 2].kind == kTokenClose;
      return alone ? &tokens[i + 1] : nullptr;
    }
  }
  return nullptr;
}

}  // namespace

std::vector<std::string> PictureProblems(const std::string &text) {
  std::vector<std::string> problems;
  const std::vector<Token> tokens = Tokens(text);
  for (size_t i = 0; i < tokens.size(); ++i) {
    for (const PictureFunction &function : kPictureFunctions) {
      const Token *picture = tokens[i].text == function.name ? SecondArgument(tokens, i) : nullptr;
      if (picture != nullptr && !function.good(Unquoted(picture->text))) {
        problems.push_back(std::string(picture->text) + " is not the picture of " + function.what +
                           "; " + function.name + " gives the empty text\n" +
                           Underline(text, static_cast<int32_t>(picture->offset),
                                     static_cast<int32_t>(picture->text.size())));
      }
    }
  }
  return problems;
}

#include "host/messages.h"

#include <orli11.h>

std::string MessageText(int32_t id) {
  std::string text(static_cast<size_t>(ORLErrorText(id, 0, nullptr)), '\0');
  if (text.empty()) {
    return "The formula is not valid.";
  }
  ORLErrorText(id, static_cast<int32_t>(text.size()) + 1, text.data());
  return text;
}

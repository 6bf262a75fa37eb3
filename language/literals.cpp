#include "language/literals.h"

#include <cstring>

#include "closed/wren/decimal.h"
#include "dates/date_text.h"
#include "language/parse_state.h"
#include "platform/text.h"

namespace {

// The number of digits that always fit into 64 bits.
constexpr size_t kFewDigits = 18;

// The value of digits with at most one point, where the canonical form needs no trailing zero
// removed.
bool NumberFromFewDigits(NumberValue *value, std::string_view literal) {
  if (literal.size() > kFewDigits) {
    return false;
  }
  uint64_t coefficient = 0;
  uint32_t decimals = 0;
  bool point = false;
  for (const char byte : literal) {
    const auto digit = static_cast<uint32_t>(static_cast<uint8_t>(byte)) - '0';
    if (digit <= 9) {
      coefficient = coefficient * 10 + digit;
      decimals += point ? 1 : 0;
    } else if (byte == '.' && !point) {
      point = true;
    } else {
      return false;
    }
  }
  if (decimals > 0 && coefficient % 10 == 0) {
    return false;
  }
  const uint32_t head = static_cast<uint8_t>(0U - decimals);
  value->length = kNumberLength;
  std::memcpy(value->payload, &head, sizeof head);
  std::memcpy(value->payload + 4, &coefficient, sizeof coefficient);
  return true;
}

// A terminated copy of a literal.
struct TerminatedText {
  char text[kLongestMatch + 1];
  explicit TerminatedText(std::string_view literal) {
    std::memcpy(text, literal.data(), literal.size());
    text[literal.size()] = '\0';
  }
};

}  // namespace

void NumberFromLiteral(NumberValue *value, std::string_view literal) {
  if (!NumberFromFewDigits(value, literal)) {
    WRENNumFromText(value, TerminatedText(literal).text);
  }
}

bool IsDateLiteral(std::string_view literal) {
  NumberValue unused;
  return DateFromText(&unused, TerminatedText(literal).text);
}

bool HoldsEscape(std::string_view text) {
  if (text.find('\'') == std::string_view::npos) {
    return false;
  }
  const TerminatedText copy(text);
  for (const char *at = copy.text; *at != '\0'; at = CharNextA(at)) {
    if ((*at == '\\' || *at == '\'') && at[1] == '\'') {
      return true;
    }
  }
  return false;
}

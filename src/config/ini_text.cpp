#include "config/ini_text.h"

#include <algorithm>
#include <cstdlib>

#include "text/number_text.h"

namespace ini {
namespace {

constexpr char kBlanks[] = " \t";
constexpr int kBitsPerHexDigit = 4;

}  // namespace

std::string_view TrimRight(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string_view Trim(std::string_view text) {
  text = TrimRight(text);
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text;
}

std::int32_t ReadInteger(const std::string& text) {
  if (text[0] == '0') return text::ParseDigits(text.c_str(), kBitsPerHexDigit);
  return static_cast<std::int32_t>(std::strtoll(text.c_str(), nullptr, 10));
}

double ReadFloat(const std::string& text) { return std::strtod(text.c_str(), nullptr); }

char ReadCharacter(const std::string& text) {
  if (text[0] == '0') {
    return static_cast<char>(text::ParseDigits(text.c_str(), kBitsPerHexDigit));
  }
  return text[0] == '\\' ? text::Unescape(text[1]) : text[0];
}

std::string CharacterText(unsigned char c, std::uint32_t value) {
  switch (c) {
    case '\\':
      return "\\\\";
    case '\t':
      return "\\t";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case ' ':
      return "\\space";
    default:
      break;
  }
  if (c > ' ' && c <= '~') return std::string(1, static_cast<char>(c));
  char digits[text::kMaxIntegerDigits];
  char* const end = digits + sizeof(digits);
  return "0x" + std::string(text::BitDigits(value, kBitsPerHexDigit, "0123456789abcdef", end), end);
}

}  // namespace ini

// Values as they stand in an INI file, and what they mean.

#ifndef KALVOBASE_SRC_CONFIG_INI_TEXT_H_
#define KALVOBASE_SRC_CONFIG_INI_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace ini {

inline bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// Without the blanks, which are spaces and tabs, at the end, and at both ends.
std::string_view TrimRight(std::string_view text);
std::string_view Trim(std::string_view text);

// A decimal number, or a hexadecimal one if the text begins with a 0, of which the low 32 bits
// count. None of these fails: what cannot be read is 0.
std::int32_t ReadInteger(const std::string& text);
double ReadFloat(const std::string& text);

// The first character, or what a backslash and the next one stand for; a text that begins with
// a 0 is a hexadecimal number.
char ReadCharacter(const std::string& text);

// The reverse. `value` is what is written of a character that cannot be shown.
std::string CharacterText(unsigned char c, std::uint32_t value);

}  // namespace ini

#endif  // KALVOBASE_SRC_CONFIG_INI_TEXT_H_

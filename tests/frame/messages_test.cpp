// Each message is the GBK form of the text that stands above it.

#include <gtest/gtest.h>
#include <iconv.h>

#include <fstream>
#include <string>

namespace {

// The bytes of a literal that may consist of several, with \x escapes.
std::string BytesOf(const std::string& literal) {
  std::string bytes;
  for (std::size_t i = 0; i < literal.size(); ++i) {
    if (literal[i] == '"') continue;
    if (literal[i] != '\\') {
      bytes += literal[i];
    } else if (literal[i + 1] == 'n') {
      bytes += literal.substr(i++, 2);  // as in the comment
    } else {
      bytes += static_cast<char>(std::stoi(literal.substr(i + 2, 2), nullptr, 16));
      i += 3;
    }
  }
  return bytes;
}

std::string Gbk(std::string utf8) {
  const iconv_t converter = iconv_open("GBK", "UTF-8");
  std::string gbk(utf8.size(), '\0');
  char* in = utf8.data();
  char* out = gbk.data();
  std::size_t inLeft = utf8.size();
  std::size_t outLeft = gbk.size();
  EXPECT_EQ(iconv(converter, &in, &inLeft, &out, &outLeft), 0u) << utf8;
  iconv_close(converter);
  return gbk.substr(0, gbk.size() - outLeft);
}

TEST(Messages, AreTheGbkFormOfTheirComments) {
  std::ifstream file(KALVOBASE_MESSAGES);
  std::string comment;
  std::string line;
  int messages = 0;
  while (std::getline(file, line)) {
    const std::size_t quote = line.find("[] = \"");
    if (line.rfind("inline constexpr char ", 0) == 0 && quote != std::string::npos) {
      ASSERT_EQ(line.substr(line.size() - 2), "\";");
      EXPECT_EQ(BytesOf(line.substr(quote + 5, line.size() - quote - 6)), Gbk(comment)) << line;
      ++messages;
    }
    comment = line.rfind("// ", 0) == 0 ? line.substr(3) : "";
  }
  EXPECT_GE(messages, 34);
}

}  // namespace

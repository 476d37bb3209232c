#include "options.h"

#include <charconv>
#include <regex>

#include "failure.h"

namespace pivra::tool {

namespace {

// A number of digits that the pattern has already matched; false if it is too large.
template <class Number>
bool read_number(const std::string &digits, Number &number) {
  const char *end = digits.data() + digits.size();
  return std::from_chars(digits.data(), end, number).ec == std::errc();
}

template <class Number>
Number parse_number(const std::string &text, Number low, Number high, const char *what) {
  Number number;
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || !(number >= low && number <= high)) {
    fail("the {} '{}' is not a number from {} to {}", what, text, low, high);
  }
  return number;
}

constexpr std::pair<std::string_view, Turn> kTurns[] = {{"90l", Turn::kLeft90},
                                                        {"90r", Turn::kRight90},
                                                        {"180", Turn::k180},
                                                        {"hmirror", Turn::kHorizontalMirror},
                                                        {"vmirror", Turn::kVerticalMirror}};

}  // namespace

const FormatInfo &parse_format(const std::string &text) {
  const FormatInfo *info = find_format(text);
  if (!info) fail("the format '{}' is unknown; 'pivra formats' lists the names", text);
  return *info;
}

Size parse_size(const std::string &text) {
  static const std::regex pattern("(\\d+)[xX](\\d+)");
  std::smatch match;
  Size size = {};
  if (!std::regex_match(text, match, pattern) || !read_number(match.str(1), size.width) ||
      !read_number(match.str(2), size.height)) {
    fail("the size '{}' is not of the form 1280x720", text);
  }
  return size;
}

FrameRange parse_frames(const std::string &text) {
  static const std::regex pattern("(\\d*)(:?)(\\d*)");
  std::smatch match;
  FrameRange range;
  if (text.empty() || !std::regex_match(text, match, pattern) ||
      (match.length(1) > 0 && !read_number(match.str(1), range.first)) ||
      (match.length(3) > 0 && !read_number(match.str(3), range.end))) {
    fail("the frames '{}' are not of the form 10:20, 10:, :20 or 10", text);
  }
  if (match.length(2) == 0) range.end = range.first + 1;
  if (range.first >= range.end) fail("the frames '{}' are none", text);
  return range;
}

Turn parse_turn(const std::string &text) {
  for (const auto &[name, turn] : kTurns)
    if (name == text) return turn;
  fail("the turn '{}' is none of 90l, 90r, 180, hmirror and vmirror", text);
}

std::int32_t parse_integer(const std::string &text, std::int32_t low, std::int32_t high,
                           const char *what) {
  return parse_number(text, low, high, what);
}

double parse_decimal(const std::string &text, double low, double high, const char *what) {
  return parse_number(text, low, high, what);
}

}  // namespace pivra::tool

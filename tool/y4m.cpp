#include "y4m.h"

#include <pivra.h>

#include <algorithm>
#include <charconv>
#include <sstream>
#include <string_view>

#include "failure.h"

namespace pivra::tool {

namespace {

constexpr std::size_t kLongestLine = 4096;

struct Chroma {
  std::string_view name;
  std::int32_t format;
};

// The kinds of 4:2:0 differ in where the chroma lies; repeated chroma has no place.
// Of the names of a format the first is written.
constexpr Chroma kChromas[] = {
    {"420", PIVRA_FORMAT_YUV420},      {"420jpeg", PIVRA_FORMAT_YUV420},
    {"420mpeg2", PIVRA_FORMAT_YUV420}, {"420paldv", PIVRA_FORMAT_YUV420},
    {"422", PIVRA_FORMAT_YUV422N},     {"444", PIVRA_FORMAT_YUV444},
    {"mono", PIVRA_FORMAT_YUV400},
};

std::int32_t parse_dimension(const InputFile &file, std::string_view text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), value);
  if (error != std::errc() || end != text.end() || value < 1) {
    fail("{} has the size '{}' in its Y4M header", file.name(), text);
  }
  return value;
}

std::int32_t parse_chroma(const InputFile &file, std::string_view text) {
  const auto *chroma = std::ranges::find(kChromas, text, &Chroma::name);
  if (chroma == std::end(kChromas)) {
    fail("{} holds Y4M chroma '{}'; readable is 8-bit mono, 420, 422 and 444", file.name(), text);
  }
  return chroma->format;
}

}  // namespace

bool y4m_holds(std::int32_t format) {
  return std::ranges::find(kChromas, format, &Chroma::format) != std::end(kChromas);
}

FrameShape read_y4m_header(InputFile &file, std::string &kept) {
  const std::string line = file.read_line(kLongestLine).value_or("");
  std::istringstream parameters(line);
  std::string word;
  if (!(parameters >> word) || word != "YUV4MPEG2") {
    fail("{} is neither Y4M nor PNG; raw frames need --from and --size", file.name());
  }
  FrameShape shape = {PIVRA_FORMAT_YUV420, 0, 0};
  bool full_range = false;
  while (parameters >> word) {
    const std::string_view value = std::string_view(word).substr(1);
    if (word[0] == 'W') shape.width = parse_dimension(file, value);
    if (word[0] == 'H') shape.height = parse_dimension(file, value);
    if (word[0] == 'C') shape.format = parse_chroma(file, value);
    full_range |= word == "XCOLORRANGE=FULL";
    if (word.starts_with("XCOLORRANGE=") ||
        std::string_view("FIA").find(word[0]) != std::string::npos)
      kept += " " + word;
  }
  if (shape.width == 0 || shape.height == 0) fail("{} has no size in its Y4M header", file.name());
  // Grey is stored as it is; everything else would come out with false colours.
  if (full_range && shape.format != PIVRA_FORMAT_YUV400) {
    fail("{} is full-range video, but the conversions are for video range", file.name());
  }
  return shape;
}

std::string y4m_header(const FrameShape &shape, const std::string &parameters) {
  return fmt::format("YUV4MPEG2 W{} H{}{} C{}\n", shape.width, shape.height,
                     parameters.empty() ? " F25:1 Ip" : parameters,
                     std::ranges::find(kChromas, shape.format, &Chroma::format)->name);
}

void read_y4m_frame_line(InputFile &file, std::uint64_t index) {
  const std::string line = file.read_line(kLongestLine).value_or("");
  if (line != "FRAME" && !line.starts_with("FRAME ")) {
    fail("{} is damaged: frame {} does not start with FRAME", file.name(), index);
  }
}

}  // namespace pivra::tool

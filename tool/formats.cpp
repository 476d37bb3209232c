#include <fmt/core.h>

#include <algorithm>
#include <pivra.hpp>
#include <string>

#include "commands.h"

namespace pivra::tool {

namespace {

// The bytes of each plane, as "w*h + w/2*h/2*2".
std::string planes_text(const FormatInfo &info) {
  if (!info.linear()) return "in tiles";
  std::string text;
  for (const PlaneShape &plane : info.planes) {
    if (!text.empty()) text += " + ";
    text += plane.width_shift ? "w/2" : "w";
    text += plane.height_shift ? "*h/2" : "*h";
    if (plane.bytes > 1) text += fmt::format("*{}", plane.bytes);
  }
  return text;
}

std::string targets_text(const FormatInfo &from) {
  std::string text;
  for (const FormatInfo &to : formats()) {
    if (converts(from.code, to.code)) text += fmt::format(" {}", to.name);
  }
  const bool every = std::ranges::all_of(
      formats(), [&](const FormatInfo &to) { return to.rgb() == converts(from.code, to.code); });
  return text.empty() ? "-" : every ? "every RGB format" : text.substr(1);
}

std::string or_dash(std::string_view name) {
  return std::string(name.empty() ? "-" : name);
}

}  // namespace

void list_formats() {
  constexpr const char *kLine = "{:>4}  {:<9}  {:<23}  {:<9}  {:<9}  {}\n";
  fmt::print(fmt::runtime(kLine), "code", "name", "bytes, plane by plane", "FFmpeg", "GStreamer",
             "converts to");
  for (const FormatInfo &info : formats()) {
    fmt::print(fmt::runtime(kLine), info.code, info.name, planes_text(info), or_dash(info.ffmpeg),
               or_dash(info.gstreamer), targets_text(info));
  }
  fmt::print("\nHalves are rounded up.\n");
}

}  // namespace pivra::tool

#include <fmt/core.h>

#include <algorithm>
#include <pivra.hpp>
#include <string>

#include "commands.h"

namespace pivra::tool {

namespace {

// A size divided by a power of two.
std::string divided(char size, int divisor) {
  return divisor > 1 ? fmt::format("{}/{}", size, divisor) : std::string(1, size);
}

// The bytes of each plane, as "w*h + w/2*h/2*2".
std::string planes_text(const FormatInfo &info) {
  std::string text;
  for (const PlaneShape &plane : info.planes) {
    if (!text.empty()) text += " + ";
    text += divided('w', plane.block_columns << plane.width_shift) + '*' +
            divided('h', plane.block_rows << plane.height_shift);
    if (plane.bytes > 1) text += fmt::format("*{}", plane.bytes);
  }
  return text;
}

std::string targets_text(const FormatInfo &from) {
  const bool every_rgb = std::ranges::all_of(
      formats(), [&](const FormatInfo &to) { return !to.rgb() || converts(from.code, to.code); });
  std::string text = every_rgb ? "every RGB format" : "";
  for (const FormatInfo &to : formats()) {
    if (!converts(from.code, to.code) || (every_rgb && to.rgb())) continue;
    text += fmt::format("{}{}", text.empty() ? "" : ", ", to.name);
  }
  return text.empty() ? "-" : text;
}

std::string or_dash(std::string_view name) { return std::string(name.empty() ? "-" : name); }

void print_row(std::string_view code, std::string_view name, std::string_view planes,
               std::string_view ffmpeg, std::string_view gstreamer, std::string_view v4l2,
               std::string_view drm, std::string_view targets) {
  fmt::print("{:>4}  {:<9}  {:<37}  {:<9}  {:<10}  {:<7}  {:<8}  {}\n", code, name, planes, ffmpeg,
             gstreamer, v4l2, drm, targets);
}

}  // namespace

void list_formats() {
  print_row("code", "name", "bytes, plane by plane", "FFmpeg", "GStreamer", "V4L2", "DRM",
            "converts to");
  for (const FormatInfo &info : formats()) {
    print_row(std::to_string(info.code), info.name, planes_text(info), or_dash(info.ffmpeg),
              or_dash(info.gstreamer), or_dash(info.v4l2), or_dash(info.drm), targets_text(info));
  }
  fmt::print("\nQuotients are rounded up. V4L2_PIX_FMT_ and DRM_FORMAT_ are left out.\n");
}

}  // namespace pivra::tool

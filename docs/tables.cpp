// The tables of the documentation, made of what the headers declare: prints the
// formats or the pairs as HTML.
#include <algorithm>
#include <iostream>
#include <pivra.hpp>
#include <string>
#include <string_view>

namespace {

using Text = std::string;

Text cell(std::string_view text) { return "<td>" + Text(text) + "</td>"; }

Text named(std::string_view prefix, std::string_view name) {
  return cell(name.empty() ? "" : Text(prefix) + Text(name));
}

void print_table(std::string_view head, std::string_view rows) {
  std::cout << "<table>\n<tr>" << head << "</tr>\n" << rows << "</table>\n";
}

// As "w/2 x h of 4 bytes".
Text plane_text(const pivra::PlaneShape &plane) {
  Text text = plane.width_shift ? "w/2" : "w";
  text += plane.height_shift ? " x h/2" : " x h";
  if (plane.bytes > 1) text += " of " + std::to_string(plane.bytes) + " bytes";
  return text;
}

void print_formats() {
  Text rows;
  for (const pivra::FormatInfo &info : pivra::formats()) {
    Text planes = info.linear() ? "" : "in tiles";
    for (const pivra::PlaneShape &plane : info.planes) {
      planes += (planes.empty() ? "" : "<br>") + plane_text(plane);
    }
    rows += "<tr>" + cell(std::to_string(info.code)) + cell("<b>" + Text(info.name) + "</b>") +
            cell(planes) + cell(info.ffmpeg) + cell(info.gstreamer) +
            named("V4L2_PIX_FMT_", info.v4l2) + named("DRM_FORMAT_", info.drm) + "</tr>\n";
  }
  print_table("<th>code<th>name<th>planes, in elements<th>FFmpeg<th>GStreamer<th>V4L2<th>DRM",
              rows);
}

// Whether a format comes of another one.
bool reached(const pivra::FormatInfo &to) {
  return std::ranges::any_of(pivra::formats(),
                             [&](auto &from) { return pivra::converts(from.code, to.code); });
}

// A row for each format that converts to another, a column for each that comes of one.
void print_pairs() {
  Text head = "<th>from \\ to", rows;
  for (const pivra::FormatInfo &from : pivra::formats()) {
    if (reached(from)) head += "<th>" + Text(from.name);
    Text dots;
    bool any = false;
    for (const pivra::FormatInfo &to : pivra::formats()) {
      const bool dot = pivra::converts(from.code, to.code);
      if (reached(to)) dots += cell(dot ? "&bull;" : "");
      any = any || dot;
    }
    if (any) rows += "<tr><th>" + Text(from.name) + "</th>" + dots + "</tr>\n";
  }
  print_table(head, rows);
}

}  // namespace

int main(int argc, char **argv) {
  const std::string_view table = argc == 2 ? argv[1] : "";
  if (table == "formats") {
    print_formats();
  } else if (table == "pairs") {
    print_pairs();
  } else {
    std::cerr << "usage: pivra_tables formats|pairs\n";
    return 2;
  }
  return 0;
}

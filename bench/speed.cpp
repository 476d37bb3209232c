// Every operation beside its peer and beside memcpy of as many bytes.
//
// That memcpy reads and writes, taken together, as many bytes as the operation
// does: it copies half the sum of what is read and written. Pictures are the
// same ones again and again, so they stay in the cache as far as they fit.
#include <cstring>

#include "operations.h"
#include "peers.h"
#include "race.h"

namespace {

const std::vector<Group> kGroups = {
    {"headline conversions",
     "yuv420_to_(rgba8888|bgra8888|argb8888|abgr8888|rgb888|bgr888|rgb565)"
     "|yuv422n_to_(rgb565|rgba8888)|yuv444_to_(rgb888|rgba8888)"
     "|nv12_to_(rgb565|rgb888|rgba8888|bgra8888)|nv21_to_(rgb888|rgba8888|bgra8888)"
     "|(yuyv|uyvy)_to_bgra8888"},
    {"conversions for encoders",
     "(rgb565|rgb888|bgr888|rgba8888|bgra8888|argb8888|nv12|yuv422n)_to_yuv420"
     "|(bgra8888|yuv420|nv21)_to_nv12|rgba8888_to_nv21|yuv420_to_yuv422n"},
    {"conversions of tiles", "t64x32_to_(yuv420|nv12|rgb565|rgba8888)|yuv420_to_t64x32"},
    {"all conversions", "[^_]+_to_[^_]+", false},
    {"copies", "cpy_.*"},
    {"turns", "rot_(yuv420_.*|rgb565_(90l|90r|180)|rgb888_hori)"},
    {"quarter turns", "rot_.*_(90l|90r)"},
    {"half turns and mirrors", "rot_.*_(180|hori|vert)"},
    {"conversions with a turn", "csc_rot_.*"},
    {"filters", "detail_enh|dbf_yuv420|fpa|color_sat|dit_8b"},
    {"fixed ratios", "txc_.*"},
    {"resizes of yuv420, nv12, rgba8888",
     "rsz_(yuv420_.*|nv12_(640x360|720x404|960x540|1920x1080|2560x1440).*"
     "|rgba8888_(640x360|960x540|1920x1080).*)"},
    {"resizes of these, rgb565, rgb888",
     "rsz_(yuv420_.*|nv12_(640x360|720x404|960x540|1920x1080|2560x1440).*"
     "|(rgba8888|rgb565|rgb888)_(640x360|960x540|1920x1080).*)"},
    {"resizes with a turn", "rsz_rot_yuv420_.*"},
    {"transcoding", "transcode_.*"},
    {"resizes with conversion, fixed ratios",
     "rsz_csc_yuv420_to_(rgb565_(640x360|800x450|1920x1080)|rgb888_960x540)|txc_.*"},
    {"resizes of tiles with conversion", "rsz_csc_t64x32_to_rgb565_(640x360|1920x1080)"},
};

// Bytes of a picture itself, without padding and what only fills the last tiles.
double samples(const Frame &frame) {
  const auto format = pivra::find_format(frame.format)->linear() ? frame.format : PIVRA_FORMAT_NV12;
  return double(pivra::size_in_bytes(format, frame.size.width, frame.size.height));
}

void race_operation(benchmark::State &state, const Operation &operation) {
  Pictures pictures(operation);
  const ImageDesc &src = pictures.src, &dst = pictures.dst;
  const auto bytes = (samples(operation.from) * operation.read + samples(operation.to)) / 2;
  const Frame row = {PIVRA_FORMAT_YUV400, {std::int32_t(bytes), 1}};
  pivra::Picture from = noise(row), to = noise(row);

  std::vector<Contender> contenders = {{"pivra", [&] { operation.run(src, dst); }}};
  const Peer &peer = find_peer(operation.kind);
  if (peer.run) contenders.push_back({peer.name, [&] { peer.run(src, dst); }});
  if (peer.name != "memcpy") {
    contenders.push_back({"memcpy", [&] {
                            std::memcpy(to.bytes().data(), from.bytes().data(), to.bytes().size());
                          }});
  }
  race(state, operation.pixels(), contenders);
}

}  // namespace

int main(int argc, char **argv) {
  return run_races(argc, argv, {"libyuv", "memcpy", "scalar", "yuv420"}, kGroups, race_operation);
}

#include "operations.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <random>
#include <span>

namespace {

using List = std::vector<Operation>;

std::string name_of(std::int32_t format) { return std::string(pivra::find_format(format)->name); }

// The parts of a name, with underscores between them.
std::string join(std::initializer_list<std::string> parts) {
  std::string joined;
  for (const std::string &part : parts) joined += (joined.empty() ? "" : "_") + part;
  return joined;
}

void add(List &list, const std::string &name, Frame from, Frame to, Call run) {
  list.push_back({name, name, from, to, std::move(run)});
}

void add_conversions(List &list, Size size) {
  const struct {
    const char *name;
    pivra_csc_kernel *kernel;
    std::int32_t from, to;
  } kConversions[] = {
#define PIVRA_CONVERSION(SOURCE, source, DESTINATION, destination)                          \
  {#source "_to_" #destination, PIVRA_CSC_NAME(source, destination), PIVRA_FORMAT_##SOURCE, \
   PIVRA_FORMAT_##DESTINATION},
      PIVRA_CSC_PAIRS(PIVRA_CONVERSION)
#undef PIVRA_CONVERSION
  };
  for (const auto &[name, kernel, from, to] : kConversions) {
    add(list, name, {from, size}, {to, size}, [kernel = kernel](ImageDesc src, ImageDesc dst) {
      kernel(src.plane, src.width, src.height, src.stride, dst.stride, dst.plane);
    });
  }
}

void add_copies(List &list, Size size) {
  constexpr struct {
    const char *name;
    pivra_cpy_kernel *kernel;
    std::int32_t format;
  } kCopies[] = {{"cpy_8b", pivra_cpy_8b, PIVRA_FORMAT_YUV400},
                 {"cpy_16b", pivra_cpy_16b, PIVRA_FORMAT_RGB565},
                 {"cpy_24b", pivra_cpy_24b, PIVRA_FORMAT_RGB888},
                 {"cpy_32b", pivra_cpy_32b, PIVRA_FORMAT_RGBA8888}};
  for (const auto &[name, kernel, format] : kCopies) {
    const auto run = [kernel = kernel](ImageDesc src, ImageDesc dst) {
      kernel(src.plane[0], src.width[0], src.height[0], src.stride[0], dst.stride[0], dst.plane[0]);
    };
    const auto row = pivra::describe(format, size.width, size.height, nullptr).stride[0];
    const Frame packed = {format, size}, padded = {format, size, row + 64};
    list.push_back({name + std::string("_packed"), "cpy_packed", packed, packed, run});
    if (kernel != pivra_cpy_16b)  // which is exact without padding only
      list.push_back({name + std::string("_padded"), "cpy_padded", padded, padded, run});
  }
}

constexpr struct Turn {
  const char *name;
  std::int32_t code;

  Size of(Size size) const {
    return code == PIVRA_ROT_90L || code == PIVRA_ROT_90R ? size.turned() : size;
  }
} kTurns[] = {{"90l", PIVRA_ROT_90L},
              {"90r", PIVRA_ROT_90R},
              {"180", PIVRA_ROT_180},
              {"hori", PIVRA_ROT_HORI},
              {"vert", PIVRA_ROT_VERT}};
constexpr Turn kNoTurn = {"", PIVRA_ROT_COPY};

void add_turns(List &list, Size size) {
  for (const std::int32_t format : {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV420, PIVRA_FORMAT_NV12,
                                    PIVRA_FORMAT_RGB565, PIVRA_FORMAT_RGB888}) {
    for (const Turn &turn : kTurns) {
      add(list, join({"rot", name_of(format), turn.name}), {format, size}, {format, turn.of(size)},
          [turn](ImageDesc src, ImageDesc dst) { pivra_rot(&src, turn.code, &dst); });
    }
  }
  // Conversions that turn as well, up to a last code.
  constexpr struct {
    std::int32_t from, to, last;
  } kPairs[] = {{PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_YUV420, PIVRA_ROT_90R},
                {PIVRA_FORMAT_YUYV, PIVRA_FORMAT_BGRA8888, PIVRA_ROT_180}};
  for (const auto &[from, to, last] : kPairs) {
    for (const Turn &turn : kTurns) {
      if (turn.code > last) continue;
      add(list, join({"csc_rot", name_of(from), "to", name_of(to), turn.name}), {from, size},
          {to, turn.of(size)},
          [turn](ImageDesc src, ImageDesc dst) { pivra_csc_rot(&src, turn.code, &dst); });
    }
  }
}

void add_filters(List &list, Size size) {
  const Frame grey = {PIVRA_FORMAT_YUV400, size};
  add(list, "detail_enh", grey, grey, [](ImageDesc src, ImageDesc dst) {
    detail_enh(src.plane[0], src.width[0], src.height[0], dst.plane[0]);
  });

  // The chroma planes of a yuv420 picture, one behind the other.
  const Frame chroma = {PIVRA_FORMAT_YUV400, {size.width, size.height / 2}};
  std::array<std::uint8_t, 256> gain;
  color_sat_lut(gain.data(), 1180);
  add(list, "color_sat", chroma, chroma, [gain](ImageDesc src, ImageDesc dst) {
    const int count = src.width[0] * src.height[0] / 2;
    color_sat(gain.data(), count, src.plane[0], src.plane[0] + count, dst.plane[0],
              dst.plane[0] + count);
  });

  add(list, "fpa", {PIVRA_FORMAT_RGB888, size},
      {PIVRA_FORMAT_RGB888, {size.width / 2, size.height}},
      [](ImageDesc src, ImageDesc dst) { pivra_fpa(&src, &dst, 1); });
}

void add_fixed_ratios(List &list) {
  // They keep so many rows of the source and do not touch the others.
  constexpr Size k1080p = {1920, 1080}, k720p = {1280, 720}, kQhd = {960, 540};
  constexpr struct {
    const char *name;
    pivra_txc_resizer *resize;
    Size from, to;
    double rows;
  } kFixed[] = {{"txc_1080p_720p", pivra_txc_rsz_1080p_720p, k1080p, k720p, 2 / 3.},
                {"txc_1080p_qhd", pivra_txc_rsz_1080p_qhd, k1080p, kQhd, 1 / 2.},
                {"txc_720p_qhd", pivra_txc_rsz_720p_qhd, k720p, kQhd, 3 / 4.}};
  for (const auto &[name, resize, from, to, rows] : kFixed) {
    list.push_back({name,
                    "txc",
                    {PIVRA_FORMAT_NV12, from},
                    {PIVRA_FORMAT_NV12, to},
                    [resize = resize](ImageDesc src, ImageDesc dst) { resize(&src, &dst); },
                    rows});
  }
}

void add_dithering_and_deblocking(List &list, Size size) {
  const Frame grey = {PIVRA_FORMAT_YUV400, size};
  const Frame planar = {PIVRA_FORMAT_YUV420, size};
  add(list, "dbf_yuv420", planar, planar,
      [](ImageDesc, ImageDesc dst) { pivra_dbf8x8_yuv(&dst, 12); });
  add(list, "dit_8b", grey, grey, [](ImageDesc src, ImageDesc dst) {
    pivra_dit_8b(src.plane[0], src.width[0], src.height[0], src.stride[0], dst.stride[0],
                 dst.plane[0]);
  });
  for (const std::int32_t format :
       {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_YUV444}) {
    add(list, join({"dit", name_of(format), "to_rgb565"}), {format, size},
        {PIVRA_FORMAT_RGB565, size},
        [](ImageDesc src, ImageDesc dst) { pivra_csc_dither(&src, &dst); });
  }
}

struct Scale {
  struct {
    int times, by;
  } width, height;

  Size of(Size size) const {
    return {size.width * width.times / width.by & ~1, size.height * height.times / height.by & ~1};
  }
  bool grows() const { return width.times > width.by || height.times > height.by; }
};

constexpr Scale kScales[] = {{{1, 2}, {1, 2}}, {{1, 4}, {1, 4}}, {{9, 16}, {101, 180}},
                             {{3, 4}, {3, 4}}, {{1, 1}, {3, 4}}, {{3, 2}, {3, 2}},
                             {{2, 1}, {2, 1}}};
constexpr Scale kScalesOfCells[] = {{{2, 5}, {2, 5}}, {{1, 5}, {1, 5}}};

// The operation at each scale, growing ones in both modes if it has them. Two
// samples meet at most, so of a picture that shrinks to less than half of its rows
// not all are read.
void add_scaled(List &list, const std::string &kind, Frame from, std::int32_t to,
                std::span<const Scale> scales, const Turn &turn, const Call &run,
                bool modes = true) {
  for (const Scale &scale : scales) {
    const Size scaled = scale.of(from.size), size = turn.of(scaled);
    const std::string name =
        kind + "_" + std::to_string(size.width) + "x" + std::to_string(size.height);
    const double read = std::min(1.0, 2.0 * scaled.height / from.size.height);
    list.push_back({name, kind, from, {to, size}, run, read});
    if (modes && scale.grows())
      list.push_back({name + "_mode1", kind, from, {to, size}, run, read, PIVRA_RSZ_MODE1});
  }
}

void add_resizes(List &list, Size size) {
  for (const std::int32_t format :
       {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV420, PIVRA_FORMAT_NV12, PIVRA_FORMAT_RGB565,
        PIVRA_FORMAT_RGB888, PIVRA_FORMAT_RGBA8888}) {
    add_scaled(list, join({"rsz", name_of(format)}), {format, size}, format, kScales, kNoTurn,
               [](ImageDesc src, ImageDesc dst) { pivra_rsz(&src, &dst); });
  }
  for (const std::int32_t format : {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV420, PIVRA_FORMAT_NV12}) {
    for (const Turn &turn : std::span(kTurns).first(3)) {
      add_scaled(list, join({"rsz_rot", name_of(format), turn.name}), {format, size}, format,
                 kScales, turn,
                 [turn](ImageDesc src, ImageDesc dst) { pivra_rsz_rot(&src, turn.code, &dst); });
    }
  }
  add_scaled(list, "rsz_special_nv12", {PIVRA_FORMAT_NV12, size}, PIVRA_FORMAT_NV12, kScalesOfCells,
             kNoTurn, [](ImageDesc src, ImageDesc dst) { pivra_rsz_8b_down_special(&src, &dst); });
}

// The context of a stream, made with its first frame.
struct Transcoder {
  std::uint32_t turn;
  ImageDesc converted = {}, resized = {};

  Transcoder(const ImageDesc &src, const ImageDesc &dst, std::uint32_t code) : turn(code) {
    pivra_txc_csc_rsz_rot_init(&src, &dst, turn, &converted, &resized);
  }
  Transcoder(const Transcoder &) = delete;
  ~Transcoder() { pivra_txc_csc_rsz_rot_deinit(turn, &converted, &resized); }
};

void add_transcoding(List &list, Size size) {
  constexpr Scale kScale[] = {{{3, 4}, {3, 4}}};
  for (const std::int32_t format : {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_NV12, PIVRA_FORMAT_T64X32}) {
    const Turn &turn = kTurns[0];
    const auto context = std::make_shared<std::optional<Transcoder>>();
    add_scaled(list, join({"transcode", name_of(format), turn.name}), {format, size},
               PIVRA_FORMAT_NV12, kScale, turn, [=](ImageDesc src, ImageDesc dst) {
                 if (!*context) context->emplace(src, dst, turn.code);
                 Transcoder &made = **context;
                 pivra_txc_csc_rsz_rot(&src, &dst, made.turn, &made.converted, &made.resized);
               });
  }
}

constexpr Scale kScalesOfScreens[] = {
    {{1, 2}, {1, 2}}, {{5, 8}, {5, 8}}, {{3, 4}, {3, 4}}, {{3, 2}, {3, 2}}};

void add_combined(List &list, Size size) {
  constexpr struct {
    std::int32_t from, to;
  } kPairs[] = {{PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB565},
                {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB888},
                {PIVRA_FORMAT_T64X32, PIVRA_FORMAT_RGB565},
                {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV420}};
  for (const auto &[from, to] : kPairs) {
    add_scaled(
        list, join({"rsz_csc", name_of(from), "to", name_of(to)}), {from, size}, to,
        kScalesOfScreens, kNoTurn, [](ImageDesc src, ImageDesc dst) { pivra_rsz_csc(&src, &dst); },
        to == PIVRA_FORMAT_RGB565);
  }
}

}  // namespace

Pictures::Pictures(const Operation &operation)
    : source(noise(operation.from)),
      result(noise(operation.to)),
      src(source.desc()),
      dst(result.desc()) {
  dst.resize_mode = operation.resize_mode;
}

pivra::Picture noise(const Frame &frame) {
  pivra::Picture made(frame.format, frame.size.width, frame.size.height, frame.alignment);
  std::ranges::generate(made.bytes(),
                        std::independent_bits_engine<std::minstd_rand, 8, unsigned>());
  return made;
}

std::vector<Operation> operations(Size size) {
  List list;
  add_conversions(list, size);
  add_copies(list, size);
  add_turns(list, size);
  add_filters(list, size);
  add_fixed_ratios(list);
  add_dithering_and_deblocking(list, size);
  add_resizes(list, size);
  add_transcoding(list, size);
  add_combined(list, size);
  return list;
}

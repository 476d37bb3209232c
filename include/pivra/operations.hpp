/**
 * @file pivra/operations.hpp
 * @brief Checked turning, resizing, dithering and filtering of pictures.
 *
 * A chapter of pivra.hpp, which includes it. Every function checks its pictures
 * first and throws std::invalid_argument with one sentence that says what is
 * wrong; nothing has been written then.
 */
#ifndef PIVRA_OPERATIONS_HPP
#define PIVRA_OPERATIONS_HPP

#ifndef PIVRA_HPP
#error "include <pivra.hpp>"
#endif

namespace pivra {

/* ------------------------------------------------------------------------ */
/* Turns                                                                    */
/* ------------------------------------------------------------------------ */

/** How a picture is turned or mirrored: the rotation codes of pivra_rot(). */
enum class Turn : std::int32_t {
  kNone = 0,             /**< Not at all. */
  kLeft90 = 1,           /**< A quarter turn counter-clockwise. */
  kRight90 = 2,          /**< A quarter turn clockwise. */
  k180 = 3,              /**< A half turn. */
  kHorizontalMirror = 4, /**< Left and right exchanged. */
  kVerticalMirror = 5,   /**< Top and bottom exchanged. */
};

/** Whether width and height change places. */
constexpr bool is_quarter(Turn turn) { return turn == Turn::kLeft90 || turn == Turn::kRight90; }

namespace detail {

// Format of a picture, and of the same after a quarter turn: 4:2:2 lies down as 4:4:0.
inline constexpr std::int32_t kNoFormat = -1;
inline constexpr struct {
  std::int32_t format, after_quarter;
} kTurning[] = {
    {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV400},   {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV420},
    {PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_YUV422W}, {PIVRA_FORMAT_YUV444, PIVRA_FORMAT_YUV444},
    {PIVRA_FORMAT_YV12, PIVRA_FORMAT_YV12},       {PIVRA_FORMAT_YV16, kNoFormat},
    {PIVRA_FORMAT_NV12, PIVRA_FORMAT_NV12},       {PIVRA_FORMAT_NV21, PIVRA_FORMAT_NV21},
    {PIVRA_FORMAT_YUV422W, PIVRA_FORMAT_YUV422N}, {PIVRA_FORMAT_RGB565, PIVRA_FORMAT_RGB565},
    {PIVRA_FORMAT_BGR565, PIVRA_FORMAT_BGR565},   {PIVRA_FORMAT_RGB888, PIVRA_FORMAT_RGB888},
    {PIVRA_FORMAT_BGR888, PIVRA_FORMAT_BGR888},
};

// The descriptor as the kernels of byte pairs take it: the order within a pair is nothing
// to them, but nv21 would be moved byte by byte.
inline ImageDesc pairs_as_units(ImageDesc desc) {
  if (desc.format == PIVRA_FORMAT_NV21) desc.format = PIVRA_FORMAT_NV12;
  return desc;
}

inline std::string name_of(const ImageDesc &desc) {
  return std::string(find_format(desc.format)->name);
}

inline void require_format(const ImageDesc &desc, std::int32_t format) {
  if (desc.format != format) {
    refuse("the destination is " + name_of(desc) + ", not " +
           std::string(find_format(format)->name));
  }
}

inline void require_size_of(const ImageDesc &desc, std::int32_t width, std::int32_t height) {
  if (desc.width[0] != width || desc.height[0] != height) {
    refuse("the destination is " + size_text(desc.width[0], desc.height[0]) + ", not " +
           size_text(width, height));
  }
}

// What the kernels of 16-bit samples ask of the strides, and nothing else.
inline constexpr Rule kWholeWords = {kYuv, kRgb, 1, 1, kWords, kWords};

// Runs `operation` from one picture to the other, or to and from copies with strides that suit.
template <class Operation>
void on_whole_words(const ImageDesc &src, const ImageDesc &dst, Operation operation) {
  const Suited source(src, kWholeWords, kWords), result(dst, kWholeWords, kWords);
  if (source.copied()) copy_rows(src, source.desc(), src.width[0], src.height[0]);
  const ImageDesc from = pairs_as_units(source.desc());
  ImageDesc to = pairs_as_units(result.desc());
  if (operation(from, to) != PIVRA_OK)
    throw std::runtime_error("libpivra refused the pictures, or had no memory");
  if (result.copied()) copy_rows(result.desc(), dst, dst.width[0], dst.height[0]);
}

}  // namespace detail

/**
 * The format that a picture has after a turn, or null if it cannot be turned so:
 * a quarter turn makes yuv422w of yuv422n and the other way round.
 */
constexpr const FormatInfo *turned_format(std::int32_t format, Turn turn) {
  for (const auto &row : detail::kTurning)
    if (row.format == format) return find_format(is_quarter(turn) ? row.after_quarter : format);
  return nullptr;
}

/* ------------------------------------------------------------------------ */
/* Sizes                                                                    */
/* ------------------------------------------------------------------------ */

/** What fills the gaps between samples that grow apart. */
enum class Growth : std::int32_t {
  kRepeat = 0,             /**< One value between two neighbours, repeated. */
  kRamp = PIVRA_RSZ_MODE1, /**< A ramp from one neighbour to the other. */
};

/** Whether resize() takes pictures of a format: linear ones, but no packed YUV. */
constexpr bool resizes(std::int32_t format) {
  const FormatInfo *info = find_format(format);
  return info && info->linear() &&
         (info->planes.size() > 1 || info->planes[0].bytes < 4 || info->rgb());
}

namespace detail {

inline void check_both(const ImageDesc &src, const ImageDesc &dst) {
  check(src);
  check(dst);
}

// The destination of a turn: its format, and with equal sizes its size.
inline void require_turned(const ImageDesc &src, Turn turn, const ImageDesc &dst) {
  const FormatInfo *turned = turned_format(src.format, turn);
  if (!turned) refuse(name_of(src) + " cannot be turned so");
  require_format(dst, turned->code);
}

}  // namespace detail

/**
 * Turns or mirrors a picture, at every size and with any strides.
 *
 * @param src, dst  pictures that do not overlap; dst has the format turned_format() and the
 *                  size of src, with width and height exchanged in quarter turns.
 * @param turn      which way.
 * @throws std::invalid_argument  if check() refuses a picture, or they do not match.
 */
inline void rotate(const ImageDesc &src, Turn turn, const ImageDesc &dst) {
  detail::check_both(src, dst);
  detail::require_turned(src, turn, dst);
  const bool quarter = is_quarter(turn);
  detail::require_size_of(dst, quarter ? src.height[0] : src.width[0],
                          quarter ? src.width[0] : src.height[0]);
  if (turn == Turn::kNone)  // the kernels that copy are not exact for every stride
    return detail::copy_rows(src, dst, src.width[0], src.height[0]);
  detail::on_whole_words(src, dst, [turn](const ImageDesc &from, ImageDesc &to) {
    return pivra_rot(&from, static_cast<std::int32_t>(turn), &to);
  });
}

/**
 * Resizes a picture with two-tap filters, from and to every size.
 *
 * @param src, dst  pictures of one format that resizes(), which do not overlap.
 * @param growth    what fills the gaps where the picture grows.
 * @throws std::invalid_argument  if check() refuses a picture, or the formats do not match.
 * @throws std::runtime_error     if memory for the intermediate rows is lacking.
 */
inline void resize(const ImageDesc &src, const ImageDesc &dst, Growth growth = Growth::kRepeat) {
  detail::check_both(src, dst);
  if (!resizes(src.format)) detail::refuse(detail::name_of(src) + " cannot be resized");
  detail::require_format(dst, src.format);
  // The kernels that copy are not exact for every stride.
  if (src.width[0] == dst.width[0] && src.height[0] == dst.height[0])
    return detail::copy_rows(src, dst, src.width[0], src.height[0]);
  detail::on_whole_words(src, dst, [growth](const ImageDesc &from, ImageDesc &to) {
    to.resize_mode = static_cast<std::uint32_t>(growth);
    return pivra_rsz(&from, &to);
  });
}

/** Whether resize() takes pictures of a format and turns them so: YUV planes, not mirrored. */
constexpr bool resizes_turned(std::int32_t format, Turn turn) {
  return turn <= Turn::k180 && turned_format(format, turn) && !find_format(format)->rgb();
}

/**
 * Resizes a picture of YUV planes and turns it in the same pass.
 *
 * @param src, dst  pictures that do not overlap; dst has the format turned_format().
 * @param turn      which way; mirrors do not go together with a change of the size.
 * @param growth    what fills the gaps where the picture grows.
 * @throws std::invalid_argument  if check() refuses a picture, or they do not match.
 * @throws std::runtime_error     if memory for the intermediate rows is lacking.
 */
inline void resize(const ImageDesc &src, Turn turn, const ImageDesc &dst,
                   Growth growth = Growth::kRepeat) {
  detail::check_both(src, dst);
  detail::require_turned(src, turn, dst);
  if (!resizes_turned(src.format, turn))
    detail::refuse("RGB and mirrored pictures are resized or turned, but not both");
  if (turn == Turn::kNone) return resize(src, dst, growth);
  detail::on_whole_words(src, dst, [=](const ImageDesc &from, ImageDesc &to) {
    to.format = from.format;  // 4:2:2 that lies down is still resized plane by plane
    to.resize_mode = static_cast<std::uint32_t>(growth);
    return pivra_rsz_rot(&from, static_cast<std::int32_t>(turn), &to);
  });
}

namespace detail {

inline constexpr FormatPair kResizedAndConverted[] = {
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB565},
    {PIVRA_FORMAT_T64X32, PIVRA_FORMAT_RGB565},
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB888},
};

}  // namespace detail

/** Whether resize_and_convert() takes pictures of the one format to the other. */
constexpr bool resizes_and_converts(std::int32_t from, std::int32_t to) {
  return std::ranges::count(detail::kResizedAndConverted, detail::FormatPair{from, to}) != 0;
}

/**
 * Resizes a picture and converts it in one call: averaged while it is converted if both axes
 * shrink to rgb565, bilinear to rgb888.
 *
 * @param src, dst  pictures of even sizes whose formats resizes_and_converts(), which do not
 *                  overlap.
 * @param growth    what fills the gaps where a picture grows to rgb565.
 * @throws std::invalid_argument  if check() refuses a picture, or they do not match.
 * @throws std::runtime_error     if memory for what lies between is lacking.
 */
inline void resize_and_convert(const ImageDesc &src, const ImageDesc &dst,
                               Growth growth = Growth::kRepeat) {
  detail::check_both(src, dst);
  if (!resizes_and_converts(src.format, dst.format))
    detail::refuse(detail::name_of(src) + " is not resized to " + detail::name_of(dst));
  for (const ImageDesc *desc : {&src, &dst})
    if (desc->width[0] % 2 != 0 || desc->height[0] % 2 != 0)
      detail::refuse("the size " + detail::size_text(desc->width[0], desc->height[0]) + " is odd");
  // Rows of chroma lie half the luma's stride apart.
  constexpr detail::Rule kEven = {detail::kYuv, detail::kRgb, 2, 2};
  const detail::Suited source(src, kEven, detail::kTight), result(dst, kEven, detail::kTight);
  if (source.copied()) detail::copy_rows(src, source.desc(), src.width[0], src.height[0]);
  const ImageDesc from = source.desc();
  ImageDesc to = result.desc();
  to.resize_mode = static_cast<std::uint32_t>(growth);
  if (pivra_rsz_csc(&from, &to) != PIVRA_OK)
    throw std::runtime_error("libpivra refused the pictures, or had no memory");
  if (result.copied()) detail::copy_rows(result.desc(), dst, dst.width[0], dst.height[0]);
}

/* ------------------------------------------------------------------------ */
/* Dithering                                                                */
/* ------------------------------------------------------------------------ */

namespace detail {

// Where the whole picture comes out as it should; pivra_csc_dither() takes some pairs more.
inline constexpr FormatPair kDithered[] = {
    {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_RGB565}, {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB565},
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_BGR565}, {PIVRA_FORMAT_YV12, PIVRA_FORMAT_RGB565},
    {PIVRA_FORMAT_YV12, PIVRA_FORMAT_BGR565},   {PIVRA_FORMAT_YUV444, PIVRA_FORMAT_BGR565},
    {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV420},
};

}  // namespace detail

/** Whether dither() takes pictures of the one format to the other. */
constexpr bool dithers(std::int32_t from, std::int32_t to) {
  return std::ranges::count(detail::kDithered, detail::FormatPair{from, to}) != 0;
}

/**
 * Converts a picture as convert() does, with its luma perturbed so that areas
 * of slowly changing brightness show less banding. The last four rows of colour
 * pictures are as convert() makes them.
 *
 * @param src, dst  pictures of one even size from 8 x 8 up, which do not overlap.
 * @throws std::invalid_argument  if check() refuses a picture, they do not match, or
 *                  dithers() is false.
 */
inline void dither(const ImageDesc &src, const ImageDesc &dst) {
  detail::check_both(src, dst);
  const std::int32_t width = src.width[0], height = src.height[0];
  detail::require_size_of(dst, width, height);
  detail::require_size(width, height, kMinimumSize);
  if (width % 2 != 0 || height % 2 != 0)
    detail::refuse("the size " + detail::size_text(width, height) + " is odd");
  if (!dithers(src.format, dst.format))
    detail::refuse(detail::name_of(src) + " is not dithered to " + detail::name_of(dst));
  if (dst.format == PIVRA_FORMAT_YUV420) {
    detail::copy_rows(src, dst, width, height);
    return pivra_dit_8b(src.plane[0], width, height, src.stride[0], dst.stride[0], dst.plane[0]);
  }
  // Chroma strides alike; in the destination tight rows, whose lower half holds the luma.
  constexpr detail::Rule kEven = {detail::kYuv, detail::kRgb, 2, 2};
  const detail::Suited source(src, kEven, detail::kAlike), result(dst, kEven, detail::kTight);
  if (source.copied()) detail::copy_rows(src, source.desc(), width, height);
  ImageDesc from = source.desc(), to = result.desc();
  if (pivra_csc_dither(&from, &to) != PIVRA_OK)
    throw std::runtime_error("libpivra refused the pictures");
  if (result.copied()) detail::copy_rows(result.desc(), dst, width, height);
}

/* ------------------------------------------------------------------------ */
/* Filters                                                                  */
/* ------------------------------------------------------------------------ */

/** Whether every plane of a format holds rows of single 8-bit samples. */
constexpr bool planar(std::int32_t format) {
  const FormatInfo *info = find_format(format);
  return info && info->linear() && std::ranges::all_of(info->planes, [](const PlaneShape &shape) {
           return shape.bytes == 1;
         });
}

namespace detail {

inline void require_planar(const ImageDesc &desc) {
  check(desc);
  if (!planar(desc.format)) refuse(name_of(desc) + " is not planar YUV");
}

}  // namespace detail

/**
 * Smooths the edges of 8 x 8 blocks in a decoded picture, in place.
 *
 * @param picture  planar().
 * @param qp       strength, like a quantiser's: 0 (none) to 15.
 * @throws std::invalid_argument  if check() refuses the picture, it is not planar, or
 *                 the strength is out of range.
 */
inline void deblock(const ImageDesc &picture, std::int32_t qp) {
  detail::require_planar(picture);
  ImageDesc planes = detail::resized(picture, picture.width[0], picture.height[0]);
  for (std::size_t p = find_format(picture.format)->planes.size(); p < 3; ++p)
    planes.plane[p] = nullptr;
  if (pivra_dbf8x8_yuv(&planes, static_cast<std::uint32_t>(qp)) != PIVRA_OK)
    detail::refuse("the strength " + std::to_string(qp) + " is not within 0 to 15");
}

/**
 * Multiplies the colour of a picture, in place.
 *
 * @param picture  planar(), with chroma.
 * @param gain     1 leaves the colour as it is, 0 takes it away; below 32.
 * @throws std::invalid_argument  if check() refuses the picture, it has no chroma planes,
 *                 or the gain is out of range.
 */
inline void saturate(const ImageDesc &picture, double gain) {
  detail::require_planar(picture);
  const FormatInfo &info = *find_format(picture.format);
  if (info.planes.size() < 3) detail::refuse(detail::name_of(picture) + " has no colour");
  if (!(gain >= 0 && gain < 32))
    detail::refuse("the gain " + std::to_string(gain) + " is not within 0 to 32");

  // For every value, which color_sat_lut() does not do.
  std::uint8_t table[256];
  const int factor = static_cast<int>(std::lround(gain * 1024));
  for (int x = 0; x < 256; ++x)
    table[x] = static_cast<std::uint8_t>(std::clamp((((x - 128) * factor) >> 10) + 128, 0, 255));

  const PlaneShape &shape = info.planes[1];
  std::uint8_t *u = picture.plane[1], *v = picture.plane[2];
  for (std::int32_t y = shape.rows(picture.height[0]); y > 0; --y) {
    color_sat(table, shape.columns(picture.width[0]), u, v, u, v);
    u += picture.stride[1];
    v += picture.stride[2];
  }
}

/**
 * Brings out the detail of the luma; chroma is copied.
 *
 * @param src, dst  pictures of one planar() or semi-planar YUV format and size, at least 8
 *                  pixels wide, which do not overlap.
 * @throws std::invalid_argument  if check() refuses a picture, or they do not match.
 */
inline void enhance_detail(const ImageDesc &src, const ImageDesc &dst) {
  detail::check_both(src, dst);
  const FormatInfo &info = *find_format(src.format);
  if (!info.linear() || info.planes[0].bytes != 1)
    detail::refuse(detail::name_of(src) + " has no plane of luma");
  detail::require_format(dst, src.format);
  const std::int32_t width = src.width[0], height = src.height[0];
  detail::require_size_of(dst, width, height);
  if (width < kMinimumSize) detail::refuse("the width " + std::to_string(width) + " is below 8");

  constexpr detail::Rule kAnySize = {detail::kYuv, detail::kYuv, 1, 1};
  const detail::Suited source(src, kAnySize, detail::kTight);
  Picture result(PIVRA_FORMAT_YUV400, width, height);
  if (source.copied()) detail::copy_rows(src, source.desc(), width, height);
  detail::copy_rows(source.desc(), dst, width, height);
  detail_enh(source.desc().plane[0], width, height, result.bytes().data());
  ImageDesc luma = dst;
  luma.format = PIVRA_FORMAT_YUV400;
  detail::copy_rows(result.desc(), luma, width, height);
}

/** Which half of a side-by-side frame gives the red of an anaglyph; the other gives the rest. */
enum class Red : std::int32_t { kLeft = 1, kRight = 2 };

/**
 * Packs the two views of a side-by-side frame into one picture for red and cyan glasses.
 *
 * @param src  rgb888, the left view beside the right one: of an even width.
 * @param dst  rgb888, half as wide and as high. It does not overlap src.
 * @param red  the view that red is taken from.
 * @throws std::invalid_argument  if check() refuses a picture, or they do not match.
 */
inline void make_anaglyph(const ImageDesc &src, const ImageDesc &dst, Red red = Red::kLeft) {
  detail::check_both(src, dst);
  if (src.format != PIVRA_FORMAT_RGB888)
    detail::refuse("the source is " + detail::name_of(src) + ", not rgb888");
  detail::require_format(dst, PIVRA_FORMAT_RGB888);
  const std::int32_t width = src.width[0], height = src.height[0];
  if (width % 2 != 0) detail::refuse("the width " + std::to_string(width) + " is odd");
  detail::require_size_of(dst, width / 2, height);

  constexpr detail::Rule kAnySize = {detail::kRgb, detail::kRgb, 1, 1};
  const detail::Suited source(src, kAnySize, detail::kTight), result(dst, kAnySize, detail::kTight);
  if (source.copied()) detail::copy_rows(src, source.desc(), width, height);
  const ImageDesc from = source.desc();
  ImageDesc to = result.desc();
  if (pivra_fpa(&from, &to, static_cast<std::int32_t>(red)) != PIVRA_OK)
    throw std::runtime_error("libpivra refused the pictures");
  if (result.copied()) detail::copy_rows(result.desc(), dst, width / 2, height);
}

/* ------------------------------------------------------------------------ */
/* Transcoding                                                              */
/* ------------------------------------------------------------------------ */

/** Whether a Transcoder takes pictures of a format. */
constexpr bool transcodes(std::int32_t format) {
  return format == PIVRA_FORMAT_YUV420 || format == PIVRA_FORMAT_NV12 ||
         format == PIVRA_FORMAT_T64X32;
}

/**
 * Makes nv12 frames of another size and orientation of those of a decoder, one after the
 * other, through pictures that it allocates once.
 */
class Transcoder {
 public:
  /**
   * @param src, dst  shapes of the frames, whose planes are not looked at: src of a format that
   *                  transcodes(), dst nv12, both of even sizes from 8 x 8 up.
   * @param turn      no turn, a quarter turn or a half turn.
   * @throws std::invalid_argument  for anything else.
   */
  Transcoder(const ImageDesc &src, Turn turn, const ImageDesc &dst) : src_(src), dst_(dst) {
    if (!transcodes(src.format)) detail::refuse("only yuv420, nv12 and t64x32 are transcoded");
    detail::require_format(dst, PIVRA_FORMAT_NV12);
    if (turn > Turn::k180) detail::refuse("pictures are not mirrored by transcoding");
    for (const ImageDesc *desc : {&src_, &dst_}) {
      detail::require_size(desc->width[0], desc->height[0], kMinimumSize);
      if (desc->width[0] % 2 != 0 || desc->height[0] % 2 != 0)
        detail::refuse("the size " + detail::size_text(desc->width[0], desc->height[0]) +
                       " is odd");
    }
    turn_ = turn;
    if (in_one_call()) {
      pivra_txc_csc_rsz_rot_init(&src_, &dst_, code(), &between_[0], &between_[1]);
      if (!between_[0].plane[0] || (turn_ != Turn::kNone && !between_[1].plane[0])) {
        release();
        throw std::bad_alloc();
      }
    } else if (src.format != PIVRA_FORMAT_NV12) {
      converted_.emplace(PIVRA_FORMAT_NV12, src.width[0], src.height[0]);
    }
  }
  Transcoder(const Transcoder &) = delete;
  Transcoder &operator=(const Transcoder &) = delete;
  ~Transcoder() { release(); }

  /**
   * Transcodes a frame of the shapes given before.
   * @throws std::invalid_argument  if check() refuses one, or its shape is another.
   */
  void run(const ImageDesc &src, const ImageDesc &dst) {
    detail::check_both(src, dst);
    detail::require_format(dst, PIVRA_FORMAT_NV12);
    detail::require_size_of(dst, dst_.width[0], dst_.height[0]);
    if (src.format != src_.format || src.width[0] != src_.width[0] ||
        src.height[0] != src_.height[0])
      detail::refuse("the source has another shape than was agreed");
    // Of the padding of nv12 the fixed and the special kernels are told, but not all heed it.
    if (between_[0].plane[0] &&
        (src.format != PIVRA_FORMAT_NV12 || src.stride[0] == src.width[0])) {
      ImageDesc to = dst;
      pivra_txc_csc_rsz_rot(&src, &to, code(), &between_[0], &between_[1]);
      return;
    }
    if (!converted_) return resize(src, turn_, dst);
    convert(src, converted_->desc());
    resize(converted_->desc(), turn_, dst);
  }

  /** Whether frames are transcoded by pivra_txc_csc_rsz_rot(), not step by step. */
  bool in_one_call() const {
    const bool quarter = is_quarter(turn_);
    const std::int32_t w = src_.width[0], h = src_.height[0];
    const std::int32_t dw = quarter ? dst_.height[0] : dst_.width[0],
                       dh = quarter ? dst_.width[0] : dst_.height[0];
    // Contiguous planes are copied in steps of 16 bytes.
    if (w % 8 != 0 || h % 8 != 0) return false;
    // The kernels of fixed ratios give these sizes only, standing or not.
    const bool fixed =
        (one_of(dst_, 960, 540) && (one_of(src_, 1920, 1080) || one_of(src_, 1280, 720))) ||
        (one_of(dst_, 1280, 720) && one_of(src_, 1920, 1080));
    if (fixed) return w > h && dw > dh;
    // The special kernel is chosen by the turned size, but made for a factor of 2 to 4 or 4 to 8.
    const bool special =
        w / dst_.width[0] == h / dst_.height[0] && w > 2 * dst_.width[0] && w < 8 * dst_.width[0];
    const auto factor = [](std::int32_t from, std::int32_t to) {
      return from / to >= 8 ? 0 : from / to >= 4 ? 4 : from / to >= 2 ? 2 : 0;
    };
    return !special || (factor(w, dw) != 0 && factor(w, dw) == factor(h, dh));
  }

 private:
  static bool one_of(const ImageDesc &desc, std::int32_t width, std::int32_t height) {
    return (desc.width[0] == width && desc.height[0] == height) ||
           (desc.width[0] == height && desc.height[0] == width);
  }
  std::uint32_t code() const { return static_cast<std::uint32_t>(turn_); }
  void release() {
    if (between_[0].plane[0]) pivra_txc_csc_rsz_rot_deinit(code(), &between_[0], &between_[1]);
    between_[0].plane[0] = nullptr;
  }

  ImageDesc src_, dst_, between_[2] = {};
  Turn turn_ = Turn::kNone;
  std::optional<Picture> converted_;
};

}  // namespace pivra

#endif  // PIVRA_OPERATIONS_HPP

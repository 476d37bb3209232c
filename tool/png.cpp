#include "png.h"

#include <png.h>

#include <csetjmp>

#include "failure.h"

namespace pivra::tool {

namespace {

// How libpng is to read the bytes of a pixel.
struct Layout {
  bool words = false, alpha = false, blue_first = false, alpha_first = false;
};

Layout layout_of(std::int32_t format) {
  switch (format) {
    case PIVRA_FORMAT_RGB565:
      return {.words = true};
    case PIVRA_FORMAT_BGR565:
      return {.words = true, .blue_first = true};
    case PIVRA_FORMAT_RGB888:
      return {};
    case PIVRA_FORMAT_BGR888:
      return {.blue_first = true};
    case PIVRA_FORMAT_RGBA8888:
      return {.alpha = true};
    case PIVRA_FORMAT_BGRA8888:
      return {.alpha = true, .blue_first = true};
    case PIVRA_FORMAT_ARGB8888:
      return {.alpha = true, .alpha_first = true};
    case PIVRA_FORMAT_ABGR8888:
      return {.alpha = true, .blue_first = true, .alpha_first = true};
    default:
      fail("PNG does not hold {}", find_format(format)->name);
  }
}

// 5-6-5 words to a byte for each channel, the bits at the bottom.
void unpack_words(const std::uint8_t *words, std::span<std::uint8_t> bytes) {
  for (std::size_t i = 0; i < bytes.size(); i += 3, words += 2) {
    const int word = words[0] | words[1] << 8;
    bytes[i] = static_cast<std::uint8_t>(word >> 11);
    bytes[i + 1] = static_cast<std::uint8_t>(word >> 5 & 63);
    bytes[i + 2] = static_cast<std::uint8_t>(word & 31);
  }
}

void append(png_structp png, png_bytep data, png_size_t size) {
  auto &file = *static_cast<std::vector<std::uint8_t> *>(png_get_io_ptr(png));
  file.insert(file.end(), data, data + size);
}

void keep_message(png_structp png, png_const_charp message) {
  *static_cast<std::string *>(png_get_error_ptr(png)) = message;
  png_longjmp(png, 1);
}

void drop_warning(png_structp, png_const_charp) {}

// Every error of libpng jumps back here, so nothing in it may need a destructor.
bool write_file(png_structp png, png_infop info, const ImageDesc &desc, const Layout &layout,
                std::span<std::uint8_t> unpacked) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_IHDR(png, info, static_cast<png_uint_32>(desc.width[0]),
               static_cast<png_uint_32>(desc.height[0]), 8,
               layout.alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_color_8 bits = {.red = 5, .green = 6, .blue = 5, .gray = 0, .alpha = 0};
  if (layout.words) png_set_sBIT(png, info, &bits);
  png_write_info(png, info);
  if (layout.words) png_set_shift(png, &bits);
  if (layout.blue_first) png_set_bgr(png);
  if (layout.alpha_first) png_set_swap_alpha(png);
  const std::uint8_t *row = desc.plane[0];
  for (std::int32_t y = 0; y < desc.height[0]; ++y, row += desc.stride[0]) {
    if (layout.words) unpack_words(row, unpacked);
    png_write_row(png, layout.words ? unpacked.data() : row);
  }
  png_write_end(png, info);
  return true;
}

}  // namespace

std::vector<std::uint8_t> encode_png(Picture &picture) {
  const Layout layout = layout_of(picture.format());
  std::vector<std::uint8_t> file;
  std::vector<std::uint8_t> unpacked(layout.words ? 3 * std::size_t(picture.width()) : 0);
  std::string message = "out of memory";
  png_structp png =
      png_create_write_struct(PNG_LIBPNG_VER_STRING, &message, keep_message, drop_warning);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (info) png_set_write_fn(png, &file, append, nullptr);
  const bool written = info && write_file(png, info, picture.desc(), layout, unpacked);
  png_destroy_write_struct(&png, &info);
  if (!written) fail("cannot make a PNG file: {}", message);
  return file;
}

}  // namespace pivra::tool

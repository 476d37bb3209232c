#include "png.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <memory>

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

void take(png_structp png, png_bytep data, png_size_t size) {
  auto &bytes = *static_cast<std::span<const std::uint8_t> *>(png_get_io_ptr(png));
  if (size > bytes.size()) png_error(png, "the file is truncated");
  std::ranges::copy(bytes.first(size), data);
  bytes = bytes.subspan(size);
}

// The header, up to where the number of channels is known.
bool read_head(png_structp png, png_infop info) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_read_info(png, info);
  if (png_get_bit_depth(png, info) > 8)
    png_error(png, "samples have 16 bits, readable are up to 8");
  png_set_expand(png);
  png_set_gray_to_rgb(png);
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  return true;
}

bool read_rows(png_structp png, png_infop info, png_bytepp rows) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_read_image(png, rows);
  png_read_end(png, info);
  return true;
}

}  // namespace

Picture decode_png(InputFile &file) {
  const std::vector<std::uint8_t> content = file.read_rest();
  std::span<const std::uint8_t> unread = content;
  std::string message = "out of memory";
  png_structp png =
      png_create_read_struct(PNG_LIBPNG_VER_STRING, &message, keep_message, drop_warning);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  const auto destroy = [&](void *) { png_destroy_read_struct(&png, &info, nullptr); };
  const std::unique_ptr<void, decltype(destroy)> guard(&png, destroy);
  if (info) png_set_read_fn(png, &unread, take);
  if (!info || !read_head(png, info)) fail("cannot read {} as PNG: {}", file.name(), message);

  const bool alpha = png_get_channels(png, info) == 4;
  Picture picture(alpha ? PIVRA_FORMAT_RGBA8888 : PIVRA_FORMAT_RGB888,
                  static_cast<std::int32_t>(png_get_image_width(png, info)),
                  static_cast<std::int32_t>(png_get_image_height(png, info)));
  const ImageDesc desc = picture.desc();
  std::vector<png_bytep> rows;
  for (std::int32_t y = 0; y < picture.height(); ++y)
    rows.push_back(desc.plane[0] + std::ptrdiff_t{y} * desc.stride[0]);
  if (!read_rows(png, info, rows.data())) fail("cannot read {} as PNG: {}", file.name(), message);
  return picture;
}

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

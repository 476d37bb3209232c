#include "pipeline.h"

#include "failure.h"

namespace pivra::tool {

Pipeline::Pipeline(const FrameShape &input, const Wanted &wanted) {
  pictures_.push_back(std::make_unique<Picture>(input.format, input.width, input.height));
  add_filters(wanted);
  if (wanted.anaglyph) add_anaglyph(*wanted.anaglyph);
  if (wanted.transcode)
    add_transcoder(wanted);
  else
    add_geometry(wanted);
  const std::int32_t target = wanted.format ? wanted.format->code : last().format();
  if (!wanted.dither) {
    convert_to(target);
    return;
  }
  if (!dithers(last().format(), target)) {
    fail("{} is not dithered to {}; yuv420 to rgb565 or bgr565 is", format().name,
         find_format(target)->name);
  }
  add("csc_dither", target, {last().width(), last().height()}, pivra::dither);
}

void Pipeline::add_in_place(std::string call, std::function<void(const ImageDesc &)> run) {
  const std::size_t picture = pictures_.size() - 1;
  steps_.push_back({std::move(call),
                    [run = std::move(run)](const ImageDesc &, const ImageDesc &to) { run(to); },
                    picture, picture});
}

void Pipeline::add(std::string call, std::int32_t format, Size size, Run run) {
  pictures_.push_back(std::make_unique<Picture>(format, size.width, size.height));
  steps_.push_back({std::move(call), std::move(run), pictures_.size() - 2, pictures_.size() - 1});
}

void Pipeline::convert_to(std::int32_t target) {
  if (last().format() == target) return;
  if (!converts(last().format(), target)) {
    fail("{} does not convert to {}; 'pivra formats' lists what does", format().name,
         find_format(target)->name);
  }
  add("csc", target, {last().width(), last().height()}, convert);
}

// The filters work on planes of luma and chroma: other pictures become yuv420 first.
void Pipeline::add_filters(const Wanted &wanted) {
  if (!wanted.deblock && !wanted.saturation && !wanted.detail) return;
  if (!planar(last().format())) convert_to(PIVRA_FORMAT_YUV420);
  if (wanted.deblock) {
    add_in_place("dbf8x8_yuv", [qp = *wanted.deblock](const ImageDesc &it) { deblock(it, qp); });
  }
  if (wanted.detail) {
    add("detail_enh", last().format(), {last().width(), last().height()}, enhance_detail);
  }
  if (wanted.saturation) {
    if (format().planes.size() < 3) fail("{} has no colour for --saturation", format().name);
    add_in_place("color_sat", [by = *wanted.saturation](const ImageDesc &it) { saturate(it, by); });
  }
}

void Pipeline::add_anaglyph(Red red) {
  if (last().width() % 2 != 0) fail("{} pixels are not the width of two views", last().width());
  convert_to(PIVRA_FORMAT_RGB888);
  add("fpa", PIVRA_FORMAT_RGB888, {last().width() / 2, last().height()},
      [red](const ImageDesc &from, const ImageDesc &to) { make_anaglyph(from, to, red); });
}

void Pipeline::add_transcoder(const Wanted &wanted) {
  if (!transcodes(last().format())) convert_to(PIVRA_FORMAT_YUV420);
  const Size size = *wanted.size;
  const auto transcoder = std::make_shared<Transcoder>(
      last().desc(), wanted.turn, describe(PIVRA_FORMAT_NV12, size.width, size.height, nullptr));
  add(transcoder->in_one_call() ? "txc_csc_rsz_rot" : "csc + rsz_rot", PIVRA_FORMAT_NV12, size,
      [=](const ImageDesc &from, const ImageDesc &to) { transcoder->run(from, to); });
}

// Size and turn, in one pass where the library has it. A layout that cannot be resized or
// turned is converted before instead of after.
void Pipeline::add_geometry(const Wanted &wanted) {
  const bool turning = wanted.turn != Turn::kNone, quarter = is_quarter(wanted.turn);
  if (!turning && !wanted.size) return;
  const auto takes = [&](std::int32_t format) {
    return (!turning || turned_format(format, wanted.turn)) && (!wanted.size || resizes(format));
  };
  if (!takes(last().format()) && wanted.format) convert_to(wanted.format->code);
  if (!takes(last().format())) {
    fail("{} cannot be {}; choose a format that can with --to", format().name,
         turning ? "turned so" : "resized");
  }

  const Size old = {last().width(), last().height()};
  const Size size = wanted.size ? *wanted.size : quarter ? Size{old.height, old.width} : old;
  const Size upright = quarter ? Size{size.height, size.width} : size;
  const bool scaling = upright.width != old.width || upright.height != old.height;
  const bool even = (old.width | old.height | upright.width | upright.height) % 2 == 0;
  const auto turn = wanted.turn;
  const auto growth = wanted.growth;
  if (scaling && turning && resizes_turned(last().format(), turn)) {
    return add("rsz_rot", turned_format(last().format(), turn)->code, size,
               [=](const ImageDesc &from, const ImageDesc &to) { resize(from, turn, to, growth); });
  }
  if (scaling && even && !turning && wanted.format && !wanted.dither &&
      resizes_and_converts(last().format(), wanted.format->code)) {
    return add(
        "rsz_csc", wanted.format->code, size,
        [=](const ImageDesc &from, const ImageDesc &to) { resize_and_convert(from, to, growth); });
  }
  if (scaling) {
    add("rsz", last().format(), upright,
        [=](const ImageDesc &from, const ImageDesc &to) { resize(from, to, growth); });
  }
  if (turning) {
    add("rot", turned_format(last().format(), turn)->code, size,
        [=](const ImageDesc &from, const ImageDesc &to) { rotate(from, turn, to); });
  }
}

Picture &Pipeline::run() {
  for (const Step &step : steps_) {
    const ImageDesc from = pictures_[step.from]->desc(), to = pictures_[step.to]->desc();
    const auto start = std::chrono::steady_clock::now();
    step.run(from, to);
    spent_ += std::chrono::steady_clock::now() - start;
  }
  return last();
}

std::string Pipeline::calls() const {
  std::string text;
  for (const Step &step : steps_) text += (text.empty() ? "" : " + ") + step.call;
  return text;
}

}  // namespace pivra::tool

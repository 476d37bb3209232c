// The instruction-set levels of the library beside each other, the strongest
// that this processor supports first.
#include <algorithm>

#include "csc/yuv_to_rgb.h"
#include "kernels.h"
#include "pivra.hpp"
#include "race.h"

namespace {

struct TableEntry {
  std::string_view name;
  pivra_csc_kernel *pivra::YuvToRgb::*member;
};
#define PIVRA_ENTRY(SOURCE, source, DESTINATION, destination) \
  {#source "_to_" #destination, &pivra::YuvToRgb::source##_to_##destination},
constexpr TableEntry kEntries[] = {PIVRA_YUV_TO_RGB_DIRECT(PIVRA_ENTRY)};

std::vector<std::size_t> supported_levels() {
  std::vector<std::size_t> supported;
  for (std::size_t i = pivra::kLevels; i-- > 0;)
    if (pivra::levels[i].supported()) supported.push_back(i);
  return supported;
}

void race_levels(benchmark::State &state, const TableEntry &entry, int width, int height) {
  Kernel kernel = *find_kernel(entry.name);
  pivra::Picture src(kernel.from, width, height), dst(kernel.to, width, height);
  std::vector<Contender> contenders;
  for (const std::size_t level : supported_levels()) {
    kernel.run = pivra::yuv_to_rgb_tables[level]->*entry.member;
    contenders.push_back({pivra::levels[level].name,
                          [kernel, src = src.desc(), dst = dst.desc()] { kernel(src, dst); }});
  }
  race(state, double(width) * height, contenders);
}

}  // namespace

int main(int argc, char **argv) {
  std::vector<std::string> others;
  for (const std::size_t level : supported_levels()) others.emplace_back(pivra::levels[level].name);
  others.erase(others.begin());
  RaceReporter reporter(others, {{"all conversions", [](std::string_view) { return true; }}});
  return run_races(argc, argv, std::move(reporter), [](int width, int height) {
    for (const TableEntry &entry : kEntries)
      benchmark::RegisterBenchmark(entry.name.data(), race_levels, entry, width, height)
          ->UseManualTime();
  });
}

#include "progress.h"

#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace pivra::tool {

namespace {

constexpr std::chrono::milliseconds kPause(100);
constexpr std::uint64_t kBarWidth = 30;
constexpr const char *kWipeLine = "\r\033[K";

}  // namespace

Progress::Progress(std::optional<std::uint64_t> total)
    : total_(total), terminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (terminal_) std::fputs(kWipeLine, stderr);
}

void Progress::show(std::uint64_t done) {
  const Clock::time_point now = Clock::now();
  if (!terminal_ || now - drawn_ < kPause) return;
  drawn_ = now;
  const double rate =
      static_cast<double>(done) / std::chrono::duration<double>(now - start_).count();
  std::string line = kWipeLine;
  if (total_) {
    const std::uint64_t filled =
        kBarWidth * std::min(done, *total_) / std::max<std::uint64_t>(*total_, 1);
    line +=
        fmt::format("[{:#<{}}{:.<{}}] {}/{}", "", filled, "", kBarWidth - filled, done, *total_);
  } else {
    line += fmt::format("{}", done);
  }
  line += fmt::format(" frames, {:.1f} frames/s", rate);
  std::fputs(line.c_str(), stderr);
}

}  // namespace pivra::tool

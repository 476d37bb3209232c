// A bar on standard error while frames go by, if that is a terminal.
#ifndef PIVRA_TOOL_PROGRESS_H
#define PIVRA_TOOL_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <optional>

namespace pivra::tool {

class Progress {
 public:
  explicit Progress(std::optional<std::uint64_t> total);
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;
  ~Progress();  // wipes the bar

  void show(std::uint64_t done);

 private:
  using Clock = std::chrono::steady_clock;
  std::optional<std::uint64_t> total_;
  bool terminal_;
  Clock::time_point start_ = Clock::now(), drawn_ = start_;
};

}  // namespace pivra::tool

#endif

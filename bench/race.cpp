#include "race.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace {

double seconds(const Contender &contender) {
  using Clock = std::chrono::steady_clock;
  contender.run();
  const auto start = Clock::now();
  contender.run();
  benchmark::ClobberMemory();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::ranges::nth_element(values, middle);
  return *middle;
}

std::string text(double value) {
  return value < 1000 ? fmt::format("{:.3f}", value) : fmt::format("{:.0f}", value);
}

std::string ratio_column(std::string_view contender) { return fmt::format("x {}", contender); }

}  // namespace

void race(benchmark::State &state, double pixels, std::span<const Contender> contenders) {
  std::vector<double> first;
  std::vector<std::vector<double>> ratios(contenders.size());
  while (state.KeepRunning()) {
    double round = 0;
    for (std::size_t i = 0; i < contenders.size(); ++i) {
      const double time = seconds(contenders[i]);
      if (i == 0) first.push_back(time);
      ratios[i].push_back(time / first.back());
      round += time;
    }
    state.SetIterationTime(round);
  }
  const double time = median(first);
  state.counters["ms"] = time * 1e3;
  state.counters["Mpx/s"] = pixels / time * 1e-6;
  for (std::size_t i = 1; i < contenders.size(); ++i)
    state.counters[ratio_column(contenders[i].name)] = median(ratios[i]);
}

RaceReporter::RaceReporter(std::vector<std::string> others, std::vector<Group> groups)
    : columns_{"ms", "Mpx/s"}, groups_(std::move(groups)) {
  std::ranges::transform(others, std::back_inserter(columns_), ratio_column);
}

void RaceReporter::print_row(std::string_view name,
                             const std::function<std::string(std::string_view)> &cell) {
  fmt::print("{:<24}", name);
  for (const std::string &column : columns_) fmt::print("{:>11}", cell(column));
  fmt::print("\n");
  std::fflush(stdout);
}

bool RaceReporter::ReportContext(const Context &context) {
  PrintBasicContext(&GetErrorStream(), context);
  print_row("", [](std::string_view column) { return std::string(column); });
  return true;
}

void RaceReporter::ReportRuns(const std::vector<Run> &runs) {
  for (const Run &run : runs) {
    if (run.run_type != Run::RT_Iteration) continue;
    auto &[name, values] =
        results_.emplace_back(run.run_name.function_name, std::map<std::string, double>{});
    for (const auto &[counter, value] : run.counters) values[counter] = value;
    print_row(name, [&values = values](std::string_view column) {
      const auto value = values.find(std::string(column));
      return value == values.end() ? "-" : text(value->second);
    });
  }
}

void RaceReporter::Finalize() {
  fmt::print("\ngeometric means\n");
  for (const Group &group : groups_) {
    print_row(group.title, [&](std::string_view column) {
      double logarithms = 0;
      int count = 0;
      for (const auto &[name, values] : results_) {
        const auto value = values.find(std::string(column));
        if (value == values.end() || !group.contains(name)) continue;
        logarithms += std::log(value->second);
        ++count;
      }
      return count == 0 ? "-" : text(std::exp(logarithms / count));
    });
  }
}

int run_races(int argc, char **argv, RaceReporter &&reporter,
              const std::function<void(int width, int height)> &add) {
  benchmark::Initialize(&argc, argv, [] {
    benchmark::PrintDefaultHelp();
    fmt::print("          [--size=WxH, by default 1280x720]\n");
  });
  CLI::App app;
  std::string size = "1280x720";
  app.add_option("--size", size)->check([](const std::string &text) {
    int w, h, end = 0;
    const bool good = std::sscanf(text.c_str(), "%5dx%5d%n", &w, &h, &end) == 2 &&
                      text.size() == static_cast<std::size_t>(end) && w >= 8 && h >= 8;
    return good ? "" : fmt::format("sizes look like 1280x720 and start at 8x8, not {}", text);
  });
  CLI11_PARSE(app, argc, argv);
  int width = 0, height = 0;
  std::sscanf(size.c_str(), "%5dx%5d", &width, &height);

  add(width, height);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}

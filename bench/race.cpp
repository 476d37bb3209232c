#include "race.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <regex>

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

double geometric_mean(std::span<const double> values) {
  double logarithms = 0;
  for (const double value : values) logarithms += std::log(value);
  return std::exp(logarithms / static_cast<double>(values.size()));
}

double least(std::span<const double> values) { return std::ranges::min(values); }

std::string text(double value) {
  return value < 1000 ? fmt::format("{:.3f}", value) : fmt::format("{:.0f}", value);
}

std::string ratio_column(std::string_view contender) { return fmt::format("x {}", contender); }

bool contains(const Group &group, const std::string &name) {
  return std::regex_match(name, std::regex(group.pattern));
}

// Prints the races as a table, and below it the groups as another.
class Reporter : public benchmark::BenchmarkReporter {
 public:
  Reporter(const std::vector<std::string> &others, std::vector<Group> groups, bool markdown)
      : groups_(std::move(groups)), markdown_(markdown) {
    std::ranges::transform(others, std::back_inserter(ratios_), ratio_column);
    columns_ = {"ms", "Mpx/s"};
    columns_.insert(columns_.end(), ratios_.begin(), ratios_.end());
  }

  bool ReportContext(const Context &context) override {
    PrintBasicContext(&GetErrorStream(), context);
    print_head("operation", columns_);
    return true;
  }

  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      auto &[name, values] = results_.emplace_back(run.run_name.function_name, Values{});
      for (const auto &[counter, value] : run.counters) values[counter] = value;
      print_row(name, columns_, [&values = values](const std::string &column) {
        const auto value = values.find(column);
        return value == values.end() ? "-" : text(value->second);
      });
    }
  }

  void Finalize() override {
    fmt::print("\n");
    print_head("group", ratios_);
    for (const Group &group : groups_) {
      print_group(group.title, group, geometric_mean);
      print_group("  the least", group, least);
    }
  }

 private:
  using Values = std::map<std::string, double>;

  using Columns = std::vector<std::string>;

  void print_head(const std::string &title, const Columns &columns) {
    print_row(title, columns, [](const std::string &column) { return column; });
    if (!markdown_) return;
    fmt::print("|---|");
    for (std::size_t i = 0; i < columns.size(); ++i) fmt::print("---:|");
    fmt::print("\n");
  }

  void print_row(const std::string &name, const Columns &columns,
                 const std::function<std::string(const std::string &)> &cell) {
    const char *bar = markdown_ ? "|" : "";
    fmt::print("{0}{1:<40}{0}", bar, name);
    for (const std::string &column : columns) fmt::print("{:>11}{}", cell(column), bar);
    fmt::print("\n");
    std::fflush(stdout);
  }

  void print_group(const std::string &title, const Group &group,
                   double summary(std::span<const double>)) {
    std::map<std::string, std::vector<double>> ratios;
    for (const auto &[name, values] : results_) {
      if (!contains(group, name)) continue;
      for (const auto &[column, value] : values) ratios[column].push_back(value);
    }
    if (ratios.empty()) return;
    print_row(title, ratios_, [&](const std::string &column) {
      const auto found = ratios.find(column);
      return found == ratios.end() ? "-" : text(summary(found->second));
    });
  }

  Columns columns_, ratios_;  // names of counters, all and those beside others
  std::vector<Group> groups_;
  bool markdown_;
  std::vector<std::pair<std::string, Values>> results_;
};

constexpr const char *kUsage =
    "          [--size=WxH, by default 1280x720]\n"
    "          [--figures, only what the groups hold, as tables in Markdown]\n";

// Below that some tiled layouts write more than the picture.
constexpr int kLeastSize = 64;

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

int run_races(int argc, char **argv, std::vector<std::string> others, std::vector<Group> groups,
              const std::function<void(benchmark::State &, const Operation &)> &race_one) {
  benchmark::Initialize(&argc, argv, [] {
    benchmark::PrintDefaultHelp();
    fmt::print("{}", kUsage);
  });
  CLI::App app;
  std::string text = "1280x720";
  Size size = {};
  bool figures = false;
  app.add_flag("--figures", figures);
  app.add_option("--size", text)->check([&](const std::string &given) {
    int end = 0;
    const bool good =
        std::sscanf(given.c_str(), "%5dx%5d%n", &size.width, &size.height, &end) == 2 &&
        given.size() == static_cast<std::size_t>(end) && size.width >= kLeastSize &&
        size.height >= kLeastSize;
    return good ? "" : fmt::format("sizes look like 1280x720 and start at 64x64, not {}", given);
  });
  CLI11_PARSE(app, argc, argv);
  std::sscanf(text.c_str(), "%5dx%5d", &size.width, &size.height);

  for (const Operation &operation : operations(size)) {
    const bool listed = std::ranges::any_of(groups, [&](const Group &group) {
      return group.figures && contains(group, operation.name);
    });
    if (listed || !figures)
      benchmark::RegisterBenchmark(operation.name.c_str(), race_one, operation)->UseManualTime();
  }
  Reporter reporter(others, groups, figures);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}

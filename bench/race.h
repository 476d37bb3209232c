// Races: the same work done by several contenders in one benchmark.
//
// Machines are noisy, so contenders are not timed one after the other but in
// turns, many short rounds of one call each. A round gives a ratio that no
// change of the clock rate between rounds can spoil; what is reported is the
// median over the rounds. Before each timed call the contender runs once
// untimed: it finds its own pictures in the cache, not its predecessor's.
#ifndef PIVRA_BENCH_RACE_H
#define PIVRA_BENCH_RACE_H

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct Contender {
  std::string name;
  std::function<void()> run;
};

// Runs the rounds of a benchmark registered with UseManualTime. Counters: "ms"
// and "Mpx/s" of the first contender, and for each other one "x NAME", how many
// times as long as the first it takes. `pixels` is the work of one call.
void race(benchmark::State &state, double pixels, std::span<const Contender> contenders);

// Some of the benchmarks, summed up by their geometric means.
struct Group {
  std::string title;
  std::function<bool(std::string_view benchmark)> contains;
};

// Prints the races as a table, and below it the means of the groups.
class RaceReporter : public benchmark::BenchmarkReporter {
 public:
  // `others` names the contenders beside the first, a column each.
  RaceReporter(std::vector<std::string> others, std::vector<Group> groups);

  bool ReportContext(const Context &context) override;
  void ReportRuns(const std::vector<Run> &runs) override;
  void Finalize() override;

 private:
  void print_row(std::string_view name, const std::function<std::string(std::string_view)> &cell);

  std::vector<std::string> columns_;  // names of counters
  std::vector<Group> groups_;
  std::vector<std::pair<std::string, std::map<std::string, double>>> results_;
};

// The body of main: parses Google Benchmark's options and --size=WxH, lets
// `add` register the benchmarks and runs them.
int run_races(int argc, char **argv, RaceReporter &&reporter,
              const std::function<void(int width, int height)> &add);

#endif

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
#include <span>
#include <string>
#include <vector>

#include "operations.h"

struct Contender {
  std::string name;
  std::function<void()> run;
};

// Runs the rounds of a benchmark registered with UseManualTime. Counters: "ms"
// and "Mpx/s" of the first contender, and for each other one "x NAME", how many
// times as long as the first it takes. `pixels` is the work of one call.
void race(benchmark::State &state, double pixels, std::span<const Contender> contenders);

// Some of the operations, summed up by the geometric mean and the least of
// their ratios.
struct Group {
  std::string title;
  std::string pattern;  // a regular expression for the whole name
  bool figures = true;  // whether --figures shows them
};

// The body of main: parses Google Benchmark's options and those of usage(), and
// runs `race_one` for each operation. Prints a table with a column for each of
// the `others`, the contenders beside the first, and below it the groups.
int run_races(int argc, char **argv, std::vector<std::string> others, std::vector<Group> groups,
              const std::function<void(benchmark::State &, const Operation &)> &race_one);

#endif

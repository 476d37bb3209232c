// The instruction-set levels of the library beside each other, the strongest
// that this processor supports first.
#include "core/levels.h"

#include "race.h"

namespace {

std::vector<std::size_t> supported_levels() {
  std::vector<std::size_t> supported;
  for (std::size_t i = pivra::kLevels; i-- > 0;)
    if (pivra::levels[i].supported()) supported.push_back(i);
  return supported;
}

void race_levels(benchmark::State &state, const Operation &operation) {
  const Pictures pictures(operation);
  std::vector<Contender> contenders;
  for (const std::size_t level : supported_levels()) {
    contenders.push_back({pivra::levels[level].name, [&, level] {
                            pivra::chosen_level = level;
                            operation.run(pictures.src, pictures.dst);
                          }});
  }
  race(state, operation.pixels(), contenders);
}

}  // namespace

int main(int argc, char **argv) {
  std::vector<std::string> others;
  for (const std::size_t level : supported_levels()) others.emplace_back(pivra::levels[level].name);
  others.erase(others.begin());
  return run_races(argc, argv, others, {{"all operations", ".*"}}, race_levels);
}

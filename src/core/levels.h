// Instruction-set levels.
//
// The kernels of a family are compiled once per level of the machine, each time
// into a namespace of the level's name, and collected in a table of pointers.
// The library chooses its level once, when it is loaded; a machine with a
// single level has nothing to choose.
#ifndef PIVRA_CORE_LEVELS_H
#define PIVRA_CORE_LEVELS_H

#include <stddef.h>

// The levels of this machine from the weakest, which every processor of the
// kind has, to the strongest. CMakeLists.txt gives each its compiler flags.
#if defined(__x86_64__)
#define PIVRA_FOR_EACH_LEVEL(DO, ...) \
  DO(sse2, __VA_ARGS__) DO(avx2, __VA_ARGS__) DO(avx512, __VA_ARGS__)
#elif defined(__ARM_NEON)
#define PIVRA_FOR_EACH_LEVEL(DO, ...) DO(neon, __VA_ARGS__)
#else
#define PIVRA_FOR_EACH_LEVEL(DO, ...) DO(plain, __VA_ARGS__)
#endif

namespace pivra {

struct Level {
  const char *name;
  bool (*supported)();
};

#define PIVRA_COUNT_LEVEL(level, ...) +1
constexpr size_t kLevels = PIVRA_FOR_EACH_LEVEL(PIVRA_COUNT_LEVEL, );
#undef PIVRA_COUNT_LEVEL

extern const Level levels[kLevels];

// Index of the strongest level that the processor supports.
extern size_t chosen_level;

// Declares the family table `name` of every level, and `name_tables` of all of them.
#define PIVRA_TABLE_AT(level, Table, name) \
  namespace level {                        \
  extern const Table name;                 \
  }
#define PIVRA_TABLE_ADDRESS(level, name) &level::name,
#define PIVRA_TABLES(Table, name)                   \
  PIVRA_FOR_EACH_LEVEL(PIVRA_TABLE_AT, Table, name) \
  constexpr const Table *name##_tables[] = {PIVRA_FOR_EACH_LEVEL(PIVRA_TABLE_ADDRESS, name)};

template <class Table>
const Table &chosen(const Table *const (&tables)[kLevels]) {
  return *tables[kLevels == 1 ? 0 : chosen_level];
}

}  // namespace pivra

#endif

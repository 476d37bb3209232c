// Runs one operation a number of times on one picture, for a count of the
// instructions it executes.
//
//   once WIDTH HEIGHT                   lists the operations and their pixels
//   once WIDTH HEIGHT NAME REPETITIONS  e.g. 640 480 yuv420_to_rgb565 2
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "operations.h"

int main(int argc, char **argv) try {
  if (argc != 3 && argc != 5) {
    std::fputs("usage: once WIDTH HEIGHT [NAME REPETITIONS]\n", stderr);
    return EXIT_FAILURE;
  }
  const auto known = operations({std::atoi(argv[1]), std::atoi(argv[2])});
  if (argc == 3) {
    for (const Operation &operation : known)
      std::printf("%s %.0f\n", operation.name.c_str(), operation.pixels());
    return EXIT_SUCCESS;
  }
  const auto operation = std::ranges::find(known, argv[3], &Operation::name);
  if (operation == known.end()) {
    std::fprintf(stderr, "once: no operation %s\n", argv[3]);
    return EXIT_FAILURE;
  }
  const Pictures pictures(*operation);
  for (int i = std::atoi(argv[4]); i > 0; --i) operation->run(pictures.src, pictures.dst);
  return EXIT_SUCCESS;
} catch (const std::exception &e) {
  std::fprintf(stderr, "once: %s\n", e.what());
  return EXIT_FAILURE;
}

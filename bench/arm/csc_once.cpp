// Runs one conversion kernel a number of times on one picture, for a count of
// the instructions it executes.
//
//   csc_once                                  lists the kernels
//   csc_once KERNEL WIDTH HEIGHT REPETITIONS  e.g. yuv420_to_rgb565 640 480 2
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "kernels.h"
#include "pictures.h"

int main(int argc, char **argv) try {
  if (argc == 1) {
    for (const Kernel &kernel : kKernels) std::puts(kernel.name.data());
    return EXIT_SUCCESS;
  }
  const Kernel *kernel = argc == 5 ? find_kernel(argv[1]) : nullptr;
  if (!kernel) {
    std::fputs("usage: csc_once [KERNEL WIDTH HEIGHT REPETITIONS]; alone it lists the kernels\n",
               stderr);
    return EXIT_FAILURE;
  }
  const int width = std::atoi(argv[2]), height = std::atoi(argv[3]);
  BenchPicture src(kernel->from, width, height), dst(kernel->to, width, height);
  const ImageDesc from = src.desc(), to = dst.desc();
  for (int i = std::atoi(argv[4]); i > 0; --i) (*kernel)(from, to);
  return EXIT_SUCCESS;
} catch (const std::exception &e) {
  std::fprintf(stderr, "csc_once: %s\n", e.what());
  return EXIT_FAILURE;
}

// What the library allocates, counted and not clean. The linker puts these functions between the
// library and the C runtime: --wrap=malloc,--wrap=free.
#ifndef PIVRA_TESTS_HEAP_H
#define PIVRA_TESTS_HEAP_H

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {
struct Heap {
  bool watched = false, fails = false;
  int granted = 0;  // before it fails
  int calls = 0;
  size_t bytes = 0;
  std::vector<void *> live = {};
} heap;
}  // namespace

extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *block);
void *__wrap_malloc(size_t size) {
  if (!heap.watched) return __real_malloc(size);
  heap.bytes = size;
  if (heap.calls++ >= heap.granted && heap.fails) return nullptr;
  void *block = __real_malloc(size);
  for (size_t i = 0; i < size; ++i) static_cast<uint8_t *>(block)[i] = static_cast<uint8_t>(7 * i);
  heap.live.push_back(block);
  return block;
}
void __wrap_free(void *block) {
  std::erase(heap.live, block);
  __real_free(block);
}
}

namespace pivra::test {

// A call, how often it allocated and how much it left allocated.
struct Outcome {
  int32_t result;
  int calls;
  size_t bytes, kept;
};
template <class Call>
Outcome watch(Call call, bool fails = false, int granted = 0) {
  heap = {true, fails, granted};
  const int32_t result = call();
  heap.watched = false;
  const size_t kept = heap.live.size();
  while (!heap.live.empty()) __wrap_free(heap.live.back());
  return {result, heap.calls, heap.bytes, kept};
}

}  // namespace pivra::test

#endif

// What goes wrong for a reason the user can mend: one sentence, printed by main().
#ifndef PIVRA_TOOL_FAILURE_H
#define PIVRA_TOOL_FAILURE_H

#include <fmt/core.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace pivra::tool {

struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

template <class... Args>
[[noreturn]] void fail(fmt::format_string<Args...> sentence, Args &&...args) {
  throw Failure(fmt::format(sentence, std::forward<Args>(args)...));
}

// Fails with the reason that the last system call left in errno.
[[noreturn]] inline void fail_to(const char *act, const std::string &name) {
  fail("cannot {} {}: {}", act, name, std::generic_category().message(errno));
}

}  // namespace pivra::tool

#endif

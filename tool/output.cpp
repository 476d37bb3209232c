#include "output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "failure.h"

namespace pivra::tool {

namespace {

// The temporary name; empty if there is none. Here for the signal handler.
char unfinished[PATH_MAX];

void remove_unfinished() {
  if (unfinished[0] != '\0') unlink(unfinished);
  unfinished[0] = '\0';
}

void remove_and_die(int signal) {
  remove_unfinished();
  raise(signal);  // SA_RESETHAND has brought the default action back
}

mode_t mode_of_new_files() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// Opens a new file beside the target. mkstemp() picks the name in place, so that
// it is known to the signal handler before the file is there.
int open_beside(const std::string &target, mode_t mode) {
  const std::string pattern =
      std::filesystem::path(target).replace_filename(".pivra-XXXXXX").string();
  if (pattern.size() >= sizeof unfinished) {
    errno = ENAMETOOLONG;
    return -1;
  }
  std::memcpy(unfinished + 1, pattern.c_str() + 1, pattern.size());
  std::atomic_signal_fence(std::memory_order_release);  // never half a name
  unfinished[0] = pattern[0];
  const int descriptor = mkstemp(unfinished);
  if (descriptor < 0)
    unfinished[0] = '\0';
  else
    fchmod(descriptor, mode);
  return descriptor;
}

}  // namespace

OutputFile::OutputFile(const std::string &path) : name_(path == "-" ? "standard output" : path) {
  if (path == "-") {
    if (isatty(descriptor_)) fail("pictures are not written to a terminal");
    return;
  }
  struct stat old;
  const bool exists = stat(path.c_str(), &old) == 0;
  if (exists && !S_ISREG(old.st_mode)) {
    descriptor_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  } else if (exists && access(path.c_str(), W_OK) != 0) {
    descriptor_ = -1;  // renaming would get round the file's permissions
  } else {
    target_ = exists ? std::filesystem::canonical(path).string() : path;  // keeps a link a link
    descriptor_ = open_beside(target_, exists ? old.st_mode & 07777 : mode_of_new_files());
  }
  if (descriptor_ < 0) fail_to("write", name_);
}

OutputFile::~OutputFile() {
  if (descriptor_ > STDERR_FILENO) close(descriptor_);
  if (!target_.empty()) remove_unfinished();
}

void OutputFile::write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail_to("write", name_);
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void OutputFile::commit() {
  if (descriptor_ == STDOUT_FILENO) return;
  const int descriptor = std::exchange(descriptor_, -1);
  if (close(descriptor) != 0) fail_to("write", name_);
  if (target_.empty()) return;
  if (rename(unfinished, target_.c_str()) != 0) fail_to("write", name_);
  unfinished[0] = '\0';
}

void remove_unfinished_output_on_signals() {
  struct sigaction action = {};
  action.sa_handler = remove_and_die;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM}) {
    struct sigaction old;
    sigaction(signal, nullptr, &old);
    if (old.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
  std::signal(SIGXFSZ, SIG_IGN);  // a file beyond the limit fails like a full disk
}

}  // namespace pivra::tool

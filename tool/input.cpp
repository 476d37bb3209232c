#include "input.h"

#include <sys/stat.h>

#include "failure.h"

namespace pivra::tool {

InputFile::InputFile(const std::string &path)
    : name_(path == "-" ? "standard input" : path),
      file_(path == "-" ? stdin : std::fopen(path.c_str(), "rb"), std::fclose) {
  if (!file_) fail_to("open", name_);
}

std::optional<std::uint64_t> InputFile::remaining() const {
  struct stat status;
  if (fstat(fileno(file_.get()), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  const off_t position = ftello(file_.get());
  return status.st_size > position ? status.st_size - position : 0;
}

int InputFile::next() {
  const int byte = std::getc(file_.get());
  if (byte == EOF && std::ferror(file_.get())) fail_to("read", name_);
  return std::ungetc(byte, file_.get());
}

std::size_t InputFile::read(std::span<std::uint8_t> bytes) {
  const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), file_.get());
  if (got < bytes.size() && std::ferror(file_.get())) fail_to("read", name_);
  return got;
}

std::vector<std::uint8_t> InputFile::read_rest() {
  std::vector<std::uint8_t> bytes;
  while (!at_end()) {
    const std::size_t size = bytes.size();
    bytes.resize(2 * size + (1 << 16));
    bytes.resize(size + read(std::span(bytes).subspan(size)));
  }
  return bytes;
}

std::optional<std::string> InputFile::read_line(std::size_t limit) {
  std::string line;
  for (int byte; line.size() < limit && (byte = std::getc(file_.get())) != EOF;) {
    if (byte == '\n') return line;
    line += static_cast<char>(byte);
  }
  if (std::ferror(file_.get())) fail_to("read", name_);
  return {};
}

}  // namespace pivra::tool

// A file or standard input, read front to back.
#ifndef PIVRA_TOOL_INPUT_H
#define PIVRA_TOOL_INPUT_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pivra::tool {

class InputFile {
 public:
  // "-" is standard input.
  explicit InputFile(const std::string &path);

  // How messages call it.
  const std::string &name() const { return name_; }

  // Bytes still to be read; nothing for pipes and devices.
  std::optional<std::uint64_t> remaining() const;

  bool at_end() { return next() < 0; }

  // The byte that comes next, which stays; -1 at the end of the file.
  int next();

  // Fills the span and returns its size, or less at the end of the file.
  std::size_t read(std::span<std::uint8_t> bytes);

  // All bytes to the end of the file.
  std::vector<std::uint8_t> read_rest();

  // The text up to a line feed, which is taken but not returned; nothing if none
  // of the next `limit` bytes is one.
  std::optional<std::string> read_line(std::size_t limit);

 private:
  std::string name_;
  std::unique_ptr<std::FILE, int (*)(std::FILE *)> file_;
};

}  // namespace pivra::tool

#endif

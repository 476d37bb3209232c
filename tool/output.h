// A file that appears under its name when it is complete, or not at all.
#ifndef PIVRA_TOOL_OUTPUT_H
#define PIVRA_TOOL_OUTPUT_H

#include <cstdint>
#include <span>
#include <string>

namespace pivra::tool {

// At most one exists at a time, so that a signal finds the file to remove.
class OutputFile {
 public:
  // "-" is standard output; it, devices and pipes are written straight.
  explicit OutputFile(const std::string &path);
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;
  ~OutputFile();

  void write(std::span<const std::uint8_t> bytes);

  // Gives the file its name.
  void commit();

 private:
  std::string name_, target_;
  int descriptor_ = 1;  // standard output
};

// From now on a signal that ends the program removes the unfinished file first.
void remove_unfinished_output_on_signals();

}  // namespace pivra::tool

#endif

#include "writer.h"

#include <fmt/core.h>

#include <filesystem>
#include <regex>

#include "output.h"
#include "png.h"
#include "y4m.h"

namespace pivra::tool {

namespace {

class RawWriter : public FrameWriter {
 public:
  explicit RawWriter(const std::string &path) : file_(path) {}
  void write(Picture &frame, std::uint64_t) override { file_.write(frame.bytes()); }
  void finish() override { file_.commit(); }

 private:
  OutputFile file_;
};

class Y4mWriter : public FrameWriter {
 public:
  Y4mWriter(const std::string &path, const std::string &parameters)
      : file_(path), parameters_(parameters) {}

  void write(Picture &frame, std::uint64_t) override {
    if (first_)
      write_text(y4m_header({frame.format(), frame.width(), frame.height()}, parameters_));
    first_ = false;
    write_text("FRAME\n");
    file_.write(frame.bytes());
  }

  void finish() override { file_.commit(); }

 private:
  void write_text(const std::string &text) {
    file_.write({reinterpret_cast<const std::uint8_t *>(text.data()), text.size()});
  }

  OutputFile file_;
  std::string parameters_;
  bool first_ = true;
};

class PngWriter : public FrameWriter {
 public:
  PngWriter(const std::string &path, bool several) : front_(path) {
    static const std::regex number("%(0(\\d))?d");
    std::smatch match;
    if (std::regex_search(path, match, number)) {
      digits_ = match[2].matched ? match.str(2)[0] - '0' : 1;
      front_ = match.prefix();
      back_ = match.suffix();
    } else if (several && path != "-") {
      digits_ = 4;
      const std::filesystem::path name(path);
      front_ = std::filesystem::path(name).replace_extension().string() + "-";
      back_ = name.extension().string();
    }
  }

  void write(Picture &frame, std::uint64_t index) override {
    OutputFile file(digits_ ? fmt::format("{}{:0{}}{}", front_, index, digits_, back_) : front_);
    file.write(encode_png(frame));
    file.commit();
  }

  void finish() override {}

 private:
  std::string front_, back_;
  int digits_ = 0;  // 0: the name has no number
};

}  // namespace

FileKind kind_of(const std::string &path) {
  static const std::regex png(".*\\.png", std::regex::icase), y4m(".*\\.y4m", std::regex::icase);
  if (std::regex_match(path, png)) return FileKind::kPng;
  return std::regex_match(path, y4m) ? FileKind::kY4m : FileKind::kRaw;
}

std::unique_ptr<FrameWriter> make_writer(const std::string &path, FileKind kind, bool several,
                                         const std::string &y4m_parameters) {
  if (kind == FileKind::kPng) return std::make_unique<PngWriter>(path, several);
  if (kind == FileKind::kY4m) return std::make_unique<Y4mWriter>(path, y4m_parameters);
  return std::make_unique<RawWriter>(path);
}

}  // namespace pivra::tool

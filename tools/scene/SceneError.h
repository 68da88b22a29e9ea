#pragma once

#include <stdexcept>
#include <string>

namespace qvscene {

// A fault in a scene or in one of its pictures. what() is the full message:
// "FILE:LINE: /json/path: reason", without the parts that are not known.
class SceneError : public std::runtime_error {
 public:
  SceneError(const std::string& file, int line, const std::string& path, const std::string& reason)
      : std::runtime_error(Format(file, line, path, reason)),
        file_(file),
        line_(line),
        path_(path),
        reason_(reason) {}

  const std::string& File() const { return file_; }
  int Line() const { return line_; }  // 0 when not known
  const std::string& Path() const { return path_; }
  const std::string& Reason() const { return reason_; }

  static std::string Format(const std::string& file, int line, const std::string& path,
                            const std::string& reason) {
    std::string s = file;
    if (line > 0) s += ":" + std::to_string(line);
    s += ": ";
    if (!path.empty()) s += path + ": ";
    return s + reason;
  }

 private:
  std::string file_;
  int line_;
  std::string path_;
  std::string reason_;
};

// The library refused to build or draw something that the scene describes
// correctly (for instance an allocation failed).
class BuildError : public std::runtime_error {
 public:
  explicit BuildError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace qvscene

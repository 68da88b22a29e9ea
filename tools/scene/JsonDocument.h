#pragma once

#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace qvscene {

// A parsed JSON text that remembers on which line each value starts, by its
// JSON pointer ("/members/2/frames/0/zoom"), so that errors found after
// parsing can name the line. Duplicate keys in an object are rejected.
class JsonDocument {
 public:
  // Parses text; throws SceneError naming file, line and column on invalid
  // JSON or a duplicate key.
  JsonDocument(const std::string& file, const std::string& text);

  const nlohmann::json& Root() const { return root_; }
  const std::string& File() const { return file_; }
  // Line (from 1) on which the value at pointer starts; 0 when unknown.
  int LineOf(const std::string& pointer) const;
  // Throws SceneError for the value at pointer.
  [[noreturn]] void Fail(const std::string& pointer, const std::string& reason) const;

  // Escapes a key for use in a JSON pointer ("~" -> "~0", "/" -> "~1").
  static std::string Escape(const std::string& key);

  // Line and column (from 1) of a character offset in the text.
  void LineColumn(std::size_t offset, int* line, int* column) const;

 private:
  std::string file_;
  std::string text_;
  std::vector<std::size_t> lineStarts_;
  nlohmann::json root_;
  std::map<std::string, int> lines_;
};

}  // namespace qvscene

#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace qvscene {

// A parsed JSON text that can name the line on which each value starts, by
// its JSON pointer ("/members/2/frames/0/zoom"), so that errors found after
// parsing can name the line. Duplicate keys in an object are rejected, and
// so are numbers out of the range of a double and nesting deeper than
// kMaxDepth. Memory stays linear in the size of the text: lines are found
// when asked for, by reading the text again.
class JsonDocument {
 public:
  // Deepest nesting of arrays and objects accepted.
  static constexpr int kMaxDepth = 200;

  // Parses text; throws SceneError naming file, line and column on invalid
  // JSON, and file, line and JSON path on a duplicate key, a number out of
  // range or too deep a nesting.
  JsonDocument(const std::string& file, const std::string& text);

  const nlohmann::json& Root() const { return root_; }
  const std::string& File() const { return file_; }
  // Line (from 1) on which the value at pointer starts; 0 when there is no
  // such value.
  int LineOf(const std::string& pointer) const;
  // Throws SceneError for the value at pointer. A pointer to a value that is
  // not in the text (a missing key) takes the line of its nearest ancestor.
  [[noreturn]] void Fail(const std::string& pointer, const std::string& reason) const;

  // Escapes a key for use in a JSON pointer ("~" -> "~0", "/" -> "~1").
  static std::string Escape(const std::string& key);

  // Line and column (from 1) of a character offset in the text.
  void LineColumn(std::size_t offset, int* line, int* column) const;

 private:
  // Line of the value at pointer (exact) and of its deepest ancestor found.
  void Find(const std::string& pointer, int* exact, int* nearest) const;

  std::string file_;
  std::string text_;
  nlohmann::json root_;
};

}  // namespace qvscene

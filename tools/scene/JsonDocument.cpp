#include "scene/JsonDocument.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>

#include "scene/SceneError.h"

namespace qvscene {
namespace {

// A character iterator that records the offset of the last character the
// parser read, so that a parsing event can be placed in the text.
class TrackingIterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  TrackingIterator(const char* p, const char* base, std::size_t* last)
      : p_(p), base_(base), last_(last) {}
  reference operator*() const {
    *last_ = static_cast<std::size_t>(p_ - base_);
    return *p_;
  }
  TrackingIterator& operator++() {
    ++p_;
    return *this;
  }
  TrackingIterator operator++(int) {
    TrackingIterator old = *this;
    ++p_;
    return old;
  }
  bool operator==(const TrackingIterator& o) const { return p_ == o.p_; }
  bool operator!=(const TrackingIterator& o) const { return p_ != o.p_; }

 private:
  const char* p_;
  const char* base_;
  std::size_t* last_;
};

// Records the line of every value by its JSON pointer.
class PositionSax {
 public:
  using json = nlohmann::json;

  PositionSax(const std::string& text, const std::size_t* last, const JsonDocument* doc,
              std::map<std::string, int>* lines)
      : text_(text), last_(last), doc_(doc), lines_(lines) {}

  bool null() { return Value(); }
  bool boolean(bool) { return Value(); }
  bool number_integer(json::number_integer_t) { return Value(); }
  bool number_unsigned(json::number_unsigned_t) { return Value(); }
  bool number_float(json::number_float_t, const json::string_t&) { return Value(); }
  bool string(json::string_t&) { return Value(); }
  bool binary(json::binary_t&) { return Value(); }
  bool start_object(std::size_t) {
    const std::string p = NextPath();
    (*lines_)[p] = Line();
    stack_.push_back(Level{false, 0, std::string(), p, {}});
    return true;
  }
  bool key(json::string_t& k) {
    Level& top = stack_.back();
    top.key = k;
    const std::string p = top.path + "/" + JsonDocument::Escape(k);
    const int line = Line();
    if (!top.keys.insert(k).second) {
      duplicatePath = p;
      duplicateLine = line;
      return false;
    }
    (*lines_)[p] = line;
    return true;
  }
  bool end_object() {
    stack_.pop_back();
    return true;
  }
  bool start_array(std::size_t) {
    const std::string p = NextPath();
    (*lines_)[p] = Line();
    stack_.push_back(Level{true, 0, std::string(), p, {}});
    return true;
  }
  bool end_array() {
    stack_.pop_back();
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) {
    return false;
  }

  std::string duplicatePath;
  int duplicateLine = 0;

 private:
  struct Level {
    bool array;
    std::size_t index;
    std::string key;
    std::string path;
    std::set<std::string> keys;
  };

  std::string NextPath() {
    if (stack_.empty()) return std::string();
    Level& top = stack_.back();
    if (top.array) return top.path + "/" + std::to_string(top.index++);
    return top.path + "/" + JsonDocument::Escape(top.key);
  }
  bool Value() {
    const std::string p = NextPath();
    (*lines_)[p] = Line();
    return true;
  }
  // The parser has read the token of the event and at most one character
  // beyond it; stepping back over white space finds the token itself.
  int Line() const {
    std::size_t at = std::min(*last_, text_.empty() ? 0 : text_.size() - 1);
    while (at > 0 &&
           (text_[at] == ' ' || text_[at] == '\n' || text_[at] == '\r' || text_[at] == '\t')) {
      --at;
    }
    int line = 0;
    int column = 0;
    doc_->LineColumn(at, &line, &column);
    return line;
  }

  const std::string& text_;
  const std::size_t* last_;
  const JsonDocument* doc_;
  std::map<std::string, int>* lines_;
  std::vector<Level> stack_;
};

// The reason of a parse error without the library's prefix.
std::string ParseReason(const std::string& what) {
  std::string s = what;
  const std::size_t column = s.find("column ");
  if (column != std::string::npos) {
    const std::size_t colon = s.find(": ", column);
    if (colon != std::string::npos) return s.substr(colon + 2);
  }
  const std::size_t close = s.find("] ");
  if (close != std::string::npos) s = s.substr(close + 2);
  return s;
}

}  // namespace

JsonDocument::JsonDocument(const std::string& file, const std::string& text)
    : file_(file), text_(text) {
  lineStarts_.push_back(0);
  for (std::size_t i = 0; i < text_.size(); ++i) {
    if (text_[i] == '\n') lineStarts_.push_back(i + 1);
  }
  try {
    root_ = nlohmann::json::parse(text_);
  } catch (const nlohmann::json::parse_error& e) {
    int line = 0;
    int column = 0;
    LineColumn(e.byte > 0 ? e.byte - 1 : 0, &line, &column);
    throw SceneError(
        file_, line, std::string(),
        "invalid JSON at column " + std::to_string(column) + ": " + ParseReason(e.what()));
  }
  std::size_t last = 0;
  PositionSax sax(text_, &last, this, &lines_);
  const char* base = text_.data();
  TrackingIterator first(base, base, &last);
  TrackingIterator end(base + text_.size(), base, &last);
  const bool ok = nlohmann::json::sax_parse(first, end, &sax);
  if (!ok && !sax.duplicatePath.empty()) {
    throw SceneError(file_, sax.duplicateLine, sax.duplicatePath, "duplicate key");
  }
}

int JsonDocument::LineOf(const std::string& pointer) const {
  auto it = lines_.find(pointer);
  return it == lines_.end() ? 0 : it->second;
}

void JsonDocument::Fail(const std::string& pointer, const std::string& reason) const {
  throw SceneError(file_, LineOf(pointer), pointer.empty() ? "/" : pointer, reason);
}

std::string JsonDocument::Escape(const std::string& key) {
  std::string out;
  for (char c : key) {
    if (c == '~') {
      out += "~0";
    } else if (c == '/') {
      out += "~1";
    } else {
      out += c;
    }
  }
  return out;
}

void JsonDocument::LineColumn(std::size_t offset, int* line, int* column) const {
  auto it = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset);
  const std::size_t index = static_cast<std::size_t>(it - lineStarts_.begin()) - 1;
  *line = static_cast<int>(index) + 1;
  *column = static_cast<int>(offset - lineStarts_[index]) + 1;
}

}  // namespace qvscene

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

// Walks the parsing events keeping only the open containers (so memory is
// linear in the text). Without a target it checks the text: nesting depth,
// duplicate keys, and (through parse_error) syntax and numbers out of range.
// With a target (the tokens of a JSON pointer) it finds the line of that
// value, or of its deepest ancestor, and stops there.
class Walker {
 public:
  using json = nlohmann::json;

  Walker(const JsonDocument& doc, const std::string& text, const std::size_t* last,
         const std::vector<std::string>* target)
      : doc_(doc), text_(text), last_(last), target_(target) {}

  bool null() { return Event(false, false); }
  bool boolean(bool) { return Event(false, false); }
  bool number_integer(json::number_integer_t) { return Event(false, false); }
  bool number_unsigned(json::number_unsigned_t) { return Event(false, false); }
  bool number_float(json::number_float_t, const json::string_t&) { return Event(false, false); }
  bool string(json::string_t&) { return Event(false, false); }
  bool binary(json::binary_t&) { return Event(false, false); }
  bool start_object(std::size_t) { return Event(true, false); }
  bool start_array(std::size_t) { return Event(true, true); }
  bool end_object() { return Close(); }
  bool end_array() { return Close(); }
  bool key(json::string_t& k) {
    Level& top = stack_.back();
    top.current = k;
    if (!target_) {
      if (!top.keys.insert(k).second) return Error(Line(), "duplicate key");
      return true;
    }
    if (Matches(k)) Record(stack_.size());
    return true;
  }
  bool parse_error(std::size_t position, const std::string& token,
                   const nlohmann::detail::exception& e) {
    if (!stack_.empty() && stack_.back().array) {
      stack_.back().current = std::to_string(stack_.back().index);
    }
    errorPath = Path();
    errorPosition = position;
    errorToken = token;
    errorId = e.id;
    errorWhat = e.what();
    return false;
  }

  // The first fault found while checking: its line and reason (path() names
  // the value), or a parse error reported by the parser.
  int faultLine = 0;
  std::string faultPath;
  std::string faultReason;
  std::string errorPath;
  std::size_t errorPosition = 0;
  std::string errorToken;
  int errorId = 0;
  std::string errorWhat;
  // What the target walk found.
  int exactLine = 0;
  int nearestLine = 0;

 private:
  struct Level {
    bool array = false;
    std::size_t index = 0;
    std::string current;  // token of the child being read
    std::set<std::string> keys;
  };

  std::string Path() const {
    std::string p;
    for (const Level& l : stack_) p += "/" + JsonDocument::Escape(l.current);
    return p;
  }
  bool Error(int line, const std::string& reason) {
    faultLine = line;
    faultPath = Path();
    faultReason = reason;
    return false;
  }
  // A child of the top container whose token is token is a prefix of the
  // target (and every open container is).
  bool Matches(const std::string& token) const {
    const std::size_t d = stack_.size();
    return target_ && agree_ == d && d <= target_->size() && (d == 0 || (*target_)[d - 1] == token);
  }
  void Record(std::size_t length) {
    if (length < nearestLength_) return;
    nearestLength_ = length;
    nearestLine = Line();
    if (length == target_->size()) exactLine = nearestLine;
  }
  bool Event(bool container, bool array) {
    std::string token;
    if (!stack_.empty()) {
      Level& top = stack_.back();
      if (top.array) top.current = std::to_string(top.index++);
      token = top.current;
    }
    const bool matched = Matches(token);
    if (matched) {
      Record(stack_.size());
      if (stack_.size() == target_->size()) return false;  // found
    }
    if (!container) return true;
    if (stack_.size() >= static_cast<std::size_t>(JsonDocument::kMaxDepth)) {
      if (target_) return false;
      return Error(Line(), "arrays and objects nested more than " +
                               std::to_string(JsonDocument::kMaxDepth) + " deep");
    }
    stack_.emplace_back();
    stack_.back().array = array;
    if (matched) agree_ = stack_.size();
    return true;
  }
  bool Close() {
    stack_.pop_back();
    agree_ = std::min(agree_, stack_.size());
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
    doc_.LineColumn(at, &line, &column);
    return line;
  }

  const JsonDocument& doc_;
  const std::string& text_;
  const std::size_t* last_;
  const std::vector<std::string>* target_;
  std::vector<Level> stack_;
  std::size_t agree_ = 0;  // open containers that lie on the target's path
  std::size_t nearestLength_ = 0;
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

// The tokens of a JSON pointer, unescaped.
std::vector<std::string> Tokens(const std::string& pointer) {
  std::vector<std::string> tokens;
  for (std::size_t i = 0; i < pointer.size(); ++i) {
    if (pointer[i] == '/') {
      tokens.emplace_back();
    } else if (pointer[i] == '~' && i + 1 < pointer.size() && !tokens.empty()) {
      tokens.back() += pointer[++i] == '1' ? '/' : '~';
    } else if (!tokens.empty()) {
      tokens.back() += pointer[i];
    }
  }
  return tokens;
}

}  // namespace

JsonDocument::JsonDocument(const std::string& file, const std::string& text)
    : file_(file), text_(text) {
  std::size_t last = 0;
  Walker check(*this, text_, &last, nullptr);
  const char* base = text_.data();
  if (!nlohmann::json::sax_parse(TrackingIterator(base, base, &last),
                                 TrackingIterator(base + text_.size(), base, &last), &check)) {
    if (!check.faultReason.empty()) {
      throw SceneError(file_, check.faultLine, check.faultPath, check.faultReason);
    }
    int line = 0;
    int column = 0;
    LineColumn(check.errorPosition > 0 ? check.errorPosition - 1 : 0, &line, &column);
    if (check.errorId == 406) {  // a number beyond the range of a double
      throw SceneError(file_, line, check.errorPath.empty() ? "/" : check.errorPath,
                       "number out of range: " + check.errorToken);
    }
    throw SceneError(
        file_, line, std::string(),
        "invalid JSON at column " + std::to_string(column) + ": " + ParseReason(check.errorWhat));
  }
  try {
    root_ = nlohmann::json::parse(text_);
  } catch (const nlohmann::json::exception& e) {
    // Not expected once the text has passed the check above.
    throw SceneError(file_, 0, std::string(), "invalid JSON: " + ParseReason(e.what()));
  }
}

void JsonDocument::Find(const std::string& pointer, int* exact, int* nearest) const {
  const std::vector<std::string> target = Tokens(pointer);
  std::size_t last = 0;
  Walker walk(*this, text_, &last, &target);
  const char* base = text_.data();
  nlohmann::json::sax_parse(TrackingIterator(base, base, &last),
                            TrackingIterator(base + text_.size(), base, &last), &walk);
  *exact = walk.exactLine;
  *nearest = walk.nearestLine;
}

int JsonDocument::LineOf(const std::string& pointer) const {
  int exact = 0;
  int nearest = 0;
  Find(pointer, &exact, &nearest);
  return exact;
}

void JsonDocument::Fail(const std::string& pointer, const std::string& reason) const {
  int exact = 0;
  int nearest = 0;
  Find(pointer, &exact, &nearest);
  throw SceneError(file_, exact ? exact : nearest, pointer.empty() ? "/" : pointer, reason);
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
  offset = std::min(offset, text_.size());
  const auto begin = text_.begin();
  const auto at = begin + static_cast<std::ptrdiff_t>(offset);
  *line = 1 + static_cast<int>(std::count(begin, at, '\n'));
  const std::size_t newline = offset == 0 ? std::string::npos : text_.rfind('\n', offset - 1);
  const std::size_t start = newline == std::string::npos ? 0 : newline + 1;
  *column = static_cast<int>(offset - start) + 1;
}

}  // namespace qvscene

#include "scene/SceneReader.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <map>
#include <sstream>

#include "acolor/QvAColor.h"
#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCast.h"
#include "cast/QvMCastAnc.h"
#include "layer/QvMLayer.h"
#include "player/QvMCastList.h"
#include "scene/JsonDocument.h"
#include "scene/PictureFile.h"
#include "scene/PngIO.h"
#include "scene/SafeFile.h"
#include "scene/SceneError.h"
#include "toolbox/QvPal.h"
#include "toolbox/tbRGBColor.h"

namespace qvscene {

using json = nlohmann::json;

namespace {

constexpr double kPi = 3.14159265358979323846;

std::string Quote(const std::string& s) { return "\"" + s + "\""; }

std::string TypeName(const json& v) {
  switch (v.type()) {
    case json::value_t::object:
      return "an object";
    case json::value_t::array:
      return "an array";
    case json::value_t::string:
      return "a string";
    case json::value_t::boolean:
      return "a boolean";
    case json::value_t::null:
      return "null";
    case json::value_t::number_float:
      return "a number with a fraction";
    case json::value_t::number_integer:
    case json::value_t::number_unsigned:
      return "an integer";
    default:
      return "a value of another kind";
  }
}

std::string NumberText(double v) {
  std::ostringstream s;
  s << v;
  return s.str();
}

// Checks values against the scene format and reports faults through the
// document, which names the file, the JSON path and the line.
class Checker {
 public:
  explicit Checker(const JsonDocument& doc) : doc_(doc) {}

  [[noreturn]] void Fail(const std::string& path, const std::string& reason) const {
    doc_.Fail(path, reason);
  }

  static std::string Child(const std::string& path, const std::string& key) {
    return path + "/" + JsonDocument::Escape(key);
  }
  static std::string Child(const std::string& path, std::size_t index) {
    return path + "/" + std::to_string(index);
  }

  // v must be an object whose keys are all in allowed ("comment" is always
  // allowed) and which has every key of required.
  void Object(const json& v, const std::string& path, std::initializer_list<const char*> allowed,
              std::initializer_list<const char*> required = {}) const {
    if (!v.is_object()) Fail(path, "expected an object, found " + TypeName(v));
    for (auto it = v.begin(); it != v.end(); ++it) {
      const std::string& key = it.key();
      if (key == "comment") continue;
      bool known = false;
      for (const char* a : allowed) known = known || key == a;
      if (!known) {
        std::string list;
        for (const char* a : allowed) list += std::string(list.empty() ? "" : ", ") + a;
        Fail(Child(path, key), "unknown key " + Quote(key) + " (allowed here: " + list + ")");
      }
    }
    for (const char* r : required) {
      if (!v.contains(r)) Fail(path, "missing key " + Quote(r));
    }
  }

  void Array(const json& v, const std::string& path, std::size_t minSize,
             std::size_t maxSize) const {
    if (!v.is_array()) Fail(path, "expected an array, found " + TypeName(v));
    if (v.size() < minSize || v.size() > maxSize) {
      Fail(path, "expected " + SizeText(minSize, maxSize) + ", found " + std::to_string(v.size()));
    }
  }

  std::int64_t Int(const json& v, const std::string& path, std::int64_t min,
                   std::int64_t max) const {
    if (v.is_number_float() && !(v.get<double>() >= static_cast<double>(min) &&
                                 v.get<double>() <= static_cast<double>(max))) {
      Fail(path, "out of range: " + NumberText(v.get<double>()) + " (allowed " +
                     std::to_string(min) + " to " + std::to_string(max) + ")");
    }
    if (!v.is_number_integer()) Fail(path, "expected an integer, found " + TypeName(v));
    if (v.is_number_unsigned() && v.get<std::uint64_t>() > static_cast<std::uint64_t>(max)) {
      Fail(path, "out of range: " + std::to_string(v.get<std::uint64_t>()) + " (allowed " +
                     std::to_string(min) + " to " + std::to_string(max) + ")");
    }
    const std::int64_t x = v.get<std::int64_t>();
    if (x < min || x > max) {
      Fail(path, "out of range: " + std::to_string(x) + " (allowed " + std::to_string(min) +
                     " to " + std::to_string(max) + ")");
    }
    return x;
  }

  // A number in [min, max], or in (min, max] when minExclusive.
  double Number(const json& v, const std::string& path, double min, double max,
                bool minExclusive = false) const {
    if (!v.is_number()) Fail(path, "expected a number, found " + TypeName(v));
    const double x = v.get<double>();
    const bool low = minExclusive ? !(x > min) : !(x >= min);
    if (low || !(x <= max)) {
      Fail(path, "out of range: " + NumberText(x) + " (allowed " + (minExclusive ? "above " : "") +
                     NumberText(min) + " to " + NumberText(max) + ")");
    }
    return x;
  }

  std::string String(const json& v, const std::string& path) const {
    if (!v.is_string()) Fail(path, "expected a string, found " + TypeName(v));
    return v.get<std::string>();
  }

  std::string NonEmptyString(const json& v, const std::string& path) const {
    std::string s = String(v, path);
    if (s.empty()) Fail(path, "must not be empty");
    return s;
  }

  int Choice(const json& v, const std::string& path,
             std::initializer_list<const char*> names) const {
    const std::string s = String(v, path);
    int i = 0;
    std::string list;
    for (const char* n : names) {
      if (s == n) return i;
      list += std::string(list.empty() ? "" : ", ") + Quote(n);
      ++i;
    }
    Fail(path, "unknown value " + Quote(s) + " (expected one of " + list + ")");
  }

  bool Bool(const json& v, const std::string& path) const {
    if (!v.is_boolean()) Fail(path, "expected true or false, found " + TypeName(v));
    return v.get<bool>();
  }

  // [x, y] of 16-bit integers.
  void Point(const json& v, const std::string& path, std::int16_t* x, std::int16_t* y) const {
    Array(v, path, 2, 2);
    *x = static_cast<std::int16_t>(Int(v[0], Child(path, 0), -32768, 32767));
    *y = static_cast<std::int16_t>(Int(v[1], Child(path, 1), -32768, 32767));
  }

  // "#rrggbb" or [r, g, b].
  tbRGBColor Color(const json& v, const std::string& path) const {
    if (v.is_string()) {
      const std::string s = v.get<std::string>();
      bool ok = s.size() == 7 && s[0] == '#';
      for (std::size_t i = 1; ok && i < 7; ++i)
        ok = std::isxdigit(static_cast<unsigned char>(s[i]));
      if (!ok) Fail(path, "expected a colour \"#rrggbb\", found " + Quote(s));
      const unsigned long rgb = std::strtoul(s.c_str() + 1, nullptr, 16);
      return tbRGBColor(static_cast<unsigned char>(rgb >> 16), static_cast<unsigned char>(rgb >> 8),
                        static_cast<unsigned char>(rgb));
    }
    if (!v.is_array()) {
      Fail(path, "expected a colour \"#rrggbb\" or [red, green, blue], found " + TypeName(v));
    }
    Array(v, path, 3, 3);
    return tbRGBColor(static_cast<unsigned char>(Int(v[0], Child(path, 0), 0, 255)),
                      static_cast<unsigned char>(Int(v[1], Child(path, 1), 0, 255)),
                      static_cast<unsigned char>(Int(v[2], Child(path, 2), 0, 255)));
  }

  // A colour index or a range [first, last] of them.
  void IndexRange(const json& v, const std::string& path, int* first, int* last) const {
    if (v.is_array()) {
      Array(v, path, 2, 2);
      *first = static_cast<int>(Int(v[0], Child(path, 0), 0, 255));
      *last = static_cast<int>(Int(v[1], Child(path, 1), 0, 255));
      if (*last < *first) Fail(path, "range ends before it starts");
      return;
    }
    if (!v.is_number_integer()) {
      Fail(path, "expected a colour index or a range [first, last], found " + TypeName(v));
    }
    *first = *last = static_cast<int>(Int(v, path, 0, 255));
  }

 private:
  static std::string SizeText(std::size_t minSize, std::size_t maxSize) {
    if (minSize == maxSize) return std::to_string(minSize) + " elements";
    if (maxSize == static_cast<std::size_t>(-1)) {
      return "at least " + std::to_string(minSize) + " elements";
    }
    return std::to_string(minSize) + " to " + std::to_string(maxSize) + " elements";
  }

  const JsonDocument& doc_;
};

// Low 16 bits of a value, as a signed 16-bit number.
std::int16_t Low16(std::int64_t v) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
}

// Truncation toward zero to 32 bits; values that do not fit (or NaN) give
// INT32_MIN, as in the frame animation.
std::int32_t Trunc(double d) {
  if (!(d > -2147483649.0 && d < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(d);
}

// The size and offset of a frame's zoomed and rotated image, computed the
// way the frame animation makes it (16-bit corners about the anchor), so
// that the memory is counted before it is taken. A width or height below 1
// means the corners wrapped around: the animation makes no image.
struct ImageBox {
  std::int16_t width = 0, height = 0, offsetX = 0, offsetY = 0;
};

ImageBox FrameImage(std::int16_t x, std::int16_t y, std::int16_t w, std::int16_t h, std::int16_t ax,
                    std::int16_t ay, double zx, double zy, double rotation) {
  const std::int16_t cx = Low16(ax - x);
  const std::int16_t cy = Low16(ay - y);
  std::int16_t px[4] = {0, Low16(w - 1), Low16(w - 1), 0};
  std::int16_t py[4] = {0, 0, Low16(h - 1), Low16(h - 1)};
  const double c = std::cos(rotation);
  const double s = std::sin(rotation);
  for (int k = 0; k < 4; ++k) {
    if (zx != 1.0) px[k] = Low16(std::int64_t{Trunc((px[k] - cx) * zx)} + cx);
    if (zy != 1.0) py[k] = Low16(std::int64_t{Trunc((py[k] - cy) * zy)} + cy);
    if (rotation != 0.0) {
      const double dx = px[k] - cx;
      const double dy = py[k] - cy;
      const std::uint32_t nx = static_cast<std::uint32_t>(cx) +
                               static_cast<std::uint32_t>(Trunc(dx * c)) +
                               static_cast<std::uint32_t>(Trunc(dy * s));
      const std::uint32_t ny = static_cast<std::uint32_t>(cy) +
                               static_cast<std::uint32_t>(Trunc(dy * c)) -
                               static_cast<std::uint32_t>(Trunc(dx * s));
      px[k] = Low16(std::int64_t{nx});
      py[k] = Low16(std::int64_t{ny});
    }
  }
  const auto [minX, maxX] = std::minmax({px[0], px[1], px[2], px[3]});
  const auto [minY, maxY] = std::minmax({py[0], py[1], py[2], py[3]});
  ImageBox box;
  box.width = Low16(std::int64_t{Low16(maxX - minX)} + 1);
  box.height = Low16(std::int64_t{Low16(maxY - minY)} + 1);
  box.offsetX = Low16(minX - cx);
  box.offsetY = Low16(minY - cy);
  return box;
}

// The area spanning the images of all frames of an animation, about their
// anchors and the origin, as the animation computes it (16-bit sums).
class FrameArea {
 public:
  void Add(const ImageBox& b) {
    const std::int16_t x1 = Low16(std::int64_t{Low16(b.offsetX + b.width)} - 1);
    const std::int16_t y1 = Low16(std::int64_t{Low16(b.offsetY + b.height)} - 1);
    if (!any_) {
      minX_ = b.offsetX, minY_ = b.offsetY, maxX_ = x1, maxY_ = y1;
      any_ = true;
      return;
    }
    minX_ = std::min(minX_, b.offsetX), minY_ = std::min(minY_, b.offsetY);
    maxX_ = std::max(maxX_, x1), maxY_ = std::max(maxY_, y1);
  }
  // 0 when the size wraps around (the world is then not made).
  std::int32_t Width() const { return Size(minX_, maxX_); }
  std::int32_t Height() const { return Size(minY_, maxY_); }

 private:
  static std::int32_t Size(std::int16_t lo, std::int16_t hi) {
    const std::int16_t size = Low16(
        std::int64_t{Low16(std::max<std::int16_t>(hi, 0) - std::min<std::int16_t>(lo, 0))} + 1);
    return size < 1 ? 0 : size;
  }
  bool any_ = false;
  std::int16_t minX_ = 0, minY_ = 0, maxX_ = 0, maxY_ = 0;
};

std::string DirOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return std::string();
  return path.substr(0, slash + 1);
}

std::string Resolve(const std::string& dir, const std::string& file) {
  if (file.empty() || file[0] == '/' || dir.empty()) return file;
  return dir.back() == '/' ? dir + file : dir + "/" + file;
}

void ToColorTable(const Picture& p, tbColorTable* table) {
  for (int i = 0; i < 256; ++i) {
    tbRGBColor c(p.palette[i][0], p.palette[i][1], p.palette[i][2]);
    table->SetCTTable(static_cast<std::int16_t>(i), &c);
  }
}

// True when the reference list names member id of cast.
bool InList(QvMCastList* list, QvMCast* cast, std::int16_t id) {
  QvMCast* c = nullptr;
  std::int16_t i = -1;
  for (std::int16_t k = 0; list->Get(k, &c, &i); ++k) {
    if (c == cast && i == id) return true;
  }
  return false;
}

// Settings applied once the members are placed on their layers, since
// placing can change a member's time range and with it the scroll steps.
struct Pending {
  std::int16_t id = -1;
  std::string path;  // the member's
  bool hasPath = false;
  bool pathByCount = false;
  double pathValue = 1.0;
  std::int16_t pathOffset = 0;
  bool scroll = false;
  bool scrollH = false, scrollV = false;
  bool countH = false, countV = false;
  double valueH = 1.0, valueV = 1.0;
};

}  // namespace

// Builds a Scene from a checked document through the library's public
// interface.
class SceneBuilder {
 public:
  SceneBuilder(const JsonDocument& doc, const LoadOptions& options)
      : doc_(doc), check_(doc), options_(options) {}

  std::unique_ptr<Scene> Build();

 private:
  void ReadOutput(const json& v);
  void ReadPictures(const json& v);
  void ReadMember(const json& v, const std::string& path);
  void ReadFrames(const json& member, const std::string& path, const Picture* memberPicture,
                  std::int16_t id, unsigned char* name);
  void ReadColors(const json& v, const std::string& path, const tbColorTable& own, std::int16_t id,
                  unsigned char* name, std::int32_t start);
  void ReadPath(const json& member, const std::string& path, std::int16_t id, unsigned char* name,
                Pending* pending);
  void ReadScroll(const json& v, const std::string& path, std::int16_t id, unsigned char* name,
                  Pending* pending);
  void ReadLayers(const json& v);
  void ApplyPending();
  QvPal ReadArea(const json& v, const std::string& path);
  const Picture& PictureRef(const json& v, const std::string& path);
  void Need(bool ok, const std::string& path, const std::string& what);
  void Charge(std::uint64_t bytes, const std::string& path, const std::string& what);

  const JsonDocument& doc_;
  Checker check_;
  LoadOptions options_;
  std::unique_ptr<Scene> scene_;
  std::map<std::string, Picture> pictures_;
  std::string paletteName_;
  std::string palettePath_;
  std::vector<Pending> pending_;
  std::uint64_t used_ = 0;  // estimated bytes of pixels so far
};

void SceneBuilder::Need(bool ok, const std::string& path, const std::string& what) {
  if (!ok) {
    throw BuildError(SceneError::Format(doc_.File(), doc_.LineOf(path), path.empty() ? "/" : path,
                                        "the library could not " + what));
  }
}

void SceneBuilder::Charge(std::uint64_t bytes, const std::string& path, const std::string& what) {
  used_ += bytes;
  if (used_ <= options_.maxMemory) return;
  check_.Fail(path, what + " needs about " + Megabytes(bytes) + ", which brings the scene to " +
                        Megabytes(used_) + ", over the memory limit of " +
                        Megabytes(options_.maxMemory) +
                        (options_.limitHint.empty() ? "" : " (" + options_.limitHint + ")"));
}

std::unique_ptr<Scene> SceneBuilder::Build() {
  scene_.reset(new Scene());
  scene_->file_ = doc_.File();
  const json& root = doc_.Root();
  check_.Object(root, "", {"output", "pictures", "members", "layers"},
                {"output", "pictures", "members", "layers"});
  // Pictures first: the output names its palette by picture.
  ReadPictures(root["pictures"]);
  ReadOutput(root["output"]);
  scene_->cast_.reset(new QvMCast());
  scene_->layers_.reset(new QvMLayer());
  const json& members = root["members"];
  check_.Array(members, "/members", 1, 10000);
  for (std::size_t i = 0; i < members.size(); ++i) {
    ReadMember(members[i], Checker::Child("/members", i));
  }
  ReadLayers(root["layers"]);
  ApplyPending();
  scene_->memory_ = used_;
  return std::move(scene_);
}

const Picture& SceneBuilder::PictureRef(const json& v, const std::string& path) {
  const std::string name = check_.String(v, path);
  auto it = pictures_.find(name);
  if (it == pictures_.end()) check_.Fail(path, "undefined picture " + Quote(name));
  return it->second;
}

void SceneBuilder::ReadPictures(const json& v) {
  if (!v.is_object()) check_.Fail("/pictures", "expected an object, found " + TypeName(v));
  const std::string dir = options_.pictureDir.empty() ? DirOf(doc_.File()) : options_.pictureDir;
  for (auto it = v.begin(); it != v.end(); ++it) {
    const std::string path = Checker::Child("/pictures", it.key());
    if (it.key().empty()) check_.Fail(path, "a picture name must not be empty");
    const std::string file = Resolve(dir, check_.NonEmptyString(it.value(), path));
    Picture picture;
    std::string error;
    const std::uint64_t room = options_.maxMemory > used_ ? options_.maxMemory - used_ : 0;
    if (!ReadPictureFile(file, &picture, &error, room)) check_.Fail(path, error);
    Charge(static_cast<std::uint64_t>(picture.width) * static_cast<std::uint64_t>(picture.height),
           path, "the picture");
    scene_->files_.push_back(file);
    pictures_.emplace(it.key(), std::move(picture));
  }
}

void SceneBuilder::ReadOutput(const json& v) {
  const std::string path = "/output";
  check_.Object(v, path, {"width", "height", "from", "to", "step", "background", "palette", "loop"},
                {"width", "height", "to", "palette"});
  Scene& s = *scene_;
  s.width_ = static_cast<std::int16_t>(check_.Int(v["width"], path + "/width", 1, 4096));
  s.height_ = static_cast<std::int16_t>(check_.Int(v["height"], path + "/height", 1, 4096));
  if (v.contains("from")) {
    s.from_ = static_cast<std::int32_t>(check_.Int(v["from"], path + "/from", -1000000, 1000000));
  }
  s.to_ = static_cast<std::int32_t>(check_.Int(v["to"], path + "/to", -1000000, 1000000));
  if (s.to_ < s.from_)
    check_.Fail(path + "/to",
                "the output ends before it starts (\"from\" is " + std::to_string(s.from_) + ")");
  if (v.contains("step")) {
    s.step_ = static_cast<std::int32_t>(check_.Int(v["step"], path + "/step", 1, 10000));
  }
  if ((static_cast<std::int64_t>(s.to_) - s.from_) / s.step_ + 1 > 20000) {
    check_.Fail(path + (v.contains("step") ? "/step" : "/to"), "more than 20000 moments to render");
  }
  if (v.contains("background")) {
    s.background_ =
        static_cast<unsigned char>(check_.Int(v["background"], path + "/background", 0, 255));
  }
  if (v.contains("loop"))
    s.loops_ = static_cast<int>(check_.Int(v["loop"], path + "/loop", 0, 65535));
  const Picture& palette = PictureRef(v["palette"], path + "/palette");
  ToColorTable(palette, &s.basePalette_);
  s.outputLine_ = doc_.LineOf(path);
  // The off-screen world of a moment and the picture it is copied to.
  Charge(2 * static_cast<std::uint64_t>(s.width_) * static_cast<std::uint64_t>(s.height_),
         path + "/width", "a moment of the output");
}

void SceneBuilder::ReadMember(const json& v, const std::string& path) {
  check_.Object(v, path,
                {"name", "picture", "colorTable", "transparent", "frames", "mode", "speed", "start",
                 "end", "path", "position", "scroll", "colors"},
                {"name"});
  std::string name = check_.NonEmptyString(v["name"], path + "/name");
  if (scene_->MemberId(name) >= 0)
    check_.Fail(path + "/name", "duplicate member name " + Quote(name));
  if (!v.contains("frames") && !v.contains("colors")) {
    check_.Fail(path, "a member needs \"frames\" or \"colors\"");
  }
  const Picture* picture = nullptr;
  if (v.contains("picture")) picture = &PictureRef(v["picture"], path + "/picture");
  const Picture* tablePicture = picture;
  if (v.contains("colorTable")) tablePicture = &PictureRef(v["colorTable"], path + "/colorTable");
  if (!tablePicture) check_.Fail(path, "a member needs a \"colorTable\" (or a \"picture\")");
  if (v.contains("path") && v.contains("position")) {
    check_.Fail(path + "/position", "give either \"path\" or \"position\", not both");
  }
  for (const char* key : {"mode", "speed", "transparent"}) {
    if (v.contains(key) && !v.contains("frames")) {
      check_.Fail(Checker::Child(path, key), Quote(key) + " needs \"frames\"");
    }
  }
  std::int32_t start = scene_->from_;
  std::int32_t end = scene_->to_;
  if (v.contains("start")) {
    start = static_cast<std::int32_t>(check_.Int(v["start"], path + "/start", -1000000, 1000000));
  }
  if (v.contains("end")) {
    end = static_cast<std::int32_t>(check_.Int(v["end"], path + "/end", -1000000, 1000000));
  }
  if (end < start)
    check_.Fail(path + (v.contains("end") ? "/end" : "/start"),
                "the member ends (" + std::to_string(end) + ") before it starts (" +
                    std::to_string(start) + ")");

  QvMCast* cast = scene_->cast_.get();
  unsigned char* cname = reinterpret_cast<unsigned char*>(name.data());
  const std::int16_t id = cast->New(cname);
  Need(id >= 0, path, "create member " + Quote(name));
  Scene::Member member;
  member.name = name;
  member.id = id;

  // Own colour table, with the palette area of the opaque colours when the
  // member has a transparent index.
  tbColorTable own;
  ToColorTable(*tablePicture, &own);
  QvPal opaque;
  bool hasTransparent = false;
  if (v.contains("transparent")) {
    const int t = static_cast<int>(check_.Int(v["transparent"], path + "/transparent", 0, 255));
    opaque.SetRange(0, 255, 1);
    opaque.SetFlag(static_cast<unsigned char>(t), 0);
    hasTransparent = true;
  }
  Need(cast->RegOrgCTable(id, &own, hasTransparent ? &opaque : nullptr, cname) == id, path,
       "register the colour table of " + Quote(name));

  if (v.contains("frames")) ReadFrames(v, path, picture, id, cname);
  if (v.contains("colors")) ReadColors(v["colors"], path + "/colors", own, id, cname, start);
  Need(cast->SetStartEnd(id, start, end) != 0, path, "set the time range of " + Quote(name));

  Pending pending;
  pending.id = id;
  pending.path = path;
  ReadPath(v, path, id, cname, &pending);
  if (v.contains("scroll")) ReadScroll(v["scroll"], path + "/scroll", id, cname, &pending);
  pending_.push_back(pending);
  scene_->members_.push_back(member);
}

void SceneBuilder::ReadFrames(const json& member, const std::string& path,
                              const Picture* memberPicture, std::int16_t id, unsigned char* name) {
  const std::string framesPath = path + "/frames";
  const json& frames = member["frames"];
  check_.Array(frames, framesPath, 1, 10000);
  auto anim = std::make_unique<QvAFrame>();
  anim->LockUpdateMCast();
  std::int64_t total = 0;
  const std::string memberName = reinterpret_cast<const char*>(name);
  FrameArea area;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const json& f = frames[i];
    const std::string fp = Checker::Child(framesPath, i);
    check_.Object(f, fp, {"rect", "anchor", "interval", "zoom", "rotation", "picture"}, {"rect"});
    const Picture* picture = memberPicture;
    if (f.contains("picture")) picture = &PictureRef(f["picture"], fp + "/picture");
    if (!picture) check_.Fail(fp, "a frame needs a picture (the member's \"picture\" or its own)");
    const json& rect = f["rect"];
    const std::string rp = fp + "/rect";
    check_.Array(rect, rp, 4, 4);
    const std::int64_t x = check_.Int(rect[0], rp + "/0", 0, picture->width - 1);
    const std::int64_t y = check_.Int(rect[1], rp + "/1", 0, picture->height - 1);
    const std::int64_t w = check_.Int(rect[2], rp + "/2", 1, picture->width - x);
    const std::int64_t h = check_.Int(rect[3], rp + "/3", 1, picture->height - y);
    std::int16_t ax = static_cast<std::int16_t>(x + w / 2);
    std::int16_t ay = static_cast<std::int16_t>(y + h / 2);
    if (f.contains("anchor")) check_.Point(f["anchor"], fp + "/anchor", &ax, &ay);
    std::int16_t interval = 1;
    if (f.contains("interval")) {
      interval = static_cast<std::int16_t>(check_.Int(f["interval"], fp + "/interval", 1, 32767));
    }
    total += interval;
    if (total > 32767) check_.Fail(fp + "/interval", "the frames last more than 32767 in all");
    double zx = 1.0;
    double zy = 1.0;
    if (f.contains("zoom")) {
      const json& z = f["zoom"];
      if (z.is_array()) {
        check_.Array(z, fp + "/zoom", 2, 2);
        zx = check_.Number(z[0], fp + "/zoom/0", 0.0, 16.0, true);
        zy = check_.Number(z[1], fp + "/zoom/1", 0.0, 16.0, true);
      } else {
        zx = zy = check_.Number(z, fp + "/zoom", 0.0, 16.0, true);
      }
    }
    double degrees = 0.0;
    if (f.contains("rotation")) {
      degrees = check_.Number(f["rotation"], fp + "/rotation", -3600.0, 3600.0);
    }
    const double radians = degrees * kPi / 180.0;
    // The value that moves the image furthest: the anchor, else the zoom.
    const std::string culprit = f.contains("anchor")     ? fp + "/anchor"
                                : f.contains("zoom")     ? fp + "/zoom"
                                : f.contains("rotation") ? fp + "/rotation"
                                                         : rp;
    const ImageBox box = FrameImage(static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                    static_cast<std::int16_t>(w), static_cast<std::int16_t>(h), ax,
                                    ay, zx, zy, radians);
    if (box.width < 1 || box.height < 1) {
      check_.Fail(culprit,
                  "zoomed and rotated about its anchor, the image of this frame would be more than "
                  "32767 pixels wide or high");
    }
    area.Add(box);
    // The source rectangle, the image and its mask, in the animation and in
    // the member's copy of it.
    Charge(2 * (static_cast<std::uint64_t>(w) * static_cast<std::uint64_t>(h) +
                2 * static_cast<std::uint64_t>(box.width) * static_cast<std::uint64_t>(box.height)),
           culprit,
           "the image of this frame (" + std::to_string(box.width) + " x " +
               std::to_string(box.height) + " pixels, zoomed and rotated)");
    const std::string what = " frame " + std::to_string(i) + " of member " + Quote(memberName);
    const std::int16_t n =
        anim->Reg(-1, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                  static_cast<std::int16_t>(w), static_cast<std::int16_t>(h), ax, ay, interval);
    Need(n >= 0, fp, "add" + what);
    Need(anim->SetZoom(n, zx, zy) != 0, fp, "zoom" + what);
    Need(anim->SetRot(n, radians) != 0, fp, "rotate" + what);
    Picture* src = const_cast<Picture*>(picture);
    Need(anim->SetImage(n, src->pixels.data(), static_cast<std::int16_t>(src->width),
                        static_cast<std::int16_t>(src->width),
                        static_cast<std::int16_t>(src->height)) != 0,
         fp, "make the image of" + what);
  }
  // The member's off-screen world spans every frame's image.
  Charge(static_cast<std::uint64_t>(area.Width()) * static_cast<std::uint64_t>(area.Height()),
         framesPath,
         "the area of member " + Quote(memberName) + " (" + std::to_string(area.Width()) + " x " +
             std::to_string(area.Height()) + " pixels)");
  char mode = QvMPlayer::kPlayLoop;
  if (member.contains("mode")) {
    mode = static_cast<char>(
        check_.Choice(member["mode"], path + "/mode", {"once", "bounce", "loop"}));
  }
  std::int16_t speed = 30;
  if (member.contains("speed")) {
    speed = static_cast<std::int16_t>(check_.Int(member["speed"], path + "/speed", 1, 1000));
  }
  anim->SetMode(mode);
  anim->SetSpeed(speed);
  anim->UnlockUpdateMCast();
  QvMCast* cast = scene_->cast_.get();
  // The scene owns the animation from here on, so that it outlives the
  // member's reference to it whatever happens next.
  QvAFrame* own = anim.get();
  scene_->frameAnims_.push_back(std::move(anim));
  const std::string of = " of member " + Quote(memberName);
  Need(cast->RegAFrame(id, own, scene_->from_, name, own) == id, framesPath,
       "register the frame animation" + of);
  if (!InList(own, cast, id)) {
    // The member refers to the animation, which could not note the member:
    // drop the member's reference before the animation can go.
    cast->DelAFrame(id);
    Need(false, framesPath, "register the frame animation" + of);
  }
  // The member draws with its own copy: make sure the copy is whole (the
  // registration goes on without a copy, or with a partial one, when memory
  // runs short).
  QvAFrame* copy = cast->AFrame(id);
  Need(copy != nullptr && copy->CountAFrame() == own->CountAFrame(), framesPath,
       "copy the frame animation" + of);
  for (std::int16_t n = 0; n < copy->CountAFrame(); ++n) {
    Need(copy->HasAImage(n) == 1, Checker::Child(framesPath, static_cast<std::size_t>(n)),
         "copy the image of frame " + std::to_string(n) + of);
  }
}

QvPal SceneBuilder::ReadArea(const json& v, const std::string& path) {
  check_.Array(v, path, 1, 256);
  QvPal pal;
  for (std::size_t i = 0; i < v.size(); ++i) {
    int first = 0;
    int last = 0;
    check_.IndexRange(v[i], Checker::Child(path, i), &first, &last);
    for (int k = first; k <= last; ++k) pal.SetFlag(static_cast<unsigned char>(k), 1);
  }
  return pal;
}

void SceneBuilder::ReadColors(const json& v, const std::string& path, const tbColorTable& own,
                              std::int16_t id, unsigned char* name, std::int32_t start) {
  check_.Array(v, path, 1, 4);
  bool seen[4] = {};
  QvMCast* cast = scene_->cast_.get();
  for (std::size_t i = 0; i < v.size(); ++i) {
    const json& c = v[i];
    const std::string cp = Checker::Child(path, i);
    if (!c.is_object()) check_.Fail(cp, "expected an object, found " + TypeName(c));
    if (!c.contains("kind")) check_.Fail(cp, "missing key \"kind\"");
    // The choices stand in the order of the kind codes (QvAColor::kCycle ...).
    const int kind = check_.Choice(c["kind"], cp + "/kind", {"cycle", "flash", "switch", "fade"});
    switch (kind) {
      case QvAColor::kCycle:
      case QvAColor::kFlash:
        check_.Object(c, cp, {"kind", "area", "speed", "mode"}, {"area"});
        break;
      case QvAColor::kSwitch:
        check_.Object(c, cp, {"kind", "area", "speed", "mode", "tables"}, {"area", "tables"});
        break;
      default:
        check_.Object(c, cp, {"kind", "area", "speed", "mode", "to", "count"}, {"area", "to"});
        break;
    }
    if (seen[kind])
      check_.Fail(cp + "/kind", "a member has at most one colour animation of each kind");
    seen[kind] = true;
    QvPal area = ReadArea(c["area"], cp + "/area");
    char mode = kind == 3 ? 0 : 2;
    if (c.contains("mode")) {
      mode = static_cast<char>(check_.Choice(c["mode"], cp + "/mode", {"once", "bounce", "loop"}));
    }
    std::int16_t speed = 30;
    if (c.contains("speed")) {
      speed = static_cast<std::int16_t>(check_.Int(c["speed"], cp + "/speed", 1, 1000));
    }
    std::unique_ptr<QvAColor> anim;
    QvMCastList* list = nullptr;
    if (kind == QvAColor::kCycle) {
      auto a = std::make_unique<QvACycle>();
      a->SetMode(mode);
      a->SetSpeed(speed);
      Need(a->RegArea(&area) != 0, cp + "/area", "register a palette area");
      list = a.get();
      anim = std::move(a);
    } else if (kind == QvAColor::kFlash) {
      auto a = std::make_unique<QvAFlash>();
      a->SetMode(mode);
      a->SetSpeed(speed);
      Need(a->RegArea(&area) != 0, cp + "/area", "register a palette area");
      list = a.get();
      anim = std::move(a);
    } else if (kind == QvAColor::kSwitch) {
      auto a = std::make_unique<QvASwitch>();
      a->SetMode(mode);
      a->SetSpeed(speed);
      Need(a->RegArea(&area) != 0, cp + "/area", "register a palette area");
      const json& tables = c["tables"];
      const std::string tp = cp + "/tables";
      check_.Array(tables, tp, 1, 256);
      for (std::size_t j = 0; j < tables.size(); ++j) {
        const json& t = tables[j];
        const std::string p = Checker::Child(tp, j);
        tbColorTable table = own;
        if (t.is_string()) {
          ToColorTable(PictureRef(t, p), &table);
        } else {
          check_.Object(t, p, {"picture", "entries"});
          if (t.contains("picture")) ToColorTable(PictureRef(t["picture"], p + "/picture"), &table);
          if (t.contains("entries")) {
            const json& e = t["entries"];
            const std::string ep = p + "/entries";
            check_.Array(e, ep, 1, 256);
            for (std::size_t k = 0; k < e.size(); ++k) {
              const std::string kp = Checker::Child(ep, k);
              check_.Array(e[k], kp, 2, 2);
              int first = 0;
              int last = 0;
              check_.IndexRange(e[k][0], kp + "/0", &first, &last);
              tbRGBColor color = check_.Color(e[k][1], kp + "/1");
              for (int x = first; x <= last; ++x)
                table.SetCTTable(static_cast<std::int16_t>(x), &color);
            }
          }
        }
        Need(a->RegCTable(-1, &table) != 0, p, "register a colour table");
      }
      list = a.get();
      anim = std::move(a);
    } else {
      auto a = std::make_unique<QvAFade>();
      a->SetMode(mode);
      a->SetSpeed(speed);
      Need(a->RegArea(&area) != 0, cp + "/area", "register a palette area");
      a->RegColor(check_.Color(c["to"], cp + "/to"));
      if (c.contains("count")) {
        a->SetCount(static_cast<std::int16_t>(check_.Int(c["count"], cp + "/count", 2, 32767)));
      }
      list = a.get();
      anim = std::move(a);
    }
    QvAColor* own = anim.get();
    scene_->colorAnims_.push_back(std::move(anim));
    Need(cast->RegAColor(id, own, static_cast<char>(kind), start, name, list) == id, cp,
         "register a colour animation");
    if (!InList(list, cast, id)) {
      cast->DelAColor(id, static_cast<char>(kind));
      Need(false, cp, "register a colour animation");
    }
    QvAColor* copy = kind == QvAColor::kCycle    ? cast->ACycle(id)
                     : kind == QvAColor::kFlash  ? cast->AFlash(id)
                     : kind == QvAColor::kSwitch ? cast->ASwitch(id)
                                                 : cast->AFade(id);
    Need(copy != nullptr && copy->Error() == 0 && copy->Count() == own->Count(), cp,
         "copy a colour animation");
  }
}

void SceneBuilder::ReadPath(const json& member, const std::string& path, std::int16_t id,
                            unsigned char* name, Pending* pending) {
  std::vector<QvMCastAnc> anchors;
  char type = QvMCast::kAncClamp;
  if (member.contains("position")) {
    QvMCastAnc a;
    std::int16_t x = 0;
    std::int16_t y = 0;
    check_.Point(member["position"], path + "/position", &x, &y);
    a.point = tbPoint(x, y);
    anchors.push_back(a);
  } else if (member.contains("path")) {
    const json& p = member["path"];
    const std::string pp = path + "/path";
    check_.Object(p, pp, {"points", "type", "step", "count", "offset", "between"}, {"points"});
    if (p.contains("step") && p.contains("count")) {
      check_.Fail(pp + "/count", "give either \"step\" or \"count\", not both");
    }
    type = QvMCast::kAncWrap;
    if (p.contains("type")) {
      type = static_cast<char>(QvMCast::kAncClamp + check_.Choice(p["type"], pp + "/type",
                                                                  {"clamp", "reflect", "wrap"}));
    }
    int between = 0;
    if (p.contains("between"))
      between = static_cast<int>(check_.Int(p["between"], pp + "/between", 0, 1000));
    const json& points = p["points"];
    check_.Array(points, pp + "/points", 1, 32767);
    if (points.size() + (points.size() - 1) * static_cast<std::size_t>(between) > 32767) {
      check_.Fail(pp + "/between", "the path would have more than 32767 anchors");
    }
    std::vector<tbPoint> keys;
    for (std::size_t i = 0; i < points.size(); ++i) {
      std::int16_t x = 0;
      std::int16_t y = 0;
      check_.Point(points[i], Checker::Child(pp + "/points", i), &x, &y);
      keys.emplace_back(x, y);
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
      QvMCastAnc a;
      a.point = keys[i];
      a.flag = 1;
      anchors.push_back(a);
      if (i + 1 == keys.size()) break;
      // Anchors between two key points, evenly spaced on the straight line.
      for (int k = 1; k <= between; ++k) {
        const double f = static_cast<double>(k) / (between + 1);
        QvMCastAnc b;
        b.point = tbPoint(
            static_cast<std::int32_t>(std::lround(keys[i].x + (keys[i + 1].x - keys[i].x) * f)),
            static_cast<std::int32_t>(std::lround(keys[i].y + (keys[i + 1].y - keys[i].y) * f)));
        b.flag = 2;
        anchors.push_back(b);
      }
    }
    if (p.contains("step")) {
      pending->pathValue = check_.Number(p["step"], pp + "/step", -1000.0, 1000.0);
    } else if (p.contains("count")) {
      pending->pathByCount = true;
      pending->pathValue = check_.Number(p["count"], pp + "/count", 0.0, 1000000.0, true);
    }
    if (p.contains("offset")) {
      pending->pathOffset =
          static_cast<std::int16_t>(check_.Int(p["offset"], pp + "/offset", -32768, 32767));
    }
  } else {
    return;
  }
  pending->hasPath = true;
  QvMCast* cast = scene_->cast_.get();
  const std::string where = member.contains("position") ? path + "/position" : path + "/path";
  Need(
      cast->RegAnc(id, anchors.data(), static_cast<std::int16_t>(anchors.size()), type, name) == id,
      where, "register the anchor path");
  Need(cast->IsAnc(id) != 0, where, "store the anchor path");
}

void SceneBuilder::ReadScroll(const json& v, const std::string& path, std::int16_t id,
                              unsigned char* name, Pending* pending) {
  check_.Object(v, path, {"directions", "stepH", "stepV", "countH", "countV"}, {"directions"});
  const json& dirs = v["directions"];
  check_.Array(dirs, path + "/directions", 1, 2);
  char bits = 0;
  for (std::size_t i = 0; i < dirs.size(); ++i) {
    const int d = check_.Choice(dirs[i], Checker::Child(path + "/directions", i),
                                {"left", "right", "up", "down"});
    const char kBits[] = {QvMCast::kScrollLeft, QvMCast::kScrollRight, QvMCast::kScrollUp,
                          QvMCast::kScrollDown};
    const char bit = kBits[d];
    const char opposite = static_cast<char>(d % 2 == 0 ? bit << 1 : bit >> 1);
    if (bits & (bit | opposite)) {
      check_.Fail(Checker::Child(path + "/directions", i),
                  "give one horizontal and one vertical direction at most");
    }
    bits = static_cast<char>(bits | bit);
  }
  if (v.contains("stepH") && v.contains("countH"))
    check_.Fail(path + "/countH", "give either \"stepH\" or \"countH\", not both");
  if (v.contains("stepV") && v.contains("countV"))
    check_.Fail(path + "/countV", "give either \"stepV\" or \"countV\", not both");
  pending->scroll = true;
  pending->scrollH = (bits & (QvMCast::kScrollLeft | QvMCast::kScrollRight)) != 0;
  pending->scrollV = (bits & (QvMCast::kScrollUp | QvMCast::kScrollDown)) != 0;
  if (v.contains("stepH"))
    pending->valueH = check_.Number(v["stepH"], path + "/stepH", 0.0, 10000.0);
  if (v.contains("stepV"))
    pending->valueV = check_.Number(v["stepV"], path + "/stepV", 0.0, 10000.0);
  if (v.contains("countH")) {
    pending->countH = true;
    pending->valueH = check_.Number(v["countH"], path + "/countH", 0.0, 1000000.0, true);
  }
  if (v.contains("countV")) {
    pending->countV = true;
    pending->valueV = check_.Number(v["countV"], path + "/countV", 0.0, 1000000.0, true);
  }
  Need(scene_->cast_->RegScroll(id, bits, name) == id, path, "register the scroll directions");
}

void SceneBuilder::ReadLayers(const json& v) {
  check_.Array(v, "/layers", 1, 1000);
  QvMLayer* layers = scene_->layers_.get();
  QvMCast* cast = scene_->cast_.get();
  for (std::size_t i = 0; i < v.size(); ++i) {
    const std::string lp = Checker::Child("/layers", i);
    const json& layer = v[i];
    check_.Object(layer, lp, {"id", "members"}, {"members"});
    std::int16_t layerId = static_cast<std::int16_t>(i);
    if (layer.contains("id"))
      layerId = static_cast<std::int16_t>(check_.Int(layer["id"], lp + "/id", -32768, 32767));
    const json& refs = layer["members"];
    check_.Array(refs, lp + "/members", 0, 10000);
    const std::int16_t index = layers->New(-1, layerId);
    Need(index >= 0, lp, "create layer " + std::to_string(i));
    for (std::size_t k = 0; k < refs.size(); ++k) {
      const std::string rp = Checker::Child(lp + "/members", k);
      const json& ref = refs[k];
      std::string memberPath = rp;
      char fit = QvMLayer::kFitNone;
      const json* nameValue = &ref;
      if (ref.is_object()) {
        check_.Object(ref, rp, {"member", "fit"}, {"member"});
        nameValue = &ref["member"];
        memberPath = rp + "/member";
        if (ref.contains("fit")) {
          fit = static_cast<char>(QvMLayer::kFitNone +
                                  check_.Choice(ref["fit"], rp + "/fit",
                                                {"none", "move", "trimStart", "trimEnd", "all"}));
        }
      } else if (!ref.is_string()) {
        check_.Fail(rp, "expected a member name or {\"member\": name, \"fit\": mode}, found " +
                            TypeName(ref));
      }
      const std::string name = check_.String(*nameValue, memberPath);
      const std::int16_t id = scene_->MemberId(name);
      if (id < 0) check_.Fail(memberPath, "undefined member " + Quote(name));
      Need(layers->RegCast(index, cast, id, fit) != 0, rp, "place " + Quote(name) + " on a layer");
    }
  }
}

void SceneBuilder::ApplyPending() {
  QvMCast* cast = scene_->cast_.get();
  for (const Pending& p : pending_) {
    if (p.hasPath) {
      if (p.pathByCount) {
        Need(cast->SetAncCount(p.id, p.pathValue) != 0, p.path, "set a path count");
      } else {
        Need(cast->SetAncStep(p.id, p.pathValue) != 0, p.path, "set a path step");
      }
      Need(cast->SetAncOffset(p.id, p.pathOffset) != 0, p.path, "set a path offset");
    }
    if (p.scroll) {
      if (p.countH) {
        Need(cast->SetScrCountH(p.id, p.valueH) != 0, p.path, "set a scroll count");
      } else {
        Need(cast->SetScrStepH(p.id, p.scrollH ? p.valueH : 0.0) != 0, p.path, "set a scroll step");
      }
      if (p.countV) {
        Need(cast->SetScrCountV(p.id, p.valueV) != 0, p.path, "set a scroll count");
      } else {
        Need(cast->SetScrStepV(p.id, p.scrollV ? p.valueV : 0.0) != 0, p.path, "set a scroll step");
      }
    }
  }
}

std::unique_ptr<Scene> LoadSceneText(const std::string& file, const std::string& text,
                                     const LoadOptions& options) {
  JsonDocument doc(file, text);
  SceneBuilder builder(doc, options);
  return builder.Build();
}

std::unique_ptr<Scene> LoadScene(const std::string& path, const LoadOptions& options) {
  std::string text;
  std::string error;
  if (!ReadInput(path, kMaxSceneBytes, &text, &error)) {
    throw SceneError(path, 0, std::string(), error);
  }
  return LoadSceneText(path, text, options);
}

}  // namespace qvscene

#include "import/SceneWriter.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <numeric>

#include "import/FormatError.h"
#include "import/Sheet.h"
#include "scene/PngIO.h"

namespace qvimport {
namespace {

using ojson = nlohmann::ordered_json;

// Scene limits that an import must stay inside.
constexpr int kMaxOutputSide = 4096;
constexpr int kMaxFrames = 10000;
constexpr int kMaxIntervals = 32767;
constexpr int kMaxTables = 256;
// An imported picture's movie lasts until all active ranges are back at the
// start, or the longest period of them when that takes longer than this many
// units (20 s).
constexpr int kMaxStillLength = 600;

std::string Hex(const unsigned char* rgb) {
  char s[8];
  std::snprintf(s, sizeof s, "#%02x%02x%02x", rgb[0], rgb[1], rgb[2]);
  return s;
}

std::string Fixed(double v, int digits) {
  char s[64];
  std::snprintf(s, sizeof s, "%.*f", digits, v);
  return s;
}

std::string SpeedText(double steps, int speed) {
  double deviation = (speed - steps) / steps * 100.0;
  if (std::fabs(deviation) < 0.05) deviation = 0.0;
  return Fixed(steps, 2) + " steps/s runs at " + std::to_string(speed) + " (" +
         (deviation >= 0 ? "+" : "") + Fixed(deviation, 1) + "%)";
}

ojson Range(int first, int last) {
  return first == last ? ojson(first) : ojson::array({first, last});
}

// JSON text that a person can read: values that fit on a line stay on one.
void Write(const ojson& v, int indent, std::string* out) {
  const std::string flat = v.dump();
  if (flat.size() + static_cast<std::size_t>(indent) <= 100 || !v.is_structured() || v.empty()) {
    *out += flat;
    return;
  }
  const std::string pad(static_cast<std::size_t>(indent) + 2, ' ');
  const bool object = v.is_object();
  // An array of short flat values: as many on a line as fit.
  bool flatItems = !object;
  for (const ojson& item : v) flatItems = flatItems && item.dump().size() <= 40;
  if (flatItems) {
    std::string line;
    *out += "[\n";
    for (std::size_t i = 0; i < v.size(); ++i) {
      const std::string item = v[i].dump() + (i + 1 < v.size() ? "," : "");
      if (!line.empty() && pad.size() + line.size() + 1 + item.size() > 100) {
        *out += pad + line + "\n";
        line.clear();
      }
      line += (line.empty() ? "" : " ") + item;
    }
    *out += pad + line + "\n" + std::string(static_cast<std::size_t>(indent), ' ') + "]";
    return;
  }
  *out += object ? "{\n" : "[\n";
  bool first = true;
  for (auto it = v.begin(); it != v.end(); ++it) {
    if (!first) *out += ",\n";
    first = false;
    *out += pad;
    if (object) *out += ojson(it.key()).dump() + ": ";
    Write(it.value(), indent + 2, out);
  }
  *out += "\n" + std::string(static_cast<std::size_t>(indent), ' ') + (object ? "}" : "]");
}

}  // namespace

std::string SceneText(const ImportedScene& scene) {
  std::string text;
  Write(scene.scene, 0, &text);
  return text + "\n";
}

int NearestSpeed(double stepsPerSecond) {
  if (!(stepsPerSecond > 0)) return 1;
  return static_cast<int>(std::min(1000.0, std::max(1.0, std::floor(stepsPerSecond + 0.5))));
}

ImportedScene SceneFromIlbm(const IlbmImage& image, const std::string& base) {
  ImportedScene out;
  const qvscene::Picture& pic = image.picture;
  const std::string pictureFile = base + ".png";
  out.pictures.emplace_back(pictureFile, pic);
  out.report.push_back(std::string(image.chunky ? "PBM" : "ILBM") + " " +
                       std::to_string(pic.width) + " x " + std::to_string(pic.height) + ", " +
                       std::to_string(image.planes) + " planes" +
                       (image.compressed ? ", ByteRun1" : "") + ", " +
                       std::to_string(image.ranges.size()) + " colour ranges");
  for (const std::string& n : image.notes) out.report.push_back(n);

  ojson members = ojson::array();
  ojson picture = {{"name", "picture"}, {"picture", "picture"}};
  if (image.transparent >= 0) picture["transparent"] = image.transparent;
  picture["frames"] = ojson::array({{{"rect", {0, 0, pic.width, pic.height}}, {"anchor", {0, 0}}}});
  picture["position"] = {0, 0};
  members.push_back(picture);
  ojson onLayer = ojson::array({"picture"});

  int length = 1;
  int longest = 1;
  for (const ColorRange& r : image.ranges) {
    const std::string label = r.kind + " " + std::to_string(r.number);
    std::string name = r.kind + std::to_string(r.number);
    std::transform(name.begin(), name.end(), name.begin(), ::tolower);
    const int low = r.low;
    const int high = r.high;
    if (high <= low) {
      out.report.push_back(label + ": range " + std::to_string(low) + "-" + std::to_string(high) +
                           " holds fewer than two colours: left out");
      continue;
    }
    const int cells = high - low + 1;
    const bool moves = r.stepsPerSecond > 0;
    const bool active = r.active && moves;
    const int speed = NearestSpeed(r.stepsPerSecond);
    std::string line = label + ": indices " + std::to_string(low) + "-" + std::to_string(high);
    if (r.kind == "DRNG")
      line = label + ": cells " + std::to_string(low) + "-" + std::to_string(high);
    line += r.reverse ? ", backward, " : ", forward, ";
    line += moves ? SpeedText(r.stepsPerSecond, speed) : "no rate (speed 1)";
    if (!active) line += ", switched off (on no layer)";
    out.report.push_back(line);

    ojson member = {{"name", name}};
    member["comment"] = line;
    member["colorTable"] = "picture";
    ojson color;
    if (r.kind != "DRNG" && !r.reverse) {
      color = {{"kind", "cycle"}, {"area", ojson::array({Range(low, high)})}, {"speed", speed}};
    } else {
      // One table per step: step k shows the range turned k places.
      ojson area = ojson::array();
      std::vector<int> regs(static_cast<std::size_t>(cells), -1);
      std::vector<const unsigned char*> colors(static_cast<std::size_t>(cells));
      static const unsigned char kBlack[3] = {0, 0, 0};
      for (int c = 0; c < cells; ++c) {
        if (r.kind == "DRNG") {
          const RangeCell& cell = r.cells[static_cast<std::size_t>(c)];
          regs[static_cast<std::size_t>(c)] = cell.reg;
          colors[static_cast<std::size_t>(c)] = cell.hasColor ? cell.rgb : kBlack;
        } else {
          regs[static_cast<std::size_t>(c)] = low + c;
          colors[static_cast<std::size_t>(c)] = pic.palette[low + c];
        }
      }
      bool inArea[256] = {};
      int shown = 0;
      for (int c = 0; c < cells; ++c) {
        const int reg = regs[static_cast<std::size_t>(c)];
        if (reg < 0) continue;
        if (inArea[reg]) {
          out.report.push_back(label + ": register " + std::to_string(reg) +
                               " in several cells shows the last of them");
        }
        inArea[reg] = true;
        ++shown;
      }
      if (shown == 0) {
        out.report.push_back(label +
                             ": no cell names a register, the range changes nothing: left out");
        continue;
      }
      for (int i = 0; i < 256; ++i) {
        if (!inArea[i]) continue;
        int j = i;
        while (j + 1 < 256 && inArea[j + 1]) ++j;
        area.push_back(Range(i, j));
        i = j;
      }
      ojson tables = ojson::array();
      for (int k = 0; k < cells; ++k) {
        ojson entries = ojson::array();
        for (int c = 0; c < cells; ++c) {
          const int reg = regs[static_cast<std::size_t>(c)];
          if (reg < 0) continue;
          // Backward: cell c shows the colour k places above it; forward,
          // the colour k places below it.
          const int from = r.reverse ? (c + k) % cells : ((c - k) % cells + cells) % cells;
          entries.push_back({reg, Hex(colors[static_cast<std::size_t>(from)])});
        }
        tables.push_back({{"entries", entries}});
      }
      color = {{"kind", "switch"}, {"area", area}, {"speed", speed}, {"tables", tables}};
    }
    member["colors"] = ojson::array({color});
    members.push_back(member);
    if (active) {
      onLayer.push_back(name);
      // The movie lasts until every range is back where it started, when
      // that is soon enough; otherwise the longest period.
      const int period = static_cast<int>(std::ceil(cells * 30.0 / speed));
      const long long both =
          std::lcm(static_cast<long long>(length), static_cast<long long>(period));
      longest = std::max(longest, std::min(period, kMaxStillLength));
      length = both <= kMaxStillLength ? static_cast<int>(both) : longest;
    }
  }

  const int width = std::min(pic.width, kMaxOutputSide);
  const int height = std::min(pic.height, kMaxOutputSide);
  if (width < pic.width || height < pic.height) {
    out.report.push_back("the output shows the top-left " + std::to_string(width) + " x " +
                         std::to_string(height) + " pixels");
  }
  ojson output = {{"width", width}, {"height", height}, {"to", length - 1}, {"palette", "picture"}};
  if (image.transparent >= 0) output["background"] = image.transparent;
  out.scene["output"] = output;
  out.scene["pictures"] = {{"picture", pictureFile}};
  out.scene["members"] = members;
  out.scene["layers"] = ojson::array({{{"members", onLayer}}});
  return out;
}

ImportedScene SceneFromGif(const GifAnimation& anim, const std::string& base) {
  ImportedScene out;
  const int n = static_cast<int>(anim.frames.size());
  // Faults of the scene name the image block of the frame concerned.
  auto fault = [&](int k, const std::string& reason) {
    return FormatError("image block " + std::to_string(k + 1),
                       anim.frames[static_cast<std::size_t>(k)].offset, reason);
  };
  if (n > kMaxFrames) throw fault(kMaxFrames, "more frames than a scene's 10000");
  if (anim.width > kMaxOutputSide || anim.height > kMaxOutputSide) {
    throw FormatError("logical screen descriptor", 6,
                      "the screen is wider or higher than a scene's 4096 pixels");
  }
  int local = 0;
  for (const GifFrame& f : anim.frames) local += f.ownTable ? 1 : 0;
  out.report.push_back("GIF " + std::to_string(anim.width) + " x " + std::to_string(anim.height) +
                       ", " + std::to_string(n) + " frames, " + std::to_string(local) +
                       " with their own colour table");
  for (const std::string& s : anim.notes) out.report.push_back(s);

  // Intervals: the start of frame k is its start in 1/100 s rounded to 1/30 s;
  // every frame shows at least one unit.
  std::vector<int> intervals(static_cast<std::size_t>(n));
  std::int64_t centis = 0;
  std::int64_t start = 0;
  int lifted = 0;
  for (int k = 0; k < n; ++k) {
    centis += anim.frames[static_cast<std::size_t>(k)].delay;
    std::int64_t next = (centis * 30 + 50) / 100;
    if (next <= start) {
      next = start + 1;
      ++lifted;
    }
    if (next > kMaxIntervals) {
      throw fault(k, "the frames last longer than a scene's 32767 units of 1/30 s");
    }
    intervals[static_cast<std::size_t>(k)] = static_cast<int>(next - start);
    start = next;
  }
  const std::int64_t total = start;
  out.report.push_back("length " + Fixed(centis / 100.0, 2) + " s in 1/100 s, " +
                       std::to_string(total) + " units of 1/30 s (" + Fixed(total / 30.0, 2) +
                       " s)");
  if (lifted > 0) {
    out.report.push_back(std::to_string(lifted) +
                         " frames shorter than 1/30 s are shown for 1/30 s");
  }

  // Colours: one palette for all frames when 256 colours are enough.
  const std::size_t screen = static_cast<std::size_t>(anim.width) * anim.height;
  ColorIndexer all;
  for (const GifFrame& f : anim.frames) all.Add(f.rgb.data(), screen);
  const bool shared = all.Distinct() <= 256;
  int g = 30;
  while (g > 1) {
    bool divides = 30 % g == 0;
    for (int v : intervals) divides = divides && v % g == 0;
    if (divides) break;
    --g;
  }
  const bool switchFits = total / g <= kMaxTables;

  bool reduced = false;
  qvscene::Picture sheet;
  std::vector<qvscene::Picture> tables;  // palettes of the frames, when not shared
  std::vector<int> tableOf(static_cast<std::size_t>(n), 0);
  if (shared || !switchFits) {
    sheet = GifSheet(anim, &reduced);
    if (reduced) {
      out.report.push_back("the frames hold " + std::to_string(all.Distinct()) +
                           " colours together and change colours more often than 256 " +
                           "tables allow: reduced to 256 colours");
    }
  } else {
    const int columns = SheetColumns(n, anim.width, anim.height);
    if (columns == 0) throw fault(n - 1, "the frames do not fit one picture");
    sheet.width = columns * anim.width;
    sheet.height = ((n + columns - 1) / columns) * anim.height;
    sheet.pixels.assign(static_cast<std::size_t>(sheet.width) * sheet.height, 0);
    std::map<std::vector<unsigned char>, int> known;
    for (int k = 0; k < n; ++k) {
      const unsigned char* rgb = anim.frames[static_cast<std::size_t>(k)].rgb.data();
      ColorIndexer own;
      own.Add(rgb, screen);
      if (!own.Choose()) reduced = true;
      qvscene::Picture table;
      table.width = table.height = 1;
      table.pixels.assign(1, 0);
      own.FillPalette(&table);
      const int x0 = (k % columns) * anim.width;
      const int y0 = (k / columns) * anim.height;
      for (int y = 0; y < anim.height; ++y) {
        unsigned char* row = sheet.Row(y0 + y) + x0;
        for (int x = 0; x < anim.width; ++x)
          row[x] = own.Index(rgb + (static_cast<std::size_t>(y) * anim.width + x) * 3);
      }
      std::vector<unsigned char> key(&table.palette[0][0], &table.palette[0][0] + 768);
      auto it = known.find(key);
      if (it == known.end()) {
        it = known.emplace(key, static_cast<int>(tables.size())).first;
        tables.push_back(table);
      }
      tableOf[static_cast<std::size_t>(k)] = it->second;
    }
    std::memcpy(sheet.palette, tables[0].palette, sizeof sheet.palette);
    sheet.paletteCount = tables[0].paletteCount;
    if (reduced) out.report.push_back("frames with more than 256 colours: colours merged");
    out.report.push_back("the frames hold " + std::to_string(all.Distinct()) +
                         " colours together: " + std::to_string(tables.size()) +
                         " colour tables, switched with the frames");
  }

  const std::string sheetFile = base + ".png";
  out.pictures.emplace_back(sheetFile, sheet);
  ojson pictures = {{"frames", sheetFile}};
  const int columns = SheetColumns(n, anim.width, anim.height);
  ojson frames = ojson::array();
  for (int k = 0; k < n; ++k) {
    const int x0 = (k % columns) * anim.width;
    const int y0 = (k / columns) * anim.height;
    frames.push_back({{"rect", {x0, y0, anim.width, anim.height}},
                      {"anchor", {x0, y0}},
                      {"interval", intervals[static_cast<std::size_t>(k)]}});
  }
  ojson member = {{"name", "animation"}, {"picture", "frames"}, {"frames", frames}};
  member["position"] = {0, 0};
  if (!tables.empty()) {
    ojson names = ojson::array();
    for (std::size_t t = 0; t < tables.size(); ++t) {
      const std::string name = "colors" + std::to_string(t + 1);
      const std::string file = base + "-colors-" + std::to_string(t + 1) + ".png";
      pictures[name] = file;
      out.pictures.emplace_back(file, tables[t]);
    }
    // One table for every g units, the table of the frame shown then.
    int k = 0;
    std::int64_t frameEnd = intervals[0];
    for (std::int64_t u = 0; u < total; u += g) {
      while (u >= frameEnd) frameEnd += intervals[static_cast<std::size_t>(++k)];
      names.push_back("colors" + std::to_string(tableOf[static_cast<std::size_t>(k)] + 1));
    }
    member["colors"] = ojson::array({{{"kind", "switch"},
                                      {"area", ojson::array({ojson::array({0, 255})})},
                                      {"speed", 30 / g},
                                      {"tables", names}}});
  }

  ojson output = {
      {"width", anim.width}, {"height", anim.height}, {"to", total - 1}, {"palette", "frames"}};
  if (total > 20000) output["step"] = (total + 19999) / 20000;
  output["loop"] = anim.loops < 0 ? 0 : anim.loops;
  if (anim.loops < 0) {
    out.report.push_back("no loop extension (the original plays once): the output loops for ever");
  } else {
    out.report.push_back(anim.loops == 0 ? "loops for ever"
                                         : "loop count " + std::to_string(anim.loops));
  }
  out.scene["output"] = output;
  out.scene["pictures"] = pictures;
  out.scene["members"] = ojson::array({member});
  out.scene["layers"] = ojson::array({{{"members", {"animation"}}}});
  return out;
}

bool WriteImportedScene(const ImportedScene& scene, const std::string& scenePath,
                        std::string* error) {
  std::string dir;
  const std::size_t slash = scenePath.find_last_of('/');
  if (slash != std::string::npos) dir = scenePath.substr(0, slash + 1);
  // Missing parent directories.
  for (std::size_t i = 1; i < dir.size(); ++i) {
    if (dir[i] != '/') continue;
    const std::string part = dir.substr(0, i);
    if (mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) {
      *error = "cannot make directory '" + part + "': " + std::strerror(errno);
      return false;
    }
  }
  const std::string suffix = ".partial-" + std::to_string(getpid());
  std::vector<std::string> temps;
  std::vector<std::string> finals;
  auto cleanup = [&]() {
    for (const std::string& t : temps) std::remove(t.c_str());
  };
  for (const auto& p : scene.pictures) {
    finals.push_back(dir + p.first);
    temps.push_back(finals.back() + suffix);
    if (!qvscene::WriteIndexedPng(temps.back(), p.second, error)) {
      cleanup();
      return false;
    }
  }
  finals.push_back(scenePath);
  temps.push_back(scenePath + suffix);
  {
    std::ofstream f(temps.back(), std::ios::binary | std::ios::trunc);
    f << SceneText(scene);
    f.close();
    if (!f) {
      *error = "cannot write '" + temps.back() + "': " + std::strerror(errno);
      cleanup();
      return false;
    }
  }
  const mode_t mask = umask(0);
  umask(mask);
  for (std::size_t i = 0; i < temps.size(); ++i) {
    chmod(temps[i].c_str(), 0666 & ~mask);
    if (std::rename(temps[i].c_str(), finals[i].c_str()) != 0) {
      *error = "cannot rename '" + temps[i] + "' to '" + finals[i] + "': " + std::strerror(errno);
      for (std::size_t j = i; j < temps.size(); ++j) std::remove(temps[j].c_str());
      return false;
    }
  }
  return true;
}

}  // namespace qvimport

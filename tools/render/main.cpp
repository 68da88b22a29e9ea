// qvmovie-render: renders a scene file to an animated GIF, single moments to
// indexed PNG files and a contact sheet of several moments.

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "render/ContactSheet.h"
#include "render/GifWriter.h"
#include "render/HtmlExport.h"
#include "render/RenderPipeline.h"
#include "scene/MovieTime.h"
#include "scene/Outputs.h"
#include "scene/PngIO.h"
#include "scene/SafeFile.h"
#include "scene/SceneError.h"
#include "scene/SceneReader.h"

namespace {

constexpr int kExitOk = 0;
constexpr int kExitRender = 1;
constexpr int kExitUsage = 2;
// Moments drawn ahead of the GIF encoder at most.
constexpr int kGifQueue = 2;

const char kUsage[] =
    "Usage: qvmovie-render SCENE [-o OUT.gif] [--png-at T OUT.png]...\n"
    "                      [--sheet OUT.png [--sheet-times T1,T2,...]]\n"
    "                      [--html OUT.html] [--scale N] [--pictures DIR]\n"
    "                      [--max-memory MB] [--quiet]\n"
    "\n"
    "Renders the movie that the scene file SCENE describes.\n"
    "\n"
    "  -o, --output OUT.gif   the moments from the scene's \"from\" to \"to\" in steps\n"
    "                         of \"step\" as an animated GIF (looping; each frame\n"
    "                         holds only what changed in colour)\n"
    "  --png-at T OUT.png     moment T as an indexed PNG with that moment's palette\n"
    "                         (may be given several times)\n"
    "  --sheet OUT.png        a contact sheet (RGB PNG) of several moments\n"
    "  --sheet-times LIST     comma-separated times for the sheet; default: six\n"
    "                         moments spread over the output range\n"
    "  --html OUT.html        one self-contained web page that plays the movie in\n"
    "                         a browser (the engine in WebAssembly, the scene and\n"
    "                         its pictures embedded)\n"
    "  --scale N              enlarge every output N times (1 to 8), each pixel\n"
    "                         becoming an N x N block\n"
    "  --pictures DIR         resolve relative picture file names against DIR\n"
    "                         instead of the scene file's directory\n"
    "  --max-memory MB        refuse a scene whose pictures, frame images and\n"
    "                         outputs would need more than MB megabytes\n"
    "                         (estimated before rendering; default 512)\n"
    "  -q, --quiet            no progress line\n"
    "  -h, --help             this text\n"
    "\n"
    "Time is counted in units of 1/30 s (two ticks of 1/60 s); GIF delays are in\n"
    "1/100 s with the rounding carried from frame to frame. The scene format is\n"
    "described in SCENE.md. Exit status: 0 success, 1 render failure, 2 bad usage\n"
    "or bad input. Outputs are written under temporary names and renamed when all\n"
    "of them are complete, so a failed run changes no output file; an output\n"
    "must be a regular file (or not exist yet), and no two outputs the same file.\n";

struct Usage {
  std::string message;
};

bool ParseTime(const std::string& text, std::int32_t* t) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  const long long v = std::strtoll(text.c_str(), &end, 10);
  if (errno != 0 || *end != 0 || v < -1000000 || v > 1000000) return false;
  *t = static_cast<std::int32_t>(v);
  return true;
}

struct Options {
  std::string scene;
  std::string gif;
  std::vector<std::pair<std::int32_t, std::string>> pngs;
  std::string sheet;
  std::string html;
  bool sheetTimesGiven = false;
  std::vector<std::int32_t> sheetTimes;
  std::string pictures;
  int scale = 1;
  std::uint64_t maxMemory = qvscene::LoadOptions::kDefaultMaxMemory;
  bool quiet = false;
  bool help = false;
};

Options ParseArgs(int argc, char** argv) {
  Options o;
  auto value = [&](int& i, const std::string& name) -> std::string {
    if (i + 1 >= argc) throw Usage{name + " needs a value"};
    return argv[++i];
  };
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "-h" || a == "--help") {
      o.help = true;
    } else if (a == "-o" || a == "--output") {
      if (!o.gif.empty()) throw Usage{"-o given twice"};
      o.gif = value(i, a);
    } else if (a == "--png-at") {
      if (i + 2 >= argc) throw Usage{"--png-at needs a time and a file name"};
      std::int32_t t = 0;
      if (!ParseTime(argv[i + 1], &t)) {
        throw Usage{"--png-at: '" + std::string(argv[i + 1]) + "' is not a time (an integer)"};
      }
      o.pngs.emplace_back(t, argv[i + 2]);
      i += 2;
    } else if (a == "--sheet") {
      if (!o.sheet.empty()) throw Usage{"--sheet given twice"};
      o.sheet = value(i, a);
    } else if (a == "--sheet-times") {
      const std::string list = value(i, a);
      o.sheetTimesGiven = true;
      std::size_t start = 0;
      while (true) {
        const std::size_t comma = list.find(',', start);
        const std::string item =
            list.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        std::int32_t t = 0;
        if (!ParseTime(item, &t))
          throw Usage{"--sheet-times: '" + item + "' is not a time (an integer)"};
        o.sheetTimes.push_back(t);
        if (comma == std::string::npos) break;
        start = comma + 1;
      }
      if (o.sheetTimes.size() > 100) throw Usage{"--sheet-times: at most 100 times"};
    } else if (a == "--scale") {
      const std::string v = value(i, a);
      if (v.size() != 1 || v[0] < '1' || v[0] > '8') {
        throw Usage{"--scale: '" + v + "' is not a whole number from 1 to 8"};
      }
      o.scale = v[0] - '0';
    } else if (a == "--html") {
      if (!o.html.empty()) throw Usage{"--html given twice"};
      o.html = value(i, a);
    } else if (a == "--max-memory") {
      const std::string v = value(i, a);
      char* end = nullptr;
      errno = 0;
      const unsigned long long mb = std::strtoull(v.c_str(), &end, 10);
      if (v.empty() || v[0] < '0' || v[0] > '9' || *end != 0 || errno != 0 || mb < 1 ||
          mb > (std::uint64_t{1} << 24)) {
        throw Usage{"--max-memory: '" + v + "' is not a number of megabytes from 1 to 16777216"};
      }
      o.maxMemory = static_cast<std::uint64_t>(mb) << 20;
    } else if (a == "--pictures") {
      o.pictures = value(i, a);
    } else if (a == "-q" || a == "--quiet") {
      o.quiet = true;
    } else if (a.size() > 1 && a[0] == '-') {
      throw Usage{"unknown option '" + a + "'"};
    } else if (o.scene.empty()) {
      o.scene = a;
    } else {
      throw Usage{"more than one scene file given ('" + o.scene + "' and '" + a + "')"};
    }
  }
  if (o.help) return o;
  if (o.scene.empty()) throw Usage{"no scene file given"};
  if (o.gif.empty() && o.pngs.empty() && o.sheet.empty() && o.html.empty()) {
    throw Usage{"no output given (use -o, --png-at, --sheet or --html)"};
  }
  if (o.sheetTimesGiven && o.sheet.empty()) throw Usage{"--sheet-times needs --sheet"};
  return o;
}

// A progress line on stderr, shown once a render has run for a second.
class Progress {
 public:
  Progress(bool quiet, int total)
      : quiet_(quiet), total_(total), tty_(isatty(2) != 0), start_(Clock::now()), last_(start_) {}
  ~Progress() { Done(); }

  void Update(int done, const char* what) {
    if (quiet_) return;
    const auto now = Clock::now();
    if (now - start_ < std::chrono::seconds(1)) return;
    const auto gap = tty_ ? std::chrono::milliseconds(100) : std::chrono::milliseconds(1000);
    if (shown_ && now - last_ < gap && done != total_) return;
    last_ = now;
    shown_ = true;
    const double seconds = std::chrono::duration<double>(now - start_).count();
    std::fprintf(stderr, "%sqvmovie-render: %s %d/%d (%.1f s)%s", tty_ ? "\r" : "", what, done,
                 total_, seconds, tty_ ? "" : "\n");
    std::fflush(stderr);
  }
  void Done() {
    if (shown_ && tty_) std::fputc('\n', stderr);
    shown_ = false;
  }

 private:
  using Clock = std::chrono::steady_clock;
  bool quiet_;
  int total_;
  bool tty_;
  bool shown_ = false;
  Clock::time_point start_;
  Clock::time_point last_;
};

// Each pixel of picture becomes a scale x scale block.
qvscene::Picture Enlarge(const qvscene::Picture& picture, int scale) {
  if (scale == 1) return picture;
  qvscene::Picture out = picture;
  out.width = picture.width * scale;
  out.height = picture.height * scale;
  out.pixels.resize(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height));
  for (std::int32_t y = 0; y < out.height; ++y) {
    const unsigned char* src = picture.Row(y / scale);
    unsigned char* dst = out.Row(y);
    for (std::int32_t x = 0; x < out.width; ++x) dst[x] = src[x / scale];
  }
  return out;
}

int Fail(int code, const std::string& message) {
  std::fprintf(stderr, "qvmovie-render: %s\n", message.c_str());
  return code;
}

int Run(const Options& o) {
  // Outputs are checked before the scene is read, so that a wrong name is
  // reported at once; in the order gif, pngs, sheet, page.
  qvscene::Outputs outputs;
  std::string error;
  std::vector<std::string> names;
  if (!o.gif.empty()) names.push_back(o.gif);
  for (const auto& png : o.pngs) names.push_back(png.second);
  if (!o.sheet.empty()) names.push_back(o.sheet);
  if (!o.html.empty()) names.push_back(o.html);
  for (const std::string& name : names) {
    if (!outputs.Add(name, &error)) return Fail(kExitUsage, error);
  }

  qvscene::LoadOptions load;
  load.pictureDir = o.pictures;
  load.maxMemory = o.maxMemory;
  load.limitHint = "raise it with --max-memory";
  std::unique_ptr<qvscene::Scene> scene;
  try {
    scene = qvscene::LoadScene(o.scene, load);
  } catch (const qvscene::SceneError& e) {
    return Fail(kExitUsage, e.what());
  } catch (const qvscene::BuildError& e) {
    return Fail(kExitRender, e.what());
  }
  if (!outputs.NotInput(o.scene, &error)) return Fail(kExitUsage, error);
  for (const std::string& picture : scene->PictureFiles()) {
    if (!outputs.NotInput(picture, &error)) return Fail(kExitUsage, error);
  }

  const std::vector<std::int32_t> times = scene->Times();
  std::vector<std::int32_t> sheetTimes = o.sheetTimes;
  if (!o.sheet.empty() && sheetTimes.empty()) {
    // Six moments spread over the output, both ends included.
    const int n = static_cast<int>(std::min<std::size_t>(6, times.size()));
    for (int i = 0; i < n; ++i) {
      const std::size_t k = n == 1 ? 0
                                   : (times.size() - 1) * static_cast<std::size_t>(i) /
                                         static_cast<std::size_t>(n - 1);
      sheetTimes.push_back(times[k]);
    }
  }
  // What the outputs need beside the scene: an enlarged moment and the
  // sheet, counted before either is made.
  const int width = scene->Width() * o.scale;
  const int height = scene->Height() * o.scale;
  const std::uint64_t enlarged =
      o.scale > 1 ? static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) : 0;
  const std::uint64_t sheetBytes =
      o.sheet.empty()
          ? 0
          : qvrender::ContactSheet::Bytes(width, height, static_cast<int>(sheetTimes.size()));
  // The GIF's frames in flight: each of the queued and the two busy ones
  // holds a moment, its change mask and up to three encodings of it, and the
  // writer keeps what a viewer shows.
  const std::uint64_t gifBytes =
      o.gif.empty()
          ? 0
          : static_cast<std::uint64_t>(kGifQueue + 2) * 6 * static_cast<std::uint64_t>(width) *
                    static_cast<std::uint64_t>(height) +
                static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
  const std::uint64_t need = scene->Memory() + enlarged + sheetBytes + gifBytes;
  if (need > o.maxMemory) {
    const auto mb = qvscene::Megabytes;
    std::string parts = "the scene " + mb(scene->Memory());
    if (enlarged)
      parts += ", moments enlarged " + std::to_string(o.scale) + " times " + mb(enlarged);
    if (gifBytes) parts += ", the GIF's frames in flight " + mb(gifBytes);
    if (sheetBytes)
      parts += ", a sheet of " + std::to_string(sheetTimes.size()) + " moments " + mb(sheetBytes);
    return Fail(kExitUsage,
                qvscene::SceneError::Format(scene->File(), scene->OutputLine(), "/output",
                                            "rendering needs about " + mb(need) + " (" + parts +
                                                "), over the memory limit of " + mb(o.maxMemory) +
                                                " (raise it with --max-memory)"));
  }
  if (!outputs.Create(&error)) return Fail(kExitUsage, error);

  const int total =
      static_cast<int>((o.gif.empty() ? 0 : times.size()) + o.pngs.size() + sheetTimes.size());
  Progress progress(o.quiet, total);
  int done = 0;
  std::size_t next = 0;  // the output written next
  qvscene::Picture moment;
  auto failed = [&](const std::string& message) {
    return Fail(kExitRender, outputs.Explain(message));
  };

  if (!o.gif.empty()) {
    qvrender::GifWriter gif;
    if (!gif.Open(outputs.Temp(next++), width, height, scene->Loops(), &error)) {
      return failed(error);
    }
    // Moments are drawn (and compared with the one before) here while the
    // worker compresses and writes the ones before.
    auto draw = [&](int k, qvrender::PipelineItem* item, std::string* message) {
      const std::int32_t t = times[static_cast<std::size_t>(k)];
      if (!scene->Render(t, &item->picture)) {
        *message = "cannot draw moment " + std::to_string(t);
        return false;
      }
      if (o.scale != 1) item->picture = Enlarge(item->picture, o.scale);
      progress.Update(++done, "rendering moment");
      const auto delay = static_cast<int>(qvscene::DelayCentiseconds(k, scene->Step()));
      return gif.Prepare(item->picture, delay, &item->frame, message);
    };
    auto encode = [&](int, qvrender::PipelineItem& item, std::string* message) {
      return gif.Finish(&item.frame, message);
    };
    if (!qvrender::RunPipeline(static_cast<int>(times.size()), draw, encode, kGifQueue, &error) ||
        !gif.Close(&error)) {
      return failed(error);
    }
  }

  for (const auto& png : o.pngs) {
    if (!scene->Render(png.first, &moment)) {
      return failed("cannot draw moment " + std::to_string(png.first));
    }
    if (!qvscene::WriteIndexedPng(outputs.Temp(next++), Enlarge(moment, o.scale), &error))
      return failed(error);
    progress.Update(++done, "rendering moment");
  }

  if (!o.sheet.empty()) {
    qvrender::ContactSheet sheet(width, height, static_cast<int>(sheetTimes.size()));
    for (std::size_t i = 0; i < sheetTimes.size(); ++i) {
      if (!scene->Render(sheetTimes[i], &moment)) {
        return failed("cannot draw moment " + std::to_string(sheetTimes[i]));
      }
      sheet.Place(static_cast<int>(i), sheetTimes[i], Enlarge(moment, o.scale));
      progress.Update(++done, "rendering moment");
    }
    if (!qvscene::WriteRgbPng(outputs.Temp(next++), sheet.Sheet(), &error)) return failed(error);
  }
  if (!o.html.empty()) {
    if (!qvrender::WriteHtml(outputs.Temp(next++), o.scene, load, qvrender::WebEngineDirs(),
                             &error))
      return failed(error);
  }
  progress.Done();
  if (!outputs.Commit(&error)) return failed(error);
  return kExitOk;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  try {
    options = ParseArgs(argc, argv);
  } catch (const Usage& u) {
    std::fprintf(stderr, "qvmovie-render: %s\nTry 'qvmovie-render --help'.\n", u.message.c_str());
    return kExitUsage;
  }
  if (options.help) {
    std::fputs(kUsage, stdout);
    return kExitOk;
  }
  try {
    return Run(options);
  } catch (const std::bad_alloc&) {
    return Fail(kExitRender, "out of memory");
  } catch (const std::exception& e) {
    return Fail(kExitRender, e.what());
  }
}

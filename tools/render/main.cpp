// qvmovie-render: renders a scene file to an animated GIF, single moments to
// indexed PNG files and a contact sheet of several moments.

#include <unistd.h>

#include <sys/stat.h>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "render/ContactSheet.h"
#include "render/GifWriter.h"
#include "render/RenderPipeline.h"
#include "scene/MovieTime.h"
#include "scene/PngIO.h"
#include "scene/SceneError.h"
#include "scene/SceneReader.h"

namespace {

constexpr int kExitOk = 0;
constexpr int kExitRender = 1;
constexpr int kExitUsage = 2;

const char kUsage[] =
    "Usage: qvmovie-render SCENE [-o OUT.gif] [--png-at T OUT.png]...\n"
    "                      [--sheet OUT.png [--sheet-times T1,T2,...]]\n"
    "                      [--scale N] [--pictures DIR] [--quiet]\n"
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
    "  --scale N              enlarge every output N times (1 to 8), each pixel\n"
    "                         becoming an N x N block\n"
    "  --pictures DIR         resolve relative picture file names against DIR\n"
    "                         instead of the scene file's directory\n"
    "  -q, --quiet            no progress line\n"
    "  -h, --help             this text\n"
    "\n"
    "Time is counted in units of 1/30 s (two ticks of 1/60 s); GIF delays are in\n"
    "1/100 s with the rounding carried from frame to frame. The scene format is\n"
    "described in SCENE.md. Exit status: 0 success, 1 render failure, 2 bad usage\n"
    "or bad input. Outputs are written under temporary names and renamed when all\n"
    "of them are complete, so a failed run leaves no output file behind.\n";

// Temporary files still to be removed when the run is interrupted. Fixed
// buffers, so that the signal handler only calls unlink.
constexpr int kMaxTemps = 64;
char gTemps[kMaxTemps][4096];
volatile std::sig_atomic_t gTempCount = 0;

void RemoveTemps() {
  for (int i = 0; i < gTempCount; ++i) {
    if (gTemps[i][0]) unlink(gTemps[i]);
    gTemps[i][0] = 0;
  }
}

extern "C" void OnSignal(int sig) {
  for (int i = 0; i < gTempCount; ++i) {
    if (gTemps[i][0]) unlink(gTemps[i]);
  }
  std::signal(sig, SIG_DFL);
  std::raise(sig);
}

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
  bool sheetTimesGiven = false;
  std::vector<std::int32_t> sheetTimes;
  std::string pictures;
  int scale = 1;
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
  if (o.gif.empty() && o.pngs.empty() && o.sheet.empty()) {
    throw Usage{"no output given (use -o, --png-at or --sheet)"};
  }
  if (o.sheetTimesGiven && o.sheet.empty()) throw Usage{"--sheet-times needs --sheet"};
  // The same file must not be asked for twice.
  std::vector<std::string> outs;
  if (!o.gif.empty()) outs.push_back(o.gif);
  for (const auto& p : o.pngs) outs.push_back(p.second);
  if (!o.sheet.empty()) outs.push_back(o.sheet);
  for (std::size_t i = 0; i < outs.size(); ++i) {
    for (std::size_t j = i + 1; j < outs.size(); ++j) {
      if (outs[i] == outs[j]) throw Usage{"output '" + outs[i] + "' given twice"};
    }
  }
  if (outs.size() > kMaxTemps) throw Usage{"too many outputs"};
  return o;
}

// Creates the missing parent directories of path.
bool MakeParents(const std::string& path, std::string* error) {
  for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    const std::string dir = path.substr(0, slash);
    if (mkdir(dir.c_str(), 0777) != 0 && errno != EEXIST) {
      *error = "cannot create directory '" + dir + "': " + std::strerror(errno);
      return false;
    }
  }
  return true;
}

// The outputs of one run, written under temporary names.
class Outputs {
 public:
  ~Outputs() { RemoveTemps(); }

  // The temporary name for final; registers it for removal.
  bool Add(const std::string& final, std::string* temp, std::string* error) {
    if (!MakeParents(final, error)) return false;
    *temp = final + ".partial-" + std::to_string(getpid());
    const int i = gTempCount;
    std::snprintf(gTemps[i], sizeof gTemps[i], "%s", temp->c_str());
    gTempCount = i + 1;
    finals_.push_back(final);
    return true;
  }

  // Renames every temporary file to its final name.
  bool Commit(std::string* error) {
    // Files get the usual permissions of new files (giflib creates its own
    // readable by the owner only).
    const mode_t mask = umask(0);
    umask(mask);
    for (int i = 0; i < gTempCount; ++i) {
      chmod(gTemps[i], 0666 & ~mask);
      if (std::rename(gTemps[i], finals_[static_cast<std::size_t>(i)].c_str()) != 0) {
        *error = "cannot rename '" + std::string(gTemps[i]) + "' to '" +
                 finals_[static_cast<std::size_t>(i)] + "': " + std::strerror(errno);
        return false;
      }
      gTemps[i][0] = 0;
    }
    return true;
  }

 private:
  std::vector<std::string> finals_;
};

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
  qvscene::LoadOptions load;
  load.pictureDir = o.pictures;
  std::unique_ptr<qvscene::Scene> scene;
  try {
    scene = qvscene::LoadScene(o.scene, load);
  } catch (const qvscene::SceneError& e) {
    return Fail(kExitUsage, e.what());
  } catch (const qvscene::BuildError& e) {
    return Fail(kExitRender, e.what());
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
  const int total =
      static_cast<int>((o.gif.empty() ? 0 : times.size()) + o.pngs.size() + sheetTimes.size());
  Outputs outputs;
  Progress progress(o.quiet, total);
  int done = 0;
  std::string error;
  qvscene::Picture moment;

  if (!o.gif.empty()) {
    std::string temp;
    if (!outputs.Add(o.gif, &temp, &error)) return Fail(kExitRender, error);
    qvrender::GifWriter gif;
    if (!gif.Open(temp, scene->Width() * o.scale, scene->Height() * o.scale, scene->Loops(),
                  &error)) {
      return Fail(kExitRender, error);
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
    if (!qvrender::RunPipeline(static_cast<int>(times.size()), draw, encode, 2, &error) ||
        !gif.Close(&error)) {
      return Fail(kExitRender, error);
    }
  }

  for (const auto& png : o.pngs) {
    std::string temp;
    if (!outputs.Add(png.second, &temp, &error)) return Fail(kExitRender, error);
    if (!scene->Render(png.first, &moment)) {
      return Fail(kExitRender, "cannot draw moment " + std::to_string(png.first));
    }
    if (!qvscene::WriteIndexedPng(temp, Enlarge(moment, o.scale), &error))
      return Fail(kExitRender, error);
    progress.Update(++done, "rendering moment");
  }

  if (!o.sheet.empty()) {
    std::string temp;
    if (!outputs.Add(o.sheet, &temp, &error)) return Fail(kExitRender, error);
    qvrender::ContactSheet sheet(scene->Width() * o.scale, scene->Height() * o.scale,
                                 static_cast<int>(sheetTimes.size()));
    for (std::size_t i = 0; i < sheetTimes.size(); ++i) {
      if (!scene->Render(sheetTimes[i], &moment)) {
        return Fail(kExitRender, "cannot draw moment " + std::to_string(sheetTimes[i]));
      }
      sheet.Place(static_cast<int>(i), sheetTimes[i], Enlarge(moment, o.scale));
      progress.Update(++done, "rendering moment");
    }
    if (!qvscene::WriteRgbPng(temp, sheet.Sheet(), &error)) return Fail(kExitRender, error);
  }
  progress.Done();
  if (!outputs.Commit(&error)) return Fail(kExitRender, error);
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
  std::signal(SIGINT, OnSignal);
  std::signal(SIGTERM, OnSignal);
  std::signal(SIGHUP, OnSignal);
  try {
    return Run(options);
  } catch (const std::exception& e) {
    RemoveTemps();
    return Fail(kExitRender, e.what());
  }
}

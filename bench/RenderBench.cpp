// The render tool's GIF output: where the time goes (drawing the moments,
// encoding them) and how large the files are, today's writer (giflib, every
// frame whole, one thread) beside the new one (changed rectangles, one
// thread or drawing and encoding overlapped), on the demo and on a crowd of
// 100 members at 640 x 480 over 600 moments. On the demo the size of what
// `gifsicle -O3` makes of today's file is the mark. Run:
//   cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DQV_BUILD_BENCH=ON
//   cmake --build build-bench --target qvmovie_render_bench
//   build-bench/bench/qvmovie_render_bench --benchmark_repetitions=5
// With --write-crowd DIR it only writes the crowd scene (crowd.json) and the
// demo's pictures into DIR, for qvmovie-render DIR/crowd.json -o ...
#include <benchmark/benchmark.h>
#include <gif_lib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "render/GifWriter.h"
#include "render/RenderPipeline.h"
#include "scene/MovieTime.h"
#include "scene/SceneReader.h"

namespace {

using nlohmann::json;
using qvscene::Picture;

// 100 members on 8 layers at 640 x 480, moments 0 to 599: a backdrop of
// the demo's sky, mountains, hills and water enlarged twice (scrolling,
// their colours cycling and fading), and 95 sprites (walkers, suns, moons,
// signs, lighthouses) walking paths, zoomed and rotated, some flashing or
// switching colours, many of them present for part of the movie only.
json CrowdScene() {
  std::mt19937 rng(2024);
  auto uniform = [&](int lo, int hi) { return lo + static_cast<int>(rng() % (hi - lo + 1)); };
  json members = json::array();
  json layers = json::array();
  for (int i = 0; i < 8; ++i) layers.push_back({{"members", json::array()}});
  auto place = [&](int layer, const std::string& name) {
    layers[layer]["members"].push_back(name);
  };
  members.push_back({{"name", "sky"},
                     {"picture", "sky"},
                     {"frames", {{{"rect", {0, 0, 320, 200}}, {"zoom", 2}}}},
                     {"position", {320, 200}}});
  members.push_back({{"name", "dusk"},
                     {"colorTable", "sky"},
                     {"start", 300},
                     {"end", 599},
                     {"colors",
                      {{{"kind", "fade"},
                        {"area", {{16, 47}}},
                        {"to", "#2c1c4c"},
                        {"count", 30},
                        {"speed", 6}}}}});
  members.push_back({{"name", "mountains"},
                     {"picture", "mountains"},
                     {"transparent", 0},
                     {"frames", {{{"rect", {0, 0, 320, 90}}, {"zoom", 2}}}},
                     {"position", {320, 270}},
                     {"scroll", {{"directions", {"left"}}, {"stepH", 0.5}}}});
  members.push_back({{"name", "hills"},
                     {"picture", "hills"},
                     {"transparent", 0},
                     {"frames", {{{"rect", {0, 0, 320, 76}}, {"zoom", 2}}}},
                     {"position", {320, 340}},
                     {"scroll", {{"directions", {"left"}}, {"countH", 300}}}});
  members.push_back({{"name", "water"},
                     {"picture", "water"},
                     {"frames", {{{"rect", {0, 0, 320, 36}}, {"zoom", {2, 2}}}}},
                     {"position", {320, 444}},
                     {"colors", {{{"kind", "cycle"}, {"area", {{80, 91}}}, {"speed", 10}}}}});
  place(0, "sky");
  place(0, "dusk");
  place(1, "mountains");
  place(2, "hills");
  place(2, "water");
  for (int i = 0; i < 95; ++i) {
    const std::string name = "s" + std::to_string(i);
    json m = {{"name", name}, {"transparent", 0}};
    json frames = json::array();
    switch (i % 5) {
      case 0:  // a walker, four steps
        m["picture"] = "walker";
        for (int f = 0; f < 4; ++f) {
          frames.push_back({{"rect", {32 * f, 0, 32, 48}},
                            {"anchor", {32 * f + 16, 46}},
                            {"interval", 3},
                            {"zoom", 0.8 + 0.1 * (i % 7)},
                            {"rotation", f % 2 ? 6 * (f - 2) : 0}});
        }
        break;
      case 1:  // a sun turning and breathing
        m["picture"] = "sun";
        for (int f = 0; f < 6; ++f) {
          frames.push_back({{"rect", {0, 0, 48, 48}},
                            {"interval", 2},
                            {"rotation", 7 * f},
                            {"zoom", 1.0 + 0.05 * f}});
        }
        break;
      case 2:
        m["picture"] = "moon";
        frames.push_back({{"rect", {0, 0, 32, 32}}});
        break;
      case 3:  // a sign, every other one switching its lights
        m["picture"] = "sign";
        frames.push_back({{"rect", {0, 0, 100, 64}}, {"zoom", 0.6}});
        if (i % 2) {
          m["colors"] = {{{"kind", "switch"},
                          {"area", {{96, 103}}},
                          {"speed", 3 + i % 4},
                          {"tables",
                           {json::object(),
                            {{"entries", {{{96, 99}, "#80f4ff"}, {{100, 103}, "#20a8e0"}}}}}}}};
        }
        break;
      default:  // a lighthouse, some flashing
        m["picture"] = "lighthouse";
        frames.push_back({{"rect", {0, 0, 40, 100}}, {"zoom", 0.7}});
        if (i % 3 == 0) {
          m["colors"] = {{{"kind", "flash"}, {"area", {{104, 107}}}, {"speed", 4 + i % 5}}};
        }
        break;
    }
    m["frames"] = frames;
    json points = json::array();
    const int n = uniform(2, 4);
    for (int p = 0; p < n; ++p) points.push_back({uniform(-40, 680), uniform(20, 470)});
    const char* types[3] = {"wrap", "reflect", "clamp"};
    m["path"] = {{"points", points},
                 {"between", uniform(20, 200)},
                 {"type", types[i % 3]},
                 {"count", uniform(100, 600)}};
    if (i % 4 == 1) {  // present for part of the movie only
      const int start = uniform(0, 450);
      m["start"] = start;
      m["end"] = std::min(599, start + uniform(40, 200));
    }
    members.push_back(m);
    place(3 + i % 5, name);
  }
  json pictures = json::object();
  for (const char* p :
       {"sky", "mountains", "hills", "water", "walker", "lighthouse", "sign", "sun", "moon"}) {
    pictures[p] = std::string(p) + ".png";
  }
  return {{"output", {{"width", 640}, {"height", 480}, {"to", 599}, {"palette", "sky"}}},
          {"pictures", pictures},
          {"members", members},
          {"layers", layers}};
}

// The demo's pictures and the crowd scene in dir.
void WriteScenes(const std::string& dir) {
  mkdir(dir.c_str(), 0777);
  const std::string command = std::string(QV_DEMO_ASSETS_TOOL) + " " + dir + " >/dev/null";
  if (std::system(command.c_str()) != 0) throw std::runtime_error("cannot make the pictures");
  std::ofstream(dir + "/crowd.json") << CrowdScene().dump(1) << '\n';
}

// The scenes and pictures, made once per run in a temporary directory.
class Scenes {
 public:
  static Scenes& Get() {
    static Scenes scenes;
    return scenes;
  }
  std::string Dir() const { return dir_; }
  std::string Path(const std::string& scene) const {
    return scene == "demo" ? std::string(QV_EXAMPLES_DIR) + "/demo.json" : dir_ + "/crowd.json";
  }
  // Size of `gifsicle -O3` of today's GIF of scene (0 without gifsicle).
  std::map<std::string, long long> gifsicle;

 private:
  Scenes() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "qvrender-bench-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary directory");
    dir_ = pattern;
    WriteScenes(dir_);
  }
  ~Scenes() {
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }
  std::string dir_;
};

// Today's writer: giflib, every frame whole with its full local table.
class GiflibWriter {
 public:
  bool Open(const std::string& path, int width, int height) {
    int code = 0;
    gif_ = EGifOpenFileName(path.c_str(), false, &code);
    if (!gif_) return false;
    EGifSetGifVersion(gif_, true);
    unsigned char app[] = {'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0'};
    unsigned char loop[] = {1, 0, 0};
    return EGifPutScreenDesc(gif_, width, height, 8, 0, nullptr) != GIF_ERROR &&
           EGifPutExtensionLeader(gif_, APPLICATION_EXT_FUNC_CODE) != GIF_ERROR &&
           EGifPutExtensionBlock(gif_, sizeof app, app) != GIF_ERROR &&
           EGifPutExtensionBlock(gif_, sizeof loop, loop) != GIF_ERROR &&
           EGifPutExtensionTrailer(gif_) != GIF_ERROR;
  }
  bool AddFrame(const Picture& frame, int delay) {
    GraphicsControlBlock gcb{DISPOSE_DO_NOT, false, delay, NO_TRANSPARENT_COLOR};
    GifByteType ext[4];
    EGifGCBToExtension(&gcb, ext);
    GifColorType colors[256];
    for (int i = 0; i < 256; ++i)
      colors[i] = {frame.palette[i][0], frame.palette[i][1], frame.palette[i][2]};
    std::unique_ptr<ColorMapObject, void (*)(ColorMapObject*)> map(GifMakeMapObject(256, colors),
                                                                   GifFreeMapObject);
    if (EGifPutExtension(gif_, GRAPHICS_EXT_FUNC_CODE, 4, ext) == GIF_ERROR ||
        EGifPutImageDesc(gif_, 0, 0, frame.width, frame.height, false, map.get()) == GIF_ERROR) {
      return false;
    }
    std::vector<GifPixelType> row(static_cast<std::size_t>(frame.width));
    for (int y = 0; y < frame.height; ++y) {
      row.assign(frame.Row(y), frame.Row(y) + frame.width);
      if (EGifPutLine(gif_, row.data(), frame.width) == GIF_ERROR) return false;
    }
    return true;
  }
  bool Close() {
    const bool ok = EGifCloseFile(gif_, nullptr) != GIF_ERROR;
    gif_ = nullptr;
    return ok;
  }
  ~GiflibWriter() {
    if (gif_) EGifCloseFile(gif_, nullptr);
  }

 private:
  GifFileType* gif_ = nullptr;
};

long long FileSize(const std::string& path) {
  struct stat st {};
  return stat(path.c_str(), &st) == 0 ? static_cast<long long>(st.st_size) : -1;
}

enum Writer { kGiflibWhole, kWhole, kChanged };

// One whole GIF of a scene per iteration. Counters: seconds drawing and
// encoding, seconds the drawing waited for the encoder, the file's bytes,
// and on the demo gifsicle's bytes.
void RenderGif(benchmark::State& state, const std::string& sceneName, Writer writer, int queue) {
  Scenes& scenes = Scenes::Get();
  qvscene::LoadOptions options;
  options.pictureDir = scenes.Dir();
  auto scene = qvscene::LoadScene(scenes.Path(sceneName), options);
  const std::vector<std::int32_t> times = scene->Times();
  const std::string out = scenes.Dir() + "/" + sceneName + ".gif";
  qvrender::PipelineTimes sum;
  long long bytes = 0;
  for (auto _ : state) {
    qvrender::GifWriter gif;
    GiflibWriter plain;
    std::string error;
    gif.SetWholeFrames(writer == kWhole);
    const bool opened = writer == kGiflibWhole
                            ? plain.Open(out, scene->Width(), scene->Height())
                            : gif.Open(out, scene->Width(), scene->Height(), 0, &error);
    if (!opened) {
      state.SkipWithError("cannot open the GIF");
      return;
    }
    auto draw = [&](int k, qvrender::PipelineItem* item, std::string* message) {
      const int delay = static_cast<int>(qvscene::DelayCentiseconds(k, scene->Step()));
      return scene->Render(times[static_cast<std::size_t>(k)], &item->picture) &&
             (writer == kGiflibWhole || gif.Prepare(item->picture, delay, &item->frame, message));
    };
    auto encode = [&](int k, qvrender::PipelineItem& item, std::string* message) {
      const int delay = static_cast<int>(qvscene::DelayCentiseconds(k, scene->Step()));
      return writer == kGiflibWhole ? plain.AddFrame(item.picture, delay)
                                    : gif.Finish(&item.frame, message);
    };
    qvrender::PipelineTimes t;
    if (!qvrender::RunPipeline(static_cast<int>(times.size()), draw, encode, queue, &error, &t) ||
        !(writer == kGiflibWhole ? plain.Close() : gif.Close(&error))) {
      state.SkipWithError("rendering failed");
      return;
    }
    sum.draw += t.draw;
    sum.encode += t.encode;
    sum.drawWaiting += t.drawWaiting;
    bytes = FileSize(out);
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["draw_s"] = sum.draw / n;
  state.counters["encode_s"] = sum.encode / n;
  state.counters["wait_s"] = sum.drawWaiting / n;
  state.counters["bytes"] = static_cast<double>(bytes);
  if (writer == kGiflibWhole && !scenes.gifsicle.count(sceneName)) {
    const std::string optimised = out + ".O3";
    const bool ran =
        std::system(("gifsicle -O3 " + out + " -o " + optimised + " 2>/dev/null").c_str()) == 0;
    scenes.gifsicle[sceneName] = ran ? FileSize(optimised) : 0;
  }
  if (scenes.gifsicle.count(sceneName)) {
    state.counters["gifsicle_O3_bytes"] = static_cast<double>(scenes.gifsicle[sceneName]);
  }
}

// Encoding alone: 60 moments of the crowd, drawn once, written as one GIF
// per iteration; the peer is giflib writing them whole.
void EncodeCrowd(benchmark::State& state, Writer writer) {
  Scenes& scenes = Scenes::Get();
  qvscene::LoadOptions options;
  options.pictureDir = scenes.Dir();
  auto scene = qvscene::LoadScene(scenes.Path("crowd"), options);
  std::vector<Picture> moments(60);
  for (std::size_t k = 0; k < moments.size(); ++k) {
    if (!scene->Render(static_cast<std::int32_t>(200 + k), &moments[k])) {
      state.SkipWithError("cannot draw");
      return;
    }
  }
  const std::string out = scenes.Dir() + "/encode.gif";
  for (auto _ : state) {
    qvrender::GifWriter gif;
    GiflibWriter plain;
    std::string error;
    gif.SetWholeFrames(writer == kWhole);
    bool ok =
        writer == kGiflibWhole ? plain.Open(out, 640, 480) : gif.Open(out, 640, 480, 0, &error);
    for (const Picture& m : moments) {
      ok = ok && (writer == kGiflibWhole ? plain.AddFrame(m, 3) : gif.AddFrame(m, 3, &error));
    }
    if (!ok || !(writer == kGiflibWhole ? plain.Close() : gif.Close(&error))) {
      state.SkipWithError("encoding failed");
      return;
    }
  }
  state.counters["bytes"] = static_cast<double>(FileSize(out));
  state.SetItemsProcessed(state.iterations() * 60 * 640 * 480);
  state.SetLabel("pixels");
}

void RegisterAll() {
  benchmark::RegisterBenchmark("BM_EncodeCrowd60/giflib_whole", EncodeCrowd, kGiflibWhole)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("BM_EncodeCrowd60/whole", EncodeCrowd, kWhole)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("BM_EncodeCrowd60/changed", EncodeCrowd, kChanged)
      ->Unit(benchmark::kMillisecond);
  for (const char* scene : {"demo", "crowd"}) {
    struct Case {
      const char* name;
      Writer writer;
      int queue;
    };
    for (const Case& c :
         {Case{"giflib_whole_1thread", kGiflibWhole, 0}, Case{"whole_1thread", kWhole, 0},
          Case{"changed_1thread", kChanged, 0}, Case{"changed_pipeline", kChanged, 2}}) {
      benchmark::RegisterBenchmark(
          (std::string("BM_RenderGif/") + scene + "/" + c.name).c_str(),
          [scene, c](benchmark::State& state) { RenderGif(state, scene, c.writer, c.queue); })
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime()
          ->Iterations(1);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--write-crowd") == 0) {
    WriteScenes(argv[2]);
    return 0;
  }
  RegisterAll();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

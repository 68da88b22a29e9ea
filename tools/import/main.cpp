// qvmovie-import: turns an ILBM/PBM picture with colour ranges, or an
// animated GIF, into a scene file and its indexed PNG pictures.

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "import/FormatError.h"
#include "import/Gif.h"
#include "import/Ilbm.h"
#include "import/SceneWriter.h"

namespace {

constexpr int kExitOk = 0;
constexpr int kExitWrite = 1;
constexpr int kExitInput = 2;
// Files larger than this are refused unread.
constexpr std::uintmax_t kMaxFileBytes = 256u * 1024u * 1024u;

const char kUsage[] =
    "Usage: qvmovie-import FILE -o SCENE.json [--quiet]\n"
    "\n"
    "Turns FILE into a scene for qvmovie-render and qvmovie-play:\n"
    "  an ILBM or PBM picture (.lbm, .iff, .bbm): the picture, and its colour\n"
    "    ranges (CRNG, CCRT, DRNG) as colour cycles; inactive ranges are kept on\n"
    "    no layer, switched off\n"
    "  an animated GIF: the frames as one member's frame animation cut out of a\n"
    "    sprite sheet, the delays as intervals of 1/30 s, and a colour-table\n"
    "    switch when the frames need more than 256 colours together\n"
    "The pictures are written next to SCENE.json, named after it (SCENE.png,\n"
    "SCENE-colors-N.png). What was rounded or left out is reported on stdout\n"
    "(--quiet: nothing). Exit status: 0 success, 1 the output could not be\n"
    "written (or memory ran out), 2 bad usage or a bad input file; on a\n"
    "failure nothing is written.\n";

// Temporary names of the outputs, removed when the run is interrupted.
// Fixed buffers, so that the signal handler only calls unlink.
constexpr int kMaxTemps = 300;
char gTemps[kMaxTemps][4096];
volatile std::sig_atomic_t gTempCount = 0;

extern "C" void OnSignal(int sig) {
  for (int i = 0; i < gTempCount; ++i) unlink(gTemps[i]);
  std::signal(sig, SIG_DFL);
  std::raise(sig);
}

// Notes the temporary name that WriteImportedScene gives an output.
void NoteTemp(const std::string& final) {
  if (gTempCount >= kMaxTemps) return;
  std::snprintf(gTemps[gTempCount], sizeof gTemps[0], "%s.partial-%ld", final.c_str(),
                static_cast<long>(getpid()));
  gTempCount = gTempCount + 1;
}

std::string BaseName(const std::string& scenePath) {
  std::string name = std::filesystem::path(scenePath).filename().string();
  const std::size_t dot = name.find_last_of('.');
  if (dot != std::string::npos && dot > 0) name = name.substr(0, dot);
  return name;
}

}  // namespace

int main(int argc, char** argv) {
  std::string input;
  std::string output;
  bool quiet = false;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "-h" || a == "--help") {
      std::fputs(kUsage, stdout);
      return kExitOk;
    } else if (a == "-o" || a == "--output") {
      if (i + 1 >= argc) {
        std::fprintf(stderr, "qvmovie-import: %s needs a value\n%s", a.c_str(), kUsage);
        return kExitInput;
      }
      output = argv[++i];
    } else if (a == "-q" || a == "--quiet") {
      quiet = true;
    } else if (!a.empty() && a[0] == '-' && a != "-") {
      std::fprintf(stderr, "qvmovie-import: unknown option %s\n%s", a.c_str(), kUsage);
      return kExitInput;
    } else if (input.empty()) {
      input = a;
    } else {
      std::fprintf(stderr, "qvmovie-import: more than one input file\n%s", kUsage);
      return kExitInput;
    }
  }
  if (input.empty() || output.empty()) {
    std::fprintf(stderr, "qvmovie-import: %s\n%s",
                 input.empty() ? "no input file" : "no output (-o SCENE.json)", kUsage);
    return kExitInput;
  }

  std::error_code ec;
  const std::uintmax_t size = std::filesystem::file_size(input, ec);
  if (!ec && size > kMaxFileBytes) {
    std::fprintf(stderr, "qvmovie-import: %s: file too large (%ju bytes)\n", input.c_str(), size);
    return kExitInput;
  }
  std::ifstream in(input, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "qvmovie-import: %s: cannot open: %s\n", input.c_str(),
                 std::strerror(errno));
    return kExitInput;
  }
  const std::vector<unsigned char> data((std::istreambuf_iterator<char>(in)), {});
  if (in.bad()) {
    std::fprintf(stderr, "qvmovie-import: %s: cannot read\n", input.c_str());
    return kExitInput;
  }

  qvimport::ImportedScene scene;
  const std::string base = BaseName(output);
  try {
    if (qvimport::LooksLikeIlbm(data.data(), data.size())) {
      scene = qvimport::SceneFromIlbm(qvimport::ReadIlbm(data.data(), data.size()), base);
    } else if (qvimport::LooksLikeGif(data.data(), data.size())) {
      scene = qvimport::SceneFromGif(qvimport::ReadGif(data.data(), data.size()), base);
    } else if (data.size() >= 4 && std::memcmp(data.data(), "FORM", 4) == 0) {
      qvimport::ReadIlbm(data.data(), data.size());  // throws with the reason
    } else {
      std::fprintf(stderr, "qvmovie-import: %s: neither an ILBM/PBM picture nor a GIF\n",
                   input.c_str());
      return kExitInput;
    }
  } catch (const qvimport::FormatError& e) {
    std::fprintf(stderr, "qvmovie-import: %s: %s\n", input.c_str(), e.what());
    return kExitInput;
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "qvmovie-import: %s: out of memory\n", input.c_str());
    return kExitWrite;
  }

  // Never write over the input.
  for (const auto& p : scene.pictures) {
    const std::filesystem::path target = std::filesystem::path(output).parent_path() / p.first;
    if (std::filesystem::equivalent(target, input, ec)) {
      std::fprintf(stderr, "qvmovie-import: %s: the picture %s would replace the input\n",
                   input.c_str(), target.string().c_str());
      return kExitInput;
    }
  }
  if (std::filesystem::equivalent(output, input, ec)) {
    std::fprintf(stderr, "qvmovie-import: %s: the scene would replace the input\n", input.c_str());
    return kExitInput;
  }

  const std::string dir = std::filesystem::path(output).parent_path().string();
  for (const auto& p : scene.pictures) NoteTemp(dir.empty() ? p.first : dir + "/" + p.first);
  NoteTemp(output);
  for (int sig : {SIGINT, SIGTERM, SIGHUP}) std::signal(sig, OnSignal);
  std::string error;
  if (!qvimport::WriteImportedScene(scene, output, &error)) {
    std::fprintf(stderr, "qvmovie-import: %s\n", error.c_str());
    return kExitWrite;
  }
  if (!quiet) {
    for (const std::string& line : scene.report)
      std::printf("%s: %s\n", input.c_str(), line.c_str());
    std::printf("%s: wrote %s and %zu picture%s\n", input.c_str(), output.c_str(),
                scene.pictures.size(), scene.pictures.size() == 1 ? "" : "s");
  }
  return kExitOk;
}

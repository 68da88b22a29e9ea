// Scene reader fuzzer: the input is scene text, optionally followed by a NUL
// byte and the bytes of a picture file that the scene can name as "p.png".
// Malformed text or pictures must end in the reader's own errors
// (SceneError, or BuildError when the library refuses), never in a crash or
// any other exception; a scene that loads is drawn at its first moments. The
// reader's memory limit is lowered so that a scene that passes it stays far
// below the fuzzer's own limits (scripts/fuzz.sh).
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "scene/Picture.h"
#include "scene/SceneError.h"
#include "scene/SceneReader.h"
#include "toolbox/QvPlatform.h"

namespace {

std::string scratchDir;

std::uint32_t Zero() { return 0; }

// QV_FUZZ_TRACE=1 in the environment prints the errors.
const bool trace = std::getenv("QV_FUZZ_TRACE") != nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char pattern[] = "/tmp/qvscene-fuzz-XXXXXX";
  const char* dir = mkdtemp(pattern);
  if (!dir) std::abort();
  scratchDir = dir;
  QvSetTickSource(Zero);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* bytes = reinterpret_cast<const char*>(data);
  const void* nul = std::memchr(data, 0, size);
  const std::size_t textSize =
      nul ? static_cast<std::size_t>(static_cast<const std::uint8_t*>(nul) - data) : size;
  const std::string text(bytes, textSize);
  const std::string picture = scratchDir + "/p.png";
  std::remove(picture.c_str());
  if (nul) {
    std::FILE* f = std::fopen(picture.c_str(), "wb");
    if (!f) std::abort();
    const std::size_t rest = size - textSize - 1;
    if (rest && std::fwrite(bytes + textSize + 1, 1, rest, f) != rest) std::abort();
    std::fclose(f);
  }
  qvscene::LoadOptions options;
  options.pictureDir = scratchDir;
  options.maxMemory = std::uint64_t{64} << 20;
  try {
    auto scene = qvscene::LoadSceneText("fuzz.json", text, options);
    // Drawn only while small, so that the search stays fast.
    if (static_cast<long>(scene->Width()) * scene->Height() <= 64 * 1024) {
      std::int64_t t = scene->From();
      for (int drawn = 0; drawn < 3 && t <= scene->To(); ++drawn, t += scene->Step()) {
        qvscene::Picture out;
        scene->Render(static_cast<std::int32_t>(t), &out);
      }
    }
  } catch (const qvscene::SceneError& e) {
    if (trace) std::fprintf(stderr, "%s\n", e.what());
  } catch (const qvscene::BuildError& e) {
    if (trace) std::fprintf(stderr, "%s\n", e.what());
  } catch (const std::exception& e) {
    // Anything else escaped the reader's checks: a finding.
    std::fprintf(stderr, "exception not of the reader's own types: %s\n", e.what());
    std::abort();
  }
  QvFailAllocation(0);
  return 0;
}

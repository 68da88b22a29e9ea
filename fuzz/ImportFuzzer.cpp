// Import reader fuzzer: the input is an ILBM/PBM or GIF file. Malformed files
// must end in FormatError, never in a crash, an out-of-bounds access or a
// leak; a GIF that decodes is laid out as a sprite sheet as the scene reader
// does.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "import/FormatError.h"
#include "import/Gif.h"
#include "import/Ilbm.h"
#include "import/Sheet.h"

namespace {
// QV_FUZZ_TRACE=1 in the environment prints the errors.
const bool trace = std::getenv("QV_FUZZ_TRACE") != nullptr;
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    if (qvimport::LooksLikeGif(data, size)) {
      const qvimport::GifAnimation anim = qvimport::ReadGif(data, size);
      bool reduced = false;
      const qvscene::Picture sheet = qvimport::GifSheet(anim, &reduced);
      if (sheet.pixels.size() != static_cast<std::size_t>(sheet.width) * sheet.height) std::abort();
    } else {
      const qvimport::IlbmImage image = qvimport::ReadIlbm(data, size);
      const qvscene::Picture& p = image.picture;
      if (p.pixels.size() != static_cast<std::size_t>(p.width) * p.height) std::abort();
      for (const qvimport::ColorRange& r : image.ranges) {
        if (r.kind == "DRNG" && r.high >= r.low &&
            r.cells.size() != static_cast<std::size_t>(r.high - r.low + 1))
          std::abort();
      }
    }
  } catch (const qvimport::FormatError& e) {
    if (trace) std::fprintf(stderr, "%s\n", e.what());
  }
  return 0;
}

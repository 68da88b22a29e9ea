#include "scene/PictureFile.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "import/FormatError.h"
#include "import/Gif.h"
#include "import/Ilbm.h"
#include "import/Sheet.h"
#include "scene/PngIO.h"
#include "scene/SafeFile.h"

namespace qvscene {

bool ReadPictureFile(const std::string& path, Picture* picture, std::string* error,
                     std::uint64_t maxPixels) {
  // The whole file is read through the safe reader (a regular file of a sane
  // size, never a FIFO or device); a PNG is then read again by libpng.
  std::string data;
  std::string reason;
  if (!ReadInput(path, kMaxPictureBytes, &data, &reason)) {
    const bool open = reason.compare(0, 13, "cannot open: ") == 0;
    *error = open ? "cannot open '" + path + "': " + reason.substr(13)
                  : "cannot read '" + path + "': " + reason;
    return false;
  }
  const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
  const bool ilbm = data.size() >= 4 && std::memcmp(bytes, "FORM", 4) == 0;
  const bool gif = qvimport::LooksLikeGif(bytes, data.size());
  if (!ilbm && !gif) return ReadIndexedPng(path, picture, error, maxPixels);
  try {
    if (ilbm) {
      *picture = qvimport::ReadIlbm(bytes, data.size()).picture;
    } else {
      bool reduced = false;
      *picture = qvimport::GifSheet(qvimport::ReadGif(bytes, data.size()), &reduced);
    }
  } catch (const qvimport::FormatError& e) {
    *error = "'" + path + "': " + e.what();
    return false;
  } catch (const std::bad_alloc&) {
    *error = "'" + path + "': out of memory";
    return false;
  }
  const std::uint64_t pixels =
      static_cast<std::uint64_t>(picture->width) * static_cast<std::uint64_t>(picture->height);
  if (pixels > maxPixels) {
    *error = "'" + path + "' is " + std::to_string(picture->width) + " x " +
             std::to_string(picture->height) +
             " pixels, more than the memory limit leaves room for (" + Megabytes(maxPixels) + ")";
    *picture = Picture();
    return false;
  }
  return true;
}

}  // namespace qvscene

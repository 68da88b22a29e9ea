#include "scene/PictureFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "import/FormatError.h"
#include "import/Gif.h"
#include "import/Ilbm.h"
#include "import/Sheet.h"
#include "scene/PngIO.h"

namespace qvscene {

bool ReadPictureFile(const std::string& path, Picture* picture, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = "cannot open '" + path + "': " + std::strerror(errno);
    return false;
  }
  unsigned char head[12] = {};
  in.read(reinterpret_cast<char*>(head), sizeof head);
  const std::size_t got = static_cast<std::size_t>(in.gcount());
  const bool ilbm = got >= 4 && std::memcmp(head, "FORM", 4) == 0;
  const bool gif = qvimport::LooksLikeGif(head, got);
  if (!ilbm && !gif) return ReadIndexedPng(path, picture, error);
  in.seekg(0, std::ios::end);
  const std::streamoff size = in.tellg();
  if (size < 0 || size > (256 << 20)) {
    *error = "'" + path + "' is too large";
    return false;
  }
  in.seekg(0);
  std::vector<unsigned char> data(static_cast<std::size_t>(size));
  if (!in.read(reinterpret_cast<char*>(data.data()), size)) {
    *error = "cannot read '" + path + "'";
    return false;
  }
  try {
    if (ilbm) {
      *picture = qvimport::ReadIlbm(data.data(), data.size()).picture;
    } else {
      bool reduced = false;
      *picture = qvimport::GifSheet(qvimport::ReadGif(data.data(), data.size()), &reduced);
    }
  } catch (const qvimport::FormatError& e) {
    *error = "'" + path + "': " + e.what();
    return false;
  } catch (const std::bad_alloc&) {
    *error = "'" + path + "': out of memory";
    return false;
  }
  return true;
}

}  // namespace qvscene

#pragma once

#include <cstdint>
#include <string>

#include "scene/Picture.h"

namespace qvscene {

/// Reads a picture file of any kind the scene format accepts, told apart by
/// its content: an 8-bit indexed PNG, an ILBM or PBM picture (.lbm, .iff,
/// .bbm; its pixels and palette) or a GIF (its frames side by side, as
/// qvmovie-import lays them out, with one palette). On failure returns false
/// and sets error to a short reason that names the file. Only a regular file
/// of a sane size is read; a picture of more than maxPixels pixels is refused.
bool ReadPictureFile(const std::string& path, Picture* picture, std::string* error,
                     std::uint64_t maxPixels = UINT64_MAX);

}  // namespace qvscene

#pragma once

#include <string>

#include "scene/Picture.h"

namespace qvscene {

/// Reads a picture file of any kind the scene format accepts, told apart by
/// its content: an 8-bit indexed PNG, an ILBM or PBM picture (.lbm, .iff,
/// .bbm; its pixels and palette) or a GIF (its frames side by side, as
/// qvmovie-import lays them out, with one palette). On failure returns false
/// and sets error to a short reason that names the file.
bool ReadPictureFile(const std::string& path, Picture* picture, std::string* error);

}  // namespace qvscene

#pragma once

#include <string>

#include "scene/Picture.h"

namespace qvweb {

// Pictures the page hands over already decoded, by the file name the scene
// gives them. The scene reader's picture files are replaced by a look-up here
// (PictureStore.cpp), so the engine in the browser needs no decoder.
void AddPicture(const std::string& file, qvscene::Picture picture);
void ClearPictures();

}  // namespace qvweb

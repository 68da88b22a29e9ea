#pragma once

#include <memory>
#include <string>

#include "scene/Scene.h"

namespace qvscene {

struct LoadOptions {
  // Directory that relative picture file names are resolved against; empty
  // for the directory of the scene file.
  std::string pictureDir;
};

// Reads a scene file (format: tools/SCENE.md) and builds its movie through
// the library. Throws SceneError for a fault in the scene or its pictures
// (the message names the file, the JSON path and the line) and BuildError
// when the library cannot build what the scene describes.
std::unique_ptr<Scene> LoadScene(const std::string& path, const LoadOptions& options = {});

// The same from scene text in memory; file is the name used in messages and
// the base of relative picture names when options.pictureDir is empty.
std::unique_ptr<Scene> LoadSceneText(const std::string& file, const std::string& text,
                                     const LoadOptions& options = {});

}  // namespace qvscene

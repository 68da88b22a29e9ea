#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "scene/Scene.h"

namespace qvscene {

struct LoadOptions {
  // Directory that relative picture file names are resolved against; empty
  // for the directory of the scene file.
  std::string pictureDir;
  // Most bytes the pictures, the frame images (zoomed and rotated, with
  // their masks and the members' copies), the members' off-screen worlds and
  // one moment of the output may need, estimated before any is made. A
  // scene over it is refused with SceneError naming the value that passes
  // it.
  std::uint64_t maxMemory = kDefaultMaxMemory;
  // Added to the message of that refusal ("raise it with --max-memory").
  std::string limitHint;

  // 512 MiB.
  static constexpr std::uint64_t kDefaultMaxMemory = std::uint64_t{512} << 20;
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

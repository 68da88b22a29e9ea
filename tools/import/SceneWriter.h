#pragma once

#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "import/Gif.h"
#include "import/Ilbm.h"
#include "scene/Picture.h"

namespace qvimport {

/// A scene made from an imported file, not yet written: the scene document,
/// the pictures it names (file names relative to the scene file) and the
/// lines that tell the user what was made and what was left out.
struct ImportedScene {
  nlohmann::ordered_json scene;                                    ///< the scene file's content
  std::vector<std::pair<std::string, qvscene::Picture>> pictures;  ///< file name, picture
  std::vector<std::string> report;                                 ///< one line each, for stdout
};

/// The frames per second a colour animation runs at for a rate of
/// stepsPerSecond: the nearest whole number from 1 to 1000.
int NearestSpeed(double stepsPerSecond);

/// The scene of an ILBM or PBM picture: one member showing the picture, and
/// one colour-only member per colour range. Forward ranges are colour cycles,
/// reversed ranges and DRNG ranges colour-table switches with one table per
/// step. Active ranges are placed on the layer; inactive ones stay in the
/// scene on no layer (switched off). Picture files are named after base
/// ("base.png").
ImportedScene SceneFromIlbm(const IlbmImage& image, const std::string& base);

/// The scene of an animated GIF: one member whose frame animation cuts the
/// composited frames out of a sprite sheet ("base.png"), with the delays as
/// intervals of 1/30 s (rounding carried so that the total does not drift).
/// When the frames need more than 256 colours together, each frame keeps its
/// own colours and a colour-table switch gives every moment the table of
/// its frame ("base-colors-N.png"). Throws FormatError when the animation
/// cannot be a scene (too many frames, too long, too wide).
ImportedScene SceneFromGif(const GifAnimation& anim, const std::string& base);

/// The scene file's text: JSON indented by two spaces, each value that
/// fits on a line of 100 characters kept on one.
std::string SceneText(const ImportedScene& scene);

/// Writes the scene to scenePath and its pictures beside it, each under a
/// temporary name renamed only when all are complete; missing parent
/// directories are made. On failure nothing is left behind, error is set
/// and the result is false.
bool WriteImportedScene(const ImportedScene& scene, const std::string& scenePath,
                        std::string* error);

}  // namespace qvimport

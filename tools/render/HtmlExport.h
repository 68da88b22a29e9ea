#pragma once

#include <string>
#include <vector>

#include "scene/SceneReader.h"

namespace qvrender {

// The folders that may hold the engine for the browser, in the order they
// are tried: only QVMOVIE_WEB_DIR when it is set; otherwise share/qvmovie/web
// of the prefix the tool is installed in (found from the tool's own
// executable, so a moved or unpacked tree works), then the WebAssembly build
// beside the build the tool comes from.
std::vector<std::string> WebEngineDirs();

// Writes one self-contained HTML page that plays the scene in a browser:
// the engine (qvmovie-engine.js and .wasm from the first of webDirs that
// holds qvmovie-engine.wasm, the code compressed and embedded), the scene
// text and its pictures (decoded, compressed, embedded), in the page of
// that folder's page.html. The scene must have been loaded once already (so
// its faults are reported as usual); its pictures are read again. False
// with the reason in error when no folder holds the engine, a file of it is
// missing or the page cannot be written.
bool WriteHtml(const std::string& path, const std::string& scene,
               const qvscene::LoadOptions& options, const std::vector<std::string>& webDirs,
               std::string* error);

}  // namespace qvrender

#pragma once

#include <string>

#include "scene/SceneReader.h"

namespace qvrender {

// The folder of the engine for the browser: QVMOVIE_WEB_DIR when set,
// otherwise the WebAssembly build beside the build the tool comes from.
std::string WebEngineDir();

// Writes one self-contained HTML page that plays the scene in a browser:
// the engine (qvmovie-engine.js and .wasm from webDir, the code compressed
// and embedded), the scene text and its pictures (decoded, compressed,
// embedded), in the page of webDir/page.html. The scene must have been
// loaded once already (so its faults are reported as usual); its pictures
// are read again. False with the reason in error when a file of the engine
// is missing or the page cannot be written.
bool WriteHtml(const std::string& path, const std::string& scene,
               const qvscene::LoadOptions& options, const std::string& webDir, std::string* error);

}  // namespace qvrender

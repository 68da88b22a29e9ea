#include "render/HtmlExport.h"

#include <unistd.h>
#include <zlib.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include <nlohmann/json.hpp>

#include "scene/PictureFile.h"

#ifndef QV_WEB_DIR
#define QV_WEB_DIR ""
#endif
#ifndef QV_WEB_FROM_BIN
#define QV_WEB_FROM_BIN "../share/qvmovie/web"
#endif

namespace qvrender {
namespace {

bool ReadFile(const std::string& path, std::string* text, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = "cannot read '" + path + "'";
    return false;
  }
  text->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  if (in.bad()) {
    *error = "cannot read '" + path + "'";
    return false;
  }
  return true;
}

std::string Base64(const std::vector<unsigned char>& bytes) {
  static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const unsigned v = static_cast<unsigned>(bytes[i]) << 16 |
                       (i + 1 < bytes.size() ? static_cast<unsigned>(bytes[i + 1]) << 8 : 0u) |
                       (i + 2 < bytes.size() ? bytes[i + 2] : 0u);
    out += kDigits[v >> 18 & 63];
    out += kDigits[v >> 12 & 63];
    out += i + 1 < bytes.size() ? kDigits[v >> 6 & 63] : '=';
    out += i + 2 < bytes.size() ? kDigits[v & 63] : '=';
  }
  return out;
}

// zlib-compressed (what the browser's DecompressionStream("deflate") reads),
// then base64.
std::string Pack(const void* data, std::size_t size) {
  uLongf packed = compressBound(static_cast<uLong>(size));
  std::vector<unsigned char> out(packed);
  if (compress2(out.data(), &packed, static_cast<const Bytef*>(data), static_cast<uLong>(size),
                Z_BEST_COMPRESSION) != Z_OK) {
    throw std::bad_alloc();
  }
  out.resize(packed);
  return Base64(out);
}

std::string BaseName(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The same resolution as the scene reader's.
std::string Resolve(const std::string& scene, const std::string& pictureDir,
                    const std::string& file) {
  std::string dir = pictureDir;
  if (dir.empty()) {
    const std::size_t slash = scene.find_last_of('/');
    if (slash != std::string::npos) dir = scene.substr(0, slash + 1);
  }
  if (file.empty() || file[0] == '/' || dir.empty()) return file;
  return dir.back() == '/' ? dir + file : dir + "/" + file;
}

// Fills the page template: each marker, in the template's order, is
// replaced once (the text put in is not searched again).
bool Fill(const std::string& page, const std::vector<std::pair<std::string, std::string>>& parts,
          std::string* out, std::string* error) {
  std::size_t from = 0;
  for (const auto& part : parts) {
    const std::size_t at = page.find(part.first, from);
    if (at == std::string::npos) {
      *error = "the page template has no " + part.first;
      return false;
    }
    out->append(page, from, at - from);
    *out += part.second;
    from = at + part.first.size();
  }
  out->append(page, from, std::string::npos);
  return true;
}

std::string EscapeHtml(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '&':
        out += "&amp;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

}  // namespace

std::vector<std::string> WebEngineDirs() {
  const char* env = std::getenv("QVMOVIE_WEB_DIR");
  if (env && *env) return {env};
  std::vector<std::string> dirs;
  std::vector<char> exe(4096);
  const ssize_t n = readlink("/proc/self/exe", exe.data(), exe.size());
  if (n > 0 && static_cast<std::size_t>(n) < exe.size()) {
    const std::string self(exe.data(), static_cast<std::size_t>(n));
    dirs.push_back(self.substr(0, self.find_last_of('/') + 1) + QV_WEB_FROM_BIN);
  }
  if (*QV_WEB_DIR) dirs.push_back(QV_WEB_DIR);
  return dirs;
}

bool WriteHtml(const std::string& path, const std::string& scene,
               const qvscene::LoadOptions& options, const std::vector<std::string>& webDirs,
               std::string* error) {
  std::string page, engineJs, engineWasm, sceneText, looked;
  bool found = false;
  for (const std::string& webDir : webDirs) {
    const std::string dir = webDir.empty() || webDir.back() == '/' ? webDir : webDir + "/";
    found = access((dir + "qvmovie-engine.wasm").c_str(), F_OK) == 0;
    if (found) {
      if (!ReadFile(dir + "page.html", &page, error) ||
          !ReadFile(dir + "qvmovie-engine.js", &engineJs, error) ||
          !ReadFile(dir + "qvmovie-engine.wasm", &engineWasm, error)) {
        return false;
      }
      break;
    }
    looked += (looked.empty() ? "" : ", ") + webDir;
  }
  if (!found) {
    *error = "the engine for the browser is not built (no qvmovie-engine.wasm in " +
             (looked.empty() ? std::string("any folder") : looked) +
             "): build it with 'bash scripts/web.sh BUILD_DIR' in the source tree, then "
             "install BUILD_DIR again, or name its folder in QVMOVIE_WEB_DIR";
    return false;
  }
  if (!ReadFile(scene, &sceneText, error)) return false;
  if (engineJs.find("</script") != std::string::npos ||
      engineJs.find("<!--") != std::string::npos) {
    *error = "qvmovie-engine.js cannot be embedded (it holds </script or <!--)";
    return false;
  }

  // The pictures under the names the scene gives them: the page's scene
  // reader finds them there (its scene has no folder).
  nlohmann::json data;
  const std::string name = BaseName(scene);
  std::string title = name;
  if (title.size() > 5 && title.compare(title.size() - 5, 5, ".json") == 0)
    title.resize(title.size() - 5);
  data["name"] = name;
  data["title"] = title;
  data["scene"] = sceneText;
  data["pictures"] = nlohmann::json::array();
  const nlohmann::json root = nlohmann::json::parse(sceneText);
  for (const auto& item : root.at("pictures").items()) {
    const std::string file = item.value().get<std::string>();
    qvscene::Picture picture;
    if (!qvscene::ReadPictureFile(Resolve(scene, options.pictureDir, file), &picture, error))
      return false;
    std::vector<unsigned char> bytes(&picture.palette[0][0], &picture.palette[0][0] + 768);
    bytes.insert(bytes.end(), picture.pixels.begin(), picture.pixels.end());
    data["pictures"].push_back({{"file", file},
                                {"width", picture.width},
                                {"height", picture.height},
                                {"data", Pack(bytes.data(), bytes.size())}});
  }
  data["engine"] = Pack(engineWasm.data(), engineWasm.size());

  // Inside a script element "</script" ends it and "<!--" changes how the
  // rest is read: every "<" (in JSON only found in strings) is written as
  // the escape "\u003c", which means the same.
  const std::string dumped = data.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  std::string json;
  json.reserve(dumped.size());
  for (char c : dumped) {
    if (c == '<')
      json += "\\u003c";
    else
      json += c;
  }
  std::string html;
  if (!Fill(
          page,
          {{"@QV_TITLE@", EscapeHtml(title)},
           {"@QV_DATA@", "<script type=\"application/json\" id=\"qv-data\">" + json + "</script>"},
           {"@QV_ENGINE@", "<script>" + engineJs + "</script>"}},
          &html, error)) {
    return false;
  }

  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(html.data(), static_cast<std::streamsize>(html.size()));
  out.close();
  if (!out) {
    *error = "cannot write '" + path + "'";
    return false;
  }
  return true;
}

}  // namespace qvrender

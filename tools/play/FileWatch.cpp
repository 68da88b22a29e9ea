#include "play/FileWatch.h"

#include <sys/stat.h>

#include "scene/JsonDocument.h"
#include "scene/SafeFile.h"

namespace qvplay {

FileWatch::Stamp FileWatch::Take(const std::string& path) {
  Stamp s;
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return s;
  s.exists = true;
  s.seconds = static_cast<long long>(st.st_mtim.tv_sec);
  s.nanoseconds = static_cast<long long>(st.st_mtim.tv_nsec);
  s.size = static_cast<long long>(st.st_size);
  s.inode = static_cast<long long>(st.st_ino);
  return s;
}

void FileWatch::Set(const std::vector<std::string>& paths) {
  paths_ = paths;
  stamps_.clear();
  for (const std::string& p : paths_) stamps_.push_back(Take(p));
}

bool FileWatch::Changed() {
  bool changed = false;
  for (std::size_t i = 0; i < paths_.size(); ++i) {
    const Stamp now = Take(paths_[i]);
    if (!(now == stamps_[i])) {
      stamps_[i] = now;
      changed = true;
    }
  }
  return changed;
}

namespace {

std::string DirOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string Resolve(const std::string& dir, const std::string& file) {
  if (file.empty() || file[0] == '/' || dir.empty()) return file;
  return dir.back() == '/' ? dir + file : dir + "/" + file;
}

}  // namespace

std::vector<std::string> SceneFiles(const std::string& scenePath, const std::string& pictureDir) {
  std::vector<std::string> files{scenePath};
  // Read as the scene reader reads it: never blocking on a FIFO or a device.
  std::string text;
  std::string error;
  if (!qvscene::ReadInput(scenePath, qvscene::kMaxSceneBytes, &text, &error)) return files;
  try {
    const qvscene::JsonDocument doc(scenePath, text);
    const nlohmann::json& root = doc.Root();
    if (!root.is_object() || !root.contains("pictures") || !root["pictures"].is_object()) {
      return files;
    }
    const std::string dir = pictureDir.empty() ? DirOf(scenePath) : pictureDir;
    for (const auto& item : root["pictures"].items()) {
      if (item.value().is_string()) {
        files.push_back(Resolve(dir, item.value().get<std::string>()));
      }
    }
  } catch (const std::exception&) {
    // Not readable as JSON: only the scene file is known.
  }
  return files;
}

}  // namespace qvplay

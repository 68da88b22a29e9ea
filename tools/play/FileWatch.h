#pragma once

#include <string>
#include <vector>

namespace qvplay {

// Notices changes of a set of files by polling their modification times,
// sizes and inode numbers. A file that vanishes or appears counts as changed.
class FileWatch {
 public:
  // Watches exactly these files from now on, taking their present state.
  void Set(const std::vector<std::string>& paths);
  // True when any watched file differs from the state taken last; takes
  // the new state.
  bool Changed();
  const std::vector<std::string>& Paths() const { return paths_; }

 private:
  struct Stamp {
    bool exists = false;
    long long seconds = 0, nanoseconds = 0, size = 0, inode = 0;
    bool operator==(const Stamp& o) const {
      return exists == o.exists && seconds == o.seconds && nanoseconds == o.nanoseconds &&
             size == o.size && inode == o.inode;
    }
  };
  static Stamp Take(const std::string& path);

  std::vector<std::string> paths_;
  std::vector<Stamp> stamps_;
};

// The files a scene file reads: the scene itself and the picture files it
// names, resolved as the scene reader does (against pictureDir, or the
// scene file's directory when it is empty). When the scene cannot be
// parsed, only the scene file.
std::vector<std::string> SceneFiles(const std::string& scenePath, const std::string& pictureDir);

}  // namespace qvplay

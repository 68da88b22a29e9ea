#include "scene/Outputs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "scene/SafeFile.h"

namespace qvscene {
namespace {

namespace fs = std::filesystem;

// The temporary files to remove when a signal ends the run: fixed buffers,
// so that the handler only reads them and calls unlink.
constexpr std::size_t kTempSize = PATH_MAX + 32;
char gTemps[Outputs::kMaxOutputs][kTempSize];
volatile std::sig_atomic_t gTempCount = 0;
// The directories made for them, removed after them when empty.
constexpr int kMaxDirs = 128;
char gDirs[kMaxDirs][kTempSize];
volatile std::sig_atomic_t gDirCount = 0;

constexpr int kSignals[] = {SIGINT,  SIGTERM, SIGHUP,  SIGQUIT, SIGPIPE,   SIGXFSZ,
                            SIGXCPU, SIGALRM, SIGUSR1, SIGUSR2, SIGVTALRM, SIGPROF};
constexpr int kSignalCount = sizeof kSignals / sizeof kSignals[0];
struct sigaction gOld[kSignalCount];
bool gInstalled[kSignalCount];

extern "C" void OnSignal(int sig) {
  const int count = gTempCount;
  for (int i = 0; i < count; ++i) {
    if (gTemps[i][0]) unlink(gTemps[i]);
  }
  for (int i = gDirCount - 1; i >= 0; --i) rmdir(gDirs[i]);
  // Ends the process as the signal asks, once the handler returns.
  std::signal(sig, SIG_DFL);
  std::raise(sig);
}

// Blocks the signals above while the list of temporary files changes.
class BlockSignals {
 public:
  BlockSignals() {
    sigset_t all;
    sigemptyset(&all);
    for (int s : kSignals) sigaddset(&all, s);
    sigprocmask(SIG_BLOCK, &all, &old_);
  }
  ~BlockSignals() { sigprocmask(SIG_SETMASK, &old_, nullptr); }

 private:
  sigset_t old_;
};

std::string Quote(const std::string& s) { return "'" + s + "'"; }

// path made absolute, with the links of its existing part resolved and
// "." and ".." of the rest removed.
std::string Resolved(const std::string& path) {
  std::error_code ec;
  fs::path p = fs::absolute(path, ec);
  if (ec) return path;
  const fs::path r = fs::weakly_canonical(p, ec);
  return (ec ? p.lexically_normal() : r).string();
}

}  // namespace

Outputs::Outputs() {
  gTempCount = 0;
  gDirCount = 0;
  for (int i = 0; i < kSignalCount; ++i) {
    struct sigaction now;
    std::memset(&now, 0, sizeof now);
    now.sa_handler = OnSignal;
    sigfillset(&now.sa_mask);
    gInstalled[i] = false;
    if (sigaction(kSignals[i], nullptr, &gOld[i]) != 0) continue;
    // A signal the caller ignores (nohup) stays ignored.
    if (gOld[i].sa_handler == SIG_IGN) continue;
    gInstalled[i] = sigaction(kSignals[i], &now, nullptr) == 0;
  }
}

Outputs::~Outputs() {
  {
    BlockSignals block;
    for (int i = 0; i < gTempCount; ++i) {
      if (gTemps[i][0]) unlink(gTemps[i]);
      gTemps[i][0] = 0;
    }
    gTempCount = 0;
    if (!committed_) {
      for (int i = gDirCount - 1; i >= 0; --i) rmdir(gDirs[i]);
    }
    gDirCount = 0;
  }
  for (int i = 0; i < kSignalCount; ++i) {
    if (gInstalled[i]) sigaction(kSignals[i], &gOld[i], nullptr);
  }
}

bool Outputs::Add(const std::string& name, std::string* error) {
  if (entries_.size() >= static_cast<std::size_t>(kMaxOutputs)) {
    *error = "more than " + std::to_string(kMaxOutputs) + " outputs";
    return false;
  }
  if (name.empty()) {
    *error = "an output name is empty";
    return false;
  }
  Entry e;
  e.name = name;
  struct stat st;
  if (lstat(name.c_str(), &st) == 0) {
    if (S_ISLNK(st.st_mode) && stat(name.c_str(), &st) != 0) {
      *error =
          "output " + Quote(name) + " is a symbolic link to nothing (" + std::strerror(errno) + ")";
      return false;
    }
    if (!S_ISREG(st.st_mode)) {
      *error =
          "output " + Quote(name) + " exists and is not a regular file but " + FileKind(st.st_mode);
      return false;
    }
    e.exists = true;
    e.device = st.st_dev;
    e.inode = st.st_ino;
    e.mode = st.st_mode & 07777;
  } else if (errno != ENOENT) {
    *error = "cannot write " + Quote(name) + ": " + std::strerror(errno);
    return false;
  }
  e.target = Resolved(name);
  for (const Entry& o : entries_) {
    if ((e.exists && o.exists && e.device == o.device && e.inode == o.inode) ||
        e.target == o.target) {
      *error = "outputs " + Quote(o.name) + " and " + Quote(name) + " are the same file";
      return false;
    }
  }
  entries_.push_back(e);
  return true;
}

bool Outputs::NotInput(const std::string& path, std::string* error) const {
  struct stat st;
  const bool exists = stat(path.c_str(), &st) == 0;
  const std::string target = Resolved(path);
  for (const Entry& e : entries_) {
    if ((exists && e.exists && e.device == st.st_dev && e.inode == st.st_ino) ||
        e.target == target) {
      *error = "output " + Quote(e.name) + " is the input " + Quote(path);
      return false;
    }
  }
  return true;
}

bool Outputs::Create(std::string* error) {
  mode_t mask = umask(0);
  umask(mask);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    Entry& e = entries_[i];
    const fs::path target(e.target);
    const std::string dir = target.parent_path().string();
    // Missing parent directories, from the top.
    std::vector<std::string> missing;
    for (fs::path d = target.parent_path(); !d.empty() && d != d.root_path(); d = d.parent_path()) {
      struct stat st;
      if (stat(d.c_str(), &st) == 0) break;
      missing.push_back(d.string());
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
      if (it->size() >= kTempSize || gDirCount >= kMaxDirs) {
        *error = "cannot write " + Quote(e.name) + ": too many directories to create";
        return false;
      }
      BlockSignals block;
      if (mkdir(it->c_str(), 0777) != 0) {
        *error = "cannot write " + Quote(e.name) + ": cannot create directory " + Quote(*it) +
                 ": " + std::strerror(errno);
        return false;
      }
      std::snprintf(gDirs[gDirCount], kTempSize, "%s", it->c_str());
      gDirCount = gDirCount + 1;
    }
    std::string temp = (dir == "/" ? std::string() : dir) + "/.partial-XXXXXX";
    if (temp.size() >= kTempSize) {
      *error = "cannot write " + Quote(e.name) + ": " + std::strerror(ENAMETOOLONG);
      return false;
    }
    int fd = -1;
    {
      // Made and noted for removal as one step, as far as signals go.
      BlockSignals block;
      fd = mkstemp(temp.data());
      if (fd >= 0) {
        std::snprintf(gTemps[gTempCount], kTempSize, "%s", temp.c_str());
        gTempCount = gTempCount + 1;
      }
    }
    if (fd < 0) {
      *error = "cannot write " + Quote(e.name) + ": " + std::strerror(errno);
      return false;
    }
    fchmod(fd, e.exists ? e.mode : (0666 & ~mask));
    close(fd);
    e.temp = temp;
  }
  return true;
}

bool Outputs::Commit(std::string* error) {
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const Entry& e = entries_[i];
    if (std::rename(e.temp.c_str(), e.target.c_str()) != 0) {
      *error = "cannot write " + Quote(e.name) + ": " + std::strerror(errno);
      return false;
    }
    BlockSignals block;
    gTemps[i][0] = 0;
  }
  committed_ = true;
  return true;
}

std::string Outputs::Explain(std::string message) const {
  for (const Entry& e : entries_) {
    if (e.temp.empty()) continue;
    for (std::size_t at = message.find(e.temp); at != std::string::npos;
         at = message.find(e.temp, at + e.name.size())) {
      message.replace(at, e.temp.size(), e.name);
    }
  }
  return message;
}

}  // namespace qvscene

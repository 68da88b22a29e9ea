#include "scene/SafeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace qvscene {
const char* FileKind(unsigned mode) {
  if (S_ISDIR(mode)) return "a directory";
  if (S_ISFIFO(mode)) return "a FIFO";
  if (S_ISCHR(mode)) return "a character device";
  if (S_ISBLK(mode)) return "a block device";
  if (S_ISSOCK(mode)) return "a socket";
  if (S_ISLNK(mode)) return "a symbolic link";
  return "not a file";
}

std::string Megabytes(std::uint64_t bytes) {
  return std::to_string((bytes + (std::uint64_t{1} << 20) - 1) >> 20) + " MB";
}

int OpenInput(const std::string& path, std::uint64_t maxBytes, std::string* error) {
  const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) {
    *error = std::string("cannot open: ") + std::strerror(errno);
    return -1;
  }
  struct stat st;
  if (fstat(fd, &st) != 0) {
    *error = std::string("cannot open: ") + std::strerror(errno);
  } else if (!S_ISREG(st.st_mode)) {
    *error = std::string("not a regular file but ") + FileKind(st.st_mode);
  } else if (static_cast<std::uint64_t>(st.st_size) > maxBytes) {
    *error = "larger than " + Megabytes(maxBytes) + " (" +
             std::to_string(static_cast<std::uint64_t>(st.st_size)) + " bytes)";
  } else {
    return fd;
  }
  close(fd);
  return -1;
}

bool ReadInput(const std::string& path, std::uint64_t maxBytes, std::string* text,
               std::string* error) {
  const int fd = OpenInput(path, maxBytes, error);
  if (fd < 0) return false;
  std::string out;
  char buffer[65536];
  while (true) {
    const ssize_t n = read(fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      *error = std::string("cannot read: ") + std::strerror(errno);
      close(fd);
      return false;
    }
    if (n == 0) break;
    // The file may grow while it is read.
    if (out.size() + static_cast<std::size_t>(n) > maxBytes) {
      *error = "larger than " + Megabytes(maxBytes);
      close(fd);
      return false;
    }
    out.append(buffer, static_cast<std::size_t>(n));
  }
  close(fd);
  *text = std::move(out);
  return true;
}

}  // namespace qvscene

#pragma once

#include <cstdint>
#include <string>

namespace qvscene {

// Largest scene file read, in bytes (4 MiB): parsed, a scene takes up to
// about 40 bytes of memory for each byte of its text.
constexpr std::uint64_t kMaxSceneBytes = std::uint64_t{4} << 20;
// Largest picture file read, in bytes (256 MiB).
constexpr std::uint64_t kMaxPictureBytes = std::uint64_t{256} << 20;

// Opens path for reading only when it is a regular file of at most maxBytes
// bytes. It is opened without blocking (a FIFO without a writer, a device)
// and checked with fstat before anything is read. Returns the descriptor,
// which the caller closes, or -1 with the reason in error, without the path
// ("cannot open: No such file or directory", "not a regular file but a
// directory", "larger than 16 MB").
int OpenInput(const std::string& path, std::uint64_t maxBytes, std::string* error);

// Reads such a file whole into text; false with the reason in error.
bool ReadInput(const std::string& path, std::uint64_t maxBytes, std::string* text,
               std::string* error);

// What a file of that st_mode is, for messages: "a directory", "a FIFO",
// "a character device", "a block device", "a socket".
const char* FileKind(unsigned mode);

// bytes in whole megabytes (2^20 bytes), rounded up: "12 MB".
std::string Megabytes(std::uint64_t bytes);

}  // namespace qvscene

#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace qvimport {

/// A fault in a picture file that the import readers refuse.
///
/// what() is "WHERE at byte OFFSET: REASON", for instance
/// "chunk BODY at byte 120: ends after 3 of 8 rows"; the tool puts the file
/// name in front.
class FormatError : public std::runtime_error {
 public:
  /// where: the chunk or block ("chunk BODY", "image block 3"); offset: the
  /// byte of the file at which the fault shows, counted from 0.
  FormatError(const std::string& where, std::uint64_t offset, const std::string& reason)
      : std::runtime_error(where + " at byte " + std::to_string(offset) + ": " + reason),
        where_(where),
        offset_(offset) {}

  /// The chunk or block that holds the fault.
  const std::string& Where() const { return where_; }
  /// Byte offset of the fault in the file.
  std::uint64_t Offset() const { return offset_; }

 private:
  std::string where_;
  std::uint64_t offset_;
};

/// The most pixels of one decoded picture (or of all decoded GIF frames
/// together); larger files are refused before anything is allocated. The
/// fuzzer builds with a smaller bound (QV_IMPORT_MAX_PIXELS).
#ifdef QV_IMPORT_MAX_PIXELS
constexpr std::uint64_t kMaxPixels = QV_IMPORT_MAX_PIXELS;
#else
constexpr std::uint64_t kMaxPixels = 64u * 1024u * 1024u;
#endif

}  // namespace qvimport

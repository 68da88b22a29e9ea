/// \file tbColorTable.h
/// \brief tbColorTable, a colour table of 256 entries.
#pragma once

#include <cstdint>
#include <cstring>

#include "toolbox/tbRGBColor.h"

/// A colour table of 256 entries, the palette of 8-bit pixels: pixel value i
/// shows entry i. CTSize() is the highest entry index in use (255 for a new
/// table), kept within 0 to 255. Entry indices outside 0 to 255 are wrapped
/// to their low 8 bits, so no access leaves the table. A table holds its
/// entries by value and allocates nothing.
class tbColorTable {
 public:
  /// The kind passed to tbColorTable(std::int16_t) for a table of 256
  /// entries, the one the library always uses.
  static constexpr std::int16_t kStandard = 72;

  /// A table of 256 black entries, CTSize() 255.
  tbColorTable();
  /// A table of 256 black entries, CTSize() 255.
  ///
  /// \param kind Accepted for compatibility; pass kStandard.
  explicit tbColorTable(std::int16_t kind);
  /// Copies the size and every entry.
  tbColorTable(const tbColorTable& o) : size(o.size) { CopyEntries(0, &o, 0, 256); }
  /// Copies the size and every entry. \return This table.
  tbColorTable& operator=(const tbColorTable& o) {
    size = o.size;
    CopyEntries(0, &o, 0, 256);
    return *this;
  }
  /// Destroys the table.
  virtual ~tbColorTable();

  /// \return The highest entry index in use, 0 to 255.
  std::int16_t CTSize() const { return size; }
  /// Sets the highest entry index in use; the entries are kept.
  ///
  /// \param highest The index, kept within 0 to 255.
  void SetCTSize(std::int16_t highest);
  /// \param i Entry index; only its low 8 bits are used.
  /// \return The entry, owned by the table, valid as long as the table.
  tbRGBColor* CTTable(std::int16_t i) { return &entries[static_cast<unsigned char>(i)]; }
  /// \param i Entry index; only its low 8 bits are used.
  /// \return The entry, read only, valid as long as the table.
  const tbRGBColor* CTTable(std::int16_t i) const {
    return &entries[static_cast<unsigned char>(i)];
  }
  /// Copies a colour into one entry.
  ///
  /// \param i Entry index; only its low 8 bits are used.
  /// \param color The colour, read only; null does nothing.
  void SetCTTable(std::int16_t i, const tbRGBColor* color) {
    if (color) entries[static_cast<unsigned char>(i)] = *color;
  }
  /// Copies a run of entries of a table into this one as one block, as if
  /// each were copied with SetCTTable from a copy of the run taken first (the
  /// tables may be the same and the runs may overlap). The size is kept.
  ///
  /// \param to The first entry written, 0 to 255.
  /// \param src The table read, read only; null does nothing.
  /// \param from The first entry read, 0 to 255.
  /// \param count How many entries; a run that would leave either table
  ///        (or a negative start or count) does nothing.
  void CopyEntries(std::int32_t to, const tbColorTable* src, std::int32_t from,
                   std::int32_t count) {
    if (!src || count <= 0 || to < 0 || from < 0 || to > 256 - count || from > 256 - count) return;
    // Every entry is a complete tbRGBColor, so the bytes of one entry are
    // those of any other entry of the same colour: copying them whole copies
    // the colour and leaves each entry a tbRGBColor.
    std::memmove(static_cast<void*>(entries + to), static_cast<const void*>(src->entries + from),
                 static_cast<std::size_t>(count) * sizeof(tbRGBColor));
  }

  /// \param o Another table.
  /// \return true when the sizes and all 256 entries are equal.
  bool operator==(const tbColorTable& o) const;
  /// \param o Another table.
  /// \return true when the sizes or any entry differ.
  bool operator!=(const tbColorTable& o) const { return !(*this == o); }

 private:
  std::int16_t size = 255;
  tbRGBColor entries[256];
};

/// \file QvPal.h
/// \brief QvPal, a palette area: a set of colour indices.
#pragma once

#include <cstdint>
#include <cstring>

/// A palette area: a set of colour indices 0 to 255, each flagged in or out.
/// FlagNum() tells how many indices the set covers: users visit indices 0 to
/// FlagNum() - 1 and ignore the rest. A new area covers 256 indices with none
/// flagged. Colour animations keep their own copy of the area they are given
/// (QvAColor::RegArea()), so later changes to a host's area do not reach
/// them.
class QvPal {
 public:
  /// An area covering 256 indices, none flagged.
  QvPal();
  /// Copies the count and every flag.
  QvPal(const QvPal&) = default;
  /// Copies the count and every flag. \return This area.
  QvPal& operator=(const QvPal&) = default;
  /// Destroys the area; it owns nothing else.
  virtual ~QvPal();

  /// Copies the flags and the count of another area.
  ///
  /// \param src The area to copy, read only; null makes this area empty (256
  ///        indices covered, none flagged).
  void GetFlags(QvPal* src);
  /// \param i A colour index.
  /// \return 1 when index `i` is in the area, else 0.
  char Flag(unsigned char i) const { return flags[i]; }
  /// All 256 answers of Flag as a bit set, for copying loops that test many
  /// pixels at once: bit (i & 7) of bits[i >> 3] is 1 when index `i` is in
  /// the area, else 0.
  /// \param bits Receives 32 bytes (not owned; must not be null).
  void FlagBits(unsigned char bits[32]) const { std::memcpy(bits, flagBits, sizeof flagBits); }
  /// \return How many indices the area covers, 0 to 256.
  std::int16_t FlagNum() const { return flagNum; }

  /// Puts one index in or out of the area.
  ///
  /// \param index The colour index.
  /// \param on Non-zero to put it in, 0 to take it out.
  void SetFlag(unsigned char index, char on);
  /// Sets how many indices the area covers.
  ///
  /// \param count The count, kept within 0 to 256.
  void SetFlagNum(std::int16_t count);
  /// Puts a run of indices in or out of the area (a convenience for hosts).
  ///
  /// \param first,last The run, inclusive; nothing happens when `last` is
  ///        below `first`.
  /// \param on Non-zero to put them in, 0 to take them out.
  void SetRange(unsigned char first, unsigned char last, char on);

 private:
  std::int16_t flagNum = 256;
  // The flags as FlagBits gives them, kept beside the flags by every setter.
  unsigned char flagBits[32] = {};
  char flags[256] = {};
};

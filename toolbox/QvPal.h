#pragma once

#include <cstdint>

// A palette area: a set of colour indices. FlagNum() tells how many indices
// the set covers (callers visit 0 to FlagNum() - 1); a new area covers 256
// indices with none flagged.
class QvPal {
 public:
  QvPal();
  QvPal(const QvPal&) = default;
  QvPal& operator=(const QvPal&) = default;
  virtual ~QvPal();

  // Copies the flags and count of src; a null src gives an empty area of 256.
  void GetFlags(QvPal* src);
  char Flag(unsigned char i) const { return flags[i]; }
  std::int16_t FlagNum() const { return flagNum; }

  void SetFlag(unsigned char index, char on);
  // Sets the count of covered indices, kept within 0 to 256.
  void SetFlagNum(std::int16_t count);
  // Flags every index from first to last inclusive (a convenience for hosts).
  void SetRange(unsigned char first, unsigned char last, char on);

 private:
  std::int16_t flagNum = 256;
  char flags[256] = {};
};

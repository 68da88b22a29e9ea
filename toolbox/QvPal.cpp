#include "toolbox/QvPal.h"

#include <cstring>

QvPal::QvPal() = default;

QvPal::~QvPal() = default;

void QvPal::GetFlags(QvPal* src) {
  if (!src) {
    flagNum = 256;
    std::memset(flags, 0, sizeof flags);
    std::memset(flagBits, 0, sizeof flagBits);
    return;
  }
  if (src == this) return;
  flagNum = src->flagNum;
  std::memcpy(flags, src->flags, sizeof flags);
  std::memcpy(flagBits, src->flagBits, sizeof flagBits);
}

void QvPal::SetFlag(unsigned char index, char on) {
  flags[index] = on ? 1 : 0;
  const unsigned char bit = static_cast<unsigned char>(1u << (index & 7));
  if (on)
    flagBits[index >> 3] |= bit;
  else
    flagBits[index >> 3] &= static_cast<unsigned char>(~bit);
}

void QvPal::SetFlagNum(std::int16_t count) {
  if (count < 0) count = 0;
  if (count > 256) count = 256;
  flagNum = count;
}

void QvPal::SetRange(unsigned char first, unsigned char last, char on) {
  for (int i = first; i <= last; ++i) SetFlag(static_cast<unsigned char>(i), on);
}

#include "toolbox/QvPal.h"

#include <cstdint>

QvPal::QvPal() = default;

QvPal::~QvPal() = default;

void QvPal::GetFlags(QvPal* src) {
  if (!src) {
    flagNum = 256;
    for (char& f : flags) f = 0;
    return;
  }
  if (src == this) return;
  flagNum = src->flagNum;
  for (int i = 0; i < 256; ++i) flags[i] = src->flags[i];
}

void QvPal::FlagBits(unsigned char bits[32]) const {
  // Each flag is 0 or 1. Eight of them, read as the bytes of a number from
  // its lowest, are gathered by one product: flag k lands on bit 56 + k, and
  // no other partial product reaches bits 56 to 63 or carries into them.
  for (int i = 0; i < 32; ++i) {
    std::uint64_t eight = 0;
    for (int k = 7; k >= 0; --k)
      eight = (eight << 8) | static_cast<unsigned char>(flags[i * 8 + k]);
    bits[i] = static_cast<unsigned char>((eight * 0x0102040810204080u) >> 56);
  }
}

void QvPal::SetFlag(unsigned char index, char on) { flags[index] = on ? 1 : 0; }

void QvPal::SetFlagNum(std::int16_t count) {
  if (count < 0) count = 0;
  if (count > 256) count = 256;
  flagNum = count;
}

void QvPal::SetRange(unsigned char first, unsigned char last, char on) {
  for (int i = first; i <= last; ++i) flags[i] = on ? 1 : 0;
}

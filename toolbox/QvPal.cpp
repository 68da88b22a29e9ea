#include "toolbox/QvPal.h"

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

void QvPal::SetFlag(unsigned char index, char on) { flags[index] = on ? 1 : 0; }

void QvPal::SetFlagNum(std::int16_t count) {
  if (count < 0) count = 0;
  if (count > 256) count = 256;
  flagNum = count;
}

void QvPal::SetRange(unsigned char first, unsigned char last, char on) {
  for (int i = first; i <= last; ++i) flags[i] = on ? 1 : 0;
}

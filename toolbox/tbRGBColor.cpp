#include "toolbox/tbRGBColor.h"

namespace {

unsigned char From16(unsigned short v) { return static_cast<unsigned char>(v / 257u); }
unsigned short To16(unsigned char c) { return static_cast<unsigned short>(c * 257u); }

}  // namespace

tbRGBColor::~tbRGBColor() = default;

void tbRGBColor::SetRed(unsigned short v) { red = From16(v); }
void tbRGBColor::SetGreen(unsigned short v) { green = From16(v); }
void tbRGBColor::SetBlue(unsigned short v) { blue = From16(v); }
unsigned short tbRGBColor::Red16() const { return To16(red); }
unsigned short tbRGBColor::Green16() const { return To16(green); }
unsigned short tbRGBColor::Blue16() const { return To16(blue); }

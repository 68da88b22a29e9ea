#pragma once

// One colour, one byte per component. A 16-bit component value v stands for
// the byte v / 257 (truncated), a byte c for the 16-bit value c * 257.
class tbRGBColor {
 public:
  tbRGBColor() = default;
  tbRGBColor(unsigned char r, unsigned char g, unsigned char b) : red(r), green(g), blue(b) {}
  tbRGBColor(const tbRGBColor&) = default;
  tbRGBColor& operator=(const tbRGBColor&) = default;
  virtual ~tbRGBColor();

  void SetRed(unsigned short v);
  void SetGreen(unsigned short v);
  void SetBlue(unsigned short v);
  unsigned short Red16() const;
  unsigned short Green16() const;
  unsigned short Blue16() const;

  bool operator==(const tbRGBColor& o) const {
    return red == o.red && green == o.green && blue == o.blue;
  }
  bool operator!=(const tbRGBColor& o) const { return !(*this == o); }

  unsigned char red = 0;
  unsigned char green = 0;
  unsigned char blue = 0;
};

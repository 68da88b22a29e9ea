/// \file tbRGBColor.h
/// \brief tbRGBColor, one colour of one byte per component.
#pragma once

/// One colour, one byte (0 to 255) per component. A 16-bit component value v
/// (0 to 65535) stands for the byte v / 257, truncated (65535 gives 255,
/// 65534 gives 254); a byte c stands for the 16-bit value c * 257.
class tbRGBColor {
 public:
  /// Black.
  tbRGBColor() = default;
  /// A colour from bytes.
  ///
  /// \param r,g,b Red, green and blue, 0 to 255.
  tbRGBColor(unsigned char r, unsigned char g, unsigned char b) : red(r), green(g), blue(b) {}
  /// Copies the three components.
  tbRGBColor(const tbRGBColor&) = default;
  /// Copies the three components. \return This colour.
  tbRGBColor& operator=(const tbRGBColor&) = default;
  /// Destroys the colour.
  virtual ~tbRGBColor();

  /// Sets red from a 16-bit value. \param v 0 to 65535; red becomes v / 257.
  void SetRed(unsigned short v);
  /// Sets green from a 16-bit value. \param v 0 to 65535; green becomes v / 257.
  void SetGreen(unsigned short v);
  /// Sets blue from a 16-bit value. \param v 0 to 65535; blue becomes v / 257.
  void SetBlue(unsigned short v);
  /// \return Red as a 16-bit value, red * 257.
  unsigned short Red16() const;
  /// \return Green as a 16-bit value, green * 257.
  unsigned short Green16() const;
  /// \return Blue as a 16-bit value, blue * 257.
  unsigned short Blue16() const;

  /// \param o Another colour. \return true when all three components are equal.
  bool operator==(const tbRGBColor& o) const {
    return red == o.red && green == o.green && blue == o.blue;
  }
  /// \param o Another colour. \return true when a component differs.
  bool operator!=(const tbRGBColor& o) const { return !(*this == o); }

  unsigned char red = 0;    ///< Red, 0 to 255.
  unsigned char green = 0;  ///< Green, 0 to 255.
  unsigned char blue = 0;   ///< Blue, 0 to 255.
};

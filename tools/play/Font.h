#pragma once

#include <cstdint>
#include <string>

#include "play/Frame.h"

namespace qvplay {

// A tiny built-in bitmap font: 5 x 7 pixel glyphs for printable ASCII
// (lower case shown in capitals, anything else as '?'), 6 pixels apart.
constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 7;
constexpr int kAdvance = 6;

// Whether pixel (x, y) of the glyph of c is set.
bool GlyphPixel(char c, int x, int y);
// Width in pixels of text drawn at the given scale.
int TextWidth(const std::string& text, int scale);
// Draws text with its top-left corner at (x, y), each font pixel a
// scale x scale block.
void DrawText(Frame* frame, int x, int y, const std::string& text, std::uint32_t color,
              int scale = 1);

}  // namespace qvplay

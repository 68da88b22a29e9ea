#pragma once

#include "play/Frame.h"
#include "play/Player.h"

namespace qvplay {

// Composes the player's window: the current moment enlarged with
// nearest-neighbour sampling (each movie pixel a scale x scale block of its
// colour in the moment's colour table), the timeline bar with the member
// ranges, the current moment and a status line, and on top of them the
// error panel, the overlay and the key help when they are shown. Draws the
// moment first when it changed. The frame takes the window's size.
void DrawView(Player* player, Frame* frame);

// Splits text into lines of at most width pixels at the given text scale,
// breaking at spaces where it can.
std::vector<std::string> WrapText(const std::string& text, int width, int scale);

}  // namespace qvplay

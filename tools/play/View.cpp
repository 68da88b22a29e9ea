#include "play/View.h"

#include <algorithm>
#include <cstdio>

#include "play/Font.h"
#include "toolbox/tbPixMap.h"

namespace qvplay {

namespace {

const std::uint32_t kBackground = Rgb(24, 24, 28);
const std::uint32_t kBar = Rgb(40, 40, 48);
const std::uint32_t kTrack = Rgb(58, 58, 68);
const std::uint32_t kText = Rgb(230, 230, 230);
const std::uint32_t kDimText = Rgb(150, 150, 160);
const std::uint32_t kCursor = Rgb(255, 255, 255);
const std::uint32_t kHidden = Rgb(80, 80, 88);
const std::uint32_t kRangeColors[] = {Rgb(236, 112, 99), Rgb(93, 173, 226),  Rgb(88, 214, 141),
                                      Rgb(244, 208, 63), Rgb(175, 122, 197), Rgb(240, 178, 122),
                                      Rgb(72, 201, 176), Rgb(236, 64, 122)};

std::string Format(const char* format, double a, double b = 0) {
  char buf[128];
  std::snprintf(buf, sizeof buf, format, a, b);
  return buf;
}

void DrawPicture(Player* player, const Layout& l, Frame* frame) {
  tbPixMap* pm = player->PixMap();
  if (!pm || !pm->TopAddr()) return;
  const std::uint32_t* colors = player->Colors();
  const int w = l.picWidth / l.scale;
  std::vector<std::uint32_t> row(static_cast<std::size_t>(l.picWidth));
  for (int y = 0; y < l.picHeight / l.scale; ++y) {
    const unsigned char* src = pm->TopAddr() + static_cast<std::ptrdiff_t>(y) * pm->Offset();
    std::uint32_t* out = row.data();
    for (int x = 0; x < w; ++x) {
      const std::uint32_t c = colors[src[x]];
      for (int k = 0; k < l.scale; ++k) *out++ = c;
    }
    for (int k = 0; k < l.scale; ++k) {
      const int wy = l.picY + y * l.scale + k;
      if (wy < 0 || wy >= frame->Height()) continue;
      // The picture may be wider than a very narrow window.
      const int x0 = std::max(0, -l.picX);
      const int x1 = std::min(l.picWidth, frame->Width() - l.picX);
      if (x1 > x0) std::copy(row.begin() + x0, row.begin() + x1, frame->Row(wy) + l.picX + x0);
    }
  }
}

// Window column of movie time t on the timeline.
int XOfTime(const Player& player, const Layout& l, std::int32_t t) {
  const std::int64_t from = player.TimeOf(0);
  const std::int64_t to = player.TimeOf(player.MomentCount() - 1);
  if (to <= from) return l.trackX;
  const std::int64_t clamped = std::clamp<std::int64_t>(t, from, to);
  return l.trackX + static_cast<int>((clamped - from) * (l.trackWidth - 1) / (to - from));
}

void DrawBar(Player* player, const Layout& l, Frame* frame) {
  frame->FillRect(0, l.barY, l.windowWidth, l.barHeight, kBar);
  const int rows = l.rows;
  if (rows > 0) {
    frame->FillRect(l.trackX, l.rowsY, l.trackWidth, rows * kRowHeight, kTrack);
    const auto& members = player->Members();
    for (std::size_t i = 0; i < members.size(); ++i) {
      const MemberRange& m = members[i];
      bool shown = false;
      for (int layer : m.layers) shown = shown || player->LayerVisible(layer);
      const int row = static_cast<int>(i % static_cast<std::size_t>(rows));
      const int x0 = XOfTime(*player, l, m.start);
      const int x1 = XOfTime(*player, l, m.end);
      const bool outside =
          m.end < player->TimeOf(0) || m.start > player->TimeOf(player->MomentCount() - 1);
      if (outside) continue;
      frame->FillRect(x0, l.rowsY + row * kRowHeight, x1 - x0 + 1, kRowHeight - 1,
                      shown ? kRangeColors[i % 8] : kHidden);
    }
  }
  // The current moment.
  const int cx = l.XOfIndex(player->Index(), player->MomentCount());
  frame->FillRect(cx - l.textScale / 2, l.barY + 1, l.textScale, l.statusY - l.barY - 2, kCursor);

  std::string state = player->Running()             ? "playing"
                      : player->Clock().IsPausing() ? "paused"
                                                    : "stopped";
  std::string status =
      "t " + std::to_string(player->Moment()) + "  " + std::to_string(player->Index() + 1) + "/" +
      std::to_string(player->MomentCount()) + "  " + state + "  " +
      ModeName(player->Clock().Mode()) + "  " + std::to_string(player->Clock().Speed()) + "/s";
  if (player->FrameByFrame()) status += "  frame by frame";
  const int ts = l.textScale;
  DrawText(frame, l.trackX, l.statusY, status, kText, ts);
  const int left = l.trackX + TextWidth(status, ts) + 4 * kAdvance * ts;
  std::string message = player->Message();
  if (!message.empty()) {
    // Shortened from the front to the room that is left; the name matters.
    const int room = (l.windowWidth - l.trackX - left) / (kAdvance * ts);
    if (room <= 0) return;
    if (static_cast<int>(message.size()) > room) message = message.substr(0, room);
    DrawText(frame, l.windowWidth - l.trackX - TextWidth(message, ts), l.statusY, message, kDimText,
             ts);
  }
}

// A box of text lines with a shaded background at (x, y).
void DrawPanel(Frame* frame, int x, int y, const std::vector<std::string>& lines,
               std::uint32_t shade, std::uint32_t color, int ts) {
  int width = 0;
  for (const auto& line : lines) width = std::max(width, TextWidth(line, ts));
  const int lineHeight = (kGlyphHeight + 3) * ts;
  const int pad = 4 * ts;
  frame->ShadeRect(x, y, width + 2 * pad,
                   static_cast<int>(lines.size()) * lineHeight + 2 * pad - 3 * ts, shade, 210);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    DrawText(frame, x + pad, y + pad + static_cast<int>(i) * lineHeight, lines[i], color, ts);
  }
}

}  // namespace

std::vector<std::string> WrapText(const std::string& text, int width, int scale) {
  const int perLine = std::max(1, (width + scale) / (kAdvance * std::max(1, scale)));
  std::vector<std::string> lines;
  std::size_t at = 0;
  while (at < text.size()) {
    std::size_t len = std::min<std::size_t>(static_cast<std::size_t>(perLine), text.size() - at);
    if (at + len < text.size()) {
      const std::size_t space = text.rfind(' ', at + len);
      if (space != std::string::npos && space > at) len = space - at;
    }
    lines.push_back(text.substr(at, len));
    at += len;
    while (at < text.size() && text[at] == ' ') ++at;
  }
  return lines;
}

void DrawView(Player* player, Frame* frame) {
  const Layout& l = player->GetLayout();
  if (frame->Width() != l.windowWidth || frame->Height() != l.windowHeight) {
    frame->Resize(l.windowWidth, l.windowHeight);
  }
  frame->Fill(kBackground);
  player->UpdatePicture();
  DrawPicture(player, l, frame);
  DrawBar(player, l, frame);
  const int ts = l.textScale;

  int y = 0;
  if (!player->Error().empty()) {
    std::vector<std::string> lines{"the scene has errors; showing the last good one:"};
    for (const auto& line : WrapText(player->Error(), l.windowWidth - 8 * ts * 2, ts)) {
      lines.push_back(line);
    }
    DrawPanel(frame, 0, 0, lines, Rgb(150, 20, 20), kText, ts);
    y += static_cast<int>(lines.size()) * (kGlyphHeight + 3) * ts + 6 * ts;
  }
  if (player->ShowOverlay()) {
    std::string layers = "layers";
    for (int i = 0; i < player->LayerCount(); ++i) {
      layers += player->LayerVisible(i) ? " " + std::to_string(i + 1) : " -";
    }
    const std::vector<std::string> lines = {
        "moment " + std::to_string(player->Moment()) + " (" + std::to_string(player->Index() + 1) +
            "/" + std::to_string(player->MomentCount()) + ")",
        Format("shown %.1f fps", player->ShownFps()),
        Format("draw %.2f ms per moment (max %.2f)", player->DrawMs(), player->MaxDrawMs()),
        layers};
    DrawPanel(frame, 0, y, lines, Rgb(0, 0, 0), kText, ts);
  }
  if (player->ShowHelp()) {
    const auto& help = HelpLines();
    int width = 0;
    for (const auto& line : help) width = std::max(width, TextWidth(line, ts));
    const int height = static_cast<int>(help.size()) * (kGlyphHeight + 3) * ts;
    DrawPanel(frame, std::max(0, (l.windowWidth - width) / 2 - 4 * ts),
              std::max(0, (l.barY - height) / 2 - 4 * ts), help, Rgb(0, 0, 0), kText, ts);
  }
}

}  // namespace qvplay

#pragma once

#include <SDL.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "play/FileWatch.h"
#include "play/Layout.h"
#include "player/QvMPlayer.h"
#include "scene/GWorld.h"
#include "scene/Scene.h"
#include "scene/SceneReader.h"

namespace qvplay {

// One member of the scene as the timeline bar shows it.
struct MemberRange {
  std::string name;
  std::int16_t id = -1;
  std::int32_t start = 0;
  std::int32_t end = 0;
  std::vector<int> layers;  // layer indices it is placed on
};

// What a click on the picture hit.
struct Hit {
  bool found = false;
  std::string name;
  std::int16_t id = -1;
  int layer = -1;    // layer index
  int x = 0, y = 0;  // movie pixel that was clicked
};

// The player's state and logic, without a window: it owns the scene, the
// playback clock (a QvMPlayer whose frames are the scene's moments, index 0
// for "from" up to the last moment), the visibility of the layers and the
// current moment; it turns SDL events into changes of that state, reloads
// the scene when its files change, and draws the current moment into an
// 8-bit picture with its colour table.
class Player {
 public:
  Player();
  ~Player();
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  // Loads the scene. On failure returns false, sets error to the message
  // (as the render tool words it) and status to the exit status: 2 for a
  // fault of the scene, 1 when the library refuses to build it.
  bool Open(const std::string& path, const qvscene::LoadOptions& options, std::string* error,
            int* status);
  qvscene::Scene* GetScene() { return scene_.get(); }

  // ---- Time ----
  QvMPlayer& Clock() { return clock_; }
  int MomentCount() const { return count_; }
  // Index of the current moment (0 for the scene's "from").
  int Index() const { return index_; }
  // Time of the current moment on the movie's timeline.
  std::int32_t Moment() const { return TimeOf(index_); }
  std::int32_t TimeOf(int index) const;
  // Index of the moment at or before time t, clamped to the range.
  int IndexOf(std::int32_t t) const;
  bool Running() { return clock_.IsPlaying() && !clock_.IsPausing(); }
  // Frames per second of the clock at normal speed: one moment lasts the
  // scene's step in units of 1/30 s.
  std::int16_t BaseSpeed() const;
  int SpeedLevel() const { return speedLevel_; }  // the speed is base x 2^level
  bool FrameByFrame() const { return frameByFrame_; }

  // Samples the clock (Cur, or Next in frame-by-frame mode) while it runs;
  // true when the current moment changed.
  bool Advance();
  void TogglePlay();
  void Play();
  void Pause();
  // Pauses and moves n moments (fitted by the clock's mode).
  void StepBy(int n);
  // Jumps to a moment index (fitted by the clock's mode); the run state stays.
  void GoTo(int index);
  void Faster();
  void Slower();
  void CycleMode();  // once, bounce, loop
  void ToggleFrameByFrame();

  // ---- Layers ----
  int LayerCount() const { return static_cast<int>(visible_.size()); }
  bool LayerVisible(int index) const;
  void ToggleLayer(int index);

  // ---- Window and events ----
  void SetWindowSize(int width, int height);
  const Layout& GetLayout() const { return layout_; }
  // Handles one event; false when the player should quit.
  bool HandleEvent(const SDL_Event& event);
  bool Scrubbing() const { return scrubbing_; }
  bool ShowHelp() const { return showHelp_; }
  bool ShowOverlay() const { return showOverlay_; }
  void SetOverlay(bool on);
  // Something visible changed since the last MarkShown.
  bool NeedsRedraw() const { return redraw_; }
  void RequestRedraw() { redraw_ = true; }

  // ---- Hit test ----
  // The topmost member of a visible layer whose current frame covers movie
  // pixel (x, y) at the current moment: layers from the top down, on each
  // the member placed last first.
  Hit HitTest(int x, int y);
  const Hit& LastHit() const { return lastHit_; }
  const std::string& Message() const { return message_; }

  // ---- Files ----
  // Reloads when the scene file or one of its pictures changed on disk;
  // true when a reload was tried.
  bool PollFiles();
  // Reads the scene file again. On success the new scene replaces the old
  // one and the current moment stays (clamped to the new range); on failure
  // the last good scene stays and Error() tells why (also on stderr).
  bool Reload();
  const std::string& Error() const { return error_; }
  const std::vector<std::string>& WatchedFiles() const { return watch_.Paths(); }

  // ---- Drawing ----
  // Draws the current moment of the visible layers into the 8-bit picture
  // and takes its colour table, when anything changed since the last time.
  void UpdatePicture();
  // Draws moment t of the visible layers into pixMap, cleared to the
  // background first: QvMLayer::DrawPicture when every layer is shown,
  // otherwise the library's QvMCast::DrawPicture for each reference of each
  // visible layer, in the order QvMLayer::DrawPicture uses.
  void DrawLayers(std::int32_t t, tbPixMap* pixMap);
  tbPixMap* PixMap();
  // The colour of every index in the current moment, as 0xAARRGGBB.
  const std::uint32_t* Colors() const { return colors_; }
  const std::vector<MemberRange>& Members() const { return members_; }

  // ---- Statistics ----
  // Records that the window was presented; a newly drawn picture counts as
  // a moment shown.
  void MarkShown();
  // Moments shown in the last second.
  double ShownFps() const;
  // Mean and greatest time of drawing one moment (layers and colour
  // table), in milliseconds, over the recent moments.
  double DrawMs() const;
  double MaxDrawMs() const { return maxDrawMs_; }
  long long DrawnMoments() const { return drawn_; }
  double TotalDrawMs() const { return totalDrawMs_; }

 private:
  using SteadyClock = std::chrono::steady_clock;

  bool Load(std::string* error, int* status);
  void Configure(std::int32_t keepTime);
  void ApplySpeed();
  bool HandleKey(const SDL_KeyboardEvent& key);
  void ScrubTo(int windowX);
  void Note(const std::string& text);

  std::string path_;
  qvscene::LoadOptions options_;
  std::unique_ptr<qvscene::Scene> scene_;
  std::unique_ptr<qvscene::GWorld> world_;
  std::vector<MemberRange> members_;
  std::vector<bool> visible_;
  FileWatch watch_;
  std::string error_;

  QvMPlayer clock_;
  int count_ = 1;
  int index_ = 0;
  int speedLevel_ = 0;
  bool frameByFrame_ = false;

  Layout layout_;
  int windowWidth_ = 0, windowHeight_ = 0;
  bool scrubbing_ = false;
  bool wasRunning_ = false;
  bool showHelp_ = false;
  bool showOverlay_ = false;
  bool redraw_ = true;
  bool pictureDirty_ = true;
  Hit lastHit_;
  std::string message_;

  std::uint32_t colors_[256] = {};
  std::deque<SteadyClock::time_point> shown_;
  std::deque<double> drawTimes_;
  double maxDrawMs_ = 0;
  double totalDrawMs_ = 0;
  long long drawn_ = 0;
  long long shownDrawn_ = -1;
};

// "once", "bounce", "loop" for the clock's modes 0, 1, 2.
const char* ModeName(char mode);

// The key help shown with H, one line per entry.
const std::vector<std::string>& HelpLines();

}  // namespace qvplay

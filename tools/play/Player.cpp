#include "play/Player.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "play/Frame.h"
#include "scene/SceneError.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbPoint.h"
#include "toolbox/tbRect.h"

namespace qvplay {

namespace {

constexpr int kMinSpeedLevel = -5;
constexpr int kMaxSpeedLevel = 5;
constexpr int kMaxLayerKeys = 10;

}  // namespace

const char* ModeName(char mode) {
  switch (mode) {
    case QvMPlayer::kPlayOnce:
      return "once";
    case QvMPlayer::kPlayBounce:
      return "bounce";
    case QvMPlayer::kPlayLoop:
      return "loop";
    default:
      return "free";
  }
}

const std::vector<std::string>& HelpLines() {
  static const std::vector<std::string> lines = {
      "SPACE       play / pause",
      "LEFT RIGHT  one moment back / on",
      "HOME END    first / last moment",
      "+ -         faster / slower",
      "M           once / bounce / loop",
      "F           frame by frame on / off",
      "1 ... 9, 0  layer 1 ... 10 on / off",
      "O           overlay: moment, fps, draw time",
      "R           reload the scene now",
      "H           this help",
      "Q ESC       quit",
      "CLICK       name the member under the mouse",
      "DRAG BAR    scrub through the moments",
  };
  return lines;
}

Player::Player() { clock_.SetMode(QvMPlayer::kPlayLoop); }

Player::~Player() = default;

bool Player::Open(const std::string& path, const qvscene::LoadOptions& options, std::string* error,
                  int* status) {
  path_ = path;
  options_ = options;
  std::string message;
  int code = 0;
  if (!Load(&message, &code)) {
    if (error) *error = message;
    if (status) *status = code;
    return false;
  }
  Configure(scene_->From());
  return true;
}

bool Player::Load(std::string* error, int* status) {
  // The files are stamped before they are read, so that a change made
  // while loading is noticed by the next poll.
  watch_.Set(SceneFiles(path_, options_.pictureDir));
  std::unique_ptr<qvscene::Scene> scene;
  try {
    scene = qvscene::LoadScene(path_, options_);
  } catch (const qvscene::SceneError& e) {
    *error = e.what();
    *status = 2;
    return false;
  } catch (const qvscene::BuildError& e) {
    *error = e.what();
    *status = 1;
    return false;
  } catch (const std::bad_alloc&) {
    *error = path_ + ": out of memory";
    *status = 1;
    return false;
  } catch (const std::exception& e) {
    // Anything else the reader lets through: the last good scene stays.
    *error = path_ + ": " + e.what();
    *status = 1;
    return false;
  }
  tbColorTable palette = scene->BasePalette();
  auto world = std::make_unique<qvscene::GWorld>(scene->Width(), scene->Height(), &palette);
  if (!world->Ok()) {
    *error = path_ + ": cannot make an off-screen world of " + std::to_string(scene->Width()) +
             " x " + std::to_string(scene->Height()) + " pixels";
    *status = 1;
    return false;
  }

  std::vector<MemberRange> members;
  QvMCast* cast = scene->Cast();
  for (const std::string& name : scene->MemberNames()) {
    MemberRange m;
    m.name = name;
    m.id = scene->MemberId(name);
    m.start = cast->Start(m.id);
    m.end = cast->End(m.id);
    members.push_back(m);
  }
  QvMLayer* layers = scene->Layers();
  const int layerCount = layers->Count();
  for (int layer = 0; layer < layerCount; ++layer) {
    QvMCast* c = nullptr;
    std::int16_t id = -1;
    for (std::int16_t i = 0; layers->Get(static_cast<std::int16_t>(layer), i, &c, &id); ++i) {
      for (MemberRange& m : members) {
        if (c == cast && m.id == id && (m.layers.empty() || m.layers.back() != layer)) {
          m.layers.push_back(layer);
        }
      }
    }
  }

  scene_ = std::move(scene);
  world_ = std::move(world);
  members_ = std::move(members);
  // Layers keep their visibility by index; new ones are shown.
  visible_.resize(static_cast<std::size_t>(layerCount), true);
  pictureDirty_ = true;
  redraw_ = true;
  return true;
}

void Player::Configure(std::int32_t keepTime) {
  const std::int64_t span = static_cast<std::int64_t>(scene_->To()) - scene_->From();
  count_ = static_cast<int>(span / scene_->Step() + 1);
  clock_.SetTop(0);
  clock_.SetEnd(count_ - 1);
  ApplySpeed();
  index_ = clock_.SetCur(IndexOf(keepTime));
  pictureDirty_ = true;
  redraw_ = true;
}

std::int32_t Player::TimeOf(int index) const {
  if (!scene_) return 0;
  return static_cast<std::int32_t>(static_cast<std::int64_t>(scene_->From()) +
                                   static_cast<std::int64_t>(index) * scene_->Step());
}

int Player::IndexOf(std::int32_t t) const {
  if (!scene_ || t <= scene_->From()) return 0;
  const std::int64_t k = (static_cast<std::int64_t>(t) - scene_->From()) / scene_->Step();
  return static_cast<int>(std::min<std::int64_t>(k, count_ - 1));
}

std::int16_t Player::BaseSpeed() const {
  const int step = scene_ ? scene_->Step() : 1;
  return static_cast<std::int16_t>(std::max(1, (30 + step / 2) / step));
}

void Player::ApplySpeed() {
  long long fps = BaseSpeed();
  for (int i = 0; i < speedLevel_; ++i) fps *= 2;
  for (int i = 0; i > speedLevel_; --i) fps /= 2;
  clock_.SetSpeed(static_cast<std::int16_t>(std::clamp<long long>(fps, 1, 32767)));
}

bool Player::Advance() {
  if (!scene_) return false;
  const bool wasRunning = Running();
  int k = index_;
  if (wasRunning) {
    k = frameByFrame_ ? clock_.Next() : clock_.Cur();
  } else {
    k = clock_.Cur();
  }
  // A clock playing once stops by itself at the end.
  if (wasRunning != Running()) redraw_ = true;
  if (k == index_) return false;
  index_ = k;
  pictureDirty_ = true;
  redraw_ = true;
  return true;
}

void Player::Play() {
  if (clock_.Mode() == 0 && index_ >= count_ - 1) index_ = clock_.SetCur(0);
  clock_.Play(clock_.Speed());
  pictureDirty_ = true;
  redraw_ = true;
}

void Player::Pause() {
  clock_.Pause();
  redraw_ = true;
}

void Player::TogglePlay() {
  if (Running()) {
    Pause();
  } else {
    Play();
  }
}

void Player::StepBy(int n) {
  if (Running()) clock_.Pause();
  clock_.Step(static_cast<std::int16_t>(std::clamp(n, -32768, 32767)));
  index_ = clock_.Cur();
  pictureDirty_ = true;
  redraw_ = true;
}

void Player::GoTo(int index) {
  index_ = clock_.SetCur(index);
  pictureDirty_ = true;
  redraw_ = true;
}

void Player::Faster() {
  if (speedLevel_ < kMaxSpeedLevel) ++speedLevel_;
  ApplySpeed();
  redraw_ = true;
}

void Player::Slower() {
  if (speedLevel_ > kMinSpeedLevel) --speedLevel_;
  ApplySpeed();
  redraw_ = true;
}

void Player::CycleMode() {
  const char mode = clock_.Mode();
  clock_.SetMode(mode >= 0 && mode < 2 ? static_cast<char>(mode + 1) : 0);
  Note(std::string("mode ") + ModeName(clock_.Mode()));
}

void Player::ToggleFrameByFrame() {
  frameByFrame_ = !frameByFrame_;
  Note(frameByFrame_ ? "frame by frame: every moment shown" : "real time: late moments skipped");
}

bool Player::LayerVisible(int index) const {
  return index >= 0 && index < LayerCount() && visible_[static_cast<std::size_t>(index)];
}

void Player::SetOverlay(bool on) {
  showOverlay_ = on;
  redraw_ = true;
}

void Player::ToggleLayer(int index) {
  if (index < 0 || index >= LayerCount()) {
    Note("no layer " + std::to_string(index + 1));
    return;
  }
  visible_[static_cast<std::size_t>(index)] = !visible_[static_cast<std::size_t>(index)];
  const std::int16_t id = scene_->Layers()->Index2ID(static_cast<std::int16_t>(index));
  Note("layer " + std::to_string(index + 1) + " (id " + std::to_string(id) + ") " +
       (visible_[static_cast<std::size_t>(index)] ? "shown" : "hidden"));
  pictureDirty_ = true;
}

void Player::SetWindowSize(int width, int height) {
  windowWidth_ = width;
  windowHeight_ = height;
  if (scene_) {
    layout_ = ComputeLayout(width, height, scene_->Width(), scene_->Height(),
                            static_cast<int>(members_.size()));
  }
  redraw_ = true;
}

void Player::Note(const std::string& text) {
  message_ = text;
  redraw_ = true;
}

bool Player::HandleEvent(const SDL_Event& event) {
  switch (event.type) {
    case SDL_QUIT:
      return false;
    case SDL_WINDOWEVENT:
      if (event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED ||
          event.window.event == SDL_WINDOWEVENT_RESIZED) {
        SetWindowSize(event.window.data1, event.window.data2);
      } else if (event.window.event == SDL_WINDOWEVENT_EXPOSED) {
        redraw_ = true;
      }
      return true;
    case SDL_KEYDOWN:
      return HandleKey(event.key);
    case SDL_MOUSEBUTTONDOWN:
      if (event.button.button != SDL_BUTTON_LEFT || !scene_) return true;
      if (layout_.InBar(event.button.x, event.button.y)) {
        scrubbing_ = true;
        wasRunning_ = Running();
        if (wasRunning_) Pause();
        ScrubTo(event.button.x);
      } else if (layout_.InPicture(event.button.x, event.button.y)) {
        const int x = (event.button.x - layout_.picX) / layout_.scale;
        const int y = (event.button.y - layout_.picY) / layout_.scale;
        lastHit_ = HitTest(x, y);
        if (lastHit_.found) {
          Note(lastHit_.name + " (id " + std::to_string(lastHit_.id) + ", layer " +
               std::to_string(lastHit_.layer + 1) + ")");
        } else {
          Note("nothing at " + std::to_string(x) + ", " + std::to_string(y));
        }
      }
      return true;
    case SDL_MOUSEMOTION:
      if (scrubbing_) {
        if (event.motion.state & SDL_BUTTON_LMASK) {
          ScrubTo(event.motion.x);
        } else {
          // The release happened outside the window.
          scrubbing_ = false;
          if (wasRunning_) Play();
        }
      }
      return true;
    case SDL_MOUSEBUTTONUP:
      if (event.button.button == SDL_BUTTON_LEFT && scrubbing_) {
        ScrubTo(event.button.x);
        scrubbing_ = false;
        if (wasRunning_) Play();
      }
      return true;
    default:
      return true;
  }
}

bool Player::HandleKey(const SDL_KeyboardEvent& key) {
  const SDL_Keycode sym = key.keysym.sym;
  const bool repeat = key.repeat != 0;
  if (sym >= SDLK_0 && sym <= SDLK_9) {
    if (!repeat) ToggleLayer(sym == SDLK_0 ? kMaxLayerKeys - 1 : static_cast<int>(sym - SDLK_1));
    return true;
  }
  if (sym >= SDLK_KP_1 && sym <= SDLK_KP_9) {
    if (!repeat) ToggleLayer(static_cast<int>(sym - SDLK_KP_1));
    return true;
  }
  switch (sym) {
    case SDLK_ESCAPE:
      if (showHelp_) {
        showHelp_ = false;
        redraw_ = true;
        return true;
      }
      return false;
    case SDLK_q:
      return false;
    case SDLK_SPACE:
      if (!repeat) TogglePlay();
      break;
    case SDLK_LEFT:
      StepBy(-1);
      break;
    case SDLK_RIGHT:
      StepBy(1);
      break;
    case SDLK_HOME:
      GoTo(0);
      break;
    case SDLK_END:
      GoTo(count_ - 1);
      break;
    case SDLK_PLUS:
    case SDLK_EQUALS:
    case SDLK_KP_PLUS:
      Faster();
      break;
    case SDLK_MINUS:
    case SDLK_KP_MINUS:
      Slower();
      break;
    case SDLK_m:
      if (!repeat) CycleMode();
      break;
    case SDLK_f:
      if (!repeat) ToggleFrameByFrame();
      break;
    case SDLK_h:
    case SDLK_F1:
      if (!repeat) {
        showHelp_ = !showHelp_;
        redraw_ = true;
      }
      break;
    case SDLK_o:
      if (!repeat) SetOverlay(!showOverlay_);
      break;
    case SDLK_r:
      if (!repeat) Reload();
      break;
    default:
      break;
  }
  return true;
}

void Player::ScrubTo(int windowX) { GoTo(layout_.IndexAt(windowX, count_)); }

Hit Player::HitTest(int x, int y) {
  Hit hit;
  hit.x = x;
  hit.y = y;
  if (!scene_) return hit;
  hit.found = scene_->TopmostAt(x, y, Moment(), &hit.id, &hit.layer,
                                [this](int layer) { return LayerVisible(layer); });
  if (hit.found) hit.name = scene_->MemberName(hit.id);
  return hit;
}

bool Player::PollFiles() {
  if (!watch_.Changed()) return false;
  Reload();
  return true;
}

bool Player::Reload() {
  const std::int32_t keep = Moment();
  std::string error;
  int status = 0;
  if (!Load(&error, &status)) {
    error_ = error;
    std::fprintf(stderr, "qvmovie-play: %s\n", error_.c_str());
    std::fflush(stderr);
    redraw_ = true;
    return false;
  }
  const bool hadError = !error_.empty();
  error_.clear();
  Configure(keep);
  if (layout_.windowWidth > 0) SetWindowSize(windowWidth_, windowHeight_);
  if (hadError) std::fprintf(stderr, "qvmovie-play: %s: reloaded\n", path_.c_str());
  Note("reloaded " + path_);
  return true;
}

tbPixMap* Player::PixMap() { return world_ ? world_->PixMap() : nullptr; }

void Player::DrawLayers(std::int32_t t, tbPixMap* pixMap) {
  if (!scene_) return;
  scene_->DrawMoment(t, pixMap, [this](int layer) { return LayerVisible(layer); });
}

void Player::UpdatePicture() {
  if (!pictureDirty_ || !scene_ || !world_) return;
  const auto start = SteadyClock::now();
  const std::int32_t t = Moment();
  DrawLayers(t, world_->PixMap());
  // The colour table is the whole movie's: colour animations of members on
  // hidden layers still change it, as they would in the movie.
  tbColorTable table;
  scene_->Palette(t, &table);
  for (int i = 0; i < 256; ++i) {
    const tbRGBColor* c = table.CTTable(static_cast<std::int16_t>(i));
    colors_[i] = Rgb(c->red, c->green, c->blue);
  }
  const double ms = std::chrono::duration<double, std::milli>(SteadyClock::now() - start).count();
  drawTimes_.push_back(ms);
  if (drawTimes_.size() > 60) drawTimes_.pop_front();
  maxDrawMs_ = std::max(maxDrawMs_, ms);
  totalDrawMs_ += ms;
  ++drawn_;
  pictureDirty_ = false;
}

void Player::MarkShown() {
  const auto now = SteadyClock::now();
  redraw_ = false;
  // Only a newly drawn picture counts as a moment shown.
  if (drawn_ == shownDrawn_) return;
  shownDrawn_ = drawn_;
  shown_.push_back(now);
  while (!shown_.empty() && now - shown_.front() > std::chrono::seconds(1)) shown_.pop_front();
}

double Player::ShownFps() const {
  const auto now = SteadyClock::now();
  int n = 0;
  for (const auto& t : shown_) {
    if (now - t <= std::chrono::seconds(1)) ++n;
  }
  return n;
}

double Player::DrawMs() const {
  if (drawTimes_.empty()) return 0;
  double sum = 0;
  for (double d : drawTimes_) sum += d;
  return sum / static_cast<double>(drawTimes_.size());
}

}  // namespace qvplay

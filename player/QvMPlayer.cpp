#include "player/QvMPlayer.h"

#include <cstring>

#include "toolbox/QvPlatform.h"

namespace {

// Ticks per millisecond: the double nearest 1/16.6667.
double TickFactor() {
  const std::uint64_t bits = 0x3FAEB84DE4BADB6BULL;
  double factor;
  std::memcpy(&factor, &bits, sizeof factor);
  return factor;
}

std::uint32_t U32(std::int32_t v) { return static_cast<std::uint32_t>(v); }
std::int32_t S32(std::uint32_t v) { return static_cast<std::int32_t>(v); }

}  // namespace

QvMPlayer::QvMPlayer()
    : mode(0),
      forwardFlag(1),
      speed(30),
      top(0),
      end(0),
      cur(0),
      startTick(0),
      lastCount(0),
      stopFlag(1),
      runFlag(0),
      reverseFlag(0) {
  QvMPlayer::Stop();
}

QvMPlayer::QvMPlayer(const QvMPlayer& other) = default;

QvMPlayer& QvMPlayer::operator=(const QvMPlayer& other) = default;

QvMPlayer::~QvMPlayer() = default;

std::int32_t QvMPlayer::nowTick() {
  static const double factor = TickFactor();
  const std::uint64_t ms = qv::GetTickCount();
  // The product is below 2^28, so the truncation always fits.
  const std::uint64_t ticks = static_cast<std::uint64_t>(static_cast<double>(ms) * factor);
  return S32(static_cast<std::uint32_t>(ticks));
}

std::int32_t QvMPlayer::Time2Frame(std::uint32_t time) { return S32(U32(speed) * time / 60u); }

std::uint32_t QvMPlayer::Frame2Time(std::int32_t frame) {
  // A speed of 0 has no duration per frame: every frame lies at time 0.
  if (speed == 0) return 0;
  return U32(frame) * 60u / U32(speed);
}

char QvMPlayer::Mode() { return mode; }

std::int16_t QvMPlayer::Speed() { return speed; }

std::int32_t QvMPlayer::Top() { return top; }

std::int32_t QvMPlayer::End() { return end; }

std::int32_t QvMPlayer::Cur() {
  if (runFlag) localGetCur();
  return cur;
}

std::int32_t QvMPlayer::Next() {
  if (runFlag) localGetNext();
  return cur;
}

char QvMPlayer::IsPlaying() { return stopFlag == 0 ? 1 : 0; }

char QvMPlayer::IsPausing() { return (stopFlag == 0 && runFlag == 0) ? 1 : 0; }

char QvMPlayer::IsForward() { return forwardFlag != reverseFlag ? 1 : 0; }

void QvMPlayer::SetMode(char m) {
  mode = m;
  forwardFlag = 1;
}

void QvMPlayer::SetSpeed(std::int16_t s) {
  if (s == speed) return;
  if (runFlag) {
    Play(reverseFlag ? static_cast<std::int16_t>(-static_cast<int>(s)) : s);
  } else {
    speed = s;
  }
}

void QvMPlayer::SetTop(std::int32_t t) { top = t; }

void QvMPlayer::SetEnd(std::int32_t e) { end = e; }

std::int32_t QvMPlayer::SetCur(std::int32_t frame) {
  cur = frame;
  localSetStart(frame);
  localResetFrameCur();
  return cur;
}

void QvMPlayer::Play(std::int16_t s) {
  if (runFlag) {
    localGetCur();
  } else {
    stopFlag = 0;
    runFlag = 1;
  }
  forwardFlag = 1;
  if (s < 0) {
    reverseFlag = 1;
    speed = static_cast<std::int16_t>(-static_cast<int>(s));
  } else {
    reverseFlag = 0;
    speed = s;
  }
  startTick = nowTick();
  lastCount = 0;
}

void QvMPlayer::Step(std::int16_t n) {
  if (runFlag) localGetCur();
  forwardFlag = 1;
  reverseFlag = 0;
  localStep(n);
}

void QvMPlayer::Pause() {
  stopFlag = 0;
  runFlag = 0;
}

void QvMPlayer::Stop() {
  forwardFlag = 1;
  stopFlag = 1;
  runFlag = 0;
  reverseFlag = 0;
  cur = top;
}

std::int32_t QvMPlayer::localGetCount() {
  const std::uint32_t elapsed = U32(nowTick()) - U32(startTick);
  return S32(U32(speed) * elapsed / 60u);
}

void QvMPlayer::localSetStart(std::int32_t frame) {
  if (speed == 0) {
    // At speed 0 the count never leaves 0, whatever the frame.
    startTick = nowTick();
    lastCount = 0;
    return;
  }
  startTick = S32(U32(nowTick()) - Frame2Time(frame));
  lastCount = frame;
}

void QvMPlayer::localGetCur() {
  const std::int32_t prev = lastCount;
  lastCount = localGetCount();
  const std::int16_t delta = speed == 0 ? 0 : static_cast<std::int16_t>(U32(lastCount) - U32(prev));
  localStep(delta);
}

void QvMPlayer::localGetNext() {
  const std::int32_t prev = lastCount;
  const std::int32_t count = localGetCount();
  lastCount = count;
  if (speed == 0) {
    // A clock at speed 0 does not move.
    localStep(0);
    return;
  }
  if (U32(count) - U32(prev) > 1u) {
    // Fallen behind (or the count went backwards): advance one frame only and
    // measure later counts from the present moment.
    lastCount = S32(U32(prev) + 1u);
    startTick = S32(U32(nowTick()) - Frame2Time(lastCount));
  }
  localStep(static_cast<std::int16_t>(U32(lastCount) - U32(prev)));
}

void QvMPlayer::localStep(std::int16_t n) {
  const std::uint32_t delta = U32(n);
  if (forwardFlag != reverseFlag) {
    cur = S32(U32(cur) + delta);
  } else {
    cur = S32(U32(cur) - delta);
  }
  localResetFrameCur();
}

void QvMPlayer::localResetFrameCur() {
  switch (mode) {
    case kPlayOnce:
      if (cur < top) {
        cur = top;
        stopFlag = 1;
        runFlag = 0;
      } else if (cur > end) {
        cur = end;
        stopFlag = 1;
        runFlag = 0;
      }
      break;
    case kPlayBounce: {
      if (end == top) {
        cur = top;
        break;
      }
      if (end < top) break;
      // Reflections at top and end, worked out on 64-bit offsets from top so
      // that they always end: pairs of reflections that only translate the
      // frame by twice the range are taken at once (they leave the direction
      // as it was).
      const std::int64_t span = static_cast<std::int64_t>(end) - top;
      std::int64_t x = static_cast<std::int64_t>(cur) - top;
      if (x < 0) {
        x = -x;
        forwardFlag = forwardFlag ? 0 : 1;
      }
      if (x > span) x -= 2 * span * ((x - span - 1) / (2 * span));
      while (x < 0 || x > span) {
        x = x < 0 ? -x : 2 * span - x;
        forwardFlag = forwardFlag ? 0 : 1;
      }
      cur = static_cast<std::int32_t>(top + x);
      break;
    }
    case kPlayLoop: {
      if (end == top) {
        cur = top;
        break;
      }
      if (end < top) break;
      // The period is end - top + 1 frames.
      const std::int64_t period = static_cast<std::int64_t>(end) - top + 1;
      std::int64_t x = (static_cast<std::int64_t>(cur) - top) % period;
      if (x < 0) x += period;
      cur = static_cast<std::int32_t>(top + x);
      break;
    }
    default:
      break;
  }
}

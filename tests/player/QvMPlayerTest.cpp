#include "player/QvMPlayer.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "toolbox/QvPlatform.h"

namespace {

std::uint32_t gMs = 0;
std::uint32_t FakeTicks() { return gMs; }

// Exposes the protected state for inspection.
class PlayerProbe : public QvMPlayer {
 public:
  using QvMPlayer::localGetCount;
  using QvMPlayer::localSetStart;
  std::int32_t StartTick() const { return startTick; }
  std::int32_t LastCount() const { return lastCount; }
  char ForwardFlag() const { return forwardFlag; }
  char ReverseFlag() const { return reverseFlag; }
  char RunFlag() const { return runFlag; }
  char StopFlag() const { return stopFlag; }
};

// Counts the virtual calls of Play made from inside the clock.
class PlayCounter : public QvMPlayer {
 public:
  void Play(std::int16_t s) override {
    ++calls;
    lastArg = s;
    QvMPlayer::Play(s);
  }
  int calls = 0;
  std::int16_t lastArg = 0;
};

class QvMPlayerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    gMs = 0;
    previous = QvSetTickSource(&FakeTicks);
  }
  void TearDown() override { QvSetTickSource(previous); }
  QvTickSource previous = nullptr;
};

TEST_F(QvMPlayerTest, NewClockDefaults) {
  QvMPlayer p;
  EXPECT_EQ(p.Mode(), 0);
  EXPECT_EQ(p.Speed(), 30);
  EXPECT_EQ(p.Top(), 0);
  EXPECT_EQ(p.End(), 0);
  EXPECT_EQ(p.Cur(), 0);
  EXPECT_EQ(p.IsPlaying(), 0);
  EXPECT_EQ(p.IsPausing(), 0);
  EXPECT_EQ(p.IsForward(), 1);
}

TEST_F(QvMPlayerTest, Time2FrameUsesWrappingProductAndUnsignedDivision) {
  QvMPlayer p;
  EXPECT_EQ(p.Time2Frame(0), 0);
  EXPECT_EQ(p.Time2Frame(1), 0);
  EXPECT_EQ(p.Time2Frame(2), 1);
  EXPECT_EQ(p.Time2Frame(3), 1);
  // 30 * 2^31 wraps to 0.
  EXPECT_EQ(p.Time2Frame(0x80000000u), 0);
  // 30 * 200000000 = 6000000000, modulo 2^32 1705032704.
  EXPECT_EQ(p.Time2Frame(200000000u), 1705032704 / 60);
}

TEST_F(QvMPlayerTest, Frame2TimeDividesUnsigned) {
  QvMPlayer p;
  p.SetSpeed(24);
  EXPECT_EQ(p.Frame2Time(7), 17u);
  p.SetSpeed(30);
  EXPECT_EQ(p.Frame2Time(2), 4u);
  // -1 * 60 is 2^32 - 60 as an unsigned value.
  EXPECT_EQ(p.Frame2Time(-1), (0xFFFFFFFFu - 59u) / 30u);
  // A negative speed is a huge unsigned divisor.
  p.SetSpeed(-10);
  EXPECT_EQ(p.Speed(), -10);
  EXPECT_EQ(p.Frame2Time(100), 0u);
  // Speed 0 has no duration per frame.
  p.SetSpeed(0);
  EXPECT_EQ(p.Frame2Time(100), 0u);
  EXPECT_EQ(p.Time2Frame(1000), 0);
}

TEST_F(QvMPlayerTest, TickFactorIsSlightlyBelowSixHundredths) {
  QvMPlayer p;
  p.SetEnd(1000000);
  p.Play(60);
  gMs = 1000;  // 59.99988 ticks, truncated to 59
  EXPECT_EQ(p.Cur(), 59);
  gMs = 100000;  // 5999.988 ticks
  EXPECT_EQ(p.Cur(), 5999);
}

TEST_F(QvMPlayerTest, PlayingAdvancesByElapsedFrames) {
  QvMPlayer p;
  p.SetEnd(100);
  p.Play(30);
  EXPECT_EQ(p.IsPlaying(), 1);
  EXPECT_EQ(p.IsPausing(), 0);
  gMs = 1000;  // tick 59: 30 * 59 / 60 = 29
  EXPECT_EQ(p.Cur(), 29);
  gMs = 2000;  // tick 119: 59
  EXPECT_EQ(p.Cur(), 59);
  gMs = 10000;  // far past the end: play once stops at 100
  EXPECT_EQ(p.Cur(), 100);
  EXPECT_EQ(p.IsPlaying(), 0);
  gMs = 20000;
  EXPECT_EQ(p.Cur(), 100);
}

TEST_F(QvMPlayerTest, PlayBackwardsWithNegativeSpeed) {
  QvMPlayer p;
  p.SetEnd(100);
  p.SetCur(50);
  p.Play(-10);
  EXPECT_EQ(p.Speed(), 10);
  EXPECT_EQ(p.IsForward(), 0);
  gMs = 1000;  // tick 59: 10 * 59 / 60 = 9 frames back
  EXPECT_EQ(p.Cur(), 41);
  gMs = 10000;  // 99 frames back: clamped at top and stopped
  EXPECT_EQ(p.Cur(), 0);
  EXPECT_EQ(p.IsPlaying(), 0);
}

TEST_F(QvMPlayerTest, PlayWhilePlayingSamplesAtOldSpeedFirst) {
  QvMPlayer p;
  p.SetEnd(1000);
  p.Play(30);
  gMs = 1000;
  p.Play(60);  // cur brought to 29, timing restarts
  gMs = 2000;  // 60 more ticks (119 - 59): 60 frames
  EXPECT_EQ(p.Cur(), 89);
}

TEST_F(QvMPlayerTest, FittingExampleTwelve) {
  for (char mode : {0, 1, 2}) {
    PlayerProbe p;
    p.SetEnd(9);
    p.SetMode(mode);
    p.Play(30);
    std::int32_t got = p.SetCur(12);
    if (mode == 0) {
      EXPECT_EQ(got, 9);
      EXPECT_EQ(p.IsPlaying(), 0);
    } else if (mode == 1) {
      EXPECT_EQ(got, 6);
      EXPECT_EQ(p.ForwardFlag(), 0);
      EXPECT_EQ(p.IsForward(), 0);
      EXPECT_EQ(p.IsPlaying(), 1);
    } else {
      EXPECT_EQ(got, 2);
      EXPECT_EQ(p.IsPlaying(), 1);
    }
  }
}

TEST_F(QvMPlayerTest, SetCurTwentyFiveInEachMode) {
  QvMPlayer once;
  once.SetEnd(9);
  once.Play(30);
  EXPECT_EQ(once.SetCur(25), 9);
  EXPECT_EQ(once.IsPlaying(), 0);
  EXPECT_EQ(once.Cur(), 9);

  PlayerProbe bounce;
  bounce.SetEnd(9);
  bounce.SetMode(1);
  EXPECT_EQ(bounce.SetCur(25), 7);
  EXPECT_EQ(bounce.ForwardFlag(), 1);  // two reflections

  QvMPlayer loop;
  loop.SetEnd(9);
  loop.SetMode(2);
  EXPECT_EQ(loop.SetCur(25), 5);
  EXPECT_EQ(loop.SetCur(-1), 9);
  EXPECT_EQ(loop.SetCur(-10), 0);
  EXPECT_EQ(loop.IsPlaying(), 0);  // SetCur leaves the run state alone
}

TEST_F(QvMPlayerTest, ModeZeroClampsBelowTop) {
  QvMPlayer p;
  p.SetTop(5);
  p.SetEnd(9);
  p.Pause();
  EXPECT_EQ(p.SetCur(-5), 5);
  EXPECT_EQ(p.IsPlaying(), 0);
  EXPECT_EQ(p.IsPausing(), 0);
}

TEST_F(QvMPlayerTest, DegenerateRanges) {
  for (char mode : {1, 2}) {
    QvMPlayer same;
    same.SetMode(mode);
    same.SetTop(4);
    same.SetEnd(4);
    EXPECT_EQ(same.SetCur(100), 4);
    EXPECT_EQ(same.SetCur(-100), 4);

    QvMPlayer inverted;
    inverted.SetMode(mode);
    inverted.SetTop(10);
    inverted.SetEnd(5);
    EXPECT_EQ(inverted.SetCur(100), 100);
    EXPECT_EQ(inverted.SetCur(-3), -3);
  }
  QvMPlayer unenforced;
  unenforced.SetMode(7);
  unenforced.SetEnd(9);
  EXPECT_EQ(unenforced.SetCur(1234), 1234);
}

TEST_F(QvMPlayerTest, ExtremeFramesAreFittedWithoutEndlessReflection) {
  PlayerProbe bounce;
  bounce.SetMode(1);
  bounce.SetEnd(9);
  // 2^31 above top folds to 2 after an odd number of reflections.
  EXPECT_EQ(bounce.SetCur(INT32_MIN), 2);
  EXPECT_EQ(bounce.ForwardFlag(), 0);
  bounce.SetMode(1);
  EXPECT_EQ(bounce.SetCur(INT32_MAX), 1);  // (2^31 - 1) mod 18 = 1

  QvMPlayer loop;
  loop.SetMode(2);
  loop.SetTop(-5);
  loop.SetEnd(5);
  EXPECT_EQ(loop.SetCur(INT32_MAX), -5 + 6);  // (2^31 - 1 + 5) mod 11 = 6
  EXPECT_EQ(loop.SetCur(INT32_MIN), -5 + 3);  // (-2^31 + 5) mod 11 = 3
}

TEST_F(QvMPlayerTest, SetModeDoesNotFitUntilNextStep) {
  PlayerProbe p;
  p.SetEnd(9);
  p.SetMode(3);
  EXPECT_EQ(p.SetCur(50), 50);
  p.SetMode(2);
  EXPECT_EQ(p.Cur(), 50);
  EXPECT_EQ(p.ForwardFlag(), 1);
  p.Step(1);
  EXPECT_EQ(p.Cur(), 1);
}

TEST_F(QvMPlayerTest, SetSpeedKeepsOrTurnsDirection) {
  PlayCounter p;
  p.SetEnd(1000);
  p.SetCur(500);
  p.Play(-30);
  p.calls = 0;
  p.SetSpeed(30);  // same value: nothing happens, even while playing
  EXPECT_EQ(p.calls, 0);
  EXPECT_EQ(p.IsForward(), 0);

  p.SetSpeed(15);  // positive keeps the backward direction
  EXPECT_EQ(p.calls, 1);
  EXPECT_EQ(p.lastArg, -15);
  EXPECT_EQ(p.Speed(), 15);
  EXPECT_EQ(p.IsForward(), 0);

  p.SetSpeed(-15);  // negative turns it forward
  EXPECT_EQ(p.calls, 2);
  EXPECT_EQ(p.lastArg, 15);
  EXPECT_EQ(p.IsForward(), 1);

  p.Stop();
  p.SetSpeed(-20);  // not running: stored as it is
  EXPECT_EQ(p.calls, 2);
  EXPECT_EQ(p.Speed(), -20);
}

TEST_F(QvMPlayerTest, SetSpeedWhilePlayingResetsBounceDirection) {
  PlayerProbe p;
  p.SetMode(1);
  p.SetEnd(9);
  p.Play(30);
  p.SetCur(12);
  EXPECT_EQ(p.ForwardFlag(), 0);
  p.SetSpeed(20);
  EXPECT_EQ(p.ForwardFlag(), 1);
}

TEST_F(QvMPlayerTest, StepOnBackwardClockTurnsItForward) {
  QvMPlayer p;
  p.SetEnd(100);
  p.SetCur(50);
  p.Play(-10);
  p.Step(1);
  EXPECT_EQ(p.IsForward(), 1);
  EXPECT_EQ(p.IsPlaying(), 1);
  EXPECT_EQ(p.IsPausing(), 0);
  EXPECT_EQ(p.Cur(), 51);
  gMs = 1000;  // 9 frames forward now
  EXPECT_EQ(p.Cur(), 60);
  p.Step(-3);
  EXPECT_EQ(p.Cur(), 57);
}

TEST_F(QvMPlayerTest, PauseAndResume) {
  QvMPlayer stopped;
  stopped.SetEnd(9);
  stopped.SetCur(3);
  stopped.Pause();
  EXPECT_EQ(stopped.IsPlaying(), 1);
  EXPECT_EQ(stopped.IsPausing(), 1);
  EXPECT_EQ(stopped.Cur(), 3);

  QvMPlayer p;
  p.SetEnd(1000);
  p.Play(30);
  gMs = 1000;
  EXPECT_EQ(p.Cur(), 29);
  p.Pause();
  gMs = 5000;
  EXPECT_EQ(p.Cur(), 29);
  EXPECT_EQ(p.Next(), 29);
  p.Play(30);  // goes on from the paused frame
  gMs = 6000;  // ticks 299 -> 359: 30 frames
  EXPECT_EQ(p.Cur(), 59);
}

TEST_F(QvMPlayerTest, StopResetsToTop) {
  PlayerProbe p;
  p.SetTop(3);
  p.SetEnd(50);
  p.SetCur(20);
  p.Play(-5);
  p.Stop();
  EXPECT_EQ(p.Cur(), 3);
  EXPECT_EQ(p.IsPlaying(), 0);
  EXPECT_EQ(p.ReverseFlag(), 0);
  EXPECT_EQ(p.ForwardFlag(), 1);
  EXPECT_EQ(p.RunFlag(), 0);
  EXPECT_EQ(p.StopFlag(), 1);
}

TEST_F(QvMPlayerTest, NextAdvancesOneFrameAfterLongGap) {
  QvMPlayer p;
  p.SetEnd(1000000);
  p.Play(30);
  QvMPlayer copy(p);
  gMs = 10000;  // tick 599: Cur would jump to 299
  EXPECT_EQ(p.Next(), 1);
  EXPECT_EQ(copy.Cur(), 299);
  // Re-based at this moment: a Cur now stays on frame 1.
  EXPECT_EQ(p.Cur(), 1);
  gMs = 10034;  // tick 602, 5 ticks after the re-based start: count 2
  EXPECT_EQ(p.Next(), 2);
  EXPECT_EQ(p.Next(), 2);
}

TEST_F(QvMPlayerTest, NextFollowsTheClockWhenCalledOften) {
  QvMPlayer p;
  p.SetEnd(1000);
  p.Play(30);
  std::int32_t last = 0;
  for (std::uint32_t ms = 0; ms <= 2000; ms += 10) {
    gMs = ms;
    std::int32_t now = p.Next();
    EXPECT_TRUE(now == last || now == last + 1);
    last = now;
  }
  EXPECT_EQ(last, 59);  // tick 119 at 2000 ms
}

TEST_F(QvMPlayerTest, SetCurAtSpeed24CountsBackOneFrame) {
  PlayerProbe p;
  p.SetEnd(100);
  p.Play(24);
  gMs = 5000;
  EXPECT_EQ(p.SetCur(7), 7);
  EXPECT_EQ(p.LastCount(), 7);
  EXPECT_EQ(p.StartTick(), 299 - 17);
  // 24 * 17 / 60 = 6 frames counted against lastCount 7.
  EXPECT_EQ(p.Cur(), 6);
}

TEST_F(QvMPlayerTest, SetCurOnStoppedClockIsExact) {
  QvMPlayer p;
  p.SetEnd(100);
  p.SetSpeed(24);
  gMs = 777;
  EXPECT_EQ(p.SetCur(7), 7);
  gMs = 99999;
  EXPECT_EQ(p.Cur(), 7);
  EXPECT_EQ(p.IsPlaying(), 0);
}

TEST_F(QvMPlayerTest, LocalSetStartLeavesCur) {
  PlayerProbe p;
  p.SetEnd(100);
  p.SetCur(40);
  gMs = 1000;
  p.localSetStart(10);
  EXPECT_EQ(p.LastCount(), 10);
  EXPECT_EQ(p.StartTick(), 59 - 20);
  EXPECT_EQ(p.localGetCount(), 10);
  EXPECT_EQ(p.Cur(), 40);
}

TEST_F(QvMPlayerTest, SpeedZeroNeverMoves) {
  PlayerProbe p;
  p.SetEnd(100);
  p.SetCur(7);
  p.Play(0);
  EXPECT_EQ(p.Speed(), 0);
  gMs = 100000;
  EXPECT_EQ(p.Cur(), 7);
  EXPECT_EQ(p.Next(), 7);
  EXPECT_EQ(p.SetCur(12), 12);
  gMs = 200000;
  EXPECT_EQ(p.Cur(), 12);
  EXPECT_EQ(p.Next(), 12);
  EXPECT_EQ(p.localGetCount(), 0);
  p.localSetStart(50);
  EXPECT_EQ(p.Cur(), 12);

  QvMPlayer q;
  q.SetEnd(100);
  q.Play(30);
  gMs = 201000;  // ticks 11999 -> 12059: 30 frames
  q.SetSpeed(0);
  gMs = 300000;
  EXPECT_EQ(q.Cur(), 30);
  EXPECT_EQ(q.IsPlaying(), 1);
}

TEST_F(QvMPlayerTest, MillisecondCounterWrap) {
  QvMPlayer p;
  p.SetMode(3);       // range not enforced: cur is the plain count
  gMs = 0xFFFFF000u;  // tick 257697276
  p.Play(30);
  gMs = 0xFFFFFFFFu;  // tick 257697522: 246 ticks, 123 frames
  EXPECT_EQ(p.Cur(), 123);
  gMs = 0x100u;  // tick 15: the tick difference wraps modulo 2^32
  // count = (30 * (15 - 257697276 mod 2^32) mod 2^32) / 60 = 14316946,
  // a step of its low 16 bits less the 123 already taken.
  EXPECT_EQ(p.Cur(), 123 + static_cast<std::int16_t>((14316946 - 123) & 0xFFFF));
}

TEST_F(QvMPlayerTest, FrameArithmeticWraps) {
  QvMPlayer p;
  p.SetMode(3);
  p.SetCur(INT32_MAX);
  p.Step(1);
  EXPECT_EQ(p.Cur(), INT32_MIN);
  p.Step(-1);
  EXPECT_EQ(p.Cur(), INT32_MAX);
  p.Play(1);
  EXPECT_EQ(p.SetCur(INT32_MIN), INT32_MIN);
  gMs = 0xFFFFFFFFu;
  p.Cur();
  p.Next();
  p.SetSpeed(-32768);  // negated speed narrows back to -32768
  EXPECT_EQ(p.Speed(), -32768);
  p.Next();
  p.Cur();
}

TEST_F(QvMPlayerTest, CopiesRunInStep) {
  QvMPlayer p;
  p.SetMode(2);
  p.SetEnd(20);
  p.SetCur(5);
  p.Play(-30);
  QvMPlayer copy(p);
  QvMPlayer assigned;
  QvMPlayer& ref = (assigned = p);
  EXPECT_EQ(&ref, &assigned);
  gMs = 1500;  // tick 89: 44 frames back from 5, looping over 21 frames
  std::int32_t expect = p.Cur();
  EXPECT_EQ(copy.Cur(), expect);
  EXPECT_EQ(assigned.Cur(), expect);
  EXPECT_EQ(copy.IsForward(), 0);
  EXPECT_EQ(assigned.Mode(), 2);
  EXPECT_EQ(expect, 3);  // -39 mod 21
}

}  // namespace

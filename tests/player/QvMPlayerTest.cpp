#include "player/QvMPlayer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "toolbox/QvPlatform.h"

namespace {

std::uint32_t gMs = 0;
std::uint32_t FakeTicks() { return gMs; }
using V = std::vector<std::int32_t>;
using U = std::vector<std::uint32_t>;

// Exposes the protected state and counts the virtual calls of Play. State() is
// Cur() (sampling when running), IsPlaying, IsPausing, IsForward.
class Clock : public QvMPlayer {
 public:
  Clock(char m = 0, std::int32_t t = 0, std::int32_t e = 0) { SetMode(m), SetTop(t), SetEnd(e); }
  using QvMPlayer::localGetCount;
  using QvMPlayer::localSetStart;
  void Play(std::int16_t s) override { ++calls, lastArg = s, QvMPlayer::Play(s); }
  V State() { return {Cur(), IsPlaying(), IsPausing(), IsForward()}; }
  V Flags() const { return {forwardFlag, reverseFlag, runFlag, stopFlag}; }
  V Timing() const { return {startTick, lastCount}; }
  int calls = 0;
  std::int16_t lastArg = 0;
};

// Runs a script of blank-separated steps, then gives State(): Tn sets the
// millisecond count, Pn Play, Sn Step, Cn SetCur, Vn SetSpeed, Mn SetMode,
// N Next, Z Pause, X Stop.
V Go(Clock& p, const std::string& script) {
  std::istringstream in(script);
  for (std::string op; in >> op;) {
    const long n = std::strtol(op.c_str() + 1, nullptr, 10);
    const auto s16 = static_cast<std::int16_t>(n);
    const char c = op[0];
    if (c == 'T') gMs = static_cast<std::uint32_t>(std::strtoul(op.c_str() + 1, nullptr, 0));
    if (c == 'P') p.Play(s16);
    if (c == 'S') p.Step(s16);
    if (c == 'C') p.SetCur(static_cast<std::int32_t>(n));
    if (c == 'V') p.SetSpeed(s16);
    if (c == 'M') p.SetMode(static_cast<char>(n));
    if (c == 'Z') p.Pause();
    if (c == 'X') p.Stop();
    if (c == 'N') p.Next();
  }
  return p.State();
}

struct QvMPlayerTest : ::testing::Test {
  QvTickSource previous = (gMs = 0, QvSetTickSource(&FakeTicks));
  ~QvMPlayerTest() override { QvSetTickSource(previous); }
};

TEST_F(QvMPlayerTest, ConversionsAndPlaying) {
  Clock d;
  EXPECT_EQ((V{d.Mode(), d.Speed(), d.Top(), d.End()}), (V{0, 30, 0, 0}));
  EXPECT_EQ(d.State(), (V{0, 0, 0, 1}));
  // Wrapping 32-bit products, unsigned divisions: 30 * 2^31 wraps to 0, 6e9
  // to 1705032704, -1 * 60 is 2^32 - 60.
  EXPECT_EQ((V{d.Time2Frame(1), d.Time2Frame(2), d.Time2Frame(3), d.Time2Frame(0x80000000u),
               d.Time2Frame(200000000u)}),
            (V{0, 1, 1, 0, 1705032704 / 60}));
  EXPECT_EQ((U{d.Frame2Time(2), d.Frame2Time(-1)}), (U{4, (0xFFFFFFFFu - 59u) / 30u}));
  d.SetSpeed(24);
  EXPECT_EQ(d.Frame2Time(7), 17u);
  d.SetSpeed(-10);  // a huge unsigned divisor
  EXPECT_EQ((U{static_cast<std::uint32_t>(d.Speed()), d.Frame2Time(100)}), (U{-10u, 0}));
  d.SetSpeed(0);
  EXPECT_EQ((U{d.Frame2Time(100), static_cast<std::uint32_t>(d.Time2Frame(1000))}), (U{0, 0}));
  Clock fast(0, 0, 1000000);  // 59.99988 ticks a second: the factor is not 0.06
  EXPECT_EQ((V{Go(fast, "P60 T1000")[0], Go(fast, "T100000")[0]}), (V{59, 5999}));
  Clock p(0, 0, 100);
  EXPECT_EQ(Go(p, "T0 P30 T1000"), (V{29, 1, 0, 1}));  // tick 59: 30 * 59 / 60
  EXPECT_EQ(Go(p, "P60 T2000"), (V{89, 1, 0, 1}));     // sampled at the old speed first
  EXPECT_EQ(Go(p, "T10000"), (V{100, 0, 0, 1}));       // play once stops at the end
  Clock back(0, 0, 100);
  EXPECT_EQ(Go(back, "T0 C50 P-10"), (V{50, 1, 0, 0}));
  EXPECT_EQ((V{back.Speed(), Go(back, "T1000")[0]}), (V{10, 41}));
  EXPECT_EQ(Go(back, "T10000"), (V{0, 0, 0, 0}));  // clamped at top and stopped
}

// SetCur on a playing clock: mode, top, end, frame, the fitted frame,
// forwardFlag (-1: not checked) and whether the clock still runs. Extreme
// frames fold without endless reflection: 2^31 above top is an odd number of
// reflections; (2^31 - 1) mod 18 = 1.
// clang-format off
const std::int32_t kFits[][7] = {
    {0, 0, 9, 12, 9, -1, 0},  {1, 0, 9, 12, 6, 0, 1},     {2, 0, 9, 12, 2, -1, 1},
    {0, 0, 9, 25, 9, -1, 0},  {1, 0, 9, 25, 7, 1, 1},     {2, 0, 9, 25, 5, -1, 1},
    {0, 0, 9, 5, 5, 1, 1},    {2, 0, 9, -1, 9, -1, 1},    {2, 0, 9, -10, 0, -1, 1},
    {0, 5, 9, -5, 5, -1, 0},  {1, 4, 4, 100, 4, -1, 1},   {1, 4, 4, -100, 4, -1, 1},
    {2, 4, 4, 100, 4, -1, 1}, {1, 10, 5, -3, -3, -1, 1},  {2, 10, 5, 100, 100, -1, 1},
    {7, 0, 9, 1234, 1234, -1, 1},  {1, 0, 9, INT32_MIN, 2, 0, 1},   {1, 0, 9, INT32_MAX, 1, -1, 1},
    {2, -5, 5, INT32_MAX, 1, -1, 1}, {2, -5, 5, INT32_MIN, -2, -1, 1},
};
// clang-format on

TEST_F(QvMPlayerTest, SetCurFitsByModeAndSetSpeedKeepsDirection) {
  for (const auto& c : kFits) {
    SCOPED_TRACE(::testing::Message()
                 << "mode " << c[0] << " " << c[1] << ".." << c[2] << " " << c[3]);
    Clock p(static_cast<char>(c[0]), c[1], c[2]);
    p.Play(30);
    EXPECT_EQ((V{p.SetCur(c[3]), c[5] < 0 ? c[5] : p.Flags()[0], p.IsPlaying()}),
              (V{c[4], c[5], c[6]}));
  }
  Clock stopped(2, 0, 9), late(3, 0, 9);
  EXPECT_EQ(Go(stopped, "C25"), (V{5, 0, 0, 1}));  // a stopped clock stays stopped
  // SetMode alone does not fit; the next step does.
  EXPECT_EQ((V{Go(late, "C50 M2")[0], Go(late, "S1")[0]}), (V{50, 1}));
  Clock p(0, 0, 1000);
  Go(p, "C500 P-30 V30");  // same value: nothing happens, even while playing
  EXPECT_EQ((V{p.calls, p.IsForward()}), (V{1, 0}));
  Go(p, "V15");  // positive keeps the backward direction
  EXPECT_EQ((V{p.calls, p.lastArg, p.Speed(), p.IsForward()}), (V{2, -15, 15, 0}));
  Go(p, "V-15");  // negative turns it forward
  EXPECT_EQ((V{p.calls, p.lastArg, p.Speed(), p.IsForward()}), (V{3, 15, 15, 1}));
  Go(p, "X V-20");  // not running: stored as it is
  EXPECT_EQ((V{p.calls, p.Speed()}), (V{3, -20}));
  Clock b(1, 0, 9);  // SetMode resets the direction, and so does SetSpeed (Play)
  EXPECT_EQ((V{Go(b, "P30 C12")[3], Go(b, "M1")[3], Go(b, "C12")[3], Go(b, "V20")[3]}),
            (V{0, 1, 0, 1}));
}

TEST_F(QvMPlayerTest, StepPauseStopAndNext) {
  Clock p(0, 0, 100);
  EXPECT_EQ(Go(p, "C50 P-10 S1"), (V{51, 1, 0, 1}));  // backward turns forward
  EXPECT_EQ(Go(p, "T1000"), (V{60, 1, 0, 1}));
  EXPECT_EQ(Go(p, "S-3 Z T5000"), (V{57, 1, 1, 1}));
  EXPECT_EQ(p.Next(), 57);
  EXPECT_EQ(Go(p, "P30 T6000"), (V{87, 1, 0, 1}));  // on from the paused frame
  Clock stopped(0, 0, 9), s(0, 3, 50);
  EXPECT_EQ(Go(stopped, "C3 Z"), (V{3, 1, 1, 1}));
  EXPECT_EQ(Go(s, "C20 P-5 X"), (V{3, 0, 0, 1}));
  EXPECT_EQ(s.Flags(), (V{1, 0, 0, 1}));
  Clock gap(0, 0, 1000000);
  Go(gap, "T0 P30");
  QvMPlayer copy(gap);
  gMs = 10000;  // tick 599: Cur jumps to 299, Next re-bases at this moment
  EXPECT_EQ((V{gap.Next(), copy.Cur(), gap.Cur()}), (V{1, 299, 1}));
  gMs = 10034;  // 5 ticks after the re-based start: count 2
  EXPECT_EQ((V{gap.Next(), gap.Next()}), (V{2, 2}));
  Clock often(0, 0, 1000);
  Go(often, "T0 P30");
  std::int32_t last = 0;
  for (gMs = 0; gMs <= 2000; gMs += 10) {
    const std::int32_t now = often.Next();
    EXPECT_TRUE(now == last || now == last + 1) << gMs;
    last = now;
  }
  EXPECT_EQ(last, 59);  // tick 119 at 2000 ms
}

TEST_F(QvMPlayerTest, RebasingSpeedZeroAndWrapModulo32Bits) {
  Clock p(0, 0, 100);
  p.Play(24);
  gMs = 5000;
  EXPECT_EQ(p.SetCur(7), 7);
  EXPECT_EQ(p.Timing(), (V{299 - 17, 7}));
  EXPECT_EQ(p.Cur(), 6);  // 24 * 17 / 60 = 6 counted against 7
  Clock s(0, 0, 100);
  EXPECT_EQ(Go(s, "V24 T777 C7 T99999"), (V{7, 0, 0, 1}));  // stopped: exact
  Go(s, "V30 C40 T1000");
  s.localSetStart(10);
  EXPECT_EQ(s.Timing(), (V{59 - 20, 10}));
  EXPECT_EQ((V{s.localGetCount(), s.Cur()}), (V{10, 40}));
  Clock z(0, 0, 100);
  EXPECT_EQ(Go(z, "C7 P0 T100000"), (V{7, 1, 0, 1}));
  EXPECT_EQ((V{z.Speed(), z.Next(), z.SetCur(12)}), (V{0, 7, 12}));
  EXPECT_EQ(Go(z, "T200000"), (V{12, 1, 0, 1}));
  EXPECT_EQ((V{z.Next(), z.localGetCount()}), (V{12, 0}));
  z.localSetStart(50);
  EXPECT_EQ(z.Cur(), 12);
  Clock q(0, 0, 100);
  EXPECT_EQ(Go(q, "T200000 P30 T201000 V0 T300000"), (V{30, 1, 0, 1}));
  Clock w(3);  // range not enforced: cur is the plain count
  // Ticks 257697276 to 257697522: 123 frames. At tick 15 the count
  // (30 * (15 - 257697276)) / 60 is 14316946.
  EXPECT_EQ(Go(w, "T0xFFFFF000 P30 T0xFFFFFFFF")[0], 123);
  EXPECT_EQ(Go(w, "T0x100")[0], 123 + static_cast<std::int16_t>((14316946 - 123) & 0xFFFF));
  Clock f(3);
  EXPECT_EQ((V{Go(f, "T0 C2147483647 S1")[0], Go(f, "S-1")[0]}), (V{INT32_MIN, INT32_MAX}));
  Go(f, "P1 C-2147483648 T0xFFFFFFFF N V-32768 N");
  EXPECT_EQ(f.Speed(), -32768);  // the negated speed narrows back to -32768
}

TEST_F(QvMPlayerTest, CopiesRunInStep) {
  Clock c(2, 0, 20);
  Go(c, "T0 C5 P-30");
  QvMPlayer copy(c), assigned;
  EXPECT_EQ(&(assigned = c), &assigned);
  gMs = 1500;  // tick 89: 44 frames back from 5, looping over 21 frames
  EXPECT_EQ((V{c.Cur(), copy.Cur(), assigned.Cur(), copy.IsForward(), assigned.Mode()}),
            (V{3, 3, 3, 0, 2}));
}

}  // namespace

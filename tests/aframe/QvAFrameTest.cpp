#include "aframe/QvAFrame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "cast/QvMCast.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbToolBox.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Ints = std::vector<int>;
using Values = std::vector<double>;
constexpr double kPi = 3.14159265358979323846;

// The 4 x 2 picture: rows 10 11 12 13 and 20 21 22 23.
unsigned char pic[8] = {10, 11, 12, 13, 20, 21, 22, 23},
              opaque[8] = {255, 255, 255, 255, 255, 255, 255, 255};
const Bytes kPic(pic, pic + 8);
Bytes Buf(const unsigned char* p, int n) { return p ? Bytes(p, p + n) : Bytes(); }

// Exposes the protected state of the animation.
class Probe : public QvAFrame {
 public:
  using QvAFrame::localDrawImage;
  QvAFrameInfo* Info(int i) {
    QvAFrameInfo* p = frameList;
    while (p && i-- > 0) p = p->next;
    return p;
  }
  QvAFrameInfo* Current() const { return curFrame; }
  Ints Locks() const { return {lockFlag, updateLock}; }
  Bytes Image(int i) { return Buf(Info(i)->image, Info(i)->imageWidth * Info(i)->imageHeight); }
  Bytes Mask(int i) { return Buf(Info(i)->mask, Info(i)->imageWidth * Info(i)->imageHeight); }
  // imageWidth, imageHeight, imageOffsetX, imageOffsetY.
  Ints Geo(int i) {
    const QvAFrameInfo* f = Info(i);
    return {f->imageWidth, f->imageHeight, f->imageOffsetX, f->imageOffsetY};
  }
  // Which of orgImage, image, mask and icon the frame holds.
  Ints Held(int i) {
    const QvAFrameInfo* f = Info(i);
    return {f->orgImage != nullptr, f->image != nullptr, f->mask != nullptr, f->icon != nullptr};
  }
};

// The ten outputs of GetAFrame (GetMFrame by clock position) and the active
// flag; empty when there is no such frame.
Values Frame(QvAFrame& a, short i, bool byPosition = false) {
  short v[7] = {};
  double d[3] = {};
  if (!(byPosition
            ? a.GetMFrame(i, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &d[0], &d[1], &d[2])
            : a.GetAFrame(i, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &d[0], &d[1], &d[2])))
    return {};
  return {double(v[0]), double(v[1]), double(v[2]),         double(v[3]),
          double(v[4]), double(v[5]), double(v[6]),         d[0],
          d[1],         d[2],         double(a.IsActive(i))};
}
int PosX(QvAFrame& a, short i, bool byPosition = false) {
  const Values f = Frame(a, i, byPosition);
  return f.empty() ? -1 : int(f[0]);
}
Ints Xs(QvAFrame& a) {
  Ints out;
  for (short i = 0; i < a.CountAFrame(); ++i) out.push_back(PosX(a, i));
  return out;
}
Ints Range(QvAFrame& a) { return {a.CountAFrame(), a.CountMFrame(), a.Top(), a.End()}; }
void ExpectSameSettings(QvAFrame& a, QvAFrame& b) {
  ASSERT_EQ(a.CountAFrame(), b.CountAFrame());
  for (short i = 0; i < a.CountAFrame(); ++i) EXPECT_EQ(Frame(a, i), Frame(b, i)) << i;
}
// Frames at posX 0, 1, ... with the given intervals and 1 x 1 rectangles.
void AddFrames(QvAFrame& a, int n, short interval = 1, short firstX = 0) {
  for (int i = 0; i < n; ++i) a.Reg(-1, short(firstX + i), 0, 1, 1, 0, 0, interval);
}
// A frame of the 4 x 2 picture anchored at (ax, ay), transformed.
void AddPic(QvAFrame& a, short ax = 0, short ay = 0) {
  a.Reg(-1, 0, 0, 4, 2, ax, ay, 1);
  a.SetImage(short(a.CountAFrame() - 1), pic, 4, 4, 2);
}
// Two frames with images, zoom, rotation, a flag and clock settings.
void MakeSource(QvAFrame& src) {
  src.Reg(-1, 0, 0, 4, 2, 1, 1, 3);
  src.Reg(-1, 0, 0, 4, 2, 0, 0, 2);
  src.SetZoom(0, 2.0, 2.0);
  src.SetRot(1, kPi / 2);
  src.Activate(1);
  src.SetImage(0, pic, 4, 4, 2);
  src.SetImage(1, pic, 4, 4, 2);
  src.SetMode(QvMPlayer::kPlayLoop);
  src.SetSpeed(12);
}

std::uint32_t fakeMs = 0;
std::uint32_t FakeTicks() { return fakeMs; }

class AFrameTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fakeMs = 0;
    QvSetTickSource(&FakeTicks);
    QvFailAllocation(0);
  }
  void TearDown() override {
    QvFailAllocation(0);
    QvSetTickSource(nullptr);
  }
};

TEST_F(AFrameTest, RegInsertsAppendsAndResetsTheClockRange) {
  QvAFrame a;
  EXPECT_EQ(Range(a), Ints({0, 0, 0, 0}));
  EXPECT_EQ(a.Reg(0, 0, 0, 10, 10, 5, 5, 4), 0);
  EXPECT_EQ(Range(a), Ints({1, 4, 0, 3}));
  a.DelAll();
  EXPECT_EQ(Range(a), Ints({0, 0, 0, -1}));
  for (short where : {5, -1}) {  // beyond the end or negative: appended
    QvAFrame b;
    for (short i = 0; i < 3; ++i) EXPECT_EQ(b.Reg(i, i, 0, 1, 1, 0, 0, 1), i);
    EXPECT_EQ(b.Reg(where, 50, 0, 1, 1, 0, 0, 1), 3);
    EXPECT_EQ(Xs(b), Ints({0, 1, 2, 50}));
  }
  AddFrames(a, 3);
  EXPECT_EQ(Ints({a.Reg(1, 50, 0, 1, 1, 0, 0, 1), a.Reg(0, 60, 0, 1, 1, 0, 0, 1)}), Ints({1, 0}));
  EXPECT_EQ(Xs(a), Ints({60, 0, 50, 1, 2}));
  EXPECT_EQ(a.End(), 4);
  Probe p;  // a new frame's defaults
  p.Reg(0, 1, 2, 3, 4, 5, 6, 7);
  EXPECT_EQ(Frame(p, 0), Values({1, 2, 3, 4, 5, 6, 7, 1.0, 1.0, 0.0, 0}));
  EXPECT_EQ(p.Geo(0), Ints({0, 0, 0, 0}));
  EXPECT_EQ(p.Held(0), Ints({0, 0, 0, 0}));
}

TEST_F(AFrameTest, ClockPositionsAndIntervals) {
  QvAFrame a, b, c;
  a.Reg(-1, 100, 0, 1, 1, 0, 0, 3);  // intervals 3, 0 and 2
  a.Reg(-1, 101, 0, 1, 1, 0, 0, 0);
  a.Reg(-1, 102, 0, 1, 1, 0, 0, 2);
  EXPECT_EQ(Range(a), Ints({3, 5, 0, 4}));
  const short cases[][2] = {{0, 100}, {1, 100},  {2, 100},  {3, 102},     {4, 102},
                            {5, -1},  {100, -1}, {-1, 100}, {-32768, 100}};
  for (const auto& k : cases) EXPECT_EQ(PosX(a, k[0], true), k[1]) << k[0];
  // Reg stores a negative interval as it is; SetInterval stores 0.
  AddFrames(b, 1, 4);
  b.Reg(-1, 1, 0, 1, 1, 0, 0, -5);
  EXPECT_EQ(Frame(b, 1)[6], -5);
  EXPECT_EQ(Range(b), Ints({2, -1, 0, -2}));
  EXPECT_EQ(b.SetInterval(1, -5), 1);
  EXPECT_EQ(Frame(b, 1)[6], 0);
  EXPECT_EQ(Range(b), Ints({2, 4, 0, 3}));
  EXPECT_EQ(b.SetInterval(1, 6) + b.SetInterval(2, 6), 1);
  EXPECT_EQ(b.End(), 9);
  // A first frame with a negative interval is not found at negative positions.
  AddFrames(c, 1, -5);
  EXPECT_EQ(PosX(c, -1, true), -1);
  c.SetInterval(0, 32767);  // the length is a 16-bit sum
  AddFrames(c, 1, 2);
  EXPECT_EQ(Range(c), Ints({2, -32767, 0, -32768}));
  // The forms without a position read the clock, sampling a running one
  // first: 600 ms are 35 ticks, 17 frames at 30 frames per second.
  short x = 0, iw = -1;
  a.SetCur(4);
  a.GetMFrame(&x, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(x, 102);
  AddFrames(a, 1, 30, 103);
  a.SetCur(0);
  a.Play(30);
  fakeMs = 600;
  EXPECT_EQ(a.GetMImage(nullptr, nullptr, &iw, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(Ints({a.Cur(), iw}), Ints({17, 0}));
  a.GetMFrame(&x, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(x, 103);
}

TEST_F(AFrameTest, LookupLock) {
  Probe a;
  AddFrames(a, 3);
  a.LockA(7);  // found nothing: every lookup fails until Unlock
  EXPECT_EQ(a.Locks(), Ints({1, 0}));
  EXPECT_EQ(PosX(a, 0) + PosX(a, 0, true) + a.SetPos(1, 5, 5), -2);
  EXPECT_EQ(Range(a), Ints({3, 3, 0, 2}));
  a.Unlock();
  EXPECT_EQ(Xs(a), Ints({0, 1, 2}));
  a.LockA(2);
  EXPECT_EQ(Ints({PosX(a, 0) + PosX(a, 0, true), a.SetPos(0, 42, 0)}), Ints({4, 1}));
  a.Unlock();
  EXPECT_EQ(Xs(a), Ints({0, 1, 42}));
  EXPECT_EQ(a.Current(), a.Info(2));
  a.LockM(1);  // Reg inserts before the locked frame and returns its index
  EXPECT_EQ(Ints({PosX(a, 2), a.Reg(9, 77, 0, 1, 1, 0, 0, 1)}), Ints({1, 9}));
  a.Unlock();
  EXPECT_EQ(Xs(a), Ints({0, 77, 1, 42}));
  EXPECT_EQ(Ints({a.Del(4), a.Del(-1), a.Del(2)}), Ints({0, 0, 1}));
  EXPECT_EQ(Range(a), Ints({3, 3, 0, 2}));
  a.LockA(1);  // deleting the locked frame releases the lock
  EXPECT_EQ(a.Del(0), 1);
  EXPECT_EQ(a.Locks(), Ints({0, 0}));
  EXPECT_EQ(a.Current(), nullptr);
  EXPECT_EQ(Xs(a), Ints({0, 42}));
  a.LockA(1);
  a.Unlock();
  EXPECT_EQ(a.Del(0), 1);  // the frame found last is gone: no dangling cursor
  EXPECT_EQ(a.Current(), nullptr);
  a.LockA(0);
  EXPECT_EQ(PosX(a, 0), 42);
  a.Unlock();
  EXPECT_EQ(Ints({a.Del(0), a.Del(0)}), Ints({1, 0}));
  EXPECT_EQ(Range(a), Ints({0, 0, 0, -1}));
  AddFrames(a, 2);
  a.LockA(1);
  a.DelAll();
  EXPECT_TRUE(a.Locks() == Ints({0, 0}) && a.Current() == nullptr);
  EXPECT_EQ(a.Reg(0, 5, 0, 1, 1, 0, 0, 1), 0);
  EXPECT_EQ(Xs(a), Ints({5}));
}

TEST_F(AFrameTest, SettersQueriesUpdateLockAndPersistence) {
  Probe a;
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  // No frame 1: every setter fails.
  EXPECT_EQ(a.Set(1, 1, 1, 1, 1, 1, 1) + a.SetPos(1, 1, 1) + a.SetSize(1, 1, 1) +
                a.SetAnchor(1, 1, 1) + a.SetZoom(1, 2, 2) + a.SetRot(1, 1) + a.Activate(1) +
                a.Deactivate(1) + a.IsActive(1),
            0);
  EXPECT_EQ(
      a.Set(0, 1, 2, 3, 4, 5, 6) + a.SetZoom(0, 2.5, -1.0) + a.SetRot(0, 0.25) + a.Activate(0), 4);
  EXPECT_EQ(Frame(a, 0), Values({1, 2, 3, 4, 5, 6, 1, 2.5, -1.0, 0.25, 1}));
  EXPECT_EQ(a.SetPos(0, -7, 8) + a.SetSize(0, 9, 10) + a.SetAnchor(0, 11, -12) + a.Deactivate(0),
            4);
  EXPECT_EQ(Frame(a, 0), Values({-7, 8, 9, 10, 11, -12, 1, 2.5, -1.0, 0.25, 0}));
  for (short i : {0, 1})
    EXPECT_EQ(a.GetAFrame(i, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                          nullptr, nullptr),
              1 - i);
  // Zoom and rotation do not touch the transformed image until SetImage.
  a.Set(0, 0, 0, 4, 2, 0, 0);
  ASSERT_EQ(a.SetImage(0, pic, 4, 4, 2), 1);
  const Ints geo = a.Geo(0);
  unsigned char* before = a.Info(0)->image;
  a.SetZoom(0, 2.0, 2.0);
  a.SetRot(0, 1.0);
  EXPECT_EQ(a.Info(0)->image, before);
  EXPECT_EQ(a.Geo(0), geo);
  // The update lock counts, saturating at 127, never negative; Load and Save do nothing.
  Ints locks;
  for (int step : {-1, 1, 1, -1, -1, -1}) {
    step > 0 ? a.LockUpdateMCast() : a.UnlockUpdateMCast();
    locks.push_back(a.Locks()[1]);
  }
  EXPECT_EQ(locks, Ints({0, 1, 2, 1, 0, 0}));
  for (int i = 0; i < 300; ++i) a.LockUpdateMCast();
  EXPECT_EQ(a.Locks()[1], 127);
  for (int i = 0; i < 300; ++i) a.UnlockUpdateMCast();
  EXPECT_EQ(a.Locks()[1], 0);
  char path[] = "movie";
  EXPECT_EQ(a.Load(3) + a.Load(path) + a.Load(3, 10u) + a.Save(3, 10u) + a.Save(path, 1u, 2u, 3u),
            0);
  EXPECT_EQ(Range(a), Ints({1, 1, 0, 0}));
}

TEST_F(AFrameTest, TransformsPixelByPixel) {
  // in: posX, posY, width, height, anchorX, anchorY, zoomX, zoomY, rotation,
  // then the image's width, height and offsets; every mask byte is `mask`.
  auto check = [](const char* name, unsigned char* src, short srcW, short srcH, Values in,
                  Bytes image, unsigned char mask) {
    SCOPED_TRACE(name);
    Probe a;
    a.Reg(-1, short(in[0]), short(in[1]), short(in[2]), short(in[3]), short(in[4]), short(in[5]),
          1);
    a.SetZoom(0, in[6], in[7]);
    a.SetRot(0, in[8]);
    ASSERT_EQ(a.SetImage(0, src, srcW, srcW, srcH), 1);
    EXPECT_EQ(a.Geo(0), Ints({int(in[9]), int(in[10]), int(in[11]), int(in[12])}));
    EXPECT_EQ(a.Image(0), image);
    EXPECT_EQ(a.Mask(0), Bytes(image.size(), mask));
  };
  check("plain", pic, 4, 2, {0, 0, 4, 2, 0, 0, 1, 1, 0, 4, 2, 0, 0}, kPic, 255);
  check("zoom 2", pic, 4, 2, {0, 0, 4, 2, 0, 0, 2, 2, 0, 7, 3, 0, 0},
        {10, 10, 11, 12, 12, 13, 13, 20, 20, 21, 22, 22, 23, 23, 20, 20, 21, 22, 22, 23, 23}, 255);
  check("quarter turn", pic, 4, 2, {0, 0, 4, 2, 0, 0, 1, 1, kPi / 2, 2, 4, 0, -3},
        {13, 23, 12, 22, 11, 21, 10, 20}, 255);
  check("mirrored", pic, 4, 2, {0, 0, 4, 2, 3, 0, -1, 1, 0, 4, 2, 0, 0},
        {13, 12, 11, 10, 23, 22, 21, 20}, 255);
  unsigned char line[3] = {7, 8, 9}, nine[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  check("1 pixel high", line, 3, 1, {0, 0, 3, 1, 0, 0, 1, 1, 0, 3, 1, 0, 0}, Bytes(3), 0);
  check("1 pixel wide", line, 1, 3, {0, 0, 1, 3, 0, 0, 1, 1, 0, 1, 3, 0, 0}, Bytes(3), 0);
  check("3 x 3 eighth turn", nine, 3, 3, {0, 0, 3, 3, 1, 1, 1, 1, kPi / 4, 1, 1, 0, 0}, Bytes(1),
        0);
  Bytes big(80, 1);  // a 10 x 8 source with the picture at (5, 5)
  for (int i = 0; i < 8; ++i) big[(5 + i / 4) * 10 + 5 + i % 4] = pic[i];
  check("anchor (7, 6)", big.data(), 10, 8, {5, 5, 4, 2, 7, 6, 1, 1, 0, 4, 2, -2, -1}, kPic, 255);
}

TEST_F(AFrameTest, ImagesAreCutCopiedAndTaken) {
  unsigned char src[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  Probe a;
  a.Reg(-1, -1, 2, 3, 2, 0, 0, 1);  // overlaps the source's bottom-left only
  ASSERT_EQ(a.SetOrgImage(0, src, 3, 3, 3), 1);
  EXPECT_EQ(Buf(a.Info(0)->orgImage, 6), Bytes({0, 7, 8, 0, 0, 0}));
  a.SetPos(0, 10, 10);  // wholly outside: all zero, still a success
  ASSERT_EQ(a.SetOrgImage(0, src, 3, 3, 3), 1);
  EXPECT_EQ(Buf(a.Info(0)->orgImage, 6), Bytes(6, 0));
  unsigned char wide[8] = {1, 2, 99, 99, 3, 4, 99, 99};  // rows longer than wide
  a.Set(0, 0, 0, 2, 2, 0, 0);
  ASSERT_EQ(a.SetOrgImage(0, wide, 4, 2, 2), 1);
  EXPECT_EQ(Buf(a.Info(0)->orgImage, 4), Bytes({1, 2, 3, 4}));
  unsigned char* first = a.Info(0)->orgImage;  // the frame-size form reuses it
  ASSERT_EQ(a.SetOrgImage(0, src + 4, 2, 2), 1);
  EXPECT_EQ(a.Info(0)->orgImage, first);
  EXPECT_EQ(Buf(first, 4), Bytes({5, 6, 7, 8}));
  // A ready transformed image and mask are copied with their offsets; bad
  // sizes, a null buffer or no frame leave the frame as it was.
  unsigned char mask[8] = {255, 0, 255, 0, 0, 255, 0, 255};
  a.SetSize(0, 4, 2);
  ASSERT_EQ(a.SetImage(0, pic, mask, 4, 2, -1, -2), 1);
  EXPECT_NE(a.Info(0)->image, pic);
  EXPECT_EQ(a.SetImage(0, pic, mask, 0, 2, 5, 5) + a.SetImage(0, nullptr, mask, 4, 2, 5, 5) +
                a.SetImage(3, pic, mask, 4, 2, 5, 5),
            0);
  EXPECT_EQ(a.Image(0), kPic);
  EXPECT_EQ(a.Mask(0), Buf(mask, 8));
  EXPECT_EQ(a.Geo(0), Ints({4, 2, -1, -2}));
}

TEST_F(AFrameTest, SetOrgImageBadInputAndSizeChanges) {
  Probe a, b;
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  a.Reg(-1, 0, 0, 0, 2, 0, 0, 1);
  EXPECT_EQ(a.SetOrgImage(2, pic, 4, 4, 2) + a.SetOrgImage(1, pic, 4, 4, 2) +
                a.SetOrgImage(0, nullptr, 4, 4, 2) + a.SetOrgImage(0, pic, 3, 4, 2) +
                a.SetOrgImage(0, pic, 3, 2) + a.SetOrgImage(0, pic, 4, 1) +
                a.SetOrgImage(1, pic, 0, 2) + a.SetOrgImage(0, nullptr, 4, 2),
            0);
  unsigned char* org = pic;
  short w, h;
  EXPECT_EQ(a.GetOrgImage(0, &org, &w, &h), 1);
  EXPECT_EQ(org, nullptr);
  EXPECT_EQ(Ints({w, h}), Ints({4, 2}));
  EXPECT_EQ(a.GetOrgImage(0, nullptr, &w, &h), 0);
  EXPECT_EQ(a.SetImage(0, nullptr, 0, 0, 0) + a.SetImage(5, nullptr, 0, 0, 0), 0);
  // A size change would make the transform read past the untransformed
  // buffer: it is dropped (the same size keeps it).
  ASSERT_EQ(a.SetOrgImage(0, pic, 4, 2), 1);
  a.Set(0, 1, 1, 4, 2, 0, 0);
  EXPECT_EQ(a.Held(0)[0], 1);
  a.SetSize(0, 40, 20);
  EXPECT_EQ(a.Held(0)[0] + a.SetImage(0, nullptr, 0, 0, 0), 0);
  a.Set(0, 0, 0, 4, 2, 0, 0);
  a.SetOrgImage(0, pic, 4, 2);
  a.Set(0, 0, 0, 2, 1, 0, 0);
  EXPECT_EQ(a.Held(0)[0], 0);
  EXPECT_EQ(a.Dup(&b), 1);
  EXPECT_EQ(b.Held(0)[0], 0);
}

TEST_F(AFrameTest, ExtremeZoomStaysDefined) {
  // Products far outside 32 bits and sizes that wrap around 16 bits.
  for (double z : {1e300, -1e300, double(NAN), double(INFINITY), 20000.0, -20000.0, 0.0}) {
    Probe a;
    a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
    a.SetZoom(0, z, 1.0);
    const char ok = a.SetImage(0, pic, 4, 4, 2);
    const Ints g = a.Geo(0);
    EXPECT_EQ(a.Held(0), Ints({1, ok, ok, 0})) << z;
    // The buffers hold the whole size (read through by the sanitizer).
    EXPECT_TRUE(!ok || (g[0] >= 1 && g[1] >= 1 && a.Mask(0).size() == std::size_t(g[0] * g[1])));
  }
  // A width that wraps to a negative 16-bit size fails and leaves no image.
  Probe a;
  AddPic(a);
  a.SetZoom(0, 10922.34, 1.0);  // P1.x = 32767: the width 32768 wraps
  EXPECT_EQ(a.SetImage(0, nullptr, 0, 0, 0), 0);
  EXPECT_EQ(a.Held(0), Ints({1, 0, 0, 0}));
  EXPECT_EQ(a.Geo(0)[0], -32768);
}

TEST_F(AFrameTest, Thumbnail) {
  Probe a;
  AddPic(a);
  unsigned char dst[6];
  std::memset(dst, 77, sizeof dst);
  // Anchored top-left: r is 2 and the frame shows in the lower-right part.
  ASSERT_EQ(a.GetIcon(0, dst, 3, 2, 2), 1);
  EXPECT_EQ(Buf(dst, 6), Bytes({0, 0, 77, 0, 10, 77}));
  EXPECT_EQ(Ints({a.Info(0)->iconWidth, a.Info(0)->iconHeight}), Ints({2, 2}));
  std::memset(a.Info(0)->icon, 55, 4);  // mark the cache: the same size copies it
  ASSERT_EQ(a.GetIcon(0, dst, 2, 2, 2), 1);
  EXPECT_EQ(Buf(dst, 4), Bytes(4, 55));
  ASSERT_EQ(a.GetIcon(0, dst, 3, 3, 2), 1);  // another size: r = 4 / 3, x0 = -2, y0 = -1
  EXPECT_EQ(Buf(dst, 6), Bytes({0, 0, 0, 0, 0, 10}));
  // Every change of geometry or transformed image drops it, nothing else.
  auto drops = [&](const std::function<void()>& change) {
    EXPECT_EQ(a.GetIcon(0, dst, 2, 2, 2), 1);
    change();
    return a.Held(0)[3] == 0;
  };
  EXPECT_FALSE(drops([&] {
    a.SetOrgImage(0, pic, 4, 2);
    a.SetOrgImage(0, pic, 4, 4, 2);
    a.SetInterval(0, 3);
    a.Activate(0);
  }));
  const std::function<void()> dropping[] = {[&] { a.SetPos(0, 0, 0); },
                                            [&] { a.SetSize(0, 4, 2); },
                                            [&] { a.SetAnchor(0, 0, 0); },
                                            [&] { a.Set(0, 0, 0, 4, 2, 0, 0); },
                                            [&] { a.SetZoom(0, 1, 1); },
                                            [&] { a.SetRot(0, 0); },
                                            [&] { a.SetImage(0, nullptr, 0, 0, 0); },
                                            [&] { a.SetImage(0, pic, opaque, 4, 2, 0, 0); }};
  for (const auto& change : dropping) EXPECT_TRUE(drops(change));
  // Bad sizes, no target, rows shorter than the thumbnail, no memory, no
  // transformed image, no frame.
  EXPECT_EQ(a.GetIcon(0, dst, 4, 0, 2) + a.GetIcon(0, dst, 4, 2, -1) +
                a.GetIcon(0, nullptr, 4, 2, 2) + a.GetIcon(0, dst, 1, 2, 2) +
                a.GetIcon(1, dst, 4, 2, 2),
            0);
  a.SetSize(0, 0, 2);  // the width became 0 after the image was made
  EXPECT_EQ(a.GetIcon(0, dst, 2, 2, 2), 0);
  Probe b;
  b.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  EXPECT_EQ(b.GetIcon(0, dst, 2, 2, 2), 0);
}

TEST_F(AFrameTest, AreaOfTheAnimation) {
  QvAFrame a;
  short w = -9, h = -9, ax = -9, ay = -9;
  auto area = [&] { return a.GetArea(&w, &h, &ax, &ay) ? Ints{w, h, ax, ay} : Ints{w}; };
  EXPECT_EQ(area(), Ints({-9}));
  a.Reg(-1, 0, 0, 4, 2, 2, 1, 1);  // anchored at (2, 1)
  a.SetImage(0, pic, 4, 4, 2);
  EXPECT_EQ(area(), Ints({4, 2, 2, 1}));
  a.SetAnchor(0, -3, 0);  // anchored at (-3, 0): the anchor pixel widens it
  a.SetImage(0, nullptr, 0, 0, 0);
  EXPECT_EQ(area(), Ints({7, 2, 0, 0}));
  // A second frame rotated (2 x 4 at (0, -3)), a third without an image.
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  a.SetRot(1, kPi / 2);
  a.SetImage(1, pic, 4, 4, 2);
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  EXPECT_EQ(area(), Ints({7, 5, 0, 3}));
  a.LockA(2);  // null outputs are skipped; a lookup lock does not disturb the walk
  h = 0;
  ASSERT_EQ(a.GetArea(nullptr, &h, nullptr, nullptr), 1);
  EXPECT_EQ(h, 5);
}

// A target buffer with 64 guard bytes on each side.
struct Target {
  Target(int w, int h, int rowBytes, unsigned char init = 0)
      : width(w), height(h), rowBytes(rowBytes), store(64 + rowBytes * h + 64, 0xEE) {
    std::memset(Data(), init, rowBytes * h);
  }
  unsigned char* Data() { return store.data() + 64; }
  unsigned char At(int x, int y) { return Data()[y * rowBytes + x]; }
  bool GuardsIntact() const {
    return Bytes(store.begin(), store.begin() + 64) == Bytes(64, 0xEE) &&
           Bytes(store.end() - 64, store.end()) == Bytes(64, 0xEE);
  }
  Bytes Rect(int x0, int y0, int x1, int y1) {
    Bytes out;
    for (int y = y0; y < y1; ++y)
      for (int x = x0; x < x1; ++x) out.push_back(At(x, y));
    return out;
  }
  int width, height, rowBytes;
  Bytes store;
};

// Frame 0 is the 4 x 2 picture anchored at its top-left pixel.
class AFrameDrawTest : public AFrameTest {
 protected:
  void SetUp() override {
    AFrameTest::SetUp();
    a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
    ASSERT_EQ(a.SetImage(0, pic, 4, 4, 2), 1);
  }
  // Draws frame 0 into the whole target; gives the frame rectangle.
  tbRect Draw(Target& t, short x, short y, QvPal* pal, short fill, char wrap, short sx, short sy) {
    EXPECT_EQ(a.DrawAImage(0, t.Data(), short(t.rowBytes), short(t.width), short(t.height), x, y,
                           pal, fill, wrap, sx, sy, &r),
              1);
    return r;
  }
  Probe a;
  tbRect r;
};

TEST_F(AFrameDrawTest, NothingToDrawOrNowhereToDraw) {
  QvAFrame b;  // no transformed image: nothing filled, an empty rectangle
  b.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  Target t(10, 10, 10, 3), u(5, 5, 5, 7);
  r = tbRect(1, 2, 3, 4);
  EXPECT_EQ(b.DrawAImage(0, t.Data(), 10, 10, 10, 2, 2, nullptr, 5, 3, 0, 0, &r), 1);
  EXPECT_TRUE(r == tbRect(0, 0, 0, 0) && t.Rect(0, 0, 10, 10) == Bytes(100, 3));
  EXPECT_EQ(b.DrawAImage(1, t.Data(), 10, 10, 10, 2, 2, nullptr, 5, 3, 0, 0, &r), 0);
  r = tbRect(1, 2, 3, 4);
  EXPECT_EQ(a.DrawAImage(0, nullptr, 10, 10, 10, 2, 2, nullptr, 5, 0, 0, 0, &r), 1);
  EXPECT_EQ(r, tbRect(0, 0, 0, 0));
  // Rows shorter than the width, negative sizes.
  for (const auto& k : {Ints{4, 5, 5}, Ints{5, -5, 5}, Ints{5, 5, -1}, Ints{-5, -5, 5}})
    EXPECT_EQ(a.DrawAImage(0, u.Data(), short(k[0]), short(k[1]), short(k[2]), 0, 0, nullptr, 1, 0,
                           0, 0, &r),
              1);
  EXPECT_TRUE(r == tbRect(0, 0, 4, 2) && u.Rect(0, 0, 5, 5) == Bytes(25, 7));
  // A null frame rectangle is allowed.
  EXPECT_EQ(a.DrawAImage(0, u.Data(), 5, 5, 5, 0, 0, nullptr, -1, 0, 0, 0, nullptr), 1);
  EXPECT_EQ(u.At(0, 0), 10);
}

TEST_F(AFrameDrawTest, FillPlaceAndMask) {
  Target t(10, 10, 12, 9), u(6, 4, 6, 1);
  EXPECT_EQ(Draw(t, 3, 4, nullptr, 5, 0, 0, 0), tbRect(3, 4, 7, 6));
  const Bytes all = t.Rect(0, 0, 10, 10);
  EXPECT_EQ(std::count(all.begin(), all.end(), 5), 92);
  EXPECT_EQ(t.Rect(3, 4, 7, 6), kPic);
  EXPECT_EQ(t.At(10, 0) + t.At(11, 9), 18);  // the row ends are not the target's
  Draw(t, 3, 4, nullptr, 261, 0, 0, 0);      // the low 8 bits of the fill
  EXPECT_TRUE(t.At(0, 0) == 5 && t.GuardsIntact());
  // Without fill only the pixels under the mask change; with a palette area
  // only its colours under the mask (11 is masked out).
  unsigned char mask[8] = {255, 0, 255, 0, 0, 255, 0, 255};
  a.SetImage(0, pic, mask, 4, 2, -1, -1);
  EXPECT_EQ(Draw(u, 2, 2, nullptr, -1, 0, 0, 0), tbRect(1, 1, 5, 3));
  EXPECT_EQ(u.Rect(0, 0, 6, 4), Bytes({1, 1, 1,  1, 1,  1, 1, 10, 1, 12, 1, 1,  //
                                       1, 1, 21, 1, 23, 1, 1, 1,  1, 1,  1, 1}));
  QvPal pal;
  pal.SetFlag(11, 1);
  pal.SetFlag(12, 1);
  Draw(u, 2, 2, &pal, 0, 0, 0, 0);
  Bytes want(24, 0);
  want[9] = 12;
  EXPECT_EQ(u.Rect(0, 0, 6, 4), want);
}

TEST_F(AFrameDrawTest, ScrollAndWrap) {
  // Frame rectangle (1, 1) - (5, 3) of a 6 x 4 target filled with 0.
  auto frame = [&](char wrap, short sx, short sy) {
    Target t(6, 4, 6, 9);
    Draw(t, 1, 1, nullptr, 0, wrap, sx, sy);
    EXPECT_EQ(t.At(0, 0) + t.At(5, 3) + t.At(0, 1) + t.At(5, 1), 0);  // nothing outside
    EXPECT_TRUE(t.GuardsIntact());
    return t.Rect(1, 1, 5, 3);
  };
  EXPECT_EQ(frame(0, 1, 0), Bytes({0, 10, 11, 12, 0, 20, 21, 22}));
  EXPECT_EQ(frame(1, 1, 0), Bytes({13, 10, 11, 12, 23, 20, 21, 22}));
  EXPECT_EQ(frame(2, 0, 1), Bytes({20, 21, 22, 23, 10, 11, 12, 13}));
  EXPECT_EQ(frame(3, 1, 1), Bytes({23, 20, 21, 22, 13, 10, 11, 12}));  // the corner too
  EXPECT_EQ(frame(7, 1, 1), Bytes({0, 20, 21, 22, 13, 10, 11, 12}));   // not the corner
  // Scrolls are taken modulo the image size.
  for (short s : {0, 4, 8, -4, 400}) EXPECT_EQ(frame(3, s, 0), kPic) << s;
  EXPECT_EQ(frame(3, -1, 0), frame(3, 3, 0));
  EXPECT_EQ(frame(3, -1, -3), frame(3, 3, 1));
  EXPECT_EQ(frame(3, -32768, 32767), frame(3, 0, 1));
}

TEST_F(AFrameDrawTest, ClippingAtTheEdges) {
  Target t(5, 5, 5, 0), u(5, 5, 5, 0), v(5, 5, 5, 0);
  EXPECT_EQ(Draw(t, -2, -1, nullptr, -1, 0, 0, 0), tbRect(-2, -1, 2, 1));
  EXPECT_EQ(t.Rect(0, 0, 3, 2), Bytes({22, 23, 0, 0, 0, 0}));
  Draw(u, 3, 4, nullptr, -1, 0, 0, 0);
  EXPECT_TRUE(u.Rect(3, 4, 5, 5) == Bytes({10, 11}) && u.GuardsIntact());
  // Wholly outside: nothing drawn, still reported; at the 16-bit edges it wraps.
  EXPECT_EQ(Draw(v, 100, -50, nullptr, -1, 3, 2, 1), tbRect(100, -50, 104, -48));
  EXPECT_EQ(Draw(v, 32766, 32766, nullptr, -1, 3, 3, 1), tbRect(32766, 32766, -32766, -32768));
  Draw(v, -32768, -32768, nullptr, -1, 3, 3, 1);
  EXPECT_TRUE(v.Rect(0, 0, 5, 5) == Bytes(25, 0) && v.GuardsIntact());
}

TEST_F(AFrameDrawTest, CopyingFormClipsOnce) {
  Target t(6, 6, 6, 0), u(6, 6, 6, 0);
  // Clipped on all four sides by a clip rectangle inside the target.
  a.localDrawImage(pic, opaque, 4, t.Data(), 6, 1, 1, 5, 3, 2, 2, 4, 6, nullptr);
  Bytes want(36, 0);
  want[14] = 21;
  want[15] = 22;
  EXPECT_EQ(t.Rect(0, 0, 6, 6), want);
  // Empty, inverted and wrapped rectangles, rows wider than the image, and
  // a clip rectangle that starts before the target are refused.
  const short rects[][8] = {{3, 3, 3, 5, 0, 0, 6, 6},
                            {32760, 0, -32760, 2, 0, 0, 6, 6},
                            {4, 0, 0, 2, 0, 0, 6, 6},
                            {0, 0, 6, 2, 0, 0, 6, 6},
                            {-1, -1, 3, 1, -1, -1, 6, 6}};
  for (const auto& q : rects)
    a.localDrawImage(pic, opaque, 4, u.Data(), 6, q[0], q[1], q[2], q[3], q[4], q[5], q[6], q[7],
                     nullptr);
  EXPECT_TRUE(u.Rect(0, 0, 6, 6) == Bytes(36, 0) && u.GuardsIntact());
}

TEST_F(AFrameDrawTest, ClockPositionForms) {
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 3);  // positions: 0 is frame 0, 1 to 3 frame 1
  unsigned char img[1] = {77}, *got = nullptr;
  a.SetImage(1, img, opaque, 1, 1, 0, 0);
  Target t(4, 2, 4, 0);
  EXPECT_EQ(a.DrawMImage(2, t.Data(), 4, 4, 2, 1, 1, nullptr, 0, 0, 0, 0, &r), 1);
  EXPECT_TRUE(r == tbRect(1, 1, 2, 2) && t.At(1, 1) == 77);
  EXPECT_EQ(a.DrawMImage(4, t.Data(), 4, 4, 2, 1, 1, nullptr, 0, 0, 0, 0, &r), 0);
  a.SetCur(0);
  EXPECT_EQ(a.DrawMImage(t.Data(), 4, 4, 2, 0, 0, nullptr, 0, 0, 0, 0, &r), 1);
  EXPECT_EQ(t.Rect(0, 0, 4, 2), kPic);
  a.SetCur(3);
  EXPECT_EQ(a.DrawMImage(t.Data(), 4, 4, 2, 0, 0, nullptr, 0, 0, 0, 0, &r), 1);
  EXPECT_EQ(t.At(0, 0), 77);
  ASSERT_EQ(a.GetMImage(1, &got, nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(got[0], 77);
  EXPECT_EQ(a.GetMImage(4, &got, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}

// A world of 8 x 6 and a host pixel map of 20 x 12 filled with 99.
class AFramePictureTest : public AFrameDrawTest {
 protected:
  void SetUp() override {
    AFrameDrawTest::SetUp();
    tbRect bounds(0, 0, 8, 6);
    ASSERT_NE(qv::tb.NewGWorld(&world, tbToolBox::kDepth8, &bounds, nullptr), 0);
  }
  void TearDown() override {
    qv::tb.DisposeGWorld(world);
    AFrameDrawTest::TearDown();
  }
  // Every destination pixel: `inside` gives the ones in (x0, y0) - (x1, y1).
  void ExpectDest(int x0, int y0, int x1, int y1, const std::function<int(int, int)>& inside) {
    for (int i = 0; i < 240; ++i) {
      const int x = i % 20, y = i / 20;
      const bool in = x >= x0 && x < x1 && y >= y0 && y < y1;
      ASSERT_EQ(dest[i], in ? inside(x, y) : 99) << x << "," << y;
    }
  }
  tbGWorld* world = nullptr;
  Bytes dest = Bytes(20 * 12, 99);
  tbPixMap destMap = tbPixMap(dest.data(), 20, tbRect(0, 0, 20, 12));
};

TEST_F(AFramePictureTest, MaskedCopyWithAndWithoutPaletteArea) {
  QvPal pal;
  pal.SetFlag(12, 1);
  EXPECT_EQ(a.DrawMPicture(0, world, 2, 3, &pal, 0, 0, 0, 0, &destMap, 5, 1), 1);
  ExpectDest(9, 4, 10, 5, [](int, int) { return 12; });
  EXPECT_EQ(a.DrawMPicture(1, world, 2, 3, &pal, 0, 0, 0, 0, &destMap, 5, 1), 0);
  // Without one, the world's whole frame rectangle (2, 3) - (6, 5) reaches
  // the destination at (7, 4) - (11, 6), its background under the mask too.
  unsigned char mask[8] = {255, 0, 255, 255, 255, 255, 255, 255};
  a.SetImage(0, pic, mask, 4, 2, 0, 0);
  dest.assign(dest.size(), 99);
  EXPECT_EQ(a.DrawAPicture(0, world, 2, 3, nullptr, 4, 0, 0, 0, &destMap, 5, 1), 1);
  // The world was filled and drawn.
  EXPECT_EQ(Ints({world->PortPixMap()->Pixel(0, 0), world->PortPixMap()->Pixel(2, 3)}),
            Ints({4, 10}));
  ExpectDest(7, 4, 11, 6,
             [](int x, int y) { return x == 8 && y == 4 ? 4 : pic[(y - 4) * 4 + x - 7]; });
}

TEST_F(AFramePictureTest, BadInputCopiesNothing) {
  EXPECT_EQ(a.DrawAPicture(0, nullptr, 0, 0, nullptr, 4, 0, 0, 0, &destMap, 0, 0) +
                a.DrawAPicture(3, world, 0, 0, nullptr, 4, 0, 0, 0, &destMap, 0, 0),
            0);
  // A destination far away or absent is harmless.
  EXPECT_EQ(a.DrawAPicture(0, world, 0, 0, nullptr, 4, 0, 0, 0, &destMap, 32000, -32000) +
                a.DrawAPicture(0, world, 0, 0, nullptr, 4, 0, 0, 0, nullptr, 0, 0),
            2);
  EXPECT_EQ(dest, Bytes(20 * 12, 99));
}

TEST_F(AFrameTest, DupMakesAnIndependentDeepCopy) {
  Probe src, dst;
  MakeSource(src);
  unsigned char icon[4];
  ASSERT_EQ(src.GetIcon(0, icon, 2, 2, 2), 1);
  AddFrames(dst, 5, 7);
  dst.SetOrgImage(0, pic, 3, 3, 3);
  dst.SetCur(1);
  src.SetCur(3);
  ASSERT_EQ(src.Dup(&dst), 1);
  ExpectSameSettings(src, dst);
  // Mode and speed are copied, the clock position is not; no thumbnail.
  EXPECT_EQ(Ints({dst.Mode(), dst.Speed(), dst.Top(), dst.End(), dst.Cur(), dst.Locks()[0]}),
            Ints({2, 12, 0, 4, 1, 0}));
  for (int i = 0; i < 2; ++i) {
    const QvAFrameInfo *d = dst.Info(i), *f = src.Info(i);
    EXPECT_TRUE(d->orgImage != f->orgImage && d->image != f->image && d->mask != f->mask);
    EXPECT_TRUE(dst.Held(i) == Ints({1, 1, 1, 0}) && dst.Geo(i) == src.Geo(i) &&
                Buf(d->orgImage, 8) == Buf(f->orgImage, 8) && dst.Image(i) == src.Image(i) &&
                dst.Mask(i) == src.Mask(i));
  }
  src.SetPos(0, 50, 50);  // later changes of one do not reach the other
  src.Del(1);
  EXPECT_EQ(Xs(dst), Ints({0, 0}));
  EXPECT_EQ(Ints({src.Dup(nullptr), src.Dup(&src), src.CountAFrame()}), Ints({0, 1, 1}));
  // Copies from and into locked animations: the source keeps its lock on
  // frame 1; the target's went with its frames.
  Probe locked, dst2, backup;
  MakeSource(locked);
  locked.LockA(1);
  AddFrames(dst2, 3);
  dst2.LockA(2);
  ASSERT_EQ(locked.Dup(&dst2), 1);
  EXPECT_TRUE(locked.Locks() == Ints({1, 0}) && locked.Current() == locked.Info(1) &&
              dst2.Locks() == Ints({0, 0}));
  locked.Unlock();
  ExpectSameSettings(locked, dst2);
  locked.LockA(0);
  ASSERT_EQ(locked.Backup(&backup), 1);
  EXPECT_EQ(locked.Current(), locked.Info(0));
  backup.LockA(1);
  ASSERT_EQ(dst2.Restore(&backup), 1);
  EXPECT_EQ(backup.Locks(), Ints({1, 0}));
  locked.Unlock();
  ExpectSameSettings(locked, dst2);
}

TEST_F(AFrameTest, BackupAndRestoreDropImages) {
  Probe src, backup, empty;
  MakeSource(src);
  ASSERT_EQ(src.Backup(&backup), 1);
  ExpectSameSettings(src, backup);
  EXPECT_EQ(Ints({backup.Mode(), backup.Speed()}), Ints({0, 30}));  // no clock settings
  src.SetPos(0, 40, 40);
  AddFrames(src, 1);
  ASSERT_EQ(src.Restore(&backup), 1);
  ExpectSameSettings(src, backup);
  EXPECT_EQ(Range(src), Ints({2, 5, 0, 4}));
  for (short i = 0; i < 2; ++i) {
    unsigned char* img = pic;
    EXPECT_EQ(src.GetAImage(i, &img, nullptr, nullptr, nullptr, nullptr, nullptr), 1);
    EXPECT_TRUE(img == nullptr && src.Held(i) == Ints({0, 0, 0, 0}));
  }
  // Remade, frame 0 has its image again; frame 1 has none, frame 2 is absent.
  src.SetImage(0, pic, 4, 4, 2);
  EXPECT_EQ(Ints({src.HasAImage(0), src.HasAImage(1), src.HasAImage(2)}), Ints({1, 0, 0}));
  EXPECT_EQ(Ints({src.Backup(nullptr), src.Restore(nullptr), src.Backup(&src), src.Restore(&src),
                  src.CountAFrame()}),
            Ints({0, 0, 1, 1, 2}));
  // An empty animation empties the backup, and so the restored one.
  EXPECT_EQ(Ints({empty.Backup(&backup), backup.CountAFrame(), src.Restore(&backup)}),
            Ints({1, 0, 1}));
  EXPECT_EQ(Range(src), Ints({0, 0, 0, -1}));
}

TEST_F(AFrameTest, RegFromAnotherAnimation) {
  Probe src, a;
  for (short i = 0; i < 3; ++i) src.Reg(-1, i, 1, 2, 3, 4, 5, 6);
  src.SetZoom(2, 0.5, 3.0);
  src.SetRot(2, -1.0);
  src.Activate(2);
  src.SetImage(2, pic, 4, 4, 2);
  AddFrames(a, 3, 1, 10);
  ASSERT_EQ(a.Reg(0, &src, 2), 0);
  EXPECT_EQ(Frame(a, 0), Values({2, 1, 2, 3, 4, 5, 6, 0.5, 3.0, -1.0, 0}));  // inactive
  EXPECT_EQ(Xs(a), Ints({2, 10, 11, 12}));
  EXPECT_TRUE(a.End() == 8 && a.Held(0) == Ints({0, 0, 0, 0}) && a.Locks() == Ints({0, 0}));
  EXPECT_EQ(a.Reg(0, &src, 9) + a.Reg(0, nullptr, 0), -2);
  // Into a locked animation: inserted before the locked frame, and the zoom
  // goes to the new frame, not to the locked one.
  a.LockA(2);
  ASSERT_EQ(a.Reg(5, &src, 2), 5);
  a.Unlock();
  EXPECT_EQ(Xs(a), Ints({2, 10, 2, 11, 12}));
  EXPECT_EQ(Values({a.Info(2)->zoomX, a.Info(3)->zoomX}), Values({0.5, 1.0}));
}

// Every change of settings reaches the members' copies (Activate, locks and
// detaching: the cast store's tests).
TEST_F(AFrameTest, ChangesReachTheMembersCopies) {
  QvMCast cast;
  QvAFrame anim;
  anim.Reg(-1, 1, 0, 4, 2, 0, 0, 3);
  const short m = cast.RegAFrame(-1, &anim, 10, nullptr, &anim),
              n = cast.RegAFrame(-1, &anim, 20, nullptr, &anim);
  const std::function<void()> changes[] = {[&] { anim.SetPos(0, 5, 0); },
                                           [&] { anim.SetSize(0, 4, 3); },
                                           [&] { anim.SetAnchor(0, 2, 1); },
                                           [&] { anim.Set(0, 1, 1, 4, 2, 0, 0); },
                                           [&] { anim.SetZoom(0, 2, 3); },
                                           [&] { anim.SetRot(0, 0.5); },
                                           [&] { anim.SetInterval(0, 9); },
                                           [&] { anim.Reg(0, 8, 0, 1, 1, 0, 0, 1); },
                                           [&] { anim.Del(0); },
                                           [&] { anim.SetImage(0, pic, 4, 4, 2); }};
  for (const auto& change : changes) {
    change();
    ExpectSameSettings(anim, *cast.AFrame(m));
    ExpectSameSettings(anim, *cast.AFrame(n));
  }
  unsigned char* img = nullptr;
  cast.AFrame(m)->GetAImage(0, &img, nullptr, nullptr, nullptr, nullptr, nullptr);
  QvMCast* store = nullptr;
  short id = 0;  // the list did not grow; the members keep their start times
  EXPECT_TRUE(img && !anim.Get(2, &store, &id) && cast.Start(m) + cast.Start(n) == 30);
  anim.SetSpeed(15);  // mode and speed reach the copies with the next update
  EXPECT_EQ(cast.AFrame(m)->Speed(), 30);
  anim.UpdateMCast();
  EXPECT_EQ(cast.AFrame(m)->Speed(), 15);
}

TEST_F(AFrameTest, CopiesRefreshTheTargetsMembersOnce) {
  QvAFrame src, target, plain;
  MakeSource(src);
  QvMCast cast;
  AddFrames(target, 1);
  AddFrames(plain, 1);
  const short id = cast.RegAFrame(-1, &target, 0, nullptr, &target);
  auto count = [](const std::function<void()>& op) {  // allocations made by op
    QvFailAllocation(0);
    op();
    return QvAllocationCount();
  };
  ASSERT_EQ(src.Dup(&target), 1);
  const int oneRefresh = count([&] { target.UpdateMCast(); });
  ASSERT_GT(oneRefresh, 0);
  EXPECT_EQ(count([&] { src.Dup(&target); }), count([&] { src.Dup(&plain); }) + oneRefresh);
  EXPECT_EQ(cast.AFrame(id)->CountAFrame(), 2);
  const int targetBackup = count([&] { src.Backup(&target); });  // measured first
  EXPECT_EQ(targetBackup,
            count([&] { src.Backup(&plain); }) + count([&] { target.UpdateMCast(); }));
  target.LockUpdateMCast();  // a target whose update lock is held passes nothing on
  target.Reg(0, &src, 1);
  EXPECT_EQ(cast.AFrame(id)->CountAFrame(), 2);
  target.UnlockUpdateMCast();
  EXPECT_EQ(cast.AFrame(id)->CountAFrame(), 3);
}

}  // namespace

#include "aframe/QvAFrame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
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

constexpr double kPi = 3.14159265358979323846;

// Exposes the protected state of the animation to the tests.
class Probe : public QvAFrame {
 public:
  using QvAFrame::localDrawImage;
  QvAFrameInfo* Info(int index) {
    QvAFrameInfo* p = frameList;
    while (p && index-- > 0) p = p->next;
    return p;
  }
  QvAFrameInfo* Current() const { return curFrame; }
  unsigned char LockFlag() const { return lockFlag; }
  signed char UpdateLock() const { return updateLock; }
};

// The 4 x 2 picture of the examples: rows 10 11 12 13 and 20 21 22 23.
const unsigned char kPicture[8] = {10, 11, 12, 13, 20, 21, 22, 23};

// A frame cut out of the 4 x 2 picture with the anchor at (ax, ay) in
// source coordinates.
short AddPictureFrame(QvAFrame& a, short ax = 0, short ay = 0, short interval = 1) {
  return a.Reg(-1, 0, 0, 4, 2, ax, ay, interval);
}

Bytes ImageOf(QvAFrame& a, short index, short* w = nullptr, short* h = nullptr, short* ox = nullptr,
              short* oy = nullptr, Bytes* mask = nullptr) {
  unsigned char *img = nullptr, *msk = nullptr;
  short iw = 0, ih = 0, offX = 0, offY = 0;
  if (!a.GetAImage(index, &img, &msk, &iw, &ih, &offX, &offY) || !img) return {};
  if (w) *w = iw;
  if (h) *h = ih;
  if (ox) *ox = offX;
  if (oy) *oy = offY;
  if (mask) mask->assign(msk, msk + iw * ih);
  return Bytes(img, img + iw * ih);
}

short PosXOfM(QvAFrame& a, short position) {
  short x = -999;
  if (!a.GetMFrame(position, &x, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                   nullptr, nullptr))
    return -1;
  return x;
}

short PosXOfA(QvAFrame& a, short index) {
  short x = -999;
  if (!a.GetAFrame(index, &x, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                   nullptr, nullptr))
    return -1;
  return x;
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

// ---------------------------------------------------------------------------
// Frame table

TEST_F(AFrameTest, NewAnimationAndClockRange) {
  QvAFrame a;
  EXPECT_EQ(a.CountAFrame(), 0);
  EXPECT_EQ(a.CountMFrame(), 0);
  EXPECT_EQ(a.Top(), 0);
  EXPECT_EQ(a.End(), 0);
  EXPECT_EQ(a.Reg(0, 0, 0, 10, 10, 5, 5, 4), 0);
  EXPECT_EQ(a.CountMFrame(), 4);
  EXPECT_EQ(a.Top(), 0);
  EXPECT_EQ(a.End(), 3);
  a.DelAll();
  EXPECT_EQ(a.CountAFrame(), 0);
  EXPECT_EQ(a.End(), -1);
}

TEST_F(AFrameTest, RegAppendsOrInserts) {
  for (short where : {5, -1}) {
    QvAFrame a;
    for (short i = 0; i < 3; ++i) EXPECT_EQ(a.Reg(i, i, 0, 1, 1, 0, 0, 1), i);
    EXPECT_EQ(a.Reg(where, 50, 0, 1, 1, 0, 0, 1), 3);
    EXPECT_EQ(PosXOfA(a, 3), 50);
  }
  QvAFrame a;
  for (short i = 0; i < 3; ++i) a.Reg(-1, i, 0, 1, 1, 0, 0, 1);
  EXPECT_EQ(a.Reg(1, 50, 0, 1, 1, 0, 0, 1), 1);
  EXPECT_EQ(PosXOfA(a, 0), 0);
  EXPECT_EQ(PosXOfA(a, 1), 50);
  EXPECT_EQ(PosXOfA(a, 2), 1);
  EXPECT_EQ(PosXOfA(a, 3), 2);
  EXPECT_EQ(a.Reg(0, 60, 0, 1, 1, 0, 0, 1), 0);
  EXPECT_EQ(PosXOfA(a, 0), 60);
  EXPECT_EQ(PosXOfA(a, 1), 0);
  EXPECT_EQ(a.CountAFrame(), 5);
  EXPECT_EQ(a.End(), 4);
}

TEST_F(AFrameTest, RegStoresDefaults) {
  QvAFrame a;
  a.Reg(0, 1, 2, 3, 4, 5, 6, 7);
  short v[7];
  double zx = 0, zy = 0, rot = 9;
  ASSERT_EQ(a.GetAFrame(0, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &zx, &zy, &rot), 1);
  for (int i = 0; i < 7; ++i) EXPECT_EQ(v[i], i + 1);
  EXPECT_EQ(zx, 1.0);
  EXPECT_EQ(zy, 1.0);
  EXPECT_EQ(rot, 0.0);
  EXPECT_EQ(a.IsActive(0), 0);
  unsigned char* org = reinterpret_cast<unsigned char*>(1);
  short w = 0, h = 0;
  ASSERT_EQ(a.GetOrgImage(0, &org, &w, &h), 1);
  EXPECT_EQ(org, nullptr);
  EXPECT_EQ(w, 3);
  EXPECT_EQ(h, 4);
  unsigned char *img = reinterpret_cast<unsigned char*>(1), *msk = img;
  short iw = 9, ih = 9, ox = 9, oy = 9;
  ASSERT_EQ(a.GetAImage(0, &img, &msk, &iw, &ih, &ox, &oy), 1);
  EXPECT_EQ(img, nullptr);
  EXPECT_EQ(msk, nullptr);
  EXPECT_EQ(iw, 0);
  EXPECT_EQ(ih, 0);
  EXPECT_EQ(ox, 0);
  EXPECT_EQ(oy, 0);
}

TEST_F(AFrameTest, LookupByClockPosition) {
  QvAFrame a;
  a.Reg(-1, 100, 0, 1, 1, 0, 0, 3);
  a.Reg(-1, 101, 0, 1, 1, 0, 0, 0);
  a.Reg(-1, 102, 0, 1, 1, 0, 0, 2);
  EXPECT_EQ(a.CountMFrame(), 5);
  EXPECT_EQ(a.End(), 4);
  for (short t = 0; t <= 2; ++t) EXPECT_EQ(PosXOfM(a, t), 100) << t;
  EXPECT_EQ(PosXOfM(a, 3), 102);
  EXPECT_EQ(PosXOfM(a, 4), 102);
  EXPECT_EQ(PosXOfM(a, 5), -1);
  EXPECT_EQ(PosXOfM(a, 100), -1);
  EXPECT_EQ(PosXOfM(a, -1), 100);
  EXPECT_EQ(PosXOfM(a, -32768), 100);
}

TEST_F(AFrameTest, NegativeIntervals) {
  QvAFrame a;
  a.Reg(-1, 0, 0, 1, 1, 0, 0, 4);
  a.Reg(-1, 1, 0, 1, 1, 0, 0, -5);
  short iv = 0;
  a.GetAFrame(1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &iv, nullptr, nullptr,
              nullptr);
  EXPECT_EQ(iv, -5);
  EXPECT_EQ(a.CountMFrame(), -1);
  EXPECT_EQ(a.End(), -2);
  // A frame 0 with a negative interval is not found at negative positions.
  QvAFrame b;
  b.Reg(-1, 0, 0, 1, 1, 0, 0, -5);
  EXPECT_EQ(PosXOfM(b, -1), -1);

  EXPECT_EQ(a.SetInterval(1, -5), 1);
  a.GetAFrame(1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &iv, nullptr, nullptr,
              nullptr);
  EXPECT_EQ(iv, 0);
  EXPECT_EQ(a.CountMFrame(), 4);
  EXPECT_EQ(a.End(), 3);
  EXPECT_EQ(a.SetInterval(1, 6), 1);
  EXPECT_EQ(a.End(), 9);
  EXPECT_EQ(a.SetInterval(2, 6), 0);
}

TEST_F(AFrameTest, CountMFrameWrapsAt16Bits) {
  QvAFrame a;
  a.Reg(-1, 0, 0, 1, 1, 0, 0, 32767);
  a.Reg(-1, 0, 0, 1, 1, 0, 0, 2);
  EXPECT_EQ(a.CountMFrame(), -32767);
  EXPECT_EQ(a.End(), -32768);
}

TEST_F(AFrameTest, CurrentPositionFormsFollowTheClock) {
  QvAFrame a;
  a.Reg(-1, 100, 0, 1, 1, 0, 0, 10);
  a.Reg(-1, 101, 0, 1, 1, 0, 0, 10);
  a.Reg(-1, 102, 0, 1, 1, 0, 0, 10);
  a.SetCur(25);
  short x = 0;
  ASSERT_EQ(a.GetMFrame(&x, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr),
            1);
  EXPECT_EQ(x, 102);
  // A running clock is sampled first: 600 ms are 35 ticks, 17 frames at 30
  // frames per second.
  a.SetCur(0);
  a.Play(30);
  fakeMs = 600;
  ASSERT_EQ(a.GetMFrame(&x, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr),
            1);
  EXPECT_EQ(x, 101);
  EXPECT_EQ(a.Cur(), 17);
  short iw = -1;
  EXPECT_EQ(a.GetMImage(nullptr, nullptr, &iw, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(iw, 0);
  a.Stop();
  a.SetCur(29);
  EXPECT_EQ(a.GetMImage(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 1);
}

TEST_F(AFrameTest, LookupLock) {
  Probe a;
  for (short i = 0; i < 3; ++i) a.Reg(-1, i, 0, 1, 1, 0, 0, 1);
  a.LockA(7);
  EXPECT_EQ(a.LockFlag(), 1);
  EXPECT_EQ(a.GetAFrame(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr, nullptr),
            0);
  EXPECT_EQ(PosXOfM(a, 0), -1);
  EXPECT_EQ(a.SetPos(1, 5, 5), 0);
  EXPECT_EQ(a.CountAFrame(), 3);
  EXPECT_EQ(a.CountMFrame(), 3);
  a.Unlock();
  EXPECT_EQ(PosXOfA(a, 1), 1);

  a.LockA(2);
  EXPECT_EQ(PosXOfA(a, 0), 2);
  EXPECT_EQ(PosXOfM(a, 0), 2);
  EXPECT_EQ(a.SetPos(0, 42, 0), 1);
  a.Unlock();
  EXPECT_EQ(PosXOfA(a, 0), 0);
  EXPECT_EQ(PosXOfA(a, 2), 42);
  EXPECT_EQ(a.Current(), a.Info(2));

  a.LockM(1);
  EXPECT_EQ(PosXOfA(a, 2), 1);
  // Reg while locked inserts before the locked frame and returns its index
  // argument.
  EXPECT_EQ(a.Reg(9, 77, 0, 1, 1, 0, 0, 1), 9);
  a.Unlock();
  EXPECT_EQ(PosXOfA(a, 1), 77);
  EXPECT_EQ(PosXOfA(a, 2), 1);
}

TEST_F(AFrameTest, DeletingTheLockedFrameReleasesTheLock) {
  Probe a;
  for (short i = 0; i < 3; ++i) a.Reg(-1, i, 0, 1, 1, 0, 0, 1);
  a.LockA(1);
  EXPECT_EQ(a.Del(0), 1);  // deletes the locked frame 1
  EXPECT_EQ(a.LockFlag(), 0);
  EXPECT_EQ(a.Current(), nullptr);
  EXPECT_EQ(a.CountAFrame(), 2);
  EXPECT_EQ(PosXOfA(a, 0), 0);
  EXPECT_EQ(PosXOfA(a, 1), 2);

  a.LockA(1);
  a.DelAll();
  EXPECT_EQ(a.LockFlag(), 0);
  EXPECT_EQ(a.Current(), nullptr);
  EXPECT_EQ(a.Reg(0, 5, 0, 1, 1, 0, 0, 1), 0);
  EXPECT_EQ(PosXOfA(a, 0), 5);

  // Deleting another frame keeps the lock.
  a.Reg(-1, 6, 0, 1, 1, 0, 0, 1);
  a.LockA(1);
  a.Unlock();
  EXPECT_EQ(a.Del(0), 1);
  EXPECT_EQ(a.Current(), nullptr);  // the frame found last is gone
  a.LockA(0);
  EXPECT_EQ(PosXOfA(a, 0), 6);
}

TEST_F(AFrameTest, DeleteFrames) {
  QvAFrame a;
  for (short i = 0; i < 4; ++i) a.Reg(-1, i, 0, 1, 1, 0, 0, 2);
  EXPECT_EQ(a.End(), 7);
  EXPECT_EQ(a.Del(4), 0);
  EXPECT_EQ(a.Del(-1), 0);
  EXPECT_EQ(a.Del(0), 1);
  EXPECT_EQ(PosXOfA(a, 0), 1);
  EXPECT_EQ(a.End(), 5);
  EXPECT_EQ(a.Del(2), 1);
  EXPECT_EQ(a.Del(1), 1);
  EXPECT_EQ(a.CountAFrame(), 1);
  EXPECT_EQ(PosXOfA(a, 0), 1);
  EXPECT_EQ(a.End(), 1);
  EXPECT_EQ(a.Del(0), 1);
  EXPECT_EQ(a.End(), -1);
  EXPECT_EQ(a.Del(0), 0);
}

TEST_F(AFrameTest, SettersAndQueries) {
  QvAFrame a;
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  EXPECT_EQ(a.Set(1, 1, 1, 1, 1, 1, 1), 0);
  EXPECT_EQ(a.SetPos(1, 1, 1), 0);
  EXPECT_EQ(a.SetSize(1, 1, 1), 0);
  EXPECT_EQ(a.SetAnchor(1, 1, 1), 0);
  EXPECT_EQ(a.SetZoom(1, 2, 2), 0);
  EXPECT_EQ(a.SetRot(1, 1), 0);
  EXPECT_EQ(a.Activate(1), 0);
  EXPECT_EQ(a.Deactivate(1), 0);
  EXPECT_EQ(a.IsActive(1), 0);

  EXPECT_EQ(a.Set(0, 1, 2, 3, 4, 5, 6), 1);
  EXPECT_EQ(a.SetZoom(0, 2.5, -1.0), 1);
  EXPECT_EQ(a.SetRot(0, 0.25), 1);
  short v[7];
  double zx, zy, rot;
  EXPECT_EQ(a.GetAFrame(0, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &zx, &zy, &rot), 1);
  EXPECT_EQ(v[0], 1);
  EXPECT_EQ(v[1], 2);
  EXPECT_EQ(v[2], 3);
  EXPECT_EQ(v[3], 4);
  EXPECT_EQ(v[4], 5);
  EXPECT_EQ(v[5], 6);
  EXPECT_EQ(v[6], 1);
  EXPECT_EQ(zx, 2.5);
  EXPECT_EQ(zy, -1.0);
  EXPECT_EQ(rot, 0.25);
  EXPECT_EQ(a.SetPos(0, -7, 8), 1);
  EXPECT_EQ(a.SetSize(0, 9, 10), 1);
  EXPECT_EQ(a.SetAnchor(0, 11, -12), 1);
  EXPECT_EQ(
      a.GetAFrame(0, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], nullptr, nullptr, nullptr, nullptr),
      1);
  EXPECT_EQ(v[0], -7);
  EXPECT_EQ(v[1], 8);
  EXPECT_EQ(v[2], 9);
  EXPECT_EQ(v[3], 10);
  EXPECT_EQ(v[4], 11);
  EXPECT_EQ(v[5], -12);

  EXPECT_EQ(a.Activate(0), 1);
  EXPECT_EQ(a.IsActive(0), 1);
  EXPECT_EQ(a.Deactivate(0), 1);
  EXPECT_EQ(a.IsActive(0), 0);

  EXPECT_EQ(a.GetAFrame(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr, nullptr),
            1);
  EXPECT_EQ(a.GetAFrame(1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr, nullptr),
            0);
}

TEST_F(AFrameTest, SettersLeaveTheTransformedImageAlone) {
  QvAFrame a;
  AddPictureFrame(a);
  ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2), 1);
  unsigned char* before = nullptr;
  a.GetAImage(0, &before, nullptr, nullptr, nullptr, nullptr, nullptr);
  a.SetZoom(0, 2.0, 2.0);
  a.SetRot(0, 1.0);
  unsigned char* after = nullptr;
  short w = 0;
  a.GetAImage(0, &after, nullptr, &w, nullptr, nullptr, nullptr);
  EXPECT_EQ(before, after);
  EXPECT_EQ(w, 4);
}

TEST_F(AFrameTest, UpdateLockCounts) {
  Probe a;
  a.UnlockUpdateMCast();
  EXPECT_EQ(a.UpdateLock(), 0);
  a.LockUpdateMCast();
  a.LockUpdateMCast();
  EXPECT_EQ(a.UpdateLock(), 2);
  a.UnlockUpdateMCast();
  EXPECT_EQ(a.UpdateLock(), 1);
  a.UnlockUpdateMCast();
  EXPECT_EQ(a.UpdateLock(), 0);
  a.UnlockUpdateMCast();
  EXPECT_EQ(a.UpdateLock(), 0);
  // Far more locks than the count holds: it saturates and never turns
  // negative.
  for (int i = 0; i < 300; ++i) a.LockUpdateMCast();
  EXPECT_EQ(a.UpdateLock(), 127);
  for (int i = 0; i < 300; ++i) a.UnlockUpdateMCast();
  EXPECT_EQ(a.UpdateLock(), 0);
  // With nobody in the list, passing on does nothing.
  a.UpdateMCast();
  a.DelFromMCast();
  QvMCast* store = nullptr;
  short id = 0;
  EXPECT_EQ(a.Get(0, &store, &id), 0);
}

TEST_F(AFrameTest, RegAllocationFailureChangesNothing) {
  QvAFrame a;
  a.Reg(-1, 0, 0, 1, 1, 0, 0, 3);
  QvFailAllocation(1);
  EXPECT_EQ(a.Reg(0, 1, 1, 1, 1, 0, 0, 5), -1);
  QvFailAllocation(0);
  EXPECT_EQ(a.CountAFrame(), 1);
  EXPECT_EQ(a.End(), 2);
  EXPECT_EQ(PosXOfA(a, 0), 0);
}

TEST_F(AFrameTest, PersistenceIsNotSupported) {
  QvAFrame a;
  a.Reg(-1, 0, 0, 1, 1, 0, 0, 3);
  char path[] = "movie";
  EXPECT_EQ(a.Load(3), 0);
  EXPECT_EQ(a.Load(path), 0);
  EXPECT_EQ(a.Load(3, 10u), 0);
  EXPECT_EQ(a.Save(3, 10u), 0);
  EXPECT_EQ(a.Save(path, 1u, 2u, 3u), 0);
  EXPECT_EQ(a.CountAFrame(), 1);
}

// ---------------------------------------------------------------------------
// Images and transforms

TEST_F(AFrameTest, TransformWithoutZoomOrRotation) {
  QvAFrame a;
  AddPictureFrame(a);
  ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2), 1);
  short w, h, ox, oy;
  Bytes mask;
  EXPECT_EQ(ImageOf(a, 0, &w, &h, &ox, &oy, &mask), Bytes(kPicture, kPicture + 8));
  EXPECT_EQ(w, 4);
  EXPECT_EQ(h, 2);
  EXPECT_EQ(ox, 0);
  EXPECT_EQ(oy, 0);
  EXPECT_EQ(mask, Bytes(8, 255));
  unsigned char* org = nullptr;
  ASSERT_EQ(a.GetOrgImage(0, &org, &w, &h), 1);
  EXPECT_EQ(Bytes(org, org + 8), Bytes(kPicture, kPicture + 8));
}

TEST_F(AFrameTest, TransformZoom2) {
  QvAFrame a;
  AddPictureFrame(a);
  a.SetZoom(0, 2.0, 2.0);
  ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2), 1);
  short w, h, ox, oy;
  Bytes mask;
  const Bytes expected = {10, 10, 11, 12, 12, 13, 13, 20, 20, 21, 22,
                          22, 23, 23, 20, 20, 21, 22, 22, 23, 23};
  EXPECT_EQ(ImageOf(a, 0, &w, &h, &ox, &oy, &mask), expected);
  EXPECT_EQ(w, 7);
  EXPECT_EQ(h, 3);
  EXPECT_EQ(ox, 0);
  EXPECT_EQ(oy, 0);
  EXPECT_EQ(mask, Bytes(21, 255));
}

TEST_F(AFrameTest, TransformRotationQuarterTurn) {
  QvAFrame a;
  AddPictureFrame(a);
  a.SetRot(0, kPi / 2);
  ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2), 1);
  short w, h, ox, oy;
  Bytes mask;
  EXPECT_EQ(ImageOf(a, 0, &w, &h, &ox, &oy, &mask), Bytes({13, 23, 12, 22, 11, 21, 10, 20}));
  EXPECT_EQ(w, 2);
  EXPECT_EQ(h, 4);
  EXPECT_EQ(ox, 0);
  EXPECT_EQ(oy, -3);
  EXPECT_EQ(mask, Bytes(8, 255));
}

TEST_F(AFrameTest, OffsetsFollowTheAnchor) {
  // A 10 x 8 source with the picture at (5, 5).
  Bytes src(80, 1);
  for (int v = 0; v < 2; ++v)
    for (int u = 0; u < 4; ++u) src[(5 + v) * 10 + 5 + u] = kPicture[v * 4 + u];
  QvAFrame a;
  a.Reg(-1, 5, 5, 4, 2, 7, 6, 1);
  ASSERT_EQ(a.SetImage(0, src.data(), 10, 10, 8), 1);
  short w, h, ox, oy;
  EXPECT_EQ(ImageOf(a, 0, &w, &h, &ox, &oy), Bytes(kPicture, kPicture + 8));
  EXPECT_EQ(ox, -2);
  EXPECT_EQ(oy, -1);
}

TEST_F(AFrameTest, OnePixelFramesHaveEmptyMasks) {
  const unsigned char src[3] = {7, 8, 9};
  for (int vertical = 0; vertical < 2; ++vertical) {
    QvAFrame a;
    if (vertical)
      a.Reg(-1, 0, 0, 1, 3, 0, 0, 1);
    else
      a.Reg(-1, 0, 0, 3, 1, 0, 0, 1);
    ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(src), vertical ? 1 : 3, vertical ? 1 : 3,
                         vertical ? 3 : 1),
              1);
    short w, h;
    Bytes mask;
    EXPECT_EQ(ImageOf(a, 0, &w, &h, nullptr, nullptr, &mask), Bytes(3, 0));
    EXPECT_EQ(w, vertical ? 1 : 3);
    EXPECT_EQ(h, vertical ? 3 : 1);
    EXPECT_EQ(mask, Bytes(3, 0));
  }
}

TEST_F(AFrameTest, SmallFrameRotatedByEighthTurnCollapses) {
  const unsigned char src[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  QvAFrame a;
  a.Reg(-1, 0, 0, 3, 3, 1, 1, 1);
  a.SetRot(0, kPi / 4);
  ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(src), 3, 3, 3), 1);
  short w, h, ox, oy;
  Bytes mask;
  EXPECT_EQ(ImageOf(a, 0, &w, &h, &ox, &oy, &mask), Bytes(1, 0));
  EXPECT_EQ(w, 1);
  EXPECT_EQ(h, 1);
  EXPECT_EQ(ox, 0);
  EXPECT_EQ(oy, 0);
  EXPECT_EQ(mask, Bytes(1, 0));
}

TEST_F(AFrameTest, NegativeZoomMirrors) {
  QvAFrame a;
  a.Reg(-1, 0, 0, 4, 2, 3, 0, 1);  // anchored at the right end of the top row
  a.SetZoom(0, -1.0, 1.0);
  ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2), 1);
  short w, h, ox, oy;
  Bytes mask;
  // P1 lands on x 0 and P0 on x 3: s runs from right to left.
  EXPECT_EQ(ImageOf(a, 0, &w, &h, &ox, &oy, &mask), Bytes({13, 12, 11, 10, 23, 22, 21, 20}));
  EXPECT_EQ(w, 4);
  EXPECT_EQ(ox, 0);
  EXPECT_EQ(mask, Bytes(8, 255));
}

TEST_F(AFrameTest, CutOutOfTheSource) {
  // 3 x 3 source 1..9; a 3 x 2 frame at (-1, 2) overlaps only its first
  // column's bottom-left part.
  const unsigned char src[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  QvAFrame a;
  a.Reg(-1, -1, 2, 3, 2, 0, 0, 1);
  ASSERT_EQ(a.SetOrgImage(0, const_cast<unsigned char*>(src), 3, 3, 3), 1);
  unsigned char* org = nullptr;
  short w, h;
  a.GetOrgImage(0, &org, &w, &h);
  EXPECT_EQ(Bytes(org, org + 6), Bytes({0, 7, 8, 0, 0, 0}));
  // Wholly outside: all zero, still a success.
  a.SetPos(0, 10, 10);
  ASSERT_EQ(a.SetOrgImage(0, const_cast<unsigned char*>(src), 3, 3, 3), 1);
  a.GetOrgImage(0, &org, &w, &h);
  EXPECT_EQ(Bytes(org, org + 6), Bytes(6, 0));
  // Rows longer than the width.
  const unsigned char wide[8] = {1, 2, 99, 99, 3, 4, 99, 99};
  a.Set(0, 0, 0, 2, 2, 0, 0);
  ASSERT_EQ(a.SetOrgImage(0, const_cast<unsigned char*>(wide), 4, 2, 2), 1);
  a.GetOrgImage(0, &org, &w, &h);
  EXPECT_EQ(Bytes(org, org + 4), Bytes({1, 2, 3, 4}));
}

TEST_F(AFrameTest, SetOrgImageBadInput) {
  QvAFrame a;
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  a.Reg(-1, 0, 0, 0, 2, 0, 0, 1);
  unsigned char* src = const_cast<unsigned char*>(kPicture);
  EXPECT_EQ(a.SetOrgImage(2, src, 4, 4, 2), 0);
  EXPECT_EQ(a.SetOrgImage(1, src, 4, 4, 2), 0);  // frame width 0
  EXPECT_EQ(a.SetOrgImage(0, nullptr, 4, 4, 2), 0);
  EXPECT_EQ(a.SetOrgImage(0, src, 3, 4, 2), 0);  // rows shorter than the width
  EXPECT_EQ(a.SetOrgImage(0, src, 3, 2), 0);
  EXPECT_EQ(a.SetOrgImage(0, src, 4, 1), 0);
  EXPECT_EQ(a.SetOrgImage(1, src, 0, 2), 0);
  EXPECT_EQ(a.SetOrgImage(0, nullptr, 4, 2), 0);
  unsigned char* org = reinterpret_cast<unsigned char*>(1);
  short w, h;
  a.GetOrgImage(0, &org, &w, &h);
  EXPECT_EQ(org, nullptr);
  EXPECT_EQ(a.GetOrgImage(0, nullptr, &w, &h), 0);
  EXPECT_EQ(a.SetImage(0, nullptr, 0, 0, 0), 0);  // nothing to transform
  EXPECT_EQ(a.SetImage(5, nullptr, 0, 0, 0), 0);
}

TEST_F(AFrameTest, SetOrgImageOfFrameSizeReusesItsBuffer) {
  QvAFrame a;
  AddPictureFrame(a);
  ASSERT_EQ(a.SetOrgImage(0, const_cast<unsigned char*>(kPicture), 4, 2), 1);
  unsigned char *first = nullptr, *second = nullptr;
  short w, h;
  a.GetOrgImage(0, &first, &w, &h);
  const unsigned char other[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  ASSERT_EQ(a.SetOrgImage(0, const_cast<unsigned char*>(other), 4, 2), 1);
  a.GetOrgImage(0, &second, &w, &h);
  EXPECT_EQ(first, second);
  EXPECT_EQ(Bytes(second, second + 8), Bytes(other, other + 8));
}

TEST_F(AFrameTest, SizeChangeDropsAMismatchingUntransformedImage) {
  QvAFrame a;
  AddPictureFrame(a);
  ASSERT_EQ(a.SetOrgImage(0, const_cast<unsigned char*>(kPicture), 4, 2), 1);
  unsigned char* org = nullptr;
  short w, h;
  // The same size keeps the buffer.
  a.Set(0, 1, 1, 4, 2, 0, 0);
  a.GetOrgImage(0, &org, &w, &h);
  EXPECT_NE(org, nullptr);
  // A larger size would make the transform read past the buffer: dropped.
  a.SetSize(0, 40, 20);
  a.GetOrgImage(0, &org, &w, &h);
  EXPECT_EQ(org, nullptr);
  EXPECT_EQ(w, 40);
  EXPECT_EQ(a.SetImage(0, nullptr, 0, 0, 0), 0);
  // A smaller one via Set as well.
  a.Set(0, 0, 0, 4, 2, 0, 0);
  a.SetOrgImage(0, const_cast<unsigned char*>(kPicture), 4, 2);
  a.Set(0, 0, 0, 2, 1, 0, 0);
  a.GetOrgImage(0, &org, &w, &h);
  EXPECT_EQ(org, nullptr);
  // A copy of the animation carries no buffer for it either.
  QvAFrame b;
  EXPECT_EQ(a.Dup(&b), 1);
  b.GetOrgImage(0, &org, &w, &h);
  EXPECT_EQ(org, nullptr);
}

TEST_F(AFrameTest, SetImageFromReadyBuffers) {
  QvAFrame a;
  AddPictureFrame(a);
  const unsigned char mask[8] = {255, 0, 255, 0, 0, 255, 0, 255};
  ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), const_cast<unsigned char*>(mask), 4,
                       2, -1, -2),
            1);
  short w, h, ox, oy;
  Bytes m;
  EXPECT_EQ(ImageOf(a, 0, &w, &h, &ox, &oy, &m), Bytes(kPicture, kPicture + 8));
  EXPECT_EQ(m, Bytes(mask, mask + 8));
  EXPECT_EQ(ox, -1);
  EXPECT_EQ(oy, -2);
  unsigned char* img = nullptr;
  a.GetAImage(0, &img, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_NE(img, kPicture);

  // Sizes below 1 leave the frame as it was.
  EXPECT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), const_cast<unsigned char*>(mask), 0,
                       2, 5, 5),
            0);
  EXPECT_EQ(a.SetImage(0, nullptr, const_cast<unsigned char*>(mask), 4, 2, 5, 5), 0);
  EXPECT_EQ(a.SetImage(3, const_cast<unsigned char*>(kPicture), const_cast<unsigned char*>(mask), 4,
                       2, 5, 5),
            0);
  EXPECT_EQ(ImageOf(a, 0, &w, &h, &ox, &oy), Bytes(kPicture, kPicture + 8));
  EXPECT_EQ(ox, -1);
}

TEST_F(AFrameTest, ImageAllocationFailuresLeaveNoImage) {
  unsigned char* src = const_cast<unsigned char*>(kPicture);
  unsigned char mask[8];
  std::memset(mask, 255, 8);
  for (int k = 1; k <= 2; ++k) {
    QvAFrame a;
    AddPictureFrame(a);
    ASSERT_EQ(a.SetImage(0, src, 4, 4, 2), 1);
    QvFailAllocation(k);  // 1: the image, 2: the mask
    EXPECT_EQ(a.SetImage(0, nullptr, 0, 0, 0), 0);
    QvFailAllocation(0);
    unsigned char *img = src, *msk = src;
    a.GetAImage(0, &img, &msk, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(img, nullptr);
    EXPECT_EQ(msk, nullptr);

    ASSERT_EQ(a.SetImage(0, src, mask, 4, 2, 0, 0), 1);
    QvFailAllocation(k);
    EXPECT_EQ(a.SetImage(0, src, mask, 4, 2, 0, 0), 0);
    QvFailAllocation(0);
    img = msk = src;
    a.GetAImage(0, &img, &msk, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(img, nullptr);
    EXPECT_EQ(msk, nullptr);
  }
  // The untransformed image: with its allocation failing the frame has none.
  QvAFrame a;
  AddPictureFrame(a);
  ASSERT_EQ(a.SetOrgImage(0, src, 4, 4, 2), 1);
  QvFailAllocation(1);
  EXPECT_EQ(a.SetImage(0, src, 4, 4, 2), 0);
  QvFailAllocation(0);
  unsigned char* org = src;
  short w, h;
  a.GetOrgImage(0, &org, &w, &h);
  EXPECT_EQ(org, nullptr);
  QvFailAllocation(1);
  EXPECT_EQ(a.SetOrgImage(0, src, 4, 2), 0);
  QvFailAllocation(0);
  a.GetOrgImage(0, &org, &w, &h);
  EXPECT_EQ(org, nullptr);
}

TEST_F(AFrameTest, ExtremeZoomStaysDefined) {
  // Products far outside 32 bits and sizes that wrap around 16 bits.
  const double zooms[] = {1e300, -1e300, NAN, INFINITY, 20000.0, -20000.0, 0.0};
  for (double z : zooms) {
    QvAFrame a;
    AddPictureFrame(a);
    a.SetZoom(0, z, 1.0);
    const char ok = a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2);
    unsigned char *img = nullptr, *msk = nullptr;
    short w = 0, h = 0;
    a.GetAImage(0, &img, &msk, &w, &h, nullptr, nullptr);
    if (ok) {
      ASSERT_NE(img, nullptr);
      ASSERT_GE(w, 1);
      ASSERT_GE(h, 1);
      // Every byte of both buffers is readable (checked by the sanitizer).
      int count = 0;
      for (int i = 0; i < w * h; ++i) count += msk[i] ? 1 : 0;
      EXPECT_LE(count, w * h);
    } else {
      EXPECT_EQ(img, nullptr);
      EXPECT_EQ(msk, nullptr);
    }
  }
  // A zoom that makes the width wrap to a negative 16-bit size fails and
  // leaves the frame without a transformed image.
  QvAFrame a;
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2), 1);
  a.SetZoom(0, 10922.34, 1.0);  // P1.x = 32767: the width 32768 wraps
  EXPECT_EQ(a.SetImage(0, nullptr, 0, 0, 0), 0);
  unsigned char* img = const_cast<unsigned char*>(kPicture);
  short w = 0;
  a.GetAImage(0, &img, nullptr, &w, nullptr, nullptr, nullptr);
  EXPECT_EQ(img, nullptr);
  EXPECT_EQ(w, -32768);
}

TEST_F(AFrameTest, RandomTransformsStayInBounds) {
  std::mt19937 rng(12345);
  auto uni = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  const double fixedZooms[] = {0.0, -1.0, -2.5, 0.3, 1.0, 3.0};
  for (int iter = 0; iter < 300; ++iter) {
    const short w = static_cast<short>(uni(1, 12));
    const short h = static_cast<short>(uni(1, 12));
    Bytes src(static_cast<std::size_t>(w) * h);
    for (std::size_t i = 0; i < src.size(); ++i) src[i] = static_cast<unsigned char>(1 + i);
    Probe a;
    a.Reg(-1, 0, 0, w, h, static_cast<short>(uni(-15, 25)), static_cast<short>(uni(-15, 25)), 1);
    const double zx =
        iter % 3 == 0 ? fixedZooms[uni(0, 5)] : std::uniform_real_distribution<double>(-4, 4)(rng);
    const double zy =
        iter % 5 == 0 ? fixedZooms[uni(0, 5)] : std::uniform_real_distribution<double>(-4, 4)(rng);
    a.SetZoom(0, zx, zy);
    a.SetRot(0, std::uniform_real_distribution<double>(-7, 7)(rng));
    ASSERT_EQ(a.SetImage(0, src.data(), w, w, h), 1) << iter;
    const QvAFrameInfo* f = a.Info(0);
    ASSERT_GE(f->imageWidth, 1);
    ASSERT_GE(f->imageHeight, 1);
    for (int i = 0; i < f->imageWidth * f->imageHeight; ++i) {
      if (f->mask[i] == 0) {
        ASSERT_EQ(f->image[i], 0) << iter;
      } else {
        ASSERT_EQ(f->mask[i], 255);
        ASSERT_GE(f->image[i], 1);  // a pixel of the untransformed image
        ASSERT_LE(f->image[i], w * h);
      }
    }
    // Drawn anywhere, and as a thumbnail of any size, nothing leaves the
    // buffers (checked by the sanitizer).
    Bytes dst(20 * 16, 0);
    tbRect r;
    a.DrawAImage(0, dst.data(), 20, 20, 16, static_cast<short>(uni(-40, 60)),
                 static_cast<short>(uni(-40, 60)), nullptr, static_cast<short>(uni(-1, 3)),
                 static_cast<char>(uni(0, 7)), static_cast<short>(uni(-100, 100)),
                 static_cast<short>(uni(-100, 100)), &r);
    const short iw = static_cast<short>(uni(1, 9)), ih = static_cast<short>(uni(1, 9));
    Bytes icon(static_cast<std::size_t>(iw) * ih);
    EXPECT_EQ(a.GetIcon(0, icon.data(), iw, iw, ih), 1);
  }
}

// ---------------------------------------------------------------------------
// Thumbnail and area

TEST_F(AFrameTest, ThumbnailOfTopLeftAnchoredFrame) {
  Probe a;
  AddPictureFrame(a);
  ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2), 1);
  unsigned char dst[2 * 3];
  std::memset(dst, 77, sizeof dst);
  ASSERT_EQ(a.GetIcon(0, dst, 3, 2, 2), 1);
  EXPECT_EQ(Bytes(dst, dst + 6), Bytes({0, 0, 77, 0, 10, 77}));
  EXPECT_EQ(a.Info(0)->iconWidth, 2);
  EXPECT_EQ(a.Info(0)->iconHeight, 2);

  // The same size is served from the cache; another size makes a new one.
  unsigned char* cached = a.Info(0)->icon;
  ASSERT_NE(cached, nullptr);
  std::memset(cached, 55, 4);  // mark the cache
  ASSERT_EQ(a.GetIcon(0, dst, 2, 2, 2), 1);
  EXPECT_EQ(Bytes(dst, dst + 4), Bytes(4, 55));
  ASSERT_EQ(a.GetIcon(0, dst, 3, 3, 2), 1);
  EXPECT_EQ(a.Info(0)->iconWidth, 3);
  // r = max(4 / 3, 2 / 2); x0 = -trunc(4 / 3 * 3 / 2) = -2, y0 = -1; column 2
  // samples trunc(2 * 4 / 3) - 2 = 0.
  EXPECT_EQ(Bytes(dst, dst + 6), Bytes({0, 0, 0, 0, 0, 10}));
}

TEST_F(AFrameTest, ThumbnailIsDroppedByGeometryChangesOnly) {
  Probe a;
  AddPictureFrame(a);
  a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2);
  unsigned char dst[4];
  auto make = [&] { ASSERT_EQ(a.GetIcon(0, dst, 2, 2, 2), 1); };
  make();
  a.SetOrgImage(0, const_cast<unsigned char*>(kPicture), 4, 2);
  a.SetOrgImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2);
  a.SetInterval(0, 3);
  a.Activate(0);
  EXPECT_NE(a.Info(0)->icon, nullptr);
  a.SetPos(0, 0, 0);
  EXPECT_EQ(a.Info(0)->icon, nullptr);
  make();
  a.SetSize(0, 4, 2);
  EXPECT_EQ(a.Info(0)->icon, nullptr);
  make();
  a.SetAnchor(0, 0, 0);
  EXPECT_EQ(a.Info(0)->icon, nullptr);
  make();
  a.Set(0, 0, 0, 4, 2, 0, 0);
  EXPECT_EQ(a.Info(0)->icon, nullptr);
  make();
  a.SetZoom(0, 1, 1);
  EXPECT_EQ(a.Info(0)->icon, nullptr);
  make();
  a.SetRot(0, 0);
  EXPECT_EQ(a.Info(0)->icon, nullptr);
  make();
  a.SetImage(0, nullptr, 0, 0, 0);
  EXPECT_EQ(a.Info(0)->icon, nullptr);
  make();
  unsigned char mask[8];
  std::memset(mask, 255, 8);
  a.SetImage(0, const_cast<unsigned char*>(kPicture), mask, 4, 2, 0, 0);
  EXPECT_EQ(a.Info(0)->icon, nullptr);
}

TEST_F(AFrameTest, ThumbnailFailures) {
  QvAFrame a;
  AddPictureFrame(a);
  unsigned char dst[16];
  EXPECT_EQ(a.GetIcon(0, dst, 4, 2, 2), 0);  // no transformed image yet
  EXPECT_EQ(a.GetIcon(1, dst, 4, 2, 2), 0);
  a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2);
  EXPECT_EQ(a.GetIcon(0, dst, 4, 0, 2), 0);
  EXPECT_EQ(a.GetIcon(0, dst, 4, 2, -1), 0);
  EXPECT_EQ(a.GetIcon(0, nullptr, 4, 2, 2), 0);
  EXPECT_EQ(a.GetIcon(0, dst, 1, 2, 2), 0);  // rows shorter than the thumbnail
  QvFailAllocation(1);
  EXPECT_EQ(a.GetIcon(0, dst, 4, 2, 2), 0);
  QvFailAllocation(0);
  EXPECT_EQ(a.GetIcon(0, dst, 4, 2, 2), 1);
  // A frame whose width became 0 after its image was made.
  a.SetSize(0, 0, 2);
  EXPECT_EQ(a.GetIcon(0, dst, 4, 2, 2), 0);
}

TEST_F(AFrameTest, AreaOfTheAnimation) {
  QvAFrame a;
  short w = -9, h = -9, ax = -9, ay = -9;
  EXPECT_EQ(a.GetArea(&w, &h, &ax, &ay), 0);
  EXPECT_EQ(w, -9);
  // Anchored at (2, 1) in frame coordinates.
  a.Reg(-1, 0, 0, 4, 2, 2, 1, 1);
  a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2);
  ASSERT_EQ(a.GetArea(&w, &h, &ax, &ay), 1);
  EXPECT_EQ(w, 4);
  EXPECT_EQ(h, 2);
  EXPECT_EQ(ax, 2);
  EXPECT_EQ(ay, 1);
  // Anchored at (-3, 0): the anchor pixel widens the area.
  a.SetAnchor(0, -3, 0);
  a.SetImage(0, nullptr, 0, 0, 0);
  ASSERT_EQ(a.GetArea(&w, &h, &ax, &ay), 1);
  EXPECT_EQ(w, 7);
  EXPECT_EQ(h, 2);
  EXPECT_EQ(ax, 0);
  EXPECT_EQ(ay, 0);
  // A second frame, rotated, and a third without an image.
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  a.SetRot(1, kPi / 2);
  a.SetImage(1, const_cast<unsigned char*>(kPicture), 4, 4, 2);  // 2 x 4 at (0, -3)
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  ASSERT_EQ(a.GetArea(&w, &h, &ax, &ay), 1);
  EXPECT_EQ(w, 7);
  EXPECT_EQ(h, 5);
  EXPECT_EQ(ax, 0);
  EXPECT_EQ(ay, 3);
  // Null outputs are skipped; a lookup lock does not disturb the walk.
  a.LockA(2);
  ASSERT_EQ(a.GetArea(nullptr, &h, nullptr, nullptr), 1);
  EXPECT_EQ(h, 5);
}

// ---------------------------------------------------------------------------
// Drawing

// A target buffer with guard bytes around it.
struct Target {
  Target(int w, int h, int rowBytes, unsigned char init = 0)
      : width(w), height(h), rowBytes(rowBytes), store(64 + rowBytes * h + 64, 0xEE) {
    for (int y = 0; y < h; ++y) std::memset(Row(y), init, static_cast<std::size_t>(rowBytes));
  }
  unsigned char* Data() { return store.data() + 64; }
  unsigned char* Row(int y) { return Data() + y * rowBytes; }
  unsigned char At(int x, int y) { return Row(y)[x]; }
  bool GuardsIntact() const {
    for (int i = 0; i < 64; ++i)
      if (store[i] != 0xEE || store[store.size() - 1 - i] != 0xEE) return false;
    return true;
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

class AFrameDrawTest : public AFrameTest {
 protected:
  void SetUp() override {
    AFrameTest::SetUp();
    AddPictureFrame(a);
    ASSERT_EQ(a.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2), 1);
  }
  char Draw(Target& t, short x, short y, QvPal* pal, short fill, char wrap, short sx, short sy,
            tbRect* r = nullptr) {
    tbRect local;
    return a.DrawAImage(0, t.Data(), static_cast<short>(t.rowBytes), static_cast<short>(t.width),
                        static_cast<short>(t.height), x, y, pal, fill, wrap, sx, sy,
                        r ? r : &local);
  }
  Probe a;
};

TEST_F(AFrameDrawTest, FrameWithoutImageDrawsNothing) {
  QvAFrame b;
  b.Reg(-1, 0, 0, 4, 2, 0, 0, 1);
  Target t(10, 10, 10, 3);
  tbRect r(1, 2, 3, 4);
  EXPECT_EQ(b.DrawAImage(0, t.Data(), 10, 10, 10, 2, 2, nullptr, 5, 3, 0, 0, &r), 1);
  EXPECT_EQ(r, tbRect(0, 0, 0, 0));
  EXPECT_EQ(t.Rect(0, 0, 10, 10), Bytes(100, 3));
  EXPECT_EQ(b.DrawAImage(1, t.Data(), 10, 10, 10, 2, 2, nullptr, 5, 3, 0, 0, &r), 0);
  // No target: nothing drawn, empty rectangle.
  r = tbRect(1, 2, 3, 4);
  EXPECT_EQ(a.DrawAImage(0, nullptr, 10, 10, 10, 2, 2, nullptr, 5, 0, 0, 0, &r), 1);
  EXPECT_EQ(r, tbRect(0, 0, 0, 0));
}

TEST_F(AFrameDrawTest, FillAndPlace) {
  Target t(10, 10, 12, 9);
  tbRect r;
  EXPECT_EQ(Draw(t, 3, 4, nullptr, 5, 0, 0, 0, &r), 1);
  EXPECT_EQ(r, tbRect(3, 4, 7, 6));
  int fives = 0;
  for (int y = 0; y < 10; ++y)
    for (int x = 0; x < 10; ++x) fives += t.At(x, y) == 5;
  EXPECT_EQ(fives, 92);
  EXPECT_EQ(t.Rect(3, 4, 7, 6), Bytes(kPicture, kPicture + 8));
  // The spare bytes at the ends of the rows are not the target's.
  EXPECT_EQ(t.At(10, 0), 9);
  EXPECT_EQ(t.At(11, 9), 9);
  // Fill 261 uses its low 8 bits.
  Draw(t, 3, 4, nullptr, 261, 0, 0, 0);
  EXPECT_EQ(t.At(0, 0), 5);
  EXPECT_TRUE(t.GuardsIntact());
}

TEST_F(AFrameDrawTest, OnlyMaskedPixelsChangeWithoutFill) {
  const unsigned char mask[8] = {255, 0, 255, 0, 0, 255, 0, 255};
  a.SetImage(0, const_cast<unsigned char*>(kPicture), const_cast<unsigned char*>(mask), 4, 2, -1,
             -1);
  Target t(6, 4, 6, 1);
  tbRect r;
  Draw(t, 2, 2, nullptr, -1, 0, 0, 0, &r);
  EXPECT_EQ(r, tbRect(1, 1, 5, 3));
  EXPECT_EQ(t.Rect(0, 0, 6, 4), Bytes({1, 1,  1,  1,  1,  1,  //
                                       1, 10, 1,  12, 1,  1,  //
                                       1, 1,  21, 1,  23, 1,  //
                                       1, 1,  1,  1,  1,  1}));
}

TEST_F(AFrameDrawTest, ScrollIsTakenModuloTheSize) {
  for (short s : {4, 8, -4, 400}) {
    Target t1(6, 4, 6), t2(6, 4, 6);
    Draw(t1, 1, 1, nullptr, 0, 3, 0, 0);
    Draw(t2, 1, 1, nullptr, 0, 3, s, 0);
    EXPECT_EQ(t1.store, t2.store) << s;
  }
  Target t1(6, 4, 6), t2(6, 4, 6);
  Draw(t1, 1, 1, nullptr, 0, 3, -1, -3);
  Draw(t2, 1, 1, nullptr, 0, 3, 3, 1);
  EXPECT_EQ(t1.store, t2.store);
  Target t3(6, 4, 6);
  Draw(t3, 1, 1, nullptr, 0, 3, -32768, 32767);
  EXPECT_TRUE(t3.GuardsIntact());
}

TEST_F(AFrameDrawTest, ScrollWithAndWithoutWrap) {
  Target t(4, 2, 4, 9);
  Draw(t, 0, 0, nullptr, 0, 0, 1, 0);
  EXPECT_EQ(t.Rect(0, 0, 4, 2), Bytes({0, 10, 11, 12, 0, 20, 21, 22}));
  Draw(t, 0, 0, nullptr, 0, 1, 1, 0);
  EXPECT_EQ(t.Rect(0, 0, 4, 2), Bytes({13, 10, 11, 12, 23, 20, 21, 22}));
  // Vertical wrap only.
  Draw(t, 0, 0, nullptr, 0, 2, 0, 1);
  EXPECT_EQ(t.Rect(0, 0, 4, 2), Bytes({20, 21, 22, 23, 10, 11, 12, 13}));
}

TEST_F(AFrameDrawTest, CornerIsFilledOnlyWithWrap3) {
  Target t3(6, 4, 6), t7(6, 4, 6);
  Draw(t3, 1, 1, nullptr, 0, 3, 1, 1);
  Draw(t7, 1, 1, nullptr, 0, 7, 1, 1);
  // Frame rectangle (1, 1) - (5, 3).
  EXPECT_EQ(t3.Rect(1, 1, 5, 3), Bytes({23, 20, 21, 22, 13, 10, 11, 12}));
  EXPECT_EQ(t7.Rect(1, 1, 5, 3), Bytes({0, 20, 21, 22, 13, 10, 11, 12}));
  // Nothing outside the frame rectangle.
  EXPECT_EQ(t3.At(0, 0) + t3.At(5, 3) + t3.At(0, 1) + t3.At(5, 1), 0);
  EXPECT_EQ(t7.At(0, 0) + t7.At(5, 3) + t7.At(0, 1) + t7.At(5, 1), 0);
}

TEST_F(AFrameDrawTest, ClippingAtTheEdges) {
  Target t(5, 5, 5, 0);
  tbRect r;
  Draw(t, -2, -1, nullptr, -1, 0, 0, 0, &r);
  EXPECT_EQ(r, tbRect(-2, -1, 2, 1));
  EXPECT_EQ(t.Rect(0, 0, 3, 2), Bytes({22, 23, 0, 0, 0, 0}));
  Target u(5, 5, 5, 0);
  Draw(u, 3, 4, nullptr, -1, 0, 0, 0, &r);
  EXPECT_EQ(u.Rect(3, 4, 5, 5), Bytes({10, 11}));
  EXPECT_TRUE(u.GuardsIntact());
  // Wholly outside: nothing drawn, the rectangle still reported.
  Target v(5, 5, 5, 0);
  Draw(v, 100, -50, nullptr, -1, 3, 2, 1, &r);
  EXPECT_EQ(r, tbRect(100, -50, 104, -48));
  EXPECT_EQ(v.Rect(0, 0, 5, 5), Bytes(25, 0));
  // Coordinates at the 16-bit edges: the rectangle wraps and draws nothing.
  Draw(v, 32766, 32766, nullptr, -1, 3, 3, 1, &r);
  EXPECT_EQ(r, tbRect(32766, 32766, -32766, -32768));
  Draw(v, -32768, -32768, nullptr, -1, 3, 3, 1, &r);
  EXPECT_EQ(v.Rect(0, 0, 5, 5), Bytes(25, 0));
  EXPECT_TRUE(v.GuardsIntact());
}

TEST_F(AFrameDrawTest, BadTargetsDrawNothing) {
  Target t(5, 5, 5, 7);
  tbRect r;
  // Rows shorter than the width, negative sizes.
  EXPECT_EQ(a.DrawAImage(0, t.Data(), 4, 5, 5, 0, 0, nullptr, 1, 0, 0, 0, &r), 1);
  EXPECT_EQ(a.DrawAImage(0, t.Data(), 5, -5, 5, 0, 0, nullptr, 1, 0, 0, 0, &r), 1);
  EXPECT_EQ(a.DrawAImage(0, t.Data(), 5, 5, -1, 0, 0, nullptr, 1, 0, 0, 0, &r), 1);
  EXPECT_EQ(a.DrawAImage(0, t.Data(), -5, -5, 5, 0, 0, nullptr, 1, 0, 0, 0, &r), 1);
  EXPECT_EQ(r, tbRect(0, 0, 4, 2));
  EXPECT_EQ(t.Rect(0, 0, 5, 5), Bytes(25, 7));
  // A null frame rectangle is allowed.
  EXPECT_EQ(a.DrawAImage(0, t.Data(), 5, 5, 5, 0, 0, nullptr, -1, 0, 0, 0, nullptr), 1);
  EXPECT_EQ(t.At(0, 0), 10);
}

TEST_F(AFrameDrawTest, CopyingFormClipsOnce) {
  Target t(6, 6, 6, 0);
  unsigned char mask[8];
  std::memset(mask, 255, 8);
  unsigned char* img = const_cast<unsigned char*>(kPicture);
  // Clipped on all four sides by a clip rectangle inside the target.
  a.localDrawImage(img, mask, 4, t.Data(), 6, 1, 1, 5, 3, 2, 2, 4, 6, nullptr);
  EXPECT_EQ(t.Rect(0, 0, 6, 6), Bytes({0, 0, 0,  0,  0, 0,  //
                                       0, 0, 0,  0,  0, 0,  //
                                       0, 0, 21, 22, 0, 0,  //
                                       0, 0, 0,  0,  0, 0,  //
                                       0, 0, 0,  0,  0, 0,  //
                                       0, 0, 0,  0,  0, 0}));
  // Empty and inverted rectangles, and one whose right edge wrapped.
  Target u(6, 6, 6, 0);
  a.localDrawImage(img, mask, 4, u.Data(), 6, 3, 3, 3, 5, 0, 0, 6, 6, nullptr);
  a.localDrawImage(img, mask, 4, u.Data(), 6, 32760, 0, -32760, 2, 0, 0, 6, 6, nullptr);
  a.localDrawImage(img, mask, 4, u.Data(), 6, 4, 0, 0, 2, 0, 0, 6, 6, nullptr);
  // A rectangle wider than the image rows is refused.
  a.localDrawImage(img, mask, 4, u.Data(), 6, 0, 0, 6, 2, 0, 0, 6, 6, nullptr);
  // A clip rectangle that starts before the target is refused.
  a.localDrawImage(img, mask, 4, u.Data(), 6, -1, -1, 3, 1, -1, -1, 6, 6, nullptr);
  EXPECT_EQ(u.Rect(0, 0, 6, 6), Bytes(36, 0));
  EXPECT_TRUE(u.GuardsIntact());
}

TEST_F(AFrameDrawTest, PaletteAreaFilter) {
  QvPal pal;
  pal.SetFlag(12, 1);
  Target t(4, 2, 4, 0);
  Draw(t, 0, 0, &pal, -1, 0, 0, 0);
  EXPECT_EQ(t.Rect(0, 0, 4, 2), Bytes({0, 0, 12, 0, 0, 0, 0, 0}));
  // Under a mask of 0 even a flagged colour stays out.
  const unsigned char mask[8] = {255, 255, 0, 255, 255, 255, 255, 255};
  a.SetImage(0, const_cast<unsigned char*>(kPicture), const_cast<unsigned char*>(mask), 4, 2, 0, 0);
  Target u(4, 2, 4, 0);
  Draw(u, 0, 0, &pal, -1, 0, 0, 0);
  EXPECT_EQ(u.Rect(0, 0, 4, 2), Bytes(8, 0));
}

TEST_F(AFrameDrawTest, ClockPositionForms) {
  a.Reg(-1, 0, 0, 4, 2, 0, 0, 3);
  unsigned char mask[1] = {255}, img[1] = {77};
  a.SetImage(1, img, mask, 1, 1, 0, 0);
  // Positions: 0 is frame 0, 1 to 3 frame 1.
  Target t(4, 2, 4, 0);
  tbRect r;
  EXPECT_EQ(a.DrawMImage(2, t.Data(), 4, 4, 2, 1, 1, nullptr, 0, 0, 0, 0, &r), 1);
  EXPECT_EQ(r, tbRect(1, 1, 2, 2));
  EXPECT_EQ(t.At(1, 1), 77);
  EXPECT_EQ(a.DrawMImage(4, t.Data(), 4, 4, 2, 1, 1, nullptr, 0, 0, 0, 0, &r), 0);
  a.SetCur(0);
  EXPECT_EQ(a.DrawMImage(t.Data(), 4, 4, 2, 0, 0, nullptr, 0, 0, 0, 0, &r), 1);
  EXPECT_EQ(t.Rect(0, 0, 4, 2), Bytes(kPicture, kPicture + 8));
  a.SetCur(3);
  EXPECT_EQ(a.DrawMImage(t.Data(), 4, 4, 2, 0, 0, nullptr, 0, 0, 0, 0, &r), 1);
  EXPECT_EQ(t.At(0, 0), 77);
  unsigned char* got = nullptr;
  EXPECT_EQ(a.GetMImage(1, &got, nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(got[0], 77);
  EXPECT_EQ(a.GetMImage(4, &got, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}

// A world of 8 x 6 and a host pixel map of 20 x 12 filled with 99.
class AFramePictureTest : public AFrameDrawTest {
 protected:
  void SetUp() override {
    AFrameDrawTest::SetUp();
    tbRect bounds(0, 0, 8, 6);
    ASSERT_NE(tb.NewGWorld(&world, 8, &bounds, nullptr), 0);
    dest.assign(20 * 12, 99);
    destMap = tbPixMap(dest.data(), 20, tbRect(0, 0, 20, 12));
  }
  void TearDown() override {
    tb.DisposeGWorld(world);
    AFrameDrawTest::TearDown();
  }
  unsigned char Dest(int x, int y) { return dest[static_cast<std::size_t>(y * 20 + x)]; }
  tbGWorld* world = nullptr;
  Bytes dest;
  tbPixMap destMap;
};

TEST_F(AFramePictureTest, WithoutPaletteTheFrameRectangleIsCopied) {
  const unsigned char mask[8] = {255, 0, 255, 255, 255, 255, 255, 255};
  a.SetImage(0, const_cast<unsigned char*>(kPicture), const_cast<unsigned char*>(mask), 4, 2, 0, 0);
  EXPECT_EQ(a.DrawAPicture(0, world, 2, 3, nullptr, 4, 0, 0, 0, &destMap, 5, 1), 1);
  // The world was filled and drawn.
  EXPECT_EQ(world->PortPixMap()->Pixel(0, 0), 4);
  EXPECT_EQ(world->PortPixMap()->Pixel(2, 3), 10);
  // Only the frame rectangle (2, 3) - (6, 5) of the world reaches the
  // destination, at (7, 4) - (11, 6), the world's background under the mask
  // included.
  for (int y = 0; y < 12; ++y)
    for (int x = 0; x < 20; ++x) {
      const bool inside = x >= 7 && x < 11 && y >= 4 && y < 6;
      if (!inside) {
        ASSERT_EQ(Dest(x, y), 99) << x << "," << y;
      } else {
        const unsigned char expected = (x == 8 && y == 4) ? 4 : kPicture[(y - 4) * 4 + (x - 7)];
        ASSERT_EQ(Dest(x, y), expected) << x << "," << y;
      }
    }
}

TEST_F(AFramePictureTest, WithPaletteOnlyTheRegionOfNonFillPixelsIsCopied) {
  QvPal pal;
  pal.SetFlag(12, 1);
  EXPECT_EQ(a.DrawMPicture(0, world, 2, 3, &pal, 0, 0, 0, 0, &destMap, 5, 1), 1);
  for (int y = 0; y < 12; ++y)
    for (int x = 0; x < 20; ++x) {
      const unsigned char expected = (x == 9 && y == 4) ? 12 : 99;
      ASSERT_EQ(Dest(x, y), expected) << x << "," << y;
    }
  EXPECT_EQ(a.DrawMPicture(1, world, 2, 3, &pal, 0, 0, 0, 0, &destMap, 5, 1), 0);
}

TEST_F(AFramePictureTest, RegionFailureCopiesNothing) {
  QvFailAllocation(1);  // the region
  EXPECT_EQ(a.DrawAPicture(0, world, 0, 0, nullptr, 4, 0, 0, 0, &destMap, 0, 0), 0);
  QvFailAllocation(0);
  EXPECT_EQ(world->PortPixMap()->Pixel(7, 5), 4);  // the world was drawn into
  EXPECT_EQ(dest, Bytes(20 * 12, 99));
  EXPECT_EQ(a.DrawAPicture(0, nullptr, 0, 0, nullptr, 4, 0, 0, 0, &destMap, 0, 0), 0);
  EXPECT_EQ(a.DrawAPicture(3, world, 0, 0, nullptr, 4, 0, 0, 0, &destMap, 0, 0), 0);
  // A destination far away or absent is harmless.
  EXPECT_EQ(a.DrawAPicture(0, world, 0, 0, nullptr, 4, 0, 0, 0, &destMap, 32000, -32000), 1);
  EXPECT_EQ(a.DrawAPicture(0, world, 0, 0, nullptr, 4, 0, 0, 0, nullptr, 0, 0), 1);
  EXPECT_EQ(dest, Bytes(20 * 12, 99));
}

TEST_F(AFramePictureTest, RandomPlacementsStayInBounds) {
  std::mt19937 rng(99);
  auto uni = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  QvPal pal;
  pal.SetRange(10, 13, 1);
  for (int i = 0; i < 200; ++i) {
    const bool edge = i % 4 == 0;
    const short x = static_cast<short>(edge ? uni(-32768, 32767) : uni(-10, 20));
    const short y = static_cast<short>(edge ? uni(-32768, 32767) : uni(-10, 20));
    a.DrawAPicture(0, world, x, y, i % 2 ? &pal : nullptr, static_cast<short>(uni(-1, 5)),
                   static_cast<char>(uni(0, 7)), static_cast<short>(uni(-32768, 32767)),
                   static_cast<short>(uni(-32768, 32767)), &destMap,
                   static_cast<short>(edge ? uni(-32768, 32767) : uni(-10, 25)),
                   static_cast<short>(edge ? uni(-32768, 32767) : uni(-10, 15)));
  }
  SUCCEED();
}

// ---------------------------------------------------------------------------
// Copies

// Two frames with images, zoom, rotation and flags.
void MakeSource(QvAFrame& src) {
  src.Reg(-1, 0, 0, 4, 2, 1, 1, 3);
  src.Reg(-1, 0, 0, 4, 2, 0, 0, 2);
  src.SetZoom(0, 2.0, 2.0);
  src.SetRot(1, kPi / 2);
  src.Activate(1);
  src.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2);
  src.SetImage(1, const_cast<unsigned char*>(kPicture), 4, 4, 2);
  src.SetMode(2);
  src.SetSpeed(12);
}

void ExpectSameSettings(QvAFrame& a, QvAFrame& b) {
  ASSERT_EQ(a.CountAFrame(), b.CountAFrame());
  for (short i = 0; i < a.CountAFrame(); ++i) {
    short va[7], vb[7];
    double da[3], db[3];
    a.GetAFrame(i, &va[0], &va[1], &va[2], &va[3], &va[4], &va[5], &va[6], &da[0], &da[1], &da[2]);
    b.GetAFrame(i, &vb[0], &vb[1], &vb[2], &vb[3], &vb[4], &vb[5], &vb[6], &db[0], &db[1], &db[2]);
    for (int k = 0; k < 7; ++k) EXPECT_EQ(va[k], vb[k]) << i << ":" << k;
    for (int k = 0; k < 3; ++k) EXPECT_EQ(da[k], db[k]) << i << ":" << k;
    EXPECT_EQ(a.IsActive(i), b.IsActive(i)) << i;
  }
}

TEST_F(AFrameTest, DupMakesAnIndependentDeepCopy) {
  Probe src;
  MakeSource(src);
  unsigned char icon[4];
  ASSERT_EQ(src.GetIcon(0, icon, 2, 2, 2), 1);
  Probe dst;
  for (short i = 0; i < 5; ++i) dst.Reg(-1, 9, 9, 3, 3, 0, 0, 7);
  dst.SetOrgImage(0, const_cast<unsigned char*>(kPicture), 3, 3, 3);
  ASSERT_EQ(src.Dup(&dst), 1);
  ExpectSameSettings(src, dst);
  EXPECT_EQ(dst.Mode(), 2);
  EXPECT_EQ(dst.Speed(), 12);
  EXPECT_EQ(dst.Top(), 0);
  EXPECT_EQ(dst.End(), 4);
  EXPECT_EQ(dst.UpdateLock(), 0);
  EXPECT_EQ(dst.LockFlag(), 0);
  for (int i = 0; i < 2; ++i) {
    const QvAFrameInfo* s = src.Info(i);
    const QvAFrameInfo* d = dst.Info(i);
    ASSERT_NE(d->orgImage, nullptr);
    EXPECT_NE(d->orgImage, s->orgImage);
    EXPECT_EQ(Bytes(d->orgImage, d->orgImage + 8), Bytes(s->orgImage, s->orgImage + 8));
    ASSERT_NE(d->image, nullptr);
    EXPECT_NE(d->image, s->image);
    EXPECT_NE(d->mask, s->mask);
    EXPECT_EQ(d->imageWidth, s->imageWidth);
    EXPECT_EQ(d->imageHeight, s->imageHeight);
    EXPECT_EQ(d->imageOffsetX, s->imageOffsetX);
    EXPECT_EQ(d->imageOffsetY, s->imageOffsetY);
    const int n = s->imageWidth * s->imageHeight;
    EXPECT_EQ(Bytes(d->image, d->image + n), Bytes(s->image, s->image + n));
    EXPECT_EQ(Bytes(d->mask, d->mask + n), Bytes(s->mask, s->mask + n));
    EXPECT_EQ(d->icon, nullptr);
  }
  // Later changes of one do not reach the other.
  src.SetPos(0, 50, 50);
  src.Del(1);
  EXPECT_EQ(PosXOfA(dst, 0), 0);
  EXPECT_EQ(dst.CountAFrame(), 2);
}

TEST_F(AFrameTest, DupLeavesTheClockPositionAndListAlone) {
  QvAFrame src, dst;
  MakeSource(src);
  dst.Reg(-1, 0, 0, 1, 1, 0, 0, 2);
  dst.SetCur(1);
  src.SetCur(3);
  ASSERT_EQ(src.Dup(&dst), 1);
  EXPECT_EQ(dst.Cur(), 1);
  EXPECT_EQ(src.Dup(nullptr), 0);
  EXPECT_EQ(src.Dup(&src), 1);
  EXPECT_EQ(src.CountAFrame(), 2);
}

TEST_F(AFrameTest, CopiesOfLockedAnimations) {
  Probe src, dst;
  MakeSource(src);
  src.LockA(1);
  for (short i = 0; i < 3; ++i) dst.Reg(-1, 0, 0, 1, 1, 0, 0, 1);
  dst.LockA(2);
  ASSERT_EQ(src.Dup(&dst), 1);
  // The source keeps its lock on frame 1; the target's lock went with its
  // frames.
  EXPECT_EQ(src.LockFlag(), 1);
  EXPECT_EQ(src.Current(), src.Info(1));
  EXPECT_EQ(dst.LockFlag(), 0);
  src.Unlock();
  ExpectSameSettings(src, dst);

  src.LockA(0);
  Probe backup;
  ASSERT_EQ(src.Backup(&backup), 1);
  EXPECT_EQ(backup.CountAFrame(), 2);
  EXPECT_EQ(src.Current(), src.Info(0));
  backup.LockA(1);
  ASSERT_EQ(dst.Restore(&backup), 1);
  EXPECT_EQ(dst.CountAFrame(), 2);
  EXPECT_EQ(backup.LockFlag(), 1);
  src.Unlock();
  ExpectSameSettings(src, dst);
}

TEST_F(AFrameTest, DupAllocationFailures) {
  QvAFrame src;
  MakeSource(src);
  // Per frame: the record, the untransformed image, the image, the mask.
  {
    Probe dst;
    QvFailAllocation(5);  // the second record
    EXPECT_EQ(src.Dup(&dst), 0);
    QvFailAllocation(0);
    EXPECT_EQ(dst.CountAFrame(), 1);
    EXPECT_EQ(dst.UpdateLock(), 0);
    EXPECT_EQ(dst.End(), 2);
    EXPECT_NE(dst.Info(0)->image, nullptr);
  }
  {
    Probe dst;
    QvFailAllocation(2);  // frame 0's untransformed image
    EXPECT_EQ(src.Dup(&dst), 1);
    QvFailAllocation(0);
    EXPECT_EQ(dst.CountAFrame(), 2);
    EXPECT_EQ(dst.Info(0)->orgImage, nullptr);
    EXPECT_NE(dst.Info(0)->image, nullptr);
    EXPECT_NE(dst.Info(1)->orgImage, nullptr);
  }
  {
    Probe dst;
    QvFailAllocation(4);  // frame 0's mask
    EXPECT_EQ(src.Dup(&dst), 1);
    QvFailAllocation(0);
    EXPECT_EQ(dst.Info(0)->image, nullptr);
    EXPECT_EQ(dst.Info(0)->mask, nullptr);
    EXPECT_NE(dst.Info(1)->mask, nullptr);
  }
}

TEST_F(AFrameTest, BackupAndRestoreDropImages) {
  QvAFrame src;
  MakeSource(src);
  QvAFrame backup;
  ASSERT_EQ(src.Backup(&backup), 1);
  ExpectSameSettings(src, backup);
  EXPECT_EQ(backup.Mode(), 0);  // the clock is not copied
  EXPECT_EQ(backup.Speed(), 30);
  src.SetPos(0, 40, 40);
  src.Reg(-1, 0, 0, 1, 1, 0, 0, 1);
  ASSERT_EQ(src.Restore(&backup), 1);
  ExpectSameSettings(src, backup);
  EXPECT_EQ(src.End(), 4);
  for (short i = 0; i < 2; ++i) {
    unsigned char sentinel = 0;
    unsigned char *img = &sentinel, *msk = &sentinel, *org = &sentinel;
    short w, h;
    ASSERT_EQ(src.GetAImage(i, &img, &msk, nullptr, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(img, nullptr);
    EXPECT_EQ(msk, nullptr);
    src.GetOrgImage(i, &org, &w, &h);
    EXPECT_EQ(org, nullptr);
  }
  EXPECT_EQ(src.Backup(nullptr), 0);
  EXPECT_EQ(src.Restore(nullptr), 0);
  EXPECT_EQ(src.Backup(&src), 1);
  EXPECT_EQ(src.Restore(&src), 1);
  EXPECT_EQ(src.CountAFrame(), 2);
}

TEST_F(AFrameTest, BackupAndRestoreOfAnEmptyAnimation) {
  QvAFrame empty, backup, a;
  backup.Reg(-1, 0, 0, 1, 1, 0, 0, 1);
  ASSERT_EQ(empty.Backup(&backup), 1);
  EXPECT_EQ(backup.CountAFrame(), 0);
  a.Reg(-1, 0, 0, 1, 1, 0, 0, 5);
  ASSERT_EQ(a.Restore(&backup), 1);
  EXPECT_EQ(a.CountAFrame(), 0);
  EXPECT_EQ(a.End(), -1);
}

TEST_F(AFrameTest, BackupAndRestoreAllocationFailures) {
  QvAFrame src;
  MakeSource(src);
  Probe backup;
  QvFailAllocation(2);
  EXPECT_EQ(src.Backup(&backup), 0);
  QvFailAllocation(0);
  EXPECT_EQ(backup.CountAFrame(), 1);
  EXPECT_EQ(backup.UpdateLock(), 0);
  ASSERT_EQ(src.Backup(&backup), 1);
  Probe a;
  QvFailAllocation(1);
  EXPECT_EQ(a.Restore(&backup), 0);
  QvFailAllocation(0);
  EXPECT_EQ(a.CountAFrame(), 0);
  EXPECT_EQ(a.UpdateLock(), 0);
}

TEST_F(AFrameTest, RegFromAnotherAnimation) {
  Probe src;
  for (short i = 0; i < 3; ++i) src.Reg(-1, i, 1, 2, 3, 4, 5, 6);
  src.SetZoom(2, 0.5, 3.0);
  src.SetRot(2, -1.0);
  src.Activate(2);
  src.SetImage(2, const_cast<unsigned char*>(kPicture), 4, 4, 2);
  Probe a;
  for (short i = 0; i < 3; ++i) a.Reg(-1, 10 + i, 0, 1, 1, 0, 0, 1);
  ASSERT_EQ(a.Reg(0, &src, 2), 0);
  EXPECT_EQ(a.CountAFrame(), 4);
  EXPECT_EQ(a.End(), 8);
  short v[7];
  double zx, zy, rot;
  a.GetAFrame(0, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &zx, &zy, &rot);
  EXPECT_EQ(v[0], 2);
  EXPECT_EQ(v[6], 6);
  EXPECT_EQ(zx, 0.5);
  EXPECT_EQ(zy, 3.0);
  EXPECT_EQ(rot, -1.0);
  EXPECT_EQ(a.IsActive(0), 0);
  EXPECT_EQ(a.Info(0)->orgImage, nullptr);
  EXPECT_EQ(a.Info(0)->image, nullptr);
  EXPECT_EQ(a.UpdateLock(), 0);
  EXPECT_EQ(PosXOfA(a, 1), 10);

  EXPECT_EQ(a.Reg(0, &src, 9), -1);
  EXPECT_EQ(a.Reg(0, nullptr, 0), -1);
  EXPECT_EQ(a.CountAFrame(), 4);
  QvFailAllocation(1);
  EXPECT_EQ(a.Reg(0, &src, 1), -1);
  QvFailAllocation(0);
  EXPECT_EQ(a.CountAFrame(), 4);
  EXPECT_EQ(a.UpdateLock(), 0);

  // Into a locked animation: inserted before the locked frame, and the zoom
  // goes to the new frame, not to the locked one.
  a.LockA(2);
  ASSERT_EQ(a.Reg(5, &src, 2), 5);
  a.Unlock();
  EXPECT_EQ(a.CountAFrame(), 5);
  a.GetAFrame(2, &v[0], nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &zx, nullptr,
              nullptr);
  EXPECT_EQ(v[0], 2);
  EXPECT_EQ(zx, 0.5);
  a.GetAFrame(3, &v[0], nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &zx, nullptr,
              nullptr);
  EXPECT_EQ(v[0], 11);
  EXPECT_EQ(zx, 1.0);
}

// ---------------------------------------------------------------------------
// Passing changes on to cast members

short CopyPosX(QvMCast& cast, short id) {
  QvAFrame* copy = cast.AFrame(id);
  return copy ? PosXOfA(*copy, 0) : -2;
}

TEST_F(AFrameTest, ChangesReachTheMembersCopies) {
  QvMCast cast;
  QvAFrame anim;
  anim.Reg(-1, 1, 0, 4, 2, 0, 0, 3);
  unsigned char name[] = "walk";
  const short named = cast.RegAFrame(-1, &anim, 10, name, &anim);
  const short unnamed = cast.RegAFrame(-1, &anim, 20, nullptr, &anim);
  ASSERT_GE(named, 0);
  ASSERT_GE(unnamed, 0);
  EXPECT_EQ(CopyPosX(cast, named), 1);

  // Activate and Deactivate are not passed on; SetPos is.
  anim.Activate(0);
  EXPECT_EQ(cast.AFrame(named)->IsActive(0), 0);
  anim.SetPos(0, 5, 0);
  EXPECT_EQ(CopyPosX(cast, named), 5);
  EXPECT_EQ(CopyPosX(cast, unnamed), 5);
  EXPECT_EQ(cast.AFrame(named)->IsActive(0), 1);
  // The list did not grow, names and start times survive.
  QvMCast* store = nullptr;
  short id = 0;
  EXPECT_EQ(anim.Get(2, &store, &id), 0);
  unsigned char** handle = nullptr;
  ASSERT_EQ(cast.GetName(named, &handle), 1);
  ASSERT_NE(handle, nullptr);
  EXPECT_STREQ(reinterpret_cast<char*>(*handle), "walk");
  QvFreeString(handle);
  handle = nullptr;
  cast.GetName(unnamed, &handle);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(cast.Start(named), 10);
  EXPECT_EQ(cast.Start(unnamed), 20);

  // Every changing operation passes its change on.
  anim.SetImage(0, const_cast<unsigned char*>(kPicture), 4, 4, 2);
  unsigned char* img = nullptr;
  cast.AFrame(named)->GetAImage(0, &img, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_NE(img, nullptr);
  anim.Reg(0, 8, 0, 1, 1, 0, 0, 1);
  EXPECT_EQ(CopyPosX(cast, named), 8);
  anim.Del(0);
  EXPECT_EQ(CopyPosX(cast, named), 5);
  anim.SetInterval(0, 9);
  EXPECT_EQ(cast.AFrame(named)->CountMFrame(), 9);
  // Mode and speed reach the copies with the next change only.
  anim.SetSpeed(15);
  EXPECT_EQ(cast.AFrame(named)->Speed(), 30);
  anim.UpdateMCast();
  EXPECT_EQ(cast.AFrame(named)->Speed(), 15);
  anim.DelAll();
  EXPECT_EQ(cast.AFrame(named)->CountAFrame(), 0);
}

TEST_F(AFrameTest, UpdateLockBatchesTheRefresh) {
  QvMCast cast;
  QvAFrame anim;
  anim.Reg(-1, 1, 0, 4, 2, 0, 0, 3);
  const short id = cast.RegAFrame(-1, &anim, 0, nullptr, &anim);
  anim.LockUpdateMCast();
  anim.LockUpdateMCast();
  anim.SetPos(0, 7, 0);
  anim.UpdateMCast();  // held back as well
  EXPECT_EQ(CopyPosX(cast, id), 1);
  anim.UnlockUpdateMCast();
  EXPECT_EQ(CopyPosX(cast, id), 1);
  anim.UnlockUpdateMCast();
  EXPECT_EQ(CopyPosX(cast, id), 7);
}

TEST_F(AFrameTest, CopiesRefreshTheTargetsMembersOnce) {
  QvAFrame src;
  MakeSource(src);
  QvMCast cast;
  QvAFrame target, plain;
  target.Reg(-1, 0, 0, 1, 1, 0, 0, 1);
  plain.Reg(-1, 0, 0, 1, 1, 0, 0, 1);
  const short id = cast.RegAFrame(-1, &target, 0, nullptr, &target);

  // The allocations of one refresh of the member with the source's content.
  ASSERT_EQ(src.Dup(&target), 1);
  QvFailAllocation(0);
  target.UpdateMCast();
  const int oneRefresh = QvAllocationCount();
  ASSERT_GT(oneRefresh, 0);

  QvFailAllocation(0);
  ASSERT_EQ(src.Dup(&plain), 1);
  const int plainDup = QvAllocationCount();
  QvFailAllocation(0);
  ASSERT_EQ(src.Dup(&target), 1);
  EXPECT_EQ(QvAllocationCount(), plainDup + oneRefresh);
  EXPECT_EQ(cast.AFrame(id)->CountAFrame(), 2);

  // Backup and Reg from another animation as well.
  QvFailAllocation(0);
  ASSERT_EQ(src.Backup(&plain), 1);
  const int plainBackup = QvAllocationCount();
  QvFailAllocation(0);
  ASSERT_EQ(src.Backup(&target), 1);
  const int targetBackup = QvAllocationCount();
  QvFailAllocation(0);
  target.UpdateMCast();
  EXPECT_EQ(targetBackup, plainBackup + QvAllocationCount());

  // A target whose update lock is held passes nothing on.
  target.LockUpdateMCast();
  target.Reg(0, &src, 1);
  EXPECT_EQ(cast.AFrame(id)->CountAFrame(), 2);
  target.UnlockUpdateMCast();
  EXPECT_EQ(cast.AFrame(id)->CountAFrame(), 3);
}

TEST_F(AFrameTest, DetachingKeepsTheLastCopies) {
  QvMCast cast;
  short a = -1, b = -1;
  {
    QvAFrame anim;
    anim.Reg(-1, 3, 0, 4, 2, 0, 0, 2);
    a = cast.RegAFrame(-1, &anim, 0, nullptr, &anim);
    b = cast.RegAFrame(-1, &anim, 0, nullptr, &anim);
    anim.SetPos(0, 4, 0);
    anim.DelFromMCast();
    QvMCast* store = nullptr;
    short id = 0;
    EXPECT_EQ(anim.Get(0, &store, &id), 0);
    anim.SetPos(0, 6, 0);  // reaches nobody now
    EXPECT_EQ(CopyPosX(cast, a), 4);
    anim.Reg(-1, 0, 0, 1, 1, 0, 0, 1);
    cast.RegAFrame(b, &anim, 0, nullptr, &anim);
    anim.SetPos(0, 9, 0);
    EXPECT_EQ(CopyPosX(cast, b), 9);
    // Destroyed while member b uses it.
  }
  EXPECT_EQ(CopyPosX(cast, a), 4);
  EXPECT_EQ(CopyPosX(cast, b), 9);
  EXPECT_EQ(cast.AFrame(b)->CountAFrame(), 2);
  EXPECT_EQ(cast.DelAFrame(b), 1);
  EXPECT_EQ(cast.DelAFrame(a), 1);
}

}  // namespace

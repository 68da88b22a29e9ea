#include <gtest/gtest.h>

#include "toolbox/CPtrList.h"
#include "toolbox/MDependable.h"
#include "toolbox/QvCanvas.h"
#include "toolbox/QvCanvasUtil.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbPicture.h"

namespace {

struct NoFailures {
  ~NoFailures() { QvFailAllocation(0); }
};

TEST(CanvasTest, NewClearAndPicture) {
  QvCanvas canvas;
  tbColorTable table;
  const tbRGBColor c(1, 2, 3);
  table.SetCTTable(9, &c);
  canvas.UpdateCTable(&table);
  canvas.UpdateCTable(nullptr);  // ignored
  EXPECT_EQ(canvas.CTable(), table);
  ASSERT_NE(canvas.New(4, 3), 0);
  canvas.localGetImg();
  ASSERT_NE(canvas.image, nullptr);
  EXPECT_EQ(canvas.rowBytes, 4);
  EXPECT_EQ(canvas.width, 4);
  EXPECT_EQ(canvas.height, 3);
  canvas.Clear(0, 0, 4, 3, 5, nullptr, 0);
  canvas.Clear(-2, 1, 2, 9, 7, nullptr, 0);  // clipped to columns 0-1, rows 1-2
  const unsigned char want[3][4] = {{5, 5, 5, 5}, {7, 7, 5, 5}, {7, 7, 5, 5}};
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 4; ++x) EXPECT_EQ(canvas.image[y * 4 + x], want[y][x]);
  canvas.image[11] = 42;

  tbPicture pict;
  EXPECT_EQ(pict.Pic(), nullptr);
  QvCanvasUtil util;
  ASSERT_NE(util.GetPICT(&canvas, 4, 3, &pict, 0, 0, 4, 3, nullptr), 0);
  ASSERT_NE(pict.Pic(), nullptr);
  EXPECT_NE(pict.Pic(), canvas.image);  // a copy
  EXPECT_EQ(pict.Width(), 4);
  EXPECT_EQ(pict.Height(), 3);
  EXPECT_EQ(pict.ColorTable(), table);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 4; ++x) EXPECT_EQ(pict.Pixel(x, y), x == 3 && y == 2 ? 42 : want[y][x]);
  EXPECT_EQ(pict.Pixel(4, 0), 0);

  // An area partly outside the canvas is clipped to it.
  ASSERT_NE(util.GetPICT(&canvas, 4, 3, &pict, 2, 1, 10, 10, nullptr), 0);
  EXPECT_EQ(pict.Width(), 2);
  EXPECT_EQ(pict.Height(), 2);
  EXPECT_EQ(pict.Pixel(1, 1), 42);
  EXPECT_EQ(util.GetPICT(&canvas, 4, 3, &pict, 4, 0, 8, 3, nullptr), 0);
  EXPECT_EQ(util.GetPICT(nullptr, 4, 3, &pict, 0, 0, 4, 3, nullptr), 0);
  pict.Dispose();
  EXPECT_EQ(pict.Pic(), nullptr);
  pict.Dispose();
}

TEST(CanvasTest, FailuresLeaveNothingBehind) {
  NoFailures guard;
  QvCanvas canvas;
  EXPECT_EQ(canvas.New(0, 5), 0);
  EXPECT_EQ(canvas.New(5, -1), 0);
  QvFailAllocation(1);
  EXPECT_EQ(canvas.New(5, 5), 0);
  EXPECT_EQ(canvas.image, nullptr);
  canvas.Clear(0, 0, 5, 5, 1, nullptr, 0);  // no image: nothing
  tbPicture pict;
  QvCanvasUtil util;
  EXPECT_EQ(util.GetPICT(&canvas, 5, 5, &pict, 0, 0, 5, 5, nullptr), 0);
  QvFailAllocation(0);
  ASSERT_NE(canvas.New(5, 5), 0);
  QvFailAllocation(1);
  EXPECT_EQ(util.GetPICT(&canvas, 5, 5, &pict, 0, 0, 5, 5, nullptr), 0);
  EXPECT_EQ(pict.Pic(), nullptr);
  unsigned char px[4] = {1, 2, 3, 4};
  EXPECT_EQ(pict.Set(px, 1, 2, 2, nullptr), 0);  // rows shorter than wide
  EXPECT_EQ(pict.Set(nullptr, 2, 2, 2, nullptr), 0);
}

TEST(CanvasTest, PointerListGrowsInBlocks) {
  NoFailures guard;
  CPtrList list;
  EXPECT_EQ(list.GetBlockSize(), 10);
  int values[25];
  QvFailAllocation(0);
  for (int i = 0; i < 25; ++i) ASSERT_TRUE(list.AddTail(&values[i]));
  EXPECT_EQ(QvAllocationCount(), 3);  // capacity 10, 20, 30
  EXPECT_EQ(list.GetCount(), 25);
  EXPECT_EQ(list.GetAt(24), &values[24]);
  EXPECT_EQ(list.GetAt(25), nullptr);
  EXPECT_EQ(list.GetAt(-1), nullptr);
  EXPECT_TRUE(list.Remove(&values[0]));
  EXPECT_FALSE(list.Remove(&values[0]));
  EXPECT_EQ(list.GetAt(0), &values[1]);
  EXPECT_EQ(list.GetCount(), 24);

  CPtrList small(4);
  for (int i = 0; i < 4; ++i) ASSERT_TRUE(small.AddTail(&values[i]));
  QvFailAllocation(1);
  EXPECT_FALSE(small.AddTail(&values[4]));  // growth fails, the list is kept
  EXPECT_EQ(small.GetCount(), 4);
  EXPECT_EQ(small.GetAt(3), &values[3]);
  small.RemoveAll();
  EXPECT_TRUE(small.IsEmpty());
  EXPECT_EQ(CPtrList(0).GetBlockSize(), 1);
}

struct Watcher : MDependable {
  int updates = 0;
  int lastWhat = 0;
  MDependable* lastSender = nullptr;
  void DoUpdate(int what, MDependable* sender, void*, void*) override {
    ++updates;
    lastWhat = what;
    lastSender = sender;
  }
};

TEST(CanvasTest, DependablesTellTheirDependents) {
  MDependable subject;
  Watcher a, b;
  EXPECT_EQ(subject.Dependents().GetBlockSize(), 10);
  EXPECT_TRUE(subject.AddDependent(&a));
  EXPECT_TRUE(subject.AddDependent(&b));
  EXPECT_TRUE(subject.AddDependent(&a));  // already there
  EXPECT_FALSE(subject.AddDependent(nullptr));
  EXPECT_EQ(subject.Dependents().GetCount(), 2);
  subject.Changed(3, nullptr);
  EXPECT_EQ(a.updates, 1);
  EXPECT_EQ(b.lastWhat, 3);
  EXPECT_EQ(b.lastSender, &subject);
  EXPECT_TRUE(subject.RemoveDependent(&a));
  subject.Changed(4, nullptr);
  EXPECT_EQ(a.updates, 1);
  EXPECT_EQ(b.updates, 2);
  EXPECT_EQ(subject.IsMarked(), 0);
  subject.SetMark(1);
  EXPECT_EQ(subject.IsMarked(), 1);
}

}  // namespace

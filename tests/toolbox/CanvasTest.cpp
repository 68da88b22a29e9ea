#include <gtest/gtest.h>

#include <vector>

#include "toolbox/CPtrList.h"
#include "toolbox/MDependable.h"
#include "toolbox/QvCanvas.h"
#include "toolbox/QvCanvasUtil.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbPicture.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Ints = std::vector<int>;

Bytes Pixels(const tbPicture& p) {
  Bytes out;
  for (std::int16_t y = 0; y < p.Height(); ++y)
    for (std::int16_t x = 0; x < p.Width(); ++x) out.push_back(p.Pixel(x, y));
  return out;
}

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
  EXPECT_EQ(Ints({canvas.rowBytes, canvas.width, canvas.height}), Ints({4, 4, 3}));
  canvas.Clear(0, 0, 4, 3, 5, nullptr, 0);
  canvas.Clear(-2, 1, 2, 9, 7, nullptr, 0);  // clipped to columns 0-1, rows 1-2
  canvas.image[11] = 42;
  const Bytes want = {5, 5, 5, 5, 7, 7, 5, 5, 7, 7, 5, 42};
  EXPECT_EQ(Bytes(canvas.image, canvas.image + 12), want);
  tbPicture pict;
  QvCanvasUtil util;
  EXPECT_EQ(pict.Pic(), nullptr);
  ASSERT_NE(util.GetPICT(&canvas, 4, 3, &pict, 0, 0, 4, 3, nullptr), 0);
  EXPECT_TRUE(pict.Pic() && pict.Pic() != canvas.image && pict.ColorTable() == table);  // a copy
  EXPECT_EQ(Pixels(pict), want);
  EXPECT_EQ(pict.Pixel(4, 0), 0);
  // An area partly outside the canvas is clipped to it; one wholly outside
  // or without a canvas gives nothing.
  ASSERT_NE(util.GetPICT(&canvas, 4, 3, &pict, 2, 1, 10, 10, nullptr), 0);
  EXPECT_EQ(Pixels(pict), Bytes({5, 5, 5, 42}));
  EXPECT_EQ(util.GetPICT(&canvas, 4, 3, &pict, 4, 0, 8, 3, nullptr) +
                util.GetPICT(nullptr, 4, 3, &pict, 0, 0, 4, 3, nullptr),
            0);
  pict.Dispose();
  EXPECT_EQ(pict.Pic(), nullptr);
  pict.Dispose();
  // Bad sizes leave nothing behind (failed allocations: the toolbox sweep).
  QvCanvas empty;
  EXPECT_EQ(Ints({empty.New(0, 5), empty.New(5, -1)}), Ints({0, 0}));
  EXPECT_EQ(empty.image, nullptr);
  empty.Clear(0, 0, 5, 5, 1, nullptr, 0);  // no image: nothing
  EXPECT_EQ(util.GetPICT(&empty, 5, 5, &pict, 0, 0, 5, 5, nullptr), 0);
  unsigned char px[4] = {1, 2, 3, 4};
  EXPECT_EQ(pict.Set(px, 1, 2, 2, nullptr) + pict.Set(nullptr, 2, 2, 2, nullptr), 0);
}

TEST(CanvasTest, PointerListsAndDependables) {
  CPtrList list, small(4);
  int values[25];
  EXPECT_EQ(Ints({list.GetBlockSize(), CPtrList(0).GetBlockSize()}), Ints({10, 1}));
  QvFailAllocation(0);
  for (int i = 0; i < 25; ++i) ASSERT_TRUE(list.AddTail(&values[i]));
  EXPECT_EQ(Ints({QvAllocationCount(), list.GetCount()}), Ints({3, 25}));  // 10, 20, 30
  EXPECT_TRUE(list.GetAt(24) == &values[24] && !list.GetAt(25) && !list.GetAt(-1));
  EXPECT_TRUE(list.Remove(&values[0]) && !list.Remove(&values[0]));
  EXPECT_TRUE(list.GetAt(0) == &values[1] && list.GetCount() == 24);
  for (int i = 0; i < 5; ++i) ASSERT_TRUE(small.AddTail(&values[i]));
  EXPECT_EQ(small.GetAt(4), &values[4]);
  small.RemoveAll();
  EXPECT_TRUE(small.IsEmpty());
  MDependable subject;
  struct Watcher : MDependable {
    Ints seen;  // what was changed; negated when the sender is not the subject
    MDependable* subject = nullptr;
    void DoUpdate(int what, MDependable* sender, void*, void*) override {
      seen.push_back(sender == subject ? what : -what);
    }
  } a, b;
  a.subject = b.subject = &subject;
  EXPECT_TRUE(subject.AddDependent(&a) && subject.AddDependent(&b) && subject.AddDependent(&a));
  EXPECT_FALSE(subject.AddDependent(nullptr));
  EXPECT_EQ(Ints({subject.Dependents().GetCount(), subject.Dependents().GetBlockSize()}),
            Ints({2, 10}));  // a is not added twice
  subject.Changed(3, nullptr);
  EXPECT_TRUE(subject.RemoveDependent(&a));
  subject.Changed(4, nullptr);
  EXPECT_TRUE(a.seen == Ints({3}) && b.seen == Ints({3, 4}) && subject.IsMarked() == 0);
  subject.SetMark(1);
  EXPECT_EQ(subject.IsMarked(), 1);
}

}  // namespace

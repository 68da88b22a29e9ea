// A host program outside the project: builds a one-frame movie and draws it.
#include <qvmovie/QvMovie.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>

// The host's own platform names, as a program ported from older code may have
// them. They must neither clash with the library's headers nor take over the
// library's clock and memory: the host's allocator fails and its clock stands
// still, yet the library allocates and its clocks run.
static int tb = 3;
unsigned int GetTickCount() { return 7; }
void* GlobalAlloc(unsigned int, std::size_t) { return nullptr; }
void* GlobalFree(void* block) { return block; }
void SetRect(tbRect*, int, int, int, int) {}

int main() {
  unsigned char picture[4 * 2] = {10, 11, 12, 13, 20, 21, 22, 23};
  QvAFrame anim;
  anim.Reg(0, 0, 0, 4, 2, 0, 0, 10);
  anim.SetImage(0, picture, 4, 4, 2);

  QvMCast cast;
  short id = cast.RegAFrame(-1, &anim, 0, "sprite", &anim);  // a const char* name
  tbColorTable table(tbColorTable::kStandard);
  cast.RegOrgCTable(id, &table, nullptr, "sprite");
  // A literal 0 id means the id (the record twins stay out of the way).
  char dirs = 0;
  if (id != 0 || !cast.AFrame(0) || cast.IsScroll(0, &dirs) || !cast.SetStartEnd(0, 0, 10)) {
    std::fprintf(stderr, "the by-id conveniences failed\n");
    return 1;
  }

  QvMLayer layers;
  layers.New(0, 1);
  layers.RegCast(0, &cast, id, -1);

  tbGWorld* world = nullptr;
  tbRect bounds(0, 0, 8, 4);
  if (!qv::tb.NewGWorld(&world, tbToolBox::kDepth8, &bounds, &table)) return 1;
  tbRect area(0, 0, 8, 4);
  layers.DrawPicture(0, world->PortPixMap(), &area);
  // The anchor (top-left pixel) lands at the centre (4, 2).
  unsigned char got = world->PortPixMap()->Pixel(4, 2);
  qv::tb.DisposeGWorld(world);
  tbColorTable colours;
  if (!layers.GetCTable(0, &table, &colours) || colours != table) return 1;
  if (got != 10) {
    std::fprintf(stderr, "expected 10 at (4, 2), got %d\n", got);
    return 1;
  }
  // A playing clock moves on the library's own millisecond count.
  QvMPlayer clock;
  clock.SetMode(QvMPlayer::kPlayLoop);
  clock.SetEnd(1000);
  clock.Play(60);
  const std::uint32_t start = qv::GetTickCount();
  while (qv::GetTickCount() - start < 100 && GetTickCount() == 7) {
  }
  if (clock.Cur() < 3 || tb != 3) {
    std::fprintf(stderr, "the library's clock did not run (frame %d)\n", static_cast<int>(clock.Cur()));
    return 1;
  }
  std::puts("consumer ok");
  return 0;
}

// A host program outside the project: builds a one-frame movie and draws it.
#include <qvmovie/QvMovie.h>

#include <cstdio>

int main() {
  unsigned char picture[4 * 2] = {10, 11, 12, 13, 20, 21, 22, 23};
  QvAFrame anim;
  anim.Reg(0, 0, 0, 4, 2, 0, 0, 10);
  anim.SetImage(0, picture, 4, 4, 2);

  QvMCast cast;
  unsigned char name[] = "sprite";
  short id = cast.RegAFrame(-1, &anim, 0, name, &anim);
  tbColorTable table(72);
  cast.RegOrgCTable(id, &table, nullptr, name);

  QvMLayer layers;
  layers.New(0, 1);
  layers.RegCast(0, &cast, id, -1);

  tbGWorld* world = nullptr;
  tbRect bounds(0, 0, 8, 4);
  if (!tb.NewGWorld(&world, 8, &bounds, &table)) return 1;
  tbRect area(0, 0, 8, 4);
  layers.DrawPicture(0, world->PortPixMap(), &area);
  // The anchor (top-left pixel) lands at the centre (4, 2).
  unsigned char got = world->PortPixMap()->Pixel(4, 2);
  tb.DisposeGWorld(world);
  if (got != 10) {
    std::fprintf(stderr, "expected 10 at (4, 2), got %d\n", got);
    return 1;
  }
  std::puts("consumer ok");
  return 0;
}

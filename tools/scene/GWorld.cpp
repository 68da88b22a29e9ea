#include "scene/GWorld.h"

#include <cstddef>
#include <cstring>

#include "toolbox/tbGWorld.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbToolBox.h"

namespace qvscene {

GWorld::GWorld(std::int16_t width, std::int16_t height, tbColorTable* table) {
  tbRect bounds(0, 0, width, height);
  if (!qv::tb.NewGWorld(&world_, tbToolBox::kDepth8, &bounds, table)) world_ = nullptr;
}

GWorld::~GWorld() {
  if (world_) qv::tb.DisposeGWorld(world_);
}

tbPixMap* GWorld::PixMap() { return world_ ? world_->PortPixMap() : nullptr; }

void GWorld::Clear(unsigned char index) {
  if (!world_) return;
  tbPixMap* pm = world_->PortPixMap();
  const tbRect& b = pm->Bounds();
  for (std::int32_t y = 0; y < b.bottom - b.top; ++y) {
    std::memset(pm->TopAddr() + static_cast<std::ptrdiff_t>(y) * pm->Offset(), index,
                static_cast<std::size_t>(b.right - b.left));
  }
}

}  // namespace qvscene

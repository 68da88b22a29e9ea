#include "toolbox/tbGWorld.h"

#include "toolbox/QvPlatform.h"

// The world owns its pixel buffer.
tbGWorld::~tbGWorld() {
  qv::GlobalFree(pixMap.base);
  pixMap.base = nullptr;
}

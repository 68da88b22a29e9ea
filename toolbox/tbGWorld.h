#pragma once

#include "toolbox/tbColorTable.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"

// An 8-bit off-screen world: a pixel buffer with its bounds and colour table.
// Made by tbToolBox::NewGWorld and freed by tbToolBox::DisposeGWorld.
class tbGWorld {
 public:
  tbGWorld(const tbGWorld&) = delete;
  tbGWorld& operator=(const tbGWorld&) = delete;
  virtual ~tbGWorld();

  tbPixMap* PortPixMap() { return &pixMap; }
  tbColorTable* CTable() { return &cTable; }

  tbRect bounds;

 private:
  friend class tbToolBox;
  tbGWorld() = default;
  tbPixMap pixMap;
  tbColorTable cTable;
};

/// \file tbGWorld.h
/// \brief tbGWorld, an 8-bit off-screen world.
#pragma once

#include "toolbox/tbColorTable.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"

/// An 8-bit off-screen world: a pixel buffer with its bounds and colour
/// table. Only tbToolBox::NewGWorld() makes one; the receiver owns it and
/// frees it with tbToolBox::DisposeGWorld(). The world owns its pixel buffer.
class tbGWorld {
 public:
  tbGWorld(const tbGWorld&) = delete;
  tbGWorld& operator=(const tbGWorld&) = delete;
  /// Frees the pixel buffer.
  virtual ~tbGWorld();

  /// \return The world's pixel map (rows the width apart), owned by the
  ///         world and valid as long as it.
  tbPixMap* PortPixMap() { return &pixMap; }
  /// \return The world's colour table, owned by the world.
  tbColorTable* CTable() { return &cTable; }

  /// The bounds: (0, 0, width, height), in pixels.
  tbRect bounds;

 private:
  friend class tbToolBox;
  tbGWorld() = default;
  tbPixMap pixMap;
  tbColorTable cTable;
};

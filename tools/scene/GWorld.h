#pragma once

#include <cstdint>

class tbColorTable;
class tbGWorld;
class tbPixMap;

namespace qvscene {

// An 8-bit off-screen world of the toolbox, made at construction and
// disposed at destruction.
class GWorld {
 public:
  GWorld(std::int16_t width, std::int16_t height, tbColorTable* table);
  ~GWorld();
  GWorld(const GWorld&) = delete;
  GWorld& operator=(const GWorld&) = delete;

  bool Ok() const { return world_ != nullptr; }
  tbGWorld* World() { return world_; }
  tbPixMap* PixMap();
  // Sets every pixel to index.
  void Clear(unsigned char index);

 private:
  tbGWorld* world_ = nullptr;
};

}  // namespace qvscene

#pragma once

#include "toolbox/BRegion.h"

// The toolbox's region, the mask of CopyBits.
class tbRegion : public BRegion {
 public:
  tbRegion() = default;
  ~tbRegion() override;
};

/// \file tbRegion.h
/// \brief tbRegion, the mask region of tbToolBox::CopyBits().
#pragma once

#include "toolbox/BRegion.h"

/// The toolbox's region, the mask of tbToolBox::CopyBits(): a BRegion with
/// nothing added. Make it with New() before shaping it.
class tbRegion : public BRegion {
 public:
  /// An object without a region.
  tbRegion() = default;
  /// Frees the region.
  ~tbRegion() override;
};

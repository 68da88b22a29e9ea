/// \file QvAColorEntries.h
/// \brief Whole-entry writes shared by the colour animations' computations
/// (internal to the library).
#pragma once

#include <cstdint>
#include <cstring>

#include "toolbox/tbColorTable.h"
#include "toolbox/tbRGBColor.h"

namespace qvacolor {

/// The entry at dst takes colour c, as SetCTTable would give it, in one
/// store: every entry and c are complete tbRGBColor objects, so the bytes of
/// c are those of any entry of its colour. dst and c may be the same.
inline void PutEntry(tbRGBColor* dst, const tbRGBColor* c) {
  std::memmove(static_cast<void*>(dst), static_cast<const void*>(c), sizeof(tbRGBColor));
}

}  // namespace qvacolor

// Helpers shared by the sources of the cast store (not part of its interface).
#pragma once

#include <cstdint>
#include <limits>

#include "acolor/QvAColor.h"
#include "acolor/QvACycle.h"
#include "cast/QvMCast.h"
#include "cast/QvMCastInfo.h"
#include "player/QvMCastList.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"

namespace qvcast {

// Attachment mask bits.
constexpr std::uint32_t kMaskFrame = 0x010;
constexpr std::uint32_t kMaskDftAnc = 0x020;
constexpr std::uint32_t kMaskLeft = 0x040;
constexpr std::uint32_t kMaskRight = 0x080;
constexpr std::uint32_t kMaskUp = 0x100;
constexpr std::uint32_t kMaskDown = 0x200;

// Scroll direction bits.
constexpr unsigned char kScrollLeft = 1;
constexpr unsigned char kScrollRight = 2;
constexpr unsigned char kScrollUp = 4;
constexpr unsigned char kScrollDown = 8;

// Index of the frame animation's and the Dft entries' reference lists.
constexpr int kFrameList = 4;
constexpr int kDftList = 5;

// The low 16 bits of a value, as a signed 16-bit number.
inline std::int16_t Low16(std::uint32_t v) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
}

// 32-bit sum and difference taken modulo 2^32.
inline std::int32_t Add32(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
inline std::int32_t Sub32(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// A 16-bit sum of two values taken as 16-bit numbers.
inline std::int16_t Sum16(std::int32_t a, std::int32_t b) {
  return Low16(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

// Truncates toward zero to a 32-bit integer. A value that has no 32-bit
// representation (NaN, infinities, out of range) gives the integer
// "indefinite" value INT32_MIN, as the processor's own conversion does.
inline std::int32_t Trunc32(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(v);
}

// Elapsed time since start as a double: the 32-bit difference, wrapping.
inline double Elapsed(std::int32_t time, std::int32_t start) {
  return static_cast<double>(Sub32(time, start));
}

inline bool InRange(const QvMCastInfo* info, std::int32_t time) {
  return time >= info->start && time <= info->end;
}

// Copies the size and entries 0 to CTSize() of src into dst.
inline void CopyCTable(tbColorTable* dst, const tbColorTable* src) {
  if (src->CTSize() == 255) {
    *dst = *src;
    return;
  }
  dst->SetCTSize(src->CTSize());
  for (std::int16_t i = 0; i <= src->CTSize(); ++i) dst->SetCTTable(i, src->CTTable(i));
}

// Records list as the member's back-reference of one attachment and makes the
// member known to it. The list that was recorded before is told to forget the
// member, unless it is the new list or the list of the animation being
// registered (an animation that detaches itself passes a null list while it
// walks its own entries, and empties its list afterwards). When the list
// cannot take the member (no memory for its entry), the member keeps no
// back-reference: the list would never clear it, and the member's later
// removal would reach a list that may be gone. Neither is a member whose id
// is negative entered: a call made for it from the list (an animation passing
// a change on) would take the id as "make a new member" and never reach it,
// so the member would keep a reference to a list that forgets it.
inline void SetList(QvMCast* store, QvMCastInfo* info, int index, QvMCastList* list,
                    QvMCastList* animList) {
  QvMCastList* old = info->lists[index];
  if (old && old != list && old != animList) old->Del(store, info->id);
  info->lists[index] = (list && info->id >= 0 && list->Reg(store, info->id)) ? list : nullptr;
}

// Makes a private copy of a colour animation of the given kind; null when the
// animation is not of that kind or the copy cannot be allocated.
template <class K>
QvAColor* CopyColor(QvAColor* anim) {
  K* src = dynamic_cast<K*>(anim);
  if (!src) return nullptr;
  K* copy = QvNew<K>();
  if (copy) src->Dup(copy);
  return copy;
}

/// What a member's colour table was computed from.
struct ColourKey {
  /// False until a computation filled the key in, and after any change.
  bool valid = false;
  /// Every computation of the key succeeded: its result depends on nothing
  /// else (a failing one passes on an older output).
  bool complete = false;
  /// For each colour kind, the copy (null when absent).
  QvAColor* anim[4] = {nullptr, nullptr, nullptr, nullptr};
  /// For each colour kind, the copy's change count.
  std::uint32_t change[4] = {0, 0, 0, 0};
  /// For each colour kind, the frame the copy computed.
  std::int32_t frame[4] = {0, 0, 0, 0};

  /// True when both keys are valid and name the same copies, changes and
  /// frames.
  bool Same(const ColourKey& o) const {
    if (!valid || !o.valid) return false;
    for (int k = 0; k < 4; ++k) {
      if (anim[k] != o.anim[k] || change[k] != o.change[k] || frame[k] != o.frame[k]) return false;
    }
    return true;
  }
};

/// A record as the store makes it.
struct IndexedInfo : QvMCastInfo {
  /// The next record of its bucket of the lookup table.
  QvMCastInfo* idNext = nullptr;
  /// Its creation number.
  std::uint64_t serial = 0;
  /// The output tables of the member's colour copies are those of this key.
  ColourKey copiesKey;
  /// The colour table of orgGWorld is the result of this key.
  ColourKey worldKey;
  /// Set by a computation of the colours that changed only the entries of
  /// this cycle copy's ranges of a result the world held: the world's table
  /// takes those entries alone.
  QvACycle* worldRanges = nullptr;
};

inline IndexedInfo* Indexed(QvMCastInfo* info) { return static_cast<IndexedInfo*>(info); }

// The member's colour copies, own table or world changed: nothing computed
// before is reused.
inline void ForgetColours(QvMCastInfo* info) {
  Indexed(info)->copiesKey.valid = false;
  Indexed(info)->worldKey.valid = false;
}

}  // namespace qvcast

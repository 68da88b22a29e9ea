#include "cast/QvMCast.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "acolor/QvAColor.h"
#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCastLocal.h"
#include "player/QvMCastList.h"
#include "toolbox/QvCanvas.h"
#include "toolbox/QvCanvasUtil.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbToolBox.h"

using namespace qvcast;

// ---------------------------------------------------------------------------
// Anchor motion paths

std::int16_t QvMCast::RegAnc(std::int16_t id, QvMCastAnc* anchors, std::int16_t count, char type,
                             unsigned char* name) {
  // The copy is made before the member is chosen (the anchors may be a
  // member's own). A count below 1 allocates nothing: the member then has no
  // path, so that no folding or lookup ever works on an empty path.
  std::unique_ptr<QvMCastAnc[]> copy;
  if (anchors) {
    copy.reset(QvNewArray<QvMCastAnc>(count));
    if (copy) {
      for (std::int16_t i = 0; i < count; ++i) {
        copy[i].point = anchors[i].point;
        copy[i].flag = anchors[i].flag;
      }
    }
  }
  QvMCastInfo* info = localRegTarget(&id, name);
  if (!info) return -1;
  delete[] info->anc;
  info->anc = copy.release();
  info->ancLast = info->anc ? static_cast<std::int16_t>(count - 1) : 0;
  if (type != 0) info->ancType = static_cast<signed char>(type);
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  localDeleteIcon(info);
  SetName(info, name);
  return id;
}

char QvMCast::DelAnc(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  DelAnc(info);
  return 1;
}

void QvMCast::DelAnc(QvMCastInfo* info) {
  delete[] info->anc;
  info->anc = nullptr;
  info->ancLast = 0;
  ResetActFlag(info);
  ResetShowFlag(info);
  localDeleteIcon(info);
}

char QvMCast::SetAnc(std::int16_t id, std::int16_t index, const tbPoint& point, char flag) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->anc || index < 0 || index > info->ancLast) return 0;
  info->anc[index].point = point;
  info->anc[index].flag = flag;
  return 1;
}

char QvMCast::OffsetAnc(std::int16_t id, std::int16_t dx, std::int16_t dy) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->anc) return 0;
  for (std::int32_t i = 0; i <= info->ancLast; ++i) {
    tbPoint& p = info->anc[i].point;
    p.x = Sum16(p.x, dx);
    p.y = Sum16(p.y, dy);
  }
  return 1;
}

char QvMCast::localGetAnc(QvMCastInfo* info, std::int16_t* index) {
  // The path is never empty (ancLast >= 0). Types 2 and 3 fold with the
  // period of the path in 32-bit arithmetic, which gives the same index as
  // repeated mirroring or wrapping and also ends for the index -32768.
  const std::int32_t last = info->ancLast;
  std::int32_t k = *index;
  char inside = 1;
  switch (info->ancType) {
    case 1:
      if (k < 0) {
        k = 0;
        inside = 0;
      } else if (k > last) {
        k = last;
        inside = 0;
      }
      break;
    case 2:
      if (last <= 0) {
        k = 0;
      } else if (k < 0 || k > last) {
        const std::int32_t period = 2 * last;
        k %= period;
        if (k < 0) k += period;
        if (k > last) k = period - k;
        inside = 0;
      }
      break;
    case 3:
      if (last <= 0) {
        k = 0;
      } else if (k < 0 || k > last) {
        const std::int32_t period = last + 1;
        k %= period;
        if (k < 0) k += period;
        inside = 0;
      }
      break;
    default:
      k = 0;
      break;
  }
  *index = static_cast<std::int16_t>(k);
  return inside;
}

char QvMCast::ResetAnc(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? ResetAnc(info) : 0;
}

char QvMCast::ResetAnc(QvMCastInfo* info) {
  if (!info->anc) return 0;
  // The length of the range from the low 16 bits of its ends (1 while the
  // range is unset).
  const std::int16_t n = Sum16(Sub32(info->end, info->start), 1);
  // The re-sampled anchors are gathered into a new array, which becomes the
  // path (no path when the range is empty or the array cannot be made).
  QvMCastAnc* path = n > 0 ? QvNewArray<QvMCastAnc>(n) : nullptr;
  if (path) {
    for (std::int16_t i = 0; i < n; ++i) {
      std::int16_t k = Sum16(Trunc32(static_cast<double>(i) * info->ancStep), info->ancOffset);
      const char inside = localGetAnc(info, &k);
      path[i].point = info->anc[k].point;
      path[i].flag = inside ? info->anc[k].flag : 0;
    }
  }
  delete[] info->anc;
  info->anc = path;
  info->ancLast = path ? static_cast<std::int16_t>(n - 1) : 0;
  info->ancStep = 1.0;
  info->ancOffset = 0;
  localDeleteIcon(info);
  return 1;
}

char QvMCast::InbetweenAnc(std::int16_t id, char mode) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (!ResetAnc(info)) return 0;
  if (info->ancSelStart > info->ancLast || info->ancSelEnd < 0) return 0;
  return InbetweenAnc(info, mode);
}

char QvMCast::InbetweenAnc(QvMCastInfo* info, char mode) {
  if (!info->anc) return 0;
  std::int16_t lo = Low16(static_cast<std::uint32_t>(info->ancSelStart));
  if (lo < 0) lo = 0;
  std::int16_t hi = Low16(static_cast<std::uint32_t>(info->ancSelEnd));
  if (hi > info->ancLast) hi = info->ancLast;
  // A span whose low 16 bits do not form an ascending range inside the path
  // gives nothing to fill.
  if (hi < 0 || lo > hi) return 0;
  const std::int16_t outCount = static_cast<std::int16_t>(hi - lo + 1);
  std::int16_t between = 0;
  for (std::int32_t j = lo + 1; j < hi; ++j) {
    if (info->anc[j].flag == 1) ++between;
  }
  const std::int16_t keyCount = static_cast<std::int16_t>(2 + between);
  tbPoint* out = QvNewArray<tbPoint>(outCount);
  if (!out) return 0;
  tbPoint* keys = QvNewArray<tbPoint>(keyCount);
  std::int16_t* keyIndex = keys ? QvNewArray<std::int16_t>(keyCount) : nullptr;
  if (!keys || !keyIndex) {
    delete[] out;
    delete[] keys;
    return 0;
  }
  std::int16_t key = 0;
  keys[key] = info->anc[lo].point;
  keyIndex[key++] = lo;
  for (std::int32_t j = lo + 1; j < hi; ++j) {
    if (info->anc[j].flag == 1) {
      keys[key] = info->anc[j].point;
      keyIndex[key++] = static_cast<std::int16_t>(j);
    }
  }
  keys[key] = info->anc[hi].point;
  keyIndex[key] = hi;
  InbetweenAnc(keys, keyIndex, keyCount, out, outCount, mode);
  info->anc[lo].flag = 1;
  for (std::int32_t j = lo + 1; j < hi; ++j) {
    info->anc[j].point = out[j - lo];
    if (info->anc[j].flag == 0) info->anc[j].flag = 2;
  }
  info->anc[hi].flag = 1;
  delete[] out;
  delete[] keys;
  delete[] keyIndex;
  return 1;
}

char QvMCast::SetAncType(std::int16_t id, char type) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  SetAncType(info, type);
  return 1;
}

void QvMCast::SetAncType(QvMCastInfo* info, char type) {
  info->ancType = static_cast<signed char>(type);
}

char QvMCast::SetAncOffset(std::int16_t id, std::int16_t offset) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  // Wraps by the number of anchors (the arithmetic remainder of the repeated
  // 16-bit additions and subtractions).
  const std::int32_t n = static_cast<std::int32_t>(info->ancLast) + 1;
  std::int32_t k = offset;
  if (n > 0) {
    k %= n;
    if (k < 0) k += n;
  } else {
    k = 0;
  }
  info->ancOffset = static_cast<std::int16_t>(k);
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  return 1;
}

char QvMCast::SetAncOffset(std::int16_t id, tbPoint* point) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !point) return 0;
  info->ancOffset = 0;
  if (info->anc) {
    const std::int16_t px = Low16(static_cast<std::uint32_t>(point->x));
    const std::int16_t py = Low16(static_cast<std::uint32_t>(point->y));
    // Squared distances in 32-bit integers, wrapping as the original did.
    auto distance = [&](const tbPoint& a) {
      const std::int32_t dx = Low16(static_cast<std::uint32_t>(a.x)) - px;
      const std::int32_t dy = Low16(static_cast<std::uint32_t>(a.y)) - py;
      const std::uint32_t sq = static_cast<std::uint32_t>(dx) * static_cast<std::uint32_t>(dx) +
                               static_cast<std::uint32_t>(dy) * static_cast<std::uint32_t>(dy);
      return std::sqrt(static_cast<double>(static_cast<std::int32_t>(sq)));
    };
    double best = distance(info->anc[0].point);
    for (std::int16_t i = 1; i <= info->ancLast; ++i) {
      const double d = distance(info->anc[i].point);
      if (d < best) {
        best = d;
        info->ancOffset = i;
      }
    }
  }
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  return 1;
}

char QvMCast::GetAncOffset(std::int16_t id, std::int16_t* offset) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !offset) return 0;
  *offset = info->ancOffset;
  return 1;
}

char QvMCast::GetAncNum(std::int16_t id, std::int16_t* num) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !num) return 0;
  *num = Low16(static_cast<std::uint32_t>(info->ancLast) + 1u);
  return 1;
}

char QvMCast::SetAncStep(std::int16_t id, double step) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->ancStep = step;
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  return 1;
}

char QvMCast::GetAncStep(std::int16_t id, double* step) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !step) return 0;
  *step = info->ancStep;
  return 1;
}

char QvMCast::SetAncCount(std::int16_t id, double count) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->ancStep = (static_cast<double>(info->ancLast) + 1.0) / count;
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  return 1;
}

char QvMCast::GetAncCount(std::int16_t id, std::int16_t d, double* count) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !count) return 0;
  const std::int32_t product = (static_cast<std::int32_t>(info->ancLast) + 1) * d;
  *count = static_cast<double>(product) / info->ancStep;
  return 1;
}

char QvMCast::SetAncSelectArea(std::int16_t id, std::int32_t a, std::int32_t b) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->ancSelStart = a < b ? a : b;
  info->ancSelEnd = a < b ? b : a;
  return 1;
}

char QvMCast::GetAncSelectArea(std::int16_t id, std::int32_t* a, std::int32_t* b) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (a) *a = info->ancSelStart;
  if (b) *b = info->ancSelEnd;
  return 1;
}

char QvMCast::GetAnc(std::int16_t id, std::int16_t index, tbPoint* point, char* flag) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->anc || index < 0 || index > info->ancLast) return 0;
  if (point) *point = info->anc[index].point;
  if (flag) *flag = info->anc[index].flag;
  return 1;
}

char QvMCast::GetAnc(std::int16_t id, std::int32_t time, tbPoint* point, char* flag) {
  QvMCastInfo* info = localSearch(id);
  return info ? localAncAt(info, time, point, flag) : 0;
}

char QvMCast::localAncAt(QvMCastInfo* info, std::int32_t time, tbPoint* point, char* flag) {
  if (!info->anc || !InRange(info, time)) return 0;
  std::int16_t k = Sum16(Trunc32(Elapsed(time, info->start) * info->ancStep), info->ancOffset);
  localGetAnc(info, &k);
  if (point) *point = info->anc[k].point;
  if (flag) *flag = info->anc[k].flag;
  return 1;
}

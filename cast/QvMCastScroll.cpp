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
// Scrolling

char QvMCast::SetScrStepH(std::int16_t id, double step) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->scrStepH = step;
  return 1;
}

char QvMCast::SetScrStepV(std::int16_t id, double step) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->scrStepV = step;
  return 1;
}

char QvMCast::GetScrStepH(std::int16_t id, double* step) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !step) return 0;
  *step = info->scrStepH;
  return 1;
}

char QvMCast::GetScrStepV(std::int16_t id, double* step) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !step) return 0;
  *step = info->scrStepV;
  return 1;
}

namespace {

// Width and height of the first image of a frame animation; 0 and 0 when it
// has none.
void FirstImageSize(QvAFrame* anim, std::int16_t* width, std::int16_t* height) {
  std::int16_t w = 0, h = 0;
  const std::int16_t first = 0;
  if (!anim->GetMImage(first, nullptr, nullptr, &w, &h, nullptr, nullptr)) w = h = 0;
  *width = w;
  *height = h;
}

}  // namespace

char QvMCast::SetScrCountH(std::int16_t id, double count) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (!info->aFrame) {
    info->scrStepH = 0.0;
  } else {
    std::int16_t w, h;
    FirstImageSize(info->aFrame, &w, &h);
    info->scrStepH = static_cast<double>(w) / count;
  }
  return 1;
}

char QvMCast::SetScrCountV(std::int16_t id, double count) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (!info->aFrame) {
    info->scrStepV = 0.0;
  } else {
    std::int16_t w, h;
    FirstImageSize(info->aFrame, &w, &h);
    info->scrStepV = static_cast<double>(h) / count;
  }
  return 1;
}

char QvMCast::GetScrCountH(std::int16_t id, std::int16_t d, double* count) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !count) return 0;
  if (!info->aFrame) {
    *count = 0.0;
  } else {
    std::int16_t w, h;
    FirstImageSize(info->aFrame, &w, &h);
    *count = static_cast<double>(static_cast<std::int32_t>(w) * d) / info->scrStepH;
  }
  return 1;
}

char QvMCast::GetScrCountV(std::int16_t id, std::int16_t d, double* count) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !count) return 0;
  if (!info->aFrame) {
    *count = 0.0;
  } else {
    std::int16_t w, h;
    FirstImageSize(info->aFrame, &w, &h);
    *count = static_cast<double>(static_cast<std::int32_t>(h) * d) / info->scrStepV;
  }
  return 1;
}

char QvMCast::GetScroll(std::int16_t id, std::int32_t time, std::int16_t* h, std::int16_t* v) {
  QvMCastInfo* info = localSearch(id);
  return info ? localScrollAt(info, time, h, v) : 0;
}

char QvMCast::localScrollAt(QvMCastInfo* info, std::int32_t time, std::int16_t* h,
                            std::int16_t* v) {
  if (!InRange(info, time)) return 0;
  const double e = Elapsed(time, info->start);
  const unsigned char s = static_cast<unsigned char>(info->scroll);
  std::int16_t sh = 0, sv = 0;
  if (s & kScrollLeft) {
    sh = Low16(0u - static_cast<std::uint32_t>(Trunc32(e * info->scrStepH)));
  } else if (s & kScrollRight) {
    sh = Low16(static_cast<std::uint32_t>(Trunc32(e * info->scrStepH)));
  }
  if (s & kScrollUp) {
    sv = Low16(0u - static_cast<std::uint32_t>(Trunc32(e * info->scrStepV)));
  } else if (s & kScrollDown) {
    sv = Low16(static_cast<std::uint32_t>(Trunc32(e * info->scrStepV)));
  }
  if (h) *h = sh;
  if (v) *v = sv;
  return 1;
}

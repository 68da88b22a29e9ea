#include "toolbox/QvCanvasUtil.h"

#include <algorithm>

#include "toolbox/QvCanvas.h"
#include "toolbox/tbPicture.h"

std::int16_t QvCanvasUtil::GetPICT(QvCanvas* canvas, std::int16_t /*width*/,
                                   std::int16_t /*height*/, tbPicture* pict, std::int16_t left,
                                   std::int16_t top, std::int16_t right, std::int16_t bottom,
                                   tbRegion* /*region*/) {
  if (!canvas || !pict) return 0;
  canvas->localGetImg();
  if (!canvas->image) return 0;
  const int l = std::max<int>(left, 0);
  const int t = std::max<int>(top, 0);
  const int r = std::min<int>(right, canvas->width);
  const int b = std::min<int>(bottom, canvas->height);
  if (r <= l || b <= t) return 0;
  const unsigned char* first = canvas->image + static_cast<long>(t) * canvas->rowBytes + l;
  return pict->Set(first, canvas->rowBytes, static_cast<std::int16_t>(r - l),
                   static_cast<std::int16_t>(b - t), &canvas->CTable());
}

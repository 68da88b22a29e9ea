#include "layer/QvMLayer.h"

#include <cstring>

#include "cast/QvMCast.h"
#include "player/QvMCastList.h"
#include "toolbox/QvPlatform.h"

namespace {

// Time arithmetic wraps around modulo 2^32.
std::int32_t Add(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
std::int32_t Sub(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

const std::int32_t kEarliest = -2147483647;
const std::int32_t kLatest = 2147483647;

// A free interval of time, both ends included, in a list ordered by time.
struct FreeInterval {
  std::int32_t from = 0;
  std::int32_t to = 0;
  FreeInterval* next = nullptr;
};

// Owns the temporary interval list of a move fitting.
class FreeIntervals {
 public:
  FreeIntervals() = default;
  FreeIntervals(const FreeIntervals&) = delete;
  FreeIntervals& operator=(const FreeIntervals&) = delete;
  ~FreeIntervals() {
    while (first != nullptr) {
      FreeInterval* next = first->next;
      delete first;
      first = next;
    }
  }

  FreeInterval* First() const { return first; }

  // The intervals around the first neighbour; false when memory is short.
  bool Start(std::int32_t s, std::int32_t e) {
    FreeInterval* before = QvNew<FreeInterval>();
    if (before == nullptr) return false;
    first = before;
    FreeInterval* after = QvNew<FreeInterval>();
    if (after == nullptr) return false;
    before->from = kEarliest;
    before->to = Sub(s, 1);
    before->next = after;
    after->from = Add(e, 1);
    after->to = kLatest;
    return true;
  }

  // Takes s..e out of the first interval that holds all of it; nothing
  // happens when none does. False when memory is short.
  bool Take(std::int32_t s, std::int32_t e) {
    for (FreeInterval* in = first; in != nullptr; in = in->next) {
      if (in->from <= s && in->to >= e) {
        FreeInterval* rest = QvNew<FreeInterval>();
        if (rest == nullptr) return false;
        rest->from = Add(e, 1);
        rest->to = in->to;
        rest->next = in->next;
        in->to = Sub(s, 1);
        in->next = rest;
        return true;
      }
    }
    return true;
  }

 private:
  FreeInterval* first = nullptr;
};

}  // namespace

QvMLayer::QvMLayer()
    : head(nullptr), found(nullptr), iter(nullptr), newLayer(1), comment(nullptr), commentSize(0) {}

QvMLayer::~QvMLayer() {
  DelAll();
  DelComment();
}

// ---- Layer table ----

QvMLayerInfo* QvMLayer::localSearch(std::int16_t index) {
  found = nullptr;
  if (index < 0) return nullptr;
  std::int16_t i = 0;
  for (QvMLayerInfo* layer = head; layer != nullptr; layer = layer->next) {
    if (i == index) {
      found = layer;
      break;
    }
    i = static_cast<std::int16_t>(i + 1);
  }
  return found;
}

std::int16_t QvMLayer::Count() {
  std::int16_t n = 0;
  for (QvMLayerInfo* layer = head; layer != nullptr; layer = layer->next) {
    n = static_cast<std::int16_t>(n + 1);
  }
  return n;
}

std::int16_t QvMLayer::ID2Index(std::int16_t id) {
  std::int16_t i = 0;
  for (QvMLayerInfo* layer = head; layer != nullptr; layer = layer->next) {
    if (layer->id == id) return i;
    i = static_cast<std::int16_t>(i + 1);
  }
  return -1;
}

std::int16_t QvMLayer::Index2ID(std::int16_t index) {
  QvMLayerInfo* layer = localSearch(index);
  return layer != nullptr ? layer->id : static_cast<std::int16_t>(-1);
}

std::int16_t QvMLayer::New(std::int16_t index, std::int16_t id) {
  QvMLayerInfo* layer = QvNew<QvMLayerInfo>();
  if (layer == nullptr) return -1;
  layer->casts = QvNew<QvMCastList>();
  if (layer->casts == nullptr) {
    delete layer;
    return -1;
  }
  layer->id = id;

  QvMLayerInfo* at = localSearch(index);
  if (at != nullptr) {
    // Inserted before the layer at index, taking its place.
    layer->prev = at->prev;
    layer->next = at;
    if (at->prev != nullptr) {
      at->prev->next = layer;
    } else {
      head = layer;
    }
    at->prev = layer;
    return index;
  }
  std::int16_t count = 0;
  QvMLayerInfo* last = nullptr;
  for (QvMLayerInfo* l = head; l != nullptr; l = l->next) {
    last = l;
    count = static_cast<std::int16_t>(count + 1);
  }
  layer->prev = last;
  if (last != nullptr) {
    last->next = layer;
  } else {
    head = layer;
  }
  return count;
}

char QvMLayer::Empty(std::int16_t index) {
  QvMLayerInfo* layer = localSearch(index);
  if (layer == nullptr) return 0;
  layer->casts->DelAll();
  return 1;
}

char QvMLayer::Del(std::int16_t index) {
  QvMLayerInfo* layer = localSearch(index);
  if (layer == nullptr) return 0;
  if (layer->prev != nullptr) {
    layer->prev->next = layer->next;
  } else {
    head = layer->next;
  }
  if (layer->next != nullptr) layer->next->prev = layer->prev;
  // A walk standing on this layer goes on with the one before it.
  if (iter == layer) {
    iter = layer->prev;
    newLayer = 1;
  }
  delete layer->casts;
  delete layer;
  found = head;
  return 1;
}

void QvMLayer::DelAll() {
  QvMLayerInfo* layer = head;
  while (layer != nullptr) {
    QvMLayerInfo* next = layer->next;
    delete layer->casts;
    delete layer;
    layer = next;
  }
  head = nullptr;
  found = nullptr;
  iter = nullptr;
  newLayer = 1;
}

// ---- Cast placement ----

char QvMLayer::RegCast(std::int16_t index, QvMCast* cast, std::int16_t castId, char fit) {
  if (cast == nullptr) return 0;
  QvMLayerInfo* layer = localSearch(index);
  if (layer == nullptr) return 0;
  const char result = layer->casts->Reg(cast, castId);
  if (result == 1) FitCast(index, cast, castId, fit);
  return result;
}

char QvMLayer::DelCast(std::int16_t index, QvMCast* cast, std::int16_t castId) {
  QvMLayerInfo* layer = localSearch(index);
  if (layer == nullptr) return 0;
  return layer->casts->Del(cast, castId);
}

void QvMLayer::DelCast(QvMCast* cast, std::int16_t castId) {
  for (QvMLayerInfo* layer = head; layer != nullptr; layer = layer->next) {
    layer->casts->Del(cast, castId);
  }
}

char QvMLayer::MoveCast(std::int16_t from, QvMCast* cast, std::int16_t castId, std::int16_t to) {
  if (RegCast(to, cast, castId, kFitMove) != 1) return 0;
  return DelCast(from, cast, castId) == 1 ? 1 : 0;
}

char QvMLayer::Copy(std::int16_t index, QvMLayer* target, std::int16_t targetIndex) {
  QvMLayerInfo* layer = localSearch(index);
  if (layer == nullptr) return 0;
  QvMCastList* list = layer->casts;
  QvMCast* cast = nullptr;
  std::int16_t castId = 0;
  for (std::int16_t i = 0; list->Get(i, &cast, &castId); ++i) {
    if (target == nullptr || target->RegCast(targetIndex, cast, castId, kFitNone) != 1) return 0;
    if (i == INT16_MAX) break;
  }
  return 1;
}

char QvMLayer::Get(std::int16_t index, std::int16_t castIndex, QvMCast** cast,
                   std::int16_t* castId) {
  QvMLayerInfo* layer = localSearch(index);
  if (layer == nullptr) return 0;
  return layer->casts->Get(castIndex, cast, castId);
}

char QvMLayer::GetFirst(QvMCast** cast, std::int16_t* castId) {
  iter = head;
  while (iter != nullptr && iter->next != nullptr) iter = iter->next;
  newLayer = 1;
  return GetNext(cast, castId);
}

char QvMLayer::GetNext(QvMCast** cast, std::int16_t* castId) {
  while (iter != nullptr) {
    if (newLayer == 1) {
      if (iter->casts->GetFirst(cast, castId)) {
        newLayer = 0;
        return 1;
      }
    } else {
      if (iter->casts->GetNext(cast, castId)) return 1;
      newLayer = 1;
    }
    iter = iter->prev;
  }
  return 0;
}

std::int32_t QvMLayer::End() {
  std::int32_t end = 0;
  for (QvMLayerInfo* layer = head; layer != nullptr; layer = layer->next) {
    QvMCast* cast = nullptr;
    std::int16_t castId = 0;
    for (std::int16_t i = 0; layer->casts->Get(i, &cast, &castId); ++i) {
      if (cast != nullptr) {
        const std::int32_t e = cast->End(castId);
        if (e > end) end = e;
      }
      if (i == INT16_MAX) break;
    }
  }
  return end;
}

// ---- Fitting ----

char QvMLayer::FitCast(std::int16_t index, QvMCast* cast, std::int16_t castId, char mode) {
  if (mode == kFitNone) return 1;
  QvMLayerInfo* layer = localSearch(index);
  if (layer == nullptr) return 0;
  if (mode < kFitMove || mode > kFitAll) return 1;
  if (cast == nullptr) return 0;
  QvMCastList* list = layer->casts;
  switch (mode) {
    case kFitMove:
      return localFitCastMove(list, cast, castId);
    case kFitTrimStart:
      return localFitCastStart(list, cast, castId);
    case kFitTrimEnd:
      return localFitCastEnd(list, cast, castId);
    default: {
      const char trimmedEnd = localFitCastEnd(list, cast, castId);
      const char trimmedStart = localFitCastStart(list, cast, castId);
      const char moved = localFitCastMove(list, cast, castId);
      return (trimmedEnd || trimmedStart || moved) ? 1 : 0;
    }
  }
}

char QvMLayer::localFitCastStart(QvMCastList* list, QvMCast* cast, std::int16_t castId) {
  std::int32_t start = cast->Start(castId);
  const std::int32_t end = cast->End(castId);
  char changed = 0;
  QvMCast* other = nullptr;
  std::int16_t otherId = 0;
  for (char ok = list->GetFirst(&other, &otherId); ok; ok = list->GetNext(&other, &otherId)) {
    if (other == nullptr) continue;
    const std::int32_t x = Add(other->End(otherId), 1);
    if (start <= x && x <= end) {
      start = x;
      changed = 1;
    }
  }
  if (changed) cast->SetStart(castId, start);
  return changed;
}

char QvMLayer::localFitCastEnd(QvMCastList* list, QvMCast* cast, std::int16_t castId) {
  const std::int32_t start = cast->Start(castId);
  std::int32_t end = cast->End(castId);
  char changed = 0;
  QvMCast* other = nullptr;
  std::int16_t otherId = 0;
  for (char ok = list->GetFirst(&other, &otherId); ok; ok = list->GetNext(&other, &otherId)) {
    if (other == nullptr) continue;
    const std::int32_t x = Sub(other->Start(otherId), 1);
    if (start <= x && x <= end) {
      end = x;
      changed = 1;
    }
  }
  if (changed) cast->SetEnd(castId, end);
  return changed;
}

char QvMLayer::localFitCastMove(QvMCastList* list, QvMCast* cast, std::int16_t castId) {
  QvMCast* other = nullptr;
  std::int16_t otherId = 0;
  char ok = list->GetFirst(&other, &otherId);
  if (!ok) return 0;

  const std::int32_t start = cast->Start(castId);
  const std::int32_t end = cast->End(castId);
  char dirEarlier = 0;
  FreeIntervals free;
  bool first = true;
  for (; ok; ok = list->GetNext(&other, &otherId)) {
    if ((other == cast && otherId == castId) || other == nullptr) continue;
    const std::int32_t s = other->Start(otherId);
    const std::int32_t e = other->End(otherId);

    // The last overlapping neighbour decides the direction.
    if (s <= start && end <= e) {
      dirEarlier = Sub(start, s) < Sub(e, end) ? 1 : 0;
    } else if (start <= s && e <= end) {
      dirEarlier = Sub(s, start) > Sub(end, e) ? 1 : 0;
    } else if (start <= s && s <= end && e > end) {
      dirEarlier = 1;
    } else if (s < start && start <= e && e <= end) {
      dirEarlier = 0;
    }

    const bool stored = first ? free.Start(s, e) : free.Take(s, e);
    if (!stored) return 0;  // short of memory: the member stays where it is
    first = false;
  }

  // Already in free time.
  for (FreeInterval* in = free.First(); in != nullptr; in = in->next) {
    if (in->to >= 0 && in->from <= start && in->to >= end) return 0;
  }

  const std::int32_t length = Sub(end, start);
  auto usable = [length](const FreeInterval* in) {
    return in->from <= in->to && in->to >= 0 && Sub(in->to, in->from) >= length;
  };

  if (dirEarlier) {
    FreeInterval* latest = nullptr;
    for (FreeInterval* in = free.First(); in != nullptr; in = in->next) {
      if (usable(in) && in->to <= end) latest = in;
    }
    if (latest != nullptr) {
      cast->SetStartEnd(castId, Sub(latest->to, length), latest->to);
      return 1;
    }
  }
  for (FreeInterval* in = free.First(); in != nullptr; in = in->next) {
    if (usable(in) && in->from >= start) {
      cast->SetStartEnd(castId, in->from, Add(in->from, length));
      return 1;
    }
  }
  return 0;
}

// ---- Drawing and comment ----

void QvMLayer::DrawPicture(std::int32_t time, tbPixMap* pixMap, tbRect* rect) {
  for (QvMLayerInfo* layer = head; layer != nullptr; layer = layer->next) {
    QvMCast* cast = nullptr;
    std::int16_t castId = 0;
    for (std::int16_t i = 0; layer->casts->Get(i, &cast, &castId); ++i) {
      if (cast != nullptr) cast->DrawPicture(castId, time, pixMap, rect);
      if (i == INT16_MAX) break;
    }
  }
}

char QvMLayer::NewComment(std::uint16_t size) {
  DelComment();
  if (size == 0) return 1;
  void* block = qv::GlobalAlloc(0, size);
  if (block == nullptr) return 0;
  comment = static_cast<unsigned char*>(block);
  commentSize = size;
  return 1;
}

char QvMLayer::SetComment(unsigned char* data, std::uint16_t size) {
  if (!NewComment(size)) return 0;
  if (comment != nullptr && data != nullptr) std::memcpy(comment, data, size);
  return 1;
}

void QvMLayer::DelComment() {
  if (comment == nullptr) return;
  qv::GlobalFree(comment);
  comment = nullptr;
  commentSize = 0;
}

void QvMLayer::GetComment(unsigned char** data, std::uint16_t* size) {
  if (data != nullptr) *data = comment;
  if (size != nullptr) *size = commentSize;
}

char QvMLayer::Load(int) { return 0; }

char QvMLayer::Save(int) { return 0; }

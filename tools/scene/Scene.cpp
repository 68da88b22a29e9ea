#include "scene/Scene.h"

#include <cstring>

#include "acolor/QvAColor.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "scene/GWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbPoint.h"

namespace qvscene {

Scene::Scene() = default;

Scene::~Scene() {
  // The animations leave their members first (each detaches itself from the
  // cast store), then the layers, which only refer to members, then the
  // cast store itself.
  colorAnims_.clear();
  frameAnims_.clear();
  layers_.reset();
  cast_.reset();
}

std::vector<std::int32_t> Scene::Times() const {
  std::vector<std::int32_t> times;
  for (std::int64_t t = from_; t <= to_; t += step_) times.push_back(static_cast<std::int32_t>(t));
  return times;
}

void Scene::DrawMoment(std::int32_t t, tbPixMap* pixMap, const std::function<bool(int)>& shown) {
  if (!pixMap || !pixMap->TopAddr()) return;
  const tbRect& b = pixMap->Bounds();
  for (std::int32_t y = 0; y < b.bottom - b.top; ++y) {
    std::memset(pixMap->TopAddr() + static_cast<std::ptrdiff_t>(y) * pixMap->Offset(), background_,
                static_cast<std::size_t>(b.right - b.left));
  }
  tbRect area = Area();
  bool all = true;
  for (int layer = 0; shown && layer < layers_->Count(); ++layer) all = all && shown(layer);
  if (all) {
    // The whole movie: exactly what the render tool draws.
    layers_->DrawPicture(t, pixMap, &area);
    return;
  }
  for (int layer = 0; layer < layers_->Count(); ++layer) {
    if (!shown(layer)) continue;
    QvMCast* cast = nullptr;
    std::int16_t id = -1;
    for (std::int16_t i = 0; layers_->Get(static_cast<std::int16_t>(layer), i, &cast, &id); ++i)
      if (cast) cast->DrawPicture(id, t, pixMap, &area);
  }
}

void Scene::Palette(std::int32_t t, tbColorTable* out) {
  layers_->GetCTable(t, &basePalette_, out);
}

bool Scene::Render(std::int32_t t, Picture* out) {
  GWorld world(width_, height_, &basePalette_);
  if (!world.Ok()) return false;
  DrawMoment(t, world.PixMap());
  tbColorTable palette;
  Palette(t, &palette);
  out->width = width_;
  out->height = height_;
  out->pixels.resize(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
  tbPixMap* pm = world.PixMap();
  for (std::int32_t y = 0; y < height_; ++y) {
    std::memcpy(out->Row(y), pm->TopAddr() + static_cast<std::ptrdiff_t>(y) * pm->Offset(),
                static_cast<std::size_t>(width_));
  }
  for (int i = 0; i < 256; ++i) {
    const tbRGBColor* c = palette.CTTable(static_cast<std::int16_t>(i));
    out->palette[i][0] = c->red;
    out->palette[i][1] = c->green;
    out->palette[i][2] = c->blue;
  }
  out->paletteCount = 256;
  return true;
}

std::vector<std::string> Scene::MemberNames() const {
  std::vector<std::string> names;
  for (const Member& m : members_) names.push_back(m.name);
  return names;
}

std::string Scene::MemberName(std::int16_t id) const {
  for (const Member& m : members_) {
    if (m.id == id) return m.name;
  }
  return "";
}

bool Scene::TopmostAt(std::int32_t x, std::int32_t y, std::int32_t t, std::int16_t* id, int* layer,
                      const std::function<bool(int)>& shown) {
  tbRect area = Area();
  for (int l = layers_->Count() - 1; l >= 0; --l) {
    if (shown && !shown(l)) continue;
    std::vector<std::int16_t> ids;
    QvMCast* cast = nullptr;
    std::int16_t ref = -1;
    for (std::int16_t i = 0; layers_->Get(static_cast<std::int16_t>(l), i, &cast, &ref); ++i) {
      if (cast == cast_.get()) ids.push_back(ref);
    }
    for (auto it = ids.rbegin(); it != ids.rend(); ++it) {
      tbPoint pt(x, y);
      if (!cast_->PtInAFrame(&pt, *it, t, &area, QvMCast::kPixelsSquare)) continue;
      *id = *it;
      *layer = l;
      return true;
    }
  }
  return false;
}

std::int16_t Scene::MemberId(const std::string& name) const {
  for (const Member& m : members_) {
    if (m.name == name) return m.id;
  }
  return -1;
}

}  // namespace qvscene

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "scene/Picture.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbRect.h"

class QvAColor;
class QvAFrame;
class QvMCast;
class QvMLayer;
class tbPixMap;

namespace qvscene {

// A movie built from a scene file: it owns the cast store, the layer store
// and the host's animation objects, and draws moments of the movie and their
// colour tables. Made by LoadScene (SceneReader.h).
//
// Colour model. All members draw colour indices into one 8-bit pixel map, so
// the movie has one colour table per moment: the scene's base palette
// overlaid by the members' colour animations (QvMLayer::GetCTable).
class Scene {
 public:
  ~Scene();
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  const std::string& File() const { return file_; }
  std::int16_t Width() const { return width_; }
  std::int16_t Height() const { return height_; }
  // The time range of the output, both ends included, and its step.
  std::int32_t From() const { return from_; }
  std::int32_t To() const { return to_; }
  std::int32_t Step() const { return step_; }
  // from, from + step, ... up to to.
  std::vector<std::int32_t> Times() const;
  // Index every moment starts from before the layers are drawn.
  unsigned char Background() const { return background_; }
  // Number of times an animated output repeats; 0 is for ever.
  int Loops() const { return loops_; }
  const tbColorTable& BasePalette() const { return basePalette_; }
  // The rectangle the members move in (anchor paths are relative to its
  // top-left corner): the whole output.
  tbRect Area() const { return tbRect(0, 0, width_, height_); }

  // Clears the pixel map to the background index and draws moment t of
  // every layer into it (QvMLayer::DrawPicture); with shown, only the
  // layers (by index, from the bottom) for which it is true, each member
  // drawn as the whole movie draws it.
  void DrawMoment(std::int32_t t, tbPixMap* pixMap, const std::function<bool(int)>& shown = {});
  // The colour table of moment t (QvMLayer::GetCTable over the base palette).
  void Palette(std::int32_t t, tbColorTable* out);
  // Draws moment t into an indexed picture with its palette. False when
  // the off-screen world cannot be made.
  bool Render(std::int32_t t, Picture* out);

  // Estimated bytes of pixels the scene keeps and one moment needs (see
  // LoadOptions::maxMemory).
  std::uint64_t Memory() const { return memory_; }
  // The picture files read, as named after resolving.
  const std::vector<std::string>& PictureFiles() const { return files_; }
  // Line of "output" in the scene file.
  int OutputLine() const { return outputLine_; }

  std::vector<std::string> MemberNames() const;
  // Cast id of the member with that name, or -1.
  std::int16_t MemberId(const std::string& name) const;
  // Name of the member with that cast id, or "" when none has it.
  std::string MemberName(std::int16_t id) const;

  // The topmost member whose frame holds the movie pixel (x, y) at moment t:
  // the layers from the top down, on each the member placed last first (it
  // is drawn last). Layers for which shown(layer) is false are passed over
  // (all are looked at when shown is empty). Its cast id and layer, or false
  // when there is none.
  bool TopmostAt(std::int32_t x, std::int32_t y, std::int32_t t, std::int16_t* id, int* layer,
                 const std::function<bool(int)>& shown = {});
  QvMCast* Cast() { return cast_.get(); }
  QvMLayer* Layers() { return layers_.get(); }

 private:
  friend class SceneBuilder;
  Scene();

  struct Member {
    std::string name;
    std::int16_t id = -1;
  };

  std::string file_;
  std::int16_t width_ = 0;
  std::int16_t height_ = 0;
  std::int32_t from_ = 0;
  std::int32_t to_ = 0;
  std::int32_t step_ = 1;
  unsigned char background_ = 0;
  int loops_ = 0;
  tbColorTable basePalette_;
  std::uint64_t memory_ = 0;
  std::vector<std::string> files_;
  int outputLine_ = 0;
  std::vector<Member> members_;
  std::unique_ptr<QvMCast> cast_;
  std::unique_ptr<QvMLayer> layers_;
  std::vector<std::unique_ptr<QvAFrame>> frameAnims_;
  std::vector<std::unique_ptr<QvAColor>> colorAnims_;
};

}  // namespace qvscene

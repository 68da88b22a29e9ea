// Representative states for the sweeps: a small movie with two cast stores,
// a frame animation, one colour animation of each kind and a layer store,
// built up in levels, with checks of its consistency, a round of later
// operations that must succeed, and destruction in either order.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "toolbox/QvPal.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"

namespace reliability {

// How much of the movie is built; each level contains the ones before.
enum class Level {
  kEmpty,      // every object constructed, nothing registered
  kPopulated,  // members with names, ranges, Dft entries, anchors, scrolling,
               // own colour tables; frames without images; colour areas
  kImages,     // the frames have images; members carry frame animation copies
  kColour,     // members carry colour animation copies of all four kinds
  kLayers,     // members placed on layers; a backup store holds copies
};

const char* LevelName(Level level);
std::vector<Level> AllLevels();
// The levels from `from` to the last.
std::vector<Level> LevelsFrom(Level from);

// Cast ids of the members of the main store (present from kPopulated on,
// except where noted).
constexpr std::int16_t kPlain = 0;      // name and range only
constexpr std::int16_t kPath = 1;       // Dft entries, anchor path, scrolling
constexpr std::int16_t kTableOnly = 2;  // own colour table and palette area
constexpr std::int16_t kFramed = 3;     // kImages: frame animation and colour table
constexpr std::int16_t kScroller = 4;   // kImages: frame animation, anchors, scrolling
constexpr std::int16_t kColoured = 5;   // kColour: frame, table and four colour kinds

// Probes that open the protected state of the objects the movie owns.
class CastProbe : public QvMCast {
 public:
  QvMCastInfo* Head() const { return head; }
  char Locked() const { return lockFlag; }
  std::int16_t NextID() const { return newID; }
};

class LayerProbe : public QvMLayer {
 public:
  QvMLayerInfo* Head() const { return head; }
  unsigned char* Comment() const { return comment; }
  std::uint16_t CommentSize() const { return commentSize; }
};

class FrameProbe : public QvAFrame {
 public:
  QvAFrameInfo* Frames() const { return frameList; }
  signed char UpdateLock() const { return updateLock; }
  unsigned char LookupLock() const { return lockFlag; }
};

class SwitchProbe : public QvASwitch {
 public:
  tbColorTable* Tables() const { return tables; }
  std::int16_t TableCount() const { return count; }
};

class CycleProbe : public QvACycle {
 public:
  QvACycleInfo* Ranges() const { return head; }
};

// An 8-bit pixel map with its own buffer.
struct Canvas {
  Canvas(std::int16_t w, std::int16_t h);
  std::vector<unsigned char> pixels;
  tbPixMap map;
  tbRect area;
};

struct Movie {
  Movie();
  ~Movie();
  Movie(const Movie&) = delete;
  Movie& operator=(const Movie&) = delete;

  std::unique_ptr<CastProbe> cast;
  std::unique_ptr<CastProbe> backup;
  std::unique_ptr<FrameProbe> frame;
  std::unique_ptr<CycleProbe> cycle;
  std::unique_ptr<QvAFlash> flash;
  std::unique_ptr<SwitchProbe> switcher;
  std::unique_ptr<QvAFade> fade;
  std::unique_ptr<LayerProbe> layers;

  Level level = Level::kEmpty;
  QvPal pal;                           // indices 16 to 31
  tbColorTable table;                  // a ramp of distinct colours
  std::vector<unsigned char> picture;  // 24 x 16 source picture
  static constexpr std::int16_t kPictureWidth = 24;
  static constexpr std::int16_t kPictureHeight = 16;
};

// Builds the movie up to the level with fault injection off; every step is
// checked to succeed.
std::unique_ptr<Movie> MakeMovie(Level level);

// Checks the movie's consistency (links, counts, flags within the mask,
// reference lists and back-references agreeing, update locks released).
// `where` names the trial in failure messages.
void Verify(Movie& movie, const std::string& where);

// Later operations that must work: every animation passes itself on again,
// every member is drawn, iconised and asked for its colours and name, the
// layers are drawn, and a member is duplicated and backed up.
void Exercise(Movie& movie, const std::string& where);

// Destroys everything: animations first (they detach from the members) when
// animationsFirst, else the layer and cast stores first.
void Destroy(std::unique_ptr<Movie> movie, bool animationsFirst);

// The usual end of a trial: Verify, Exercise, Verify, Destroy (the order
// alternating with k).
void Finish(std::unique_ptr<Movie> movie, int k, const std::string& where);

// "<operation> [level] k=<k>" for messages.
std::string Where(const std::string& operation, Level level, int k);

// One operation on a movie: runs it with Inject(k, ...), checks its result
// and the affected objects, and returns the attempts Inject counted.
using MovieOp = std::function<int(Movie& movie, int k, const std::string& where)>;

// Sweeps the operation on a fresh movie of each level (see Sweep); every
// trial ends with Finish.
void SweepMovie(const std::string& operation, const std::vector<Level>& levels, const MovieOp& op);

}  // namespace reliability

// The allocation-failure sweep: runs one operation on a fresh state once for
// every allocation it makes, with exactly that allocation failing, checks each
// outcome, that the objects stay consistent and usable, and that nothing
// leaked. The states are a small movie (two cast stores, a frame animation,
// one colour animation of each kind, a layer store) built up in levels.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "acolor/QvACycle.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "cast/QvMCastInfo.h"
#include "layer/QvMLayer.h"
#include "tests/cast/CastTestSupport.h"
#include "toolbox/tbRect.h"

namespace reliability {

// Objects allocated with operator new and not freed yet, counted in the builds
// without AddressSanitizer (whose LeakSanitizer checks there); -1 otherwise.
long LiveAllocations();

// One run of an operation: its call goes through operator(), which makes the
// k-th allocation attempt fail (k = 0: none) and counts the attempts.
struct Trial {
  int k = 0;
  int attempts = 0;
  bool faulted = false;  // the k-th allocation was reached and failed

  template <class F>
  auto operator()(F&& op) {
    struct Off {
      Trial& t;
      ~Off() {
        t.attempts = QvAllocationCount();
        t.faulted = t.k > 0 && t.attempts >= t.k;
        QvFailAllocation(0);
      }
    };
    QvFailAllocation(k);
    Off off{*this};
    return op();
  }
  // Checks that a failure result comes only with a fault; gives `failed`.
  bool Failed(bool failed) const;
  // Runs an operation that gives 1 on success; true when it succeeded.
  template <class F>
  bool Ok(F&& op) {
    return !Failed((*this)(op) != 1);
  }
};

// Sweeps k = 0 (the reference run), 1, 2, ... until a trial makes fewer than k
// attempts, checking for leaks around each trial.
void Sweep(const std::string& operation, const std::function<void(Trial&)>& trial);

// The levels of the movie, as bits of a set; each contains the ones before.
enum Level : unsigned {
  kEmpty = 1,      // every object constructed, nothing registered
  kPopulated = 2,  // members with names, ranges, Dft entries, anchors, scrolling,
                   // own colour tables; frames without images; colour areas
  kImages = 4,     // the frames have images; members carry frame animation copies
  kColour = 8,     // members carry colour animation copies of all four kinds
  kLayers = 16,    // members placed on layers; a backup store holds copies
};
constexpr unsigned kAll = 31, kFromPopulated = 30, kFromImages = 28, kFromColour = 24;

// Cast ids of the members of the main store (from kPopulated on, except where
// noted).
constexpr std::int16_t kPlain = 0;      // name and range only
constexpr std::int16_t kPath = 1;       // Dft entries, anchor path, scrolling
constexpr std::int16_t kTableOnly = 2;  // own colour table and palette area
constexpr std::int16_t kFramed = 3;     // kImages: frame animation and colour table
constexpr std::int16_t kScroller = 4;   // kImages: frame animation, anchors, scrolling
constexpr std::int16_t kColoured = 5;   // kColour: frame, table and four colour kinds

// Probes that open the protected state of the objects the movie owns.
using casttest::CastProbe;
struct LayerProbe : QvMLayer {
  QvMLayerInfo* Head() const { return head; }
  unsigned char* Comment() const { return comment; }
  std::uint16_t CommentSize() const { return commentSize; }
};
struct FrameProbe : QvAFrame {
  QvAFrameInfo* Frames() const { return frameList; }
  signed char UpdateLock() const { return updateLock; }
  unsigned char LookupLock() const { return lockFlag; }
};
struct SwitchProbe : QvASwitch {
  std::int16_t TableCount() const { return count; }
  tbColorTable* Tables() const { return tables; }
};

// An 8-bit pixel map with its own buffer (64 x 48 where the size does not matter).
using casttest::Screen;

struct Movie {
  Movie();
  // Destroyed from the last: layers, stores, then animations and the list of
  // the members with Dft entries.
  QvMCastList dftList;
  std::unique_ptr<FrameProbe> frame{new FrameProbe};
  std::unique_ptr<QvACycle> cycle{new QvACycle};
  std::unique_ptr<QvAFlash> flash{new QvAFlash};
  std::unique_ptr<SwitchProbe> switcher{new SwitchProbe};
  std::unique_ptr<QvAFade> fade{new QvAFade};
  std::unique_ptr<CastProbe> cast{new CastProbe}, backup{new CastProbe};
  std::unique_ptr<LayerProbe> layers{new LayerProbe};

  // The colour animation of a kind (0 cycle, 1 flash, 2 switch, 3 fade), also
  // as the list of its members, and f called with its owner when present.
  QvAColor* Colour(int kind) const;
  QvMCastList* ColourList(int kind) const;
  template <class F>
  void OnColour(int kind, F&& f) {
    if (kind == 0 && cycle) f(cycle);
    if (kind == 1 && flash) f(flash);
    if (kind == 2 && switcher) f(switcher);
    if (kind == 3 && fade) f(fade);
  }

  Level level = kEmpty;
  QvPal pal;                                    // indices 16 to 31
  tbColorTable table{tbColorTable::kStandard};  // a ramp of distinct colours
  static constexpr std::int16_t kPicW = 24, kPicH = 16;
  std::vector<unsigned char> picture = std::vector<unsigned char>(kPicW * kPicH);
};

// Sweeps an allocating operation on a fresh movie of each of its levels. The
// body runs the call through the Trial and checks the result and the objects
// it affects; each trial then checks the movie's consistency (links, counts,
// flags, reference lists and back-references), runs later operations that
// must succeed (passing animations on, drawing, icons, names, registrations,
// copies) and destroys everything, in alternating orders.
void SweepOp(const std::string& name, unsigned levels,
             const std::function<void(Trial&, Movie&)>& body);

// A string for the interfaces that take unsigned char* (which only read it).
inline unsigned char* Text(const char* s) { return casttest::Txt(s); }

}  // namespace reliability

/// \file
/// The cast store QvMCast: cast members with their names, flags, time
/// ranges, attachments, anchor paths and scrolling, and their drawing.
#pragma once

#include <cstdint>
#include <type_traits>

#include "cast/QvMCastAnc.h"
#include "cast/QvMCastDft.h"
#include "cast/QvMCastInfo.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbPicture.h"
#include "toolbox/tbPoint.h"
#include "toolbox/tbRect.h"

class QvAColor;
class QvAFrame;
class QvMCastList;
class QvPal;
class tbPixMap;

namespace qv {
/// Enables a by-id convenience of QvMCast for an integral id type other than
/// `std::int16_t` and `bool` (an `int` literal such as `0` included).
template <typename T>
using IfOtherId = std::enable_if_t<
    std::is_integral_v<T> && !std::is_same_v<T, std::int16_t> && !std::is_same_v<T, bool>, int>;
/// Enables a name convenience of QvMCast for a `const char*` name.
template <typename C>
using IfCharName = std::enable_if_t<std::is_same_v<C, char>, int>;
/// A `const char*` name as the `unsigned char*` the name operations take.
/// The cast store only reads a name it is given (it keeps its own copy), so
/// nothing is ever written through the result.
inline unsigned char* NameArg(const char* name) {
  return reinterpret_cast<unsigned char*>(const_cast<char*>(name));
}
}  // namespace qv

/// \brief The cast store: the movie's cast members, each named by a 16-bit
/// cast id.
///
/// A cast member (one QvMCastInfo record, owned by the store) carries a name,
/// two sets of host flags, a time range on the movie's timeline and its
/// attachments: private copies of a frame animation (QvAFrame) and of up to
/// four colour animations (cycle, flash, switch, fade), an own colour table
/// with palette area, Dft entries, an anchor path, scroll directions and a
/// cached icon. Members are kept in creation order; a member's index is its
/// place in that order.
///
/// **Time.** Three time scales run through the library:
/// - *ticks* of 1/60 second (16.6667 ms), read from the millisecond counter
///   (qv::GetTickCount);
/// - *clock frames* of an animation's own clock (QvMPlayer): frame =
///   speed × ticks ÷ 60, speed in frames per second (30 by default);
/// - *movie time*, the unit of member start and end times and of the
///   `time` arguments here: one unit is two ticks (1/30 second). A member
///   shown at movie time t shows its animations' clock frame
///   ((t − start) × speed × 2) ÷ 60, so at the default speed one unit of
///   movie time is one clock frame.
/// All times are signed 32-bit values; −1 (kUnset) stands for an unset time.
///
/// **Results.** A `char` is 1 for success and 0 for failure, a `std::int16_t`
/// id −1 for failure, a `std::int32_t` time −1 for an absent member or an
/// unset time, a pointer null. Every operation taking a cast id looks the
/// member up first and fails at once when there is none (nothing is written
/// through outputs then). A query with one output fails (0) when given a null
/// pointer; queries with several outputs skip the null ones.
///
/// **Attachments are copies.** A registration (RegAFrame, RegAColor) stores a
/// private copy made by the animation's own `Dup`; the host keeps owning its
/// animation object. The reference list passed with it (normally the
/// animation itself, which is a QvMCastList) gains the pair (this store, id),
/// and every change of the animation then hands the member a fresh copy
/// (QvAFrame::UpdateMCast and the colour animations' UpdateMCast). A list
/// passed to RegAFrame, RegDft or RegAColor is not owned: it must outlive the
/// member's attachment, that is stay alive until the attachment is removed
/// (DelAFrame, DelDft, DelAColor, Empty, Del, DelAll, the store's
/// destruction) or the animation detaches itself (its destructor does).
///
/// **Ranges.** A new member's start and end are kUnset. The first frame or
/// colour animation registered while the range is unset gives it the range
/// startTime .. startTime + length − 1 (the animation's length in clock
/// frames); later registrations keep it. Set the range wanted with
/// SetStartEnd (or place the member on a layer, which fits it). A member is
/// drawn only at the moments inside its range, both ends included: one whose
/// range was never set by hand keeps the range of its first registration (a
/// one-frame animation registered at 0 gives 0 .. 0: drawn at moment 0 only).
///
/// **Ids and overloads.** Many operations by id have a protected twin of the
/// same name that takes the record. The template conveniences beside them
/// accept any integral id (an `int` literal included), so `cast.AFrame(0)`
/// means the member with id 0. Every operation that takes a name also takes a
/// `const char*`.
///
/// **Allocation.** These allocate, and report a shortage of memory by their
/// failure result: New, every registration (each copy is a deep one: a frame
/// animation with all its images), GetName (the handle), ResetAnc,
/// InbetweenAnc and DelDft (the re-sampled path), Dup, Backup, Restore,
/// DrawPicture of a member with colour animations (a new off-screen world on
/// every call) and Icon. All library allocations go through the counted
/// allocator, so QvFailAllocation can make any of them fail in a test.
///
/// **Threads.** None: a store is used from one thread; Lock is a lookup
/// shortcut, not a guard between threads.
///
/// A store cannot be copied. It owns every member and everything attached to
/// them, and frees them in DelAll and in its destructor.
class QvMCast {
 public:
  /// \name Codes
  //@{
  /// An id that makes a registration (or Dup) create a new member.
  static constexpr std::int16_t kNewId = -1;
  /// An unset start or end time; also what Start and End give for an absent
  /// member.
  static constexpr std::int32_t kUnset = -1;
  /// The time of DrawPicture that stands for the member's start.
  static constexpr std::int32_t kAtStart = -1;

  /// Path type (RegAnc, SetAncType): an index outside the path is clamped to
  /// its first or last anchor (the member stops at the end).
  static constexpr char kAncClamp = 1;
  /// Path type: an index outside the path is mirrored at its ends (the member
  /// goes back and forth).
  static constexpr char kAncReflect = 2;
  /// Path type: an index outside the path wraps around by the number of
  /// anchors (the member goes round). The type of a new member.
  static constexpr char kAncWrap = 3;

  /// Scroll direction bit (RegScroll, DelScroll, IsScroll): the image moves
  /// left.
  static constexpr char kScrollLeft = 1;
  /// Scroll direction bit: the image moves right.
  static constexpr char kScrollRight = 2;
  /// Scroll direction bit: the image moves up.
  static constexpr char kScrollUp = 4;
  /// Scroll direction bit: the image moves down.
  static constexpr char kScrollDown = 8;
  /// The directions of RegScroll and DelScroll that clear every direction.
  static constexpr char kScrollAll = 0;

  /// Attachment mask bit (ActFlag; act and show flags are subsets of the
  /// mask): a cycle animation is attached.
  static constexpr std::uint32_t kAttachCycle = 0x001;
  /// Attachment mask bit: a flash animation is attached.
  static constexpr std::uint32_t kAttachFlash = 0x002;
  /// Attachment mask bit: a switch animation is attached.
  static constexpr std::uint32_t kAttachSwitch = 0x004;
  /// Attachment mask bit: a fade animation is attached.
  static constexpr std::uint32_t kAttachFade = 0x008;
  /// Attachment mask bit: a frame animation is attached.
  static constexpr std::uint32_t kAttachAFrame = 0x010;
  /// Attachment mask bit: the member has Dft entries or an anchor path.
  static constexpr std::uint32_t kAttachDftAnc = 0x020;
  /// Attachment mask bit: the member scrolls left.
  static constexpr std::uint32_t kAttachScrollLeft = 0x040;
  /// Attachment mask bit: the member scrolls right.
  static constexpr std::uint32_t kAttachScrollRight = 0x080;
  /// Attachment mask bit: the member scrolls up.
  static constexpr std::uint32_t kAttachScrollUp = 0x100;
  /// Attachment mask bit: the member scrolls down.
  static constexpr std::uint32_t kAttachScrollDown = 0x200;
  /// Every bit of the attachment mask.
  static constexpr std::uint32_t kAttachAll = 0x3FF;

  /// Pixel mode of GetAFrameArea and PtInAFrame: square pixels.
  static constexpr char kPixelsSquare = 0;
  /// Pixel mode: the display's pixels are half as tall, vertical distances
  /// are doubled.
  static constexpr char kPixelsTall = 1;
  /// Pixel mode: the display's pixels are half as wide, horizontal distances
  /// are doubled.
  static constexpr char kPixelsWide = 2;
  //@}

  /// An empty, unlocked store whose next automatic id is 0.
  QvMCast();
  /// Frees every member with everything attached to it (DelAll).
  virtual ~QvMCast();
  /// In-betweening hook, called by InbetweenAnc(std::int16_t, char); does
  /// nothing here. A host derives a class and overrides it to supply the
  /// curve through the key points.
  /// \param keys the key anchors' points, keyCount of them, in ascending
  ///   anchor index order (owned by the caller, valid during the call).
  /// \param keyIndex the anchor index of each key; keyIndex[0] is the first
  ///   and keyIndex[keyCount − 1] the last index of the span.
  /// \param keyCount number of keys, at least 2.
  /// \param out outCount points (0, 0) on entry; fill out[i] with the place
  ///   of anchor keyIndex[0] + i for i = 1 .. outCount − 2 (the first and
  ///   last entries are not read back).
  /// \param outCount number of anchors in the span.
  /// \param mode the host's value given to InbetweenAnc(id, mode), passed
  ///   through unchanged.
  virtual void InbetweenAnc(tbPoint* keys, std::int16_t* keyIndex, std::int16_t keyCount,
                            tbPoint* out, std::int16_t outCount, char mode);

  /// A store owns its members; it cannot be copied.
  QvMCast(const QvMCast&) = delete;
  /// A store owns its members; it cannot be copied.
  QvMCast& operator=(const QvMCast&) = delete;

  /// \name Cast table
  //@{
  /// The id that the next New(unsigned char*) hands out. It starts at 0,
  /// grows by one per member so created (16-bit, wrapping), never looks for
  /// gaps, and returns to 0 when the store becomes empty.
  std::int16_t GetNewID();
  /// The number of members.
  std::int16_t Count();
  /// The index (place in creation order, from 0) of the first member with
  /// that id; −1 when there is none. Ignores the lock.
  std::int16_t ID2Index(std::int16_t id);
  /// The id of the member at index (0 .. Count() − 1); −1 outside. Ignores
  /// the lock.
  std::int16_t Index2ID(std::int16_t index);
  /// Locks the store on the member with that id: until Unlock, every by-id
  /// operation acts on that member whatever id it is given (and fails when
  /// the id was absent). A lookup shortcut for a series of calls on one
  /// member. Deleting the locked member ends the lock. Count, ID2Index,
  /// Index2ID and End() ignore the lock.
  void Lock(std::int16_t id);
  /// Ends the lock; by-id operations look their id up again.
  void Unlock();

  /// Creates a member with the given id at the end of the order. A member
  /// that already has the id is deleted first, with everything it holds.
  /// \param id the cast id, any value (a negative one included).
  /// \param name copied; null for no name.
  /// \return 1; 0 when the record cannot be allocated (the old member with
  ///   the id is gone even then).
  char New(std::int16_t id, unsigned char* name);
  /// Creates a member with the id GetNewID() and advances the counter. A
  /// member that received that id explicitly is replaced.
  /// \param name copied; null for no name.
  /// \return the new id; −1 when the record cannot be allocated (the
  ///   counter is unchanged).
  std::int16_t New(unsigned char* name);
  /// Removes everything the member holds (animation copies, colour table,
  /// Dft entries, anchor path, scroll directions, off-screen world, name,
  /// icon) and clears its flags; keeps the member, its id, place and range.
  /// \return 1; 0 when the member is absent.
  char Empty(std::int16_t id);
  /// Empties the member and frees it. References to it on layers are not
  /// removed (QvMLayer::DelCast does that).
  /// \return 1; 0 when the member is absent.
  char Del(std::int16_t id);
  /// Deletes every member; the next automatic id is 0 again.
  void DelAll();

  /// Sets the member's name.
  /// \param id the member's cast id.
  /// \param name copied; null removes the name.
  /// \return 1; 0 when the member is absent.
  char SetName(std::int16_t id, unsigned char* name);
  /// A copy of the member's name.
  /// \param id the member's cast id.
  /// \param out receives a new handle that the caller owns and frees with
  ///   QvFreeString(handle), or null for a member without a name.
  /// \return 1; 0 (and null in *out) when the member is absent or the name
  ///   cannot be copied.
  char GetName(std::int16_t id, unsigned char*** out);

  /// The member's attachment mask (kAttachCycle .. kAttachScrollDown bits);
  /// 0 when the member is absent.
  std::uint32_t ActFlag(std::int16_t id);
  /// Sets the act flags, the host's own bits, to flags AND the attachment
  /// mask. The library keeps them a subset of the mask (removals clear the
  /// bits of what is gone) and never consults them.
  /// \return 1; 0 when the member is absent.
  char SetActFlag(std::int16_t id, std::uint32_t flags);
  /// Clears the act flags whose attachment is gone. \return 1; 0 when the
  /// member is absent.
  char ResetActFlag(std::int16_t id);
  /// Stores the act flags through flags. \return 1; 0 when the member is
  /// absent or flags is null.
  char GetActFlag(std::int16_t id, std::uint32_t* flags);
  /// Sets the show flags (host bits like the act flags) to flags AND the
  /// attachment mask. \return 1; 0 when the member is absent.
  char SetShowFlag(std::int16_t id, std::uint32_t flags);
  /// Clears the show flags whose attachment is gone. \return 1; 0 when the
  /// member is absent.
  char ResetShowFlag(std::int16_t id);
  /// Stores the show flags through flags. \return 1; 0 when the member is
  /// absent or flags is null.
  char GetShowFlag(std::int16_t id, std::uint32_t* flags);

  /// The member's first moment, in movie time; kUnset (−1) when it is
  /// unset or the member is absent.
  std::int32_t Start(std::int16_t id);
  /// The member's last moment (included), in movie time; kUnset (−1) when
  /// it is unset or the member is absent.
  std::int32_t End(std::int16_t id);
  /// The greatest end of all members; 0 for an empty store or when no end
  /// is above 0.
  std::int32_t End();
  /// Sets the member's range, both ends in movie time and included. The
  /// order of start and end is not checked. When the length changes, the
  /// scroll steps (and the anchor step of a member with Dft entries) are
  /// scaled by old length ÷ new length, so that the member covers the same
  /// distance over its range, and the anchor select span is cleared.
  /// \return 1; 0 when the member is absent.
  char SetStartEnd(std::int16_t id, std::int32_t start, std::int32_t end);
  /// SetStartEnd with the new start and the present end. \return 1; 0 when
  /// the member is absent.
  char SetStart(std::int16_t id, std::int32_t start);
  /// SetStartEnd with the present start and the new end; an unset range
  /// first gets the start 0 (which makes the steps 0). \return 1; 0 when
  /// the member is absent.
  char SetEnd(std::int16_t id, std::int32_t end);
  //@}

  /// \name Attachments
  /// Every registration takes a cast id first (kNewId, or any negative id,
  /// creates a new member with New(name); −1 when that fails or a given id is
  /// absent), sets the member's name to the name given (copied; null removes
  /// it), discards the cached icon, and returns the id of the member it acted
  /// on. A registration may be given the member's own copy, table, entries or
  /// anchors. Registering a reference list other than the one recorded for
  /// that attachment makes the recorded list forget the member.
  //@{
  /// Attaches a private copy of a frame animation.
  /// \param id the member's cast id, or kNewId.
  /// \param anim copied with its Dup (images included); the host keeps
  ///   owning it. Null removes the copy (without clearing flags).
  /// \param startTime movie time; becomes the member's start when its range
  ///   is unset, the end then being startTime + anim->CountMFrame() − 1.
  ///   Ignored when the range is set.
  /// \param name copied; null removes the name.
  /// \param list not owned, normally anim itself: gains (this store, id), so
  ///   that anim's changes reach the member; must outlive the attachment.
  ///   Null records no list.
  /// \return the member's id; −1 when the member is absent or cannot be
  ///   made. A failed copy leaves the member without a frame animation and
  ///   still returns the id.
  /// Register the animation once its frames are in place, or set the range
  /// afterwards: the range comes from the length at the first registration
  /// and later refreshes keep it. An animation of one clock frame registered
  /// at 0 gives 0 .. 0 (drawn at moment 0 only); one without frames gives
  /// startTime .. startTime − 1 (never drawn).
  std::int16_t RegAFrame(std::int16_t id, QvAFrame* anim, std::int32_t startTime,
                         unsigned char* name, QvMCastList* list);
  /// Gives the member its own colour table and palette area. A frame-animated
  /// member needs one to be drawn; it is also the table its colour
  /// animations start from.
  /// \param id the member's cast id, or kNewId.
  /// \param table 256 entries copied; null leaves the member without one.
  /// \param pal copied; null keeps the fill index. The first index outside
  ///   the area (0 when it covers all 256) becomes the background index of
  ///   the member's off-screen world; with an area, only the pixels whose
  ///   index lies in it are drawn.
  /// \param name copied; null removes the name.
  /// \return the member's id; −1 when the member is absent or cannot be
  ///   made, or a copy cannot be allocated (the old table is gone then).
  std::int16_t RegOrgCTable(std::int16_t id, tbColorTable* table, QvPal* pal, unsigned char* name);
  /// Stores Dft entries, which the library keeps, copies and hands back but
  /// does not interpret (their presence makes SetStartEnd scale the anchor
  /// step).
  /// \param id the member's cast id, or kNewId.
  /// \param param, flag host values stored with the entries.
  /// \param entries count records copied; null stores no entries.
  /// \param count number of entries.
  /// \param name copied; null removes the name.
  /// \param list not owned, gains (this store, id); must outlive the
  ///   member's entries. Null records no list.
  /// \return the member's id, or −1. A failed copy leaves no entries.
  std::int16_t RegDft(std::int16_t id, std::int16_t param, QvMCastDft* entries, std::int16_t count,
                      char flag, unsigned char* name, QvMCastList* list);
  /// Adds scroll directions (kScrollLeft, kScrollRight, kScrollUp,
  /// kScrollDown, or-ed). Each direction asked for removes its opposite
  /// first; kScrollAll (0) clears every direction. The distance per unit of
  /// time is set by SetScrStepH/V or SetScrCountH/V.
  /// \return the member's id, or −1.
  std::int16_t RegScroll(std::int16_t id, char dirs, unsigned char* name);
  /// Removes the frame animation copy (the world made for it stays) and
  /// leaves its reference list. \return 1; 0 when the member is absent.
  char DelAFrame(std::int16_t id);
  /// Removes the own colour table and palette area. \return 1; 0 when the
  /// member is absent.
  char DelOrgCTable(std::int16_t id);
  /// Removes the Dft entries, leaves their list, re-samples the anchor path
  /// (ResetAnc) and sets the path type to kAncClamp. \return 1; 0 when the
  /// member is absent.
  char DelDft(std::int16_t id);
  /// Clears the given scroll direction bits; kScrollAll (0) clears all.
  /// \return 1; 0 when the member is absent.
  char DelScroll(std::int16_t id, char dirs);

  /// The member's frame animation copy, or null. It belongs to the member:
  /// do not delete it. It is replaced by the next change of the animation it
  /// was copied from and freed with the attachment.
  QvAFrame* AFrame(std::int16_t id);
  /// 1 when the member has Dft entries.
  char IsDft(std::int16_t id);
  /// 1 when the member has an anchor path.
  char IsAnc(std::int16_t id);
  /// 1 when the member scrolls; its direction bits are stored through dirs
  /// (when not null). 0 when it does not scroll or is absent.
  char IsScroll(std::int16_t id, char* dirs);
  /// 1 when the member scrolls left.
  char IsScrollLeft(std::int16_t id);
  /// 1 when the member scrolls right.
  char IsScrollRight(std::int16_t id);
  /// 1 when the member scrolls up.
  char IsScrollUp(std::int16_t id);
  /// 1 when the member scrolls down.
  char IsScrollDown(std::int16_t id);
  /// The Dft entries as registered. The entry array handed back is the
  /// member's own: do not free it; it is valid until the next RegDft or
  /// removal. Null outputs are skipped.
  /// \return 1; 0 when the member is absent or has no entries.
  char GetDft(std::int16_t id, std::int16_t* param, QvMCastDft** entries, std::int16_t* count,
              char* flag);
  //@}

  /// \name Anchor motion paths
  /// A path is an array of points relative to the top-left corner of the
  /// area the member is drawn in. At movie time t the member stands on
  /// anchor trunc((t − start) × step) + offset, folded into the path by the
  /// path type (kAncClamp, kAncReflect, kAncWrap).
  //@{
  /// Gives the member a path.
  /// \param id the member's cast id, or kNewId.
  /// \param anchors count records copied; null, or a count below 1, leaves
  ///   the member without a path.
  /// \param count number of anchors.
  /// \param type kAncClamp, kAncReflect or kAncWrap; 0 keeps the present
  ///   type (kAncWrap on a new member).
  /// \param name copied; null removes the name.
  /// \return the member's id, or −1. Step and offset keep their values; the
  ///   select span is cleared.
  std::int16_t RegAnc(std::int16_t id, QvMCastAnc* anchors, std::int16_t count, char type,
                      unsigned char* name);
  /// Removes the path (the offset stays). \return 1; 0 when absent.
  char DelAnc(std::int16_t id);
  /// Sets anchor index (0 .. number − 1) to point and flag
  /// (QvMCastAnc::kKey marks a key point for InbetweenAnc). \return 1; 0
  /// without a path or with an index outside.
  char SetAnc(std::int16_t id, std::int16_t index, const tbPoint& point, char flag);
  /// Moves every anchor by (dx, dy) pixels (16-bit sums). \return 1; 0
  /// without a path.
  char OffsetAnc(std::int16_t id, std::int16_t dx, std::int16_t dy);
  /// Re-samples the path to one anchor per unit of movie time over the
  /// range (anchor i is then the place at start + i), and sets the step to
  /// 1.0 and the offset to 0. A range whose end lies before its start drops
  /// the path. \return 1; 0 without a path.
  char ResetAnc(std::int16_t id);
  /// Re-samples the path (ResetAnc), then fills the anchors strictly inside
  /// the select span (SetAncSelectArea) through the hook
  /// InbetweenAnc(keys, ...): the span's ends and the anchors flagged
  /// QvMCastAnc::kKey between them are the keys; afterwards the ends are
  /// flagged kKey and the filled plain anchors QvMCastAnc::kInbetween.
  /// With the hook of this class the inner anchors move to (0, 0).
  /// \param id the member's cast id.
  /// \param mode passed through to the hook.
  /// \return 1; 0 without a path, without a span inside the path (every
  ///   step, count or offset setting clears the span), or when memory is
  ///   short.
  char InbetweenAnc(std::int16_t id, char mode);
  /// Sets the path type, unchecked (kAncClamp, kAncReflect, kAncWrap;
  /// other values put the member on anchor 0). \return 1; 0 when absent.
  char SetAncType(std::int16_t id, char type);
  /// Sets the index offset, wrapped into 0 .. number − 1, and clears the
  /// select span. \return 1; 0 when absent.
  char SetAncOffset(std::int16_t id, std::int16_t offset);
  /// Sets the index offset to the anchor nearest to point (the lower index
  /// on a tie; 0 without a path), so that the member starts there, and
  /// clears the select span. \return 1; 0 when absent or point is null.
  char SetAncOffset(std::int16_t id, tbPoint* point);
  /// The index offset. \return 1; 0 when absent or offset is null.
  char GetAncOffset(std::int16_t id, std::int16_t* offset);
  /// The number of anchors; 1 for a member without a path. \return 1; 0
  /// when absent or num is null.
  char GetAncNum(std::int16_t id, std::int16_t* num);
  /// Sets the step, anchors advanced per unit of movie time (5.0 on a new
  /// member), and clears the select span. \return 1; 0 when absent.
  char SetAncStep(std::int16_t id, double step);
  /// The step in anchors per unit of movie time. \return 1; 0 when absent
  /// or step is null.
  char GetAncStep(std::int16_t id, double* step);
  /// Sets the step so that the member passes the whole path once in count
  /// units of movie time (step = number of anchors ÷ count), and clears the
  /// select span. \return 1; 0 when absent.
  char SetAncCount(std::int16_t id, double count);
  /// The units of movie time in which the member passes the path d times:
  /// (number of anchors × d) ÷ step. \return 1; 0 when absent or count is
  /// null.
  char GetAncCount(std::int16_t id, std::int16_t d, double* count);
  /// Selects the span of anchor indices a .. b (either order) for
  /// InbetweenAnc. \return 1; 0 when absent.
  char SetAncSelectArea(std::int16_t id, std::int32_t a, std::int32_t b);
  /// The select span in ascending order; −1, −1 for none. Null outputs are
  /// skipped. \return 1; 0 when absent.
  char GetAncSelectArea(std::int16_t id, std::int32_t* a, std::int32_t* b);
  /// The anchor at an index: this form is chosen only by a `std::int16_t`
  /// second argument. An `int` argument, a literal included, is a
  /// std::int32_t and selects the by-time form below; use GetAncAt for an
  /// index held in an `int`.
  /// \param id the member's cast id.
  /// \param index 0 .. number of anchors − 1.
  /// \param point receives the anchor's point.
  /// \param flag receives the anchor's flag.
  /// \return 1 with the anchor's point and flag (null outputs skipped); 0
  ///   when absent, without a path or with an index outside.
  char GetAnc(std::int16_t id, std::int16_t index, tbPoint* point, char* flag);
  /// The anchor the member stands on at a moment: this form is chosen by a
  /// `std::int32_t` (that is `int`) second argument. Use GetAncAtTime to
  /// make the intent plain.
  /// \param id the member's cast id.
  /// \param time movie time within the member's range.
  /// \param point receives the anchor's point.
  /// \param flag receives the anchor's flag.
  /// \return 1 with the anchor's point and flag (null outputs skipped); 0
  ///   when absent, without a path or outside the range.
  char GetAnc(std::int16_t id, std::int32_t time, tbPoint* point, char* flag);
  /// The anchor at index (0 .. number of anchors − 1), whatever the integral
  /// type of index: GetAnc by index.
  template <typename I, qv::IfOtherId<I> = 0>
  char GetAncAt(std::int16_t id, I index, tbPoint* point, char* flag) {
    return GetAnc(id, static_cast<std::int16_t>(index), point, flag);
  }
  /// The anchor at index: GetAnc by index.
  char GetAncAt(std::int16_t id, std::int16_t index, tbPoint* point, char* flag) {
    return GetAnc(id, index, point, flag);
  }
  /// The anchor the member stands on at movie time: GetAnc by time.
  char GetAncAtTime(std::int16_t id, std::int32_t time, tbPoint* point, char* flag) {
    return GetAnc(id, time, point, flag);
  }
  //@}

  /// \name Scrolling
  /// A scrolling member's image slides inside its own bounds, wrapping
  /// around, by a distance that grows linearly with the movie time since its
  /// start.
  //@{
  /// Sets the horizontal distance in pixels per unit of movie time (5.0 on
  /// a new member). \return 1; 0 when absent.
  char SetScrStepH(std::int16_t id, double step);
  /// Sets the vertical distance in pixels per unit of movie time (5.0 on a
  /// new member). \return 1; 0 when absent.
  char SetScrStepV(std::int16_t id, double step);
  /// The horizontal step. \return 1; 0 when absent or step is null.
  char GetScrStepH(std::int16_t id, double* step);
  /// The vertical step. \return 1; 0 when absent or step is null.
  char GetScrStepV(std::int16_t id, double* step);
  /// Sets the horizontal step so that the image scrolls once by its whole
  /// width (that of frame 0) in count units of movie time; 0.0 without a
  /// frame animation. \return 1; 0 when absent.
  char SetScrCountH(std::int16_t id, double count);
  /// Sets the vertical step so that the image scrolls once by its whole
  /// height in count units of movie time; 0.0 without a frame animation.
  /// \return 1; 0 when absent.
  char SetScrCountV(std::int16_t id, double count);
  /// The units of movie time for d widths: (width × d) ÷ step; 0.0 without
  /// a frame animation. \return 1; 0 when absent or count is null.
  char GetScrCountH(std::int16_t id, std::int16_t d, double* count);
  /// The units of movie time for d heights. \return 1; 0 when absent or
  /// count is null.
  char GetScrCountV(std::int16_t id, std::int16_t d, double* count);
  /// The scroll offsets in pixels at movie time: h = ∓trunc((time − start)
  /// × step) for left / right (left wins), v likewise for up / down; 0 in a
  /// direction the member does not scroll. \return 1; 0 when absent or time
  /// is outside the range (nothing written).
  char GetScroll(std::int16_t id, std::int32_t time, std::int16_t* h, std::int16_t* v);
  //@}

  /// \name Rendering and hit-testing
  //@{
  /// Draws the member as it looks at a moment into dst: its frame animation
  /// copy at the clock frame of the moment, with the animation's anchor on
  /// the member's anchor (or the centre of area without a path), scrolled,
  /// in an off-screen world carrying the member's colours, copied through
  /// its mask. Indices only: the colours that go with them are GetCTable's.
  /// \param id the member's cast id.
  /// \param time movie time within the range; kAtStart (−1) for the start.
  /// \param dst 8-bit pixel map drawn into (not owned).
  /// \param area the rectangle the member moves in (anchor points are
  ///   relative to its top-left corner); coordinates used as 16-bit values.
  /// \return 1; 0 when absent, without a frame animation or own colour
  ///   table, outside the range, or when the world cannot be made.
  /// Moves the clocks of the member's animation copies; with colour
  /// animations it makes the off-screen world anew on every call.
  char DrawPicture(std::int16_t id, std::int32_t time, tbPixMap* dst, tbRect* area);
  /// The member's own colour table with its colour animations applied at a
  /// moment, cycle, flash, switch and fade in that order, each starting
  /// from the result of the one before.
  /// \param id the member's cast id.
  /// \param time movie time within the range (−1 is not replaced).
  /// \return the store's working table, owned by the store and valid until
  ///   the next CTable, GetCTable or DrawPicture on this store; null when
  ///   absent, without an own colour table or outside the range.
  tbColorTable* CTable(std::int16_t id, std::int32_t time);
  /// Overlays the member's colours at a moment onto a table: the entries
  /// inside the union of the palette areas of its colour animations become
  /// those of CTable(id, time); every other entry stays. QvMLayer::GetCTable
  /// calls it for every placed member.
  /// \param id the member's cast id.
  /// \param time movie time within the member's range.
  /// \param inOut the table to change (not owned).
  /// \return 1; 0 (inOut unchanged) when inOut is null, the member is
  ///   absent, has no colour animation or no own colour table, or time is
  ///   outside its range.
  char GetCTable(std::int16_t id, std::int32_t time, tbColorTable* inOut);
  /// The rectangle covered by the member's image at a moment, and its
  /// anchor point, for the area the member is drawn in.
  /// \param id the member's cast id.
  /// \param time movie time within the range (−1 is not replaced).
  /// \param area the rectangle the member moves in, as for DrawPicture.
  /// \param mode kPixelsSquare, kPixelsTall (vertical distances doubled)
  ///   or kPixelsWide (horizontal distances doubled); other values leave
  ///   result as it was and point as the anchor itself.
  /// \param result receives left, top, right, bottom (right and bottom
  ///   excluded).
  /// \param point receives the anchor point in the coordinates of area.
  /// \return 1; 0 when absent, without a frame animation, outside the
  ///   range, or with a null argument.
  char GetAFrameArea(std::int16_t id, std::int32_t time, tbRect* area, char mode, tbRect* result,
                     tbPoint* point);
  /// 1 when pt lies in the rectangle GetAFrameArea gives (left and top
  /// included, right and bottom excluded); 0 otherwise or when that fails.
  char PtInAFrame(tbPoint* pt, std::int16_t id, std::int32_t time, tbRect* area, char mode);
  /// A small picture of the member, width × height pixels: its first frame
  /// image, or a swatch of its colour table when it has no frame animation,
  /// or blank.
  /// \return the picture, which belongs to the member: do not dispose it. It
  ///   stays cached until a registration or removal, an Icon of another
  ///   size, or the member's deletion. Null when absent or when the picture
  ///   cannot be made.
  tbPicture* Icon(std::int16_t id, std::int16_t width, std::int16_t height);
  //@}

  /// \name Duplication, backup and restore
  //@{
  /// Duplicates a member of this store into dst (this store too): the
  /// destination receives its own copies of every attachment by the
  /// registrations, joins the same animation reference lists, and gets a
  /// range starting at start with the source's length when its range is
  /// unset. Not copied: flags, icon, select span, and the colour table of a
  /// source without frame animation.
  /// \param srcId the member of this store.
  /// \param start movie time of the copy's start.
  /// \param name copied; null for none.
  /// \param dst the destination store (not owned).
  /// \param dstId kNewId (any negative id) creates a member in dst;
  ///   otherwise it is used unchecked.
  /// \return the destination id; −1 when the source is absent or the new
  ///   member cannot be made. Fails (−1, nothing made) when dst is this
  ///   store, dstId is negative and the new member would replace the
  ///   source (the source holds the id the counter hands out next, or the
  ///   store is locked on it).
  std::int16_t Dup(std::int16_t srcId, std::int32_t start, unsigned char* name, QvMCast* dst,
                   std::int16_t dstId);
  /// Copies the member into dst (not owned) under the same id, replacing a
  /// member of that id there. \return 1; 0 when the member is absent, its range is
  /// unset, or memory is short.
  char Backup(std::int16_t id, QvMCast* dst);
  /// Copies every member of src (not owned) into this store under the same ids,
  /// replacing members with those ids; others stay. \return 1 (also for an
  /// empty src); 0 at the first member that fails (those before it stay
  /// restored).
  char Restore(QvMCast* src);

  /// No file format: returns 0 and does nothing.
  char Load(int file);
  /// No file format: returns 0 and does nothing.
  char Load(char* path);
  /// No file format: returns 0 and does nothing.
  char Save(int file);
  /// No file format: returns 0 and does nothing.
  char Save(int file, std::int16_t id);
  /// No file format: returns 0 and does nothing.
  char Save(char* path, std::uint32_t a, std::uint32_t b);
  /// No file format: returns 0 and does nothing.
  char SaveEnd(int file);
  /// No file format: returns 0 and does nothing.
  char SaveTerm(int file);
  //@}

  /// \name Colour animation copies
  /// kind: 0 cycle, 1 flash, 2 switch, 3 fade (the QvAColor kind codes). A
  /// kind outside 0 to 3 touches no attachment.
  //@{
  /// Attaches a private copy of a colour animation of the given kind.
  /// \param anim copied with its Dup; the host keeps owning it. It must be
  ///   of the kind's class (QvACycle, QvAFlash, QvASwitch, QvAFade). Null
  ///   removes the copy of that kind (without clearing flags).
  /// \param id the member's cast id, or kNewId.
  /// \param kind 0 .. 3.
  /// \param startTime movie time; becomes the start of an unset range, the
  ///   end then being startTime + anim->Count() − 1. Ignored otherwise.
  /// \param name copied; null removes the name.
  /// \param list not owned, normally anim itself: gains (this store, id);
  ///   must outlive the attachment. Null records no list.
  /// \return the member's id; −1 when the member is absent or cannot be
  ///   made. A failed copy leaves the kind empty and still returns the id.
  std::int16_t RegAColor(std::int16_t id, QvAColor* anim, char kind, std::int32_t startTime,
                         unsigned char* name, QvMCastList* list);
  /// Removes the copy of that kind and leaves its list. \return 1 (also
  /// when there is none); 0 when the member is absent.
  char DelAColor(std::int16_t id, char kind);
  /// The member's cycle copy, or null. Owned by the member; do not delete.
  QvAColor* ACycle(std::int16_t id);
  /// The member's flash copy, or null. Owned by the member; do not delete.
  QvAColor* AFlash(std::int16_t id);
  /// The member's switch copy, or null. Owned by the member; do not delete.
  QvAColor* ASwitch(std::int16_t id);
  /// The member's fade copy, or null. Owned by the member; do not delete.
  QvAColor* AFade(std::int16_t id);
  /// 1 when any colour animation is attached.
  char IsAColor(std::int16_t id);
  //@}

  /// \name Conveniences: any integral id, const char* names
  /// Each forwards to the operation of the same name by `std::int16_t` id.
  /// They exist because a literal `0` also converts to the protected record
  /// twin's pointer, which made such a call ambiguous.
  //@{
  /// SetName by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char SetName(Id id, unsigned char* name) {
    return SetName(static_cast<std::int16_t>(id), name);
  }
  /// ActFlag by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  std::uint32_t ActFlag(Id id) {
    return ActFlag(static_cast<std::int16_t>(id));
  }
  /// SetActFlag by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char SetActFlag(Id id, std::uint32_t flags) {
    return SetActFlag(static_cast<std::int16_t>(id), flags);
  }
  /// ResetActFlag by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char ResetActFlag(Id id) {
    return ResetActFlag(static_cast<std::int16_t>(id));
  }
  /// SetShowFlag by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char SetShowFlag(Id id, std::uint32_t flags) {
    return SetShowFlag(static_cast<std::int16_t>(id), flags);
  }
  /// ResetShowFlag by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char ResetShowFlag(Id id) {
    return ResetShowFlag(static_cast<std::int16_t>(id));
  }
  /// SetStartEnd by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char SetStartEnd(Id id, std::int32_t start, std::int32_t end) {
    return SetStartEnd(static_cast<std::int16_t>(id), start, end);
  }
  /// DelAFrame by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char DelAFrame(Id id) {
    return DelAFrame(static_cast<std::int16_t>(id));
  }
  /// DelOrgCTable by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char DelOrgCTable(Id id) {
    return DelOrgCTable(static_cast<std::int16_t>(id));
  }
  /// DelDft by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char DelDft(Id id) {
    return DelDft(static_cast<std::int16_t>(id));
  }
  /// DelScroll by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char DelScroll(Id id, char dirs) {
    return DelScroll(static_cast<std::int16_t>(id), dirs);
  }
  /// AFrame by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  QvAFrame* AFrame(Id id) {
    return AFrame(static_cast<std::int16_t>(id));
  }
  /// IsDft by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char IsDft(Id id) {
    return IsDft(static_cast<std::int16_t>(id));
  }
  /// IsAnc by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char IsAnc(Id id) {
    return IsAnc(static_cast<std::int16_t>(id));
  }
  /// IsScroll by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char IsScroll(Id id, char* dirs) {
    return IsScroll(static_cast<std::int16_t>(id), dirs);
  }
  /// IsScrollLeft by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char IsScrollLeft(Id id) {
    return IsScrollLeft(static_cast<std::int16_t>(id));
  }
  /// IsScrollRight by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char IsScrollRight(Id id) {
    return IsScrollRight(static_cast<std::int16_t>(id));
  }
  /// IsScrollUp by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char IsScrollUp(Id id) {
    return IsScrollUp(static_cast<std::int16_t>(id));
  }
  /// IsScrollDown by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char IsScrollDown(Id id) {
    return IsScrollDown(static_cast<std::int16_t>(id));
  }
  /// GetDft by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char GetDft(Id id, std::int16_t* param, QvMCastDft** entries, std::int16_t* count, char* flag) {
    return GetDft(static_cast<std::int16_t>(id), param, entries, count, flag);
  }
  /// DelAnc by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char DelAnc(Id id) {
    return DelAnc(static_cast<std::int16_t>(id));
  }
  /// ResetAnc by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char ResetAnc(Id id) {
    return ResetAnc(static_cast<std::int16_t>(id));
  }
  /// InbetweenAnc(id, mode) by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char InbetweenAnc(Id id, char mode) {
    return InbetweenAnc(static_cast<std::int16_t>(id), mode);
  }
  /// SetAncType by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char SetAncType(Id id, char type) {
    return SetAncType(static_cast<std::int16_t>(id), type);
  }
  /// SetAncOffset by index for any integral index (`SetAncOffset(id, 0)`
  /// means anchor 0, not a null point).
  template <typename I, qv::IfOtherId<I> = 0>
  char SetAncOffset(std::int16_t id, I offset) {
    return SetAncOffset(id, static_cast<std::int16_t>(offset));
  }
  /// Save(file, id) by any integral id; returns 0 like every save.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char Save(int file, Id id) {
    return Save(file, static_cast<std::int16_t>(id));
  }
  /// DelAColor by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char DelAColor(Id id, char kind) {
    return DelAColor(static_cast<std::int16_t>(id), kind);
  }
  /// ACycle by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  QvAColor* ACycle(Id id) {
    return ACycle(static_cast<std::int16_t>(id));
  }
  /// AFlash by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  QvAColor* AFlash(Id id) {
    return AFlash(static_cast<std::int16_t>(id));
  }
  /// ASwitch by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  QvAColor* ASwitch(Id id) {
    return ASwitch(static_cast<std::int16_t>(id));
  }
  /// AFade by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  QvAColor* AFade(Id id) {
    return AFade(static_cast<std::int16_t>(id));
  }
  /// IsAColor by any integral id.
  template <typename Id, qv::IfOtherId<Id> = 0>
  char IsAColor(Id id) {
    return IsAColor(static_cast<std::int16_t>(id));
  }

  /// New(id, name) with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  char New(std::int16_t id, const C* name) {
    return New(id, qv::NameArg(name));
  }
  /// New(name) with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  std::int16_t New(const C* name) {
    return New(qv::NameArg(name));
  }
  /// SetName with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  char SetName(std::int16_t id, const C* name) {
    return SetName(id, qv::NameArg(name));
  }
  /// RegAFrame with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  std::int16_t RegAFrame(std::int16_t id, QvAFrame* anim, std::int32_t startTime, const C* name,
                         QvMCastList* list) {
    return RegAFrame(id, anim, startTime, qv::NameArg(name), list);
  }
  /// RegOrgCTable with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  std::int16_t RegOrgCTable(std::int16_t id, tbColorTable* table, QvPal* pal, const C* name) {
    return RegOrgCTable(id, table, pal, qv::NameArg(name));
  }
  /// RegDft with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  std::int16_t RegDft(std::int16_t id, std::int16_t param, QvMCastDft* entries, std::int16_t count,
                      char flag, const C* name, QvMCastList* list) {
    return RegDft(id, param, entries, count, flag, qv::NameArg(name), list);
  }
  /// RegScroll with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  std::int16_t RegScroll(std::int16_t id, char dirs, const C* name) {
    return RegScroll(id, dirs, qv::NameArg(name));
  }
  /// RegAnc with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  std::int16_t RegAnc(std::int16_t id, QvMCastAnc* anchors, std::int16_t count, char type,
                      const C* name) {
    return RegAnc(id, anchors, count, type, qv::NameArg(name));
  }
  /// RegAColor with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  std::int16_t RegAColor(std::int16_t id, QvAColor* anim, char kind, std::int32_t startTime,
                         const C* name, QvMCastList* list) {
    return RegAColor(id, anim, kind, startTime, qv::NameArg(name), list);
  }
  /// Dup with a `const char*` name.
  template <typename C, qv::IfCharName<C> = 0>
  std::int16_t Dup(std::int16_t srcId, std::int32_t start, const C* name, QvMCast* dst,
                   std::int16_t dstId) {
    return Dup(srcId, start, qv::NameArg(name), dst, dstId);
  }
  //@}

 protected:
  /// \name Record twins and helpers (for derived stores)
  /// Each acts on a member record found by localSearch; none checks for a
  /// null record unless stated.
  //@{
  /// The member with that id (or the locked member while locked), also kept
  /// in curInfo; null when there is none.
  QvMCastInfo* localSearch(std::int16_t id);
  /// Gives a fresh record its initial values and a copy of name (or none).
  void localNew(QvMCastInfo* info, unsigned char* name);
  /// Disposes the cached icon so that the next Icon draws it anew.
  void localDeleteIcon(QvMCastInfo* info);
  /// SetName on the record.
  void SetName(QvMCastInfo* info, unsigned char* name);
  /// The record's attachment mask.
  std::uint32_t ActFlag(QvMCastInfo* info);
  /// SetActFlag on the record.
  void SetActFlag(QvMCastInfo* info, std::uint32_t flags);
  /// ResetActFlag on the record.
  void ResetActFlag(QvMCastInfo* info);
  /// SetShowFlag on the record.
  void SetShowFlag(QvMCastInfo* info, std::uint32_t flags);
  /// ResetShowFlag on the record.
  void ResetShowFlag(QvMCastInfo* info);
  /// SetStartEnd on the record (steps scaled by the change of length).
  void SetStartEnd(QvMCastInfo* info, std::int32_t start, std::int32_t end);
  /// Removes every attachment of the member, keeping the member.
  void localEmpty(QvMCastInfo* info);
  /// Empties, unlinks and frees the member.
  void localDel(QvMCastInfo* info);
  /// The member a registration acts on: a negative *id creates one (its id is
  /// stored back through id); null when that fails or the id is absent.
  QvMCastInfo* localRegTarget(std::int16_t* id, unsigned char* name);

  /// DelAFrame on the record.
  void DelAFrame(QvMCastInfo* info);
  /// DelOrgCTable on the record.
  void DelOrgCTable(QvMCastInfo* info);
  /// DelDft on the record.
  void DelDft(QvMCastInfo* info);
  /// DelScroll on the record.
  void DelScroll(QvMCastInfo* info, char dirs);
  /// AFrame of the record.
  QvAFrame* AFrame(QvMCastInfo* info);
  /// IsDft of the record.
  char IsDft(QvMCastInfo* info);
  /// IsAnc of the record.
  char IsAnc(QvMCastInfo* info);
  /// IsScroll of the record.
  char IsScroll(QvMCastInfo* info, char* dirs);
  /// IsScrollLeft of the record.
  char IsScrollLeft(QvMCastInfo* info);
  /// IsScrollRight of the record.
  char IsScrollRight(QvMCastInfo* info);
  /// IsScrollUp of the record.
  char IsScrollUp(QvMCastInfo* info);
  /// IsScrollDown of the record.
  char IsScrollDown(QvMCastInfo* info);
  /// GetDft of the record.
  char GetDft(QvMCastInfo* info, std::int16_t* param, QvMCastDft** entries, std::int16_t* count,
              char* flag);
  /// Makes the member's off-screen world anew (8 bits, the frame animation's
  /// area, the own colour table) when it has both a frame animation and an
  /// own colour table.
  void localNewOrgGWorld(QvMCastInfo* info);
  /// Disposes the member's off-screen world, when it has one, and sets
  /// orgGWorld null. Drawing a member may leave the world's pixels to be
  /// written later: a subclass that disposes or replaces orgGWorld itself
  /// goes through this, or the pixels may be written into a world it freed.
  void localDisposeOrgGWorld(QvMCastInfo* info);
  /// Writes the pixels the member's last drawing left for later into its
  /// off-screen world. A subclass that reads orgGWorld's pixels calls this
  /// first.
  void localSettleOrgGWorld(QvMCastInfo* info);

  /// DelAnc on the record.
  void DelAnc(QvMCastInfo* info);
  /// ResetAnc on the record.
  char ResetAnc(QvMCastInfo* info);
  /// The in-betweening of the record's select span (InbetweenAnc(id, mode)
  /// after its checks).
  char InbetweenAnc(QvMCastInfo* info, char mode);
  /// SetAncType on the record.
  void SetAncType(QvMCastInfo* info, char type);
  /// Folds *index into the path by its type; 1 when it was already inside.
  char localGetAnc(QvMCastInfo* info, std::int16_t* index);

  /// The clock frame of a movie time for a clock of that speed:
  /// ((time − start) × speed × 2) ÷ 60, the products 32-bit, the division
  /// unsigned.
  static std::int32_t localFrameOf(std::int32_t time, std::int32_t start, std::int16_t speed);

  /// No file format: returns 0.
  char Save(int file, QvMCastInfo* info);
  /// No file format: returns 0.
  char LoadAnc(int file, QvMCastInfo* info);
  /// No file format: returns 0.
  char LoadDft(int file, QvMCastInfo* info);
  /// No file format: returns 0.
  char LoadOrgCTable(int file, QvMCastInfo* info);
  /// No file format: returns 0.
  char LoadScroll(int file, QvMCastInfo* info);
  /// No file format: returns 0.
  char SaveAnc(int file, QvMCastInfo* info);
  /// No file format: returns 0.
  char SaveDft(int file, QvMCastInfo* info);
  /// No file format: returns 0.
  char SaveOrgCTable(int file, QvMCastInfo* info);
  /// No file format: returns 0.
  char SaveScroll(int file, QvMCastInfo* info);

  /// DelAColor on the record.
  void DelAColor(QvMCastInfo* info, char kind);
  /// ACycle of the record.
  QvAColor* ACycle(QvMCastInfo* info);
  /// AFlash of the record.
  QvAColor* AFlash(QvMCastInfo* info);
  /// ASwitch of the record.
  QvAColor* ASwitch(QvMCastInfo* info);
  /// AFade of the record.
  QvAColor* AFade(QvMCastInfo* info);
  /// IsAColor of the record.
  char IsAColor(QvMCastInfo* info);
  //@}

  /// First member in creation order; null when the store is empty.
  QvMCastInfo* head;
  /// The member found by the last search; while locked, the locked member.
  QvMCastInfo* curInfo;
  /// The id the next New(unsigned char*) hands out.
  std::int16_t newID;
  /// 1 while the store is locked.
  char lockFlag;
  /// The working table CTable fills and returns.
  tbColorTable workCTable;

  /// \name Lookup by id in constant time
  /// A table of buckets beside the list (idBucketCount of them, a power of
  /// two, or none while the store is small or the table could not be made,
  /// when lookups walk the list). Each record is made with a link to the next
  /// record of its bucket and its creation number; among records of one id
  /// the earliest made is the first in the list. Kept exact by New, localDel
  /// and DelAll; a table that cannot grow keeps working with longer buckets.
  //@{
  /// The first member in the list with that id; null when none.
  QvMCastInfo* localFind(std::int16_t id) const;
  /// Enters a new record in its bucket (growing the table when it is full).
  void localIndexAdd(QvMCastInfo* info);
  /// Takes a record out of its bucket before it is freed.
  void localIndexRemove(QvMCastInfo* info);
  /// Doubles the table (or makes it, from 16 members on); keeps the old one
  /// when memory is short.
  void localIndexGrow();
  /// Frees the table (the list is walked again until it is made anew).
  void localIndexClear();
  /// The buckets, owned; null while there is no table.
  QvMCastInfo** idBuckets = nullptr;
  /// The number of buckets, a power of two; 0 without a table.
  std::uint32_t idBucketCount = 0;
  /// The number of members in the list.
  std::uint32_t memberCount = 0;
  /// The creation number the next record receives.
  std::uint64_t idSerial = 0;
  /// The last record of the list; null when the list is empty.
  QvMCastInfo* tail = nullptr;
  //@}

  /// \name Record twins used by drawing, so that a member is looked up once
  //@{
  /// GetAnc by time, on the record.
  char localAncAt(QvMCastInfo* info, std::int32_t time, tbPoint* point, char* flag);
  /// GetScroll, on the record.
  char localScrollAt(QvMCastInfo* info, std::int32_t time, std::int16_t* h, std::int16_t* v);
  /// CTable, on the record, without the copy into workCTable: the table
  /// that holds the member's colours (an output table of a colour copy, the
  /// own table or workCTable), to be read only; null as CTable.
  tbColorTable* localCTable(QvMCastInfo* info, std::int32_t time);
  //@}
};

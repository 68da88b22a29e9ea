/// \file
/// The frame animation QvAFrame: frames cut out of a source picture, their
/// transformed images and their drawing.
#pragma once

#include <cstdint>

#include "aframe/QvAFrameInfo.h"
#include "player/QvMCastList.h"
#include "player/QvMPlayer.h"

class QvPal;
class tbGWorld;
class tbPixMap;
class tbRect;

/// \brief A frame animation: an ordered list of frames cut out of a source
/// picture, each with an anchor point, a zoom, a rotation and an interval.
///
/// **Naming frames.** A *frame index* is a frame's place in the list, from 0
/// (operations with an A: GetAFrame, GetAImage, DrawAImage, DrawAPicture,
/// LockA, CountAFrame, and every setter). A *clock position* is a clock frame
/// of the animation's own clock (operations with an M: GetMFrame, GetMImage,
/// DrawMImage, DrawMPicture, LockM, CountMFrame): frame k is shown from the
/// sum of the intervals before it up to that sum plus its own interval − 1.
/// The M forms without a position use the clock's current frame.
///
/// **Clock.** The animation is a QvMPlayer whose range is kept 0 ..
/// CountMFrame() − 1 (−1 for no frame); play it with Play, Stop, SetSpeed,
/// SetMode. Intervals are in clock frames (speed frames per second, 30 by
/// default: an interval of 1 lasts 2 ticks of 1/60 second). A cast member's
/// copy is positioned by the cast store at the clock frame of each moment.
///
/// **Images.** Each frame holds an untransformed image (SetOrgImage) and the
/// transformed image and mask that drawing uses (SetImage). Zoom, rotation,
/// anchor, position and size are applied only when the transformed image is
/// made: after SetZoom, SetRot or SetAnchor call SetImage(index, nullptr, 0,
/// 0, 0) to make it again from the untransformed image already cut out; after
/// Set, SetPos or SetSize, which move or resize the rectangle, cut the frame
/// out again by passing the source picture to SetImage (a new size releases
/// the old cut-out, and a null source then fails). SetOrgImage alone draws nothing: a frame without
/// a transformed image draws nothing. Images are 8-bit colour indices, one byte per pixel, rows
/// from the top; the frame's own buffers have rows exactly as long as the image is wide.
///
/// **Cast members.** The animation is also the QvMCastList of the cast
/// members that hold copies of it (QvMCast::RegAFrame with the animation as
/// list). Every change (Reg, Set, SetPos, SetSize, SetAnchor, SetInterval,
/// SetZoom, SetRot, Del, DelAll, SetOrgImage, SetImage) ends with
/// UpdateMCast, which gives each member a fresh deep copy, images included;
/// bracket a series of changes with LockUpdateMCast / UnlockUpdateMCast to
/// copy once. Activate, Deactivate, SetSpeed and SetMode are not passed on
/// until the next UpdateMCast. The list's own Reg, Del and DelAll are hidden
/// by the frame operations of the same names; the cast store keeps the list.
///
/// **Ownership.** The animation owns its frames and every buffer they point
/// to (allocated with qv::GlobalAlloc). Getters hand out those buffers, not
/// copies: do not free them; each stays valid until it is replaced, its
/// frame is deleted or the animation is destroyed. Buffers passed in are
/// copied; the caller keeps them. Destroying the animation first detaches
/// its cast members, which keep their last copies.
///
/// **Allocation.** Reg, SetOrgImage, SetImage, GetIcon, Dup, Backup and
/// Restore allocate (records and qv::GlobalAlloc buffers) and report a
/// shortage by their failure result; every change passed on to cast members
/// allocates one deep copy per member.
///
/// Results: `char` 1 for success, 0 for failure; a frame index −1 for
/// failure. An index or position naming no frame fails at once. Used from
/// one thread; the lookup lock (LockA, LockM) is a shortcut, not a guard.
class QvAFrame : public QvMCastList, public QvMPlayer {
 public:
  /// \name Codes
  //@{
  /// Wrap of the drawing operations: no wrapped copies.
  static constexpr char kWrapNone = 0;
  /// Wrap bit: horizontally scrolled images wrap around.
  static constexpr char kWrapH = 1;
  /// Wrap bit: vertically scrolled images wrap around.
  static constexpr char kWrapV = 2;
  /// Wrap both ways, the corner piece included.
  static constexpr char kWrapBoth = 3;
  /// Fill of the drawing operations: no background fill.
  static constexpr std::int16_t kNoFill = -1;
  /// Index of Reg that appends the frame at the end.
  static constexpr std::int16_t kAppend = -1;
  //@}

  /// An animation without frames; its clock has the defaults (range 0 .. 0
  /// until the first frame is registered).
  QvAFrame();
  /// Animations are copied with Dup, not by value.
  QvAFrame(const QvAFrame&) = delete;
  /// Animations are copied with Dup, not by value.
  QvAFrame& operator=(const QvAFrame&) = delete;
  /// Detaches the cast members (they keep their last copies), then frees
  /// every frame.
  ~QvAFrame() override;

  /// \name Registration
  //@{
  /// Adds a frame: a rectangle of the source picture with an anchor point,
  /// zoom 1.0, rotation 0.0, inactive, without images.
  /// \param index the frame is inserted before the frame at index (which
  ///   moves up by one); kAppend, or any index naming no frame, appends.
  /// \param posX, posY top-left corner of the rectangle in the source
  ///   picture, pixels.
  /// \param width, height size of the rectangle and of the untransformed
  ///   image, pixels (at least 1 for an image to be made).
  /// \param anchorX, anchorY anchor point in source picture coordinates:
  ///   drawing puts it on the point asked for; zoom and rotation turn about
  ///   it.
  /// \param interval clock frames the frame is shown (stored as given, a
  ///   negative value included; SetInterval stores a negative one as 0).
  /// \return the new frame's index; −1 when memory is short (nothing
  ///   changed).
  std::int16_t Reg(std::int16_t index, std::int16_t posX, std::int16_t posY, std::int16_t width,
                   std::int16_t height, std::int16_t anchorX, std::int16_t anchorY,
                   std::int16_t interval);
  /// Inserts (as the form above) a frame with the settings of frame srcIndex
  /// of src: rectangle, anchor, interval, zoom and rotation; inactive, no
  /// images. Passes the change on once.
  /// \return the new frame's index; −1 when src has no such frame or memory
  ///   is short.
  std::int16_t Reg(std::int16_t index, QvAFrame* src, std::int16_t srcIndex);

  //@}

  /// \name Setters by frame index
  /// Each returns 1, or 0 when there is no such frame; values are stored
  /// unchecked. Geometry, zoom and rotation change nothing drawn until
  /// SetImage(index, nullptr, 0, 0, 0) makes the transformed image again.
  //@{
  /// Sets rectangle and anchor (see Reg). A size change releases an
  /// untransformed image made for another size. Passes the change on.
  char Set(std::int16_t index, std::int16_t posX, std::int16_t posY, std::int16_t width,
           std::int16_t height, std::int16_t anchorX, std::int16_t anchorY);
  /// Sets the rectangle's top-left corner in the source picture. Passes the
  /// change on.
  char SetPos(std::int16_t index, std::int16_t posX, std::int16_t posY);
  /// Sets the rectangle's size; releases an untransformed image made for
  /// another size. Passes the change on.
  char SetSize(std::int16_t index, std::int16_t width, std::int16_t height);
  /// Sets the anchor point, in source picture coordinates. Passes the
  /// change on.
  char SetAnchor(std::int16_t index, std::int16_t anchorX, std::int16_t anchorY);
  /// Sets the clock frames the frame is shown (a negative value is stored
  /// as 0) and the clock's range. Passes the change on.
  char SetInterval(std::int16_t index, std::int16_t interval);
  /// Sets the zoom factors (1.0 = none; 2.0 doubles), applied about the
  /// anchor when the image is made. Passes the change on.
  char SetZoom(std::int16_t index, double zoomX, double zoomY);
  /// Sets the rotation in radians about the anchor, applied when the image
  /// is made; a positive angle turns the picture counter-clockwise on the
  /// screen. Passes the change on.
  char SetRot(std::int16_t index, double rotation);
  /// Sets the frame's host flag (copied, never interpreted); not passed on.
  char Activate(std::int16_t index);
  /// Clears the frame's host flag; not passed on.
  char Deactivate(std::int16_t index);

  //@}

  /// \name Queries
  //@{
  /// The frame's host flag; 0 also when there is no such frame.
  char IsActive(std::int16_t index);
  /// The number of frames (ignores the lookup lock).
  std::int16_t CountAFrame();
  /// The animation's length in clock frames: the sum of the intervals
  /// (16-bit; ignores the lookup lock).
  std::int16_t CountMFrame();
  /// The settings of the frame at index (see Reg; zoom factors, rotation in
  /// radians). Null outputs are skipped. \return 1; 0 without such frame.
  char GetAFrame(std::int16_t index, std::int16_t* posX, std::int16_t* posY, std::int16_t* width,
                 std::int16_t* height, std::int16_t* anchorX, std::int16_t* anchorY,
                 std::int16_t* interval, double* zoomX, double* zoomY, double* rotation);
  /// GetAFrame for the frame shown at a clock position.
  char GetMFrame(std::int16_t position, std::int16_t* posX, std::int16_t* posY, std::int16_t* width,
                 std::int16_t* height, std::int16_t* anchorX, std::int16_t* anchorY,
                 std::int16_t* interval, double* zoomX, double* zoomY, double* rotation);
  /// GetAFrame for the frame at the clock's current frame (sampled first
  /// when the clock runs).
  char GetMFrame(std::int16_t* posX, std::int16_t* posY, std::int16_t* width, std::int16_t* height,
                 std::int16_t* anchorX, std::int16_t* anchorY, std::int16_t* interval,
                 double* zoomX, double* zoomY, double* rotation);

  //@}

  /// \name Lookup lock and batching
  //@{
  /// Locks on the frame at index: until Unlock every lookup by index or
  /// position yields that frame (or fails when there was none), whatever
  /// its argument. Deleting the locked frame ends the lock.
  void LockA(std::int16_t index);
  /// Locks on the frame at a clock position, as LockA.
  void LockM(std::int16_t position);
  /// Ends the lookup lock.
  void Unlock();

  /// Holds back the passing on of changes to the cast members (nested up to
  /// 127 deep) until the matching UnlockUpdateMCast.
  void LockUpdateMCast();
  /// Ends one LockUpdateMCast; the last one passes the changes on once
  /// (UpdateMCast). Without a lock it does nothing.
  void UnlockUpdateMCast();
  //@}

  /// \name Deletion
  //@{
  /// Deletes the frame and its buffers; later frames move down by one.
  /// Releases the lookup lock when it named the frame. Passes the change on.
  /// \return 1; 0 without such frame.
  char Del(std::int16_t index);
  /// Deletes every frame (the clock's end becomes −1). Passes the change on.
  void DelAll();
  //@}

  /// \name Images
  /// Buffers passed in are copied. A transform whose size wraps below 1 in
  /// 16 bits returns 0 and leaves the frame without a transformed image.
  //@{
  /// Cuts the frame's untransformed image out of a source picture: the part
  /// of the frame's rectangle inside the source is copied, the rest is 0.
  /// Draws nothing by itself: make the transformed image with SetImage.
  /// src is the source picture, srcWidth × srcHeight pixels in rows
  /// srcRowBytes apart (not owned).
  /// \return 1; 0 without such frame, with a frame size below 1, a null
  ///   src or rows shorter than srcWidth, or when memory is short (the frame then has no
  ///   untransformed image). Passes the change on; the thumbnail stays.
  char SetOrgImage(std::int16_t index, unsigned char* src, std::int16_t srcRowBytes,
                   std::int16_t srcWidth, std::int16_t srcHeight);
  /// Copies an untransformed image of exactly the frame's size, rows width
  /// bytes apart. \return 1; 0 without such frame, when width and height
  /// differ from the frame's or are below 1, or when memory is short.
  /// Passes the change on.
  char SetOrgImage(std::int16_t index, unsigned char* src, std::int16_t width, std::int16_t height);
  /// Makes the transformed image and mask from the untransformed image by
  /// the frame's zoom, then rotation, about its anchor. With a non-null src
  /// it first cuts the untransformed image out of it (SetOrgImage); with a
  /// null src it remakes the image from the untransformed image already held:
  /// the call to follow every setter.
  /// \return 1; 0 without such frame or untransformed image, when the cut
  ///   fails, or when memory is short (the frame then has no transformed
  ///   image). Drops the thumbnail; passes the change on.
  char SetImage(std::int16_t index, unsigned char* src, std::int16_t srcRowBytes,
                std::int16_t srcWidth, std::int16_t srcHeight);
  /// Takes a ready transformed image and mask (255 where the frame shows,
  /// 0 elsewhere), both imageWidth × imageHeight with rows imageWidth bytes
  /// apart, and the position of its top-left pixel relative to the anchor.
  /// \return 1; 0 without such frame, with a size below 1 (frame
  ///   unchanged), or when memory is short (no transformed image then).
  ///   Drops the thumbnail; passes the change on.
  char SetImage(std::int16_t index, unsigned char* image, unsigned char* mask,
                std::int16_t imageWidth, std::int16_t imageHeight, std::int16_t imageOffsetX,
                std::int16_t imageOffsetY);
  /// The frame's own untransformed buffer (null when none; do not free) and
  /// the frame's width and height.
  /// \return 1; 0 without such frame or with a null output.
  char GetOrgImage(std::int16_t index, unsigned char** orgImage, std::int16_t* width,
                   std::int16_t* height);
  /// The frame's own transformed image and mask (null when none; do not
  /// free), their size and the offset of their top-left pixel from the
  /// anchor. Null outputs are skipped. \return 1; 0 without such frame.
  ///
  /// The caller may read and write the bytes handed out. Asked of a cast
  /// member's copy (QvMCast::AFrame) for the image or the mask, it makes the
  /// store draw that member through the member's off-screen world from then
  /// on, which is slower; HasAImage tells whether a frame has its image
  /// without handing anything out.
  char GetAImage(std::int16_t index, unsigned char** image, unsigned char** mask,
                 std::int16_t* imageWidth, std::int16_t* imageHeight, std::int16_t* imageOffsetX,
                 std::int16_t* imageOffsetY);
  /// \return 1 when the frame at index has its transformed image and mask;
  ///   0 when it has none (never transformed, or the transform failed) or
  ///   there is no such frame.
  char HasAImage(std::int16_t index);
  /// GetAImage for the frame shown at a clock position.
  char GetMImage(std::int16_t position, unsigned char** image, unsigned char** mask,
                 std::int16_t* imageWidth, std::int16_t* imageHeight, std::int16_t* imageOffsetX,
                 std::int16_t* imageOffsetY);
  /// GetAImage for the frame at the clock's current frame (sampled first
  /// when the clock runs).
  char GetMImage(unsigned char** image, unsigned char** mask, std::int16_t* imageWidth,
                 std::int16_t* imageHeight, std::int16_t* imageOffsetX, std::int16_t* imageOffsetY);
  /// Copies a thumbnail of iconWidth × iconHeight pixels (at least 1),
  /// centred on the anchor and sampled from the transformed image, into dst
  /// (rows dstRowBytes apart, not owned). The thumbnail is cached per size.
  /// \return 1; 0 without such frame or transformed image, or when memory
  ///   is short.
  char GetIcon(std::int16_t index, unsigned char* dst, std::int16_t dstRowBytes,
               std::int16_t iconWidth, std::int16_t iconHeight);
  /// The smallest area holding every frame's transformed image placed by
  /// its offsets around a common anchor pixel: its width and height and the
  /// anchor's position inside it. Covers every frame whatever the lookup
  /// lock; the result is remembered until a frame is added, removed or given
  /// a new image. Null outputs are skipped. \return 1; 0 without frames.
  char GetArea(std::int16_t* width, std::int16_t* height, std::int16_t* anchorX,
               std::int16_t* anchorY);

  //@}

  /// \name Drawing
  /// Shared parameters: (x, y) the point of the target the anchor lands on;
  /// pal a palette area (only pixels whose index it holds are drawn) or
  /// null; fill a background index set over the whole target first, or
  /// kNoFill; wrap kWrapNone, kWrapH, kWrapV or kWrapBoth; scrollX,
  /// scrollY the shift of the image right and down inside its own rectangle,
  /// reduced modulo the image size. Only pixels under the mask are drawn.
  //@{
  /// Draws the frame at index into an 8-bit buffer of dstWidth × dstHeight
  /// pixels, rows dstRowBytes apart (not owned; must hold that much).
  /// frameRect receives the frame's rectangle in the target before
  /// scrolling; (0, 0, 0, 0) when the frame has no transformed image.
  /// \return 1 (also when nothing is drawn); 0 without such frame.
  char DrawAImage(std::int16_t index, unsigned char* dst, std::int16_t dstRowBytes,
                  std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x, std::int16_t y,
                  QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                  std::int16_t scrollY, tbRect* frameRect);
  /// DrawAImage for the frame shown at a clock position.
  char DrawMImage(std::int16_t position, unsigned char* dst, std::int16_t dstRowBytes,
                  std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x, std::int16_t y,
                  QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                  std::int16_t scrollY, tbRect* frameRect);
  /// DrawAImage for the frame at the clock's current frame (sampled first
  /// when the clock runs).
  char DrawMImage(unsigned char* dst, std::int16_t dstRowBytes, std::int16_t dstWidth,
                  std::int16_t dstHeight, std::int16_t x, std::int16_t y, QvPal* pal,
                  std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                  tbRect* frameRect);
  /// Draws the frame at index into the off-screen world (anchor at (x, y)
  /// of the world), then copies the world into destPixMap with its top-left
  /// corner at (destX, destY), through the frame's rectangle (or, with pal,
  /// through the pixels not of the fill index). Neither is owned.
  /// \return 1; 0 without such frame or when the copy's region cannot be
  ///   made (the world is drawn then, the target not).
  char DrawAPicture(std::int16_t index, tbGWorld* world, std::int16_t x, std::int16_t y, QvPal* pal,
                    std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                    tbPixMap* destPixMap, std::int16_t destX, std::int16_t destY);
  /// DrawAPicture for the frame shown at a clock position: the form the cast
  /// store draws members with.
  char DrawMPicture(std::int16_t position, tbGWorld* world, std::int16_t x, std::int16_t y,
                    QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                    std::int16_t scrollY, tbPixMap* destPixMap, std::int16_t destX,
                    std::int16_t destY);

  //@}

  /// \name Copies of whole animations
  /// They walk the source's frames whatever its lookup lock and leave that
  /// lock as it was; a locked target loses its lock with its frames. The
  /// target's earlier frames are deleted; its cast reference list stays and
  /// its members are refreshed once at the end. With the object itself as
  /// the other animation they return 1 and change nothing; with a null one
  /// they return 0.
  //@{
  /// Replaces dst's content by a deep copy of this animation: frames,
  /// settings, host flags, images, clock mode and speed (not the clock's
  /// position, the thumbnails or the reference list).
  /// \return 1; 0 when a frame cannot be added (the frames copied so far
  ///   stay). A failed image copy leaves that frame without it.
  char Dup(QvAFrame* dst);
  /// Replaces dst's frames by copies of this animation's frames without
  /// images (settings and host flags only). \return 1; 0 when a frame
  /// cannot be added.
  char Backup(QvAFrame* dst);
  /// Replaces this animation's frames by copies of src's frames without
  /// images; set the images again before drawing. \return 1; 0 when a
  /// frame cannot be added.
  char Restore(QvAFrame* src);

  /// No file format: returns 0 and does nothing.
  char Load(int file);
  /// No file format: returns 0 and does nothing.
  char Load(char* path);
  /// No file format: returns 0 and does nothing.
  char Load(int file, std::uint32_t offset);
  /// No file format: returns 0 and does nothing.
  char Save(int file, std::uint32_t offset);
  /// No file format: returns 0 and does nothing.
  char Save(char* path, std::uint32_t a, std::uint32_t b, std::uint32_t c);
  //@}

  /// \name Passing changes on to the cast members
  //@{
  /// Gives every cast member in the list a fresh deep copy of the
  /// animation (keeping each member's name and range); nothing while
  /// LockUpdateMCast holds. Call it after a change that is not passed on by
  /// itself (SetSpeed, SetMode, Activate, Deactivate).
  void UpdateMCast();
  /// Gives every member a last copy, then empties the list: the members
  /// keep drawing that copy and no longer follow the animation. The
  /// destructor calls it.
  void DelFromMCast();
  //@}

 protected:
  /// Only the animation sets its clock's range.
  using QvMPlayer::SetEnd;
  /// Only the animation sets its clock's range.
  using QvMPlayer::SetTop;

  /// Registers this animation again on every member of its own list, passing
  /// list to the cast store (null detaches the members).
  void localUpdateMCast(QvMCastList* list);

  /// The frame at index (or the locked frame), also kept in curFrame; null
  /// when none.
  QvAFrameInfo* localSearchA(std::int16_t index);
  /// The frame shown at a clock position (or the locked frame), also kept in
  /// curFrame; null when none.
  QvAFrameInfo* localSearchM(std::int16_t position);
  /// Stores the position into curFrame and drops its thumbnail.
  void localSetPos(std::int16_t posX, std::int16_t posY);
  /// Stores the size into curFrame and drops its thumbnail.
  void localSetSize(std::int16_t width, std::int16_t height);
  /// Stores the anchor into curFrame and drops its thumbnail.
  void localSetAnchor(std::int16_t anchorX, std::int16_t anchorY);
  /// Frees the record's thumbnail.
  void localDeleteIcon(QvAFrameInfo* info);
  /// Writes curFrame's settings to the non-null outputs, in GetAFrame's
  /// order.
  void localGetFrame(std::int16_t* posX, std::int16_t* posY, std::int16_t* width,
                     std::int16_t* height, std::int16_t* anchorX, std::int16_t* anchorY,
                     std::int16_t* interval, double* zoomX, double* zoomY, double* rotation);

  /// Zooms a point about (cx, cy): trunc((x − cx) × zoomX) + cx and
  /// likewise for y, each only when its factor is not 1.0.
  void localZoom(std::int16_t* x, std::int16_t* y, std::int16_t cx, std::int16_t cy, double zoomX,
                 double zoomY);
  /// Rotates a point about (cx, cy) by rotation radians (counter-clockwise
  /// on the screen), each product truncated toward zero by itself.
  void localRot(std::int16_t* x, std::int16_t* y, std::int16_t cx, std::int16_t cy,
                double rotation);
  /// *min = the least of a, b, c, d; *size = greatest − least + 1.
  void localGetArea(std::int16_t* min, std::int16_t* size, std::int16_t a, std::int16_t b,
                    std::int16_t c, std::int16_t d);
  /// Writes curFrame's transformed-image fields to the non-null outputs, in
  /// GetAImage's order.
  void localGetImage(unsigned char** image, unsigned char** mask, std::int16_t* imageWidth,
                     std::int16_t* imageHeight, std::int16_t* imageOffsetX,
                     std::int16_t* imageOffsetY);

  /// Placing form: draws curFrame with its anchor at (x, y).
  void localDrawImage(unsigned char* dst, std::int16_t dstRowBytes, std::int16_t dstWidth,
                      std::int16_t dstHeight, std::int16_t x, std::int16_t y, QvPal* pal,
                      std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                      tbRect* frameRect);
  /// Copying form: copies the placed rectangle (left, top, right, bottom) of an
  /// image through its mask into dst, clipped. The image must hold
  /// bottom - top rows of imageRowBytes bytes and right - left must not exceed
  /// imageRowBytes; the clip rectangle must lie inside dst.
  void localDrawImage(unsigned char* image, unsigned char* mask, std::int16_t imageRowBytes,
                      unsigned char* dst, std::int16_t dstRowBytes, std::int16_t left,
                      std::int16_t top, std::int16_t right, std::int16_t bottom,
                      std::int16_t clipLeft, std::int16_t clipTop, std::int16_t clipRight,
                      std::int16_t clipBottom, QvPal* pal);
  /// Draws curFrame into the world and copies the world, masked, into
  /// destPixMap; 0 when the region cannot be made.
  char localDrawPicture(tbGWorld* world, std::int16_t x, std::int16_t y, QvPal* pal,
                        std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                        tbPixMap* destPixMap, std::int16_t destX, std::int16_t destY);

  /// Sets the clock's range to 0 .. CountMFrame() - 1.
  void localResetRange();
  /// Releases every buffer of a record and the record itself; releases the
  /// lookup lock when it names the record.
  void localFreeFrame(QvAFrameInfo* info);
  /// Releases the untransformed image of a record.
  void localDeleteOrgImage(QvAFrameInfo* info);
  /// Releases the transformed image and mask of a record.
  void localDeleteImage(QvAFrameInfo* info);
  /// Appends or inserts a new record; returns it (null on allocation failure)
  /// and the new index through indexOut.
  QvAFrameInfo* localRegFrame(std::int16_t index, std::int16_t posX, std::int16_t posY,
                              std::int16_t width, std::int16_t height, std::int16_t anchorX,
                              std::int16_t anchorY, std::int16_t interval, std::int16_t* indexOut);

  /// Forgets the area and the last lookup by position that GetArea and
  /// localSearchM remember, after bringing up to date the pixels of a cast
  /// member's world that the member's last drawing left for later (the
  /// animation is then a member's copy). Every operation that adds or
  /// removes a frame or sets a frame's interval or image calls it before it
  /// changes anything; a subclass that changes the records of frameList
  /// itself (the list, an interval, an image, a mask, their size or offsets)
  /// calls it first too.
  void localFramesChanged();

  /// First frame; null without frames.
  QvAFrameInfo* frameList;
  /// The frame found by the last lookup (the locked frame while locked).
  QvAFrameInfo* curFrame;
  /// 1 while a lookup lock is held.
  unsigned char lockFlag;
  /// Nesting count of LockUpdateMCast.
  signed char updateLock;

 private:
  /// GetArea's result, valid while areaKnown.
  std::int16_t areaWidth = 0, areaHeight = 0, areaAnchorX = 0, areaAnchorY = 0;
  bool areaKnown = false;
  /// The last walk by position while seekKnown: it looked for seekPosition
  /// and stopped at seekFrame, whose intervals end, summed from the first
  /// frame, at seekEnd. Every frame before seekFrame ends at or before
  /// seekPosition, so a walk for a later position may start there.
  QvAFrameInfo* seekFrame = nullptr;
  std::int16_t seekPosition = 0;
  std::uint16_t seekEnd = 0;
  bool seekKnown = false;

  // A cast store draws a member straight from its frame into the target,
  // leaving the member's world (filled, then drawn into, then copied from)
  // for later, where that gives the same target. The world is brought up to
  // date before anything could show it otherwise: before a frame is changed
  // or removed, its buffers lent out, the copy destroyed or the world drawn
  // through; the store forgets it before disposing or clearing the world.
  friend class QvMCast;
  /// The drawing whose pixels world lacks; world is null when none.
  struct DeferredWorld {
    tbGWorld* world = nullptr;
    const QvAFrameInfo* frame = nullptr;
    /// Drawn through a palette area (area), or through the mask alone.
    bool keyed = false;
    unsigned char area[32] = {};
    std::int16_t x = 0, y = 0, fill = 0, scrollX = 0, scrollY = 0;
    char wrap = 0;
  };
  DeferredWorld deferred;
  /// Set once GetAImage or GetMImage handed out a frame's image or mask:
  /// their bytes may change unseen, so no world is left for later.
  bool imagesLent = false;

  /// DrawMPicture for a cast member's world. zeroFirst: the world is made
  /// new, its pixels 0, before the drawing.
  char localDrawMember(std::int16_t position, tbGWorld* world, bool zeroFirst, std::int16_t x,
                       std::int16_t y, QvPal* pal, std::int16_t fill, char wrap,
                       std::int16_t scrollX, std::int16_t scrollY, tbPixMap* destPixMap,
                       std::int16_t destX, std::int16_t destY);
  /// Writes the pixels left for later into their world.
  void localSettleWorld();
  /// Drops what was left for later in world, whose pixels are about to go.
  void localForgetWorld(tbGWorld* world) {
    if (deferred.world == world) deferred.world = nullptr;
  }
  /// The placing form for frame f; area is the palette area as a 256-bit
  /// set, or null.
  void localPlaceFrame(const QvAFrameInfo* f, unsigned char* dst, std::int16_t dstRowBytes,
                       std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x,
                       std::int16_t y, const unsigned char* area, std::int16_t fill, char wrap,
                       std::int16_t scrollX, std::int16_t scrollY, tbRect* frameRect);
};

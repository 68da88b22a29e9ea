#pragma once

#include <cstdint>

#include "aframe/QvAFrameInfo.h"
#include "player/QvMCastList.h"
#include "player/QvMPlayer.h"

class QvPal;
class tbGWorld;
class tbPixMap;
class tbRect;

// A frame animation: an ordered list of frames cut out of a source picture,
// each with an anchor point, zoom, rotation and an interval in clock frames.
// Frames are named by frame index (operations with an A) or by a position of
// the animation's own clock (operations with an M). The clock's range is kept
// equal to the animation's length; the cast reference list names the cast
// members that hold copies of the animation, which are refreshed after every
// change (UpdateMCast).
class QvAFrame : public QvMCastList, public QvMPlayer {
 public:
  QvAFrame();
  QvAFrame(const QvAFrame&) = delete;
  QvAFrame& operator=(const QvAFrame&) = delete;
  ~QvAFrame() override;

  // Registration. Inserts before the frame at index (appends when there is
  // none); returns the new frame's index, -1 when memory is short.
  std::int16_t Reg(std::int16_t index, std::int16_t posX, std::int16_t posY, std::int16_t width,
                   std::int16_t height, std::int16_t anchorX, std::int16_t anchorY,
                   std::int16_t interval);
  // Inserts a copy of the settings of frame srcIndex of src (inactive, no
  // images); -1 when src has no such frame or memory is short.
  std::int16_t Reg(std::int16_t index, QvAFrame* src, std::int16_t srcIndex);

  // Setters by frame index; 0 when there is no such frame. A size change
  // (Set, SetSize) releases an untransformed image made for another size.
  char Set(std::int16_t index, std::int16_t posX, std::int16_t posY, std::int16_t width,
           std::int16_t height, std::int16_t anchorX, std::int16_t anchorY);
  char SetPos(std::int16_t index, std::int16_t posX, std::int16_t posY);
  char SetSize(std::int16_t index, std::int16_t width, std::int16_t height);
  char SetAnchor(std::int16_t index, std::int16_t anchorX, std::int16_t anchorY);
  char SetInterval(std::int16_t index, std::int16_t interval);
  char SetZoom(std::int16_t index, double zoomX, double zoomY);
  char SetRot(std::int16_t index, double rotation);
  char Activate(std::int16_t index);
  char Deactivate(std::int16_t index);

  // Queries.
  char IsActive(std::int16_t index);
  std::int16_t CountAFrame();
  std::int16_t CountMFrame();
  char GetAFrame(std::int16_t index, std::int16_t* posX, std::int16_t* posY, std::int16_t* width,
                 std::int16_t* height, std::int16_t* anchorX, std::int16_t* anchorY,
                 std::int16_t* interval, double* zoomX, double* zoomY, double* rotation);
  char GetMFrame(std::int16_t position, std::int16_t* posX, std::int16_t* posY, std::int16_t* width,
                 std::int16_t* height, std::int16_t* anchorX, std::int16_t* anchorY,
                 std::int16_t* interval, double* zoomX, double* zoomY, double* rotation);
  char GetMFrame(std::int16_t* posX, std::int16_t* posY, std::int16_t* width, std::int16_t* height,
                 std::int16_t* anchorX, std::int16_t* anchorY, std::int16_t* interval,
                 double* zoomX, double* zoomY, double* rotation);

  // Lookup lock: every lookup yields the locked frame until Unlock.
  void LockA(std::int16_t index);
  void LockM(std::int16_t position);
  void Unlock();

  // Batching of the refreshes of the cast members.
  void LockUpdateMCast();
  void UnlockUpdateMCast();

  // Deletion. Deleting the frame found by the last lookup (the locked frame
  // included) releases the lookup lock.
  char Del(std::int16_t index);
  void DelAll();

  // Images. A transform whose size wraps below 1 in 16 bits returns 0 and
  // leaves the frame without a transformed image.
  char SetOrgImage(std::int16_t index, unsigned char* src, std::int16_t srcRowBytes,
                   std::int16_t srcWidth, std::int16_t srcHeight);
  char SetOrgImage(std::int16_t index, unsigned char* src, std::int16_t width, std::int16_t height);
  char SetImage(std::int16_t index, unsigned char* src, std::int16_t srcRowBytes,
                std::int16_t srcWidth, std::int16_t srcHeight);
  char SetImage(std::int16_t index, unsigned char* image, unsigned char* mask,
                std::int16_t imageWidth, std::int16_t imageHeight, std::int16_t imageOffsetX,
                std::int16_t imageOffsetY);
  char GetOrgImage(std::int16_t index, unsigned char** orgImage, std::int16_t* width,
                   std::int16_t* height);
  char GetAImage(std::int16_t index, unsigned char** image, unsigned char** mask,
                 std::int16_t* imageWidth, std::int16_t* imageHeight, std::int16_t* imageOffsetX,
                 std::int16_t* imageOffsetY);
  char GetMImage(std::int16_t position, unsigned char** image, unsigned char** mask,
                 std::int16_t* imageWidth, std::int16_t* imageHeight, std::int16_t* imageOffsetX,
                 std::int16_t* imageOffsetY);
  char GetMImage(unsigned char** image, unsigned char** mask, std::int16_t* imageWidth,
                 std::int16_t* imageHeight, std::int16_t* imageOffsetX, std::int16_t* imageOffsetY);
  char GetIcon(std::int16_t index, unsigned char* dst, std::int16_t dstRowBytes,
               std::int16_t iconWidth, std::int16_t iconHeight);
  // Walks every frame whatever the lookup lock; null outputs are skipped.
  char GetArea(std::int16_t* width, std::int16_t* height, std::int16_t* anchorX,
               std::int16_t* anchorY);

  // Drawing.
  char DrawAImage(std::int16_t index, unsigned char* dst, std::int16_t dstRowBytes,
                  std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x, std::int16_t y,
                  QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                  std::int16_t scrollY, tbRect* frameRect);
  char DrawMImage(std::int16_t position, unsigned char* dst, std::int16_t dstRowBytes,
                  std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x, std::int16_t y,
                  QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                  std::int16_t scrollY, tbRect* frameRect);
  char DrawMImage(unsigned char* dst, std::int16_t dstRowBytes, std::int16_t dstWidth,
                  std::int16_t dstHeight, std::int16_t x, std::int16_t y, QvPal* pal,
                  std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                  tbRect* frameRect);
  char DrawAPicture(std::int16_t index, tbGWorld* world, std::int16_t x, std::int16_t y, QvPal* pal,
                    std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                    tbPixMap* destPixMap, std::int16_t destX, std::int16_t destY);
  char DrawMPicture(std::int16_t position, tbGWorld* world, std::int16_t x, std::int16_t y,
                    QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                    std::int16_t scrollY, tbPixMap* destPixMap, std::int16_t destX,
                    std::int16_t destY);

  // Copies of whole animations. They walk the source's frames whatever its
  // lookup lock and leave that lock as it was; a locked target loses its lock
  // with its frames. With the object itself as the other animation they
  // return 1 and change nothing; with a null one they return 0.
  char Dup(QvAFrame* dst);
  char Backup(QvAFrame* dst);
  char Restore(QvAFrame* src);

  // Persistence: not supported; every form returns 0.
  char Load(int file);
  char Load(char* path);
  char Load(int file, std::uint32_t offset);
  char Save(int file, std::uint32_t offset);
  char Save(char* path, std::uint32_t a, std::uint32_t b, std::uint32_t c);

  // Passing changes on to the cast members that hold copies.
  void UpdateMCast();
  void DelFromMCast();

 protected:
  // Only the animation sets its clock's range.
  using QvMPlayer::SetEnd;
  using QvMPlayer::SetTop;

  void localUpdateMCast(QvMCastList* list);

  QvAFrameInfo* localSearchA(std::int16_t index);
  QvAFrameInfo* localSearchM(std::int16_t position);
  void localSetPos(std::int16_t posX, std::int16_t posY);
  void localSetSize(std::int16_t width, std::int16_t height);
  void localSetAnchor(std::int16_t anchorX, std::int16_t anchorY);
  void localDeleteIcon(QvAFrameInfo* info);
  void localGetFrame(std::int16_t* posX, std::int16_t* posY, std::int16_t* width,
                     std::int16_t* height, std::int16_t* anchorX, std::int16_t* anchorY,
                     std::int16_t* interval, double* zoomX, double* zoomY, double* rotation);

  void localZoom(std::int16_t* x, std::int16_t* y, std::int16_t cx, std::int16_t cy, double zoomX,
                 double zoomY);
  void localRot(std::int16_t* x, std::int16_t* y, std::int16_t cx, std::int16_t cy,
                double rotation);
  void localGetArea(std::int16_t* min, std::int16_t* size, std::int16_t a, std::int16_t b,
                    std::int16_t c, std::int16_t d);
  void localGetImage(unsigned char** image, unsigned char** mask, std::int16_t* imageWidth,
                     std::int16_t* imageHeight, std::int16_t* imageOffsetX,
                     std::int16_t* imageOffsetY);

  // Placing form: draws curFrame with its anchor at (x, y).
  void localDrawImage(unsigned char* dst, std::int16_t dstRowBytes, std::int16_t dstWidth,
                      std::int16_t dstHeight, std::int16_t x, std::int16_t y, QvPal* pal,
                      std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                      tbRect* frameRect);
  // Copying form: copies the placed rectangle (left, top, right, bottom) of an
  // image through its mask into dst, clipped. The image must hold
  // bottom - top rows of imageRowBytes bytes and right - left must not exceed
  // imageRowBytes; the clip rectangle must lie inside dst.
  void localDrawImage(unsigned char* image, unsigned char* mask, std::int16_t imageRowBytes,
                      unsigned char* dst, std::int16_t dstRowBytes, std::int16_t left,
                      std::int16_t top, std::int16_t right, std::int16_t bottom,
                      std::int16_t clipLeft, std::int16_t clipTop, std::int16_t clipRight,
                      std::int16_t clipBottom, QvPal* pal);
  char localDrawPicture(tbGWorld* world, std::int16_t x, std::int16_t y, QvPal* pal,
                        std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                        tbPixMap* destPixMap, std::int16_t destX, std::int16_t destY);

  // Helpers of this implementation.
  // Sets the clock's range to 0 .. CountMFrame() - 1.
  void localResetRange();
  // Releases every buffer of a record and the record itself; releases the
  // lookup lock when it names the record.
  void localFreeFrame(QvAFrameInfo* info);
  // Releases the untransformed image of a record.
  void localDeleteOrgImage(QvAFrameInfo* info);
  // Releases the transformed image and mask of a record.
  void localDeleteImage(QvAFrameInfo* info);
  // Appends or inserts a new record; returns it (null on allocation failure)
  // and the new index through indexOut.
  QvAFrameInfo* localRegFrame(std::int16_t index, std::int16_t posX, std::int16_t posY,
                              std::int16_t width, std::int16_t height, std::int16_t anchorX,
                              std::int16_t anchorY, std::int16_t interval, std::int16_t* indexOut);

  QvAFrameInfo* frameList;
  QvAFrameInfo* curFrame;
  unsigned char lockFlag;
  signed char updateLock;
};

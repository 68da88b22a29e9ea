#pragma once

#include <cstdint>

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

// The cast store: a list of cast members (QvMCastInfo records) in creation
// order, each named by a 16-bit cast id, with its name, host flags, time range
// and attachments (private copies of colour and frame animations, own colour
// table, Dft entries, anchor path, scroll directions, cached icon).
//
// Results: a char is 1 for success and 0 for failure, a short id -1 for
// failure, a long time -1 for an absent member or an unset time, a pointer
// null. Every operation taking a cast id looks the member up first and fails
// at once when there is none. A query with one output fails (0) when given a
// null pointer; queries with several outputs skip the null ones.
//
// Many operations by id have a protected twin of the same name taking the
// record. Pass ids as std::int16_t values: a bare literal 0 also converts to
// a null record pointer, which makes such a call ambiguous.
class QvMCast {
 public:
  QvMCast();
  virtual ~QvMCast();
  // In-betweening hook: given keyCount key points (ascending anchor index,
  // indices in keyIndex), fills out[1] to out[outCount - 2] with the places of
  // the anchors between the first and last key. mode is passed through from
  // InbetweenAnc(id, mode). Does nothing here; a derived class supplies the
  // curve.
  virtual void InbetweenAnc(tbPoint* keys, std::int16_t* keyIndex, std::int16_t keyCount,
                            tbPoint* out, std::int16_t outCount, char mode);

  // A store owns its members; it cannot be copied.
  QvMCast(const QvMCast&) = delete;
  QvMCast& operator=(const QvMCast&) = delete;

  // ---- Cast table ----
  std::int16_t GetNewID();
  std::int16_t Count();
  std::int16_t ID2Index(std::int16_t id);
  std::int16_t Index2ID(std::int16_t index);
  // While locked, every by-id operation acts on the member found by Lock,
  // whatever id it is given (and fails when that id was absent). Deleting the
  // locked member ends the lock.
  void Lock(std::int16_t id);
  void Unlock();

  char New(std::int16_t id, unsigned char* name);
  std::int16_t New(unsigned char* name);
  char Empty(std::int16_t id);
  char Del(std::int16_t id);
  void DelAll();

  char SetName(std::int16_t id, unsigned char* name);
  // *out receives a new handle (caller frees it with QvFreeString) or null
  // for a member without a name. 0 (and null) when the member is absent or
  // its name cannot be copied.
  char GetName(std::int16_t id, unsigned char*** out);

  std::uint32_t ActFlag(std::int16_t id);
  char SetActFlag(std::int16_t id, std::uint32_t flags);
  char ResetActFlag(std::int16_t id);
  char GetActFlag(std::int16_t id, std::uint32_t* flags);
  char SetShowFlag(std::int16_t id, std::uint32_t flags);
  char ResetShowFlag(std::int16_t id);
  char GetShowFlag(std::int16_t id, std::uint32_t* flags);

  std::int32_t Start(std::int16_t id);
  std::int32_t End(std::int16_t id);
  std::int32_t End();
  char SetStartEnd(std::int16_t id, std::int32_t start, std::int32_t end);
  char SetStart(std::int16_t id, std::int32_t start);
  char SetEnd(std::int16_t id, std::int32_t end);

  // ---- Attachments ----
  // A registration with a negative id creates the member. Registering a
  // reference list other than the one recorded for that attachment makes the
  // recorded list forget the member, so that no list keeps naming a member
  // that no longer follows it (an animation detaching itself passes a null
  // list and empties its own list afterwards). A registration may be given
  // the member's own copy, table, entries or anchors.
  std::int16_t RegAFrame(std::int16_t id, QvAFrame* anim, std::int32_t startTime,
                         unsigned char* name, QvMCastList* list);
  std::int16_t RegOrgCTable(std::int16_t id, tbColorTable* table, QvPal* pal, unsigned char* name);
  std::int16_t RegDft(std::int16_t id, std::int16_t param, QvMCastDft* entries, std::int16_t count,
                      char flag, unsigned char* name, QvMCastList* list);
  std::int16_t RegScroll(std::int16_t id, char dirs, unsigned char* name);
  char DelAFrame(std::int16_t id);
  char DelOrgCTable(std::int16_t id);
  char DelDft(std::int16_t id);
  char DelScroll(std::int16_t id, char dirs);

  QvAFrame* AFrame(std::int16_t id);
  char IsDft(std::int16_t id);
  char IsAnc(std::int16_t id);
  char IsScroll(std::int16_t id, char* dirs);
  char IsScrollLeft(std::int16_t id);
  char IsScrollRight(std::int16_t id);
  char IsScrollUp(std::int16_t id);
  char IsScrollDown(std::int16_t id);
  // The entry array handed back is the member's own; do not free it.
  char GetDft(std::int16_t id, std::int16_t* param, QvMCastDft** entries, std::int16_t* count,
              char* flag);

  // ---- Anchor motion paths ----
  // A count below 1 (or null anchors) leaves the member without a path.
  std::int16_t RegAnc(std::int16_t id, QvMCastAnc* anchors, std::int16_t count, char type,
                      unsigned char* name);
  char DelAnc(std::int16_t id);
  char SetAnc(std::int16_t id, std::int16_t index, const tbPoint& point, char flag);
  char OffsetAnc(std::int16_t id, std::int16_t dx, std::int16_t dy);
  char ResetAnc(std::int16_t id);
  char InbetweenAnc(std::int16_t id, char mode);
  char SetAncType(std::int16_t id, char type);
  char SetAncOffset(std::int16_t id, std::int16_t offset);
  char SetAncOffset(std::int16_t id, tbPoint* point);
  char GetAncOffset(std::int16_t id, std::int16_t* offset);
  char GetAncNum(std::int16_t id, std::int16_t* num);
  char SetAncStep(std::int16_t id, double step);
  char GetAncStep(std::int16_t id, double* step);
  char SetAncCount(std::int16_t id, double count);
  char GetAncCount(std::int16_t id, std::int16_t d, double* count);
  char SetAncSelectArea(std::int16_t id, std::int32_t a, std::int32_t b);
  char GetAncSelectArea(std::int16_t id, std::int32_t* a, std::int32_t* b);
  // By anchor index (a std::int16_t second argument) ...
  char GetAnc(std::int16_t id, std::int16_t index, tbPoint* point, char* flag);
  // ... and by movie time (a std::int32_t second argument).
  char GetAnc(std::int16_t id, std::int32_t time, tbPoint* point, char* flag);

  // ---- Scrolling ----
  char SetScrStepH(std::int16_t id, double step);
  char SetScrStepV(std::int16_t id, double step);
  char GetScrStepH(std::int16_t id, double* step);
  char GetScrStepV(std::int16_t id, double* step);
  char SetScrCountH(std::int16_t id, double count);
  char SetScrCountV(std::int16_t id, double count);
  char GetScrCountH(std::int16_t id, std::int16_t d, double* count);
  char GetScrCountV(std::int16_t id, std::int16_t d, double* count);
  char GetScroll(std::int16_t id, std::int32_t time, std::int16_t* h, std::int16_t* v);

  // ---- Rendering and hit-testing ----
  char DrawPicture(std::int16_t id, std::int32_t time, tbPixMap* dst, tbRect* area);
  // The result is workCTable, valid until the next CTable or DrawPicture.
  tbColorTable* CTable(std::int16_t id, std::int32_t time);
  char GetAFrameArea(std::int16_t id, std::int32_t time, tbRect* area, char mode, tbRect* result,
                     tbPoint* point);
  char PtInAFrame(tbPoint* pt, std::int16_t id, std::int32_t time, tbRect* area, char mode);
  // The picture belongs to the member; do not dispose it.
  tbPicture* Icon(std::int16_t id, std::int16_t width, std::int16_t height);

  // ---- Duplication, backup and restore ----
  // Dup into this store with a negative dstId fails (-1, nothing made) when
  // the new member would replace the source, that is when the source holds
  // the id the counter hands out next or the store is locked on it.
  std::int16_t Dup(std::int16_t srcId, std::int32_t start, unsigned char* name, QvMCast* dst,
                   std::int16_t dstId);
  char Backup(std::int16_t id, QvMCast* dst);
  char Restore(QvMCast* src);

  // The cast store has no file format: every load and save gives 0.
  char Load(int file);
  char Load(char* path);
  char Save(int file);
  char Save(int file, std::int16_t id);
  char Save(char* path, std::uint32_t a, std::uint32_t b);
  char SaveEnd(int file);
  char SaveTerm(int file);

  // ---- Colour animation copies ----
  // kind: 0 cycle, 1 flash, 2 switch, 3 fade. A kind outside 0 to 3 touches
  // no attachment.
  std::int16_t RegAColor(std::int16_t id, QvAColor* anim, char kind, std::int32_t startTime,
                         unsigned char* name, QvMCastList* list);
  char DelAColor(std::int16_t id, char kind);
  QvAColor* ACycle(std::int16_t id);
  QvAColor* AFlash(std::int16_t id);
  QvAColor* ASwitch(std::int16_t id);
  QvAColor* AFade(std::int16_t id);
  char IsAColor(std::int16_t id);

 protected:
  // Cast table.
  QvMCastInfo* localSearch(std::int16_t id);
  void localNew(QvMCastInfo* info, unsigned char* name);
  void localDeleteIcon(QvMCastInfo* info);
  void SetName(QvMCastInfo* info, unsigned char* name);
  std::uint32_t ActFlag(QvMCastInfo* info);
  void SetActFlag(QvMCastInfo* info, std::uint32_t flags);
  void ResetActFlag(QvMCastInfo* info);
  void SetShowFlag(QvMCastInfo* info, std::uint32_t flags);
  void ResetShowFlag(QvMCastInfo* info);
  void SetStartEnd(QvMCastInfo* info, std::int32_t start, std::int32_t end);
  // Removes every attachment of the member, keeping the member.
  void localEmpty(QvMCastInfo* info);
  // Empties, unlinks and frees the member.
  void localDel(QvMCastInfo* info);
  // The member a registration acts on: a negative *id creates one (its id is
  // stored back through id); null when that fails or the id is absent.
  QvMCastInfo* localRegTarget(std::int16_t* id, unsigned char* name);

  // Attachments.
  void DelAFrame(QvMCastInfo* info);
  void DelOrgCTable(QvMCastInfo* info);
  void DelDft(QvMCastInfo* info);
  void DelScroll(QvMCastInfo* info, char dirs);
  QvAFrame* AFrame(QvMCastInfo* info);
  char IsDft(QvMCastInfo* info);
  char IsAnc(QvMCastInfo* info);
  char IsScroll(QvMCastInfo* info, char* dirs);
  char IsScrollLeft(QvMCastInfo* info);
  char IsScrollRight(QvMCastInfo* info);
  char IsScrollUp(QvMCastInfo* info);
  char IsScrollDown(QvMCastInfo* info);
  char GetDft(QvMCastInfo* info, std::int16_t* param, QvMCastDft** entries, std::int16_t* count,
              char* flag);
  void localNewOrgGWorld(QvMCastInfo* info);

  // Anchor motion paths.
  void DelAnc(QvMCastInfo* info);
  char ResetAnc(QvMCastInfo* info);
  char InbetweenAnc(QvMCastInfo* info, char mode);
  void SetAncType(QvMCastInfo* info, char type);
  // Folds *index into the path by its type; 1 when it was already inside.
  char localGetAnc(QvMCastInfo* info, std::int16_t* index);

  // Rendering: the animation frame of a movie time for a clock of that speed.
  static std::int32_t localFrameOf(std::int32_t time, std::int32_t start, std::int16_t speed);

  // Load and save of one member and its parts: all give 0.
  char Save(int file, QvMCastInfo* info);
  char LoadAnc(int file, QvMCastInfo* info);
  char LoadDft(int file, QvMCastInfo* info);
  char LoadOrgCTable(int file, QvMCastInfo* info);
  char LoadScroll(int file, QvMCastInfo* info);
  char SaveAnc(int file, QvMCastInfo* info);
  char SaveDft(int file, QvMCastInfo* info);
  char SaveOrgCTable(int file, QvMCastInfo* info);
  char SaveScroll(int file, QvMCastInfo* info);

  // Colour animation copies.
  void DelAColor(QvMCastInfo* info, char kind);
  QvAColor* ACycle(QvMCastInfo* info);
  QvAColor* AFlash(QvMCastInfo* info);
  QvAColor* ASwitch(QvMCastInfo* info);
  QvAColor* AFade(QvMCastInfo* info);
  char IsAColor(QvMCastInfo* info);

  QvMCastInfo* head;
  QvMCastInfo* curInfo;
  std::int16_t newID;
  char lockFlag;
  tbColorTable workCTable;

  // Lookup by id in constant time, beside the list: a table of buckets
  // (idBucketCount, a power of two, or null while the store is small or the
  // table could not be made, when lookups walk the list). Each record is made
  // with a link to the next record of its bucket and its creation number;
  // among records of one id the earliest made is the first in the list.
  // Kept exact by New, localDel and DelAll; a table that cannot grow keeps
  // working with longer buckets.
  QvMCastInfo* localFind(std::int16_t id) const;
  void localIndexAdd(QvMCastInfo* info);
  void localIndexRemove(QvMCastInfo* info);
  void localIndexGrow();
  void localIndexClear();
  QvMCastInfo** idBuckets = nullptr;
  std::uint32_t idBucketCount = 0;
  std::uint32_t memberCount = 0;
  std::uint64_t idSerial = 0;
  QvMCastInfo* tail = nullptr;

  // Twins of GetAnc (by time), GetScroll and CTable taking the record, so
  // that drawing a member looks it up once.
  char localAncAt(QvMCastInfo* info, std::int32_t time, tbPoint* point, char* flag);
  char localScrollAt(QvMCastInfo* info, std::int32_t time, std::int16_t* h, std::int16_t* v);
  tbColorTable* localCTable(QvMCastInfo* info, std::int32_t time);
  // The member whose colour table workCTable holds, as its last computation
  // left it (null once CTable has handed the table out).
  QvMCastInfo* workInfo = nullptr;
};

#include "cast/QvMCast.h"

QvMCast::QvMCast() : head(nullptr), curInfo(nullptr), newID(0), lockFlag(0) {}
QvMCast::~QvMCast() {}

void QvMCast::InbetweenAnc(tbPoint*, std::int16_t*, std::int16_t, tbPoint*, std::int16_t, char) {}
std::int16_t QvMCast::GetNewID() { return -1; }
std::int16_t QvMCast::Count() { return -1; }
std::int16_t QvMCast::ID2Index(std::int16_t) { return -1; }
std::int16_t QvMCast::Index2ID(std::int16_t) { return -1; }
void QvMCast::Lock(std::int16_t) {}
void QvMCast::Unlock() {}
char QvMCast::New(std::int16_t, unsigned char*) { return 0; }
std::int16_t QvMCast::New(unsigned char*) { return -1; }
char QvMCast::Empty(std::int16_t) { return 0; }
char QvMCast::Del(std::int16_t) { return 0; }
void QvMCast::DelAll() {}
char QvMCast::SetName(std::int16_t, unsigned char*) { return 0; }
char QvMCast::GetName(std::int16_t, unsigned char***) { return 0; }
std::uint32_t QvMCast::ActFlag(std::int16_t) { return 0; }
char QvMCast::SetActFlag(std::int16_t, std::uint32_t) { return 0; }
char QvMCast::ResetActFlag(std::int16_t) { return 0; }
char QvMCast::GetActFlag(std::int16_t, std::uint32_t*) { return 0; }
char QvMCast::SetShowFlag(std::int16_t, std::uint32_t) { return 0; }
char QvMCast::ResetShowFlag(std::int16_t) { return 0; }
char QvMCast::GetShowFlag(std::int16_t, std::uint32_t*) { return 0; }
std::int32_t QvMCast::Start(std::int16_t) { return -1; }
std::int32_t QvMCast::End(std::int16_t) { return -1; }
std::int32_t QvMCast::End() { return -1; }
char QvMCast::SetStartEnd(std::int16_t, std::int32_t, std::int32_t) { return 0; }
char QvMCast::SetStart(std::int16_t, std::int32_t) { return 0; }
char QvMCast::SetEnd(std::int16_t, std::int32_t) { return 0; }
std::int16_t QvMCast::RegAFrame(std::int16_t, QvAFrame*, std::int32_t, unsigned char*,
                                QvMCastList*) {
  return -1;
}
std::int16_t QvMCast::RegOrgCTable(std::int16_t, tbColorTable*, QvPal*, unsigned char*) {
  return -1;
}
std::int16_t QvMCast::RegDft(std::int16_t, std::int16_t, QvMCastDft*, std::int16_t, char,
                             unsigned char*, QvMCastList*) {
  return -1;
}
std::int16_t QvMCast::RegScroll(std::int16_t, char, unsigned char*) { return -1; }
char QvMCast::DelAFrame(std::int16_t) { return 0; }
char QvMCast::DelOrgCTable(std::int16_t) { return 0; }
char QvMCast::DelDft(std::int16_t) { return 0; }
char QvMCast::DelScroll(std::int16_t, char) { return 0; }
QvAFrame* QvMCast::AFrame(std::int16_t) { return nullptr; }
char QvMCast::IsDft(std::int16_t) { return 0; }
char QvMCast::IsAnc(std::int16_t) { return 0; }
char QvMCast::IsScroll(std::int16_t, char*) { return 0; }
char QvMCast::IsScrollLeft(std::int16_t) { return 0; }
char QvMCast::IsScrollRight(std::int16_t) { return 0; }
char QvMCast::IsScrollUp(std::int16_t) { return 0; }
char QvMCast::IsScrollDown(std::int16_t) { return 0; }
char QvMCast::GetDft(std::int16_t, std::int16_t*, QvMCastDft**, std::int16_t*, char*) { return 0; }
std::int16_t QvMCast::RegAnc(std::int16_t, QvMCastAnc*, std::int16_t, char, unsigned char*) {
  return -1;
}
char QvMCast::DelAnc(std::int16_t) { return 0; }
char QvMCast::SetAnc(std::int16_t, std::int16_t, const tbPoint&, char) { return 0; }
char QvMCast::OffsetAnc(std::int16_t, std::int16_t, std::int16_t) { return 0; }
char QvMCast::ResetAnc(std::int16_t) { return 0; }
char QvMCast::InbetweenAnc(std::int16_t, char) { return 0; }
char QvMCast::SetAncType(std::int16_t, char) { return 0; }
char QvMCast::SetAncOffset(std::int16_t, std::int16_t) { return 0; }
char QvMCast::SetAncOffset(std::int16_t, tbPoint*) { return 0; }
char QvMCast::GetAncOffset(std::int16_t, std::int16_t*) { return 0; }
char QvMCast::GetAncNum(std::int16_t, std::int16_t*) { return 0; }
char QvMCast::SetAncStep(std::int16_t, double) { return 0; }
char QvMCast::GetAncStep(std::int16_t, double*) { return 0; }
char QvMCast::SetAncCount(std::int16_t, double) { return 0; }
char QvMCast::GetAncCount(std::int16_t, std::int16_t, double*) { return 0; }
char QvMCast::SetAncSelectArea(std::int16_t, std::int32_t, std::int32_t) { return 0; }
char QvMCast::GetAncSelectArea(std::int16_t, std::int32_t*, std::int32_t*) { return 0; }
char QvMCast::GetAnc(std::int16_t, std::int16_t, tbPoint*, char*) { return 0; }
char QvMCast::GetAnc(std::int16_t, std::int32_t, tbPoint*, char*) { return 0; }
char QvMCast::SetScrStepH(std::int16_t, double) { return 0; }
char QvMCast::SetScrStepV(std::int16_t, double) { return 0; }
char QvMCast::GetScrStepH(std::int16_t, double*) { return 0; }
char QvMCast::GetScrStepV(std::int16_t, double*) { return 0; }
char QvMCast::SetScrCountH(std::int16_t, double) { return 0; }
char QvMCast::SetScrCountV(std::int16_t, double) { return 0; }
char QvMCast::GetScrCountH(std::int16_t, std::int16_t, double*) { return 0; }
char QvMCast::GetScrCountV(std::int16_t, std::int16_t, double*) { return 0; }
char QvMCast::GetScroll(std::int16_t, std::int32_t, std::int16_t*, std::int16_t*) { return 0; }
char QvMCast::DrawPicture(std::int16_t, std::int32_t, tbPixMap*, tbRect*) { return 0; }
tbColorTable* QvMCast::CTable(std::int16_t, std::int32_t) { return nullptr; }
char QvMCast::GetAFrameArea(std::int16_t, std::int32_t, tbRect*, char, tbRect*, tbPoint*) {
  return 0;
}
char QvMCast::PtInAFrame(tbPoint*, std::int16_t, std::int32_t, tbRect*, char) { return 0; }
tbPicture* QvMCast::Icon(std::int16_t, std::int16_t, std::int16_t) { return nullptr; }
std::int16_t QvMCast::Dup(std::int16_t, std::int32_t, unsigned char*, QvMCast*, std::int16_t) {
  return -1;
}
char QvMCast::Backup(std::int16_t, QvMCast*) { return 0; }
char QvMCast::Restore(QvMCast*) { return 0; }
char QvMCast::Load(int) { return 0; }
char QvMCast::Load(char*) { return 0; }
char QvMCast::Save(int) { return 0; }
char QvMCast::Save(int, std::int16_t) { return 0; }
char QvMCast::Save(char*, std::uint32_t, std::uint32_t) { return 0; }
char QvMCast::SaveEnd(int) { return 0; }
char QvMCast::SaveTerm(int) { return 0; }
std::int16_t QvMCast::RegAColor(std::int16_t, QvAColor*, char, std::int32_t, unsigned char*,
                                QvMCastList*) {
  return -1;
}
char QvMCast::DelAColor(std::int16_t, char) { return 0; }
QvAColor* QvMCast::ACycle(std::int16_t) { return nullptr; }
QvAColor* QvMCast::AFlash(std::int16_t) { return nullptr; }
QvAColor* QvMCast::ASwitch(std::int16_t) { return nullptr; }
QvAColor* QvMCast::AFade(std::int16_t) { return nullptr; }
char QvMCast::IsAColor(std::int16_t) { return 0; }
QvMCastInfo* QvMCast::localSearch(std::int16_t) { return nullptr; }
void QvMCast::localNew(QvMCastInfo*, unsigned char*) {}
void QvMCast::localDeleteIcon(QvMCastInfo*) {}
void QvMCast::SetName(QvMCastInfo*, unsigned char*) {}
std::uint32_t QvMCast::ActFlag(QvMCastInfo*) { return 0; }
void QvMCast::SetActFlag(QvMCastInfo*, std::uint32_t) {}
void QvMCast::ResetActFlag(QvMCastInfo*) {}
void QvMCast::SetShowFlag(QvMCastInfo*, std::uint32_t) {}
void QvMCast::ResetShowFlag(QvMCastInfo*) {}
void QvMCast::SetStartEnd(QvMCastInfo*, std::int32_t, std::int32_t) {}
void QvMCast::localEmpty(QvMCastInfo*) {}
void QvMCast::localDel(QvMCastInfo*) {}
QvMCastInfo* QvMCast::localRegTarget(std::int16_t*, unsigned char*) { return nullptr; }
void QvMCast::DelAFrame(QvMCastInfo*) {}
void QvMCast::DelOrgCTable(QvMCastInfo*) {}
void QvMCast::DelDft(QvMCastInfo*) {}
void QvMCast::DelScroll(QvMCastInfo*, char) {}
QvAFrame* QvMCast::AFrame(QvMCastInfo*) { return nullptr; }
char QvMCast::IsDft(QvMCastInfo*) { return 0; }
char QvMCast::IsAnc(QvMCastInfo*) { return 0; }
char QvMCast::IsScroll(QvMCastInfo*, char*) { return 0; }
char QvMCast::IsScrollLeft(QvMCastInfo*) { return 0; }
char QvMCast::IsScrollRight(QvMCastInfo*) { return 0; }
char QvMCast::IsScrollUp(QvMCastInfo*) { return 0; }
char QvMCast::IsScrollDown(QvMCastInfo*) { return 0; }
char QvMCast::GetDft(QvMCastInfo*, std::int16_t*, QvMCastDft**, std::int16_t*, char*) { return 0; }
void QvMCast::localNewOrgGWorld(QvMCastInfo*) {}
void QvMCast::DelAnc(QvMCastInfo*) {}
char QvMCast::ResetAnc(QvMCastInfo*) { return 0; }
char QvMCast::InbetweenAnc(QvMCastInfo*, char) { return 0; }
void QvMCast::SetAncType(QvMCastInfo*, char) {}
char QvMCast::localGetAnc(QvMCastInfo*, std::int16_t*) { return 0; }
std::int32_t QvMCast::localFrameOf(std::int32_t, std::int32_t, std::int16_t) { return -1; }
char QvMCast::Save(int, QvMCastInfo*) { return 0; }
char QvMCast::LoadAnc(int, QvMCastInfo*) { return 0; }
char QvMCast::LoadDft(int, QvMCastInfo*) { return 0; }
char QvMCast::LoadOrgCTable(int, QvMCastInfo*) { return 0; }
char QvMCast::LoadScroll(int, QvMCastInfo*) { return 0; }
char QvMCast::SaveAnc(int, QvMCastInfo*) { return 0; }
char QvMCast::SaveDft(int, QvMCastInfo*) { return 0; }
char QvMCast::SaveOrgCTable(int, QvMCastInfo*) { return 0; }
char QvMCast::SaveScroll(int, QvMCastInfo*) { return 0; }
void QvMCast::DelAColor(QvMCastInfo*, char) {}
QvAColor* QvMCast::ACycle(QvMCastInfo*) { return nullptr; }
QvAColor* QvMCast::AFlash(QvMCastInfo*) { return nullptr; }
QvAColor* QvMCast::ASwitch(QvMCastInfo*) { return nullptr; }
QvAColor* QvMCast::AFade(QvMCastInfo*) { return nullptr; }
char QvMCast::IsAColor(QvMCastInfo*) { return 0; }

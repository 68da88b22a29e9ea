#pragma once

#include <cstdint>

// The playback clock: turns the system millisecond count into a frame number
// within the range top..end at a speed in frames per second, playing the
// range once (mode 0), bouncing (mode 1) or looping (mode 2).
class QvMPlayer {
 public:
  QvMPlayer();
  QvMPlayer(const QvMPlayer& other);
  QvMPlayer& operator=(const QvMPlayer& other);
  virtual ~QvMPlayer();

  virtual void SetMode(char m);
  virtual void SetSpeed(std::int16_t s);
  virtual void SetTop(std::int32_t t);
  virtual void SetEnd(std::int32_t e);
  virtual std::int32_t SetCur(std::int32_t frame);
  virtual void Play(std::int16_t s);
  virtual void Step(std::int16_t n);
  virtual void Pause();
  virtual void Stop();

  std::int32_t Time2Frame(std::uint32_t time);
  std::uint32_t Frame2Time(std::int32_t frame);

  char Mode();
  std::int16_t Speed();
  std::int32_t Top();
  std::int32_t End();
  std::int32_t Cur();
  std::int32_t Next();
  char IsPlaying();
  char IsPausing();
  char IsForward();

 protected:
  // The present tick (1/60 s, very nearly) from the system millisecond count.
  static std::int32_t nowTick();

  std::int32_t localGetCount();
  void localSetStart(std::int32_t frame);
  void localGetCur();
  void localGetNext();
  void localStep(std::int16_t n);
  void localResetFrameCur();

  char mode;
  char forwardFlag;
  std::int16_t speed;
  std::int32_t top;
  std::int32_t end;
  std::int32_t cur;
  std::int32_t startTick;
  std::int32_t lastCount;
  char stopFlag;
  char runFlag;
  char reverseFlag;
};

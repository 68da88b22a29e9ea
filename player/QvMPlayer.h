/// \file QvMPlayer.h
/// \brief QvMPlayer, the playback clock every animation carries.
#pragma once

#include <cstdint>

/// The playback clock: turns the system's millisecond count into a frame
/// number within a range of frames, at a speed in frames per second,
/// forwards or backwards, and decides what happens when the frame leaves the
/// range: stop there, bounce back or wrap around (the mode).
///
/// Every animation is a clock: the colour animations (QvAColor and its four
/// kinds) and the frame animation (QvAFrame). The host plays them (Play(),
/// Pause(), Stop(), Step(), SetSpeed(), SetMode()); the animations set their
/// own range from their number of frames. The cast store positions the
/// clocks of its private copies with SetCur() to draw a moment of the movie.
///
/// ## Time scales
/// - **Milliseconds**: qv::GetTickCount(), an unsigned 32-bit count that
///   wraps at 2^32 (replaceable with QvSetTickSource()).
/// - **Ticks** of very nearly 1/60 s (16.6667 ms): the millisecond count
///   times 0.05999988000024 (the double nearest 1/16.6667), truncated, low 32
///   bits. Time2Frame() and Frame2Time() convert between ticks and frames.
/// - **Clock frames**: `speed` frames per second, that is `speed` / 60
///   frames per tick: frame count = (speed * ticks) / 60, truncated. At the
///   default speed of 30, one frame lasts two ticks.
/// - **Movie time**, the timeline of cast members and layers, counts in
///   units of two ticks. A member shown at movie time t shows the animation
///   frame ((t - the member's start time) * speed * 2) / 60, so at the
///   default speed one unit of movie time is one frame. The cast store does
///   this conversion and passes the frame to SetCur().
///
/// ## States
/// | State   | IsPlaying() | IsPausing() | Cur() moves with time |
/// |---------|-------------|-------------|-----------------------|
/// | stopped | 0           | 0           | no                    |
/// | playing | 1           | 0           | yes                   |
/// | paused  | 1           | 1           | no                    |
///
/// A new clock is stopped, in mode kPlayOnce, at speed 30, with range 0 to 0
/// and current frame 0, moving forward.
///
/// Arithmetic on frames and ticks is 32-bit and wraps modulo 2^32. No
/// operation allocates, reports an error or takes a lock; a clock is used
/// from one thread. A speed of 0 is allowed: the clock then never moves.
class QvMPlayer {
 public:
  /// Mode: play the range once. A frame that leaves the range is clamped to
  /// the end it passed (`top` or `end`) and the clock stops there.
  static constexpr char kPlayOnce = 0;
  /// Mode: bounce. A frame that leaves the range is reflected at the end it
  /// passed (`cur` = 2 * end - cur, or 2 * top - cur) and the direction
  /// turns. With `end` equal to `top` the frame is always `top`; with `end`
  /// below `top` the frame is not fitted at all.
  static constexpr char kPlayBounce = 1;
  /// Mode: loop. A frame that leaves the range wraps around with a period of
  /// `end` - `top` + 1 frames. With `end` equal to `top` the frame is always
  /// `top`; with `end` below `top` the frame is not fitted at all.
  static constexpr char kPlayLoop = 2;

  /// A stopped clock: mode kPlayOnce, speed 30, range 0 to 0, frame 0,
  /// forward.
  QvMPlayer();
  /// Copies every setting, the state and the timing: a copy of a running
  /// clock runs in step with its source.
  ///
  /// \param other The clock to copy.
  QvMPlayer(const QvMPlayer& other);
  /// Copies every setting, the state and the timing.
  ///
  /// \param other The clock to copy.
  /// \return This clock.
  QvMPlayer& operator=(const QvMPlayer& other);
  /// Destroys the clock; it owns nothing.
  virtual ~QvMPlayer();

  /// Sets the range mode and makes the bounce direction forward again. The
  /// current frame is not fitted to the new mode until the next step or
  /// sample.
  ///
  /// \param m kPlayOnce, kPlayBounce or kPlayLoop; any other value leaves
  ///        the range unenforced (the frame runs freely).
  virtual void SetMode(char m);
  /// Sets the speed. A value equal to the current speed does nothing. A
  /// running clock restarts at the new speed from its current frame (through
  /// Play()), in its present direction when `s` is positive and turned round
  /// when `s` is negative; a stopped or paused clock just stores `s` (a
  /// negative value is then kept as it is).
  ///
  /// \param s Frames per second; 0 stops the clock's motion.
  virtual void SetSpeed(std::int16_t s);
  /// Sets the first frame of the range. Neither the order of `top` and
  /// `end` is checked nor the current frame fitted. The animations set their
  /// range themselves and hide this operation.
  ///
  /// \param t The first frame.
  virtual void SetTop(std::int32_t t);
  /// Sets the last frame of the range (inclusive). Nothing is checked or
  /// fitted (see SetTop()).
  ///
  /// \param e The last frame.
  virtual void SetEnd(std::int32_t e);
  /// Puts the clock on a frame: the frame becomes current and the timing is
  /// re-based so that a running clock goes on from it; then the frame is
  /// fitted into the range by the mode. The run state does not change,
  /// except that in mode kPlayOnce a frame outside the range stops the
  /// clock at the end it passed.
  ///
  /// \param frame The frame, any value.
  /// \return The current frame after fitting, e.g. with range 0 to 9 a frame
  ///         of 25 gives 9 in kPlayOnce, 7 in kPlayBounce and 5 in kPlayLoop.
  virtual std::int32_t SetCur(std::int32_t frame);
  /// Starts (or restarts) playing from the current frame, which does not
  /// change (after Stop() it is `top`). A running clock is first brought up
  /// to date at its old speed. Makes the bounce direction forward.
  ///
  /// \param s Frames per second; negative plays backwards at -s frames per
  ///        second (Speed() then gives -s and IsForward() 0).
  virtual void Play(std::int16_t s);
  /// Moves the current frame by a number of frames and fits it into the
  /// range; a running clock is first brought up to date. The clock plays
  /// forwards afterwards (also when it played backwards) and keeps its run
  /// state.
  ///
  /// \param n Frames to move; negative moves toward `top`.
  virtual void Step(std::int16_t n);
  /// Pauses: the clock is paused from any state, a stopped clock included.
  /// The current frame keeps the value of the last sample.
  virtual void Pause();
  /// Stops: the current frame goes back to `top` and both directions are
  /// reset to forward.
  virtual void Stop();

  /// Converts ticks into frames at the clock's speed.
  ///
  /// \param time Ticks of 1/60 s.
  /// \return (speed * time) / 60, the product taken modulo 2^32 and divided
  ///         unsigned, truncating. At speed 30, ticks 0 and 1 give frame 0,
  ///         ticks 2 and 3 frame 1.
  std::int32_t Time2Frame(std::uint32_t time);
  /// Converts frames into ticks at the clock's speed.
  ///
  /// \param frame A frame count.
  /// \return (frame * 60) / speed, the product taken modulo 2^32 and divided
  ///         unsigned, truncating (at speed 24, frame 7 gives 17 ticks); 0
  ///         at speed 0.
  std::uint32_t Frame2Time(std::int32_t frame);

  /// \return The range mode (kPlayOnce, kPlayBounce, kPlayLoop or a value
  ///         that leaves the range unenforced).
  char Mode();
  /// \return The speed in frames per second (its magnitude when the clock
  ///         was started backwards with Play()).
  std::int16_t Speed();
  /// \return The first frame of the range.
  std::int32_t Top();
  /// \return The last frame of the range, inclusive.
  std::int32_t End();
  /// The current frame. A running clock first samples the millisecond count
  /// and moves by as many frames as have passed since the last sample
  /// (skipping frames when the caller is late), fitting the result into the
  /// range; that sample may stop a clock in mode kPlayOnce.
  ///
  /// \return The current frame.
  std::int32_t Cur();
  /// The current frame, advancing at most one frame per call. A running
  /// clock that has fallen behind by two or more frames moves by one only and
  /// measures later frames from the present moment, so an animation slows
  /// down instead of skipping frames.
  ///
  /// \return The current frame.
  std::int32_t Next();
  /// \return 1 while playing or paused; 0 when stopped.
  char IsPlaying();
  /// \return 1 while paused; 0 when playing or stopped.
  char IsPausing();
  /// \return 1 when the frame currently moves toward `end`, 0 when toward
  ///         `top` (playing backwards, or on the way back of a bounce).
  char IsForward();

 protected:
  /// \return The present tick: the millisecond count of qv::GetTickCount()
  ///         times 0.05999988000024, truncated, low 32 bits.
  static std::int32_t nowTick();

  /// \return The frame count at the present tick, measured from
  ///         `startTick`: (speed * (now - startTick)) / 60, unsigned and
  ///         truncating. Changes nothing.
  std::int32_t localGetCount();
  /// Re-bases the timing so that the frame count at the present tick is
  /// `frame`; `cur` is not touched.
  ///
  /// \param frame The frame count the present moment stands for.
  void localSetStart(std::int32_t frame);
  /// Samples: moves `cur` by the number of frames counted since the last
  /// sample and fits it.
  void localGetCur();
  /// Samples frame by frame: moves `cur` by at most one frame and re-bases
  /// the timing when the caller has fallen behind.
  void localGetNext();
  /// Moves `cur` by n frames in the present direction and fits it.
  ///
  /// \param n Frames to move.
  void localStep(std::int16_t n);
  /// Fits `cur` into the range by the mode.
  void localResetFrameCur();

  /// The range mode (kPlayOnce, kPlayBounce, kPlayLoop).
  char mode;
  /// Bounce direction: 1 while the frame moves from `top` toward `end`;
  /// toggled by each reflection in kPlayBounce.
  char forwardFlag;
  /// Frames per second.
  std::int16_t speed;
  /// First frame of the range.
  std::int32_t top;
  /// Last frame of the range, inclusive.
  std::int32_t end;
  /// Current frame.
  std::int32_t cur;
  /// Tick from which the running frame count is measured.
  std::int32_t startTick;
  /// Frame count taken at the last sample.
  std::int32_t lastCount;
  /// 1 while stopped.
  char stopFlag;
  /// 1 while running (playing and not paused).
  char runFlag;
  /// 1 while playing backwards.
  char reverseFlag;
};

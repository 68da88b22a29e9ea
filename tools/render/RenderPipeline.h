#pragma once

#include <functional>
#include <string>

#include "render/GifWriter.h"
#include "scene/Picture.h"

namespace qvrender {

// Where the time of a pipeline run went, in seconds: the processor time of
// drawing (on the calling thread) and of encoding (on the worker), and the
// real time the calling thread waited for a free picture (the encoder being
// the slower) and of the whole run.
struct PipelineTimes {
  double draw = 0;
  double encode = 0;
  double drawWaiting = 0;
  double total = 0;
};

// What passes from the drawing thread to the encoder: a picture and what
// the drawing thread has made of it already (a GIF frame prepared for
// compressing, or nothing).
struct PipelineItem {
  qvscene::Picture picture;
  GifWriter::Frame frame;
};

// Draws item k (on the calling thread, in the order k = 0, 1, ...); false
// with *error set stops the run.
using DrawStep = std::function<bool(int k, PipelineItem* out, std::string* error)>;
// Encodes item k (on the worker thread, in the same order); false with
// *error set stops the run.
using EncodeStep = std::function<bool(int k, PipelineItem& item, std::string* error)>;

// Draws count items one after another on the calling thread while a worker
// thread encodes the ones already drawn, so that drawing (which calls the
// library, and so stays on one thread) and encoding overlap. At most
// `queue` drawn items wait for the encoder (1 or more); queue 0 draws and
// encodes each item in turn on the calling thread, without a worker (as
// happens too when no thread can be started). Items
// are reused, so a run allocates queue + 2 of them at most.
//
// Returns true when every picture was drawn and encoded; otherwise false
// with the first failure's message in *error (drawing stops as soon as the
// encoder fails). An exception thrown by either step stops both threads
// and is rethrown on the calling thread. times, when given, receives the
// time split.
bool RunPipeline(int count, const DrawStep& draw, const EncodeStep& encode, int queue,
                 std::string* error, PipelineTimes* times = nullptr);

}  // namespace qvrender

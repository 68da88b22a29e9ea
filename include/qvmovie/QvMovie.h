/// \file QvMovie.h
/// \brief Every public header of the library in one include:
/// `#include <qvmovie/QvMovie.h>`.
///
/// \mainpage QvMovie reference
///
/// QvMovie is the animation engine of a paint program that works in 8-bit
/// indexed colour. The host creates cast stores, layer stores and animations,
/// places cast members in time on layers, attaches frame animations and
/// colour animations to them, and draws any moment of the movie into an 8-bit
/// pixel map. The guide (the page "QvMovie for host developers") walks
/// through the concepts in the order a host meets them, with examples; this
/// reference documents every class, operation, field and constant.
///
/// ## The classes by folder
/// - **layer/**: QvMLayer, the timeline tracks: places cast members on
///   layers, fits their time ranges and draws a whole moment.
/// - **cast/**: QvMCast, the cast store: members with names, flags, time
///   ranges, attachments, anchor paths and scrolling; draws one member and
///   tests hits. Its records: QvMCastInfo, QvMCastAnc, QvMCastDft.
/// - **aframe/**: QvAFrame, the frame animation (frames cut out of a source
///   picture, with anchors, zoom, rotation and intervals).
/// - **acolor/**: QvAColor and its kinds QvACycle, QvAFlash, QvASwitch and
///   QvAFade, the colour animations.
/// - **player/**: QvMPlayer, the playback clock every animation carries;
///   QvMCastList, the list of (cast store, cast id) references; BZoom, a
///   coordinate conversion for zoomed views.
/// - **toolbox/**: the graphics toolbox the engine draws with: colours and
///   colour tables (tbRGBColor, tbColorTable), palette areas (QvPal),
///   rectangles and points (tbRect, tbPoint), pixel maps and off-screen worlds
///   (tbPixMap, tbGWorld), pictures (tbPicture), regions (BRegion, tbRegion,
///   QvRgn), the toolbox object (tbToolBox, qv::tb), canvases (QvCanvas,
///   QvCanvasUtil) and the platform layer (QvPlatform.h: qv::GetTickCount(),
///   qv::GlobalAlloc(), qv::GlobalFree(), QvSetTickSource(),
///   QvFailAllocation()).
///
/// ## Time
/// Three scales meet: ticks of very nearly 1/60 second, made from the
/// millisecond count; clock frames, counted at each animation's speed in
/// frames per second (30 by default); and movie time, the timeline of cast
/// members and layers, in units of two ticks. A member shown at movie time t
/// shows the animation frame ((t - its start) * speed * 2) / 60, so at the
/// default speed one unit of movie time is one frame. See QvMPlayer.
///
/// ## Ownership
/// The host owns every cast store, layer store and animation it creates. A
/// cast store owns its members and everything attached to them, including
/// the private copies of the animations registered on them. A layer store
/// names members by (cast store, cast id) and owns no cast store. Name
/// handles the library hands out (QvMCast::GetName)
/// belong to the receiver, who frees them with QvFreeString(). Everything
/// else the library returns (the layer store's comment block, icons, frame
/// images, colour tables, Dft and anchor arrays) stays its own: never free it,
/// and do not keep it past the next change of its owner. Blocks the host
/// gets from qv::GlobalAlloc() itself are freed with qv::GlobalFree().
///
/// ## Results
/// Nothing is thrown or logged. A `char` result is 1 for success and 0 for
/// failure; a 16-bit id or index is -1 for failure; a 32-bit time is -1 for
/// an absent member or an unset time; a pointer is null. Every operation that
/// allocates reports a failed allocation with its failure result and leaves
/// its object usable; QvFailAllocation() makes any chosen allocation fail.
///
/// ## Threads
/// The library starts no thread and takes no lock. Each object is used from
/// one thread at a time; the clock source (QvSetTickSource()) and the fault
/// injection are global to the process.
#pragma once

#include "toolbox/BRegion.h"
#include "toolbox/CPtrList.h"
#include "toolbox/MDependable.h"
#include "toolbox/OsImgPoint.h"
#include "toolbox/OsImgRect.h"
#include "toolbox/OsImgSize.h"
#include "toolbox/QvCanvas.h"
#include "toolbox/QvCanvasUtil.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/QvRgn.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPicture.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbPoint.h"
#include "toolbox/tbRGBColor.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbRegion.h"
#include "toolbox/tbToolBox.h"

#include "player/BZoom.h"
#include "player/QvMCastID.h"
#include "player/QvMCastList.h"
#include "player/QvMPlayer.h"

#include "acolor/QvAColor.h"
#include "acolor/QvACycle.h"
#include "acolor/QvACycleInfo.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"

#include "aframe/QvAFrame.h"
#include "aframe/QvAFrameInfo.h"

#include "cast/QvMCast.h"
#include "cast/QvMCastAnc.h"
#include "cast/QvMCastDft.h"
#include "cast/QvMCastInfo.h"

#include "layer/QvMLayer.h"
#include "layer/QvMLayerInfo.h"

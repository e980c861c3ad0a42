// What the capture in the background needs to know of its device.
#pragma once

#include "dump/capture_process.h"
#include "model/call.h"

namespace simulator {

CapturePlace CapturePlaceOf(const Call& call);

// The part of the device's present configuration that acts on frames.
CaptureSettings CurrentCaptureSettings(Call& call, bool full_frames);

// Passes the present configuration to the capture of the device, when one runs. Uses transactions
// of its own, so it is to be called outside of one. False when the state cannot be read.
bool FollowConfiguration(Call& call);

}  // namespace simulator

// What a device's capture in the background is told of the device.
#pragma once

#include "dump/capture_process.h"
#include "model/call.h"

namespace simulator {

CapturePlace CapturePlaceOf(const Call& call);

// The device's present configuration, as far as frames meet it.
CaptureSettings CurrentCaptureSettings(Call& call, bool full_frames);

// Gives the capture of the device, when one runs, the present configuration, in transactions of its
// own: to be called outside of one. False when the state cannot be read.
bool FollowConfiguration(Call& call);

}  // namespace simulator

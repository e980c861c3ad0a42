// What the capture in the background needs to know of its device.
#pragma once

#include "dump/capture_process.h"
#include "model/call.h"

namespace simulator {

CapturePlace CapturePlaceOf(const Call& call);

// The part of the device's present configuration that acts on frames.
CaptureSettings CurrentCaptureSettings(Call& call, bool full_frames);

// The capture that runs, else the last one. Why it failed goes to the call's complaint, once; a
// user who may not look makes the call fail.
CaptureView LookAtCapture(Call& call);

// Ends the capture, by StopCapture or ForgetCapture. False when it does not end; the call fails
// when this user may not end it.
bool EndCapture(Call& call, int (&end)(const CapturePlace& place));

// Passes the present configuration to the capture of the device, when one runs. Uses transactions
// of its own, so it is to be called outside of one. False when the state cannot be read. A user who
// may not change the capture leaves that to others.
bool FollowConfiguration(Call& call);

}  // namespace simulator

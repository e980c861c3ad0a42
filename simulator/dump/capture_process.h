// The capture of a device in the background: a process of its own, detached from the terminal,
// which every program on the same device state finds again.
#pragma once

#include <string>

#include "dump/capture_page.h"
#include "dump/capture_run.h"

namespace simulator {

// Where a capture is found: the state folder and the device's name.
struct CapturePlace {
  std::string folder;
  std::string device;
};

// Starts the capture. Returns when it runs, or false with the reason when its sources or its first
// file cannot be opened, or when one runs already: then no process stays behind.
bool StartCapture(const CapturePlace& place, const CaptureOrder& order, std::string& reason);

bool CaptureIsRunning(const CapturePlace& place);

// The report of the capture that runs, else of the last one. One that was killed has failed.
CaptureReport ReadCapture(const CapturePlace& place);

// Gives the capture, when one runs, other settings: they hold for frames from now on. Whether CRCs
// are kept and frames are captured in full stays. Not to be called by two programs at once.
void ChangeCapture(const CapturePlace& place, const CaptureSettings& settings);

// True when no capture runs, or one to which these settings were given last.
bool CaptureFollows(const CapturePlace& place, const CaptureSettings& settings);

// Ends the capture, when one runs, and returns when its last file is complete. False when it does
// not end.
bool StopCapture(const CapturePlace& place);

// Ends the capture and removes its report.
bool ForgetCapture(const CapturePlace& place);

}  // namespace simulator

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

// Starts the capture. Returns when it runs, which takes as long as its sources take to open, or
// false with the reason when they or its first file cannot be opened, or when one runs already
// (the reason ends with kAnotherRuns): then no process stays behind.
bool StartCapture(const CapturePlace& place, const CaptureOrder& order, std::string& reason);

// What a program sees of the capture that runs, else of the last one. One that was killed has
// failed.
struct CaptureView {
  bool runs;
  CaptureReport report;
  std::string failure;  // why it failed, the first time that somebody asks who may note it
  std::string refusal;  // why this user may not look; then the rest is empty
};
CaptureView ReadCapture(const CapturePlace& place);

bool CaptureIsRunning(const CapturePlace& place);

// True when a capture runs whose settings this user may store in the page, which is then open: they
// hold for frames from then on. Whether CRCs are kept and frames are captured in full stays. Not to
// be stored by two programs at once.
bool OpenToChange(const CapturePlace& place, CapturePage& page);

// Ends the capture, when one runs, and returns when its last file is complete. Else returns the
// error: EACCES and EPERM when this user may not.
int StopCapture(const CapturePlace& place);

// Ends the capture and removes its report. Returns as StopCapture.
int ForgetCapture(const CapturePlace& place);

}  // namespace simulator

#pragma once

#include <node.h>

#include <span>

// Module initialiser: the host calls it on the main thread each time it loads the module. The start-up sequence runs
// at the first call in the process; a later one only attaches the functions to the new `exports`.
void Init(v8::Local<v8::Object> exports, v8::Local<v8::Value> module);

// One step of the start-up sequence.
struct StartUpStep {
  const char* name;
  void (*run)();
};

// The steps before the script functions are registered, in order.
[[nodiscard]] std::span<const StartUpStep> StartUpSequence();

// The names of the steps that have run, in the order in which they ran.
[[nodiscard]] std::span<const char* const> StartUpStepsRun();

// 1 when the process runs translated, 0 when it runs natively, -1 when the system would not say.
[[nodiscard]] int IsRunningInsideRosetta2();

// The same from what the kernel variable "sysctl.proc_translated" gave: its value, or the error of reading it.
[[nodiscard]] int TsTranslationState(int value, int error);

// Sets the user default "DisableGPU" unless the process is known to run natively.
void TsDisableGPUIfNeeded();
void TsDisableGPUUnlessNative(int insideRosetta2);

void TsSetupLogging();
void TsDisableNativeTabs();

// Whether the system's appearance is dark.
[[nodiscard]] bool TsIsDarkMode();

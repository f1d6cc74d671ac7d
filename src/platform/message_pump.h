// Serving the message loop while the program waits or works, so that its windows and its tray
// icon stay responsive.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>

namespace tolvane {

// Windows whose keys every message loop of the program hands over first: an open modeless
// dialog takes Tab, Enter and Escape; a window's accelerator table turns keys into commands.
void AddDialogWindow(HWND dialog);
void RemoveDialogWindow(HWND dialog);
void SetAccelerators(HWND window, HACCEL table);
// True when the message was handed over that way and needs no further dispatch.
bool PreTranslate(MSG& msg);

// The program's main loop, until WM_QUIT; returns its exit code.
int RunMessageLoop();

// Hands every waiting message to its window and returns. A quit message is put back for the
// main loop to find.
void YieldToMessageLoop();

// Milliseconds of a steady clock.
uint64_t NowMs();

// Waits until the clock reaches the deadline, handing each message to its window as it comes.
// Returns early when stop() turns true after a message, or when the program is asked to quit.
void WaitServingMessages(uint64_t deadlineMs, const std::function<bool()>& stop);

} // namespace tolvane

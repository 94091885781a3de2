// ANIMATION_TIMING: how long the steps of loading animations take, and which were the slowest. While a log is open,
// each step writes a line to it, sends one through KN::message_txt, and competes for a place in the list of the
// slowest. Without a log nothing is measured.
//
// All state is the calling thread's own: threads that load side by side have a log and a list each.
#pragma once

#include "foundation/string.h"

namespace SUPPORT {

// Names what is timed from here on, in all messages, and empties the list of the slowest steps, which holds as many as
// `top_capacity`; 0: there is no list. The name is copied.
void ANIMATION_TIMING_INIT(char const *section_name, unsigned top_capacity);

// Creates the log. False if that fails; there is then no log. A log that is open is closed first.
bool animation_timing_open_log(KN::String const &path);
void animation_timing_close_log();

// The first step begins: the clock and the memory count from here.
void animation_timing_start();
// A step has ended; its name is copied. The line of the log is "NAME,0,0,DIFFERENCE,BYTES", with "\r\n" and a zero
// byte: the bytes on the animation heap and how they have changed since the last line.
void animation_timing_step(char const *step_name);
// The slowest steps, through KN::message_txt.
void animation_timing_report();

}  // namespace SUPPORT

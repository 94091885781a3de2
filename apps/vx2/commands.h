// What each command of vx2 does, behind the command line. Results go to standard output, errors and warnings to
// standard error; every operation gives the program's exit code: 0 done, 1 failed. (2, wrong usage, is the command
// line's own.)
#pragma once

#include "platform/exchange/import.h"

#include <optional>

int show_info(KN::String const &file);
int dump(KN::String const &file, std::optional<float> time, bool prepare);
int validate(KN::String const &file);
int import(IMPORT_REQUEST const &request);
int export_glb(KN::String const &file, KN::String const &skeleton, KN::String const &target);
int upgrade(KN::String const &file, KN::String const &target, bool references);
int clean(KN::String const &file, KN::String const &target);
int show_animation(KN::String const &file);
int make_bone_table(KN::String const &file, KN::String const &target);

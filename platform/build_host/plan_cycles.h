// Finds actions that wait for themselves.
#pragma once

#include "platform/build_host/plan.h"

// Every action of a cycle gets an error that names the others, and the edges inside cycles are taken out, so that
// everything else can run. Also fills plan.dependants.
void break_cycles(PLAN &plan);

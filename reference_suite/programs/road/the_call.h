#pragma once
// The road of a typical call. COM is initialised and the server runs.

#include <reference_suite/programs/road/road_options.h>

void Make_A_Call(const RoadOptions &options);

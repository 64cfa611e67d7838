#pragma once
// How a program of the suite starts, and the end of the server that it has started.

#include <reference_suite/programs/road/road_options.h>

/// COM is initialised from here on, and the server runs; it ends with the process at the latest.
void Start_The_Suite(const RoadOptions &options);
/// The other way round.
void End_The_Suite();

#pragma once

namespace Host {

/// Prepares the OpenCL drivers for rendering, through environment variables.
///
/// Only for a program of its own, at its start, before the first thread and the first OpenCL call; never inside a host
/// application. What the user has set in the environment stays.
/// POCL_MAX_WORK_GROUP_SIZE, by the number of threads (POCL_MAX_PTHREAD_COUNT, else one per core; 768 for two): with
/// the CPU driver's own choice of 4096 a frame of 2048 × 1152 pixels falls into so few groups that one core gets
/// nearly all of them; much smaller groups cost time each, for fifteen of sixteen lie beyond the picture.
void prepareForRendering();

} // namespace Host

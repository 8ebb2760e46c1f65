#pragma once

namespace vulkan {

/// Begins this process's own run, unless it belongs to one (see OwnRun.h), with what the user's profiles say
/// for the program that it runs; what is wrong in them is in the log. From then on a thread looks once a
/// second whether they have changed, and what they say then holds, except what somebody has set meanwhile.
/// Before the process's first frame hook; not while another thread changes the environment.
void beginProgramsRun();

}  // namespace vulkan

#pragma once

// A layer between the OpenCL loader and the driver that makes chosen calls fail and counts what is alive.
//
// The loader takes it in when OPENCL_LAYERS names its file before the first OpenCL call. A program that also links it
// commands it by the functions below; for any other program ORVEX_OPENCL_FAULT=function:number:status arms one fault.

#ifdef __cplusplus
extern "C" {
#endif

/// Makes the number-th call from now (1: the next) of a function fail with a status, and none of its other calls.
/// A function that creates or enqueues does nothing then; one that releases does its work and answers the status.
/// Replaces what was armed for this function; number 0 disarms it. The name is not copied.
void openCLFaultArm(const char* function, int number, int status);

/// Number of faults that have happened since the program's start.
int openCLFaultCount(void);

/// Number of contexts, queues, programs, kernels or buffers that are created and not released.
/// `kind` is the name of the creating function.
int openCLFaultAlive(const char* kind);

#ifdef __cplusplus
}
#endif

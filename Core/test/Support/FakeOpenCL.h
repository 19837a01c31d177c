#pragma once

#include <CL/cl.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// Stands in for the OpenCL library: the program that links FakeOpenCL.cpp calls its cl… functions instead.
///
/// Platforms and devices are those described here; every other call succeeds and is written to `calls` with its
/// interesting arguments. Any call can be told to fail. Every case starts afresh.
struct FakeOpenCL {
    struct Device {
        std::string name = "Device";
        cl_device_type type = CL_DEVICE_TYPE_CPU;
        std::uint32_t computeUnits = 1;
        std::uint32_t clockFrequency = 1;
        std::size_t workGroupSize = 1;
        /// Queries that fail, with their status.
        std::map<cl_device_info, cl_int> failingInfos = {};
        std::string vendor = "Vendor";
    };
    struct Platform {
        std::vector<Device> devices = {Device()};
        cl_int statusOfDeviceCount = CL_SUCCESS;
        cl_int statusOfDeviceIds = CL_SUCCESS;
        std::string name = "Platform";
    };

    std::vector<Platform> platforms = {Platform()};

    /// Fails the call of this number (from 1) of a function: statuses["clSetKernelArg"][2] = -49. Number 0: every call.
    std::map<std::string, std::map<int, cl_int>> statuses;

    /// The function whose calls throw std::bad_alloc.
    std::string throwingFunction;

    std::string buildLog;
    std::size_t kernelWorkGroupSize = 64;
    std::string deviceOutput; ///< bytes that reading the output buffer delivers, repeated

    std::vector<std::string> calls;                 ///< "clCreateKernel(distortion)", …
    std::map<cl_uint, std::string> kernelArguments; ///< the bytes last set, by index
    int liveObjects = 0;                            ///< created and not yet released

    std::vector<std::string> callsOf(const std::string& function) const;
    static cl_device_id deviceId(std::size_t platform, std::size_t device);
    static cl_platform_id platformId(std::size_t platform);
};

extern FakeOpenCL fakeOpenCL;

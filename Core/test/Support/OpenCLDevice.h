#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"

/// Whether this machine has a usable OpenCL device.
inline bool openCLDeviceExists() {
    try {
        return !Renderer::OpenCLKernelHelper::devicesInOrderOfChoice().empty();
    } catch (const Exception&) {
        return false;
    }
}

/// Whether the chosen device is the processor under PoCL, whose float arithmetic is known to the last bit.
inline bool openCLDeviceIsPocl() {
    const cl_device_id device = Renderer::OpenCLKernelHelper::idOfMostPowerfulDevice();
    return Renderer::OpenCLKernelHelper::queryDeviceInfo(device, CL_DEVICE_VERSION).find("PoCL") != std::string::npos;
}

/// Base of cases that render; they are skipped without a device.
class OnOpenCLDevice : public testing::Test {
protected:
    void SetUp() override {
        if (!openCLDeviceExists()) GTEST_SKIP() << "no OpenCL device here";
    }
};

#include "Support/FakeOpenCL.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>

FakeOpenCL fakeOpenCL;

namespace {

// Cases that share a process start with the same fake.
class ResetBeforeEachCase : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { fakeOpenCL = FakeOpenCL(); }
};

const bool resetIsRegistered = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new ResetBeforeEachCase());
    return true;
}();

std::map<std::string, int>& counts() {
    static std::map<std::string, int> counts;
    return counts;
}

// Notes a call and answers the status it was told to end with.
cl_int called(const std::string& function, const std::string& arguments = "") {
    if (fakeOpenCL.calls.empty()) counts().clear();
    fakeOpenCL.calls.push_back(function + "(" + arguments + ")");
    if (function == fakeOpenCL.throwingFunction) throw std::bad_alloc();
    const int number = ++counts()[function];
    const auto& statuses = fakeOpenCL.statuses[function];
    for (const int key : {number, 0})
        if (const auto found = statuses.find(key); found != statuses.end()) return found->second;
    return CL_SUCCESS;
}

// Any address but null serves as a handle; it is never followed.
template <typename Handle>
Handle create(cl_int callStatus, cl_int* status, std::uintptr_t value) {
    if (status) *status = callStatus;
    if (callStatus != CL_SUCCESS) return nullptr;
    fakeOpenCL.liveObjects++;
    return reinterpret_cast<Handle>(value);
}

cl_int release(const std::string& function) {
    fakeOpenCL.liveObjects--;
    return called(function);
}

cl_int answer(const void* source, std::size_t length, std::size_t capacity, void* value, std::size_t* size) {
    // Like real drivers, it tells no length to a caller whose buffer is too small.
    if (value && capacity < length) return CL_INVALID_VALUE;
    if (size) *size = length;
    if (value) std::memcpy(value, source, length);
    return CL_SUCCESS;
}

cl_int answerText(const std::string& text, std::size_t capacity, void* value, std::size_t* size) {
    return answer(text.c_str(), text.empty() ? 0 : text.size() + 1, capacity, value, size);
}

std::size_t platformIndex(cl_platform_id id) { return reinterpret_cast<std::uintptr_t>(id) / 1000 - 1; }

const FakeOpenCL::Device& deviceOf(cl_device_id id) {
    const auto value = reinterpret_cast<std::uintptr_t>(id);
    return fakeOpenCL.platforms.at(value / 1000 - 1).devices.at(value % 1000 - 1);
}

template <typename Handle>
std::string text(Handle handle) {
    return std::to_string(reinterpret_cast<std::uintptr_t>(handle));
}

} // namespace

std::vector<std::string> FakeOpenCL::callsOf(const std::string& function) const {
    std::vector<std::string> found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&](const std::string& call) { return call.rfind(function + "(", 0) == 0; });
    return found;
}

cl_device_id FakeOpenCL::deviceId(std::size_t platform, std::size_t device) {
    return reinterpret_cast<cl_device_id>((platform + 1) * 1000 + device + 1);
}

cl_platform_id FakeOpenCL::platformId(std::size_t platform) {
    return reinterpret_cast<cl_platform_id>((platform + 1) * 1000);
}

extern "C" {

cl_int clGetPlatformIDs(cl_uint capacity, cl_platform_id* ids, cl_uint* count) {
    if (const cl_int status = called("clGetPlatformIDs")) return status;
    if (count) *count = static_cast<cl_uint>(fakeOpenCL.platforms.size());
    for (cl_uint i = 0; ids && i < capacity; i++) ids[i] = FakeOpenCL::platformId(i);
    return CL_SUCCESS;
}

cl_int clGetPlatformInfo(cl_platform_id id, cl_platform_info, size_t capacity, void* value, size_t* size) {
    if (const cl_int status = called("clGetPlatformInfo")) return status;
    return answerText(fakeOpenCL.platforms.at(platformIndex(id)).name, capacity, value, size);
}

cl_int clGetDeviceIDs(cl_platform_id platform, cl_device_type type, cl_uint capacity, cl_device_id* ids,
                      cl_uint* count) {
    if (const cl_int status = called("clGetDeviceIDs", type == CL_DEVICE_TYPE_ALL ? "all" : "some")) return status;
    const FakeOpenCL::Platform& found = fakeOpenCL.platforms.at(platformIndex(platform));
    if (count) *count = static_cast<cl_uint>(found.devices.size());
    if (!ids) return found.statusOfDeviceCount;
    for (cl_uint i = 0; i < capacity; i++) ids[i] = FakeOpenCL::deviceId(platformIndex(platform), i);
    return found.statusOfDeviceIds;
}

cl_int clGetDeviceInfo(cl_device_id id, cl_device_info name, size_t capacity, void* value, size_t* size) {
    if (const cl_int status = called("clGetDeviceInfo", std::to_string(name))) return status;
    const FakeOpenCL::Device& device = deviceOf(id);
    if (const auto failing = device.failingInfos.find(name); failing != device.failingInfos.end())
        return failing->second;
    switch (name) {
        case CL_DEVICE_NAME:
            return answerText(device.name, capacity, value, size);
        case CL_DEVICE_VENDOR:
            return answerText(device.vendor, capacity, value, size);
        case CL_DEVICE_TYPE:
            return answer(&device.type, sizeof(device.type), capacity, value, size);
        case CL_DEVICE_MAX_COMPUTE_UNITS:
            return answer(&device.computeUnits, sizeof(device.computeUnits), capacity, value, size);
        case CL_DEVICE_MAX_CLOCK_FREQUENCY:
            return answer(&device.clockFrequency, sizeof(device.clockFrequency), capacity, value, size);
        case CL_DEVICE_MAX_WORK_GROUP_SIZE:
            return answer(&device.workGroupSize, sizeof(device.workGroupSize), capacity, value, size);
        default:
            return CL_INVALID_VALUE;
    }
}

cl_context clCreateContext(const cl_context_properties* properties, cl_uint count, const cl_device_id* devices,
                           void(CL_CALLBACK*)(const char*, const void*, size_t, void*), void*, cl_int* status) {
    const std::string arguments =
        std::string(properties ? "properties" : "none") + ", " + std::to_string(count) + ", " + text(devices[0]);
    return create<cl_context>(called("clCreateContext", arguments), status, 1);
}

cl_command_queue clCreateCommandQueue(cl_context, cl_device_id device, cl_command_queue_properties properties,
                                      cl_int* status) {
    return create<cl_command_queue>(called("clCreateCommandQueue", text(device) + ", " + std::to_string(properties)),
                                    status, 2);
}

cl_program clCreateProgramWithSource(cl_context, cl_uint count, const char** texts, const size_t* lengths,
                                     cl_int* status) {
    const std::string arguments = std::to_string(count) + ", " + texts[0] + (lengths ? ", lengths" : "");
    return create<cl_program>(called("clCreateProgramWithSource", arguments), status, 3);
}

cl_int clBuildProgram(cl_program, cl_uint count, const cl_device_id*, const char* options,
                      void(CL_CALLBACK*)(cl_program, void*), void*) {
    return called("clBuildProgram", std::to_string(count) + ", " + (options ? options : "none"));
}

cl_int clGetProgramBuildInfo(cl_program, cl_device_id device, cl_program_build_info, size_t capacity, void* value,
                             size_t* size) {
    if (const cl_int status = called("clGetProgramBuildInfo", text(device))) return status;
    return answerText(fakeOpenCL.buildLog, capacity, value, size);
}

cl_kernel clCreateKernel(cl_program, const char* name, cl_int* status) {
    return create<cl_kernel>(called("clCreateKernel", name), status, 4);
}

cl_mem clCreateBuffer(cl_context, cl_mem_flags flags, size_t size, void* host, cl_int* status) {
    static std::uintptr_t next = 100;
    const std::string arguments =
        std::to_string(flags) + ", " + std::to_string(size) + (host ? ", host" : "") + (status ? ", status" : "");
    return create<cl_mem>(called("clCreateBuffer", arguments), status, next++);
}

cl_int clSetKernelArg(cl_kernel, cl_uint index, size_t size, const void* value) {
    if (const cl_int status = called("clSetKernelArg", std::to_string(index) + ", " + std::to_string(size)))
        return status;
    fakeOpenCL.kernelArguments[index] = std::string(static_cast<const char*>(value), size);
    return CL_SUCCESS;
}

cl_int clGetKernelWorkGroupInfo(cl_kernel, cl_device_id device, cl_kernel_work_group_info name, size_t capacity,
                                void* value, size_t* size) {
    if (const cl_int status = called("clGetKernelWorkGroupInfo", text(device))) return status;
    if (name != CL_KERNEL_WORK_GROUP_SIZE) return CL_INVALID_VALUE;
    return answer(&fakeOpenCL.kernelWorkGroupSize, sizeof(fakeOpenCL.kernelWorkGroupSize), capacity, value, size);
}

cl_int clEnqueueWriteBuffer(cl_command_queue, cl_mem, cl_bool blocking, size_t offset, size_t size, const void*,
                            cl_uint, const cl_event*, cl_event*) {
    return called("clEnqueueWriteBuffer", std::string(blocking ? "blocking" : "not blocking") + ", " +
                                              std::to_string(offset) + ", " + std::to_string(size));
}

cl_int clEnqueueNDRangeKernel(cl_command_queue, cl_kernel, cl_uint dimensions, const size_t* offset,
                              const size_t* globalSize, const size_t* localSize, cl_uint, const cl_event*, cl_event*) {
    return called("clEnqueueNDRangeKernel", std::to_string(dimensions) + (offset ? ", offset, " : ", ") +
                                                std::to_string(*globalSize) + ", " + std::to_string(*localSize));
}

cl_int clFinish(cl_command_queue) { return called("clFinish"); }

cl_int clEnqueueReadBuffer(cl_command_queue, cl_mem, cl_bool blocking, size_t offset, size_t size, void* output,
                           cl_uint, const cl_event*, cl_event*) {
    if (const cl_int status = called("clEnqueueReadBuffer", std::string(blocking ? "blocking" : "not blocking") + ", " +
                                                                std::to_string(offset) + ", " + std::to_string(size)))
        return status;
    const std::string& bytes = fakeOpenCL.deviceOutput;
    for (std::size_t i = 0; !bytes.empty() && i < size; i++) static_cast<char*>(output)[i] = bytes[i % bytes.size()];
    return CL_SUCCESS;
}

cl_int clReleaseContext(cl_context) { return release("clReleaseContext"); }
cl_int clReleaseCommandQueue(cl_command_queue) { return release("clReleaseCommandQueue"); }
cl_int clReleaseProgram(cl_program) { return release("clReleaseProgram"); }
cl_int clReleaseKernel(cl_kernel) { return release("clReleaseKernel"); }
cl_int clReleaseMemObject(cl_mem) { return release("clReleaseMemObject"); }

} // extern "C"

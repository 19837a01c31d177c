#include "Faults/OpenCLFaultLayer.h"

#include <CL/cl.h>
#include <CL/cl_icd.h>
#include <CL/cl_layer.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static struct _cl_icd_dispatch s_layer;
static const struct _cl_icd_dispatch* s_driver;
static pthread_mutex_t s_mutex = PTHREAD_MUTEX_INITIALIZER;
static int s_faults;

struct Armed {
    const char* function;
    int callsLeft;
    int status;
};
static struct Armed s_armed[8];

static struct Alive {
    const char* kind;
    int count;
} s_alive[] = {{"clCreateContext", 0},
               {"clCreateCommandQueue", 0},
               {"clCreateProgramWithSource", 0},
               {"clCreateKernel", 0},
               {"clCreateBuffer", 0}};

static struct Alive* aliveOf(const char* kind) {
    for (size_t i = 0; i < sizeof(s_alive) / sizeof(*s_alive); ++i) {
        if (strcmp(s_alive[i].kind, kind) == 0) return &s_alive[i];
    }
    abort(); // no such kind
}

static void changeAlive(const char* kind, int difference) {
    pthread_mutex_lock(&s_mutex);
    aliveOf(kind)->count += difference;
    pthread_mutex_unlock(&s_mutex);
}

/// The status with which this call is to fail; 0: it is not.
static int due(const char* function) {
    int status = 0;
    pthread_mutex_lock(&s_mutex);
    for (size_t i = 0; i < sizeof(s_armed) / sizeof(*s_armed); ++i) {
        struct Armed* armed = &s_armed[i];
        if (!armed->function || strcmp(armed->function, function) != 0) continue;
        if (--armed->callsLeft > 0) continue;
        status = armed->status;
        armed->function = NULL;
        ++s_faults;
    }
    pthread_mutex_unlock(&s_mutex);
    return status;
}

void openCLFaultArm(const char* function, int number, int status) {
    pthread_mutex_lock(&s_mutex);
    struct Armed* place = NULL;
    for (size_t i = 0; i < sizeof(s_armed) / sizeof(*s_armed); ++i) {
        struct Armed* armed = &s_armed[i];
        if (armed->function && strcmp(armed->function, function) == 0) armed->function = NULL;
        if (!armed->function && !place) place = armed;
    }
    if (number > 0) {
        if (!place) abort(); // more at once than there are places
        place->function = function;
        place->callsLeft = number;
        place->status = status;
    }
    pthread_mutex_unlock(&s_mutex);
}

int openCLFaultCount(void) {
    pthread_mutex_lock(&s_mutex);
    const int count = s_faults;
    pthread_mutex_unlock(&s_mutex);
    return count;
}

int openCLFaultAlive(const char* kind) {
    pthread_mutex_lock(&s_mutex);
    const int count = aliveOf(kind)->count;
    pthread_mutex_unlock(&s_mutex);
    return count;
}

// A call that answers its status.
#define STATUS_CALL(function, parameters, arguments)           \
    static cl_int CL_API_CALL fault_##function parameters {    \
        const int status = due(#function);                     \
        return status ? status : s_driver->function arguments; \
    }

STATUS_CALL(clGetPlatformIDs, (cl_uint n, cl_platform_id* ids, cl_uint* count), (n, ids, count))
STATUS_CALL(clGetDeviceIDs, (cl_platform_id p, cl_device_type t, cl_uint n, cl_device_id* ids, cl_uint* count),
            (p, t, n, ids, count))
STATUS_CALL(clGetDeviceInfo, (cl_device_id d, cl_device_info i, size_t n, void* v, size_t* r), (d, i, n, v, r))
STATUS_CALL(clBuildProgram,
            (cl_program p, cl_uint n, const cl_device_id* d, const char* o, void(CL_CALLBACK* f)(cl_program, void*),
             void* u),
            (p, n, d, o, f, u))
STATUS_CALL(clGetProgramBuildInfo,
            (cl_program p, cl_device_id d, cl_program_build_info i, size_t n, void* v, size_t* r), (p, d, i, n, v, r))
STATUS_CALL(clSetKernelArg, (cl_kernel k, cl_uint i, size_t n, const void* v), (k, i, n, v))
STATUS_CALL(clGetKernelWorkGroupInfo,
            (cl_kernel k, cl_device_id d, cl_kernel_work_group_info i, size_t n, void* v, size_t* r),
            (k, d, i, n, v, r))
STATUS_CALL(clEnqueueWriteBuffer,
            (cl_command_queue q, cl_mem b, cl_bool w, size_t o, size_t n, const void* v, cl_uint c, const cl_event* l,
             cl_event* e),
            (q, b, w, o, n, v, c, l, e))
STATUS_CALL(clEnqueueReadBuffer,
            (cl_command_queue q, cl_mem b, cl_bool w, size_t o, size_t n, void* v, cl_uint c, const cl_event* l,
             cl_event* e),
            (q, b, w, o, n, v, c, l, e))
STATUS_CALL(clEnqueueNDRangeKernel,
            (cl_command_queue q, cl_kernel k, cl_uint d, const size_t* o, const size_t* g, const size_t* s, cl_uint c,
             const cl_event* l, cl_event* e),
            (q, k, d, o, g, s, c, l, e))

// A kernel that fails on the device is known when the queue is finished: the work is done all the same.
static cl_int CL_API_CALL fault_clFinish(cl_command_queue queue) {
    const int status = due("clFinish");
    const int own = s_driver->clFinish(queue);
    return status ? status : own;
}

// A call that answers a handle and writes its status where it is told to.
#define CREATING_CALL(type, function, parameters, arguments) \
    static type CL_API_CALL fault_##function parameters {    \
        const int status = due(#function);                   \
        if (status) {                                        \
            if (error) *error = status;                      \
            return NULL;                                     \
        }                                                    \
        const type handle = s_driver->function arguments;    \
        if (handle) changeAlive(#function, 1);               \
        return handle;                                       \
    }

CREATING_CALL(cl_context, clCreateContext,
              (const cl_context_properties* p, cl_uint n, const cl_device_id* d,
               void(CL_CALLBACK* f)(const char*, const void*, size_t, void*), void* u, cl_int* error),
              (p, n, d, f, u, error))
CREATING_CALL(cl_command_queue, clCreateCommandQueue,
              (cl_context c, cl_device_id d, cl_command_queue_properties p, cl_int* error), (c, d, p, error))
CREATING_CALL(cl_program, clCreateProgramWithSource,
              (cl_context c, cl_uint n, const char** t, const size_t* l, cl_int* error), (c, n, t, l, error))
CREATING_CALL(cl_kernel, clCreateKernel, (cl_program p, const char* n, cl_int* error), (p, n, error))
CREATING_CALL(cl_mem, clCreateBuffer, (cl_context c, cl_mem_flags f, size_t n, void* v, cl_int* error),
              (c, f, n, v, error))

#define RELEASING_CALL(type, function, kind)                  \
    static cl_int CL_API_CALL fault_##function(type handle) { \
        const int status = due(#function);                    \
        changeAlive(kind, -1);                                \
        const int own = s_driver->function(handle);           \
        return status ? status : own;                         \
    }

RELEASING_CALL(cl_context, clReleaseContext, "clCreateContext")
RELEASING_CALL(cl_command_queue, clReleaseCommandQueue, "clCreateCommandQueue")
RELEASING_CALL(cl_program, clReleaseProgram, "clCreateProgramWithSource")
RELEASING_CALL(cl_kernel, clReleaseKernel, "clCreateKernel")
RELEASING_CALL(cl_mem, clReleaseMemObject, "clCreateBuffer")

static void armByEnvironment(void) {
    static char function[64]; // armed names are not copied
    const char* const wanted = getenv("ORVEX_OPENCL_FAULT");
    int number = 0;
    int status = 0;
    if (wanted && sscanf(wanted, "%63[^:]:%d:%d", function, &number, &status) == 3) {
        openCLFaultArm(function, number, status);
    }
}

CL_API_ENTRY cl_int CL_API_CALL clGetLayerInfo(cl_layer_info name, size_t size, void* value, size_t* sizeNeeded) {
    const cl_layer_api_version version = CL_LAYER_API_VERSION_100;
    const char text[] = "orvex-fault";
    const void* const answer = name == CL_LAYER_API_VERSION ? (const void*)&version : (const void*)text;
    const size_t length = name == CL_LAYER_API_VERSION ? sizeof(version) : sizeof(text);
    if (name != CL_LAYER_API_VERSION && name != CL_LAYER_NAME) return CL_INVALID_VALUE;
    if (value && size < length) return CL_INVALID_VALUE;
    if (value) memcpy(value, answer, length);
    if (sizeNeeded) *sizeNeeded = length;
    return CL_SUCCESS;
}

CL_API_ENTRY cl_int CL_API_CALL clInitLayer(cl_uint count, const struct _cl_icd_dispatch* driver, cl_uint* ownCount,
                                            const struct _cl_icd_dispatch** own) {
    (void)count;
    s_driver = driver;
#define TAKE(function) s_layer.function = fault_##function
    TAKE(clGetPlatformIDs);
    TAKE(clGetDeviceIDs);
    TAKE(clGetDeviceInfo);
    TAKE(clCreateContext);
    TAKE(clCreateCommandQueue);
    TAKE(clCreateProgramWithSource);
    TAKE(clBuildProgram);
    TAKE(clGetProgramBuildInfo);
    TAKE(clCreateKernel);
    TAKE(clCreateBuffer);
    TAKE(clEnqueueWriteBuffer);
    TAKE(clSetKernelArg);
    TAKE(clGetKernelWorkGroupInfo);
    TAKE(clEnqueueNDRangeKernel);
    TAKE(clFinish);
    TAKE(clEnqueueReadBuffer);
    TAKE(clReleaseContext);
    TAKE(clReleaseCommandQueue);
    TAKE(clReleaseProgram);
    TAKE(clReleaseKernel);
    TAKE(clReleaseMemObject);
    *ownCount = (cl_uint)(sizeof(s_layer) / sizeof(void*));
    *own = &s_layer;
    armByEnvironment();
    return CL_SUCCESS;
}
